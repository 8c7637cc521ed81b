// Records what the code under test logs.
//
// A test program that uses LogRecorder gets its own koDebugUtilWrapperPrint, which replaces the
// host library's: messages then go to the existing recorders and nowhere else.
//
//   LogRecorder log;
//   EXPECT_EQ(socket.Open(""), 2);
//   EXPECT_THAT(log.texts(), ElementsAre("socketPath is empty\n"));
#ifndef KOLUM_TESTS_SUPPORT_LOG_RECORDER_H
#define KOLUM_TESTS_SUPPORT_LOG_RECORDER_H

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kolum::test {

struct LogMessage {
  int level = 0;
  std::optional<std::string> colour;  // empty: the caller passed null
  std::string source;
  int line = 0;
  std::string function;
  std::string format;  // as passed
  std::string text;    // formatted
};

void PrintTo(const LogMessage& message, std::ostream* out);

// Every message logged by any thread of this process between construction and destruction.
class LogRecorder {
 public:
  LogRecorder();
  ~LogRecorder();
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  std::vector<LogMessage> messages() const;
  std::vector<std::string> texts() const;
  void clear();
};

}  // namespace kolum::test

#endif
