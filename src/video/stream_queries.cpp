#include <kolum/video.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "av/input.h"
#include "support/text.h"

namespace kolum::video {

namespace {

// The file with its stream information; empty when it cannot be opened or has no streams.
std::optional<av::Input> openWithStreams(const char* path) {
  if (path == nullptr) return std::nullopt;
  auto input = av::Input::openWithStreams(path);
  if (input && input->streams().empty()) return std::nullopt;
  return input;
}

unsigned int countStreams(const char* path, av::MediaType type, unsigned int* count) try {
  if (count == nullptr) return 1;
  const auto input = openWithStreams(path);
  if (!input) return 1;
  const auto& streams = input->streams();
  *count = static_cast<unsigned>(
      std::count_if(streams.begin(), streams.end(),
                    [type](const av::Stream& stream) { return stream.type() == type; }));
  return 0;
} catch (...) {
  return 1;
}

// The codec tags of encrypted MP4 samples; nothing else is looked at.
bool isEncrypted(const av::Stream& stream) {
  const std::string tag = stream.codecTag() != 0 ? stream.codecTagText() : "";
  return tag == "drmi" || tag == "drms";
}

unsigned int rotationDegrees(std::string_view folder, std::string_view fileName,
                             unsigned int& degrees) {
  const auto path = wholePath(folder, fileName);
  if (!path) return 1;
  // Neither registers formats nor reads the stream information, on purpose: the container's header
  // tells the rotation, and thumbnail builders ask for it often.
  const auto input = av::Input::open(path->c_str());
  const av::Stream* video = input ? input->firstStream(av::MediaType::kVideo) : nullptr;
  if (video == nullptr) return 1;
  if (const auto rotate = video->rotate())
    degrees = static_cast<unsigned>(std::strtol(rotate->c_str(), nullptr, 10));
  return 0;
}

}  // namespace

}  // namespace kolum::video

unsigned int GetVideoRotationDegree(const char* folder, const char* fileName,
                                    unsigned int* degrees) try {
  if (folder == nullptr || fileName == nullptr || degrees == nullptr) return 1;
  return kolum::video::rotationDegrees(folder, fileName, *degrees);
} catch (...) {
  return 1;
}

unsigned int GetDRMProtectedInfo(const char* path, unsigned int* isProtected) try {
  if (isProtected == nullptr) return 1;
  const auto input = kolum::video::openWithStreams(path);
  if (!input) return 1;
  const auto& streams = input->streams();
  *isProtected = std::any_of(streams.begin(), streams.end(), kolum::video::isEncrypted) ? 1 : 0;
  return 0;
} catch (...) {
  return 1;
}

unsigned int GetAudioTrack(const char* path, unsigned int* count) {
  return kolum::video::countStreams(path, kolum::av::MediaType::kAudio, count);
}

unsigned int GetSubtitleTrack(const char* path, unsigned int* count) {
  return kolum::video::countStreams(path, kolum::av::MediaType::kSubtitle, count);
}
