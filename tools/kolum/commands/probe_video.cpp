#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <climits>
#include <cmath>
#include <string>

#include "commands/probe.h"
#include "files/diagnosis.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

// The probe writes only what it finds, so every number starts with a value that no file has.
constexpr int kUnset = INT_MIN;
constexpr unsigned kUnsetUnsigned = UINT_MAX;
constexpr int64_t kUnsetTime = INT64_MIN;

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

void addLevel(Result& result, const char* key, int level) {
  if (level != LEVEL_UNKNOWN) result.data(key, level);
}

void addAspect(Result& result, const videoObject_st& record) {
  if (record.displayAspectDen == kUnset) return;
  result.data("sampleAspectNum", record.sampleAspectNum);
  result.data("sampleAspectDen", record.sampleAspectDen);
  result.data("displayAspectNum", record.displayAspectNum);
  result.data("displayAspectDen", record.displayAspectDen);
}

std::string aspectText(const videoObject_st& record) {
  if (record.displayAspectDen == kUnset) return "";
  std::string text = "shown as " + ratioText(record.displayAspectNum, record.displayAspectDen);
  if (record.sampleAspectNum != record.sampleAspectDen) {
    text += " (pixels " + ratioText(record.sampleAspectNum, record.sampleAspectDen) + ")";
  }
  return text;
}

std::string rotationText(unsigned orientation) {
  switch (orientation) {
    case VIDEO_ORIENTATION_180:
      return "180 degrees";
    case VIDEO_ORIENTATION_270:
      return "270 degrees";
    default:
      return "90 degrees";
  }
}

void addPicture(Result& result, const videoObject_st& record) {
  if (record.width == kUnset) return;
  if (record.width > 0) result.data("width", record.width);
  if (record.height > 0) result.data("height", record.height);
  addAspect(result, record);
  const bool hasRate = std::isfinite(record.frameRate) && record.frameRate > 0;
  if (hasRate) result.data("frameRate", record.frameRate);
  result.show("Picture", joined({pictureSizeText(record.width, record.height), aspectText(record),
                                 hasRate ? decimalText(record.frameRate, 3) + " frames/s" : ""}));
  if (record.orientation != 0) {
    result.data("orientation", record.orientation);
    result.show("Rotation", rotationText(record.orientation));
  }
  if (record.is360 != 0) {
    result.data("is360", true);
    result.show("360 degrees", "yes, equirectangular");
  }
}

void addVideoStream(Result& result, const videoObject_st& record) {
  if (record.videoCodec == kUnset) return;
  result.data("videoCodec", codecIdentifier(record.videoCodec));
  addProfile(result, "videoProfile", record.videoProfile, record.videoCodec);
  addLevel(result, "videoLevel", record.videoLevel);
  result.known("videoBitRate", record.videoBitRate);
  result.show("Video", joined({codecText(record.videoCodec, record.videoProfile),
                               levelText(record.videoCodec, record.videoLevel),
                               record.videoBitRate == 0 ? "" : bitRateText(record.videoBitRate)}));
  if (record.playException != 0) {
    result.identifier("playException", "Play exception",
                      playExceptionIdentifier(record.playException));
  }
}

void addAudioStream(Result& result, const videoObject_st& record) {
  if (record.audioCodec == kUnset) return;
  result.data("audioCodec", codecIdentifier(record.audioCodec));
  addProfile(result, "audioProfile", record.audioProfile, record.audioCodec);
  result.data("audioClass", audioClassIdentifier(record.audioClass));
  addLevel(result, "audioLevel", record.audioLevel);
  const Sound sound = {.sampleRate = record.sampleRate,
                       .channels = record.channels,
                       .bitsPerSample = record.bitsPerSample,
                       .bitRate = record.audioBitRate};
  addSound(result, sound);
  result.show("Audio",
              joined({codecText(record.audioCodec, record.audioProfile), soundText(sound)}));
  if (record.audioClass != AUDIO_CLASS_NONE)
    result.show("Audio class", audioClassIdentifier(record.audioClass).text());
}

// Subtitles are counted for discs only.
void addSubtitles(Result& result, const MediaPath& path, const videoObject_st& record) {
  const bool isDisc = path.name == kDvdIndex || path.name == kBluRayIndex;
  if (!isDisc || record.subtitleCount == kUnsetUnsigned) return;
  result.data("subtitleCount", record.subtitleCount);
  if (record.subtitleCount != 0) result.show("Subtitles", std::to_string(record.subtitleCount));
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
  Result result = Result::ofFile(path.given);
  addKind(result, MEDIA_KIND_VIDEO);
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
  addSubtitles(result, path, record);
  addDates(result, record);
  result.text("contentIdentifier", "Content identifier", record.contentIdentifier);
  return result;
}

}  // namespace

void probeVideo(Context& context, const MediaPath& path, const ProbeOptions& options) {
  videoObject_st record = blankRecord();
  // A DVD's duration is scaled by its title's size, even a meaningless one; 0 means unknown.
  const bool isDvd = path.name == kDvdIndex;
  if (isDvd) record.duration = 0;
  if (GetVideoMetadata1(path.folder.c_str(), path.name.c_str(), &record, options.audioStream) !=
      0) {
    return context.fail(path.given, diagnose(path, Wanted::kVideo));
  }
  if (isDvd && record.duration == 0) record.duration = kUnset;
  context.printer.block(videoResult(path, record));
}

}  // namespace kolum::tool
