#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <cmath>
#include <string>

#include "base/trace.h"
#include "commands/probe.h"
#include "files/diagnosis.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "probe/video.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Facts = probe::VideoFacts;

std::string ratioText(int num, int den) {
  return std::to_string(num) + ":" + std::to_string(den);
}

void addLevel(Result& result, const char* key, std::optional<int> level) {
  if (level && *level != LEVEL_UNKNOWN) result.data(key, *level);
}

void addAspect(Result& result, const Facts& facts) {
  if (!facts.aspect) return;
  result.data("sampleAspectNum", facts.aspect->sample.num);
  result.data("sampleAspectDen", facts.aspect->sample.den);
  result.data("displayAspectNum", facts.aspect->display.num);
  result.data("displayAspectDen", facts.aspect->display.den);
}

std::string aspectText(const Facts& facts) {
  if (!facts.aspect) return "";
  const auto& [sample, display] = *facts.aspect;
  std::string text = "shown as " + ratioText(display.num, display.den);
  if (sample.num != sample.den) text += " (pixels " + ratioText(sample.num, sample.den) + ")";
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

void addPicture(Result& result, const Facts& facts) {
  if (!facts.width || !facts.height) return;
  if (*facts.width > 0) result.data("width", *facts.width);
  if (*facts.height > 0) result.data("height", *facts.height);
  addAspect(result, facts);
  const double rate = facts.frameRate.value_or(0);
  const bool hasRate = std::isfinite(rate) && rate > 0;
  if (hasRate) result.data("frameRate", rate);
  result.show("Picture", joined({pictureSizeText(*facts.width, *facts.height), aspectText(facts),
                                 hasRate ? decimalText(rate, 3) + " frames/s" : ""}));
  if (facts.orientation) {
    result.data("orientation", *facts.orientation);
    result.show("Rotation", rotationText(*facts.orientation));
  }
  if (facts.isEquirectangular) {
    result.data("is360", true);
    result.show("360 degrees", "yes, equirectangular");
  }
}

void addVideoStream(Result& result, const Facts& facts) {
  if (!facts.videoCodec) return;
  const int codec = *facts.videoCodec;
  const int profile = facts.videoProfile.value_or(PROFILE_UNKNOWN);
  const auto bitRate = static_cast<std::uint64_t>(facts.videoBitRate.value_or(0));
  result.data("videoCodec", codecIdentifier(codec));
  addProfile(result, "videoProfile", profile, codec);
  addLevel(result, "videoLevel", facts.videoLevel);
  result.known("videoBitRate", bitRate);
  result.show("Video", joined({codecText(codec, profile),
                               levelText(codec, facts.videoLevel.value_or(LEVEL_UNKNOWN)),
                               bitRate == 0 ? "" : bitRateText(bitRate)}));
  if (facts.playException) {
    result.identifier("playException", "Play exception",
                      playExceptionIdentifier(*facts.playException));
  }
}

void addAudioStream(Result& result, const Facts& facts) {
  if (!facts.audioCodec) return;
  const int codec = *facts.audioCodec;
  const int profile = facts.audioProfile.value_or(PROFILE_UNKNOWN);
  const unsigned audioClass = facts.audioClass.value_or(AUDIO_CLASS_NONE);
  result.data("audioCodec", codecIdentifier(codec));
  addProfile(result, "audioProfile", profile, codec);
  result.data("audioClass", audioClassIdentifier(audioClass));
  addLevel(result, "audioLevel", facts.audioLevel);
  const Sound sound = {.sampleRate = static_cast<std::uint64_t>(facts.sampleRate.value_or(0)),
                       .channels = static_cast<std::uint64_t>(facts.channels.value_or(0)),
                       .bitsPerSample = static_cast<std::uint64_t>(facts.bitsPerSample.value_or(0)),
                       .bitRate = static_cast<std::uint64_t>(facts.audioBitRate.value_or(0))};
  addSound(result, sound);
  result.show("Audio", joined({codecText(codec, profile), soundText(sound)}));
  if (audioClass != AUDIO_CLASS_NONE)
    result.show("Audio class", audioClassIdentifier(audioClass).text());
}

// Counted for discs only.
void addSubtitles(Result& result, const MediaPath& path, const Facts& facts) {
  const bool isDisc = path.name == kDvdIndex || path.name == kBluRayIndex;
  if (!isDisc || !facts.subtitleCount) return;
  result.data("subtitleCount", *facts.subtitleCount);
  if (*facts.subtitleCount != 0) result.show("Subtitles", std::to_string(*facts.subtitleCount));
}

void addDates(Result& result, const Facts& facts) {
  if (facts.creationTime) {
    result.data("creationTime", *facts.creationTime);
    result.show("Created", dateText(*facts.creationTime));
  }
  if (facts.creationYear.value_or(0) != 0) result.data("creationYear", *facts.creationYear);
  if (!facts.yearMonth.empty()) result.data("yearMonth", facts.yearMonth);
  if (!facts.creationDate.empty()) result.data("creationDate", facts.creationDate);
}

Result videoResult(const MediaPath& path, const Facts& facts) {
  Result result = Result::ofFile(path.given);
  addKind(result, MEDIA_KIND_VIDEO);
  addContainer(result, facts.containerFormat.value_or(FORMAT_UNKNOWN));
  result.text("mimeType", "MIME type", facts.mimeType);
  result.text("dlnaProfile", "DLNA profile", facts.dlnaProfile);
  // Scaled by its title's size, the duration of a short DVD comes to nothing.
  const bool isLost = path.name == kDvdIndex && facts.duration == 0;
  if (facts.duration && !isLost) result.duration("duration", "Duration", *facts.duration);
  if (facts.bitRate.value_or(0) != 0)
    result.bitRate("bitRate", "Bit rate", static_cast<std::uint64_t>(*facts.bitRate));
  addPicture(result, facts);
  addVideoStream(result, facts);
  addAudioStream(result, facts);
  addSubtitles(result, path, facts);
  addDates(result, facts);
  result.text("contentIdentifier", "Content identifier", facts.contentIdentifier);
  return result;
}

}  // namespace

Description describeVideo(const MediaPath& path, const ProbeOptions& options) {
  const probe::ProbeResult video = probe::probeVideo({.folder = path.folder,
                                                      .fileName = path.name,
                                                      .audioStreamIndex = options.audioStream,
                                                      .wantsAspect = true},
                                                     probe::kRecordPolicy);
  write(video.trace);
  if (!video.succeeded) return diagnose(path, Wanted::kVideo);
  return videoResult(path, video.facts);
}

}  // namespace kolum::tool
