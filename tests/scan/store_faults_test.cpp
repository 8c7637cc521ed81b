// Kills, power cuts, full and read-only disks: the library stays sound, and what was committed is
// there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>

#include "scan/library.h"
#include "scan/store.h"
#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

std::atomic<int> g_synchronizations = 0;

}  // namespace

// SQLite's calls come here.
extern "C" int fdatasync(int descriptor) {
  ++g_synchronizations;
  return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

extern "C" int fsync(int descriptor) {
  ++g_synchronizations;
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace kolum::test {
namespace {

using scan::Store;
using scan::StoreError;
using Kind = StoreError::Kind;
using testing::HasSubstr;

constexpr auto kRead = Store::Access::kRead;
constexpr auto kWrite = Store::Access::kWrite;
constexpr const char* kSong = R"({"kind":{"id":1,"name":"music"},"duration":5})";

std::uint64_t filesIn(const std::string& library) {
  return std::stoull(askOne(library, "SELECT count(*) FROM file"));
}

// One batch of ten files, with the marks of the ten that follow.
void putBatch(Store& store, std::uint64_t batch) {
  store.begin();
  for (std::uint64_t i = batch * 10; i < batch * 10 + 10; ++i) {
    const std::string folder = "/f" + std::to_string(i % 13) + "/";
    store.putDocument({folder, std::to_string(i)}, identity(i), kSong);
    store.markAtHand(
        {{"/f" + std::to_string((i + 10) % 13) + "/", std::to_string(i + 10)}, identity(i + 10)});
  }
  store.commit();
}

// Commits batches until it is killed, and reports each through PIPE.
[[noreturn]] void writeForever(const std::string& library, int pipe) {
  try {
    Store store(library, kToday, kWrite);
    for (std::uint64_t batch = filesIn(library) / 10;; ++batch) {
      putBatch(store, batch);
      if (write(pipe, &batch, sizeof batch) != sizeof batch) break;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  _exit(1);
}

// Kills a writing process after a while. Returns how many files it reported as committed.
std::uint64_t killAWriter(const std::string& library, std::chrono::microseconds after) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    writeForever(library, ends[1]);
  }
  close(ends[1]);
  std::uint64_t batch = 0;
  std::uint64_t reported = 0;
  // The first report shows that it writes.
  if (read(ends[0], &batch, sizeof batch) == sizeof batch) reported = batch * 10 + 10;
  usleep(static_cast<useconds_t>(after.count()));
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << status;
  while (read(ends[0], &batch, sizeof batch) == sizeof batch) reported = batch * 10 + 10;
  close(ends[0]);
  return reported;
}

TEST(StoreFaults, LosesNothingCommittedWhenItsProcessIsKilled) {
  const TempDir folder;
  const std::string library = folder.path("library.db");
  Store(library, kToday, kWrite);
  std::mt19937 random(1);
  std::uint64_t known = 0;
  for (int round = 0; round < 25; ++round) {
    SCOPED_TRACE(round);
    const std::uint64_t reported =
        killAWriter(library, std::chrono::microseconds(random() % 60000));
    ASSERT_GE(reported, known);
    expectSound(library);
    known = filesIn(library);
    ASSERT_GE(known, reported);
    EXPECT_EQ(known % 10, 0U);
    // Files at hand, and no others, have marks.
    EXPECT_EQ(ask(library,
                  "SELECT name FROM at_hand WHERE CAST(name AS INTEGER) < " + std::to_string(known))
                  .size(),
              0U);
    EXPECT_EQ(askOne(library, "SELECT count(*) FROM at_hand"), "10");
  }
}

TEST(StoreFaults, SynchronizesEveryCommit) {
  const TempDir folder;
  Store store(folder.path("library.db"), kToday, kWrite);
  putBatch(store, 0);
  for (std::uint64_t batch = 1; batch < 5; ++batch) {
    const int before = g_synchronizations;
    putBatch(store, batch);
    EXPECT_GT(g_synchronizations, before);
  }
}

// A power cut may leave any part of what was not synchronized: what the log holds beyond the last
// commit.
TEST(StoreFaults, LosesNothingCommittedInAPowerCut) {
  const TempDir folder;
  const std::string library = folder.path("library.db");
  Store store(library, kToday, kWrite);
  std::mt19937 random(1);
  int cuts = 0;
  for (std::uint64_t batch = 0; batch < 30; ++batch) {
    SCOPED_TRACE(batch);
    putBatch(store, batch);
    const std::string database = contentOf(library);
    const std::string log = contentOf(library + "-wal");
    const std::size_t committed = log.size();
    // The next batch is being written when the power fails: some of it arrived, or garbage.
    putBatch(store, batch + 1);
    std::string after = contentOf(library + "-wal");
    const bool isRestarted = after.size() < committed || after.compare(0, committed, log) != 0 ||
                             contentOf(library) != database;
    if (isRestarted) continue;  // a checkpoint: the log begins anew
    const std::size_t kept = committed + random() % (after.size() - committed);
    after.resize(kept);
    if (batch % 2 == 0) after += std::string(random() % 9000, static_cast<char>(random() & 0xFF));
    const TempDir copy;
    copy.write("library.db", database);
    copy.write("library.db-wal", after);
    expectSound(copy.path("library.db"));
    EXPECT_EQ(filesIn(copy.path("library.db")), (batch + 1) * 10);
    ++cuts;
  }
  EXPECT_GT(cuts, 20);
}

class FullDisk : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  }
};

TEST_F(FullDisk, KeepsWhatWasCommittedAndGoesOnWhenThereIsSpace) {
  runInAppliance([] {
    fs::create_directory("/volume");
    ASSERT_EQ(mount("tmpfs", "/volume", "tmpfs", 0, "size=1m"), 0);
    {
      Store store("/volume/library.db", kToday, kWrite);
      std::uint64_t committed = 0;
      const std::string text = failure(Kind::kDiskFull, [&] {
        for (;; ++committed) putBatch(store, committed);
      });
      EXPECT_EQ(text, "/volume/library.db: the disk is full");
      EXPECT_GT(committed, 10U);
      store.rollback();
      EXPECT_FALSE(store.isInBatch());
      EXPECT_EQ(store.counts().known, committed * 10);
      ASSERT_EQ(mount("none", "/volume", nullptr, MS_REMOUNT, "size=8m"), 0);
      for (std::uint64_t more = 0; more < 20; ++more) putBatch(store, committed + more);
      EXPECT_EQ(store.counts().known, (committed + 20) * 10);
    }
    expectSound("/volume/library.db");
    EXPECT_EQ(umount("/volume"), 0);
  });
}

// SQLite gives a batch up that it cannot write: whoever put it has to put it again.
TEST_F(FullDisk, EndsTheBatchThatDoesNotFit) {
  runInAppliance([] {
    fs::create_directory("/volume");
    ASSERT_EQ(mount("tmpfs", "/volume", "tmpfs", 0, "size=1m"), 0);
    {
      Store store("/volume/library.db", kToday, kWrite);
      putBatch(store, 0);
      failure(Kind::kDiskFull, [&] {
        store.begin();
        for (std::uint64_t i = 100; i < 30000; ++i)
          store.putDocument({"/new/", std::to_string(i)}, identity(i), kSong);
        store.commit();
      });
      store.rollback();
      EXPECT_FALSE(store.isInBatch());
      EXPECT_EQ(store.counts().known, 10U);
      ASSERT_EQ(mount("none", "/volume", nullptr, MS_REMOUNT, "size=8m"), 0);
      store.begin();
      store.putDocument({"/new/", "1"}, identity(1), kSong);
      store.commit();
      EXPECT_EQ(store.counts().known, 11U);
    }
    expectSound("/volume/library.db");
    EXPECT_EQ(umount("/volume"), 0);
  });
}

TEST_F(FullDisk, KeepsLibraryOfAWriterThatLeaves) {
  runInAppliance([] {
    fs::create_directory("/volume");
    ASSERT_EQ(mount("tmpfs", "/volume", "tmpfs", 0, "size=1m"), 0);
    std::uint64_t committed = 0;
    failure(Kind::kDiskFull, [&] {
      Store store("/volume/library.db", kToday, kWrite);
      for (;; ++committed) putBatch(store, committed);
    });
    // Reading works without any space.
    {
      Store reader("/volume/library.db", kToday, kRead);
      EXPECT_EQ(reader.counts().known, committed * 10);
    }
    ASSERT_EQ(mount("none", "/volume", nullptr, MS_REMOUNT, "size=8m"), 0);
    expectSound("/volume/library.db");
    EXPECT_EQ(filesIn("/volume/library.db"), committed * 10);
    EXPECT_EQ(umount("/volume"), 0);
  });
}

TEST_F(FullDisk, CannotHoldANewLibrary) {
  runInAppliance([] {
    fs::create_directory("/volume");
    ASSERT_EQ(mount("tmpfs", "/volume", "tmpfs", 0, "size=16k"), 0);
    failure(Kind::kDiskFull, [] { Store("/volume/library.db", kToday, kWrite); });
    ASSERT_EQ(mount("none", "/volume", nullptr, MS_REMOUNT, "size=8m"), 0);
    Store("/volume/library.db", kToday, kWrite);
    expectSound("/volume/library.db");
    EXPECT_EQ(umount("/volume"), 0);
  });
}

using ReadOnlyDisk = FullDisk;

TEST_F(ReadOnlyDisk, CanBeReadButNotWritten) {
  runInAppliance([] {
    fs::create_directory("/volume");
    ASSERT_EQ(mount("tmpfs", "/volume", "tmpfs", 0, "size=8m"), 0);
    {
      Store store("/volume/100% #?.db", kToday, kWrite);
      putBatch(store, 0);
    }
    ASSERT_EQ(mount("none", "/volume", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    failure(Kind::kReadOnly, [] { Store("/volume/100% #?.db", kToday, kWrite); });
    failure(Kind::kReadOnly, [] { Store("/volume/new.db", kToday, kWrite); });
    failure(Kind::kReadOnly, [] { Store("/volume/new/new.db", kToday, kWrite); });
    EXPECT_EQ(Store("/volume/100% #?.db", kToday, kRead).counts().known, 10U);
    EXPECT_EQ(umount("/volume"), 0);
  });
}

TEST_F(ReadOnlyDisk, RefusesToWriteAProtectedFile) {
  runInAppliance([] {
    fs::create_directory("/volume");
    { Store store("/volume/library.db", kToday, kWrite); }
    ASSERT_EQ(mount("/volume/library.db", "/volume/library.db", nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(
        mount("none", "/volume/library.db", nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    const std::string text =
        failure(Kind::kReadOnly, [] { Store("/volume/library.db", kToday, kWrite); });
    EXPECT_EQ(text, "/volume/library.db: cannot be written");
    EXPECT_EQ(umount("/volume/library.db"), 0);
  });
}

TEST(StoreFaults, ReportsWritersThatAreNoScan) {
  const TempDir folder;
  const std::string library = folder.path("library.db");
  Store store(library, kToday, kWrite);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(library.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  failure(Kind::kInUse, [&] { store.putRoot({"/", 1, 1}); });
  sqlite3_close(other);
  store.putRoot({"/", 1, 1});
}

TEST(StoreFaults, WorksWhileOtherProgramsRead) {
  const TempDir folder;
  const std::string library = folder.path("library.db");
  Store store(library, kToday, kWrite);
  putBatch(store, 0);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(library.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN; SELECT * FROM file", nullptr, nullptr, nullptr), SQLITE_OK);
  for (std::uint64_t batch = 1; batch < 50; ++batch) putBatch(store, batch);
  EXPECT_EQ(store.counts().known, 500U);
  sqlite3_close(other);
}

}  // namespace
}  // namespace kolum::test
