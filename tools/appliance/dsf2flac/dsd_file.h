// What a DSD file says about itself.
#ifndef KOLUM_DSF2FLAC_DSD_FILE_H
#define KOLUM_DSF2FLAC_DSD_FILE_H

#include <cstdint>
#include <optional>
#include <string>

namespace kolum::dsf2flac {

struct DsdFacts {
  std::string title;
  std::string artist;
  std::string album;
  int year = 0;   // 0 if unknown
  int track = 0;  // 0 if unknown
  std::int64_t seconds = 0;
  int channels = 0;
  std::int64_t frequency = 0;  // Hz, of the one-bit samples: 2822400 for DSD64
};

// Empty if there is no such file or it is not a DSD file.
std::optional<DsdFacts> readDsdFile(const std::string& path);

}  // namespace kolum::dsf2flac

#endif
