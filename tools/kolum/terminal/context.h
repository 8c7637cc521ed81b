// What every command gets: destinations of results and messages, and the common options.
#ifndef KOLUM_TOOL_TERMINAL_CONTEXT_H
#define KOLUM_TOOL_TERMINAL_CONTEXT_H

#include <atomic>
#include <stdexcept>
#include <string>
#include <string_view>

#include "describe/failure.h"
#include "terminal/channels.h"
#include "terminal/output.h"

namespace kolum::tool {

using describe::Cause;
using describe::Failure;

// Invalid arguments that the parser does not detect: ends the tool with status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Adds "error" with code and reason to the JSON.
void addFailure(Result& result, const Failure& failure);

class Context {
 public:
  Context(const Channels& ownChannels, bool asJson)
      : json(asJson), channels(ownChannels), printer(ownChannels, asJson) {}

  // Writes "kolum: NAME: REASON" to standard error, or without a name "kolum: REASON"; the tool
  // continues and ends with status 1.
  void fail(std::string_view name, std::string_view reason);
  void fail(std::string_view reason);
  // The same for a file, which also gets a JSON line.
  void fail(std::string_view file, const Failure& failure);
  // The same form for useful information that is not a failure.
  void note(std::string_view name, std::string_view text);
  // For what was reported otherwise.
  void setFailed() { failed_ = true; }
  bool failed() const { return failed_; }

  const bool json;
  const Channels& channels;
  Printer printer;

 private:
  std::atomic<bool> failed_ = false;
};

}  // namespace kolum::tool

#endif
