#include "scan/watch.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>

#include "scan/notices.h"
#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

using scan::Changes;
using scan::Watch;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

scan::Selection songs() {
  return {[](std::string_view, const std::string& name) { return name.ends_with(".mp3"); },
          [](std::string_view, const std::string& name) { return name != "no"; }};
}

// Folders as "a/", with everything below as "a/**".
std::vector<std::string> textOf(const Changes& changes) {
  std::vector<std::string> texts;
  for (const scan::Target& target : changes.targets)
    texts.push_back(target.first + (target.isRecursive ? "**" : ""));
  if (changes.isEverything) texts.emplace_back("everything");
  return texts;
}

constexpr std::chrono::milliseconds kQuiet = 600ms;

class WatchWays : public testing::TestWithParam<Watch::Way> {
 protected:
  void watch(const std::string& root) {
    watch_ = std::make_unique<Watch>(Watch::Options{.roots = {root},
                                                    .selection = songs(),
                                                    .quiet = 100ms,
                                                    .latest = 1000ms,
                                                    .way = GetParam()},
                                     std::make_shared<const scan::Storage>());
    ASSERT_TRUE(watch_->waitUntilReady([] { return true; }));
    if (GetParam() == Watch::Way::kAny && !watch_->usesFanotify())
      GTEST_SKIP() << "no fanotify here";
  }

  // Everything that is reported until some time is quiet. A busy machine may take its time for the
  // first of it.
  std::vector<std::string> changes(std::chrono::milliseconds first = 10s) {
    std::vector<std::string> all;
    for (;;) {
      const auto end = std::chrono::steady_clock::now() + (all.empty() ? first : kQuiet);
      const auto news = watch_->wait([&] { return std::chrono::steady_clock::now() < end; });
      if (!news) break;
      for (const std::string& text : textOf(*news))
        if (std::find(all.begin(), all.end(), text) == all.end()) all.push_back(text);
    }
    std::sort(all.begin(), all.end());
    return all;
  }

  std::unique_ptr<Watch> watch_;
};

INSTANTIATE_TEST_SUITE_P(Scan, WatchWays, testing::Values(Watch::Way::kAny, Watch::Way::kInotify),
                         [](const auto& way) {
                           return way.param == Watch::Way::kAny ? "Fanotify" : "Inotify";
                         });

TEST_P(WatchWays, ReportsFilesThatAppearChangeAndVanish) {
  const TempDir folder;
  folder.write("a/x.mp3", "x");
  folder.write("b/x.mp3", "x");
  watch(folder.folder());
  if (IsSkipped()) return;
  EXPECT_THAT(changes(kQuiet), IsEmpty());
  folder.write("a/y.mp3", "x");
  EXPECT_THAT(changes(), ElementsAre("a/"));
  folder.write("b/x.mp3", "changed");
  EXPECT_THAT(changes(), ElementsAre("b/"));
  fs::remove(folder.path("a/y.mp3"));
  EXPECT_THAT(changes(), ElementsAre("a/"));
  fs::rename(folder.path("a/x.mp3"), folder.path("b/z.mp3"));
  EXPECT_THAT(changes(), ElementsAre("a/", "b/"));
  fs::permissions(folder.path("b/z.mp3"), fs::perms::owner_read);
  EXPECT_THAT(changes(), ElementsAre("b/"));
  fs::create_hard_link(folder.path("b/z.mp3"), folder.path("a/link.mp3"));
  EXPECT_THAT(changes(), Contains("a/"));
  folder.write("top.mp3", "x");
  EXPECT_THAT(changes(), ElementsAre(""));
}

TEST_P(WatchWays, ReportsFilesOnceTheyAreComplete) {
  const TempDir folder;
  watch(folder.folder());
  if (IsSkipped()) return;
  std::ofstream copy(folder.path("a.mp3"));
  copy << "beginning" << std::flush;
  EXPECT_THAT(changes(kQuiet), IsEmpty());
  copy << "end";
  copy.close();
  EXPECT_THAT(changes(), ElementsAre(""));
}

TEST_P(WatchWays, FollowsFoldersThatAppear) {
  const TempDir folder;
  const TempDir elsewhere;
  watch(folder.folder());
  if (IsSkipped()) return;
  folder.write("new/deep/x.mp3", "x");
  EXPECT_THAT(changes(), AllOf(Contains(""), Contains("new/**")));
  folder.write("new/deep/y.mp3", "x");
  EXPECT_THAT(changes(), ElementsAre("new/deep/"));
  fs::rename(folder.path("new/deep"), folder.path("moved"));
  EXPECT_THAT(changes(), AllOf(Contains("moved/**"), Contains("new/")));
  folder.write("moved/z.mp3", "x");
  EXPECT_THAT(changes(), ElementsAre("moved/"));
}

TEST_P(WatchWays, ForgetsFoldersThatLeave) {
  const TempDir parent;
  parent.write("root/a/b/x.mp3", "x");
  watch(parent.path("root"));
  if (IsSkipped()) return;
  fs::rename(parent.path("root/a"), parent.path("outside"));
  EXPECT_THAT(changes(), ElementsAre(""));
  parent.write("outside/b/y.mp3", "x");
  EXPECT_THAT(changes(kQuiet), IsEmpty());
  fs::rename(parent.path("outside"), parent.path("root/back"));
  EXPECT_THAT(changes(), ElementsAre("", "back/**"));
  parent.write("root/back/b/z.mp3", "x");
  EXPECT_THAT(changes(), ElementsAre("back/b/"));
}

TEST_P(WatchWays, IgnoresWhatDoesNotCount) {
  const TempDir folder;
  folder.write("no/x.mp3", "x");
  folder.write("a/x.mp3", "x");
  watch(folder.folder());
  if (IsSkipped()) return;
  folder.write("a/text.txt", "x");
  folder.write("no/y.mp3", "x");
  folder.write("no/deep/y.mp3", "x");
  const std::string content = contentOf(folder.path("a/x.mp3"));
  fs::create_directory(folder.path("a/no"));
  EXPECT_THAT(changes(kQuiet), IsEmpty());
}

TEST_P(WatchWays, CollectsChangesThatFollowEachOther) {
  const TempDir folder;
  folder.write("a/0.mp3", "x");
  watch(folder.folder());
  if (IsSkipped()) return;
  for (int i = 0; i < 100; ++i) folder.write("a/" + std::to_string(i) + ".mp3", "x");
  int reports = 0;
  const auto end = std::chrono::steady_clock::now() + 500ms;
  while (watch_->wait([&] { return std::chrono::steady_clock::now() < end; })) ++reports;
  EXPECT_GE(reports, 1);
  EXPECT_LE(reports, 3);
}

TEST_P(WatchWays, ReportsMountsBelowToo) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([&] {
    fs::create_directories("/tmp/root/mounted");
    ASSERT_EQ(mount("none", "/tmp/root/mounted", "tmpfs", 0, ""), 0);
    watch("/tmp/root");
    if (!IsSkipped()) {
      writeRootFile("/tmp/root/mounted/a.mp3", "x");
      EXPECT_THAT(changes(), ElementsAre("mounted/"));
    }
    watch_.reset();
    ASSERT_EQ(umount("/tmp/root/mounted"), 0);
  });
}

// Reports what the test says.
class FakeNotices : public scan::Notices {
 public:
  struct Script {
    std::string obstacle;
    std::atomic<bool> losesEvents{false};
    std::atomic<int> treesAdded{0};
  };

  explicit FakeNotices(std::shared_ptr<Script> script) : script_(std::move(script)) {}
  int descriptor() const override { return -1; }
  bool read(const std::function<void(const scan::Notice&)>&) override {
    return !script_->losesEvents.exchange(false);
  }
  bool addTree(const std::string&, scan::Pulse&) override {
    ++script_->treesAdded;
    return true;
  }
  std::string obstacle() const override { return script_->obstacle; }

 private:
  std::shared_ptr<Script> script_;
};

class FakeWatch {
 public:
  explicit FakeWatch(const std::string& obstacle = "") {
    script_->obstacle = obstacle;
    watch_ = std::make_unique<Watch>(
        Watch::Options{
            .roots = {folder_.folder()},
            .selection = songs(),
            .quiet = 50ms,
            .latest = 100ms,
            .period = 300ms,
            .source = [script = script_] { return std::make_unique<FakeNotices>(script); }},
        std::make_shared<const scan::Storage>());
    watch_->waitUntilReady([] { return true; });
  }

  FakeNotices::Script& script() { return *script_; }
  Watch& watch() { return *watch_; }
  std::optional<Changes> waitFor(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    return watch_->wait([&] { return std::chrono::steady_clock::now() < end; });
  }

 private:
  TempDir folder_;
  std::shared_ptr<FakeNotices::Script> script_ = std::make_shared<FakeNotices::Script>();
  std::unique_ptr<Watch> watch_;
};

TEST(Watch, WalksAndWatchesEverythingAnewIfEventsAreLost) {
  FakeWatch fake;
  EXPECT_FALSE(fake.waitFor(500ms));
  const int before = fake.script().treesAdded;
  fake.script().losesEvents = true;
  const auto news = fake.waitFor(5s);
  ASSERT_TRUE(news);
  EXPECT_TRUE(news->isEverything);
  EXPECT_EQ(fake.script().treesAdded, before + 1);
}

TEST(Watch, WalksEverythingFromTimeToTimeIfChangesMayRemainUnnoticed) {
  FakeWatch fake("too many folders");
  EXPECT_EQ(fake.watch().obstacle(), "too many folders");
  for (int i = 0; i < 2; ++i) {
    const auto news = fake.waitFor(5s);
    ASSERT_TRUE(news);
    EXPECT_TRUE(news->isEverything);
  }
}

TEST(Watch, SaysIfThereAreMoreFoldersThanMayBeWatched) {
  runInChild([] {
    const std::string user = std::to_string(geteuid());
    // The limit belongs to a user namespace.
    if (unshare(CLONE_NEWUSER) != 0) GTEST_SKIP() << "no user namespaces";
    std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
    std::ofstream limit("/proc/sys/user/max_inotify_watches");
    limit << "3";
    if (!limit.flush()) GTEST_SKIP() << "the limit cannot be set";
    const TempDir folder;
    for (int i = 0; i < 10; ++i) fs::create_directories(folder.path(std::to_string(i)));
    Watch watch({.roots = {folder.folder()}, .selection = songs(), .way = Watch::Way::kInotify},
                std::make_shared<const scan::Storage>());
    ASSERT_TRUE(watch.waitUntilReady([] { return true; }));
    EXPECT_THAT(watch.obstacle(), HasSubstr("max_user_watches"));
  });
}

TEST(Watch, StopsWaitingWhenThatIsWanted) {
  const TempDir folder;
  Watch watch({.roots = {folder.folder(), folder.path("missing")}, .selection = songs()},
              std::make_shared<const scan::Storage>());
  ASSERT_TRUE(watch.waitUntilReady([] { return true; }));
  EXPECT_FALSE(watch.wait([] { return false; }));
}

}  // namespace
}  // namespace kolum::test
