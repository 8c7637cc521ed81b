// The values of documents, and their JSON.
//
// JSON libraries do this, too, but the destructors of their values allocate memory, which ends the
// process when there is none left. A host must survive that.
#ifndef KOLUM_DESCRIBE_VALUE_H
#define KOLUM_DESCRIBE_VALUE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kolum::describe {

// Null, a boolean, a number, a text, an array or an object. Objects keep the order of their keys.
class Value {
 public:
  using Array = std::vector<Value>;
  // Keys and their values, in the same order.
  struct Object {
    std::vector<std::string> keys;
    std::vector<Value> values;
  };

  Value() = default;
  Value(std::nullptr_t) {}                                       // NOLINT: null is a value
  Value(bool value) : value_(value) {}                           // NOLINT: and so are these
  Value(double value) : value_(value) {}                         // NOLINT
  Value(std::string value) : value_(std::move(value)) {}         // NOLINT
  Value(std::string_view value) : value_(std::string(value)) {}  // NOLINT
  Value(const char* value) : value_(std::string(value)) {}       // NOLINT
  Value(const std::vector<std::string>& texts);                  // NOLINT
  template <typename Integer>
  requires std::is_integral_v<Integer> Value(Integer value)
      : value_(static_cast<std::int64_t>(value)) {}  // NOLINT
  static Value array() { return Value(Content(Array())); }
  static Value object() { return Value(Content(Object())); }

  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
  // Of arrays and objects; others are not empty.
  bool isEmpty() const;
  // Only for arrays.
  void push(Value value);
  // Only for objects. A key that is there gets the new value.
  void set(std::string_view key, Value value);

  // Without spaces and line ends. Bytes that are not UTF-8 become U+FFFD.
  std::string json() const;

 private:
  using Content =
      std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object>;
  explicit Value(Content content) : value_(std::move(content)) {}
  void write(std::string& out) const;

  Content value_;
};

}  // namespace kolum::describe

#endif
