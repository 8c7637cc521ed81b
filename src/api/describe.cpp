#include <fcntl.h>
#include <kolum/describe.h>
#include <kolum/frame.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "api/guarded.h"
#include "base/descriptor.h"
#include "describe/describe.h"
#include "describe/json.h"
#include "geocode/place_finder.h"
#include "isolation/isolation.h"

using namespace kolum;

namespace {

constexpr unsigned kAllFlags = KOLUM_DETAILS | KOLUM_BY_CONTENT | KOLUM_FINGERPRINT | KOLUM_PLACES;
// Of the first version of the structure, which every caller has.
constexpr std::size_t kSmallest = sizeof(KoLUM_DescribeOptions);

// What the caller's version of the structure has; empty if it makes no sense.
std::optional<KoLUM_DescribeOptions> optionsOf(const KoLUM_DescribeOptions* given) {
  KoLUM_DescribeOptions options = {};
  options.flags = KOLUM_DETAILS;
  if (given == nullptr) return options;
  if (given->size < kSmallest) return std::nullopt;
  std::memcpy(&options, given, sizeof options);
  const bool isKind = options.kind == MEDIA_KIND_NONE || options.kind == MEDIA_KIND_VIDEO ||
                      options.kind == MEDIA_KIND_MUSIC || options.kind == MEDIA_KIND_PHOTO;
  if (!isKind || (options.flags & ~kAllFlags) != 0 || options.audioStream < 0) return std::nullopt;
  return options;
}

isolation::Settings limitsOf(const KoLUM_DescribeOptions& options) {
  isolation::Settings settings = isolation::settings();
  if (settings.mode == isolation::Mode::kOff) settings.mode = isolation::Mode::kOn;
  if (options.deadline != 0) settings.deadline = std::chrono::milliseconds(options.deadline);
  if (options.memory != 0) settings.memory = options.memory;
  return settings;
}

// One for all callers. Never destroyed: threads of a host may still ask while the process ends,
// which the program notices by itself.
geocode::PlaceFinder& placeFinder() {
  static auto* const kFinder = new geocode::PlaceFinder(geocode::placeProgram());
  return *kFinder;
}

describe::Options wishesOf(const KoLUM_DescribeOptions& options, const media::Source* opened) {
  describe::Options wishes;
  if (options.kind != MEDIA_KIND_NONE) wishes.kind = options.kind;
  wishes.byContent = (options.flags & KOLUM_BY_CONTENT) != 0;
  wishes.wantsDetails = (options.flags & KOLUM_DETAILS) != 0;
  wishes.wantsFingerprint = (options.flags & KOLUM_FINGERPRINT) != 0;
  wishes.audioStream = options.audioStream;
  wishes.toolFolder = g_localWorkingPath;
  wishes.opened = opened;
  if ((options.flags & KOLUM_PLACES) != 0) wishes.places = &placeFinder();
  return wishes;
}

char* copyOf(const std::string& text) {
  char* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy != nullptr) std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

int describeFile(const char* name, const KoLUM_DescribeOptions& options,
                 const media::Source* opened, char*& text) {
  const isolation::InWorker worker(limitsOf(options));
  const describe::Document document =
      describe::describe(describe::splitPath(name), wishesOf(options, opened));
  text = copyOf(describe::jsonOf(document));
  if (text == nullptr) return KOLUM_NO_DOCUMENT;
  return document.failure ? KOLUM_NOT_DESCRIBED : KOLUM_DESCRIBED;
}

// Reading by position leaves the caller's own position alone.
Descriptor duplicateOf(int fd) {
  return Descriptor(fcntl(fd, F_DUPFD_CLOEXEC, 0));
}

}  // namespace

int KoLUM_Describe(const char* path, const KoLUM_DescribeOptions* options, char** text) {
  if (text == nullptr) return KOLUM_NO_DOCUMENT;
  *text = nullptr;
  return api::guarded<int>(KOLUM_NO_DOCUMENT, [&]() -> int {
    const auto wanted = optionsOf(options);
    if (path == nullptr || *path == '\0' || !wanted) return KOLUM_NO_DOCUMENT;
    return describeFile(path, *wanted, nullptr, *text);
  });
}

int KoLUM_DescribeFd(int fd, const char* name, const KoLUM_DescribeOptions* options, char** text) {
  if (text == nullptr) return KOLUM_NO_DOCUMENT;
  *text = nullptr;
  return api::guarded<int>(KOLUM_NO_DOCUMENT, [&]() -> int {
    const auto wanted = optionsOf(options);
    if (name == nullptr || *name == '\0' || !wanted) return KOLUM_NO_DOCUMENT;
    const auto source = media::Source::adopt(duplicateOf(fd), name);
    if (!source) return KOLUM_NO_DOCUMENT;
    return describeFile(name, *wanted, &*source, *text);
  });
}

void KoLUM_FreeText(char* text) {
  std::free(text);
}

void KoLUM_ForgetPlaces() {
  api::guarded(0, [] {
    placeFinder().forget();
    return 0;
  });
}
