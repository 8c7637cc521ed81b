// The photo probe.
#ifndef KOLUM_PROBE_PHOTO_H
#define KOLUM_PROBE_PHOTO_H

#include <optional>
#include <string>

#include "probe/reading.h"
#include "read/findings/findings.h"

namespace kolum::probe {

struct PhotoFacts {
  int width = 0;
  int height = 0;
  int pixelFormat = 0;          // FFmpeg's number in release 57; -1 when unknown
  std::string pixelFormatName;  // FFmpeg's; empty when unknown
};

struct PhotoResult {
  bool isReadable = false;
  std::optional<PhotoFacts> picture = {};  // empty if the file has none
  // Why the file could not be read, if an isolated reader failed.
  std::optional<read::Failure> failure = {};
  read::Findings found = {};
};

PhotoResult probePhoto(const std::string& path, const Reading& reading = {});

}  // namespace kolum::probe

#endif
