// Files without a result: the code of the cause, and the reason in words.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "read/disc/mounting.h"
#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kPictures = "-f lavfi -i color=size=128x96:rate=5:duration=1";
constexpr const char* kSound = "-f lavfi -i sine=duration=1";

struct Row {
  std::vector<std::string> command;  // the words before the file's name
  std::string name;                  // the name that the file gets
  std::string file;                  // the file that is probed under that name
  const char* code;
  const char* reason;
};

void expectFailure(const Row& row) {
  const TempDir folder;
  if (!row.file.empty()) std::filesystem::copy(row.file, folder.path(row.name));
  std::vector<std::string> arguments = row.command;
  arguments.insert(arguments.end(), {"--json", row.name, "/dev/null/"});
  const Outcome run = kolum(arguments, {.folder = folder.folder()});
  const std::string shown = testing::PrintToString(row.command) + " " + row.code;
  EXPECT_EQ(run.status, 1) << shown;
  ASSERT_EQ(run.json().size(), 2U) << shown << run.out;
  const json line = run.json().front();
  EXPECT_EQ(line["file"], row.name) << shown;
  EXPECT_EQ(line["error"]["code"], row.code) << shown << line;
  EXPECT_THAT(line["error"]["reason"], HasSubstr(row.reason)) << shown;
  EXPECT_THAT(run.err, HasSubstr("kolum: " + row.name + ": " + row.reason)) << shown;
  expectFitsSchema(row.command.front(), run);
}

std::string soundOnly() {
  return media("sound-only.m4a", std::string(kSound) + " -c:a aac");
}
std::string silent() {
  return media("silent.mkv", std::string(kPictures) + " -c:v mpeg4");
}
std::string av1() {
  return media("pictures.mkv", std::string(kPictures) + " -c:v libaom-av1 -cpu-used 8");
}
std::string opus() {
  return media("sound.opus", std::string(kSound) + " -c:a libopus");
}

// Lacks its index, because that is at the end of an MPEG-4 file.
std::string cut(const TempDir& folder) {
  const std::string whole =
      contentOf(media("long.mp4", "-f lavfi -i testsrc2=size=320x240:duration=2 -c:v mpeg4"));
  return folder.write("cut", std::string_view(whole).substr(0, whole.size() / 2));
}

TEST(Failures, NameTheStreamsThatExistInstead) {
  const std::string noVideo = "no video in it; it has sound only";
  const Row rows[] = {
      {{"probe"}, "a.mp4", soundOnly(), "no-such-stream", noVideo.c_str()},
      {{"dlna"}, "a.mp4", soundOnly(), "no-such-stream", noVideo.c_str()},
      {{"keyframe", "0"}, "a.mp4", soundOnly(), "no-such-stream", noVideo.c_str()},
      {{"probe", "photo"},
       "a.mp4",
       soundOnly(),
       "no-such-stream",
       "no picture in it; it has sound"},
      {{"probe", "audio"},
       "a.mkv",
       silent(),
       "no-such-stream",
       "no sound in it; it has video only"},
      {{"dlna"}, "a.mp3", silent(), "no-such-stream", "no sound in it; it has video only"},
      {{"probe"},
       "a.mp3",
       samples() + "Photos/pattern.jpg",
       "no-such-stream",
       "no sound in it; it has a picture"},
  };
  for (const Row& row : rows) expectFailure(row);
}

TEST(Failures, AdvisePeopleAndNotPrograms) {
  const TempDir folder;
  std::filesystem::copy(soundOnly(), folder.path("a.mp4"));
  const Outcome run = kolum({"probe", "--json", "a.mp4"}, {.folder = folder.folder()});
  EXPECT_EQ(run.err,
            "kolum: a.mp4: no video in it; it has sound only; \"kolum probe audio FILE\" describes "
            "it\n");
  ASSERT_EQ(run.json().size(), 1U);
  EXPECT_EQ(run.json().front()["error"]["reason"], "no video in it; it has sound only");
}

TEST(Failures, NameCodecWithoutNumber) {
  const Row rows[] = {
      {{"probe"},
       "a.mkv",
       av1(),
       "unknown-codec",
       "its codec \"av1\" has no number in the library"},
      {{"dlna"}, "a.mkv", av1(), "unknown-codec", "its codec \"av1\" has no number in the library"},
      {{"probe"}, "a.ogg", opus(), "unknown-codec", "its codec \"opus\" has no number"},
  };
  for (const Row& row : rows) expectFailure(row);
}

TEST(Failures, NameTheFormatOfDamagedFiles) {
  const TempDir folder;
  const std::string file = cut(folder);
  const std::vector<std::vector<std::string>> commands = {
      {"probe"},  {"probe", "audio"}, {"probe", "photo"}, {"info"},
      {"tracks"}, {"keyframe", "0"},  {"dlna"},           {"dsf"}};
  for (const auto& command : commands)
    expectFailure(
        {command, "a.mp4", file, "damaged", "begins like QuickTime / MOV but cannot be read"});
}

TEST(Failures, RecogniseNonMedia) {
  const TempDir folder;
  const std::string text = folder.write("text", std::string(5000, 'x'));
  const std::vector<std::vector<std::string>> commands = {
      {"probe"}, {"probe", "photo"}, {"info"}, {"tracks"}, {"keyframe", "0"}, {"dlna"}, {"dsf"}};
  for (const auto& command : commands)
    expectFailure({command, "a.mp4", text, "not-media", "not a media file"});
}

TEST(Failures, RecognisePlaylists) {
  const TempDir folder;
  const std::string list = folder.write("list",
                                        "#EXTM3U\n#EXT-X-VERSION:3\n#EXTINF:1\na.ts\n"
                                        "#EXT-X-TARGETDURATION:1\n");
  expectFailure({{"probe"}, "a.mp4", list, "playlist", "a playlist (Apple HTTP Live Streaming)"});
  expectFailure({{"probe"}, "a.m3u", list, "playlist", "a playlist has nothing to probe"});
}

TEST(Failures, NameTheKindOfNonFiles) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("fifo.mp4").c_str(), 0600), 0);
  ASSERT_EQ(mknod(folder.path("socket.mp4").c_str(), S_IFSOCK | 0600, 0), 0);
  std::filesystem::create_symlink("/dev/null", folder.path("null.mp4"));
  const std::vector<std::vector<std::string>> commands = {
      {"probe"},         {"probe", "audio"}, {"probe", "photo"}, {"info"},
      {"tracks"},        {"keyframe", "0"},  {"dlna"},           {"dsf"},
      {"probe", "--all"}};
  for (std::vector<std::string> command : commands) {
    command.insert(command.end(), {"--json", "fifo.mp4", "socket.mp4", "null.mp4"});
    const Outcome run = kolum(command, {.folder = folder.folder()});
    EXPECT_EQ(run.status, 1);
    for (const char* line :
         {"kolum: fifo.mp4: a FIFO, not a file\n", "kolum: socket.mp4: a socket, not a file\n",
          "kolum: null.mp4: a device, not a file\n"})
      EXPECT_THAT(run.err, HasSubstr(line)) << command[0];
    ASSERT_EQ(run.json().size(), 3U) << command[0];
    for (const json& line : run.json()) EXPECT_EQ(line["error"]["code"], "not-a-file") << line;
  }
}

TEST(Failures, ExplainWhyDiscImagesCannotBeMounted) {
  const TempDir folder;
  const std::string image = folder.write("image", std::string(100'000, '\0'));
  expectFailure({{"probe"}, "a.iso", image, "disc-image", "a disc image"});
  expectFailure({{"dlna"}, "A.ISO", image, "disc-image", "a disc image"});
  expectFailure({{"info"}, "a.iso", image, "disc-image", "disc images are not opened"});
}

TEST(Mounting, NeedsRoot) {
  runInChild([] {
    const uid_t user = geteuid();
    if (user == 0) {
      ASSERT_EQ(seteuid(65534), 0);
    }
    EXPECT_EQ(disc::mountingObstacle(), "mounting needs root");
    // The leak checker traces the process, so it must be dumpable.
    ASSERT_EQ(seteuid(user), 0);
    prctl(PR_SET_DUMPABLE, 1);
  });
}

TEST(Mounting, NeedsTheRightToMount) {
  if (geteuid() != 0) GTEST_SKIP() << "only root has the right to give it up";
  const TempDir folder;
  const RunResult limited = run({"setpriv", "--bounding-set=-sys_admin", KOLUM_PROGRAM, "probe",
                                 folder.write("a.iso", std::string(100'000, '\0'))});
  EXPECT_EQ(limited.status, 1);
  EXPECT_THAT(limited.err, HasSubstr("a disc image, which cannot be mounted: root may not mount "
                                     "here, as in most containers\n"));
}

TEST(Failures, RecogniseDiscsWithoutMainTitle) {
  const TempDir folder;
  folder.write("VIDEO_TS/VIDEO_TS.IFO", "no DVD");
  for (const char* command : {"probe", "info", "dlna"}) {
    const Outcome run = kolum({command, "--json", folder.path("VIDEO_TS")});
    EXPECT_EQ(run.status, 1) << command;
    ASSERT_EQ(run.json().size(), 1U) << command;
    EXPECT_EQ(run.json()[0]["error"]["code"], "no-main-title") << command;
  }
  for (const auto& command : std::vector<std::vector<std::string>>{{"tracks"}, {"keyframe", "0"}}) {
    std::vector<std::string> arguments = command;
    arguments.insert(arguments.end(), {"--json", folder.path("VIDEO_TS")});
    EXPECT_EQ(kolum(arguments).json().at(0)["error"]["code"], "disc") << command[0];
  }
}

TEST(Failures, HaveCodesForSystemErrors) {
  const TempDir folder;
  folder.write("empty.mp4", "");
  folder.write("notes.txt", "text");
  const std::pair<std::string, const char*> rows[] = {
      {"missing.mp4", "not-found"},
      {"empty.mp4", "empty"},
      {"empty.mp4/a.mp4", "not-found"},
      {"notes.txt", "unknown-name"},
      {std::string(300, 'x') + ".mp4", "path-too-long"},
      {"", "not-found"},
  };
  for (const auto& [name, code] : rows) {
    const Outcome run = kolum({"probe", "--json", name}, {.folder = folder.folder()});
    EXPECT_EQ(run.status, 1) << code;
    ASSERT_EQ(run.json().size(), 1U) << code;
    EXPECT_EQ(run.json()[0]["error"]["code"], code);
    EXPECT_EQ(run.json()[0]["file"], name);
    expectFitsSchema("probe", run);
  }
  const Outcome cover = kolum({"cover", "--json", folder.path("missing")});
  EXPECT_EQ(cover.json().at(0)["error"]["code"], "not-found");
  expectFitsSchema("cover", cover);
}

TEST(Failures, EscapeHostileNames) {
  const TempDir folder;
  const std::string name = "caf\xE9\n\x1b[2J\xE2\x80\xAE.mp4";
  folder.write(name, std::string(5000, 'x'));
  for (const auto& command :
       std::vector<std::vector<std::string>>{{"probe"}, {"info"}, {"tracks"}, {"dlna"}, {"dsf"}}) {
    std::vector<std::string> arguments = command;
    arguments.insert(arguments.end(), {"--json", name});
    const Outcome run = kolum(arguments, {.folder = folder.folder()});
    EXPECT_THAT(run.err,
                testing::EndsWith("kolum: caf\\xe9\\n\\x1b[2J\\u202e.mp4: not a media file\n"));
    ASSERT_EQ(run.json().size(), 1U);
    EXPECT_EQ(run.json()[0]["fileBytes"], "caf%E9%0A%1B%5B2J%E2%80%AE.mp4");
    EXPECT_EQ(run.json()[0]["error"]["code"], "not-media");
    expectFitsSchema(command[0], run);
  }
}

// The list uses the last descriptor.
TEST(Failures, ReportUsedUpDescriptors) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers use descriptors themselves";
#endif
  const TempDir folder;
  const std::string list = folder.write("list", samples() + "Photos/pattern.jpg\n");
  const Outcome one =
      kolumWithDescriptors(7, "probe --in-process --jobs 1 --json --files-from '" + list + "'");
  EXPECT_EQ(one.status, 1);
  EXPECT_THAT(one.err, testing::EndsWith("Photos/pattern.jpg: Too many open files\n"));
  ASSERT_EQ(one.json().size(), 1U);
  EXPECT_EQ(one.json()[0]["error"]["code"], "too-many-open-files");
}

}  // namespace
}  // namespace kolum::test
