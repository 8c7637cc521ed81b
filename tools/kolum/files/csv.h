// Comma-separated values (RFC 4180).
#ifndef KOLUM_TOOL_FILES_CSV_H
#define KOLUM_TOOL_FILES_CSV_H

#include <string>
#include <vector>

namespace kolum::tool {

// One row, with its line end.
std::string csvRow(const std::vector<std::string>& values);

}  // namespace kolum::tool

#endif
