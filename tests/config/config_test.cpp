#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/config.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/log_recorder.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using kolum::test::contentOf;
using kolum::test::LogMessage;
using kolum::test::LogRecorder;
using kolum::test::runInAppliance;
using kolum::test::sandboxUnavailable;
using kolum::test::writeRootFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kVolume[] = "/tmp/volume";
constexpr char kServerFile[] = "/tmp/volume/.system/lumserver.conf";
constexpr char kApplianceFile[] = "/etc/config/medialibrary.conf";
constexpr char kSetTool[] = "/sbin/setcfg";

// An appliance with a data volume, the real tool and two configuration files.
void inAppliance(const std::function<void()>& body) {
  runInAppliance([&] {
    setenv("KO_DATA_DIR", kVolume, 1);
    writeRootFile(kServerFile, "");
    writeRootFile(kApplianceFile, "");
    fs::copy_file(KOLUM_SETCFG, kSetTool, fs::copy_options::overwrite_existing);
    body();
  });
}

// A tool that records its arguments, one per line, and exits with STATUS.
void replaceSetTool(int status) {
  std::ostringstream script;
  script << "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\" > /tmp/arguments\nexit " << status << "\n";
  writeRootFile(kSetTool, script.str(), 0755);
}

// A record in which no field has its default.
lumCfg_s filledRecord() {
  return {.enable = false,
          .mode = 99,
          .thumbStatus = 99,
          .faceStatus = 99,
          .imgClassifyStatus = 99,
          .deviceType = 99,
          .startWorkday = 99,
          .endWorkday = 99,
          .dailyBuildHH = 99,
          .dailyBuildMM = 99,
          .dailyBuildEndHH = 99,
          .dailyBuildEndMM = 99,
          .mcVersion = "x",
          .enable4K = false,
          .minWidth = 99,
          .minHeight = 99,
          .quality = 99,
          .photoBlacklist = {"x"},
          .musicBlacklist = {"x"},
          .videoBlacklist = {"x"}};
}

void expectDefaults(const lumCfg_s& cfg) {
  EXPECT_TRUE(cfg.enable);
  EXPECT_EQ(cfg.mode, 1);
  EXPECT_EQ(cfg.thumbStatus, 1);
  EXPECT_EQ(cfg.faceStatus, 1);
  EXPECT_EQ(cfg.imgClassifyStatus, 1);
  EXPECT_EQ(cfg.deviceType, 0);
  EXPECT_EQ(cfg.startWorkday, 0);
  EXPECT_EQ(cfg.endWorkday, 6);
  EXPECT_EQ(cfg.dailyBuildHH, 0);
  EXPECT_EQ(cfg.dailyBuildMM, 0);
  EXPECT_EQ(cfg.dailyBuildEndHH, -1);
  EXPECT_EQ(cfg.dailyBuildEndMM, -1);
  EXPECT_EQ(cfg.mcVersion, "na");
  EXPECT_TRUE(cfg.enable4K);
  EXPECT_EQ(cfg.minWidth, 400);
  EXPECT_EQ(cfg.minHeight, 400);
  EXPECT_EQ(cfg.quality, 2);
  EXPECT_THAT(cfg.photoBlacklist, IsEmpty());
  EXPECT_THAT(cfg.musicBlacklist, IsEmpty());
  EXPECT_THAT(cfg.videoBlacklist, IsEmpty());
}

std::string placeOf(const LogMessage& message) {
  return std::to_string(message.level) + (message.colour ? " coloured " : " ") + message.source +
         " " + message.function;
}

// Each expected message is a function and a text.
void expectLogged(const LogRecorder& log,
                  const std::vector<std::pair<std::string, std::string>>& expected) {
  const std::vector<LogMessage> messages = log.messages();
  ASSERT_EQ(messages.size(), expected.size()) << testing::PrintToString(log.texts());
  for (std::size_t i = 0; i < messages.size(); ++i) {
    EXPECT_EQ(placeOf(messages[i]), "5 configParser " + expected[i].first);
    EXPECT_EQ(messages[i].text, expected[i].second);
  }
}

class ParseConfig : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  }
};

class UpdateConfig : public ParseConfig {};

TEST_F(ParseConfig, ReturnsOneForNullRecord) {
  const LogRecorder log;
  EXPECT_EQ(parseConfig(nullptr), 1);
  expectLogged(log, {{"parseConfig", "no config from parameter.\n"}});
}

TEST_F(ParseConfig, ReturnsOneAndDefaultsForUnknownDataVolume) {
  inAppliance([] {
    unsetenv("KO_DATA_DIR");
    const LogRecorder log;
    lumCfg_s cfg = filledRecord();
    EXPECT_EQ(parseConfig(&cfg), 1);
    expectDefaults(cfg);
    expectLogged(log, {{"parseConfig", "unable to get mount path\n"}});
  });
}

TEST_F(ParseConfig, ReturnsOneAndDefaultsForUnreadableFile) {
  const struct {
    const char* name;
    const char* file;
    std::function<void(const char*)> spoil;
  } kRows[] = {
      {"missing", kServerFile, [](const char* path) { fs::remove(path); }},
      {"folder", kServerFile,
       [](const char* path) { fs::remove(path), fs::create_directory(path); }},
      {"FIFO", kServerFile, [](const char* path) { fs::remove(path), mkfifo(path, 0600); }},
      {"no ini file", kServerFile, [](const char* path) { writeRootFile(path, "[S]\njunk\n"); }},
      {"endless line", kServerFile,
       [](const char* path) { writeRootFile(path, "[S]\nk=" + std::string(100000, 'x')); }},
      {"missing", kApplianceFile, [](const char* path) { fs::remove(path); }},
      {"folder", kApplianceFile,
       [](const char* path) { fs::remove(path), fs::create_directory(path); }},
      {"no ini file", kApplianceFile, [](const char* path) { writeRootFile(path, "[S]\njunk\n"); }},
      {"link to nothing", kApplianceFile,
       [](const char* path) { fs::remove(path), fs::create_symlink("/nowhere", path); }},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.file) + ": " + row.name);
    inAppliance([&] {
      row.spoil(row.file);
      const LogRecorder log;
      lumCfg_s cfg = filledRecord();
      EXPECT_EQ(parseConfig(&cfg), 1);
      expectDefaults(cfg);
      expectLogged(log,
                   {{"parseConfig", "can't open config file : " + std::string(row.file) + ".\n"}});
    });
  }
}

TEST_F(ParseConfig, ReturnsDefaultsForEmptyFiles) {
  inAppliance([] {
    const LogRecorder log;
    lumCfg_s cfg = filledRecord();
    EXPECT_EQ(parseConfig(&cfg), 0);
    expectDefaults(cfg);
    EXPECT_THAT(log.texts(), IsEmpty());
  });
}

TEST_F(ParseConfig, ReadsEveryKey) {
  inAppliance([] {
    writeRootFile(
        kServerFile,
        "[KOLUMSERVER]\nENABLE=no\nMODE=2\nTHUMB_STATUS=3\nFACE_STATUS=4\n"
        "IMGCLASSIFY_STATUS=2\nSTARTWORKDAY=1\nENDWORKDAY=5\nDAILYBUILD_HH=22\n"
        "DAILYBUILD_MM=30\nDAILYBUILD_END_HH=6\nDAILYBUILD_END_MM=45\nMC_VERSION = 1.2 beta\n"
        "[THUMBNAIL]\nENABLE4K=no\nMIN_WIDTH=320\nMIN_HEIGHT=240\nQUALITY=3\n"
        "PHOTO_BLACKLIST=/p\nMUSIC_BLACKLIST=/m1:/m2\nVIDEO_BLACKLIST=/v:\n");
    writeRootFile(kApplianceFile, "[PelmoCore]\nDeviceType=1\n");
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 0);
    EXPECT_FALSE(cfg.enable);
    EXPECT_EQ(cfg.mode, 2);
    EXPECT_EQ(cfg.thumbStatus, 3);
    EXPECT_EQ(cfg.faceStatus, 4);
    EXPECT_EQ(cfg.imgClassifyStatus, 2);
    EXPECT_EQ(cfg.deviceType, 1);
    EXPECT_EQ(cfg.startWorkday, 1);
    EXPECT_EQ(cfg.endWorkday, 5);
    EXPECT_EQ(cfg.dailyBuildHH, 22);
    EXPECT_EQ(cfg.dailyBuildMM, 30);
    EXPECT_EQ(cfg.dailyBuildEndHH, 6);
    EXPECT_EQ(cfg.dailyBuildEndMM, 45);
    EXPECT_EQ(cfg.mcVersion, "1.2 beta");
    EXPECT_FALSE(cfg.enable4K);
    EXPECT_EQ(cfg.minWidth, 320);
    EXPECT_EQ(cfg.minHeight, 240);
    EXPECT_EQ(cfg.quality, 3);
    EXPECT_THAT(cfg.photoBlacklist, ElementsAre("/p"));
    EXPECT_THAT(cfg.musicBlacklist, ElementsAre("/m1", "/m2"));
    EXPECT_THAT(cfg.videoBlacklist, ElementsAre("/v"));
  });
}

TEST_F(ParseConfig, ReadsDeviceTypeFromApplianceFileOnly) {
  inAppliance([] {
    writeRootFile(kServerFile, "[PelmoCore]\nDeviceType=1\n");
    writeRootFile(kApplianceFile, "[KOLUMSERVER]\nMODE=3\n");
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 0);
    EXPECT_EQ(cfg.deviceType, 0);
    EXPECT_EQ(cfg.mode, 1);
  });
}

TEST_F(ParseConfig, ReadsValuesLikeIniparser) {
  inAppliance([] {
    writeRootFile(
        kServerFile,
        "[kolumserver]\nEnable=FALSE\nstartworkday=0x10\nENDWORKDAY=010\nDAILYBUILD_HH=text\n"
        "MC_VERSION=\" kept ; here \" ; comment\n[THUMBNAIL]\nENABLE4K=perhaps\n");
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 0);
    EXPECT_FALSE(cfg.enable);
    EXPECT_EQ(cfg.startWorkday, 16);
    EXPECT_EQ(cfg.endWorkday, 8);
    EXPECT_EQ(cfg.dailyBuildHH, 0);
    EXPECT_EQ(cfg.mcVersion, " kept ; here ");
    EXPECT_TRUE(cfg.enable4K) << "neither true nor false is the default";
  });
}

TEST_F(ParseConfig, AcceptsAnyWorkdays) {
  inAppliance([] {
    writeRootFile(kServerFile, "[KOLUMSERVER]\nSTARTWORKDAY=-5\nENDWORKDAY=1000\n");
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 0);
    EXPECT_EQ(cfg.startWorkday, -5);
    EXPECT_EQ(cfg.endWorkday, 1000);
  });
}

// Sections named like keys give iniparser keys without a value.
TEST_F(ParseConfig, TreatsKeyWithoutTextAsAbsent) {
  inAppliance([] {
    writeRootFile(kServerFile,
                  "[KOLUMSERVER:ENABLE]\n[KOLUMSERVER:MODE]\n[KOLUMSERVER:MC_VERSION]\n"
                  "[THUMBNAIL:ENABLE4K]\n[THUMBNAIL:QUALITY]\n[THUMBNAIL:PHOTO_BLACKLIST]\n");
    writeRootFile(kApplianceFile, "[PelmoCore:DeviceType]\n");
    lumCfg_s cfg = filledRecord();
    EXPECT_EQ(parseConfig(&cfg), 0);
    expectDefaults(cfg);
  });
}

TEST_F(ParseConfig, SplitsBlacklistsAtEveryColon) {
  using List = std::vector<std::string>;
  const struct {
    const char* value;
    List entries;
  } kRows[] = {
      {"", {}},
      {"/a", {"/a"}},
      {"/a:/b", {"/a", "/b"}},
      {"a::b:", {"a", "", "b"}},
      {":", {""}},
      {"::", {"", ""}},
      {":a", {"", "a"}},
      {"a:", {"a"}},
      {"a b:c", {"a b", "c"}},
      {"\xff:\xc3\xa4", {"\xff", "\xc3\xa4"}},
  };
  inAppliance([&] {
    for (const auto& row : kRows) {
      SCOPED_TRACE(row.value);
      const std::string value = "=\"" + std::string(row.value) + "\"\n";
      writeRootFile(kServerFile, "[THUMBNAIL]\nPHOTO_BLACKLIST" + value + "MUSIC_BLACKLIST" +
                                     value + "VIDEO_BLACKLIST" + value);
      lumCfg_s cfg = filledRecord();
      EXPECT_EQ(parseConfig(&cfg), 0);
      EXPECT_EQ(cfg.photoBlacklist, row.entries);
      EXPECT_EQ(cfg.musicBlacklist, row.entries);
      EXPECT_EQ(cfg.videoBlacklist, row.entries);
    }
  });
}

struct Range {
  const char* section;
  const char* key;
  std::vector<int> good;
  std::vector<int> bad;
  const char* message;  // the part before the value
};

const std::vector<Range>& ranges() {
  static const std::vector<Range> kRanges = {
      {"KOLUMSERVER", "MODE", {1, 2, 3}, {0, 4, -1}, "KOLUMSERVER:MODE:"},
      {"KOLUMSERVER", "THUMB_STATUS", {1, 4}, {0, 5, -1}, "KOLUMSERVER:THUMB_STATUS:"},
      {"KOLUMSERVER", "FACE_STATUS", {1, 4}, {0, 5, -1}, "KOLUMSERVER:FACE_STATUS:"},
      {"KOLUMSERVER", "IMGCLASSIFY_STATUS", {1, 4}, {0, 5, -1}, "KOLUMSERVER:IMGCLASSIFY_STATUS:"},
      {"PelmoCore", "DeviceType", {0, 1}, {2, -1}, "KOLUMSERVER:CLASSIFY_INTERFACEDEVICE:"},
      {"KOLUMSERVER", "DAILYBUILD_HH", {0, 23}, {24, -1}, "KOLUMSERVER:DAILYBUILD_HH:"},
      {"KOLUMSERVER", "DAILYBUILD_MM", {0, 59}, {60, -1}, "KOLUMSERVER:DAILYBUILD_MM:"},
      {"KOLUMSERVER", "DAILYBUILD_END_HH", {-1, 0, 23}, {24, -2}, "KOLUMSERVER:DAILYBUILD_END_HH:"},
      {"KOLUMSERVER", "DAILYBUILD_END_MM", {-1, 0, 59}, {60, -2}, "KOLUMSERVER:DAILYBUILD_END_MM:"},
      {"THUMBNAIL", "MIN_WIDTH", {100, 2147483647}, {99, 0, -400}, "THUMBNAIL:MIN_WIDTH:"},
      {"THUMBNAIL", "MIN_HEIGHT", {100, 2147483647}, {99, 0, -400}, "THUMBNAIL:MIN_HEIGHT"},
      {"THUMBNAIL", "QUALITY", {1, 2, 3}, {0, 4, -1}, "THUMBNAIL:QUALITY:"},
  };
  return kRanges;
}

std::string entry(const Range& range, int value) {
  return std::string("[") + range.section + "]\n" + range.key + "=" + std::to_string(value) + "\n";
}

bool isApplianceKey(const Range& range) {
  return std::string(range.section) == "PelmoCore";
}

TEST_F(ParseConfig, ChecksEveryRange) {
  inAppliance([] {
    for (const Range& range : ranges()) {
      const char* file = isApplianceKey(range) ? kApplianceFile : kServerFile;
      for (const int value : range.good) {
        SCOPED_TRACE(entry(range, value));
        writeRootFile(file, entry(range, value));
        const LogRecorder log;
        lumCfg_s cfg{};
        EXPECT_EQ(parseConfig(&cfg), 0);
        EXPECT_THAT(log.texts(), IsEmpty());
      }
      for (const int value : range.bad) {
        SCOPED_TRACE(entry(range, value));
        writeRootFile(file, entry(range, value));
        const LogRecorder log;
        lumCfg_s cfg{};
        EXPECT_EQ(parseConfig(&cfg), 1);
        expectLogged(log, {{"checkConfig", range.message + std::to_string(value) + "\n"},
                           {"parseConfig", "invalid config content.\n"}});
      }
      writeRootFile(file, "");
    }
  });
}

// Every value is out of range at first; then they are corrected in the order of the messages.
TEST_F(ParseConfig, StopsAtFirstValueOutOfRange) {
  inAppliance([] {
    replaceSetTool(0);  // repairs nothing
    for (std::size_t right = 0; right < ranges().size(); ++right) {
      SCOPED_TRACE(ranges()[right].message);
      std::string server;
      std::string appliance;
      for (std::size_t i = 0; i < ranges().size(); ++i) {
        const Range& range = ranges()[i];
        (isApplianceKey(range) ? appliance : server) +=
            entry(range, i < right ? range.good.front() : range.bad.front());
      }
      writeRootFile(kServerFile, server);
      writeRootFile(kApplianceFile, appliance);
      const LogRecorder log;
      lumCfg_s cfg{};
      EXPECT_EQ(parseConfig(&cfg), 1);
      const Range& first = ranges()[right];
      expectLogged(log, {{"checkConfig", first.message + std::to_string(first.bad.front()) + "\n"},
                         {"parseConfig", "invalid config content.\n"}});
    }
  });
}

TEST_F(ParseConfig, NamesAnotherKeyInTheDeviceTypeMessage) {
  inAppliance([] {
    writeRootFile(kApplianceFile, "[PelmoCore]\nDeviceType=7\n");
    const LogRecorder log;
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 1);
    EXPECT_EQ(log.texts().front(), "KOLUMSERVER:CLASSIFY_INTERFACEDEVICE:7\n");
  });
}

TEST_F(ParseConfig, OmitsTheColonInTheHeightMessage) {
  inAppliance([] {
    writeRootFile(kServerFile, "[THUMBNAIL]\nMIN_HEIGHT=7\n");
    const LogRecorder log;
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 1);
    EXPECT_EQ(log.texts().front(), "THUMBNAIL:MIN_HEIGHT7\n");
  });
}

TEST_F(ParseConfig, FailsOnceForRepairedSizeAndThenSucceeds) {
  for (const std::string key : {"MIN_WIDTH", "MIN_HEIGHT"}) {
    SCOPED_TRACE(key);
    inAppliance([&] {
      writeRootFile(kServerFile, "# thumbs\n[THUMBNAIL]\n" + key + " = 50 ; small\nQUALITY = 3\n");
      lumCfg_s cfg{};
      EXPECT_EQ(parseConfig(&cfg), 1);
      EXPECT_EQ(key == "MIN_WIDTH" ? cfg.minWidth : cfg.minHeight, 50) << "keeps the bad value";
      EXPECT_EQ(contentOf(kServerFile),
                "# thumbs\n[THUMBNAIL]\n" + key + " = 400 ; small\nQUALITY = 3\n");
      EXPECT_EQ(parseConfig(&cfg), 0);
      EXPECT_EQ(cfg.minWidth, 400);
      EXPECT_EQ(cfg.minHeight, 400);
      EXPECT_EQ(cfg.quality, 3);
    });
  }
}

TEST_F(ParseConfig, RepairsBothSizesEvenWhenAnotherValueFailsFirst) {
  inAppliance([] {
    writeRootFile(kServerFile, "[KOLUMSERVER]\nMODE=9\n[THUMBNAIL]\nMIN_WIDTH=99\nMIN_HEIGHT=-1\n");
    const LogRecorder log;
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 1);
    expectLogged(log, {{"checkConfig", "KOLUMSERVER:MODE:9\n"},
                       {"parseConfig", "invalid config content.\n"}});
    EXPECT_EQ(contentOf(kServerFile),
              "[KOLUMSERVER]\nMODE=9\n[THUMBNAIL]\nMIN_WIDTH=400\nMIN_HEIGHT=400\n");
  });
}

TEST_F(ParseConfig, RunsNothingForValidSize) {
  inAppliance([] {
    replaceSetTool(0);
    writeRootFile(kServerFile, "[THUMBNAIL]\nMIN_WIDTH=100\nMIN_HEIGHT=100\n");
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 0);
    EXPECT_FALSE(fs::exists("/tmp/arguments"));
  });
}

TEST_F(ParseConfig, LeavesBadSizeWithoutTheTool) {
  inAppliance([] {
    fs::remove(kSetTool);
    writeRootFile(kServerFile, "[THUMBNAIL]\nMIN_WIDTH=50\n");
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 1);
    EXPECT_EQ(contentOf(kServerFile), "[THUMBNAIL]\nMIN_WIDTH=50\n");
  });
}

TEST_F(ParseConfig, ReadsFilesOnEveryCall) {
  inAppliance([] {
    lumCfg_s cfg{};
    for (const int mode : {1, 2, 3}) {
      writeRootFile(kServerFile, "[KOLUMSERVER]\nMODE=" + std::to_string(mode) + "\n");
      EXPECT_EQ(parseConfig(&cfg), 0);
      EXPECT_EQ(cfg.mode, mode);
    }
  });
}

TEST_F(UpdateConfig, ReturnsOneAndRunsNothingForUnknownDataVolume) {
  inAppliance([] {
    replaceSetTool(0);
    unsetenv("KO_DATA_DIR");
    const LogRecorder log;
    EXPECT_EQ(updateConfig("S", "k", "v"), 1);
    expectLogged(log, {{"updateConfig", "can not get mount path\n"}});
    EXPECT_FALSE(fs::exists("/tmp/arguments"));
  });
}

TEST_F(UpdateConfig, CreatesFileAndSetsKey) {
  inAppliance([] {
    fs::remove(kServerFile);
    const LogRecorder log;
    EXPECT_EQ(updateConfig("KOLUMSERVER", "MODE", "3"), 0);
    EXPECT_EQ(contentOf(kServerFile), "[KOLUMSERVER]\nMODE = 3\n");
    EXPECT_THAT(log.texts(), IsEmpty());
    lumCfg_s cfg{};
    EXPECT_EQ(parseConfig(&cfg), 0);
    EXPECT_EQ(cfg.mode, 3);
  });
}

TEST_F(UpdateConfig, PassesEachStringAsOneArgument) {
  inAppliance([] {
    replaceSetTool(0);
    EXPECT_EQ(updateConfig("MY SECTION", "a 'key'", "$(touch /tmp/x); two  words *"), 0);
    EXPECT_EQ(contentOf("/tmp/arguments"),
              "/sbin/setcfg\n-f\n/tmp/volume/.system/lumserver.conf\nMY SECTION\na 'key'\n"
              "$(touch /tmp/x); two  words *\n");
    EXPECT_FALSE(fs::exists("/tmp/x"));
    EXPECT_EQ(updateConfig("", "", ""), 0);
    EXPECT_EQ(contentOf("/tmp/arguments"),
              "/sbin/setcfg\n-f\n/tmp/volume/.system/lumserver.conf\n\n\n\n");
  });
}

TEST_F(UpdateConfig, ReturnsTheToolsResult) {
  inAppliance([] {
    for (const int status : {0, 1, 2, 77}) {
      replaceSetTool(status);
      EXPECT_EQ(updateConfig("S", "k", "v"), status);
    }
    fs::remove(kSetTool);
    const int missing = updateConfig("S", "k", "v");
    EXPECT_NE(missing, 0);
  });
}

TEST_F(UpdateConfig, ReturnsOneIfTheFileCannotBeCreated) {
  inAppliance([] {
    replaceSetTool(0);
    fs::remove_all("/tmp/volume/.system");
    const LogRecorder log;
    EXPECT_EQ(updateConfig("S", "k", "v"), 1);
    expectLogged(log, {{"updateConfig", "unable to touch\n"}});
    EXPECT_FALSE(fs::exists("/tmp/arguments"));
  });
}

TEST_F(UpdateConfig, RejectsPathTooLongForTheCommand) {
  inAppliance([] {
    replaceSetTool(0);
    std::string volume = "/tmp/" + std::string(100, 'a') + "/";
    for (const std::size_t length : {221U, 222U, 300U}) {
      SCOPED_TRACE(length);
      volume.resize(length, 'b');
      fs::create_directories(volume + "/.system");
      setenv("KO_DATA_DIR", volume.c_str(), 1);
      fs::remove("/tmp/arguments");
      const LogRecorder log;
      const bool fits = length == 221;
      EXPECT_EQ(updateConfig("S", "k", "v"), fits ? 0 : 1);
      EXPECT_EQ(fs::exists("/tmp/arguments"), fits);
      EXPECT_EQ(fs::exists(volume + "/.system/lumserver.conf"), fits);
      if (!fits) expectLogged(log, {{"updateConfig", "unable to touch\n"}});
    }
  });
}

TEST_F(UpdateConfig, PassesThePathThroughTheShellUnquoted) {
  inAppliance([] {
    replaceSetTool(0);
    fs::create_directories("/tmp/real/.system");
    fs::create_directories("/tmp/$HOSTED/.system");
    setenv("HOSTED", "real", 1);
    setenv("KO_DATA_DIR", "/tmp/$HOSTED", 1);
    EXPECT_EQ(updateConfig("S", "k", "v"), 0);
    EXPECT_TRUE(fs::exists("/tmp/real/.system/lumserver.conf")) << "touched through the shell";
    EXPECT_FALSE(fs::exists("/tmp/$HOSTED/.system/lumserver.conf"));
    EXPECT_THAT(contentOf("/tmp/arguments"), HasSubstr("/tmp/$HOSTED/.system/lumserver.conf\n"))
        << "passed on unchanged";
  });
}

}  // namespace
