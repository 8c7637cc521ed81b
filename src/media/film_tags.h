// What a film says about itself in its tags, whatever its container calls them.
#ifndef KOLUM_MEDIA_FILM_TAGS_H
#define KOLUM_MEDIA_FILM_TAGS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "media/film_date.h"
#include "media/film_position.h"
#include "media/stream.h"

namespace kolum::media {

inline constexpr std::size_t kMostFilmNames = 256;

// Texts are UTF-8 without NUL, of kLongestText bytes at most (base/clean_text.h), lists have
// kMostFilmNames different elements at most, in the order of the file. Empty means not stated.
struct FilmTags {
  std::string title = {};
  std::vector<std::string> artists = {};
  std::string show = {};            // the series
  std::optional<int> season = {};   // 0 to 9999; 0 has the specials
  std::optional<int> episode = {};  // 0 to 9999
  std::string episodeId = {};       // as stored: "S01E02", "102"
  std::string network = {};         // that broadcast it
  std::vector<std::string> genres = {};
  std::string description = {};  // short
  std::string synopsis = {};     // long
  std::string comment = {};
  std::string copyright = {};
  std::vector<std::string> directors = {};
  std::vector<std::string> actors = {};

  std::optional<FilmDate> created = {};  // when it was filmed, or else when the file was made
  std::optional<FilmDate> date = {};     // as tagged: of films mostly the release

  std::string make = {};      // of the camera
  std::string model = {};     // of the camera
  std::string software = {};  // in the camera, or that edited the film
  std::string androidVersion = {};
  std::optional<FilmPosition> position = {};
  std::string placeName = {};

  // The same in the photo that belongs to this film, which together are a live photo.
  std::string contentIdentifier = {};
  bool isLivePhoto = false;  // marked as such

  std::string encoder = {};  // the program that wrote the container
};

FilmTags filmTagsOf(const Container& container);

}  // namespace kolum::media

#endif
