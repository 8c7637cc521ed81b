#include <benchmark/benchmark.h>
#include <kolum/identifiers.h>

namespace {

void codecFromName(benchmark::State& state, const char* name) {
  unsigned id = 0;
  for (auto _ : state) benchmark::DoNotOptimize(CodecNameToID(name, &id));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(codecFromName, first, "CODEC_ID_NONE");
BENCHMARK_CAPTURE(codecFromName, last, "CODEC_ID_DSD");
BENCHMARK_CAPTURE(codecFromName, unknown, "CODEC_ID_UNKNOWN");

void codecToName(benchmark::State& state) {
  char name[KOLUM_IDENTIFIER_NAME_SIZE];
  const auto id = static_cast<unsigned>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(CodecIDToName(name, id));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(codecToName)->Arg(CODEC_ID_H264)->Arg(CODEC_ID_AAC)->Arg(CODEC_ID_DSD);

void codecFromFfmpeg(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(ffmpegCodecIdConvert(static_cast<int>(state.range(0))));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(codecFromFfmpeg)->Arg(28)->Arg(174)->Arg(0x15002)->Arg(0x20000);

void profileFromFfmpeg(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(FF_ProfileToKO_Profile(CODEC_ID_H264, 100));
    benchmark::DoNotOptimize(FF_ProfileToKO_Profile(CODEC_ID_MPEG4, 15));
  }
  state.SetItemsProcessed(2 * state.iterations());
}
BENCHMARK(profileFromFfmpeg);

}  // namespace
