#include "files/csv.h"

#include <string_view>

namespace kolum::tool {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += c;
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace

std::string csvRow(const std::vector<std::string>& values) {
  std::string row;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) row += ',';
    row += field(values[i]);
  }
  return row.append(kLineEnd);
}

}  // namespace kolum::tool
