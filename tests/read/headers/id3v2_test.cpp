#include "read/headers/id3v2.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/hostile_bytes.h"
#include "support/temp_dir.h"

namespace headers = kolum::headers;
using kolum::test::contentOf;
using kolum::test::TempDir;

namespace {

constexpr std::size_t kMebibyte = 1 << 20;

std::string number(std::uint64_t value, int bytes, int bits = 8) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i)
    text += static_cast<char>(value >> (i * bits) & ((1U << bits) - 1));
  return text;
}

std::string plainFrame(std::size_t size) {
  return "TXXX" + number(size, 4) + number(0, 2) + std::string(size, 'x');
}

// A frame of version 3 that inflates to SIZE bytes.
std::string compressedFrame(std::size_t size) {
  const std::string content = number(size, 4) + kolum::test::deflatedZeros(size);
  return "TXXX" + number(content.size(), 4) + number(0x80, 2) + content;
}

std::string tag(const std::string& frames, char version = 3, char flags = 0) {
  return std::string("ID3") + version + '\0' + flags + number(frames.size(), 4, 7) + frames;
}

// Whether the tag at POSITION of a file with this content still has its frames.
bool keepsTag(const std::string& content, std::int64_t position = 0) {
  const TempDir folder;
  const auto source = kolum::media::Source::open(folder.write("file", content));
  if (!source) return false;
  headers::blankInflatingTags(*source);
  std::vector<std::uint8_t> bytes(4);
  source->readAt(position + 10, bytes);
  return std::string(bytes.begin(), bytes.end()) == "TXXX";
}

TEST(Id3v2, HasSevenBitsPerByteInItsSize) {
  const auto sizeOf = [](const std::string& text) {
    return headers::id3v2Size(
        std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
  };
  EXPECT_EQ(sizeOf(std::string("ID3\3\0\0\0\0\1\1", 10)), 10 + 129);
  EXPECT_EQ(sizeOf(std::string("ID3\4\0\x10\0\0\1\1", 10)), 20 + 129);
  EXPECT_EQ(sizeOf(std::string("ID3\3\0\0\0\0\1", 9)), 0);
  EXPECT_EQ(sizeOf("TAG"), 0);
  EXPECT_EQ(sizeOf(""), 0);
}

TEST(InflatingTags, AreKeptUpToTheBudget) {
  EXPECT_TRUE(keepsTag(tag(compressedFrame(1000))));
  EXPECT_TRUE(keepsTag(tag(compressedFrame(15 * kMebibyte) + plainFrame(100))));
  EXPECT_TRUE(keepsTag(tag(plainFrame(3 * kMebibyte))));
}

TEST(InflatingTags, AreBlankedBeyondIt) {
  std::string frames = plainFrame(10);
  for (int i = 0; i < 6; ++i) frames += compressedFrame(3 * kMebibyte);
  EXPECT_FALSE(keepsTag(tag(frames)));
  EXPECT_FALSE(keepsTag(tag(compressedFrame(17 * kMebibyte))));
}

TEST(InflatingTags, AreFoundBehindWhatMisleadsAWalk) {
  const std::string bomb = compressedFrame(20 * kMebibyte);
  EXPECT_FALSE(keepsTag(tag(plainFrame(10) + "????" + bomb)));
  EXPECT_FALSE(keepsTag(tag(plainFrame(10) + bomb, 3, '\x80')));
  EXPECT_FALSE(keepsTag(tag(plainFrame(300) + bomb, 4)));
}

TEST(InflatingTags, AreFoundInARow) {
  const std::string first = tag(plainFrame(10));
  EXPECT_FALSE(keepsTag(first + tag(compressedFrame(17 * kMebibyte)),
                        static_cast<std::int64_t>(first.size())));
}

TEST(InflatingTags, AreFoundInChunksAndBehindDsfData) {
  const std::string bomb = tag(compressedFrame(17 * kMebibyte));
  const std::string aiff = "FORM1234AIFFSSND" + number(4, 4) + "dataID3 " + number(bomb.size(), 4);
  EXPECT_FALSE(keepsTag(aiff + bomb, static_cast<std::int64_t>(aiff.size())));
  const std::string wave = std::string("RIFF1234WAVEid3 ") + static_cast<char>(bomb.size() & 0xFF) +
                           static_cast<char>(bomb.size() >> 8 & 0xFF) +
                           static_cast<char>(bomb.size() >> 16) + '\0';
  EXPECT_FALSE(keepsTag(wave + bomb, static_cast<std::int64_t>(wave.size())));
  const std::string dff = "FRM812345678DSD ID3 " + number(bomb.size(), 8);
  EXPECT_FALSE(keepsTag(dff + bomb, static_cast<std::int64_t>(dff.size())));
  const std::string dsf = "DSD " + std::string(16, '\0') + std::string("\x1C\0\0\0\0\0\0\0", 8);
  EXPECT_FALSE(keepsTag(dsf + bomb, static_cast<std::int64_t>(dsf.size())));
}

}  // namespace
