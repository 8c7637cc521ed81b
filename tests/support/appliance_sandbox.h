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

// Runs the body as runInChild() does, in a sandbox: what it writes anywhere is gone at the end,
// and /tmp and /dev/shm are empty and its own, but for a checkout that lies in them. Only these are
// the machine's: the build tree, for the media kept there, and what else is below /dev, /proc and
// /sys. Mounts that no overlay can cover are read-only.
void runInAppliance(const std::function<void()>& body);

// Writes a file at an absolute path; missing folders are made, a file that is there
// is replaced. For use in the body only.
void writeRootFile(const std::string& path, const std::string& content, unsigned mode = 0644);

}  // namespace kolum::test

#endif
