#include "describe/place.h"

#include "media/film_tags.h"

namespace kolum::describe {

namespace {

struct Position {
  double latitude;
  double longitude;
};

std::optional<Position> positionOf(const Document& document) {
  if (document.photo && document.found.photoTags && document.found.photoTags->position) {
    const auto& position = *document.found.photoTags->position;
    return Position{position.latitude, position.longitude};
  }
  if (document.video && document.found.container && document.hasDetails) {
    if (const auto position = media::filmTagsOf(*document.found.container).position)
      return Position{position->latitude, position->longitude};
  }
  return std::nullopt;
}

}  // namespace

void addPlace(Document& document, geocode::PlaceFinder& places) {
  const auto position = positionOf(document);
  if (!position) return;
  document.place = places.at(position->latitude, position->longitude);
  if (!document.place) document.placeTrouble = places.trouble();
}

}  // namespace kolum::describe
