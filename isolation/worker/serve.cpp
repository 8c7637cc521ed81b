#include "serve.h"

#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "isolation/message.h"
#include "isolation/wire.h"
#include "memory.h"
#include "read/exif/photo_tags.h"
#include "read/image/disc_image.h"
#include "sandbox.h"

namespace kolum::isolation {

namespace {

// Of resident memory, by which a worker may grow before it makes room for a new one.
constexpr long kMostGrowth = 128L * 1024;  // KiB
// Above what readers allow themselves (media::budget).
constexpr std::chrono::seconds kProcessorTime{15};
// For all its files, after which a worker makes room for a new one.
constexpr std::chrono::seconds kTimeOfWorker = kLongestLife - kProcessorTime - kProcessorTime;

long mostResident() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  return used.ru_maxrss;
}

bool isOld(std::uint64_t requests) {
  return requests >= kMostRequests || usedProcessorTime() >= kTimeOfWorker;
}

read::Findings outOfMemory() {
  read::Findings findings;
  findings.failure = {read::FailureCause::kOutOfMemory, "it takes too much memory to read"};
  return findings;
}

// The photo without its tags is worth more than nothing.
void addPhotoTags(const media::Source& source, read::Findings& findings) {
  try {
    findings.photoTags = exif::readPhotoTags(source);
  } catch (const std::bad_alloc&) {
    findings.photoTags = std::nullopt;
  }
  if (hasMemoryRunOut()) findings.photoTags = std::nullopt;
  findings.bytesRead = source.bytesRead();
}

void addDiscImage(const media::Source& source, read::Findings& findings) {
  findings.disc = image::readDiscImage(source);
  findings.bytesRead = source.bytesRead();
}

read::Findings answerTo(const Request& request, Descriptor file) {
  try {
    const auto source = media::Source::adoptUnchecked(std::move(file), request.fileName);
    read::Findings findings = read::look(source, request.query);
    if (hasMemoryRunOut()) return outOfMemory();
    if (request.query.photoTags) addPhotoTags(source, findings);
    if (request.query.discImage) addDiscImage(source, findings);
    if (hasMemoryRunOut()) return outOfMemory();
    return findings;
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
}

// See Processors.
void moveTo(std::uint32_t processor) {
  static std::uint32_t current = UINT32_MAX;
  if (processor == current || processor >= CPU_SETSIZE) return;
  cpu_set_t only;
  CPU_ZERO(&only);
  CPU_SET(processor, &only);
  if (sched_setaffinity(0, sizeof only, &only) == 0) current = processor;
}

struct Received {
  Header header;
  Request request;
  Descriptor file;
};

std::optional<Received> receiveRequest(int socket) {
  Header header = {};
  Descriptor file;
  if (receive(socket, writableBytesOf(header), &file, {}) != Transfer::kDone ||
      header.size > kLongestMessage)
    return std::nullopt;
  std::vector<std::uint8_t> bytes(header.size);
  if (receive(socket, bytes, nullptr, {}) != Transfer::kDone) return std::nullopt;
  auto request = decodeRequest(bytes);
  if (!request) return std::nullopt;
  return Received{header, std::move(*request), std::move(file)};
}

}  // namespace

void serve(int socket, std::uint32_t layers) {
  Hello hello = {};
  std::memcpy(hello.version, kVersion, sizeof hello.version);
  hello.layers = layers;
  if (send(socket, bytesOf(hello), {}, -1, {}) != Transfer::kDone) return;
  const long residentAtFirst = mostResident();
  bool isLast = false;
  for (std::uint64_t i = 1; !isLast; ++i) {
    auto received = receiveRequest(socket);
    if (!received) return;
    moveTo(received->header.processor);
    limitProcessorTime(kProcessorTime);
    const read::Findings findings = answerTo(received->request, std::move(received->file));
    auto bytes = encode(findings);
    if (bytes.size() > kLongestMessage) bytes = encode(outOfMemory());
    isLast =
        findings.failure.has_value() || isOld(i) || mostResident() - residentAtFirst > kMostGrowth;
    const Header header = {.number = received->header.number,
                           .size = static_cast<std::uint32_t>(bytes.size()),
                           .isLast = isLast ? 1U : 0U,
                           .processor = 0,
                           .unused = 0};
    if (send(socket, bytesOf(header), bytes, -1, {}) != Transfer::kDone) return;
  }
}

}  // namespace kolum::isolation
