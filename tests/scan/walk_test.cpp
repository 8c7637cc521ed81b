#include "scan/walk.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>

#include "scan/beneath.h"
#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using scan::Beneath;
using scan::FolderEnd;
using scan::FolderReader;
using scan::PendingFolders;
using scan::Piece;
using scan::Pulse;
using scan::ReadOptions;
using scan::Selection;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::shared_ptr<const Descriptor> opened(const std::string& folder) {
  return std::make_shared<const Descriptor>(
      ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

Selection everything() {
  const auto all = [](std::string_view, const std::string&) { return true; };
  return {all, all};
}

struct Walked {
  std::vector<std::string> files;  // in the order of the walk
  std::map<std::string, scan::Identity> identities;
  std::map<std::string, int> errors;  // of folders
  std::vector<std::string> notEntered;
  std::uint64_t links = 0;
  std::size_t pieces = 0;
};

Walked walk(const std::string& folder, const Selection& selection = everything(),
            const ReadOptions& options = {}) {
  Walked walked;
  FolderReader reader(opened(folder), std::make_shared<Pulse>(), selection, options);
  PendingFolders pending;
  while (const auto next = pending.next()) {
    auto end = reader.read(*next, [&](Piece&& piece) {
      ++walked.pieces;
      if (piece.error != 0) walked.errors[piece.folder] = piece.error;
      for (const scan::SeenFile& file : piece.files) {
        walked.files.push_back(piece.folder + file.name);
        walked.identities[piece.folder + file.name] = file.identity;
      }
      return true;
    });
    if (!end) continue;
    walked.links += end->links;
    if (!pending.enter(std::move(*end))) walked.notEntered.push_back(*next);
  }
  return walked;
}

// A file "file" in a chain of folders "d", which no path can name.
class DeepFolder {
 public:
  static constexpr int kDepth = 2500;

  DeepFolder() {
    Descriptor at(::open(folder_.folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < kDepth; ++i) {
      mkdirat(at.get(), "d", 0755);
      at = Descriptor(openat(at.get(), "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
      path_ += "d/";
    }
    path_ += "file";
    const Descriptor file(openat(at.get(), "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    EXPECT_TRUE(file.isOpen());
  }
  // std::filesystem cannot remove it.
  ~DeepFolder() { mustRun({"rm", "-rf", folder_.path("d")}); }
  DeepFolder(const DeepFolder&) = delete;
  DeepFolder& operator=(const DeepFolder&) = delete;

  std::string folder() const { return folder_.folder(); }
  const std::string& path() const { return path_; }  // of the file

 private:
  TempDir folder_;
  std::string path_;
};

class WalkWays : public testing::TestWithParam<Beneath::Way> {
 protected:
  ReadOptions options() const { return {.way = GetParam()}; }
};

INSTANTIATE_TEST_SUITE_P(Scan, WalkWays, testing::Values(Beneath::Way::kAny, Beneath::Way::kSteps),
                         [](const auto& way) {
                           return way.param == Beneath::Way::kAny ? "ByKernel" : "BySteps";
                         });

TEST_P(WalkWays, FindsFilesOfAllFolders) {
  const TempDir folder;
  for (const char* name : {"a", "x/b", "x/y/c", "x/y/z/d", "e/f", "e/g"}) folder.write(name, name);
  EXPECT_THAT(walk(folder.folder(), everything(), options()).files,
              UnorderedElementsAre("a", "x/b", "x/y/c", "x/y/z/d", "e/f", "e/g"));
}

TEST_P(WalkWays, ReportsWhatStatReports) {
  const TempDir folder;
  const std::string path = folder.write("x/a", "content");
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  const Walked walked = walk(folder.folder(), everything(), options());
  EXPECT_EQ(walked.identities.at("x/a"), scan::identityOf(status));
  EXPECT_EQ(walked.identities.at("x/a").size, 7);
}

TEST_P(WalkWays, DoesNotFollowLinks) {
  const TempDir outside;
  outside.write("secret", "x");
  outside.write("folder/secret", "x");
  const TempDir folder;
  folder.write("a", "x");
  for (const auto& [name, target] :
       std::map<std::string, std::string>{{"file", outside.path("secret")},
                                          {"folder", outside.path("folder")},
                                          {"loop", "."},
                                          {"up", ".."},
                                          {"inside", "a"},
                                          {"nowhere", "missing"}})
    std::filesystem::create_symlink(target, folder.path(name));
  const Walked walked = walk(folder.folder(), everything(), options());
  EXPECT_THAT(walked.files, ElementsAre("a"));
  EXPECT_EQ(walked.links, 6U);
  EXPECT_THAT(walked.errors, IsEmpty());
}

TEST_P(WalkWays, GoesDeeperThanAPathMayBeLong) {
  const DeepFolder folder;
  const Walked walked = walk(folder.folder(), everything(), options());
  EXPECT_THAT(walked.files, ElementsAre(folder.path()));
  EXPECT_THAT(walked.errors, IsEmpty());
}

TEST_P(WalkWays, OpensLongPathsInPieces) {
  const DeepFolder folder;
  const auto root = opened(folder.folder());
  const Beneath beneath(root->get(), GetParam());
  EXPECT_TRUE(beneath.openFolder(std::string_view(folder.path()).substr(0, 4998)).isOpen());
  EXPECT_TRUE(beneath.openFile(folder.path()).isOpen());
  EXPECT_TRUE(beneath.status(folder.path()).has_value());
  EXPECT_FALSE(beneath.status(folder.path() + "s").has_value());
}

TEST_P(WalkWays, OpensNothingOutsideTheRoot) {
  const TempDir folder;
  folder.write("root/a", "x");
  folder.write("outside", "x");
  std::filesystem::create_symlink("../outside", folder.path("root/file"));
  std::filesystem::create_symlink("..", folder.path("root/up"));
  std::filesystem::create_symlink("/", folder.path("root/top"));
  const auto root = opened(folder.path("root"));
  const Beneath beneath(root->get(), GetParam());
  EXPECT_TRUE(beneath.openFile("a").isOpen());
  for (const char* path : {"../outside", "up/outside", "top/etc", "a/../../outside"})
    EXPECT_FALSE(beneath.openFile(path).isOpen()) << path;
  EXPECT_FALSE(beneath.openFile("file").isOpen());
  EXPECT_EQ(errno, ELOOP);
  for (const char* path : {"..", "up", "top", "a/.."})
    EXPECT_FALSE(beneath.openFolder(path).isOpen()) << path;
  EXPECT_TRUE(S_ISLNK(beneath.status("file")->st_mode));
}

TEST_P(WalkWays, OpensRegularFilesOnlyAndNeverWaits) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
  folder.write("x/a", "x");
  const auto root = opened(folder.folder());
  const Beneath beneath(root->get(), GetParam());
  EXPECT_FALSE(beneath.openFile("fifo").isOpen());
  EXPECT_FALSE(beneath.openFile("x").isOpen());
  EXPECT_EQ(errno, EISDIR);
}

TEST(Walk, LeavesOutWhatTheSelectionLeavesOut) {
  const TempDir folder;
  for (const char* name : {"a.mp3", "b.txt", "no/c.mp3", "yes/d.mp3", "yes/no/e.mp3"})
    folder.write(name, "x");
  std::set<std::string> folders;
  const Selection selection = {
      [&](std::string_view in, const std::string& name) {
        if (!name.ends_with("IFO") && name != "index.bdmv") folders.emplace(in);
        return name.ends_with(".mp3");
      },
      [](std::string_view, const std::string& name) { return name != "no"; }};
  EXPECT_THAT(walk(folder.folder(), selection).files, UnorderedElementsAre("a.mp3", "yes/d.mp3"));
  EXPECT_THAT(folders, UnorderedElementsAre("", "yes/"));
}

TEST(Walk, IgnoresWhatIsNoFile) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
  folder.write("a", "x");
  EXPECT_THAT(walk(folder.folder()).files, ElementsAre("a"));
}

TEST(Walk, TakesNamesOfAnyBytes) {
  const TempDir folder;
  std::set<std::string> names;
  for (int byte = 1; byte < 256; ++byte) {
    const std::string name = std::string("n") + static_cast<char>(byte) + "n";
    if (byte == '/') continue;
    names.insert(folder.write(name, "x").substr(folder.folder().size()));
    names.insert(folder.write("in" + name + "/" + name, "x").substr(folder.folder().size()));
  }
  const Walked walked = walk(folder.folder());
  EXPECT_EQ(std::set<std::string>(walked.files.begin(), walked.files.end()), names);
}

TEST(Walk, BringsLargeFoldersInPieces) {
  const TempDir folder;
  for (int i = 0; i < 100; ++i) folder.write(std::to_string(i), "");
  const Walked walked = walk(folder.folder(), everything(), {.pieceSize = 7});
  EXPECT_EQ(walked.files.size(), 100U);
  EXPECT_EQ(walked.pieces, 15U);
}

TEST(Walk, SortsByInodeForRotatingDisks) {
  const TempDir folder;
  for (const char* name : {"c", "a", "b"}) {
    folder.write(name, "x");
    folder.write(std::string("folder-") + name + "/" + name, "x");
  }
  const Walked walked = walk(folder.folder(), everything(), {.isByInode = true});
  ASSERT_EQ(walked.files.size(), 6U);
  EXPECT_LT(walked.identities.at(walked.files[0]).inode,
            walked.identities.at(walked.files[1]).inode);
  EXPECT_LT(walked.identities.at(walked.files[1]).inode,
            walked.identities.at(walked.files[2]).inode);
  std::vector<ino_t> folders;
  for (std::size_t i = 3; i < 6; ++i) {
    struct stat status = {};
    const std::string file = folder.path(walked.files[i]);
    ASSERT_EQ(stat(file.substr(0, file.rfind('/')).c_str(), &status), 0);
    folders.push_back(status.st_ino);
  }
  EXPECT_TRUE(std::is_sorted(folders.begin(), folders.end()));
}

TEST(Walk, ReportsFoldersThatCannotBeRead) {
  if (geteuid() == 0) {
    // Root may read everything, except what is gone.
    const TempDir folder;
    folder.write("a", "x");
    FolderReader reader(opened(folder.folder()), std::make_shared<Pulse>(), everything(), {});
    int error = 0;
    const auto end = reader.read("gone/", [&](Piece&& piece) {
      EXPECT_TRUE(piece.isLast);
      error = piece.error;
      return true;
    });
    EXPECT_FALSE(end.has_value());
    EXPECT_EQ(error, ENOENT);
    return;
  }
  const TempDir folder;
  folder.write("locked/a", "x");
  folder.write("open/b", "x");
  std::filesystem::permissions(folder.path("locked"), std::filesystem::perms::none);
  const Walked walked = walk(folder.folder());
  std::filesystem::permissions(folder.path("locked"), std::filesystem::perms::owner_all);
  EXPECT_THAT(walked.files, ElementsAre("open/b"));
  EXPECT_EQ(walked.errors.at("locked/"), EACCES);
}

TEST(Walk, ReportsFoldersThatVanishMeanwhile) {
  const TempDir folder;
  folder.write("a/x", "");
  folder.write("b/x", "");
  FolderReader reader(opened(folder.folder()), std::make_shared<Pulse>(), everything(), {});
  const auto ignore = [](Piece&&) { return true; };
  ASSERT_TRUE(reader.read("", ignore));
  ASSERT_TRUE(reader.read("a/", ignore));
  std::filesystem::remove_all(folder.path("b"));
  int error = 0;
  EXPECT_FALSE(reader.read("b/", [&](Piece&& piece) {
    error = piece.error;
    return true;
  }));
  EXPECT_EQ(error, ENOENT);
}

TEST(Walk, StopsWhenItsVisitorDoes) {
  const TempDir folder;
  for (int i = 0; i < 10; ++i) folder.write(std::to_string(i), "");
  FolderReader reader(opened(folder.folder()), std::make_shared<Pulse>(), everything(),
                      {.pieceSize = 2});
  int pieces = 0;
  EXPECT_FALSE(reader.read("", [&](Piece&&) { return ++pieces < 2; }));
  EXPECT_EQ(pieces, 2);
}

TEST(Walk, StopsWithinAFolderWhenItIsWanted) {
  const TempDir folder;
  for (int i = 0; i < 10; ++i) folder.write(std::to_string(i), "");
  const auto pulse = std::make_shared<Pulse>();
  const Selection selection = {[&](std::string_view, const std::string&) {
                                 if (pulse->beats > 4) pulse->isStopWanted = true;
                                 return true;
                               },
                               [](std::string_view, const std::string&) { return true; }};
  FolderReader reader(opened(folder.folder()), pulse, selection, {});
  int pieces = 0;
  EXPECT_FALSE(reader.read("", [&](Piece&&) { return ++pieces > 0; }));
  EXPECT_EQ(pieces, 0);
  EXPECT_LT(pulse->beats, 10U);
}

TEST(Walk, CountsNamesWithoutLookingAtFiles) {
  const TempDir folder;
  for (const char* name : {"a", "x/b", "x/c"}) folder.write(name, "x");
  const Walked walked = walk(folder.folder(), everything(), {.isNamesOnly = true});
  EXPECT_THAT(walked.files, UnorderedElementsAre("a", "x/b", "x/c"));
  EXPECT_EQ(walked.identities.at("a"), scan::Identity());
}

TEST(Walk, NamesTheIndexFileOfADisc) {
  const TempDir folder;
  for (const char* name :
       {"film/VIDEO_TS/VIDEO_TS.IFO", "film/VIDEO_TS/VTS_01_1.VOB", "film/AUDIO_TS/a", "film/cover",
        "bare/VIDEO_TS.IFO", "bare/VTS_01_1.VOB", "bare/below/a", "ray/BDMV/index.bdmv",
        "ray/BDMV/STREAM/0.m2ts", "index/index.bdmv", "index/other", "plain/VIDEO_TS/file"})
    folder.write(name, "x");
  EXPECT_THAT(
      walk(folder.folder()).files,
      UnorderedElementsAre("film/VIDEO_TS/VIDEO_TS.IFO", "bare/VIDEO_TS.IFO", "ray/BDMV/index.bdmv",
                           "index/index.bdmv", "plain/VIDEO_TS/file"));
}

TEST(Walk, DoesNotLookForDiscsThroughLinks) {
  const TempDir outside;
  outside.write("VIDEO_TS.IFO", "x");
  const TempDir folder;
  folder.write("film/a", "x");
  std::filesystem::create_symlink(outside.folder(), folder.path("film/VIDEO_TS"));
  EXPECT_THAT(walk(folder.folder()).files, ElementsAre("film/a"));
}

TEST(Walk, TreatsADiscAsItsFilesIfItsIndexDoesNotCount) {
  const TempDir folder;
  folder.write("film/VIDEO_TS.IFO", "x");
  folder.write("film/a.mp3", "x");
  Selection songs = everything();
  songs.countsFile = [](std::string_view, const std::string& name) {
    return name.ends_with(".mp3");
  };
  EXPECT_THAT(walk(folder.folder(), songs).files, ElementsAre("film/a.mp3"));
}

TEST(Walk, FindsAHundredThousandFilesInAFolder) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    // In memory, where they are made quickly.
    std::filesystem::create_directory("/tmp/many");
    for (int i = 0; i < 100000; ++i) {
      const Descriptor file(
          ::open(("/tmp/many/" + std::to_string(i)).c_str(), O_CREAT | O_WRONLY, 0644));
      ASSERT_TRUE(file.isOpen());
    }
    std::size_t count = 0;
    std::size_t largest = 0;
    FolderReader reader(opened("/tmp/many"), std::make_shared<Pulse>(), everything(), {});
    ASSERT_TRUE(reader.read("", [&](Piece&& piece) {
      count += piece.files.size();
      largest = std::max(largest, piece.files.size());
      return true;
    }));
    EXPECT_EQ(count, 100000U);
    EXPECT_LE(largest, 512U);
  });
}

TEST(Walk, CrossesMountPoints) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    std::filesystem::create_directories("/tmp/root/mounted");
    ASSERT_EQ(mount("none", "/tmp/root/mounted", "tmpfs", 0, ""), 0);
    writeRootFile("/tmp/root/mounted/a", "x");
    writeRootFile("/tmp/root/b", "x");
    const Walked walked = walk("/tmp/root");
    EXPECT_THAT(walked.files, UnorderedElementsAre("mounted/a", "b"));
    EXPECT_NE(walked.identities.at("mounted/a").device, walked.identities.at("b").device);
    ASSERT_EQ(umount("/tmp/root/mounted"), 0);
  });
}

TEST(PendingFolders, RefusesAFolderThatContainsItself) {
  PendingFolders pending;
  EXPECT_EQ(pending.next(), "");
  EXPECT_TRUE(pending.enter({.device = 1, .inode = 2, .folders = {"a", "b"}}));
  EXPECT_EQ(pending.next(), "a/");
  EXPECT_TRUE(pending.enter({.device = 1, .inode = 3, .folders = {"c"}}));
  EXPECT_EQ(pending.next(), "a/c/");
  EXPECT_FALSE(pending.enter({.device = 1, .inode = 2, .folders = {"a", "b"}}));
  EXPECT_EQ(pending.next(), "b/");
  // The same folder elsewhere, as of another mount, is no loop.
  EXPECT_TRUE(pending.enter({.device = 1, .inode = 3, .folders = {"c"}}));
  EXPECT_EQ(pending.next(), "b/c/");
  EXPECT_EQ(pending.next(), std::nullopt);
  EXPECT_EQ(pending.next(), std::nullopt);
}

TEST(PendingFolders, RefusesPathsWithoutEnd) {
  PendingFolders pending;
  pending.next();
  std::uint64_t inode = 0;
  bool isEntered = true;
  std::size_t length = 0;
  while (isEntered && inode < 100000) {
    isEntered = pending.enter({.device = 1, .inode = ++inode, .folders = {std::string(250, 'x')}});
    if (const auto next = pending.next()) length = next->size();
  }
  EXPECT_FALSE(isEntered);
  EXPECT_LE(length, PendingFolders::kLongestPath);
}

TEST(PendingFolders, KeepsToOneFolderIfItIsNotRecursive) {
  PendingFolders pending("a/b/", false);
  EXPECT_EQ(pending.next(), "a/b/");
  EXPECT_TRUE(pending.enter({.device = 1, .inode = 2, .folders = {"c"}}));
  EXPECT_EQ(pending.next(), std::nullopt);
}

TEST(Selection, ReachesWhatEachFolderLeadsTo) {
  const Selection selection = {
      [](std::string_view, const std::string& name) { return name.ends_with(".mp3"); },
      [](std::string_view, const std::string& name) { return name != "no"; }};
  for (const char* path : {"", "a/", "a/b/", "x.mp3", "a/b/x.mp3"})
    EXPECT_TRUE(isReached(selection, path)) << path;
  for (const char* path : {"no/", "a/no/b/", "x.txt", "no/x.mp3"})
    EXPECT_FALSE(isReached(selection, path)) << path;
}

}  // namespace
}  // namespace kolum::test
