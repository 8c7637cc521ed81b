// Files read by workers: the same answers, and limits that hold.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/isolation.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>

#include "answers/answers.h"
#include "answers/details_text.h"
#include "isolation/isolation.h"
#include "support/dsd_builder.h"
#include "support/hostile_media.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

using isolation::Mode;

// Hostile files use it up, which takes long; good ones never do, however slow the machine is.
constexpr std::chrono::seconds kShortDeadline{3};
constexpr std::chrono::seconds kLongDeadline{30};

void isolate(bool isOn, std::size_t memory = std::size_t{1} << 30,
             std::chrono::seconds deadline = kLongDeadline) {
  isolation::configure({.mode = isOn ? Mode::kOn : Mode::kOff,
                        .deadline = deadline,
                        .memory = memory,
                        .worker = KOLUM_WORKER});
}

class IsolatedAnswers : public testing::Test {
 protected:
  void TearDown() override { isolate(false); }
};

struct FileCase {
  const char* name;
  const char* arguments;
};

std::ostream& operator<<(std::ostream& out, const FileCase& row) {
  return out << row.name;
}

class SameAnswers : public IsolatedAnswers, public testing::WithParamInterface<FileCase> {};

TEST_P(SameAnswers, AreGivenByWorkers) {
  const std::string path = media(GetParam().name, GetParam().arguments);
  const std::string expected = answersAbout(path);
  isolate(true);
  EXPECT_EQ(answersAbout(path), expected);
}

std::string detailsOf(const std::string& path) {
  const auto source = media::Source::open(path);
  if (!source) return "none";
  const read::Findings found =
      isolation::look(*source, {.container = ffmpeg::Depth::kStreams, .details = true});
  std::string text;
  if (found.container)
    for (const media::Stream& stream : found.container->streams)
      text += detailsText(stream.details.value()) + '\n';
  return text;
}

TEST_P(SameAnswers, HaveTheSameDetails) {
  const std::string path = media(GetParam().name, GetParam().arguments);
  const std::string expected = detailsOf(path);
  EXPECT_NE(expected, "");
  isolate(true);
  EXPECT_EQ(detailsOf(path), expected);
}

std::string testName(const testing::TestParamInfo<FileCase>& info) {
  std::string name = info.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(
    Files, SameAnswers,
    testing::Values(
        FileCase{"film.mp4",
                 "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -f lavfi -i sine=d=2 "
                 "-pix_fmt yuv420p -c:v libx264 -c:a aac -metadata:s:v "
                 "creation_time=2015-06-07T08:09:10Z"},
        FileCase{"film.mov",
                 "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -pix_fmt yuv420p -c:v "
                 "libx264 -movflags use_metadata_tags -metadata "
                 "com.apple.quicktime.creationdate=2015-06-07T08:09:10+0200"},
        FileCase{"film.ts",
                 "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -f lavfi -i sine=d=2 "
                 "-c:v mpeg2video -c:a mp2"},
        FileCase{"film.mkv",
                 "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -f lavfi -i sine=d=2 "
                 "-pix_fmt yuv420p -c:v libx264 -c:a ac3"},
        FileCase{"film.avi", "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -c:v mpeg4 -vtag XVID"},
        FileCase{"film.wmv",
                 "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -f lavfi -i sine=d=2 "
                 "-c:v wmv2 -c:a wmav2"},
        FileCase{"song.mp3", "-f lavfi -i sine=d=2 -metadata title=A -metadata artist=B"},
        FileCase{"song.m4a", "-f lavfi -i sine=d=2 -c:a aac"},
        FileCase{"song.flac", "-f lavfi -i sine=d=2"}, FileCase{"song.ogg", "-f lavfi -i sine=d=2"},
        FileCase{"song.wav", "-f lavfi -i sine=d=2"},
        FileCase{"photo.jpg", "-f lavfi -i testsrc2=s=176x144 -frames:v 1"},
        FileCase{"photo.png", "-f lavfi -i testsrc2=s=176x144 -frames:v 1"},
        FileCase{"photo.jp2", "-f lavfi -i testsrc2=s=176x144 -frames:v 1"}),
    testName);

TEST_F(IsolatedAnswers, IncludeTagsOfDsfSongs) {
  const TempDir folder;
  const std::string path =
      folder.write("song.dsf", dsfFile({.tag = id3v2Tag({{"TIT2", "A"}, {"TPE1", "B"}})}));
  const std::string expected = answersAbout(path);
  isolate(true);
  EXPECT_EQ(answersAbout(path), expected);
}

TEST_F(IsolatedAnswers, AreTheSameForPathsWithoutMedia) {
  const TempDir folder;
  for (const std::string& path :
       {folder.write("empty.mp4", ""), folder.write("text.mp4", "not a film"), folder.folder(),
        folder.path("missing.mp4"), std::string("/dev/null")}) {
    isolate(false);
    const std::string expected = answersAbout(path);
    isolate(true);
    EXPECT_EQ(answersAbout(path), expected) << path;
  }
}

class IsolatedFile : public IsolatedAnswers, public testing::WithParamInterface<HostileFile> {};

long peakKilobytes() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  return used.ru_maxrss;
}

// Whatever it does to the worker, the host neither grows nor waits, and goes on.
TEST_P(IsolatedFile, HarmsNobody) {
  constexpr std::size_t kMemory = std::size_t{256} << 20;
  constexpr long kGrowth = 64 * 1024;
  const TempDir folder;
  const std::string good = folder.write("good.txt", "text");
  const std::string path = writeHostileFile(GetParam(), folder.folder());
  isolate(true, kMemory, kShortDeadline);
  const auto source = media::Source::open(path);
  ASSERT_TRUE(source);
  const long before = peakKilobytes();
  const auto begin = std::chrono::steady_clock::now();
  const read::Findings found = isolation::look(
      *source, {.container = ffmpeg::Depth::kStreams, .details = true, .dsfTags = true});
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 2 * kShortDeadline);
  EXPECT_LT(peakKilobytes() - before, kGrowth);
  if (found.failure) RecordProperty("reason", found.failure->reason);
  isolate(true, kMemory);
  const auto next = media::Source::open(good);
  EXPECT_FALSE(isolation::look(*next, {.recognition = true}).failure);
}

std::string hostileName(const testing::TestParamInfo<HostileFile>& info) {
  std::string name = info.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, IsolatedFile, testing::ValuesIn(isolatedFiles()), hostileName);

// An answer with holes would look like one without.
TEST_F(IsolatedAnswers, AreFailuresIfMemoryRunsOut) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers reserve terabytes";
#endif
  const TempDir folder;
  for (const HostileFile& file : isolatedFiles()) {
    if (file.name != "hugeCounts.mp4" && file.name != "inflatingMovie.mov") continue;
    isolate(true, std::size_t{64} << 20);
    const auto source = media::Source::open(writeHostileFile(file, folder.folder()));
    const read::Findings found = isolation::look(*source, {.container = ffmpeg::Depth::kStreams});
    ASSERT_TRUE(found.failure) << file.name;
    EXPECT_EQ(found.failure->cause, read::FailureCause::kOutOfMemory);
    EXPECT_FALSE(found.container);
  }
}

TEST_F(IsolatedAnswers, AreChosenByTheExportedFunction) {
  EXPECT_EQ(KoLUM_SetIsolation(3), 1U);
  EXPECT_EQ(KoLUM_SetIsolation(-1), 1U);
  EXPECT_EQ(isolation::settings().mode, Mode::kOff);
  isolate(false);
  EXPECT_EQ(KoLUM_SetIsolation(KOLUM_ISOLATION_ON), 0U);
  EXPECT_EQ(isolation::settings().mode, Mode::kOn);
  EXPECT_EQ(KoLUM_SetIsolation(KOLUM_ISOLATION_OFF), 0U);
  EXPECT_EQ(isolation::settings().mode, Mode::kOff);
}

TEST_F(IsolatedAnswers, KeepTheirModeIfThereIsNoWorker) {
  isolation::configure({.worker = "/nowhere/kolum-worker"});
  EXPECT_EQ(KoLUM_SetIsolation(KOLUM_ISOLATION_ON), 1U);
  EXPECT_EQ(isolation::settings().mode, Mode::kOff);
}

}  // namespace

}  // namespace kolum::test
