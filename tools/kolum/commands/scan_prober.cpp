#include "commands/scan_prober.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <variant>

#include "base/descriptor.h"
#include "commands/probe.h"
#include "files/media_files.h"
#include "machine/library.h"
#include "terminal/failure.h"
#include "terminal/output.h"

namespace kolum::tool {

namespace {

// Reasons that have nothing to do with the file's content.
constexpr std::array kTransientCauses = {Cause::kNotFound, Cause::kTooManyOpenFiles,
                                         Cause::kSystemError};

// That this thread has read so far, from files and everything else. 0 if the kernel does not count.
std::uint64_t bytesReadByThread() {
  constexpr std::string_view kFirst = "rchar: ";
  const Descriptor counters(open("/proc/thread-self/io", O_RDONLY | O_CLOEXEC));
  std::array<char, 64> text = {};
  if (!counters.isOpen() || read(counters.get(), text.data(), text.size() - 1) <= 0) return 0;
  if (!std::string_view(text.data()).starts_with(kFirst)) return 0;
  return std::strtoull(text.data() + kFirst.size(), nullptr, 10);
}

scan::Outcome outcomeOf(const Description& description) {
  scan::Outcome outcome;
  if (const auto* failure = std::get_if<Failure>(&description)) {
    outcome.reason = {std::string(codeOf(failure->cause)), failure->reason};
    outcome.isTransient = std::find(kTransientCauses.begin(), kTransientCauses.end(),
                                    failure->cause) != kTransientCauses.end();
  } else {
    outcome.kind = scan::Outcome::Kind::kDocument;
    outcome.document = jsonText(std::get<Result>(description));
  }
  return outcome;
}

Description description(const scan::Job& job, bool byContent) {
  const MediaPath path = {job.file.full(), job.file.folder, job.file.name};
  if (auto failure = lengthFailure(path)) return *failure;
  return describe(kindOfFile(path, byContent), byContent, path, {});
}

}  // namespace

scan::Prober fileProber(bool byContent) {
  initLibrary();  // before there are threads
  return [byContent](const scan::Job& job) {
    const std::uint64_t before = bytesReadByThread();
    scan::Outcome outcome = outcomeOf(description(job, byContent));
    outcome.bytesRead = bytesReadByThread() - before;
    return outcome;
  };
}

}  // namespace kolum::tool
