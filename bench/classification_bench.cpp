// Compares classification with two other ways to find an extension's row: the obvious one
// (std::unordered_map), and the fastest possible one (a perfect hash).
#include <benchmark/benchmark.h>
#include <kolum/filetype.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr unsigned kAllKinds = 15;
constexpr std::size_t kNames = 1'000'000;
constexpr std::size_t kHotNames = 1'000;

constexpr const MediaFileInfo* kTables[] = {g_VideoFileInfo, g_SongFileInfo, g_PictureFileInfo,
                                            g_PlaylistFileInfo};

// The mix of names on such an appliance: mostly a few formats, and every fourth file not media.
std::vector<std::string> someNames(std::size_t count) {
  static constexpr const char* kCommon[] = {".jpg", ".JPG", ".jpeg", ".png", ".mp4",
                                            ".MOV", ".mp3", ".flac", ".mkv", ".heic"};
  static constexpr const char* kOther[] = {".txt", ".docx", ".xmp", "", ".tar.gz", ".db", ".srt"};
  std::vector<const char*> known;
  for (const MediaFileInfo* table : kTables)
    for (const MediaFileInfo* row = table; row->extension != nullptr; ++row)
      known.push_back(row->extension);
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): every run measures the same names
  const auto any = [&random](const auto& list) { return list[random() % std::size(list)]; };
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned kind = random() % 8;
    const char* extension = kind < 4 ? any(kCommon) : kind < 6 ? any(known) : any(kOther);
    names.push_back("/share/Multimedia/Holidays 2015/DSC_" + std::to_string(i) + extension);
  }
  return names;
}

template <typename Classify>
void classifyAll(benchmark::State& state, Classify classify) {
  const auto names = someNames(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
    for (const std::string& name : names) benchmark::DoNotOptimize(classify(name));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}

void library(benchmark::State& state) {
  classifyAll(state, [](const std::string& name) {
    unsigned row = 0;
    unsigned tag = 0;
    return KoLUM_GetFilenameType(name.c_str(), &row, kAllKinds, &tag);
  });
}
BENCHMARK(library)->Arg(kHotNames)->Arg(kNames);

std::string folded(const char* text) {
  std::string lower = text;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

void unorderedMap(benchmark::State& state) {
  std::unordered_map<std::string, int> rows;
  int number = 0;
  for (const MediaFileInfo* table : kTables)
    for (const MediaFileInfo* row = table; row->extension != nullptr; ++row)
      rows.emplace(row->extension, ++number);
  classifyAll(state, [&rows](const std::string& name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) return 0;
    const auto found = rows.find(folded(name.c_str() + dot));
    return found != rows.end() ? found->second : 0;
  });
}
BENCHMARK(unorderedMap)->Arg(kHotNames)->Arg(kNames);

// One slot per extension and no chains: extensions are 64-bit numbers, multiplied by a factor with
// which no two extensions of the tables collide.
class PerfectHash {
 public:
  PerfectHash() {
    std::mt19937_64 random(1);  // NOLINT(cert-msc51-cpp)
    do {
      factor_ = random() | 1;
    } while (!place());
  }

  int find(const std::string& name) const {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || name.size() - dot > sizeof(std::uint64_t)) return 0;
    const Slot& slot = slots_[slotOf(keyOf(name.c_str() + dot, name.size() - dot))];
    return slot.key == keyOf(name.c_str() + dot, name.size() - dot) ? slot.number : 0;
  }

 private:
  struct Slot {
    std::uint64_t key = 0;
    int number = 0;
  };

  static std::uint64_t keyOf(const char* text, std::size_t length) {
    std::uint64_t key = 0;
    std::memcpy(&key, text, length);
    return key | 0x2020202020202020;  // folds letter case; other characters stay distinct enough
  }
  std::size_t slotOf(std::uint64_t key) const { return key * factor_ >> 53; }

  bool place() {
    slots_.fill({});
    int number = 0;
    for (const MediaFileInfo* table : kTables)
      for (const MediaFileInfo* row = table; row->extension != nullptr; ++row) {
        const std::size_t length = std::strlen(row->extension);
        if (length > sizeof(std::uint64_t)) continue;
        const std::uint64_t key = keyOf(row->extension, length);
        Slot& slot = slots_[slotOf(key)];
        if (slot.number != 0) return false;
        slot = {key, ++number};
      }
    return true;
  }

  std::array<Slot, 2048> slots_ = {};
  std::uint64_t factor_ = 0;
};

void perfectHash(benchmark::State& state) {
  const PerfectHash hash;
  classifyAll(state, [&hash](const std::string& name) { return hash.find(name); });
}
BENCHMARK(perfectHash)->Arg(kHotNames)->Arg(kNames);

void longNames(benchmark::State& state) {
  const std::string name = std::string(static_cast<std::size_t>(state.range(0)), 'x') + ".mp4";
  unsigned row = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(KoLUM_GetFilenameType(name.c_str(), &row, kAllKinds, nullptr));
}
BENCHMARK(longNames)->Arg(16)->Arg(255)->Arg(4096);

}  // namespace
