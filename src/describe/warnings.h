// What is odd about a file that can be described.
#ifndef KOLUM_DESCRIBE_WARNINGS_H
#define KOLUM_DESCRIBE_WARNINGS_H

#include <string>
#include <string_view>
#include <vector>

namespace kolum::describe {

struct Document;

struct Warning {
  std::string_view code;  // for programs
  std::string reason;     // in words
};

std::vector<Warning> warningsOf(const Document& document);
// All codes that there are; docs/tool.md lists them.
std::vector<std::string_view> codesOfWarnings();

}  // namespace kolum::describe

#endif
