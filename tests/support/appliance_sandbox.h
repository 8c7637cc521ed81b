// The appliance's fixed paths, without touching the machine: a test body runs in a child process
// that sees a private overlay of the whole file system.
#ifndef KOLUM_TESTS_SUPPORT_APPLIANCE_SANDBOX_H
#define KOLUM_TESTS_SUPPORT_APPLIANCE_SANDBOX_H

#include <functional>
#include <optional>
#include <string>

namespace kolum::test {

// Why no sandbox is possible here, if none is. Ask first:
//   if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
std::optional<std::string> sandboxUnavailable();

// Runs the body like runInChild(), in a sandbox: everything that it writes is gone at the end, and
// /tmp and /dev/shm are private and empty, except for a checkout in them. Only these are shared
// with the machine: the build tree, which keeps the tests' media, and the rest of /dev, /proc and
// /sys. Mounts that no overlay can cover are read-only.
void runInAppliance(const std::function<void()>& body);

// Writes a file at an absolute path; missing folders are made, an existing file is replaced. For
// use in the body only.
void writeRootFile(const std::string& path, const std::string& content, unsigned mode = 0644);

}  // namespace kolum::test

#endif
