// The mode --places: one question in a line, one answer in a line, until there are no more.
//
//   48.8584 2.2945
//   {"position":"48.8584 2.2945","name":"Neuilly-sur-Seine","region":"Île-de-France Region",
//    "country":"France","countryCode":"FR","geonamesId":2990611,"distance":3434}
//
// An answer repeats the question, so that nobody takes it for the answer to another one. It has
// nothing else if no place is near, and "error" if it cannot say.
#ifndef KOLUM_OSM_INFO_PLACES_H
#define KOLUM_OSM_INFO_PLACES_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "osm_info/geonames.h"
#include "osm_info/query.h"

namespace kolum::osm_info {

struct NearPlace {
  CityNames names = {};
  double metres = 0;
};

// Throws LookUpError.
using FindPlace = std::function<std::optional<NearPlace>(const Query& position)>;

// In bytes, without the line end.
inline constexpr std::size_t kLongestQuestion = 128;
inline constexpr std::size_t kLongestAnswer = 4096;

// Without the line end. Never throws for a question: what is wrong with it is its answer.
std::string answerTo(std::string_view question, const FindPlace& find);

// Answers standard input on standard output. Returns false if reading or writing fails, and for a
// longer question than kLongestQuestion.
bool servePlaces(const FindPlace& find);

}  // namespace kolum::osm_info

#endif
