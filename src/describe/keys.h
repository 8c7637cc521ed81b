// The keys of a document: one table for each kind of object in it. The JSON, its schema, the page
// in docs/, the text for people and the classes for Python are all made from these tables.
#ifndef KOLUM_DESCRIBE_KEYS_H
#define KOLUM_DESCRIBE_KEYS_H

#include <span>
#include <string_view>

namespace kolum::describe {

enum class Type {
  kBoolean,
  kInteger,
  kNumber,
  kText,
  kTexts,
  kIdentifier,  // a number with its name, if it has one
  kContainer,   // a container format, with the brand of an MPEG-4 file
  kObject,
  kObjects,
};

// Units that people and schemas should know of.
enum class Unit {
  kNone,
  kSeconds,
  kBytes,
  kBitsPerSecond,
  kHertz,
  kPixels,
  kFramesPerSecond,
  kCount,
  kDegrees,
  kMetres,
  kMillimetres,
  kDecibels,
  kSecondsSince1970,
  kYearMonth,  // "2015-06"
  kDay,        // "2015-06-07"
  kMoment,     // "2015-06-07T08:09:10Z", with the offset that is known, or none
};

struct Key {
  std::string_view name;
  Type type;
  Unit unit;
  std::string_view meaning;
  std::string_view source;  // where the value comes from
  // Of objects: their keys.
  std::span<const Key> members = {};
  // Further keywords of its JSON schema, as JSON without the braces.
  std::string_view schema = {};
};

// A part of the document, with a heading for people.
struct Group {
  std::string_view name;     // "songs"
  std::string_view heading;  // "Songs"
  std::span<const Key> keys;
};

// All keys of a document, in their order.
std::span<const Group> groups();

}  // namespace kolum::describe

#endif
