#include "scan/supervisor.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <thread>

#include "scan/scan_run.h"
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
using testing::Pair;
using testing::UnorderedElementsAre;

class Scan : public testing::Test {
 protected:
  std::string root() const { return media_.folder(); }
  std::string path(const std::string& name) const { return media_.path(name); }
  std::string library() const { return library_.path("library.db"); }

  void write(const std::string& name, const std::string& content = "content") const {
    media_.write(name, content);
  }

  ScanSummary run() { return run(scanOf({root()})); }
  ScanSummary run(ScanOptions options) {
    problems_.clear();
    Store store(library(), version_, Store::Access::kWrite);
    scan::Supervisor supervisor(
        store, prober_.prober(), std::move(options),
        {.isStopWanted = isStopWanted_,
         .cancelProbes = cancelProbes_,
         .progress = progress_,
         .problem = [this](const std::string& where, const std::string& what) {
           problems_.push_back(where + ": " + what);
         }});
    return supervisor.run();
  }

  std::optional<scan::Known> known(const std::string& name) const {
    Store store(library(), version_, Store::Access::kRead);
    const std::string full = path(name);
    return store.file({full.substr(0, full.rfind('/') + 1), full.substr(full.rfind('/') + 1)});
  }
  std::string documentOf(const std::string& name) const {
    std::string document;
    Store store(library(), version_, Store::Access::kRead);
    store.forEachFile({}, [&](const scan::FoundFile& found) {
      if (found.path.full() == path(name)) document = found.document;
    });
    return document;
  }
  std::size_t marks() const {
    Store store(library(), version_, Store::Access::kRead);
    return store.marks().size();
  }

  TempDir media_;
  TempDir library_;
  FakeProber prober_;
  scan::Version version_ = {1, "today"};
  std::vector<std::string> problems_;
  std::function<bool()> isStopWanted_;
  std::function<void()> cancelProbes_;
  std::function<void(const scan::ScanProgress&)> progress_;
};

// ---- What is read, and what is not ----

TEST_F(Scan, DescribesEveryFile) {
  for (const char* name : {"a", "x/b", "x/y/c"}) write(name);
  const ScanSummary summary = run();
  EXPECT_EQ(summary.added, 3U);
  EXPECT_EQ(summary.described, 3U);
  EXPECT_EQ(summary.bytesRead, 21U);
  EXPECT_EQ(summary.failed + summary.gone + summary.problems + summary.unchanged, 0U);
  EXPECT_THAT(prober_.takeAsked(), UnorderedElementsAre(path("a"), path("x/b"), path("x/y/c")));
  for (const char* name : {"a", "x/b", "x/y/c"}) {
    ASSERT_TRUE(known(name)) << name;
    EXPECT_EQ(known(name)->state, State::kKnown);
  }
  EXPECT_THAT(documentOf("a"), HasSubstr(R"("bytes":7)"));
  EXPECT_EQ(marks(), 0U);
}

TEST_F(Scan, ReadsNothingOfUnchangedFiles) {
  for (const char* name : {"a", "x/b", "x/y/c"}) write(name);
  run();
  prober_.takeAsked();
  const ScanSummary summary = run();
  EXPECT_EQ(summary.unchanged, 3U);
  EXPECT_EQ(summary.files(), 3U);
  EXPECT_EQ(summary.bytesRead, 0U);
  EXPECT_THAT(prober_.takeAsked(), IsEmpty());
}

TEST_F(Scan, ReadsWhatHasChangedInAnyWay) {
  for (const char* name : {"same", "content", "time", "owner", "replaced", "older"}) write(name);
  run();
  prober_.takeAsked();
  write("content", "other content");
  fs::last_write_time(path("time"), fs::last_write_time(path("time")) + 1ns);
  fs::last_write_time(path("older"), fs::last_write_time(path("older")) - 24h);
  fs::permissions(path("owner"), fs::perms::owner_read);
  write("new");
  fs::rename(path("new"), path("replaced"));
  const ScanSummary summary = run();
  EXPECT_EQ(summary.changed, 5U);
  EXPECT_EQ(summary.unchanged, 1U);
  EXPECT_THAT(prober_.takeAsked(),
              UnorderedElementsAre(path("content"), path("time"), path("older"), path("owner"),
                                   path("replaced")));
  EXPECT_THAT(documentOf("content"), HasSubstr(R"("bytes":13)"));
}

TEST_F(Scan, ReadsEverythingAnewForNewReaders) {
  write("a");
  run();
  prober_.takeAsked();
  version_.readers = "tomorrow";
  EXPECT_EQ(run().changed, 1U);
  EXPECT_EQ(run().unchanged, 1U);
  version_.schema = 2;
  EXPECT_EQ(run().changed, 1U);
}

TEST_F(Scan, SkipsWhatTheSelectionLeavesOut) {
  write("a.mp3");
  write("a.txt");
  write("no/b.mp3");
  ScanOptions options = scanOf({root()});
  options.selection = {
      [](std::string_view, const std::string& name) { return name.ends_with(".mp3"); },
      [](std::string_view, const std::string& name) { return name != "no"; }};
  EXPECT_EQ(run(options).added, 1U);
  EXPECT_THAT(prober_.takeAsked(), ElementsAre(path("a.mp3")));
}

TEST_F(Scan, TakesThousandsOfFilesInManyFolders) {
  for (int i = 0; i < 3000; ++i) write(std::to_string(i % 50) + "/" + std::to_string(i), "");
  EXPECT_EQ(run().described, 3000U);
  EXPECT_EQ(run().unchanged, 3000U);
  EXPECT_LE(prober_.mostAtOnce(), 2);
}

TEST_F(Scan, ReadsOneFileAtATimeIfThatIsWanted) {
  for (int i = 0; i < 200; ++i) write(std::to_string(i));
  ScanOptions options = scanOf({root()});
  options.jobs = 1;
  run(options);
  EXPECT_EQ(prober_.mostAtOnce(), 1);
}

// ---- Roots ----

TEST_F(Scan, WalksOverlappingRootsOnce) {
  write("a");
  write("x/b");
  const ScanSummary summary = run(scanOf({root(), path("x"), root(), path("x/")}));
  EXPECT_EQ(summary.added, 2U);
  EXPECT_EQ(prober_.takeAsked().size(), 2U);
}

TEST_F(Scan, ResolvesLinksInTheNamesOfRoots) {
  write("real/a");
  fs::create_symlink("real", path("link"));
  run(scanOf({path("link")}));
  EXPECT_TRUE(known("real/a"));
  EXPECT_EQ(run(scanOf({path("real")})).unchanged, 1U);
}

TEST_F(Scan, ReportsRootsThatAreMissingOrNoFolders) {
  write("file");
  write("x/a");
  const ScanSummary summary = run(scanOf({path("missing"), path("file"), path("x")}));
  EXPECT_EQ(summary.problems, 2U);
  EXPECT_EQ(summary.added, 1U);
  EXPECT_THAT(problems_, UnorderedElementsAre(path("missing") + ": No such file or directory",
                                              path("file") + ": not a folder"));
}

TEST_F(Scan, RemembersTheRootsThatItHasWalked) {
  write("a");
  run();
  Store store(library(), version_, Store::Access::kRead);
  const auto roots = store.roots();
  ASSERT_EQ(roots.size(), 1U);
  EXPECT_EQ(roots[0].folder, root());
}

// ---- Failures ----

TEST_F(Scan, KeepsFailuresWithTheirReason) {
  write("bad");
  write("good");
  prober_.answer("bad", Outcome::Kind::kFailure, "not-media");
  const ScanSummary summary = run();
  EXPECT_EQ(summary.failed, 1U);
  EXPECT_THAT(summary.failedByReason, ElementsAre(Pair("not-media", 1)));
  EXPECT_EQ(known("bad")->state, State::kFailed);
  prober_.takeAsked();
  EXPECT_EQ(run().unchanged, 2U);
  EXPECT_THAT(prober_.takeAsked(), IsEmpty());
}

TEST_F(Scan, TriesFailuresAgainWhenTheyChangeOrIfThatIsWanted) {
  write("bad");
  prober_.answer("bad", Outcome::Kind::kFailure, "damaged");
  run();
  prober_.takeAsked();
  ScanOptions retry = scanOf({root()});
  retry.isRetry = true;
  EXPECT_EQ(run(retry).retried, 1U);
  EXPECT_THAT(prober_.takeAsked(), ElementsAre(path("bad")));
  write("bad", "changed");
  prober_.answerNormally("bad");
  EXPECT_EQ(run().described, 1U);
  EXPECT_EQ(known("bad")->state, State::kKnown);
}

TEST_F(Scan, TriesAgainByItselfWhatMayHavePassed) {
  write("a");
  prober_.answer("a", [](const scan::Job&) {
    Outcome outcome = failed(Outcome::Kind::kFailure, "too-many-open-files");
    outcome.isTransient = true;
    return outcome;
  });
  run();
  EXPECT_EQ(known("a")->state, State::kFailed);
  prober_.answerNormally("a");
  EXPECT_EQ(run().described, 1U);
}

TEST_F(Scan, KeepsAnEarlierDocumentWhenANewLookFails) {
  write("a");
  run();
  const std::string document = documentOf("a");
  write("a", "changed");
  for (const auto kind : {Outcome::Kind::kFailure, Outcome::Kind::kCrash}) {
    prober_.answer("a", kind, "code");
    fs::last_write_time(path("a"), fs::last_write_time(path("a")) + 1s);
    run();
    EXPECT_EQ(documentOf("a"), document);
  }
}

TEST_F(Scan, CountsAThrowingProberAsAFailure) {
  write("a");
  prober_.answer("a", [](const scan::Job&) -> Outcome { throw std::runtime_error("oops"); });
  EXPECT_THAT(run().failedByReason, ElementsAre(Pair("system-error", 1)));
}

TEST_F(Scan, KeepsOtherResultsWhenADocumentIsNoJson) {
  write("bad");
  write("good");
  prober_.answer("bad", [](const scan::Job&) {
    Outcome outcome;
    outcome.kind = Outcome::Kind::kDocument;
    outcome.document = "no JSON";
    return outcome;
  });
  const ScanSummary summary = run();
  EXPECT_THAT(summary.failedByReason, ElementsAre(Pair("bad-document", 1)));
  EXPECT_EQ(known("good")->state, State::kKnown);
}

// ---- Poison ----

TEST_F(Scan, TriesPoisonOnceMoreAloneAndThenPutsItIntoQuarantine) {
  for (int i = 0; i < 20; ++i) write(std::to_string(i));
  write("poison");
  prober_.answer("poison", Outcome::Kind::kCrash, "crashed");
  const ScanSummary summary = run();
  EXPECT_EQ(summary.described, 20U);
  EXPECT_EQ(summary.failed, 1U);
  EXPECT_EQ(summary.quarantined, 1U);
  EXPECT_EQ(summary.added, 21U);
  EXPECT_EQ(known("poison")->state, State::kQuarantined);
  EXPECT_THAT(prober_.alone(), ElementsAre(path("poison")));
  EXPECT_EQ(prober_.takeAsked().back(), path("poison"));
  EXPECT_THAT(problems_, Contains(HasSubstr("in quarantine until it changes: because of crashed")));

  EXPECT_EQ(run().unchanged, 21U);
  EXPECT_THAT(prober_.takeAsked(), IsEmpty());
}

TEST_F(Scan, SuspectsTimeAndMemoryToo) {
  for (const char* name : {"slow", "large"}) write(name);
  prober_.answer("slow", Outcome::Kind::kDeadline, "deadline");
  prober_.answer("large", Outcome::Kind::kMemory, "memory");
  EXPECT_EQ(run().quarantined, 2U);
}

// Nothing is known of the file then.
TEST_F(Scan, EndsIfItsOwnMemoryRunsOutAndBlamesNoFile) {
  for (const char* name : {"a", "b"}) write(name);
  prober_.answer("b", [](const scan::Job&) -> Outcome { throw std::bad_alloc(); });
  EXPECT_THROW(run(), std::bad_alloc);
  EXPECT_FALSE(known("b"));
  prober_.answer("b", [](const scan::Job& job) { return described(job); });
  EXPECT_EQ(run().failed, 0U);
  EXPECT_EQ(known("b")->state, State::kKnown);
}

TEST_F(Scan, ForgivesASuspectThatSucceedsAlone) {
  write("a");
  prober_.answer("a", [](const scan::Job& job) {
    return job.isAlone ? described(job) : failed(Outcome::Kind::kCrash, "crashed");
  });
  const ScanSummary summary = run();
  EXPECT_EQ(summary.described, 1U);
  EXPECT_EQ(summary.failed, 0U);
  EXPECT_EQ(known("a")->state, State::kKnown);
}

TEST_F(Scan, TakesFilesOutOfQuarantineWhenTheyChangeOrIfThatIsWanted) {
  write("poison");
  prober_.answer("poison", Outcome::Kind::kCrash, "crashed");
  run();
  prober_.takeAsked();
  ScanOptions retry = scanOf({root()});
  retry.isRetry = true;
  EXPECT_EQ(run(retry).quarantined, 1U);
  // Once, and alone at once.
  EXPECT_THAT(prober_.alone(), ElementsAre(path("poison")));
  EXPECT_THAT(prober_.takeAsked(), ElementsAre(path("poison")));
  prober_.answerNormally("poison");
  EXPECT_EQ(run(retry).described, 1U);
  EXPECT_EQ(known("poison")->state, State::kKnown);

  prober_.answer("poison", Outcome::Kind::kCrash, "crashed");
  write("poison", "changed");
  run();
  ASSERT_EQ(known("poison")->state, State::kQuarantined);
  prober_.answerNormally("poison");
  write("poison", "changed again");
  EXPECT_EQ(run().changed, 1U);
  EXPECT_EQ(known("poison")->state, State::kKnown);
}

TEST_F(Scan, LeavesSuspectsOutsideItsRootsAlone) {
  write("in/a");
  write("out/b");
  prober_.answer("b", Outcome::Kind::kCrash, "crashed");
  {
    // A scan that was killed leaves marks.
    Store store(library(), version_, Store::Access::kWrite);
    store.markAtHand({{path("out/"), "b"}, {}, false});
  }
  run(scanOf({path("in")}));
  EXPECT_THAT(prober_.takeAsked(), ElementsAre(path("in/a")));
  EXPECT_EQ(known("out/b")->state, State::kSuspect);
}

TEST_F(Scan, MarksFilesBeforeTheyAreOpened) {
  for (int i = 0; i < 300; ++i) write(std::to_string(i));
  std::atomic<int> unmarked{0};
  const std::string file = library();
  const scan::Version version = version_;
  for (int i = 0; i < 300; i += 30)
    prober_.answer(std::to_string(i), [&, file, version](const scan::Job& job) {
      Store store(file, version, Store::Access::kRead);
      const auto marks = store.marks();
      const bool isMarked = std::any_of(marks.begin(), marks.end(), [&](const scan::Mark& mark) {
        return mark.path == job.file && mark.identity == job.identity;
      });
      if (!isMarked) ++unmarked;
      return described(job);
    });
  EXPECT_EQ(run().described, 300U);
  EXPECT_EQ(unmarked, 0);
  EXPECT_EQ(marks(), 0U);
}

TEST_F(Scan, DropsSuspectsThatAreGone) {
  write("a");
  {
    Store store(library(), version_, Store::Access::kWrite);
    store.markAtHand({{root(), "missing"}, {}, false});
  }
  const ScanSummary summary = run();
  EXPECT_EQ(summary.described, 1U);
  EXPECT_THAT(prober_.takeAsked(), ElementsAre(path("a")));
  EXPECT_EQ(marks(), 0U);
}

// ---- Moves ----

TEST_F(Scan, KeepsWhatIsKnownOfMovedFiles) {
  for (const char* name : {"a", "x/b", "x/y/c", "other"}) write(name);
  run();
  prober_.takeAsked();
  const std::int64_t id = known("a")->id;
  const std::string document = documentOf("x/y/c");
  fs::rename(path("a"), path("x/renamed"));
  fs::rename(path("x/y"), path("z"));
  const ScanSummary summary = run();
  EXPECT_EQ(summary.moved, 2U);
  EXPECT_EQ(summary.unchanged, 2U);
  EXPECT_EQ(summary.gone + summary.added + summary.changed, 0U);
  EXPECT_EQ(summary.bytesRead, 0U);
  EXPECT_THAT(prober_.takeAsked(), IsEmpty());
  ASSERT_TRUE(known("x/renamed"));
  EXPECT_EQ(known("x/renamed")->id, id);
  EXPECT_EQ(documentOf("z/c"), document);
  EXPECT_FALSE(known("a"));
  EXPECT_FALSE(known("x/y/c"));
  EXPECT_EQ(run().unchanged, 4U);
}

TEST_F(Scan, FollowsMovesBetweenRoots) {
  write("from/a");
  write("to/b");
  run(scanOf({path("from"), path("to")}));
  prober_.takeAsked();
  fs::rename(path("from/a"), path("to/a"));
  EXPECT_EQ(run(scanOf({path("to")})).moved, 1U);
  EXPECT_THAT(prober_.takeAsked(), IsEmpty());
}

TEST_F(Scan, ReadsMovedFilesThatHaveChanged) {
  write("a");
  write("b");
  run();
  fs::rename(path("a"), path("c"));
  write("c", "changed");
  const ScanSummary summary = run();
  EXPECT_EQ(summary.added, 1U);
  EXPECT_EQ(summary.moved, 0U);
  EXPECT_EQ(summary.gone, 1U);
}

TEST_F(Scan, TakesHardLinksForFilesOfTheirOwn) {
  write("a");
  fs::create_hard_link(path("a"), path("b"));
  EXPECT_EQ(run().added, 2U);
  fs::create_hard_link(path("a"), path("c"));
  // The link changes the ctime of all three.
  const ScanSummary summary = run();
  EXPECT_EQ(summary.added, 1U);
  EXPECT_EQ(summary.moved, 0U);
  EXPECT_TRUE(known("a") && known("b") && known("c"));
}

TEST_F(Scan, TakesItsTimeNotWithThousandsOfHardLinks) {
  write("0/0");
  for (int i = 1; i < 3000; ++i) fs::create_hard_link(path("0/0"), path("0/" + std::to_string(i)));
  run();
  fs::create_directory(path("1"));
  for (int i = 0; i < 3000; ++i) fs::create_hard_link(path("0/0"), path("1/" + std::to_string(i)));
  // Each of the new names could be any of the known ones, and comparing all takes a minute.
  const ScanSummary summary = run();
  EXPECT_EQ(summary.described, 6000U);
  EXPECT_LT(summary.elapsed, 40s);
}

TEST_F(Scan, FollowsAFileThatReplacesAnother) {
  write("a", "first");
  write("b", "second file");
  run();
  prober_.takeAsked();
  const std::int64_t id = known("b")->id;
  fs::rename(path("b"), path("a"));
  const ScanSummary summary = run();
  EXPECT_EQ(summary.moved, 1U);
  EXPECT_THAT(prober_.takeAsked(), IsEmpty());
  EXPECT_EQ(known("a")->id, id);
  EXPECT_FALSE(known("b"));
}

// ---- What is gone ----

TEST_F(Scan, ForgetsFilesAndFoldersThatAreGone) {
  for (const char* name : {"a", "b", "x/c", "x/y/d", "z/e"}) write(name);
  run();
  fs::remove(path("a"));
  fs::remove_all(path("x"));
  const ScanSummary summary = run();
  EXPECT_EQ(summary.gone, 3U);
  EXPECT_EQ(summary.unchanged, 2U);
  EXPECT_EQ(summary.kept, 0U);
  EXPECT_FALSE(known("a") || known("x/c") || known("x/y/d"));
  EXPECT_TRUE(known("b") && known("z/e"));
}

TEST_F(Scan, ForgetsFilesThatBecameSomethingElse) {
  write("a");
  write("b");
  write("x/c");
  run();
  fs::remove(path("a"));
  fs::create_symlink("b", path("a"));
  fs::remove_all(path("x"));
  write("x");
  const ScanSummary summary = run();
  EXPECT_EQ(summary.gone, 2U);
  EXPECT_FALSE(known("a") || known("x/c"));
}

TEST_F(Scan, ForgetsTheOnlyKnownFileIfOthersAreThere) {
  write("a");
  run();
  fs::remove(path("a"));
  write("b");
  const ScanSummary summary = run();
  EXPECT_EQ(summary.gone, 1U);
  EXPECT_EQ(summary.added, 1U);
}

TEST_F(Scan, KeepsEverythingOfARootThatIsEmpty) {
  for (const char* name : {"a", "x/b", "x/y/c"}) write(name);
  run();
  for (const auto& entry : fs::directory_iterator(root())) fs::remove_all(entry);
  const ScanSummary summary = run();
  EXPECT_EQ(summary.gone, 0U);
  EXPECT_EQ(summary.kept, 3U);
  EXPECT_TRUE(known("a") && known("x/y/c"));
  EXPECT_THAT(problems_, ElementsAre(HasSubstr("3 known files were not found")));
}

TEST_F(Scan, KeepsEverythingOfARootThatIsMissing) {
  write("x/a");
  run(scanOf({path("x")}));
  fs::rename(path("x"), path("elsewhere"));
  EXPECT_EQ(run(scanOf({path("x")})).gone, 0U);
  EXPECT_TRUE(known("x/a"));
}

TEST_F(Scan, KeepsWhatIsLeftOutThisTime) {
  write("a.mp3");
  write("b.txt");
  write("x/c.mp3");
  run();
  ScanOptions options = scanOf({root()});
  options.selection = {
      [](std::string_view, const std::string& name) { return name.ends_with(".mp3"); },
      [](std::string_view, const std::string& name) { return name != "x"; }};
  EXPECT_EQ(run(options).gone, 0U);
  EXPECT_TRUE(known("a.mp3") && known("b.txt") && known("x/c.mp3"));
}

TEST_F(Scan, KeepsWhatOtherRootsHold) {
  write("one/a");
  write("two/b");
  run(scanOf({path("one"), path("two")}));
  fs::remove(path("two/b"));
  EXPECT_EQ(run(scanOf({path("one")})).gone, 0U);
  EXPECT_TRUE(known("two/b"));
}

// ---- Stopping ----

// Prober calls wait here until the test lets them go.
class Gate {
 public:
  void wait() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return isOpen_; });
  }
  void open() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
    changed_.notify_all();
  }
  int waiting() {
    const std::lock_guard lock(mutex_);
    return waiting_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int waiting_ = 0;
  bool isOpen_ = false;
};

// Threads that were left behind must end before the test does.
void waitForThreads() {
  const auto count = [] {
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
  };
  for (int i = 0; i < 500 && count() > 1; ++i) std::this_thread::sleep_for(10ms);
}

TEST_F(Scan, StopsWithinASecondAndGoesOnLater) {
  for (int i = 0; i < 500; ++i) write(std::to_string(i));
  std::atomic<int> done{0};
  for (int i = 0; i < 500; ++i)
    prober_.answer(std::to_string(i), [&](const scan::Job& job) {
      ++done;
      std::this_thread::sleep_for(5ms);
      return described(job);
    });
  std::chrono::steady_clock::time_point wanted;
  bool isWanted = false;
  isStopWanted_ = [&] {
    if (done < 50) return false;
    if (!std::exchange(isWanted, true)) wanted = std::chrono::steady_clock::now();
    return true;
  };
  const ScanSummary summary = run();
  EXPECT_LT(std::chrono::steady_clock::now() - wanted, 1s);
  EXPECT_TRUE(summary.isStopped);
  EXPECT_EQ(summary.threadsLeftBehind, 0U);
  EXPECT_GE(summary.described, 48U);
  EXPECT_LT(summary.described, 500U);
  EXPECT_EQ(marks(), 0U);

  isStopWanted_ = nullptr;
  const ScanSummary rest = run();
  EXPECT_EQ(rest.unchanged, summary.described);
  EXPECT_EQ(rest.added, 500U - summary.described);
  EXPECT_EQ(rest.failed, 0U);
}

TEST_F(Scan, StopsAlthoughAFileHangs) {
  const auto gate = std::make_shared<Gate>();
  for (const char* name : {"a", "b", "hangs"}) write(name);
  prober_.answer("hangs", [gate](const scan::Job& job) {
    gate->wait();
    return described(job);
  });
  isStopWanted_ = [&] { return gate->waiting() > 0; };
  const auto begin = std::chrono::steady_clock::now();
  const ScanSummary summary = run();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
  EXPECT_TRUE(summary.isStopped);
  EXPECT_EQ(summary.threadsLeftBehind, 1U);
  // Nobody knows whether it would have ended.
  EXPECT_EQ(marks(), 0U);
  EXPECT_FALSE(known("hangs"));
  gate->open();
  waitForThreads();
}

TEST_F(Scan, CancelsWhatProbesWaitFor) {
  const auto gate = std::make_shared<Gate>();
  write("waits");
  prober_.answer("waits", [gate](const scan::Job& job) {
    gate->wait();
    return described(job);
  });
  isStopWanted_ = [&] { return gate->waiting() > 0; };
  cancelProbes_ = [&] { gate->open(); };
  EXPECT_EQ(run().threadsLeftBehind, 0U);
}

// ---- What hangs ----

// A machine on which the folders "slow" and "fine" of a root are on disks of their own.
std::shared_ptr<const scan::Storage> twoDisks(const TempDir& tables, const std::string& root) {
  const std::string mounts = "1 1 0:1 / / rw - tmpfs none rw\n2 1 0:2 / " + root +
                             "slow rw - nfs server:/ rw\n3 1 0:3 / " + root +
                             "fine rw - tmpfs none rw\n";
  return std::make_shared<const scan::Storage>(tables.write("mounts", mounts), tables.folder());
}

TEST_F(Scan, LeavesAFileThatHangsAndGoesOn) {
  const auto gate = std::make_shared<Gate>();
  for (int i = 0; i < 50; ++i) write(std::to_string(i));
  write("hangs");
  prober_.answer("hangs", [gate](const scan::Job& job) {
    if (!job.isAlone) gate->wait();
    return described(job);
  });
  ScanOptions options = scanOf({root()});
  options.fileLimit = 300ms;
  const ScanSummary summary = run(options);
  EXPECT_EQ(summary.described, 51U);
  EXPECT_EQ(summary.threadsLeftBehind, 1U);
  gate->open();
  waitForThreads();
}

TEST_F(Scan, QuarantinesAFileThatHangsAgain) {
  const auto gate = std::make_shared<Gate>();
  for (const char* name : {"a", "b", "hangs"}) write(name);
  prober_.answer("hangs", [gate](const scan::Job& job) {
    gate->wait();
    return described(job);
  });
  ScanOptions options = scanOf({root()});
  options.fileLimit = 200ms;
  const ScanSummary summary = run(options);
  EXPECT_EQ(summary.described, 2U);
  EXPECT_THAT(summary.failedByReason, ElementsAre(Pair("hung", 1)));
  EXPECT_EQ(known("hangs")->state, State::kQuarantined);
  gate->open();
  waitForThreads();
}

TEST_F(Scan, GoesOnThoughSeveralFilesHangAtOnce) {
  const auto gate = std::make_shared<Gate>();
  for (int i = 0; i < 50; ++i) write(std::to_string(i));
  for (const char* name : {"hangs1", "hangs2", "hangs3"}) {
    write(name);
    prober_.answer(name, [gate](const scan::Job& job) {
      if (!job.isAlone) gate->wait();
      return described(job);
    });
  }
  ScanOptions options = scanOf({root()});
  options.fileLimit = 300ms;
  EXPECT_EQ(run(options).described, 53U);
  gate->open();
  waitForThreads();
}

TEST_F(Scan, LeavesOutADeviceThatDoesNotAnswer) {
  const TempDir tables;
  const auto gate = std::make_shared<Gate>();
  for (int i = 0; i < 100; ++i) {
    write("slow/s" + std::to_string(i));
    write("fine/f" + std::to_string(i));
    prober_.answer("s" + std::to_string(i), [gate](const scan::Job& job) {
      gate->wait();
      return described(job);
    });
  }
  ScanOptions options = scanOf({path("slow"), path("fine")});
  options.storage = twoDisks(tables, root());
  options.fileLimit = 300ms;
  options.answerLimit = 200ms;
  options.askDevice = [gate](const scan::Job&) { gate->wait(); };
  const ScanSummary summary = run(options);
  EXPECT_EQ(summary.described, 100U);
  EXPECT_EQ(summary.skipped, 100U);
  EXPECT_EQ(summary.failed, 0U);
  EXPECT_EQ(summary.threadsLeftBehind, 3U);
  EXPECT_THAT(problems_, Contains(path("slow") + ": the device does not answer; its files are left "
                                                 "out"));
  EXPECT_EQ(marks(), 0U);
  gate->open();
  waitForThreads();
  // They are no suspects.
  for (int i = 0; i < 100; ++i) prober_.answerNormally("s" + std::to_string(i));
  prober_.takeAsked();
  EXPECT_EQ(run(scanOf({path("slow"), path("fine")})).added, 100U);
  EXPECT_THAT(prober_.alone(), IsEmpty());
}

TEST_F(Scan, ReadsFromEachDeviceAsItsStorageSuggests) {
  const TempDir tables;
  for (int i = 0; i < 50; ++i) write("slow/" + std::to_string(i));
  for (int i = 0; i < 50; ++i)
    prober_.answer(std::to_string(i), [](const scan::Job& job) {
      std::this_thread::sleep_for(2ms);
      return described(job);
    });
  ScanOptions options = scanOf({path("slow")});
  options.storage = twoDisks(tables, root());
  options.processors = 8;
  run(options);
  EXPECT_EQ(prober_.mostAtOnce(), 2);
}

// ---- Progress ----

TEST_F(Scan, ReportsItsProgress) {
  for (int i = 0; i < 100; ++i) write(std::to_string(i));
  for (int i = 0; i < 100; ++i)
    prober_.answer(std::to_string(i), [](const scan::Job& job) {
      std::this_thread::sleep_for(10ms);
      return described(job);
    });
  std::vector<scan::ScanProgress> reports;
  progress_ = [&](const scan::ScanProgress& progress) { reports.push_back(progress); };
  run();
  ASSERT_GE(reports.size(), 3U);
  const scan::ScanProgress& middle = reports[reports.size() / 2];
  EXPECT_GT(middle.done, 0U);
  EXPECT_LT(middle.done, 100U);
  EXPECT_EQ(middle.total, 100U);
  EXPECT_TRUE(middle.isTotalFinal);
  EXPECT_THAT(middle.atHand, testing::Not(IsEmpty()));
  EXPECT_GT(middle.perSecond, 0);
  EXPECT_TRUE(middle.left.has_value());
  EXPECT_EQ(reports.back().done, 100U);
  EXPECT_THAT(reports.back().atHand, IsEmpty());
}

TEST_F(Scan, NamesTheSlowestFiles) {
  for (int i = 0; i < 20; ++i) write(std::to_string(i));
  prober_.answer("7", [](const scan::Job& job) {
    std::this_thread::sleep_for(80ms);
    return described(job);
  });
  prober_.answer("8", [](const scan::Job& job) {
    std::this_thread::sleep_for(40ms);
    return described(job);
  });
  const ScanSummary summary = run();
  ASSERT_EQ(summary.slowest.size(), 5U);
  EXPECT_EQ(summary.slowest[0].path, path("7"));
  EXPECT_EQ(summary.slowest[1].path, path("8"));
  EXPECT_GE(summary.slowest[0].elapsed, 80ms);
}

}  // namespace
}  // namespace kolum::test
