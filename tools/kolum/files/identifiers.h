// The library's identifiers with their names, as results show them.
#ifndef KOLUM_TOOL_FILES_IDENTIFIERS_H
#define KOLUM_TOOL_FILES_IDENTIFIERS_H

#include <cstdint>
#include <span>
#include <string>

#include "describe/names.h"
#include "terminal/output.h"

namespace kolum::tool {

// A number with its name from ROWS, without one if it is not there.
Identifier named(std::span<const describe::NamedNumber> rows, std::int64_t id);
Identifier codecIdentifier(int codec);
Identifier profileIdentifier(int profile, int codec);
// A codec with its profile in words, "H264 constrained baseline"; an unknown profile is omitted.
std::string codecText(int codec, int profile);
// A level in the codec's own notation, "level 4.1"; empty if unknown.
std::string levelText(int codec, int level);
Identifier kindIdentifier(int kind);

// A container format: its number and the names of format and MPEG-4 brand, empty if unknown.
struct ContainerIdentifier {
  unsigned id;

  Result object() const;     // {"id":262152,"name":"FORMAT_MPEG4","brand":"MPEG4_MOV"}
  std::string text() const;  // "MPEG4, brand MOV"
};

// "kind" and its name.
void addKind(Result& result, int kind);
// "containerFormat", unless it is unknown.
void addContainer(Result& result, unsigned containerFormat);

}  // namespace kolum::tool

#endif
