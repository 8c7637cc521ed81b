#include "files/fields.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>

#include "base/utf8.h"
#include "terminal/context.h"

namespace kolum::tool {

namespace {

using describe::Key;
using Json = nlohmann::ordered_json;

std::string_view firstPart(std::string_view name) {
  return name.substr(0, name.find('.'));
}

std::string_view furtherParts(std::string_view name) {
  const std::size_t dot = name.find('.');
  return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

bool isPartOfIdentifier(const Key& key, std::string_view name) {
  const bool isContainer = key.type == describe::Type::kContainer;
  if (!isContainer && key.type != describe::Type::kIdentifier) return false;
  return name == "id" || name == "name" || (isContainer && name == "brand");
}

// Keys of different groups may have the same name, such as the position of photos and of films.
bool isKey(std::span<const Key> keys, std::string_view name) {
  return std::any_of(keys.begin(), keys.end(), [name](const Key& key) {
    if (key.name != firstPart(name)) return false;
    const std::string_view further = furtherParts(name);
    return name == key.name || isPartOfIdentifier(key, further) || isKey(key.members, further);
  });
}

bool isKey(std::string_view name) {
  const auto groups = describe::groups();
  return std::any_of(groups.begin(), groups.end(),
                     [name](const describe::Group& group) { return isKey(group.keys, name); });
}

// Copies what a name stands for.
void copy(const Json& from, std::string_view name, Json& to) {
  if (from.is_array()) {
    if (to.is_null()) to = Json::array();
    while (to.size() < from.size()) to.push_back(Json::object());
    for (std::size_t i = 0; i < from.size(); ++i) copy(from[i], name, to[i]);
    return;
  }
  const std::string first(firstPart(name));
  const auto found = from.is_object() ? from.find(first) : from.end();
  if (!from.is_object() || found == from.end()) return;
  const std::string_view further = furtherParts(name);
  if (further.empty())
    to[first] = *found;
  else
    copy(*found, further, to[first]);
}

void collect(const Json& from, std::string_view name, std::vector<std::string>& values) {
  if (from.is_array()) {
    for (const Json& element : from) collect(element, name, values);
  } else if (name.empty()) {
    values.push_back(plainText(from));
  } else if (from.is_object()) {
    if (const auto found = from.find(std::string(firstPart(name))); found != from.end())
      collect(*found, furtherParts(name), values);
  }
}

std::string joinedValues(const std::vector<std::string>& values) {
  std::string joined;
  for (const std::string& value : values) joined += (joined.empty() ? "" : "; ") + value;
  return joined;
}

}  // namespace

Fields::Fields(std::string_view list) {
  while (!list.empty()) {
    const std::string_view name = list.substr(0, list.find(','));
    list.remove_prefix(std::min(list.size(), name.size() + 1));
    if (!isKey(name)) {
      throw UsageError("\"" + std::string(name) +
                       "\" is no key of a document; docs/document.md lists them");
    }
    names_.emplace_back(name);
  }
}

Json Fields::of(const Json& document) const {
  Json chosen = Json::object();
  for (const char* key : {"file", "fileBytes"}) copy(document, key, chosen);
  for (const std::string& name : names_) copy(document, name, chosen);
  copy(document, "error", chosen);
  return chosen;
}

std::vector<std::string> Fields::values(const Json& document) const {
  std::vector<std::string> all;
  for (const std::string& name : names_) all.push_back(fieldText(document, name));
  return all;
}

std::string fieldText(const Json& document, std::string_view name) {
  std::vector<std::string> found;
  collect(document, name, found);
  return joinedValues(found);
}

std::string plainText(const Json& value) {
  if (value.is_null()) return "";
  const std::string dumped = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  return value.is_string() ? Json::parse(dumped).get<std::string>() : dumped;
}

}  // namespace kolum::tool
