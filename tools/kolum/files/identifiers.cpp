#include "files/identifiers.h"

#include <kolum/filetype.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <algorithm>

#include "ascii.h"
#include "dlna/audio_class.h"
#include "media/levels.h"
#include "terminal/text.h"

namespace kolum::tool {

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

Identifier named(std::span<const NamedNumber> rows, std::int64_t id) {
  const auto row =
      std::find_if(rows.begin(), rows.end(), [&](const auto& r) { return r.id == id; });
  return {id, row == rows.end() ? "" : std::string(row->name)};
}

Identifier codecIdentifier(int codec) {
  char name[KOLUM_IDENTIFIER_NAME_SIZE] = "";
  CodecIDToName(name, static_cast<unsigned>(codec));
  return {codec, name, codecs().prefix};
}

Identifier profileIdentifier(int profile, int codec) {
  char family[KOLUM_IDENTIFIER_NAME_SIZE] = "";
  ProfileIDToName(family, profile, codec);
  const auto fits = [&](const NamedNumber& row) {
    return row.id == profile && (profile <= 0 || row.name.starts_with(family));
  };
  const auto row = std::find_if(std::begin(kProfiles), std::end(kProfiles), fits);
  if (row != std::end(kProfiles)) return {profile, std::string(row->name), profiles().prefix};
  return {profile, std::string_view(family) == "UNKNOWN" ? "" : family};
}

namespace {

// A codec's name without its prefix. The library prefers names that mark the start of a range
// ("FIRST_AUDIO"); people know the codec with the same number.
std::string codecWord(int codec) {
  std::string word;
  for (const NamedNumber& row : kCodecs) {
    if (row.id != codec) continue;
    const std::string_view name = row.name.substr(codecs().prefix.size());
    if (word.empty() || word.starts_with("FIRST_")) word = name;
  }
  return word.empty() ? "codec " + std::to_string(codec) : word;
}

}  // namespace

std::string codecText(int codec, int profile) {
  std::string text = codecWord(codec);
  const std::string name = profileIdentifier(profile, codec).name;
  if (profile == PROFILE_UNKNOWN || name.empty()) return text;
  char family[KOLUM_IDENTIFIER_NAME_SIZE] = "";
  ProfileIDToName(family, profile, codec);
  const std::string prefix = std::string(family) + "_";
  std::string words =
      name.substr(name.starts_with(prefix) ? prefix.size() : profiles().prefix.size());
  for (char& c : words) c = c == '_' ? ' ' : ascii::lower(c);
  return text + " " + words;
}

std::string levelText(int codec, int level) {
  const std::string name = media::levelName(codec, level);
  if (name.empty()) return "";
  const bool isNumber = ascii::isDigit(name.front());
  return isNumber ? "level " + name : name + " level";
}

Identifier playExceptionIdentifier(unsigned playException) {
  Identifier identifier = named(kPlayExceptions, playException);
  identifier.prefix = playExceptions().prefix;
  return identifier;
}

Identifier kindIdentifier(int kind) {
  return named(kKinds, kind);
}

Identifier audioClassIdentifier(unsigned audioClass) {
  return {audioClass, std::string(dlna::audioClassName(audioClass))};
}

Result ContainerNames::object() const {
  Result object;
  object.data("id", id);
  if (!format.empty()) object.data("name", format);
  if (!brand.empty()) object.data("brand", brand);
  return object;
}

std::string ContainerNames::text() const {
  if (format.empty()) return hexText(id);
  const std::string text = format.substr(formats().prefix.size());
  return brand.empty() ? text : text + ", brand " + brand.substr(brands().prefix.size());
}

ContainerNames containerNames(unsigned containerFormat) {
  char format[KOLUM_IDENTIFIER_NAME_SIZE] = "";
  char brand[KOLUM_IDENTIFIER_NAME_SIZE] = "";
  ContainerFormatIDToName(format, brand, static_cast<int>(containerFormat));
  return {containerFormat, format, brand};
}

void addKind(Result& result, int kind) {
  const Identifier identifier = kindIdentifier(kind);
  result.data("kind", identifier);
  result.show("Kind", identifier.name);
}

void addProfile(Result& result, const char* key, int profile, int codec) {
  if (profile != PROFILE_UNKNOWN) result.data(key, profileIdentifier(profile, codec));
}

void addSound(Result& result, const Sound& sound) {
  result.known("audioBitRate", sound.bitRate);
  result.known("sampleRate", sound.sampleRate);
  result.known("bitsPerSample", sound.bitsPerSample);
  result.known("channels", sound.channels);
}

void addContainer(Result& result, unsigned containerFormat) {
  if (containerFormat == FORMAT_UNKNOWN) return;
  const ContainerNames names = containerNames(containerFormat);
  result.data("containerFormat", names.object());
  result.show("Container", names.text());
}

}  // namespace kolum::tool
