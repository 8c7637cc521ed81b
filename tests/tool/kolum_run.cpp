#include "tool/kolum_run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

namespace kolum::test {

namespace {

// A file without a name for one of the child's standard descriptors.
class Scratch {
 public:
  explicit Scratch(const std::string& content = "")
      : descriptor_(memfd_create("kolum-test", MFD_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error("memfd_create failed");
    if (write(descriptor_, content.data(), content.size()) !=
        static_cast<ssize_t>(content.size())) {
      throw std::runtime_error("cannot write the child's input");
    }
    lseek(descriptor_, 0, SEEK_SET);
  }
  ~Scratch() { close(descriptor_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  int descriptor() const { return descriptor_; }
  std::string content() const {
    std::string text(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
    const ssize_t length = pread(descriptor_, text.data(), text.size(), 0);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
  }

 private:
  int descriptor_;
};

std::vector<std::string> environment(const std::map<std::string, std::string>& extra) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::string name = text.substr(0, text.find('='));
    // The tool's own defaults are what is tested, whatever the tester's shell says.
    if (name != "KO_LOG_LEVEL" && name != "KO_DATA_DIR" && !extra.contains(name))
      all.push_back(text);
  }
  for (const auto& [name, value] : extra) all.push_back(name + "=" + value);
  return all;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  for (std::string& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

}  // namespace

std::vector<nlohmann::json> Outcome::json() const {
  std::vector<nlohmann::json> lines;
  std::istringstream in(out);
  for (std::string line; std::getline(in, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

void PrintTo(const Outcome& run, std::ostream* out) {
  *out << "status " << run.status << "\nstdout:\n" << run.out << "stderr:\n" << run.err;
}

Outcome program(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
  const Scratch input(surroundings.input);
  const Scratch output;
  const Scratch error;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.descriptor(), 0);
  posix_spawn_file_actions_adddup2(&actions, output.descriptor(), 1);
  posix_spawn_file_actions_adddup2(&actions, error.descriptor(), 2);
  if (!surroundings.outputFile.empty()) {
    posix_spawn_file_actions_addopen(&actions, 1, surroundings.outputFile.c_str(), O_WRONLY, 0);
  }
  if (surroundings.outputClosed) posix_spawn_file_actions_addclose(&actions, 1);
  if (surroundings.errorClosed) posix_spawn_file_actions_addclose(&actions, 2);
  if (!surroundings.folder.empty()) {
    posix_spawn_file_actions_addchdir_np(&actions, surroundings.folder.c_str());
  }

  std::vector<std::string> argumentTexts = arguments;
  std::vector<std::string> environmentTexts = environment(surroundings.environment);
  pid_t child = 0;
  const int failed =
      posix_spawnp(&child, arguments.front().c_str(), &actions, nullptr,
                   pointers(argumentTexts).data(), pointers(environmentTexts).data());
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error("cannot run " + arguments.front());

  int status = 0;
  waitpid(child, &status, 0);
  Outcome run;
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.out = output.content();
  run.err = error.content();
  return run;
}

Outcome kolum(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
  std::vector<std::string> all = {KOLUM_PROGRAM};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return program(all, surroundings);
}

const std::string& samples() {
  static const std::string kFolder = [] {
    const Outcome made = program({KOLUM_SOURCE_FOLDER "/scripts/make-samples.sh", KOLUM_SAMPLES});
    if (made.status != 0) throw std::runtime_error("no samples: " + made.err);
    return std::string(KOLUM_SAMPLES "/");
  }();
  return kFolder;
}

}  // namespace kolum::test
