// Running programs, and test bodies in processes of their own.
#ifndef KOLUM_TESTS_SUPPORT_CHILD_PROCESS_H
#define KOLUM_TESTS_SUPPORT_CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::test {

using Environment = std::map<std::string, std::string>;

struct RunOptions {
  Environment environment = {};  // added to the test's own
  std::string input = {};        // standard input, as a file
  std::string folder = {};       // working folder; empty for the test's own
  std::chrono::seconds timeout{60};
};

struct RunResult {
  int status = -1;        // exit status, or minus the number of the signal
  bool timedOut = false;  // it was killed, with the processes of its group
  std::string out;
  std::string err;
};

// Runs a program (looked up in PATH), without a shell, until it and its outputs have ended. Status
// 127: it cannot be run; 126: there is no such working folder.
RunResult run(const std::vector<std::string>& arguments, const RunOptions& options = {});

// As run(), for tools that must succeed: throws with the tool's words when they do not.
std::string mustRun(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Splits text into words as a shell would: blanks, both kinds of quotes, backslashes. Throws when a
// quote is left open.
std::vector<std::string> shellWords(std::string_view text);

// Runs a test body, with ordinary assertions, in a child process with these environment variables.
// Failures in the child fail the calling test; so do a crash, a sanitizer's report (leaks of the
// body included, if the test has no other threads) and an exit before the body's end. A body that
// skips makes the test skipped.
void runInChild(const std::function<void()>& body, const Environment& environment = {});

// Runs the body in this process and ends the process as failed if it takes longer: a test that
// would hang fails instead.
void withinSeconds(int seconds, const std::function<void()>& body);

}  // namespace kolum::test

#endif
