// What documents say of discs, in folders and in images that nobody mounts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <random>

#include "support/child_process.h"
#include "support/disc_builder.h"
#include "support/disc_media.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::AnyOf;
using testing::HasSubstr;

json documentOf(const std::string& path) {
  const Outcome run = kolum({"probe", "--json", path});
  EXPECT_EQ(run.status, 0) << run.err;
  expectFitsSchema("probe", run);
  const std::vector<json> lines = run.json();
  EXPECT_EQ(lines.size(), 1U);
  return lines.empty() ? json() : lines.front();
}

// The numbers of title sets and titles are those of dvdWithLanguages().
void expectAuthoredTitles(const json& document) {
  const json& titles = document["titles"];
  ASSERT_EQ(titles.size(), 3U) << document;
  EXPECT_EQ(titles[0]["number"], 1);
  EXPECT_EQ(titles[0]["source"], "VTS_01_0.IFO");
  EXPECT_NEAR(titles[0]["duration"], 2, 0.2);
  EXPECT_EQ(titles[0]["chapterCount"], 2);
  EXPECT_EQ(titles[0]["chapters"].size(), 2U);
  EXPECT_EQ(titles[0]["angles"], 1);
  EXPECT_EQ(titles[0]["audioLanguages"], json({"en", "de"}));
  EXPECT_EQ(titles[0]["subtitleLanguages"], json({"fr"}));
  EXPECT_EQ(titles[1]["source"], "VTS_02_0.IFO");
  EXPECT_NEAR(titles[1]["duration"], 4, 0.2);
  EXPECT_EQ(titles[1]["audioLanguages"], json({"fr"}));
  EXPECT_FALSE(titles[1].contains("subtitleLanguages"));
  EXPECT_NEAR(titles[2]["duration"], 2, 0.2);
  EXPECT_EQ(document["mainTitle"], 2);
  EXPECT_EQ(document["mainTitleReason"], "the longest title");
}

// A Blu-ray disc whose largest stream is 00002.
std::string blurayWithPlaylists(const std::string& folder) {
  constexpr std::size_t kLarge = 2'000'000;
  return blurayDisc(
      folder,
      {{"00000.mpls", playlist({{.stream = "00001", .duration = 500}})},
       {"00800.mpls",
        playlist(
            {{.stream = "00001", .duration = 4, .audio = {"eng"}},
             {.stream = "00002", .duration = 90, .audio = {"eng", "jpn"}, .subtitles = {"fra"}}},
            {{.item = 0}, {.item = 1}, {.item = 1, .time = 45}})}},
      {{"00001.m2ts", 0}, {"00002.m2ts", kLarge}});
}

void expectBuiltTitles(const json& document) {
  const json& titles = document["titles"];
  ASSERT_EQ(titles.size(), 2U) << document;
  EXPECT_EQ(titles[0]["source"], "00000.mpls");
  EXPECT_EQ(titles[1]["source"], "00800.mpls");
  EXPECT_EQ(titles[1]["duration"], 94.0);
  EXPECT_EQ(titles[1]["chapters"], json({{{"start", 0.0}}, {{"start", 4.0}}, {{"start", 49.0}}}));
  EXPECT_EQ(titles[1]["audioLanguages"], json({"eng", "jpn"}));
  EXPECT_EQ(titles[1]["subtitleLanguages"], json({"fra"}));
  EXPECT_EQ(document["mainTitle"], 2);
  EXPECT_EQ(document["mainTitleReason"],
            "the longest title that plays the largest stream file, 00002.m2ts");
}

// Runs the program as somebody who may not mount.
Outcome withoutMounting(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {"setpriv", "--bounding-set=-sys_admin",
                                      "--inh-caps=-sys_admin", KOLUM_PROGRAM};
  if (geteuid() != 0) command = {KOLUM_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  const RunResult result = run(command);
  return {result.status, result.out, result.err};
}

TEST(DiscDocument, ListsTheTitlesOfADvdFolder) {
  const json document = documentOf(dvdWithLanguages());
  expectAuthoredTitles(document);
  EXPECT_EQ(document["subtitleCount"], 0);
}

TEST(DiscDocument, ListsThePlaylistsOfABlurayFolder) {
  const TempDir folder;
  expectBuiltTitles(documentOf(blurayWithPlaylists(folder.path("disc"))));
}

TEST(DiscDocument, ReadsIndexFilesInTheSameWayInProcess) {
  const std::string folder = dvdWithLanguages();
  const Outcome isolated = kolum({"probe", "--json", folder});
  const Outcome here = kolum({"probe", "--json", "--in-process", folder});
  EXPECT_EQ(isolated.json(), here.json());
}

TEST(DiscDocument, UsesTheCopyOfADamagedIndex) {
  const TempDir folder;
  const std::string copy = folder.path("VIDEO_TS");
  std::filesystem::copy(dvdWithLanguages(), copy);
  folder.write("VIDEO_TS/VTS_01_0.IFO", std::string(4096, 'x'));
  const json document = documentOf(copy);
  ASSERT_EQ(document["titles"].size(), 3U);
  EXPECT_EQ(document["titles"][0]["source"], "VTS_01_0.BUP");
  EXPECT_EQ(document["titles"][0]["audioLanguages"], json({"en", "de"}));
}

TEST(DiscDocument, HasNoTitlesWithoutPlaylists) {
  const json document = documentOf(blurayFolder());
  EXPECT_FALSE(document.contains("titles"));
  EXPECT_FALSE(document.contains("mainTitle"));
  EXPECT_EQ(document["width"], 320);
}

TEST(DiscDocument, FollowsNoLinkOutOfTheDisc) {
  const TempDir folder;
  const std::string disc = blurayWithPlaylists(folder.path("disc"));
  folder.write("outside.mpls", playlist({{.duration = 77}}));
  std::filesystem::create_symlink(folder.path("outside.mpls"), disc + "PLAYLIST/00900.mpls");
  expectBuiltTitles(documentOf(disc));
}

TEST(DiscDocument, ShowsTheMainTitleToPeople) {
  const Outcome run = kolum({"probe", dvdWithLanguages()});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("Titles"));
  EXPECT_THAT(run.out, HasSubstr(", audio fr; the longest title\n"));
  const Outcome all = kolum({"probe", "-v", dvdWithLanguages()});
  EXPECT_THAT(all.out, HasSubstr("titles[0].audioLanguages"));
  const Outcome chosen =
      kolum({"probe", "--fields", "mainTitle,titles.source", dvdWithLanguages()});
  EXPECT_THAT(chosen.out, HasSubstr("VTS_02_0.IFO"));
}

TEST(DiscImage, IsReadByThoseWhoMayNotMount) {
  const TempDir folder;
  const std::string bluray = blurayWithPlaylists(folder.path("disc"));
  const Outcome run =
      withoutMounting({"probe", "--json", udfImage(discRoot(dvdWithLanguages()), "languages.iso"),
                       udfImage(discRoot(bluray), "playlists.iso")});
  EXPECT_EQ(run.status, 0) << run.err;
  expectFitsSchema("probe", run);
  const std::vector<json> lines = run.json();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0]["containerFormat"]["name"], "FORMAT_DVDISO");
  expectAuthoredTitles(lines[0]);
  EXPECT_EQ(lines[1]["containerFormat"]["name"], "FORMAT_BDISO");
  expectBuiltTitles(lines[1]);
}

TEST(DiscImage, IsScannedWithoutBeingMounted) {
  const TempDir folder;
  const TempDir library;
  std::filesystem::copy(udfImage(discRoot(dvdWithLanguages()), "languages.iso"),
                        folder.path("disc.iso"));
  folder.write("zeros.iso", std::string(100'000, '\0'));
  const Outcome scan = withoutMounting(
      {"scan", "--library", library.path("l.db"), "--progress", "none", folder.folder()});
  EXPECT_THAT(scan.status, AnyOf(0, 1)) << scan.err;
  const Outcome found = kolum({"library", "find", "--library", library.path("l.db"), "--json"});
  const std::vector<json> lines = found.json();
  ASSERT_EQ(lines.size(), 2U) << found.out;
  EXPECT_EQ(lines[0]["file"], folder.path("disc.iso"));
  expectAuthoredTitles(lines[0]);
  EXPECT_EQ(lines[1]["file"], folder.path("zeros.iso"));
  EXPECT_EQ(lines[1]["error"]["code"], "disc-image");
  EXPECT_EQ(lines[1]["error"]["reason"],
            "a disc image that only mounting can open; --images has it mounted");
}

TEST(DiscImage, NeverHarmsTheToolWhenItIsDamaged) {
  const std::string image = contentOf(udfImage(discRoot(dvdWithLanguages()), "languages.iso"));
  const TempDir folder;
  std::vector<std::string> arguments = {"probe", "--json"};
  std::mt19937 random(1);  // NOLINT: the same in each run
  // The file system's own structures and the first index file are at the beginning.
  constexpr std::size_t kStructures = 700'000;
  for (int i = 0; i < 40; ++i) {
    std::string damaged = image.substr(0, kStructures);
    for (int change = 0; change < 2000; ++change)
      damaged[random() % damaged.size()] = static_cast<char>(random());
    arguments.push_back(folder.write("flipped" + std::to_string(i) + ".iso", damaged));
    arguments.push_back(
        folder.write("cut" + std::to_string(i) + ".iso", image.substr(0, random() % kStructures)));
  }
  const Outcome run = withoutMounting(arguments);
  EXPECT_THAT(run.status, AnyOf(0, 1)) << run.err;
  EXPECT_EQ(run.json().size(), 80U);
  expectFitsSchema("probe", run);
}

TEST(DiscDocument, IsBoundedForAThousandTitles) {
  const TempDir folder;
  std::vector<std::pair<std::string, std::string>> playlists;
  const std::vector<PlaylistMark> marks(999);
  for (int i = 0; i < 1100; ++i)
    playlists.emplace_back(std::to_string(10'000 + i) + ".mpls",
                           playlist({{.audio = {"eng"}}}, marks));
  const json document = documentOf(blurayDisc(folder.path("disc"), playlists, {{"00001.m2ts", 0}}));
  EXPECT_EQ(document["titles"].size(), 1000U);
  EXPECT_EQ(document["titles"][999]["chapterCount"], 999);
  EXPECT_FALSE(document["titles"][999].contains("chapters"));
  EXPECT_EQ(document["warnings"][0]["code"], "incomplete-disc");
}

// As many bytes as fit into an index file, in as many files as a disc has: four gigabytes.
TEST(DiscDocument, ReadsNotMoreOfIndexFilesThanDiscsHave) {
  const TempDir folder;
  const std::string large = playlist({{.audio = {"eng"}}}) + std::string(4'100'000, '\0');
  const std::string disc =
      blurayDisc(folder.path("disc"), {{"00000.mpls", large}}, {{"00001.m2ts", 0}});
  for (int i = 1; i < 1000; ++i)
    std::filesystem::create_hard_link(disc + "PLAYLIST/00000.mpls",
                                      disc + "PLAYLIST/" + std::to_string(10'000 + i) + ".mpls");
  const json document = documentOf(disc);
  EXPECT_GE(document["titles"].size(), 10U);
  EXPECT_LE(document["titles"].size(), 20U);
  EXPECT_EQ(document["warnings"][0]["code"], "incomplete-disc");
}

TEST(DiscDocument, IsBoundedForAListOfManyTitles) {
  const TempDir folder;
  std::filesystem::copy(dvdWithLanguages(), folder.path("VIDEO_TS"));
  folder.write("VIDEO_TS/VIDEO_TS.IFO", dvdTitleList(60'000));
  const json document = documentOf(folder.path("VIDEO_TS"));
  EXPECT_EQ(document["titles"].size(), 1000U);
  EXPECT_EQ(document["warnings"][0]["code"], "incomplete-disc");
}

}  // namespace
}  // namespace kolum::test
