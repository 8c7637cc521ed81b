// People and things that are marked in a photo.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "read/exif/readers.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

bool isPart(double value) {
  return value >= 0 && value <= 1;
}

std::optional<media::Area> areaFrom(std::optional<double> centreX, std::optional<double> centreY,
                                    std::optional<double> width, std::optional<double> height) {
  if (!centreX || !centreY || !isPart(*centreX) || !isPart(*centreY)) return std::nullopt;
  const media::Area area = {.centreX = *centreX,
                            .centreY = *centreY,
                            .width = width.value_or(0),
                            .height = height.value_or(0)};
  return isPart(area.width) && isPart(area.height) ? std::optional(area) : std::nullopt;
}

// As the Metadata Working Group has them. A point has no size.
std::optional<media::Area> workingGroupArea(const Metadata& metadata, const std::string& region) {
  const std::string area = region + "/mwg-rs:Area/stArea:";
  const std::string unit = metadata.xmpText(area + "unit");
  if (!unit.empty() && unit != "normalized") return std::nullopt;
  const auto diameter = metadata.xmpNumber(area + "d");
  const auto width = metadata.xmpNumber(area + "w");
  const auto height = metadata.xmpNumber(area + "h");
  return areaFrom(metadata.xmpNumber(area + "x"), metadata.xmpNumber(area + "y"),
                  width ? width : diameter, height ? height : diameter);
}

// As Microsoft has them: "left, top, width, height".
std::optional<media::Area> microsoftArea(std::string_view text) {
  const auto numbers = [&] {
    std::vector<double> found;
    while (!text.empty() && found.size() < 4) {
      const std::size_t end = text.find(',');
      std::string_view part = text.substr(0, end);
      part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
      if (const auto number = numberIn(part)) found.push_back(*number);
      text.remove_prefix(end == text.npos ? text.size() : end + 1);
    }
    return found;
  }();
  if (numbers.size() != 4) return std::nullopt;
  return areaFrom(numbers[0] + numbers[2] / 2, numbers[1] + numbers[3] / 2, numbers[2], numbers[3]);
}

using Regions = std::vector<media::Region>;

template <typename ReadRegion>
Regions regionsOf(const Metadata& metadata, const char* list, ReadRegion readRegion) {
  Regions regions;
  std::size_t size = 0;
  for (std::size_t i = 1; i <= media::kMostPhotoTexts; ++i) {
    const std::string key = list + ("[" + std::to_string(i) + "]");
    if (!metadata.knowsXmp(key)) break;
    media::Region region = readRegion(key);
    size += region.name.size() + region.type.size();
    if (size > media::kLongestPhotoList) break;
    regions.push_back(std::move(region));
  }
  return regions;
}

Regions workingGroupRegions(const Metadata& metadata) {
  return regionsOf(metadata, "Xmp.mwg-rs.Regions/mwg-rs:RegionList", [&](const std::string& key) {
    return media::Region{.name = metadata.xmpText(key + "/mwg-rs:Name"),
                         .type = metadata.xmpText(key + "/mwg-rs:Type"),
                         .area = workingGroupArea(metadata, key)};
  });
}

Regions microsoftRegions(const Metadata& metadata) {
  return regionsOf(metadata, "Xmp.MP.RegionInfo/MPRI:Regions", [&](const std::string& key) {
    return media::Region{.name = metadata.xmpText(key + "/MPReg:PersonDisplayName"),
                         .type = "Face",
                         .area = microsoftArea(metadata.xmpText(key + "/MPReg:Rectangle"))};
  });
}

}  // namespace

// Where a file has both, the working group's: they say more.
void readRegions(const Metadata& metadata, media::PhotoTags& tags) {
  tags.regions = workingGroupRegions(metadata);
  if (tags.regions.empty()) tags.regions = microsoftRegions(metadata);
}

}  // namespace kolum::exif
