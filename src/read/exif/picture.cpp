// The picture itself: how to turn it, its size, its colours.
#include <algorithm>
#include <array>
#include <climits>
#include <string>

#include "base/bytes.h"
#include "read/exif/icc_profile.h"
#include "read/exif/orientation.h"
#include "read/exif/readers.h"

namespace kolum::exif {

namespace {

std::optional<media::Orientation> exifOrientation(const Metadata& metadata) {
  if (const auto number = metadata.integer(kImage, 0x0112)) return orientationOf(*number);
  const auto number = numberIn(metadata.xmp().text(XmpProperty::kOrientation));
  return number && *number >= 1 && *number <= 8 ? orientationOf(static_cast<std::int64_t>(*number))
                                                : std::nullopt;
}

std::optional<media::PhotoSize> sizeFrom(std::optional<std::int64_t> width,
                                         std::optional<std::int64_t> height) {
  constexpr std::int64_t kMost = 1'000'000;
  if (!width || !height || *width < 1 || *height < 1 || *width > kMost || *height > kMost)
    return std::nullopt;
  return media::PhotoSize{.width = static_cast<int>(*width), .height = static_cast<int>(*height)};
}

std::optional<media::PhotoSize> sizeIn(const Metadata& metadata, std::string_view group,
                                       unsigned widthTag, unsigned heightTag) {
  return sizeFrom(metadata.integer(group, widthTag), metadata.integer(group, heightTag));
}

std::int64_t areaOf(const media::PhotoSize& size) {
  return std::int64_t{size.width} * size.height;
}

// Where TIFF files have pictures: most cameras put a thumbnail first.
constexpr std::string_view kDirectories[] = {kImage,      "SubImage1", "SubImage2", "SubImage3",
                                             "SubImage4", "SubImage5", "SubImage6", "SubImage7",
                                             "SubImage8", "SubImage9", "Image2",    "Image3"};

struct MainPicture {
  std::string_view group;
  media::PhotoSize size;
};

// The largest that is not marked as a smaller version of another.
std::optional<MainPicture> mainPicture(const Metadata& metadata) {
  constexpr unsigned kKind = 0x00FE;
  std::optional<MainPicture> found;
  for (const std::string_view group : kDirectories) {
    const auto size = sizeIn(metadata, group, 0x0100, 0x0101);
    const bool isReduced = (metadata.integer(group, kKind).value_or(0) & 1) != 0;
    if (size && !isReduced && (!found || areaOf(*size) > areaOf(found->size)))
      found = {group, *size};
  }
  return found;
}

// Nikon's crop of the sensor: left, top, width, height.
std::optional<media::PhotoSize> nikonCrop(const Metadata& metadata) {
  constexpr unsigned kCropArea = 0x0045;
  return sizeFrom(metadata.integer("Nikon3", kCropArea, 2),
                  metadata.integer("Nikon3", kCropArea, 3));
}

// Panasonic's sensor within its borders: top, left, bottom, right.
std::optional<media::PhotoSize> panasonicSize(const Metadata& metadata) {
  std::array<std::int64_t, 4> borders = {};
  for (unsigned i = 0; i < borders.size(); ++i) {
    const auto border = metadata.integer("PanasonicRaw", 4 + i);
    if (!border) return std::nullopt;
    borders[i] = *border;
  }
  return sizeFrom(borders[3] - borders[1], borders[2] - borders[0]);
}

// Whether the camera's SIZE can be that of a picture of the sensor without its borders, and not
// that of a preview.
bool fits(const media::PhotoSize& size, const media::PhotoSize& sensor) {
  return size.width <= sensor.width && size.height <= sensor.height &&
         areaOf(size) > areaOf(sensor) / 10 * 8;
}

// Of a TIFF file, such as most raw files are.
std::optional<media::PhotoSize> tiffSize(const Metadata& metadata) {
  if (const auto size = panasonicSize(metadata)) return size;
  const auto exif = sizeIn(metadata, kPhoto, 0xA002, 0xA003);
  const auto main = mainPicture(metadata);
  if (!main) return exif;
  constexpr unsigned kDefaultCrop = 0xC620;
  const auto crop = sizeFrom(metadata.integer(main->group, kDefaultCrop, 0),
                             metadata.integer(main->group, kDefaultCrop, 1));
  for (const auto& size : {crop, nikonCrop(metadata), exif})
    if (size && fits(*size, main->size)) return size;
  return main->size;
}

std::string colourProfile(const Metadata& metadata, const Blocks& blocks) {
  constexpr unsigned kProfileTag = 0x8773;
  const Bytes inTiff = blocks.iccProfile.empty() ? metadata.bytes(kImage, kProfileTag) : Bytes{};
  std::string name = iccDescription(inTiff.empty() ? blocks.iccProfile : inTiff);
  if (!name.empty()) return name;
  constexpr std::int64_t kSrgb = 1;
  constexpr std::int64_t kAdobeRgb = 2;  // not in the standard
  constexpr std::int64_t kOther = 65535;
  const auto space = metadata.integer(kPhoto, 0xA001);
  const bool isAdobe = metadata.text(kInterop, 0x0001) == "R03";
  if (space == kSrgb) return "sRGB";
  return space == kAdobeRgb || (space == kOther && isAdobe) ? "Adobe RGB" : "";
}

}  // namespace

void readPicture(const Metadata& metadata, const Blocks& blocks, media::PhotoTags& tags) {
  tags.orientation = blocks.orientation ? blocks.orientation : exifOrientation(metadata);
  if (blocks.size)
    tags.storedSize = sizeFrom(blocks.size->width, blocks.size->height);
  else if (blocks.isTiff)
    tags.storedSize = tiffSize(metadata);
  if (tags.storedSize)
    tags.shownSize = turned(*tags.storedSize, tags.orientation.value_or(media::Orientation{}));
  tags.colourProfile = colourProfile(metadata, blocks);
}

}  // namespace kolum::exif
