// Where the sound of FLAC begins.
#include "read/headers/flac.h"

#include <gtest/gtest.h>

#include <string>

#include "media/source.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

std::string block(int type, std::size_t size, bool isLast = false) {
  return bigEndian(static_cast<unsigned>(type + (isLast ? 0x80 : 0)), 1) + bigEndian(size, 3) +
         std::string(size, 'x');
}

std::optional<std::int64_t> soundPosition(const std::string& content) {
  const TempDir folder;
  const auto source = media::Source::open(folder.write("song.flac", content));
  return headers::flacSoundPosition(*source);
}

TEST(FlacSoundPosition, IsBehindTheLastBlock) {
  const std::string blocks = "fLaC" + block(0, 34) + block(6, 70'000) + block(1, 10, true);
  EXPECT_EQ(soundPosition(blocks + "sound"), static_cast<std::int64_t>(blocks.size()));
}

TEST(FlacSoundPosition, IsUnknownWithoutSense) {
  EXPECT_FALSE(soundPosition(""));
  EXPECT_FALSE(soundPosition("OggS" + block(0, 34, true)));
  EXPECT_FALSE(soundPosition("fLaC" + block(0, 34))) << "no block is the last";
  const std::string cut = "fLaC" + block(0, 34, true);
  EXPECT_FALSE(soundPosition(cut.substr(0, cut.size() - 1)));
}

TEST(FlacSoundPosition, IsUnknownBehindThousandsOfBlocks) {
  std::string blocks = "fLaC";
  for (int i = 0; i < 5000; ++i) blocks += block(1, 0);
  EXPECT_FALSE(soundPosition(blocks + block(1, 0, true)));
}

}  // namespace
}  // namespace kolum::test
