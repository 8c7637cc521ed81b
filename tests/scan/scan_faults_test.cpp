// Scans that are killed, disks that are full, missing or others than before.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <random>
#include <thread>

#include "base/descriptor.h"
#include "scan/library.h"
#include "scan/scan_run.h"
#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

using scan::Outcome;
using scan::ScanOptions;
using scan::ScanSummary;
using scan::State;
using scan::Store;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const scan::Version kVersion = {1, "today"};

struct Scanned {
  ScanSummary summary;
  std::vector<std::string> problems;
};

Scanned scanWith(const std::string& library, ScanOptions options, const FakeProber& prober) {
  Scanned scanned;
  Store store(library, kVersion, Store::Access::kWrite);
  scan::Supervisor supervisor(store, prober.prober(), std::move(options),
                              {.isStopWanted = {},
                               .cancelProbes = {},
                               .progress = {},
                               .problem = [&](const std::string& where, const std::string& what) {
                                 scanned.problems.push_back(where + ": " + what);
                               }});
  scanned.summary = supervisor.run();
  return scanned;
}

// Runs BODY in a process of its own, which is killed after that time. Whether it ended before.
bool runKilledAfter(std::chrono::microseconds time, const std::function<void()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      body();
      _exit(0);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s\n", error.what());
      _exit(1);
    }
  }
  const auto end = std::chrono::steady_clock::now() + time;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() >= end) kill(child, SIGKILL);
    std::this_thread::sleep_for(100us);
  }
  EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
  return WIFEXITED(status);
}

// Paths of files with a document.
std::vector<std::string> describedFiles(const std::string& library) {
  std::vector<std::string> files;
  try {
    for (const auto& [path, text] : contentOfLibrary(library, kVersion))
      if (text.ends_with("described")) files.push_back(path);
  } catch (const scan::StoreError& error) {
    // Killed before there was anything in it.
    EXPECT_THAT(error.what(),
                testing::AnyOf(HasSubstr("nothing was scanned yet"), HasSubstr("No such file")));
  }
  return files;
}

TEST(KilledScan, LosesNothingThatWasKnownAndEndsAsAnUndisturbedOne) {
  constexpr int kFiles = 1500;
  const TempDir media;
  const TempDir libraries;
  for (int i = 0; i < kFiles; ++i)
    media.write(std::to_string(i % 17) + "/" + std::to_string(i), std::string(i, 'x'));
  FakeProber prober;
  for (int i = 0; i < kFiles; i += 10)
    prober.answer(std::to_string(i), Outcome::Kind::kFailure, "not-media");
  for (int i = 1; i < kFiles; i += 2)
    prober.answer(std::to_string(i), [](const scan::Job& job) {
      std::this_thread::sleep_for(1ms);
      return described(job);
    });
  scanWith(libraries.path("undisturbed.db"), scanOf({media.folder()}), prober);

  const std::string library = libraries.path("killed.db");
  std::mt19937 random(20250607);
  std::vector<std::string> before;
  int kills = 0;
  bool hasEnded = false;
  while (!hasEnded && kills < 100) {
    // Ever longer, because a slow machine may need more than that even if nothing is left to do.
    const auto time = std::chrono::microseconds(2000 + random() % 300000 + kills * 20000);
    hasEnded = runKilledAfter(time, [&] { scanWith(library, scanOf({media.folder()}), prober); });
    ++kills;
    if (fs::exists(library)) expectSound(library);
    const std::vector<std::string> now = describedFiles(library);
    EXPECT_TRUE(std::includes(now.begin(), now.end(), before.begin(), before.end()));
    before = now;
  }
  EXPECT_TRUE(hasEnded);
  EXPECT_GT(kills, 2);
  // The last one may have ended between its result and a summary: this changes nothing.
  scanWith(library, scanOf({media.folder()}), prober);
  EXPECT_EQ(contentOfLibrary(library, kVersion),
            contentOfLibrary(libraries.path("undisturbed.db"), kVersion));
}

TEST(KilledScan, GetsPoisonIntoQuarantineAlthoughItKillsTheScanItself) {
  const TempDir media;
  const TempDir folder;
  const std::string library = folder.path("library.db");
  for (int i = 0; i < 100; ++i) media.write(std::to_string(i), "x");
  media.write("poison", "x");
  FakeProber prober;
  prober.answer("poison", [](const scan::Job&) -> Outcome {
    kill(getpid(), SIGKILL);
    std::this_thread::sleep_for(10s);
    return {};
  });
  const auto scan = [&] { scanWith(library, scanOf({media.folder()}), prober); };
  // While others are open, alone, and alone again.
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(runKilledAfter(3s, scan));
  const Scanned fourth = scanWith(library, scanOf({media.folder()}), prober);
  EXPECT_THAT(fourth.problems, Contains(HasSubstr("poison: in quarantine until it changes")));
  const auto content = contentOfLibrary(library, kVersion);
  EXPECT_EQ(content.size(), 101U);
  for (const auto& [path, text] : content)
    EXPECT_EQ(text.front(), path.ends_with("poison") ? '3' : '0') << path << " " << text;
  EXPECT_EQ(scanWith(library, scanOf({media.folder()}), prober).summary.unchanged, 101U);
}

TEST(KilledScan, RedoesNoMoreThanWasAtHand) {
  const TempDir media;
  const TempDir folder;
  const std::string library = folder.path("library.db");
  for (int i = 0; i < 3000; ++i) media.write(std::to_string(i % 30) + "/" + std::to_string(i), "");
  FakeProber prober;
  for (int i = 0; i < 3000; ++i)
    prober.answer(std::to_string(i), [](const scan::Job& job) {
      std::this_thread::sleep_for(1ms);
      return described(job);
    });
  ASSERT_FALSE(
      runKilledAfter(1200ms, [&] { scanWith(library, scanOf({media.folder()}), prober); }));
  const std::size_t known = describedFiles(library).size();
  EXPECT_GT(known, 0U);
  scanWith(library, scanOf({media.folder()}), prober);
  EXPECT_EQ(prober.takeAsked().size(), 3000 - known);
}

// ---- Disks ----

void mountMemory(const std::string& place, const std::string& options = "") {
  fs::create_directories(place);
  ASSERT_EQ(mount("none", place.c_str(), "tmpfs", 0, options.c_str()), 0);
}

void unmount(const std::string& place) {
  ASSERT_EQ(umount(place.c_str()), 0);
}

class DiskScan : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  }

  Scanned run(const std::vector<std::string>& roots) {
    return scanWith("/tmp/library.db", scanOf(roots), prober_);
  }
  static std::size_t count() { return contentOfLibrary("/tmp/library.db", kVersion).size(); }

  FakeProber prober_;
};

TEST_F(DiskScan, SurvivesAFullDisk) {
  runInAppliance([&] {
    mountMemory("/tmp/small", "size=300k");
    fs::create_directory("/tmp/media");
    for (int i = 0; i < 400; ++i) {
      const std::string name = std::to_string(i);
      writeRootFile("/tmp/media/" + name, "x");
      prober_.answer(name, [](const scan::Job& job) {
        Outcome outcome = described(job);
        outcome.document = R"({"kind":"music","text":")" + std::string(4000, 'x') + "\"}";
        return outcome;
      });
    }
    const std::string library = "/tmp/small/library.db";
    try {
      scanWith(library, scanOf({"/tmp/media"}), prober_);
      ADD_FAILURE() << "the disk was not full";
    } catch (const scan::StoreError& error) {
      EXPECT_EQ(error.kind(), scan::StoreError::Kind::kDiskFull) << error.what();
    }
    expectSound(library);
    const std::size_t before = describedFiles(library).size();
    ASSERT_EQ(mount("none", "/tmp/small", "tmpfs", MS_REMOUNT, "size=64m"), 0);
    prober_.takeAsked();
    scanWith(library, scanOf({"/tmp/media"}), prober_);
    expectSound(library);
    EXPECT_EQ(describedFiles(library).size(), 400U);
    EXPECT_EQ(prober_.takeAsked().size(), 400 - before);
    unmount("/tmp/small");
  });
}

TEST_F(DiskScan, KeepsEverythingOfAnUnmountedRoot) {
  runInAppliance([&] {
    mountMemory("/tmp/disk");
    for (const char* name : {"a", "x/b", "x/y/c"})
      writeRootFile(std::string("/tmp/disk/") + name, "x");
    EXPECT_EQ(run({"/tmp/disk"}).summary.added, 3U);
    unmount("/tmp/disk");
    Scanned scanned = run({"/tmp/disk"});
    EXPECT_EQ(scanned.summary.gone, 0U);
    EXPECT_EQ(scanned.summary.kept, 3U);
    EXPECT_THAT(scanned.problems, ElementsAre(HasSubstr("their disk may be missing")));
    // Nor does a file that someone put into the empty folder mean that the disk is there.
    writeRootFile("/tmp/disk/other", "x");
    EXPECT_EQ(run({"/tmp/disk"}).summary.gone, 0U);
    EXPECT_EQ(run({"/tmp/disk"}).summary.kept, 3U);
    EXPECT_EQ(count(), 4U);
  });
}

TEST_F(DiskScan, KeepsEverythingOfAnUnmountedFolder) {
  runInAppliance([&] {
    mountMemory("/tmp/root/disk");
    writeRootFile("/tmp/root/disk/a", "x");
    writeRootFile("/tmp/root/disk/x/b", "x");
    writeRootFile("/tmp/root/here", "x");
    writeRootFile("/tmp/root/deleted", "x");
    EXPECT_EQ(run({"/tmp/root"}).summary.added, 4U);
    unmount("/tmp/root/disk");
    fs::remove("/tmp/root/deleted");
    const Scanned scanned = run({"/tmp/root"});
    EXPECT_EQ(scanned.summary.gone, 1U);
    EXPECT_EQ(scanned.summary.kept, 2U);
    // Also if the folder that it was mounted on is gone.
    fs::remove("/tmp/root/disk");
    EXPECT_EQ(run({"/tmp/root"}).summary.kept, 2U);
    EXPECT_EQ(count(), 3U);
  });
}

TEST_F(DiskScan, KeepsEverythingIfAnotherDiskWithTheSameNumberIsThere) {
  runInAppliance([&] {
    mountMemory("/tmp/disk");
    writeRootFile("/tmp/disk/a", "x");
    struct stat before = {};
    ASSERT_EQ(stat("/tmp/disk", &before), 0);
    run({"/tmp/disk"});
    unmount("/tmp/disk");
    mountMemory("/tmp/disk");
    struct stat now = {};
    ASSERT_EQ(stat("/tmp/disk", &now), 0);
    if (before.st_dev != now.st_dev) {
      unmount("/tmp/disk");
      GTEST_SKIP() << "it got another number";
    }
    writeRootFile("/tmp/disk/first", "x");
    writeRootFile("/tmp/disk/b", "x");
    EXPECT_EQ(run({"/tmp/disk"}).summary.gone, 0U);
    EXPECT_EQ(count(), 3U);
    unmount("/tmp/disk");
  });
}

TEST_F(DiskScan, ForgetsWhatIsGoneFromADiskThatGotAnotherNumber) {
  runInAppliance([&] {
    mountMemory("/tmp/disk");
    for (const char* name : {"a", "b", "c"}) writeRootFile(std::string("/tmp/disk/") + name, "x");
    run({"/tmp/disk"});
    {
      // As if the number had been another one then.
      Store store("/tmp/library.db", kVersion, Store::Access::kWrite);
      const scan::KnownFolder folder = store.folder("/tmp/disk/");
      for (const scan::Known& known : folder.files) {
        scan::Identity identity = known.identity;
        identity.device += 1000;
        store.putDocument({"/tmp/disk/", known.name}, identity, R"({"kind":"music"})");
      }
    }
    fs::remove("/tmp/disk/a");
    const ScanSummary summary = run({"/tmp/disk"}).summary;
    EXPECT_EQ(summary.changed, 2U);
    EXPECT_EQ(summary.gone, 1U);
    EXPECT_EQ(summary.kept, 0U);
    unmount("/tmp/disk");
  });
}

TEST_F(DiskScan, FollowsADiskThatIsMountedElsewhere) {
  runInAppliance([&] {
    mountMemory("/tmp/disk");
    for (const char* name : {"a", "x/b"}) writeRootFile(std::string("/tmp/disk/") + name, "x");
    run({"/tmp/disk"});
    prober_.takeAsked();
    fs::create_directory("/tmp/elsewhere");
    ASSERT_EQ(mount("/tmp/disk", "/tmp/elsewhere", nullptr, MS_MOVE, nullptr), 0);
    EXPECT_EQ(run({"/tmp/elsewhere"}).summary.moved, 2U);
    EXPECT_THAT(prober_.takeAsked(), IsEmpty());
    EXPECT_EQ(count(), 2U);
    unmount("/tmp/elsewhere");
  });
}

TEST_F(DiskScan, KeepsWhatIsInFoldersThatCannotBeRead) {
  runInAppliance([&] {
    fs::create_directory("/tmp/media");
    for (const char* name : {"a", "locked/b", "locked/x/c"})
      writeRootFile(std::string("/tmp/media/") + name, "x");
    fs::permissions("/tmp", fs::perms::all);
    ASSERT_EQ(run({"/tmp/media"}).summary.added, 3U);
    fs::permissions("/tmp/library.db", fs::perms::all);
    chmod("/tmp/media/locked", 0);
    ASSERT_EQ(chown("/tmp/media/locked", 0, 0), 0);
    fs::permissions("/tmp/library.db.lock", fs::perms::all);
    // Root may read everything.
    if (seteuid(65534) != 0) GTEST_SKIP() << "no other user here";
    const Scanned scanned = scanWith("/tmp/library.db", scanOf({"/tmp/media"}), prober_);
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(scanned.summary.gone + scanned.summary.kept, 0U);
    EXPECT_EQ(scanned.summary.problems, 1U);
    EXPECT_THAT(scanned.problems, ElementsAre("/tmp/media/locked/: Permission denied"));
    EXPECT_EQ(count(), 3U);
  });
}

// ---- A server that does not answer ----

// A mount whose file system answers nothing, until it is gone.
class DeadMount {
 public:
  explicit DeadMount(std::string place) : place_(std::move(place)) {
    fs::create_directories(place_);
    server_.reset(open("/dev/fuse", O_RDWR | O_CLOEXEC));
    const std::string options =
        "fd=" + std::to_string(server_.get()) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    isMounted_ = server_.isOpen() &&
                 mount("dead", place_.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
  }
  ~DeadMount() {
    answerNoMore();
    if (isMounted_) umount2(place_.c_str(), MNT_DETACH);
  }
  DeadMount(const DeadMount&) = delete;
  DeadMount& operator=(const DeadMount&) = delete;

  bool isMounted() const { return isMounted_; }
  // Whoever waits for it gets an error.
  void answerNoMore() { server_.reset(); }

 private:
  std::string place_;
  Descriptor server_;
  bool isMounted_ = false;
};

void waitForThreads() {
  const auto count = [] {
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
  };
  for (int i = 0; i < 500 && count() > 1; ++i) std::this_thread::sleep_for(10ms);
}

ScanOptions impatient(const std::vector<std::string>& roots) {
  ScanOptions options = scanOf(roots);
  options.folderLimit = 400ms;
  options.fileLimit = 400ms;
  options.answerLimit = 200ms;
  return options;
}

TEST_F(DiskScan, GoesOnWithoutARootThatDoesNotAnswer) {
  runInAppliance([&] {
    DeadMount dead("/tmp/dead");
    if (!dead.isMounted()) GTEST_SKIP() << "no FUSE here";
    writeRootFile("/tmp/fine/a", "x");
    const Scanned scanned =
        scanWith("/tmp/library.db", impatient({"/tmp/dead", "/tmp/fine"}), prober_);
    EXPECT_EQ(scanned.summary.added, 1U);
    EXPECT_GE(scanned.summary.threadsLeftBehind, 1U);
    EXPECT_THAT(scanned.problems, Contains("/tmp/dead: does not answer"));
    dead.answerNoMore();
    waitForThreads();
  });
}

TEST_F(DiskScan, GoesOnBesideAFolderThatDoesNotAnswer) {
  runInAppliance([&] {
    for (const char* name : {"a/x", "b/x", "z/y/x"})
      writeRootFile(std::string("/tmp/root/") + name, "x");
    run({"/tmp/root"});
    DeadMount dead("/tmp/root/b");
    if (!dead.isMounted()) GTEST_SKIP() << "no FUSE here";
    writeRootFile("/tmp/root/z/new", "x");
    fs::remove("/tmp/root/a/x");
    const Scanned scanned = scanWith("/tmp/library.db", impatient({"/tmp/root"}), prober_);
    EXPECT_EQ(scanned.summary.added, 1U);
    EXPECT_EQ(scanned.summary.unchanged, 1U);
    EXPECT_EQ(scanned.summary.gone, 1U);
    EXPECT_THAT(scanned.problems, Contains("/tmp/root/b: does not answer"));
    EXPECT_EQ(count(), 3U);  // b/x is kept
    dead.answerNoMore();
    waitForThreads();
  });
}

TEST_F(DiskScan, StopsAlthoughARootDoesNotAnswer) {
  runInAppliance([&] {
    DeadMount dead("/tmp/dead");
    if (!dead.isMounted()) GTEST_SKIP() << "no FUSE here";
    Store store("/tmp/library.db", kVersion, Store::Access::kWrite);
    const auto begin = std::chrono::steady_clock::now();
    scan::Supervisor supervisor(
        store, prober_.prober(), scanOf({"/tmp/dead"}),
        {.isStopWanted = [&] { return std::chrono::steady_clock::now() - begin > 200ms; },
         .cancelProbes = {},
         .progress = {},
         .problem = {}});
    const ScanSummary summary = supervisor.run();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1200ms);
    EXPECT_TRUE(summary.isStopped);
    EXPECT_EQ(summary.threadsLeftBehind, 1U);
    dead.answerNoMore();
    waitForThreads();
  });
}

}  // namespace
}  // namespace kolum::test
