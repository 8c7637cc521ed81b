// Where a photo or a film was made.
#ifndef KOLUM_DESCRIBE_PLACE_H
#define KOLUM_DESCRIBE_PLACE_H

#include "describe/document.h"
#include "geocode/place_finder.h"

namespace kolum::describe {

// Adds the nearest known place, or why it is not known, if the document has a position.
void addPlace(Document& document, geocode::PlaceFinder& places);

}  // namespace kolum::describe

#endif
