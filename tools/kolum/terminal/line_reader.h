// Lines of a stream, however long they are.
#ifndef KOLUM_TOOL_TERMINAL_LINE_READER_H
#define KOLUM_TOOL_TERMINAL_LINE_READER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kolum::tool {

class LineReader {
 public:
  // Of lines longer than LONGEST, none is kept in memory.
  LineReader(int descriptor, std::size_t longest) : descriptor_(descriptor), longest_(longest) {}

  enum class What { kLine, kTooLong, kNothingYet, kEnd };
  // Waits for the next line, at most as long as LIMIT says (no limit if it is empty). Throws
  // Interrupted like waitForInput(), and std::system_error if the stream cannot be read.
  What next(std::optional<std::chrono::milliseconds> limit = std::nullopt);

  // The line without its newline; empty if it was too long.
  const std::string& line() const { return line_; }
  std::uint64_t number() const { return number_; }  // from 1

 private:
  std::optional<What> takeLine();
  What finished();

  int descriptor_;
  std::size_t longest_;
  std::string pending_;
  std::size_t searched_ = 0;  // of pending_, without a newline
  bool isTooLong_ = false;    // the line that pending_ belongs to
  bool isAtEnd_ = false;
  std::string line_;
  std::uint64_t number_ = 0;
};

}  // namespace kolum::tool

#endif
