#include "base/text.h"

#include <algorithm>
#include <cstring>

namespace kolum {

std::string joinPath(std::string_view folder, std::string_view name) {
  std::string path(folder.substr(0, kPathSize - 1));
  path += name.substr(0, kPathSize - 1 - path.size());
  return path;
}

std::optional<std::string> wholePath(std::string_view folder, std::string_view name) {
  if (folder.size() + name.size() >= kPathSize) return std::nullopt;
  return joinPath(folder, name);
}

void copyText(char* out, std::size_t size, std::string_view text) {
  const std::size_t length = std::min(text.size(), size - 1);
  std::memcpy(out, text.data(), length);
  out[length] = '\0';
}

std::string_view extensionOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? "" : name.substr(dot);
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

bool startsWithIgnoringCase(std::string_view text, std::string_view beginning) {
  return equalsIgnoringCase(text.substr(0, beginning.size()), beginning);
}

bool endsWithIgnoringCase(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() &&
         equalsIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

}  // namespace kolum
