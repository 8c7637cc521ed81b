// Measures what the library adds to FFmpeg: calls of each entry point alternate with those of a
// floor that only opens the file and reads the stream information with the same FFmpeg.
//
//   probe_overhead times ROUNDS FILE...        lines "FILE ENTRY MICROSECONDS", medians
//   probe_overhead calls ENTRY FILE...         one call per file, for counting system calls
//   probe_overhead memory ENTRY FILE           peak growth in KiB, threads left behind
//   probe_overhead flat COUNT FILE             growth in KiB over COUNT probes
//   probe_overhead parallel COUNT FILE...      speed of two threads relative to one
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}
#include <dlfcn.h>
#include <kolum/kolum.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

std::FILE* results = nullptr;

constexpr int kSearchSeconds = 5;

struct Path {
  std::string whole;
  std::string folder;
  std::string name;
};

Path pathOf(const std::string& whole) {
  const std::size_t slash = whole.rfind('/') + 1;
  return {whole, slash == 0 ? "./" : whole.substr(0, slash), whole.substr(slash)};
}

void openAndRead(const Path& path, bool streamInfo) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.whole.c_str(), nullptr, nullptr) != 0) return;
  if (streamInfo) avformat_find_stream_info(context, nullptr);
  avformat_close_input(&context);
}

void floorProbe(const Path& path) {
  openAndRead(path, true);
}
void floorOpen(const Path& path) {
  openAndRead(path, false);
}

// Reads to the first packet of a stream from TIMESTAMP on for which IS_WANTED holds; false when
// there is none.
template <typename IsWanted>
bool seekAndRead(AVFormatContext* context, int stream, std::int64_t timestamp, AVPacket* packet,
                 IsWanted isWanted) {
  if (av_seek_frame(context, stream, timestamp, 0) < 0) return false;
  bool isFound = false;
  while (!isFound && av_read_frame(context, packet) == 0) {
    isFound = packet->stream_index == stream && isWanted(*packet);
    if (!isFound) av_packet_unref(packet);
  }
  return isFound;
}

// Opens a decoder for the stream; the caller frees it.
AVCodecContext* openDecoder(const AVStream& stream) {
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  AVCodecContext* decoder = avcodec_alloc_context3(codec);
  if (codec != nullptr && decoder != nullptr &&
      avcodec_parameters_to_context(decoder, stream.codecpar) >= 0)
    avcodec_open2(decoder, codec, nullptr);
  return decoder;
}

// The floor of the key-frame search: no stream information, but a decoder, because its refusal is a
// result, and a look at the first packet if the header does not say when the stream begins.
void floorSearch(const Path& path) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.whole.c_str(), nullptr, nullptr) != 0) return;
  const int video = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  AVPacket* packet = av_packet_alloc();
  if (video >= 0 && packet != nullptr) {
    const AVStream& stream = *context->streams[video];
    AVCodecContext* decoder = openDecoder(stream);
    std::int64_t start = stream.start_time;
    if (start == AV_NOPTS_VALUE) {
      const auto hasTime = [](const AVPacket& p) { return p.pts != AV_NOPTS_VALUE; };
      start = seekAndRead(context, video, 0, packet, hasTime) ? packet->pts : 0;
      av_packet_unref(packet);
    }
    const std::int64_t target =
        av_rescale(kSearchSeconds, stream.time_base.den, stream.time_base.num) + start;
    seekAndRead(context, video, target, packet,
                [](const AVPacket& p) { return (p.flags & AV_PKT_FLAG_KEY) != 0; });
    avcodec_free_context(&decoder);
  }
  av_packet_free(&packet);
  avformat_close_input(&context);
}

void videoRecord(const Path& path) {
  videoObject_st record = {};
  GetVideoMetadata1(path.folder.c_str(), path.name.c_str(), &record, 0);
}

// As most hosts call it: with a variable for each output.
void videoFlat(const Path& path) {
  int numbers[23] = {};
  char mimeType[96];
  char dlnaProfile[128];
  char yearMonth[8];
  char creationDate[12];
  std::int64_t creationTime = 0;
  double frameRate = 0;
  int* n = numbers;
  GetVideoMetadata3(path.folder.c_str(), path.name.c_str(), n, n + 1, n + 2, n + 3, n + 4, n + 5,
                    n + 6, n + 7, n + 8, n + 9, mimeType, dlnaProfile, n + 10, n + 11, n + 12,
                    n + 13, n + 14, n + 15, n + 16, n + 17, n + 18, n + 19, yearMonth, creationDate,
                    &creationTime, 0, &frameRate, nullptr, nullptr, nullptr, nullptr, n + 20);
}

void mediaInfo(const Path& path) {
  MediaInfo* info = nullptr;
  GetMediaInfo(path.whole.c_str(), &info, 0, nullptr);
  Free_MediaInfo(info);
}

void audioTracks(const Path& path) {
  unsigned count = 0;
  GetAudioTrack(path.whole.c_str(), &count);
}

void subtitleTracks(const Path& path) {
  unsigned count = 0;
  GetSubtitleTrack(path.whole.c_str(), &count);
}

void isProtected(const Path& path) {
  unsigned answer = 0;
  GetDRMProtectedInfo(path.whole.c_str(), &answer);
}

void keyFrame(const Path& path) {
  double time = 0;
  getVideoKeyFrameTime(path.whole.c_str(), kSearchSeconds, &time);
}

void rotation(const Path& path) {
  unsigned degrees = 0;
  GetVideoRotationDegree(path.folder.c_str(), path.name.c_str(), &degrees);
}

void song(const Path& path) {
  std::uint32_t numbers[8] = {};
  std::int32_t profile = 0;
  std::int32_t level = 0;
  char name[16] = "";
  GetAudioMetadata(path.folder.c_str(), path.name.c_str(), &numbers[0], &numbers[1], &numbers[2],
                   &numbers[3], &numbers[4], &numbers[5], &numbers[6], &numbers[7], &profile,
                   &level, name);
}

void photo(const Path& path) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  GetPhotoHW(path.whole.c_str(), &width, &height);
}

void pixelFormat(const Path& path) {
  std::uint32_t format = 0;
  GetPhotoMetadata(path.folder.c_str(), path.name.c_str(), &format);
}

// MediaInfo in this process, through its C interface. It is loaded at run time, because its
// development package conflicts with the libcurl that this project builds with.
class OtherLibrary {
 public:
  OtherLibrary() {
    library_ = dlopen("libmediainfo.so.0", RTLD_NOW);
    if (library_ == nullptr) return;
    find("MediaInfoA_New", create_);
    find("MediaInfoA_Open", open_);
    find("MediaInfoA_Close", close_);
    find("MediaInfoA_Delete", destroy_);
  }

  bool isThere() const { return library_ != nullptr && create_ != nullptr && open_ != nullptr; }

  void probe(const Path& path) const {
    void* handle = create_();
    open_(handle, path.whole.c_str());
    close_(handle);
    destroy_(handle);
  }

 private:
  template <typename Function>
  void find(const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlsym(library_, name));
  }

  void* library_ = nullptr;
  void* (*create_)() = nullptr;
  std::size_t (*open_)(void*, const char*) = nullptr;
  void (*close_)(void*) = nullptr;
  void (*destroy_)(void*) = nullptr;
};

struct Entry {
  const char* name;
  const char* floor;
  unsigned kinds;  // kinds of files, as bits of the classification
  void (*call)(const Path&);
};

constexpr unsigned kSong = 1;
constexpr unsigned kVideo = 2;
constexpr unsigned kPhoto = 4;

constexpr Entry kEntries[] = {
    {"floor", "floor", kSong | kVideo | kPhoto, floorProbe},
    {"open", "open", kVideo, floorOpen},
    {"search", "search", kVideo, floorSearch},
    {"GetVideoMetadata1", "floor", kVideo, videoRecord},
    {"GetVideoMetadata3", "floor", kVideo, videoFlat},
    {"GetMediaInfo", "floor", kVideo, mediaInfo},
    {"GetAudioTrack", "floor", kVideo, audioTracks},
    {"GetSubtitleTrack", "floor", kVideo, subtitleTracks},
    {"GetDRMProtectedInfo", "floor", kVideo, isProtected},
    {"GetVideoRotationDegree", "floor", kVideo, rotation},
    {"getVideoKeyFrameTime", "search", kVideo, keyFrame},
    {"GetAudioMetadata", "floor", kSong, song},
    {"GetPhotoHW", "floor", kPhoto, photo},
    {"GetPhotoMetadata", "floor", kPhoto, pixelFormat},
};

unsigned kindOf(const Path& path) {
  unsigned row = 0;
  unsigned tag = 0;
  const int kind = KoLUM_GetFilenameType(path.whole.c_str(), &row, 7, &tag);
  return kind == 0 ? 0 : 1U << (kind - 1);
}

double microseconds(const std::function<void()>& work) {
  const auto before = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - before)
      .count();
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Every round takes the entries in another order.
void times(int rounds, const Path& path) {
  const unsigned kind = kindOf(path);
  constexpr std::size_t kCount = std::size(kEntries);
  std::vector<std::vector<double>> taken(kCount);
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t step = 0; step < kCount; ++step) {
      const std::size_t i = (step + static_cast<std::size_t>(round)) % kCount;
      if ((kEntries[i].kinds & kind) == 0) continue;
      // An uncounted call, so that every entry starts with the heap and caches in the same state.
      floorProbe(path);
      taken[i].push_back(microseconds([&] { kEntries[i].call(path); }));
    }
  }
  for (std::size_t i = 0; i < kCount; ++i)
    if (!taken[i].empty())
      std::fprintf(results, "%s\t%s\t%s\t%.2f\n", path.whole.c_str(), kEntries[i].name,
                   kEntries[i].floor, median(taken[i]));
}

// Measured separately, because it leaves the caches in a different state from FFmpeg.
void others(int rounds, const OtherLibrary& library, const Path& path) {
  std::vector<double> taken;
  for (int round = 0; round < rounds; ++round)
    taken.push_back(microseconds([&] { library.probe(path); }));
  std::fprintf(results, "%s\tMediaInfo\tfloor\t%.2f\n", path.whole.c_str(), median(taken));
}

const Entry& entryOf(const std::string& name) {
  for (const Entry& entry : kEntries)
    if (name == entry.name) return entry;
  std::fprintf(stderr, "no entry %s\n", name.c_str());
  std::exit(2);
}

long residentKib() {
  std::ifstream statm("/proc/self/statm");
  long size = 0;
  long resident = 0;
  statm >> size >> resident;
  return resident * sysconf(_SC_PAGESIZE) / 1024;
}

long peakKib() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void memory(const Entry& entry, const Path& path) {
  const long before = residentKib();
  entry.call(path);
  std::fprintf(results, "%s\t%ld\t%ld\n", entry.name, std::max(0L, peakKib() - before),
               std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}) - 1);
}

void flat(int count, const Path& path) {
  for (int i = 0; i < count / 10; ++i) videoRecord(path);
  const long before = residentKib();
  for (int i = 0; i < count; ++i) videoRecord(path);
  std::fprintf(results, "%ld\n", residentKib() - before);
}

void parallel(int count, const std::vector<Path>& paths) {
  const auto work = [&] {
    for (int i = 0; i < count; ++i)
      for (const Path& path : paths) videoRecord(path);
  };
  std::vector<double> ratios;
  for (int round = 0; round < 7; ++round) {
    const double one = microseconds(work);
    const double two = microseconds([&] {
      std::thread other(work);
      work();
      other.join();
    });
    ratios.push_back(2 * one / two);
  }
  std::fprintf(results, "%.3f\n", median(ratios));
}

// The library's own output would slow down the measurement and mix with the results.
bool takeOverOutput() {
  results = fdopen(dup(STDOUT_FILENO), "w");
  return results != nullptr && std::freopen("/dev/null", "w", stdout) != nullptr &&
         std::freopen("/dev/null", "w", stderr) != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || !takeOverOutput()) return 2;
  av_log_set_level(AV_LOG_QUIET);
  const std::string mode = argv[1];
  std::vector<Path> paths;
  for (int i = 3; i < argc; ++i) paths.push_back(pathOf(argv[i]));
  if (mode == "times") {
    for (const Path& path : paths) times(std::atoi(argv[2]), path);
    const OtherLibrary library;
    if (!library.isThere()) return 1;
    for (const Path& path : paths) others(std::atoi(argv[2]) / 10 + 1, library, path);
  } else if (mode == "calls") {
    for (const Path& path : paths) entryOf(argv[2]).call(path);
  } else if (mode == "memory") {
    memory(entryOf(argv[2]), paths[0]);
  } else if (mode == "flat") {
    flat(std::atoi(argv[2]), paths[0]);
  } else if (mode == "parallel") {
    parallel(std::atoi(argv[2]), paths);
  } else {
    return 2;
  }
  return 0;
}
