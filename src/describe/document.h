// What is known of a file, for people and programs: the values behind its document.
#ifndef KOLUM_DESCRIBE_DOCUMENT_H
#define KOLUM_DESCRIBE_DOCUMENT_H

#include <kolum/filetype.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/trace.h"
#include "describe/failure.h"
#include "describe/media_path.h"
#include "describe/song.h"
#include "geocode/place_answer.h"
#include "media/disc.h"
#include "probe/photo.h"
#include "probe/video_facts.h"
#include "read/findings/findings.h"

namespace kolum::describe {

struct FileStatus {
  std::int64_t size = 0;        // bytes
  std::int64_t modifiedNs = 0;  // nanoseconds since 1970
};

// Of the three kinds of facts, one is set unless there is a failure.
struct Document {
  MediaPath path;  // the caller's name for the file is "given"; any bytes
  std::optional<FileStatus> status;
  int kind = MEDIA_KIND_NONE;
  const MediaFileInfo* type = nullptr;  // the row of the name's extension for this kind
  bool isDisc = false;                  // the index file of a DVD or Blu-ray folder

  std::optional<probe::VideoFacts> video;
  std::optional<media::Disc> disc;  // of discs, besides the facts of the main title
  std::optional<Song> song;
  std::optional<probe::PhotoFacts> photo;
  bool hasDetails = false;  // tags, streams and chapters were asked for
  read::Findings found;

  std::optional<geocode::Place> place;  // the nearest one, if it was asked for
  std::string placeTrouble;             // why that is not known

  std::optional<Failure> failure;
  // What the probes have to say to standard output and standard error.
  Trace trace;
};

}  // namespace kolum::describe

#endif
