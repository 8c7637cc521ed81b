#include <gtest/gtest.h>
#include <kolum/video.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "base/shell.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::shellWord;

namespace {

constexpr unsigned kPattern = 0xABABABAB;

std::string video() {
  return media("query.mp4", "-f lavfi -i testsrc=s=176x144:d=1 -pix_fmt yuv420p -c:v libx264");
}

std::string song() {
  return media("query.m4a", "-f lavfi -i sine=d=1:r=44100 -c:a aac");
}

struct Answer {
  unsigned result;
  unsigned value;
  bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
  *out << "result " << answer.result << ", value " << answer.value;
}

Answer rotation(const std::string& path) {
  Answer answer = {.result = 0, .value = kPattern};
  const std::size_t slash = path.rfind('/');
  answer.result = GetVideoRotationDegree(path.substr(0, slash + 1).c_str(),
                                         path.substr(slash + 1).c_str(), &answer.value);
  return answer;
}

using Query = unsigned (*)(const char*, unsigned*);

Answer ask(Query query, const std::string& path) {
  Answer answer = {.result = 0, .value = kPattern};
  answer.result = query(path.c_str(), &answer.value);
  return answer;
}

TEST(GetVideoRotationDegree, ReportsTheStoredDegrees) {
  for (const int degrees : {90, 180, 270, 45}) {
    EXPECT_EQ(rotation(withTrackMatrix(video(), rotationMatrix(degrees))),
              (Answer{0, static_cast<unsigned>(degrees)}));
  }
  EXPECT_EQ(rotation(withTrackMatrix(video(), rotationMatrix(-90))), (Answer{0, 270}));
}

TEST(GetVideoRotationDegree, ReportsRealRotateTagUnchanged) {
  EXPECT_EQ(rotation(withRotateTag("90")), (Answer{0, 90}));
  EXPECT_EQ(rotation(withRotateTag("-90")), (Answer{0, static_cast<unsigned>(-90)}));
  EXPECT_EQ(rotation(withRotateTag("45.9")), (Answer{0, 45}));
  EXPECT_EQ(rotation(withRotateTag("left")), (Answer{0, 0}));
}

TEST(GetVideoRotationDegree, UsesTheFirstVideoStreamNotTheLargest) {
  const std::string larger =
      media("query-larger.mp4", "-f lavfi -i testsrc=s=320x240:d=1 -c:v libx264");
  const std::string both =
      media("both.mp4", "-i " + shellWord(withTrackMatrix(video(), rotationMatrix(90))) + " -i " +
                            shellWord(larger) + " -map 0 -map 1 -c copy");
  EXPECT_EQ(rotation(both), (Answer{0, 90}));
}

// The header of a program stream does not list its streams; only the stream information does.
TEST(GetVideoRotationDegree, DoesNotReadTheStreamInformation) {
  const std::string path =
      media("query.mpg", "-f lavfi -i testsrc=s=176x144:d=1 -c:v mpeg2video -f vob");
  EXPECT_EQ(rotation(path), (Answer{1, kPattern}));
  EXPECT_EQ(ask(GetAudioTrack, path), (Answer{0, 0}));
}

TEST(GetVideoRotationDegree, KeepsTheOutputWithoutRotation) {
  EXPECT_EQ(rotation(video()), (Answer{0, kPattern}));
}

TEST(GetVideoRotationDegree, FailsWithoutVideoStream) {
  EXPECT_EQ(rotation(song()), (Answer{1, kPattern}));
}

TEST(GetVideoRotationDegree, RejectsPathThatDoesNotFit) {
  // If cut at 1023 characters, this path would name the file.
  const TempDir folder;
  std::filesystem::create_symlink(video(), folder.path("a"));
  std::string padded = folder.folder();
  while (padded.size() < 1022) padded += "/";
  EXPECT_EQ(rotation(padded + "a"), (Answer{0, kPattern})) << "1023 characters";
  EXPECT_EQ(rotation(padded + "/a"), (Answer{1, kPattern})) << "1024 characters";
}

TEST(GetVideoRotationDegree, RejectsNull) {
  unsigned degrees = kPattern;
  EXPECT_EQ(GetVideoRotationDegree(nullptr, "a", &degrees), 1U);
  EXPECT_EQ(GetVideoRotationDegree("/", nullptr, &degrees), 1U);
  EXPECT_EQ(GetVideoRotationDegree("/", "a", nullptr), 1U);
  EXPECT_EQ(degrees, kPattern);
}

TEST(StreamCounts, CountAudioAndSubtitleStreams) {
  const std::string path =
      media("three-audio.mkv",
            "-f lavfi -i testsrc=s=176x144:d=1 -f lavfi -i sine=d=1 -map 0 -map 1 -map 1 -map 1 "
            "-pix_fmt yuv420p -c:v libx264 -c:a ac3");
  EXPECT_EQ(ask(GetAudioTrack, path), (Answer{0, 3}));
  EXPECT_EQ(ask(GetSubtitleTrack, path), (Answer{0, 0}));
  EXPECT_EQ(ask(GetAudioTrack, video()), (Answer{0, 0}));
  EXPECT_EQ(ask(GetAudioTrack, song()), (Answer{0, 1}));

  const TempDir folder;
  const std::string lines = folder.write("a.srt", "1\n00:00:00,000 --> 00:00:01,000\none\n");
  const std::string subtitled =
      made("subtitled.mkv", "two srt streams", [&](const std::string& out) {
        mustRun({"ffmpeg", "-loglevel", "error", "-nostdin", "-y",   "-i", video(),
                 "-i",     lines,       "-map",  "0",        "-map", "1",  "-map",
                 "1",      "-c:v",      "copy",  "-c:s",     "srt",  out});
      });
  EXPECT_EQ(ask(GetSubtitleTrack, subtitled), (Answer{0, 2}));
}

TEST(GetDRMProtectedInfo, RecognisesEncryptedTracksByTheirCodecTag) {
  EXPECT_EQ(ask(GetDRMProtectedInfo, video()), (Answer{0, 0}));
  EXPECT_EQ(ask(GetDRMProtectedInfo, song()), (Answer{0, 0}));
  EXPECT_EQ(ask(GetDRMProtectedInfo, replaced(video(), "avc1", "drmi")), (Answer{0, 1}));
  EXPECT_EQ(ask(GetDRMProtectedInfo, replaced(song(), "mp4a", "drms")), (Answer{0, 1}));
  EXPECT_EQ(ask(GetDRMProtectedInfo, replaced(video(), "avc1", "DRMI")), (Answer{0, 0}))
      << "letter case matters";
  const std::string untagged =
      media("untagged.mpg", "-f lavfi -i testsrc=s=176x144:d=1 -c:v mpeg2video -f vob");
  EXPECT_EQ(ask(GetDRMProtectedInfo, untagged), (Answer{0, 0}));
}

TEST(StreamQueries, FailForNonMedia) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("pipe.mp4").c_str(), 0600), 0);
  const std::string paths[] = {
      folder.path("missing.mp4"), folder.path("pipe.mp4"),           folder.folder(),
      folder.write("a.mp4", ""),  folder.write("b.mp4", "no video"), std::string(100'000, 'x'),
  };
  for (const std::string& path : paths) {
    SCOPED_TRACE(path.substr(0, 80));
    withinSeconds(20, [&] {
      for (const Query query : {GetAudioTrack, GetSubtitleTrack, GetDRMProtectedInfo})
        EXPECT_EQ(ask(query, path), (Answer{1, kPattern}));
      EXPECT_EQ(rotation("/" + path), (Answer{1, kPattern}));
    });
  }
}

TEST(StreamQueries, RejectNull) {
  for (const Query query : {GetAudioTrack, GetSubtitleTrack, GetDRMProtectedInfo}) {
    unsigned value = kPattern;
    EXPECT_EQ(query(nullptr, &value), 1U);
    EXPECT_EQ(value, kPattern);
    EXPECT_EQ(query(video().c_str(), nullptr), 1U);
  }
}

TEST(StreamQueries, LeaveNoDescriptorOpen) {
  const std::string files[] = {video(), song()};
  const ExpectNoDescriptorLeak leak;
  for (const std::string& file : files) {
    for (const Query query : {GetAudioTrack, GetSubtitleTrack, GetDRMProtectedInfo})
      ask(query, file);
    rotation(file);
  }
}

}  // namespace
