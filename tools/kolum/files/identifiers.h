// The library's identifiers with their names, as results show them.
#ifndef KOLUM_TOOL_FILES_IDENTIFIERS_H
#define KOLUM_TOOL_FILES_IDENTIFIERS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "terminal/output.h"
#include "terminal/text.h"

namespace kolum::tool {

// One enumeration of <kolum/identifiers.h>, in its order; several names may share a number.
struct NamedNumber {
  std::string_view name;
  std::int64_t id;
};

struct Enumeration {
  std::string_view prefix;  // that every name begins with, "CODEC_ID_"
  std::span<const NamedNumber> rows;

  // The number of a name, given with or without the prefix; null when there is none.
  const NamedNumber* find(std::string_view name) const;
  const NamedNumber* find(std::int64_t id) const;
};

const Enumeration& formats();
const Enumeration& brands();
const Enumeration& codecs();
const Enumeration& profiles();
const Enumeration& playExceptions();

// The name by which people ask for an enumeration.
struct NamedEnumeration {
  std::string_view name;
  const Enumeration& (*enumeration)();
};

std::span<const NamedEnumeration> enumerations();

// A number with its name in ROWS, without one when it is not there.
Identifier named(std::span<const NamedNumber> rows, std::int64_t id);
Identifier codecIdentifier(int codec);
// A profile's number means something only with its codec: the codec's own name for it wins.
Identifier profileIdentifier(int profile, int codec);
// A codec with its profile in words, "H264 constrained baseline"; an unknown profile is left out.
std::string codecText(int codec, int profile);
// A level in the codec's own words, "level 4.1"; empty when unknown.
std::string levelText(int codec, int level);
Identifier playExceptionIdentifier(unsigned playException);
Identifier kindIdentifier(int kind);
Identifier audioClassIdentifier(unsigned audioClass);

// A container format: its number and the names of format and MPEG-4 brand, empty when unknown.
struct ContainerNames {
  unsigned id;
  std::string format;
  std::string brand;

  Result object() const;     // {"id":262152,"name":"FORMAT_MPEG4","brand":"MPEG4_MOV"}
  std::string text() const;  // "MPEG4, brand MOV"
};

ContainerNames containerNames(unsigned containerFormat);
// "kind" and its name.
void addKind(Result& result, int kind);
// The profile under KEY, unless it is unknown.
void addProfile(Result& result, const char* key, int profile, int codec);
// The numbers of a sound stream that are known.
void addSound(Result& result, const Sound& sound);
// "containerFormat" with the number and the names of format and MPEG-4 brand, unless it is unknown.
void addContainer(Result& result, unsigned containerFormat);

}  // namespace kolum::tool

#endif
