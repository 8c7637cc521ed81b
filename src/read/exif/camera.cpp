// What a photo was taken with, and how.
#include <algorithm>
#include <climits>
#include <cmath>
#include <string>

#include "base/text.h"
#include "read/exif/readers.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

struct TagRow {
  std::string_view group;
  unsigned tag;
};

// Names that Exiv2 knows for the numbers of lenses.
constexpr TagRow kLensNumbers[] = {
    {"CanonCs", 0x0016},   {"NikonLd4", 0x0030}, {"NikonLd4", 0x000D},  {"NikonLd3", 0x000C},
    {"NikonLd2", 0x000B},  {"NikonLd1", 0x0006}, {"Sony1", 0xB027},     {"Sony2", 0xB027},
    {"OlympusEq", 0x0201}, {"Pentax", 0x003F},   {"PentaxDng", 0x003F}, {"Samsung2", 0xA003},
    {"Minolta", 0x010C},
};

constexpr TagRow kLensTexts[] = {
    {kPhoto, 0xA434}, {"Canon", 0x0095}, {"OlympusEq", 0x0203}, {"Panasonic", 0x0051}};

constexpr TagRow kSerialTexts[] = {{kPhoto, 0xA431},      {"Nikon3", 0x001D}, {"Nikon3", 0x00A0},
                                   {"OlympusEq", 0x0101}, {"Pentax", 0x0229}, {"Panasonic", 0x0025},
                                   {"Fujifilm", 0x0010},  {kImage, 0xC62F}};

constexpr TagRow kLensSerialTexts[] = {
    {kPhoto, 0xA435}, {"OlympusEq", 0x0202}, {"Panasonic", 0x0052}};

template <std::size_t kCount>
std::string firstText(const Metadata& metadata, const TagRow (&rows)[kCount]) {
  for (const TagRow& row : rows) {
    std::string text = metadata.text(row.group, row.tag);
    if (!isBlank(text)) return text;
  }
  return "";
}

// Not a number, "(65535)", "n/a", or several names between which the number does not decide.
bool isName(std::string_view text) {
  constexpr std::string_view kNoNames[] = {"n/a", "none", "unknown", "manual", "----"};
  const bool isKnown = std::ranges::none_of(
      kNoNames, [&](std::string_view begin) { return startsWithIgnoringCase(text, begin); });
  const auto isLetter = [](char c) { return lowerCase(c) >= 'a' && lowerCase(c) <= 'z'; };
  return isKnown && !text.starts_with('(') && std::ranges::any_of(text, isLetter) &&
         text.find(" | ") == text.npos && text.find(" or ") == text.npos;
}

std::string lensModel(const Metadata& metadata) {
  std::string text = firstText(metadata, kLensTexts);
  if (isName(text)) return text;
  for (const TagRow& row : kLensNumbers) {
    text = metadata.meaning(row.group, row.tag);
    if (isName(text)) return text;
  }
  text = metadata.xmp().text(XmpProperty::kLens);
  return isName(text) ? text : "";
}

std::string serial(const Metadata& metadata) {
  std::string text = firstText(metadata, kSerialTexts);
  if (!text.empty()) return text;
  const auto canon = metadata.integer("Canon", 0x000C);
  return canon && *canon > 0 ? std::to_string(*canon)
                             : metadata.xmp().text(XmpProperty::kSerialNumber);
}

std::string orXmp(const std::string& text, const Metadata& metadata, XmpProperty property) {
  return isBlank(text) ? metadata.xmp().text(property) : text;
}

// "NIKON CORPORATION" and "NIKON D850" begin with the same word.
std::string modelWithoutMake(const std::string& model, std::string_view make) {
  for (const std::string_view begin : {make, make.substr(0, make.find(' '))}) {
    if (begin.empty() || !startsWithIgnoringCase(model, begin)) continue;
    const std::string_view rest = std::string_view(model).substr(begin.size());
    if (rest.starts_with(' ') && !isBlank(rest)) return std::string(rest.substr(1));
  }
  return model;
}

// --- Numbers

std::optional<double> within(std::optional<double> value, double least, double most) {
  return value && *value >= least && *value <= most ? value : std::nullopt;
}

std::optional<media::Rational> exposureTime(const Metadata& metadata) {
  constexpr std::int64_t kLongest = 1'000'000;
  const auto ratio = metadata.ratio(kPhoto, 0x829A);
  if (!ratio || ratio->num <= 0 || ratio->den <= 0 || ratio->num > INT_MAX ||
      ratio->den > INT_MAX || ratio->num / ratio->den > kLongest)
    return std::nullopt;
  return media::Rational{static_cast<int>(ratio->num), static_cast<int>(ratio->den)};
}

std::optional<double> aperture(const Metadata& metadata) {
  constexpr double kLeast = 0.1;
  constexpr double kMost = 1000;
  if (const auto number = within(metadata.number(kPhoto, 0x829D), kLeast, kMost)) return number;
  // As the double logarithm of the same.
  const auto value = metadata.number(kPhoto, 0x9202);
  return value && *value > 0 ? within(std::exp2(*value / 2), kLeast, kMost) : std::nullopt;
}

// The first field has 16 bits, and says 65535 of larger values; those are in the others.
std::optional<int> iso(const Metadata& metadata) {
  constexpr std::int64_t kFull = 65535;
  constexpr std::int64_t kMost = 100'000'000;
  for (const unsigned tag : {0x8827U, 0x8832U, 0x8833U, 0x8831U}) {
    const auto value = metadata.integer(kPhoto, tag);
    if (value && *value > 0 && *value <= kMost && (*value != kFull || tag != 0x8827U))
      return static_cast<int>(*value);
  }
  return std::nullopt;
}

std::optional<media::ExposureProgram> program(const Metadata& metadata) {
  const auto value = metadata.integer(kPhoto, 0x8822);
  if (!value || *value < 1 || *value > 8) return std::nullopt;
  return static_cast<media::ExposureProgram>(*value - 1);
}

std::optional<media::Metering> metering(const Metadata& metadata) {
  constexpr std::int64_t kOther = 255;
  const auto value = metadata.integer(kPhoto, 0x9207);
  if (value == kOther) return media::Metering::kOther;
  if (!value || *value < 1 || *value > 6) return std::nullopt;
  return static_cast<media::Metering>(*value - 1);
}

std::optional<media::WhiteBalance> whiteBalance(const Metadata& metadata) {
  const auto value = metadata.integer(kPhoto, 0xA403);
  if (!value || *value < 0 || *value > 1) return std::nullopt;
  return static_cast<media::WhiteBalance>(*value);
}

std::optional<media::Flash> flash(const Metadata& metadata) {
  const auto value = metadata.integer(kPhoto, 0x9209);
  if (!value || *value < 0 || *value > UINT16_MAX) return std::nullopt;
  return media::Flash{.hasFired = (*value & 1) != 0, .value = static_cast<int>(*value)};
}

}  // namespace

void readCamera(const Metadata& metadata, media::PhotoTags& tags) {
  tags.make = orXmp(metadata.text(kImage, 0x010F), metadata, XmpProperty::kMake);
  tags.model = modelWithoutMake(orXmp(metadata.text(kImage, 0x0110), metadata, XmpProperty::kModel),
                                tags.make);
  tags.lensMake = metadata.text(kPhoto, 0xA433);
  tags.lensModel = lensModel(metadata);
  tags.serial = serial(metadata);
  tags.lensSerial = firstText(metadata, kLensSerialTexts);
  tags.software = orXmp(metadata.text(kImage, 0x0131), metadata, XmpProperty::kCreatorTool);
}

void readExposure(const Metadata& metadata, media::PhotoTags& tags) {
  constexpr double kMostBias = 100;
  constexpr double kShortest = 0.01;
  constexpr double kLongest = 100'000;
  tags.exposureTime = exposureTime(metadata);
  tags.aperture = aperture(metadata);
  tags.iso = iso(metadata);
  tags.exposureBias = within(metadata.number(kPhoto, 0x9204), -kMostBias, kMostBias);
  tags.program = program(metadata);
  tags.metering = metering(metadata);
  tags.whiteBalance = whiteBalance(metadata);
  tags.focalLength = within(metadata.number(kPhoto, 0x920A), kShortest, kLongest);
  tags.focalLength35 = within(metadata.number(kPhoto, 0xA405), kShortest, kLongest);
  tags.flash = flash(metadata);
}

}  // namespace kolum::exif
