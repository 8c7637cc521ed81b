// kolum scan with workers that a file has taken over, with a tool that misbehaves, and where its
// caller leaves it few resources.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "support/dsd_builder.h"
#include "tool/kolum_run.h"
#include "tool/scanned_folder.h"

namespace fs = std::filesystem;

namespace kolum::test {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;
using testing::HasSubstr;

// ---- Workers

struct Takeover {
  const char* name;  // of what the worker does
  const char* code;  // of the failure; null: it failed, and the worker goes on
  const char* reason;
};

std::ostream& operator<<(std::ostream& out, const Takeover& takeover) {
  return out << takeover.name;
}

class ScanWithAttackingWorkers : public testing::TestWithParam<Takeover> {
 protected:
  ScanWithAttackingWorkers() {
    fs::create_directory(folder_.outside("isolation"));
    fs::copy(KOLUM_ATTACKING_WORKER, folder_.outside("isolation/kolum-worker"));
  }

  const ScannedFolder folder_;
  const std::string program_ = copyOfKolum(folder_.outside(""));
};

TEST_P(ScanWithAttackingWorkers, LosesOnlyThatFile) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers need what the sandbox forbids";
#endif
  const std::string name = std::string(GetParam().name) + ".jpg";
  folder_.write(name, "culprit");
  const ScanResult result = folder_.scan(
      {.arguments = {"--deadline", "1", "--memory", "64"}, .program = program_, .limit = 30s});
  folder_.expectGoodFiles();
  if (GetParam().code != nullptr) {
    folder_.expectFailure(name, GetParam().code, GetParam().reason);
    EXPECT_EQ(result.status, 1);
  } else {
    EXPECT_EQ(folder_.row(name).value("width", 0), 40);
    EXPECT_EQ(result.status, 0) << result.err;
  }
}

constexpr const char* kForbidden = "a forbidden system call";

INSTANTIATE_TEST_SUITE_P(
    Attack, ScanWithAttackingWorkers,
    testing::Values(Takeover{"openFile", nullptr, ""}, Takeover{"createFile", nullptr, ""},
                    Takeover{"forkProcess", nullptr, ""}, Takeover{"forkBomb", nullptr, ""},
                    Takeover{"killNeighbours", nullptr, ""}, Takeover{"takeMemory", nullptr, ""},
                    Takeover{"connectOut", "reader-crashed", kForbidden},
                    Takeover{"runProgram", "reader-crashed", kForbidden},
                    Takeover{"traceParent", "reader-crashed", kForbidden},
                    Takeover{"mountFileSystem", "reader-crashed", kForbidden},
                    Takeover{"crash", "reader-crashed", "Segmentation fault"},
                    Takeover{"exit", "reader-crashed", "ended"},
                    Takeover{"closeSocket", "reader-crashed", "ended"},
                    Takeover{"halfAnAnswer", "reader-crashed", "ended"},
                    Takeover{"garbage", "reader-crashed", "nonsense"},
                    Takeover{"anotherFile", "reader-crashed", "nonsense"},
                    Takeover{"hugeAnswer", "reader-crashed", "nonsense"},
                    Takeover{"endlessAnswer", "reader-crashed", "nonsense"},
                    Takeover{"stop", "took-too-long", "longer than 1 s"},
                    Takeover{"sleep", "took-too-long", "longer than 1 s"},
                    Takeover{"burnTime", "took-too-long", "longer than 1 s"},
                    Takeover{"trickle", "took-too-long", "longer than 1 s"}),
    [](const auto& test) { return test.param.name; });

std::string protectionsIn(const ScanResult& result) {
  const std::size_t begin = result.out.find("Protections");
  return begin == std::string::npos
             ? ""
             : result.out.substr(begin, result.out.find('\n', begin) - begin);
}

class StoppedScan : public ScanWithAttackingWorkers {};

TEST_P(StoppedScan, EndsAtOnceAndLeavesNothing) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers need what the sandbox forbids";
#endif
  const std::string protections = protectionsIn(folder_.scan({.program = program_}));
  const std::string name = std::string(GetParam().name) + ".jpg";
  folder_.write(name, "culprit");
  RunningScan scan = folder_.begin({.program = program_});
  // It reads the good files of the first scan no more.
  std::this_thread::sleep_for(1s);
  EXPECT_FALSE(scan.isDone());
  kill(scan.process(), SIGTERM);
  const ScanResult result = scan.finish(10s);
  EXPECT_LT(result.elapsed, 5s);
  EXPECT_THAT(result.out, HasSubstr("Stopped\n"));
  EXPECT_EQ(protectionsIn(result), protections);
  folder_.expectGoodFiles();
  // Nobody is under suspicion for that.
  EXPECT_EQ(folder_.row(name), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Attack, StoppedScan,
                         testing::Values(Takeover{"sleep", nullptr, ""},
                                         Takeover{"stop", nullptr, ""},
                                         Takeover{"burnTime", nullptr, ""}),
                         [](const auto& test) { return test.param.name; });

// The full gate has more, and runs nothing else at that time: a scan gives way to everything, so
// that its pace means little beside other tests.
std::optional<int> filesOfGate() {
  const char* files = std::getenv("KOLUM_POISON_FILES");
  return files != nullptr ? std::optional(std::atoi(files)) : std::nullopt;
}

class ScanAmongPoison : public ScanWithAttackingWorkers {};

// Each is tried twice, in workers of its own.
TEST_P(ScanAmongPoison, DescribesTheRest) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers need what the sandbox forbids";
#endif
  const int files = filesOfGate().value_or(300);
  constexpr double kLeastRate = 20;  // files a second
  for (int i = 0; i < files; ++i)
    folder_.write(GetParam().name + ("." + std::to_string(i)) + ".jpg", "culprit");
  const auto limit = std::chrono::seconds(90 + files / 20);
  const ScanResult result = folder_.scan({.program = program_, .limit = limit});
  EXPECT_EQ(result.status, 1);
  folder_.expectGoodFiles();
  const std::vector<json> rows = folder_.rows();
  EXPECT_EQ(rows.size(), static_cast<std::size_t>(files) + 2);
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(),
                          [](const json& row) { return row["state"] == "quarantined"; }),
            files);
  const auto seconds = std::chrono::duration<double>(result.elapsed).count();
  if (filesOfGate()) {
    EXPECT_GT(files / seconds, kLeastRate);
  }
  constexpr std::uintmax_t kMostBytesPerFile = 1024;
  constexpr std::uintmax_t kEmptyLibrary = std::uintmax_t{1} << 20;
  EXPECT_LT(fs::file_size(folder_.library()),
            kEmptyLibrary + kMostBytesPerFile * static_cast<std::uintmax_t>(files));
  std::printf("%.0f files/s, peak %zu MiB, %ju bytes/file\n", files / seconds, result.peak >> 20,
              fs::file_size(folder_.library()) / files);
}

INSTANTIATE_TEST_SUITE_P(Poison, ScanAmongPoison,
                         testing::Values(Takeover{"crash", "reader-crashed", ""},
                                         Takeover{"garbage", "reader-crashed", ""},
                                         Takeover{"exit", "reader-crashed", ""}),
                         [](const auto& test) { return test.param.name; });

// ---- The tool for DSD songs

// It does what the file's name says. Some of it uses up the 30 s that a tool has, all at once.
constexpr const char* kDsdTool = R"(#!/bin/sh
case "$2" in
  *hangs*) sleep 1000 ;;
  *waits*) sleep 1000 & wait ;;
  *stops*) kill -STOP $$ ;;
  *trickles*) while :; do echo x; sleep 0.2; done ;;
  *floods*) exec yes ;;
  *fails*) exit 3 ;;
  *leaves*) sleep 1000 >/dev/null 2>&1 & ;;
  *lies*) head -c 100000 /dev/urandom ;;
esac
)";

class ScanWithDsdTool : public testing::Test {
 protected:
  ScanWithDsdTool() {
    fs::create_directory(folder_.outside("isolation"));
    fs::create_symlink(KOLUM_REAL_WORKER, folder_.outside("isolation/kolum-worker"));
    folder_.write("../appliance/bin/dsf2flac", kDsdTool);
    fs::permissions(folder_.outside("appliance/bin/dsf2flac"), fs::perms::owner_all);
  }

  const ScannedFolder folder_;
  const std::string program_ = copyOfKolum(folder_.outside(""));
};

TEST_F(ScanWithDsdTool, DoesWithoutItsAnswer) {
  const char* const kDeeds[] = {"hangs",  "waits", "stops",  "trickles",
                                "floods", "fails", "leaves", "lies"};
  for (const std::string deed : kDeeds) {
    folder_.write(deed + ".dsf", dsfFile({}));
    folder_.write(deed + ".dff", dffFile({}));
  }
  const ScanResult result =
      folder_.scan({.arguments = {"--jobs", "18"}, .program = program_, .limit = 110s});
  EXPECT_EQ(result.status, 0) << result.err;
  folder_.expectGoodFiles();
  for (const std::string deed : kDeeds)
    for (const std::string& name : {deed + ".dsf", deed + ".dff"})
      EXPECT_EQ(folder_.row(name).value("sampleRate", 0), 2822400) << name;
}

TEST_F(ScanWithDsdTool, EndsItWhenItIsStopped) {
  folder_.scan({.program = program_});
  folder_.write("hangs.dsf", dsfFile({}));
  RunningScan scan = folder_.begin({.program = program_});
  std::this_thread::sleep_for(1s);
  EXPECT_FALSE(scan.isDone());
  kill(scan.process(), SIGTERM);
  EXPECT_LT(scan.finish(10s).elapsed, 5s);
  folder_.expectGoodFiles();
  EXPECT_EQ(folder_.row("hangs.dsf"), nullptr);
}

// ---- The caller's limits

// Only the standard descriptors are in use. The sanitizer's search for leaks would need a process
// of its own at the end.
ScanSettings limited(const std::string& limits) {
  const std::string script =
      "export ASAN_OPTIONS=\"${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0\"; "
      "for fd in {3..63}; do eval \"exec $fd>&-\"; done; " +
      limits + "; exec \"$@\"";
  return {.before = {"bash", "-c", script, "bash"}, .limit = 60s};
}

// Of files that were not described, or all of the scan.
void expectReason(const ScanResult& result) {
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_THAT(result.err + result.out, testing::AnyOf(HasSubstr("kolum: "), HasSubstr("no-reader"),
                                                      HasSubstr("too-many-open-files")));
}

// Limits do no harm beyond the scan that they are for.
void expectNextScanToBeComplete(const ScannedFolder& folder) {
  EXPECT_EQ(folder.scan().status, 0);
  folder.expectGoodFiles();
  EXPECT_EQ(folder.rows().size(), 22U);
}

class ScanWithFewDescriptors : public testing::TestWithParam<int> {};

TEST_P(ScanWithFewDescriptors, DescribesAllOrSaysWhy) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers use descriptors themselves";
#endif
  const ScannedFolder folder;
  for (int i = 0; i < 20; ++i) folder.write("m" + std::to_string(i) + ".jpg", goodPicture());
  const ScanResult result = folder.scan(limited("ulimit -n " + std::to_string(GetParam())));
  if (result.status == 0) {
    folder.expectGoodFiles();
    EXPECT_EQ(folder.rows().size(), 22U);
  } else {
    expectReason(result);
  }
  expectNextScanToBeComplete(folder);
}

INSTANTIATE_TEST_SUITE_P(Limits, ScanWithFewDescriptors,
                         testing::Values(8, 12, 14, 16, 18, 20, 32, 64));

class ScanWithLittleMemory : public testing::TestWithParam<int> {};

TEST_P(ScanWithLittleMemory, DescribesAllOrSaysWhy) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers need much more";
#endif
  const ScannedFolder folder;
  for (int i = 0; i < 20; ++i) folder.write("m" + std::to_string(i) + ".jpg", goodPicture());
  const ScanResult result = folder.scan(limited("ulimit -v " + std::to_string(GetParam() * 1024)));
  if (result.status == 0) {
    folder.expectGoodFiles();
  } else {
    EXPECT_THAT(result.err, testing::Not(testing::IsEmpty()));
  }
  expectNextScanToBeComplete(folder);
}

INSTANTIATE_TEST_SUITE_P(Mebibytes, ScanWithLittleMemory,
                         testing::Values(150, 200, 300, 500, 1000));

class ScanWithFewProcesses : public testing::TestWithParam<int> {};

TEST_P(ScanWithFewProcesses, DescribesAllOrSaysWhy) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a user without other processes";
  // Nobody else's.
  constexpr const char* kUser = "4054321";
  const ScannedFolder folder;
  for (int i = 0; i < 20; ++i) folder.write("m" + std::to_string(i) + ".jpg", goodPicture());
  mustRun({"chmod", "-R", "a+rwX", folder.outside("")});
  ScanSettings settings = limited("ulimit -u " + std::to_string(GetParam()));
  settings.before.insert(settings.before.begin(),
                         {"setpriv", "--reuid", kUser, "--regid", kUser, "--clear-groups"});
  const ScanResult result = folder.scan(settings);
  if (result.status == 127 || result.status == 126) GTEST_SKIP() << result.err;
  if (result.status == 0) {
    folder.expectGoodFiles();
  } else {
    expectReason(result);
  }
  expectNextScanToBeComplete(folder);
}

INSTANTIATE_TEST_SUITE_P(Limits, ScanWithFewProcesses, testing::Values(1, 2, 3, 5, 8, 20));

}  // namespace
}  // namespace kolum::test
