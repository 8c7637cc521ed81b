#include <kolum/video.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "api/guarded.h"
#include "api/outputs.h"
#include "base/trace.h"
#include "isolation/isolation.h"
#include "media/source.h"
#include "probe/streams.h"
#include "probe/video.h"
#include "read/disc/disc.h"

using namespace kolum;
using api::put;

namespace {

// --- The record

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

void writeRecord(const probe::VideoFacts& facts, videoObject_st& record) {
  copyText(record.yearMonth, facts.yearMonth);
  copyText(record.creationDate, facts.creationDate);
  put(&record.creationYear, facts.creationYear);
  copyText(record.mimeType, facts.mimeType);
  copyText(record.dlnaProfile, facts.dlnaProfile);
  put(&record.duration, facts.duration);
  put(&record.width, facts.width);
  put(&record.height, facts.height);
  put(&record.videoBitRate, facts.videoBitRate);
  put(&record.sampleRate, facts.sampleRate);
  put(&record.bitsPerSample, facts.bitsPerSample);
  put(&record.channels, facts.channels);
  put(&record.playException, facts.playException);
  put(&record.containerFormat, facts.containerFormat);
  put(&record.videoCodec, facts.videoCodec);
  put(&record.videoProfile, facts.videoProfile);
  put(&record.videoLevel, facts.videoLevel);
  put(&record.audioCodec, facts.audioCodec);
  put(&record.audioProfile, facts.audioProfile);
  put(&record.audioClass, facts.audioClass);
  put(&record.audioLevel, facts.audioLevel);
  put(&record.audioBitRate, facts.audioBitRate);
  put(&record.creationTime, facts.creationTime);
  put(&record.orientation, facts.orientation);
  put(&record.subtitleCount, facts.subtitleCount);
  if (facts.isEquirectangular) record.is360 = 1;
  put(&record.bitRate, facts.bitRate);
  put(&record.frameRate, facts.frameRate);
  if (facts.aspect) {
    record.sampleAspectNum = facts.aspect->sample.num;
    record.sampleAspectDen = facts.aspect->sample.den;
    record.displayAspectNum = facts.aspect->display.num;
    record.displayAspectDen = facts.aspect->display.den;
  }
  copyText(record.contentIdentifier, facts.contentIdentifier);
}

unsigned probeIntoRecord(const char* folder, const char* fileName, videoObject_st& record,
                         int audioStreamIndex) {
  clearTexts(record);
  const probe::ProbeResult result = probe::probeVideo({.folder = folder,
                                                       .fileName = fileName,
                                                       .audioStreamIndex = audioStreamIndex,
                                                       .wantsAspect = wantsAspect(record),
                                                       .formatOnEntry = record.containerFormat},
                                                      probe::kRecordPolicy);
  write(result.trace);
  writeRecord(result.facts, record);
  return result.succeeded ? 0 : 1;
}

// --- The flat arguments

// The outputs of the flat probes, by name; null if the caller passed none.
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

  // Both pairs are required.
  bool wantsAspect() const {
    return sampleAspectNum != nullptr && sampleAspectDen != nullptr &&
           displayAspectNum != nullptr && displayAspectDen != nullptr;
  }
};

// Values that callers find even if the probe fails.
void writePresets(const FlatOutputs& out) {
  put(out.orientation, VIDEO_ORIENTATION_UPRIGHT);
  put(out.subtitleMode, SUBTITLE_MODE_OTHER);
  put(out.subtitleCount, 0);
  put(out.is360, 0);
}

void writeFacts(const probe::VideoFacts& facts, const FlatOutputs& out) {
  using Record = videoObject_st;
  put(out.width, facts.width);
  put(out.height, facts.height);
  put(out.bitRate, facts.bitRate);
  put(out.videoBitRate, facts.videoBitRate);
  put(out.audioBitRate, facts.audioBitRate);
  put(out.sampleRate, facts.sampleRate);
  put(out.bitsPerSample, facts.bitsPerSample);
  put(out.channels, facts.channels);
  put(out.duration, facts.duration);
  put(out.playException, facts.playException);
  api::putText(out.mimeType, sizeof(Record::mimeType), facts.mimeType);
  api::putText(out.dlnaProfile, sizeof(Record::dlnaProfile), facts.dlnaProfile);
  put(out.containerFormat, facts.containerFormat);
  put(out.videoCodec, facts.videoCodec);
  put(out.videoProfile, facts.videoProfile);
  put(out.videoLevel, facts.videoLevel);
  put(out.audioCodec, facts.audioCodec);
  put(out.audioProfile, facts.audioProfile);
  put(out.audioLevel, facts.audioLevel);
  put(out.orientation, facts.orientation);
  if (facts.fileHasSubtitles) put(out.subtitleMode, SUBTITLE_MODE_FILE);
  put(out.subtitleCount, facts.subtitleCount);
  api::putText(out.yearMonth, sizeof(Record::yearMonth), facts.yearMonth);
  api::putText(out.creationDate, sizeof(Record::creationDate), facts.creationDate);
  put(out.creationTime, facts.creationTime);
  put(out.frameRate, facts.frameRate);
  if (facts.aspect && out.wantsAspect()) {
    *out.sampleAspectNum = facts.aspect->sample.num;
    *out.sampleAspectDen = facts.aspect->sample.den;
    *out.displayAspectNum = facts.aspect->display.num;
    *out.displayAspectDen = facts.aspect->display.den;
  }
  if (facts.isEquirectangular) put(out.is360, 1);
}

unsigned probeIntoOutputs(const char* folder, const char* fileName, int audioStreamIndex,
                          const FlatOutputs& out) {
  writePresets(out);
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr) return 1U;
    const probe::ProbeResult result = probe::probeVideo({.folder = folder,
                                                         .fileName = fileName,
                                                         .audioStreamIndex = audioStreamIndex,
                                                         .wantsAspect = out.wantsAspect()},
                                                        probe::kFlatPolicy);
    write(result.trace);
    writeFacts(result.facts, out);
    return result.succeeded ? 0U : 1U;
  });
}

// The flat probe with every output; the entry points pass some or all of them.
unsigned probeFlat(const char* folder, const char* fileName, int* width, int* height, int* bitRate,
                   int* videoBitRate, int* audioBitRate, int* sampleRate, int* bitsPerSample,
                   int* channels, int* duration, int* playException, char* mimeType,
                   char* dlnaProfile, int* containerFormat, int* videoCodec, int* videoProfile,
                   int* videoLevel, int* audioCodec, int* audioProfile, int* audioLevel,
                   int* orientation, int* subtitleMode, int* subtitleCount, char* yearMonth,
                   char* creationDate, int64_t* creationTime, int audioStreamIndex,
                   double* frameRate, int* sampleAspectNum, int* sampleAspectDen,
                   int* displayAspectNum, int* displayAspectDen, int* is360) {
  return probeIntoOutputs(folder, fileName, audioStreamIndex,
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

// --- Boxes, packets and streams

std::optional<media::TransportPackets> packetsOfFile(const char* path) {
  const auto source = media::Source::openUnchecked(path);
  if (!source) {
    std::perror(path);
    return std::nullopt;
  }
  const read::Findings found = isolation::look(*source, {.transportPackets = true});
  write(found.transportPacketsTrace);
  return found.transportPackets;
}

// Empty when the file cannot be opened or has no streams.
std::optional<media::Container> containerWithStreams(const char* path) {
  if (path == nullptr) return std::nullopt;
  auto container = probe::containerOf(path, ffmpeg::Depth::kStreams);
  if (container && container->streams.empty()) return std::nullopt;
  return container;
}

unsigned countStreams(const char* path, media::StreamType type, unsigned* count) {
  return api::guarded(1U, [&] {
    if (count == nullptr) return 1U;
    const auto container = containerWithStreams(path);
    if (!container) return 1U;
    *count = static_cast<unsigned>(container->count(type));
    return 0U;
  });
}

}  // namespace

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
  return probeFlat(folder, fileName, width, height, bitRate, videoBitRate, audioBitRate, sampleRate,
                   bitsPerSample, channels, duration, playException, mimeType, dlnaProfile,
                   containerFormat, videoCodec, videoProfile, videoLevel, audioCodec, audioProfile,
                   audioLevel, orientation, subtitleMode, subtitleCount, yearMonth, creationDate,
                   creationTime, audioStreamIndex, frameRate, sampleAspectNum, sampleAspectDen,
                   displayAspectNum, displayAspectDen, is360);
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
  return probeFlat(folder, fileName, width, height, bitRate, videoBitRate, audioBitRate, sampleRate,
                   bitsPerSample, channels, duration, playException, mimeType, dlnaProfile,
                   containerFormat, videoCodec, videoProfile, videoLevel, audioCodec, audioProfile,
                   audioLevel, orientation, subtitleMode, &subtitleCount, yearMonth, creationDate,
                   creationTime, audioStreamIndex, frameRate, sampleAspectNum, sampleAspectDen,
                   displayAspectNum, displayAspectDen, &is360);
}

unsigned int GetVideoMetadata(const char* folder, const char* fileName, int* width, int* height,
                              int* bitRate, int* videoBitRate, int* audioBitRate, int* sampleRate,
                              int* bitsPerSample, int* channels, int* duration, int* playException,
                              char* mimeType, char* dlnaProfile, int* containerFormat,
                              int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec,
                              int* audioProfile, int* audioLevel, int* orientation,
                              int* subtitleMode, char* yearMonth, char* creationDate,
                              int64_t* creationTime) {
  int subtitleCount = 0;
  double frameRate = 0;
  int is360 = 0;
  return probeFlat(folder, fileName, width, height, bitRate, videoBitRate, audioBitRate, sampleRate,
                   bitsPerSample, channels, duration, playException, mimeType, dlnaProfile,
                   containerFormat, videoCodec, videoProfile, videoLevel, audioCodec, audioProfile,
                   audioLevel, orientation, subtitleMode, &subtitleCount, yearMonth, creationDate,
                   creationTime, 0, &frameRate, nullptr, nullptr, nullptr, nullptr, &is360);
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
  return probeFlat(folder, fileName, width, height, bitRate, videoBitRate, audioBitRate, sampleRate,
                   bitsPerSample, channels, duration, playException, mimeType, dlnaProfile,
                   containerFormat, videoCodec, videoProfile, videoLevel, audioCodec, audioProfile,
                   audioLevel, orientation, subtitleMode, subtitleCount, yearMonth, creationDate,
                   creationTime, 0, &frameRate, nullptr, nullptr, nullptr, nullptr, is360);
}

unsigned int GetVideoMetadata1(const char* folder, const char* fileName, videoObject_st* record,
                               int audioStreamIndex) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr || record == nullptr) return 1U;
    return probeIntoRecord(folder, fileName, *record, audioStreamIndex);
  });
}

int ProbeTsPacketSize(const char* path, unsigned int* packetSize) {
  return api::guarded(1, [&] {
    if (path == nullptr || packetSize == nullptr) return 1;
    const auto packets = packetsOfFile(path);
    if (!packets) return 1;
    *packetSize = packets->size;
    return packets->isTimeStamped ? 1 : 0;
  });
}

void get_maxsizefilename(char* dir, const char* ext) {
  if (dir == nullptr) return;
  const bool isDone = api::guarded(false, [&] {
    const std::string folder = dir;
    dir[0] = '\0';
    if (ext == nullptr) return true;
    Trace trace;
    const auto path = disc::largestFile(folder, ext, trace);
    write(trace);
    if (path) copyText(dir, kPathSize, *path);
    return true;
  });
  if (!isDone) dir[0] = '\0';
}

int GetMp4SubFormat(const char* path, unsigned int* subFormat) {
  return api::guarded(1, [&] {
    if (subFormat == nullptr) return 1;
    *subFormat = 0;
    const auto source = path != nullptr ? media::Source::openUnchecked(path) : std::nullopt;
    const auto found =
        source ? isolation::look(*source, {.mp4SubFormat = true}).mp4SubFormat : std::nullopt;
    if (!found) return 1;
    *subFormat = *found;
    return 0;
  });
}

int CheckMp4MoovAtEnd(const char* path) {
  return api::guarded(static_cast<int>(headers::MoovPosition::kUnreadable), [&] {
    const auto source = path != nullptr ? media::Source::openUnchecked(path) : std::nullopt;
    const auto found =
        source ? isolation::look(*source, {.moovPosition = true}).moovPosition : std::nullopt;
    return static_cast<int>(found.value_or(headers::MoovPosition::kUnreadable));
  });
}

unsigned int GetVideoRotationDegree(const char* folder, const char* fileName,
                                    unsigned int* degrees) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr || degrees == nullptr) return 1U;
    const auto path = wholePath(folder, fileName);
    const auto rotation = path ? probe::rotationOfFile(*path) : std::nullopt;
    if (!rotation) return 1U;
    put(degrees, rotation->degrees);
    return 0U;
  });
}

unsigned int GetDRMProtectedInfo(const char* path, unsigned int* isProtected) {
  return api::guarded(1U, [&] {
    if (isProtected == nullptr) return 1U;
    const auto container = containerWithStreams(path);
    if (!container) return 1U;
    *isProtected = std::ranges::any_of(container->streams, probe::isEncrypted) ? 1 : 0;
    return 0U;
  });
}

unsigned int GetAudioTrack(const char* path, unsigned int* count) {
  return countStreams(path, media::StreamType::kAudio, count);
}

unsigned int GetSubtitleTrack(const char* path, unsigned int* count) {
  return countStreams(path, media::StreamType::kSubtitle, count);
}
