// Calls everything that is thread-safe from eight threads at once: each must get the answers that a
// single thread gets.
#include <gtest/gtest.h>
#include <kolum/kolum.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

namespace fs = std::filesystem;

constexpr int kThreads = 8;

using Question = std::function<std::string()>;

// Each thread asks all questions, starting with a different one.
void askFromManyThreads(const std::vector<Question>& questions, int rounds) {
  std::vector<std::string> expected;
  for (const Question& question : questions) expected.push_back(question());

  std::atomic<int> wrong{0};
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      start.arrive_and_wait();
      for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < questions.size(); ++i) {
          const std::size_t next = (i + static_cast<std::size_t>(thread)) % questions.size();
          if (questions[next]() != expected[next]) ++wrong;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

template <typename Record>
std::string bytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

std::string folderOf(const std::string& path) {
  return fs::path(path).parent_path().string() + "/";
}
std::string nameOf(const std::string& path) {
  return fs::path(path).filename();
}

std::string probed(const std::string& path) {
  videoObject_st record;
  std::memset(&record, 0, sizeof record);
  const unsigned result =
      GetVideoMetadata1(folderOf(path).c_str(), nameOf(path).c_str(), &record, 0);
  return std::to_string(result) + bytesOf(record);
}

std::string described(const std::string& path) {
  MediaInfo* info = nullptr;
  double time = 0;
  if (GetMediaInfo(path.c_str(), &info, 1, &time) != 0) return "failed";
  std::string text = std::to_string(info->streamCount) + " " + std::to_string(info->duration);
  for (int i = 0; i < info->streamCount; ++i)
    text += " " + std::to_string(info->streams[i].codecId);
  Free_MediaInfo(info);
  return text + " " + std::to_string(time);
}

std::string songAnswers(const std::string& path) {
  uint32_t numbers[8] = {};
  int32_t signedNumbers[2] = {};
  char profile[16] = {};
  const unsigned result =
      GetAudioMetadata(folderOf(path).c_str(), nameOf(path).c_str(), &numbers[0], &numbers[1],
                       &numbers[2], &numbers[3], &numbers[4], &numbers[5], &numbers[6], &numbers[7],
                       &signedNumbers[0], &signedNumbers[1], profile);
  return std::to_string(result) + bytesOf(numbers) + bytesOf(signedNumbers) + profile;
}

std::string photoAnswers(const std::string& path) {
  uint32_t width = 0;
  uint32_t height = 0;
  GetPhotoHW(path.c_str(), &width, &height);
  return std::to_string(width) + "x" + std::to_string(height);
}

std::string boxesOf(const std::string& path) {
  unsigned subFormat = 0;
  unsigned packets = 0;
  unsigned degrees = 0;
  unsigned tracks = 0;
  GetMp4SubFormat(path.c_str(), &subFormat);
  ProbeTsPacketSize(path.c_str(), &packets);
  GetVideoRotationDegree(folderOf(path).c_str(), nameOf(path).c_str(), &degrees);
  GetAudioTrack(path.c_str(), &tracks);
  return std::to_string(subFormat) + " " + std::to_string(CheckMp4MoovAtEnd(path.c_str())) + " " +
         std::to_string(packets) + " " + std::to_string(degrees) + " " + std::to_string(tracks);
}

std::string keyFrameOf(const std::string& path) {
  double time = 0;
  const unsigned result = getVideoKeyFrameTime(path.c_str(), 1, &time);
  return std::to_string(result) + " " + std::to_string(time);
}

TEST(Threads, ProbeIndependently) {
  const std::string picture = "-f lavfi -i testsrc2=size=64x48:rate=10:duration=2 ";
  const std::string both = picture + "-f lavfi -i sine=duration=2 ";
  const TempDir folder;
  const std::string turned = folder.write(
      "turned.mp4",
      withTrackMatrix(media("threads.mp4", both + "-c:v mpeg4 -c:a aac"), rotationMatrix(90)));
  const std::string ts = media("threads.ts", both + "-c:v mpeg2video -c:a mp2 -f mpegts");
  const std::string mkv = media("threads.mkv", picture + "-c:v libx264 -preset ultrafast");
  const std::string song = media("threads.mp3", "-f lavfi -i sine=duration=1 -c:a libmp3lame");
  const std::string photo = media("threads.jpg", picture + "-frames:v 1");
  const std::string broken = folder.write("broken.mp4", "\0\0\0\x18 ftypisom and no more");

  std::vector<Question> questions;
  for (const std::string& video : {turned, ts, mkv, broken}) {
    for (std::string (*const ask)(const std::string&) :
         {probed, described, boxesOf, keyFrameOf, songAnswers})
      questions.push_back([ask, video] { return ask(video); });
  }
  questions.push_back([song] { return songAnswers(song); });
  questions.push_back([photo] { return photoAnswers(photo); });
  askFromManyThreads(questions, 3);
}

std::string classified(const std::string& name) {
  unsigned row = 0;
  unsigned tag = 0;
  const int kind = KoLUM_GetFilenameType(name.c_str(), &row, 0x0F, &tag);
  return std::to_string(kind) + " " + std::to_string(row) + " " + std::to_string(tag);
}

TEST(Threads, ClassifyAndConvertIndependently) {
  std::vector<Question> questions;
  for (const char* name : {"a.mp4", "b.JPG", "c.mp3", "d.m3u", "e.unknown", "", ".mkv", "f.iso"})
    questions.push_back([name] { return classified(name); });
  for (const char* text : {"2015-06-07T08:09:10", "20150607", "", "no date"})
    questions.push_back([text] { return std::to_string(DateTimeStringToSeconds(text)); });
  for (const unsigned codec : {28U, 174U, 13U, 0xFFFFU}) {
    questions.push_back([codec] {
      char name[64] = {};
      const int result = CodecIDToName(name, codec);
      return std::to_string(result) + name;
    });
  }
  askFromManyThreads(questions, 200);
}

TEST(Threads, ReadConfigurationAndWriteStampsIndependently) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    writeRootFile("/data/.system/lumserver.conf",
                  "[KOLUMSERVER]\nMODE=2\n[THUMBNAIL]\nPHOTO_BLACKLIST=a:b:c\n");
    writeRootFile("/etc/config/medialibrary.conf", "[PelmoCore]\nDeviceType=1\n");
    fs::create_directories("/data/.system/tmp");
    setenv("KO_DATA_DIR", "/data", 1);
    const auto configuration = [] {
      lumCfg_s cfg{};
      const int result = parseConfig(&cfg);
      return std::to_string(result) + std::to_string(cfg.mode) + std::to_string(cfg.deviceType) +
             std::to_string(cfg.photoBlacklist.size());
    };
    const auto stampOf = [](const char* stamp) {
      return [stamp] { return std::to_string(saveLastBuildTime(stamp)); };
    };
    const auto album = [] {
      char path[1024] = {};
      const int result = LUM_CheckMusicAlbumArt("/data/music/", "The Artist", "\xC3\x89tude", path);
      return std::to_string(result) + path;
    };
    askFromManyThreads({configuration, album, stampOf(kThumbLastBuildTime),
                        stampOf(kFaceLastBuildTime), stampOf(kImgClassifyLastBuildTime)},
                       50);
  });
}

}  // namespace

}  // namespace kolum::test
