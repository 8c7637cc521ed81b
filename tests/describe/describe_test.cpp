// The document of a file, for any language.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/describe.h>
#include <kolum/filetype.h>
#include <kolum/frame.h>
#include <kolum/video.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>
#include <vector>

#include "isolation/isolation.h"
#include "support/disc_media.h"
#include "support/dsd_builder.h"
#include "support/exif_builder.h"
#include "support/heif_builder.h"
#include "support/hostile_media.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using nlohmann::json;

std::string song() {
  return media("described.flac", "-f lavfi -i sine=duration=2 -metadata title=Dawn");
}

struct Answer {
  int result = -1;
  json document;
};

Answer answerOf(int result, char* text) {
  Answer answer = {result, {}};
  if (text != nullptr) answer.document = json::parse(text);
  KoLUM_FreeText(text);
  return answer;
}

Answer described(const std::string& path, const KoLUM_DescribeOptions* options = nullptr) {
  char* text = nullptr;
  const int result = KoLUM_Describe(path.c_str(), options, &text);
  return answerOf(result, text);
}

KoLUM_DescribeOptions options() {
  KoLUM_DescribeOptions options = {};
  options.size = sizeof options;
  return options;
}

class Describe : public testing::Test {
 protected:
  void SetUp() override { isolation::configure({.worker = KOLUM_WORKER}); }
  void TearDown() override {
    isolation::configure({.worker = "/nowhere"});
    isolation::forgetWorkers();
    isolation::configure({});
  }
};

TEST_F(Describe, ReadsDiscImagesByDescriptor) {
  const std::string image = udfImage(discRoot(dvdWithLanguages()), "languages.iso");
  const int fd = open(image.c_str(), O_RDONLY | O_CLOEXEC);
  char* text = nullptr;
  const int result = KoLUM_DescribeFd(fd, "any.iso", nullptr, &text);
  close(fd);
  const Answer answer = answerOf(result, text);
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  EXPECT_EQ(answer.document["titles"].size(), 3U);
  EXPECT_EQ(answer.document["mainTitle"], 2);
}

TEST_F(Describe, LeavesOutTitlesOfDiscsWithTheDetails) {
  KoLUM_DescribeOptions few = options();
  const Answer answer = described(dvdWithLanguages() + "VIDEO_TS.IFO", &few);
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  EXPECT_FALSE(answer.document.contains("titles"));
}

TEST_F(Describe, AnswersWithADocument) {
  const Answer answer = described(song());
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  EXPECT_EQ(answer.document["schema"], 2);
  EXPECT_EQ(answer.document["file"], song());
  EXPECT_EQ(answer.document["title"], "Dawn");
  EXPECT_EQ(answer.document["duration"], 2.0);
  EXPECT_EQ(answer.document["streams"].size(), 1U);
}

TEST_F(Describe, LeavesOutDetailsUnlessTheyAreAskedFor) {
  const KoLUM_DescribeOptions none = options();
  const Answer answer = described(song(), &none);
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  EXPECT_FALSE(answer.document.contains("title"));
  EXPECT_FALSE(answer.document.contains("streams"));
  EXPECT_EQ(answer.document["sampleRate"], 44100);
}

TEST_F(Describe, TakesTheKindFromNameCallerOrContent) {
  const TempDir folder;
  const std::string path = folder.path("song.dat");
  std::filesystem::copy(song(), path);
  EXPECT_EQ(described(path).document["error"]["code"], "unknown-name");
  KoLUM_DescribeOptions chosen = options();
  chosen.kind = MEDIA_KIND_MUSIC;
  EXPECT_EQ(described(path, &chosen).document["kind"]["name"], "music");
  KoLUM_DescribeOptions byContent = options();
  byContent.flags = KOLUM_BY_CONTENT;
  EXPECT_EQ(described(path, &byContent).document["kind"]["name"], "music");
}

TEST_F(Describe, HasAllDetailsIfTheContentDecides) {
  KoLUM_DescribeOptions byContent = options();
  byContent.flags = KOLUM_BY_CONTENT | KOLUM_DETAILS;
  EXPECT_EQ(described(song(), &byContent).document, described(song()).document);
}

TEST_F(Describe, ReadsFilesOnceWhoseContentIsWhatTheirNameSays) {
  const std::string film =
      media("described.mkv",
            "-f lavfi -i color=size=64x48:rate=5:duration=1 -c:v mpeg4 -metadata title=X");
  const auto bytesRead = [](const std::string& path, std::uint32_t flags) {
    KoLUM_DescribeOptions chosen = options();
    chosen.flags = flags;
    const std::uint64_t before = isolation::bytesReadForThread();
    EXPECT_EQ(described(path, &chosen).result, KOLUM_DESCRIBED);
    return isolation::bytesReadForThread() - before;
  };
  for (const std::string& path : {song(), film}) {
    const std::uint64_t byName = bytesRead(path, KOLUM_DETAILS);
    EXPECT_GT(byName, 0U);
    EXPECT_LT(bytesRead(path, KOLUM_DETAILS | KOLUM_BY_CONTENT), byName * 3 / 2) << path;
  }
}

TEST_F(Describe, NamesTheContentsType) {
  EXPECT_EQ(described(song()).document["contentType"], "audio/flac");
  KoLUM_DescribeOptions asSong = options();
  asSong.flags = KOLUM_DETAILS;
  asSong.kind = MEDIA_KIND_MUSIC;
  const std::string sound = media("sound.mkv", "-f lavfi -i sine=d=1");
  EXPECT_EQ(described(sound, &asSong).document["contentType"], "audio/x-matroska");
  const TempDir folder;
  const Answer text = described(folder.write("text.mp4", "%PDF-1.7 is no film"));
  EXPECT_EQ(text.document["contentType"], "application/pdf");
  EXPECT_EQ(text.result, KOLUM_NOT_DESCRIBED);
}

TEST_F(Describe, FingerprintsOnRequestOnly) {
  EXPECT_FALSE(described(song()).document.contains("fingerprint"));
  KoLUM_DescribeOptions wanted = options();
  wanted.flags = KOLUM_FINGERPRINT;
  EXPECT_EQ(described(song(), &wanted).document["fingerprint"].get<std::string>().size(), 64U);
}

std::vector<std::string> warningsOf(const std::string& path) {
  std::vector<std::string> codes;
  const json document = described(path).document;
  if (document.contains("warnings"))
    for (const json& warning : document["warnings"]) codes.push_back(warning["code"]);
  return codes;
}

TEST_F(Describe, WarnsOfWhatIsOdd) {
  using testing::ElementsAre;
  const TempDir folder;
  const std::string picture = media("odd.png", "-f lavfi -i testsrc=s=64x48 -frames:v 1");
  const std::string film =
      media("whole.mp4", "-f lavfi -i testsrc=s=64x48:d=2 -movflags faststart");
  const auto copy = [&folder](const std::string& path, const char* name) {
    return folder.write(name, contentOf(path));
  };
  EXPECT_THAT(warningsOf(picture), ElementsAre());
  EXPECT_THAT(warningsOf(film), ElementsAre());
  EXPECT_THAT(warningsOf(copy(picture, "a.jpg")), ElementsAre("misnamed"));
  EXPECT_THAT(warningsOf(copy(picture, "a.PNG")), ElementsAre());
  EXPECT_THAT(warningsOf(copy(film, "a.avi")), ElementsAre("misnamed"));
  EXPECT_THAT(warningsOf(copy(picture, "a.mkv")), ElementsAre("misnamed", "picture-as-video"));
  const std::string whole = contentOf(film);
  EXPECT_THAT(warningsOf(folder.write("half.mp4", whole.substr(0, whole.size() * 3 / 4))),
              ElementsAre("truncated"));
}

TEST_F(Describe, ExplainsItsWarnings) {
  const TempDir folder;
  const std::string picture = media("odd.png", "-f lavfi -i testsrc=s=64x48 -frames:v 1");
  const json document = described(folder.write("a.jpg", contentOf(picture))).document;
  EXPECT_EQ(document["warnings"][0]["reason"], "named .jpg, but its content is image/png");
}

// There is no tool for them: nothing has named its folder.
TEST_F(Describe, TakesDsdSongsFromTheirHeaders) {
  const TempDir folder;
  const DsdFile song = {
      .sampleRate = 5644800, .channels = 1, .seconds = 3, .tag = id3v2Tag({{"TIT2", "Dawn"}})};
  folder.write("song.dsf", dsfFile(song));
  folder.write("song.dff", dffFile(song));
  folder.write("song.bin", dsfFile(song));
  KoLUM_DescribeOptions byContent = options();
  byContent.flags = KOLUM_BY_CONTENT;
  for (const char* name : {"song.dsf", "song.dff", "song.bin"}) {
    const Answer answer = described(folder.path(name), &byContent);
    EXPECT_EQ(answer.result, KOLUM_DESCRIBED) << name << answer.document;
    EXPECT_EQ(answer.document.value("channels", 0), 1) << name;
    EXPECT_EQ(answer.document.value("sampleRate", 0), 5644800) << name;
    EXPECT_EQ(answer.document.value("bitsPerSample", 0), 1) << name;
    EXPECT_EQ(answer.document.value("audioBitRate", 0), 5644000) << name;
    EXPECT_NEAR(answer.document.value("duration", 0.0), 3, 0.01) << name;
  }
}

// It would read the file of that name, which may be another.
TEST_F(Describe, AsksNoToolAboutOpenDsdSongs) {
  const TempDir tools;
  const TempDir folder;
  tools.write("dsf2flac", "#!/bin/sh\necho '<ID3TAG><FREQUENCY>96000</FREQUENCY></ID3TAG>'\n");
  std::filesystem::permissions(tools.path("dsf2flac"), std::filesystem::perms::owner_all);
  std::string toolFolder = tools.folder();
  char* const before = std::exchange(g_localWorkingPath, toolFolder.data());
  const std::string path = folder.write("song.dsf", dsfFile({}));
  EXPECT_EQ(described(path).document["sampleRate"], 96000);
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  for (const std::string& name : {path, std::string("nowhere/song.dsf")}) {
    char* text = nullptr;
    const int result = KoLUM_DescribeFd(file, name.c_str(), nullptr, &text);
    const Answer answer = answerOf(result, text);
    EXPECT_EQ(answer.document["sampleRate"], 2822400) << name;
    EXPECT_EQ(answer.document["containerFormat"]["name"], "FORMAT_DSF") << name;
  }
  close(file);
  g_localWorkingPath = before;
}

TEST_F(Describe, ShowsTagsAndStreamsOfDsdSongs) {
  const TempDir folder;
  folder.write("song.dsf", dsfFile({.tag = id3v2Tag({{"TIT2", "Dawn"}})}));
  KoLUM_DescribeOptions details = options();
  details.flags = KOLUM_DETAILS;
  const json document = described(folder.path("song.dsf"), &details).document;
  EXPECT_EQ(document.value("title", ""), "Dawn") << document;
  ASSERT_TRUE(document.contains("streams")) << document;
  const json& stream = document["streams"][0];
  EXPECT_EQ(stream.value("codecName", ""), "dsd_lsbf_planar");
  EXPECT_EQ(stream.value("sampleRate", 0), 2822400);
  EXPECT_EQ(stream.value("bitsPerSample", 0), 1);
}

TEST_F(Describe, SaysWhatIsWrongWithFilesNamedLikeDsdSongs) {
  const TempDir folder;
  std::filesystem::copy(song(), folder.path("flac.dsf"));
  folder.write("cut.dsf", dsfFile({}).substr(0, 40));
  folder.write("text.dff", "no song at all, but words");
  const std::pair<const char*, const char*> kCodes[] = {
      {"flac.dsf", "no-numbers"}, {"cut.dsf", "damaged"}, {"text.dff", "not-media"}};
  for (const auto& [name, code] : kCodes) {
    const Answer answer = described(folder.path(name));
    EXPECT_EQ(answer.result, KOLUM_NOT_DESCRIBED) << name;
    EXPECT_EQ(answer.document["error"]["code"], code) << answer.document;
  }
}

TEST_F(Describe, SaysWhyThereIsNoMore) {
  const TempDir folder;
  const struct {
    std::string path;
    const char* code;
  } rows[] = {{folder.path("missing.mp4"), "not-found"},
              {folder.write("empty.mp4", ""), "empty"},
              {folder.write("text.mp4", "no film"), "not-media"},
              {folder.folder() + "/", "not-a-file"},
              {"/dev/null", "not-a-file"}};
  for (const auto& row : rows) {
    const Answer answer = described(row.path);
    EXPECT_EQ(answer.result, KOLUM_NOT_DESCRIBED) << row.path;
    EXPECT_EQ(answer.document["error"]["code"], row.code) << answer.document;
  }
}

TEST_F(Describe, SurvivesFilesThatTakeAllMemory) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers reserve terabytes";
#endif
  const TempDir folder;
  KoLUM_DescribeOptions small = options();
  small.memory = 64ULL << 20;
  for (const HostileFile& file : isolatedFiles()) {
    if (file.name != "hugeCounts.mp4") continue;
    const Answer answer = described(writeHostileFile(file, folder.folder()), &small);
    EXPECT_EQ(answer.result, KOLUM_NOT_DESCRIBED);
    EXPECT_EQ(answer.document["error"]["code"], "out-of-memory") << answer.document;
  }
  EXPECT_EQ(described(song(), &small).result, KOLUM_DESCRIBED);
}

TEST_F(Describe, NeedsAWorker) {
  isolation::configure({.worker = "/nowhere/kolum-worker"});
  const Answer answer = described(song());
  EXPECT_EQ(answer.result, KOLUM_NOT_DESCRIBED);
  EXPECT_EQ(answer.document["error"]["code"], "no-reader");
}

TEST_F(Describe, RefusesArgumentsThatMakeNoSense) {
  char* text = nullptr;
  EXPECT_EQ(KoLUM_Describe(nullptr, nullptr, &text), KOLUM_NO_DOCUMENT);
  EXPECT_EQ(KoLUM_Describe("", nullptr, &text), KOLUM_NO_DOCUMENT);
  EXPECT_EQ(KoLUM_Describe("a.mp3", nullptr, nullptr), KOLUM_NO_DOCUMENT);
  EXPECT_EQ(KoLUM_DescribeFd(-1, "a.mp3", nullptr, &text), KOLUM_NO_DOCUMENT);
  const KoLUM_DescribeOptions unset = {};
  EXPECT_EQ(KoLUM_Describe("a.mp3", &unset, &text), KOLUM_NO_DOCUMENT);
  KoLUM_DescribeOptions odd = options();
  odd.flags = 1U << 31;
  EXPECT_EQ(KoLUM_Describe("a.mp3", &odd, &text), KOLUM_NO_DOCUMENT);
  odd = options();
  odd.kind = MEDIA_KIND_PLAYLIST;
  EXPECT_EQ(KoLUM_Describe("a.mp3", &odd, &text), KOLUM_NO_DOCUMENT);
  EXPECT_EQ(text, nullptr);
  KoLUM_FreeText(nullptr);
}

TEST_F(Describe, ReadsAnOpenFileWithoutMovingItsPosition) {
  const int file = open(song().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(lseek(file, 100, SEEK_SET), 100);
  char* text = nullptr;
  const int result = KoLUM_DescribeFd(file, "other name.flac", nullptr, &text);
  const Answer answer = answerOf(result, text);
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  EXPECT_EQ(answer.document["file"], "other name.flac");
  EXPECT_EQ(answer.document["title"], "Dawn");
  EXPECT_EQ(lseek(file, 0, SEEK_CUR), 100);
  close(file);
}

// The kind is that of the content: hosts know no name for such pictures.
json photoDocument(const std::string& path) {
  KoLUM_DescribeOptions byContent = options();
  byContent.flags = KOLUM_BY_CONTENT | KOLUM_DETAILS;
  return described(path, &byContent).document;
}

TEST_F(Describe, ReadsHeifPicturesWhateverFfmpegCanOpen) {
  const TempDir folder;
  const json tiles = photoDocument(folder.write("tiles.heic", heicOfTiles()));
  EXPECT_EQ(tiles["kind"]["name"], "photo");
  EXPECT_EQ(tiles["contentType"], "image/heic");
  EXPECT_EQ(tiles["width"], 200);
  EXPECT_EQ(tiles["height"], 100);

  const std::string size = fullBox("ispe", 0, 0, bigEndian(640, 4) + bigEndian(480, 4));
  const std::string quarterLeft = box("irot", bigEndian(1, 1));
  const PhotoBlocks blocks = {.exif = exifStructure({{exifText(0x010F, "Maker")}})};
  for (const std::string brand : {"heic", "mif1", "avif"}) {
    const json turned = photoDocument(folder.write(
        brand, heifPhoto(blocks, {.brand = brand, .properties = {size, quarterLeft}})));
    EXPECT_EQ(turned["width"], 640) << brand;
    EXPECT_EQ(turned["shownWidth"], 480) << brand;
    EXPECT_EQ(turned["rotation"], 270) << brand;
    EXPECT_EQ(turned["camera"]["make"], "Maker") << brand;
  }
}

TEST_F(Describe, RefusesHeifWithoutAPicture) {
  const TempDir folder;
  const json empty = photoDocument(folder.write("empty.heic", ftyp("heic", {"mif1", "heic"})));
  EXPECT_TRUE(empty.contains("error"));
  EXPECT_FALSE(empty.contains("width"));
}

TEST_F(Describe, IsAboutTheFilmHoweverLargeItsCover) {
  const std::string film =
      media("cover.mp4",
            "-f lavfi -i testsrc2=s=320x180:d=1 -f lavfi -i color=s=640x480:d=1 -map 0 -map 1 "
            "-c:v:0 libx264 -pix_fmt:v:0 yuv420p -c:v:1 mjpeg -frames:v:1 1 "
            "-disposition:v:1 attached_pic");
  const json document = described(film).document;
  EXPECT_EQ(document["width"], 320);
  EXPECT_EQ(document["height"], 180);
  EXPECT_EQ(document["videoCodec"]["name"], "CODEC_ID_H264");

  videoObject_st video = {};
  ASSERT_EQ(GetVideoMetadata1("", film.c_str(), &video, 0), 0);
  EXPECT_EQ(video.width, 640) << "records in databases have the largest picture";
}

TEST_F(Describe, IsAboutTheCoverWhereThereIsNoFilm) {
  const std::string song = media(
      "covered.mp4",
      "-f lavfi -i sine=d=1 -f lavfi -i color=s=64x48:d=1 -map 0 -map 1 -c:v mjpeg -frames:v 1 "
      "-disposition:v attached_pic");
  EXPECT_EQ(described(song).document["width"], 64);
}

TEST_F(Describe, HasTheNamesOfMp4Tracks) {
  const json streams =
      described(media("named.mp4",
                      "-f lavfi -i testsrc2=s=64x48:d=1 -f lavfi -i sine=d=1 -map 0 -map 1 "
                      "-metadata:s:a:0 title=Commentary"))
          .document["streams"];
  EXPECT_FALSE(streams[0].contains("title"));
  EXPECT_EQ(streams[1]["title"], "Commentary");
}

TEST_F(Describe, HasTheNumbersOfLosslessSongs) {
  const std::string file =
      media("deep.flac", "-f lavfi -i sine=d=2 -c:a flac -sample_fmt s32 -bits_per_raw_sample 24");
  const json document = described(file).document;
  EXPECT_EQ(document["bitsPerSample"], 24);
  // The tags are in front of the sound, and little in this file.
  EXPECT_LT(document["audioBitRate"], document["bitRate"]);
  EXPECT_GT(document["audioBitRate"].get<double>(), document["bitRate"].get<double>() / 2);
  EXPECT_EQ(document["streams"][0]["bitRate"], document["audioBitRate"]);
}

// Taken in Munich.
std::string locatedPhoto(const TempDir& folder) {
  const ExifDirectory gps = {exifText(1, "N"), exifRational(2, {481374, 10000, 0, 1, 0, 1}),
                             exifText(3, "E"), exifRational(4, {115755, 10000, 0, 1, 0, 1})};
  return folder.write("located.jpg",
                      jpegPhoto({.exif = exifStructure({photoDirectory({}, {}, gps)})}));
}

TEST_F(Describe, NamesPlacesOnRequest) {
  const TempDir folder;
  const std::string photo = locatedPhoto(folder);
  EXPECT_FALSE(described(photo).document.contains("place"));
  KoLUM_DescribeOptions wanted = options();
  wanted.flags = KOLUM_DETAILS | KOLUM_PLACES;
  const Answer answer = described(photo, &wanted);
  KoLUM_ForgetPlaces();
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  if (answer.document.contains("warnings") &&
      answer.document["warnings"].dump().find("built without") != std::string::npos)
    GTEST_SKIP() << "osm_info is built without libgeonames";
  ASSERT_TRUE(answer.document.contains("place")) << answer.document;
  EXPECT_EQ(answer.document["place"]["name"], "Munich");
  EXPECT_EQ(answer.document["place"]["countryCode"], "DE");
}

TEST_F(Describe, NamesNoPlacesWithoutDetails) {
  const TempDir folder;
  KoLUM_DescribeOptions wanted = options();
  wanted.flags = KOLUM_PLACES;
  const Answer answer = described(locatedPhoto(folder), &wanted);
  EXPECT_EQ(answer.result, KOLUM_DESCRIBED);
  EXPECT_FALSE(answer.document.contains("place"));
  KoLUM_ForgetPlaces();
}

// The leak check finds a program that is left.
TEST_F(Describe, NamesPlacesForManyThreadsAndForgetsThem) {
  const TempDir folder;
  const std::string photo = locatedPhoto(folder);
  KoLUM_DescribeOptions wanted = options();
  wanted.flags = KOLUM_DETAILS | KOLUM_PLACES;
  const json expected = described(photo, &wanted).document;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < 10; ++call) {
        EXPECT_EQ(described(photo, &wanted).document, expected);
        if (call == 5) KoLUM_ForgetPlaces();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  KoLUM_ForgetPlaces();
}

TEST_F(Describe, PrintsNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  described(song());
  described("/missing.mp4");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Describe, ServesManyThreads) {
  const std::string path = song();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&path] {
      for (int call = 0; call < 20; ++call) EXPECT_EQ(described(path).document["title"], "Dawn");
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace kolum::test
