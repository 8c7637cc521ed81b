#include "read/headers/mpeg_audio.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kolum::headers::beginsWithMp3Frames;

// MPEG-1 layer III, 128 kbit/s, 44.1 kHz: 417 bytes, 418 with padding.
std::vector<std::uint8_t> frames(int count, std::uint8_t second = 0xFB, std::uint8_t third = 0x90) {
  std::vector<std::uint8_t> sound;
  for (int i = 0; i < count; ++i) {
    std::vector<std::uint8_t> frame(417 + (third >> 1 & 1), 0x55);
    frame[0] = 0xFF;
    frame[1] = second;
    frame[2] = third;
    sound.insert(sound.end(), frame.begin(), frame.end());
  }
  return sound;
}

TEST(Mp3Frames, AreRecognizedInARow) {
  EXPECT_TRUE(beginsWithMp3Frames(frames(8)));
  EXPECT_TRUE(beginsWithMp3Frames(frames(8, 0xFB, 0x92)));
  EXPECT_TRUE(beginsWithMp3Frames(frames(20)));
}

TEST(Mp3Frames, AreNotRecognizedIfFewOrCut) {
  EXPECT_FALSE(beginsWithMp3Frames(frames(7)));
  auto cut = frames(8);
  cut.pop_back();
  EXPECT_FALSE(beginsWithMp3Frames(cut));
  EXPECT_FALSE(beginsWithMp3Frames({}));
}

TEST(Mp3Frames, AreOfOneKind) {
  auto sound = frames(8);
  sound[3 * 417 + 2] = 0x94;  // 48 kHz
  EXPECT_FALSE(beginsWithMp3Frames(sound));
  sound = frames(8);
  sound[3 * 417] = 0;
  EXPECT_FALSE(beginsWithMp3Frames(sound));
}

TEST(Mp3Frames, HaveValidHeaders) {
  EXPECT_FALSE(beginsWithMp3Frames(frames(8, 0xFD)));        // layer II
  EXPECT_FALSE(beginsWithMp3Frames(frames(8, 0xEB)));        // reserved version
  EXPECT_FALSE(beginsWithMp3Frames(frames(8, 0xFB, 0x00)));  // free bit rate
  EXPECT_FALSE(beginsWithMp3Frames(frames(8, 0xFB, 0xF0)));  // no bit rate
  EXPECT_FALSE(beginsWithMp3Frames(frames(8, 0xFB, 0x9C)));  // reserved sample rate
}

}  // namespace
