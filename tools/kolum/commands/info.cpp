#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>

#include <algorithm>
#include <climits>
#include <memory>

#include "describe/diagnosis.h"
#include "files/descriptions.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

// What FFmpeg's "no time stamp" becomes as a duration in whole seconds.
constexpr auto kUnknownDuration = static_cast<unsigned>(INT64_MIN / 1000000);

struct Options {
  MediaFileArguments files;
  int seekSeconds = 0;
};

struct FreeInfo {
  void operator()(MediaInfo* info) const { Free_MediaInfo(info); }
};

Identifier streamType(unsigned type) {
  const char* const names[] = {"video", "audio", "subtitle"};
  return {type, names[std::min<std::size_t>(type, std::size(names) - 1)]};
}

Result codecObject(const MediaStreamInfo& stream, int codec) {
  Result object = codec >= 0 ? codecIdentifier(codec).object() : Result();
  object.data("ffmpeg", stream.codecId);
  return object;
}

// The record has an audio stream's profile in the field of a video stream's bit rate.
int profileOf(const MediaStreamInfo& stream) {
  return stream.streamType == MEDIA_STREAM_AUDIO ? static_cast<int>(stream.bitRate)
                                                 : stream.profile;
}

double realFrameRate(const MediaStreamInfo& stream) {
  if (stream.frameRateDen == 0) return 0;
  return static_cast<double>(stream.frameRateNum) / stream.frameRateDen;
}

// A width or height, unless it is 0, which means unknown.
void addSize(Result& object, const char* key, int pixels) {
  if (pixels != 0) object.data(key, pixels);
}

void addVideo(Result& object, const MediaStreamInfo& stream) {
  object.known("bitRate", stream.bitRate);
  addSize(object, "width", stream.width);
  addSize(object, "height", stream.height);
  object.data("rotation", stream.rotation);
  if (const double rate = realFrameRate(stream); rate > 0) object.data("realFrameRate", rate);
  object.data("frameRate", stream.frameRate);
  object.data("frameRateNum", stream.frameRateNum);
  object.data("frameRateDen", stream.frameRateDen);
  object.data("isDivx", stream.isDivx != 0);
}

void addAudio(Result& object, const MediaStreamInfo& stream) {
  object.known("sampleRate", stream.sampleRate);
  object.known("bitsPerSample", stream.bitsPerSample);
  object.known("channels", stream.channels);
}

Result streamObject(const MediaStreamInfo& stream, int codec) {
  Result object;
  object.data("type", streamType(stream.streamType));
  object.data("streamId", stream.streamId);
  object.data("codec", codecObject(stream, codec));
  if (stream.streamType == MEDIA_STREAM_SUBTITLE) return object;
  if (const int profile = profileOf(stream); profile != PROFILE_UNKNOWN)
    object.data("profile", profileIdentifier(profile, codec));
  if (stream.level != LEVEL_UNKNOWN) object.data("level", stream.level);
  if (stream.streamType == MEDIA_STREAM_VIDEO) addVideo(object, stream);
  if (stream.streamType == MEDIA_STREAM_AUDIO) addAudio(object, stream);
  return object;
}

std::string frameRateText(const MediaStreamInfo& stream) {
  const double rate = realFrameRate(stream);
  return rate > 0 ? decimalText(rate, 3) + " frames/s" : "";
}

std::string videoText(const MediaStreamInfo& stream) {
  return joined(
      {pictureSizeText(stream.width, stream.height), frameRateText(stream),
       stream.rotation == 0 ? "" : "rotated by " + std::to_string(stream.rotation) + " degrees",
       stream.bitRate == 0 ? "" : bitRateText(stream.bitRate), stream.isDivx == 0 ? "" : "DivX"});
}

std::string streamText(const MediaStreamInfo& stream, int codec) {
  const bool isVideo = stream.streamType == MEDIA_STREAM_VIDEO;
  const bool isAudio = stream.streamType == MEDIA_STREAM_AUDIO;
  const std::string name = codec < 0 ? "FFmpeg's codec " + std::to_string(stream.codecId)
                                     : codecText(codec, profileOf(stream));
  return joined({name, isVideo ? levelText(codec, stream.level) : "",
                 isVideo   ? videoText(stream)
                 : isAudio ? soundText({.sampleRate = stream.sampleRate,
                                        .channels = stream.channels,
                                        .bitsPerSample = stream.bitsPerSample})
                           : "",
                 stream.streamId == 0 ? "" : "id " + std::to_string(stream.streamId)});
}

void addStreams(Result& result, const MediaInfo& info) {
  std::vector<Result> streams;
  for (int i = 0; i < info.streamCount; ++i) {
    const MediaStreamInfo& stream = info.streams[i];
    const int codec = ffmpegCodecIdConvert(static_cast<int>(stream.codecId));
    streams.push_back(streamObject(stream, codec));
    result.show(capitalized(streamType(stream.streamType).name), streamText(stream, codec));
  }
  result.data("streams", streams);
}

Description infoOf(const describe::MediaPath& path, const Options& options) {
  MediaInfo* record = nullptr;
  double keyFrame = -1;
  const unsigned failed =
      GetMediaInfo(path.full().c_str(), &record, options.seekSeconds, &keyFrame);
  const std::unique_ptr<MediaInfo, FreeInfo> info(record);
  if (failed != 0 || info == nullptr) return describe::diagnose(path, describe::Wanted::kStreams);
  Result result = Result::ofFile(path.given);
  addContainer(result, info->containerFormat);
  if (info->sourceKind != FORMAT_UNKNOWN)
    result.data("sourceKind", ContainerIdentifier{info->sourceKind}.object());
  if (info->sourceKind == FORMAT_DVDIFO) result.show("Source", "main title of a DVD");
  if (info->sourceKind == FORMAT_BDBDMV) result.show("Source", "largest stream of a Blu-ray disc");
  if (info->duration != kUnknownDuration) result.duration("duration", "Duration", info->duration);
  if (info->bitRate != 0) result.bitRate("bitRate", "Bit rate", info->bitRate);
  if (keyFrame >= 0) {
    result.data("keyFrameTime", keyFrame);
    result.show("Key frame", decimalText(keyFrame, 3) + " s");
  }
  addStreams(result, *info);
  return result;
}

}  // namespace

Action defineInfo(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addMediaFileArguments(syntax, options->files);
  syntax.option("--seek", {"SECONDS"}, options->seekSeconds, {1, INT_MAX},
                "Also finds the key frame to start from");
  syntax.help(
      "Lists the video, audio and subtitle streams of videos and songs as a player needs them.\n"
      "\nExample:\n  kolum info --seek 90 movie.mkv");
  return [options](Context& context) {
    describeMediaFiles(context, options->files, MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC,
                       [&](const MediaFile& file) { return infoOf(file.path, *options); });
  };
}

}  // namespace kolum::tool
