// What ExifTool, which shares no code with the reader, says about the same files, value by value.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "read/exif/reading.h"
#include "support/child_process.h"
#include "support/exif_builder.h"
#include "support/media_factory.h"

namespace kolum::test {

namespace {

using nlohmann::json;

// The first of these tags that ExifTool found, not counting blank texts.
json firstOf(const json& found, const std::vector<const char*>& names) {
  for (const char* name : names) {
    const auto value = found.find(name);
    if (value == found.end()) continue;
    if (value->is_string() && value->get<std::string>().find_first_not_of(' ') == std::string::npos)
      continue;
    return *value;
  }
  return nullptr;
}

// As a text: ExifTool gives numbers for what looks like one.
std::string textFrom(const json& value) {
  if (value.is_null()) return "";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::vector<std::string> listFrom(const json& value) {
  std::vector<std::string> texts;
  if (value.is_array())
    for (const json& element : value) texts.push_back(textFrom(element));
  else if (!value.is_null())
    texts.push_back(textFrom(value));
  return texts;
}

struct TextRow {
  const char* name;
  std::string media::PhotoTags::*field;
  std::vector<const char*> tags;  // in the order of precedence
};

const std::vector<TextRow> kTexts = {
    {"make", &media::PhotoTags::make, {"IFD0:Make", "XMP-tiff:Make"}},
    {"lensMake", &media::PhotoTags::lensMake, {"ExifIFD:LensMake"}},
    {"lensModel", &media::PhotoTags::lensModel, {"ExifIFD:LensModel"}},
    {"serial", &media::PhotoTags::serial, {"ExifIFD:SerialNumber"}},
    {"lensSerial", &media::PhotoTags::lensSerial, {"ExifIFD:LensSerialNumber"}},
    {"software", &media::PhotoTags::software, {"IFD0:Software", "XMP-xmp:CreatorTool"}},
    {"title", &media::PhotoTags::title, {"XMP-dc:Title", "IPTC:ObjectName"}},
    {"headline", &media::PhotoTags::headline, {"XMP-photoshop:Headline", "IPTC:Headline"}},
    {"description",
     &media::PhotoTags::description,
     {"IFD0:ImageDescription", "XMP-dc:Description", "IPTC:Caption-Abstract",
      "ExifIFD:UserComment"}},
    {"label", &media::PhotoTags::label, {"XMP-xmp:Label"}},
    {"copyright",
     &media::PhotoTags::copyright,
     {"IFD0:Copyright", "XMP-dc:Rights", "IPTC:CopyrightNotice"}},
    {"credit", &media::PhotoTags::credit, {"XMP-photoshop:Credit", "IPTC:Credit"}},
    {"location", &media::PhotoTags::location, {"XMP-iptcCore:Location", "IPTC:Sub-location"}},
    {"city", &media::PhotoTags::city, {"XMP-photoshop:City", "IPTC:City"}},
    {"state", &media::PhotoTags::state, {"XMP-photoshop:State", "IPTC:Province-State"}},
    {"country",
     &media::PhotoTags::country,
     {"XMP-photoshop:Country", "IPTC:Country-PrimaryLocationName"}},
    {"countryCode",
     &media::PhotoTags::countryCode,
     {"XMP-iptcCore:CountryCode", "IPTC:Country-PrimaryLocationCode"}},
};

struct NumberRow {
  const char* name;
  std::optional<double> (*value)(const media::PhotoTags&);
  std::vector<const char*> tags;
};

template <typename Value>
std::optional<double> number(const std::optional<Value>& value, int offset = 0) {
  return value ? std::optional(static_cast<double>(*value) + offset) : std::nullopt;
}

using Tags = media::PhotoTags;

const std::vector<NumberRow> kNumbers = {
    {"exposureTime",
     [](const Tags& t) -> std::optional<double> {
       if (!t.exposureTime) return std::nullopt;
       return static_cast<double>(t.exposureTime->num) / t.exposureTime->den;
     },
     {"ExifIFD:ExposureTime"}},
    {"aperture", [](const Tags& t) { return t.aperture; }, {"ExifIFD:FNumber"}},
    {"iso", [](const Tags& t) { return number(t.iso); }, {"ExifIFD:ISO"}},
    {"bias", [](const Tags& t) { return t.exposureBias; }, {"ExifIFD:ExposureCompensation"}},
    // Exif counts these from 1.
    {"program", [](const Tags& t) { return number(t.program, 1); }, {"ExifIFD:ExposureProgram"}},
    {"metering", [](const Tags& t) { return number(t.metering, 1); }, {"ExifIFD:MeteringMode"}},
    {"whiteBalance",
     [](const Tags& t) { return number(t.whiteBalance); },
     {"ExifIFD:WhiteBalance"}},
    {"focalLength", [](const Tags& t) { return t.focalLength; }, {"ExifIFD:FocalLength"}},
    {"focalLength35",
     [](const Tags& t) { return t.focalLength35; },
     {"ExifIFD:FocalLengthIn35mmFormat"}},
    {"flash",
     [](const Tags& t) -> std::optional<double> {
       return t.flash ? std::optional<double>(t.flash->value) : std::nullopt;
     },
     {"ExifIFD:Flash"}},
    {"latitude",
     [](const Tags& t) -> std::optional<double> {
       return t.position ? std::optional(t.position->latitude) : std::nullopt;
     },
     {"Composite:GPSLatitude", "XMP-exif:GPSLatitude"}},
    {"longitude",
     [](const Tags& t) -> std::optional<double> {
       return t.position ? std::optional(t.position->longitude) : std::nullopt;
     },
     {"Composite:GPSLongitude", "XMP-exif:GPSLongitude"}},
    {"altitude", [](const Tags& t) { return t.altitude; }, {"Composite:GPSAltitude"}},
    {"direction",
     [](const Tags& t) -> std::optional<double> {
       return t.direction ? std::optional(t.direction->degrees) : std::nullopt;
     },
     {"GPS:GPSImgDirection"}},
    {"accuracy", [](const Tags& t) { return t.positionAccuracy; }, {"GPS:GPSHPositioningError"}},
    {"rating", [](const Tags& t) { return number(t.rating); }, {"XMP-xmp:Rating", "IFD0:Rating"}},
};

struct TimeRow {
  const char* name;
  std::optional<media::PhotoTime> media::PhotoTags::*field;
  std::vector<const char*> tags;
};

const std::vector<TimeRow> kTimes = {
    {"taken",
     &media::PhotoTags::taken,
     {"Composite:SubSecDateTimeOriginal", "ExifIFD:DateTimeOriginal", "XMP-photoshop:DateCreated",
      "Composite:DateTimeCreated"}},
    {"digitized",
     &media::PhotoTags::digitized,
     {"Composite:SubSecCreateDate", "ExifIFD:CreateDate", "XMP-xmp:CreateDate"}},
    {"modified",
     &media::PhotoTags::modified,
     {"Composite:SubSecModifyDate", "IFD0:ModifyDate", "XMP-xmp:ModifyDate"}},
};

// "2015:06:07 08:09:10.25+02:00"
std::string textOf(const media::PhotoTime& time) {
  char text[64];
  std::snprintf(text, sizeof text, "%04d:%02d:%02d %02d:%02d:%02d", time.year, time.month, time.day,
                time.hour, time.minute, time.second);
  std::string all = text;
  if (!time.subSecond.empty()) all += "." + time.subSecond;
  if (time.offsetOrigin != media::OffsetOrigin::kStated) return all;
  std::snprintf(text, sizeof text, "%c%02d:%02d", *time.offset < 0 ? '-' : '+',
                std::abs(*time.offset) / 60, std::abs(*time.offset) % 60);
  return all + text;
}

// The keywords that any list has, each once.
std::vector<std::string> keywordsFrom(const json& found) {
  std::vector<std::string> all;
  for (const char* name : {"XMP-dc:Subject", "IPTC:Keywords"})
    for (const std::string& text : listFrom(firstOf(found, {name})))
      if (std::ranges::find(all, text) == all.end()) all.push_back(text);
  return all;
}

void expectSameRegions(const media::PhotoTags& tags, const json& found) {
  const json info = firstOf(found, {"XMP-mwg-rs:RegionInfo"});
  const json list = info.is_null() ? json::array() : info.value("RegionList", json::array());
  ASSERT_EQ(tags.regions.size(), list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    EXPECT_EQ(tags.regions[i].name, textFrom(list[i].value("Name", json())));
    EXPECT_EQ(tags.regions[i].type, textFrom(list[i].value("Type", json())));
    ASSERT_TRUE(tags.regions[i].area);
    EXPECT_NEAR(tags.regions[i].area->centreX, list[i]["Area"]["X"].get<double>(), 1e-9);
    EXPECT_NEAR(tags.regions[i].area->height, list[i]["Area"]["H"].get<double>(), 1e-9);
  }
}

void expectAgreement(const std::string& path) {
  SCOPED_TRACE(path);
  const json found = json::parse(
      mustRun({"exiftool", "-json", "-n", "-a", "-G1", "-struct", "-use", "mwg", path}))[0];
  const auto tags = tagsOfFile(path);
  ASSERT_TRUE(tags);
  for (const TextRow& row : kTexts)
    EXPECT_EQ((*tags).*row.field, textFrom(firstOf(found, row.tags))) << row.name;
  for (const NumberRow& row : kNumbers) {
    const json expected = firstOf(found, row.tags);
    const auto value = row.value(*tags);
    ASSERT_EQ(value.has_value(), expected.is_number()) << row.name << " " << expected;
    if (value) {
      EXPECT_NEAR(*value, expected.get<double>(), 1e-6) << row.name;
    }
  }
  for (const TimeRow& row : kTimes) {
    const auto& time = (*tags).*row.field;
    EXPECT_EQ(time ? textOf(*time) : "", textFrom(firstOf(found, row.tags))) << row.name;
  }
  // The make is not repeated in ours.
  const std::string model = textFrom(firstOf(found, {"IFD0:Model", "XMP-tiff:Model"}));
  EXPECT_TRUE(model.ends_with(tags->model)) << model << " " << tags->model;
  EXPECT_EQ(tags->keywords, keywordsFrom(found));
  EXPECT_EQ(tags->keywordPaths, listFrom(firstOf(found, {"XMP-lr:HierarchicalSubject"})));
  EXPECT_EQ(tags->creators,
            listFrom(firstOf(found, {"IFD0:Artist", "XMP-dc:Creator", "IPTC:By-line"})));
  expectSameRegions(*tags, found);
}

const std::vector<std::string> kExif = {"-EXIF:Make=Canon",
                                        "-EXIF:Model=Canon EOS R5",
                                        "-EXIF:Software=1.2.3",
                                        "-EXIF:ImageDescription=On the Eiger",
                                        "-EXIF:Artist=Ann",
                                        "-EXIF:Copyright=Ann 2015",
                                        "-EXIF:LensMake=Canon",
                                        "-EXIF:LensModel=EF50mm f/1.8 STM",
                                        "-EXIF:LensSerialNumber=00012",
                                        "-EXIF:SerialNumber=A-77",
                                        "-EXIF:DateTimeOriginal=2015:06:07 08:09:10",
                                        "-EXIF:SubSecTimeOriginal=25",
                                        "-EXIF:OffsetTimeOriginal=+02:00",
                                        "-EXIF:CreateDate=2015:06:07 08:09:11",
                                        "-EXIF:ModifyDate=2016:01:02 03:04:05",
                                        "-EXIF:ExposureTime=1/250",
                                        "-EXIF:FNumber=2.8",
                                        "-EXIF:ISO=400",
                                        "-EXIF:ExposureCompensation=-0.66",
                                        "-EXIF:ExposureProgram#=3",
                                        "-EXIF:MeteringMode#=5",
                                        "-EXIF:WhiteBalance#=1",
                                        "-EXIF:FocalLength=50",
                                        "-EXIF:FocalLengthIn35mmFormat=75",
                                        "-EXIF:Flash#=25",
                                        "-EXIF:GPSLatitude=46.5775",
                                        "-EXIF:GPSLatitudeRef=N",
                                        "-EXIF:GPSLongitude=8.0053",
                                        "-EXIF:GPSLongitudeRef=W",
                                        "-EXIF:GPSAltitude=431.2",
                                        "-EXIF:GPSAltitudeRef#=1",
                                        "-EXIF:GPSImgDirection=229.5",
                                        "-EXIF:GPSImgDirectionRef=T",
                                        "-EXIF:GPSHPositioningError=4.8"};

const std::vector<std::string> kXmp = {
    "-XMP-dc:Title=Eiger",
    "-XMP-dc:Description=North face",
    "-XMP-dc:Creator=Ann",
    "-XMP-dc:Creator=Ben",
    "-XMP-dc:Rights=Agency",
    "-XMP-dc:Subject=alps",
    "-XMP-dc:Subject=Schnee \xC3\xBC"
    "ber 3000 m",
    "-XMP-lr:HierarchicalSubject=Places|Alps|Eiger",
    "-XMP-xmp:Rating=4",
    "-XMP-xmp:Label=Red",
    "-XMP-xmp:CreateDate=2014:05:06 07:08:09+01:00",
    "-XMP-xmp:CreatorTool=Editor",
    "-XMP-photoshop:DateCreated=2014:05:06 07:08:09.5-03:30",
    "-XMP-photoshop:Headline=Mountains",
    "-XMP-photoshop:Credit=Agency",
    "-XMP-photoshop:City=Grindelwald",
    "-XMP-photoshop:State=Bern",
    "-XMP-photoshop:Country=Schweiz",
    "-XMP-iptcCore:CountryCode=CH",
    "-XMP-iptcCore:Location=Kleine Scheidegg",
    "-RegionInfo={AppliedToDimensions={W=64,H=48,Unit=pixel},RegionList=[{Area={W=0.25,H=0.5,X=0.3,"
    "Y=0.4,Unit=normalized},Name=Ann,Type=Face},{Area={W=0.1,H=0.1,X=0.7,Y=0.2,Unit=normalized},"
    "Name=Rex,Type=Pet}]}"};

const std::vector<std::string> kIptc = {
    "-IPTC:CodedCharacterSet=UTF8",
    "-IPTC:ObjectName=IPTC title",
    "-IPTC:Headline=IPTC headline",
    "-IPTC:Caption-Abstract=IPTC text",
    "-IPTC:Keywords=snow",
    "-IPTC:Keywords=M\xC3\xBCnchen",
    "-IPTC:By-line=Cid",
    "-IPTC:CopyrightNotice=IPTC rights",
    "-IPTC:Credit=IPTC credit",
    "-IPTC:City=Berne",
    "-IPTC:Sub-location=Old town",
    "-IPTC:Province-State=BE",
    "-IPTC:Country-PrimaryLocationName=Switzerland",
    "-IPTC:Country-PrimaryLocationCode=CHE",
};

using Arguments = std::vector<std::string>;

Arguments operator+(Arguments a, const Arguments& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// A copy of the picture at PATH with what ExifTool writes into it.
std::string tagged(const std::string& path, const Arguments& arguments) {
  std::string recipe = path;
  for (const std::string& argument : arguments) recipe += '\n' + argument;
  return made(std::filesystem::path(path).filename(), recipe, [&](const std::string& copy) {
    mustRun(Arguments{"exiftool", "-q", "-m", "-o", copy} + arguments + Arguments{path});
  });
}

std::string picture(const char* name) {
  return media(name, "-f lavfi -i testsrc2=s=64x48 -frames:v 1");
}

struct PictureCase {
  const char* name;
  bool takesIptc;
};

void PrintTo(const PictureCase& row, std::ostream* out) {
  *out << row.name;
}

class ExifToolAgreement : public testing::TestWithParam<PictureCase> {};

TEST_P(ExifToolAgreement, HoldsForExif) {
  expectAgreement(tagged(picture(GetParam().name), kExif));
}

TEST_P(ExifToolAgreement, HoldsForXmp) {
  expectAgreement(tagged(picture(GetParam().name), kXmp));
}

TEST_P(ExifToolAgreement, HoldsForEverything) {
  const Arguments iptc = GetParam().takesIptc ? kIptc : Arguments{};
  expectAgreement(tagged(picture(GetParam().name), kExif + kXmp + iptc));
}

std::string caseName(const testing::TestParamInfo<PictureCase>& row) {
  std::string name = row.param.name;
  std::ranges::replace(name, '.', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Pictures, ExifToolAgreement,
                         testing::Values(PictureCase{"photo.jpg", true},
                                         PictureCase{"photo.tif", true},
                                         PictureCase{"photo.png", false},
                                         PictureCase{"photo.avif", false},
                                         PictureCase{"photo.jxl", false}),
                         caseName);

TEST(ExifToolAgreementOfParts, HoldsForIptc) {
  expectAgreement(tagged(picture("photo.jpg"), kIptc));
  expectAgreement(tagged(picture("photo.tif"), kIptc));
}

// ExifTool puts what is too long for a segment of a JPEG file into further ones.
TEST(ExifToolAgreementOfParts, HoldsForExtendedXmp) {
  const std::string path =
      tagged(picture("photo.jpg"),
             kXmp + Arguments{"-XMP-dc:Description=" + std::string(50'000, 'a'),
                              "-XMP-photoshop:Headline=" + std::string(40'000, 'b')});
  EXPECT_NE(mustRun({"cat", path}).find("http://ns.adobe.com/xmp/extension/"), std::string::npos);
  expectAgreement(path);
}

TEST(ExifToolAgreementOfParts, HoldsForGif) {
  expectAgreement(tagged(picture("photo.gif"), kXmp));
}

TEST(ExifToolAgreementOfParts, HoldsForBigEndianExif) {
  expectAgreement(tagged(picture("photo.jpg"), Arguments{"-ExifByteOrder=MM"} + kExif));
}

// A raw file, as ExifTool changes it: it moves the directories.
TEST(ExifToolAgreementOfParts, HoldsForRawFiles) {
  const ExifDirectory main = {exifLong(0x00FE, 0),      exifLong(0x0100, 6016),
                              exifLong(0x0101, 4016),   exifShort(0x0103, 1),
                              exifShort(0x0106, 32803), exifLong(0x0111, 8),
                              exifLong(0x0117, 4)};
  const ExifDirectory first = {exifLong(0x00FE, 1),   exifLong(0x0100, 160),
                               exifLong(0x0101, 120), exifLong(0x0111, 8),
                               exifLong(0x0117, 4),   exifDirectories(0x014A, {main})};
  const TempDir folder;
  for (const char* name : {"photo.nef", "photo.dng", "photo.arw", "photo.pef", "photo.srw"}) {
    const std::string path = folder.write(name, exifStructure({first}));
    const std::string copy = folder.path(std::string("tagged") + name);
    mustRun(Arguments{"exiftool", "-q", "-m", "-o", copy} + kExif + Arguments{path});
    expectAgreement(copy);
    const auto tags = tagsOfFile(copy);
    ASSERT_TRUE(tags && tags->storedSize) << name;
    EXPECT_EQ(tags->storedSize->width, 6016) << name;
  }
}

// ExifTool of Debian 12 writes no WebP files, so its tags are put there.
TEST(ExifToolAgreementOfParts, HoldsForWebp) {
  const std::string jpeg = tagged(picture("photo.jpg"), kExif + kXmp);
  const TempDir folder;
  expectAgreement(
      folder.write("photo.webp", webpPhoto({.exif = mustRun({"exiftool", "-b", "-Exif", jpeg}),
                                            .xmp = mustRun({"exiftool", "-b", "-XMP", jpeg})})));
}

TEST(ExifToolAgreementOfParts, HoldsForHeif) {
  const TempDir folder;
  const std::string path = folder.write(
      "photo.heic",
      heifPhoto({.exif = exifStructure({{exifText(0x010F, "A")}}), .xmp = xmpDocument("")}));
  expectAgreement(path);
}

}  // namespace

}  // namespace kolum::test
