// Tables of keys with the way to each value.
#ifndef KOLUM_DESCRIBE_TABLE_H
#define KOLUM_DESCRIBE_TABLE_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "describe/keys.h"
#include "describe/value.h"

namespace kolum::describe {

// A key, and its value in a record; null leaves the key out.
template <typename Record>
struct Row {
  Key key;
  Value (*value)(const Record&);
};

template <typename Record, std::size_t kSize>
constexpr std::array<Key, kSize> keysOf(const std::array<Row<Record>, kSize>& rows) {
  std::array<Key, kSize> keys;
  for (std::size_t i = 0; i < kSize; ++i) keys[i] = rows[i].key;
  return keys;
}

template <typename Record, std::size_t kSize>
void add(Value& object, const std::array<Row<Record>, kSize>& rows, const Record& record) {
  for (const Row<Record>& row : rows) {
    Value value = row.value(record);
    if (!value.isNull()) object.set(row.key.name, std::move(value));
  }
}

template <typename Record, std::size_t kSize>
Value objectOf(const std::array<Row<Record>, kSize>& rows, const Record& record) {
  Value object = Value::object();
  add(object, rows, record);
  if (object.isEmpty()) return nullptr;
  return object;
}

template <typename Record, std::size_t kSize>
Value objectsOf(const std::array<Row<Record>, kSize>& rows, const std::vector<Record>& records) {
  Value objects = Value::array();
  for (const Record& record : records) {
    Value object = objectOf(rows, record);
    objects.push(object.isNull() ? Value::object() : std::move(object));
  }
  if (objects.isEmpty()) return nullptr;
  return objects;
}

// Values that may be unknown.

template <typename Content>
Value known(const std::optional<Content>& value) {
  if (!value) return nullptr;
  if constexpr (std::is_floating_point_v<Content>)
    if (!std::isfinite(*value)) return nullptr;
  return *value;
}

inline Value text(std::string_view value) {
  if (value.empty()) return nullptr;
  return std::string(value);
}

inline Value texts(const std::vector<std::string>& values) {
  if (values.empty()) return nullptr;
  return values;
}

// A number that is unknown unless it is positive.
template <typename Number>
Value positive(Number value) {
  if constexpr (std::is_floating_point_v<Number>)
    if (!std::isfinite(value)) return nullptr;
  if (value <= 0) return nullptr;
  return value;
}
template <typename Number>
Value positive(const std::optional<Number>& value) {
  return value ? positive(*value) : Value();
}

// Left out unless it is so.
inline Value ifTrue(bool value) {
  return value ? Value(true) : Value();
}

inline Value identifier(std::int64_t id, std::string_view name) {
  Value object = Value::object();
  object.set("id", id);
  if (!name.empty()) object.set("name", name);
  return object;
}

}  // namespace kolum::describe

#endif
