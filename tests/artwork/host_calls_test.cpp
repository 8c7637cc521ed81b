// The library's calls to the host. The program's own functions replace the host library's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/host.h>
#include <kolum/thumbnail.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

struct Run {
  std::vector<std::string> arguments;
  int wait;
};

std::vector<Run> runs;

std::vector<int> nameSizes;

}  // namespace

int KoUtil_ExecSync(const char** argv, int wait) {
  Run run = {{}, wait};
  for (; *argv != nullptr; ++argv) run.arguments.emplace_back(*argv);
  runs.push_back(run);
  return static_cast<int>(runs.size());
}

// A host that does not count the terminator in the size, and converts every name to as many "n" as
// fit.
int StringConvert2LowerFileString(const char* /*src*/, int /*srcLength*/, char* dst, int dstSize) {
  nameSizes.push_back(dstSize);
  std::memset(dst, 'n', static_cast<std::size_t>(dstSize));
  dst[dstSize] = '\0';
  return 0;
}

namespace {

TEST(CopyAndChmod, RunsTwoProgramsAndReturnsTheSecondStatus) {
  runs.clear();
  EXPECT_EQ(copyAndChmod("/a b", "/c'd"), 2);
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_THAT(runs[0].arguments, ElementsAre("/bin/cp", "/a b", "/c'd"));
  EXPECT_EQ(runs[0].wait, 0);
  EXPECT_THAT(runs[1].arguments, ElementsAre("/bin/chmod", "666", "/c'd"));
  EXPECT_EQ(runs[1].wait, 0);
}

TEST(CheckMusicArtwork, LimitsNamesWhateverTheHostCounts) {
  struct {
    char path[600];
    char guard[16];
  } out = {};
  std::memset(out.guard, '#', sizeof out.guard);
  nameSizes.clear();
  LUM_CheckMusicArtistThumbnail("/nowhere/", "Artist", out.path);
  EXPECT_EQ(out.path, std::string(255, 'n') + "/artist.jpg");
  LUM_CheckMusicAlbumArt("/nowhere/", "Artist", "Album", out.path);
  EXPECT_EQ(out.path, std::string(255, 'n') + "/" + std::string(249, 'n') + ".jpg");
  EXPECT_THAT(nameSizes, ElementsAre(256, 256, 250)) << "with the terminator";
  EXPECT_EQ(std::string(out.guard, sizeof out.guard), std::string(16, '#'));
}

}  // namespace
