#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <climits>
#include <cmath>
#include <numeric>
#include <string>

#include "identifiers.h"
#include "media_files.h"
#include "probe.h"
#include "text.h"

namespace kolum::tool {

namespace {

// The probe writes only what it finds, so every number starts with a value that no file has.
constexpr int kUnset = INT_MIN;
constexpr unsigned kUnsetUnsigned = UINT_MAX;
constexpr int64_t kUnsetTime = INT64_MIN;
constexpr int kUnknownLevel = -99;

videoObject_st blankRecord() {
  videoObject_st record = {};
  record.width = record.height = record.duration = kUnset;
  record.videoCodec = record.audioCodec = kUnset;
  record.bitRate = record.subtitleCount = kUnsetUnsigned;
  record.creationTime = kUnsetTime;
  // Non-zero asks for the aspect fields.
  record.sampleAspectNum = record.sampleAspectDen = kUnset;
  record.displayAspectNum = record.displayAspectDen = kUnset;
  return record;
}

std::string ratioText(int num, int den) {
  return std::to_string(num) + ":" + std::to_string(den);
}

// H.264 counts levels in tenths, HEVC in thirtieths.
std::string levelText(int codec, int level) {
  if (codec == CODEC_ID_H264) return decimalText(level / 10.0, 1);
  if (codec == CODEC_ID_HEVC) return decimalText(level / 30.0, 1);
  return std::to_string(level);
}

void addLevel(Result& result, const char* key, const char* label, int codec, int level) {
  if (level == kUnknownLevel) return;
  result.data(key, level);
  result.show(label, levelText(codec, level));
}

void addProfile(Result& result, const char* key, const char* label, int profile, int codec) {
  const Identifier identifier = profileIdentifier(profile, codec);
  result.data(key, identifier.json());
  if (profile != PROFILE_UNKNOWN) result.show(label, identifier.text());
}

void addPicture(Result& result, const videoObject_st& record) {
  if (record.width == kUnset) return;
  result.data("width", record.width);
  result.data("height", record.height);
  std::string text = std::to_string(record.width) + " x " + std::to_string(record.height);
  if (record.displayAspectDen != kUnset) {
    result.data("sampleAspectNum", record.sampleAspectNum);
    result.data("sampleAspectDen", record.sampleAspectDen);
    result.data("displayAspectNum", record.displayAspectNum);
    result.data("displayAspectDen", record.displayAspectDen);
    text += ", shown as " + ratioText(record.displayAspectNum, record.displayAspectDen);
    if (record.sampleAspectNum != record.sampleAspectDen) {
      text += " (pixels " + ratioText(record.sampleAspectNum, record.sampleAspectDen) + ")";
    }
  }
  result.show("Picture", text);
  if (std::isfinite(record.frameRate) && record.frameRate > 0) {
    result.data("frameRate", record.frameRate);
    result.show("Frame rate", decimalText(record.frameRate, 3) + " frames/s");
  }
  if (record.orientation != 0) {
    result.data("orientation", record.orientation);
    const char* degrees = record.orientation == 3 ? "180" : record.orientation == 6 ? "270" : "90";
    result.show("Rotation", std::string(degrees) + " degrees");
  }
  if (record.is360 != 0) {
    result.data("is360", record.is360);
    result.show("360 degrees", "yes, equirectangular");
  }
}

void addVideoStream(Result& result, const videoObject_st& record) {
  if (record.videoCodec == kUnset) return;
  result.identifier("videoCodec", "Video codec", codecIdentifier(record.videoCodec));
  addProfile(result, "videoProfile", "Video profile", record.videoProfile, record.videoCodec);
  addLevel(result, "videoLevel", "Video level", record.videoCodec, record.videoLevel);
  if (record.videoBitRate != 0)
    result.bitRate("videoBitRate", "Video bit rate", record.videoBitRate);
  if (record.playException != 0) {
    result.identifier("playException", "Play exception",
                      playExceptionIdentifier(record.playException));
  }
}

void addAudioStream(Result& result, const videoObject_st& record) {
  if (record.audioCodec == kUnset) return;
  result.identifier("audioCodec", "Audio codec", codecIdentifier(record.audioCodec));
  addProfile(result, "audioProfile", "Audio profile", record.audioProfile, record.audioCodec);
  addLevel(result, "audioLevel", "Audio level", record.audioCodec, record.audioLevel);
  if (record.audioBitRate != 0)
    result.bitRate("audioBitRate", "Audio bit rate", record.audioBitRate);
  result.frequency("sampleRate", "Sample rate", record.sampleRate);
  if (record.bitsPerSample != 0)
    result.number("bitsPerSample", "Bits per sample", record.bitsPerSample);
  result.number("channels", "Channels", record.channels);
  result.identifier("audioClass", "Audio class", audioClassIdentifier(record.audioClass));
}

void addDates(Result& result, const videoObject_st& record) {
  if (record.creationTime != kUnsetTime) {
    result.data("creationTime", record.creationTime);
    result.show("Created", dateText(record.creationTime));
  }
  if (record.creationYear != 0) result.data("creationYear", record.creationYear);
  if (record.yearMonth[0] != '\0') result.data("yearMonth", record.yearMonth);
  if (record.creationDate[0] != '\0') result.data("creationDate", record.creationDate);
}

Result videoResult(const MediaPath& path, const videoObject_st& record) {
  Result result = Result::ofFile(path.full());
  result.identifier("kind", "Kind", kindIdentifier(kVideo));
  addContainer(result, record.containerFormat);
  result.text("mimeType", "MIME type", record.mimeType);
  result.text("dlnaProfile", "DLNA profile", record.dlnaProfile);
  if (record.duration != kUnset) result.duration("duration", "Duration", record.duration);
  if (record.bitRate != kUnsetUnsigned && record.bitRate != 0) {
    result.bitRate("bitRate", "Bit rate", record.bitRate);
  }
  addPicture(result, record);
  addVideoStream(result, record);
  addAudioStream(result, record);
  if (record.subtitleCount != kUnsetUnsigned) {
    result.data("subtitleCount", record.subtitleCount);
    if (record.subtitleCount != 0) result.show("Subtitles", std::to_string(record.subtitleCount));
  }
  addDates(result, record);
  result.text("contentIdentifier", "Content identifier", record.contentIdentifier);
  return result;
}

}  // namespace

void probeVideo(Context& context, const MediaPath& path, const ProbeOptions& options) {
  videoObject_st record = blankRecord();
  // A DVD's duration is scaled by its title's size, from zero when there is none to scale.
  if (path.name == "VIDEO_TS.IFO") record.duration = 0;
  if (GetVideoMetadata1(path.folder.c_str(), path.name.c_str(), &record, options.audioStream) !=
      0) {
    return context.fail(path.full(), refusalReason(path, "no video that can be probed"));
  }
  context.printer.block(videoResult(path, record));
}

}  // namespace kolum::tool
