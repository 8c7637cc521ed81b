// The library's calls to the host and the kernel for discs. The program's own functions replace the
// host library's and the system's.
#include <gtest/gtest.h>
#include <kolum/host.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/disc_media.h"

namespace {

struct Call {
  std::string folder;
  std::string pathBefore;
  int pathSize;
  int reserved1;
  int reserved2;
};

std::vector<Call> calls;
int unmounts = 0;

unsigned probe(const std::string& folder, const char* name, videoObject_st& record) {
  return GetVideoMetadata1(folder.c_str(), name, &record, 0);
}

}  // namespace

// Finds a title and writes nothing.
int DVDGetMainVTSNo(const char* folder, char* pathOut, int pathOutSize, int reserved1,
                    long long* /*titleSize*/, int reserved2) {
  calls.push_back({folder, pathOut, pathOutSize, reserved1, reserved2});
  return 0;
}

// Quotes every name, which needs more room than the escapes of the stand-in host.
void StringConvert2SystemCmdFilename(char* path) {
  std::string word = "'";
  for (const char* c = path; *c != '\0'; ++c) word += *c == '\'' ? "'\\''" : std::string(1, *c);
  word += "'";
  std::memcpy(path, word.c_str(), word.size() + 1);
}

int umount2(const char* target, int flags) noexcept {
  ++unmounts;
  return static_cast<int>(syscall(SYS_umount2, target, flags));
}

namespace {

using namespace kolum::test;

TEST(DvdHost, GetsTheFolderInTheOutputPath) {
  calls.clear();
  videoObject_st record = {};
  // The host writes no title, so the folder itself is probed, which is not a video.
  EXPECT_EQ(probe("/disc/VIDEO_TS/", "VIDEO_TS.IFO", record), 1U);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].folder, "/disc/VIDEO_TS/");
  EXPECT_EQ(calls[0].pathBefore, "/disc/VIDEO_TS/");
  EXPECT_EQ(calls[0].pathSize, 1024);
  EXPECT_EQ(calls[0].reserved1, 0);
  EXPECT_EQ(calls[0].reserved2, 0);
  EXPECT_EQ(record.containerFormat, static_cast<unsigned>(FORMAT_DVDIFO));
}

TEST(DvdHost, GetsAnEmptyOutputPathForImages) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const std::string image = discImage(discRoot(dvdFolder()), "host.iso");
  runInAppliance([&] {
    calls.clear();
    videoObject_st record = {};
    // The image is recognised as a DVD, but without a title the probe fails.
    EXPECT_EQ(probe("", image.c_str(), record), 1U);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_TRUE(calls[0].folder.starts_with("/tmp/Media_mount_")) << calls[0].folder;
    EXPECT_EQ(calls[0].pathBefore, "");
    EXPECT_EQ(calls[0].pathSize, 1024);
    EXPECT_EQ(record.containerFormat, static_cast<unsigned>(FORMAT_DVDISO));
  });
}

TEST(ImageHost, MayQuoteNamesInItsOwnWay) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const std::string image = discImage(discRoot(dvdFolder()), "host.iso");
  runInAppliance([&] {
    const std::string name = std::string(200, '\'') + ".iso";
    std::filesystem::create_symlink(image, "/tmp/" + name);
    calls.clear();
    videoObject_st record = {};
    EXPECT_EQ(probe("/tmp/", name.c_str(), record), 1U) << "the title has no name";
    EXPECT_EQ(calls.size(), 1U) << "not mounted";
  });
}

TEST(ImageHost, IsNotAskedToUnmountWithoutMount) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    unmounts = 0;
    videoObject_st record = {};
    EXPECT_EQ(probe("/tmp/", "missing.iso", record), 1U);
    EXPECT_EQ(unmounts, 0);
  });
}

}  // namespace
