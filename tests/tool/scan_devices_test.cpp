// kolum scan of a file system that hangs, trickles, or changes its files while they are read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>

#include "support/appliance_sandbox.h"
#include "support/media_factory.h"
#include "support/misbehaving_folder.h"
#include "tool/kolum_run.h"
#include "tool/scanned_folder.h"

namespace fs = std::filesystem;

namespace kolum::test {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;
using testing::HasSubstr;

std::string video() {
  return media(
      "long.mkv",
      "-f lavfi -i testsrc=size=64x48:rate=25:duration=20 -c:v mjpeg -cluster_time_limit 500");
}

// The scanned folder itself, with a.jpg, m.mkv and z.jpg.
class ScanOfDevice : public testing::Test {
 protected:
  void SetUp() override {
#ifdef KOLUM_SANITIZED
    GTEST_SKIP() << "workers with sanitizers end by themselves in this sandbox";
#endif
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
    if (const auto why = MisbehavingFolder::unavailable()) GTEST_SKIP() << *why;
    video();
  }

  static void withFile(const std::string& mischief,
                       const std::function<void(const ScannedFolder&)>& body) {
    runInAppliance([&] {
      const ScannedFolder folder;
      const MisbehavingFolder mounted(folder.folder(), "m.mkv", mischief, video(),
                                      folder.path("a.jpg"));
      body(folder);
    });
  }
};

TEST_F(ScanOfDevice, GivesUpFilesThatHangWhenRead) {
  withFile("hangInRead", [](const ScannedFolder& folder) {
    const ScanResult result = folder.scan({.arguments = {"--deadline", "1"}, .limit = 30s});
    folder.expectGoodFiles();
    folder.expectFailure("m.mkv", "took-too-long", "longer than 1 s");
    EXPECT_EQ(folder.row("m.mkv")["state"], "quarantined");
    EXPECT_EQ(result.status, 1);
  });
}

TEST_F(ScanOfDevice, ReadsFilesThatCome) {
  withFile("trickle", [](const ScannedFolder& folder) {
    folder.scan({.arguments = {"--deadline", "10"}, .limit = 60s});
    folder.expectGoodFiles();
    const json row = folder.row("m.mkv");
    ASSERT_TRUE(row.is_object());
    if (row.contains("error")) {
      folder.expectFailure("m.mkv", "took-too-long");
    }
  });
}

TEST_F(ScanOfDevice, SaysThatReadingFails) {
  withFile("fail", [](const ScannedFolder& folder) {
    folder.scan();
    folder.expectGoodFiles();
    folder.expectFailure("m.mkv", "system-error", "Input/output error");
  });
}

class ScanOfChangingDevice : public ScanOfDevice,
                             public testing::WithParamInterface<const char*> {};

TEST_P(ScanOfChangingDevice, DescribesTheRest) {
  withFile(GetParam(), [](const ScannedFolder& folder) {
    folder.scan({.arguments = {"--deadline", "5"}, .limit = 60s});
    folder.expectGoodFiles();
    const json row = folder.row("m.mkv");
    ASSERT_TRUE(row.is_object());
    if (row.contains("error"))
      EXPECT_THAT(row["error"]["code"], testing::AnyOf("damaged", "not-media", "not-found")) << row;
    else
      EXPECT_EQ(row.value("width", 0), 64) << row;
  });
}

INSTANTIATE_TEST_SUITE_P(Files, ScanOfChangingDevice, testing::Values("shrink", "grow", "vanish"),
                         [](const auto& test) { return std::string(test.param); });

// The kernel holds the process as long as the file system does not answer, but neither its results
// nor its library.
TEST_F(ScanOfDevice, GivesUpFilesThatHangWhenOpened) {
  runInAppliance([] {
    const ScannedFolder folder;
    std::optional<MisbehavingFolder> mounted;
    mounted.emplace(folder.folder(), "m.mkv", "hangInOpen", video(), folder.path("a.jpg"));
    RunningScan scan = folder.begin({.arguments = {"--deadline", "1"}});
    const ScanResult result = scan.finish(240s);
    folder.expectGoodFiles();
    folder.expectFailure("m.mkv", "hung", "did not end within 35 s");
    EXPECT_EQ(folder.row("m.mkv")["state"], "quarantined");
    EXPECT_TRUE(result.isHeld);
    const std::string other = folder.outside("other");
    fs::create_directory(other);
    fs::copy(folder.path("a.jpg"), other + "/other.jpg");
    EXPECT_EQ(folder.scan({.root = other}).status, 0);
    EXPECT_EQ(folder.row("other.jpg").value("width", 0), 40);
    mounted.reset();
  });
}

}  // namespace
}  // namespace kolum::test
