#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>

#include <algorithm>
#include <climits>
#include <memory>

#include "files/diagnosis.h"
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

nlohmann::ordered_json codecJson(const MediaStreamInfo& stream, int codec) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  if (codec >= 0) json = codecIdentifier(codec).json();
  json["ffmpeg"] = stream.codecId;
  return json;
}

// The record keeps an audio stream's profile where a video stream's bit rate stands.
int profileOf(const MediaStreamInfo& stream) {
  return stream.streamType == MEDIA_STREAM_AUDIO ? static_cast<int>(stream.bitRate)
                                                 : stream.profile;
}

// A number, unless it is 0, which stands for unknown.
void addKnown(nlohmann::ordered_json& json, const char* key, std::int64_t value) {
  if (value != 0) json[key] = value;
}

double realFrameRate(const MediaStreamInfo& stream) {
  if (stream.frameRateDen == 0) return 0;
  return static_cast<double>(stream.frameRateNum) / stream.frameRateDen;
}

void addVideo(nlohmann::ordered_json& json, const MediaStreamInfo& stream) {
  addKnown(json, "bitRate", stream.bitRate);
  addKnown(json, "width", stream.width);
  addKnown(json, "height", stream.height);
  json["rotation"] = stream.rotation;
  if (const double rate = realFrameRate(stream); rate > 0) json["realFrameRate"] = rate;
  json["frameRate"] = stream.frameRate;
  json["frameRateNum"] = stream.frameRateNum;
  json["frameRateDen"] = stream.frameRateDen;
  json["isDivx"] = stream.isDivx != 0;
}

void addAudio(nlohmann::ordered_json& json, const MediaStreamInfo& stream) {
  addKnown(json, "sampleRate", stream.sampleRate);
  addKnown(json, "bitsPerSample", stream.bitsPerSample);
  addKnown(json, "channels", stream.channels);
}

nlohmann::ordered_json streamJson(const MediaStreamInfo& stream, int codec) {
  nlohmann::ordered_json json = {{"type", streamType(stream.streamType).json()},
                                 {"streamId", stream.streamId},
                                 {"codec", codecJson(stream, codec)}};
  if (stream.streamType == MEDIA_STREAM_SUBTITLE) return json;
  if (const int profile = profileOf(stream); profile != PROFILE_UNKNOWN)
    json["profile"] = profileIdentifier(profile, codec).json();
  if (stream.level != LEVEL_UNKNOWN) json["level"] = stream.level;
  if (stream.streamType == MEDIA_STREAM_VIDEO) addVideo(json, stream);
  if (stream.streamType == MEDIA_STREAM_AUDIO) addAudio(json, stream);
  return json;
}

std::string frameRateText(const MediaStreamInfo& stream) {
  const double rate = realFrameRate(stream);
  return rate > 0 ? decimalText(rate, 3) + " frames/s" : "";
}

std::string videoText(const MediaStreamInfo& stream) {
  return joined(
      {pictureSizeText(stream.width, stream.height), frameRateText(stream),
       stream.rotation == 0 ? "" : "turned by " + std::to_string(stream.rotation) + " degrees",
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
  nlohmann::ordered_json streams = nlohmann::ordered_json::array();
  for (int i = 0; i < info.streamCount; ++i) {
    const MediaStreamInfo& stream = info.streams[i];
    const int codec = ffmpegCodecIdConvert(static_cast<int>(stream.codecId));
    streams.push_back(streamJson(stream, codec));
    result.show(capitalized(streamType(stream.streamType).name), streamText(stream, codec));
  }
  result.data("streams", std::move(streams));
}

void printInfo(Context& context, const MediaPath& path, const Options& options) {
  MediaInfo* record = nullptr;
  double keyFrame = -1;
  const unsigned failed =
      GetMediaInfo(path.full().c_str(), &record, options.seekSeconds, &keyFrame);
  const std::unique_ptr<MediaInfo, FreeInfo> info(record);
  if (failed != 0 || info == nullptr) {
    return context.fail(path.given, diagnose(path, Wanted::kStreams));
  }
  Result result = Result::ofFile(path.given);
  addContainer(result, info->containerFormat);
  if (info->sourceKind != FORMAT_UNKNOWN)
    result.data("sourceKind", containerNames(info->sourceKind).json());
  if (info->sourceKind == FORMAT_DVDIFO) result.show("Source", "main title of a DVD");
  if (info->sourceKind == FORMAT_BDBDMV) result.show("Source", "largest stream of a Blu-ray disc");
  if (info->duration != kUnknownDuration) result.duration("duration", "Duration", info->duration);
  if (info->bitRate != 0) result.bitRate("bitRate", "Bit rate", info->bitRate);
  if (keyFrame >= 0) {
    result.data("keyFrameTime", keyFrame);
    result.show("Key frame", decimalText(keyFrame, 3) + " s");
  }
  addStreams(result, *info);
  context.printer.block(result);
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
    forEachMediaFile(context, options->files, MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC,
                     [&](const MediaFile& file) { printInfo(context, file.path, *options); });
  };
}

}  // namespace kolum::tool
