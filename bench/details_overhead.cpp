// details_overhead ROUNDS FILE...: what details cost above a probe without them. A line per file:
// microseconds of processor time without and with details (medians), bytes read without and with.
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

#include "media/film_tags.h"
#include "media/source.h"
#include "read/findings/findings.h"

namespace {

double microseconds() {
  std::timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

struct Cost {
  std::vector<double> times;
  std::uint64_t bytes = 0;

  double median() {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
  }
};

bool measure(const char* path, bool details, Cost& cost) {
  const double begin = microseconds();
  const auto source = kolum::media::Source::open(path);
  if (!source) return false;
  const kolum::read::Findings found =
      kolum::read::look(*source, {.container = kolum::ffmpeg::Depth::kStreams, .details = details});
  if (!found.container) return false;
  if (details) kolum::media::filmTagsOf(*found.container);
  cost.times.push_back(microseconds() - begin);
  cost.bytes = found.bytesRead;
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  const int rounds = std::max(1, std::atoi(arguments[1]));
  for (int i = 2; i < count; ++i) {
    Cost plain;
    Cost detailed;
    bool isReadable = true;
    for (int round = 0; round < rounds && isReadable; ++round)
      isReadable = measure(arguments[i], false, plain) && measure(arguments[i], true, detailed);
    if (!isReadable) continue;
    std::printf("%8.0f %8.0f %10llu %10llu  %s\n", plain.median(), detailed.median(),
                static_cast<unsigned long long>(plain.bytes),
                static_cast<unsigned long long>(detailed.bytes), arguments[i]);
  }
  return 0;
}
