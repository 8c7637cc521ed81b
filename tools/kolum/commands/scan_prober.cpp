#include "commands/scan_prober.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/descriptor.h"
#include "base/trace.h"
#include "commands/probe.h"
#include "describe/failure.h"
#include "describe/json.h"
#include "files/media_files.h"
#include "isolation/isolation.h"
#include "machine/library.h"
#include "terminal/output.h"

namespace kolum::tool {

namespace {

// Reasons that have nothing to do with the file's content.
constexpr std::array kTransientCauses = {Cause::kNotFound, Cause::kTooManyOpenFiles,
                                         Cause::kSystemError, Cause::kNoReader};

scan::Outcome::Kind kindOf(Cause cause) {
  switch (cause) {
    case Cause::kReaderCrashed:
      return scan::Outcome::Kind::kCrash;
    case Cause::kTookTooLong:
      return scan::Outcome::Kind::kDeadline;
    case Cause::kOutOfMemory:
      return scan::Outcome::Kind::kMemory;
    default:
      return scan::Outcome::Kind::kFailure;
  }
}

// That this thread has read so far, from files and everything else. 0 if the kernel does not count.
std::uint64_t bytesReadHere() {
  constexpr std::string_view kFirst = "rchar: ";
  const Descriptor counters(open("/proc/thread-self/io", O_RDONLY | O_CLOEXEC));
  std::array<char, 64> text = {};
  if (!counters.isOpen() || ::read(counters.get(), text.data(), text.size() - 1) <= 0) return 0;
  if (!std::string_view(text.data()).starts_with(kFirst)) return 0;
  return std::strtoull(text.data() + kFirst.size(), nullptr, 10);
}

// With what workers have read for it.
std::uint64_t bytesReadByThread() {
  return isolation::settings().mode == isolation::Mode::kOff ? bytesReadHere()
                                                             : isolation::bytesReadForThread();
}

scan::Outcome failed(const Failure& failure) {
  scan::Outcome outcome;
  outcome.kind = kindOf(failure.cause);
  outcome.reason = {std::string(describe::codeOf(failure.cause)), failure.reason};
  outcome.isTransient = std::find(kTransientCauses.begin(), kTransientCauses.end(),
                                  failure.cause) != kTransientCauses.end();
  return outcome;
}

scan::Outcome outcomeOf(const scan::Job& job, const ProberOptions& options) {
  const describe::MediaPath path = {job.file.full(), job.file.folder, job.file.name};
  if (auto failure = lengthFailure(path)) return failed(*failure);
  const describe::Document document =
      documentOf(path, {.byContent = options.byContent,
                        .mountsImages = options.mountsImages,
                        .wantsFingerprint = options.wantsFingerprint,
                        .places = options.places.get()});
  write(document.trace);
  if (document.failure) {
    Failure failure = *document.failure;
    if (failure.cause == Cause::kDiscImage && !options.mountsImages)
      failure.reason += "; --images has it mounted";
    return failed(failure);
  }
  scan::Outcome outcome;
  outcome.kind = scan::Outcome::Kind::kDocument;
  outcome.document = describe::jsonOf(document);
  return outcome;
}

}  // namespace

scan::Prober fileProber(const ProberOptions& options) {
  initLibrary();  // before there are threads
  return [options](const scan::Job& job) {
    const std::uint64_t before = bytesReadByThread();
    scan::Outcome outcome = outcomeOf(job, options);
    outcome.bytesRead = bytesReadByThread() - before;
    return outcome;
  };
}

}  // namespace kolum::tool
