// What the external DSD tool tells about a file.
#ifndef KOLUM_MEDIAINFO_DSF_TOOL_H
#define KOLUM_MEDIAINFO_DSF_TOOL_H

#include <cstdint>
#include <optional>
#include <string>

#include "xml/xml_node.h"

namespace kolum::mediainfo {

// The tool's document.
class DsfDocument {
 public:
  explicit DsfDocument(XMLNode tag) : tag_(std::move(tag)) {}

  // An element's text; empty when there is none.
  std::string text(const char* element) const;
  // The number that an element's text begins with, 0 when it begins with none; empty when there is
  // no such element.
  std::optional<std::int32_t> number(const char* element) const;

 private:
  XMLNode tag_;
};

// Runs the tool on a file and reads what it prints. Empty, with "error" on standard output when it
// could not even be started, when it prints no such document.
std::optional<DsfDocument> runDsfTool(const std::string& path);

}  // namespace kolum::mediainfo

#endif
