#include "read/tags/song_tag_builder.h"

#include <gmock/gmock.h>

#include <string>

using kolum::media::Performer;
using kolum::media::SongTags;
using kolum::tags::SongTagBuilder;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// What one value under one name leads to.
SongTags tagsOf(std::string_view name, std::string_view value) {
  SongTagBuilder builder;
  builder.add(name, value);
  return std::move(builder).take().value_or(SongTags());
}

bool isNothing(std::string_view name, std::string_view value) {
  SongTagBuilder builder;
  builder.add(name, value);
  return !std::move(builder).take();
}

TEST(SongTags, IgnoreCaseAndPunctuationOfNames) {
  for (const char* name : {"MUSICBRAINZ_ALBUMARTISTID", "MusicBrainz Album Artist Id",
                           "MusicBrainz/Album Artist Id", "musicbrainz-albumartistid"})
    EXPECT_THAT(tagsOf(name, "0DF46891-1a2b-3c4d-5e6f-0123456789ab").musicBrainz.albumArtists,
                ElementsAre("0df46891-1a2b-3c4d-5e6f-0123456789ab"))
        << name;
  EXPECT_THAT(tagsOf("Album Artist", "A").albumArtists, ElementsAre("A"));
  EXPECT_TRUE(isNothing("TITLES", "A"));
  EXPECT_TRUE(isNothing("", "A"));
  EXPECT_TRUE(isNothing(std::string(100'000, 'T'), "A"));
}

TEST(SongTags, HaveNoNulsAndNothingButUtf8) {
  EXPECT_THAT(tagsOf("ARTIST", std::string("A\0B\0\0A\0", 7)).artists, ElementsAre("A", "B"));
  EXPECT_EQ(tagsOf("TITLE", std::string("\0T\0U", 4)).title, "T");
  EXPECT_EQ(tagsOf("TITLE", "a\xFFz\xED\xA0\x80").title, "a\uFFFDz\uFFFD\uFFFD\uFFFD");
  EXPECT_TRUE(isNothing("TITLE", " \t\n"));
  EXPECT_TRUE(isNothing("TITLE", std::string(10, '\0')));
}

TEST(SongTags, AreCutAtTheBorderOfACharacter) {
  const std::string title = tagsOf("TITLE", "a" + std::string(65534, 'b') + "\u20AC").title;
  EXPECT_EQ(title.size(), 65535U);
  EXPECT_EQ(tagsOf("TITLE", std::string(100'000, 'b')).title.size(), 65536U);
}

TEST(SongTags, HoldAtMost256Values) {
  SongTagBuilder builder;
  std::string many;
  for (int i = 0; i < 1000; ++i) {
    builder.add("ARTIST", "a" + std::to_string(i));
    builder.addPerformer("p" + std::to_string(i), "");
    builder.addChapter(i, {}, "");
    builder.addCover("image/png", "", "", {}, 1);
    many += "g" + std::to_string(i) + '\0';
  }
  builder.add("MOOD", many);
  const auto tags = std::move(builder).take();
  EXPECT_EQ(tags->artists.size(), 256U);
  EXPECT_EQ(tags->performers.size(), 256U);
  EXPECT_EQ(tags->chapters.size(), 256U);
  EXPECT_EQ(tags->covers.size(), 256U);
  EXPECT_EQ(tags->moods.size(), 256U);
}

TEST(SongTags, OfLaterTagsFillGapsOnly) {
  SongTagBuilder builder;
  builder.beginTag();
  builder.add("ARTIST", "A");
  builder.add("ARTIST", "B");
  builder.add("DATE", "1999");
  builder.beginTag();
  builder.add("ARTIST", "C");
  builder.add("DATE", "1999-12-31");
  builder.add("TITLE", "T");
  const auto tags = std::move(builder).take();
  EXPECT_THAT(tags->artists, ElementsAre("A", "B"));
  EXPECT_EQ(tags->date, "1999");
  EXPECT_EQ(tags->title, "T");
}

TEST(SongTags, HaveArtistsOneByOneIfStated) {
  SongTagBuilder builder;
  builder.add("ARTIST", "A feat. B");
  builder.add("ARTISTS", "A");
  builder.add("ARTISTS", "B");
  EXPECT_THAT(std::move(builder).take()->artists, ElementsAre("A", "B"));
}

TEST(TrackNumbers, HaveManyNotations) {
  struct Case {
    const char* text;
    std::optional<int> track;
    std::optional<int> total;
  };
  const std::optional<int> none;
  for (const Case& c :
       {Case{"3/12", 3, 12}, Case{"03", 3, none}, Case{" 3 / 12 ", 3, 12}, Case{"0/12", none, 12},
        Case{"-3/-12", none, none}, Case{"A1", none, none}, Case{"65535", 65535, none},
        Case{"65536/70000", none, none}, Case{"99999999999999999999", none, none},
        Case{"3/", 3, none}, Case{"/", none, none}, Case{"+3", 3, none}}) {
    const SongTags tags = tagsOf("TRACKNUMBER", c.text);
    EXPECT_EQ(tags.track, c.track) << c.text;
    EXPECT_EQ(tags.trackTotal, c.total) << c.text;
  }
  EXPECT_EQ(tagsOf("TOTALTRACKS", "12").trackTotal, 12);
  EXPECT_EQ(tagsOf("TRACKTOTAL", "12").trackTotal, 12);
  EXPECT_EQ(tagsOf("DISC", "1/2").discTotal, 2);
  EXPECT_EQ(tagsOf("DISCTOTAL", "2").discTotal, 2);
}

TEST(SongDates, KeepThePartThatMakesSense) {
  struct Case {
    const char* text;
    const char* date;
  };
  for (const Case& c : {Case{"1999", "1999"},
                        Case{"1999-12", "1999-12"},
                        Case{"1999-12-31", "1999-12-31"},
                        Case{"1999-12-31T23", "1999-12-31"},
                        Case{"1999-12-31T23:59", "1999-12-31T23:59"},
                        Case{"1999-12-31 23:59:58", "1999-12-31T23:59:58"},
                        Case{"2007-05-01T07:00:00Z", "2007-05-01T07:00:00"},
                        Case{"19991231", "1999-12-31"},
                        Case{"1999/12/31", "1999-12-31"},
                        Case{"1999.12.31", "1999-12-31"},
                        Case{"1999-00-00", "1999"},
                        Case{"1999-13-01", "1999"},
                        Case{"1999-12-32", "1999-12"},
                        Case{"1999-12-31T25:00", "1999-12-31"},
                        Case{" 1999", "1999"},
                        Case{"1999 (remaster)", "1999"},
                        Case{"0000", ""},
                        Case{"0000-01-01", ""},
                        Case{"99", ""},
                        Case{"-1999", ""},
                        Case{"31.12.1999", ""},
                        Case{"about 1999", ""},
                        Case{"", ""}})
    EXPECT_EQ(tagsOf("DATE", c.text).date, c.date) << c.text;
}

TEST(SongDates, AreAsExactAsAnyNameStates) {
  SongTagBuilder builder;
  builder.add("YEAR", "1999");
  builder.add("DATE", "1999-12-31");
  builder.add("DATE", "2000-01-01");
  EXPECT_EQ(std::move(builder).take()->date, "1999-12-31");
}

TEST(Genres, HaveNamesInsteadOfNumbers) {
  EXPECT_THAT(tagsOf("GENRE", "17").genres, ElementsAre("Rock"));
  EXPECT_THAT(tagsOf("GENRE", "(17)").genres, ElementsAre("Rock"));
  EXPECT_THAT(tagsOf("GENRE", "(17)Rock").genres, ElementsAre("Rock"));
  EXPECT_THAT(tagsOf("GENRE", "(17)(31)Something").genres,
              ElementsAre("Rock", "Trance", "Something"));
  EXPECT_THAT(tagsOf("GENRE", "(RX)(CR)").genres, ElementsAre("Remix", "Cover"));
  EXPECT_THAT(tagsOf("GENRE", "((I think)").genres, ElementsAre("(I think)"));
  EXPECT_THAT(tagsOf("GENRE", std::string("17\0Jazz", 7)).genres, ElementsAre("Rock", "Jazz"));
  EXPECT_THAT(tagsOf("GENRE", "Rock/Pop").genres, ElementsAre("Rock/Pop"));
  EXPECT_THAT(tagsOf("GENRE", "1980").genres, ElementsAre("1980"));
  EXPECT_THAT(tagsOf("GENRE", "(unknown").genres, ElementsAre("(unknown"));
  EXPECT_TRUE(isNothing("GENRE", "255"));
  EXPECT_TRUE(isNothing("GENRE", "(255)"));
}

TEST(Loudness, IsFiniteAndPossible) {
  EXPECT_EQ(tagsOf("replaygain_track_gain", "-7.5 dB").replayGain.trackGain, -7.5);
  EXPECT_EQ(tagsOf("REPLAYGAIN_ALBUM_GAIN", "+1,25 dB").replayGain.albumGain, 1.25);
  EXPECT_EQ(tagsOf("REPLAYGAIN_TRACK_PEAK", "0.5").replayGain.trackPeak, 0.5);
  for (const char* text : {"nan", "inf", "-inf", "1e400", "1000 dB", "-1e300", "loud", ""})
    EXPECT_TRUE(isNothing("REPLAYGAIN_TRACK_GAIN", text)) << text;
  EXPECT_TRUE(isNothing("REPLAYGAIN_TRACK_PEAK", "-1"));
}

// Opus refers to -23 LUFS, in steps of 1/256 dB.
TEST(Loudness, OfOpusIsBroughtToReplayGain) {
  EXPECT_EQ(tagsOf("R128_TRACK_GAIN", "-512").replayGain.trackGain, 3);
  EXPECT_EQ(tagsOf("R128_ALBUM_GAIN", "256").replayGain.albumGain, 6);
}

TEST(Loudness, OfItunesCountsIfThereIsNoOther) {
  const std::string text = " 000003E8 00000064 000001F4 00000032 0 0 0 0 0 0";
  EXPECT_NEAR(tagsOf("iTunNORM", text).replayGain.trackGain.value_or(99), 0, 1e-9);
  EXPECT_NEAR(tagsOf("iTunNORM", "2710 0").replayGain.trackGain.value_or(99), -10, 1e-9);
  EXPECT_TRUE(isNothing("iTunNORM", "0 0"));
  EXPECT_TRUE(isNothing("iTunNORM", "1"));
  EXPECT_TRUE(isNothing("iTunNORM", "x y"));
  SongTagBuilder builder;
  builder.add("iTunNORM", text);
  builder.add("REPLAYGAIN_TRACK_GAIN", "-3 dB");
  EXPECT_EQ(std::move(builder).take()->replayGain.trackGain, -3);
}

TEST(Ratings, AreBroughtToOneHundred) {
  EXPECT_EQ(tagsOf("RATING", "4").rating, 80);
  EXPECT_EQ(tagsOf("RATING", "75").rating, 75);
  EXPECT_EQ(tagsOf("FMPS_RATING", "0.9").rating, 90);
  EXPECT_EQ(tagsOf("WINDOWSRATING", "1").rating, 20);
  EXPECT_EQ(tagsOf("WINDOWSRATING", "99").rating, 100);
  for (const char* text : {"-1", "101", "nan", "good"})
    EXPECT_TRUE(isNothing("RATING", text)) << text;
  for (const auto& [value, rating] : {std::pair(1, 20), std::pair(64, 40), std::pair(128, 60),
                                      std::pair(196, 80), std::pair(255, 100)}) {
    SongTagBuilder builder;
    builder.addPopularity(value);
    EXPECT_EQ(std::move(builder).take()->rating, rating) << value;
  }
  SongTagBuilder unknown;
  unknown.addPopularity(0);
  EXPECT_FALSE(std::move(unknown).take());
}

TEST(Identifiers, HaveTheirForm) {
  const std::string id = "0df46891-1a2b-3c4d-5e6f-0123456789ab";
  EXPECT_EQ(tagsOf("ACOUSTID_ID", id).acoustId, id);
  // Version 2.3 of ID3 separates values with a slash.
  const std::string other = "1df46891-1a2b-3c4d-5e6f-0123456789ab";
  EXPECT_THAT(tagsOf("MUSICBRAINZ_ARTISTID", id + "/" + other).musicBrainz.artists,
              ElementsAre(id, other));
  for (const std::string& text : {std::string("x"), id.substr(1), id + "0", "g" + id.substr(1),
                                  std::string("0df46891x1a2b-3c4d-5e6f-0123456789ab")})
    EXPECT_TRUE(isNothing("MUSICBRAINZ_ALBUMID", text)) << text;
}

TEST(Performers, HaveRoles) {
  const auto isPerformer = [](const char* name, const char* role) {
    return testing::AllOf(testing::Field(&Performer::name, name),
                          testing::Field(&Performer::role, role));
  };
  EXPECT_THAT(tagsOf("PERFORMER", "A (guitar)").performers,
              ElementsAre(isPerformer("A", "guitar")));
  EXPECT_THAT(tagsOf("PERFORMER", "A").performers, ElementsAre(isPerformer("A", "")));
  EXPECT_THAT(tagsOf("PERFORMER", " (guitar)").performers,
              ElementsAre(isPerformer(" (guitar)", "")));
  EXPECT_THAT(tagsOf("PRODUCER", "A").performers, ElementsAre(isPerformer("A", "producer")));
}

TEST(Chapters, OfCommentsHaveTimesAndNames) {
  SongTagBuilder builder;
  builder.add("CHAPTER002", "01:00:01.500");
  builder.add("CHAPTER001NAME", "One");
  builder.add("CHAPTER001", "00:00:00.000");
  builder.add("CHAPTER003NAME", "without a time");
  builder.add("CHAPTER004", "00:99:00.000x");
  builder.add("CHAPTER005", "-1:00:00.000");
  builder.add("CHAPTER006", "nonsense");
  builder.add("CHAPTER007", "00:00:nan");
  const auto tags = std::move(builder).take();
  ASSERT_EQ(tags->chapters.size(), 3U);
  EXPECT_EQ(tags->chapters[0].start, 0);
  EXPECT_EQ(tags->chapters[0].title, "One");
  EXPECT_FALSE(tags->chapters[0].end);
  EXPECT_EQ(tags->chapters[1].start, 3601.5);
  EXPECT_EQ(tags->chapters[2].start, 99 * 60);
}

TEST(Chapters, EndAfterTheirStart) {
  SongTagBuilder builder;
  builder.addChapter(2, 1, "");
  EXPECT_FALSE(std::move(builder).take()->chapters[0].end);
}

TEST(Flags, AreYesOrNo) {
  EXPECT_EQ(tagsOf("COMPILATION", "1").isCompilation, true);
  EXPECT_EQ(tagsOf("COMPILATION", "0").isCompilation, false);
  EXPECT_EQ(tagsOf("COMPILATION", "True").isCompilation, true);
  EXPECT_TRUE(isNothing("COMPILATION", "maybe"));
}

TEST(Tempo, IsPossible) {
  EXPECT_EQ(tagsOf("BPM", "120.5").beatsPerMinute, 120.5);
  for (const char* text : {"0", "-1", "1001", "fast", "nan"})
    EXPECT_TRUE(isNothing("BPM", text)) << text;
}

TEST(Covers, AreWhatTheirBytesSay) {
  constexpr std::uint8_t kGif[] = {'G', 'I', 'F', '8', '9', 'a', 3, 0, 2, 0, 0, 0, 0, ','};
  SongTagBuilder builder;
  builder.addCover("image/jpeg", "icon", "d", kGif, sizeof kGif);
  builder.addCover("-->", "", "", kGif, sizeof kGif);
  builder.addCover("image/png", "", "", {}, 0);
  builder.addCover("image/svg+xml", "", "", {kGif, 1}, 1);
  const auto tags = std::move(builder).take();
  ASSERT_EQ(tags->covers.size(), 2U);
  EXPECT_EQ(tags->covers[0].type, "icon");
  EXPECT_EQ(tags->covers[0].bytes, sizeof kGif);
  EXPECT_EQ(tags->covers[1].mimeType, "image/svg+xml");
  EXPECT_FALSE(tags->covers[1].width);
}

TEST(Texts, WithoutEncodingAreUtf8OrWindows1252) {
  EXPECT_EQ(kolum::tags::utf8Of("Caf\xC3\xA9"), "Caf\u00E9");
  EXPECT_EQ(kolum::tags::utf8Of("Caf\xE9"), "Caf\u00E9");
  EXPECT_EQ(kolum::tags::utf8Of("\x93quoted\x94 \x80"), "\u201Cquoted\u201D \u20AC");
  EXPECT_THAT(kolum::tags::utf8Of(""), IsEmpty());
}

}  // namespace
