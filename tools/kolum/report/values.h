// Values of documents that strangers may have written: anything may be missing or have another
// type.
#ifndef KOLUM_TOOL_REPORT_VALUES_H
#define KOLUM_TOOL_REPORT_VALUES_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace kolum::tool {

// Null if there is no such place.
inline const nlohmann::ordered_json* valueAt(const nlohmann::ordered_json& document,
                                             const char* pointer) {
  const nlohmann::ordered_json::json_pointer place(pointer);
  return document.contains(place) ? &document.at(place) : nullptr;
}

inline std::string textAt(const nlohmann::ordered_json& document, const char* pointer) {
  const auto* value = valueAt(document, pointer);
  return value != nullptr && value->is_string() ? value->get<std::string>() : "";
}

// TEXT, a name of the library or of a standard, without PREFIX if it begins so.
inline std::string without(std::string_view prefix, const std::string& text) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

inline std::optional<double> numberAt(const nlohmann::ordered_json& document, const char* pointer) {
  const auto* value = valueAt(document, pointer);
  return value != nullptr && value->is_number() ? std::optional(value->get<double>())
                                                : std::nullopt;
}

inline std::optional<std::int64_t> integerAt(const nlohmann::ordered_json& document,
                                             const char* pointer) {
  const auto* value = valueAt(document, pointer);
  return value != nullptr && value->is_number_integer() ? std::optional(value->get<std::int64_t>())
                                                        : std::nullopt;
}

}  // namespace kolum::tool

#endif
