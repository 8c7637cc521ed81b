// Asking for the place of a position.
#ifndef KOLUM_GEOCODE_LOOKUP_H
#define KOLUM_GEOCODE_LOOKUP_H

#include <kolum/geocode.h>

#include <string>

#include "base/xml_node.h"

namespace kolum::geocode {

// Codes of readAnswer(). Asks up to three times, with growing pauses.
int lookUp(const osm_param_s& param, MediaLibrary::osm_place_s& place);

// The same of a command of the caller's, once.
int ask(const std::string& command, MediaLibrary::osm_place_s& place);

// A random pause of at most 2 to the ATTEMPT seconds.
unsigned pauseOf(int attempt);

}  // namespace kolum::geocode

#endif
