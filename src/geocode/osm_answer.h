// The answer of the place look-up tool: an XML text to a place record.
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

inline constexpr int kSuccess = 0;
inline constexpr int kToolError = 2;  // the tool says that it failed
inline constexpr int kNoAnswer = 3;   // the tool says nothing of use

// The language's number in the records; 23 when it has none.
int languageIndex(std::string_view code);

// The map object's kind in the records; 4 for every other.
int osmTypeOf(std::string_view type);

// Adds the child elements of NODE that hold a text, by name.
void addAddressParts(const XMLNode& node, std::vector<MediaLibrary::osm_addr_unit_s>& units);

// Fills PLACE and returns one of the codes above. PLACE is emptied once the XML is understood.
int readAnswer(std::string_view xml, MediaLibrary::osm_place_s& place);

}  // namespace kolum::geocode

#endif
