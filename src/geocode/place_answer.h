// An answer of "osm_info --places": a line of JSON.
//
//   {"position":"48.1374 11.5755","name":"Munich","region":"Bavaria","country":"Germany",
//    "countryCode":"DE","geonamesId":2867714,"distance":3}
#ifndef KOLUM_GEOCODE_PLACE_ANSWER_H
#define KOLUM_GEOCODE_PLACE_ANSWER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kolum::geocode {

// A place that GeoNames knows. Texts that are unknown are empty.
struct Place {
  std::string name = {};
  std::string region = {};  // a state, a province
  std::string country = {};
  std::string countryCode = {};  // two capitals
  std::optional<std::int64_t> geonamesId = {};
  std::int64_t distance = 0;  // metres, from the position that was asked for

  bool operator==(const Place&) const = default;
};

struct PlaceAnswer {
  std::optional<Place> place = {};  // empty if none is near
  std::string error = {};           // why there is no answer; else empty
};

inline constexpr std::size_t kLongestPlaceAnswer = 4096;  // bytes

// Empty unless LINE is an answer to this question: one flat object with the question as its
// position, names of UTF-8 without control characters, and a distance on Earth. Other keys with
// plain values are ignored.
std::optional<PlaceAnswer> readPlaceAnswer(std::string_view line, std::string_view question);

}  // namespace kolum::geocode

#endif
