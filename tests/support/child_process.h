// Running programs, and test bodies in processes of their own.
#ifndef KOLUM_TESTS_SUPPORT_CHILD_PROCESS_H
#define KOLUM_TESTS_SUPPORT_CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kolum::test {

using Environment = std::map<std::string, std::string>;

struct RunOptions {
  Environment environment = {};  // added to the test's own
  std::string input = {};        // standard input
  std::string folder = {};       // working folder; empty for the test's own
  std::chrono::seconds timeout{60};
};

struct RunResult {
  int status = -1;  // exit status, or minus the number of the signal
  bool timedOut = false;
  std::string out;
  std::string err;
};

// Runs a program (looked up in PATH), without a shell, and waits for it.
RunResult run(const std::vector<std::string>& arguments, const RunOptions& options = {});

// As run(), for tools that must succeed: throws with the tool's words when they do not.
std::string mustRun(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Splits text into words as a shell would, with single and double quotes.
std::vector<std::string> shellWords(const std::string& text);

// Runs a test body, with ordinary assertions, in a child process with these environment variables.
// Failures in the child, a crash included, fail the calling test.
void runInChild(const std::function<void()>& body, const Environment& environment = {});

// Runs the body in this process and ends the process as failed if it takes longer: a test that
// would hang fails instead.
void withinSeconds(int seconds, const std::function<void()>& body);

}  // namespace kolum::test

#endif
