// Detects what code leaves behind in the process and on the machine.
//
// Every test is checked, and so is every body that runInChild() and runInAppliance() run: the
// former without mounts, because a body may have its own mount namespace.
#ifndef KOLUM_TESTS_SUPPORT_LEAK_CHECK_H
#define KOLUM_TESTS_SUPPORT_LEAK_CHECK_H

#include <set>
#include <string>

namespace kolum::test {

// Open descriptors, child processes, mounts, and folders that disc images are mounted on.
class LeakCheck {
 public:
  // kMachine also checks mounts and their folders.
  enum class Scope { kProcess, kMachine };

  // Records what exists now.
  explicit LeakCheck(Scope scope = Scope::kMachine);

  // Fails the test for each thing that is new since construction. Mounts and folders may belong to
  // a test that runs at the same time, so they get time to disappear.
  void expectNothingNew() const;

 private:
  Scope scope_;
  std::set<std::string> before_;
};

}  // namespace kolum::test

#endif
