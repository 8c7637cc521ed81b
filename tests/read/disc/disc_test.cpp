#include "read/disc/disc.h"
#include "read/disc/image.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

#include "base/text.h"
#include "support/appliance_sandbox.h"
#include "support/descriptors.h"
#include "support/disc_media.h"
#include "support/temp_dir.h"

namespace kolum::disc {

namespace {

using namespace kolum::test;

bool hasMountFolder() {
  for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
    if (entry.path().filename().string().starts_with("Media_mount_")) return true;
  return false;
}

bool isMounted(const std::string& folder) {
  std::ifstream mounts("/proc/self/mounts");
  const std::string name = folder.substr(0, folder.size() - 1);
  for (std::string line; std::getline(mounts, line);)
    if (line.find(" " + name + " ") != std::string::npos) return true;
  return false;
}

// Calls the exported function with a buffer of the documented size; the bytes after it must stay
// unchanged.
std::string largest(const std::string& folder, const char* extension) {
  struct {
    char path[kPathSize];
    char guard[16];
  } buffer = {};
  std::memset(buffer.guard, '#', sizeof buffer.guard);
  copyText(buffer.path, folder);
  get_maxsizefilename(buffer.path, extension);
  EXPECT_EQ(std::string(buffer.guard, sizeof buffer.guard), std::string(16, '#'));
  return buffer.path;
}

TEST(SourceOf, DependsOnTheNameOnly) {
  struct Row {
    const char* name;
    Kind expected;
  };
  const Row rows[] = {
      {"VIDEO_TS.IFO", Kind::kDvdFolder},
      {"video_ts.ifo", Kind::kNone},
      {"Video_TS.IFO", Kind::kNone},
      {"XVIDEO_TS.IFO", Kind::kNone},
      {"index.bdmv", Kind::kBlurayFolder},
      {"INDEX.BDMV", Kind::kNone},
      {"movie.iso", Kind::kImage},
      {"MOVIE.ISO", Kind::kImage},
      {"movie.IsO", Kind::kImage},
      {".iso", Kind::kImage},
      {"iso", Kind::kNone},
      {"so", Kind::kNone},
      {"", Kind::kNone},
      {"movie.iso.mp4", Kind::kNone},
  };
  for (const Row& row : rows) EXPECT_EQ(kindOf(row.name), row.expected) << row.name;
}

TEST(LargestFile, IsFoundBySize) {
  const TempDir folder;
  folder.write("small.m2ts", "x");
  const std::string large = folder.write("large.m2ts", "xxx");
  folder.write("middle.m2ts", "xx");
  folder.write("larger.ts", "xxxx");
  EXPECT_EQ(largest(folder.folder(), ".m2ts"), large);
}

TEST(LargestFile, MatchesSuffixesInAnyLetterCase) {
  const TempDir folder;
  const std::string upper = folder.write("00001.M2TS", "x");
  EXPECT_EQ(largest(folder.folder(), ".m2ts"), upper);
}

TEST(LargestFile, AlsoMatchesLongerSuffixes) {
  const TempDir folder;
  const std::string longer = folder.write("00001.m2tsx", "xx");
  folder.write("00002.m2ts", "x");
  folder.write("00003.m2t", "xxx");
  folder.write("m2ts", "xxx");
  EXPECT_EQ(largest(folder.folder(), ".m2ts"), longer);
}

TEST(LargestFile, IsTheLaterOfEqualOnesInTheFoldersOrder) {
  const TempDir folder;
  for (const char* name : {"b.m2ts", "a.m2ts", "d.m2ts", "c.m2ts"}) folder.write(name, "same");
  std::string last;
  for (const auto& entry : std::filesystem::directory_iterator(folder.folder()))
    last = entry.path().string();
  EXPECT_EQ(std::filesystem::path(largest(folder.folder(), ".m2ts")).filename(),
            std::filesystem::path(last).filename());
}

TEST(LargestFile, MatchesEverySuffixForAnEmptyExtension) {
  const TempDir folder;
  folder.write("movie.m2ts", "xx");
  folder.write("nodot", "xxx");
  EXPECT_EQ(largest(folder.folder(), ""), folder.path("movie.m2ts"));
}

TEST(LargestFile, MayBeEmpty) {
  const TempDir folder;
  const std::string empty = folder.write("empty.m2ts", "");
  EXPECT_EQ(largest(folder.folder(), ".m2ts"), empty);
}

TEST(LargestFile, SkipsNonRegularFiles) {
  const TempDir folder;
  std::filesystem::create_directory(folder.path("folder.m2ts"));
  ASSERT_EQ(mkfifo(folder.path("pipe.m2ts").c_str(), 0600), 0);
  std::filesystem::create_symlink("nowhere", folder.path("dangling.m2ts"));
  EXPECT_EQ(largest(folder.folder(), ".m2ts"), "");
}

TEST(LargestFile, ReportsEntriesWithoutStatusOnStandardError) {
  const TempDir folder;
  std::filesystem::create_symlink("nowhere", folder.path("dangling.m2ts"));
  testing::internal::CaptureStderr();
  largest(folder.folder(), ".m2ts");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[MediaInfo:1594] stat: No such file or directory\n");
}

TEST(LargestFile, LeavesTheBufferEmptyWithoutMatch) {
  const TempDir folder;
  folder.write("movie.mp4", "x");
  EXPECT_EQ(largest(folder.folder(), ".m2ts"), "");
  EXPECT_EQ(largest(folder.path("missing/"), ".m2ts"), "");
  EXPECT_EQ(largest("", ".m2ts"), "");
}

TEST(LargestFile, NeverWritesBeyondAPathBuffer) {
  const TempDir folder;
  // The folder's path fits, but the path of a file in it does not.
  std::string deep = folder.folder();
  while (deep.size() + 201 < kPathSize - 60) deep += std::string(200, 'd') + "/";
  std::filesystem::create_directories(deep);
  std::ofstream(deep + std::string(250, 'n') + ".m2ts") << "long";
  EXPECT_EQ(largest(deep, ".m2ts"), "");
  std::ofstream(deep + "short.m2ts") << "s";
  EXPECT_EQ(largest(deep, ".m2ts"), deep + "short.m2ts");
}

TEST(LargestFile, AllowsNullArguments) {
  get_maxsizefilename(nullptr, ".m2ts");
  char buffer[kPathSize] = "/tmp/";
  get_maxsizefilename(buffer, nullptr);
  EXPECT_STREQ(buffer, "");
}

TEST(LargestFile, LeavesNoDescriptorOpen) {
  const TempDir folder;
  folder.write("movie.m2ts", "x");
  const int before = openDescriptorCount();
  largest(folder.folder(), ".m2ts");
  largest(folder.path("missing/"), ".m2ts");
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST(DvdFolder, LeadsToItsMainTitle) {
  const auto title = dvdFolderTitle(dvdFolder());
  ASSERT_TRUE(title.has_value());
  EXPECT_TRUE(title->path.ends_with("VTS_02_1.VOB")) << title->path;
  EXPECT_EQ(title->containerFormat, static_cast<unsigned>(FORMAT_DVDIFO));
  EXPECT_EQ(title->size, static_cast<long long>(std::filesystem::file_size(title->path)));
}

TEST(DvdFolder, FailsWithoutATitle) {
  const TempDir folder;
  EXPECT_FALSE(dvdFolderTitle(folder.folder()).has_value());
}

TEST(BlurayFolder, LeadsToTheLargestStreamFile) {
  kolum::Trace trace;
  const auto title = blurayFolderTitle(blurayFolder(), trace);
  ASSERT_TRUE(title.has_value());
  EXPECT_TRUE(std::filesystem::exists(title->path));
  EXPECT_NE(title->path.find("/STREAM/"), std::string::npos);
  EXPECT_EQ(title->containerFormat, static_cast<unsigned>(FORMAT_BDBDMV));
  EXPECT_EQ(title->size, 0);
}

TEST(BlurayFolder, FailsWithoutStreamFiles) {
  const TempDir folder;
  folder.write("STREAM/readme.txt", "x");
  kolum::Trace trace;
  EXPECT_FALSE(blurayFolderTitle(folder.folder(), trace).has_value());
}

// Mounts images in a sandbox: its /tmp is private, so anything left there was left by the code
// under test, and the mounts of other tests do not matter.
void withMounts(const std::function<void()>& body) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  // Made outside the sandbox, so that they are kept.
  dvdFolder();
  blurayFolder();
  runInAppliance([&] {
    body();
    EXPECT_FALSE(hasMountFolder());
  });
}

std::unique_ptr<MountedImage> mountImage(const std::string& path) {
  return MountedImage::mount(path, MountFolderFailure::kGiveUp);
}

TEST(MountedImage, UnmountsAndRemovesItsFolderAtTheEnd) {
  for (const ImageKind kind : {ImageKind::kSquashfs, ImageKind::kExt4}) {
    SCOPED_TRACE(kind == ImageKind::kExt4 ? "ext4" : "squashfs");
    const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso", kind);
    withMounts([&] {
      std::string folder;
      {
        const auto mounted = mountImage(image);
        ASSERT_NE(mounted, nullptr);
        folder = mounted->folder();
        EXPECT_TRUE(folder.starts_with("/tmp/Media_mount_")) << folder;
        EXPECT_TRUE(isMounted(folder));
        kolum::Trace trace;
        const auto title = imageTitle(folder, trace);
        ASSERT_TRUE(title.has_value());
        EXPECT_EQ(title->containerFormat, static_cast<unsigned>(FORMAT_DVDISO));
        EXPECT_TRUE(title->path.ends_with("VTS_02_1.VOB")) << title->path;
      }
      EXPECT_FALSE(isMounted(folder));
    });
  }
}

TEST(MountedImage, LeadsToTheLargestStreamFileOfABluray) {
  const std::string image = discImage(discRoot(blurayFolder()), "bluray.iso");
  withMounts([&] {
    const auto mounted = mountImage(image);
    ASSERT_NE(mounted, nullptr);
    kolum::Trace trace;
    const auto title = imageTitle(mounted->folder(), trace);
    ASSERT_TRUE(title.has_value());
    EXPECT_EQ(title->containerFormat, static_cast<unsigned>(FORMAT_BDISO));
    EXPECT_TRUE(title->path.ends_with("00001.m2ts")) << title->path;
  });
}

TEST(MountedImage, RejectsImageWithoutFileSystem) {
  withMounts([] {
    const TempDir folder;
    EXPECT_EQ(mountImage(folder.write("broken.iso", std::string(100'000, 'x'))), nullptr);
    EXPECT_EQ(mountImage(folder.write("empty.iso", "")), nullptr);
    EXPECT_EQ(mountImage(folder.path("missing.iso")), nullptr);
  });
}

TEST(MountedImage, EscapesNamesForTheShell) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    const TempDir folder;
    for (const char* name : {"with blank.iso", "quote'.iso", "double\".iso", "semi;touch x.iso",
                             "$(touch x).iso", "`touch x`.iso", "new\nline.iso", "back\\slash.iso",
                             "-ostrange.iso", "\xFF\xFE.iso", "star*.iso", "\xC3\xA9.iso"}) {
      SCOPED_TRACE(name);
      std::filesystem::create_symlink(image, folder.path(name));
      EXPECT_NE(mountImage(folder.path(name)), nullptr);
    }
    EXPECT_FALSE(std::filesystem::exists("x"));
  });
}

TEST(MountedImage, MountsReadOnlyInAPrivateFolder) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    // Each tool records its name and arguments; the last argument is the folder.
    const std::string note = "echo \"${0##*/} $*\" >>/tmp/said; ";
    const std::string mode = "for last; do :; done; stat -c %a $last >>/tmp/said\n";
    writeRootFile("/fake/mount", "#!/bin/sh\n" + note + mode, 0755);
    writeRootFile("/fake/umount", "#!/bin/sh\n" + note + "exit 1\n", 0755);
    setenv("PATH", ("/fake:" + std::string(getenv("PATH"))).c_str(), 1);
    umask(0);
    std::string folder;
    {
      const auto mounted = mountImage("/a disc.iso");
      ASSERT_NE(mounted, nullptr);
      folder = mounted->folder();
    }
    EXPECT_EQ(contentOf("/tmp/said"),
              "mount -o loop,ro /a disc.iso " + folder + "\n600\numount " + folder + "\n");
    EXPECT_FALSE(hasMountFolder()) << "umount's status is ignored";
  });
}

TEST(MountedImage, FailsOrContinuesIfItsFolderExists) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    // Mount folders are numbered by the clock, so this takes all numbers of the next 20 seconds.
    const auto now = std::time(nullptr);
    std::vector<std::string> taken;
    for (std::time_t n = now; n < now + 20; ++n) {
      taken.push_back("/tmp/Media_mount_" + std::to_string(n));
      std::filesystem::create_directory(taken.back());
    }
    EXPECT_EQ(mountImage(image), nullptr);
    EXPECT_NE(MountedImage::mount(image, MountFolderFailure::kIgnore), nullptr);
    for (const std::string& folder : taken) std::filesystem::remove(folder);
  });
}

// --- Nothing leads out of a disc, and nothing around an image can be prepared by others

unsigned recordResult(const std::string& folder, const char* name) {
  videoObject_st record = {};
  return GetVideoMetadata1(folder.c_str(), name, &record, 0);
}

TEST(DiscFolder, IsNotLeftThroughLinks) {
  const TempDir folder;
  const std::string stream = contentOf(blurayFolder() + "STREAM/00001.m2ts");
  ASSERT_FALSE(stream.empty());
  const std::string outside = folder.write("outside.m2ts", stream);
  folder.write("disc/index.bdmv", "INDX0200");
  const std::string link = folder.path("disc/STREAM/1.m2ts");
  std::filesystem::create_directory(folder.path("disc/STREAM"));
  for (const char* target : {"../../outside.m2ts", outside.c_str(), "/proc/self/exe"}) {
    SCOPED_TRACE(target);
    std::filesystem::create_symlink(target, link);
    EXPECT_EQ(recordResult(folder.path("disc/"), "index.bdmv"), 1U);
    std::filesystem::remove(link);
  }
  folder.write("disc/inside.bin", stream);
  std::filesystem::create_symlink("../inside.bin", link);
  EXPECT_EQ(recordResult(folder.path("disc/"), "index.bdmv"), 0U) << "links within the disc count";
}

TEST(DvdFolder, IsNotLeftThroughLinks) {
  const TempDir folder;
  std::filesystem::copy(dvdFolder(), folder.path("outside"));
  std::filesystem::copy(dvdFolder(), folder.path("disc"));
  ASSERT_TRUE(dvdFolderTitle(folder.path("disc/")).has_value());
  std::string video = dvdFolderTitle(folder.path("disc/"))->path;
  const std::string name = video.substr(video.rfind('/') + 1);
  std::filesystem::remove(video);
  std::filesystem::create_symlink("../outside/" + name, video);
  const auto title = dvdFolderTitle(folder.path("disc/"));
  EXPECT_TRUE(!title || title->path != video);
  std::filesystem::create_directory(folder.path("links"));
  std::filesystem::create_directory_symlink("../outside", folder.path("links/VIDEO_TS"));
  EXPECT_FALSE(dvdFolderTitle(folder.path("links/")).has_value());
}

TEST(DiscImage, ThatIsAPipeKeepsNobodyWaiting) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    const TempDir folder;
    ASSERT_EQ(mkfifo(folder.path("a.iso").c_str(), 0600), 0);
    EXPECT_EQ(recordResult(folder.folder(), "a.iso"), 1U);
    EXPECT_FALSE(hasMountFolder());
  });
}

// The numbers of the next seconds, which mount folders are named by.
std::vector<std::string> nextMountFolders() {
  std::vector<std::string> folders;
  const auto now = std::time(nullptr);
  for (std::time_t n = now; n < now + 20; ++n)
    folders.push_back("/tmp/Media_mount_" + std::to_string(n));
  return folders;
}

TEST(MountedImage, IsNeverMountedWhereAPreparedLinkLeads) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    std::filesystem::create_directory("/victim");
    for (const std::string& folder : nextMountFolders())
      std::filesystem::create_symlink("/victim", folder);
    EXPECT_EQ(MountedImage::mount(image, MountFolderFailure::kIgnore), nullptr);
    EXPECT_FALSE(isMounted("/victim/"));
    for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
      if (entry.is_symlink()) std::filesystem::remove(entry.path());
  });
}

TEST(MountedImage, IsNeverMountedInAFolderOfOthers) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    const auto folders = nextMountFolders();
    for (const std::string& folder : folders) {
      std::filesystem::create_directory(folder);
      std::filesystem::permissions(folder, std::filesystem::perms::all);
    }
    EXPECT_EQ(MountedImage::mount(image, MountFolderFailure::kIgnore), nullptr);
    for (const std::string& folder : folders) std::filesystem::remove(folder);
  });
}

TEST(MountedImage, HasNoProgramsThatRunWithOtherRights) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    const auto mounted = mountImage(image);
    ASSERT_NE(mounted, nullptr);
    std::ifstream mounts("/proc/self/mounts");
    std::string options;
    for (std::string line; std::getline(mounts, line);)
      if (line.find(" /tmp/Media_mount_") != std::string::npos) options = line;
    for (const char* option : {"ro", "nosuid", "nodev", "noexec"})
      EXPECT_NE(options.find(option), std::string::npos) << options;
  });
}

TEST(MountedImage, RemovesTheFoldersOfEndedProcessesOnly) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    ASSERT_EQ(mkdir("/tmp/Media_mount_7", 0600), 0);
    ASSERT_EQ(mkdir("/tmp/Media_mount_8", 0600), 0);
    std::ofstream("/tmp/Media_mount_8/file") << "not ours to delete";
    const auto mounted = mountImage(image);
    ASSERT_NE(mounted, nullptr);
    EXPECT_FALSE(std::filesystem::exists("/tmp/Media_mount_7"));
    EXPECT_TRUE(std::filesystem::exists("/tmp/Media_mount_8/file"));
    std::filesystem::remove_all("/tmp/Media_mount_8");
    const auto second = mountImage(image);
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(isMounted(mounted->folder())) << "in use";
    EXPECT_TRUE(isMounted(second->folder()));
  });
}

// Mount folders are numbered by the clock, so another process may have the same one.
TEST(MountedImage, LeavesTheFolderOfAnotherProcessInPlace) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    std::vector<Descriptor> locks;
    const auto folders = nextMountFolders();
    for (const std::string& folder : folders) {
      ASSERT_EQ(mkdir(folder.c_str(), 0600), 0);
      locks.emplace_back(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
      ASSERT_EQ(flock(locks.back().get(), LOCK_EX | LOCK_NB), 0);
    }
    EXPECT_NE(MountedImage::mount(image, MountFolderFailure::kIgnore), nullptr);
    for (const std::string& folder : folders) EXPECT_EQ(rmdir(folder.c_str()), 0) << folder;
  });
}

TEST(PrivateMounts, AreSeenByNobodyElse) {
  const std::string image = discImage(discRoot(dvdFolder()), "dvd.iso");
  withMounts([&] {
    std::string folder;
    inPrivateMounts([&] {
      const auto mounted = mountImage(image);
      ASSERT_NE(mounted, nullptr);
      folder = mounted->folder();
      std::ifstream own("/proc/thread-self/mounts");
      const std::string seen((std::istreambuf_iterator<char>(own)), {});
      EXPECT_NE(seen.find(folder.substr(0, folder.size() - 1)), std::string::npos);
      EXPECT_FALSE(isMounted(folder)) << "by the main thread";
      EXPECT_TRUE(imageTitle(folder, *std::make_unique<Trace>()).has_value());
    });
    EXPECT_FALSE(isMounted(folder));
  });
}

TEST(PrivateMounts, HandOnWhatIsThrown) {
  EXPECT_THROW(inPrivateMounts([] { throw std::bad_alloc(); }), std::bad_alloc);
}

}  // namespace

}  // namespace kolum::disc
