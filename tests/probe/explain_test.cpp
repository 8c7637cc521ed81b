#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/dlna.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>

#include "support/appliance_sandbox.h"
#include "support/disc_media.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kPicture[] = "-f lavfi -i testsrc2=size=320x240:rate=25:duration=1 ";
constexpr char kTone[] = "-f lavfi -i sine=duration=1 ";

DlnaNaming explained(const std::string& path) {
  DlnaNaming naming;
  const fs::path file = path;
  EXPECT_EQ(ExplainDlnaProfile((file.parent_path().string() + "/").c_str(), file.filename().c_str(),
                               0, &naming),
            0U);
  return naming;
}

std::ptrdiff_t failures(const DlnaCandidate& candidate) {
  return std::count_if(candidate.tests.begin(), candidate.tests.end(),
                       [](const DlnaTest& test) { return !test.held; });
}

TEST(ExplainDlnaProfile, PointsToTheRefusedNameWithTheFewestFailedTests) {
  const std::string path =
      media("explained.mp4", std::string(kPicture) + kTone +
                                 "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a libmp3lame");
  const DlnaNaming naming = explained(path);
  EXPECT_EQ(naming.profile, "AVC_MP4_MP_SD_MPEG1_L3");
  ASSERT_GE(naming.next, 0);
  const auto next = static_cast<std::size_t>(naming.next);
  EXPECT_FALSE(naming.candidates.at(next).taken);
  for (std::size_t i = 0; i < naming.candidates.size(); ++i) {
    const DlnaCandidate& other = naming.candidates[i];
    SCOPED_TRACE(other.name + " rather than " + naming.candidates[next].name);
    if (other.taken) {
      EXPECT_LT(next, i) << "must be preferred to the name";
      break;
    }
    if (i < next) {
      EXPECT_GT(failures(other), failures(naming.candidates[next]));
    } else {
      EXPECT_GE(failures(other), failures(naming.candidates[next]));
    }
  }
}

TEST(ExplainDlnaProfile, SaysThatAContainerIsNotNamed) {
  const DlnaNaming naming = explained(media("explained.mkv", std::string(kPicture) + "-c:v mpeg4"));
  EXPECT_EQ(naming.profile, "");
  EXPECT_EQ(naming.mimeType, "video/x-matroska");
  EXPECT_THAT(naming.candidates, IsEmpty());
  EXPECT_EQ(naming.next, -1);
  EXPECT_THAT(naming.remarks, ElementsAre("files of this container get a MIME type only"));
}

TEST(ExplainDlnaProfile, SaysThatDiscImagesAreNotNamed) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  runInAppliance(
      [&] { EXPECT_THAT(explained(image).remarks, ElementsAre("disc images get no profile")); });
}

TEST(ExplainDlnaProfile, SaysThatATestStreamIsNamedWhateverItHolds) {
  const TempDir folder;
  const std::string path = folder.path("O-WVH_F-02_CBR_17M_193_48_2_16.wmv");
  fs::copy_file(media("explained.wmv", std::string(kPicture) + kTone + "-c:v wmv2 -c:a wmav2"),
                path);
  const DlnaNaming naming = explained(path);
  EXPECT_EQ(naming.profile, "WMVHIGH_FULL");
  EXPECT_EQ(naming.next, -1);
  EXPECT_THAT(naming.remarks,
              ::testing::Contains("DLNA's own test stream, named so whatever it holds"));
}

TEST(ExplainDlnaProfile, KeepsTheRecordOnFailure) {
  DlnaNaming naming;
  naming.profile = "before";
  EXPECT_EQ(ExplainDlnaProfile(nullptr, "a", 0, &naming), 1U);
  EXPECT_EQ(ExplainDlnaProfile("/", nullptr, 0, &naming), 1U);
  EXPECT_EQ(ExplainDlnaProfile("/", "a", 0, nullptr), 1U);
  EXPECT_EQ(ExplainDlnaProfile("/no/such/", "file.mp4", 0, &naming), 1U);
  EXPECT_EQ(naming.profile, "before");
}

}  // namespace

}  // namespace kolum::test
