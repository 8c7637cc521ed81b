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

  // An element's text; empty when there is none.
  std::string text(const char* element) const;
  // The number that an element's text begins with, 0 when it begins with none; empty when there is
  // no such element.
  std::optional<std::int32_t> number(const char* element) const;

 private:
  XMLNode tag_;
};

struct DsdToolResult {
  bool isMissing = false;  // it could not even be started
  std::optional<DsdDocument> document;
};

// Runs the tool of that folder (with its closing "/") on a file. Without a folder there is no
// document.
DsdToolResult runDsdTool(const std::string& path, const char* toolFolder);

}  // namespace kolum::tags

#endif
