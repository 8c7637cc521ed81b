// The library's operations, one step per entry point, which the tests in this folder disturb.
#ifndef KOLUM_TESTS_FAULTS_STEPS_H
#define KOLUM_TESTS_FAULTS_STEPS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace kolum::test {

// What a step needs.
enum Need : unsigned {
  kNothing = 0,
  kDescriptors = 1,
  kPrograms = 2,
  kSpace = 4,
  kMounts = 8,
  kWorkingPath = 16,  // the tools in the folder that KoLUM_Init gets
};

struct Step {
  std::string name;
  std::function<bool()> call;  // true for success
  unsigned needs = kNothing;
  std::function<void()> prepare = [] {};  // before each call, undisturbed
};

// The steps. They need the files, tools, data volume and server of inPreparedSandbox().
std::vector<Step> steps();

// Folders in the sandbox of inPreparedSandbox().
inline constexpr char kDataVolume[] = "/data";
inline constexpr char kMusic[] = "/data/music/";
inline constexpr char kTools[] = "/tools/";  // the working path

// Writes an executable shell script.
void writeTool(const std::string& path, const std::string& script);

// Runs BODY in a sandbox with everything that the steps need; skips the test if no sandbox is
// possible.
void inPreparedSandbox(const std::function<void()>& body);

// Runs PREPARE and then the step, with DISTURB before it and RESTORE after it.
bool runDisturbed(const Step& step, const std::function<void()>& disturb,
                  const std::function<void()>& restore);
bool runUndisturbed(const Step& step);

}  // namespace kolum::test

#endif
