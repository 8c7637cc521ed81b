// The look-up tool's answer: from XML to a place record.
//
//   <error>what went wrong</error>
// or
//   <output>
//     <reversegeocode language="en">
//       <result osm_type="way" osm_id="5013364">display address</result>
//       <addressparts><road>part</road><city>part</city> ...</addressparts>
//     </reversegeocode> ...
//   </output>
#ifndef KOLUM_GEOCODE_OSM_ANSWER_H
#define KOLUM_GEOCODE_OSM_ANSWER_H

#include <kolum/geocode.h>

#include <string_view>
#include <vector>

#include "base/xml_node.h"

namespace kolum::geocode {

// PLACE_LANGUAGE_*.
int languageIndex(std::string_view code);

// MAP_OBJECT_*.
int osmTypeOf(std::string_view type);

// Appends the names and texts of NODE's child elements that have a text.
void addAddressParts(const XMLNode& node, std::vector<MediaLibrary::osm_addr_unit_s>& units);

// Fills PLACE and returns PLACE_FOUND, PLACE_TOOL_ERROR or PLACE_NO_ANSWER. PLACE is emptied once
// the XML has an "output" element.
int readAnswer(std::string_view xml, MediaLibrary::osm_place_s& place);

}  // namespace kolum::geocode

#endif
