#include "support/disc_media.h"

#include <dvdread/dvd_reader.h>
#include <dvdread/ifo_read.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

using ::testing::EndsWith;
using ::testing::IsSupersetOf;

std::vector<std::string> codecsOf(const std::string& path) {
  std::vector<std::string> codecs;
  const nlohmann::json probed = ffprobe(path);
  for (const auto& stream : probed.at("streams")) {
    // ffprobe does not name streams that it cannot decode, such as a DVD's navigation packets.
    if (stream.contains("codec_name")) codecs.push_back(stream.at("codec_name"));
  }
  return codecs;
}

int secondsOf(const dvd_time_t& time) {
  // Binary-coded decimals.
  const auto number = [](int digits) { return digits / 16 * 10 + digits % 16; };
  return (number(time.hour) * 60 + number(time.minute)) * 60 + number(time.second);
}

TEST(TestDvd, IsReadableByLibdvdread) {
  const std::string root = discRoot(dvdFolder());
  const std::unique_ptr<dvd_reader_t, void (*)(dvd_reader_t*)> dvd(DVDOpen(root.c_str()), DVDClose);
  ASSERT_NE(dvd, nullptr);
  using Information = std::unique_ptr<ifo_handle_t, void (*)(ifo_handle_t*)>;
  const auto open = [&](int titleSet) {
    return Information(ifoOpen(dvd.get(), titleSet), ifoClose);
  };
  const Information manager = open(0);
  ASSERT_NE(manager, nullptr);
  EXPECT_EQ(manager->vmgi_mat->vmg_nr_of_title_sets, 2);
  std::vector<int> seconds;
  for (const int titleSet : {1, 2}) {
    const Information title = open(titleSet);
    ASSERT_NE(title, nullptr) << titleSet;
    ASSERT_GE(title->vts_pgcit->nr_of_pgci_srp, 1) << titleSet;
    seconds.push_back(secondsOf(title->vts_pgcit->pgci_srp[0].pgc->playback_time));
    EXPECT_EQ(title->vtsi_mat->nr_of_vts_subp_streams, titleSet == 2 ? 1 : 0) << titleSet;
  }
  EXPECT_GE(seconds[0], 1);
  EXPECT_GT(seconds[1], seconds[0]);
}

TEST(TestDvd, HoldsRealVideo) {
  const std::string folder = dvdFolder();
  EXPECT_THAT(folder, EndsWith("/VIDEO_TS/"));
  EXPECT_THAT(codecsOf(folder + "VTS_01_1.VOB"), IsSupersetOf({"mpeg2video", "ac3"}));
  EXPECT_THAT(codecsOf(folder + "VTS_02_1.VOB"),
              IsSupersetOf({"mpeg2video", "ac3", "dvd_subtitle"}));
  EXPECT_LT(fs::file_size(folder + "VTS_01_1.VOB"), fs::file_size(folder + "VTS_02_1.VOB"));
}

TEST(TestBluray, HoldsTwoRealStreamsTheSecondLarger) {
  const std::string folder = blurayFolder();
  EXPECT_THAT(folder, EndsWith("/BDMV/"));
  EXPECT_TRUE(contentOf(folder + "index.bdmv").starts_with("INDX"));
  for (const char* name : {"STREAM/00000.m2ts", "STREAM/00001.m2ts"}) {
    EXPECT_THAT(codecsOf(folder + name), IsSupersetOf({"h264", "ac3"})) << name;
    EXPECT_EQ(fs::file_size(folder + name) % 192, 0U) << name;
  }
  EXPECT_LT(fs::file_size(folder + "STREAM/00000.m2ts"),
            fs::file_size(folder + "STREAM/00001.m2ts"));
}

TEST(DiscRoot, IsTheParentOfTheDiscFolder) {
  EXPECT_EQ(discRoot("/disc/VIDEO_TS/"), "/disc");
  EXPECT_TRUE(fs::is_directory(discRoot(blurayFolder()) + "/BDMV"));
}

TEST(DiscImage, HoldsTheFolderWhenMounted) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const std::string disc = discRoot(blurayFolder());
  struct Row {
    ImageKind kind;
    const char* fileSystem;
  };
  for (const Row& row : {Row{ImageKind::kSquashfs, "squashfs"}, Row{ImageKind::kExt4, "ext4"}}) {
    SCOPED_TRACE(row.fileSystem);
    const std::string image = discImage(disc, "disc.iso", row.kind);
    EXPECT_EQ(fs::path(image).filename(), "disc.iso");
    runInAppliance([&] {
      fs::create_directory("/tmp/mounted");
      mustRun({"mount", "-o", "loop,ro", image, "/tmp/mounted"});
      EXPECT_EQ(mustRun({"stat", "-f", "-c", "%T", "/tmp/mounted"}).find("UNKNOWN"),
                std::string::npos);
      EXPECT_EQ(mustRun({"findmnt", "-n", "-o", "FSTYPE", "/tmp/mounted"}),
                std::string(row.fileSystem) + "\n");
      EXPECT_EQ(mustRun({"diff", "-r", "-x", "lost+found", disc, "/tmp/mounted"}), "");
      mustRun({"umount", "/tmp/mounted"});
    });
  }
}

TEST(DiscImage, IsCachedByContentNotByFolder) {
  const TempDir folder;
  folder.write("one/sub/file", "content");
  folder.write("same/sub/file", "content");
  folder.write("otherContent/sub/file", "Content");
  folder.write("otherName/sub/File", "content");
  folder.write("more/sub/file", "content");
  fs::create_directory(folder.path("more/empty"));
  const std::string image = discImage(folder.path("one"), "kept.iso");
  EXPECT_EQ(discImage(folder.path("same"), "kept.iso"), image);
  EXPECT_NE(discImage(folder.path("one"), "kept.iso", ImageKind::kExt4), image);
  for (const char* other : {"otherContent", "otherName", "more"})
    EXPECT_NE(discImage(folder.path(other), "kept.iso"), image) << other;
}

TEST(LoopMountUnavailable, LeavesNothingMounted) {
  const std::string before = contentOf("/proc/self/mounts");
  loopMountUnavailable();
  EXPECT_EQ(contentOf("/proc/self/mounts"), before);
}

}  // namespace

}  // namespace kolum::test
