// Folders: which files in them count, and what is reported about the others.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string video() {
  return media("short.mkv", "-f lavfi -i color=size=64x48:rate=5:duration=1 -c:v mpeg4");
}
std::string song() {
  return media("short.mp3", "-f lavfi -i sine=duration=1 -c:a libmp3lame");
}

// Copies the video, or another file, and makes the folders for it.
void put(const TempDir& folder, const std::string& name, const std::string& file = video()) {
  std::filesystem::create_directories(std::filesystem::path(folder.path(name)).parent_path());
  std::filesystem::copy(file, folder.path(name));
}

// The files that a run describes, relative to the folder.
std::vector<std::string> found(const TempDir& folder, std::vector<std::string> arguments) {
  arguments.push_back("--json");
  arguments.push_back(folder.folder());
  std::vector<std::string> files;
  for (const json& line : kolum(arguments).json()) {
    if (!line.contains("error"))
      files.push_back(line["file"].get<std::string>().substr(folder.folder().size()));
  }
  return files;
}

TEST(Folders, CountSkippedFilesByExtension) {
  const TempDir folder;
  put(folder, "a.mkv");
  for (const char* name : {"1.heic", "2.HEIC", "deep/3.heic", "4.webm", "README", "list.m3u"})
    folder.write(name, "text");
  const Outcome run = kolum({"probe", folder.folder()});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "kolum: " + folder.folder() +
                         ": 5 files skipped (3 .heic, 1 .webm, 1 without an extension); --all "
                         "decides by their content\n");
}

TEST(Folders, ListTheMostCommonExtensionsOnly) {
  const TempDir folder;
  put(folder, "a.mkv");
  for (char c = 'a'; c <= 'l'; ++c) folder.write(std::string("1.x") + c, "");
  folder.write("2.xl", "");
  folder.write(std::string("1.") + std::string(100, 'x'), "");
  const Outcome run = kolum({"probe", folder.folder()});
  EXPECT_THAT(run.err, HasSubstr(": 14 files skipped (2 .xl, 1 .xa, "));
  EXPECT_THAT(run.err, HasSubstr("3 of other extensions)"));
}

TEST(Folders, EscapeHostileExtensions) {
  const TempDir folder;
  put(folder, "a.mkv");
  folder.write("1.\x1b[2J\n\xFF", "");
  EXPECT_THAT(kolum({"probe", folder.folder()}).err, HasSubstr("(1 .\\x1b[2j\\n\\xff)"));
}

TEST(Folders, FailIfTheyHoldUnknownFilesOnly) {
  const TempDir folder;
  folder.write("1.heic", "text");
  const Outcome run = kolum({"probe", "--json", folder.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "kolum: " + folder.folder() +
                         ": no media files in this folder: 1 file skipped (1 .heic); --all decides "
                         "by their content\n");
  ASSERT_EQ(run.json().size(), 1U);
  EXPECT_EQ(run.json()[0]["error"]["code"], "nothing-known");
  expectFitsSchema("probe", run);
}

TEST(Folders, SucceedIfTheyHoldMediaOfOtherKinds) {
  const TempDir folder;
  put(folder, "a.mp3", song());
  folder.write("1.heic", "text");
  const Outcome run = kolum({"keyframe", "0", folder.folder()});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "kolum: " + folder.folder() +
                         ": 1 file skipped (1 .heic); --all decides by their content\n");
}

TEST(Folders, LeaveOutHiddenEntries) {
  const TempDir folder;
  for (const char* name : {"a.mkv", ".hidden.mkv", "._a.mkv", ".git/b.mkv", "@eaDir/a.mkv",
                           "deep/@eaDir/c.mkv", "deep/.Trash/d.mkv", "deep/e.mkv"})
    put(folder, name);
  folder.write(".nomedia", "");
  EXPECT_THAT(found(folder, {"probe"}), ElementsAre("a.mkv", "deep/e.mkv"));
  EXPECT_THAT(found(folder, {"probe", "--all"}), ElementsAre("a.mkv", "deep/e.mkv"));
  EXPECT_EQ(kolum({"probe", folder.folder()}).err, "");
}

TEST(Folders, IncludeHiddenEntriesThatAreNamed) {
  const TempDir folder;
  for (const char* name : {".hidden.mkv", ".git/b.mkv", "@eaDir/a.mkv"}) put(folder, name);
  const Outcome run =
      kolum({"probe", "--json", ".hidden.mkv", ".git", "@eaDir", "."}, {.folder = folder.folder()});
  EXPECT_EQ(run.status, 0);
  std::vector<std::string> files;
  for (const json& line : run.json()) files.push_back(line["file"]);
  EXPECT_THAT(files, ElementsAre(".hidden.mkv", ".git/b.mkv", "@eaDir/a.mkv"));
}

TEST(Exclude, ComparesNamesOfFilesAndFolders) {
  const TempDir folder;
  for (const char* name :
       {"a.mkv", "sample-a.mkv", "Trailers/b.mkv", "deep/Trailers/c.mkv", "deep/d.mkv"})
    put(folder, name);
  EXPECT_THAT(found(folder, {"probe", "--exclude", "Trailers", "--exclude", "sample-*"}),
              ElementsAre("a.mkv", "deep/d.mkv"));
  EXPECT_THAT(found(folder, {"info", "--exclude=*.mkv"}), IsEmpty());
}

TEST(Exclude, ComparesThePathBelowTheFolderIfItHasASlash) {
  const TempDir folder;
  for (const char* name : {"a.mkv", "one/a.mkv", "one/two/a.mkv", "one/two/b.mkv", "three/a.mkv"})
    put(folder, name);
  EXPECT_THAT(found(folder, {"probe", "--exclude", "one/two"}),
              ElementsAre("a.mkv", "one/a.mkv", "three/a.mkv"));
  EXPECT_THAT(found(folder, {"probe", "--exclude", "*/a.mkv"}),
              ElementsAre("a.mkv", "one/two/a.mkv", "one/two/b.mkv"));
  EXPECT_THAT(found(folder, {"probe", "--exclude", "one/"}), ElementsAre("a.mkv", "three/a.mkv"));
}

TEST(Exclude, KeepsNamedFiles) {
  const TempDir folder;
  put(folder, "a.mkv");
  EXPECT_EQ(kolum({"probe", "--exclude", "*", folder.path("a.mkv")}).status, 0);
}

TEST(All, DecidesByContent) {
  const TempDir folder;
  put(folder, "recording.dat");
  put(folder, "sound.unknown", song());
  put(folder, "picture", samples() + "Photos/pattern.jpg");
  put(folder, "wrong.jpg", song());
  put(folder, "right.mkv");
  folder.write("notes.txt", "text\n");
  folder.write("table.csv", "a,b\n1,2\n");
  const Outcome run = kolum({"probe", "--all", "--json", folder.folder()});
  EXPECT_EQ(run.status, 0);
  std::vector<std::string> kinds;
  for (const json& line : run.json()) kinds.push_back(line["kind"]["name"]);
  EXPECT_THAT(kinds, ElementsAre("photo", "video", "video", "music", "music"));
  EXPECT_THAT(run.err, HasSubstr(": 2 files skipped (1 .csv, 1 .txt)\n"));
  EXPECT_THAT(found(folder, {"keyframe", "--all", "0"}), ElementsAre("recording.dat", "right.mkv"));
  EXPECT_THAT(found(folder, {"dlna", "--all"}),
              ElementsAre("recording.dat", "right.mkv", "sound.unknown", "wrong.jpg"));
}

TEST(All, TreatsSongsWithCoversAsSongs) {
  const TempDir folder;
  put(folder, "cover.bin",
      media("cover.mp3",
            "-f lavfi -i sine=duration=1 -f lavfi -i color=size=64x48:rate=1:duration=1 -map 0 "
            "-map 1 -c:a libmp3lame -c:v mjpeg -disposition:v attached_pic -id3v2_version 3"));
  const Outcome run = kolum({"probe", "--all", "--json", folder.path("cover.bin")});
  ASSERT_EQ(run.json().size(), 1U);
  EXPECT_EQ(run.json()[0]["kind"]["name"], "music");
}

TEST(All, StillReportsDamagedMedia) {
  const TempDir folder;
  folder.write("text.mp4", std::string(5000, 'x'));
  folder.write("notes.txt", std::string(5000, 'x'));
  const Outcome run = kolum({"probe", "--all", "--json", folder.folder()});
  EXPECT_EQ(run.status, 1);
  ASSERT_EQ(run.json().size(), 1U);
  EXPECT_EQ(run.json()[0]["file"], folder.path("text.mp4"));
  const Outcome named = kolum({"probe", "--all", "--json", folder.path("notes.txt")});
  EXPECT_EQ(named.json().at(0)["error"]["code"], "not-media");
}

TEST(All, FindsDsdSongsByContent) {
  const TempDir folder;
  put(folder, "silence.bin", samples() + "Music/Tones/04-silence.dsf");
  put(folder, "sound.bin", song());
  EXPECT_THAT(found(folder, {"dsf", "--all"}), ElementsAre("silence.bin"));
}

// Nests folders until the innermost file is too deep for any path.
void makeDeepFolders(const std::string& folder) {
  const std::string name(200, 'd');
  int parent = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int depth = 0; depth < 25; ++depth) {
    ASSERT_EQ(mkdirat(parent, name.c_str(), 0700), 0);
    const int child = openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    close(parent);
    parent = child;
  }
  close(parent);
}

TEST(Folders, FailIfTooDeepForAPath) {
  const TempDir folder;
  makeDeepFolders(folder.folder());
  const Outcome run = kolum({"probe", "--json", folder.folder()});
  mustRun({"rm", "-rf", folder.path(std::string(200, 'd'))});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr(": File name too long\n"));
  ASSERT_EQ(run.json().size(), 1U);
  EXPECT_EQ(run.json()[0]["error"]["code"], "path-too-long");
}

}  // namespace
}  // namespace kolum::test
