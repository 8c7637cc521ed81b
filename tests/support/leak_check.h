// What a piece of code leaves behind in the process and on the machine.
//
// Every test is checked by itself, as is every body that runInChild() and runInAppliance() run: the
// former without the mounts, as a body may have a mount namespace of its own.
#ifndef KOLUM_TESTS_SUPPORT_LEAK_CHECK_H
#define KOLUM_TESTS_SUPPORT_LEAK_CHECK_H

#include <set>
#include <string>

namespace kolum::test {

// Open descriptors, child processes, mounts, and folders that disc images are mounted on.
class LeakCheck {
 public:
  // Where mounts and their folders are looked for, too.
  enum class Scope { kProcess, kMachine };

  // Takes stock.
  explicit LeakCheck(Scope scope = Scope::kMachine);

  // Fails the test for each thing that is there now and was not there before. Mounts and folders
  // may be those of a test that runs at the same time: these are given time to go.
  void expectNothingNew() const;

 private:
  Scope scope_;
  std::set<std::string> before_;
};

}  // namespace kolum::test

#endif
