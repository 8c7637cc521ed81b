// The languages of an answer.
#ifndef KOLUM_OSM_INFO_LANGUAGES_H
#define KOLUM_OSM_INFO_LANGUAGES_H

#include <span>
#include <string_view>

namespace kolum::osm_info {

struct Language {
  std::string_view code;      // in answers
  std::string_view accepted;  // what a server is asked for, in order of preference
  std::string_view locales;   // with the offline translations, in order of preference
};

std::span<const Language> languages();

// Null if there is no such language.
const Language* findLanguage(std::string_view code);

}  // namespace kolum::osm_info

#endif
