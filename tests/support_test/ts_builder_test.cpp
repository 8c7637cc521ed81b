#include "support/ts_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

TEST(TsPackets, BeginWithTheirOnlySyncByte) {
  EXPECT_EQ(tsPackets(0), "");
  const std::string packets = tsPackets(3);
  ASSERT_EQ(packets.size(), 3U * 188);
  for (const std::size_t start : {0U, 188U, 376U}) EXPECT_EQ(packets[start], 'G') << start;
  EXPECT_EQ(std::count(packets.begin(), packets.end(), 'G'), 3);
}

TEST(TimeStampedPackets, StartWithTheirStamps) {
  EXPECT_EQ(timeStampedPackets("", 1), "");
  const std::string packet = tsPackets(1);
  EXPECT_EQ(timeStampedPackets(tsPackets(2), 0),
            bigEndian(0, 4) + packet + bigEndian(0, 4) + packet);
  EXPECT_EQ(timeStampedPackets(tsPackets(3), 0x01020304, 0x10),
            bigEndian(0x01020304, 4) + packet + bigEndian(0x01020314, 4) + packet +
                bigEndian(0x01020324, 4) + packet);
}

TEST(TimeStampedPackets, AreReadableByFfprobe) {
  const std::string stream =
      media("builder.ts",
            "-f lavfi -i testsrc=s=176x144:r=25:d=0.4 -c:v mpeg2video -bitexact -threads 1");
  std::ifstream in(stream, std::ios::binary);
  const std::string packets = {std::istreambuf_iterator<char>(in), {}};
  const TempDir folder;
  // With null packets, so that those are read as well.
  const std::string path =
      folder.write("stamped.m2ts", timeStampedPackets(tsPackets(2) + packets, 27'000'000, 300));
  const nlohmann::json probed = ffprobe(path);
  EXPECT_EQ(probed.at("format").at("format_name"), "mpegts");
  EXPECT_EQ(probed.at("streams").at(0).at("codec_name"), "mpeg2video");
  EXPECT_EQ(probed.at("streams").at(0).at("width"), 176);
}

}  // namespace

}  // namespace kolum::test
