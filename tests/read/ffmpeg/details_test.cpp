// Details of streams that ffmpeg cannot write or ffprobe does not report.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/clean_text.h"
#include "media/film_tags.h"
#include "read/ffmpeg/input.h"
#include "read/headers/shortcuts.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::ffmpeg {

namespace {

using namespace std::string_literals;
using test::bigEndian;
using test::box;
using test::fullBox;
using test::made;
using test::media;

constexpr const char* kPicture = "-f lavfi -i testsrc2=s=192x128:r=25:d=1 -pix_fmt yuv420p ";
constexpr const char* kHevc = "-c:v libx265 -x265-params log-level=none ";

std::string h264(const std::string& name) {
  return media(name, std::string(kPicture) + "-c:v libx264");
}

media::Container detailed(const std::string& path) {
  const auto container = readContainer(path, Depth::kStreams, Details::kWanted);
  if (!container || container->streams.empty()) throw std::runtime_error("cannot read " + path);
  return *container;
}

media::StreamDetails firstDetails(const std::string& path) {
  return *detailed(path).streams[0].details;
}

TEST(Details, AreLeftOutUnlessAskedFor) {
  const auto container = readContainer(h264("plain.mp4"), Depth::kStreams);
  ASSERT_TRUE(container);
  EXPECT_FALSE(container->streams[0].details);
  EXPECT_TRUE(container->chapters.empty() && container->programs.empty());
}

// They would take packets from those who read on.
TEST(Details, AreLeftOutAtOtherDepths) {
  for (const Depth depth : {Depth::kHeader, Depth::kStreamTimes}) {
    const auto container = readContainer(h264("plain.mp4"), depth, Details::kWanted);
    ASSERT_TRUE(container);
    EXPECT_FALSE(container->streams[0].details);
  }
}

TEST(Details, IncludeDolbyVision) {
  constexpr int kProfile = 8;
  constexpr int kLevel = 6;
  constexpr int kBaseAndReference = 5;
  constexpr std::uint32_t kLikeHdr10 = 1;
  const std::string record = "\1\0"s +
                             bigEndian(kProfile << 9 | kLevel << 3 | kBaseAndReference, 2) +
                             bigEndian(kLikeHdr10 << 28, 4) + std::string(16, '\0');
  for (const char* type : {"dvcC", "dvvC"}) {
    const auto details =
        firstDetails(test::withDescriptionBoxes(h264("vision.mp4"), box(type, record)));
    const media::DolbyVision expected = {1, 0, kProfile, kLevel, true, false, true, 1};
    EXPECT_EQ(details.dolbyVision, expected) << type;
  }
}

TEST(Details, IncludeOrientation) {
  for (const bool isMirrored : {false, true})
    for (const int degrees : {0, 45, 90, 180, 270}) {
      const auto details = firstDetails(
          test::withTrackMatrix(h264("turned.mp4"), test::rotationMatrix(degrees, isMirrored)));
      if (degrees == 0 && !isMirrored) {
        EXPECT_FALSE(details.orientation);
        continue;
      }
      ASSERT_TRUE(details.orientation) << degrees << isMirrored;
      EXPECT_EQ(details.orientation->degrees, degrees);
      EXPECT_EQ(details.orientation->isMirrored, isMirrored);
    }
}

TEST(Details, LeaveImpossibleMatricesOut) {
  for (const test::TrackMatrix& matrix :
       {test::TrackMatrix{}, test::TrackMatrix{1 << 16, 0, 0, 0, 0, 0, 0, 0, 1 << 30}})
    EXPECT_FALSE(firstDetails(test::withTrackMatrix(h264("turned.mp4"), matrix)).orientation);
  const test::TrackMatrix extreme = {INT32_MIN, INT32_MAX, 0, INT32_MAX, INT32_MIN, 0, 0, 0, 0};
  firstDetails(test::withTrackMatrix(h264("turned.mp4"), extreme));
}

TEST(Details, IncludeRotateTags) {
  EXPECT_EQ(firstDetails(test::withRotateTag("90")).orientation,
            (media::VideoOrientation{90, false}));
  EXPECT_EQ(firstDetails(test::withRotateTag("-90")).orientation,
            (media::VideoOrientation{270, false}));
  for (const char* nothing : {"0", "360", "nan", "inf", "x", "1e999"})
    EXPECT_FALSE(firstDetails(test::withRotateTag(nothing)).orientation) << nothing;
}

TEST(Details, IncludeTheSphereAndItsBounds) {
  const auto angle = [](int degrees) {
    return bigEndian(static_cast<std::uint32_t>(degrees * 65536), 4);
  };
  const auto part = [](double of1) {
    return bigEndian(static_cast<std::uint32_t>(of1 * 4294967296.0), 4);
  };
  const std::string sphere = box(
      "sv3d",
      fullBox("svhd", 0, 0, "test\0"s) +
          box("proj", fullBox("prhd", 0, 0, angle(10) + angle(-20) + angle(30)) +
                          fullBox("equi", 0, 0, part(0.125) + part(0.25) + part(0) + part(0.5))));
  const auto found = firstDetails(test::withDescriptionBoxes(h264("sphere.mp4"), sphere)).spherical;
  ASSERT_TRUE(found);
  EXPECT_EQ(found->projection, "tiled equirectangular");
  EXPECT_EQ(found->yaw, 10);
  EXPECT_EQ(found->pitch, -20);
  EXPECT_EQ(found->roll, 30);
  EXPECT_EQ(found->top, 0.125);
  EXPECT_EQ(found->bottom, 0.25);
  EXPECT_EQ(found->left, 0);
  EXPECT_EQ(found->right, 0.5);
}

TEST(Details, IncludeStereo) {
  constexpr int kLeftRight = 2;
  EXPECT_EQ(firstDetails(test::withDescriptionBoxes(
                             h264("stereo.mp4"), fullBox("st3d", 0, 0, bigEndian(kLeftRight, 1))))
                .stereo,
            (media::Stereo{"side by side", false}));
  const auto matroska = [](const std::string& mode) {
    return media("stereo.mkv",
                 std::string(kPicture) + "-c:v libx264 -metadata:s:v stereo_mode=" + mode);
  };
  const std::string rightLeft = matroska("right_left");
  EXPECT_EQ(firstDetails(rightLeft).stereo, (media::Stereo{"side by side", true}));
  EXPECT_EQ(firstDetails(matroska("bottom_top")).stereo, (media::Stereo{"top and bottom", true}));
  // FFmpeg has no name of its own for this one.
  EXPECT_EQ(firstDetails(test::replaced(rightLeft, "\x53\xB8\x81\x0B", "\x53\xB8\x81\x0A")).stereo,
            (media::Stereo{"anaglyph_cyan_red", false}));
  EXPECT_FALSE(firstDetails(matroska("mono")).stereo);
}

// A copy of a byte stream with these bytes in front of its first slice, which begins with a start
// code and a byte for which IS_SLICE holds.
std::string withUnit(const std::string& path, const std::string& unit,
                     bool (*isSlice)(unsigned char type)) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return made(name, "unit " + unit + path, [&](const std::string& copy) {
    std::string bytes = test::contentOf(path);
    std::size_t at = bytes.find("\0\0\1"s);
    while (at != std::string::npos && !isSlice(static_cast<unsigned char>(bytes.at(at + 3))))
      at = bytes.find("\0\0\1"s, at + 3);
    if (at == std::string::npos) throw std::runtime_error("no slice in " + path);
    bytes.insert(at, "\0\0\1"s + unit);
    std::ofstream(copy, std::ios::binary) << bytes;
  });
}

// A byte stream has no times, which some containers want: those of MP4 are made up.
std::string packed(const std::string& stream, const std::string& name) {
  const std::string timed = media("timed.mp4", "-i '" + stream + "' -c copy");
  return media(name, "-i '" + timed + "' -c copy");
}

const std::string kDynamic = "\xB5\x00\x3C\x00\x01\x04\x01"s;

std::string hevcWithDynamicMetadata() {
  const std::string unit = "\x4E\x01\x04"s + static_cast<char>(kDynamic.size()) + kDynamic + "\x80";
  return withUnit(media("dynamic.hevc", std::string(kPicture) + kHevc), unit,
                  [](unsigned char type) { return type >> 1 < 32; });
}

TEST(Details, IncludeDynamicMetadataOfHevc) {
  const std::string stream = hevcWithDynamicMetadata();
  for (const char* name : {"dynamic.mp4", "dynamic.mkv", "dynamic.ts", "dynamic.mov"}) {
    EXPECT_EQ(firstDetails(packed(stream, name)).hasHdr10Plus, true) << name;
    const std::string none = media(name, std::string(kPicture) + kHevc);
    EXPECT_EQ(firstDetails(none).hasHdr10Plus, false) << name;
  }
  EXPECT_EQ(firstDetails(stream).hasHdr10Plus, true);
}

// Matroska keeps it beside the pictures. ffmpeg writes transparency there: it gets another number.
// Later releases of ffmpeg take the colours from the source, earlier ones from the encoder's
// options.
TEST(Details, IncludeDynamicMetadataOfVp9) {
  const std::string film =
      media("dynamic.webm",
            "-f lavfi -i testsrc2=s=192x128:r=25:d=1,setparams=color_primaries=bt2020:"
            "color_trc=smpte2084 -pix_fmt yuva420p -c:v libvpx-vp9 -deadline realtime "
            "-cpu-used 8 -color_trc smpte2084 -color_primaries bt2020");
  EXPECT_EQ(firstDetails(film).hasHdr10Plus, false);
  EXPECT_TRUE(firstDetails(film).hasAlpha);
  const std::string copy = made("dynamic.webm", "renumbered " + film, [&](const std::string& path) {
    std::string bytes = test::contentOf(film);
    const std::string addition = "\xEE\x81\x01\xA5"s;
    const std::size_t at = bytes.find(addition);
    if (at == std::string::npos) throw std::runtime_error("no addition");
    bytes[at + 2] = '\x04';
    // The size of the addition has as many bytes as zeros in front, and one.
    const std::size_t size = at + addition.size();
    const std::size_t length =
        static_cast<std::size_t>(std::countl_zero(static_cast<unsigned char>(bytes[size])) + 1);
    bytes.replace(size + length, kDynamic.size(), kDynamic);
    std::ofstream(path, std::ios::binary) << bytes;
  });
  EXPECT_EQ(firstDetails(copy).hasHdr10Plus, true);
}

TEST(Details, IncludeCaptionsInsidePictures) {
  const std::string captions = "GA94\x03\x41\xFF\xFC\x94\x2C\xFF"s;
  const std::string message = "\xB5\x00\x31"s + captions;
  const std::string ofH264 =
      withUnit(media("captions.h264", std::string(kPicture) + "-c:v libx264"),
               "\x06\x04"s + static_cast<char>(message.size()) + message + "\x80",
               [](unsigned char type) { return (type & 0x1F) == 1 || (type & 0x1F) == 5; });
  const std::string ofMpeg2 =
      withUnit(media("captions.m2v", std::string(kPicture) + "-c:v mpeg2video"), "\xB2" + captions,
               [](unsigned char type) { return type >= 1 && type <= 0xAF; });
  for (const bool isShort : {true, false}) {
    headers::allowShortcuts(isShort);
    for (const char* name : {"captions.mp4", "captions.mkv", "captions.ts"}) {
      EXPECT_EQ(firstDetails(packed(ofH264, name)).hasClosedCaptions, true) << name << isShort;
      EXPECT_EQ(firstDetails(h264(name)).hasClosedCaptions, false) << name << isShort;
    }
    EXPECT_EQ(firstDetails(packed(ofMpeg2, "captions.ts")).hasClosedCaptions, true);
  }
  headers::allowShortcuts(true);
}

// The stream names an older curve for displays that know nothing else.
TEST(Details, PreferTheTransferThatPicturesPrefer) {
  for (const char* name : {"preferred.mp4", "preferred.ts"}) {
    const auto details = firstDetails(
        media(name, std::string(kPicture) + "-pix_fmt yuv420p10le -c:v libx265 -x265-params "
                                            "log-level=none:colorprim=bt2020:transfer=bt2020-10:"
                                            "colormatrix=bt2020nc:atc-sei=18"));
    EXPECT_EQ(details.colours.transfer, "arib-std-b67");
    EXPECT_TRUE(details.isHlg());
    EXPECT_FALSE(details.isPq());
  }
}

TEST(Details, IncludeAttachedFiles) {
  const std::string font = made("font.ttf", "a font", [](const std::string& path) {
    std::ofstream(path) << "no font, but nobody looks";
  });
  const media::Container container =
      detailed(media("font.mkv", std::string(kPicture) + "-attach '" + font +
                                     "' -metadata:s:t mimetype=font/ttf -c:v libx264"));
  ASSERT_EQ(container.streams.size(), 2U);
  EXPECT_EQ(container.streams[1].details->attachment, (media::Attachment{"font.ttf", "font/ttf"}));
  EXPECT_FALSE(container.streams[0].details->attachment);
}

TEST(Details, SayWhetherSubtitlesAreTextOrPictures) {
  const std::string lines = made("lines.srt", "a line", [](const std::string& path) {
    std::ofstream(path) << "1\n00:00:00,000 --> 00:00:01,000\nHello\n";
  });
  const media::Container text = detailed(
      media("text.mkv", std::string("-f lavfi -i testsrc2=s=192x128:r=25:d=1 -i '") + lines +
                            "' -map 0 -map 1 -pix_fmt yuv420p -c:v libx264 -c:s ass"));
  EXPECT_EQ(text.streams[1].details->subtitleKind, media::SubtitleKind::kText);
}

TEST(Details, HoldAThousandChaptersAtMost) {
  const std::string list = made("chapters.txt", "1500", [](const std::string& path) {
    std::ofstream out(path);
    out << ";FFMETADATA1\n";
    for (int i = 0; i < 1500; ++i)
      out << "[CHAPTER]\nTIMEBASE=1/1000\nSTART=" << i << "\nEND=" << i + 1 << "\ntitle=" << i
          << "\n";
  });
  const media::Container container =
      detailed(media("chapters.mkv", std::string("-f lavfi -i testsrc2=s=192x128:r=25:d=2 -i '") +
                                         list + "' -map_metadata 1 -pix_fmt yuv420p -c:v libx264"));
  ASSERT_EQ(container.chapters.size(), media::kMostChapters);
  EXPECT_EQ(container.chapters[999].title, "999");
  EXPECT_DOUBLE_EQ(container.chapters[999].start, 0.999);
}

TEST(Details, HaveCleanTexts) {
  const std::string film = media("texts.mkv", std::string(kPicture) +
                                                  "-c:v libx264 -metadata:s:v title=ABCDEF "
                                                  "-metadata:s:v language=deu");
  const auto broken = firstDetails(test::replaced(film, "ABCDEF", "AB\xFF\xFE\xC3Z"));
  EXPECT_EQ(broken.title, "AB\uFFFD\uFFFD\uFFFDZ");
  const std::string endless =
      media("texts.mkv",
            std::string(kPicture) + "-c:v libx264 -metadata:s:v title=" + std::string(70'000, 'a'));
  EXPECT_EQ(firstDetails(endless).title.size(), kLongestText);
}

// More would not pass from a worker to its host.
TEST(Details, HaveAMebibyteOfTextAtMost) {
  const std::string list = made("titles.txt", "40 long ones", [](const std::string& path) {
    std::ofstream out(path);
    out << ";FFMETADATA1\n";
    for (int i = 0; i < 40; ++i)
      out << "[CHAPTER]\nTIMEBASE=1/1000\nSTART=" << i << "\nEND=" << i + 1
          << "\ntitle=" << std::string(60'000, 'a') << "\n";
  });
  const media::Container container =
      detailed(media("titles.mkv", std::string("-f lavfi -i testsrc2=s=192x128:r=25:d=2 -i '") +
                                       list + "' -map_metadata 1 -pix_fmt yuv420p -c:v libx264"));
  ASSERT_EQ(container.chapters.size(), 40U);
  EXPECT_EQ(container.chapters[16].title.size(), 60'000U);
  EXPECT_EQ(container.chapters[17].title, "");
}

// What phones write.
TEST(Details, AndTagsOfAPhonesFilm) {
  const media::Container container = detailed(media(
      "phone.mov",
      std::string(kPicture) +
          "-c:v libx264 -movflags use_metadata_tags "
          "-metadata com.apple.quicktime.creationdate=2015-06-07T08:09:10+0200 "
          "-metadata com.apple.quicktime.location.ISO6709=+48.8577+002.2950+035.000/ "
          "-metadata com.apple.quicktime.make=Maker -metadata com.apple.quicktime.model=Phone "
          "-metadata com.apple.quicktime.content.identifier=ABC"));
  const media::FilmTags tags = media::filmTagsOf(container);
  EXPECT_EQ(tags.created->offset, 120);
  EXPECT_EQ(tags.position, (media::FilmPosition{48.8577, 2.295, 35}));
  EXPECT_EQ(tags.make, "Maker");
  EXPECT_EQ(tags.contentIdentifier, "ABC");
}

TEST(Details, AndTagsOfTheSameFilmInEveryContainer) {
  for (const char* name : {"tags.mp4", "tags.mkv", "tags.avi", "tags.wmv", "tags.mov"}) {
    SCOPED_TRACE(name);
    const bool isWindows = std::string(name).ends_with("wmv");
    const media::FilmTags tags = media::filmTagsOf(detailed(media(
        name, std::string(kPicture) + (isWindows ? "-c:v wmv2 " : "-c:v mpeg4 ") +
                  "-metadata title=Film -metadata artist=Somebody -metadata genre=Drama "
                  "-metadata comment=Hm -metadata copyright=2015 -metadata date=2015-06-07")));
    EXPECT_EQ(tags.title, "Film");
    EXPECT_EQ(tags.artists, std::vector<std::string>{"Somebody"});
    EXPECT_EQ(tags.genres, std::vector<std::string>{"Drama"});
    EXPECT_EQ(tags.comment, "Hm");
    EXPECT_EQ(tags.copyright, "2015");
    ASSERT_TRUE(tags.date);
    EXPECT_EQ(tags.date->year, 2015);
  }
}

TEST(Details, AndPlacesOfMp4AndPhones) {
  for (const char* name : {"place.mp4", "place.mov", "place.3gp"}) {
    const media::FilmTags tags = media::filmTagsOf(detailed(
        media(name, std::string(kPicture) + "-c:v mpeg4 -metadata location=+48.8577+002.2950/")));
    ASSERT_TRUE(tags.position) << name;
    EXPECT_NEAR(tags.position->latitude, 48.8577, 1e-4) << name;
    EXPECT_NEAR(tags.position->longitude, 2.295, 1e-4) << name;
  }
}

}  // namespace

}  // namespace kolum::ffmpeg
