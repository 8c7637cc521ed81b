#include "read/exif/xmp_check.h"

#include <cstddef>

namespace kolum::exif {

namespace {

constexpr std::size_t kLongest = std::size_t{4} << 20;
constexpr int kDeepest = 64;
// Elements and attributes. A retouched photo may have thousands: each stroke is one.
constexpr int kMostNodes = 100'000;

// The end of the tag that begins TEXT: ">" outside of quotes. Counts attributes.
std::size_t endOfTag(std::string_view text, int& nodes) {
  char quote = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quote == 0 && c == '>') return i;
    if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
      ++nodes;
    } else if (c == quote) {
      quote = 0;
    }
  }
  return text.npos;
}

// The size of what begins with "<" and is no element; 0 if it is one.
std::size_t sizeOfOther(std::string_view text) {
  struct Row {
    std::string_view begin;
    std::string_view end;
  };
  constexpr Row kRows[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
  for (const Row& row : kRows) {
    if (!text.starts_with(row.begin)) continue;
    const std::size_t end = text.find(row.end);
    return end == text.npos ? text.size() : end + row.end.size();
  }
  return 0;
}

}  // namespace

bool isHarmlessXmp(std::string_view text) {
  if (text.size() > kLongest) return false;
  int depth = 0;
  int nodes = 0;
  for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at)) {
    const std::string_view rest = text.substr(at);
    if (const std::size_t other = sizeOfOther(rest); other > 0) {
      at += other;
      continue;
    }
    if (rest.starts_with("<!")) return false;  // a document type, which may define entities
    const std::size_t end = endOfTag(rest, nodes);
    if (end == rest.npos) return false;
    if (rest.starts_with("</"))
      --depth;
    else if (rest[end - 1] != '/')
      ++depth;
    if (depth > kDeepest || ++nodes > kMostNodes) return false;
    at += end;
  }
  return true;
}

}  // namespace kolum::exif
