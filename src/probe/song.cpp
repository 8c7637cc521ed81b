#include "probe/song.h"

#include <kolum/identifiers.h>

#include <utility>

#include "base/files.h"
#include "base/log.h"
#include "base/text.h"
#include "dlna/audio_profile.h"
#include "media/container.h"
#include "media/identifiers.h"
#include "media/levels.h"
#include "probe/numbers.h"

namespace kolum::probe {

namespace {

std::uint32_t containerFormat(const read::Findings& found) {
  const std::uint32_t format = media::containerType(found.container->demuxer).songFormat;
  if (format != FORMAT_MPEG4) return format;
  return found.mp4SubFormat.value_or(0) << media::kBrandShift | FORMAT_MPEG4;
}

void traceDuration(const media::Container& container, Trace& trace) {
  const std::int64_t seconds = container.duration / media::kTimeBase;
  trace.error("[" + std::string(kMediaSource) + ":" + std::to_string(__LINE__) +
              "] >>>> ctx->duration=" + std::to_string(container.duration) +
              ", AV_TIME_BASE=" + std::to_string(media::kTimeBase) +
              ", ctx->duration/AV_TIME_BASE=" + std::to_string(seconds) + " \n");
}

// False if the codec is unknown: only bit rates, duration and profile are found then.
bool describe(const read::Findings& found, const media::Stream& stream, std::string_view fileName,
              SongFacts& facts) {
  const media::Container& container = *found.container;
  facts.containerBitRate = container.bitRate;
  facts.bitRate = stream.bitRate;
  if (container.duration > 0) facts.duration = container.duration / media::kTimeBase;
  facts.profile = media::profileOfFfmpeg(stream.codec, profileNumber(stream));
  const int codec = media::codecOfFfmpeg(stream.codec);
  if (codec < 0) return false;

  facts.dlnaProfile = dlna::dlnaAudioProfile({
      .codec = codec,
      .isMp4 = container.demuxer == media::kDemuxerMp4,
      .containerBitRate = container.bitRate,
      .bitRate = stream.bitRate,
      .sampleRate = stream.sampleRate,
      .channels = stream.channels,
      .fileName = fileName,
  });
  facts.sampleRate = stream.sampleRate;
  facts.bitsPerSample = stream.bitsPerSample;
  facts.channels = stream.channels;
  facts.containerFormat = containerFormat(found);
  facts.codec = codec;
  facts.level = levelNumber(stream);
  return true;
}

struct DsdExtension {
  std::string_view extension;
  std::uint32_t format;
};

constexpr DsdExtension kDsdExtensions[] = {{".dsf", FORMAT_DSF}, {".dff", FORMAT_DFF}};

// The format of a DSD file, recognised by its name; 0 for other files.
std::uint32_t dsdFormat(std::string_view path) {
  const std::string_view extension = extensionOf(path);
  for (const DsdExtension& row : kDsdExtensions)
    if (equalsIgnoringCase(extension, row.extension)) return row.format;
  return FORMAT_UNKNOWN;
}

void describeDsd(const std::string& path, std::uint32_t format, const char* toolFolder,
                 SongResult& result) {
  constexpr int kStereo = 2;
  if (!exists(path.c_str())) return;
  result.facts.channels = kStereo;
  result.facts.profile = PROFILE_UNKNOWN;
  result.facts.level = media::kUnknownLevel;
  result.facts.containerFormat = format;
  const tags::DsdToolResult tool = tags::runDsdTool(path, toolFolder);
  result.toolIsMissing = tool.isMissing;
  if (tool.document) result.facts.dsd = numbersOf(*tool.document);
  result.succeeded = tool.document.has_value();
}

}  // namespace

SongResult probeSong(const std::string& path, std::string_view fileName, const char* toolFolder,
                     const Reading& reading) {
  SongResult result;
  if (const std::uint32_t format = dsdFormat(path); format != FORMAT_UNKNOWN) {
    describeDsd(path, format, toolFolder, result);
    return result;
  }
  auto findings =
      findingsOf(path, {.container = ffmpeg::Depth::kStreams, .mp4SubFormat = true}, reading);
  if (!findings) return result;
  result.found = std::move(*findings);
  const read::Findings& found = result.found;
  result.failure = found.failure;
  if (!found.container) return result;
  // A file without audio is a success with no facts: hosts keep it listed.
  const media::Stream* stream = found.container->first(media::StreamType::kAudio);
  if (stream != nullptr) traceDuration(*found.container, result.trace);
  result.succeeded = stream == nullptr || describe(found, *stream, fileName, result.facts);
  return result;
}

}  // namespace kolum::probe
