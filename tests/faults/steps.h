// What the library does, one step an entry point, to be disturbed by the tests of this folder.
#ifndef KOLUM_TESTS_FAULTS_STEPS_H
#define KOLUM_TESTS_FAULTS_STEPS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace kolum::test {

// What a step cannot do without.
enum Need : unsigned {
  kNothing = 0,
  kDescriptors = 1,
  kPrograms = 2,
  kSpace = 4,
  kMounts = 8,
  kWorkingPath = 16,  // the tools in the folder that KoLUM_Init is told
};

struct Step {
  std::string name;
  std::function<bool()> call;  // true for success
  unsigned needs = kNothing;
  std::function<void()> prepare = [] {};  // before each call, undisturbed
};

// The steps, once the sandbox is furnished with all that they need: files, tools, a data volume
// and a server.
std::vector<Step> steps();

// Folders of the furnished sandbox.
inline constexpr char kDataVolume[] = "/data";
inline constexpr char kMusic[] = "/data/music/";
inline constexpr char kTools[] = "/tools/";  // the working path

// A shell script that can be called.
void writeTool(const std::string& path, const std::string& script);

// Runs BODY in a furnished sandbox; skips the test where none can be had.
void inWorkshop(const std::function<void()>& body);

// Runs PREPARE and then the step, with DISTURB before it and RESTORE after it.
bool runDisturbed(const Step& step, const std::function<void()>& disturb,
                  const std::function<void()>& restore);
bool runUndisturbed(const Step& step);

}  // namespace kolum::test

#endif
