// Results: built once as keys and values, shown as aligned text or as one JSON object per line.
#ifndef KOLUM_TOOL_TERMINAL_OUTPUT_H
#define KOLUM_TOOL_TERMINAL_OUTPUT_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "terminal/channels.h"

namespace kolum::tool {

class Result;

// A number with its name, {"id":28,"name":"CODEC_ID_H264"}; without a name, only the number.
struct Identifier {
  std::int64_t id;
  std::string name;
  std::string_view prefix = {};  // of the name, omitted in text

  Result object() const;
  std::string text() const;  // "H264 (28)"
};

// One result: a file's, or an answer that belongs to no file; also an object nested in another
// result's JSON.
//
// JSON keys and text lines are kept side by side: data() adds only a key, show() only a line, all
// others both. Text values may contain any bytes; they are made safe for printing. An empty text is
// omitted.
class Result {
 public:
  Result();
  Result(Result&& other) noexcept;
  Result& operator=(Result&& other) noexcept;
  ~Result();
  // The result of a file: its name is the block's heading and the value of "file"; if it is not
  // UTF-8, "fileBytes" also has it percent-encoded.
  static Result ofFile(std::string_view file);
  // A block with its own heading, for list().
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
  // All keys of a JSON object.
  void data(const nlohmann::ordered_json& object);
  // A number, unless it is 0, which means unknown.
  void known(const std::string& key, std::uint64_t value);
  void show(std::string label, std::string text);
  // What stands for the whole result in text: a row of CSV.
  void setLine(std::string line) { line_ = std::move(line); }

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
  const std::string& line() const { return line_; }
  // Neither ends with an empty line. asBlock indents by INDENT characters and optionally highlights
  // titles and labels with colours; asRow puts the lines' values and then the title into columns of
  // the given widths.
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
      json_;  // the header of the full type takes long to compile
  std::vector<Line> lines_;
  std::vector<Result> sections_;
  std::string line_;
};

struct Column {
  std::string title;
  std::size_t width;  // of the longest expected value
};

// Prints results as they come, in the requested form.
class Printer {
 public:
  Printer(const Channels& channels, bool json)
      : channels_(channels),
        json_(json),
        inColour_(channels.mayColourResults()),
        isShown_(channels.areResultsShown()) {}

  // One block per result, separated by empty lines.
  void block(const Result& result);
  // A line above a table, separated from what precedes it by an empty line. Text only.
  void heading(const std::string& text);
  // Starts a table; row() then prints one line per result.
  void table(const std::vector<Column>& columns);
  void row(const Result& result);
  // A result as JSON, whatever form the others have.
  void json(const Result& result);
  // A row of CSV, with its line end.
  void csv(std::string_view row);
  // Text that is already a result, and safe.
  void raw(std::string_view text) { channels_.writeResults(text); }

 private:
  const Channels& channels_;
  bool json_;
  bool inColour_;
  bool isShown_;
  std::mutex mutex_;  // several threads may print blocks
  bool separate_ = false;
  std::vector<std::size_t> widths_;
};

}  // namespace kolum::tool

#endif
