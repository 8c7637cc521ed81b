// Measures what the tags of songs cost above what a probe of the same file reads.
//
//   song_tags_bench ROUNDS FILE...
//       lines "FILE PROBE EXTRA BYTES": medians of the processor time in microseconds, and bytes
//       read beyond those of the probe
#include <ctime>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

#include "media/source.h"
#include "read/findings/findings.h"

namespace {

struct Cost {
  double microseconds = 0;
  std::uint64_t bytes = 0;
};

double processorTime() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

std::optional<Cost> costOf(const char* file, bool withTags) {
  const double begin = processorTime();
  const auto source = kolum::media::Source::open(file);
  if (!source) return std::nullopt;
  const auto found = kolum::read::look(
      *source, {.container = kolum::ffmpeg::Depth::kStreams, .songTags = withTags});
  return Cost{.microseconds = processorTime() - begin, .bytes = found.bytesRead};
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Each round measures both, so that both meet the same machine.
bool measure(const char* file, long rounds) {
  std::vector<double> probe;
  std::vector<double> extra;
  Cost without;
  Cost with;
  for (long round = 0; round < rounds; ++round) {
    const auto first = costOf(file, false);
    const auto second = costOf(file, true);
    if (!first || !second) return false;
    without = *first;
    with = *second;
    probe.push_back(without.microseconds);
    extra.push_back(with.microseconds - without.microseconds);
  }
  std::printf("%s\t%.0f\t%.0f\t%llu\n", file, median(probe), median(extra),
              static_cast<unsigned long long>(with.bytes - without.bytes));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const long rounds = argc > 2 ? std::strtol(argv[1], nullptr, 10) : 0;
  if (rounds < 1) {
    std::fputs("usage: song_tags_bench ROUNDS FILE...\n", stderr);
    return 2;
  }
  for (int i = 2; i < argc; ++i) {
    if (measure(argv[i], rounds)) continue;
    std::fprintf(stderr, "cannot read %s\n", argv[i]);
    return 1;
  }
  return 0;
}
