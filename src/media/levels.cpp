#include "media/levels.h"

#include <kolum/identifiers.h>

#include <array>

namespace kolum::media {

namespace {

struct NamedLevel {
  int codec;
  int level;
  const char* name;
};

// Levels whose names cannot be calculated from their numbers.
constexpr auto kNamedLevels = std::to_array<NamedLevel>({
    {CODEC_ID_H264, 9, "1b"},
    {CODEC_ID_MPEG2VIDEO, 4, "high"},
    {CODEC_ID_MPEG2VIDEO, 6, "high 1440"},
    {CODEC_ID_MPEG2VIDEO, 8, "main"},
    {CODEC_ID_MPEG2VIDEO, 10, "low"},
    {CODEC_ID_MPEG4, 7, "3b"},
    {CODEC_ID_MPEG4, 9, "0b"},
});

struct LevelScale {
  int codec;
  int perWhole;
};

// Codecs that number levels in fractions: H.264's 31 is level 3.1, as is HEVC's 93.
constexpr auto kLevelScales = std::to_array<LevelScale>({
    {CODEC_ID_H264, 10},
    {CODEC_ID_HEVC, 30},
});

}  // namespace

std::string levelName(int codec, int level) {
  if (level < 0) return "";
  for (const NamedLevel& row : kNamedLevels)
    if (row.codec == codec && row.level == level) return row.name;
  for (const LevelScale& row : kLevelScales) {
    if (row.codec != codec) continue;
    const std::string whole = std::to_string(level / row.perWhole);
    const int tenths = level % row.perWhole * 10 / row.perWhole;
    return tenths == 0 ? whole : whole + "." + std::to_string(tenths);
  }
  return std::to_string(level);
}

}  // namespace kolum::media
