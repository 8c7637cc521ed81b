#include <benchmark/benchmark.h>
#include <kolum/filetype.h>

#include <string>
#include <vector>

namespace {

constexpr unsigned kAllKinds = 15;

// A name for every row of every table, in a folder as hosts have them.
std::vector<std::string> namesOfEveryRow() {
  std::vector<std::string> names;
  for (const MediaFileInfo* table :
       {g_VideoFileInfo, g_SongFileInfo, g_PictureFileInfo, g_PlaylistFileInfo})
    for (const MediaFileInfo* row = table; row->extension != nullptr; ++row)
      names.push_back(std::string("/share/Multimedia/Holidays 2015/DSC_0815") + row->extension);
  return names;
}

void classifyAll(benchmark::State& state, const std::vector<std::string>& names) {
  unsigned row = 0;
  unsigned tag = 0;
  for (auto _ : state)
    for (const std::string& name : names)
      benchmark::DoNotOptimize(KoLUM_GetFilenameType(name.c_str(), &row, kAllKinds, &tag));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}

void classifyMedia(benchmark::State& state) {
  classifyAll(state, namesOfEveryRow());
}
BENCHMARK(classifyMedia);

void classifyOtherFiles(benchmark::State& state) {
  classifyAll(state, {"/share/Documents/report.docx", "/share/Documents/README",
                      "/share/Backup/archive.tar.gz", "/share/Web/.cache-manifest"});
}
BENCHMARK(classifyOtherFiles);

void classifyLongNames(benchmark::State& state) {
  classifyAll(state, {std::string(static_cast<std::size_t>(state.range(0)), 'x') + ".mp4"});
}
BENCHMARK(classifyLongNames)->Arg(16)->Arg(255)->Arg(4096)->Arg(100'000);

}  // namespace
