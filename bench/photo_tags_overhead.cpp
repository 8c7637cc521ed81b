// photo_tags_overhead WORKER FILE...: prints, for each photo, what a worker's answer takes without
// and with the photo's tags, in microseconds, and what starting the worker takes, in milliseconds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "isolation/isolation.h"

namespace {

using namespace kolum;

constexpr int kStarts = 21;
constexpr int kRounds = 501;

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Microseconds; negative if there is no answer.
double timeOf(const std::string& path, bool withTags) {
  const auto source = media::Source::open(path);
  if (!source) return -1;
  read::Query query = {.picture = true};
  query.photoTags = withTags;
  const auto begin = std::chrono::steady_clock::now();
  const read::Findings findings = isolation::look(*source, query);
  const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - begin;
  return findings.failure ? -1 : taken.count();
}

void useNewWorker(const std::string& worker) {
  isolation::configure({.mode = isolation::Mode::kOn, .worker = worker});
}

// Both in turns, so that both find the machine in the same state.
void measure(const std::string& worker, const std::string& path) {
  std::vector<double> starts;
  for (int i = 0; i < kStarts; ++i) {
    useNewWorker(worker);
    starts.push_back(timeOf(path, false) / 1000);
  }
  std::vector<double> without;
  std::vector<double> with;
  for (int i = 0; i < kRounds; ++i) {
    without.push_back(timeOf(path, false));
    with.push_back(timeOf(path, true));
  }
  std::printf("%s\t%.1f\t%.1f\t%.1f\n", path.c_str(), median(without), median(with),
              median(starts));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: photo_tags_overhead WORKER FILE...\n", stderr);
    return 2;
  }
  std::puts("file\twithout tags, us\twith tags, us\tstart, ms");
  for (int i = 2; i < argc; ++i) measure(argv[1], argv[i]);
  return 0;
}
