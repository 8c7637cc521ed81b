#include "read/exif/photo_tags.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "read/exif/reading.h"
#include "support/exif_builder.h"
#include "support/hostile_bytes.h"
#include "support/mp4_builder.h"
#include "support/picture_builder.h"

namespace kolum::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

media::PhotoTags tagsOfBlocks(const PhotoBlocks& blocks) {
  const auto tags = tagsOf(jpegPhoto(blocks));
  EXPECT_TRUE(tags);
  return tags.value_or(media::PhotoTags{});
}

media::PhotoTags tagsOfExif(const ExifDirectory& main, const ExifDirectory& exif = {},
                            const ExifDirectory& gps = {}) {
  return tagsOfBlocks({.exif = exifStructure({photoDirectory(main, exif, gps)})});
}

media::PhotoTags tagsOfXmp(const std::string& children) {
  return tagsOfBlocks({.xmp = xmpDocument(children)});
}

std::string utf16(const std::string& ascii) {
  std::string text;
  for (const char c : ascii + '\0') text += {c, '\0'};
  return text;
}

ExifTag windowsText(unsigned tag, const std::string& text) {
  return {.tag = tag, .type = ExifType::kByte, .text = utf16(text)};
}

// --- When

TEST(PhotoTags, SayWhenAPhotoWasTaken) {
  const auto tags =
      tagsOfExif({exifText(0x0132, "2016:01:02 03:04:05")},
                 {exifText(0x9003, "2015:06:07 08:09:10"), exifText(0x9291, "25"),
                  exifText(0x9011, "+02:00"), exifText(0x9004, "2015:06:08 00:00:00")});
  ASSERT_TRUE(tags.taken && tags.digitized && tags.modified);
  EXPECT_EQ(tags.taken->subSecond, "25");
  EXPECT_EQ(tags.taken->offset, 120);
  EXPECT_EQ(tags.taken->offsetOrigin, media::OffsetOrigin::kStated);
  EXPECT_EQ(tags.digitized->day, 8);
  EXPECT_EQ(tags.digitized->offset, 120);
  EXPECT_EQ(tags.digitized->offsetOrigin, media::OffsetOrigin::kOtherTime);
  EXPECT_EQ(tags.modified->year, 2016);
  EXPECT_FALSE(tags.modified->offset);
}

ExifDirectory gpsAt(int hour, int minute) {
  return {exifRational(0x0007, {hour, 1, minute, 1, 0, 1}), exifText(0x001D, "2015:06:07")};
}

TEST(PhotoTags, TakeTheOffsetFromGpsTime) {
  const ExifDirectory exif = {exifText(0x9003, "2015:06:07 08:09:10")};
  auto tags = tagsOfExif({}, exif, gpsAt(6, 9));
  EXPECT_EQ(tags.taken->offset, 120);
  EXPECT_EQ(tags.taken->offsetOrigin, media::OffsetOrigin::kGps);
  EXPECT_EQ(tags.gpsTime->hour, 6);
  EXPECT_EQ(tags.gpsTime->offset, 0);
  tags = tagsOfExif({}, exif, gpsAt(6, 20));
  EXPECT_FALSE(tags.taken->offset);
  EXPECT_EQ(tags.taken->offsetOrigin, media::OffsetOrigin::kNone);
  EXPECT_FALSE(tagsOfExif({}, exif, gpsAt(25, 0)).gpsTime);
}

// Little-endian, with offsets from the beginning of the structure.
TEST(PhotoTags, TakeTheOffsetFromCanonsNotes) {
  const ExifDirectory notes = {
      {.tag = 0x0035, .type = ExifType::kSignedLong, .numbers = {16, 540, 0, 60}}};
  const auto tags = tagsOf(
      canonRaw3({exifText(0x010F, "Canon")}, {exifText(0x9003, "2015:06:07 08:09:10")}, notes, {}),
      "photo.cr3");
  ASSERT_TRUE(tags && tags->taken);
  EXPECT_EQ(tags->taken->offset, 600);
  EXPECT_EQ(tags->taken->offsetOrigin, media::OffsetOrigin::kMakerNote);
}

TEST(PhotoTags, TakeTimesFromXmpAndIptc) {
  const std::string xmp =
      xmpDocument("<photoshop:DateCreated>2014-05-06T07:08:09+01:00</photoshop:DateCreated>");
  const std::string iptc = iptcDatasets({{55, "20130405"}, {60, "060708+0100"}});
  EXPECT_EQ(tagsOfBlocks({.xmp = xmp, .iptc = iptc}).taken->year, 2014);
  const auto tags = tagsOfBlocks({.iptc = iptc});
  ASSERT_TRUE(tags.taken);
  EXPECT_EQ(tags.taken->year, 2013);
  EXPECT_EQ(tags.taken->second, 8);
  EXPECT_EQ(tags.taken->offset, 60);
}

// --- With what, and how

TEST(PhotoTags, NameTheCamera) {
  const auto tags = tagsOfExif(
      {exifText(0x010F, "Canon   "), exifText(0x0110, "Canon EOS 5D"), exifText(0x0131, "1.0")},
      {exifText(0xA431, "123"), exifText(0xA433, "Canon"), exifText(0xA434, "EF50mm f/1.8"),
       exifText(0xA435, "456")});
  EXPECT_EQ(tags.make, "Canon");
  EXPECT_EQ(tags.model, "EOS 5D");
  EXPECT_EQ(tags.software, "1.0");
  EXPECT_EQ(tags.serial, "123");
  EXPECT_EQ(tags.lensMake, "Canon");
  EXPECT_EQ(tags.lensModel, "EF50mm f/1.8");
  EXPECT_EQ(tags.lensSerial, "456");
}

TEST(PhotoTags, NameTheMakeOnce) {
  const auto model = [](const char* make, const char* text) {
    return tagsOfExif({exifText(0x010F, make), exifText(0x0110, text)}).model;
  };
  EXPECT_EQ(model("NIKON CORPORATION", "NIKON D850"), "D850");
  EXPECT_EQ(model("Apple", "iPhone 6"), "iPhone 6");
  EXPECT_EQ(model("Canon", "Canon"), "Canon");
  EXPECT_EQ(model("Canon", "Canonet"), "Canonet");
  EXPECT_EQ(model("", "A"), "A");
}

std::string nikonNotes(const ExifDirectory& directory) {
  return std::string("Nikon\0\2\x10\0\0", 10) + exifStructure({directory}, true);
}

// Seven numbers in the lens's data and one beside it identify a lens.
TEST(PhotoTags, NameTheLensFromTheCamerasNotes) {
  const auto lensOf = [](char number) {
    const std::string data =
        "0100" + zeros(2) + number + std::string("\x58\x50\x50\x14\x14\x05", 6);
    const ExifDirectory notes = {exifBytes(0x0001, "0210"),
                                 {.tag = 0x0083, .type = ExifType::kByte, .text = zeros(1)},
                                 exifBytes(0x0098, data)};
    return tagsOfExif({exifText(0x010F, "NIKON CORPORATION")},
                      {exifBytes(0x927C, nikonNotes(notes))})
        .lensModel;
  };
  EXPECT_EQ(lensOf('\x01'), "Nikon AF Nikkor 50mm f/1.8");
  // No lens has it.
  EXPECT_EQ(lensOf('\x77'), "");
}

TEST(PhotoTags, SayHowAPhotoWasTaken) {
  const auto tags = tagsOfExif(
      {}, {exifRational(0x829A, {1, 250}), exifRational(0x829D, {28, 10}), exifShort(0x8822, 3),
           exifShort(0x8827, 400), exifSignedRational(0x9204, -2, 3), exifShort(0x9207, 5),
           exifShort(0x9209, 25), exifRational(0x920A, {500, 10}), exifShort(0xA403, 1),
           exifShort(0xA405, 75)});
  EXPECT_EQ(tags.exposureTime, (media::Rational{1, 250}));
  EXPECT_DOUBLE_EQ(tags.aperture.value(), 2.8);
  EXPECT_EQ(tags.program, media::ExposureProgram::kAperturePriority);
  EXPECT_EQ(tags.iso, 400);
  EXPECT_DOUBLE_EQ(tags.exposureBias.value(), -2.0 / 3);
  EXPECT_EQ(tags.metering, media::Metering::kPattern);
  EXPECT_TRUE(tags.flash->hasFired);
  EXPECT_EQ(tags.flash->value, 25);
  EXPECT_EQ(tags.focalLength, 50);
  EXPECT_EQ(tags.whiteBalance, media::WhiteBalance::kManual);
  EXPECT_EQ(tags.focalLength35, 75);
}

TEST(PhotoTags, LeaveAbsurdNumbersOut) {
  const auto tags = tagsOfExif(
      {exifShort(0x4746, 9)},
      {exifRational(0x829A, {0, 250}), exifRational(0x829D, {1, 0}), exifShort(0x8822, 0),
       exifShort(0x8827, 0), exifSignedRational(0x9204, 1, 0), exifShort(0x9207, 99),
       exifRational(0x920A, {0, 1}), exifShort(0xA403, 7), exifShort(0xA405, 0)});
  EXPECT_FALSE(tags.exposureTime || tags.aperture || tags.program || tags.iso ||
               tags.exposureBias || tags.metering || tags.focalLength || tags.whiteBalance ||
               tags.focalLength35 || tags.rating);
  EXPECT_FALSE(tagsOfExif({}, {exifRational(0x829A, {4294967295, 1})}).exposureTime);
  EXPECT_FALSE(tagsOfExif({}, {exifRational(0x829A, {1, 4294967295})}).exposureTime);
}

TEST(PhotoTags, TakeLargeIsoFromItsLargerField) {
  EXPECT_EQ(tagsOfExif({}, {exifShort(0x8827, 65535), exifLong(0x8832, 102400)}).iso, 102400);
}

// --- The picture

TEST(PhotoTags, SayHowToTurnThePicture) {
  struct Case {
    int value;
    int degrees;
    bool isMirrored;
  };
  for (const Case& row :
       {Case{1, 0, false}, Case{2, 0, true}, Case{3, 180, false}, Case{4, 180, true},
        Case{5, 270, true}, Case{6, 90, false}, Case{7, 90, true}, Case{8, 270, false}}) {
    const auto orientation = tagsOfExif({exifShort(0x0112, row.value)}).orientation;
    ASSERT_TRUE(orientation) << row.value;
    EXPECT_EQ(orientation->value, row.value);
    EXPECT_EQ(orientation->degrees, row.degrees) << row.value;
    EXPECT_EQ(orientation->isMirrored, row.isMirrored) << row.value;
  }
  EXPECT_FALSE(tagsOfExif({exifShort(0x0112, 0)}).orientation);
  EXPECT_FALSE(tagsOfExif({exifShort(0x0112, 9)}).orientation);
}

std::string iccProfile(const std::string& tag) {
  return zeros(128) + big32(1) + "desc" + big32(144) + big32(tag.size()) + tag;
}

std::string jpegWithProfile(const std::string& profile) {
  return jpeg(jpegSegment(0xE2, std::string("ICC_PROFILE\0\1\1", 14) + profile) + jpegFrame({}));
}

TEST(PhotoTags, NameTheColourProfile) {
  const std::string old = "desc" + big32(0) + big32(5) + std::string("sP3C\0", 5);
  EXPECT_EQ(tagsOf(jpegWithProfile(iccProfile(old)))->colourProfile, "sP3C");
  const std::string text(
      "\0P\0"
      "3",
      4);
  const std::string localized =
      "mluc" + big32(0) + big32(1) + big32(12) + "enUS" + big32(4) + big32(28) + text;
  EXPECT_EQ(tagsOf(jpegWithProfile(iccProfile(localized)))->colourProfile, "P3");
  EXPECT_EQ(tagsOfExif({}, {exifShort(0xA001, 1)}).colourProfile, "sRGB");
  EXPECT_EQ(tagsOfExif({}, {exifShort(0xA001, 65535),
                            exifDirectories(0xA005, {{exifText(0x0001, "R03")}})})
                .colourProfile,
            "Adobe RGB");
  EXPECT_EQ(tagsOfExif({}, {exifShort(0xA001, 65535)}).colourProfile, "");
}

// --- Where

ExifDirectory gpsPosition(const std::string& ns, std::vector<std::int64_t> latitude,
                          const std::string& ew, std::vector<std::int64_t> longitude) {
  return {exifText(1, ns), exifRational(2, std::move(latitude)), exifText(3, ew),
          exifRational(4, std::move(longitude))};
}

TEST(PhotoTags, SayWhereAPhotoWasTaken) {
  ExifDirectory gps = gpsPosition("S", {33, 1, 51, 1, 2424, 100}, "E", {151, 1, 1254, 100, 0, 1});
  gps.push_back({.tag = 5, .type = ExifType::kByte, .text = "\1"});
  gps.push_back(exifRational(6, {25, 2}));
  gps.push_back(exifText(0x10, "M"));
  gps.push_back(exifRational(0x11, {2295, 10}));
  gps.push_back(exifRational(0x1F, {48, 10}));
  const auto tags = tagsOfExif({}, {}, gps);
  ASSERT_TRUE(tags.position && tags.altitude && tags.direction && tags.positionAccuracy);
  EXPECT_NEAR(tags.position->latitude, -33.8567333, 1e-6);
  EXPECT_NEAR(tags.position->longitude, 151.209, 1e-6);
  EXPECT_DOUBLE_EQ(*tags.altitude, -12.5);
  EXPECT_DOUBLE_EQ(tags.direction->degrees, 229.5);
  EXPECT_EQ(tags.direction->north, media::North::kMagnetic);
  EXPECT_DOUBLE_EQ(*tags.positionAccuracy, 4.8);
}

TEST(PhotoTags, LeaveAbsurdPositionsOut) {
  EXPECT_FALSE(tagsOfExif({}, {}, gpsPosition("N", {200, 1}, "E", {10, 1})).position);
  EXPECT_FALSE(tagsOfExif({}, {}, gpsPosition("N", {20, 1}, "E", {181, 1})).position);
  EXPECT_FALSE(tagsOfExif({}, {}, gpsPosition("N", {0, 0}, "E", {0, 0})).position);
  EXPECT_FALSE(tagsOfExif({}, {}, gpsPosition("", {20, 1}, "", {10, 1})).position);
  EXPECT_FALSE(tagsOfExif({}, {}, gpsPosition("N", {20, 1, 90, 1}, "E", {10, 1})).position);
  EXPECT_FALSE(tagsOfExif({}, {}, {exifRational(0x11, {361, 1})}).direction);
  EXPECT_FALSE(tagsOfExif({}, {}, {exifRational(6, {4294967295, 1})}).altitude);
}

TEST(PhotoTags, TakeThePositionFromXmp) {
  const auto tags = tagsOfXmp(
      "<exif:GPSLatitude>51,30.5S</exif:GPSLatitude>"
      "<exif:GPSLongitude>0,30,36W</exif:GPSLongitude>");
  ASSERT_TRUE(tags.position);
  EXPECT_NEAR(tags.position->latitude, -51.508333, 1e-6);
  EXPECT_NEAR(tags.position->longitude, -0.51, 1e-6);
}

TEST(PhotoTags, NamePlaces) {
  const std::string xmp =
      xmpDocument("<photoshop:City>Bern</photoshop:City><photoshop:State> </photoshop:State>");
  const std::string iptc =
      iptcDatasets({{90, "Berne"}, {95, "BE"}, {101, "Schweiz"}, {100, "CHE"}});
  const auto tags = tagsOfBlocks({.xmp = xmp, .iptc = iptc});
  EXPECT_EQ(tags.city, "Bern");
  EXPECT_EQ(tags.state, "BE");
  EXPECT_EQ(tags.country, "Schweiz");
  EXPECT_EQ(tags.countryCode, "CHE");
}

// --- Words

const std::string kWords = xmpDocument(
    xmpList("dc:title", "Alt", {"XMP title"}) + xmpList("dc:description", "Alt", {"XMP text"}) +
    xmpList("dc:subject", "Bag", {"alps", "snow"}) + xmpList("dc:creator", "Seq", {"Ann", "Ben"}) +
    xmpList("dc:rights", "Alt", {"XMP rights"}) + "<xmp:Rating>4</xmp:Rating>" +
    "<xmp:Label>Red</xmp:Label><photoshop:Credit>Agency</photoshop:Credit>" +
    xmpList("lr:hierarchicalSubject", "Bag", {"Places|Alps", "alps"}));
const std::string kIptcWords = iptcDatasets({{5, "IPTC title"},
                                             {25, "snow"},
                                             {25, "ski"},
                                             {80, "Cid"},
                                             {116, "IPTC rights"},
                                             {120, "IPTC text"}});

TEST(PhotoTags, HaveTheWordsOfXmp) {
  const auto tags = tagsOfBlocks({.xmp = kWords, .iptc = kIptcWords});
  EXPECT_EQ(tags.title, "XMP title");
  EXPECT_EQ(tags.description, "XMP text");
  EXPECT_THAT(tags.keywords, ElementsAre("alps", "snow", "ski"));
  EXPECT_THAT(tags.keywordPaths, ElementsAre("Places|Alps"));
  EXPECT_THAT(tags.creators, ElementsAre("Ann", "Ben"));
  EXPECT_EQ(tags.copyright, "XMP rights");
  EXPECT_EQ(tags.rating, 4);
  EXPECT_EQ(tags.label, "Red");
  EXPECT_EQ(tags.credit, "Agency");
}

TEST(PhotoTags, HaveTheWordsOfIptcIfThereIsNoXmp) {
  const auto tags = tagsOfBlocks({.iptc = kIptcWords});
  EXPECT_EQ(tags.title, "IPTC title");
  EXPECT_EQ(tags.description, "IPTC text");
  EXPECT_THAT(tags.keywords, ElementsAre("snow", "ski"));
  EXPECT_THAT(tags.creators, ElementsAre("Cid"));
  EXPECT_EQ(tags.copyright, "IPTC rights");
}

TEST(PhotoTags, PreferTheWordsOfExif) {
  const std::string exif = exifStructure(
      {{exifText(0x010E, "Exif text"),
        exifText(0x013B, "Dan; Eve"),
        {.tag = 0x8298, .type = ExifType::kAscii, .text = std::string("Dan\0Press\0", 10)}}});
  const auto tags = tagsOfBlocks({.exif = exif, .xmp = kWords, .iptc = kIptcWords});
  EXPECT_EQ(tags.description, "Exif text");
  EXPECT_THAT(tags.creators, ElementsAre("Dan", "Eve"));
  EXPECT_EQ(tags.copyright, "Dan; Press");
}

TEST(PhotoTags, TakeBlankWordsForNone) {
  const std::string exif = exifStructure({{exifText(0x010E, "      "), exifText(0x013B, "  ")}});
  const auto tags = tagsOfBlocks({.exif = exif, .xmp = kWords});
  EXPECT_EQ(tags.description, "XMP text");
  EXPECT_THAT(tags.creators, ElementsAre("Ann", "Ben"));
}

TEST(PhotoTags, HaveTheWordsOfWindows) {
  const auto tags = tagsOfExif({exifShort(0x4746, 3), windowsText(0x9C9B, "Title"),
                                windowsText(0x9C9C, "Comment"), windowsText(0x9C9D, "Ann;Ben"),
                                windowsText(0x9C9E, "alps; snow")});
  EXPECT_EQ(tags.title, "Title");
  EXPECT_EQ(tags.description, "Comment");
  EXPECT_THAT(tags.creators, ElementsAre("Ann", "Ben"));
  EXPECT_THAT(tags.keywords, ElementsAre("alps", "snow"));
  EXPECT_EQ(tags.rating, 3);
}

TEST(PhotoTags, HaveTheUsersCommentInItsEncoding) {
  const auto comment = [](const std::string& bytes, bool isBigEndian = false) {
    const ExifDirectory exif = {exifBytes(0x9286, bytes)};
    return tagsOf(jpegPhoto({.exif = exifStructure({photoDirectory({}, exif)}, isBigEndian)}))
        ->description;
  };
  EXPECT_EQ(comment(std::string("ASCII\0\0\0words  ", 15)), "words");
  EXPECT_EQ(comment(std::string("UNICODE\0", 8) + utf16("words")), "words");
  EXPECT_EQ(comment(std::string("UNICODE\0\0w\0s", 12), true), "ws");
  EXPECT_EQ(comment(std::string("JIS\0\0\0\0\0words", 13)), "");
}

TEST(PhotoTags, KnowRejectedPhotos) {
  EXPECT_EQ(tagsOfXmp("<xmp:Rating>-1</xmp:Rating>").rating, -1);
  EXPECT_EQ(tagsOfXmp("<xmp:Rating>0</xmp:Rating>").rating, 0);
  EXPECT_FALSE(tagsOfXmp("<xmp:Rating>99</xmp:Rating>").rating);
  EXPECT_FALSE(tagsOfXmp("<xmp:Rating>nan</xmp:Rating>").rating);
  EXPECT_FALSE(tagsOfXmp("<xmp:Rating>1e999</xmp:Rating>").rating);
}

std::string workingGroupRegion(const std::string& name, const std::string& area) {
  return "<rdf:li rdf:parseType='Resource'><mwg-rs:Name>" + name +
         "</mwg-rs:Name><mwg-rs:Type>Face</mwg-rs:Type><mwg-rs:Area " + area + "/></rdf:li>";
}

TEST(PhotoTags, NamePeople) {
  const auto tags = tagsOfXmp(
      "<mwg-rs:Regions rdf:parseType='Resource'><mwg-rs:RegionList><rdf:Bag>" +
      workingGroupRegion("Ann",
                         "stArea:x='0.5' stArea:y='0.25' stArea:w='0.1' stArea:h='0.2' "
                         "stArea:unit='normalized'") +
      workingGroupRegion("Ben", "stArea:x='5' stArea:y='0.25' stArea:w='0.1' stArea:h='0.2'") +
      "</rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>");
  ASSERT_EQ(tags.regions.size(), 2U);
  EXPECT_EQ(tags.regions[0].name, "Ann");
  EXPECT_EQ(tags.regions[0].type, "Face");
  ASSERT_TRUE(tags.regions[0].area);
  EXPECT_DOUBLE_EQ(tags.regions[0].area->centreX, 0.5);
  EXPECT_DOUBLE_EQ(tags.regions[0].area->height, 0.2);
  EXPECT_EQ(tags.regions[1].name, "Ben");
  EXPECT_FALSE(tags.regions[1].area);
}

TEST(PhotoTags, NamePeopleAsMicrosoftDoes) {
  const auto tags = tagsOfXmp(
      "<MP:RegionInfo rdf:parseType='Resource'><MPRI:Regions><rdf:Bag>"
      "<rdf:li MPReg:PersonDisplayName='Ann' MPReg:Rectangle='0.1, 0.2, 0.4, 0.2'/>"
      "<rdf:li MPReg:PersonDisplayName='Ben'/>"
      "</rdf:Bag></MPRI:Regions></MP:RegionInfo>");
  ASSERT_EQ(tags.regions.size(), 2U);
  EXPECT_EQ(tags.regions[0].name, "Ann");
  ASSERT_TRUE(tags.regions[0].area);
  EXPECT_DOUBLE_EQ(tags.regions[0].area->centreX, 0.3);
  EXPECT_DOUBLE_EQ(tags.regions[0].area->centreY, 0.3);
  EXPECT_EQ(tags.regions[1].name, "Ben");
}

// --- What belongs to it

std::string appleNotes(const std::vector<std::pair<unsigned, std::string>>& texts) {
  std::string entries = std::string("Apple iOS\0\0\1MM", 14) + big16(texts.size());
  std::string values;
  const std::size_t end = entries.size() + texts.size() * 12;
  for (const auto& [tag, text] : texts) {
    entries += big16(tag) + big16(2) + big32(text.size() + 1) + big32(end + values.size());
    values += text + '\0';
  }
  return entries + values;
}

TEST(PhotoTags, KnowBurstsAndLivePhotosOfApple) {
  const auto tags =
      tagsOfExif({exifText(0x010F, "Apple")},
                 {exifBytes(0x927C, appleNotes({{0x000B, "BURST-1"}, {0x0011, "CONTENT-1"}}))});
  EXPECT_EQ(tags.burst, "BURST-1");
  EXPECT_EQ(tags.livePhoto, "CONTENT-1");
}

TEST(PhotoTags, KnowBurstsAndMotionPhotosOfGoogle) {
  auto tags = tagsOfXmp(
      "<GCamera:BurstID>b1</GCamera:BurstID>"
      "<GCamera:MicroVideoOffset>12345</GCamera:MicroVideoOffset>");
  EXPECT_EQ(tags.burst, "b1");
  EXPECT_EQ(tags.motionPhoto, 12345);
  const auto item = [](const char* semantic, const char* length) {
    return std::string("<rdf:li rdf:parseType='Resource'><Container:Item Item:Semantic='") +
           semantic + "' Item:Length='" + length + "'/></rdf:li>";
  };
  tags = tagsOfXmp("<Container:Directory><rdf:Seq>" + item("Primary", "0") +
                   item("MotionPhoto", "1000") + item("Depth", "24") +
                   "</rdf:Seq></Container:Directory>");
  EXPECT_EQ(tags.motionPhoto, 1024);
  EXPECT_FALSE(tagsOfXmp("<GCamera:MicroVideoOffset>-5</GCamera:MicroVideoOffset>").motionPhoto);
}

TEST(PhotoTags, AreEmptyIfAPhotoSaysNothing) {
  const auto tags = tagsOf(jpegPhoto({}));
  ASSERT_TRUE(tags);
  EXPECT_FALSE(tags->taken || tags->orientation || tags->position || tags->rating);
  EXPECT_THAT(tags->keywords, IsEmpty());
  EXPECT_EQ(tags->make, "");
}

TEST(PhotoTags, AreUnknownForOtherFiles) {
  EXPECT_FALSE(tagsOf(""));
  EXPECT_FALSE(tagsOf("text"));
  EXPECT_FALSE(tagsOf(ftyp("isom"), "film.mp4"));
}

}  // namespace

}  // namespace kolum::test
