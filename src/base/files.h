// Questions about files.
#ifndef KOLUM_BASE_FILES_H
#define KOLUM_BASE_FILES_H

namespace kolum {

// Whether anything has this name, links followed.
bool exists(const char* path);

}  // namespace kolum

#endif
