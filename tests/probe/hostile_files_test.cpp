// Hostile files: no entry point may end the process, need more than 256 MiB or take longer than 2 s
// of processor time. Every call runs in a process of its own, which is measured from outside.
#include <gtest/gtest.h>
#include <kolum/kolum.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <array>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <string>
#include <string_view>

#include "media/film_tags.h"
#include "media/source.h"
#include "read/findings/findings.h"
#include "read/tags/song_tags.h"
#include "support/hostile_media.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

constexpr double kMebibytes = 256;
constexpr double kSeconds = 2;

// End calls that are far beyond the bounds.
struct Limits {
  rlim_t addressSpace;
  rlim_t processorSeconds;
};
constexpr Limits kBounded = {.addressSpace = rlim_t{6} << 30, .processorSeconds = 4};
constexpr unsigned kWallSeconds = 20;

// Sanitizers need memory and time of their own, and huge address spaces: what is left is the check
// that no call crashes.
#ifdef KOLUM_SANITIZED
constexpr bool kMeasures = false;
#else
constexpr bool kMeasures = true;
#endif

// Files without bounds get less, so that they end sooner.
constexpr Limits kIsolated = {.addressSpace = rlim_t{512} << 20, .processorSeconds = 1};

struct Path {
  std::string folder;
  std::string name;
  std::string whole() const { return folder + name; }
};

// What the entry points write to.
struct Outputs {
  std::array<int, 20> numbers = {};
  std::array<int, 4> aspect = {1, 1, 1, 1};
  std::array<uint32_t, 8> sizes = {};
  std::array<char, 1024> mimeType = {};
  std::array<char, 1024> dlnaProfile = {};
  std::array<char, 1024> date = {};
  int64_t time = 0;
  double fraction = 0;
  int flag = 0;
};

constexpr int kSecondsInto = 60;

void videoRecord(const Path& path) {
  videoObject_st video = {};
  GetVideoMetadata1(path.folder.c_str(), path.name.c_str(), &video, 0);
}

void flatVideo(const Path& path) {
  Outputs out;
  auto& n = out.numbers;
  GetVideoMetadata3(path.folder.c_str(), path.name.c_str(), &n[0], &n[1], &n[2], &n[3], &n[4],
                    &n[5], &n[6], &n[7], &n[8], &n[9], out.mimeType.data(), out.dlnaProfile.data(),
                    &n[10], &n[11], &n[12], &n[13], &n[14], &n[15], &n[16], &n[17], &n[18], &n[19],
                    out.date.data(), out.date.data(), &out.time, 0, &out.fraction, &out.aspect[0],
                    &out.aspect[1], &out.aspect[2], &out.aspect[3], &out.flag);
}

void explain(const Path& path) {
  kolum::DlnaNaming naming;
  ExplainDlnaProfile(path.folder.c_str(), path.name.c_str(), 0, &naming);
}

void mediaInfo(const Path& path) {
  MediaInfo* info = nullptr;
  double time = 0;
  GetMediaInfo(path.whole().c_str(), &info, kSecondsInto, &time);
  Free_MediaInfo(info);
}

void keyFrame(const Path& path) {
  double time = 0;
  getVideoKeyFrameTime(path.whole().c_str(), kSecondsInto, &time);
}

void song(const Path& path) {
  Outputs out;
  auto& n = out.sizes;
  GetAudioMetadata(path.folder.c_str(), path.name.c_str(), &n[0], &n[1], &n[2], &n[3], &n[4], &n[5],
                   &n[6], &n[7], &out.numbers[0], &out.numbers[1], out.dlnaProfile.data());
}

void dsdSong(const Path& path) {
  songObject_st song = {};
  GetDsfMetadata(path.folder.c_str(), path.name.c_str(), &song);
}

void photo(const Path& path) {
  uint32_t format = 0;
  GetPhotoMetadata(path.folder.c_str(), path.name.c_str(), &format);
}

void photoSize(const Path& path) {
  uint32_t width = 0;
  uint32_t height = 0;
  GetPhotoHW(path.whole().c_str(), &width, &height);
}

void subFormat(const Path& path) {
  unsigned format = 0;
  GetMp4SubFormat(path.whole().c_str(), &format);
}

void moovAtEnd(const Path& path) {
  CheckMp4MoovAtEnd(path.whole().c_str());
}

void rotation(const Path& path) {
  unsigned degrees = 0;
  GetVideoRotationDegree(path.folder.c_str(), path.name.c_str(), &degrees);
}

void audioTracks(const Path& path) {
  unsigned count = 0;
  GetAudioTrack(path.whole().c_str(), &count);
}

void packetSize(const Path& path) {
  unsigned size = 0;
  ProbeTsPacketSize(path.whole().c_str(), &size);
}

void songTags(const Path& path) {
  if (const auto source = kolum::media::Source::open(path.whole()))
    kolum::tags::readSongTags(*source);
}

// No entry point yet, but what documents are made of.
void details(const Path& path) {
  const auto source = kolum::media::Source::open(path.whole());
  if (!source) return;
  const auto found =
      kolum::read::look(*source, {.container = kolum::ffmpeg::Depth::kStreams, .details = true});
  if (found.container) kolum::media::filmTagsOf(*found.container);
}

struct EntryPoint {
  const char* name;
  void (*call)(const Path&);
  bool readsLikeFirst = false;   // as the first one of the table does
  bool isAlwaysBounded = false;  // also on files that only a process of their own can bound
};

// The other stream queries read as GetAudioTrack does.
constexpr EntryPoint kEntryPoints[] = {
    {"GetVideoMetadata1", videoRecord},
    {"GetVideoMetadata3", flatVideo, true},
    {"ExplainDlnaProfile", explain, true},
    {"GetAudioMetadata", song, true},
    {"GetPhotoMetadata", photo, true},
    {"GetPhotoHW", photoSize, true},
    {"GetAudioTrack", audioTracks, true},
    {"GetMediaInfo", mediaInfo},
    {"getVideoKeyFrameTime", keyFrame},
    {"GetDsfMetadata", dsdSong},
    {"GetMp4SubFormat", subFormat},
    {"CheckMp4MoovAtEnd", moovAtEnd},
    {"GetVideoRotationDegree", rotation},
    {"ProbeTsPacketSize", packetSize},
    {"details", details},
    {"readSongTags", songTags, false, true},
};

// --- Measuring ---

struct Cost {
  int signal = 0;  // that ended the process
  int status = 0;  // its exit status: a sanitizer's report
  double seconds = 0;
  double mebibytes = 0;  // at the peak
};

void limit(__rlimit_resource resource, rlim_t value) {
  const rlimit both = {value, value};
  setrlimit(resource, &both);
}

[[noreturn]] void callAndExit(const EntryPoint& entryPoint, const Path& path,
                              const Limits& limits) {
  // What the library and FFmpeg say about hostile files does not matter here.
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  if (kMeasures) {
    dup2(nowhere, STDERR_FILENO);
    limit(RLIMIT_AS, limits.addressSpace);
    limit(RLIMIT_CPU, limits.processorSeconds);
  }
  limit(RLIMIT_CORE, 0);
  alarm(kWallSeconds);
  entryPoint.call(path);
  _exit(0);
}

Cost costOf(const EntryPoint& entryPoint, const Path& path, const Limits& limits) {
  const pid_t child = fork();
  if (child == 0) callAndExit(entryPoint, path, limits);
  int status = 0;
  rusage usage = {};
  EXPECT_EQ(wait4(child, &status, 0, &usage), child);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  Cost cost;
  cost.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  cost.status = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  cost.seconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  cost.mebibytes = static_cast<double>(usage.ru_maxrss) / 1024;
  return cost;
}

// The signals of the limits. The kernel kills if SIGXCPU comes too late.
bool wasOutOfTime(const Cost& cost) {
  return cost.signal == SIGXCPU || cost.signal == SIGKILL || cost.signal == SIGALRM;
}

// A short song, to know what a probe takes in any case.
std::string ordinaryFile() {
  constexpr char kFormat[] =
      "RIFF\x34\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x44\xAC\0\0\x10\xB1\2\0\4\0\x10\0data\x10\0\0\0";
  return std::string(kFormat, sizeof kFormat - 1) + std::string(16, '\0');
}

class HostileFileTest : public ::testing::TestWithParam<HostileFile> {
 protected:
  HostileFileTest() {
    folder_.write("ordinary.wav", ordinaryFile());
    ordinary_ = costOf(kEntryPoints[0], {folder_.folder(), "ordinary.wav"}, kBounded);
    writeHostileFile(GetParam(), folder_.folder());
  }

  // Memory is what the call takes beyond a probe of an ordinary file.
  Cost cost(const EntryPoint& entryPoint, const Limits& limits) const {
    Cost cost = costOf(entryPoint, {folder_.folder(), GetParam().name}, limits);
    cost.mebibytes = std::max(0.0, cost.mebibytes - ordinary_.mebibytes);
    return cost;
  }

 private:
  TempDir folder_;
  Cost ordinary_;
};

// In the report that --gtest_output writes.
void record(const EntryPoint& entryPoint, const Cost& cost) {
  std::array<char, 64> text = {};
  std::snprintf(text.data(), text.size(), "%.2f s, %.0f MiB, signal %d", cost.seconds,
                cost.mebibytes, cost.signal);
  ::testing::Test::RecordProperty(entryPoint.name, text.data());
}

void expectNoCrash(const Cost& cost) {
  EXPECT_TRUE(cost.signal == 0 || wasOutOfTime(cost)) << strsignal(cost.signal);
  EXPECT_EQ(cost.status, 0);
}

// Whether it is this entry point's turn among those that read alike: each file has one of them.
bool hasTurn(const EntryPoint& entryPoint, std::string_view file) {
  const auto alike = std::count_if(std::begin(kEntryPoints), std::end(kEntryPoints),
                                   [](const EntryPoint& each) { return each.readsLikeFirst; });
  const auto turn = std::accumulate(file.begin(), file.end(), 0) % alike;
  return &entryPoint - &kEntryPoints[1] == turn;
}

TEST_P(HostileFileTest, StaysWithinBounds) {
  const char* isolation = whyIsolated(GetParam().name);
  if (isolation != nullptr && !kMeasures) GTEST_SKIP() << isolation;
  // All files together shall take about a minute, so the slow ones are not read in the same way by
  // every entry point; those without bounds, and all under the sanitizers, only by the first.
  constexpr double kSlowSeconds = 0.1;
  bool isSlow = false;
  for (const EntryPoint& entryPoint : kEntryPoints) {
    if (isSlow && entryPoint.readsLikeFirst && !hasTurn(entryPoint, GetParam().name)) continue;
    const bool isUnbounded = isolation != nullptr && !entryPoint.isAlwaysBounded;
    const bool isFirst = &entryPoint == std::begin(kEntryPoints);
    if (!isFirst && !entryPoint.isAlwaysBounded && (isUnbounded || !kMeasures)) continue;
    SCOPED_TRACE(entryPoint.name);
    const Cost found = cost(entryPoint, isUnbounded ? kIsolated : kBounded);
    record(entryPoint, found);
    isSlow = isSlow || found.seconds > kSlowSeconds;
    expectNoCrash(found);
    if (isUnbounded || !kMeasures) continue;
    EXPECT_LE(found.seconds, kSeconds);
    EXPECT_LE(found.mebibytes, kMebibytes);
    EXPECT_FALSE(wasOutOfTime(found));
  }
}

std::string testName(const ::testing::TestParamInfo<HostileFile>& file) {
  std::string name = file.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, HostileFileTest, ::testing::ValuesIn(hostileFiles()), testName);

}  // namespace
