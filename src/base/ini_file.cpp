#include "base/ini_file.h"

#include <iniparser.h>
#include <sys/stat.h>

namespace kolum {

void IniFile::Deleter::operator()(dictionary* ini) const {
  iniparser_freedict(ini);
}

std::optional<IniFile> IniFile::load(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  dictionary* ini = iniparser_load(path.c_str());
  if (ini == nullptr) return std::nullopt;
  return IniFile(ini);
}

// A section with the same name as a key gives the key a null text. iniparser's getters of numbers
// and booleans crash on it; treat such a key as absent.
const char* IniFile::text(const char* key, const char* fallback) const {
  const char* text = iniparser_getstring(ini_.get(), key, nullptr);
  return text != nullptr ? text : fallback;
}

int IniFile::number(const char* key, int fallback) const {
  if (text(key, nullptr) == nullptr) return fallback;
  return iniparser_getint(ini_.get(), key, fallback);
}

bool IniFile::boolean(const char* key, bool fallback) const {
  if (text(key, nullptr) == nullptr) return fallback;
  return iniparser_getboolean(ini_.get(), key, fallback ? 1 : 0) != 0;
}

}  // namespace kolum
