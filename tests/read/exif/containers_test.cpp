// The same tags, whatever file they are in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "read/exif/reading.h"
#include "support/exif_builder.h"
#include "support/hostile_bytes.h"
#include "support/mp4_builder.h"
#include "support/picture_builder.h"

namespace kolum::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kExif = exifStructure(
    {photoDirectory({exifText(0x010F, "Canon"), exifShort(0x0112, 6)}, {exifShort(0x8827, 400)})});
const std::string kXmp = xmpDocument(xmpList("dc:subject", "Bag", {"alps", "snow"}));
const PhotoBlocks kBlocks = {.exif = kExif, .xmp = kXmp, .iptc = {}};

struct Container {
  const char* name;
  std::string content;
};

void PrintTo(const Container& container, std::ostream* out) {
  *out << container.name;
}

class PhotoContainer : public testing::TestWithParam<Container> {};

TEST_P(PhotoContainer, HoldsExifAndXmp) {
  const auto tags = tagsOf(GetParam().content, GetParam().name);
  ASSERT_TRUE(tags);
  EXPECT_EQ(tags->make, "Canon");
  EXPECT_EQ(tags->iso, 400);
  EXPECT_THAT(tags->keywords, ElementsAre("alps", "snow"));
}

std::string tiffWithXmp(bool isBigEndian) {
  return exifStructure({photoDirectory({exifText(0x010F, "Canon"), exifBytes(0x02BC, kXmp)},
                                       {exifShort(0x8827, 400)})},
                       isBigEndian);
}

std::string pngWithHexadecimals() {
  constexpr char kDigits[] = "0123456789abcdef";
  const std::string exif = std::string("Exif\0\0", 6) + kExif;
  std::string text = "\nexif\n" + std::to_string(exif.size()) + "\n";
  for (std::size_t i = 0; i < exif.size(); ++i) {
    const auto byte = static_cast<unsigned char>(exif[i]);
    text += {kDigits[byte >> 4], kDigits[byte & 15]};
    if (i % 36 == 35) text += '\n';
  }
  return png({},
             pngChunk("zTXt", std::string("Raw profile type exif\0\0", 23) + deflated(text)) +
                 pngChunk("iTXt", std::string("XML:com.adobe.xmp\0\1\0\0\0", 22) + deflated(kXmp)));
}

std::string canonFile() {
  return canonRaw3({exifText(0x010F, "Canon")}, {exifShort(0x8827, 400)}, {}, {}, kXmp);
}

std::string testName(const testing::TestParamInfo<Container>& row) {
  std::string name = row.param.name;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(
    All, PhotoContainer,
    testing::Values(Container{"photo.jpg", jpegPhoto(kBlocks)},
                    Container{"photo.png", pngPhoto(kBlocks)},
                    Container{"old.png", pngWithHexadecimals()},
                    Container{"photo.webp", webpPhoto(kBlocks)},
                    Container{"photo.jxl", jpegXlPhoto(kBlocks)},
                    Container{"compressed.jxl", compressedJpegXlPhoto(kBlocks)},
                    Container{"photo.heic", heifPhoto(kBlocks)},
                    Container{"inside.heic", heifPhoto(kBlocks, {.isInMetaBox = true})},
                    Container{"photo.avif", heifPhoto(kBlocks, {.brand = "avif"})},
                    Container{"little.tif", tiffWithXmp(false)},
                    Container{"big.tif", tiffWithXmp(true)}, Container{"photo.cr3", canonFile()},
                    Container{"photo.raf", fujifilmRaw(jpegPhoto(kBlocks), 60, 40)}),
    testName);

TEST(GifContainer, HoldsXmp) {
  const auto tags = tagsOf(gifPhoto(kXmp), "photo.gif");
  ASSERT_TRUE(tags);
  EXPECT_THAT(tags->keywords, ElementsAre("alps", "snow"));
}

// --- Extended XMP

const std::string kGuid = "0123456789ABCDEF0123456789ABCDEF";
const std::string kExtended =
    xmpDocument(xmpList("dc:subject", "Bag", {"ski"}) + "<dc:title>Eiger</dc:title>");

// That of all these parts, given from where to where they go, and of the first packet.
media::PhotoTags tagsOfExtended(const std::vector<std::pair<std::size_t, std::size_t>>& parts,
                                const std::string& guid = kGuid,
                                const std::string& extended = kExtended) {
  std::string segments;
  for (const auto& [begin, end] : parts)
    segments +=
        extendedXmpSegment(guid, extended.size(), begin, extended.substr(begin, end - begin));
  const std::string xmp = xmpDocument(xmpList("dc:subject", "Bag", {"alps"}) +
                                      "<n:HasExtendedXMP xmlns:n='http://ns.adobe.com/xmp/note/'>" +
                                      kGuid + "</n:HasExtendedXMP>");
  const auto behind = tagsOf(jpegPhoto({.xmp = xmp, .segments = segments}));
  const auto before = tagsOf(jpeg(segments + jpegPhoto({.xmp = xmp}).substr(2)));
  EXPECT_TRUE(before && behind);
  EXPECT_EQ(before->title, behind->title);
  return behind.value_or(media::PhotoTags{});
}

TEST(ExtendedXmp, CountsWhereTheFirstPacketSaysNothing) {
  const auto tags = tagsOfExtended({{500, kExtended.size()}, {0, 200}, {200, 500}});
  EXPECT_EQ(tags.title, "Eiger");
  EXPECT_THAT(tags.keywords, ElementsAre("alps"));
}

TEST(ExtendedXmp, IsLeftOutIfItIsNotWhole) {
  EXPECT_EQ(tagsOfExtended({{0, kExtended.size()}}).title, "Eiger");
  EXPECT_EQ(tagsOfExtended({{0, 500}}).title, "");
  EXPECT_EQ(tagsOfExtended({{200, kExtended.size()}}).title, "");
  EXPECT_EQ(tagsOfExtended({{0, 300}, {200, kExtended.size()}}).title, "");
  EXPECT_EQ(tagsOfExtended({{0, 200}, {300, kExtended.size()}}).title, "");
  EXPECT_EQ(tagsOfExtended({}).title, "");
}

TEST(ExtendedXmp, IsThatWhichTheFirstPacketNames) {
  EXPECT_EQ(tagsOfExtended({{0, kExtended.size()}}, std::string(32, 'A')).title, "");
  const auto unnamed = tagsOf(jpegPhoto(
      {.xmp = kXmp, .segments = extendedXmpSegment(kGuid, kExtended.size(), 0, kExtended)}));
  ASSERT_TRUE(unnamed);
  EXPECT_EQ(unnamed->title, "");
}

TEST(ExtendedXmp, HasALimit) {
  constexpr std::size_t kPart = 60'000;
  const auto titleWith = [](std::size_t size) {
    const std::string extended = kExtended + std::string(size - kExtended.size(), ' ');
    std::vector<std::pair<std::size_t, std::size_t>> parts;
    for (std::size_t begin = 0; begin < size; begin += kPart)
      parts.emplace_back(begin, std::min(begin + kPart, size));
    return tagsOfExtended(parts, kGuid, extended).title;
  };
  EXPECT_EQ(titleWith(4 * kMiB), "Eiger");
  EXPECT_EQ(titleWith(4 * kMiB + 1), "");
}

// --- Brotli

TEST(JpegXlContainer, IsReadWithoutBoxesThatAreDamaged) {
  const std::string head = jpegXlPhoto({.exif = kExif});
  const std::string packed = brotliCompressed(kXmp);
  const auto keywords = [&](const std::string& content) {
    const auto tags = tagsOf(head + box("brob", content), "photo.jxl");
    EXPECT_TRUE(tags && tags->make == "Canon");
    return tags ? tags->keywords : std::vector<std::string>{};
  };
  EXPECT_THAT(keywords("xml " + packed), ElementsAre("alps", "snow"));
  for (std::size_t size = 0; size < packed.size(); size += 13)
    EXPECT_THAT(keywords("xml " + packed.substr(0, size)), IsEmpty()) << size;
  EXPECT_THAT(keywords("xml " + noise(500)), IsEmpty());
  EXPECT_THAT(keywords("jumb" + packed), IsEmpty());
  EXPECT_THAT(keywords("xm"), IsEmpty());
  EXPECT_THAT(keywords("xml " + brotliCompressed(kXmp + std::string(5 * kMiB, ' '))), IsEmpty());
}

// --- Sizes and turns

std::string sizeProperty(unsigned width, unsigned height) {
  return fullBox("ispe", 0, 0, big32(width) + big32(height));
}

struct Turn {
  std::vector<std::string> properties;
  int orientation;
  int width;
  int height;
};

TEST(HeifContainer, TurnsItsPictureItself) {
  const auto rotated = [](char quarters) { return box("irot", std::string(1, quarters)); };
  const auto mirrored = [](char axis) { return box("imir", std::string(1, axis)); };
  for (const Turn& turn : {Turn{{sizeProperty(40, 30)}, 1, 40, 30},
                           Turn{{sizeProperty(40, 30), rotated(1)}, 8, 30, 40},
                           Turn{{sizeProperty(40, 30), rotated(2)}, 3, 40, 30},
                           Turn{{sizeProperty(40, 30), rotated(3)}, 6, 30, 40},
                           Turn{{sizeProperty(40, 30), mirrored(0)}, 2, 40, 30},
                           Turn{{sizeProperty(40, 30), mirrored(1)}, 4, 40, 30},
                           Turn{{sizeProperty(40, 30), rotated(1), mirrored(0)}, 7, 30, 40}}) {
    const auto tags = tagsOf(heifPhoto(kBlocks, {.properties = turn.properties}), "photo.heic");
    ASSERT_TRUE(tags && tags->orientation && tags->storedSize && tags->shownSize);
    EXPECT_EQ(tags->orientation->value, turn.orientation) << turn.properties.size();
    EXPECT_EQ(tags->storedSize->width, 40);
    EXPECT_EQ(tags->shownSize->width, turn.width);
    EXPECT_EQ(tags->shownSize->height, turn.height);
  }
}

TEST(JpegXlContainer, IsNotTurnedByExif) {
  EXPECT_EQ(tagsOf(jpegXlPhoto(kBlocks), "photo.jxl")->orientation->value, 1);
  EXPECT_EQ(tagsOf(webpPhoto(kBlocks), "photo.webp")->orientation->value, 6);
}

ExifDirectory pictureOf(std::int64_t kind, std::int64_t width, std::int64_t height) {
  return {exifLong(0x00FE, kind), exifLong(0x0100, width), exifLong(0x0101, height)};
}

ExifDirectory withTags(ExifDirectory directory, const ExifDirectory& more) {
  directory.insert(directory.end(), more.begin(), more.end());
  return directory;
}

void expectSize(const std::string& content, const char* name, int width, int height) {
  const auto tags = tagsOf(content, name);
  ASSERT_TRUE(tags && tags->storedSize) << name;
  EXPECT_EQ(tags->storedSize->width, width) << name;
  EXPECT_EQ(tags->storedSize->height, height) << name;
}

// A thumbnail first, and two pictures below it: a preview and the sensor's.
TEST(RawContainer, HasTheSizeOfItsMainPicture) {
  const ExifDirectory first =
      withTags(pictureOf(1, 160, 120),
               {exifText(0x010F, "NIKON CORPORATION"), exifShort(0x0112, 8),
                exifDirectories(0x014A, {pictureOf(1, 3000, 2000), pictureOf(0, 6016, 4016)})});
  const auto tags = tagsOf(exifStructure({first}), "photo.nef");
  ASSERT_TRUE(tags && tags->storedSize && tags->shownSize);
  EXPECT_EQ(tags->storedSize->width, 6016);
  EXPECT_EQ(tags->storedSize->height, 4016);
  EXPECT_EQ(tags->shownSize->width, 4016);
}

TEST(RawContainer, HasTheSizeThatTheCameraDelivers) {
  const ExifDirectory raw = withTags(pictureOf(0, 6048, 4024), {});
  const ExifDirectory first = withTags(pictureOf(1, 160, 120), {exifDirectories(0x014A, {raw})});
  expectSize(
      exifStructure({photoDirectory(first, {exifLong(0xA002, 6000), exifLong(0xA003, 4000)})}),
      "photo.arw", 6000, 4000);
  // Not that of a preview.
  expectSize(
      exifStructure({photoDirectory(first, {exifLong(0xA002, 1616), exifLong(0xA003, 1080)})}),
      "photo.arw", 6048, 4024);
  const ExifDirectory cropped =
      withTags(pictureOf(0, 6048, 4024),
               {{.tag = 0xC620, .type = ExifType::kLong, .numbers = {6032, 4016}}});
  expectSize(
      exifStructure({withTags(pictureOf(1, 160, 120), {exifDirectories(0x014A, {cropped})})}),
      "photo.dng", 6032, 4016);
}

TEST(RawContainer, HasTheSizeWithinPanasonicsBorders) {
  const ExifDirectory directory = {exifShort(2, 4000), exifShort(3, 3000), exifShort(4, 8),
                                   exifShort(5, 12),   exifShort(6, 2456), exifShort(7, 3276)};
  expectSize(exifStructure({directory}, false, std::string("IIU\0", 4)), "photo.rw2", 3264, 2448);
}

TEST(RawContainer, HasTheSizeOfFujifilmsPicture) {
  expectSize(fujifilmRaw(jpegPhoto(kBlocks), 6240, 4160), "photo.raf", 6240, 4160);
}

TEST(RawContainer, MayBeginAsOlympusDoes) {
  const std::string file = exifStructure(
      {withTags(pictureOf(0, 4640, 3472), {exifText(0x010F, "OLYMPUS")})}, false, "IIRO");
  EXPECT_EQ(tagsOf(file, "photo.orf")->make, "OLYMPUS");
  expectSize(file, "photo.orf", 4640, 3472);
}

// --- What is read

// Only what holds tags: most of the file is pictures.
TEST(TiffContainer, IsNotReadAsAWhole) {
  const TempDir folder;
  constexpr std::size_t kPictures = 50 * kMiB;
  std::string file = tiffWithXmp(false);
  const std::string path = folder.write("photo.tif", file + zeros(kPictures));
  const auto source = media::Source::open(path);
  const auto tags = exif::readPhotoTags(*source);
  ASSERT_TRUE(tags);
  EXPECT_EQ(tags->iso, 400);
  EXPECT_LT(source->bytesRead(), 200 * kKiB);
}

// As programs write that do not know the size of a picture before.
TEST(TiffContainer, MayHaveItsDirectoryAtTheEnd) {
  constexpr std::size_t kPictures = 50 * kMiB;
  std::string file("II*\0", 4);
  const std::size_t directoryAt = 8 + kPictures;
  file += little32(directoryAt) + zeros(kPictures) + little16(1) + little16(0x010F) + little16(2) +
          little32(6) + little32(directoryAt + 18) + little32(0) + std::string("Canon\0", 6);
  const TempDir folder;
  const auto source = media::Source::open(folder.write("photo.tif", file));
  const auto tags = exif::readPhotoTags(*source);
  ASSERT_TRUE(tags);
  EXPECT_EQ(tags->make, "Canon");
  EXPECT_LT(source->bytesRead(), 200 * kKiB);
}

TEST(HeifContainer, IsNotReadAsAWhole) {
  const TempDir folder;
  const auto source =
      media::Source::open(folder.write("photo.heic", heifPhoto(kBlocks) + zeros(20 * kMiB)));
  const auto tags = exif::readPhotoTags(*source);
  ASSERT_TRUE(tags);
  EXPECT_EQ(tags->make, "Canon");
  EXPECT_LT(source->bytesRead(), 200 * kKiB);
}

}  // namespace

}  // namespace kolum::test
