// Tables of keys with the way to each value.
#ifndef KOLUM_DESCRIBE_TABLE_H
#define KOLUM_DESCRIBE_TABLE_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "describe/keys.h"

namespace kolum::describe {

using Json = nlohmann::ordered_json;

// A key, and its value in a record; null leaves the key out.
template <typename Record>
struct Row {
  Key key;
  Json (*value)(const Record&);
};

template <typename Record, std::size_t kSize>
constexpr std::array<Key, kSize> keysOf(const std::array<Row<Record>, kSize>& rows) {
  std::array<Key, kSize> keys;
  for (std::size_t i = 0; i < kSize; ++i) keys[i] = rows[i].key;
  return keys;
}

template <typename Record, std::size_t kSize>
void add(Json& object, const std::array<Row<Record>, kSize>& rows, const Record& record) {
  for (const Row<Record>& row : rows) {
    Json value = row.value(record);
    if (!value.is_null()) object[std::string(row.key.name)] = std::move(value);
  }
}

template <typename Record, std::size_t kSize>
Json objectOf(const std::array<Row<Record>, kSize>& rows, const Record& record) {
  Json object = Json::object();
  add(object, rows, record);
  if (object.empty()) return nullptr;
  return object;
}

template <typename Record, std::size_t kSize>
Json objectsOf(const std::array<Row<Record>, kSize>& rows, const std::vector<Record>& records) {
  Json objects = Json::array();
  for (const Record& record : records) {
    Json object = objectOf(rows, record);
    objects.push_back(object.is_null() ? Json::object() : std::move(object));
  }
  if (objects.empty()) return nullptr;
  return objects;
}

// Values that may be unknown.

template <typename Value>
Json known(const std::optional<Value>& value) {
  if (!value) return nullptr;
  if constexpr (std::is_floating_point_v<Value>)
    if (!std::isfinite(*value)) return nullptr;
  return *value;
}

inline Json text(std::string_view value) {
  if (value.empty()) return nullptr;
  return std::string(value);
}

inline Json texts(const std::vector<std::string>& values) {
  if (values.empty()) return nullptr;
  return values;
}

// A number that is unknown unless it is positive.
template <typename Number>
Json positive(Number value) {
  if constexpr (std::is_floating_point_v<Number>)
    if (!std::isfinite(value)) return nullptr;
  if (value <= 0) return nullptr;
  return value;
}
template <typename Number>
Json positive(const std::optional<Number>& value) {
  return value ? positive(*value) : Json();
}

// Left out unless it is so.
inline Json ifTrue(bool value) {
  return value ? Json(true) : Json();
}

inline Json identifier(std::int64_t id, std::string_view name) {
  Json object = {{"id", id}};
  if (!name.empty()) object["name"] = name;
  return object;
}

}  // namespace kolum::describe

#endif
