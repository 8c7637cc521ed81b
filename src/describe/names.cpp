#include "describe/names.h"

#include <kolum/filetype.h>
#include <kolum/identifiers.h>

#include <algorithm>

#include "media/identifiers.h"

namespace kolum::describe {

namespace {

// One list per enumeration, written by the build from the enumerators in the public header.
#define KOLUM_NAMED_NUMBER(name) {#name, static_cast<std::int64_t>(name)},
constexpr NamedNumber kFormats[] = {
#include "identifier_names/FORMAT.inc"
};
constexpr NamedNumber kBrands[] = {
#include "identifier_names/MPEG4.inc"
};
constexpr NamedNumber kCodecs[] = {
#include "identifier_names/CODEC_ID.inc"
};
constexpr NamedNumber kProfiles[] = {
#include "identifier_names/PROFILE.inc"
};
constexpr NamedNumber kPlayExceptions[] = {
#include "identifier_names/PLAY_EXCEPTION.inc"
};
#undef KOLUM_NAMED_NUMBER

constexpr NamedNumber kKinds[] = {
    {"none", MEDIA_KIND_NONE},   {"music", MEDIA_KIND_MUSIC},       {"video", MEDIA_KIND_VIDEO},
    {"photo", MEDIA_KIND_PHOTO}, {"playlist", MEDIA_KIND_PLAYLIST},
};

std::string_view nameIn(std::span<const NamedNumber> rows, std::int64_t id) {
  const auto row =
      std::find_if(rows.begin(), rows.end(), [&](const NamedNumber& r) { return r.id == id; });
  return row == rows.end() ? "" : row->name;
}

}  // namespace

const NamedNumber* Enumeration::find(std::string_view name) const {
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const NamedNumber& r) {
    return r.name == name || r.name.substr(prefix.size()) == name;
  });
  return row == rows.end() ? nullptr : &*row;
}

const NamedNumber* Enumeration::find(std::int64_t id) const {
  const auto row =
      std::find_if(rows.begin(), rows.end(), [&](const auto& r) { return r.id == id; });
  return row == rows.end() ? nullptr : &*row;
}

const Enumeration& formats() {
  static constexpr Enumeration kEnumeration = {"FORMAT_", kFormats};
  return kEnumeration;
}

const Enumeration& brands() {
  static constexpr Enumeration kEnumeration = {"MPEG4_", kBrands};
  return kEnumeration;
}

const Enumeration& codecs() {
  static constexpr Enumeration kEnumeration = {"CODEC_ID_", kCodecs};
  return kEnumeration;
}

const Enumeration& profiles() {
  static constexpr Enumeration kEnumeration = {"PROFILE_", kProfiles};
  return kEnumeration;
}

const Enumeration& playExceptions() {
  static constexpr Enumeration kEnumeration = {"PLAY_EXCEPTION_", kPlayExceptions};
  return kEnumeration;
}

std::span<const NamedEnumeration> enumerations() {
  static constexpr NamedEnumeration kEnumerations[] = {
      {"formats", formats},
      {"brands", brands},
      {"codecs", codecs},
      {"profiles", profiles},
      {"exceptions", playExceptions},
  };
  return kEnumerations;
}

std::string_view kindName(int kind) {
  return nameIn(kKinds, kind);
}

std::string_view codecName(int codec) {
  return media::codecName(codec).value_or("");
}

std::string_view profileName(int profile, int codec) {
  const std::string_view family = media::profileFamilyName(profile, codec);
  const auto fits = [&](const NamedNumber& row) {
    return row.id == profile && (profile <= 0 || row.name.starts_with(family));
  };
  const auto* row = std::find_if(std::begin(kProfiles), std::end(kProfiles), fits);
  if (row != std::end(kProfiles)) return row->name;
  return family == "UNKNOWN" ? "" : family;
}

std::string_view playExceptionName(std::uint32_t playException) {
  return nameIn(kPlayExceptions, playException);
}

ContainerNames containerNames(std::uint32_t containerFormat) {
  const auto format = static_cast<int>(containerFormat & media::kFormatMask);
  ContainerNames names = {.format = media::formatName(format).value_or(""), .brand = ""};
  if (format == FORMAT_MPEG4) {
    const auto brand = static_cast<int>(containerFormat >> media::kBrandShift);
    names.brand = media::brandName(brand).value_or("");
  }
  return names;
}

}  // namespace kolum::describe
