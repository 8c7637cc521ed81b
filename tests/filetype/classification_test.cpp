#include <gtest/gtest.h>
#include <kolum/filetype.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "support/appliance_sandbox.h"

using namespace kolum::test;

namespace {

constexpr unsigned kMusic = 1;
constexpr unsigned kVideo = 2;
constexpr unsigned kPhoto = 4;
constexpr unsigned kPlaylist = 8;
constexpr unsigned kAll = 15;
constexpr unsigned kPattern = 0xABABABAB;

struct Answer {
  int result;
  unsigned row;
  unsigned tag = 0;
  bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
  *out << "result " << answer.result << ", row " << answer.row << ", tag " << answer.tag;
}

Answer classify(const std::string& name, unsigned kinds) {
  Answer answer = {.result = 0, .row = kPattern, .tag = kPattern};
  answer.result = KoLUM_GetFilenameType(name.c_str(), &answer.row, kinds, &answer.tag);
  return answer;
}

std::string mixedCase(std::string text) {
  for (std::size_t i = 0; i < text.size(); i += 2)
    text[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
  return text;
}

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

struct Kind {
  const MediaFileInfo* table;
  unsigned interest;
  int result;
  unsigned number;
};

const Kind kKinds[] = {
    {g_VideoFileInfo, kVideo, 2, 2},
    {g_SongFileInfo, kMusic, 1, 0},
    {g_PictureFileInfo, kPhoto, 3, 1},
    {g_PlaylistFileInfo, kPlaylist, 5, 3},
};

bool isSpecial(const std::string& extension) {
  return extension == ".ifo" || extension == ".bdmv" || extension == ".dts" || extension == ".ac3";
}

TEST(Classification, MatchesEveryRowInAnyLetterCase) {
  for (const Kind& kind : kKinds) {
    for (unsigned i = 0; kind.table[i].extension != nullptr; ++i) {
      const std::string extension = kind.table[i].extension;
      if (isSpecial(extension)) continue;
      SCOPED_TRACE(extension);
      for (const std::string& name :
           {"a" + extension, "/share/x.y/a" + upperCase(extension), "a" + mixedCase(extension)}) {
        EXPECT_EQ(classify(name, kind.interest), (Answer{kind.result, i + 1}));
        EXPECT_EQ(classify(name, kAll), (Answer{kind.result, i + 1}));
        EXPECT_EQ(classify(name, kAll & ~kind.interest), (Answer{0, 0}));
      }
    }
  }
}

TEST(Classification, ReportsRequestedKindsOnly) {
  EXPECT_EQ(classify("Movie.MKV", kVideo), (Answer{2, 17}));
  EXPECT_EQ(classify("Movie.MKV", kMusic), (Answer{0, 0}));
  EXPECT_EQ(classify("Movie.MKV", 0), (Answer{0, 0}));
  EXPECT_EQ(classify("a.tar.m3u", kPlaylist), (Answer{5, 1}));
}

TEST(Classification, NeverReportsDtsOrAc3AsMusic) {
  EXPECT_EQ(classify("song.dts", kMusic), (Answer{0, 0}));
  EXPECT_EQ(classify("song.ac3", kMusic), (Answer{0, 0}));
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(0, 0), 0);
  EXPECT_EQ(classify("song.dts", kMusic), (Answer{0, 0}));
  EXPECT_EQ(classify("SONG.AC3", kAll), (Answer{0, 0}));
}

TEST(Classification, AcceptsIfoFilesOfDvdsOnly) {
  EXPECT_EQ(classify("/share/DVD/VIDEO_TS/VIDEO_TS.IFO", kVideo), (Answer{2, 1}));
  EXPECT_EQ(classify("video_ts.ifo", kVideo), (Answer{2, 1}));
  EXPECT_EQ(classify("/share/DVD_RTAV/VR_MANGR.IFO", kVideo), (Answer{2, 1}));
  EXPECT_EQ(classify("/share/x/my_video_ts.ifo", kVideo), (Answer{2, 1})) << "the end counts";
  EXPECT_EQ(classify("/share/x/other.ifo", kVideo), (Answer{0, 1}));
  EXPECT_EQ(classify("vts_01_0.ifo", kVideo), (Answer{0, 1}));
  EXPECT_EQ(classify(".ifo", kVideo), (Answer{0, 1})) << "shorter than the names";
}

TEST(Classification, AcceptsBdmvFilesOfBluraysOnly) {
  EXPECT_EQ(classify("/share/BD/BDMV/index.bdmv", kVideo), (Answer{2, 2}));
  EXPECT_EQ(classify("INDEX.BDMV", kVideo), (Answer{2, 2}));
  EXPECT_EQ(classify("myindex.bdmv", kVideo), (Answer{2, 2})) << "the end counts";
  EXPECT_EQ(classify("movie.bdmv", kVideo), (Answer{0, 2}));
  EXPECT_EQ(classify(".bdmv", kVideo), (Answer{0, 2})) << "shorter than the name";
}

TEST(Classification, RejectsNamesWithoutKnownExtension) {
  for (const char* name : {"", ".", "a", "a.", "mp4", "a.123456789", "a.unknown", "a.mp4x",
                           "a.mp4 ", "/dir.mp4/file", "a.\xFF\xFE", "a.mp\xC3\xA9"}) {
    EXPECT_EQ(classify(name, kAll), (Answer{0, 0})) << name;
  }
}

TEST(Classification, AcceptsNamesOfAnyLength) {
  EXPECT_EQ(classify(std::string(100'000, 'x') + ".mp4", kAll), (Answer{2, 6}));
  EXPECT_EQ(classify("." + std::string(100'000, 'x'), kAll), (Answer{0, 0}));
  EXPECT_EQ(classify(std::string(100'000, '.'), kAll), (Answer{0, 0}));
}

TEST(Classification, LeavesOutputsUnchangedForNullName) {
  unsigned row = kPattern;
  unsigned tag = kPattern;
  EXPECT_EQ(KoLUM_GetFilenameType(nullptr, &row, kAll, &tag), 0);
  EXPECT_EQ(row, kPattern);
  EXPECT_EQ(tag, kPattern);
}

TEST(Classification, AllowsNullOutputs) {
  EXPECT_EQ(KoLUM_GetFilenameType("a.mp4", nullptr, kVideo, nullptr), 2);
}

TEST(Classification, ReturnsTheTagWhenVideoIsRequested) {
  EXPECT_EQ(classify("a.avi", 0x0302), (Answer{2, 4, 3}));
  EXPECT_EQ(classify("a.mp3", 0x0301), (Answer{1, 1, 0}));
  EXPECT_EQ(classify("a.mp3", 0x0303), (Answer{1, 1, 3}));
  EXPECT_EQ(classify("a.unknown", 0xFF02), (Answer{0, 0, 0xFF}));
  EXPECT_EQ(classify("a.0123456789", 0x0302), (Answer{0, 0, 3})) << "too long for an extension";
  EXPECT_EQ(classify("no dot", 0x0302), (Answer{0, 0, 0}));
  EXPECT_EQ(classify("a.avi", 0xABCD0302), (Answer{2, 4, 3})) << "bits above the tag do not count";
}

// Masks are global to the process, so each test resets them.
class Umask : public testing::Test {
 protected:
  void TearDown() override {
    for (const Kind& kind : kKinds) KoLUM_SetFileTypeUmaskInternal(kind.number, 0);
  }
};

TEST_F(Umask, ExcludesRowsByTheirBit) {
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(2, 0x20), 0);
  EXPECT_EQ(classify("a.mp4", kVideo), (Answer{0, 0}));
  EXPECT_EQ(classify("a.mpg", kVideo), (Answer{2, 5}));
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(2, 0), 0);
  EXPECT_EQ(classify("a.mp4", kVideo), (Answer{2, 6})) << "the mask replaces the previous one";
}

TEST_F(Umask, ExcludesEveryRowOfEveryKind) {
  for (const Kind& kind : kKinds) {
    for (unsigned i = 0; kind.table[i].extension != nullptr; ++i) {
      SCOPED_TRACE(kind.table[i].extension);
      ASSERT_EQ(KoLUM_SetFileTypeUmaskInternal(kind.number, 1LL << i), 0);
      EXPECT_EQ(classify(std::string("a") + kind.table[i].extension, kind.interest),
                (Answer{0, 0}));
      ASSERT_EQ(KoLUM_SetFileTypeUmaskInternal(kind.number, 0), 0);
    }
  }
}

TEST_F(Umask, RejectsUnknownKindsAndNegativeMasks) {
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(4, 0), 1);
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(0xFFFFFFFF, 0), 1);
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(2, -1), 1);
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(2, INT64_MIN), 1);
  EXPECT_EQ(classify("a.mp4", kVideo), (Answer{2, 6}));
  EXPECT_EQ(KoLUM_SetFileTypeUmaskInternal(2, INT64_MAX), 0);
  EXPECT_EQ(classify("a.mp4", kVideo), (Answer{0, 0}));
}

// Runs the body in a process that has classified nothing yet.
void inFreshProcess(void (*body)()) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto runAndExit = [&] {
    body();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(runAndExit(), testing::ExitedWithCode(0), "");
}

TEST(HashIndex, IsBuiltByTheFirstClassification) {
  inFreshProcess([] {
    EXPECT_EQ(g_initHash, 0);
    for (const MediaHashNode* head : g_pHashVideo) EXPECT_EQ(head, nullptr);
    EXPECT_EQ(KoLUM_GetFilenameType(nullptr, nullptr, kAll, nullptr), 0);
    EXPECT_EQ(g_initHash, 1) << "a null name also builds it";
    const MediaHashNode* const* first =
        std::find_if(std::begin(g_pHashVideo), std::end(g_pHashVideo),
                     [](const MediaHashNode* head) { return head != nullptr; });
    ASSERT_NE(first, std::end(g_pHashVideo));
    const MediaHashNode* const node = *first;
    classify("a.mp4", kAll);
    EXPECT_EQ(*first, node) << "no later call rebuilds it";
  });
}

// h = h * 31 + byte over the extension, modulo the number of buckets.
std::size_t bucketOf(const std::string& extension, std::size_t buckets) {
  std::uint32_t hash = 0;
  for (const char c : extension) hash = hash * 31 + static_cast<std::uint32_t>(c);
  return (hash & 0x7FFFFFFF) % buckets;
}

template <std::size_t kBuckets>
void expectIndex(MediaHashNode* const (&index)[kBuckets], const MediaFileInfo* table,
                 unsigned rows) {
  std::vector<unsigned> found;
  for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
    for (const MediaHashNode* node = index[bucket]; node != nullptr; node = node->next) {
      SCOPED_TRACE(node->extension);
      ASSERT_LT(node->row, rows);
      EXPECT_EQ(node->extension, table[node->row].extension) << "not a copy of the text";
      EXPECT_EQ(bucket, bucketOf(node->extension, kBuckets));
      EXPECT_TRUE(node->next == nullptr || node->row < node->next->row) << "in table order";
      found.push_back(node->row);
    }
  }
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found.size(), rows);
  EXPECT_EQ(std::adjacent_find(found.begin(), found.end()), found.end());
}

TEST(HashIndex, HoldsEveryRowInTheBucketOfItsHash) {
  classify("a.mp4", kAll);
  expectIndex(g_pHashVideo, g_VideoFileInfo, 33);
  expectIndex(g_pHashMusic, g_SongFileInfo, 22);
  expectIndex(g_pHashPicture, g_PictureFileInfo, 33);
  expectIndex(g_pHashPlaylist, g_PlaylistFileInfo, 4);
}

TEST(HashIndex, CanBeBuiltByConcurrentThreads) {
  inFreshProcess([] {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
      threads.emplace_back([] {
        for (int n = 0; n < 1000; ++n) EXPECT_EQ(classify("a.f4v", kAll), (Answer{2, 33}));
      });
    for (std::thread& thread : threads) thread.join();
  });
}

TEST(DumpHashTable, PrintsOnlyHeadingsBeforeTheFirstClassification) {
  inFreshProcess([] {
    testing::internal::CaptureStdout();
    dumpHashTable();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "g_pHashVideo[] -> \n\ng_pHashMusic[] -> \n\ng_pHashPicture[] -> \n\n"
              "g_pHashPlaylist[] -> \n");
    EXPECT_EQ(g_initHash, 0) << "printing does not build the index";
  });
}

TEST(DumpHashTable, PrintsEveryNodeWithItsDepth) {
  classify("a.mp4", kAll);
  std::string expected;
  const auto add = [&](const char* name, const auto& buckets) {
    if (!expected.empty()) expected += "\n";
    expected += std::string(name) + "[] -> \n";
    for (const MediaHashNode* head : buckets) {
      int depth = 0;
      for (const MediaHashNode* node = head; node != nullptr; node = node->next)
        expected += std::string(node->extension) + " mappingIndex: " + std::to_string(node->row) +
                    ", collision dep = " + std::to_string(depth++) + "\n";
    }
  };
  add("g_pHashVideo", g_pHashVideo);
  add("g_pHashMusic", g_pHashMusic);
  add("g_pHashPicture", g_pHashPicture);
  add("g_pHashPlaylist", g_pHashPlaylist);
  testing::internal::CaptureStdout();
  dumpHashTable();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
  EXPECT_NE(expected.find("collision dep = 1"), std::string::npos) << "a chain exists";
}

constexpr const char* kConfiguration = "/etc/config/medialibrary.conf";

std::string printedList(int expectedResult) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(KoLUM_PrintFileExtList(), expectedResult);
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

TEST(PrintFileExtList, FailsWithoutConfiguration) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] { EXPECT_EQ(printedList(1), ""); });
}

TEST(PrintFileExtList, FailsAtOnceForPipeOrFolder) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    writeRootFile(kConfiguration, "");
    ASSERT_EQ(unlink(kConfiguration), 0);
    ASSERT_EQ(mkfifo(kConfiguration, 0600), 0);
    EXPECT_EQ(printedList(1), "") << "a FIFO without a writer";
    ASSERT_EQ(unlink(kConfiguration), 0);
    ASSERT_EQ(mkdir(kConfiguration, 0700), 0);
    EXPECT_EQ(printedList(1), "");
  });
}

TEST(PrintFileExtList, RejectsTextThatIsNotAnIniFile) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    for (const std::string& text : {std::string("\xFF\xFE[OPT\n=\n"),
                                    "[OPTIONS]\nFileUmaskInternal3=" + std::string(100'000, '9')}) {
      writeRootFile(kConfiguration, text);
      EXPECT_EQ(printedList(1), "") << text.substr(0, 40);
    }
  });
}

TEST(PrintFileExtList, ExcludesNothingForNonNumericValues) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    writeRootFile(kConfiguration, "");
    const std::string everything = printedList(0);
    // A section with the key's name gives iniparser a key without a value.
    for (const char* text : {"[OPTIONS:FileUmaskInternal0]\n",
                             "[OPTIONS]\nFileUmaskInternal0=\nFileUmaskInternal2=many\n"}) {
      writeRootFile(kConfiguration, text);
      EXPECT_EQ(printedList(0), everything) << text;
    }
  });
}

TEST(PrintFileExtList, ListsEverythingForAnEmptyConfiguration) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    writeRootFile(kConfiguration, "");
    const std::string list = printedList(0);
    EXPECT_TRUE(
        list.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<Root>\n"
                         "\t<Media Type=\"Music\" MaxID=\"22\">\n"
                         "\t\t<Extension ID=\"1\">mp3</Extension>\n"))
        << list;
    EXPECT_TRUE(list.ends_with("\t\t<Extension ID=\"4\">asx</Extension>\n\t</Media>\n</Root>\n"))
        << list;
    // The list ignores the built-in exclusions of classification.
    EXPECT_NE(list.find("<Extension ID=\"7\">dts</Extension>"), std::string::npos);
    EXPECT_NE(list.find("<Extension ID=\"10\">ac3</Extension>"), std::string::npos);
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 2 + 4 * 2 + 22 + 33 + 33 + 4 + 1);
    const std::size_t music = list.find("\"Music\"");
    const std::size_t photo = list.find("\"Photo\"");
    const std::size_t video = list.find("\"Video\"");
    const std::size_t playlist = list.find("\"Playlist\"");
    EXPECT_TRUE(music < photo && photo < video && video < playlist);
  });
}

TEST(PrintFileExtList, FollowsConfigurationNotMasks) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    writeRootFile(kConfiguration, "[OPTIONS]\nFileUmaskInternal0=1\nFileUmaskInternal3=0xF\n");
    KoLUM_SetFileTypeUmaskInternal(2, 0x20);
    const std::string list = printedList(0);
    EXPECT_EQ(list.find(">mp3<"), std::string::npos);
    EXPECT_NE(list.find(">aac<"), std::string::npos);
    EXPECT_EQ(list.find(">m3u<"), std::string::npos);
    EXPECT_NE(list.find("<Media Type=\"Playlist\" MaxID=\"4\" />"), std::string::npos) << list;
    EXPECT_NE(list.find(">mp4<"), std::string::npos) << "masks in memory are ignored";
  });
}

// The configured value has 32 bits, so row 33 follows the bit of row 1.
TEST(PrintFileExtList, ExcludesRow33WithBit0) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    writeRootFile(kConfiguration, "[OPTIONS]\nFileUmaskInternal1=1\nFileUmaskInternal2=-1\n");
    const std::string list = printedList(0);
    EXPECT_EQ(list.find(">jpeg<"), std::string::npos);
    EXPECT_EQ(list.find(">insp<"), std::string::npos);
    EXPECT_NE(list.find(">jpe<"), std::string::npos);
    EXPECT_NE(list.find("<Media Type=\"Video\" MaxID=\"33\" />"), std::string::npos);
  });
}

}  // namespace
