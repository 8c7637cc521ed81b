// Runs the kolum program in its own process.
#ifndef KOLUM_TESTS_TOOL_KOLUM_RUN_H
#define KOLUM_TESTS_TOOL_KOLUM_RUN_H

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "support/child_process.h"

namespace kolum::test {

inline constexpr int kJsonSchema = 2;

struct Outcome {
  int status = -1;  // exit status, or the negated number of the signal
  std::string out;
  std::string err;

  // Standard output as JSON Lines. Removes the schema number; throws if a line has none or is not
  // valid JSON.
  std::vector<nlohmann::json> json() const;
};

void PrintTo(const Outcome& outcome, std::ostream* out);

// Runs kolum; REDIRECTION is a shell's, such as ">&-" or ">/dev/full".
Outcome kolum(const std::vector<std::string>& arguments, const RunOptions& options = {},
              const std::string& redirection = "");

// The same with another copy of the program.
Outcome runKolum(const std::string& program, const std::vector<std::string>& arguments,
                 const RunOptions& options = {}, const std::string& redirection = "");

// A copy of the program below FOLDER with only these stand-ins of the build tree.
std::string copyOfKolum(const std::string& folder, const std::vector<std::string>& standIns = {});
// Runs kolum with a limit of COUNT descriptors, of which only the standard ones are in use. The
// arguments are words of a shell.
Outcome kolumWithDescriptors(int count, const std::string& arguments);

// Expects JSON Lines of a command to fit its part of the published schema.
void expectFitsSchema(const std::string& command, const Outcome& outcome);

// The folder of the sample library, with a trailing "/"; made on first use.
const std::string& samples();

}  // namespace kolum::test

#endif
