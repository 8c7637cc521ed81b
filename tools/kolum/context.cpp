#include "context.h"

#include "text.h"

namespace kolum::tool {

void Context::fail(std::string_view name, std::string_view reason) {
  failed_ = true;
  note(name, reason);
}

void Context::note(std::string_view name, std::string_view text) {
  std::string line = "kolum: ";
  if (!name.empty()) line += printable(name) + ": ";
  channels.writeMessage(line + printable(text) + "\n");
}

}  // namespace kolum::tool
