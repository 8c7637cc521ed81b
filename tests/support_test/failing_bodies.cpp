// Tests that must fail, each in a different way. They are not registered with CTest.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/descriptors.h"

namespace {

using namespace kolum::test;

void failExpectation() {
  EXPECT_EQ(1, 2) << "the body's message";
}
void failAssertion() {
  ASSERT_EQ(1, 2) << "the body's message";
}
void throwException() {
  throw std::runtime_error("the body's message");
}
void throwNumber() {
  throw 1;
}
void beKilled() {
  raise(SIGKILL);
}
void exitAsIfAllWereWell() {
  _exit(0);
}
void skip() {
  GTEST_SKIP() << "the body's message";
}
// Through volatile pointers, so that compilers neither reject nor remove it.
void writeBeyondTheEnd() {
  char* volatile bytes = static_cast<char*>(std::malloc(1));
  bytes[1] = 'x';
  std::free(bytes);
}
void leakMemory() {
  void* volatile lost = std::malloc(1000);
  EXPECT_NE(lost, nullptr);
  lost = nullptr;
}

TEST(Child, FailedExpectation) {
  runInChild(failExpectation);
}
TEST(Child, FailedAssertion) {
  runInChild(failAssertion);
}
TEST(Child, Exception) {
  runInChild(throwException);
}
TEST(Child, ExceptionOfAnotherType) {
  runInChild(throwNumber);
}
TEST(Child, Kill) {
  runInChild(beKilled);
}
TEST(Child, Exit) {
  runInChild(exitAsIfAllWereWell);
}
TEST(Child, Skip) {
  runInChild(skip);
}
TEST(Child, Overflow) {
  runInChild(writeBeyondTheEnd);
}
TEST(Child, Leak) {
  runInChild(leakMemory);
}

TEST(Sandbox, FailedExpectation) {
  runInAppliance(failExpectation);
}
TEST(Sandbox, FailedAssertion) {
  runInAppliance(failAssertion);
}
TEST(Sandbox, Exception) {
  runInAppliance(throwException);
}
TEST(Sandbox, Kill) {
  runInAppliance(beKilled);
}
TEST(Sandbox, Exit) {
  runInAppliance(exitAsIfAllWereWell);
}
TEST(Sandbox, Skip) {
  runInAppliance(skip);
}
TEST(Sandbox, Overflow) {
  runInAppliance(writeBeyondTheEnd);
}
TEST(Sandbox, Leak) {
  runInAppliance(leakMemory);
}
TEST(Sandbox, UnwritableFile) {
  runInAppliance([] { writeRootFile("/proc/no/such/file", "x"); });
}

TEST(Within, Hang) {
  withinSeconds(1, [] { pause(); });
}
TEST(Within, Exception) {
  withinSeconds(60, throwException);
}

// Leaks, seen from the three places that check for them.
void leaveDescriptor() {
  EXPECT_GE(dup(0), 0);
}
void leaveChild() {
  if (fork() == 0) _exit(0);
}
void leaveMount() {
  EXPECT_EQ(mount("none", "/tmp", "tmpfs", 0, nullptr), 0);
}
void leaveMountFolder() {
  EXPECT_EQ(mkdir("/tmp/Media_mount_1", 0700), 0);
}

TEST(Left, Descriptor) {
  leaveDescriptor();
}
TEST(Left, Child) {
  leaveChild();
}
TEST(LeftInChild, Descriptor) {
  runInChild(leaveDescriptor);
}
TEST(LeftInChild, Child) {
  runInChild(leaveChild);
}
TEST(LeftInSandbox, Descriptor) {
  runInAppliance(leaveDescriptor);
}
TEST(LeftInSandbox, Mount) {
  runInAppliance(leaveMount);
}
TEST(LeftInSandbox, MountFolder) {
  runInAppliance(leaveMountFolder);
}

TEST(Descriptors, Leak) {
  const ExpectNoDescriptorLeak leak;
  EXPECT_GE(dup(0), 0);
}

}  // namespace
