// What the program prints: a place in several languages, or an error, as XML.
#ifndef KOLUM_OSM_INFO_ANSWER_H
#define KOLUM_OSM_INFO_ANSWER_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::osm_info {

// Why a look-up gives no answer.
struct LookUpError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// One part of an address; its name becomes an element name.
struct AddressPart {
  std::string name;
  std::string value;
};

// A place in one language.
struct Answer {
  std::string language;
  std::string osmType;  // "node", "way" or "relation"; another word for anything but a map object
  std::string osmId;
  std::string address;
  std::vector<AddressPart> parts;
};

// Texts are UTF-8; control characters in them become spaces. Parts whose names cannot be element
// names are left out.
std::string toXml(const std::vector<Answer>& answers);
std::string errorToXml(std::string_view message);

}  // namespace kolum::osm_info

#endif
