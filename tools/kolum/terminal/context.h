// What every command gets: where results and messages go, and what the command line said for all.
#ifndef KOLUM_TOOL_TERMINAL_CONTEXT_H
#define KOLUM_TOOL_TERMINAL_CONTEXT_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "terminal/channels.h"
#include "terminal/failure.h"
#include "terminal/output.h"

namespace kolum::tool {

// Arguments that no parser rule catches: ends the tool with status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "error" with code and reason, in JSON.
void addFailure(Result& result, const Failure& failure);

class Context {
 public:
  Context(const Channels& ownChannels, bool asJson)
      : json(asJson), channels(ownChannels), printer(ownChannels, asJson) {}

  // "kolum: NAME: REASON" on standard error, or without a name "kolum: REASON"; the tool goes on
  // and ends with status 1.
  void fail(std::string_view name, std::string_view reason);
  void fail(std::string_view reason);
  // The same for a file, which also gets a line in JSON.
  void fail(std::string_view file, const Failure& failure);
  // The same form for what is worth telling but no failure.
  void note(std::string_view name, std::string_view text);
  bool failed() const { return failed_; }

  const bool json;
  const Channels& channels;
  Printer printer;

 private:
  bool failed_ = false;
};

}  // namespace kolum::tool

#endif
