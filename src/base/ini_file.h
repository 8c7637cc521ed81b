// An ini file of the appliance, as iniparser reads it.
#ifndef KOLUM_BASE_INI_FILE_H
#define KOLUM_BASE_INI_FILE_H

#include <memory>
#include <optional>
#include <string>

// iniparser's own name for a parsed file.
struct _dictionary_;  // NOLINT(bugprone-reserved-identifier)

namespace kolum {

// Keys are written "section:key", in any letter case.
class IniFile {
 public:
  // Empty if the file cannot be read. Anything but a regular file is refused: opening a FIFO would
  // block.
  static std::optional<IniFile> load(const std::string& path);

  // The value of a key, or FALLBACK if it is absent. Texts live as long as the object.
  const char* text(const char* key, const char* fallback) const;
  int number(const char* key, int fallback) const;
  bool boolean(const char* key, bool fallback) const;

 private:
  struct Deleter {
    void operator()(_dictionary_* ini) const;
  };
  explicit IniFile(_dictionary_* ini) : ini_(ini) {}

  std::unique_ptr<_dictionary_, Deleter> ini_;
};

}  // namespace kolum

#endif
