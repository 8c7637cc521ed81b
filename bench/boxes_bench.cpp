// The MP4 brand probe and the box walk, on a file whose pages are in memory.
#include <benchmark/benchmark.h>
#include <kolum/video.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string box(const std::string& type, std::uint32_t size, const std::string& content = "") {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(size >> shift & 0xFF);
  bytes += type + content;
  bytes.resize(size);
  return bytes;
}

// A file as cameras write it: the index that players need comes last.
class Mp4 {
 public:
  Mp4() {
    const std::string bytes = box("ftyp", 32, "mp42") + box("free", 8) + box("mdat", 1 << 20) +
                              box("wide", 8) + box("moov", 4096);
    const int file = mkstemp(path_.data());
    if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
    close(file);
  }
  ~Mp4() { std::remove(path_.c_str()); }
  Mp4(const Mp4&) = delete;
  Mp4& operator=(const Mp4&) = delete;

  const char* path() const { return path_.c_str(); }

 private:
  std::string path_ = "/tmp/kolum-bench-XXXXXX";
};

void brand(benchmark::State& state) {
  const Mp4 file;
  unsigned format = 0;
  for (auto _ : state) benchmark::DoNotOptimize(GetMp4SubFormat(file.path(), &format));
}
BENCHMARK(brand);

void boxWalk(benchmark::State& state) {
  const Mp4 file;
  for (auto _ : state) benchmark::DoNotOptimize(CheckMp4MoovAtEnd(file.path()));
}
BENCHMARK(boxWalk);

}  // namespace
