#include "geocode/osm_answer.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "base/log.h"

using MediaLibrary::osm_place_s;

namespace kolum::geocode {

namespace {

constexpr char kSource[] = "osm_metadata_query";
constexpr char kFunction[] = "parseOsmInfo";

constexpr std::string_view kOsmTypes[] = {"node", "way", "relation"};

// The index of TEXT in LIST; the list's length if it is not there.
template <typename List>
int positionIn(const List& list, std::string_view text) {
  const auto found = std::find(std::begin(list), std::end(list), text);
  return static_cast<int>(std::distance(std::begin(list), found));
}

// Appends the answer in one language; an incomplete one is skipped.
void addAnswer(const XMLNode& answer, osm_place_s& place) {
  const char* code = answer.getAttribute("language");
  const XMLNode result = answer.getChildNode("result");
  const XMLNode parts = answer.getChildNode("addressparts");
  if (code == nullptr || result.isEmpty() || parts.isEmpty()) return;
  const char* osmType = result.getAttribute("osm_type");
  const char* osmId = result.getAttribute("osm_id");
  if (osmType == nullptr || osmId == nullptr) return;

  const int language = languageIndex(code);
  place.osmType = osmTypeOf(osmType);
  place.osmId = osmId;
  place.addressParts.push_back({language, {}});
  addAddressParts(parts, place.addressParts.back().units);
  place.addresses.push_back({language, result.getText()});
}

// The tool's error report: a top-level element, or one directly below it. Deeper down, "error" may
// be part of an address.
XMLNode errorIn(std::string_view xml) {
  const XMLNode document = XMLNode::parseDocument(xml);
  for (const XMLNode& top : document.getChildNodes()) {
    if (top.getName() == "error") return top;
    if (XMLNode error = top.getChildNode("error"); !error.isEmpty()) return error;
  }
  return {};
}

}  // namespace

void addAddressParts(const XMLNode& node, std::vector<MediaLibrary::osm_addr_unit_s>& units) {
  for (const XMLNode& part : node.getChildNodes()) {
    std::string name = part.getName();
    std::string value = part.getText();
    if (!name.empty() && !value.empty()) units.push_back({std::move(name), std::move(value)});
  }
}

int languageIndex(std::string_view code) {
  return positionIn(MediaLibrary::kPlaceLanguageCodes, code);
}

int osmTypeOf(std::string_view type) {
  return positionIn(kOsmTypes, type) + MAP_OBJECT_NODE;
}

int readAnswer(std::string_view xml, osm_place_s& place) {
  if (const XMLNode error = errorIn(xml); !error.isEmpty()) {
    KOLUM_LOG_AS(kSource, kFunction, "osm error:%s", error.getText().c_str());
    return PLACE_TOOL_ERROR;
  }
  XmlResults results;
  const XMLNode output = XMLNode::parseString(xml, "output", &results);
  if (output.isEmpty()) {
    KOLUM_LOG_AS(kSource, kFunction, "parse osm xml fail:%d", results.error);
    return PLACE_NO_ANSWER;
  }
  place.addresses.clear();
  place.addressParts.clear();
  for (const XMLNode& answer : output.getChildNodes("reversegeocode")) addAnswer(answer, place);
  return place.addresses.empty() ? PLACE_NO_ANSWER : PLACE_FOUND;
}

}  // namespace kolum::geocode
