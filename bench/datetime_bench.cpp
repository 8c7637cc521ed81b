#include <benchmark/benchmark.h>
#include <kolum/datetime.h>

#include <string>

namespace {

void secondsOf(benchmark::State& state, const char* text) {
  for (auto _ : state) benchmark::DoNotOptimize(DateTimeStringToSeconds(text));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(secondsOf, today, "2015-06-07T08:09:10.000000Z");
BENCHMARK_CAPTURE(secondsOf, noDate, "unknown");
BENCHMARK_CAPTURE(secondsOf, absurdYear, "2147483647:01:01 00");

void yearFirst(benchmark::State& state, const char* text) {
  for (auto _ : state) {
    std::string writable = text;
    benchmark::DoNotOptimize(isYYYYMMDD(writable.data()));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(yearFirst, yearFirst, "2015-06-07 08:0");
BENCHMARK_CAPTURE(yearFirst, dayFirst, "07-06-2015 08:0");

void uniqueNumber(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(getUniqueNumer());
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(uniqueNumber);

}  // namespace
