#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "support/appliance_sandbox.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

std::map<std::string, json> findings(const RunOptions& options = {}) {
  std::map<std::string, json> byName;
  for (const json& line : kolum({"doctor", "--json"}, options).json())
    byName[line.at("name").get<std::string>()] = line;
  return byName;
}

TEST(Doctor, TellsTheVersionsOfTheLibrariesInUse) {
  const auto found = findings();
  for (const char* name : {"libkolum", "libavformat", "libavcodec", "libavutil", "libtag",
                           "libiniparser", "libpugixml"}) {
    ASSERT_TRUE(found.contains(name)) << name;
    EXPECT_EQ(found.at(name)["kind"], "library");
    EXPECT_EQ(found.at(name)["isThere"], true);
    EXPECT_THAT(found.at(name)["state"].get<std::string>(), testing::MatchesRegex("[0-9.]+"));
  }
}

TEST(Doctor, FindsTheToolsOfTheBuildTree) {
  const auto found = findings();
  for (const char* name : {"ffmpeg", "dsf2flac", "osm_info"}) {
    ASSERT_EQ(found.at(name)["isThere"], true) << name;
    EXPECT_TRUE(std::filesystem::exists(found.at(name)["state"].get<std::string>())) << name;
  }
}

TEST(Doctor, TellsWhatIsMissingForWhatAndEndsWithStatusOne) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    const Outcome before = kolum({"doctor"});
    EXPECT_EQ(before.status, 1);
    EXPECT_EQ(before.err, "kolum: something is missing\n");
    EXPECT_THAT(before.out,
                testing::ContainsRegex("program +setcfg +changing the configuration +missing\n"));
    EXPECT_FALSE(findings().at("setcfg").contains("state"));
    writeRootFile("/sbin/setcfg", "#!/bin/sh\n", 0755);
    EXPECT_EQ(findings().at("setcfg")["state"], "/sbin/setcfg");
    writeRootFile("/sbin/setcfg", "no program", 0644);
    EXPECT_EQ(findings().at("setcfg")["isThere"], false);
  });
}

TEST(Doctor, KnowsTheDataVolume) {
  EXPECT_EQ(findings().at("data volume")["isThere"], false);
  const auto found = findings({.environment = {{"KO_DATA_DIR", "/nonexistent/volume"}}});
  EXPECT_EQ(found.at("data volume")["state"], "/nonexistent/volume");
  EXPECT_EQ(found.at("/nonexistent/volume/.system/lumserver.conf")["isThere"], false);
}

}  // namespace
}  // namespace kolum::test
