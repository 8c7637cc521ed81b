// The names of the library's numbers, as documents show them.
#ifndef KOLUM_DESCRIBE_NAMES_H
#define KOLUM_DESCRIBE_NAMES_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kolum::describe {

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

// Empty for a number without a name, as all others.
std::string_view kindName(int kind);
std::string_view codecName(int codec);
// The meaning of a profile's number depends on its codec, so the codec's own name for it is
// preferred.
std::string_view profileName(int profile, int codec);
std::string_view playExceptionName(std::uint32_t playException);

// A container format: the names of format and MPEG-4 brand.
struct ContainerNames {
  std::string_view format;
  std::string_view brand;
};

ContainerNames containerNames(std::uint32_t containerFormat);

}  // namespace kolum::describe

#endif
