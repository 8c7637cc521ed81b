// Looking up the place at a position.
#ifndef KOLUM_GEOCODE_LOOKUP_H
#define KOLUM_GEOCODE_LOOKUP_H

#include <kolum/geocode.h>

#include <string>

#include "base/xml_node.h"

namespace kolum::geocode {

// Returns readAnswer()'s codes. Makes up to three attempts, with growing pauses.
int lookUp(const osm_param_s& param, MediaLibrary::osm_place_s& place);

// One attempt with the caller's own command.
int ask(const std::string& command, MediaLibrary::osm_place_s& place);

// A random pause of at most 2^ATTEMPT seconds.
unsigned pauseOf(int attempt);

}  // namespace kolum::geocode

#endif
