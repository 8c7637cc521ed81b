#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "av/input.h"
#include "mediainfo/key_frames.h"
#include "support/text.h"
#include "video/container.h"
#include "video/disc.h"

namespace kolum::mediainfo {

namespace {

constexpr int kClassicMpeg4 = 13;
constexpr std::string_view kDivxTags[] = {"XVID", "DX50", "DIVX"};

// Upper case only, unlike the play exceptions of the video probes: hosts hold both answers.
bool isDivx(const av::Stream& stream, std::uint32_t containerFormat) {
  if (containerFormat != FORMAT_AVI || stream.classicCodec() != kClassicMpeg4) return false;
  const std::string tag = stream.codecTagText();
  return std::find(std::begin(kDivxTags), std::end(kDivxTags), tag) != std::end(kDivxTags);
}

// Only the three right angles are passed on.
int rotationOf(const av::Stream& stream) {
  const auto rotate = stream.rotate();
  const long degrees = rotate ? std::strtol(rotate->c_str(), nullptr, 10) : 0;
  return degrees == 90 || degrees == 180 || degrees == 270 ? static_cast<int>(degrees) : 0;
}

int profileOf(const av::Stream& stream) {
  // By FFmpeg's codec number, as for songs; the video probes convert it first. Databases hold both.
  return FF_ProfileToKO_Profile(stream.classicCodec(), stream.profile());
}

// What every entry begins with.
MediaStreamInfo entryOf(const av::Stream& stream, unsigned type) {
  MediaStreamInfo entry = {};
  entry.streamType = type;
  entry.codecId = static_cast<unsigned>(stream.classicCodec());
  entry.streamId = stream.id();
  return entry;
}

MediaStreamInfo videoEntry(const av::Stream& stream, std::uint32_t containerFormat) {
  MediaStreamInfo entry = entryOf(stream, MEDIA_STREAM_VIDEO);
  const av::Rational frameRate = stream.realFrameRate();
  const av::Rational timeBase = stream.timeBase();
  entry.profile = profileOf(stream);
  entry.level = stream.level();
  entry.bitRate = static_cast<unsigned>(stream.bitRate());
  entry.isDivx = isDivx(stream, containerFormat) ? 1 : 0;
  entry.width = stream.width();
  entry.height = stream.height();
  entry.rotation = rotationOf(stream);
  // The time base's denominator, not the frame rate's, is wanted: hosts reckon back from it.
  entry.frameRate = timeBase.den != 0 ? frameRate.num / timeBase.den : 0;
  entry.frameRateNum = frameRate.num;
  entry.frameRateDen = frameRate.den;
  return entry;
}

MediaStreamInfo audioEntry(const av::Stream& stream) {
  MediaStreamInfo entry = entryOf(stream, MEDIA_STREAM_AUDIO);
  // The profile stands in bitRate, and profile stays 0: hosts read it there.
  entry.bitRate = static_cast<unsigned>(profileOf(stream));
  entry.level = stream.level();
  entry.sampleRate = static_cast<unsigned>(stream.sampleRate());
  entry.bitsPerSample = static_cast<unsigned>(stream.bitsPerCodedSample());
  entry.channels = static_cast<unsigned>(stream.channels());
  return entry;
}

// What to open for a path, and through what it was reached.
struct Target {
  std::string path;
  std::uint32_t sourceKind = FORMAT_UNKNOWN;
};

std::optional<Target> targetOf(const std::string& path) {
  if (path.size() >= kPathSize) return std::nullopt;
  const std::size_t nameBegin = path.rfind('/') + 1;  // 0 without a slash
  const std::string folder = path.substr(0, nameBegin);
  std::optional<video::MainTitle> title;
  switch (video::sourceOf(std::string_view(path).substr(nameBegin))) {
    case video::Source::kFile:
      return Target{path};
    case video::Source::kImage:
      return std::nullopt;
    case video::Source::kDvdFolder:
      title = video::dvdFolderTitle(folder);
      break;
    case video::Source::kBlurayFolder:
      title = video::blurayFolderTitle(folder);
      break;
  }
  if (!title) return std::nullopt;
  return Target{title->path, title->containerFormat};
}

struct InfoDeleter {
  void operator()(MediaInfo* info) const { Free_MediaInfo(info); }
};
using OwnedInfo = std::unique_ptr<MediaInfo, InfoDeleter>;

// An empty record with room for so many streams; null without memory.
OwnedInfo newInfo(std::size_t streams) {
  OwnedInfo info(static_cast<MediaInfo*>(std::calloc(1, sizeof(MediaInfo))));
  if (info == nullptr) return nullptr;
  info->streams = static_cast<MediaStreamInfo*>(std::calloc(streams, sizeof(MediaStreamInfo)));
  if (info->streams == nullptr) return nullptr;
  return info;
}

void addStream(MediaInfo& info, const av::Stream& stream) {
  MediaStreamInfo& next = info.streams[info.streamCount];
  switch (stream.type()) {
    case av::MediaType::kVideo:
      next = videoEntry(stream, info.containerFormat);
      break;
    case av::MediaType::kAudio:
      next = audioEntry(stream);
      break;
    case av::MediaType::kSubtitle:
      next = entryOf(stream, MEDIA_STREAM_SUBTITLE);
      break;
    case av::MediaType::kOther:
      return;
  }
  ++info.streamCount;
}

OwnedInfo describe(const av::Input& input, std::uint32_t sourceKind) {
  OwnedInfo info = newInfo(input.streams().size());
  if (info == nullptr) return nullptr;
  info->bitRate = static_cast<unsigned>(input.bitRate());
  info->duration = static_cast<unsigned>(input.duration() / av::kTimeBase);
  info->containerFormat = video::containerFormat(input.demuxer());
  info->sourceKind = sourceKind;
  for (const av::Stream& stream : input.streams()) addStream(*info, stream);
  return info;
}

// The search in the first video stream; what was asked for stands in where nothing is found.
void searchKeyFrame(const av::Input& input, std::int64_t seconds, double& time) {
  if (const av::Stream* video = input.firstStream(av::MediaType::kVideo))
    time = keyFrameTime(input, *video, seconds).value_or(static_cast<double>(seconds));
}

OwnedInfo mediaInfo(const std::string& path, std::int64_t seekSeconds, double* keyFrameTime) {
  const auto target = targetOf(path);
  const auto input = target ? av::Input::openWithStreams(target->path.c_str()) : std::nullopt;
  if (!input || input->streams().empty()) return nullptr;
  OwnedInfo info = describe(*input, target->sourceKind);
  if (info != nullptr && seekSeconds >= 1 && keyFrameTime != nullptr)
    searchKeyFrame(*input, seekSeconds, *keyFrameTime);
  return info;
}

}  // namespace

}  // namespace kolum::mediainfo

unsigned int GetMediaInfo(const char* path, MediaInfo** info, int64_t seekSeconds,
                          double* keyFrameTime) try {
  if (info == nullptr) return 1;
  *info = nullptr;
  if (path == nullptr) return 1;
  *info = kolum::mediainfo::mediaInfo(path, seekSeconds, keyFrameTime).release();
  return *info != nullptr ? 0 : 1;
} catch (...) {
  return 1;
}

void Free_MediaInfo(MediaInfo* info) {
  if (info == nullptr) return;
  std::free(info->streams);
  std::free(info);
}
