// Lines for the host's debug channels, collected while a file is probed. The edges of libraries and
// programs write them out.
#ifndef KOLUM_BASE_TRACE_H
#define KOLUM_BASE_TRACE_H

#include <string>
#include <utility>
#include <vector>

namespace kolum {

enum class TraceChannel {
  kOutput,  // standard output
  kError,   // standard error
  kLog,     // the host's debug log
};

struct TraceLine {
  TraceChannel channel;
  std::string function;  // name to log the line under; empty except for kLog
  std::string text;      // with its line end, if any
};

class Trace {
 public:
  void output(std::string text) { lines_.push_back({TraceChannel::kOutput, "", std::move(text)}); }
  void error(std::string text) { lines_.push_back({TraceChannel::kError, "", std::move(text)}); }
  void log(const char* function, std::string text) {
    lines_.push_back({TraceChannel::kLog, function, std::move(text)});
  }
  // Takes over the lines of MORE.
  void add(const Trace& more) {
    lines_.insert(lines_.end(), more.lines_.begin(), more.lines_.end());
  }
  const std::vector<TraceLine>& lines() const { return lines_; }

 private:
  std::vector<TraceLine> lines_;
};

// Writes the lines to where they belong. For the edges of programs and libraries only.
void write(const Trace& trace);

}  // namespace kolum

#endif
