#include "read/headers/wave.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "read/ffmpeg/input.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace headers = kolum::headers;
using kolum::test::media;
using kolum::test::TempDir;
using namespace std::string_literals;

namespace {

constexpr std::size_t kLength = 16384;
constexpr std::int64_t kPosition = 44;

std::string littleEndian(std::uint32_t value) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string noise(std::size_t size) {
  std::mt19937 random(1);
  std::string samples;
  while (samples.size() < size) samples += static_cast<char>(random() % 251);
  samples[0] = 1;  // whatever chance says
  return samples;
}

bool isPlain(const std::string& samples, std::optional<std::uint32_t> stated = std::nullopt) {
  const TempDir folder;
  const std::string path =
      folder.write("song.wav", std::string(kPosition - 8, 'h') + "data" +
                                   littleEndian(stated.value_or(samples.size())) + samples);
  const auto source = kolum::media::Source::open(path);
  return source && headers::isPlainPcm(*source, kPosition, kLength);
}

std::string beginning(const std::string& first) {
  std::string samples = noise(kLength * 2);
  return samples.replace(0, first.size(), first);
}

std::string containing(const std::string& mark, std::size_t position) {
  std::string samples = noise(kLength * 2);
  return samples.replace(position, mark.size(), mark);
}

TEST(WaveSamples, ArePlainWithoutMarks) {
  EXPECT_TRUE(isPlain(noise(kLength * 2)));
  EXPECT_TRUE(isPlain(std::string(kLength * 2, '\0')));
  EXPECT_TRUE(isPlain(noise(2000)));
}

TEST(WaveSamples, ArePlainIfTheyBeginNearlyLikeFrames) {
  EXPECT_TRUE(isPlain(beginning("\xFF\xFF\xFF\xFF"s)));          // -1, -1
  EXPECT_TRUE(isPlain(beginning("\x00\x00\xFF\xFF\x00\x00"s)));  // 0, -1, 0
  EXPECT_TRUE(isPlain(beginning("\xFF\xFF\x01\x00"s)));
  EXPECT_TRUE(isPlain(beginning("\xFE\xFF\x00\x00"s)));
}

TEST(WaveSamples, AreNotPlainIfTheyBeginLikeFrames) {
  EXPECT_FALSE(isPlain(beginning("\xFF\xF1\x50\x80"s)));  // AAC
  EXPECT_FALSE(isPlain(beginning("\xFF\xF9\x50\x80"s)));
  EXPECT_FALSE(isPlain(beginning("\x56\xE0\x50\x80"s)));
  EXPECT_FALSE(isPlain(beginning("\x0B\x77"s)));  // AC-3
  EXPECT_FALSE(isPlain(beginning("\x77\x0B"s)));
  EXPECT_FALSE(isPlain(beginning("\x01\x10"s)));
  EXPECT_FALSE(isPlain(beginning("ID3"s)));
  EXPECT_FALSE(isPlain(beginning("\xFF\xFB\x90\x64"s)));  // MP3
  EXPECT_FALSE(isPlain(beginning("\x00\x00\x00\xFF\xFB\x90\x64"s)));
  EXPECT_FALSE(isPlain(beginning("\xFF\xE3\x90\x64"s)));
}

TEST(WaveSamples, AreNotPlainWithAMarkAnywhere) {
  const std::string marks[] = {"\x7F\xFE\x80\x01"s, "\xFE\x7F\x01\x80"s, "\x1F\xFF\xE8\x00"s,
                               "\xFF\x1F\x00\xE8"s, "\x64\x58\x20\x25"s, "\xF8\x72\x6F\xBA"s};
  for (const std::string& mark : marks) {
    EXPECT_FALSE(isPlain(containing(mark, 100)));
    EXPECT_FALSE(isPlain(containing(mark, 4097)));
    EXPECT_FALSE(isPlain(containing(mark, kLength - mark.size())));
    EXPECT_TRUE(isPlain(containing(mark, kLength - mark.size() + 1)));
    EXPECT_TRUE(isPlain(containing(mark.substr(0, 3), 100)));
  }
}

TEST(WaveSamples, AreJudgedOnlyInOneChunk) {
  const std::string samples = noise(kLength * 2);
  EXPECT_TRUE(isPlain(samples, kLength));
  EXPECT_TRUE(isPlain(samples, 0xFFFFFFFF));  // up to the file's end
  EXPECT_FALSE(isPlain(samples, kLength - 1));
  EXPECT_FALSE(isPlain(samples, 0));
  const TempDir folder;
  const auto source = kolum::media::Source::open(folder.write("no.wav", noise(kLength * 2)));
  ASSERT_TRUE(source);
  EXPECT_FALSE(headers::isPlainPcm(*source, kPosition, kLength));
  EXPECT_FALSE(headers::isPlainPcm(*source, 0, kLength));
}

// What FFmpeg finds in a WAV file that declares 16-bit samples and holds such frames instead.
std::string codecOfSamples(const std::string& name, const std::string& encoder) {
  const std::string frames =
      media("frames." + name, "-f lavfi -i sine=d=3:r=48000 -ac 2 " + encoder);
  const std::string path =
      media(name + ".wav", "-f s16le -ar 48000 -ac 2 -i '" + frames + "' -c:a copy");
  const auto song = kolum::ffmpeg::readContainer(path, kolum::ffmpeg::Depth::kStreams);
  return song && !song->streams.empty() ? song->streams[0].codecName : "";
}

TEST(WaveSamples, ThatAreFramesAreFound) {
  EXPECT_EQ(codecOfSamples("ac3", "-c:a ac3 -b:a 192k"), "ac3");
  EXPECT_EQ(codecOfSamples("dts", "-c:a dca -strict -2 -b:a 768k"), "dts");
  EXPECT_EQ(codecOfSamples("thd", "-c:a truehd -strict -2 -f truehd"), "truehd");
  EXPECT_EQ(codecOfSamples("mp3", "-c:a libmp3lame -write_id3v2 0 -write_xing 0"), "mp3");
  EXPECT_EQ(codecOfSamples("aac", "-c:a aac -f adts"), "aac");
  EXPECT_EQ(codecOfSamples("loas", "-c:a aac -f latm"), "aac_latm");
  EXPECT_EQ(codecOfSamples("sw", "-f s16le"), "pcm_s16le");
}

TEST(WaveSamples, AreNotJudgedIfFew) {
  EXPECT_FALSE(isPlain(noise(1023)));
  EXPECT_FALSE(isPlain(""));
}

}  // namespace
