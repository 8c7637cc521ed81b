#include "describe/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "base/utf8.h"

namespace kolum::describe {

namespace {

constexpr std::string_view kReplacement = "\uFFFD";

struct Escape {
  char character;
  std::string_view text;
};

constexpr Escape kEscapes[] = {{'"', "\\\""}, {'\\', "\\\\"}, {'\b', "\\b"}, {'\f', "\\f"},
                               {'\n', "\\n"}, {'\r', "\\r"},  {'\t', "\\t"}};

void writeAscii(char character, std::string& out) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  for (const Escape& escape : kEscapes)
    if (escape.character == character) return static_cast<void>(out.append(escape.text));
  if (character >= ' ') return out.push_back(character);
  const auto code = static_cast<unsigned char>(character);
  out.append("\\u00").append({kDigits[code >> 4], kDigits[code & 0xF]});
}

void writeText(std::string_view text, std::string& out) {
  out += '"';
  while (!text.empty()) {
    const std::size_t length = firstUtf8Character(text).length;
    if (length == 0)
      out += kReplacement;
    else if (length == 1)
      writeAscii(text[0], out);
    else
      out += text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  out += '"';
}

// As short as it can be read back exactly; recognisable as a real number.
void writeNumber(double number, std::string& out) {
  if (!std::isfinite(number)) return static_cast<void>(out.append("null"));
  std::array<char, 64> digits = {};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), number);
  const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
  out += text;
  if (text.find_first_of(".e") == std::string_view::npos) out += ".0";
}

// COUNT elements, each by its number.
template <typename Write>
void writeAll(std::size_t count, char begin, char end, std::string& out, Write write) {
  out += begin;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) out += ',';
    write(i);
  }
  out += end;
}

}  // namespace

Value::Value(const std::vector<std::string>& texts) : value_(Array()) {
  for (const std::string& text : texts) push(text);
}

bool Value::isEmpty() const {
  if (const auto* array = std::get_if<Array>(&value_)) return array->empty();
  const auto* object = std::get_if<Object>(&value_);
  return object != nullptr && object->keys.empty();
}

void Value::push(Value value) {
  std::get<Array>(value_).push_back(std::move(value));
}

void Value::set(std::string_view key, Value value) {
  auto& [keys, values] = std::get<Object>(value_);
  const auto known = std::find(keys.begin(), keys.end(), key);
  if (known != keys.end()) {
    values[static_cast<std::size_t>(known - keys.begin())] = std::move(value);
    return;
  }
  keys.emplace_back(key);
  values.push_back(std::move(value));
}

void Value::write(std::string& out) const {
  if (const auto* boolean = std::get_if<bool>(&value_)) {
    out += *boolean ? "true" : "false";
  } else if (const auto* integer = std::get_if<std::int64_t>(&value_)) {
    out += std::to_string(*integer);
  } else if (const auto* number = std::get_if<double>(&value_)) {
    writeNumber(*number, out);
  } else if (const auto* text = std::get_if<std::string>(&value_)) {
    writeText(*text, out);
  } else if (const auto* array = std::get_if<Array>(&value_)) {
    writeAll(array->size(), '[', ']', out, [&](std::size_t i) { (*array)[i].write(out); });
  } else if (const auto* object = std::get_if<Object>(&value_)) {
    writeAll(object->keys.size(), '{', '}', out, [&](std::size_t i) {
      writeText(object->keys[i], out);
      out += ':';
      object->values[i].write(out);
    });
  } else {
    out += "null";
  }
}

std::string Value::json() const {
  std::string out;
  write(out);
  return out;
}

}  // namespace kolum::describe
