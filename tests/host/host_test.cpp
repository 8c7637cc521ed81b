// Tests the stand-in for the host's utility library against the contract in <kolum/host.h>.
#include <dlfcn.h>
#include <dvdread/dvd_reader.h>
#include <gtest/gtest.h>
#include <kolum/host.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/disc_media.h"
#include "support/temp_dir.h"

using namespace kolum::test;
namespace fs = std::filesystem;

namespace {

int execute(std::vector<const char*> arguments, int wait = 1) {
  arguments.push_back(nullptr);
  return KoUtil_ExecSync(arguments.data(), wait);
}

TEST(ExecSync, ReturnsExitStatusWhateverTheFlag) {
  for (const int wait : {0, 1}) {
    EXPECT_EQ(execute({"/bin/true"}, wait), 0);
    EXPECT_EQ(execute({"/bin/false"}, wait), 1);
    EXPECT_EQ(execute({"sh", "-c", "exit 42"}, wait), 42);
  }
}

TEST(ExecSync, WaitsForTheProgram) {
  const TempDir folder;
  const std::string command = "sleep 0.2; echo done >" + folder.path("file");
  EXPECT_EQ(execute({"sh", "-c", command.c_str()}, 0), 0);
  EXPECT_TRUE(fs::exists(folder.path("file")));
}

TEST(ExecSync, PassesArgumentsUnchanged) {
  const TempDir folder;
  const std::string out = folder.path("out");
  EXPECT_EQ(execute({"sh", "-c", "printf '%s' \"$2\" >\"$1\"", "sh", out.c_str(),
                     "a b'c\"d $HOME `x`;*\n\xFF"}),
            0);
  std::ifstream in(out, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "a b'c\"d $HOME `x`;*\n\xFF");
}

TEST(ExecSync, FailsWithoutAProgram) {
  EXPECT_EQ(KoUtil_ExecSync(nullptr, 1), -1);
  EXPECT_EQ(execute({}), -1);
  EXPECT_EQ(execute({"/nonexistent/program"}), -1);
  EXPECT_EQ(execute({"/etc/passwd"}), -1);
  EXPECT_EQ(execute({"sh", "-c", "kill -9 $$"}), -1);
}

TEST(ExecSync, LeavesNoDescriptorOpen) {
  const ExpectNoDescriptorLeak leak;
  execute({"/bin/true"});
  execute({"/nonexistent"});
}

TEST(IsFileExist, ReportsExistingFiles) {
  const TempDir folder;
  const std::string file = folder.write("file", "");
  fs::create_symlink("nowhere", folder.path("dangling"));
  EXPECT_NE(KoUtil_IsFileExist(file.c_str()), 0);
  EXPECT_NE(KoUtil_IsFileExist(folder.folder().c_str()), 0);
  EXPECT_EQ(KoUtil_IsFileExist(folder.path("missing").c_str()), 0);
  EXPECT_EQ(KoUtil_IsFileExist(folder.path("dangling").c_str()), 0);
  EXPECT_EQ(KoUtil_IsFileExist(nullptr), 0);
  EXPECT_EQ(KoUtil_IsFileExist(""), 0);
  EXPECT_NE(isFolderExist(folder.folder().c_str()), 0);
  EXPECT_EQ(isFolderExist(file.c_str()), 0);
  EXPECT_EQ(isFolderExist(nullptr), 0);
}

TEST(Komkdir, CreatesParentFolders) {
  const TempDir folder;
  EXPECT_EQ(komkdir(folder.path("a/b/c/").c_str()), 0);
  EXPECT_TRUE(fs::is_directory(folder.path("a/b/c")));
  EXPECT_EQ(komkdir(folder.path("a/b/c").c_str()), 0) << "already exists";
  folder.write("file", "");
  EXPECT_EQ(komkdir(folder.path("file").c_str()), -1);
  EXPECT_EQ(komkdir(folder.path("file/below").c_str()), -1);
  EXPECT_EQ(komkdir(nullptr), -1);
  EXPECT_EQ(komkdir(""), -1);
}

TEST(Koremove2, RemovesTreesWithoutFollowingLinks) {
  const TempDir folder;
  folder.write("kept/file", "x");
  folder.write("tree/a/b/file", "x");
  fs::create_directory_symlink(folder.path("kept"), folder.path("tree/link"));
  EXPECT_EQ(koremove2(folder.path("tree").c_str()), 0);
  EXPECT_FALSE(fs::exists(folder.path("tree")));
  EXPECT_TRUE(fs::exists(folder.path("kept/file")));
  EXPECT_EQ(koremove2(folder.path("kept/file").c_str()), 0);
  fs::create_directory_symlink(folder.path("stays"), folder.path("link"));
  folder.write("stays/file", "x");
  EXPECT_EQ(koremove2(folder.path("link/").c_str()), 0) << "a trailing slash does not follow it";
  EXPECT_FALSE(fs::is_symlink(folder.path("link")));
  EXPECT_TRUE(fs::exists(folder.path("stays/file")));
  EXPECT_EQ(koremove2(folder.path("missing").c_str()), -1);
  EXPECT_EQ(koremove2(nullptr), -1);
  EXPECT_EQ(koremove2(""), -1);
}

TEST(DataDir, ComesFromTheEnvironmentWithoutTrailingSlash) {
  struct Row {
    const char* value;
    const char* expected;
  };
  for (const Row& row : {Row{"/share/data", "/share/data"}, Row{"/share/data/", "/share/data"},
                         Row{"/share/data//", "/share/data"}, Row{"/", "/"}, Row{"", ""}}) {
    setenv("KO_DATA_DIR", row.value, 1);
    std::string dir = "before";
    KoUtil_GetDataDir(dir);
    EXPECT_EQ(dir, row.expected);
  }
  unsetenv("KO_DATA_DIR");
  std::string dir = "before";
  KoUtil_GetDataDir(dir);
  EXPECT_EQ(dir, "");
}

std::string shellWord(const std::string& path) {
  std::vector<char> buffer(path.size() * 3 + 1);
  std::strcpy(buffer.data(), path.c_str());
  StringConvert2SystemCmdFilename(buffer.data());
  EXPECT_LT(std::strlen(buffer.data()), buffer.size());
  return buffer.data();
}

// Every byte must pass through a real shell unchanged.
TEST(ShellWords, SurviveTheShellUnchanged) {
  for (const char* shell : {"sh", "bash"}) {
    std::string all;
    for (int c = 1; c < 256; ++c) all += static_cast<char>(c);
    std::vector<std::string> paths = {all,
                                      "/plain/path.mp4",
                                      "-leading",
                                      "~home",
                                      "# no comment",
                                      "\n",
                                      "'",
                                      "\\",
                                      "a  b",
                                      "$(touch x)",
                                      "`x`",
                                      "{a,b}",
                                      "!!",
                                      "\xC3\xA9",
                                      "\xFF\xFE",
                                      "&& false",
                                      "a=b",
                                      "[x]*?"};
    std::mt19937 random(1);
    for (int i = 0; i < 20; ++i) {
      std::string path;
      for (int n = 0; n < 30; ++n) path += static_cast<char>(random() % 255 + 1);
      paths.push_back(path);
    }
    for (const std::string& path : paths) {
      const RunResult result = run({shell, "-c", "printf %s " + shellWord(path)});
      EXPECT_EQ(result.out, path) << shell;
      EXPECT_EQ(result.status, 0);
    }
  }
}

TEST(ShellWords, NeedAtMostThreeTimesTheLength) {
  EXPECT_EQ(shellWord(std::string(100, '\n')).size(), 300U);
  EXPECT_EQ(shellWord(std::string(100, ' ')).size(), 200U);
  EXPECT_EQ(shellWord("/plain/path.mp4"), "/plain/path.mp4");
}

TEST(ShellWords, AllowNullAndEmptyText) {
  StringConvert2SystemCmdFilename(nullptr);
  EXPECT_EQ(shellWord(""), "");
}

struct Lowered {
  int result;
  std::string name;
};

Lowered lower(const std::string& text, int size = 256) {
  std::vector<char> buffer(static_cast<std::size_t>(size) + 8, '#');
  const int result = StringConvert2LowerFileString(text.data(), static_cast<int>(text.size()),
                                                   buffer.data(), size);
  EXPECT_EQ(std::string(buffer.end() - 8, buffer.end()), "########");
  return {result, result == 0 ? buffer.data() : ""};
}

TEST(LowerFileNames, AreLowerCaseInAllScripts) {
  EXPECT_EQ(lower("The BEATS 2").name, "the beats 2");
  EXPECT_EQ(lower("\xC3\x89T\xC3\x89").name, "\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(lower("\xCE\xA3\xCE\xA9").name, "\xCF\x83\xCF\x89");
  EXPECT_EQ(lower("\xE6\x97\xA5").name, "\xE6\x97\xA5");
}

TEST(LowerFileNames, AreSafeAsFileNamesAndInQuotes) {
  EXPECT_EQ(lower("a/b").name, "a_b");
  EXPECT_EQ(lower("don't").name, "don_t");
  EXPECT_EQ(lower("a:b*c?d\"e<f>g|h\\i`j$k").name, "a_b_c_d_e_f_g_h_i_j_k");
  EXPECT_EQ(lower(std::string("a\nb\0c", 5)).name, "a_b");
  EXPECT_EQ(lower("\x7F").name, "_");
  EXPECT_EQ(lower("a\xC2\x85z").name, "a_z") << "a control character beyond ASCII";
  EXPECT_EQ(lower("a\xFF\xFE").name, "a__");
  EXPECT_EQ(lower("cut\xE6\x97").name, "cut__");
  EXPECT_EQ(lower(".").name, "_");
  EXPECT_EQ(lower("..").name, "_.");
  EXPECT_EQ(lower("...").name, "...");
  EXPECT_EQ(lower("..cut", 3).name, "_.");
}

TEST(LowerFileNames, NeverLookLikeAnAlbumSourcePicture) {
  EXPECT_EQ(lower("@_Album").name, "__album");
  EXPECT_EQ(lower("@/Album").name, "__album");
  EXPECT_EQ(lower("@Album@_").name, "@album@_");
}

TEST(LowerFileNames, AreCutBetweenCharacters) {
  EXPECT_EQ(lower("abcdef", 4).name, "abc");
  EXPECT_EQ(lower("ab\xC3\x89", 4).name, "ab");
  EXPECT_EQ(lower("ab\xC3\x89", 5).name, "ab\xC3\xA9");
  EXPECT_EQ(lower(std::string(100'000, 'X'), 256).name, std::string(255, 'x'));
}

TEST(LowerFileNames, FailWithoutTextOrRoom) {
  char out[8] = "before";
  EXPECT_EQ(StringConvert2LowerFileString(nullptr, 3, out, sizeof out), -1);
  EXPECT_EQ(StringConvert2LowerFileString("abc", 0, out, sizeof out), -1);
  EXPECT_EQ(StringConvert2LowerFileString("abc", -1, out, sizeof out), -1);
  EXPECT_EQ(StringConvert2LowerFileString("", 3, out, sizeof out), -1);
  EXPECT_EQ(StringConvert2LowerFileString("abc", 3, out, 1), -1);
  EXPECT_EQ(StringConvert2LowerFileString("abc", 3, nullptr, 8), -1);
  EXPECT_EQ(StringConvert2LowerFileString("\xC3\x89", 2, out, 2), -1) << "no whole character fits";
  EXPECT_STREQ(out, "before");
}

TEST(LowerFileNames, DoNotDependOnTheLocale) {
  runInChild([] { EXPECT_EQ(lower("\xC3\x89").name, "\xC3\xA9"); }, {{"LC_ALL", "C"}});
}

struct Title {
  int result;
  std::string path;
  long long size;
};

Title mainTitle(const std::string& folder, int pathSize = 1024) {
  std::vector<char> path(static_cast<std::size_t>(pathSize) + 8, '#');
  long long size = -1;
  const int result = DVDGetMainVTSNo(folder.c_str(), path.data(), pathSize, 0, &size, 0);
  EXPECT_EQ(std::string(path.end() - 8, path.end()), "########");
  return {result, result == 0 ? path.data() : "", size};
}

TEST(MainTitle, IsTheLongestPlaying) {
  const std::string video = dvdFolder();
  const std::string root = discRoot(video);
  for (const std::string& folder : {video, video.substr(0, video.size() - 1), root, root + "/"}) {
    SCOPED_TRACE(folder);
    const Title title = mainTitle(folder);
    EXPECT_EQ(title.result, 0);
    EXPECT_TRUE(title.path.ends_with("VIDEO_TS/VTS_02_1.VOB")) << title.path;
    EXPECT_EQ(title.size, static_cast<long long>(fs::file_size(title.path)));
  }
}

// The shorter title gets the larger size.
TEST(MainTitle, DependsOnTimeNotSize) {
  const TempDir copy;
  fs::copy(dvdFolder(), copy.path("VIDEO_TS"));
  const std::string first = copy.path("VIDEO_TS/VTS_01_2.VOB");
  std::ofstream(first, std::ios::binary) << std::string(3'000'000, 'x');
  EXPECT_TRUE(mainTitle(copy.folder()).path.ends_with("VTS_02_1.VOB"));
}

TEST(MainTitle, IsTheLargerOfTwoOfEqualTime) {
  for (const std::string larger : {"1", "2"}) {
    const TempDir copy;
    for (const std::string set : {"1", "2"})
      for (const std::string rest : {"_0.IFO", "_0.BUP", "_1.VOB"}) {
        fs::create_directories(copy.path("VIDEO_TS"));
        fs::copy(dvdFolder() + "VTS_01" + rest, copy.path("VIDEO_TS/VTS_0" + set + rest));
      }
    fs::copy(dvdFolder() + "VIDEO_TS.IFO", copy.path("VIDEO_TS/VIDEO_TS.IFO"));
    std::ofstream(copy.path("VIDEO_TS/VTS_0" + larger + "_2.VOB")) << "x";
    EXPECT_TRUE(mainTitle(copy.folder()).path.ends_with("VTS_0" + larger + "_1.VOB")) << larger;
  }
}

// Opening a pipe in place of an index file would block forever.
TEST(MainTitle, DoesNotWaitForPipes) {
  for (const char* name : {"VTS_02_0.IFO", "VTS_02_0.BUP", "VTS_01_1.VOB"}) {
    const TempDir copy;
    fs::copy(dvdFolder(), copy.path("VIDEO_TS"));
    const std::string pipe = copy.path(std::string("VIDEO_TS/") + name);
    fs::remove(copy.path("VIDEO_TS/VTS_02_0.IFO"));
    fs::remove(pipe);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(mainTitle(copy.folder()).path.ends_with("VTS_02_1.VOB")) << name;
  }
}

// Damages every offset and count of the index in turn, in the file and in its backup.
TEST(MainTitle, SurvivesDamagedIndexes) {
  const TempDir copy;
  fs::copy(dvdFolder(), copy.path("VIDEO_TS"));
  std::ifstream in(copy.path("VIDEO_TS/VTS_02_0.IFO"), std::ios::binary);
  const std::string intact(std::istreambuf_iterator<char>(in), {});
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::string damaged = intact;
    for (auto n = 1 + random() % 20; n > 0; --n)
      damaged[random() % damaged.size()] = static_cast<char>(random());
    for (const std::size_t at : {0xCCU, 0xCFU, 2048U, 2049U})
      if (random() % 4 == 0) damaged[at] = static_cast<char>(random());
    if (random() % 8 == 0) damaged.resize(random() % damaged.size());
    for (const char* name : {"VIDEO_TS/VTS_02_0.IFO", "VIDEO_TS/VTS_02_0.BUP"})
      std::ofstream(copy.path(name), std::ios::binary) << damaged;
    EXPECT_EQ(mainTitle(copy.folder()).result, 0) << round;
  }
}

TEST(MainTitle, IgnoresFileNamedLikeTheVideoFolder) {
  const TempDir copy;
  fs::copy(dvdFolder(), copy.path("disc"));
  copy.write("disc/video_ts", "x");
  EXPECT_TRUE(mainTitle(copy.path("disc")).path.ends_with("disc/VTS_02_1.VOB"));
}

TEST(MainTitle, CountsAllPartsOfTheTitle) {
  const TempDir copy;
  fs::copy(dvdFolder(), copy.path("VIDEO_TS"));
  std::ofstream(copy.path("VIDEO_TS/VTS_02_2.VOB"), std::ios::binary) << std::string(1000, 'x');
  const auto first = static_cast<long long>(fs::file_size(copy.path("VIDEO_TS/VTS_02_1.VOB")));
  EXPECT_EQ(mainTitle(copy.folder()).size, first + 1000);
}

TEST(MainTitle, IsFoundUnderLowerCaseNames) {
  const TempDir copy;
  fs::create_directory(copy.path("video_ts"));
  for (const auto& entry : fs::directory_iterator(dvdFolder())) {
    std::string name = entry.path().filename();
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    fs::copy(entry.path(), copy.path("video_ts/" + name));
  }
  EXPECT_TRUE(mainTitle(copy.folder()).path.ends_with("video_ts/vts_02_1.vob"));
}

// libdvdread 7 prints some lines before it uses the logger that it was given.
std::string printedByLibdvdread(const std::string& folder) {
  const auto drop = [](void*, dvd_logger_level_t, const char*, va_list) {};
  const dvd_logger_cb quiet = {drop};
  testing::internal::CaptureStderr();
  DVDClose(DVDOpen2(nullptr, &quiet, folder.c_str()));
  return testing::internal::GetCapturedStderr();
}

TEST(MainTitle, IsTheLargestWhenTheIndexIsBroken) {
  for (const std::string& content :
       {std::string(), std::string(5000, '\xFF'), std::string("DVDVIDEO-VTS")}) {
    const TempDir copy;
    fs::copy(dvdFolder(), copy.path("VIDEO_TS"));
    for (const auto& entry : fs::directory_iterator(copy.path("VIDEO_TS"))) {
      const auto extension = entry.path().extension();
      if (extension == ".IFO" || extension == ".BUP")
        std::ofstream(entry.path(), std::ios::binary) << content;
    }
    const std::string printed = printedByLibdvdread(copy.path("VIDEO_TS"));
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const Title title = mainTitle(copy.folder());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), printed);
    EXPECT_EQ(title.result, 0);
    EXPECT_TRUE(title.path.ends_with("VTS_02_1.VOB")) << title.path;
  }
}

TEST(MainTitle, FailsWithoutATitle) {
  const TempDir folder;
  EXPECT_NE(mainTitle(folder.folder()).result, 0);
  EXPECT_NE(mainTitle(folder.path("missing")).result, 0);
  EXPECT_NE(mainTitle("").result, 0);
  folder.write("VIDEO_TS/VTS_01_0.VOB", "menus only");
  folder.write("VIDEO_TS/VTS_02_1.VOB", "");
  folder.write("VIDEO_TS/VTS_00_1.VOB", "x");
  folder.write("VIDEO_TS/VTS_1_1.VOB", "x");
  const Title title = mainTitle(folder.folder());
  EXPECT_NE(title.result, 0);
  EXPECT_EQ(title.size, -1) << "untouched";
  char path[16] = "before";
  EXPECT_NE(DVDGetMainVTSNo(nullptr, path, sizeof path, 0, nullptr, 0), 0);
  EXPECT_NE(DVDGetMainVTSNo("/", nullptr, 16, 0, nullptr, 0), 0);
  EXPECT_STREQ(path, "before");
}

TEST(MainTitle, FailsIfThePathDoesNotFit) {
  const std::string path = mainTitle(dvdFolder()).path;
  const int needed = static_cast<int>(path.size()) + 1;
  EXPECT_EQ(mainTitle(dvdFolder(), needed).result, 0);
  EXPECT_NE(mainTitle(dvdFolder(), needed - 1).result, 0);
  EXPECT_NE(mainTitle(dvdFolder(), 0).result, 0);
}

TEST(MainTitle, LeavesNoDescriptorOpen) {
  dvdFolder();
  const ExpectNoDescriptorLeak leak;
  mainTitle(dvdFolder());
  mainTitle("/nonexistent");
}

TEST(LeapYear, FollowsTheGregorianCalendar) {
  for (const int year : {2000, 2004, 2024, 1600, 400, 0, -4})
    EXPECT_NE(IsLeapYear(year), 0) << year;
  for (const int year : {1900, 2100, 2023, 1, -1, -100}) EXPECT_EQ(IsLeapYear(year), 0) << year;
}

// Test programs define their own log function (support/log_recorder.h), so the host library's is
// looked up by name.
using Print = void (*)(int, const char*, const char*, int, const char*, const char*, ...);

Print hostPrint() {
  // The address of one of its functions gives the path that the library was loaded from.
  Dl_info host = {};
  if (dladdr(reinterpret_cast<void*>(&IsLeapYear), &host) == 0) return nullptr;
  void* library = dlopen(host.dli_fname, RTLD_NOW | RTLD_NOLOAD);
  return library != nullptr ? reinterpret_cast<Print>(dlsym(library, "koDebugUtilWrapperPrint"))
                            : nullptr;
}

// The stand-in's output for one message.
std::string logged(const char* level, const char* colour, const char* text) {
  setenv("KO_LOG_LEVEL", level, 1);
  testing::internal::CaptureStderr();
  hostPrint()(5, colour, "Source", 42, "function", "%s", text);
  return testing::internal::GetCapturedStderr();
}

TEST(Log, IsQuietBelowItsLevel) {
  unsetenv("KO_LOG_LEVEL");
  testing::internal::CaptureStderr();
  hostPrint()(5, nullptr, "Source", 42, "function", "text");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(logged("4", nullptr, "text"), "");
  EXPECT_EQ(logged("0", nullptr, "text"), "");
  EXPECT_EQ(logged("", nullptr, "text"), "");
  EXPECT_EQ(logged("loud", nullptr, "text"), "");
}

TEST(Log, WritesOneLinePerMessage) {
  EXPECT_EQ(logged("5", nullptr, "text"), "[Source:42 function] text\n");
  EXPECT_EQ(logged("7", nullptr, "text\n"), "[Source:42 function] text\n");
  EXPECT_EQ(logged("7", nullptr, ""), "[Source:42 function] \n");
  EXPECT_EQ(logged("7", nullptr, std::string(100'000, 'x').c_str()).size(),
            100'000 + std::strlen("[Source:42 function] \n"));
}

TEST(Log, KeepsAMessageOnOneLine) {
  EXPECT_EQ(logged("5", nullptr, "a\nb\n\n"), "[Source:42 function] a b\n");
}

TEST(Log, PreservesErrno) {
  for (const char* level : {"0", "7", "99999999999999999999999"}) {
    errno = EDOM;
    logged(level, nullptr, "text");
    const Print print = hostPrint();
    testing::internal::CaptureStderr();
    errno = EDOM;
    print(5, nullptr, "Source", 42, "function", "%s", "text");
    EXPECT_EQ(errno, EDOM) << level;
    testing::internal::GetCapturedStderr();
  }
}

TEST(Log, ResetsTheColourItSets) {
  EXPECT_EQ(logged("5", "\x1b[1;35m", "text"), "\x1b[1;35m[Source:42 function] text\x1b[0m\n");
}

TEST(Log, KeepsTheLinesOfThreadsApart) {
  setenv("KO_LOG_LEVEL", "5", 1);
  testing::internal::CaptureStderr();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      for (int n = 0; n < 100; ++n)
        hostPrint()(5, nullptr, "S", 1, "f", "%s", std::string(200, 'x').c_str());
    });
  for (std::thread& thread : threads) thread.join();
  std::istringstream lines(testing::internal::GetCapturedStderr());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count)
    EXPECT_EQ(line, "[S:1 f] " + std::string(200, 'x'));
  EXPECT_EQ(count, 400);
}

}  // namespace
