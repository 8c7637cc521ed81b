// The video probe: one flow of named steps that gathers the facts behind every entry point.
#ifndef KOLUM_PROBE_VIDEO_H
#define KOLUM_PROBE_VIDEO_H

#include <cstdint>
#include <string_view>

#include "base/trace.h"
#include "dlna/naming.h"
#include "probe/video_facts.h"

namespace kolum::probe {

// Where the record probe and the flat probe differ: stored records hold what each of them reports.
struct ProbePolicy {
  // Disc images are opened by their main title; else they are only told apart.
  bool opensImages;
  // Subtitle streams are counted for every file; else for disc folders only.
  bool countsSubtitlesOfFiles;
  // A format of FORMAT_DVDISO or FORMAT_BDISO that the caller came with outlives "mpeg".
  bool keepsImageFormat;
  // QuickTime's creation date and content identifier are read.
  bool readsQuickTimeEntries;
  // No creation date is told as time 0.
  bool clearsMissingCreationTime;
  // Each video stream looked at writes an empty debug line.
  bool logsVideoStreams;
};

inline constexpr ProbePolicy kRecordPolicy = {.opensImages = false,
                                              .countsSubtitlesOfFiles = false,
                                              .keepsImageFormat = true,
                                              .readsQuickTimeEntries = true,
                                              .clearsMissingCreationTime = false,
                                              .logsVideoStreams = false};

inline constexpr ProbePolicy kFlatPolicy = {.opensImages = true,
                                            .countsSubtitlesOfFiles = true,
                                            .keepsImageFormat = false,
                                            .readsQuickTimeEntries = false,
                                            .clearsMissingCreationTime = true,
                                            .logsVideoStreams = true};

struct ProbeRequest {
  std::string_view folder;
  std::string_view fileName;
  // Counted among the audio streams; the first one serves for an index that does not exist.
  int audioStreamIndex = 0;
  bool wantsAspect = false;
  // What the caller's container format holds on entry.
  std::uint32_t formatOnEntry = 0;
  // Where the way to the DLNA name goes, if somebody wants to know it.
  dlna::DlnaExplanation* explanation = nullptr;
};

struct ProbeResult {
  bool succeeded = false;
  // What was found, up to the failure if there was one.
  VideoFacts facts;
  Trace trace;
};

ProbeResult probeVideo(const ProbeRequest& request, const ProbePolicy& policy);

}  // namespace kolum::probe

#endif
