#include "media/disc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kolum::media {
namespace {

DiscTitle title(double duration, std::vector<std::string> streams = {}) {
  DiscTitle title;
  title.duration = duration;
  title.streams = std::move(streams);
  return title;
}

// A DVD whose list of titles names the titles of its sets in turn.
DiscIndex dvd(std::vector<std::vector<double>> sets, std::string mainFile) {
  DiscIndex index;
  index.kind = DiscKind::kDvd;
  index.mainFile = std::move(mainFile);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    DvdTitleSet& set = index.titleSets.emplace_back();
    set.number = static_cast<int>(i) + 1;
    for (const double duration : sets[i]) {
      set.titles.push_back(title(duration));
      index.dvdTitles.push_back({.titleSet = set.number,
                                 .numberInSet = static_cast<int>(set.titles.size()),
                                 .chapterCount = 7,
                                 .angles = 2});
    }
  }
  return index;
}

DiscIndex bluray(std::vector<DiscTitle> playlists, std::string mainFile) {
  DiscIndex index;
  index.kind = DiscKind::kBluray;
  index.playlists = std::move(playlists);
  index.mainFile = std::move(mainFile);
  return index;
}

TEST(DiscOf, PutsTitlesInTheOrderOfTheList) {
  const Disc disc = discOf(dvd({{10, 20}, {300}}, "VTS_02_1.VOB"));
  ASSERT_EQ(disc.titles.size(), 3U);
  EXPECT_EQ(disc.titles[1].duration, 20);
  EXPECT_EQ(disc.titles[1].angles, 2);
  EXPECT_EQ(disc.titles[1].chapterCount, 7);
  EXPECT_EQ(disc.mainTitle, 3U);
  EXPECT_EQ(disc.mainTitleReason, "the longest title");
}

TEST(DiscOf, ChoosesOfTheTitleSetThatIsProbed) {
  const Disc disc = discOf(dvd({{10, 20}, {300}}, "VTS_01_1.VOB"));
  EXPECT_EQ(disc.mainTitle, 2U);
  EXPECT_EQ(disc.mainTitleReason,
            "the longest title of title set 1, which has the longest program chain");
}

TEST(DiscOf, SaysThatOtherTitlesAreAsLong) {
  const Disc disc = discOf(dvd({{20}, {20}}, "vts_02_1.vob"));
  EXPECT_EQ(disc.mainTitle, 2U);
  EXPECT_EQ(disc.mainTitleReason, "one of the longest titles, in title set 2, the main one");
}

TEST(DiscOf, SaysThatThereIsNoOtherTitle) {
  EXPECT_EQ(discOf(dvd({{20}}, "VTS_01_1.VOB")).mainTitleReason, "the only title");
}

TEST(DiscOf, HasNoMainTitleWhereNoneBelongsToTheProbedFile) {
  for (const char* file : {"VTS_09_1.VOB", "film.vob", ""})
    EXPECT_EQ(discOf(dvd({{20}}, file)).mainTitle, std::nullopt) << file;
  EXPECT_EQ(discOf(bluray({title(5, {"00001"})}, "00002.m2ts")).mainTitle, std::nullopt);
}

TEST(DiscOf, TakesTheTitlesOfSetsIfTheListIsMissing) {
  DiscIndex index = dvd({{10, 20}, {300}}, "VTS_02_1.VOB");
  index.dvdTitles.clear();
  const Disc disc = discOf(std::move(index));
  ASSERT_EQ(disc.titles.size(), 3U);
  EXPECT_EQ(disc.mainTitle, 3U);
}

TEST(DiscOf, KeepsLinesOfTheListThatLeadNowhere) {
  DiscIndex index = dvd({{10}}, "VTS_01_1.VOB");
  index.dvdTitles.push_back({.titleSet = 5, .numberInSet = 0, .chapterCount = 3, .angles = 1});
  const Disc disc = discOf(std::move(index));
  ASSERT_EQ(disc.titles.size(), 2U);
  EXPECT_EQ(disc.titles[1].duration, 0);
  EXPECT_EQ(disc.titles[1].chapterCount, 3);
}

TEST(DiscOf, ChoosesThePlaylistThatPlaysTheLargestStreamLongest) {
  const Disc disc = discOf(bluray({title(50, {"00002"}), title(10, {"00001"}),
                                   title(30, {"00003", "00001"}), title(30, {"00001"})},
                                  "00001.m2ts"));
  EXPECT_EQ(disc.mainTitle, 3U);
  EXPECT_EQ(disc.mainTitleReason,
            "the longest title that plays the largest stream file, 00001.m2ts");
}

// Any number of lines may lead to the same title, and its streams are no DVD's.
TEST(DiscOf, CopiesNoMoreForManyLinesThanForTheTitlesOfADisc) {
  DiscIndex index = dvd({{10}}, "VTS_01_1.VOB");
  index.titleSets[0].titles[0].chapters.assign(kMostTitleChapters, 1);
  index.titleSets[0].titles[0].streams.assign(kMostDiscStreams, "00001");
  const std::size_t fitting = kMostDiscChapters / kMostTitleChapters;
  index.dvdTitles.assign(fitting, index.dvdTitles[0]);
  EXPECT_FALSE(discOf(index).isIncomplete);
  index.dvdTitles.assign(kMostDiscTitles, index.dvdTitles[0]);
  const Disc disc = discOf(index);
  EXPECT_TRUE(disc.isIncomplete);
  EXPECT_EQ(disc.titles[fitting - 1].chapters.size(), kMostTitleChapters);
  EXPECT_THAT(disc.titles[fitting].chapters, testing::IsEmpty());
  for (const DiscTitle& title : disc.titles) EXPECT_THAT(title.streams, testing::IsEmpty());
}

TEST(DiscIndexAdd, SaysWhatIsLeftOut) {
  DiscIndex index;
  index.add(bluray({title(5, std::vector<std::string>(kMostDiscStreams, "00001"))}, ""));
  EXPECT_FALSE(index.isIncomplete);
  index.add(bluray({title(5, {"00002"})}, ""));
  EXPECT_TRUE(index.isIncomplete);
  EXPECT_THAT(index.playlists[1].streams, testing::IsEmpty());
}

TEST(DiscIndexAdd, IsFullOfBytes) {
  DiscIndex index;
  DiscIndex nothing;
  nothing.bytes = kMostDiscIndexBytes / 2;
  index.add(nothing);
  EXPECT_FALSE(index.isFull());
  index.add(nothing);
  EXPECT_TRUE(index.isFull());
}

TEST(MainFileOf, PrefersTheLongestChainAndThenTheLargerSet) {
  DiscIndex index;
  index.titleSets = {{.number = 1, .longestChain = 60, .titles = {}},
                     {.number = 2, .longestChain = 90, .titles = {}},
                     {.number = 3, .longestChain = 90, .titles = {}}};
  const std::vector<TitleSetSize> sets = {{.number = 1, .firstFile = "a", .size = 900},
                                          {.number = 2, .firstFile = "b", .size = 100},
                                          {.number = 3, .firstFile = "c", .size = 200}};
  EXPECT_EQ(mainFileOf(index, sets), "c");
  EXPECT_EQ(mainFileOf({}, sets), "a");
  EXPECT_EQ(mainFileOf(index, {}), "");
}

TEST(IsValid, RefusesWhatNoReaderSays) {
  DiscIndex index = bluray({title(5)}, "");
  EXPECT_TRUE(isValid(index));
  index.playlists[0].duration = -1;
  EXPECT_FALSE(isValid(index));
  index = bluray({title(5)}, "");
  index.playlists[0].audioLanguages = {"long"};
  EXPECT_FALSE(isValid(index));
  index = bluray({title(5)}, "");
  index.playlists[0].source = "\xFF";
  EXPECT_FALSE(isValid(index));
  index = bluray(std::vector<DiscTitle>(kMostDiscTitles + 1), "");
  EXPECT_FALSE(isValid(index));
  index = bluray({title(5, std::vector<std::string>(kMostDiscStreams, "00001"))}, "");
  EXPECT_TRUE(isValid(index));
  index.titleSets.push_back({.number = 1, .longestChain = 1, .titles = {title(5, {"00001"})}});
  EXPECT_FALSE(isValid(index));
}

}  // namespace
}  // namespace kolum::media
