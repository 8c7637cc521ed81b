// kolum scan among files that attack it: by their content, their names, or as what they are.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <thread>

#include "base/descriptor.h"
#include "support/hostile_media.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "tool/kolum_run.h"
#include "tool/scanned_folder.h"

namespace fs = std::filesystem;

namespace kolum::test {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

// ---- By their content

struct Poison {
  const char* name;
  const char* code;  // of the failure; null: it is described
};

std::ostream& operator<<(std::ostream& out, const Poison& poison) {
  return out << poison.name;
}

std::string poisonName(const testing::TestParamInfo<Poison>& test) {
  std::string name = test.param.name;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}

HostileFile hostileFile(const std::string& name) {
  if (name == "abort.mp4") return {.name = name, .content = sunRasterAbort};
  for (HostileFile& file : hostileFiles())
    if (file.name == name) return std::move(file);
  throw std::logic_error("no such hostile file: " + name);
}

class ScanOfPoison : public testing::TestWithParam<Poison> {};

TEST_P(ScanOfPoison, LosesOnlyThatFile) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers allow no limit of memory";
#endif
  const ScannedFolder folder;
  writeHostileFile(hostileFile(GetParam().name), folder.folder());
  const ScanResult result = folder.scan({.arguments = {"--deadline", "20"}, .limit = 90s});
  folder.expectGoodFiles();
  if (GetParam().code == nullptr) {
    const json row = folder.row(GetParam().name);
    ASSERT_TRUE(row.is_object());
    EXPECT_FALSE(row.contains("error")) << row;
    EXPECT_EQ(result.status, 0) << result.err;
  } else {
    folder.expectFailure(GetParam().name, GetParam().code);
    EXPECT_EQ(result.status, 1);
  }
}

INSTANTIATE_TEST_SUITE_P(OfContent, ScanOfPoison,
                         testing::Values(Poison{"abort.mp4", "damaged"},
                                         Poison{"hugeHeader.png", nullptr},
                                         Poison{"hugeHeaderAsVideo.mp4", nullptr},
                                         Poison{"hugeCounts.mp4", "out-of-memory"},
                                         Poison{"fragmentsOfClaimedSamples.mp4", "out-of-memory"},
                                         Poison{"emptyTracks.mkv", "out-of-memory"},
                                         Poison{"inflatingFrames.mp3", nullptr},
                                         Poison{"headThenNoise.ts", nullptr},
                                         Poison{"inflatingFrames.dsf", nullptr},
                                         Poison{"boxesOfEightBytes.mp4", "damaged"}),
                         poisonName);

TEST(ScanOfHugeFiles, ReadsNoHoles) {
  const ScannedFolder folder;
  const std::string path = folder.write("m.mkv", "");
  constexpr off_t kSize = off_t{8} << 40;
  if (truncate(path.c_str(), kSize) != 0) GTEST_SKIP() << "no file of 8 TiB is possible here";
  const ScanResult result = folder.scan();
  EXPECT_EQ(result.status, 1);
  folder.expectGoodFiles();
  folder.expectFailure("m.mkv", "not-media");
}

// ---- By what they refer to

// Files that name others, by path and by URL.
struct Reference {
  const char* name;
  std::string (*content)(const std::string& target);
};

std::ostream& operator<<(std::ostream& out, const Reference& reference) {
  return out << reference.name;
}

constexpr const char* kUrl = "http://127.0.0.1:9/secret.ts";

std::string segments(const std::string& target) {
  return "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n#EXTINF:1\n" + target +
         "\n#EXTINF:1\n" + kUrl + "\n#EXT-X-ENDLIST\n";
}
std::string concatenation(const std::string& target) {
  return "ffconcat version 1.0\nfile '" + target + "'\nfile '" + kUrl + "'\n";
}
std::string session(const std::string& /*target*/) {
  return "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=x\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
         "m=video 9999 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n";
}
std::string presentation(const std::string& target) {
  return R"(<?xml version="1.0"?><MPD xmlns="urn:mpeg:dash:schema:mpd:2011" type="static")"
         R"( mediaPresentationDuration="PT1S" profiles="urn:mpeg:dash:profile:isoff-main:2011">)"
         R"(<Period><AdaptationSet mimeType="video/mp4"><Representation id="1" bandwidth="1">)"
         "<BaseURL>" +
         target + "</BaseURL></Representation></AdaptationSet></Period></MPD>";
}
std::string drawing(const std::string& target) {
  return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink")"
         R"( width="9" height="9"><image width="9" height="9" xlink:href=")" +
         target + "\"/></svg>";
}

// An alias as QuickTime has it, to another file with the samples.
std::string alias(const std::string& target) {
  const std::string name = fs::path(target).filename();
  const auto padded = [](const std::string& text, std::size_t size) {
    return static_cast<char>(text.size()) + text + std::string(size - text.size(), '\0');
  };
  const auto level = bigEndian(0, 2) + bigEndian(1, 2);
  const std::string path = bigEndian(2, 2) + bigEndian(target.size(), 2) + target +
                           std::string(target.size() % 2, '\0') + bigEndian(0xFFFF, 2);
  return fullBox("alis", 0, 0,
                 std::string(10, '\0') + padded("disk", 27) + std::string(12, '\0') +
                     padded(name, 63) + std::string(16, '\0') + level + std::string(16, '\0') +
                     path);
}

std::string withAlias(const std::string& target) {
  std::string movie =
      contentOf(media("for-alias.mov", "-f lavfi -i color=size=64x48:rate=5:duration=1 -an"));
  const std::string entry = alias(target);
  const std::size_t own = movie.find("url ", movie.find("dref")) - 4;
  constexpr std::size_t kOwnSize = 12;
  movie.replace(own, kOwnSize, entry);
  for (const char* around : {"moov", "trak", "mdia", "minf", "dinf", "dref"}) {
    // The handler's box names these, too: sizes are in front of those that contain the entry.
    const std::size_t at = movie.rfind(around, own) - 4;
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < 4; ++i)
      size = size << 8 | static_cast<unsigned char>(movie[at + i]);
    movie.replace(at, 4, bigEndian(size + entry.size() - kOwnSize, 4));
  }
  return movie;
}

class ScanOfReferences : public testing::TestWithParam<Reference> {};

TEST_P(ScanOfReferences, OpensNothingElse) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "what reports leaks cannot run in a process that is traced";
#endif
  const ScannedFolder folder;
  const std::string secret = folder.outside("secret.dat");
  fs::copy(media("for-alias.mov", "-f lavfi -i color=size=64x48:rate=5:duration=1 -an"), secret);
  folder.write(GetParam().name, GetParam().content(secret));
  const std::string trace = folder.outside("trace");
  const ScanResult result =
      folder.scan({.before = {"strace", "-f", "-qq", "-s", "4096", "-o", trace, "-e",
                              "trace=open,openat,openat2,stat,newfstatat,socket,connect,execve"},
                   .limit = 60s});
  if (result.err.find("PTRACE") != std::string::npos) GTEST_SKIP() << result.err;
  folder.expectGoodFiles();
  const std::string calls = contentOf(trace);
  if (std::string(GetParam().name).ends_with(".m3u")) {
    EXPECT_FALSE(folder.row(GetParam().name).is_object()) << "no medium by its name";
  } else {
    EXPECT_TRUE(folder.row(GetParam().name).is_object()) << result.err;
    EXPECT_THAT(calls, HasSubstr(GetParam().name));
  }
  EXPECT_THAT(calls, Not(HasSubstr("secret")));
  EXPECT_THAT(calls, Not(HasSubstr("AF_INET")));
}

INSTANTIATE_TEST_SUITE_P(
    ByKind, ScanOfReferences,
    testing::Values(Reference{"segments.mp4", segments}, Reference{"segments.ts", segments},
                    Reference{"segments.m3u", segments},
                    Reference{"concatenation.mkv", concatenation},
                    Reference{"session.mp4", session}, Reference{"presentation.mp4", presentation},
                    Reference{"drawing.jpg", drawing}, Reference{"alias.mov", withAlias}),
    [](const auto& test) {
      std::string name = test.param.name;
      std::replace(name.begin(), name.end(), '.', '_');
      return name;
    });

// ---- By their names

// FFmpeg takes such names for those of a series of pictures, if it is allowed to.
TEST(ScanOfNames, TakesPatternsLiterally) {
  const ScannedFolder folder;
  folder.write("m%d.jpg", goodPicture());
  folder.write("m%03d.jpg", "no picture");
  folder.write("m1.jpg", contentOf(media("wide.png", "-f lavfi -i color=size=80x8 -frames:v 1")));
  folder.write("m001.jpg", goodPicture());
  folder.write("m*.jpg", goodPicture());
  folder.scan();
  folder.expectGoodFiles();
  EXPECT_EQ(folder.row("m%d.jpg").value("width", 0), 40);
  EXPECT_EQ(folder.row("m1.jpg").value("width", 0), 80);
  EXPECT_EQ(folder.row("m*.jpg").value("width", 0), 40);
  folder.expectFailure("m%03d.jpg", "not-media");
}

TEST(ScanOfNames, TakesEveryByte) {
  const ScannedFolder folder;
  std::size_t files = 0;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/') continue;
    folder.write("m" + std::string(1, static_cast<char>(byte)) + ".jpg", goodPicture());
    ++files;
  }
  const ScanResult result = folder.scan();
  EXPECT_EQ(result.status, 0) << result.err;
  folder.expectGoodFiles();
  const std::vector<json> rows = folder.rows();
  EXPECT_EQ(rows.size(), files + 2);
  for (const json& row : rows) EXPECT_EQ(row.value("width", 0), 40) << row;
}

TEST(ScanOfNames, TakesLongOnes) {
  const ScannedFolder folder;
  const std::string name = "m" + std::string(250, 'x') + ".jpg";
  folder.write(name, goodPicture());
  EXPECT_EQ(folder.scan().status, 0);
  folder.expectGoodFiles();
  EXPECT_EQ(folder.row(name).value("width", 0), 40);
}

// ---- By where they are

TEST(ScanOfFolders, FollowsNoLinks) {
  const ScannedFolder folder;
  const std::string secret = folder.outside("secret.jpg");
  fs::copy(folder.path("a.jpg"), secret);
  fs::create_directory(folder.outside("elsewhere"));
  fs::copy(secret, folder.outside("elsewhere/secret.jpg"));
  fs::create_symlink(secret, folder.path("m.jpg"));
  fs::create_directory_symlink(folder.outside("elsewhere"), folder.path("n"));
  fs::create_directory_symlink(".", folder.path("loop"));
  fs::create_directory_symlink("..", folder.path("above"));
  fs::create_symlink("itself.jpg", folder.path("itself.jpg"));
  const ScanResult result = folder.scan();
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr(", not followed"));
  folder.expectGoodFiles();
  EXPECT_EQ(folder.rows().size(), 2U);
}

TEST(ScanOfFolders, TakesManyEntries) {
  const ScannedFolder folder;
  constexpr int kEntries = 100'000;
  fs::create_directory(folder.path("m"));
  const Descriptor many(open(folder.path("m").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < kEntries; ++i) {
    // Every thousandth is a picture by its name; the others are nothing.
    const std::string name = std::to_string(i) + (i % 1000 == 0 ? ".jpg" : ".txt");
    const Descriptor file(openat(many.get(), name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    ASSERT_TRUE(file.isOpen()) << name;
  }
  const ScanResult result = folder.scan({.limit = 60s});
  EXPECT_EQ(result.status, 1);
  folder.expectGoodFiles();
  EXPECT_EQ(folder.rows().size(), 102U);
  folder.expectFailure("1000.jpg", "empty");
}

TEST(ScanOfFolders, NamesFilesBeyondTheLongestPath) {
  const ScannedFolder folder;
  constexpr int kDepth = 100;
  const std::string part(100, 'm');
  {
    Descriptor at(open(folder.folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < kDepth; ++i) {
      ASSERT_EQ(mkdirat(at.get(), part.c_str(), 0755), 0);
      at = Descriptor(openat(at.get(), part.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    const Descriptor file(openat(at.get(), "deep.jpg", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    ASSERT_TRUE(file.isOpen());
  }
  const ScanResult result = folder.scan();
  EXPECT_EQ(result.status, 1) << result.err;
  folder.expectGoodFiles();
  folder.expectFailure("deep.jpg", "path-too-long");
  mustRun({"rm", "-rf", folder.path(part)});
}

// ---- As what they are

TEST(ScanOfSpecialFiles, OpensNone) {
  const ScannedFolder folder;
  ASSERT_EQ(mkfifo(folder.path("fifo.jpg").c_str(), 0600), 0);
  ASSERT_EQ(mknod(folder.path("socket.jpg").c_str(), S_IFSOCK | 0600, 0), 0);
  // Only root makes devices; one that never ends.
  mknod(folder.path("device.jpg").c_str(), S_IFCHR | 0600, makedev(1, 5));
  fs::create_symlink("/dev/zero", folder.path("zero.jpg"));
  fs::create_directory(folder.path("folder.jpg"));
  const ScanResult result = folder.scan();
  EXPECT_EQ(result.status, 0) << result.err;
  folder.expectGoodFiles();
  EXPECT_EQ(folder.rows().size(), 2U);
}

// Runs until it is destroyed.
class Meanwhile {
 public:
  explicit Meanwhile(std::function<void(int)> work)
      : thread_([this, work = std::move(work)] {
          for (int i = 0; !isOver_; ++i) work(i);
        }) {}
  ~Meanwhile() {
    isOver_ = true;
    thread_.join();
  }
  Meanwhile(const Meanwhile&) = delete;
  Meanwhile& operator=(const Meanwhile&) = delete;

 private:
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

constexpr int kChanging = 100;

std::string changingName(int number) {
  return "m" + std::to_string(number % kChanging) + ".jpg";
}

// Also grows it.
void cutTo(const std::string& path, off_t size) {
  std::error_code ignored;
  fs::resize_file(path, static_cast<std::uintmax_t>(size), ignored);
}

void swapFiles(const std::string& one, const std::string& other) {
  renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
}

// Whatever was read, each file in the library is described or has a reason.
void expectSense(const ScannedFolder& folder, const std::set<std::string>& codes) {
  for (const json& row : folder.rows()) {
    if (row.contains("error")) {
      EXPECT_TRUE(codes.contains(row["error"]["code"])) << row;
    } else {
      EXPECT_EQ(row.value("width", 0), 40) << row;
    }
  }
}

TEST(ScanOfSpecialFiles, NeverWaitsForFifosThatAreSwappedIn) {
  const ScannedFolder folder;
  for (int i = 0; i < kChanging; ++i) folder.write(changingName(i), goodPicture());
  const std::string fifo = folder.outside("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  {
    const Meanwhile swapper([&](int i) { swapFiles(fifo, folder.path(changingName(i))); });
    for (int i = 0; i < 3; ++i) folder.scan({.arguments = {"--retry"}});
  }
  folder.expectGoodFiles();
  expectSense(folder, {"not-a-file", "damaged", "not-media", "not-found"});
}

TEST(ScanOfChangingFiles, DescribesTheRest) {
  const ScannedFolder folder;
  for (int i = 0; i < kChanging; ++i) folder.write(changingName(i), goodPicture());
  {
    const Meanwhile changer([&](int i) {
      const std::string path = folder.path(changingName(i * 7));
      switch (i % 4) {
        case 0:
          cutTo(path, 10);
          break;
        case 1:
          unlink(path.c_str());
          break;
        case 2:
          folder.write(changingName(i * 7), goodPicture());
          break;
        case 3:
          cutTo(folder.write(changingName(i * 7), goodPicture()), off_t{1} << 20);
          break;
      }
    });
    for (int i = 0; i < 3; ++i) folder.scan({.arguments = {"--retry"}});
  }
  folder.expectGoodFiles();
  expectSense(folder, {"damaged", "not-media", "not-found", "empty", "no-such-stream"});
}

}  // namespace
}  // namespace kolum::test
