// Ctrl-C takes effect between files: the current file is finished first, because a disc image may
// be mounted.
#ifndef KOLUM_TOOL_TERMINAL_INTERRUPTION_H
#define KOLUM_TOOL_TERMINAL_INTERRUPTION_H

#include <signal.h>

#include <array>
#include <chrono>
#include <optional>

namespace kolum::tool {

// Ends the tool as the signal would have; caught in main().
struct Interrupted {
  int signal;
};

// While it exists, the first SIGINT, SIGTERM or SIGHUP waits for check(); the second ends the tool
// at once.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // Throws Interrupted if a signal came.
  static void check();
  // Whether one came.
  static bool hasCome();

 private:
  std::array<struct sigaction, 3> before_ = {};
};

// Waits until DESCRIPTOR is readable or at its end; false if that takes longer than LIMIT (if there
// is one). Throws Interrupted on a signal that an Interruption handles.
bool waitForInput(int descriptor, std::optional<std::chrono::milliseconds> limit = std::nullopt);

}  // namespace kolum::tool

#endif
