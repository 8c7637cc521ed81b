// The progress of a long walk over files, for waiting people.
#ifndef KOLUM_TOOL_TERMINAL_PROGRESS_H
#define KOLUM_TOOL_TERMINAL_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string_view>

#include "terminal/channels.h"

namespace kolum::tool {

class Progress {
 public:
  explicit Progress(const Channels& channels) : channels_(channels) {}
  ~Progress() { channels_.showProgress(""); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // NAME comes next. Shown only after half a second, and then not too often.
  void next(std::string_view name);

 private:
  const Channels& channels_;
  std::size_t count_ = 0;
  std::chrono::steady_clock::time_point due_ =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
};

}  // namespace kolum::tool

#endif
