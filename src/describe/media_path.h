// Paths as the library's entry points take them: folder with its trailing "/", and name.
#ifndef KOLUM_DESCRIBE_MEDIA_PATH_H
#define KOLUM_DESCRIBE_MEDIA_PATH_H

#include <string>
#include <string_view>

namespace kolum::describe {

struct MediaPath {
  std::string given;   // as results and messages show it
  std::string folder;  // "./" if the path has none
  std::string name;

  // For entry points that take one path: the leading folder keeps a name such as "http:x.mp4" from
  // being read as a URL.
  std::string full() const { return folder + name; }
};

MediaPath splitPath(std::string_view path);

// The folder with a trailing "/".
std::string withSlash(std::string folder);

}  // namespace kolum::describe

#endif
