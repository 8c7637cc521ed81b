// The host's side, with workers that read files and with one that attacks.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "base/descriptor.h"
#include "isolation/isolation.h"
#include "isolation/message.h"
#include "support/child_process.h"
#include "support/picture_builder.h"
#include "support/temp_dir.h"

namespace kolum::isolation {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::contentOf;
using test::TempDir;
using testing::HasSubstr;

const read::Query kRecognition = {.recognition = true};
const read::Query kPicture = {.container = ffmpeg::Depth::kStreams, .picture = true};

#ifdef KOLUM_SANITIZED
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

// The processes whose parent is this one.
std::set<pid_t> children() {
  std::set<pid_t> found;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream list(thread.path() / "children");
    for (pid_t child = 0; list >> child;) found.insert(child);
  }
  return found;
}

class Isolation : public testing::Test {
 protected:
  void TearDown() override { configure({}); }

  static void start(Settings settings) {
    settings.mode = settings.mode == Mode::kOff ? Mode::kOn : settings.mode;
    if (settings.worker.empty()) settings.worker = KOLUM_WORKER;
    configure(settings);
  }

  // A small picture, 40 x 30.
  std::string picture(const std::string& name = "a.png") const {
    return folder_.write(name, test::png({.width = 40, .height = 30}));
  }

  static read::Findings lookAt(const std::string& path, const read::Query& query = kPicture) {
    const auto source = media::Source::open(path);
    return source ? isolation::look(*source, query) : read::Findings{};
  }

  static int widthOf(const read::Findings& found) {
    return found.picture ? found.picture->width : 0;
  }

  static std::string reasonOf(const read::Findings& found) {
    return found.failure ? found.failure->reason : "";
  }

  const TempDir folder_;
};

TEST_F(Isolation, ReadsInAnotherProcess) {
  start({});
  EXPECT_EQ(widthOf(lookAt(picture())), 40);
  // The nursery and its worker.
  EXPECT_EQ(children().size(), 2U);
}

TEST_F(Isolation, ReadsInThisProcessWhenOff) {
  configure({});
  EXPECT_EQ(widthOf(lookAt(picture())), 40);
  EXPECT_TRUE(children().empty());
}

// Not the host, which may have far more.
TEST_F(Isolation, LetsTheKernelEndReadersFirstWhereMemoryRunsOut) {
  start({});
  lookAt(picture());
  const auto readers = children();
  ASSERT_EQ(readers.size(), 2U);
  for (const pid_t reader : readers)
    EXPECT_EQ(contentOf("/proc/" + std::to_string(reader) + "/oom_score_adj"), "1000\n");
}

TEST_F(Isolation, ReusesWorkers) {
  start({});
  lookAt(picture());
  const auto before = children();
  for (int i = 0; i < 50; ++i) lookAt(picture());
  EXPECT_EQ(children(), before);
}

TEST_F(Isolation, RenewsWorkersAfterManyFiles) {
  start({});
  lookAt(picture());
  const auto before = children();
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(widthOf(lookAt(picture())), 40);
  EXPECT_NE(children(), before);
  EXPECT_EQ(children().size(), 2U);
}

TEST_F(Isolation, HasAllLayersWhereTheKernelHas) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers need what the sandbox forbids";
  start({});
  std::string why;
  const auto layers = activeLayers(why);
  ASSERT_TRUE(layers) << why;
  // Landlock may be missing; everything else is in every kernel.
  EXPECT_EQ(*layers | kFileSystemClosed, kAllLayers);
}

TEST_F(Isolation, StrictModeReadsWithAllLayersOnly) {
  start({.mode = Mode::kStrict});
  std::string why;
  const auto layers = activeLayers(why);
  const read::Findings found = lookAt(picture());
  if (layers) {
    EXPECT_EQ(*layers, kAllLayers);
    EXPECT_EQ(widthOf(found), 40);
  } else {
    EXPECT_EQ(why, "not all protections are available here");
    EXPECT_EQ(reasonOf(found), "not all protections are available here");
  }
}

TEST_F(Isolation, FailsWithoutTheProgram) {
  start({.worker = "/nowhere/kolum-worker"});
  const read::Findings found = lookAt(picture());
  ASSERT_TRUE(found.failure);
  EXPECT_EQ(found.failure->cause, read::FailureCause::kNoReader);
  EXPECT_EQ(found.failure->reason, "/nowhere/kolum-worker: No such file or directory");
}

TEST_F(Isolation, FailsWithAnotherProgram) {
  start({.worker = "/bin/true"});
  const read::Findings found = lookAt(picture());
  ASSERT_TRUE(found.failure);
  EXPECT_EQ(found.failure->cause, read::FailureCause::kNoReader);
  EXPECT_EQ(found.failure->reason, "kolum-worker does not answer");
}

TEST_F(Isolation, ReplacesWorkersThatDiedAtRest) {
  start({});
  lookAt(picture());
  for (const pid_t child : children()) kill(child, SIGKILL);
  for (const pid_t child : children())
    waitid(P_PID, static_cast<id_t>(child), nullptr, WEXITED | WNOWAIT);
  EXPECT_EQ(widthOf(lookAt(picture())), 40);
  EXPECT_EQ(children().size(), 2U);
}

// A host may wait for any child.
TEST_F(Isolation, DoesWithoutTheStatusOfWorkers) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  lookAt(folder_.write("nothing", ""), kRecognition);
  std::signal(SIGCHLD, SIG_IGN);
  const read::Findings found = lookAt(folder_.write("crash", ""), kRecognition);
  std::signal(SIGCHLD, SIG_DFL);
  ASSERT_TRUE(found.failure);
  EXPECT_EQ(found.failure->cause, read::FailureCause::kCrashed);
  EXPECT_EQ(found.failure->reason, "its reader ended");
}

TEST_F(Isolation, GivesForkedChildrenWorkersOfTheirOwn) {
  start({});
  lookAt(picture());
  const auto before = children();
  test::runInChild([&] {
    EXPECT_TRUE(children().empty());
    EXPECT_EQ(widthOf(lookAt(picture())), 40);
    EXPECT_EQ(children().size(), 2U);
    configure({});
  });
  EXPECT_EQ(children(), before);
  EXPECT_EQ(widthOf(lookAt(picture())), 40);
  EXPECT_EQ(children(), before);
}

TEST_F(Isolation, LeavesWorkersOfParentsAloneWhenAForkedChildConfigures) {
  start({});
  lookAt(picture());
  const auto before = children();
  test::runInChild([] { configure({}); });
  EXPECT_EQ(widthOf(lookAt(picture())), 40);
  EXPECT_EQ(children(), before);
}

// Disks could not be removed as long as the host runs.
TEST_F(Isolation, KeepsNoFolderAndNoMountsBusy) {
  const auto linkOf = [](const std::string& process, const char* name) {
    return std::filesystem::read_symlink("/proc/" + process + "/" + name).string();
  };
  start({});
  bool hasOwnMounts = false;
  std::thread([&] {
    hasOwnMounts = unshare(CLONE_NEWNS) == 0;
    lookAt(picture());
  }).join();
  if (!hasOwnMounts) GTEST_SKIP() << "no right to mounts of one's own";
  const std::string host = linkOf("self", "ns/mnt");
  for (const pid_t child : children()) {
    EXPECT_EQ(linkOf(std::to_string(child), "ns/mnt"), host);
    EXPECT_EQ(linkOf(std::to_string(child), "cwd"), "/");
  }
}

TEST_F(Isolation, ServesManyThreadsAtATime) {
  start({});
  const std::string path = picture();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      for (int k = 0; k < 50; ++k) EXPECT_EQ(widthOf(lookAt(path)), 40);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(Isolation, LeavesTheProcessorsOfThreadsAsTheyWere) {
  start({});
  cpu_set_t before;
  cpu_set_t after;
  ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
  lookAt(picture());
  ASSERT_EQ(sched_getaffinity(0, sizeof after, &after), 0);
  EXPECT_TRUE(CPU_EQUAL(&before, &after));
}

TEST_F(Isolation, EndsWorkersWhenItIsSwitchedOff) {
  start({});
  lookAt(picture());
  configure({});
  EXPECT_TRUE(children().empty());
}

TEST_F(Isolation, EndsWorkersAtWorkWhenStopped) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  const std::string path = folder_.write("burnTime", "");
  std::thread stopper([] {
    std::this_thread::sleep_for(milliseconds(200));
    stop();
  });
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(lookAt(path, kRecognition).failure);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, seconds(5));
  stopper.join();
  EXPECT_EQ(reasonOf(lookAt(path, kRecognition)), "stopped");
}

// Whoever killed the host: nobody else would end a worker that is at work.
TEST_F(Isolation, EndsWorkersWhenTheHostIsKilled) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const std::string path = folder_.write("burnTime", "");
  const pid_t host = fork();
  if (host == 0) {
    start({.worker = KOLUM_ATTACKING_WORKER});
    lookAt(folder_.write("nothing", ""), kRecognition);
    const auto workers = children();
    for (const pid_t worker : workers) {
      if (::write(ends[1], &worker, sizeof worker) != sizeof worker) _exit(1);
    }
    lookAt(path, kRecognition);
    _exit(0);
  }
  close(ends[1]);
  std::vector<pid_t> workers(2);
  for (pid_t& worker : workers)
    ASSERT_EQ(::read(ends[0], &worker, sizeof worker), static_cast<ssize_t>(sizeof worker));
  close(ends[0]);
  std::this_thread::sleep_for(milliseconds(100));
  kill(host, SIGKILL);
  waitpid(host, nullptr, 0);
  const auto isGone = [](pid_t process) {
    const std::string status = contentOf("/proc/" + std::to_string(process) + "/stat");
    return status.empty() || status.find(") Z") != std::string::npos;
  };
  for (int i = 0; i < 100 && !std::all_of(workers.begin(), workers.end(), isGone); ++i)
    std::this_thread::sleep_for(milliseconds(50));
  for (const pid_t worker : workers) EXPECT_TRUE(isGone(worker)) << worker;
}

// --- Attacks on the machine

class Attack : public Isolation, public testing::WithParamInterface<const char*> {};

std::string nameOf(const testing::TestParamInfo<const char*>& info) {
  return info.param;
}

TEST_P(Attack, Fails) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers need what the sandbox forbids";
  setenv("KOLUM_TEST_SECRET", "of the host", 1);
  start({.worker = KOLUM_ATTACKING_WORKER});
  const read::Findings found = lookAt(folder_.write(GetParam(), ""), kRecognition);
  unsetenv("KOLUM_TEST_SECRET");
  EXPECT_FALSE(found.failure) << reasonOf(found);
  EXPECT_NE(found.recognition.format, "succeeded");
  EXPECT_NE(found.recognition.format, "nothing");
  // Nothing else has suffered.
  EXPECT_EQ(lookAt(folder_.write("nothing", ""), kRecognition).recognition.format, "nothing");
}

INSTANTIATE_TEST_SUITE_P(OnMachine, Attack,
                         testing::Values("openFile", "createFile", "listFolder", "openOwnFile",
                                         "forkProcess", "forkByClone3", "killParent",
                                         "killNeighbours", "raiseLimit", "raiseTimeLimit",
                                         "moveNeighbours", "lookForFile", "filterSocket",
                                         "becomeRoot", "mapCode", "becomeDumpable", "openManyFiles",
                                         "forkBomb", "hostsEnvironment"),
                         nameOf);

struct Deed {
  const char* name;
  read::FailureCause cause;
  const char* reason;
};

std::ostream& operator<<(std::ostream& out, const Deed& deed) {
  return out << deed.name;
}

class LastDeed : public Isolation, public testing::WithParamInterface<Deed> {};

std::string deedName(const testing::TestParamInfo<Deed>& info) {
  return info.param.name;
}

TEST_P(LastDeed, CostsOneFile) {
  const Deed& deed = GetParam();
  if (kIsSanitized) GTEST_SKIP() << "sanitizers need what the sandbox forbids";
  start(
      {.deadline = seconds(2), .memory = std::size_t{64} << 20, .worker = KOLUM_ATTACKING_WORKER});
  const std::string good = folder_.write("nothing", "");
  EXPECT_EQ(lookAt(good, kRecognition).recognition.format, "nothing");
  const read::Findings found = lookAt(folder_.write(deed.name, ""), kRecognition);
  ASSERT_TRUE(found.failure) << found.recognition.format;
  EXPECT_EQ(found.failure->cause, deed.cause);
  EXPECT_THAT(found.failure->reason, HasSubstr(deed.reason));
  EXPECT_EQ(lookAt(good, kRecognition).recognition.format, "nothing");
}

using enum read::FailureCause;

INSTANTIATE_TEST_SUITE_P(
    OnMachine, LastDeed,
    testing::Values(Deed{"runProgram", kCrashed, "a forbidden system call"},
                    Deed{"connectOut", kCrashed, "a forbidden system call"},
                    Deed{"traceParent", kCrashed, "a forbidden system call"},
                    Deed{"mountFileSystem", kCrashed, "a forbidden system call"},
                    Deed{"crash", kCrashed, "Segmentation fault"},
                    Deed{"abort", kCrashed, "Aborted"}, Deed{"stop", kTimeOver, "longer than 2 s"},
                    Deed{"burnTime", kTimeOver, "longer than 2 s"},
                    Deed{"sleep", kTimeOver, "longer than 2 s"}),
    deedName);

INSTANTIATE_TEST_SUITE_P(OnHost, LastDeed,
                         testing::Values(Deed{"garbage", kInvalidAnswer, "nonsense"},
                                         Deed{"anotherFile", kInvalidAnswer, "nonsense"},
                                         Deed{"hugeAnswer", kInvalidAnswer, "nonsense"},
                                         Deed{"endlessAnswer", kInvalidAnswer, "nonsense"},
                                         Deed{"blameTheHost", kInvalidAnswer, "nonsense"},
                                         Deed{"forgeTerminal", kInvalidAnswer, "nonsense"},
                                         Deed{"grow", kInvalidAnswer, "nonsense"},
                                         Deed{"trickle", kTimeOver, "longer than 2 s"},
                                         Deed{"halfAnAnswer", kCrashed, "its reader ended"},
                                         Deed{"closeSocket", kCrashed, "its reader ended"},
                                         Deed{"exit", kCrashed, "its reader ended"}),
                         deedName);

// The second one is not taken for that of the next file.
TEST_F(Isolation, TakesOneAnswerPerFile) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  EXPECT_EQ(lookAt(folder_.write("twoAnswers", ""), kRecognition).recognition.format, "first");
  const read::Findings next = lookAt(folder_.write("nothing", ""), kRecognition);
  ASSERT_TRUE(next.failure);
  EXPECT_EQ(next.failure->cause, kInvalidAnswer);
}

// The test's own check sees any that stay.
TEST_F(Isolation, KeepsNoDescriptorsThatWorkersSend) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  EXPECT_EQ(lookAt(folder_.write("descriptors", ""), kRecognition).recognition.format,
            "with descriptors");
}

TEST_F(Isolation, KeepsNoPairsOfDescriptorsThatWorkersSend) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  EXPECT_EQ(lookAt(folder_.write("pairsOfDescriptors", ""), kRecognition).recognition.format,
            "with pairs");
}

// Its own words would go into the host's log.
TEST_F(Isolation, WritesTheReasonsOfWorkersItself) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  const read::Findings found = lookAt(folder_.write("forgeLog", ""), kRecognition);
  ASSERT_TRUE(found.failure);
  EXPECT_EQ(found.failure->cause, kOutOfMemory);
  EXPECT_EQ(found.failure->reason, "it takes too much memory to read");
  EXPECT_EQ(found.recognition.format, "");
}

// A worker that a file has taken over does not say that it has had enough.
TEST_F(Isolation, RenewsWorkersThatDoNotAskForIt) {
  start({.worker = KOLUM_ATTACKING_WORKER});
  const std::string path = folder_.write("nothing", "");
  lookAt(path, kRecognition);
  const auto before = children();
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(lookAt(path, kRecognition).recognition.format, "nothing");
  EXPECT_NE(children(), before);
}

TEST_F(Isolation, GivesWorkersNoStandardErrorOfTheHost) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers report there";
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const Descriptor reading(ends[0]);
  const Descriptor before(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  start({.worker = KOLUM_ATTACKING_WORKER});
  const read::Findings found = lookAt(folder_.write("writeToStandardError", ""), kRecognition);
  configure({});
  dup2(before.get(), STDERR_FILENO);
  EXPECT_EQ(found.recognition.format, "written");
  char text[1];
  EXPECT_EQ(::read(reading.get(), text, sizeof text), 0);
}

TEST_F(Isolation, LimitsMemoryOfWorkers) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers need what the sandbox forbids";
  start({.memory = std::size_t{64} << 20, .worker = KOLUM_ATTACKING_WORKER});
  EXPECT_EQ(lookAt(folder_.write("takeMemory", ""), kRecognition).recognition.format, "failed");
}

}  // namespace

}  // namespace kolum::isolation
