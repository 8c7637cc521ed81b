#include "mediainfo/opening.h"

#include "support/text.h"

namespace kolum::mediainfo {

std::optional<std::string> wholePath(std::string_view folder, std::string_view name) {
  if (folder.size() + name.size() >= kPathSize) return std::nullopt;
  return joinPath(folder, name);
}

std::optional<av::Input> openMedia(const std::string& path) {
  av::registerFormats();
  auto input = av::Input::open(path.c_str());
  if (input) input->readStreamInfo();
  return input;
}

const av::Stream* firstStream(const av::Input& input, av::MediaType type) {
  for (const av::Stream& stream : input.streams())
    if (stream.type() == type) return &stream;
  return nullptr;
}

}  // namespace kolum::mediainfo
