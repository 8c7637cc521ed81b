#include <iniparser.h>
#include <kolum/config.h>
#include <kolum/host.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "base/appliance.h"
#include "machine/programs.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Setting {
  std::string section;
  std::string key;
  std::string value;
};

// One field of the record: its JSON key, and the section and key that "config set" uses for it.
template <typename Value>
struct Field {
  const char* name;
  const char* setting;
  Value lumCfg_s::*member;
};

constexpr Field<bool> kSwitches[] = {
    {"enable", "KOLUMSERVER ENABLE", &lumCfg_s::enable},
    {"enable4K", "THUMBNAIL ENABLE4K", &lumCfg_s::enable4K},
};

constexpr Field<int> kNumbers[] = {
    {"mode", "KOLUMSERVER MODE", &lumCfg_s::mode},
    {"thumbStatus", "KOLUMSERVER THUMB_STATUS", &lumCfg_s::thumbStatus},
    {"faceStatus", "KOLUMSERVER FACE_STATUS", &lumCfg_s::faceStatus},
    {"imgClassifyStatus", "KOLUMSERVER IMGCLASSIFY_STATUS", &lumCfg_s::imgClassifyStatus},
    {"startWorkday", "KOLUMSERVER STARTWORKDAY", &lumCfg_s::startWorkday},
    {"endWorkday", "KOLUMSERVER ENDWORKDAY", &lumCfg_s::endWorkday},
    {"dailyBuildHH", "KOLUMSERVER DAILYBUILD_HH", &lumCfg_s::dailyBuildHH},
    {"dailyBuildMM", "KOLUMSERVER DAILYBUILD_MM", &lumCfg_s::dailyBuildMM},
    {"dailyBuildEndHH", "KOLUMSERVER DAILYBUILD_END_HH", &lumCfg_s::dailyBuildEndHH},
    {"dailyBuildEndMM", "KOLUMSERVER DAILYBUILD_END_MM", &lumCfg_s::dailyBuildEndMM},
    {"minWidth", "THUMBNAIL MIN_WIDTH", &lumCfg_s::minWidth},
    {"minHeight", "THUMBNAIL MIN_HEIGHT", &lumCfg_s::minHeight},
    {"quality", "THUMBNAIL QUALITY", &lumCfg_s::quality},
    {"deviceType", "PelmoCore DeviceType", &lumCfg_s::deviceType},
};

constexpr Field<std::vector<std::string>> kLists[] = {
    {"photoBlacklist", "THUMBNAIL PHOTO_BLACKLIST", &lumCfg_s::photoBlacklist},
    {"musicBlacklist", "THUMBNAIL MUSIC_BLACKLIST", &lumCfg_s::musicBlacklist},
    {"videoBlacklist", "THUMBNAIL VIDEO_BLACKLIST", &lumCfg_s::videoBlacklist},
};

// As in the file: an empty last entry leaves a separator at the end.
std::string listText(const std::vector<std::string>& entries) {
  if (entries.empty()) return "(empty)";
  std::string text;
  for (const std::string& entry : entries) text += entry + ":";
  if (!entries.back().empty()) text.pop_back();
  return text;
}

void print(Context& context, const lumCfg_s& config) {
  Result result;
  for (const auto& field : kSwitches) {
    result.data(field.name, config.*field.member);
    result.show(field.setting, config.*field.member ? "true" : "false");
  }
  for (const auto& field : kNumbers) result.number(field.name, field.setting, config.*field.member);
  result.data("mcVersion", config.mcVersion);
  result.show("KOLUMSERVER MC_VERSION", config.mcVersion);
  for (const auto& field : kLists) {
    result.data(field.name, config.*field.member);
    result.show(field.setting, listText(config.*field.member));
  }
  context.printer.block(result);
}

// Reports the first missing prerequisite of the library; false if none is missing.
bool reportMissing(Context& context, const std::string& dataDir,
                   std::initializer_list<std::string> files, int mode) {
  if (dataDir.empty()) {
    context.fail("the data volume is unknown (KO_DATA_DIR names it on a machine without one)");
    return true;
  }
  for (const std::string& file : files) {
    if (access(file.c_str(), mode) == 0) continue;
    context.fail(file, std::strerror(errno));
    return true;
  }
  return false;
}

// Whether one of the files cannot be read as a configuration, which is reported.
bool reportUnusable(Context& context, std::initializer_list<std::string> files) {
  for (const std::string& file : files) {
    if (!std::filesystem::is_regular_file(file)) {
      context.fail(file, "not a regular file");
      return true;
    }
    dictionary* ini = iniparser_load(file.c_str());
    if (ini == nullptr) {
      context.fail(file, "not an ini file; --debug names the line");
      return true;
    }
    iniparser_freedict(ini);
  }
  return false;
}

void show(Context& context) {
  lumCfg_s config;
  if (parseConfig(&config) == 0) return print(context, config);
  std::string dataDir;
  KoUtil_GetDataDir(dataDir);
  if (reportMissing(context, dataDir, {dataDir + kServerConfigFile, kLibraryConfigFile}, R_OK))
    return;
  if (reportUnusable(context, {dataDir + kServerConfigFile, kLibraryConfigFile})) return;
  print(context, config);
  context.fail(dataDir + kServerConfigFile, "a value is out of its range; --debug names it");
}

// Does with another tool what the library does with /sbin/setcfg; setcfg itself creates a missing
// file.
int setWith(const std::string& tool, const std::string& dataDir, const Setting& setting) {
  if (dataDir.empty()) return 1;
  const std::string file = dataDir + kServerConfigFile;
  const char* argv[] = {
      tool.c_str(),          "-f",   file.c_str(), setting.section.c_str(), setting.key.c_str(),
      setting.value.c_str(), nullptr};
  return KoUtil_ExecSync(argv, 1);
}

void set(Context& context, const Setting& setting) {
  std::string dataDir;
  KoUtil_GetDataDir(dataDir);
  const std::string found = setTool();
  const std::string tool = found.empty() ? kSetTool : found;
  const int status = tool == kSetTool ? updateConfig(setting.section, setting.key, setting.value)
                                      : setWith(tool, dataDir, setting);
  if (status == 0) return;
  if (reportMissing(context, dataDir, {tool}, X_OK)) return;
  context.fail(dataDir + kServerConfigFile,
               "not changed, " + tool + " or its preparation returned " + std::to_string(status));
}

Words sectionNames() {
  return {"KOLUMSERVER", "THUMBNAIL"};
}

Action defineShow(Syntax& syntax) {
  syntax.help("Example:\n  kolum config show --json");
  return show;
}

Action defineSet(Syntax& syntax) {
  auto setting = std::make_shared<Setting>();
  syntax.operand({"SECTION", Offer::kWords, sectionNames}, setting->section,
                 "KOLUMSERVER or THUMBNAIL");
  syntax.operand({"KEY"}, setting->key, "As \"config show\" prints it");
  syntax.operand({"VALUE"}, setting->value, "The new value");
  syntax.help("Example:\n  kolum config set THUMBNAIL QUALITY 3");
  return [setting](Context& context) { set(context, *setting); };
}

}  // namespace

Action defineConfig(Syntax& syntax) {
  static constexpr Command kCommands[] = {
      {"show", "Prints every setting", defineShow},
      {"set", "Changes one setting in the file", defineSet},
  };
  syntax.commands(kCommands);
  syntax.help(
      "The media-library server's configuration: the data volume's .system/lumserver.conf, and\n"
      "/etc/config/medialibrary.conf for one setting. /sbin/setcfg changes settings, or, if it is\n"
      "missing, the stand-in installed with kolum.\n"
      "\nExamples:\n"
      "  kolum config show\n"
      "  kolum config set THUMBNAIL QUALITY 3");
  return nullptr;
}

}  // namespace kolum::tool
