// Places in the tags of films.
#ifndef KOLUM_MEDIA_FILM_POSITION_H
#define KOLUM_MEDIA_FILM_POSITION_H

#include <optional>
#include <string_view>

namespace kolum::media {

struct FilmPosition {
  double latitude = 0;                  // degrees north, -90 to 90
  double longitude = 0;                 // degrees east, -180 to 180
  std::optional<double> altitude = {};  // metres above the sea, negative below
  bool operator==(const FilmPosition&) const = default;
};

// ISO 6709 in all its forms: "+48.8577+002.295/", "+4851.46+00217.7+35CRSWGS_84/",
// "+485127.7+0021742/", "48°51′27.7″N 2°17′42″E 35m"; also "48.8577, 2.295". Empty for anything
// else and for positions that do not exist. Exactly 0, 0 is empty, too: cameras without reception
// write it, and there is only water.
std::optional<FilmPosition> positionOf(std::string_view text);

// What follows a position: after its "/", MP4's "loci" box has the name of the place.
std::string_view placeNameOf(std::string_view text);

}  // namespace kolum::media

#endif
