#include "support/hostile_media.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>

namespace kolum::test {

void PrintTo(const HostileFile& file, std::ostream* out) {
  *out << file.name;
}

HostileFiles hostileFiles() {
  HostileFiles all;
  for (HostileFiles (*family)() : {hostilePictures, hostileMp4Files, hostileMatroskaFiles,
                                   hostileStreams, hostileSongs, hostileContainers}) {
    HostileFiles files = family();
    all.insert(all.end(), std::make_move_iterator(files.begin()),
               std::make_move_iterator(files.end()));
  }
  return all;
}

std::string writeHostileFile(const HostileFile& file, const std::string& folder) {
  std::string path = folder + file.name;
  const std::string content = file.content();
  std::ofstream out(path, std::ios::binary);
  out << content;
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path);
  const auto size = static_cast<std::uintmax_t>(file.size);
  if (size > content.size()) std::filesystem::resize_file(path, size);
  return path;
}

}  // namespace kolum::test
