// Documents of files as results: their JSON, and the lines that people see.
#ifndef KOLUM_TOOL_FILES_DOCUMENT_TEXT_H
#define KOLUM_TOOL_FILES_DOCUMENT_TEXT_H

#include "describe/document.h"
#include "terminal/output.h"

namespace kolum::tool {

Result resultOf(const describe::Document& document);

}  // namespace kolum::tool

#endif
