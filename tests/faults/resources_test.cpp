// Runs every step short of descriptors, processes, memory, disk space and readable bytes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kolum/kolum.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "faults/steps.h"
#include "support/child_process.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

// Limits a resource while it exists.
class Limit {
 public:
  Limit(__rlimit_resource kind, rlim_t value) : kind_(kind) {
    getrlimit(kind, &before_);
    const rlimit limit = {value, before_.rlim_max};
    EXPECT_EQ(setrlimit(kind, &limit), 0);
  }
  ~Limit() { setrlimit(kind_, &before_); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

 private:
  __rlimit_resource kind_;
  rlimit before_ = {};
};

bool runLimited(const Step& step, __rlimit_resource kind, rlim_t value) {
  std::optional<Limit> limit;
  return runDisturbed(
      step, [&] { limit.emplace(kind, value); }, [&] { limit.reset(); });
}

bool runWithWorkingPath(const Step& step, std::string path) {
  char* const before = g_localWorkingPath;
  const bool isDone = runDisturbed(
      step, [&] { g_localWorkingPath = path.data(); }, [&] { g_localWorkingPath = before; });
  return isDone;
}

rlim_t lowestFreeDescriptor() {
  const int lowest = dup(0);
  close(lowest);
  return static_cast<rlim_t>(lowest);
}

TEST(DescriptorFaults, LeaveNothingBehindAndTheStepWorking) {
  inPreparedSandbox([] {
    constexpr rlim_t kMost = 8;
    for (const Step& step : steps()) {
      SCOPED_TRACE(step.name);
#ifdef KOLUM_SANITIZED_ADDRESS
      // On first use of a type the sanitizer opens descriptors.
      EXPECT_TRUE(runUndisturbed(step));
#endif
      const rlim_t lowest = lowestFreeDescriptor();
      for (rlim_t more = 0; more < kMost; ++more) {
        SCOPED_TRACE("descriptors left: " + std::to_string(more));
        const bool isDone = runLimited(step, RLIMIT_NOFILE, lowest + more);
        if (more == 0 && (step.needs & kDescriptors) != 0) {
          EXPECT_FALSE(isDone);
        }
      }
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

// The limit does not apply to root, so the process becomes nobody, who cannot mount.
TEST(ProcessFaults, FailOnlyStepsThatNeedPrograms) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  inPreparedSandbox([] {
    for (const auto& entry : fs::recursive_directory_iterator(kDataVolume))
      fs::permissions(entry, fs::perms::all);
    constexpr uid_t kNobody = 65534;
    for (const Step& step : steps()) {
      SCOPED_TRACE(step.name);
      if (step.name == "copy") fs::remove("/data/copy.jpg");
      std::optional<Limit> limit;
      const bool isDone = runDisturbed(
          step,
          [&] {
            limit.emplace(RLIMIT_NPROC, 0);
            ASSERT_EQ(setresuid(kNobody, kNobody, 0), 0);
          },
          [&] {
            ASSERT_EQ(setresuid(0, 0, 0), 0);
            limit.reset();
          });
      EXPECT_EQ(isDone, (step.needs & kPrograms) == 0);
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

TEST(MemoryFaults, LeaveNothingBehindAtAnyLimit) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers need more address space than any limit leaves";
#else
  inPreparedSandbox([] {
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    statm >> pages;
    const rlim_t used = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    for (const Step& step : steps()) {
      SCOPED_TRACE(step.name);
      for (const rlim_t more : {0U, 128U << 10U, 512U << 10U, 2U << 20U, 8U << 20U})
        runLimited(step, RLIMIT_AS, used + more);
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
#endif
}

TEST(FileSizeFaults, FailOnlyStepsThatWrite) {
  inPreparedSandbox([] {
    // Writers get an error instead of the signal.
    signal(SIGXFSZ, SIG_IGN);
    for (const Step& step : steps()) {
      if ((step.needs & kMounts) != 0) continue;
      SCOPED_TRACE(step.name);
      EXPECT_EQ(runLimited(step, RLIMIT_FSIZE, 0), (step.needs & kSpace) == 0);
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

// A volume without room for one more file or one more byte.
class FullVolume {
 public:
  explicit FullVolume(const char* folder) : folder_(folder) {
    EXPECT_EQ(mount("none", folder, "tmpfs", 0, "size=64k,nr_inodes=40,mode=1777"), 0);
  }
  ~FullVolume() { umount2(folder_, MNT_DETACH); }
  FullVolume(const FullVolume&) = delete;
  FullVolume& operator=(const FullVolume&) = delete;

  // Fills the volume. Existing files stay, but cannot grow.
  void fill() const {
    const std::string folder = folder_;
    std::ofstream(folder + "/filler") << std::string(128 << 10, 'x') << std::flush;
    for (int i = 0; i < 40; ++i) std::ofstream(folder + "/filler" + std::to_string(i)).flush();
  }
  void drain() const {
    for (const auto& entry : fs::directory_iterator(folder_))
      if (entry.path().filename().string().starts_with("filler")) fs::remove(entry);
  }

 private:
  const char* folder_;
};

void copyTree(const std::string& from, const std::string& to) {
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

TEST(FullVolumeFaults, FailStepsThatWriteAndKeepExistingFiles) {
  inPreparedSandbox([] {
    copyTree(kDataVolume, "/kept");
    const FullVolume volume(kDataVolume);
    copyTree("/kept", kDataVolume);
    for (const Step& step : steps()) {
      if (step.name == "copy" || (step.needs & kMounts) != 0) continue;
      SCOPED_TRACE(step.name);
      const bool isDone = runDisturbed(
          step, [&] { volume.fill(); }, [&] { volume.drain(); });
      EXPECT_EQ(isDone, (step.needs & kSpace) == 0);
      if (step.name == "album art") {
        EXPECT_TRUE(fs::exists("/data/music/artist/@_album.jpg")) << "the source";
      }
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

// A full volume has no room for the mount folder.
TEST(FullVolumeFaults, LeaveDiscImagesUnmounted) {
  inPreparedSandbox([] {
    const FullVolume volume("/tmp");
    for (const Step& step : steps()) {
      if ((step.needs & kMounts) == 0) continue;
      SCOPED_TRACE(step.name);
      EXPECT_FALSE(runDisturbed(
          step, [&] { volume.fill(); }, [&] { volume.drain(); }));
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

// Faults of the tools in the working path, and of the path itself.
TEST(WorkingPathFaults, FailOnlyStepsThatNeedItsTools) {
  struct Fault {
    const char* name;
    const char* script;  // of both tools; null if they are missing
    bool isExecutable;
  };
  constexpr Fault kFaults[] = {
      {"no tool", nullptr, false},
      {"not executable", "exit 0", false},
      {"fails", "exit 1", true},
      {"killed", "kill -SEGV $$", true},
      {"no answer", "exit 0", true},
      {"half an answer", "printf '<ID3TAG><TITLE>T</TITLE><ART'", true},
      {"no text", "head -c 100000 /dev/urandom", true},
      {"complains at length", "yes | head -c 1000000 >&2; exit 3", true},
  };
  inPreparedSandbox([&] {
    fs::create_directory("/broken");
    for (const Fault& fault : kFaults) {
      SCOPED_TRACE(fault.name);
      for (const char* tool : {"/broken/ffmpeg", "/broken/dsf2flac"}) {
        fs::remove(tool);
        if (fault.script == nullptr) continue;
        writeTool(tool, fault.script);
        if (!fault.isExecutable) fs::permissions(tool, fs::perms::owner_read);
      }
      for (const Step& step : steps()) {
        SCOPED_TRACE(step.name);
        if ((step.needs & kMounts) != 0) continue;
        EXPECT_EQ(runWithWorkingPath(step, "/broken/"), (step.needs & kWorkingPath) == 0);
        if (step.name == "album art") {
          EXPECT_TRUE(fs::exists("/data/music/artist/@_album.jpg")) << "the source";
        }
        EXPECT_TRUE(runUndisturbed(step));
      }
    }
  });
}

TEST(WorkingPathFaults, FailLikeMissingToolsForABadPath) {
  inPreparedSandbox([] {
    const std::string long_(PATH_MAX, 'x');
    for (const char* path : {"/nowhere/", "/files/video.mp4/", "/tools", "'; exit 0; '",
                             "/tools/\xff\xfe/", long_.c_str()}) {
      SCOPED_TRACE(path);
      for (const Step& step : steps()) {
        SCOPED_TRACE(step.name);
        if ((step.needs & kWorkingPath) == 0) continue;
        EXPECT_FALSE(runWithWorkingPath(step, path));
        EXPECT_TRUE(runUndisturbed(step));
      }
    }
  });
}

// Can be opened, but the first read fails.
constexpr char kUnreadable[] = "/proc/self/mem";

TEST(ReadFaults, FailEveryReader) {
  withinSeconds(60, [] {
    int fd = open(kUnreadable, O_RDONLY);
    char byte = 0;
    ASSERT_EQ(read(fd, &byte, 1), -1);
    close(fd);

    videoObject_st record;
    std::memset(&record, 0, sizeof record);
    EXPECT_EQ(GetVideoMetadata1("/proc/self/", "mem", &record, 0), 1U);
    unsigned number = 7;
    EXPECT_EQ(GetMp4SubFormat(kUnreadable, &number), 1);
    EXPECT_EQ(number, 0U);
    // No box was found.
    EXPECT_EQ(CheckMp4MoovAtEnd(kUnreadable), 0);
    number = 7;
    EXPECT_EQ(ProbeTsPacketSize(kUnreadable, &number), 1);
    EXPECT_EQ(number, 7U);
    EXPECT_EQ(GetAudioTrack(kUnreadable, &number), 1U);
    EXPECT_EQ(GetDRMProtectedInfo(kUnreadable, &number), 1U);
    EXPECT_EQ(GetVideoRotationDegree("/proc/self/", "mem", &number), 1U);
    EXPECT_EQ(number, 7U);
    MediaInfo* info = nullptr;
    EXPECT_EQ(GetMediaInfo(kUnreadable, &info, 0, nullptr), 1U);
    EXPECT_EQ(info, nullptr);
    double time = 7;
    EXPECT_EQ(getVideoKeyFrameTime(kUnreadable, 1, &time), 1U);
    EXPECT_EQ(time, 7);
    uint32_t width = 7;
    uint32_t height = 7;
    EXPECT_EQ(GetPhotoHW(kUnreadable, &width, &height), 1U);
    EXPECT_EQ(width, 7U);
    uint32_t rate = 7;
    EXPECT_EQ(GetAudioMetadata("/proc/self/", "mem", nullptr, nullptr, &rate, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              1U);
    EXPECT_EQ(rate, 7U);
    songObject_st song;
    std::memset(&song, 0, sizeof song);
    EXPECT_EQ(GetDsfMetadata("/proc/self/", "mem", &song), 1U);
    EXPECT_STREQ(song.title, "");
  });
}

}  // namespace

}  // namespace kolum::test
