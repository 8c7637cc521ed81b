// Documents of files as results: their JSON, and the lines that people see.
#ifndef KOLUM_TOOL_FILES_DOCUMENT_TEXT_H
#define KOLUM_TOOL_FILES_DOCUMENT_TEXT_H

#include <optional>

#include "describe/document.h"
#include "files/fields.h"
#include "terminal/output.h"

namespace kolum::tool {

// What callers want to see of documents.
struct View {
  std::optional<Fields> fields;
  bool isCsv = false;
  bool isVerbose = false;  // all keys, in text
};

Result resultOf(const describe::Document& document, const View& view);

}  // namespace kolum::tool

#endif
