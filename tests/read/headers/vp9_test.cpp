#include "read/headers/vp9.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/bytes.h"
#include "media/stream.h"
#include "read/ffmpeg/input.h"
#include "read/headers/shortcuts.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace headers = kolum::headers;
using kolum::test::contentOf;
using kolum::test::media;

namespace {

using Bytes = std::vector<std::uint8_t>;

// What a key frame's header says; each value is one that the reader takes.
struct Fields {
  unsigned marker = 2;
  unsigned profile = 0;
  bool showsEarlier = false;
  bool isInter = false;
  bool isShown = true;
  bool resistsErrors = false;
  unsigned syncCode = 0x498342;
  unsigned depth = 0;  // 0, 1, 2 for 8, 10, 12 bits
  unsigned space = 2;  // 7 is RGB
  bool hasHalfColumns = true;
  bool hasHalfRows = true;
  bool reserved = false;
  unsigned width = 320;
  unsigned height = 240;
  bool hasRenderSize = false;
  bool hasFilterDeltas = false;
  bool hasQuantizerDeltas = false;
  bool hasSegments = false;
  unsigned moreTileColumns = 0;  // as bits: each 1 doubles the columns
  unsigned tileColumnBits = 0;
  unsigned rest = 4;  // the size of what follows
  bool padding = false;
};

class Writer {
 public:
  Writer& bits(unsigned value, unsigned count) {
    for (unsigned i = count; i > 0; --i) bits_.push_back((value >> (i - 1) & 1) != 0);
    return *this;
  }
  Writer& align(bool padding) {
    while (bits_.size() % 8 != 0) bits_.push_back(padding);
    return *this;
  }
  Bytes bytes() const {
    Bytes bytes(bits_.size() / 8);
    for (std::size_t i = 0; i < bytes.size() * 8; ++i)
      bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] << 1 | (bits_[i] ? 1 : 0));
    return bytes;
  }

 private:
  std::vector<bool> bits_;
};

void writeColours(Writer& frame, const Fields& fields) {
  constexpr unsigned kRgb = 7;
  const bool isFurther = fields.profile % 2 != 0;
  if (fields.profile >= 2) frame.bits(fields.depth - 1, 1);
  frame.bits(fields.space, 3);
  if (fields.space != kRgb) {
    frame.bits(0, 1);
    if (isFurther) frame.bits(fields.hasHalfColumns, 1).bits(fields.hasHalfRows, 1);
  }
  if (isFurther) frame.bits(fields.reserved, 1);
}

// Every optional part with every optional value.
void writeSegments(Writer& frame) {
  frame.bits(1, 1).bits(1, 1);
  for (int i = 0; i < 7; ++i) frame.bits(1, 1).bits(200, 8);
  frame.bits(1, 1);
  for (int i = 0; i < 3; ++i) frame.bits(1, 1).bits(100, 8);
  frame.bits(1, 1).bits(0, 1);
  for (int i = 0; i < 8; ++i)
    frame.bits(1, 1).bits(9, 9).bits(1, 1).bits(7, 7).bits(1, 1).bits(2, 2).bits(1, 1);
}

Bytes frameOf(const Fields& fields) {
  Writer frame;
  frame.bits(fields.marker, 2).bits(fields.profile & 1, 1).bits(fields.profile >> 1, 1);
  if (fields.profile == 3) frame.bits(fields.reserved, 1);
  frame.bits(fields.showsEarlier, 1).bits(fields.isInter, 1).bits(fields.isShown, 1);
  frame.bits(fields.resistsErrors, 1).bits(fields.syncCode, 24);
  writeColours(frame, fields);
  frame.bits(fields.width - 1, 16).bits(fields.height - 1, 16).bits(fields.hasRenderSize, 1);
  if (fields.hasRenderSize) frame.bits(99, 16).bits(99, 16);
  if (!fields.resistsErrors) frame.bits(3, 2);
  frame.bits(0, 2).bits(30, 6).bits(0, 3).bits(fields.hasFilterDeltas, 1);
  if (fields.hasFilterDeltas) {
    frame.bits(1, 1);
    for (int i = 0; i < 6; ++i) frame.bits(1, 1).bits(5, 7);
  }
  frame.bits(60, 8);
  for (int i = 0; i < 3; ++i) {
    frame.bits(fields.hasQuantizerDeltas, 1);
    if (fields.hasQuantizerDeltas) frame.bits(3, 5);
  }
  if (fields.hasSegments)
    writeSegments(frame);
  else
    frame.bits(0, 1);
  frame.bits(fields.moreTileColumns, fields.tileColumnBits).bits(0, 1);
  frame.bits(fields.rest, 16).align(fields.padding);
  Bytes bytes = frame.bytes();
  bytes.resize(bytes.size() + 4, 0x55);
  return bytes;
}

std::optional<headers::Vp9Parameters> read(const Fields& fields) {
  return headers::readVp9KeyFrame(frameOf(fields));
}

TEST(Vp9KeyFrame, HasSizeFormatAndProfile) {
  const auto found = read({.width = 1920, .height = 1080, .tileColumnBits = 1});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->width, 1920);
  EXPECT_EQ(found->height, 1080);
  EXPECT_EQ(found->profile, 0);
  EXPECT_STREQ(found->pixelFormat, "yuv420p");
}

TEST(Vp9KeyFrame, NamesFormatsByDepthAndColours) {
  EXPECT_STREQ(read({.profile = 2, .depth = 1})->pixelFormat, "yuv420p10le");
  EXPECT_STREQ(read({.profile = 2, .depth = 2})->pixelFormat, "yuv420p12le");
  EXPECT_STREQ(read({.profile = 1, .hasHalfRows = false})->pixelFormat, "yuv422p");
  EXPECT_STREQ(read({.profile = 1, .hasHalfColumns = false})->pixelFormat, "yuv440p");
  EXPECT_STREQ(
      read({.profile = 3, .depth = 1, .hasHalfColumns = false, .hasHalfRows = false})->pixelFormat,
      "yuv444p10le");
  EXPECT_STREQ(read({.profile = 1, .space = 7})->pixelFormat, "gbrp");
  EXPECT_STREQ(read({.profile = 3, .depth = 2, .space = 7})->pixelFormat, "gbrp12le");
}

TEST(Vp9KeyFrame, MayHaveEveryOptionalPart) {
  EXPECT_TRUE(read({.resistsErrors = true}));
  EXPECT_TRUE(read({.hasRenderSize = true}));
  EXPECT_TRUE(read({.hasFilterDeltas = true}));
  EXPECT_TRUE(read({.hasQuantizerDeltas = true}));
  EXPECT_TRUE(read({.hasSegments = true}));
  EXPECT_TRUE(read({.width = 4096, .moreTileColumns = 6, .tileColumnBits = 3}));
  EXPECT_TRUE(read({.width = 4096, .moreTileColumns = 15, .tileColumnBits = 4}));
  EXPECT_TRUE(read({.width = 8192, .height = 8192, .moreTileColumns = 0, .tileColumnBits = 1}));
}

TEST(Vp9KeyFrame, LeavesOtherFramesToTheDecoder) {
  EXPECT_FALSE(read({.showsEarlier = true}));
  EXPECT_FALSE(read({.isInter = true}));
  EXPECT_FALSE(read({.isShown = false}));
  Bytes superframe = frameOf({});
  superframe.back() = 0xC9;
  EXPECT_FALSE(headers::readVp9KeyFrame(superframe));
}

TEST(Vp9KeyFrame, LeavesDamagedOnesToTheDecoder) {
  EXPECT_FALSE(read({.marker = 1}));
  EXPECT_FALSE(read({.syncCode = 0x498343}));
  EXPECT_FALSE(read({.profile = 1}));  // which is for colours other than profile 0's
  EXPECT_FALSE(read({.profile = 1, .hasHalfRows = false, .reserved = true}));
  EXPECT_FALSE(read({.profile = 1, .space = 7, .reserved = true}));
  EXPECT_FALSE(read({.profile = 3, .depth = 1, .hasHalfRows = false, .reserved = true}));
  EXPECT_FALSE(read({.space = 7}));
  EXPECT_FALSE(read({.width = 8193, .tileColumnBits = 1}));
  EXPECT_FALSE(read({.height = 8193}));
  EXPECT_FALSE(read({.rest = 0}));
  EXPECT_FALSE(read({.rest = 5}));
  EXPECT_TRUE(read({.resistsErrors = true}));
  EXPECT_FALSE(read({.resistsErrors = true, .padding = true}));
}

TEST(Vp9KeyFrame, IsNotReadWhenCutAnywhere) {
  const Bytes whole = frameOf({.hasFilterDeltas = true, .hasSegments = true});
  ASSERT_TRUE(headers::readVp9KeyFrame(whole));
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_FALSE(headers::readVp9KeyFrame(std::span(whole).first(size))) << size;
}

// Real streams, against FFmpeg's decoder.

struct EncoderCase {
  const char* name;
  const char* size;
  const char* options;
};

std::ostream& operator<<(std::ostream& out, const EncoderCase& row) {
  return out << row.name;
}

Bytes firstPacketOfIvf(const std::string& path) {
  const std::string content = contentOf(path);
  kolum::ByteReader reader(
      std::span(reinterpret_cast<const std::uint8_t*>(content.data()), content.size()));
  reader.skip(32);
  const std::uint64_t size = reader.littleEndian(4);
  reader.skip(8);
  const auto packet = reader.take(size);
  return {packet.begin(), packet.end()};
}

class Vp9DecoderAgreement : public testing::TestWithParam<EncoderCase> {};

TEST_P(Vp9DecoderAgreement, OnWhatTheHeaderSays) {
  const EncoderCase& row = GetParam();
  const std::string path =
      media(std::string(row.name) + ".ivf",
            std::string("-f lavfi -i testsrc2=r=25:d=0.2:s=") + row.size +
                " -c:v libvpx-vp9 -deadline realtime -cpu-used 8 " + row.options);
  headers::allowShortcuts(false);
  const auto decoded = kolum::ffmpeg::readContainer(path, kolum::ffmpeg::Depth::kStreams);
  headers::allowShortcuts(true);
  ASSERT_TRUE(decoded && !decoded->streams.empty());
  const kolum::media::Stream& stream = decoded->streams[0];
  const auto header = headers::readVp9KeyFrame(firstPacketOfIvf(path));
  ASSERT_TRUE(header);
  EXPECT_EQ(header->width, stream.width);
  EXPECT_EQ(header->height, stream.height);
  EXPECT_EQ(header->pixelFormat, stream.pixelFormat);
  EXPECT_EQ(header->profile, stream.profile);
  EXPECT_FALSE(stream.level);
}

INSTANTIATE_TEST_SUITE_P(
    Streams, Vp9DecoderAgreement,
    testing::Values(EncoderCase{"plain", "320x240", "-pix_fmt yuv420p"},
                    EncoderCase{"smallest", "2x2", "-pix_fmt yuv420p"},
                    EncoderCase{"oddsize", "333x181", "-pix_fmt yuv420p"},
                    EncoderCase{"hd", "1920x1080", "-pix_fmt yuv420p"},
                    EncoderCase{"uhd", "3840x2160", "-pix_fmt yuv420p -tile-columns 4"},
                    EncoderCase{"wide", "4096x64", "-pix_fmt yuv420p -tile-columns 0"},
                    EncoderCase{"rows", "640x480", "-pix_fmt yuv420p -tile-rows 2"},
                    EncoderCase{"p422", "320x240", "-pix_fmt yuv422p"},
                    EncoderCase{"p440", "320x240", "-pix_fmt yuv440p"},
                    EncoderCase{"p444", "320x240", "-pix_fmt yuv444p"},
                    EncoderCase{"rgb", "320x240", "-pix_fmt gbrp"},
                    EncoderCase{"deep420", "320x240", "-pix_fmt yuv420p10le"},
                    EncoderCase{"deep422", "320x240", "-pix_fmt yuv422p10le"},
                    EncoderCase{"deep440", "320x240", "-pix_fmt yuv440p10le"},
                    EncoderCase{"deep444", "320x240", "-pix_fmt yuv444p10le"},
                    EncoderCase{"deeprgb", "320x240", "-pix_fmt gbrp10le"},
                    EncoderCase{"deepest420", "320x240", "-pix_fmt yuv420p12le"},
                    EncoderCase{"deepest444", "320x240", "-pix_fmt yuv444p12le"},
                    EncoderCase{"deepestrgb", "320x240", "-pix_fmt gbrp12le"},
                    EncoderCase{"lossless", "320x240", "-pix_fmt yuv420p -lossless 1"},
                    EncoderCase{"errors", "320x240", "-pix_fmt yuv420p -error-resilient 1"},
                    EncoderCase{"segments", "320x240", "-pix_fmt yuv420p -aq-mode 3"},
                    EncoderCase{"fullrange", "320x240", "-pix_fmt yuv420p -color_range 2"},
                    EncoderCase{"slow", "320x240",
                                "-pix_fmt yuv420p -deadline good -auto-alt-ref 1"}),
    testing::PrintToStringParamName());

}  // namespace
