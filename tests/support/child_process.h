// Runs programs, and test bodies in their own processes.
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
  Environment environment = {};  // added to the test's
  std::string input = {};        // standard input, as a file
  std::string folder = {};       // working folder; empty for the test's
  std::chrono::seconds timeout{60};
};

struct RunResult {
  int status = -1;        // exit status, or the negated number of the signal
  bool timedOut = false;  // it was killed, along with its process group
  std::string out;
  std::string err;
};

// Runs a program (looked up in PATH), without a shell, until it has ended and its outputs are
// closed. Status 127: it cannot be run; 126: there is no such working folder.
RunResult run(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Like run(), for tools that must succeed: throws an exception with the tool's messages otherwise.
std::string mustRun(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Splits text into words like a shell: blanks, both kinds of quotes, backslashes. Throws on an open
// quote.
std::vector<std::string> shellWords(std::string_view text);

// Runs a test body, with ordinary assertions, in a child process with these environment variables.
// Failures in the child fail the calling test, and so do a crash, a sanitizer report (including
// leaks, if the test has no other threads) and an exit before the body's end. If the body skips,
// the test is skipped.
void runInChild(const std::function<void()>& body, const Environment& environment = {});

// The same for COUNT children at a time, each with its number. Threads that call runInChild() are
// no substitute: a child of theirs may find the allocator locked for ever.
void runInChildren(int count, const std::function<void(int)>& body);

// Runs the body in this process, and exits with failure if it takes longer: a hanging test fails.
void withinSeconds(int seconds, const std::function<void()>& body);

}  // namespace kolum::test

#endif
