#include "support/appliance_sandbox.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/temp_dir.h"
#include "support_test/failing_body_run.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

using ::testing::HasSubstr;

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

// The entry of FOLDER that leads to the checkout, if that is below FOLDER.
std::vector<std::string> wayToCheckout(const fs::path& folder) {
  const fs::path way = fs::path(KOLUM_SOURCE_FOLDER).lexically_relative(folder);
  if (way.empty() || *way.begin() == "..") return {};
  return {*way.begin()};
}

class ApplianceSandbox : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  }
};

TEST_F(ApplianceSandbox, HoldsFilesWrittenAtFixedPaths) {
  runInAppliance([] {
    struct Row {
      const char* path;
      unsigned mode;
    };
    for (const Row& row : {Row{"/etc/config/kolum/test.conf", 0644}, Row{"/sbin/kolum-test", 0755},
                           Row{"/usr/local/kolum/bin/test", 0700}, Row{"/kolum-test/file", 0600},
                           Row{"/etc/hostname", 0600}, Row{"/tmp/.kolum-test.xxx", 0644}}) {
      SCOPED_TRACE(row.path);
      writeRootFile(row.path, "content of the test", row.mode);
      EXPECT_EQ(contentOf(row.path), "content of the test");
      struct stat status = {};
      ASSERT_EQ(stat(row.path, &status), 0);
      EXPECT_EQ(status.st_mode & 07777U, row.mode);
    }
  });
}

TEST_F(ApplianceSandbox, LeavesTheMachineUntouched) {
  const std::string hosts = contentOf("/etc/hostname");
  const std::vector<std::string> root = namesIn("/");
  const std::vector<std::string> etc = namesIn("/etc");
  const std::string passwords = contentOf("/etc/passwd");
  runInAppliance([] {
    writeRootFile("/etc/config/kolum-test.conf", "x");
    writeRootFile("/etc/hostname", "another");
    writeRootFile("/kolum-test/file", "x");
    writeRootFile("/tmp/kolum-test-file", "x");
    writeRootFile("/dev/shm/kolum-test-file", "x");
    fs::remove("/etc/passwd");
    EXPECT_FALSE(fs::exists("/etc/passwd"));
  });
  EXPECT_EQ(contentOf("/etc/hostname"), hosts);
  EXPECT_EQ(contentOf("/etc/passwd"), passwords);
  EXPECT_EQ(namesIn("/"), root);
  EXPECT_EQ(namesIn("/etc"), etc);
  EXPECT_FALSE(fs::exists("/tmp/kolum-test-file"));
  EXPECT_FALSE(fs::exists("/dev/shm/kolum-test-file"));
}

TEST_F(ApplianceSandbox, StartsWithEmptyTemporaryFolders) {
  const TempDir outside;
  runInAppliance([&] {
    EXPECT_EQ(namesIn("/tmp"), wayToCheckout("/tmp"));
    EXPECT_FALSE(fs::exists(outside.folder()));
    if (fs::exists("/dev/shm")) {
      EXPECT_EQ(namesIn("/dev/shm"), wayToCheckout("/dev/shm"));
    }
    const TempDir inside;
    EXPECT_EQ(contentOf(inside.write("file", "x")), "x");
  });
}

TEST_F(ApplianceSandbox, KeepsDevicesProcessesAndProgramsUsable) {
  runInAppliance([] {
    EXPECT_TRUE(std::ofstream("/dev/null") << "x" << std::flush);
    EXPECT_EQ(contentOf("/proc/self/comm").empty(), false);
    EXPECT_TRUE(fs::exists("/sys/kernel"));
    EXPECT_EQ(mustRun({"sh", "-c", "echo word | cat"}), "word\n");
    const int memory = shm_open("/kolum-test", O_CREAT | O_RDWR, 0600);
    EXPECT_GE(memory, 0);
    close(memory);
  });
}

TEST_F(ApplianceSandbox, SeesTheBuildTreeAndWritesToIt) {
  const fs::path folder = fs::path(KOLUM_FAILING_BODIES).parent_path();
  const std::string file = folder / ("written-by-" + std::to_string(getpid()));
  runInAppliance([&] {
    EXPECT_TRUE(fs::exists(KOLUM_FAILING_BODIES));
    writeRootFile(file, "x");
  });
  EXPECT_EQ(contentOf(file), "x");
  fs::remove(file);
}

TEST_F(ApplianceSandbox, SeesTheSourcesAndLeavesThemUntouched) {
  const std::string file = KOLUM_SOURCE_FOLDER "/written-by-" + std::to_string(getpid());
  runInAppliance([&] {
    EXPECT_FALSE(contentOf(KOLUM_SOURCE_FOLDER "/README.md").empty());
    std::ofstream(file) << "x";
  });
  EXPECT_FALSE(fs::exists(file));
}

// A mount below "/", as machines have them for /home or /usr; a sandbox plays the machine.
TEST_F(ApplianceSandbox, CoversMountsBelowTheRoot) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  runInAppliance([] {
    fs::create_directories("/kolum test");
    mustRun({"mount", "-t", "tmpfs", "tmpfs", "/kolum test"});
    writeRootFile("/kolum test/file", "outside");
    runInAppliance([] {
      EXPECT_EQ(contentOf("/kolum test/file"), "outside");
      // This writes to an overlay or fails, but never reaches the mount itself.
      std::ofstream("/kolum test/file") << "inside";
    });
    EXPECT_EQ(contentOf("/kolum test/file"), "outside");
    mustRun({"umount", "/kolum test"});
  });
}

TEST_F(ApplianceSandbox, KeepsConcurrentSandboxesApart) {
  runInChildren(4, [](int i) {
    runInAppliance([i] {
      const std::string own = std::to_string(i);
      writeRootFile("/etc/kolum-test.conf", own);
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      EXPECT_EQ(contentOf("/etc/kolum-test.conf"), own);
    });
  });
}

TEST_F(ApplianceSandbox, ReportsEveryWayToFail) {
  expectFailure("Sandbox.FailedExpectation", "the body's message");
  expectFailure("Sandbox.FailedAssertion", "the body's message");
  expectFailure("Sandbox.Exception", "the body's message");
  expectFailure("Sandbox.Kill", "killed by signal 9");
  expectFailure("Sandbox.Exit", "exited with status 0 before the end");
  expectFailure("Sandbox.UnwritableFile", "exception: ");
}

TEST_F(ApplianceSandbox, SkipsTheTestWhenTheBodySkips) {
  expectSkipped("Sandbox.Skip");
}

TEST_F(ApplianceSandbox, ReportsSanitizerFindings) {
  if (!kHasAddressSanitizer) GTEST_SKIP() << "built without the address sanitizer";
  expectSanitizerReport("Sandbox.Overflow");
  expectSanitizerReport("Sandbox.Leak");
}

}  // namespace

}  // namespace kolum::test
