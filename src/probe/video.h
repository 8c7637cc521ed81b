// The video probe: a sequence of named steps that collects the facts behind every entry point.
#ifndef KOLUM_PROBE_VIDEO_H
#define KOLUM_PROBE_VIDEO_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/trace.h"
#include "dlna/naming.h"
#include "probe/reading.h"
#include "probe/video_facts.h"
#include "read/findings/findings.h"

namespace kolum::probe {

// Differences between the probes of records, of flat arguments and of documents: databases hold the
// results of the former two.
struct ProbePolicy {
  // Disc images are opened at their main title; otherwise only their kind is found out.
  bool opensImages;
  // Subtitle streams are counted for every file; otherwise for disc folders only.
  bool countsSubtitlesOfFiles;
  // If the caller's container format is FORMAT_DVDISO or FORMAT_BDISO, "mpeg" does not replace it.
  bool keepsImageFormat;
  // QuickTime's creation date and content identifier are read.
  bool readsQuickTimeEntries;
  // A missing creation date is reported as time 0.
  bool clearsMissingCreationTime;
  // Each examined video stream logs an empty debug line.
  bool logsVideoStreams;
  // A cover counts only if there is no film, however large it is.
  bool prefersFilms;
};

inline constexpr ProbePolicy kRecordPolicy = {.opensImages = false,
                                              .countsSubtitlesOfFiles = false,
                                              .keepsImageFormat = true,
                                              .readsQuickTimeEntries = true,
                                              .clearsMissingCreationTime = false,
                                              .logsVideoStreams = false,
                                              .prefersFilms = false};

inline constexpr ProbePolicy kDocumentPolicy = {.opensImages = false,
                                                .countsSubtitlesOfFiles = false,
                                                .keepsImageFormat = true,
                                                .readsQuickTimeEntries = true,
                                                .clearsMissingCreationTime = false,
                                                .logsVideoStreams = false,
                                                .prefersFilms = true};

inline constexpr ProbePolicy kFlatPolicy = {.opensImages = true,
                                            .countsSubtitlesOfFiles = true,
                                            .keepsImageFormat = false,
                                            .readsQuickTimeEntries = false,
                                            .clearsMissingCreationTime = true,
                                            .logsVideoStreams = true,
                                            .prefersFilms = false};

struct ProbeRequest {
  std::string_view folder;
  std::string_view fileName;
  // Counts audio streams only; an index that does not exist means the first one.
  int audioStreamIndex = 0;
  bool wantsAspect = false;
  // The caller's container format on entry.
  std::uint32_t formatOnEntry = 0;
  // Receives the explanation of the DLNA name, if wanted.
  dlna::DlnaExplanation* explanation = nullptr;
  // Of the file, or of a disc's main title.
  Reading reading = {};
};

struct ProbeResult {
  bool succeeded = false;
  // What was found, up to the failure if any.
  VideoFacts facts;
  Trace trace;
  // Why the file could not be read, if an isolated reader failed.
  std::optional<read::Failure> failure;
  read::Findings found;
  // The file of a disc's main title; empty for other files.
  std::string mainFile = {};
};

ProbeResult probeVideo(const ProbeRequest& request, const ProbePolicy& policy);

}  // namespace kolum::probe

#endif
