// The programs that this process has started.
#ifndef KOLUM_TOOL_MACHINE_CHILDREN_H
#define KOLUM_TOOL_MACHINE_CHILDREN_H

namespace kolum::tool {

// Kills them, with the process groups that they lead; whoever started them reaps them.
void killChildren();

}  // namespace kolum::tool

#endif
