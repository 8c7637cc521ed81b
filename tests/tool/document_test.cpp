// What documents say beyond the records that hosts know, and choosing from it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

json documentOf(const std::string& path, const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = {"probe", "--json", path};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const Outcome run = kolum(arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  if (options.empty()) expectFitsSchema("probe", run);
  const std::vector<json> lines = run.json();
  EXPECT_EQ(lines.size(), 1U);
  return lines.empty() ? json() : lines.front();
}

std::string song() {
  return media("tagged.flac",
               "-f lavfi -i sine=duration=2 -metadata title=Dawn -metadata artist=Ann -metadata "
               "album=Days -metadata album_artist=All -metadata track=3/12 -metadata disc=1 "
               "-metadata date=2015-06-07 -metadata genre=Folk");
}

std::string film() {
  return media(
      "languages.mkv",
      "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -f lavfi -i sine=d=2 -f lavfi -i sine=d=2 "
      "-map 0 -map 1 -map 2 -c:v libx264 -pix_fmt yuv420p -c:a ac3 -metadata title=Harbour "
      "-metadata:s:a:0 language=deu -metadata:s:a:1 language=fra "
      "-disposition:a:1 default");
}

std::string photo(const TempDir& folder) {
  const std::string path = folder.path("photo.jpg");
  std::filesystem::copy(media("plain.jpg", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"), path);
  mustRun({"exiftool", "-q", "-overwrite_original", "-DateTimeOriginal=2015:06:07 08:09:10",
           "-OffsetTimeOriginal=+02:00", "-Make=Maker", "-Model=Model", "-ExposureTime=1/250",
           "-FNumber=2.8", "-ISO=400", "-GPSLatitude=48.5", "-GPSLatitudeRef=N",
           "-GPSLongitude=2.25", "-GPSLongitudeRef=W", "-Orientation#=6", "-XMP-dc:Title=Quay",
           "-XMP-dc:Subject=sea", "-XMP-dc:Subject=boat", path});
  return path;
}

TEST(Document, TellsWhatEveryFileIs) {
  const json line = documentOf(song());
  EXPECT_EQ(line["size"], std::filesystem::file_size(song()));
  EXPECT_THAT(line["modified"].get<std::string>(), testing::EndsWith("Z"));
  EXPECT_EQ(line["duration"], 2.0);
}

TEST(Document, HasTheTagsOfSongs) {
  const json line = documentOf(song());
  EXPECT_EQ(line["title"], "Dawn");
  EXPECT_EQ(line["artist"], "Ann");
  EXPECT_EQ(line["album"], "Days");
  EXPECT_EQ(line["albumArtist"], "All");
  EXPECT_EQ(line["track"], 3);
  EXPECT_EQ(line["trackTotal"], 12);
  EXPECT_EQ(line["disc"], 1);
  EXPECT_EQ(line["date"], "2015-06-07");
  EXPECT_EQ(line["year"], 2015);
  EXPECT_EQ(line["genre"], "Folk");
  EXPECT_FALSE(line.contains("artists")) << "one artist is said once";
}

TEST(Document, KeepsSeveralArtistsApart) {
  const std::string file =
      media("duet.flac", "-f lavfi -i sine=duration=1 -metadata artist=Ann;Bob");
  const json line = documentOf(file);
  EXPECT_EQ(line["artist"], "Ann;Bob");
  EXPECT_FALSE(line.contains("artists")) << "a name may hold a semicolon";
}

TEST(Document, HasTheTagsOfPhotos) {
  const TempDir folder;
  const json line = documentOf(photo(folder));
  EXPECT_EQ(line["taken"], "2015-06-07T08:09:10+02:00");
  EXPECT_EQ(line["takenOffsetFrom"], "stated");
  EXPECT_EQ(line["camera"], json::parse(R"({"make":"Maker","model":"Model"})"));
  EXPECT_DOUBLE_EQ(line["exposureTime"].get<double>(), 0.004);
  EXPECT_EQ(line["aperture"], 2.8);
  EXPECT_EQ(line["iso"], 400);
  EXPECT_EQ(line["rotation"], 90);
  EXPECT_EQ(line["shownWidth"], 48);
  EXPECT_EQ(line["shownHeight"], 64);
  EXPECT_EQ(line["width"], 64);
  EXPECT_EQ(line["position"]["latitude"], 48.5);
  EXPECT_EQ(line["position"]["longitude"], -2.25);
  EXPECT_EQ(line["title"], "Quay");
  EXPECT_THAT(line["keywords"], ElementsAre("sea", "boat"));
}

TEST(Document, ListsTheStreamsOfVideos) {
  const json line = documentOf(film());
  EXPECT_EQ(line["title"], "Harbour");
  ASSERT_EQ(line["streams"].size(), 3U);
  const json& video = line["streams"][0];
  EXPECT_EQ(video["type"], "video");
  EXPECT_EQ(video["codec"]["name"], "CODEC_ID_H264");
  EXPECT_EQ(video["codecName"], "h264");
  EXPECT_EQ(video["bitDepth"], 8);
  EXPECT_EQ(video["frameRate"], "25");
  EXPECT_EQ(line["streams"][1]["language"], "deu");
  EXPECT_EQ(line["streams"][2]["language"], "fra");
  EXPECT_FALSE(line["streams"][1].contains("pixelFormat"));
}

// The library must not be linked with the reader of photos' tags, whose licence is another.
TEST(Document, LacksTagsOfPhotosInThisProcess) {
  const TempDir folder;
  const json line = documentOf(photo(folder), {"--in-process"});
  EXPECT_FALSE(line.contains("taken"));
  EXPECT_EQ(line["width"], 64);
}

TEST(Text, ShowsWhatPeopleLookForFirst) {
  const std::string shown = kolum({"probe", song()}).out;
  EXPECT_THAT(shown, HasSubstr("  Title      Dawn\n  Artist     Ann\n  Album      Days, by All\n"
                               "  Track      3 of 12, disc 1\n"));
  const TempDir folder;
  const std::string photographed = kolum({"probe", photo(folder)}).out;
  for (const char* line : {"2015-06-07 08:09:10+02:00", "48.5, -2.25", "Maker Model",
                           "1/250 s, f/2.8, ISO 400", "90 degrees", "sea, boat"})
    EXPECT_THAT(photographed, HasSubstr(line));
  EXPECT_THAT(kolum({"probe", film()}).out, HasSubstr("deu, fra"));
}

TEST(Text, ShowsEveryKeyIfAsked) {
  const std::string shown = kolum({"probe", "-v", film()}).out;
  EXPECT_THAT(shown, HasSubstr("streams[1].language"));
  EXPECT_THAT(shown, HasSubstr("videoCodec.name"));
  EXPECT_THAT(shown, Not(HasSubstr("\n  file ")));
}

TEST(FieldsOption, ChoosesKeysOfJson) {
  const json line = documentOf(film(), {"--fields", "title,streams.language,videoCodec.name"});
  EXPECT_EQ(line, json::parse(R"({"file":")" + film() + R"(","title":"Harbour",
    "streams":[{},{"language":"deu"},{"language":"fra"}],
    "videoCodec":{"name":"CODEC_ID_H264"}})"));
}

TEST(FieldsOption, ChoosesLinesOfText) {
  EXPECT_EQ(kolum({"probe", "--fields", "title,artist,composer", song()}).out,
            song() + "\n  title   Dawn\n  artist  Ann\n");
}

TEST(FieldsOption, RefusesKeysThatNoDocumentHas) {
  for (const char* fields : {"nothing", "title.x", "streams.", ",", "position.x", "kind.brand"}) {
    const Outcome run = kolum({"probe", "--fields", fields, song()});
    EXPECT_EQ(run.status, 2) << fields;
    EXPECT_THAT(run.err, HasSubstr("is no key of a document")) << fields;
  }
}

TEST(Csv, HasTheChosenColumns) {
  const TempDir folder;
  const std::string odd = folder.path("a \"b\",c.flac");
  std::filesystem::copy(song(), odd);
  const Outcome run =
      kolum({"probe", "--csv", "--fields", "title,streams.codecName", "a \"b\",c.flac"},
            {.folder = folder.folder()});
  EXPECT_EQ(run.out, "file,title,streams.codecName\r\n\"a \"\"b\"\",c.flac\",Dawn,flac\r\n");
}

TEST(Csv, HasTheColumnsOfLibrariesWithoutAChoice) {
  const std::string out = kolum({"probe", "--csv", song()}).out;
  EXPECT_THAT(out, testing::StartsWith("file,fileBytes,kind,size,modified,mimeType,"));
  EXPECT_THAT(out, HasSubstr("\r\n" + song() + ",,music,"));
  EXPECT_THAT(out, HasSubstr(",Dawn,Ann,All,Days,Folk,3,2015,"));
}

TEST(Csv, HasColumnsOfKeysThatThereAre) {
  const std::string out = kolum({"probe", "--csv", song()}).out;
  const std::string titles = out.substr(0, out.find("\r\n"));
  const std::size_t first = titles.find(",contentType,");  // from there on, they are keys
  ASSERT_NE(first, std::string::npos);
  const Outcome run = kolum({"probe", "--csv", "--fields", titles.substr(first + 1), song()});
  EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Csv, ExcludesJson) {
  EXPECT_EQ(kolum({"probe", "--csv", "--json", song()}).status, 2);
}

}  // namespace
}  // namespace kolum::test
