// Memory for the way out when there is none left.
#ifndef KOLUM_TOOL_MACHINE_MEMORY_H
#define KOLUM_TOOL_MACHINE_MEMORY_H

namespace kolum::tool {

// Sets some memory aside that is given back when an allocation fails, before that is thrown: the
// destructors of JSON values allocate, and must not fail. Call it before each piece of work; any
// thread may. Throws std::bad_alloc.
void keepMemoryForFailure();

}  // namespace kolum::tool

#endif
