// The library's system calls beyond FFmpeg's own: on a spinning disk or a network share each call
// costs time. Unlike times, the numbers are the same on every machine.
#include <gtest/gtest.h>
#include <kolum/photo.h>
#include <kolum/video.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/picture_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

// The numbers of the calls that a child makes until it exits. Empty if tracing is not allowed.
std::optional<std::vector<unsigned long long>> tracedCalls(const std::function<void()>& work) {
  constexpr int kSystemCall = SIGTRAP | 0x80;
  const pid_t child = fork();
  if (child < 0) return std::nullopt;
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
    std::raise(SIGSTOP);
    work();
    _exit(0);
  }
  std::vector<unsigned long long> calls;
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return std::nullopt;
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  for (bool enters = true;;) {
    ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) break;
    if (WSTOPSIG(status) != kSystemCall) continue;
    user_regs_struct registers = {};
    ptrace(PTRACE_GETREGS, child, nullptr, &registers);
    if (enters) calls.push_back(registers.orig_rax);
    enters = !enters;
  }
  return calls;
}

// The number of calls of WORK, without those that a child makes anyway (to leave raise, to exit).
std::optional<long> callsOf(const std::function<void()>& work) {
  const auto nothing = tracedCalls([] {});
  const auto all = tracedCalls(work);
  if (!nothing || !all) return std::nullopt;
  return static_cast<long>(all->size()) - static_cast<long>(nothing->size());
}

bool isOnFiles(unsigned long long call) {
  constexpr unsigned long long kOnFiles[] = {SYS_open,       SYS_openat,   SYS_read,  SYS_pread64,
                                             SYS_lseek,      SYS_stat,     SYS_lstat, SYS_fstat,
                                             SYS_newfstatat, SYS_statx,    SYS_ioctl, SYS_access,
                                             SYS_getdents64, SYS_readlink, SYS_close};
  return std::count(std::begin(kOnFiles), std::end(kOnFiles), call) != 0;
}

// The number of calls on files that PROBE makes, without those of one-time initialisation.
std::optional<long> callsOnFiles(const std::function<void()>& probe) {
  probe();
  const auto calls = tracedCalls(probe);
  if (!calls) return std::nullopt;
  return std::count_if(calls->begin(), calls->end(), isOnFiles);
}

const std::string kContent = std::string(64, 'x');

TEST(GetMp4SubFormat, OnlyOpensReadsAndClosesIfTheBrandSuffices) {
  const TempDir folder;
  const std::string path = folder.write("a.mp4", ftyp("M4A ") + box("mdat", kContent));
  const auto calls = callsOf([&] {
    unsigned format = 0;
    GetMp4SubFormat(path.c_str(), &format);
  });
  if (!calls) GTEST_SKIP() << "tracing is not allowed here";
  EXPECT_EQ(*calls, 3);
}

std::optional<long> callsOfWalk(int boxes, const std::string& content) {
  const TempDir folder;
  std::string file = ftyp("mp42");
  for (int i = 1; i < boxes; ++i) file += box("free", content);
  const std::string path = folder.write("a.mp4", file);
  return callsOf([&] { CheckMp4MoovAtEnd(path.c_str()); });
}

TEST(CheckMp4MoovAtEnd, ReadsOncePerDistantBox) {
  for (const int boxes : {2, 5, 20}) {
    SCOPED_TRACE(boxes);
    const auto calls = callsOfWalk(boxes, std::string(10000, 'x'));
    if (!calls) GTEST_SKIP() << "tracing is not allowed here";
    constexpr long kOpenSizeEndClose = 4;
    // The first two are in one window.
    EXPECT_EQ(*calls, kOpenSizeEndClose + boxes - 1);
  }
}

TEST(CheckMp4MoovAtEnd, ReadsManySmallBoxesAtOnce) {
  const auto calls = callsOfWalk(5000, "");
  if (!calls) GTEST_SKIP() << "tracing is not allowed here";
  EXPECT_LT(*calls, 20);
}

// For these FFmpeg would read the whole photo.
TEST(GetPhotoHW, OnlyOpensReadsAndClosesPhotosWithUsualHeaders) {
  const TempDir folder;
  const std::string pixels(100'000, 'x');
  const std::string segments = jpegFileHeader() + jpegFrame({.width = 640, .height = 480});
  const std::string paths[] = {
      folder.write("a.jpg", jpeg(segments + jpegScan(pixels))),
      folder.write("a.png", png({}) + pixels),
      folder.write("a.gif", gif(20, 10) + pixels),
      folder.write("a.bmp", bmp({.pixels = pixels})),
      folder.write("a.webp", webp(webpLossy(20, 10) + webpChunk("EXIF", pixels))),
  };
  for (const std::string& path : paths) {
    SCOPED_TRACE(path);
    const auto calls = tracedCalls([&] {
      uint32_t width = 0;
      uint32_t height = 0;
      GetPhotoHW(path.c_str(), &width, &height);
    });
    if (!calls) GTEST_SKIP() << "tracing is not allowed here";
    std::vector<unsigned long long> onFiles;
    std::copy_if(calls->begin(), calls->end(), std::back_inserter(onFiles), isOnFiles);
    constexpr unsigned long long kSize = SYS_newfstatat;  // of the opened file
    EXPECT_EQ(onFiles,
              (std::vector<unsigned long long>{SYS_openat, kSize, SYS_pread64, SYS_close}));
  }
}

struct Video {
  const char* name;
  const char* options;
  long more;
};

// A stream query needs one call more than FFmpeg, to distinguish a file from a pipe or a folder. A
// record needs no further one, except to open, read and close the file for the brand of an MP4
// file, and for the packet size of a transport stream.
TEST(GetVideoMetadata1, NeedsHardlyMoreCallsThanAStreamQuery) {
  constexpr char kSource[] =
      "-f lavfi -i testsrc2=size=64x48:rate=25:duration=1 -f lavfi -i sine=duration=1 ";
  constexpr Video kVideos[] = {
      {"calls.mp4", "-c:v libx264 -c:a aac", 3},    {"calls.mkv", "-c:v libx264 -c:a aac", 0},
      {"calls.avi", "-c:v mpeg4 -c:a mp2", 0},      {"calls.ts", "-c:v libx264 -c:a aac", 3},
      {"calls.mpg", "-c:v mpeg2video -c:a mp2", 0},
  };
  for (const Video& video : kVideos) {
    SCOPED_TRACE(video.name);
    const std::string path = media(video.name, std::string(kSource) + video.options);
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const auto query = callsOnFiles([&] {
      unsigned count = 0;
      GetAudioTrack(path.c_str(), &count);
    });
    const auto record = callsOnFiles([&] {
      videoObject_st object = {};
      GetVideoMetadata1(folder.c_str(), video.name, &object, 0);
    });
    if (!query || !record) GTEST_SKIP() << "tracing is not allowed here";
    EXPECT_LE(*record, *query + video.more);
    EXPECT_GT(*query, 4) << "opened, read and closed";
  }
}

// Whatever reads a part of it: FFmpeg, boxes, packets.
TEST(Probes, OpenTheirFileOnce) {
  constexpr char kSource[] =
      "-f lavfi -i testsrc2=size=64x48:rate=25:duration=1 -f lavfi -i sine=duration=1 ";
  for (const char* name : {"calls.mp4", "calls.ts"}) {
    SCOPED_TRACE(name);
    const std::string path = media(name, std::string(kSource) + "-c:v libx264 -c:a aac");
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const auto probe = [&] {
      videoObject_st object = {};
      GetVideoMetadata1(folder.c_str(), name, &object, 0);
    };
    probe();
    const auto calls = tracedCalls(probe);
    if (!calls) GTEST_SKIP() << "tracing is not allowed here";
    EXPECT_EQ(std::count(calls->begin(), calls->end(), SYS_openat), 1);
  }
}

}  // namespace
