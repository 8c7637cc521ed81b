#include "probe/streams.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "base/files.h"
#include "base/text.h"
#include "isolation/isolation.h"
#include "media/identifiers.h"
#include "media/source.h"
#include "probe/numbers.h"
#include "read/disc/disc.h"
#include "read/ffmpeg/input.h"
#include "read/ffmpeg/key_frames.h"

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

// Whether FFmpeg sees a scheme at the start of a name ("http:", "subfile,,start,0,end,9,,:").
bool hasScheme(std::string_view url) {
  constexpr std::string_view kSchemeCharacters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.";
  const std::size_t end = url.find_first_not_of(kSchemeCharacters);
  if (end == std::string_view::npos) return false;
  return url[end] == ':' ||
         (url.starts_with("subfile,") && url.find(':', end) != std::string_view::npos);
}

// The file that a URL names; empty if FFmpeg should use a transport of its own. A name that exists
// as a path is a file, even if it looks like a URL.
std::optional<std::string> pathOf(const char* url) {
  constexpr std::string_view kFileScheme = "file:";
  if (!hasScheme(url) || exists(url)) return url;
  if (std::string_view(url).starts_with(kFileScheme)) return url + kFileScheme.size();
  return std::nullopt;
}

}  // namespace

std::optional<media::Container> containerOf(const std::string& path, ffmpeg::Depth depth) {
  const auto source = media::Source::open(path);
  if (!source) return std::nullopt;
  return isolation::look(*source, {.container = depth}).container;
}

std::optional<StreamsResult> probeStreams(const std::string& path,
                                          std::optional<std::int64_t> seekSeconds, Trace& trace) {
  if (path.size() >= kPathSize) return std::nullopt;
  const disc::Kind kind = disc::kindOf(std::string_view(path).substr(path.rfind('/') + 1));
  const auto title = titleOf(path, kind, trace);
  if (kind != disc::Kind::kNone && !title) return std::nullopt;
  const auto source = title ? disc::open(*title) : media::Source::open(path);
  if (!source) return std::nullopt;
  const auto depth = seekSeconds ? ffmpeg::Depth::kStreamTimes : ffmpeg::Depth::kStreams;
  read::Findings found = isolation::look(*source, {.container = depth, .keyFrameAt = seekSeconds});
  if (!found.container || found.container->streams.empty()) return std::nullopt;
  StreamsResult result;
  result.container = std::move(*found.container);
  result.sourceKind = title ? title->containerFormat : std::uint32_t{FORMAT_UNKNOWN};
  const media::Stream* video = result.container.first(media::StreamType::kVideo);
  if (seekSeconds && video != nullptr)
    result.keyFrameTime = found.keyFrameTime.value_or(static_cast<double>(*seekSeconds));
  return result;
}

// Other transports than files are FFmpeg's, in this process: a worker has no network.
KeyFrameSearch searchKeyFrame(const char* url, std::int32_t seconds) {
  KeyFrameSearch search;
  bool isOpen = false;
  if (const auto path = pathOf(url)) {
    const auto source = media::Source::open(*path);
    read::Findings found;
    if (source)
      found = isolation::look(*source,
                              {.container = ffmpeg::Depth::kHeader, .reportedKeyFrameAt = seconds});
    isOpen = found.container.has_value();
    search = {.time = found.keyFrameTime, .trace = std::move(found.keyFrameTrace)};
  } else if (const auto input = ffmpeg::Input::openUrl(url, ffmpeg::Depth::kHeader)) {
    isOpen = true;
    search.time = ffmpeg::searchKeyFrame(*input, seconds, search.trace);
  }
  if (!isOpen)
    ffmpeg::reportSearch(search.trace, __LINE__,
                         " avformat_open_input " + std::string(url) + " fail.\n");
  return search;
}

void reportParameterError(Trace& trace) {
  ffmpeg::reportSearch(trace, __LINE__, " input parameter error.\n");
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
  const auto container = containerOf(path, ffmpeg::Depth::kHeader);
  const media::Stream* video = container ? container->first(media::StreamType::kVideo) : nullptr;
  if (video == nullptr) return std::nullopt;
  return RotationResult{degreesOf(*video)};
}

}  // namespace kolum::probe
