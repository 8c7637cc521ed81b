#include <fcntl.h>
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "media/source.h"
#include "read/headers/mp4_boxes.h"
#include "support/descriptors.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

constexpr unsigned kPattern = 0xABABABAB;

// With a file type box in front, these two exceed the 64 bytes that are read.
const std::string kMoov = box("moov", std::string(40, 'm'));
const std::string kMdat = box("mdat", std::string(40, 'd'));

// The header of a box that claims this size.
std::string headerOf(const std::string& type, std::uint64_t largeSize) {
  return bigEndian(1, 4) + type + bigEndian(largeSize, 8);
}

class Mp4Boxes : public ::testing::Test {
 protected:
  std::string file(const std::string& content) { return folder_.write("movie.mp4", content); }

  // The sub-format of a file with this content, for which the call must succeed.
  unsigned subFormat(const std::string& content) {
    unsigned value = kPattern;
    EXPECT_EQ(GetMp4SubFormat(file(content).c_str(), &value), 0);
    return value;
  }

  int moovAtEnd(const std::string& content) { return CheckMp4MoovAtEnd(file(content).c_str()); }

  TempDir folder_;
};

using GetMp4SubFormatTest = Mp4Boxes;
using CheckMp4MoovAtEndTest = Mp4Boxes;

TEST_F(GetMp4SubFormatTest, RecognisesEveryBrandByItsFirstCharacters) {
  struct Row {
    const char* brand;
    unsigned moovFirst;
    unsigned moovLast;
  };
  const Row rows[] = {
      {"M4A ", MPEG4_M4A, MPEG4_M4A},
      {"M4AB", MPEG4_M4A, MPEG4_M4A},
      {"M4V ", MPEG4_M4V, MPEG4_M4V},
      {"MSNV", MPEG4_MSNV, MPEG4_MSNV},
      {"MSNX", 0, 0},
      {"M4B ", 0, 0},
      {"mp41", MPEG4_MP4_FASTSTART, MPEG4_MP4},
      {"mp42", MPEG4_MP4_FASTSTART, MPEG4_MP4},
      {"mjp2", MPEG4_MJP2, MPEG4_MJP2},
      {"mmp4", 0, 0},
      {"qt  ", MPEG4_MOV_FASTSTART, MPEG4_MOV},
      {"qtxx", MPEG4_MOV_FASTSTART, MPEG4_MOV},
      {"isom", MPEG4_ISOM, MPEG4_ISOM},
      {"iso2", 0, 0},
      {"3g2a", MPEG4_3G2, MPEG4_3G2},
      {"3gp5", MPEG4_3GP, MPEG4_3GP},
      {"avc1", 0, 0},
      {"MP42", 0, 0},
      {std::string_view("\0\0\0\0", 4).data(), 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.brand);
    const std::string brand(row.brand, 4);
    EXPECT_EQ(subFormat(ftyp(brand) + kMoov + kMdat), row.moovFirst);
    EXPECT_EQ(subFormat(ftyp(brand) + kMdat + kMoov), row.moovLast);
  }
}

TEST_F(GetMp4SubFormatTest, NeverReportsIsomAsFastStart) {
  EXPECT_EQ(subFormat(ftyp("isom") + kMoov + kMdat), static_cast<unsigned>(MPEG4_ISOM));
}

TEST_F(GetMp4SubFormatTest, ReportsUnknownBoxAsNotFastStart) {
  EXPECT_EQ(subFormat(ftyp("qt  ") + box("meta", std::string(30, 'x')) + kMoov + kMdat),
            static_cast<unsigned>(MPEG4_MOV));
}

TEST_F(GetMp4SubFormatTest, ReportsUnreadableBoxAsNotFastStart) {
  const std::pair<const char*, int> rows[] = {{"mp42", MPEG4_MP4}, {"qt  ", MPEG4_MOV},
                                              {"M4A ", MPEG4_M4A}, {"MSNV", MPEG4_MSNV},
                                              {"3gp5", MPEG4_3GP}, {"isom", MPEG4_ISOM}};
  for (const auto& [brand, expected] : rows) {
    // The brand can be read, but the box claims to be longer than the file.
    std::string content = ftyp(brand) + kMoov + kMdat;
    content[2] = '\x7F';
    EXPECT_EQ(subFormat(content), static_cast<unsigned>(expected)) << brand;
  }
}

TEST_F(GetMp4SubFormatTest, RejectsFileShorterThan64BytesEvenWithBrand) {
  const std::string content = (ftyp("mp42") + kMoov).substr(0, 63);
  unsigned value = kPattern;
  EXPECT_EQ(GetMp4SubFormat(file(content).c_str(), &value), 1);
  EXPECT_EQ(value, 0U);
}

TEST_F(GetMp4SubFormatTest, AcceptsFileOfExactly64Bytes) {
  EXPECT_EQ(subFormat(box("ftyp", "M4V " + std::string(52, '\0'))),
            static_cast<unsigned>(MPEG4_M4V));
}

TEST_F(GetMp4SubFormatTest, FindsTheBrandUpToTheLastPossibleOffset) {
  const auto at = [](std::size_t position) {
    std::string content(80, 'x');
    content.replace(position, 8, "ftypM4A ");
    return content;
  };
  EXPECT_EQ(subFormat(at(0)), static_cast<unsigned>(MPEG4_M4A));
  EXPECT_EQ(subFormat(at(55)), static_cast<unsigned>(MPEG4_M4A));
  unsigned value = kPattern;
  EXPECT_EQ(GetMp4SubFormat(file(at(56)).c_str(), &value), 1);
  EXPECT_EQ(value, 0U);
}

TEST_F(GetMp4SubFormatTest, UsesTheFirstOfSeveralFileTypes) {
  EXPECT_EQ(subFormat("ftypM4A ftypM4V " + std::string(64, 'x')), static_cast<unsigned>(MPEG4_M4A));
}

TEST_F(GetMp4SubFormatTest, RejectsNullResultWithoutOpeningTheFile) {
  EXPECT_EQ(GetMp4SubFormat("/nonexistent/movie.mp4", nullptr), 1);
  EXPECT_EQ(GetMp4SubFormat(file(ftyp("mp42") + kMoov + kMdat).c_str(), nullptr), 1);
}

TEST_F(GetMp4SubFormatTest, RejectsUnreadableFile) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const std::string paths[] = {folder_.path("missing.mp4"), folder_.folder(),
                               folder_.path("pipe"),        folder_.write("empty.mp4", ""),
                               std::string(100'000, 'x'),   ""};
  for (const std::string& path : paths) {
    SCOPED_TRACE(path.substr(0, 80));
    unsigned value = kPattern;
    EXPECT_EQ(GetMp4SubFormat(path.c_str(), &value), 1);
    EXPECT_EQ(value, 0U);
  }
  unsigned value = kPattern;
  EXPECT_EQ(GetMp4SubFormat(nullptr, &value), 1);
  EXPECT_EQ(value, 0U);
}

TEST_F(CheckMp4MoovAtEndTest, ReportsWhetherMoovIsLast) {
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMoov + kMdat), 0);
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + kMoov), 1);
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + kMoov + box("free", "")), 0);
}

TEST_F(CheckMp4MoovAtEndTest, StepsOverEveryKnownBox) {
  for (const char* type :
       {"free", "junk", "mdat", "moov", "pnot", "skip", "wide", "PICT", "uuid"}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(moovAtEnd(ftyp("mp42") + box(type, "body") + kMdat), 0);
    EXPECT_EQ(moovAtEnd(ftyp("mp42") + box(type, "body") + kMoov), 1);
  }
}

TEST_F(CheckMp4MoovAtEndTest, ReportsUnknownBoxAsNotFastStart) {
  for (const char* type : {"meta", "moof", "sidx", "Moov", "free\1"}) {
    SCOPED_TRACE(type);
    const std::string unknown = box(std::string(type).substr(std::string(type).size() - 4), "body");
    EXPECT_EQ(moovAtEnd(ftyp("mp42") + unknown + kMdat), 1);
  }
}

TEST_F(CheckMp4MoovAtEndTest, StepsOver64BitSize) {
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + largeBox("mdat", std::string(100, 'd')) + kMoov), 1);
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMoov + largeBox("mdat", std::string(100, 'd'))), 0);
}

TEST_F(CheckMp4MoovAtEndTest, FindsMoovAfterMoreThanFourGibibytes) {
  // A sparse file: the walk seeks over the body and reads headers only.
  constexpr std::int64_t kBody = 5LL << 30;
  const std::string path = file(ftyp("mp42") + headerOf("mdat", kBody + 16));
  const auto end = static_cast<std::int64_t>(std::filesystem::file_size(path)) + kBody;
  std::filesystem::resize_file(path, static_cast<std::uintmax_t>(end));
  FILE* out = fopen(path.c_str(), "ab");
  ASSERT_NE(out, nullptr);
  fwrite(kMoov.data(), 1, kMoov.size(), out);
  fclose(out);
  EXPECT_EQ(CheckMp4MoovAtEnd(path.c_str()), 1);
}

TEST_F(CheckMp4MoovAtEndTest, EndsAtBoxOfSizeZero) {
  const auto openEnded = [](const std::string& type) {
    return std::string(4, '\0') + type + std::string(64, 'x');
  };
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMoov + openEnded("mdat")), 0);
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + openEnded("moov")), 1);
}

TEST_F(CheckMp4MoovAtEndTest, EndsAtSizeTooSmallForAHeader) {
  for (char size = 2; size < 8; ++size) {
    SCOPED_TRACE(static_cast<int>(size));
    const std::string tiny = std::string(3, '\0') + size + "moov";
    EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + tiny + kMdat), 1);
  }
}

TEST_F(CheckMp4MoovAtEndTest, EndsAtTruncatedHeader) {
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMoov + kMdat + "\x01\x02\x03"), 0);
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + kMoov + "\x01\x02\x03"), 1);
  // A truncated 64-bit size also ends the walk.
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + std::string("\0\0\0\1moov\0\0", 10)), 1);
}

TEST_F(CheckMp4MoovAtEndTest, DoesNotLoopOnHostileSizes) {
  // As signed numbers these sizes point backwards, to the box itself and before it.
  const struct {
    std::uint64_t size;
    int verdict;
  } rows[] = {{~0ULL - 7, 0}, {~0ULL - 23, 0}, {~0ULL, 0}, {0, 0}, {7, 0}, {8, 1}, {1ULL << 63, 2}};
  for (const auto& [size, verdict] : rows) {
    SCOPED_TRACE(size);
    EXPECT_EQ(moovAtEnd(ftyp("mp42") + headerOf("mdat", size) + kMoov), verdict);
  }
}

// File systems differ in how far beyond the end of a file a position may be.
TEST_F(CheckMp4MoovAtEndTest, ReportsPositionBeyondTheFileSystemsLimit) {
  for (const std::uint64_t size : {1ULL << 40, 1ULL << 50, 1ULL << 62}) {
    SCOPED_TRACE(size);
    const std::string path = file(ftyp("mp42") + kMoov + headerOf("mdat", size));
    const int descriptor = open(path.c_str(), O_RDONLY);
    ASSERT_GE(descriptor, 0);
    const bool isPosition = lseek(descriptor, static_cast<off_t>(size), SEEK_SET) >= 0;
    close(descriptor);
    EXPECT_EQ(CheckMp4MoovAtEnd(path.c_str()), isPosition ? 0 : 2);
  }
}

TEST_F(CheckMp4MoovAtEndTest, ReportsTruncatedFileTypeBox) {
  std::string content = ftyp("mp42") + kMoov + kMdat;
  content[0] = '\x7F';
  EXPECT_EQ(moovAtEnd(content), 2);
  EXPECT_EQ(moovAtEnd(ftyp("mp42").substr(0, 20)), 2);
}

TEST_F(CheckMp4MoovAtEndTest, AcceptsOtherTruncatedBoxes) {
  // Only the file type box is read completely; the walk steps over others, even past the end.
  EXPECT_EQ(moovAtEnd(ftyp("mp42") + kMdat + kMoov.substr(0, 20)), 1);
}

TEST_F(CheckMp4MoovAtEndTest, ReportsFilesThatCannotBeOpened) {
  EXPECT_EQ(CheckMp4MoovAtEnd(folder_.path("missing.mp4").c_str()), 2);
  EXPECT_EQ(CheckMp4MoovAtEnd(nullptr), 2);
  EXPECT_EQ(CheckMp4MoovAtEnd(std::string(100'000, 'x').c_str()), 2);
}

TEST_F(CheckMp4MoovAtEndTest, ReportsEmptyFileAsFastStart) {
  // There is no box, so the last one was not "moov".
  EXPECT_EQ(moovAtEnd(""), 0);
}

TEST_F(CheckMp4MoovAtEndTest, DoesNotWaitForPipes) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(CheckMp4MoovAtEnd(folder_.path("pipe").c_str()), 0);
}

TEST_F(CheckMp4MoovAtEndTest, LeavesNoDescriptorOpen) {
  const int before = openDescriptorCount();
  moovAtEnd(ftyp("mp42") + kMoov + kMdat);
  moovAtEnd(ftyp("mp42").substr(0, 20));
  moovAtEnd(ftyp("mp42") + box("meta", ""));
  CheckMp4MoovAtEnd(folder_.path("missing").c_str());
  EXPECT_EQ(openDescriptorCount(), before);
}

// Track NUMBER with this name.
std::string track(unsigned number, const std::string& name, int version = 0) {
  const std::string times(version == 1 ? 16 : 8, '\0');
  return box("trak",
             fullBox("tkhd", version, 0, times + bigEndian(number, 4) + std::string(60, 0)) +
                 box("mdia", std::string(5000, 'x')) +
                 box("udta", box("tagc", "xyz") + box("name", name)));
}

class Mp4TrackNames : public Mp4Boxes {
 protected:
  // "NUMBER=NAME" of each.
  std::vector<std::string> names(const std::string& content) {
    const auto source = kolum::media::Source::open(file(content));
    std::vector<std::string> found;
    for (const auto& [number, name] : kolum::headers::mp4TrackNames(*source))
      found.push_back(std::to_string(number) + "=" + name);
    return found;
  }
};

TEST_F(Mp4TrackNames, AreFoundBehindLargeBoxesInEitherVersion) {
  const std::string moov = box(
      "moov", box("mvhd", std::string(100, 'x')) + track(1, "Stereo") + track(7, "Kommentär", 1));
  const std::vector<std::string> expected = {"1=Stereo", "7=Kommentär"};
  EXPECT_EQ(names(ftyp("isom") + kMdat + moov), expected);
  EXPECT_EQ(names(ftyp("isom") + moov + kMdat), expected);
  EXPECT_EQ(names(ftyp("isom") + largeBox("mdat", std::string(9000, 'd')) + moov), expected);
}

TEST_F(Mp4TrackNames, LeaveOutTracksWithoutNameOrNumber) {
  const std::string moov = box("moov", track(0, "No number") + track(2, "") + box("trak", "") +
                                           box("trak", box("udta", "")));
  EXPECT_TRUE(names(ftyp("isom") + moov).empty());
  EXPECT_TRUE(names("").empty());
  EXPECT_TRUE(names(ftyp("isom")).empty());
}

TEST_F(Mp4TrackNames, EndWhereBoxesMakeNoSense) {
  const std::string good = track(1, "Stereo");
  // Beyond its parent, shorter than its header, and a 64-bit size beyond every file.
  for (const std::string& bad :
       {bigEndian(5000, 4) + "trak", bigEndian(4, 4) + "trak", headerOf("trak", UINT64_MAX)}) {
    EXPECT_EQ(names(ftyp("isom") + box("moov", good + bad + track(2, "Lost"))),
              std::vector<std::string>{"1=Stereo"});
  }
  // A cut header of a track, and a name that is cut by the end of the file.
  const std::string cut = box("moov", good).substr(0, good.size());
  EXPECT_TRUE(names(ftyp("isom") + cut).empty());
}

TEST_F(Mp4TrackNames, AreCutAndFewEnoughForAnAnswer) {
  std::string tracks;
  for (unsigned i = 1; i <= 100; ++i) tracks += track(i, std::string(3000, 'n'));
  const auto source = kolum::media::Source::open(file(ftyp("isom") + box("moov", tracks)));
  const auto found = kolum::headers::mp4TrackNames(*source);
  ASSERT_FALSE(found.empty());
  EXPECT_EQ(found.front().name, std::string(1000, 'n'));
  EXPECT_LE(found.size(), 65U);
}

TEST_F(Mp4TrackNames, TakeNoLongerForMillionsOfBoxes) {
  std::string small;
  for (int i = 0; i < 200'000; ++i) small += bigEndian(8, 4) + "free";
  EXPECT_TRUE(names(ftyp("isom") + box("moov", small + track(1, "Behind"))).empty());
}

}  // namespace
