// Keys of documents that a caller chooses: "title,artist,position.latitude".
#ifndef KOLUM_TOOL_FILES_FIELDS_H
#define KOLUM_TOOL_FILES_FIELDS_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "describe/keys.h"

namespace kolum::tool {

class Fields {
 public:
  // Names separated by commas; a dot leads into an object, or into all objects of a list. Throws
  // UsageError for a key that no document has.
  explicit Fields(std::string_view list);

  const std::vector<std::string>& names() const { return names_; }
  // The document without all other keys. "file" and "error" always stay.
  nlohmann::ordered_json of(const nlohmann::ordered_json& document) const;
  // One text for each name, empty if unknown; several values are joined by "; ".
  std::vector<std::string> values(const nlohmann::ordered_json& document) const;

 private:
  std::vector<std::string> names_;
};

// What a name stands for, which may be one that no document has, as for values().
std::string fieldText(const nlohmann::ordered_json& document, std::string_view name);

// One value of a document as text for programs. Invalid UTF-8 becomes U+FFFD.
std::string plainText(const nlohmann::ordered_json& value);

}  // namespace kolum::tool

#endif
