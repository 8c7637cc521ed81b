#include <kolum/video.h>

#include <cstring>

#include "support/text.h"
#include "video/probe.h"

namespace kolum::video {

namespace {

void clearTexts(videoObject_st& record) {
  std::memset(record.yearMonth, 0, sizeof record.yearMonth);
  std::memset(record.creationDate, 0, sizeof record.creationDate);
  record.creationYear = 0;
  std::memset(record.mimeType, 0, sizeof record.mimeType);
  std::memset(record.dlnaProfile, 0, sizeof record.dlnaProfile);
  std::memset(record.contentIdentifier, 0, sizeof record.contentIdentifier);
}

// Callers ask for the aspect by presetting all four fields.
bool wantsAspect(const videoObject_st& record) {
  return record.sampleAspectNum != 0 && record.sampleAspectDen != 0 &&
         record.displayAspectNum != 0 && record.displayAspectDen != 0;
}

void writeRecord(const VideoFacts& facts, videoObject_st& record) {
  copyText(record.yearMonth, facts.yearMonth);
  copyText(record.creationDate, facts.creationDate);
  writeFact(&record.creationYear, facts.creationYear);
  copyText(record.mimeType, facts.mimeType);
  copyText(record.dlnaProfile, facts.dlnaProfile);
  writeFact(&record.duration, facts.duration);
  writeFact(&record.width, facts.width);
  writeFact(&record.height, facts.height);
  writeFact(&record.videoBitRate, facts.videoBitRate);
  writeFact(&record.sampleRate, facts.sampleRate);
  writeFact(&record.bitsPerSample, facts.bitsPerSample);
  writeFact(&record.channels, facts.channels);
  writeFact(&record.playException, facts.playException);
  writeFact(&record.containerFormat, facts.containerFormat);
  writeFact(&record.videoCodec, facts.videoCodec);
  writeFact(&record.videoProfile, facts.videoProfile);
  writeFact(&record.videoLevel, facts.videoLevel);
  writeFact(&record.audioCodec, facts.audioCodec);
  writeFact(&record.audioProfile, facts.audioProfile);
  writeFact(&record.audioClass, facts.audioClass);
  writeFact(&record.audioLevel, facts.audioLevel);
  writeFact(&record.audioBitRate, facts.audioBitRate);
  writeFact(&record.creationTime, facts.creationTime);
  writeFact(&record.orientation, facts.orientation);
  writeFact(&record.subtitleCount, facts.subtitleCount);
  if (facts.isEquirectangular) record.is360 = 1;
  writeFact(&record.bitRate, facts.bitRate);
  writeFact(&record.frameRate, facts.frameRate);
  if (facts.aspect) {
    record.sampleAspectNum = facts.aspect->sample.num;
    record.sampleAspectDen = facts.aspect->sample.den;
    record.displayAspectNum = facts.aspect->display.num;
    record.displayAspectDen = facts.aspect->display.den;
  }
  copyText(record.contentIdentifier, facts.contentIdentifier);
}

unsigned int probeIntoRecord(const char* folder, const char* fileName, videoObject_st& record,
                             int audioStreamIndex) {
  clearTexts(record);
  const ProbeResult result = probeVideo({.folder = folder,
                                         .fileName = fileName,
                                         .audioStreamIndex = audioStreamIndex,
                                         .wantsAspect = wantsAspect(record),
                                         .formatOnEntry = record.containerFormat},
                                        kRecordPolicy);
  writeRecord(result.facts, record);
  return result.succeeded ? 0 : 1;
}

}  // namespace

}  // namespace kolum::video

unsigned int GetVideoMetadata1(const char* folder, const char* fileName, videoObject_st* record,
                               int audioStreamIndex) try {
  if (folder == nullptr || fileName == nullptr || record == nullptr) return 1;
  return kolum::video::probeIntoRecord(folder, fileName, *record, audioStreamIndex);
} catch (...) {
  return 1;
}
