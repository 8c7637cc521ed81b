#include "support/leak_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

using Things = std::set<std::string>;

void addDescriptors(Things& things) {
  // Via /proc/self, so that it also works in threads and forks.
  Things numbers;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd"))
    numbers.insert(entry.path());
  // The iterator's own is closed by now, so its link cannot be read.
  for (const std::string& number : numbers) {
    std::error_code error;
    const fs::path target = fs::read_symlink(number, error);
    if (!error) things.insert("descriptor " + number + " of " + target.string());
  }
}

void addChildren(Things& things) {
  siginfo_t info = {};
  if (waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0) things.insert("child process");
}

// Mounts and mount folders, which all processes of the machine share.
Things sharedThings() {
  Things things;
  std::ifstream mounts("/proc/self/mountinfo");
  for (std::string line; std::getline(mounts, line);) things.insert("mount " + line);
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator("/tmp", error))
    if (entry.path().filename().string().starts_with("Media_mount_"))
      things.insert("folder " + entry.path().string());
  return things;
}

Things ownThings() {
  Things things;
  addDescriptors(things);
  addChildren(things);
  return things;
}

Things without(const Things& things, const Things& known) {
  Things left;
  std::set_difference(things.begin(), things.end(), known.begin(), known.end(),
                      std::inserter(left, left.end()));
  return left;
}

// Those of THINGS that are still there after five seconds.
Things lastingOf(Things things) {
  constexpr int kTries = 50;
  constexpr std::chrono::milliseconds kPause(100);
  for (int i = 0; i < kTries && !things.empty(); ++i) {
    std::this_thread::sleep_for(kPause);
    const Things now = sharedThings();
    std::erase_if(things, [&](const std::string& thing) { return !now.contains(thing); });
  }
  return things;
}

// Checks each test, including its fixture.
class Listener : public ::testing::EmptyTestEventListener {
 public:
  void OnTestStart(const ::testing::TestInfo& /*test*/) override { check_ = LeakCheck(); }
  void OnTestEnd(const ::testing::TestInfo& /*test*/) override { check_.expectNothingNew(); }

 private:
  LeakCheck check_;
};

}  // namespace

LeakCheck::LeakCheck(Scope scope) : scope_(scope), before_(ownThings()) {
  if (scope_ == Scope::kMachine) before_.merge(sharedThings());
}

void LeakCheck::expectNothingNew() const {
  for (const std::string& thing : without(ownThings(), before_)) ADD_FAILURE() << "left: " << thing;
  if (scope_ != Scope::kMachine) return;
  for (const std::string& thing : lastingOf(without(sharedThings(), before_)))
    ADD_FAILURE() << "left: " << thing;
}

}  // namespace kolum::test

// Replaces GoogleTest's main() in the test programs.
int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  ::testing::UnitTest::GetInstance()->listeners().Append(new kolum::test::Listener);
  return RUN_ALL_TESTS();
}
