// What a report says about one file.
#ifndef KOLUM_TOOL_REPORT_REPORTED_FILE_H
#define KOLUM_TOOL_REPORT_REPORTED_FILE_H

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "scan/query.h"

namespace kolum::tool {

// Degrees, rounded to tenths.
struct Place {
  double latitude = 0;
  double longitude = 0;
  std::string name;  // may be empty

  std::string text() const;  // "48.9 2.3"
};

// Texts are printable; empty if unknown, as numbers are 0.
struct ReportedFile {
  std::string path;
  std::string kind;  // "video", "music", "photo"
  std::int64_t bytes = 0;
  double seconds = 0;
  std::string container;
  std::string videoCodec;
  std::string audioCodec;
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::string resolution;    // of videos: "1080p"
  std::string dynamicRange;  // of videos: "HDR10", "SDR"
  std::string channels;      // "stereo"
  std::string dlnaProfile;
  std::string date;   // "2015-06-07": when it was made, else when it was changed
  std::string taken;  // of photos, the same, if they say so
  std::string title;
  std::string artist;
  std::string fingerprint;
  std::string state;
  std::optional<Place> place;
};

// DOCUMENT is the file's, or an empty object. Values of other types than documents have are taken
// as unknown.
ReportedFile reportedFile(const scan::FoundFile& file, const nlohmann::ordered_json& document);

}  // namespace kolum::tool

#endif
