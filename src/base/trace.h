// What hosts read on their debug channels while a file is looked at. It is collected here, line by
// line, and written at the edge.
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
  std::string function;  // that the line is logged under; empty except for kLog
  std::string text;      // with its line end, if it has one
};

class Trace {
 public:
  void output(std::string text) { lines_.push_back({TraceChannel::kOutput, "", std::move(text)}); }
  void error(std::string text) { lines_.push_back({TraceChannel::kError, "", std::move(text)}); }
  void log(const char* function, std::string text) {
    lines_.push_back({TraceChannel::kLog, function, std::move(text)});
  }
  const std::vector<TraceLine>& lines() const { return lines_; }

 private:
  std::vector<TraceLine> lines_;
};

// Writes the lines to where they belong. For the edges of programs and libraries only.
void write(const Trace& trace);

}  // namespace kolum

#endif
