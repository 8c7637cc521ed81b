// Describing files.
#ifndef KOLUM_TOOL_COMMANDS_PROBE_H
#define KOLUM_TOOL_COMMANDS_PROBE_H

#include "describe/describe.h"
#include "files/descriptions.h"
#include "geocode/place_finder.h"
#include "terminal/context.h"

namespace kolum::tool {

// The external tool for DSD songs is that of initLibrary().
inline constexpr const char* kFingerprintHelp =
    "Adds a number to find copies by (reads up to 128 KiB more of each file)";

inline constexpr const char* kPlacesHelp =
    "Adds the nearest known place for each position (GeoNames, without a network)";

// Credits the places that were found, to people, or says why there are none.
void closePlaces(Context& context, const geocode::PlaceFinder& places);

describe::Document documentOf(const describe::MediaPath& path, describe::Options options);

}  // namespace kolum::tool

#endif
