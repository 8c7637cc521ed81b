#include "osm_info/settings.h"

#include <sys/stat.h>

#include <algorithm>
#include <string_view>

#include "base/ini_file.h"
#include "osm_info/answer.h"

namespace kolum::osm_info {

namespace {

constexpr int kLongestTimeout = 300;  // seconds

bool exists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

std::vector<const Language*> allLanguages() {
  std::vector<const Language*> all;
  for (const Language& language : languages()) all.push_back(&language);
  return all;
}

std::string serverUrl(const IniFile& ini) {
  std::string url = ini.text("server:url", "");
  if (url.empty()) return url;
  if (!url.starts_with("http://") && !url.starts_with("https://")) {
    throw LookUpError("the server's url begins with neither http:// nor https://");
  }
  while (url.ends_with('/')) url.pop_back();
  return url;
}

std::chrono::seconds secondsOf(const IniFile& ini, const char* key, std::chrono::seconds fallback) {
  const int seconds = ini.number(key, static_cast<int>(fallback.count()));
  if (seconds < 1 || seconds > kLongestTimeout) {
    throw LookUpError(std::string(key) + " is not between 1 and " +
                      std::to_string(kLongestTimeout) + " seconds");
  }
  return std::chrono::seconds(seconds);
}

// Codes separated by commas, with or without spaces around them.
std::vector<const Language*> languagesOf(std::string_view text) {
  std::vector<const Language*> wanted;
  while (!text.empty()) {
    std::string_view code = text.substr(0, text.find(','));
    text.remove_prefix(std::min(text.size(), code.size() + 1));
    while (code.starts_with(' ')) code.remove_prefix(1);
    while (code.ends_with(' ')) code.remove_suffix(1);
    const Language* language = findLanguage(code);
    if (language == nullptr) throw LookUpError("unknown language '" + std::string(code) + "'");
    wanted.push_back(language);
  }
  return wanted;
}

}  // namespace

Settings readSettings(const std::string& path, bool isRequired) {
  Settings settings;
  settings.languages = allLanguages();
  if (!isRequired && !exists(path)) return settings;
  const auto ini = IniFile::load(path);
  if (!ini) throw LookUpError("cannot read " + path);
  settings.serverUrl = serverUrl(*ini);
  settings.caFile = ini->text("server:ca_file", "");
  settings.connectTimeout = secondsOf(*ini, "server:connect_timeout", settings.connectTimeout);
  settings.timeout = secondsOf(*ini, "server:timeout", settings.timeout);
  const auto wanted = languagesOf(ini->text("answer:languages", ""));
  if (!wanted.empty()) settings.languages = wanted;
  return settings;
}

}  // namespace kolum::osm_info
