// Documents as JSON.
#ifndef KOLUM_DESCRIBE_JSON_H
#define KOLUM_DESCRIBE_JSON_H

#include <string>

#include "describe/document.h"

namespace kolum::describe {

// The number of the format of all JSON output. It changes when a key changes its meaning or is
// removed; keys may be added under the same number. docs/kolum.schema.json describes it.
inline constexpr int kJsonSchema = 2;

// One object in a line without line end: the number of the schema, then the keys of the document in
// their order. Bytes of texts that are not UTF-8 become U+FFFD.
std::string jsonOf(const Document& document);

}  // namespace kolum::describe

#endif
