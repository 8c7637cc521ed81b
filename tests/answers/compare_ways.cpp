// compare_ways [--damage COUNT] PATH...: compares the shortcut by headers with FFmpeg's own way,
// for files and for all files below folders, and for damaged copies of them. Prints what differs
// and fails if anything does.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "answers/two_ways.h"

namespace {

using namespace kolum::test;

std::vector<std::string> filesBelow(const std::vector<std::string>& paths) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (!std::filesystem::is_directory(path)) files.push_back(path);
    if (!std::filesystem::is_directory(path)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
      if (entry.is_regular_file()) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

struct Comparison {
  FILE* report = stdout;
  long compared = 0;
  long differing = 0;

  void look(const std::string& path, const std::string& name, Extent extent) {
    ++compared;
    std::string differences = differencesAbout(path, extent);
    if (differences.empty()) return;
    // Once more: what FFmpeg finds may itself depend on its threads' order.
    if (differencesAbout(path, extent).empty()) {
      std::fprintf(report, "%s: differed once, not the second time\n%s", name.c_str(),
                   differences.c_str());
      return;
    }
    ++differing;
    std::fprintf(report, "%s\n%s", name.c_str(), differences.c_str());
  }
};

// Silences what the library and FFmpeg say; what is reported goes where it went before.
FILE* reportOnly() {
  FILE* report = fdopen(dup(STDOUT_FILENO), "w");
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  return report;
}

// The part of the files whose turn it is.
int compare(const std::vector<std::string>& files, unsigned turn, unsigned turns, int damage) {
  Comparison comparison = {.report = reportOnly()};
  for (std::size_t i = turn; i < files.size(); i += turns) {
    const std::string& file = files[i];
    comparison.look(file, file, Extent::kAnswers);
    forEachDamaged(file, damage, [&](const std::string& copy, const std::string& what) {
      comparison.look(copy, file + ", " + what, Extent::kFacts);
    });
    std::fflush(comparison.report);
  }
  std::fprintf(comparison.report, "%ld compared, %ld differ\n", comparison.compared,
               comparison.differing);
  std::fclose(comparison.report);
  return comparison.differing == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  int damage = 0;
  std::vector<std::string> paths;
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(arguments[i], "--damage") == 0 && i + 1 < count)
      damage = std::atoi(arguments[++i]);
    else
      paths.emplace_back(arguments[i]);
  }
  const std::vector<std::string> files = filesBelow(paths);
  const unsigned turns = std::max(1U, std::thread::hardware_concurrency());
  for (unsigned turn = 0; turn < turns; ++turn)
    if (fork() == 0) _exit(compare(files, turn, turns, damage));
  int failed = 0;
  for (unsigned turn = 0; turn < turns; ++turn) {
    int status = 0;
    wait(&status);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) ++failed;
  }
  return failed == 0 ? 0 : 1;
}
