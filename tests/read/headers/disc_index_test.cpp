#include "read/headers/disc_index.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/disc_builder.h"
#include "support/disc_media.h"
#include "support/temp_dir.h"

namespace kolum::headers {
namespace {

using media::DiscKind;
using testing::DoubleNear;
using testing::ElementsAre;

media::DiscIndex indexOf(std::string_view name, std::string_view content) {
  return readDiscIndex(name,
                       {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()});
}

media::DiscTitle titleOf(const std::string& content) {
  const media::DiscIndex index = indexOf("00000.mpls", content);
  EXPECT_EQ(index.playlists.size(), 1U);
  return index.playlists.empty() ? media::DiscTitle() : index.playlists.front();
}

TEST(IndexKindOf, GoesByTheName) {
  EXPECT_EQ(indexKindOf("VIDEO_TS.IFO"), IndexKind::kDvdTitles);
  EXPECT_EQ(indexKindOf("video_ts.bup"), IndexKind::kDvdTitles);
  EXPECT_EQ(indexKindOf("VTS_12_0.IFO"), IndexKind::kDvdTitleSet);
  EXPECT_EQ(indexKindOf("vts_12_0.bup"), IndexKind::kDvdTitleSet);
  EXPECT_EQ(indexKindOf("00800.mpls"), IndexKind::kPlaylist);
  for (const char* name : {"VTS_12_1.IFO", "VTS_00_0.IFO", "VTS_01_0.VOB", "VTS_1_0.IFO",
                           "VIDEO_TS.VOB", "index.bdmv", "00001.clpi", ""})
    EXPECT_EQ(indexKindOf(name), IndexKind::kNone) << name;
}

TEST(DvdIndexNames, PutCopiesAfterTheirOriginals) {
  const auto names =
      dvdIndexNames({"VTS_01_0.BUP", "VTS_01_0.IFO", "VIDEO_TS.IFO", "VTS_02_0.BUP", "00001.mpls"});
  ASSERT_EQ(names.size(), 3U);
  EXPECT_THAT(names.at(0), ElementsAre("VIDEO_TS.IFO"));
  EXPECT_THAT(names.at(1), ElementsAre("VTS_01_0.IFO", "VTS_01_0.BUP"));
  EXPECT_THAT(names.at(2), ElementsAre("VTS_02_0.BUP"));
}

TEST(Playlist, HasTimesLanguagesAnglesAndStreams) {
  const media::DiscTitle title = titleOf(test::playlist(
      {{.stream = "00007", .duration = 2, .audio = {"eng"}},
       {.stream = "00001",
        .duration = 90.5,
        .angles = 3,
        .audio = {"ENG", "deu"},
        .subtitles = {"fra"}},
       {.stream = "00007", .duration = 2}},
      {{.item = 0, .time = 0}, {.item = 1, .time = 10}, {.item = 1, .time = 5, .type = 2}}));
  EXPECT_EQ(title.source, "00000.mpls");
  EXPECT_DOUBLE_EQ(title.duration, 94.5);
  EXPECT_EQ(title.angles, 3);
  EXPECT_EQ(title.chapterCount, 2);
  EXPECT_THAT(title.chapters, ElementsAre(0, 12));
  EXPECT_THAT(title.audioLanguages, ElementsAre("eng", "deu"));
  EXPECT_THAT(title.subtitleLanguages, ElementsAre("fra"));
  EXPECT_THAT(title.streams, ElementsAre("00007", "00001"));
}

TEST(Playlist, SaysWhatItLeavesOut) {
  const auto isIncomplete = [](const std::vector<test::PlaylistItem>& items,
                               std::size_t marks = 0) {
    return indexOf("00000.mpls", test::playlist(items, std::vector<test::PlaylistMark>(marks)))
        .isIncomplete;
  };
  const std::vector<std::string> languages(media::kMostTitleLanguages, "eng");
  EXPECT_FALSE(isIncomplete({{.audio = languages, .subtitles = languages}}, 1000));
  EXPECT_TRUE(isIncomplete({{}}, 1001));
  EXPECT_FALSE(isIncomplete(std::vector<test::PlaylistItem>(1000)));
  EXPECT_TRUE(isIncomplete(std::vector<test::PlaylistItem>(1001)));
  auto more = languages;
  more.emplace_back("deu");
  EXPECT_TRUE(isIncomplete({{.subtitles = more}}));
}

TEST(DiscIndex, IsIncompleteIfItsFileIsLargerThanIsRead) {
  std::string content = test::playlist({{}});
  content.resize(kMostIndexBytes);
  EXPECT_FALSE(indexOf("00000.mpls", content).isIncomplete);
  content.resize(kMostIndexBytes + 1);
  EXPECT_TRUE(indexOf("00000.mpls", content).isIncomplete);
}

TEST(DvdTitleList, IsIncompleteIfItHasMoreLinesThanADisc) {
  EXPECT_FALSE(indexOf("VIDEO_TS.IFO", test::dvdTitleList(1000)).isIncomplete);
  EXPECT_TRUE(indexOf("VIDEO_TS.IFO", test::dvdTitleList(1001)).isIncomplete);
}

TEST(Playlist, KnowsNoLanguageThatIsNotThreeLetters) {
  const media::DiscTitle title =
      titleOf(test::playlist({{.audio = {"e\x01n", "eng"}, .subtitles = {"   "}}}));
  EXPECT_THAT(title.audioLanguages, ElementsAre("und", "eng"));
  EXPECT_THAT(title.subtitleLanguages, ElementsAre("und"));
}

TEST(Playlist, CountsNoTimeOfItemsThatEndBeforeTheyBegin) {
  EXPECT_EQ(titleOf(test::playlist({{.duration = -5}, {.duration = 3}})).duration, 3);
}

TEST(Playlist, IsNoneWithoutItsMagic) {
  std::string content = test::playlist({{}});
  content[0] = 'X';
  EXPECT_EQ(indexOf("00000.mpls", content).kind, DiscKind::kNone);
  EXPECT_EQ(indexOf("00000.mpls", "MPLS0200").kind, DiscKind::kNone);
}

TEST(Playlist, IsBounded) {
  const std::vector<test::PlaylistItem> items(5000, {.stream = "00001", .duration = 1});
  const std::vector<test::PlaylistMark> marks(5000);
  const media::DiscTitle title = titleOf(test::playlist(items, marks));
  EXPECT_EQ(title.duration, 1000);
  EXPECT_EQ(title.chapters.size(), media::kMostTitleChapters);
}

TEST(DvdTitles, AreBounded) {
  const media::DiscIndex index = indexOf("VIDEO_TS.IFO", test::dvdTitleList(60'000));
  EXPECT_EQ(index.dvdTitles.size(), media::kMostDiscTitles);
  EXPECT_EQ(index.dvdTitles.back().chapterCount, 5);
}

TEST(DvdTitleSet, AgreesWithWhatWasAuthored) {
  const std::string folder = test::dvdWithLanguages();
  const media::DiscIndex index = indexOf("VTS_01_0.IFO", test::contentOf(folder + "VTS_01_0.IFO"));
  ASSERT_EQ(index.titleSets.size(), 1U);
  const media::DvdTitleSet& set = index.titleSets.front();
  EXPECT_EQ(set.number, 1);
  ASSERT_EQ(set.titles.size(), 1U);
  EXPECT_NEAR(set.titles[0].duration, 2, 0.1);
  ASSERT_EQ(set.titles[0].chapters.size(), 2U);
  EXPECT_EQ(set.titles[0].chapters[0], 0);
  EXPECT_THAT(set.titles[0].chapters[1], DoubleNear(1, 0.6));
  EXPECT_THAT(set.titles[0].audioLanguages, ElementsAre("en", "de"));
  EXPECT_THAT(set.titles[0].subtitleLanguages, ElementsAre("fr"));
}

// Index files of each kind.
std::vector<std::pair<std::string, std::string>> indexes() {
  const std::string folder = test::dvdWithLanguages();
  return {{"VIDEO_TS.IFO", test::contentOf(folder + "VIDEO_TS.IFO")},
          {"VTS_01_0.IFO", test::contentOf(folder + "VTS_01_0.IFO")},
          {"00001.mpls", test::playlist({{.angles = 2, .audio = {"eng"}, .subtitles = {"deu"}}, {}},
                                        {{.item = 0}, {.item = 1}})}};
}

TEST(DiscIndex, IsValidOfTruncatedFiles) {
  for (const auto& [name, content] : indexes()) {
    EXPECT_NE(indexOf(name, content).kind, DiscKind::kNone) << name;
    for (std::size_t size = 0; size < content.size(); size += 1 + size / 64)
      EXPECT_TRUE(isValid(indexOf(name, content.substr(0, size)))) << name << " " << size;
  }
}

TEST(DiscIndex, IsValidOfFilesWithOtherBytes) {
  std::mt19937 random(1);  // NOLINT: the same in each run
  for (const auto& [name, content] : indexes()) {
    for (int i = 0; i < 3000; ++i) {
      std::string damaged = content;
      for (int change = 0; change < 8; ++change)
        damaged[12 + random() % (damaged.size() - 12)] = static_cast<char>(random());
      ASSERT_TRUE(isValid(indexOf(name, damaged))) << name << " " << i;
    }
  }
}

TEST(DiscIndex, LeavesOutChaptersBeyondTheLimitOfADisc) {
  const std::vector<test::PlaylistMark> marks(media::kMostTitleChapters);
  media::DiscIndex disc;
  for (int i = 0; i < 1200; ++i) disc.add(indexOf("1.mpls", test::playlist({{}}, marks)));
  EXPECT_EQ(disc.playlists.size(), media::kMostDiscTitles);
  EXPECT_EQ(disc.playlists.front().chapters.size(), media::kMostTitleChapters);
  EXPECT_TRUE(disc.playlists.back().chapters.empty());
  EXPECT_EQ(disc.playlists.back().chapterCount, static_cast<int>(media::kMostTitleChapters));
}

}  // namespace
}  // namespace kolum::headers
