// Documents of files: what "kolum probe --json" prints, and what a library keeps of it.
#ifndef KOLUM_TOOL_FILES_DOCUMENTS_H
#define KOLUM_TOOL_FILES_DOCUMENTS_H

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "scan/values.h"

namespace kolum::tool {

// What is wrong with a document, in words.
class DocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// JSON of strangers: throws DocumentError unless it is one object, not nested deeply and without
// doubled keys.
nlohmann::ordered_json parsedObject(std::string_view text);

// One line of "kolum probe --json".
struct DocumentLine {
  std::string file;
  std::optional<scan::Reason> error;       // or the document
  std::string document;                    // without the keys that a library's output adds
  std::optional<std::int64_t> size;        // of the file that it describes, if it says so
  std::optional<std::int64_t> modifiedNs;  // nanoseconds since 1970
};

// Throws DocumentError.
DocumentLine parsedLine(std::string_view line);

}  // namespace kolum::tool

#endif
