#include <kolum/geocode.h>
#include <kolum/host.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/appliance.h"
#include "files/identifiers.h"
#include "machine/programs.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/numbers.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using MediaLibrary::kPlaceLanguageCodes;
using MediaLibrary::osm_place_s;

constexpr int kBuilding = 18;

constexpr describe::NamedNumber kObjectTypes[] = {
    {"node", MAP_OBJECT_NODE},
    {"way", MAP_OBJECT_WAY},
    {"relation", MAP_OBJECT_RELATION},
    {"other", MAP_OBJECT_OTHER},
};

struct Options {
  std::string latitude;
  std::string longitude;
  int zoom = kBuilding;
  std::string language;
};

double degrees(const std::string& text, const char* what, double limit) {
  const auto value = parseDecimal(text);
  if (value && std::abs(*value) <= limit) return *value;
  throw UsageError(std::string(what) + " is a number from -" + decimalText(limit, 0) + " to " +
                   decimalText(limit, 0) + " degrees, not \"" + text + "\"");
}

Identifier language(int index) {
  const bool isKnown = index >= 0 && index < PLACE_LANGUAGE_OTHER;
  return {index, isKnown ? kPlaceLanguageCodes[index] : "other"};
}

Words languageCodes() {
  return {std::begin(kPlaceLanguageCodes), std::end(kPlaceLanguageCodes)};
}

void checkLanguage(const std::string& code) {
  const Words known = languageCodes();
  if (code.empty() || std::find(known.begin(), known.end(), code) != known.end()) return;
  throw UsageError("--language takes one of " + joined(known) + ", not \"" + code + "\"");
}

Identifier objectType(int type) {
  return named(kObjectTypes, type);
}

// One attempt with the stand-in; besides its path only numbers reach the shell.
int askStandIn(std::string tool, const osm_param_s& query, osm_place_s& place) {
  tool.resize(4 * tool.size() + sizeof "''");  // the longest form of the shell word
  StringConvert2SystemCmdFilename(tool.data());
  tool.resize(std::strlen(tool.data()));
  char arguments[128];
  std::snprintf(arguments, sizeof arguments, " lat=%.8f lon=%.8f zoom=%d", query.lat, query.lon,
                query.zoom);
  return parseOsmInfo((tool + arguments).c_str(), place);
}

Result addressResult(const osm_place_s& place, std::size_t index) {
  const MediaLibrary::osm_address_s& address = place.addresses[index];
  const Identifier identifier = language(address.language);
  Result result = Result::titled(identifier.name + ": " + address.address);
  result.data("language", identifier);
  result.data("address", address.address);
  std::vector<Result> parts;
  for (const MediaLibrary::osm_addr_unit_s& unit : place.addressParts[index].units) {
    Result& part = parts.emplace_back();
    part.data("name", unit.name);
    part.data("value", unit.value);
    result.show(unit.name, unit.value);
  }
  result.data("parts", parts);
  return result;
}

std::vector<Result> addressResults(const osm_place_s& place, const std::string& wanted) {
  std::vector<Result> addresses;
  for (std::size_t i = 0; i < place.addresses.size() && i < place.addressParts.size(); ++i) {
    if (wanted.empty() || wanted == language(place.addresses[i].language).name)
      addresses.push_back(addressResult(place, i));
  }
  return addresses;
}

void print(Context& context, const osm_param_s& query, const osm_place_s& place,
           std::vector<Result> addresses) {
  Result result;
  result.data("lat", query.lat);
  result.data("lon", query.lon);
  result.data("zoom", query.zoom);
  result.show("Position", decimalText(query.lat, 8) + ", " + decimalText(query.lon, 8));
  const Identifier type = objectType(place.osmType);
  result.data("osmType", type);
  result.data("osmId", place.osmId);
  result.show("Map object", joined({type.name, place.osmId}));
  result.list("addresses", std::move(addresses));
  context.printer.block(result);
}

void run(Context& context, const Options& options) {
  checkLanguage(options.language);
  osm_param_s query = {degrees(options.latitude, "LATITUDE", 90),
                       degrees(options.longitude, "LONGITUDE", 180), options.zoom};
  const std::string tool = osmInfoTool();
  if (tool.empty()) return context.fail(kOsmInfoTool, "no such tool");
  osm_place_s place = {};
  const int status =
      tool == kOsmInfoTool ? koOsmInfo(query, place) : askStandIn(tool, query, place);
  if (status != PLACE_FOUND) {
    return context.fail(
        tool, status == PLACE_TOOL_ERROR ? "the tool knows no place there" : "no usable answer");
  }
  std::vector<Result> addresses = addressResults(place, options.language);
  if (!addresses.empty()) return print(context, query, place, std::move(addresses));
  context.fail(tool, options.language.empty() ? "the answer has no address"
                                              : "the answer has no address in " + options.language);
}

}  // namespace

Action defineGeocode(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operand({"LATITUDE"}, options->latitude, "Degrees, north positive");
  syntax.operand({"LONGITUDE"}, options->longitude, "Degrees, east positive");
  syntax.option("--zoom", {"N"}, options->zoom, {0, kBuilding},
                "Level of detail, 0 the world to 18 a building");
  syntax.option("--language", {"CODE", Offer::kWords, languageCodes}, options->language,
                "Prints the address in this language only");
  syntax.help(
      "Prints the place at a position and its address in several languages. The tool osm_info\n"
      "finds it: the appliance's, else the stand-in built with kolum.\n"
      "\nThe stand-in's places are GeoNames data (https://www.geonames.org, licence CC BY 4.0),\n"
      "unless your own server is configured, which usually has OpenStreetMap data (licence ODbL):\n"
      "name the source wherever you show places.\n"
      "\nExample:\n  kolum geocode 48.8584 2.2945 --language en");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
