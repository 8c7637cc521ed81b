// Documents as JSON.
#ifndef KOLUM_DESCRIBE_JSON_H
#define KOLUM_DESCRIBE_JSON_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "describe/document.h"

namespace kolum::describe {

// The number of the format of all JSON output. It changes when a key changes its meaning or is
// removed; keys may be added under the same number. docs/kolum.schema.json describes it.
inline constexpr int kJsonSchema = 2;

// The keys in their order, from "file" on.
nlohmann::ordered_json jsonOf(const Document& document);

// One line, with the number of the schema; without the closing newline. Texts may contain any
// bytes: invalid UTF-8 becomes U+FFFD, so that it is valid JSON.
std::string lineOf(const nlohmann::ordered_json& object);

// "error" of a document.
nlohmann::ordered_json errorOf(const Failure& failure);

}  // namespace kolum::describe

#endif
