#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iniparser.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using kolum::test::contentOf;
using kolum::test::mustRun;
using kolum::test::runInAppliance;
using kolum::test::RunResult;
using kolum::test::sandboxUnavailable;
using kolum::test::TempDir;
using kolum::test::writeRootFile;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kSetcfg[] = KOLUM_SETCFG;

pid_t start(const std::vector<std::string>& arguments, const std::string& output) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  pid_t pid = -1;
  EXPECT_EQ(posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ), 0) << argv[0];
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

int exitStatus(pid_t pid) {
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The value that iniparser reads for "SECTION:KEY"; empty if the key or the whole file cannot be
// read.
std::optional<std::string> readBack(const std::string& path, const std::string& name) {
  const std::unique_ptr<dictionary, void (*)(dictionary*)> ini(iniparser_load(path.c_str()),
                                                               iniparser_freedict);
  if (!ini) return std::nullopt;
  const char* value = iniparser_getstring(ini.get(), name.c_str(), nullptr);
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::string keyOf(int writer, int i) {
  std::ostringstream key;
  key << 'k' << writer << '_' << i;
  return key.str();
}

class Setcfg : public testing::Test {
 protected:
  struct Outcome {
    int status = -1;
    std::string output;
  };

  Outcome run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), kSetcfg);
    const std::string output = outputs_.path("output");
    const int status = exitStatus(start(arguments, output));
    return {status, contentOf(output)};
  }

  Outcome set(const std::string& section, const std::string& key, const std::string& value) {
    return run({"-f", file_, section, key, value});
  }

  std::string textAfterSetting(const std::string& before, const std::string& section,
                               const std::string& key, const std::string& value) {
    dir_.write("a.conf", before);
    const Outcome outcome = set(section, key, value);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_EQ(readBack(file_, section + ":" + key), value);
    return contentOf(file_);
  }

  // For use in the sandbox: mounts a small volume with CONTENT in the file.
  void mountVolume(const std::string& content) {
    fs::create_directories("/volume");
    ASSERT_EQ(mount("tmpfs", "/volume", "tmpfs", 0, "size=64k"), 0);
    file_ = "/volume/a.conf";
    writeRootFile(file_, content);
    fs::create_directories(outputs_.folder());
  }

  TempDir dir_;
  TempDir outputs_;
  std::string file_ = dir_.path("a.conf");
};

TEST_F(Setcfg, ChangesOneValueAndKeepsEverythingElse) {
  const struct {
    const char* name;
    const char* before;
    const char* after;
  } kRows[] = {
      {"only key", "[S]\nk=1\n", "[S]\nk=new\n"},
      {"spacing", "[S]\n  k\t=   1\n", "[S]\n  k\t=   new\n"},
      {"comments", "# top\n[S] \n; a\nk = 1 ; why\n# end\n",
       "# top\n[S] \n; a\nk = new ; why\n# end\n"},
      {"comment that touches", "[S]\nk=1;why\n", "[S]\nk=new;why\n"},
      {"line ends", "# top\r\n[S]\r\nk = 1\r\nm = 2\r\n", "# top\r\n[S]\r\nk = new\r\nm = 2\r\n"},
      {"no last line end", "[S]\nk = 1", "[S]\nk = new"},
      {"quotes", "[S]\nk = \"1 ; 2\" ; why\n", "[S]\nk = \"new\" ; why\n"},
      {"single quotes", "[S]\nk = '1'\n", "[S]\nk = 'new'\n"},
      {"empty value", "[S]\nk =\nm = 2\n", "[S]\nk = new\nm = 2\n"},
      {"empty value, tight", "[S]\nk=\n", "[S]\nk=new\n"},
      {"empty quotes", "[S]\nk = \"\"\n", "[S]\nk = \"new\"\n"},
      {"value with =", "[S]\nk = a=b\n", "[S]\nk = new\n"},
      {"joined lines", "[S]\nk = a\\\n  b\nm = 2\n", "[S]\nk = new\nm = 2\n"},
      {"same key elsewhere", "[R]\nk=1\n[S]\nk=1\n[T]\nk=1\n", "[R]\nk=1\n[S]\nk=new\n[T]\nk=1\n"},
      {"last of several", "[S]\nk=1\nk=2\n", "[S]\nk=1\nk=new\n"},
      {"section in two pieces", "[S]\nk=1\n[T]\nx=1\n[S]\nk=2\n",
       "[S]\nk=1\n[T]\nx=1\n[S]\nk=new\n"},
      {"commented out", "[S]\n#k=1\nk=2\n", "[S]\n#k=1\nk=new\n"},
      {"other case", "[s]\nK = 1\n", "[s]\nK = new\n"},
      {"bytes", "# \xff\xfe\n[S]\nk=\xc3\xa4\nm=\xff\n", "# \xff\xfe\n[S]\nk=new\nm=\xff\n"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(textAfterSetting(row.before, "S", "k", "new"), row.after);
  }
}

TEST_F(Setcfg, FindsSectionAndKeyInAnyCase) {
  EXPECT_EQ(textAfterSetting("[Thumbnail]\nMin_Width = 50\n", "THUMBNAIL", "MIN_WIDTH", "400"),
            "[Thumbnail]\nMin_Width = 400\n");
}

TEST_F(Setcfg, AddsMissingKeyAtTheEndOfItsSection) {
  const struct {
    const char* name;
    const char* before;
    const char* after;
  } kRows[] = {
      {"last section", "[S]\na = 1\n", "[S]\na = 1\nk = new\n"},
      {"spacing of the neighbour", "[S]\n\ta=1\n", "[S]\n\ta=1\n\tk=new\n"},
      {"before what leads to the next section", "[S]\na=1\n\n# about T\n[T]\nb=1\n",
       "[S]\na=1\nk=new\n\n# about T\n[T]\nb=1\n"},
      {"empty section", "[S]\n\n[T]\n", "[S]\nk = new\n\n[T]\n"},
      {"no last line end", "[S]\na = 1", "[S]\na = 1\nk = new\n"},
      {"line ends", "[S]\r\na = 1\r\n", "[S]\r\na = 1\r\nk = new\r\n"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(textAfterSetting(row.before, "S", "k", "new"), row.after);
  }
}

TEST_F(Setcfg, AddsMissingSectionAtTheEnd) {
  const struct {
    const char* name;
    const char* before;
    const char* after;
  } kRows[] = {
      {"empty file", "", "[S]\nk = new\n"},
      {"other section", "[T]\na=1\n", "[T]\na=1\n\n[S]\nk = new\n"},
      {"no last line end", "[T]\na=1", "[T]\na=1\n\n[S]\nk = new\n"},
      {"line ends", "[T]\r\na=1\r\n", "[T]\r\na=1\r\n\r\n[S]\r\nk = new\r\n"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(textAfterSetting(row.before, "S", "k", "new"), row.after);
  }
}

TEST_F(Setcfg, CreatesMissingFileWithUsualMode) {
  const mode_t before = umask(027);
  const Outcome outcome = set("S", "k", "new");
  umask(before);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(contentOf(file_), "[S]\nk = new\n");
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0640));
}

TEST_F(Setcfg, WritesValuesThatReadBackUnchanged) {
  const char* kValues[] = {
      "",        " ",        " leading",     "trailing ",   "two words", "a;b",       "a#b",
      ";",       "#",        "\"quoted\"",   "'quoted'",    "it's",      "say \"x\"", "a=b",
      "=",       "[S]",      "/a:/b:",       "back\\slash", "ends in\\", "-1",        "--help",
      "\ttab\t", "\xc3\xa4", "\xff\xfe\x80", "a;b's",       "a;\"b\"",   "$HOME `x`", "%s%n",
      "ends \\", "a\r",      "\x01\x02\x7f",
  };
  for (const char* value : kValues) {
    SCOPED_TRACE(value);
    textAfterSetting("[S]\nbefore = 1\nk = 1 ; why\nafter = 2\n", "S", "k", value);
    EXPECT_EQ(readBack(file_, "S:before"), "1");
    EXPECT_EQ(readBack(file_, "S:after"), "2");
    textAfterSetting("[T]\na = 1\n", "S", "k", value);
  }
}

TEST_F(Setcfg, WritesAnyValueReadablyOrRejectsIt) {
  const std::string before = "[S]\na=1\nk = 1 ; why\n[T]\nb=2\n";
  const std::string alphabet = "ab \\\"';#=[]:\t\r\xff";
  std::minstd_rand random(7);
  int refused = 0;
  for (int i = 0; i < 300; ++i) {
    std::string value(random() % 7, ' ');
    for (char& c : value) c = alphabet[random() % alphabet.size()];
    SCOPED_TRACE(testing::PrintToString(value));
    dir_.write("a.conf", before);
    const Outcome outcome = set("S", "k", value);
    if (outcome.status == 0) {
      EXPECT_EQ(readBack(file_, "S:k"), value);
    } else {
      ++refused;
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(contentOf(file_), before);
    }
    EXPECT_EQ(readBack(file_, "S:a"), "1");
    EXPECT_EQ(readBack(file_, "T:b"), "2");
  }
  EXPECT_LT(refused, 60);
}

TEST_F(Setcfg, RejectsWhatNoIniFileCanHold) {
  const struct {
    const char* name;
    std::string section;
    std::string key;
    std::string value;
    int status;
  } kRows[] = {
      {"empty section", "", "k", "v", 2},
      {"empty key", "S", "", "v", 2},
      {"line break in value", "S", "k", "a\nb", 2},
      {"line break in key", "S", "k\n", "v", 2},
      {"line break in section", "S]\n[T", "k", "v", 2},
      {"= in key", "S", "a=b", "v", 1},
      {"comment as key", "S", "#k", "v", 1},
      {"blank around key", "S", " k", "v", 1},
      {"blank around section", "S ", "k", "v", 1},
      {"longer than a line", "S", "k", std::string(2000, 'x'), 1},
  };
  const std::string before = "[S]\na = 1\n";
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    dir_.write("a.conf", before);
    const Outcome outcome = set(row.section, row.key, row.value);
    EXPECT_EQ(outcome.status, row.status);
    EXPECT_THAT(outcome.output, StartsWith("setcfg: "));
    EXPECT_EQ(contentOf(file_), before);
  }
}

TEST_F(Setcfg, KeepsModeAndOwner) {
  dir_.write("a.conf", "[S]\nk=1\n");
  ASSERT_EQ(chmod(file_.c_str(), 0604), 0);
  const bool isRoot = geteuid() == 0;
  if (isRoot) {
    ASSERT_EQ(chown(file_.c_str(), 1234, 1235), 0);
  }
  ASSERT_EQ(set("S", "k", "2").status, 0);
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0604U);
  if (!isRoot) GTEST_SKIP() << "the owner needs root";
  EXPECT_EQ(status.st_uid, 1234U);
  EXPECT_EQ(status.st_gid, 1235U);
}

TEST_F(Setcfg, LeavesFileThatAlreadyHasTheValue) {
  dir_.write("a.conf", "[S]\nk = \"1\"\n");
  struct stat before {};
  struct stat after {};
  ASSERT_EQ(stat(file_.c_str(), &before), 0);
  ASSERT_EQ(set("S", "k", "1").status, 0);
  ASSERT_EQ(stat(file_.c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Setcfg, LeavesNothingElseInTheFolder) {
  dir_.write("a.conf", "[S]\nk=1\n");
  ASSERT_EQ(set("S", "k", "2").status, 0);
  ASSERT_EQ(set("S", "=", "2").status, 1);
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir_.folder())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, testing::ElementsAre("a.conf"));
}

TEST_F(Setcfg, KeepsLinkAndChangesItsTarget) {
  dir_.write("real/r.conf", "[S]\nk=1\n");
  fs::create_symlink("real/r.conf", file_);
  ASSERT_EQ(set("S", "k", "2").status, 0);
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_EQ(contentOf(dir_.path("real/r.conf")), "[S]\nk=2\n");

  fs::create_symlink("real/new.conf", dir_.path("dangling"));
  ASSERT_EQ(run({"-f", dir_.path("dangling"), "S", "k", "v"}).status, 0);
  EXPECT_TRUE(fs::is_symlink(dir_.path("dangling")));
  EXPECT_EQ(contentOf(dir_.path("real/new.conf")), "[S]\nk = v\n");

  fs::create_symlink("loop", dir_.path("loop"));
  EXPECT_EQ(run({"-f", dir_.path("loop"), "S", "k", "v"}).status, 1);
}

TEST_F(Setcfg, AcceptsFileInWorkingFolderWithoutPath) {
  const RunResult result =
      kolum::test::run({kSetcfg, "-f", "a.conf", "S", "k", "v"}, {.folder = dir_.folder()});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(contentOf(file_), "[S]\nk = v\n");
}

TEST_F(Setcfg, LeavesNonIniFileUnchanged) {
  const struct {
    const char* name;
    std::string content;
    const char* reason;
  } kRows[] = {
      {"no key", "[S]\njunk\n", "not a valid ini file"},
      {"no name", "[S]\n=1\n", "not a valid ini file"},
      {"line without end", "[S]\nk=" + std::string(5000, 'x') + "\n", "not a valid ini file"},
      {"NUL bytes", std::string("[S]\nk=1\0\0\n", 10), "not a valid ini file"},
      {"too large", std::string((16 << 20) + 1, '\n'), "too large"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    dir_.write("a.conf", row.content);
    const Outcome outcome = set("S", "k", "v");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "setcfg: " + file_ + ": " + row.reason + "\n");
    EXPECT_TRUE(contentOf(file_) == row.content) << "changed";
  }
}

TEST_F(Setcfg, RejectsNonFilesWithoutBlocking) {
  const std::string fifo = dir_.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(run({"-f", fifo, "S", "k", "v"}).output, "setcfg: " + fifo + ": not a regular file\n");
  EXPECT_EQ(run({"-f", dir_.folder() + ".", "S", "k", "v"}).status, 1);
  EXPECT_EQ(run({"-f", dir_.folder(), "S", "k", "v"}).status, 1);
  EXPECT_EQ(run({"-f", dir_.path("missing/a.conf"), "S", "k", "v"}).status, 1);
}

TEST_F(Setcfg, LosesNothingInParallelRuns) {
  constexpr int kWriters = 8;
  constexpr int kKeys = 6;
  dir_.write("a.conf", "[S]\n" + std::string(4000, '\n') + "last = here\n");
  std::atomic<bool> done{false};
  std::atomic<int> torn{0};
  std::thread reader([&] {
    while (!done) torn += readBack(file_, "S:last") == "here" ? 0 : 1;
  });
  std::vector<std::thread> writers;
  std::atomic<int> failed{0};
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([&, writer] {
      for (int i = 0; i < kKeys; ++i) {
        const std::string key = keyOf(writer, i);
        const pid_t pid = start({kSetcfg, "-f", file_, "S", key, key + "v"},
                                outputs_.path(std::to_string(writer)));
        failed += exitStatus(pid) == 0 ? 0 : 1;
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  done = true;
  reader.join();

  EXPECT_EQ(failed, 0);
  EXPECT_EQ(torn, 0);
  for (int writer = 0; writer < kWriters; ++writer) {
    for (int i = 0; i < kKeys; ++i) {
      const std::string key = keyOf(writer, i);
      EXPECT_EQ(readBack(file_, "S:" + key), key + "v");
    }
  }
}

TEST_F(Setcfg, LeavesOldOrNewFileWhenKilled) {
  const std::string head = "[S]\n" + std::string(200000, '\n') + "k = ";
  dir_.write("a.conf", head + "0\n");
  for (int i = 1; i <= 40; ++i) {
    SCOPED_TRACE(i);
    const std::string before = contentOf(file_);
    const std::string after = head + std::to_string(i) + "\n";
    const pid_t pid =
        start({kSetcfg, "-f", file_, "S", "k", std::to_string(i)}, outputs_.path("output"));
    std::this_thread::sleep_for(std::chrono::microseconds(i * 250));
    kill(pid, SIGKILL);
    exitStatus(pid);
    const std::string now = contentOf(file_);
    EXPECT_TRUE(now == before || now == after) << "partly written";
  }
  const Outcome outcome = set("S", "k", "whole");
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_TRUE(contentOf(file_) == head + "whole\n");
  EXPECT_FALSE(fs::exists(dir_.path(".setcfg.new"))) << "left behind by a killed run";
}

class FolderLock {
 public:
  explicit FolderLock(const std::string& folder) : fd_(open(folder.c_str(), O_RDONLY | O_CLOEXEC)) {
    EXPECT_EQ(flock(fd_, LOCK_EX), 0);
  }
  ~FolderLock() { close(fd_); }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int fd_;
};

TEST_F(Setcfg, WaitsWhileFolderIsLocked) {
  pid_t pid = -1;
  {
    const FolderLock lock(dir_.folder());
    pid = start({kSetcfg, "-f", file_, "S", "k", "v"}, outputs_.path("output"));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_FALSE(fs::exists(file_));
  }
  EXPECT_EQ(exitStatus(pid), 0);
  EXPECT_EQ(contentOf(file_), "[S]\nk = v\n");
}

TEST_F(Setcfg, GivesUpIfFolderStaysLocked) {
  const FolderLock lock(dir_.folder());
  const Outcome outcome = set("S", "k", "v");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("stays locked"));
}

TEST_F(Setcfg, KeepsOldFileOnFullDisk) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([this] {
    const std::string before = "[S]\nk = 1\n" + std::string(20000, '\n');
    mountVolume(before);
    std::ofstream("/volume/rest") << std::string(1 << 20, 'x');  // fills the volume
    const Outcome outcome = set("S", "k", "2");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "setcfg: /volume/a.conf: cannot write: No space left on device\n");
    EXPECT_TRUE(contentOf(file_) == before);
    EXPECT_FALSE(fs::exists("/volume/.setcfg.new"));
    fs::remove("/volume/rest");
    EXPECT_EQ(set("S", "k", "2").status, 0);
    EXPECT_EQ(umount("/volume"), 0);
  });
}

TEST_F(Setcfg, KeepsOldFileInReadOnlyFolder) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([this] {
    mountVolume("[S]\nk = 1\n");
    ASSERT_EQ(mount("none", "/volume", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    const Outcome outcome = set("S", "k", "2");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output,
              "setcfg: /volume/a.conf: cannot write to the folder: Read-only file system\n");
    EXPECT_EQ(contentOf(file_), "[S]\nk = 1\n");
    EXPECT_EQ(umount("/volume"), 0);
  });
}

TEST_F(Setcfg, ReturnsTwoForWrongUsage) {
  const std::vector<std::string> kRows[] = {
      {},
      {"-f"},
      {"-f", ""},
      {"-f", file_},
      {"-f", file_, "S"},
      {"-f", file_, "S", "k"},
      {"-f", file_, "S", "k", "v", "more"},
      {"S", "k", "v"},
      {"-x", "-f", file_, "S", "k", "v"},
      {"-f", "", "S", "k", "v"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row));
    const Outcome outcome = run(row);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.output, HasSubstr("setcfg"));
    EXPECT_FALSE(fs::exists(file_));
  }
}

TEST_F(Setcfg, PrintsUsageInHelp) {
  for (const char* option : {"-h", "--help"}) {
    const Outcome outcome = run({option});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith("Usage: setcfg -f FILE SECTION KEY VALUE\n"));
  }
}

TEST_F(Setcfg, IsInstalledWhereTheLibraryCallsIt) {
  const std::string staging = outputs_.path("staging");
  mustRun({"cmake", "--install", KOLUM_BINARY_DIR, "--component", "appliance"},
          {.environment = {{"DESTDIR", staging}}});
  ASSERT_EQ(access((staging + "/sbin/setcfg").c_str(), X_OK), 0);
}

}  // namespace
