#include "read/headers/h264.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "media/stream.h"
#include "read/ffmpeg/input.h"
#include "read/headers/shortcuts.h"
#include "support/media_factory.h"

namespace headers = kolum::headers;
using kolum::test::media;

namespace {

using Bytes = std::vector<std::uint8_t>;

// Writes the bits of a sequence parameter set.
class SpsBuilder {
 public:
  SpsBuilder& bits(std::uint64_t value, unsigned count) {
    for (unsigned i = count; i > 0; --i) bits_.push_back((value >> (i - 1) & 1) != 0);
    return *this;
  }
  SpsBuilder& code(std::uint64_t value) {
    unsigned length = 0;
    while ((value + 1) >> (length + 1) != 0) ++length;
    return bits(0, length).bits(value + 1, length + 1);
  }
  // As a NAL unit, without the bytes that keep start codes out.
  Bytes nalUnit() const {
    Bytes bytes = {0x67};
    for (std::size_t i = 0; i < bits_.size(); i += 8) {
      unsigned byte = 0;
      for (std::size_t j = 0; j < 8; ++j)
        byte = byte << 1 | static_cast<unsigned>(i + j < bits_.size() && bits_[i + j]);
      bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    return bytes;
  }

 private:
  std::vector<bool> bits_;
};

struct SpsFields {
  unsigned profile = 66;
  unsigned constraints = 0;
  unsigned level = 31;
  unsigned order = 2;
  unsigned references = 1;
  unsigned columns = 20;
  unsigned rows = 15;
  bool isProgressive = true;
  std::vector<unsigned> crop = {};  // left, right, top, bottom
};

SpsBuilder begun(const SpsFields& fields) {
  SpsBuilder sps;
  sps.bits(fields.profile, 8).bits(fields.constraints, 8).bits(fields.level, 8).code(0).code(0);
  sps.code(fields.order);
  if (fields.order == 0) sps.code(0);
  sps.code(fields.references).bits(0, 1).code(fields.columns - 1).code(fields.rows - 1);
  sps.bits(fields.isProgressive ? 1 : 0, 1);
  if (!fields.isProgressive) sps.bits(0, 1);
  sps.bits(1, 1).bits(fields.crop.empty() ? 0 : 1, 1);
  for (const unsigned side : fields.crop) sps.code(side);
  return sps;
}

std::optional<headers::H264Parameters> read(const SpsFields& fields) {
  return headers::readSps(begun(fields).bits(0, 1).bits(1, 1).nalUnit());
}

TEST(Sps, HasTheSizeInPixels) {
  const auto plain = read({.columns = 20, .rows = 15});
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->width, 320);
  EXPECT_EQ(plain->height, 240);
  const auto interlaced = read({.columns = 120, .rows = 34, .isProgressive = false});
  ASSERT_TRUE(interlaced);
  EXPECT_EQ(interlaced->height, 1088);
}

TEST(Sps, CropsInUnitsOfTheColours) {
  const auto progressive = read({.columns = 120, .rows = 68, .crop = {0, 1, 0, 4}});
  ASSERT_TRUE(progressive);
  EXPECT_EQ(progressive->width, 1918);
  EXPECT_EQ(progressive->height, 1080);
  const auto interlaced =
      read({.columns = 120, .rows = 34, .isProgressive = false, .crop = {0, 0, 0, 2}});
  ASSERT_TRUE(interlaced);
  EXPECT_EQ(interlaced->height, 1080);
}

TEST(Sps, LeavesUnusualStreamsToTheDecoder) {
  EXPECT_FALSE(read({.order = 1}));
  EXPECT_FALSE(read({.references = 17}));
  EXPECT_FALSE(read({.columns = 1025}));
  EXPECT_FALSE(read({.rows = 513, .isProgressive = false}));
  EXPECT_FALSE(read({.crop = {1, 0, 0, 0}}));
  EXPECT_FALSE(read({.crop = {0, 0, 1, 0}}));
  EXPECT_FALSE(read({.columns = 2, .crop = {0, 16, 0, 0}}));
}

TEST(Sps, LeavesImpossibleScalingListsToTheDecoder) {
  const auto withDifferences = [](unsigned first, unsigned second) {
    SpsBuilder sps;
    sps.bits(100, 8).bits(0, 8).bits(31, 8).code(0).code(1).code(0).code(0).bits(0, 1);
    sps.bits(1, 1).bits(1, 1).code(first).code(second);
    return headers::readSps(sps.bits(0, 32).bits(0xFFFFFFFF, 32).nalUnit());
  };
  EXPECT_FALSE(withDifferences(255, 0xFFFFFFF0));
  EXPECT_FALSE(withDifferences(257, 0));
}

TEST(Sps, MarksConstrainedProfiles) {
  EXPECT_EQ(read({.profile = 66})->profile, 66);
  EXPECT_EQ(read({.profile = 66, .constraints = 0x40})->profile, 66 | 1 << 9);
  EXPECT_EQ(read({.profile = 77, .constraints = 0x40})->profile, 77);
}

TEST(Sps, IsNotReadWhenCutAnywhere) {
  const Bytes whole = begun({.crop = {0, 0, 0, 0}}).bits(0, 1).bits(1, 1).nalUnit();
  ASSERT_TRUE(headers::readSps(whole));
  for (std::size_t size = 0; size + 1 < whole.size(); ++size)
    EXPECT_FALSE(headers::readSps(std::span(whole).first(size))) << size;
}

TEST(Sps, IsNotReadFromOtherNalUnits) {
  Bytes sps = begun({}).bits(0, 1).bits(1, 1).nalUnit();
  sps[0] = 0x68;
  EXPECT_FALSE(headers::readSps(sps));
  EXPECT_FALSE(headers::readSps(Bytes{}));
  EXPECT_FALSE(headers::readSps(Bytes(5000, 0x67)));
}

TEST(Configuration, HasOneSps) {
  const Bytes sps = {0x67, 1, 2, 3};
  Bytes configuration = {1, 66, 0, 31, 0xFF, 0xE1, 0, 4, 0x67, 1, 2, 3, 1, 0, 1, 0x68};
  EXPECT_TRUE(std::ranges::equal(headers::spsOfConfiguration(configuration), sps));
  for (std::size_t size = 0; size < configuration.size(); ++size)
    EXPECT_TRUE(headers::spsOfConfiguration(std::span(configuration).first(size)).empty()) << size;
  configuration[12] = 2;
  EXPECT_TRUE(headers::spsOfConfiguration(configuration).empty()) << "one more than there are";
  configuration[12] = 1;
  configuration[5] = 0xE2;
  EXPECT_TRUE(headers::spsOfConfiguration(configuration).empty());
  configuration[5] = 0xE1;
  configuration[0] = 0;
  EXPECT_TRUE(headers::spsOfConfiguration(configuration).empty());
}

TEST(ByteStream, MayRepeatItsSpsButNotChangeIt) {
  const Bytes once = {0, 0, 0, 1, 0x67, 1, 2, 0, 0, 1, 0x68, 5, 0, 0, 1, 0x65, 9, 0, 0, 1, 0x67, 7};
  EXPECT_TRUE(std::ranges::equal(headers::spsOfByteStream(once), Bytes{0x67, 1, 2}));
  const Bytes repeated = {0, 0, 1, 0x67, 1, 2, 0, 0, 0, 1, 0x67, 1, 2, 0, 0, 1, 0x65, 9};
  EXPECT_TRUE(std::ranges::equal(headers::spsOfByteStream(repeated), Bytes{0x67, 1, 2}));
  const Bytes changed = {0, 0, 1, 0x67, 1, 2, 0, 0, 1, 0x67, 1, 3, 0, 0, 1, 0x65, 9};
  EXPECT_TRUE(headers::spsOfByteStream(changed).empty());
  EXPECT_TRUE(headers::spsOfByteStream(Bytes{0, 0, 1}).empty());
  EXPECT_TRUE(headers::spsOfByteStream(Bytes{}).empty());
}

TEST(Packet, IsPlainIfWholeAndWithAPicture) {
  const Bytes configuration = {1, 66, 0, 31, 0xFD, 0xE1, 0, 2, 0x67, 1, 1, 0, 1, 0x68};
  EXPECT_TRUE(headers::isPlainPicture(Bytes{0, 2, 0x65, 9}, configuration));
  EXPECT_TRUE(headers::isPlainPicture(Bytes{0, 2, 0x67, 1, 0, 2, 0x41, 9}, configuration));
  EXPECT_FALSE(headers::isPlainPicture(Bytes{0, 2, 0x67, 2, 0, 2, 0x41, 9}, configuration));
  EXPECT_FALSE(headers::isPlainPicture(Bytes{0, 2, 0x06, 9}, configuration));
  EXPECT_FALSE(headers::isPlainPicture(Bytes{0, 3, 0x65, 9}, configuration));
  EXPECT_FALSE(headers::isPlainPicture(Bytes{0, 0, 0, 2, 0x65, 9}, configuration));
  EXPECT_FALSE(headers::isPlainPicture(Bytes{}, configuration));
  EXPECT_FALSE(headers::isPlainPicture(Bytes{0, 2, 0x65, 9}, Bytes{}));
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

class DecoderAgreement : public testing::TestWithParam<EncoderCase> {};

TEST_P(DecoderAgreement, OnWhatTheSpsSays) {
  const EncoderCase& row = GetParam();
  const std::string path = media(std::string(row.name) + ".mp4",
                                 std::string("-f lavfi -i testsrc2=r=25:d=0.5:s=") + row.size +
                                     " -c:v libx264 -preset ultrafast " + row.options);
  headers::allowShortcuts(false);
  const auto decoded = kolum::ffmpeg::readContainer(path, kolum::ffmpeg::Depth::kStreams);
  headers::allowShortcuts(true);
  ASSERT_TRUE(decoded && !decoded->streams.empty());
  const kolum::media::Stream& stream = decoded->streams[0];
  const auto sps = headers::readSps(headers::spsOfConfiguration(stream.extraData));
  ASSERT_TRUE(sps);
  EXPECT_EQ(sps->width, stream.width);
  EXPECT_EQ(sps->height, stream.height);
  EXPECT_EQ(sps->pixelFormat, stream.pixelFormat);
  EXPECT_EQ(sps->profile, stream.profile);
  EXPECT_EQ(sps->level, stream.level);
  // The container states the aspect, too, in other terms.
  EXPECT_EQ(std::int64_t{sps->sampleAspect.num} * stream.sampleAspect.den,
            std::int64_t{stream.sampleAspect.num} * sps->sampleAspect.den);
}

INSTANTIATE_TEST_SUITE_P(
    Streams, DecoderAgreement,
    testing::Values(
        EncoderCase{"baseline", "320x240", "-pix_fmt yuv420p -profile:v baseline"},
        EncoderCase{"main", "320x240", "-pix_fmt yuv420p -profile:v main -bf 2"},
        EncoderCase{"high", "320x240", "-pix_fmt yuv420p -profile:v high -preset medium"},
        EncoderCase{"high10", "320x240", "-pix_fmt yuv420p10le"},
        EncoderCase{"high422", "320x240", "-pix_fmt yuv422p"},
        EncoderCase{"high422deep", "320x240", "-pix_fmt yuv422p10le"},
        EncoderCase{"intra", "320x240",
                    "-pix_fmt yuv420p10le -x264-params keyint=1:avcintra-class=0"},
        EncoderCase{"fullrange", "320x240", "-pix_fmt yuvj420p"},
        EncoderCase{"fullrange422", "320x240", "-pix_fmt yuvj422p"},
        EncoderCase{"oddsize", "322x182", "-pix_fmt yuv420p"},
        EncoderCase{"smallest", "16x16", "-pix_fmt yuv420p"},
        EncoderCase{"hd", "1920x1080", "-pix_fmt yuv420p"},
        EncoderCase{"uhd", "3840x2160", "-pix_fmt yuv420p"},
        EncoderCase{"interlaced", "720x576",
                    "-pix_fmt yuv420p -flags +ildct+ilme -x264-params tff=1"},
        EncoderCase{"interlacedhd", "1920x1080",
                    "-pix_fmt yuv420p -flags +ildct+ilme -x264-params tff=1"},
        EncoderCase{"pal", "720x576", "-pix_fmt yuv420p -vf setsar=16/11"},
        EncoderCase{"anamorphic", "1440x1080", "-pix_fmt yuv420p -vf setsar=4/3"},
        EncoderCase{"unusualaspect", "320x240", "-pix_fmt yuv420p -vf setsar=37/31"},
        EncoderCase{"colours", "1280x720",
                    "-pix_fmt yuv420p -color_primaries bt709 -color_trc bt709 -colorspace bt709"},
        EncoderCase{"hrd", "320x240",
                    "-pix_fmt yuv420p -b:v 500k -maxrate 500k -bufsize 500k -x264-params "
                    "nal-hrd=cbr:force-cfr=1"},
        EncoderCase{"bluray", "1280x720", "-pix_fmt yuv420p -x264-params bluray-compat=1"},
        EncoderCase{"matrices", "320x240", "-pix_fmt yuv420p -preset medium -x264-params cqm=jvt"},
        EncoderCase{"levels", "320x240", "-pix_fmt yuv420p -level 1b"},
        EncoderCase{"manyreferences", "320x240", "-pix_fmt yuv420p -preset veryslow -bf 8"}),
    testing::PrintToStringParamName());

}  // namespace
