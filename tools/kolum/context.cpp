#include "context.h"

#include "text.h"

namespace kolum::tool {

void Context::fail(std::string_view name, std::string_view reason) {
  failed_ = true;
  note(name, reason);
}

void Context::fail(std::string_view reason) {
  failed_ = true;
  channels.writeMessage("kolum: " + printable(reason) + "\n");
}

void Context::note(std::string_view name, std::string_view text) {
  const std::string shown = name.empty() ? "\"\"" : printable(name);
  channels.writeMessage("kolum: " + shown + ": " + printable(text) + "\n");
}

}  // namespace kolum::tool
