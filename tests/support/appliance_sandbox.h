// The appliance's fixed paths, without touching the machine: a test body runs in a child process
// that sees a private overlay of the whole file system.
#ifndef KOLUM_TESTS_SUPPORT_APPLIANCE_SANDBOX_H
#define KOLUM_TESTS_SUPPORT_APPLIANCE_SANDBOX_H

#include <functional>
#include <optional>
#include <string>

namespace kolum::test {

// Why no sandbox can be had here, if none can. To be asked first:
//   if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
std::optional<std::string> sandboxUnavailable();

// Runs the body, with ordinary assertions, in a sandbox: what it writes anywhere is gone at the
// end, /tmp and /dev/shm are empty and its own (the build tree stays visible). Failures in the
// body, a crash included, fail the calling test.
void runInAppliance(const std::function<void()>& body);

// Writes a file at an absolute path; missing folders are made. For use in the body only.
void writeRootFile(const std::string& path, const std::string& content, unsigned mode = 0644);

}  // namespace kolum::test

#endif
