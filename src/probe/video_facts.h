// What a probe finds out about a video. An empty fact was not found: its output keeps the caller's
// value. Texts are empty if there is nothing to report.
#ifndef KOLUM_PROBE_VIDEO_FACTS_H
#define KOLUM_PROBE_VIDEO_FACTS_H

#include <cstdint>
#include <optional>
#include <string>

#include "media/rational.h"

namespace kolum::probe {

struct AspectFacts {
  media::Rational sample;
  media::Rational display;
};

struct VideoFacts {
  std::string yearMonth;
  std::string creationDate;
  std::string mimeType;
  std::string dlnaProfile;
  bool askedDlnaRules = false;  // otherwise only the container gave the MIME type
  std::string contentIdentifier;
  std::optional<int> creationYear;
  std::optional<std::int64_t> creationTime;

  std::optional<std::int64_t> duration;  // seconds
  std::optional<std::int64_t> bitRate;
  std::optional<std::uint32_t> containerFormat;
  std::optional<std::uint32_t> playException;
  std::optional<std::uint32_t> orientation;
  std::optional<int> subtitleCount;
  // A file (not a disc) that has subtitle streams.
  bool fileHasSubtitles = false;

  std::optional<int> width;
  std::optional<int> height;
  std::optional<std::int64_t> videoBitRate;
  std::optional<int> videoCodec;
  std::optional<int> videoProfile;
  std::optional<int> videoLevel;
  std::optional<double> frameRate;
  std::optional<AspectFacts> aspect;
  bool isEquirectangular = false;

  std::optional<unsigned> audioClass;
  std::optional<std::int64_t> audioBitRate;
  std::optional<int> audioCodec;
  std::optional<int> audioProfile;
  std::optional<int> audioLevel;
  std::optional<int> sampleRate;
  std::optional<int> bitsPerSample;
  std::optional<int> channels;
};

}  // namespace kolum::probe

#endif
