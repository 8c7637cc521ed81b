#include "tool/kolum_run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace fs = std::filesystem;

namespace kolum::test {

std::vector<nlohmann::json> Outcome::json() const {
  std::vector<nlohmann::json> lines;
  std::istringstream in(out);
  for (std::string text; std::getline(in, text);) {
    auto line = nlohmann::json::parse(text);
    if (line.at("schema") != kJsonSchema) throw std::runtime_error("another schema: " + text);
    line.erase("schema");
    lines.push_back(std::move(line));
  }
  return lines;
}

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << "status " << outcome.status << "\nstdout:\n" << outcome.out << "stderr:\n" << outcome.err;
}

Outcome kolum(const std::vector<std::string>& arguments, const RunOptions& options,
              const std::string& redirection) {
  return runKolum(KOLUM_PROGRAM, arguments, options, redirection);
}

Outcome runKolum(const std::string& program, const std::vector<std::string>& arguments,
                 const RunOptions& options, const std::string& redirection) {
  // Tests the tool's defaults, whatever the environment of the caller.
  std::vector<std::string> command = {"/usr/bin/env"};  // absolute, as the test may change PATH
  for (const char* name : {"KO_LOG_LEVEL", "KO_DATA_DIR"}) {
    if (!options.environment.contains(name)) command.insert(command.end(), {"-u", name});
  }
  // Through a shell even without a redirection: env would treat a path with a "=" as a variable.
  command.insert(command.end(), {"/bin/sh", "-c", "exec \"$@\" " + redirection, "sh"});
  command.push_back(program);
  command.insert(command.end(), arguments.begin(), arguments.end());
  const RunResult result = run(command, options);
  return {result.status, result.out, result.err};
}

std::string copyOfKolum(const std::string& folder, const std::vector<std::string>& standIns) {
  const fs::path program = fs::path(folder) / "kolum" / "kolum";
  const fs::path tools = fs::path(folder) / "appliance" / "bin";
  fs::create_directories(program.parent_path());
  fs::copy_file(KOLUM_PROGRAM, program);
  if (!standIns.empty()) fs::create_directories(tools);
  for (const std::string& tool : standIns)
    fs::create_symlink(KOLUM_STAND_INS "/" + tool, tools / tool);
  return program;
}

Outcome kolumWithDescriptors(int count, const std::string& arguments) {
  const std::string script = "for fd in {3..63}; do eval \"exec $fd>&-\"; done; ulimit -n " +
                             std::to_string(count) + "; exec '" KOLUM_PROGRAM "' " + arguments;
  const RunResult result = run({"bash", "-c", script});
  return {result.status, result.out, result.err};
}

void expectFitsSchema(const std::string& command, const Outcome& outcome) {
  const RunResult checked = run({KOLUM_SOURCE_FOLDER "/tests/tool/validate.py",
                                 KOLUM_SOURCE_FOLDER "/docs/kolum.schema.json", command},
                                {.input = outcome.out});
  EXPECT_EQ(checked.status, 0) << checked.out << checked.err;
}

const std::string& samples() {
  static const std::string kFolder = [] {
    mustRun({KOLUM_SOURCE_FOLDER "/scripts/make-samples.sh", KOLUM_SAMPLES});
    return std::string(KOLUM_SAMPLES "/");
  }();
  return kFolder;
}

}  // namespace kolum::test
