/*
 * Reverse geocoding: from a GPS position to a place and its address in several languages.
 *
 * The look-up is done by the tool "/usr/local/medialibrary/bin/osm_info"; docs/geocoding.md
 * describes what it prints. The functions keep nothing and may be called from any thread; nothing
 * throws.
 */
#ifndef KOLUM_GEOCODE_H
#define KOLUM_GEOCODE_H

#include <kolum/export.h>

#ifdef __cplusplus

#include <string>
#include <vector>

/* An element of an XML document. The library's own type. */
class XMLNode;

namespace MediaLibrary {

/* What is asked. */
struct osm_param_s {
  double lat; /* latitude in degrees, -90 to 90 */
  double lon; /* longitude in degrees, -180 to 180 */
  int zoom;   /* level of detail, for the tool: 0 the whole world, 18 a building */
};

/* One part of an address. */
struct osm_addr_unit_s {
  std::string name;  /* what it is: "road", "city", "country" and so on, as the tool calls it */
  std::string value; /* UTF-8 */
};

/*
 * The parts of an address in one language. Languages are numbers: 0 "cs", 1 "da", 2 "de", 3 "el",
 * 4 "en", 5 "es", 6 "fi", 7 "fr", 8 "hu", 9 "it", 10 "ja", 11 "ko", 12 "nl", 13 "no", 14 "pl",
 * 15 "pt", 16 "ro", 17 "ru", 18 "sv", 19 "th", 20 "tr", 21 "zh-cn", 22 "zh-tw", 23 any other.
 */
struct osm_addr_unitv_s {
  int language;
  std::vector<osm_addr_unit_s> units; /* in the tool's order */
};

/* An address as one text, in one language. */
struct osm_address_s {
  int language;
  std::string address; /* UTF-8 */
};

/* What is answered. */
struct osm_place_s {
  int osmType;       /* kind of map object: 1 node, 2 way, 3 relation, 4 any other */
  std::string osmId; /* the map object's number */
  std::vector<osm_address_s> addresses;       /* one entry a language */
  std::vector<osm_addr_unitv_s> addressParts; /* likewise, in the same order */
};

}  // namespace MediaLibrary

/* Hosts name it without the namespace. */
using MediaLibrary::osm_param_s;  // NOLINT(google-global-names-in-headers)

/*
 * Looks a position up. Three attempts are made, with a wait of up to 1, 2 and 4 seconds after each
 * failed one, the last one included.
 *
 * Returns 0 with PLACE filled; otherwise what the last attempt returned (see parseOsmInfo).
 */
KOLUM_EXPORT int koOsmInfo(osm_param_s& param, MediaLibrary::osm_place_s& place) noexcept;

/*
 * One attempt: runs COMMAND in a shell and fills PLACE from the XML that it prints. An answer
 * without its language, its "result" with "osm_type" and "osm_id", or its "addressparts" is passed
 * over.
 *
 * Returns 0 with PLACE filled. Returns 2 when the tool answers with an error, 3 when it cannot be
 * started, prints no such XML or more than 16 MiB of it, or gives no complete answer. PLACE then
 * has no addresses when the XML was understood, and is untouched otherwise.
 */
KOLUM_EXPORT int parseOsmInfo(const char* command, MediaLibrary::osm_place_s& place) noexcept;

/*
 * Appends to UNITS the child elements of NODE, in their order: name and text. Those without text
 * are passed over. Returns 0. When memory runs out, UNITS holds what was read until then.
 */
KOLUM_EXPORT int parseAddressXml(XMLNode node,
                                 std::vector<MediaLibrary::osm_addr_unit_s>& units) noexcept;

/*
 * Sets SECONDS to the wait after attempt number ATTEMPT, counted from 0: 0 to 2^ATTEMPT, drawn at
 * random. Seeds the process's random generator with the time, so that calls within one second draw
 * alike.
 */
KOLUM_EXPORT void setWaitSecond(int attempt, unsigned int& seconds) noexcept;

#endif

#endif
