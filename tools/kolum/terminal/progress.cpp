#include "terminal/progress.h"

#include <string>

#include "terminal/text.h"

namespace kolum::tool {

namespace {

constexpr auto kBetween = std::chrono::milliseconds(100);

}  // namespace

void Progress::next(std::string_view name) {
  ++count_;
  const auto now = std::chrono::steady_clock::now();
  if (now < due_) return;
  due_ = now + kBetween;
  const std::string shown = printable(name.substr(name.rfind('/') + 1));
  channels_.showProgress("File " + std::to_string(count_) + "  " + shown);
}

}  // namespace kolum::tool
