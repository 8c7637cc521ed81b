#include "isolation/wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>

#include "answers/details_text.h"

namespace kolum::isolation {

namespace {

media::SongTags everySongTag() {
  return {.title = "T",
          .album = "L",
          .artists = {"A", "B"},
          .albumArtists = {"AA"},
          .composers = {"C"},
          .conductors = {"D"},
          .lyricists = {"W"},
          .performers = {{.name = "P", .role = "guitar"}},
          .genres = {"Rock"},
          .titleSort = "t",
          .albumSort = "l",
          .artistSorts = {"a"},
          .albumArtistSorts = {"aa"},
          .composerSorts = {"c"},
          .track = 1,
          .trackTotal = 2,
          .disc = 3,
          .discTotal = 4,
          .date = "1999",
          .originalDate = "1998",
          .releaseDate = "1997",
          .comments = {"\u00E9"},
          .hasLyrics = true,
          .lyricsLanguage = "eng",
          .languages = {"deu"},
          .musicBrainz = {.recording = "r",
                          .track = "t",
                          .release = "l",
                          .releaseGroup = "g",
                          .work = "w",
                          .artists = {"a"},
                          .albumArtists = {"aa"}},
          .acoustId = "i",
          .isrcs = {"s"},
          .labels = {"p"},
          .catalogNumbers = {"n"},
          .barcode = "b",
          .copyright = "c",
          .encoder = "e",
          .encodedBy = "y",
          .beatsPerMinute = 120.5,
          .key = "Am",
          .moods = {"m"},
          .replayGain = {.trackGain = -7.5, .trackPeak = 1, .albumGain = -8, .albumPeak = 0.5},
          .rating = 80,
          .isCompilation = true,
          .isGapless = false,
          .isPodcast = true,
          .covers = {{.mimeType = "image/png",
                      .type = "front cover",
                      .description = "d",
                      .bytes = 1000,
                      .width = 10,
                      .height = 20}},
          .chapters = {{.start = 0.5, .end = 1.5, .title = "one"}}};
}

media::DiscIndex disc() {
  const media::DiscTitle title = {.source = "VTS_01_0.IFO",
                                  .duration = 12.5,
                                  .chapterCount = 2,
                                  .chapters = {0, 6.25},
                                  .angles = 3,
                                  .audioLanguages = {"en", "und"},
                                  .subtitleLanguages = {"de"},
                                  .streams = {"00001"}};
  media::DiscIndex index;
  index.kind = media::DiscKind::kBluray;
  index.dvdTitles = {{.titleSet = 1, .numberInSet = 2, .chapterCount = 3, .angles = 4}};
  index.titleSets = {{.number = 1, .longestChain = 60, .titles = {title}}};
  index.playlists = {title};
  index.mainFile = "00001.m2ts";
  return index;
}

media::PhotoTags photoTags() {
  const media::PhotoTime time = {.year = 2015,
                                 .month = 6,
                                 .day = 7,
                                 .hasTimeOfDay = true,
                                 .hour = 8,
                                 .minute = 9,
                                 .second = 10,
                                 .subSecond = "25",
                                 .offset = 120,
                                 .offsetOrigin = media::OffsetOrigin::kGps};
  media::PhotoTags tags;
  tags.taken = tags.digitized = tags.modified = time;
  for (const auto& field : {&media::PhotoTags::make,        &media::PhotoTags::model,
                            &media::PhotoTags::lensMake,    &media::PhotoTags::lensModel,
                            &media::PhotoTags::serial,      &media::PhotoTags::lensSerial,
                            &media::PhotoTags::software,    &media::PhotoTags::colourProfile,
                            &media::PhotoTags::location,    &media::PhotoTags::city,
                            &media::PhotoTags::state,       &media::PhotoTags::country,
                            &media::PhotoTags::countryCode, &media::PhotoTags::title,
                            &media::PhotoTags::headline,    &media::PhotoTags::description,
                            &media::PhotoTags::label,       &media::PhotoTags::copyright,
                            &media::PhotoTags::credit,      &media::PhotoTags::burst,
                            &media::PhotoTags::livePhoto})
    tags.*field = "text";
  tags.exposureTime = {1, 250};
  tags.aperture = 2.8;
  tags.iso = 400;
  tags.exposureBias = -0.5;
  tags.program = media::ExposureProgram::kLandscape;
  tags.metering = media::Metering::kOther;
  tags.whiteBalance = media::WhiteBalance::kManual;
  tags.focalLength = 50;
  tags.focalLength35 = 75;
  tags.flash = {.hasFired = true, .value = 25};
  tags.orientation = {.value = 5, .degrees = 270, .isMirrored = true};
  tags.storedSize = {.width = 6000, .height = 4000};
  tags.shownSize = {.width = 4000, .height = 6000};
  tags.position = {.latitude = -33.5, .longitude = 151.25};
  tags.altitude = -12.5;
  tags.direction = {.degrees = 229.5, .north = media::North::kMagnetic};
  tags.positionAccuracy = 4.5;
  tags.gpsTime = time;
  tags.keywords = {"a", "b"};
  tags.keywordPaths = {"a|b"};
  tags.rating = -1;
  tags.creators = {"Ann"};
  tags.regions = {{.name = "Ann", .type = "Face", .area = media::Area{0.5, 0.5, 0.25, 0.25}}};
  tags.motionPhoto = 12345;
  return tags;
}

media::StreamDetails everyDetail() {
  media::StreamDetails details;
  details.profileName = "Main 10";
  details.language = "deu";
  details.title = "T\u00FCr";
  details.handlerName = "VideoHandler";
  details.encoder = "an encoder";
  details.creationTime = "2015-06-07T08:09:10Z";
  details.timecode = "01:00:00;00";
  details.dispositions = {.isDefault = true, .isCaptions = true, .isStillImage = true};
  details.duration = 12.5;
  details.frameCount = 300;
  details.averageFrameRate = {24000, 1001};
  details.fieldOrder = media::FieldOrder::kBottomStoredTopShown;
  details.bitDepth = 10;
  details.chromaSubsampling = "4:2:0";
  details.hasAlpha = true;
  details.colours = {"bt2020", "smpte2084", "bt2020nc", "tv", "topleft"};
  details.masteringDisplay = {
      .primaries = {{{0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, {0.3127, 0.329}}},
      .luminance = {{0.005, 1000}}};
  details.contentLight = {1000, 400};
  details.dolbyVision = {1, 0, 8, 6, true, false, true, 1};
  details.hasHdr10Plus = true;
  details.hasClosedCaptions = false;
  details.orientation = {90, true};
  details.spherical = {"cubemap", 1, 2, 3, 0.1, 0.2, 0.3, 0.4, 8};
  details.stereo = {"side by side", true};
  details.channelLayout = "5.1(side)";
  details.sampleFormat = "fltp";
  details.bitsPerRawSample = 24;
  details.initialPadding = 1024;
  details.subtitleKind = media::SubtitleKind::kPicture;
  details.attachment = {"a.ttf", "font/ttf"};
  return details;
}

// With something in every field.
read::Findings everything() {
  media::Stream stream = {.type = media::StreamType::kVideo,
                          .index = 1,
                          .id = 256,
                          .codec = 28,
                          .codecName = "h264",
                          .codecTag = 0x31637661,
                          .codecTagText = "avc1",
                          .extraData = {1, 100, 0, 40},
                          .profile = 100,
                          .level = 40,
                          .bitRate = 1'000'000,
                          .width = 1920,
                          .height = 1080,
                          .pixelFormat = "yuv420p",
                          .frameRate = {25, 1},
                          .sampleAspect = {1, 1},
                          .isAttachedPicture = true,
                          .isEquirectangular = true,
                          .rotation = "90",
                          .creationTime = "2015-06-07T08:09:10Z",
                          .sampleRate = 48000,
                          .channels = 6,
                          .bitsPerSample = 24,
                          .timeBase = {1, 90000},
                          .startTime = -5,
                          .details = everyDetail()};
  read::Findings findings;
  findings.container = media::Container{.demuxer = "mov",
                                        .bitRate = 2'000'000,
                                        .duration = 60'000'000,
                                        .streams = {stream, media::Stream{}},
                                        .tags = {{"title", "A"}, {"artist", std::string("\0B", 2)}},
                                        .chapters = {{0, 10.5, "One"}, {10.5, 20, ""}},
                                        .programs = {{1, "News", "A station"}}};
  findings.picture = {.width = 40, .height = 30, .pixelFormat = "rgb24"};
  findings.mp4SubFormat = 7;
  findings.transportPackets = {.size = 192, .isTimeStamped = true};
  findings.transportPacketsTrace.error("a line\n");
  findings.moovPosition = headers::MoovPosition::kUnreadable;
  findings.dsfTags = {.title = "T", .artist = "A", .albumArtist = "AA", .album = "L"};
  findings.recognition = {.format = "QuickTime / MOV", .opensFurtherFiles = true};
  findings.content = {.type = "video/mp4", .isTruncated = true};
  findings.fingerprint = "0123456789abcdef";
  findings.keyFrameTime = 12.5;
  findings.keyFrameTrace.error("another\n");
  findings.songTags = everySongTag();
  findings.photoTags = photoTags();
  findings.disc = disc();
  return findings;
}

TEST(Wire, KeepsEveryFinding) {
  const auto bytes = encode(everything());
  const auto found = decodeFindings(bytes);
  ASSERT_TRUE(found);
  EXPECT_EQ(encode(*found), bytes);
  ASSERT_EQ(found->container->streams.size(), 2U);
  EXPECT_EQ(found->container->streams[0].codecName, "h264");
  EXPECT_EQ(found->container->streams[0].startTime, -5);
  EXPECT_EQ(found->container->tags[1].second, std::string("\0B", 2));
  EXPECT_EQ(found->picture->pixelFormat, "rgb24");
  EXPECT_EQ(found->transportPacketsTrace.lines()[0].text, "a line\n");
  EXPECT_EQ(found->content.type, "video/mp4");
  EXPECT_TRUE(found->content.isTruncated);
  EXPECT_EQ(found->fingerprint, "0123456789abcdef");
  EXPECT_EQ(found->keyFrameTime, 12.5);
  EXPECT_EQ(found->songTags->performers[0].role, "guitar");
  EXPECT_EQ(found->songTags->replayGain.albumPeak, 0.5);
  EXPECT_EQ(found->songTags->covers[0].height, 20);
  EXPECT_EQ(found->songTags->chapters[0].title, "one");
}

TEST(Wire, KeepsEveryDetail) {
  const auto found = decodeFindings(encode(everything()));
  ASSERT_TRUE(found && found->container->streams[0].details);
  EXPECT_EQ(test::detailsText(*found->container->streams[0].details),
            test::detailsText(everyDetail()));
  EXPECT_FALSE(found->container->streams[1].details);
  ASSERT_EQ(found->container->chapters.size(), 2U);
  EXPECT_EQ(found->container->chapters[0].title, "One");
  EXPECT_EQ(found->container->chapters[1].end, 20);
  ASSERT_EQ(found->container->programs.size(), 1U);
  EXPECT_EQ(found->container->programs[0].provider, "A station");
}

TEST(Wire, RejectsDetailsThatNoReaderGives) {
  using Change = void (*)(media::StreamDetails&);
  static constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const Change changes[] = {
      [](media::StreamDetails& details) { details.title = "\xFF"; },
      [](media::StreamDetails& details) { details.language = std::string("d\0e", 3); },
      [](media::StreamDetails& details) { details.encoder = std::string(65537, 'a'); },
      [](media::StreamDetails& details) { details.attachment->fileName = "\xED\xA0\x80"; },
      [](media::StreamDetails& details) { details.duration = kInfinity; },
      [](media::StreamDetails& details) { details.spherical->yaw = std::nan(""); },
      [](media::StreamDetails& details) { details.orientation->degrees = -kInfinity; },
      [](media::StreamDetails& details) {
        details.masteringDisplay->luminance->highest = kInfinity;
      },
      [](media::StreamDetails& details) { details.averageFrameRate.den = -1; },
      [](media::StreamDetails& details) { details.fieldOrder = static_cast<media::FieldOrder>(5); },
      [](media::StreamDetails& details) {
        details.subtitleKind = static_cast<media::SubtitleKind>(2);
      },
  };
  for (const Change change : changes) {
    read::Findings findings = everything();
    change(*findings.container->streams[0].details);
    EXPECT_FALSE(decodeFindings(encode(findings))) << &change - changes;
  }
}

TEST(Wire, RejectsMoreChaptersAndProgramsThanReadersGive) {
  read::Findings findings = everything();
  findings.container->chapters.resize(media::kMostChapters);
  findings.container->programs.resize(media::kMostPrograms);
  EXPECT_TRUE(decodeFindings(encode(findings)));
  findings.container->chapters.emplace_back();
  EXPECT_FALSE(decodeFindings(encode(findings)));
  findings.container->chapters.clear();
  findings.container->programs.emplace_back();
  EXPECT_FALSE(decodeFindings(encode(findings)));
}

TEST(Wire, KeepsFailures) {
  read::Findings findings;
  findings.failure = {read::FailureCause::kOutOfMemory, "why"};
  const auto found = decodeFindings(encode(findings));
  ASSERT_TRUE(found && found->failure);
  EXPECT_EQ(found->failure->cause, read::FailureCause::kOutOfMemory);
  EXPECT_EQ(found->failure->reason, "why");
}

TEST(Wire, KeepsRequests) {
  const Request request = {"a.mp4",
                           {.container = ffmpeg::Depth::kStreamTimes,
                            .picture = true,
                            .details = true,
                            .mp4SubFormat = true,
                            .songTags = true,
                            .discIndex = true,
                            .photoTags = true,
                            .keyFrameAt = 7}};
  const auto found = decodeRequest(encode(request));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->fileName, "a.mp4");
  EXPECT_EQ(found->query.container, ffmpeg::Depth::kStreamTimes);
  EXPECT_TRUE(found->query.songTags);
  EXPECT_TRUE(found->query.picture && found->query.details && found->query.mp4SubFormat);
  EXPECT_FALSE(found->query.dsfTags);
  EXPECT_EQ(found->query.keyFrameAt, 7);
  EXPECT_FALSE(found->query.reportedKeyFrameAt);
  EXPECT_TRUE(found->query.photoTags);
  EXPECT_TRUE(found->query.discIndex);
  EXPECT_FALSE(found->query.discImage);
}

TEST(Wire, RejectsDiscsThatNoReaderDescribes) {
  const auto isAccepted = [](void (*change)(media::DiscIndex&)) {
    read::Findings findings = everything();
    change(*findings.disc);
    return decodeFindings(encode(findings)).has_value();
  };
  EXPECT_TRUE(isAccepted([](auto& /*disc*/) {}));
  EXPECT_FALSE(isAccepted([](auto& disc) { disc.kind = static_cast<media::DiscKind>(3); }));
  EXPECT_FALSE(isAccepted([](auto& disc) { disc.playlists[0].duration = NAN; }));
  EXPECT_FALSE(isAccepted([](auto& disc) { disc.playlists[0].chapters[1] = -1; }));
  EXPECT_FALSE(isAccepted([](auto& disc) { disc.playlists[0].source = "\xFF"; }));
  EXPECT_FALSE(isAccepted([](auto& disc) {
    disc.titleSets[0].titles[0].audioLanguages.assign(media::kMostTitleLanguages + 1, "en");
  }));
  EXPECT_FALSE(isAccepted([](auto& disc) { disc.playlists.resize(media::kMostDiscTitles + 1); }));
}

TEST(Wire, RejectsWhatIsCutAnywhereOrLonger) {
  auto bytes = encode(everything());
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_FALSE(decodeFindings(std::span(bytes).first(size))) << size;
  bytes.push_back(0);
  EXPECT_FALSE(decodeFindings(bytes));
}

TEST(Wire, RejectsEnumeratorsThatDoNotExist) {
  read::Findings findings;
  findings.moovPosition = static_cast<headers::MoovPosition>(3);
  EXPECT_FALSE(decodeFindings(encode(findings)));
  findings = everything();
  findings.container->streams[0].type = static_cast<media::StreamType>(4);
  EXPECT_FALSE(decodeFindings(encode(findings)));
}

// Whoever divides by them relies on it.
TEST(Wire, RejectsFractionsThatNoReaderGives) {
  for (const media::Rational rate : {media::Rational{INT_MIN, 1}, media::Rational{1, -1}}) {
    read::Findings findings = everything();
    findings.container->streams[0].frameRate = rate;
    EXPECT_FALSE(decodeFindings(encode(findings)));
  }
}

// They go to a terminal as they are.
TEST(Wire, KeepsTagsOfPhotos) {
  const auto found = decodeFindings(encode(everything()));
  ASSERT_TRUE(found && found->photoTags);
  EXPECT_EQ(found->photoTags->taken, photoTags().taken);
  EXPECT_EQ(found->photoTags->program, media::ExposureProgram::kLandscape);
  EXPECT_EQ(found->photoTags->regions[0].area->width, 0.25);
  EXPECT_EQ(found->photoTags->motionPhoto, 12345);
}

bool isAccepted(void (*change)(media::PhotoTags&)) {
  read::Findings findings = everything();
  change(*findings.photoTags);
  return decodeFindings(encode(findings)).has_value();
}

// A worker that a file has taken over may say anything.
TEST(Wire, RejectsTagsOfPhotosThatNoReaderGives) {
  using Tags = media::PhotoTags;
  EXPECT_TRUE(isAccepted([](Tags& /*tags*/) {}));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.make = "\xFF"; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.make = std::string(65537, 'x'); }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.make = std::string(1, '\0'); }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.keywords.resize(257); }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.creators = {"\xFF"}; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.regions.resize(257); }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.regions[0].area->centreX = 2; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.position->latitude = 200; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.position->longitude = NAN; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.altitude = INFINITY; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.direction->degrees = -1; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.taken->month = 13; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.taken->year = INT_MAX; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.taken->subSecond = "x"; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.taken->offset = INT_MIN; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.exposureTime = {1, 0}; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.orientation->degrees = 45; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.storedSize->width = 0; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.rating = 6; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.motionPhoto = -1; }));
  EXPECT_FALSE(isAccepted([](Tags& tags) { tags.metering = static_cast<media::Metering>(7); }));
}

TEST(Wire, RejectsLinesThatNoReaderWrites) {
  for (const std::string& line :
       {std::string("\033[2J\n"), std::string("a\0b", 3), std::string("\xC2\x9B"),
        std::string("\r\n"), std::string("\x7F"), std::string(257, 'a')}) {
    read::Findings findings;
    findings.keyFrameTrace.error(line);
    EXPECT_FALSE(decodeFindings(encode(findings))) << line.size();
    findings = {};
    findings.transportPacketsTrace.error(line);
    EXPECT_FALSE(decodeFindings(encode(findings))) << line.size();
  }
}

TEST(Wire, RejectsMoreLinesThanReadersWrite) {
  read::Findings findings;
  for (int i = 0; i < 4096; ++i) findings.keyFrameTrace.error("\n");
  EXPECT_TRUE(decodeFindings(encode(findings)));
  findings.keyFrameTrace.error("\n");
  EXPECT_FALSE(decodeFindings(encode(findings)));
}

TEST(Wire, RejectsTagsThatNoReaderGives) {
  const std::vector<void (*)(media::SongTags&)> changes = {
      [](media::SongTags& tags) { tags.title = std::string("a\0b", 3); },
      [](media::SongTags& tags) { tags.genres = {"\xFF"}; },
      [](media::SongTags& tags) { tags.comments = {std::string((64 << 10) + 1, 'a')}; },
      [](media::SongTags& tags) { tags.artists.assign(257, "a"); },
      [](media::SongTags& tags) { tags.chapters.resize(257); },
      [](media::SongTags& tags) { tags.covers[0].description = "\xC0\x80"; },
      [](media::SongTags& tags) { tags.musicBrainz.artists = {"\xED\xA0\x80"}; },
      [](media::SongTags& tags) { tags.replayGain.trackGain = std::nan(""); },
      [](media::SongTags& tags) { tags.chapters[0].end = HUGE_VAL; },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    read::Findings findings = everything();
    changes[i](*findings.songTags);
    EXPECT_FALSE(decodeFindings(encode(findings))) << i;
  }
  read::Findings longest = everything();
  longest.songTags->comments = {std::string(64 << 10, 'a')};
  longest.songTags->artists.assign(256, "a");
  EXPECT_TRUE(decodeFindings(encode(longest)));
}

TEST(Wire, RejectsListsThatCannotBeThere) {
  const auto bytes = encode(everything());
  // Every number of elements is in one of these places.
  for (std::size_t i = 0; i + 4 <= bytes.size(); ++i) {
    auto damaged = bytes;
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(i), 4, std::uint8_t{0xFF});
    const auto found = decodeFindings(damaged);
    if (found) {
      EXPECT_EQ(encode(*found).size(), damaged.size());
    }
  }
}

TEST(Wire, SurvivesDamage) {
  const auto bytes = encode(everything());
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    auto damaged = bytes;
    for (int flips = 0; flips < 3; ++flips)
      damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
    const auto found = decodeFindings(damaged);
    if (found) {
      EXPECT_EQ(encode(*found).size(), damaged.size());
    }
  }
}

}  // namespace

}  // namespace kolum::isolation
