// The brand probe and the box walk meet every MP4 file of a library, so what they ask of the kernel
// is counted: one descriptor at a time, and one read a box.
#include <gtest/gtest.h>
#include <kolum/video.h>
#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

// The calls a child makes, by number, up to its exit. Empty where tracing is not allowed.
std::optional<std::vector<unsigned long long>> tracedCalls(const std::function<void()>& work) {
  constexpr int kSystemCall = SIGTRAP | 0x80;
  const pid_t child = fork();
  if (child < 0) return std::nullopt;
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
    std::raise(SIGSTOP);
    work();
    _exit(0);
  }
  std::vector<unsigned long long> calls;
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return std::nullopt;
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  for (bool enters = true;;) {
    ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) break;
    if (WSTOPSIG(status) != kSystemCall) continue;
    user_regs_struct registers = {};
    ptrace(PTRACE_GETREGS, child, nullptr, &registers);
    if (enters) calls.push_back(registers.orig_rax);
    enters = !enters;
  }
  return calls;
}

// Those of the work alone: a child that does nothing makes the others (leaving raise, exiting).
std::optional<long> callsOf(const std::function<void()>& work) {
  const auto nothing = tracedCalls([] {});
  const auto all = tracedCalls(work);
  if (!nothing || !all) return std::nullopt;
  return static_cast<long>(all->size()) - static_cast<long>(nothing->size());
}

const std::string kContent = std::string(64, 'x');

TEST(GetMp4SubFormat, OpensReadsAndClosesWhereTheBrandTellsAll) {
  const TempDir folder;
  const std::string path = folder.write("a.mp4", ftyp("M4A ") + box("mdat", kContent));
  const auto calls = callsOf([&] {
    unsigned format = 0;
    GetMp4SubFormat(path.c_str(), &format);
  });
  if (!calls) GTEST_SKIP() << "tracing is not allowed here";
  EXPECT_EQ(*calls, 3);
}

TEST(CheckMp4MoovAtEnd, ReadsOncePerBox) {
  for (const int boxes : {1, 2, 5, 20}) {
    SCOPED_TRACE(boxes);
    const TempDir folder;
    std::string content = ftyp("mp42");
    for (int i = 1; i < boxes; ++i) content += box("free", kContent);
    const std::string path = folder.write("a.mp4", content);
    const auto calls = callsOf([&] { CheckMp4MoovAtEnd(path.c_str()); });
    if (!calls) GTEST_SKIP() << "tracing is not allowed here";
    constexpr long kOpenSizeEndClose = 4;
    EXPECT_EQ(*calls, kOpenSizeEndClose + boxes);
  }
}

}  // namespace
