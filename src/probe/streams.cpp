#include "probe/streams.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "base/text.h"
#include "media/identifiers.h"
#include "media/source.h"
#include "probe/key_frames.h"
#include "probe/numbers.h"
#include "read/disc/disc.h"
#include "read/ffmpeg/input.h"

namespace kolum::probe {

namespace {

constexpr int kClassicMpeg4 = 13;
constexpr std::string_view kDivxTags[] = {"XVID", "DX50", "DIVX"};

// The title of the disc folder that a path leads to; empty for files and for discs without a title.
std::optional<disc::Title> titleOf(const std::string& path, disc::Kind kind, Trace& trace) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);  // empty without a slash
  if (kind == disc::Kind::kDvdFolder) return disc::dvdFolderTitle(folder);
  if (kind == disc::Kind::kBlurayFolder) return disc::blurayFolderTitle(folder, trace);
  return std::nullopt;
}

std::optional<long> degreesOf(const media::Stream& stream) {
  if (!stream.rotation) return std::nullopt;
  return std::strtol(stream.rotation->c_str(), nullptr, 10);
}

}  // namespace

std::optional<StreamsResult> probeStreams(const std::string& path,
                                          std::optional<std::int64_t> seekSeconds, Trace& trace) {
  if (path.size() >= kPathSize) return std::nullopt;
  const disc::Kind kind = disc::kindOf(std::string_view(path).substr(path.rfind('/') + 1));
  const auto title = titleOf(path, kind, trace);
  if (kind != disc::Kind::kNone && !title) return std::nullopt;
  const auto source = title ? disc::open(*title) : media::Source::open(path);
  const auto depth = seekSeconds ? ffmpeg::Depth::kStreamTimes : ffmpeg::Depth::kStreams;
  const auto input = source ? ffmpeg::Input::open(*source, depth) : std::nullopt;
  if (!input || input->container().streams.empty()) return std::nullopt;
  StreamsResult result;
  result.container = input->container();
  result.sourceKind = title ? title->containerFormat : std::uint32_t{FORMAT_UNKNOWN};
  const media::Stream* video = result.container.first(media::StreamType::kVideo);
  if (seekSeconds && video != nullptr)
    result.keyFrameTime =
        keyFrameTime(*input, *video, *seekSeconds).value_or(static_cast<double>(*seekSeconds));
  return result;
}

bool isDivx(const media::Stream& stream, std::uint32_t containerFormat) {
  if (containerFormat != FORMAT_AVI || stream.codec != kClassicMpeg4) return false;
  return std::find(std::begin(kDivxTags), std::end(kDivxTags), stream.codecTagText) !=
         std::end(kDivxTags);
}

int rightAngleOf(const media::Stream& stream) {
  const long degrees = degreesOf(stream).value_or(0);
  return degrees == 90 || degrees == 180 || degrees == 270 ? static_cast<int>(degrees) : 0;
}

int profileOf(const media::Stream& stream) {
  return media::profileOfFfmpeg(stream.codec, profileNumber(stream));
}

bool isEncrypted(const media::Stream& stream) {
  return stream.codecTag != 0 && (stream.codecTagText == "drmi" || stream.codecTagText == "drms");
}

std::optional<RotationResult> rotationOfFile(const std::string& path) {
  const auto container = ffmpeg::readContainer(path, ffmpeg::Depth::kHeader);
  const media::Stream* video = container ? container->first(media::StreamType::kVideo) : nullptr;
  if (video == nullptr) return std::nullopt;
  return RotationResult{degreesOf(*video)};
}

}  // namespace kolum::probe
