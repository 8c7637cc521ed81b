#include "config/config.h"

#include <kolum/host.h>

#include <array>
#include <chrono>
#include <climits>
#include <cstdio>
#include <optional>
#include <string_view>

#include "base/appliance.h"
#include "base/child_process.h"
#include "base/ini_file.h"
#include "base/log.h"

namespace kolum::config {

namespace {

constexpr char kSource[] = "configParser";
constexpr char kParse[] = "parseConfig";
constexpr char kCheck[] = "checkConfig";
constexpr char kUpdate[] = "updateConfig";

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

constexpr std::size_t kCommandSize = 256;
constexpr std::chrono::seconds kTouchTime{30};

constexpr int kNotSet = -1;
constexpr int kMinSize = 100;
constexpr char kRepairedSize[] = "400";

enum class File { kServer, kAppliance };

struct BooleanKey {
  const char* key;
  bool lumCfg_s::*field;
  bool fallback;
};

constexpr BooleanKey kBooleans[] = {
    {"KOLUMSERVER:ENABLE", &lumCfg_s::enable, true},
    {"THUMBNAIL:ENABLE4K", &lumCfg_s::enable4K, true},
};

struct NumberKey {
  const char* key;
  int lumCfg_s::*field;
  File file;
  int fallback;
};

constexpr NumberKey kNumbers[] = {
    {"KOLUMSERVER:MODE", &lumCfg_s::mode, File::kServer, 1},
    {"KOLUMSERVER:THUMB_STATUS", &lumCfg_s::thumbStatus, File::kServer, 1},
    {"KOLUMSERVER:FACE_STATUS", &lumCfg_s::faceStatus, File::kServer, 1},
    {"KOLUMSERVER:IMGCLASSIFY_STATUS", &lumCfg_s::imgClassifyStatus, File::kServer, 1},
    {"PelmoCore:DeviceType", &lumCfg_s::deviceType, File::kAppliance, 0},
    {"KOLUMSERVER:STARTWORKDAY", &lumCfg_s::startWorkday, File::kServer, 0},
    {"KOLUMSERVER:ENDWORKDAY", &lumCfg_s::endWorkday, File::kServer, 6},
    {"KOLUMSERVER:DAILYBUILD_HH", &lumCfg_s::dailyBuildHH, File::kServer, 0},
    {"KOLUMSERVER:DAILYBUILD_MM", &lumCfg_s::dailyBuildMM, File::kServer, 0},
    {"KOLUMSERVER:DAILYBUILD_END_HH", &lumCfg_s::dailyBuildEndHH, File::kServer, kNotSet},
    {"KOLUMSERVER:DAILYBUILD_END_MM", &lumCfg_s::dailyBuildEndMM, File::kServer, kNotSet},
    {"THUMBNAIL:MIN_WIDTH", &lumCfg_s::minWidth, File::kServer, 400},
    {"THUMBNAIL:MIN_HEIGHT", &lumCfg_s::minHeight, File::kServer, 400},
    {"THUMBNAIL:QUALITY", &lumCfg_s::quality, File::kServer, 2},
};

constexpr char kVersionKey[] = "KOLUMSERVER:MC_VERSION";
constexpr char kVersionFallback[] = "na";

struct ListKey {
  const char* key;
  std::vector<std::string> lumCfg_s::*field;
};

constexpr ListKey kBlacklists[] = {
    {"THUMBNAIL:PHOTO_BLACKLIST", &lumCfg_s::photoBlacklist},
    {"THUMBNAIL:MUSIC_BLACKLIST", &lumCfg_s::musicBlacklist},
    {"THUMBNAIL:VIDEO_BLACKLIST", &lumCfg_s::videoBlacklist},
};

// The range of a number, and the message logged if the number is outside it.
struct Range {
  int lumCfg_s::*field;
  int low;
  int high;
  bool mayBeNotSet;
  const char* message;
};

// Checked in this order. The device type's message names another key than the one read, and the
// height's lacks a colon: hosts' log filters match the texts to the letter.
constexpr Range kRanges[] = {
    {&lumCfg_s::mode, 1, 3, false, "KOLUMSERVER:MODE:%d\n"},
    {&lumCfg_s::thumbStatus, 1, 4, false, "KOLUMSERVER:THUMB_STATUS:%d\n"},
    {&lumCfg_s::faceStatus, 1, 4, false, "KOLUMSERVER:FACE_STATUS:%d\n"},
    {&lumCfg_s::imgClassifyStatus, 1, 4, false, "KOLUMSERVER:IMGCLASSIFY_STATUS:%d\n"},
    {&lumCfg_s::deviceType, 0, 1, false, "KOLUMSERVER:CLASSIFY_INTERFACEDEVICE:%d\n"},
    {&lumCfg_s::dailyBuildHH, 0, 23, false, "KOLUMSERVER:DAILYBUILD_HH:%d\n"},
    {&lumCfg_s::dailyBuildMM, 0, 59, false, "KOLUMSERVER:DAILYBUILD_MM:%d\n"},
    {&lumCfg_s::dailyBuildEndHH, 0, 23, true, "KOLUMSERVER:DAILYBUILD_END_HH:%d\n"},
    {&lumCfg_s::dailyBuildEndMM, 0, 59, true, "KOLUMSERVER:DAILYBUILD_END_MM:%d\n"},
    {&lumCfg_s::minWidth, kMinSize, INT_MAX, false, "THUMBNAIL:MIN_WIDTH:%d\n"},
    {&lumCfg_s::minHeight, kMinSize, INT_MAX, false, "THUMBNAIL:MIN_HEIGHT%d\n"},
    {&lumCfg_s::quality, 1, 3, false, "THUMBNAIL:QUALITY:%d\n"},
};

std::optional<IniFile> load(const std::string& path) {
  auto ini = IniFile::load(path);
  if (!ini) KOLUM_LOG_AS(kSource, kParse, "can't open config file : %s.\n", path.c_str());
  return ini;
}

// Keeps empty entries between two separators, but not one after the last separator.
std::vector<std::string> splitList(std::string_view text) {
  std::vector<std::string> entries;
  for (std::size_t end = text.find(':'); end != text.npos; end = text.find(':')) {
    entries.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  if (!text.empty()) entries.emplace_back(text);
  return entries;
}

void setDefaults(lumCfg_s& cfg) {
  for (const BooleanKey& boolean : kBooleans) cfg.*boolean.field = boolean.fallback;
  for (const NumberKey& number : kNumbers) cfg.*number.field = number.fallback;
  for (const ListKey& list : kBlacklists) (cfg.*list.field).clear();
  cfg.mcVersion = kVersionFallback;
}

void readKeys(lumCfg_s& cfg, const IniFile& server, const IniFile& appliance) {
  for (const BooleanKey& boolean : kBooleans) {
    cfg.*boolean.field = server.boolean(boolean.key, boolean.fallback);
  }
  for (const NumberKey& number : kNumbers) {
    const IniFile& ini = number.file == File::kServer ? server : appliance;
    cfg.*number.field = ini.number(number.key, number.fallback);
  }
  cfg.mcVersion = server.text(kVersionKey, kVersionFallback);
  for (const ListKey& list : kBlacklists) {
    cfg.*list.field = splitList(server.text(list.key, ""));
  }
}

bool isWithin(const Range& range, int value) {
  return (value >= range.low && value <= range.high) || (range.mayBeNotSet && value == kNotSet);
}

bool isValid(const lumCfg_s& cfg) {
  for (const Range& range : kRanges) {
    const int value = cfg.*range.field;
    if (isWithin(range, value)) continue;
    KOLUM_LOG_AS(kSource, kCheck, range.message, value);
    return false;
  }
  return true;
}

std::string dataDir() {
  std::string dir;
  KoUtil_GetDataDir(dir);
  return dir;
}

// Through the shell and unquoted: the data volume's path comes from the host itself. A path too
// long for the command's buffer is refused, never cut.
bool touch(const std::string& path) {
  std::array<char, kCommandSize> command{};
  const int length = std::snprintf(command.data(), command.size(), "/bin/touch %s", path.c_str());
  if (length < 0 || static_cast<std::size_t>(length) >= command.size()) return false;
  return runShell(command.data(), kTouchTime) == 0;
}

}  // namespace

bool readConfigFiles(const std::string& serverFile, const std::string& applianceFile,
                     lumCfg_s& cfg) {
  const auto server = load(serverFile);
  if (!server) return false;
  const auto appliance = load(applianceFile);
  if (!appliance) return false;
  readKeys(cfg, *server, *appliance);
  return true;
}

int update(const std::string& section, const std::string& key, const std::string& value) {
  const std::string dir = dataDir();
  if (dir.empty()) {
    KOLUM_LOG_AS(kSource, kUpdate, "can not get mount path\n");
    return kFailure;
  }
  const std::string path = dir + kServerConfigFile;
  if (!touch(path)) {
    KOLUM_LOG_AS(kSource, kUpdate, "unable to touch\n");
    return kFailure;
  }
  const char* argv[] = {kSetTool,    "-f",          path.c_str(), section.c_str(),
                        key.c_str(), value.c_str(), nullptr};
  return KoUtil_ExecSync(argv, 1);
}

namespace {

// The record keeps the bad value, so this call fails and the next one succeeds: a host never works
// with a size that its file did not contain.
void repairSizes(const lumCfg_s& cfg) {
  if (cfg.minWidth < kMinSize) update("THUMBNAIL", "MIN_WIDTH", kRepairedSize);
  if (cfg.minHeight < kMinSize) update("THUMBNAIL", "MIN_HEIGHT", kRepairedSize);
}

bool readFiles(lumCfg_s& cfg) {
  const std::string dir = dataDir();
  if (dir.empty()) {
    KOLUM_LOG_AS(kSource, kParse, "unable to get mount path\n");
    return false;
  }
  if (!readConfigFiles(dir + kServerConfigFile, kLibraryConfigFile, cfg)) return false;
  repairSizes(cfg);
  return true;
}

}  // namespace

int parse(lumCfg_s& cfg) {
  setDefaults(cfg);
  if (!readFiles(cfg)) return kFailure;
  if (!isValid(cfg)) {
    KOLUM_LOG_AS(kSource, kParse, "invalid config content.\n");
    return kFailure;
  }
  return kSuccess;
}

}  // namespace kolum::config
