// Runs the kolum program in a process of its own.
#ifndef KOLUM_TESTS_TOOL_KOLUM_RUN_H
#define KOLUM_TESTS_TOOL_KOLUM_RUN_H

#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace kolum::test {

struct Surroundings {
  std::string input = {};       // on standard input
  std::string folder = {};      // to run in, empty for the test's own
  std::string outputFile = {};  // takes standard output instead of Outcome::out
  bool outputClosed = false;
  bool errorClosed = false;
  std::map<std::string, std::string> environment = {};  // on top of the test's own
};

struct Outcome {
  int status = -1;  // exit status, 128 and the signal's number for one that ended it
  std::string out;
  std::string err;

  // Standard output as JSON Lines; throws what the parser throws.
  std::vector<nlohmann::json> json() const;
};

void PrintTo(const Outcome& run, std::ostream* out);

Outcome kolum(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});

// Any program, found as a shell finds it.
Outcome program(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});

// The sample library, made on first use, with its closing "/".
const std::string& samples();

}  // namespace kolum::test

#endif
