// Measures the library beside two others in the same process: the floor, a program that only opens
// the file and reads the stream information with the same FFmpeg, and MediaInfo.
//
//   probe_overhead times ROUNDS SECONDS ENTRY,... FILE...
//       lines "FILE ENTRY MICROSECONDS": medians of the processor time of all threads. A file that
//       takes longer than SECONDS gets fewer rounds
//   probe_overhead calls ENTRY FILE            one call between two of getppid(), for strace
//   probe_overhead memory ENTRY FILE           peak growth in KiB, threads left behind
//   probe_overhead flat COUNT FILE             growth in KiB over COUNT probes
//   probe_overhead parallel COUNT FILE...      speed of two threads relative to one
//   probe_overhead isolated COUNT ENTRY FILE   microseconds of wall time that a worker adds to a
//   call
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}
#include <dlfcn.h>
#include <kolum/kolum.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::FILE* results = nullptr;
std::FILE* problems = nullptr;

constexpr int kSearchSeconds = 5;
constexpr int kLeastRounds = 5;

struct Path {
  std::string whole;
  std::string folder;
  std::string name;
};

Path pathOf(const std::string& whole) {
  const std::size_t slash = whole.rfind('/') + 1;
  return {whole, slash == 0 ? "./" : whole.substr(0, slash), whole.substr(slash)};
}

// Every entry says whether it succeeded: the time of a failure means nothing.
bool openAndRead(const Path& path, bool streamInfo) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.whole.c_str(), nullptr, nullptr) != 0) return false;
  const bool isRead = !streamInfo || avformat_find_stream_info(context, nullptr) >= 0;
  avformat_close_input(&context);
  return isRead;
}

bool floorProbe(const Path& path) {
  return openAndRead(path, true);
}
bool floorOpen(const Path& path) {
  return openAndRead(path, false);
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
bool floorSearch(const Path& path) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.whole.c_str(), nullptr, nullptr) != 0) return false;
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
  return true;
}

bool videoRecord(const Path& path) {
  videoObject_st record = {};
  return GetVideoMetadata1(path.folder.c_str(), path.name.c_str(), &record, 0) == 0;
}

// As most hosts call it: with a variable for each output.
bool videoFlat(const Path& path) {
  int numbers[23] = {};
  char mimeType[96];
  char dlnaProfile[128];
  char yearMonth[8];
  char creationDate[12];
  std::int64_t creationTime = 0;
  double frameRate = 0;
  int* n = numbers;
  return GetVideoMetadata3(path.folder.c_str(), path.name.c_str(), n, n + 1, n + 2, n + 3, n + 4,
                           n + 5, n + 6, n + 7, n + 8, n + 9, mimeType, dlnaProfile, n + 10, n + 11,
                           n + 12, n + 13, n + 14, n + 15, n + 16, n + 17, n + 18, n + 19,
                           yearMonth, creationDate, &creationTime, 0, &frameRate, nullptr, nullptr,
                           nullptr, nullptr, n + 20) == 0;
}

bool mediaInfo(const Path& path) {
  MediaInfo* info = nullptr;
  const bool isDescribed = GetMediaInfo(path.whole.c_str(), &info, 0, nullptr) == 0;
  Free_MediaInfo(info);
  return isDescribed;
}

bool audioTracks(const Path& path) {
  unsigned count = 0;
  return GetAudioTrack(path.whole.c_str(), &count) == 0;
}

bool subtitleTracks(const Path& path) {
  unsigned count = 0;
  return GetSubtitleTrack(path.whole.c_str(), &count) == 0;
}

bool isProtected(const Path& path) {
  unsigned answer = 0;
  return GetDRMProtectedInfo(path.whole.c_str(), &answer) == 0;
}

// Files of less than that time have no such key frame; the search is measured all the same.
bool keyFrame(const Path& path) {
  double time = 0;
  getVideoKeyFrameTime(path.whole.c_str(), kSearchSeconds, &time);
  return true;
}

// Fails on FLV, whose streams are not known before packets are read.
bool rotation(const Path& path) {
  unsigned degrees = 0;
  GetVideoRotationDegree(path.folder.c_str(), path.name.c_str(), &degrees);
  return true;
}

// The result is no measure: it is a failure for Opus, which has no codec number but is read as
// fully as other songs.
bool song(const Path& path) {
  std::uint32_t numbers[7] = {};
  std::uint32_t duration = 0;
  std::int32_t profile = 0;
  std::int32_t level = 0;
  char name[16] = "";
  GetAudioMetadata(path.folder.c_str(), path.name.c_str(), &numbers[0], &numbers[1], &numbers[2],
                   &numbers[3], &numbers[4], &duration, &numbers[5], &numbers[6], &profile, &level,
                   name);
  return duration != 0;
}

bool photo(const Path& path) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  return GetPhotoHW(path.whole.c_str(), &width, &height) == 0 && width != 0 && height != 0;
}

bool pixelFormat(const Path& path) {
  std::uint32_t format = 0;
  return GetPhotoMetadata(path.folder.c_str(), path.name.c_str(), &format) == 0;
}

// MediaInfo in this process, through its C interface and with its default options. It is loaded at
// run time, because its development package conflicts with the libcurl that this project builds
// with. Every call has its own object: one that has read some files is up to fifteen times slower
// on later ones.
class OtherLibrary {
 public:
  OtherLibrary() {
    library_ = dlopen("libmediainfo.so.0", RTLD_NOW);
    if (library_ == nullptr) return;
    find("MediaInfoA_New", create_);
    find("MediaInfoA_Open", open_);
    find("MediaInfoA_Get", get_);
    find("MediaInfoA_Close", close_);
    find("MediaInfoA_Delete", destroy_);
  }

  bool probe(const Path& path) const {
    if (create_ == nullptr || open_ == nullptr || get_ == nullptr || close_ == nullptr ||
        destroy_ == nullptr)
      return false;
    void* handle = create_();
    const bool isOpen = open_(handle, path.whole.c_str()) != 0;
    const bool isKnown = isOpen && *get(handle, 0, "Format") != '\0';
    for (const auto& [stream, field] : kFields) get(handle, stream, field);
    close_(handle);
    destroy_(handle);
    return isKnown;
  }

 private:
  struct Field {
    int stream;  // its numbers: 0 the file, 1 video, 2 audio, 5 image
    const char* name;
  };
  static constexpr Field kFields[] = {{0, "Duration"}, {0, "OverallBitRate"}, {1, "Format"},
                                      {1, "Width"},    {1, "Height"},         {1, "FrameRate"},
                                      {2, "Format"},   {2, "Channel(s)"},     {2, "SamplingRate"},
                                      {5, "Width"},    {5, "Height"}};

  template <typename Function>
  void find(const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlsym(library_, name));
  }

  const char* get(void* handle, int stream, const char* field) const {
    constexpr int kText = 1;
    constexpr int kByName = 0;
    return get_(handle, stream, 0, field, kText, kByName);
  }

  void* library_ = nullptr;
  void* (*create_)() = nullptr;
  std::size_t (*open_)(void*, const char*) = nullptr;
  const char* (*get_)(void*, int, std::size_t, const char*, int, int) = nullptr;
  void (*close_)(void*) = nullptr;
  void (*destroy_)(void*) = nullptr;
};

bool otherLibrary(const Path& path) {
  static const OtherLibrary library;
  return library.probe(path);
}

struct Entry {
  const char* name;
  bool (*call)(const Path&);
};

constexpr Entry kEntries[] = {
    {"floor", floorProbe},
    {"open", floorOpen},
    {"search", floorSearch},
    {"MediaInfo", otherLibrary},
    {"GetVideoMetadata1", videoRecord},
    {"GetVideoMetadata3", videoFlat},
    {"GetMediaInfo", mediaInfo},
    {"GetAudioTrack", audioTracks},
    {"GetSubtitleTrack", subtitleTracks},
    {"GetDRMProtectedInfo", isProtected},
    {"GetVideoRotationDegree", rotation},
    {"getVideoKeyFrameTime", keyFrame},
    {"GetAudioMetadata", song},
    {"GetPhotoHW", photo},
    {"GetPhotoMetadata", pixelFormat},
};

const Entry& entryOf(const std::string& name) {
  for (const Entry& entry : kEntries)
    if (name == entry.name) return entry;
  std::fprintf(problems, "no entry %s\n", name.c_str());
  std::exit(2);
}

std::vector<Entry> entriesOf(const std::string& names) {
  std::vector<Entry> entries;
  std::istringstream list(names);
  for (std::string name; std::getline(list, name, ',');) entries.push_back(entryOf(name));
  return entries;
}

// Microseconds of processor time that all threads of this process have used.
double processorTime() {
  timespec now = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

double secondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double elapsed(const std::function<void()>& work) {
  const auto before = std::chrono::steady_clock::now();
  work();
  return secondsSince(before);
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void mustSucceed(const Entry& entry, const Path& path) {
  if (entry.call(path)) return;
  std::fprintf(problems, "%s fails on %s\n", entry.name, path.whole.c_str());
  std::exit(1);
}

// Every round takes the entries in another order.
void times(long rounds, long seconds, const std::vector<Entry>& entries, const Path& path) {
  for (const Entry& entry : entries) mustSucceed(entry, path);
  std::vector<std::vector<double>> taken(entries.size());
  const auto begin = std::chrono::steady_clock::now();
  for (long round = 0; round < rounds; ++round) {
    if (round >= kLeastRounds && secondsSince(begin) > static_cast<double>(seconds)) break;
    for (std::size_t step = 0; step < entries.size(); ++step) {
      const std::size_t i = (step + static_cast<std::size_t>(round)) % entries.size();
      // An uncounted call, so that no entry finds the heap and caches as another has left them.
      entries[i].call(path);
      const double before = processorTime();
      entries[i].call(path);
      taken[i].push_back(processorTime() - before);
    }
  }
  for (std::size_t i = 0; i < entries.size(); ++i)
    std::fprintf(results, "%s\t%s\t%.2f\n", path.whole.c_str(), entries[i].name, median(taken[i]));
}

// The first call does what a process does only once.
void calls(const Entry& entry, const Path& path) {
  mustSucceed(entry, path);
  getppid();
  entry.call(path);
  getppid();
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

void flat(long count, const Path& path) {
  for (long i = 0; i < count / 10; ++i) videoRecord(path);
  const long before = residentKib();
  for (long i = 0; i < count; ++i) videoRecord(path);
  std::fprintf(results, "%ld\n", residentKib() - before);
}

void parallel(long count, const std::vector<Path>& paths) {
  const auto work = [&] {
    for (long i = 0; i < count; ++i)
      for (const Path& path : paths) videoRecord(path);
  };
  std::vector<double> ratios;
  for (int round = 0; round < 7; ++round) {
    const double one = elapsed(work);
    const double two = elapsed([&] {
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
  problems = fdopen(dup(STDERR_FILENO), "w");
  return results != nullptr && problems != nullptr &&
         std::freopen("/dev/null", "w", stdout) != nullptr &&
         std::freopen("/dev/null", "w", stderr) != nullptr;
}

long numberIn(const char* text) {
  return std::strtol(text, nullptr, 10);
}

std::vector<Path> pathsFrom(int first, int argc, char** argv) {
  std::vector<Path> paths;
  for (int i = first; i < argc; ++i) paths.push_back(pathOf(argv[i]));
  return paths;
}

void isolate(bool isOn) {
  if (KoLUM_SetIsolation(isOn ? KOLUM_ISOLATION_ON : KOLUM_ISOLATION_OFF) == 0) return;
  std::fprintf(problems, "no isolation\n");
  std::exit(1);
}

// In turns of some calls each. The first of a turn does what a new worker does only once.
void isolated(long count, const Entry& entry, const Path& path) {
  constexpr int kTurns = 10;
  std::vector<double> taken[2];
  for (int turn = 0; turn < 2 * kTurns; ++turn) {
    const bool isIsolated = turn % 2 != 0;
    isolate(isIsolated);
    mustSucceed(entry, path);
    for (long i = 0; i < count; ++i)
      taken[isIsolated ? 1 : 0].push_back(elapsed([&] { entry.call(path); }) * 1e6);
  }
  isolate(false);
  std::fprintf(results, "%.2f\n", median(taken[1]) - median(taken[0]));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || !takeOverOutput()) return 2;
  av_log_set_level(AV_LOG_QUIET);
  const std::string mode = argv[1];
  if (mode == "times" && argc > 5) {
    const std::vector<Entry> entries = entriesOf(argv[4]);
    for (const Path& path : pathsFrom(5, argc, argv))
      times(numberIn(argv[2]), numberIn(argv[3]), entries, path);
  } else if (mode == "calls") {
    calls(entryOf(argv[2]), pathOf(argv[3]));
  } else if (mode == "memory") {
    memory(entryOf(argv[2]), pathOf(argv[3]));
  } else if (mode == "flat") {
    flat(numberIn(argv[2]), pathOf(argv[3]));
  } else if (mode == "parallel") {
    parallel(numberIn(argv[2]), pathsFrom(3, argc, argv));
  } else if (mode == "isolated" && argc > 4) {
    isolated(numberIn(argv[2]), entryOf(argv[3]), pathOf(argv[4]));
  } else {
    return 2;
  }
  return 0;
}
