// Results: built once as keys and values, shown as aligned text or as one JSON object a line.
#ifndef KOLUM_TOOL_TERMINAL_OUTPUT_H
#define KOLUM_TOOL_TERMINAL_OUTPUT_H

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "terminal/channels.h"

namespace kolum::tool {

class Result;

// A number with its name, {"id":28,"name":"CODEC_ID_H264"}; a number without a name shows alone.
struct Identifier {
  std::int64_t id;
  std::string name;
  std::string_view prefix = {};  // of the name, left out in text

  Result object() const;
  std::string text() const;  // "H264 (28)"
};

// The number of the form of all JSON objects, in each as "schema". It changes when a key changes
// its meaning or goes; keys may be added under the same number. docs/kolum.schema.json describes
// it.
inline constexpr int kJsonSchema = 1;

// One result: a file's, or an answer that belongs to no file; also an object in the JSON of
// another.
//
// JSON keys and text lines are kept side by side: data() adds a key only, show() a line only, and
// the others both. Text values may be any bytes; they are made safe where they are printed. An
// empty text is left out.
class Result {
 public:
  Result();
  Result(Result&& other) noexcept;
  Result& operator=(Result&& other) noexcept;
  ~Result();
  // The result of a file: its name heads the block and stands in "file", and when it is not UTF-8
  // also, percent-encoded, in "fileBytes".
  static Result ofFile(std::string_view file);
  // A block with a heading of its own, for list().
  static Result titled(std::string title);

  void data(const std::string& key, std::string_view text);
  void data(const std::string& key, const Result& object);
  void data(const std::string& key, const Identifier& identifier);
  void data(const std::string& key, const std::vector<std::string>& texts);
  void data(const std::string& key, const std::vector<Result>& objects);
  template <typename Number>
  requires std::is_arithmetic_v<Number>
  void data(const std::string& key, Number number) {
    if constexpr (std::is_same_v<Number, bool>) {
      put(key, number);
    } else if constexpr (std::is_floating_point_v<Number>) {
      put(key, double{number});
    } else if constexpr (std::is_signed_v<Number>) {
      put(key, std::int64_t{number});
    } else {
      put(key, std::uint64_t{number});
    }
  }
  // A number, unless it is 0, which stands for unknown.
  void known(const std::string& key, std::uint64_t value);
  void show(std::string label, std::string text);

  void text(const std::string& key, std::string label, std::string_view value);
  void number(const std::string& key, std::string label, std::int64_t value);
  void identifier(const std::string& key, std::string label, const Identifier& value);
  void duration(const std::string& key, std::string label, std::int64_t seconds);
  void bitRate(const std::string& key, std::string label, std::uint64_t bitsPerSecond);
  void frequency(const std::string& key, std::string label, std::uint64_t hertz);
  void texts(const std::string& key, const std::string& label,
             const std::vector<std::string>& values);
  // An array of objects; in text each becomes an indented block under its own title.
  void list(const std::string& key, std::vector<Result> items);

  const nlohmann::ordered_json& json() const { return *json_; }
  // Both end without an empty line. asBlock indents by INDENT characters, and on request sets
  // titles and labels off by colours; asRow puts the lines' values and then the title into columns
  // of the given widths.
  std::string asBlock(bool inColour, std::size_t indent = 0) const;
  std::string asRow(const std::vector<std::size_t>& widths) const;

 private:
  void put(const std::string& key, bool value);
  void put(const std::string& key, double value);
  void put(const std::string& key, std::int64_t value);
  void put(const std::string& key, std::uint64_t value);

  struct Line {
    std::string label;
    std::string text;
  };

  std::string title_;
  std::unique_ptr<nlohmann::ordered_json>
      json_;  // the header of the whole type takes long to compile
  std::vector<Line> lines_;
  std::vector<Result> sections_;
};

struct Column {
  std::string title;
  std::size_t width;  // of the longest value expected
};

// Prints results as they come, in the form that was asked for.
class Printer {
 public:
  Printer(const Channels& channels, bool json)
      : channels_(channels), json_(json), inColour_(channels.mayColourResults()) {}

  // One block a result, an empty line between two.
  void block(const Result& result);
  // What the table below it is about; an empty line separates it from what is above. Text only.
  void heading(const std::string& text);
  // Starts a table; row() then prints one line a result.
  void table(const std::vector<Column>& columns);
  void row(const Result& result);
  // Text that is a result as it stands.
  void raw(std::string_view text) { channels_.writeResults(text); }

 private:
  void jsonLine(const Result& result);

  const Channels& channels_;
  bool json_;
  bool inColour_;
  bool separate_ = false;
  std::vector<std::size_t> widths_;
};

}  // namespace kolum::tool

#endif
