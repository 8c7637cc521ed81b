#include <kolum/identifiers.h>

#include <cstring>

#include "media/identifiers.h"

using namespace kolum;

namespace {

// The caller's buffer is large enough for every name.
void copyName(char* out, std::string_view name) {
  std::memcpy(out, name.data(), name.size());
  out[name.size()] = '\0';
}

// Writes the result of a look-up; returns the result code.
template <typename Id>
int found(Id* out, const std::optional<int>& id) {
  if (out == nullptr || !id) return 1;
  *out = static_cast<Id>(*id);
  return 0;
}

int found(char* out, const std::optional<std::string_view>& name) {
  if (out == nullptr || !name) return 1;
  copyName(out, *name);
  return 0;
}

}  // namespace

int ContainerFormatNameToID(const char* name, const char* brand, unsigned int* id) {
  auto format = media::formatOfName(name);
  if (format == FORMAT_MPEG4)
    if (const auto number = media::brandOfName(brand)) *format |= *number << media::kBrandShift;
  return found(id, format);
}

int ContainerFormatIDToName(char* name, char* brand, int id) {
  if (brand != nullptr) *brand = '\0';
  const auto bits = static_cast<unsigned>(id);
  const int format = static_cast<int>(bits & media::kFormatMask);
  if (found(name, media::formatName(format)) != 0) return 1;
  if (brand != nullptr && format == FORMAT_MPEG4)
    found(brand, media::brandName(static_cast<int>(bits >> media::kBrandShift)));
  return 0;
}

int ContainerFormatIDToAudioAttachedName(char* extension, int id) {
  return found(extension, media::songExtension(id));
}

int CodecNameToID(const char* name, unsigned int* id) {
  return found(id, media::codecOfName(name));
}

int CodecIDToName(char* name, unsigned int id) {
  return found(name, media::codecName(static_cast<int>(id)));
}

int ProfileNameToID(const char* name, int* id) {
  return found(id, media::profileOfName(name));
}

// Names the family only; hosts show it unchanged.
int ProfileIDToName(char* name, int profile, int codec) {
  if (name != nullptr) copyName(name, media::profileFamilyName(profile, codec));
  return 0;
}

int PlayExceptionNameToID(const char* name, unsigned int* id) {
  return found(id, media::playExceptionOfName(name));
}

int ffmpegCodecIdConvert(int ffmpegCodecId) {
  return media::codecOfFfmpeg(ffmpegCodecId);
}

int FF_ProfileToKO_Profile(int codec, int profile) {
  return media::profileOfFfmpeg(codec, profile);
}
