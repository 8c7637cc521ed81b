// Ctrl-C between files: what is being done for a file (a disc image may be mounted) is finished
// first.
#ifndef KOLUM_TOOL_TERMINAL_INTERRUPTION_H
#define KOLUM_TOOL_TERMINAL_INTERRUPTION_H

#include <signal.h>

#include <array>

namespace kolum::tool {

// Ends the tool as the signal would have; caught in main().
struct Interrupted {
  int signal;
};

// While it lives, the first SIGINT or SIGTERM waits for check(); the second ends the tool at once.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // Throws Interrupted when a signal came.
  static void check();

 private:
  std::array<struct sigaction, 2> before_ = {};
};

// Waits until DESCRIPTOR can be read from, or is at its end. Throws Interrupted when a signal comes
// that an Interruption waits for.
void waitForInput(int descriptor);

}  // namespace kolum::tool

#endif
