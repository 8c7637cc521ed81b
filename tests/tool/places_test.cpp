// The nearest known places of photos and films.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/place_tool.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr char kCredit[] =
    "kolum: places: GeoNames (https://www.geonames.org), licence CC BY 4.0\n";

// A photo that was taken in Munich.
std::string photo(const TempDir& folder, const std::string& name = "photo.jpg") {
  std::string path = folder.path(name);
  fs::copy(media("plain.jpg", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"), path);
  mustRun({"exiftool", "-q", "-overwrite_original", "-GPSLatitude=48.1374", "-GPSLatitudeRef=N",
           "-GPSLongitude=11.5755", "-GPSLongitudeRef=E", path});
  return path;
}

// A film of Reykjavik.
std::string film() {
  return media("located.mp4",
               "-f lavfi -i testsrc2=s=64x48:d=1 -c:v mpeg4 -metadata "
               "location=+64.1466-021.9426/");
}

std::string plainPhoto() {
  return media("plain.png", "-f lavfi -i testsrc2=s=64x48 -frames:v 1");
}

json documentOf(const Outcome& run) {
  const std::vector<json> lines = run.json();
  EXPECT_EQ(lines.size(), 1U) << testing::PrintToString(run);
  return lines.empty() ? json() : lines.front();
}

bool lacksPlaces() {
  const TempDir folder;
  return kolum({"probe", "--places", photo(folder)}).err.find("built without") != std::string::npos;
}

#define NEEDS_PLACES() \
  if (lacksPlaces()) GTEST_SKIP() << "osm_info is built without libgeonames"

TEST(Places, AreNamedForPhotosAndFilms) {
  NEEDS_PLACES();
  const TempDir folder;
  const Outcome ofPhoto = kolum({"probe", "--json", "--places", photo(folder)});
  EXPECT_EQ(ofPhoto.status, 0) << ofPhoto.err;
  EXPECT_EQ(ofPhoto.err, "");
  expectFitsSchema("probe", ofPhoto);
  json place = documentOf(ofPhoto)["place"];
  EXPECT_LT(place["distance"].get<int>(), 1000);
  place.erase("distance");
  EXPECT_EQ(place, json::parse(R"({"name":"Munich","region":"Bavaria","country":"Germany",
                                   "countryCode":"DE","geonamesId":2867714})"));
  const Outcome ofFilm = kolum({"probe", "--json", "--places", film()});
  expectFitsSchema("probe", ofFilm);
  EXPECT_EQ(documentOf(ofFilm)["place"]["name"], "Reykjavik") << documentOf(ofFilm);
}

TEST(Places, AreLeftOutUnlessTheyAreAskedFor) {
  const TempDir folder;
  const Outcome run = kolum({"probe", "--json", photo(folder)});
  EXPECT_TRUE(documentOf(run).contains("position"));
  EXPECT_FALSE(documentOf(run).contains("place"));
}

TEST(Places, AreCreditedOnceInText) {
  NEEDS_PLACES();
  const TempDir folder;
  const Outcome run = kolum({"probe", "--places", photo(folder), photo(folder, "other.jpg")});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("\n  Place      Munich, Bavaria, Germany ("));
  EXPECT_EQ(run.err, kCredit);
}

TEST(Places, AreNotCreditedWhereThereAreNone) {
  const Outcome run = kolum({"probe", "--places", plainPhoto()});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, Not(HasSubstr("Place ")));
  EXPECT_EQ(run.err, "");
}

TEST(Places, MayBeFields) {
  NEEDS_PLACES();
  const TempDir folder;
  const Outcome run = kolum(
      {"probe", "--places", "--csv", "--fields", "place.name,place.countryCode", photo(folder)});
  EXPECT_THAT(run.out, HasSubstr("photo.jpg,Munich,DE\r\n"));
}

// A copy of kolum with its worker, but without osm_info.
std::string kolumWithoutPlaces(const TempDir& folder) {
  fs::create_directory(folder.path("isolation"));
  fs::create_symlink(KOLUM_REAL_WORKER, folder.path("isolation/kolum-worker"));
  return copyOfKolum(folder.folder(), {"setcfg"});
}

// With this SCRIPT as its osm_info.
std::string kolumWith(const TempDir& folder, const std::string& script) {
  std::string program = kolumWithoutPlaces(folder);
  const TempDir tools;
  fs::copy(placeTool(tools, script), folder.path("appliance/bin/osm_info"));
  return program;
}

// Answers with a distance that is the number of the question.
constexpr char kCounting[] =
    "n=0; while read -r p; do n=$((n + 1)); echo \"{\\\"position\\\":\\\"$p\\\",\\\"name\\\":"
    "\\\"Here\\\",\\\"country\\\":\\\"Land\\\",\\\"distance\\\":$((n * 1234))}\"; done";

TEST(Places, HaveTheirDistance) {
  const TempDir folder;
  const Outcome run = runKolum(kolumWith(folder, kCounting), {"probe", "--places", photo(folder)});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Here, Land (1.2 km)\n"));
}

TEST(Places, AreFoundByOneProgramForAllFiles) {
  const TempDir folder;
  const std::string program = kolumWith(folder, kCounting);
  for (const char* name : {"a.jpg", "b.jpg"}) photo(folder, name);
  fs::copy(film(), folder.path("c.mp4"));
  const Outcome run =
      runKolum(program, {"probe", "--places", "--json", "--jobs", "1", folder.path("a.jpg"),
                         folder.path("b.jpg"), folder.path("c.mp4")});
  EXPECT_EQ(run.status, 0) << run.err;
  std::vector<int> distances;
  for (const json& line : run.json()) distances.push_back(line["place"]["distance"]);
  EXPECT_EQ(distances, (std::vector<int>{1234, 1234, 2468})) << "equal positions are asked once";
}

TEST(Places, AreMissedOnceWithoutOsmInfo) {
  const TempDir folder;
  const std::string program = kolumWithoutPlaces(folder);
  const std::string first = photo(folder);
  const std::string second = photo(folder, "other.jpg");
  const Outcome run = runKolum(program, {"probe", "--places", first, second});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("Position"));
  EXPECT_THAT(run.out, HasSubstr("other.jpg"));
  EXPECT_EQ(run.err, "kolum: --places: /usr/local/medialibrary/bin/osm_info: no such program\n");
  const Outcome asJson = runKolum(program, {"probe", "--json", "--places", first});
  expectFitsSchema("probe", asJson);
  EXPECT_EQ(documentOf(asJson)["warnings"][0], json::parse(R"({"code":"place-unknown",
                            "reason":"/usr/local/medialibrary/bin/osm_info: no such program"})"));
}

TEST(Places, CostLittleWhateverOsmInfoDoes) {
  // The finder's own test has more of them.
  for (const char* script : {"sleep 60", "while read -r p; do echo place; done"}) {
    SCOPED_TRACE(script);
    const TempDir folder;
    const std::string program = kolumWith(folder, script);
    const auto begin = std::chrono::steady_clock::now();
    const Outcome run = runKolum(program, {"probe", "--json", "--places", photo(folder)});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(40));
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr("kolum: --places: " + folder.path("appliance/bin/osm_info: ")));
    EXPECT_FALSE(documentOf(run).contains("place"));
    EXPECT_EQ(documentOf(run)["warnings"][0]["code"], "place-unknown");
  }
}

TEST(Places, AreKeptByScans) {
  NEEDS_PLACES();
  const TempDir folder;
  const TempDir media;
  photo(media);
  const std::string library = folder.path("library.db");
  const Outcome run = kolum({"scan", "--places", "--library", library, media.folder()});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr(kCredit));
  const Outcome found = kolum({"library", "find", "--json", "--library", library});
  expectFitsSchema("library", found);
  EXPECT_EQ(documentOf(found)["place"]["name"], "Munich");
}

TEST(Places, AreNeededBeforeAScanBegins) {
  const TempDir folder;
  const TempDir media;
  photo(media);
  const std::string program = kolumWithoutPlaces(folder);
  const std::string library = folder.path("library.db");
  const Outcome run = runKolum(program, {"scan", "--places", "--library", library, media.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "kolum: --places: /usr/local/medialibrary/bin/osm_info: no such program\n");
  EXPECT_FALSE(fs::exists(library));
}

}  // namespace
}  // namespace kolum::test
