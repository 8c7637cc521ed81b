#include <kolum/video.h>

#include "support/text.h"
#include "video/probe.h"

namespace kolum::video {

namespace {

// The outputs of the flat probes, by name; null where the caller has none.
struct FlatOutputs {
  int* width = nullptr;
  int* height = nullptr;
  int* bitRate = nullptr;
  int* videoBitRate = nullptr;
  int* audioBitRate = nullptr;
  int* sampleRate = nullptr;
  int* bitsPerSample = nullptr;
  int* channels = nullptr;
  int* duration = nullptr;
  int* playException = nullptr;
  char* mimeType = nullptr;
  char* dlnaProfile = nullptr;
  int* containerFormat = nullptr;
  int* videoCodec = nullptr;
  int* videoProfile = nullptr;
  int* videoLevel = nullptr;
  int* audioCodec = nullptr;
  int* audioProfile = nullptr;
  int* audioLevel = nullptr;
  int* orientation = nullptr;
  int* subtitleMode = nullptr;
  int* subtitleCount = nullptr;
  char* yearMonth = nullptr;
  char* creationDate = nullptr;
  std::int64_t* creationTime = nullptr;
  double* frameRate = nullptr;
  int* sampleAspectNum = nullptr;
  int* sampleAspectDen = nullptr;
  int* displayAspectNum = nullptr;
  int* displayAspectDen = nullptr;
  int* is360 = nullptr;

  // Either of the pairs alone is no aspect.
  bool wantsAspect() const {
    return sampleAspectNum != nullptr && sampleAspectDen != nullptr &&
           displayAspectNum != nullptr && displayAspectDen != nullptr;
  }
};

void preset(int* output, int value) {
  if (output != nullptr) *output = value;
}

// Unlike the record's texts, these are not cleared: one that the probe has nothing for keeps what
// the caller put there, as numbers do.
void writeText(char* output, std::size_t size, const std::string& text) {
  if (output != nullptr && !text.empty()) copyText(output, size, text);
}

// What callers of these functions find before anything can fail.
void writePresets(const FlatOutputs& out) {
  preset(out.orientation, VIDEO_ORIENTATION_UPRIGHT);
  preset(out.subtitleMode, SUBTITLE_MODE_OTHER);
  preset(out.subtitleCount, 0);
  preset(out.is360, 0);
}

void writeFacts(const VideoFacts& facts, const FlatOutputs& out) {
  using Record = videoObject_st;
  writeFact(out.width, facts.width);
  writeFact(out.height, facts.height);
  writeFact(out.bitRate, facts.bitRate);
  writeFact(out.videoBitRate, facts.videoBitRate);
  writeFact(out.audioBitRate, facts.audioBitRate);
  writeFact(out.sampleRate, facts.sampleRate);
  writeFact(out.bitsPerSample, facts.bitsPerSample);
  writeFact(out.channels, facts.channels);
  writeFact(out.duration, facts.duration);
  writeFact(out.playException, facts.playException);
  writeText(out.mimeType, sizeof(Record::mimeType), facts.mimeType);
  writeText(out.dlnaProfile, sizeof(Record::dlnaProfile), facts.dlnaProfile);
  writeFact(out.containerFormat, facts.containerFormat);
  writeFact(out.videoCodec, facts.videoCodec);
  writeFact(out.videoProfile, facts.videoProfile);
  writeFact(out.videoLevel, facts.videoLevel);
  writeFact(out.audioCodec, facts.audioCodec);
  writeFact(out.audioProfile, facts.audioProfile);
  writeFact(out.audioLevel, facts.audioLevel);
  writeFact(out.orientation, facts.orientation);
  if (facts.fileHasSubtitles) preset(out.subtitleMode, SUBTITLE_MODE_FILE);
  writeFact(out.subtitleCount, facts.subtitleCount);
  writeText(out.yearMonth, sizeof(Record::yearMonth), facts.yearMonth);
  writeText(out.creationDate, sizeof(Record::creationDate), facts.creationDate);
  writeFact(out.creationTime, facts.creationTime);
  writeFact(out.frameRate, facts.frameRate);
  if (facts.aspect && out.wantsAspect()) {
    *out.sampleAspectNum = facts.aspect->sample.num;
    *out.sampleAspectDen = facts.aspect->sample.den;
    *out.displayAspectNum = facts.aspect->display.num;
    *out.displayAspectDen = facts.aspect->display.den;
  }
  if (facts.isEquirectangular) preset(out.is360, 1);
}

unsigned int probeIntoOutputs(const char* folder, const char* fileName, int audioStreamIndex,
                              const FlatOutputs& out) try {
  writePresets(out);
  if (folder == nullptr || fileName == nullptr) return 1;
  const ProbeResult result = probeVideo({.folder = folder,
                                         .fileName = fileName,
                                         .audioStreamIndex = audioStreamIndex,
                                         .wantsAspect = out.wantsAspect()},
                                        kFlatPolicy);
  writeFacts(result.facts, out);
  return result.succeeded ? 0 : 1;
} catch (...) {
  return 1;
}

}  // namespace

}  // namespace kolum::video

unsigned int GetVideoMetadata3(const char* folder, const char* fileName, int* width, int* height,
                               int* bitRate, int* videoBitRate, int* audioBitRate, int* sampleRate,
                               int* bitsPerSample, int* channels, int* duration, int* playException,
                               char* mimeType, char* dlnaProfile, int* containerFormat,
                               int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec,
                               int* audioProfile, int* audioLevel, int* orientation,
                               int* subtitleMode, int* subtitleCount, char* yearMonth,
                               char* creationDate, int64_t* creationTime, int audioStreamIndex,
                               double* frameRate, int* sampleAspectNum, int* sampleAspectDen,
                               int* displayAspectNum, int* displayAspectDen, int* is360) {
  return kolum::video::probeIntoOutputs(folder, fileName, audioStreamIndex,
                                        {.width = width,
                                         .height = height,
                                         .bitRate = bitRate,
                                         .videoBitRate = videoBitRate,
                                         .audioBitRate = audioBitRate,
                                         .sampleRate = sampleRate,
                                         .bitsPerSample = bitsPerSample,
                                         .channels = channels,
                                         .duration = duration,
                                         .playException = playException,
                                         .mimeType = mimeType,
                                         .dlnaProfile = dlnaProfile,
                                         .containerFormat = containerFormat,
                                         .videoCodec = videoCodec,
                                         .videoProfile = videoProfile,
                                         .videoLevel = videoLevel,
                                         .audioCodec = audioCodec,
                                         .audioProfile = audioProfile,
                                         .audioLevel = audioLevel,
                                         .orientation = orientation,
                                         .subtitleMode = subtitleMode,
                                         .subtitleCount = subtitleCount,
                                         .yearMonth = yearMonth,
                                         .creationDate = creationDate,
                                         .creationTime = creationTime,
                                         .frameRate = frameRate,
                                         .sampleAspectNum = sampleAspectNum,
                                         .sampleAspectDen = sampleAspectDen,
                                         .displayAspectNum = displayAspectNum,
                                         .displayAspectDen = displayAspectDen,
                                         .is360 = is360});
}

unsigned int GetVideoMetadata2(const char* folder, const char* fileName, int* width, int* height,
                               int* bitRate, int* videoBitRate, int* audioBitRate, int* sampleRate,
                               int* bitsPerSample, int* channels, int* duration, int* playException,
                               char* mimeType, char* dlnaProfile, int* containerFormat,
                               int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec,
                               int* audioProfile, int* audioLevel, int* orientation,
                               int* subtitleMode, char* yearMonth, char* creationDate,
                               int64_t* creationTime, int audioStreamIndex, double* frameRate,
                               int* sampleAspectNum, int* sampleAspectDen, int* displayAspectNum,
                               int* displayAspectDen) {
  int subtitleCount = 0;
  int is360 = 0;
  return GetVideoMetadata3(
      folder, fileName, width, height, bitRate, videoBitRate, audioBitRate, sampleRate,
      bitsPerSample, channels, duration, playException, mimeType, dlnaProfile, containerFormat,
      videoCodec, videoProfile, videoLevel, audioCodec, audioProfile, audioLevel, orientation,
      subtitleMode, &subtitleCount, yearMonth, creationDate, creationTime, audioStreamIndex,
      frameRate, sampleAspectNum, sampleAspectDen, displayAspectNum, displayAspectDen, &is360);
}

unsigned int GetVideoMetadata(const char* folder, const char* fileName, int* width, int* height,
                              int* bitRate, int* videoBitRate, int* audioBitRate, int* sampleRate,
                              int* bitsPerSample, int* channels, int* duration, int* playException,
                              char* mimeType, char* dlnaProfile, int* containerFormat,
                              int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec,
                              int* audioProfile, int* audioLevel, int* orientation,
                              int* subtitleMode, char* yearMonth, char* creationDate,
                              int64_t* creationTime) {
  double frameRate = 0;
  return GetVideoMetadata2(folder, fileName, width, height, bitRate, videoBitRate, audioBitRate,
                           sampleRate, bitsPerSample, channels, duration, playException, mimeType,
                           dlnaProfile, containerFormat, videoCodec, videoProfile, videoLevel,
                           audioCodec, audioProfile, audioLevel, orientation, subtitleMode,
                           yearMonth, creationDate, creationTime, 0, &frameRate, nullptr, nullptr,
                           nullptr, nullptr);
}

unsigned int GetVideoMetadata1(const char* folder, const char* fileName, int* width, int* height,
                               int* bitRate, int* videoBitRate, int* audioBitRate, int* sampleRate,
                               int* bitsPerSample, int* channels, int* duration, int* playException,
                               char* mimeType, char* dlnaProfile, int* containerFormat,
                               int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec,
                               int* audioProfile, int* audioLevel, int* orientation,
                               int* subtitleMode, int* subtitleCount, char* yearMonth,
                               char* creationDate, int64_t* creationTime, int* is360) {
  double frameRate = 0;
  return GetVideoMetadata3(folder, fileName, width, height, bitRate, videoBitRate, audioBitRate,
                           sampleRate, bitsPerSample, channels, duration, playException, mimeType,
                           dlnaProfile, containerFormat, videoCodec, videoProfile, videoLevel,
                           audioCodec, audioProfile, audioLevel, orientation, subtitleMode,
                           subtitleCount, yearMonth, creationDate, creationTime, 0, &frameRate,
                           nullptr, nullptr, nullptr, nullptr, is360);
}
