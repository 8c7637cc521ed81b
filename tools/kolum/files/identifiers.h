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
  std::string_view prefix;  // of every name, such as "CODEC_ID_"
  std::span<const NamedNumber> rows;

  // The number for a name with or without the prefix; null if there is none.
  const NamedNumber* find(std::string_view name) const;
  const NamedNumber* find(std::int64_t id) const;
};

const Enumeration& formats();
const Enumeration& brands();
const Enumeration& codecs();
const Enumeration& profiles();
const Enumeration& playExceptions();

// An enumeration with its name on the command line.
struct NamedEnumeration {
  std::string_view name;
  const Enumeration& (*enumeration)();
};

std::span<const NamedEnumeration> enumerations();

// A number with its name from ROWS, without one if it is not there.
Identifier named(std::span<const NamedNumber> rows, std::int64_t id);
Identifier codecIdentifier(int codec);
// The meaning of a profile's number depends on its codec, so the codec's own name for it is
// preferred.
Identifier profileIdentifier(int profile, int codec);
// A codec with its profile in words, "H264 constrained baseline"; an unknown profile is omitted.
std::string codecText(int codec, int profile);
// A level in the codec's own notation, "level 4.1"; empty if unknown.
std::string levelText(int codec, int level);
Identifier playExceptionIdentifier(unsigned playException);
Identifier kindIdentifier(int kind);
Identifier audioClassIdentifier(unsigned audioClass);

// A container format: its number and the names of format and MPEG-4 brand, empty if unknown.
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
// The known numbers of an audio stream.
void addSound(Result& result, const Sound& sound);
// "containerFormat" with the number and the names of format and MPEG-4 brand, unless it is unknown.
void addContainer(Result& result, unsigned containerFormat);

}  // namespace kolum::tool

#endif
