#include "terminal/context.h"

#include "terminal/text.h"

namespace kolum::tool {

void addFailure(Result& result, const Failure& failure) {
  Result error;
  error.data("code", describe::codeOf(failure.cause));
  error.data("reason", failure.reason);
  result.data("error", error);
}

void Context::fail(std::string_view name, std::string_view reason) {
  failed_ = true;
  note(name, reason);
}

void Context::fail(std::string_view reason) {
  failed_ = true;
  channels.writeMessage("kolum: " + printable(reason) + "\n");
}

void Context::fail(std::string_view file, const Failure& failure) {
  const std::string_view reason = failure.reason;
  fail(file, failure.advice.empty() ? reason : failure.reason + "; " + failure.advice);
  if (!json) return;
  Result result = Result::ofFile(file);
  addFailure(result, failure);
  printer.block(result);
}

void Context::note(std::string_view name, std::string_view text) {
  const std::string shown = name.empty() ? "\"\"" : printable(name);
  channels.writeMessage("kolum: " + shown + ": " + printable(text) + "\n");
}

}  // namespace kolum::tool
