#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "read/ffmpeg/version.h"
#include "support/appliance_sandbox.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

std::map<std::string, json> findings(const RunOptions& options = {}) {
  std::map<std::string, json> byName;
  for (const json& line : kolum({"doctor", "--json"}, options).json())
    if (line["kind"] != "licence") byName[line.at("name").get<std::string>()] = line;
  return byName;
}

std::map<std::string, json> licences() {
  std::map<std::string, json> byPart;
  for (const json& line : kolum({"doctor", "--json"}).json())
    if (line["kind"] == "licence") byPart[line.at("part").get<std::string>()] = line;
  return byPart;
}

// Leaves a machine on which kolum is installed, without anything that only an appliance has.
void removeApplianceFiles() {
  for (const char* path : {"/sbin/setcfg", "/usr/local/sbin/convert",
                           "/usr/local/medialibrary/bin/osm_info", "/etc/config/medialibrary.conf"})
    std::filesystem::remove(path);
}

TEST(Doctor, ReportsTheVersionsOfLinkedLibraries) {
  const auto found = findings();
  for (const char* name : {"libkolum", "libavformat", "libavcodec", "libavutil", "libtag",
                           "libiniparser", "libpugixml"}) {
    ASSERT_TRUE(found.contains(name)) << name;
    EXPECT_EQ(found.at(name)["kind"], "library");
    EXPECT_EQ(found.at(name)["isThere"], true);
    EXPECT_THAT(found.at(name)["state"].get<std::string>(), testing::MatchesRegex("[0-9.]+"));
  }
}

TEST(Doctor, ShowsTheProtectionsOfWorkers) {
  const auto found = findings();
  for (const char* name :
       {"Landlock", "seccomp", "no privileges", "no new privileges", "limits", "not dumpable"}) {
    ASSERT_TRUE(found.contains(name)) << name;
    EXPECT_EQ(found.at(name)["group"], "isolation") << name;
  }
  EXPECT_EQ(found.at("no new privileges")["state"], "active");
}

TEST(Doctor, SaysWhichLicencesAreThere) {
  const auto found = licences();
  for (const char* name : {"libkolum", "kolum-worker", "Exiv2 (libexiv2)", "TagLib (libtag)"}) {
    ASSERT_TRUE(found.contains(name)) << name;
    EXPECT_EQ(found.at(name)["group"], "licences") << name;
    EXPECT_EQ(found.at(name)["isThere"], true) << name;
  }
  EXPECT_EQ(found.at("Exiv2 (libexiv2)")["licence"], "GPL-2.0-or-later");
  EXPECT_EQ(found.at("Exiv2 (libexiv2)")["linkedBy"], json({"kolum-worker"}));
  EXPECT_EQ(found.at("FFmpeg (libavformat, libavcodec, libavutil)")["licence"],
            ffmpeg::licenceInUse());
  EXPECT_THAT(kolum({"doctor"}).out, HasSubstr("\n\nLicences\n"));
}

TEST(Doctor, MissesTheWorkersPartsWithoutAWorker) {
  const TempDir folder;
  const std::string program = copyOfKolum(folder.folder(), {"ffmpeg", "dsf2flac", "setcfg"});
  const Outcome run = runKolum(program, {"doctor"});
  EXPECT_THAT(run.out, testing::ContainsRegex("Exiv2 .* GPL-2.0-or-later .not here.\n"));
  EXPECT_THAT(run.out, testing::ContainsRegex("osm_info +GPL-3.0-only .not here.\n"));
  EXPECT_THAT(run.out, testing::ContainsRegex("dsf2flac +MIT\n"));
}

TEST(Doctor, FindsTheToolsOfTheBuildTree) {
  const auto found = findings();
  for (const char* name : {"ffmpeg or convert", "dsf2flac", "osm_info", "setcfg"}) {
    ASSERT_EQ(found.at(name)["isThere"], true) << name;
    EXPECT_EQ(found.at(name)["group"], "here") << name;
    EXPECT_TRUE(std::filesystem::exists(found.at(name)["state"].get<std::string>())) << name;
  }
}

TEST(Doctor, SucceedsIfOnlyApplianceItemsAreMissing) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    removeApplianceFiles();
    const Outcome run = kolum({"doctor"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, testing::StartsWith("Needed on every machine\n"));
    EXPECT_THAT(run.out, HasSubstr("\n\nNeeded on an appliance, and for disc images\n"));
    EXPECT_THAT(run.out, testing::ContainsRegex(
                             "program +/sbin/setcfg +changing the configuration +missing\n"));
    EXPECT_EQ(findings().at("/sbin/setcfg")["group"], "appliance");
    EXPECT_FALSE(findings().at("/sbin/setcfg").contains("state"));
    writeRootFile("/sbin/setcfg", "#!/bin/sh\n", 0755);
    EXPECT_EQ(findings().at("/sbin/setcfg")["state"], "/sbin/setcfg");
    EXPECT_EQ(findings().at("setcfg")["state"], "/sbin/setcfg");
    writeRootFile("/sbin/setcfg", "no program", 0644);
    EXPECT_EQ(findings().at("/sbin/setcfg")["isThere"], false);
    EXPECT_EQ(findings().at("setcfg")["isThere"], true);
  });
}

TEST(Doctor, FailsIfAnItemForEveryMachineIsMissing) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    removeApplianceFiles();
    const TempDir folder;
    const Outcome run =
        runKolum(copyOfKolum(folder.folder(), {"ffmpeg", "osm_info", "setcfg"}), {"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "kolum: something needed on every machine is missing\n");
    EXPECT_THAT(run.out, testing::ContainsRegex("program +dsf2flac +DSD songs +missing\n"));
  });
}

TEST(Doctor, AcceptsImageMagickInsteadOfFfmpeg) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    removeApplianceFiles();
    const TempDir folder;
    const std::string program = copyOfKolum(folder.folder(), {"dsf2flac", "osm_info", "setcfg"});
    writeRootFile(folder.path("tools/convert"), "#!/bin/sh\n", 0755);
    const auto statusWith = [&](const std::string& path) {
      return runKolum(program, {"doctor"}, {.environment = {{"PATH", path}}}).status;
    };
    const std::string usual = "/nonexistent";
    EXPECT_EQ(statusWith(usual), 1);
    EXPECT_EQ(statusWith(usual + ":" + folder.path("tools")), 0);
  });
}

TEST(Doctor, ReportsTheDataVolume) {
  EXPECT_EQ(findings().at("data volume")["isThere"], false);
  const auto found = findings({.environment = {{"KO_DATA_DIR", "/nonexistent/volume"}}});
  EXPECT_EQ(found.at("data volume")["state"], "/nonexistent/volume");
  EXPECT_EQ(found.at("/nonexistent/volume/.system/lumserver.conf")["isThere"], false);
}

}  // namespace
}  // namespace kolum::test
