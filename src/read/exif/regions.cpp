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
std::optional<media::Area> workingGroupArea(const Xmp& xmp, unsigned region) {
  const auto number = [&](XmpProperty field) { return numberIn(xmp.text(field, region)); };
  const std::string unit = xmp.text(XmpProperty::kAreaUnit, region);
  if (!unit.empty() && unit != "normalized") return std::nullopt;
  const auto diameter = number(XmpProperty::kAreaDiameter);
  const auto width = number(XmpProperty::kAreaWidth);
  const auto height = number(XmpProperty::kAreaHeight);
  return areaFrom(number(XmpProperty::kAreaX), number(XmpProperty::kAreaY),
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
Regions regionsOf(const Xmp& xmp, XmpProperty list, ReadRegion readRegion) {
  Regions regions;
  std::size_t size = 0;
  const unsigned count = std::min<unsigned>(xmp.items(list), media::kMostPhotoTexts);
  for (unsigned i = 1; i <= count; ++i) {
    media::Region region = readRegion(i);
    size += region.name.size() + region.type.size();
    if (size > media::kLongestPhotoList) break;
    regions.push_back(std::move(region));
  }
  return regions;
}

Regions workingGroupRegions(const Xmp& xmp) {
  return regionsOf(xmp, XmpProperty::kRegionList, [&](unsigned region) {
    return media::Region{.name = xmp.text(XmpProperty::kRegionName, region),
                         .type = xmp.text(XmpProperty::kRegionType, region),
                         .area = workingGroupArea(xmp, region)};
  });
}

Regions microsoftRegions(const Xmp& xmp) {
  return regionsOf(xmp, XmpProperty::kPeopleList, [&](unsigned person) {
    return media::Region{.name = xmp.text(XmpProperty::kPersonName, person),
                         .type = "Face",
                         .area = microsoftArea(xmp.text(XmpProperty::kPersonRectangle, person))};
  });
}

}  // namespace

// Where a file has both, the working group's: they say more.
void readRegions(const Metadata& metadata, media::PhotoTags& tags) {
  tags.regions = workingGroupRegions(metadata.xmp());
  if (tags.regions.empty()) tags.regions = microsoftRegions(metadata.xmp());
}

}  // namespace kolum::exif
