#include "media/film_tags.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "base/clean_text.h"
#include "media/container.h"
#include "support/processor_time.h"

namespace kolum::media {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Tags = std::vector<std::pair<std::string, std::string>>;

FilmTags tagsOf(Tags tags, std::string_view demuxer = kDemuxerMp4) {
  return filmTagsOf({.demuxer = std::string(demuxer), .streams = {}, .tags = std::move(tags)});
}

TEST(FilmTags, KnowTheKeysOfMp4) {
  const FilmTags tags = tagsOf({{"title", "The Pilot"},
                                {"artist", "A Director"},
                                {"show", "The Series"},
                                {"season_number", "2"},
                                {"episode_sort", "3"},
                                {"episode_id", "203"},
                                {"network", "A Station"},
                                {"genre", "Drama"},
                                {"description", "Short"},
                                {"synopsis", "Long"},
                                {"comment", "Hm"},
                                {"copyright", "2015 Somebody"},
                                {"encoder", "A program"}});
  EXPECT_EQ(tags.title, "The Pilot");
  EXPECT_THAT(tags.artists, ElementsAre("A Director"));
  EXPECT_EQ(tags.show, "The Series");
  EXPECT_EQ(tags.season, 2);
  EXPECT_EQ(tags.episode, 3);
  EXPECT_EQ(tags.episodeId, "203");
  EXPECT_EQ(tags.network, "A Station");
  EXPECT_THAT(tags.genres, ElementsAre("Drama"));
  EXPECT_EQ(tags.description, "Short");
  EXPECT_EQ(tags.synopsis, "Long");
  EXPECT_EQ(tags.comment, "Hm");
  EXPECT_EQ(tags.copyright, "2015 Somebody");
  EXPECT_EQ(tags.encoder, "A program");
}

TEST(FilmTags, KnowTheKeysOfQuickTime) {
  const FilmTags tags =
      tagsOf({{"com.apple.quicktime.location.ISO6709", "+48.8577+002.2950+035.000/"},
              {"com.apple.quicktime.make", "Maker"},
              {"com.apple.quicktime.model", "Phone 7"},
              {"com.apple.quicktime.software", "17.1"},
              {"com.apple.quicktime.creationdate", "2015-06-07T08:09:10+0200"},
              {"com.apple.quicktime.content.identifier", "ABC-1"},
              {"com.apple.quicktime.live-photo.auto", "1"},
              {"creation_time", "2015-06-07T07:00:00.000000Z"}});
  EXPECT_EQ(tags.position, (FilmPosition{48.8577, 2.295, 35}));
  EXPECT_EQ(tags.make, "Maker");
  EXPECT_EQ(tags.model, "Phone 7");
  EXPECT_EQ(tags.software, "17.1");
  EXPECT_EQ(tags.contentIdentifier, "ABC-1");
  EXPECT_TRUE(tags.isLivePhoto);
  ASSERT_TRUE(tags.created);
  EXPECT_EQ(tags.created->time, (FilmTime{8, 9, 10, 0}));
  EXPECT_EQ(tags.created->offset, 120);
  EXPECT_EQ(tags.created->certainty, DateCertainty::kExplicit);
}

TEST(FilmTags, KnowTheKeysOfAndroid) {
  const FilmTags tags = tagsOf({{"com.android.manufacturer", "Maker"},
                                {"com.android.model", "Phone"},
                                {"com.android.version", "14"},
                                {"location", "-33.8568+151.2153/Opera"},
                                {"location-eng", "+01+001/"}});
  EXPECT_EQ(tags.make, "Maker");
  EXPECT_EQ(tags.model, "Phone");
  EXPECT_EQ(tags.androidVersion, "14");
  EXPECT_EQ(tags.position, (FilmPosition{-33.8568, 151.2153}));
  EXPECT_EQ(tags.placeName, "Opera");
}

TEST(FilmTags, KnowTheKeysOfMatroska) {
  const FilmTags tags = tagsOf({{"TITLE", "Film"},
                                {"COLLECTION/TITLE", "Series"},
                                {"SEASON/PART_NUMBER", "1"},
                                {"EPISODE/PART_NUMBER", "12/24"},
                                {"DIRECTOR", "One"},
                                {"MOVIE/DIRECTOR", "Two"},
                                {"ACTOR", "Three"},
                                {"SUMMARY", "Long"},
                                {"DATE_RECORDED", "2014-05-06"},
                                {"DATE_RELEASED", "2015"},
                                {"RECORDING_LOCATION", "FR, Paris"}},
                               kDemuxerMatroska);
  EXPECT_EQ(tags.title, "Film");
  EXPECT_EQ(tags.show, "Series");
  EXPECT_EQ(tags.season, 1);
  EXPECT_EQ(tags.episode, 12);
  EXPECT_THAT(tags.directors, ElementsAre("One", "Two"));
  EXPECT_THAT(tags.actors, ElementsAre("Three"));
  EXPECT_EQ(tags.synopsis, "Long");
  EXPECT_EQ(tags.created->day, 6);
  EXPECT_EQ(tags.date->year, 2015);
  EXPECT_FALSE(tags.date->month);
  EXPECT_EQ(tags.placeName, "FR, Paris");
}

TEST(FilmTags, KnowTheKeysOfAsfAndAvi) {
  const FilmTags asf = tagsOf({{"title", "T"},
                               {"WM/Year", "2001"},
                               {"WM/Director", "D"},
                               {"WM/SubTitleDescription", "Short"}},
                              kDemuxerAsf);
  EXPECT_EQ(asf.date->year, 2001);
  EXPECT_THAT(asf.directors, ElementsAre("D"));
  EXPECT_EQ(asf.description, "Short");
  const FilmTags avi = tagsOf(
      {{"ISBJ", "About"}, {"ISTR", "Star"}, {"creation_time", "2003-03-10 15:04:43"}}, kDemuxerAvi);
  EXPECT_EQ(avi.description, "About");
  EXPECT_THAT(avi.actors, ElementsAre("Star"));
  EXPECT_EQ(avi.created->certainty, DateCertainty::kLocal);
  EXPECT_FALSE(avi.created->offset);
}

TEST(FilmTags, ReadNumbersFromEpisodeIdentifiers) {
  const FilmTags tags = tagsOf({{"episode_id", "S02E13"}});
  EXPECT_EQ(tags.season, 2);
  EXPECT_EQ(tags.episode, 13);
  EXPECT_EQ(tagsOf({{"episode_id", "s01e01"}, {"season_number", "4"}}).season, 4);
  for (const char* id : {"S", "SE", "S1", "S1E", "S1E2x", "Season", "S-1E2", "S1E99999", "102"})
    EXPECT_FALSE(tagsOf({{"episode_id", id}}).season) << id;
}

TEST(FilmTags, LeaveImpossibleNumbersOut) {
  for (const char* number : {"-3", "10000", "99999999999999999999", "two", "2x", "", " "})
    EXPECT_FALSE(tagsOf({{"season_number", number}}).season) << number;
  EXPECT_EQ(tagsOf({{"season_number", " 0 "}}).season, 0);
}

TEST(FilmTags, KeepSeveralNamesEachOnce) {
  EXPECT_THAT(tagsOf({{"genre", "Drama"}, {"genre", " Comedy "}, {"GENRE", "Drama"}}).genres,
              ElementsAre("Drama", "Comedy"));
}

TEST(FilmTags, TakeLanguagesOnlyWhereNothingElseIs) {
  EXPECT_EQ(tagsOf({{"title-eng", "English"}, {"title", "Any"}}).title, "Any");
  EXPECT_EQ(tagsOf({{"title-eng", "English"}}).title, "English");
  EXPECT_EQ(tagsOf({{"titles", "no"}, {"title-", "no"}, {"subtitle", "no"}}).title, "");
}

TEST(FilmTags, ReadPeopleFromMovieProperties) {
  const FilmTags tags = tagsOf(
      {{"iTunMOVI",
        "<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"x\" \"y\"><plist version=\"1.0\"><dict>"
        "<key>cast</key><array><dict><key>name</key><string>A &amp; B</string></dict>"
        "<dict><key>adamId</key><integer>1</integer><key>name</key><string>C</string></dict>"
        "</array><key>directors</key><array><dict><key>name</key><string>D</string></dict>"
        "</array><key>studio</key><string>S</string></dict></plist>"}});
  EXPECT_THAT(tags.actors, ElementsAre("A & B", "C"));
  EXPECT_THAT(tags.directors, ElementsAre("D"));
  for (const char* text : {"<", "<plist><dict>", "<plist/>", "<dict><key>cast</key></dict>"})
    EXPECT_THAT(tagsOf({{"iTunMOVI", text}}).actors, IsEmpty()) << text;
}

TEST(FilmTags, TakeTimesOfContainersAsUniversal) {
  const FilmTags tags = tagsOf({{"creation_time", "2015-06-07T08:09:10.000000Z"}});
  ASSERT_TRUE(tags.created);
  EXPECT_EQ(tags.created->certainty, DateCertainty::kUtc);
  EXPECT_EQ(tags.created->offset, 0);
}

TEST(FilmTags, TakeTimesOfCamerasThatIgnoreTheDefinitionAsLocal) {
  Container container = {.demuxer = std::string(kDemuxerMp4),
                         .streams = {},
                         .tags = {{"creation_time", "2015-06-07T08:09:10.000000Z"}}};
  container.streams.emplace_back().details.emplace().handlerName = "\tGoPro AVC";
  const FilmTags tags = filmTagsOf(container);
  ASSERT_TRUE(tags.created);
  EXPECT_EQ(tags.created->certainty, DateCertainty::kLocal);
  EXPECT_FALSE(tags.created->offset);
}

TEST(FilmTags, TakeTheTimeOfAStreamIfTheContainerHasNone) {
  Container container;
  container.streams.emplace_back().details.emplace().creationTime = "2015-06-07T08:09:10.000000Z";
  EXPECT_EQ(filmTagsOf(container).created->year, 2015);
}

TEST(FilmTags, LeaveClocksOutThatWereNeverSet) {
  for (const char* time : {"1904-01-01T00:00:00.000000Z", "1970-01-01T00:00:10.000000Z", "x"})
    EXPECT_FALSE(tagsOf({{"creation_time", time}}).created) << time;
}

TEST(FilmTags, TakeADateWithTimeForTheCreation) {
  const FilmTags phone = tagsOf(
      {{"date", "2015-06-07T08:09:10+0200"}, {"creation_time", "2016-01-01T00:00:00.000000Z"}});
  EXPECT_EQ(phone.created->year, 2015);
  const FilmTags film =
      tagsOf({{"date", "1999-03-31"}, {"creation_time", "2016-01-01T00:00:00.000000Z"}});
  EXPECT_EQ(film.created->year, 2016);
  EXPECT_EQ(film.date->year, 1999);
}

TEST(FilmTags, AreCleanWhateverIsStored) {
  const std::string hostile = "\xFF\xFE" + std::string(200'000, 'a') + std::string("\0b", 2);
  Tags all;
  for (const char* key : {"title", "artist", "genre", "description", "synopsis", "comment",
                          "director", "actor", "iTunMOVI", "date", "location", "episode_id"})
    all.emplace_back(key, hostile);
  const FilmTags tags = tagsOf(all);
  for (const std::string& text : {tags.title, tags.description, tags.synopsis, tags.comment})
    EXPECT_TRUE(isCleanText(text));
  for (const auto& names : {tags.artists, tags.genres, tags.directors, tags.actors})
    for (const std::string& name : names) EXPECT_TRUE(isCleanText(name));
}

TEST(FilmTags, OfAHundredThousandEntriesTakeLittleTime) {
  Tags all;
  for (int i = 0; i < 100'000; ++i) all.emplace_back("genre", std::to_string(i));
  for (int i = 0; i < 100'000; ++i) all.emplace_back("key" + std::to_string(i), "x");
  const auto begin = test::processorTime();
  EXPECT_EQ(tagsOf(all).genres.size(), kMostFilmNames);
  EXPECT_LT(test::processorTime() - begin, std::chrono::seconds(2));
}

}  // namespace

}  // namespace kolum::media
