#include "terminal/output.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/percent.h"
#include "describe/json.h"
#include "terminal/data_text.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kColumnGap = 2;

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

constexpr std::string_view kBold = "\x1b[1m";
constexpr std::string_view kFaint = "\x1b[2m";
constexpr std::string_view kPlain = "\x1b[0m";

std::string coloured(bool inColour, std::string_view colour, const std::string& text) {
  if (!inColour || text.empty()) return text;
  return std::string(colour).append(text).append(kPlain);
}

// One line of JSON, with the number of the schema; without the closing newline. Texts may contain
// any bytes: invalid UTF-8 becomes U+FFFD, so that it is valid JSON.
std::string jsonText(const Result& result) {
  using Handler = Json::error_handler_t;
  Json line = {{"schema", describe::kJsonSchema}};
  line.update(result.json());
  return line.dump(-1, ' ', false, Handler::replace);
}

}  // namespace

Result Identifier::object() const {
  Result object;
  object.data("id", id);
  if (!name.empty()) object.data("name", name);
  return object;
}

std::string Identifier::text() const {
  const std::string number = std::to_string(id);
  return name.empty() ? number : name.substr(prefix.size()) + " (" + number + ")";
}

Result::Result() : json_(std::make_unique<Json>(Json::object())) {}
Result::Result(Result&&) noexcept = default;
Result& Result::operator=(Result&&) noexcept = default;
Result::~Result() = default;

Result Result::ofFile(std::string_view file) {
  Result result = titled(std::string(file));
  result.data("file", std::string(file));
  if (!isUtf8(file)) result.data("fileBytes", percentEncoded(file));
  return result;
}

Result Result::titled(std::string title) {
  Result result;
  result.title_ = std::move(title);
  return result;
}

void Result::put(const std::string& key, bool value) {
  (*json_)[key] = value;
}

void Result::put(const std::string& key, double value) {
  (*json_)[key] = value;
}

void Result::put(const std::string& key, std::int64_t value) {
  (*json_)[key] = value;
}

void Result::put(const std::string& key, std::uint64_t value) {
  (*json_)[key] = value;
}

void Result::data(const std::string& key, std::string_view text) {
  (*json_)[key] = text;
}

void Result::data(const std::string& key, const Result& object) {
  (*json_)[key] = object.json();
}

void Result::data(const std::string& key, const Identifier& identifier) {
  data(key, identifier.object());
}

void Result::data(const std::string& key, const std::vector<std::string>& texts) {
  (*json_)[key] = texts;
}

void Result::data(const std::string& key, const std::vector<Result>& objects) {
  Json array = Json::array();
  for (const Result& object : objects) array.push_back(object.json());
  (*json_)[key] = std::move(array);
}

void Result::data(const Json& object) {
  json_->update(object);
}

void Result::known(const std::string& key, std::uint64_t value) {
  if (value != 0) data(key, value);
}

void Result::show(std::string label, std::string text) {
  lines_.push_back({std::move(label), std::move(text)});
}

void Result::text(const std::string& key, std::string label, std::string_view value) {
  if (value.empty()) return;
  data(key, std::string(value));
  show(std::move(label), std::string(value));
}

void Result::number(const std::string& key, std::string label, std::int64_t value) {
  data(key, value);
  show(std::move(label), std::to_string(value));
}

void Result::identifier(const std::string& key, std::string label, const Identifier& value) {
  data(key, value);
  show(std::move(label), value.text());
}

void Result::duration(const std::string& key, std::string label, std::int64_t seconds) {
  data(key, seconds);
  show(std::move(label), durationText(seconds));
}

void Result::bitRate(const std::string& key, std::string label, std::uint64_t bitsPerSecond) {
  data(key, bitsPerSecond);
  show(std::move(label), bitRateText(bitsPerSecond));
}

void Result::frequency(const std::string& key, std::string label, std::uint64_t hertz) {
  data(key, hertz);
  show(std::move(label), frequencyText(hertz));
}

void Result::texts(const std::string& key, const std::string& label,
                   const std::vector<std::string>& values) {
  data(key, values);
  std::string first = label;
  for (const std::string& value : values) show(std::exchange(first, ""), value);
}

void Result::list(const std::string& key, std::vector<Result> items) {
  data(key, items);
  for (Result& item : items) sections_.push_back(std::move(item));
}

std::string Result::asBlock(bool inColour, std::size_t indent) const {
  std::string out;
  std::size_t inner = indent;
  if (!title_.empty()) {
    out += std::string(indent, ' ') + coloured(inColour, kBold, printable(title_)) + "\n";
    inner += 2;
  }
  std::size_t width = 0;
  for (const Line& line : lines_) width = std::max(width, line.label.size());
  for (const Line& line : lines_) {
    out += std::string(inner, ' ');
    const bool alone = line.text.empty();
    out += coloured(inColour, kFaint, alone ? line.label : padded(line.label, width + kColumnGap));
    out += printable(line.text);
    out += '\n';
  }
  for (const Result& section : sections_) out += section.asBlock(inColour, inner);
  return out;
}

std::string Result::asRow(const std::vector<std::size_t>& widths) const {
  std::string out;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const std::size_t width = i < widths.size() ? widths[i] : 0;
    out += padded(printable(lines_[i].text), width) + std::string(kColumnGap, ' ');
  }
  out += printable(title_);
  out.erase(out.find_last_not_of(' ') + 1);
  return out + "\n";
}

void Printer::json(const Result& result) {
  const std::string text = jsonText(result);
  raw((isShown_ ? jsonForTerminal(text) : text) + "\n");
}

void Printer::csv(std::string_view row) {
  if (isShown_) return raw(csvForTerminal(row));
  raw(row);
}

void Printer::block(const Result& result) {
  const std::lock_guard lock(mutex_);
  if (json_) return json(result);
  if (!result.line().empty()) return csv(result.line());
  if (std::exchange(separate_, true)) raw("\n");
  raw(result.asBlock(inColour_));
}

void Printer::heading(const std::string& text) {
  if (json_) return;
  if (std::exchange(separate_, true)) raw("\n");
  raw(coloured(inColour_, kBold, text) + "\n");
}

void Printer::table(const std::vector<Column>& columns) {
  widths_.clear();
  Result header;
  for (const Column& column : columns) {
    widths_.push_back(std::max(column.width, column.title.size()));
    header.show("", column.title);
  }
  if (!json_) raw(coloured(inColour_, kBold, header.asRow(widths_)));
}

void Printer::row(const Result& result) {
  if (json_) return json(result);
  raw(result.asRow(widths_));
}

}  // namespace kolum::tool
