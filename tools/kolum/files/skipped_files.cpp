#include "files/skipped_files.h"

#include <algorithm>
#include <vector>

#include "ascii.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

constexpr std::size_t kLongestExtension = 16;  // in a longer one the dot is part of a sentence
constexpr std::size_t kShownExtensions = 10;
constexpr const char* kNoExtension = "without an extension";

// In lower case, including the dot.
std::string extensionOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || name.size() - dot - 1 > kLongestExtension ||
      dot + 1 == name.size())
    return kNoExtension;
  return ascii::lower(name.substr(dot));
}

}  // namespace

void SkippedFiles::add(std::string_view name) {
  ++count_;
  ++byExtension_[extensionOf(name)];
}

std::string SkippedFiles::text() const {
  std::vector<std::pair<std::string, std::size_t>> rows(byExtension_.begin(), byExtension_.end());
  std::stable_sort(rows.begin(), rows.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  std::vector<std::string> parts;
  std::size_t shown = 0;
  for (const auto& [extension, count] : rows) {
    if (parts.size() == kShownExtensions) break;
    parts.push_back(std::to_string(count) + " " + extension);
    shown += count;
  }
  if (shown < count_) parts.push_back(std::to_string(count_ - shown) + " of other extensions");
  return counted(count_, "file") + " skipped (" + joined(parts) + ")";
}

}  // namespace kolum::tool
