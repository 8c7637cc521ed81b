/*
 * Reverse geocoding: from a GPS position to a place and its address in several languages.
 *
 * The tool "/usr/local/medialibrary/bin/osm_info" does the look-up; docs/geocoding.md describes
 * what it prints. The functions keep no state and may be called from any thread; nothing throws.
 */
#ifndef KOLUM_GEOCODE_H
#define KOLUM_GEOCODE_H

#include <kolum/export.h>

/* The languages of addresses. */
enum {
  PLACE_LANGUAGE_CS = 0,
  PLACE_LANGUAGE_DA = 1,
  PLACE_LANGUAGE_DE = 2,
  PLACE_LANGUAGE_EL = 3,
  PLACE_LANGUAGE_EN = 4,
  PLACE_LANGUAGE_ES = 5,
  PLACE_LANGUAGE_FI = 6,
  PLACE_LANGUAGE_FR = 7,
  PLACE_LANGUAGE_HU = 8,
  PLACE_LANGUAGE_IT = 9,
  PLACE_LANGUAGE_JA = 10,
  PLACE_LANGUAGE_KO = 11,
  PLACE_LANGUAGE_NL = 12,
  PLACE_LANGUAGE_NO = 13,
  PLACE_LANGUAGE_PL = 14,
  PLACE_LANGUAGE_PT = 15,
  PLACE_LANGUAGE_RO = 16,
  PLACE_LANGUAGE_RU = 17,
  PLACE_LANGUAGE_SV = 18,
  PLACE_LANGUAGE_TH = 19,
  PLACE_LANGUAGE_TR = 20,
  PLACE_LANGUAGE_ZH_CN = 21,
  PLACE_LANGUAGE_ZH_TW = 22,
  PLACE_LANGUAGE_OTHER = 23
};

/* The kinds of map objects. */
enum { MAP_OBJECT_NODE = 1, MAP_OBJECT_WAY = 2, MAP_OBJECT_RELATION = 3, MAP_OBJECT_OTHER = 4 };

/* The results of a look-up. */
enum {
  PLACE_FOUND = 0,
  PLACE_TOOL_ERROR = 2, /* the tool answered with an error */
  PLACE_NO_ANSWER = 3   /* the tool gave no usable answer */
};

#ifdef __cplusplus

#include <string>
#include <vector>

/* An element of an XML document. The library's own type. */
class XMLNode;

namespace MediaLibrary {

/* The codes of PLACE_LANGUAGE_*, indexed by their numbers. */
inline constexpr const char* kPlaceLanguageCodes[PLACE_LANGUAGE_OTHER] = {
    "cs", "da", "de", "el", "en", "es", "fi", "fr", "hu", "it",    "ja",   "ko",
    "nl", "no", "pl", "pt", "ro", "ru", "sv", "th", "tr", "zh-cn", "zh-tw"};

/* A query. */
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

/* The parts of an address in one language. */
struct osm_addr_unitv_s {
  int language;                       /* PLACE_LANGUAGE_* */
  std::vector<osm_addr_unit_s> units; /* in the tool's order */
};

/* An address as one text, in one language. */
struct osm_address_s {
  int language;        /* PLACE_LANGUAGE_* */
  std::string address; /* UTF-8 */
};

/* A place. */
struct osm_place_s {
  int osmType;                                /* MAP_OBJECT_* */
  std::string osmId;                          /* the map object's number */
  std::vector<osm_address_s> addresses;       /* one entry per language */
  std::vector<osm_addr_unitv_s> addressParts; /* likewise, in the same order */
};

}  // namespace MediaLibrary

/* Hosts name it without the namespace. */
using MediaLibrary::osm_param_s;  // NOLINT(google-global-names-in-headers)

/*
 * Looks up a position. Makes up to three attempts, with a wait of up to 1, 2 and 4 seconds after
 * each failed one, including the last.
 *
 * Returns PLACE_FOUND with PLACE filled; otherwise what the last attempt returned (see
 * parseOsmInfo).
 */
KOLUM_EXPORT int koOsmInfo(osm_param_s& param, MediaLibrary::osm_place_s& place) noexcept;

/*
 * One attempt: runs COMMAND in a shell and fills PLACE from the XML that it prints. Answers without
 * their language, their "result" with "osm_type" and "osm_id", or their "addressparts" are skipped.
 *
 * Returns PLACE_FOUND with PLACE filled; PLACE_TOOL_ERROR when the tool answers with an error;
 * PLACE_NO_ANSWER when it cannot be started, prints anything but such XML or more than 16 MiB of
 * it, or gives no complete answer. With PLACE_NO_ANSWER, PLACE has no addresses if the XML was
 * understood; otherwise failures leave it untouched.
 */
KOLUM_EXPORT int parseOsmInfo(const char* command, MediaLibrary::osm_place_s& place) noexcept;

/*
 * Appends name and text of NODE's child elements to UNITS, in their order; those without text are
 * skipped. Returns 0. If memory runs out, UNITS holds what was read so far.
 */
KOLUM_EXPORT int parseAddressXml(XMLNode node,
                                 std::vector<MediaLibrary::osm_addr_unit_s>& units) noexcept;

/*
 * Sets SECONDS to the wait after attempt number ATTEMPT, counted from 0: a random number from 0 to
 * 2^ATTEMPT. Seeds the process's random generator with the time, so that calls within the same
 * second draw the same.
 */
KOLUM_EXPORT void setWaitSecond(int attempt, unsigned int& seconds) noexcept;

#endif

#endif
