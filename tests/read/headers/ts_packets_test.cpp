#include <gtest/gtest.h>
#include <kolum/video.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "support/descriptors.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "support/ts_builder.h"

using namespace kolum::test;

namespace {

constexpr unsigned kPattern = 0xABABABAB;

struct Probed {
  int result;
  unsigned size;
  bool operator==(const Probed&) const = default;
};

void PrintTo(const Probed& probed, std::ostream* out) {
  *out << "result " << probed.result << ", size " << probed.size;
}

Probed probe(const std::string& path) {
  Probed probed = {.result = 0, .size = kPattern};
  probed.result = ProbeTsPacketSize(path.c_str(), &probed.size);
  return probed;
}

Probed probeBytes(const std::string& bytes) {
  const TempDir folder;
  return probe(folder.write("stream.ts", bytes));
}

TEST(ProbeTsPacketSize, ReportsBothPacketSizes) {
  EXPECT_EQ(probeBytes(tsPackets(4)), (Probed{0, 188}));
  EXPECT_EQ(probeBytes(timeStampedPackets(tsPackets(4), 0)), (Probed{0, 192}));
  EXPECT_EQ(probeBytes(timeStampedPackets(tsPackets(4), 0x01020304)), (Probed{1, 192}));
}

TEST(ProbeTsPacketSize, DetectsTimeStampInAnyByte) {
  for (const std::uint32_t stamp : {0x01000000U, 0x00010000U, 0x00000100U, 0x00000001U})
    EXPECT_EQ(probeBytes(timeStampedPackets(tsPackets(4), stamp)), (Probed{1, 192})) << stamp;
}

TEST(ProbeTsPacketSize, FindsPacketsAfterOtherBytes) {
  for (const int before : {1, 7, 100, 191}) {
    const std::string filling(static_cast<std::size_t>(before), 'y');
    EXPECT_EQ(probeBytes(filling + tsPackets(5)).size, 188U) << before;
  }
  EXPECT_EQ(probeBytes(std::string(192, 'y') + tsPackets(1) + std::string(500, 'z')),
            (Probed{0, 0}))
      << "beyond the last offset";
}

TEST(ProbeTsPacketSize, TriesTheLongerPacketsFirstAtEveryOffset) {
  // Sync bytes at both distances from the same start.
  std::string both(576, 'x');
  for (const std::size_t at : {0U, 188U, 376U, 192U, 384U}) both[at] = 'G';
  EXPECT_EQ(probeBytes(both).size, 192U);
}

TEST(ProbeTsPacketSize, PrefersShorterPacketsThatStartEarlier) {
  std::string both(576, 'x');
  for (const std::size_t at : {5U, 193U, 381U}) both[at] = 'G';
  for (const std::size_t at : {20U, 212U, 404U}) both[at] = 'G';
  EXPECT_EQ(probeBytes(both), (Probed{0, 188}));
}

TEST(ProbeTsPacketSize, ReportsZeroIfNothingFits) {
  EXPECT_EQ(probeBytes(std::string(1000, 'x')), (Probed{0, 0}));
  EXPECT_EQ(probeBytes("G" + std::string(1000, 'x')), (Probed{0, 0}));
  // Two sync bytes at the right distance are not enough.
  EXPECT_EQ(probeBytes(tsPackets(2) + std::string(400, 'x')), (Probed{0, 0}));
}

// The naming rules rely on the flag being set for such a file.
TEST(ProbeTsPacketSize, ReportsUnreadableFileAsTimeStamped) {
  const TempDir folder;
  testing::internal::CaptureStderr();
  EXPECT_EQ(probe(folder.path("missing.ts")), (Probed{1, kPattern}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            folder.path("missing.ts") + ": No such file or directory\n");
}

TEST(ProbeTsPacketSize, ReportsShortFileAsTimeStampedAndSaysSo) {
  const TempDir folder;
  const std::string path = folder.write("short.ts", tsPackets(4).substr(0, 575));
  testing::internal::CaptureStderr();
  EXPECT_EQ(probe(path), (Probed{1, kPattern}));
  EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with("[MediaInfo:1170] read: "));
  EXPECT_EQ(probe(folder.write("exact.ts", tsPackets(4).substr(0, 576))), (Probed{0, 188}));
}

TEST(ProbeTsPacketSize, NeitherBlocksNorLeaks) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("pipe.ts").c_str(), 0600), 0);
  const ExpectNoDescriptorLeak leak;
  EXPECT_EQ(probe(folder.path("pipe.ts")).result, 1);
  EXPECT_EQ(probe(folder.folder()).result, 1);
  unsigned size = kPattern;
  EXPECT_EQ(ProbeTsPacketSize(nullptr, &size), 1);
  EXPECT_EQ(ProbeTsPacketSize("x", nullptr), 1);
  EXPECT_EQ(size, kPattern);
}

TEST(ProbeTsPacketSize, RecognisesRealStreams) {
  const std::string source =
      "-f lavfi -i testsrc=s=320x240:r=25:d=1 -pix_fmt yuv420p -c:v mpeg2video -f mpegts ";
  EXPECT_EQ(probe(media("packets.ts", source)).size, 188U);
  EXPECT_EQ(probe(media("packets.m2ts", source + "-mpegts_m2ts_mode 1")), (Probed{1, 192}));
}

}  // namespace
