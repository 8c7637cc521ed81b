// What the external DSD tool reports about a file.
#ifndef KOLUM_READ_TAGS_DSD_TOOL_H
#define KOLUM_READ_TAGS_DSD_TOOL_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "base/xml_node.h"

namespace kolum::tags {

// The tool's document.
class DsdDocument {
 public:
  explicit DsdDocument(XMLNode tag) : tag_(std::move(tag)) {}

  // An element's text; empty if there is no such element.
  std::string text(const char* element) const;
  // The number at the start of an element's text, 0 if it does not start with one; empty if there
  // is no such element.
  std::optional<std::int32_t> number(const char* element) const;

 private:
  XMLNode tag_;
};

struct DsdToolResult {
  bool isMissing = false;  // it could not even be started
  std::optional<DsdDocument> document;
};

// Runs the tool from TOOLFOLDER (with its trailing "/") on a file. Without a folder there is no
// document.
DsdToolResult runDsdTool(const std::string& path, const char* toolFolder);

}  // namespace kolum::tags

#endif
