#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "commands/library.h"
#include "files/csv.h"
#include "files/documents.h"
#include "files/fields.h"
#include "files/library.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

struct Options {
  std::string library;
  std::vector<std::string> paths;
  bool asCsv = false;
};

// A column of the CSV: its title, which never changes, and where its value is in the JSON.
struct Column {
  const char* title;
  const char* pointer;
};

// New ones are added at the end.
constexpr Column kColumns[] = {
    {"file", "/file"},
    {"fileBytes", "/fileBytes"},
    {"kind", "/kind/name"},
    {"size", "/size"},
    {"modified", "/modified"},
    {"state", "/state"},
    {"errorCode", "/error/code"},
    {"errorReason", "/error/reason"},
    {"mimeType", "/mimeType"},
    {"containerFormat", "/containerFormat/name"},
    {"brand", "/containerFormat/brand"},
    {"dlnaProfile", "/dlnaProfile"},
    {"duration", "/duration"},
    {"bitRate", "/bitRate"},
    {"width", "/width"},
    {"height", "/height"},
    {"frameRate", "/frameRate"},
    {"orientation", "/orientation"},
    {"videoCodec", "/videoCodec/name"},
    {"videoProfile", "/videoProfile/name"},
    {"videoLevel", "/videoLevel"},
    {"videoBitRate", "/videoBitRate"},
    {"audioCodec", "/audioCodec/name"},
    {"audioProfile", "/audioProfile/name"},
    {"audioBitRate", "/audioBitRate"},
    {"sampleRate", "/sampleRate"},
    {"bitsPerSample", "/bitsPerSample"},
    {"channels", "/channels"},
    {"creationDate", "/creationDate"},
    {"creationTime", "/creationTime"},
    {"pixelFormatName", "/pixelFormatName"},
    {"isAlbumCover", "/isAlbumCover"},
    {"title", "/title"},
    {"artist", "/artist"},
    {"albumArtist", "/albumArtist"},
    {"album", "/album"},
    {"genre", "/genre"},
    {"track", "/track"},
    {"year", "/year"},
};

std::string valueText(const Json& object, const Json::json_pointer& place) {
  return object.contains(place) ? plainText(object.at(place)) : "";
}

const std::vector<Json::json_pointer>& places() {
  static const std::vector<Json::json_pointer> kPlaces = [] {
    std::vector<Json::json_pointer> all;
    for (const Column& column : kColumns) all.emplace_back(column.pointer);
    return all;
  }();
  return kPlaces;
}

std::string header() {
  std::vector<std::string> titles;
  for (const Column& column : kColumns) titles.emplace_back(column.title);
  return csvRow(titles);
}

std::string row(const Json& object) {
  std::vector<std::string> values;
  for (const Json::json_pointer& place : places()) values.push_back(valueText(object, place));
  return csvRow(values);
}

void run(Context& context, const Options& options) {
  if (context.json == options.asCsv) throw UsageError("either --json or --csv is required");
  scan::Store store = libraryToRead(options.library);
  if (options.asCsv) context.printer.csv(header());
  forEachFound(context, store, {}, options.paths, [&](const scan::FoundFile& file) {
    const auto result = foundResult(context, file);
    if (!result) return;
    if (!options.asCsv) return context.printer.block(*result);
    context.printer.csv(row(result->json()));
  });
}

}  // namespace

Action defineLibraryExport(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addPathOperands(syntax, options->paths);
  syntax.flag("--csv", options->asCsv, "Prints a table of comma-separated values (RFC 4180)");
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Prints what is known of every file: as JSON Lines, which \"kolum library add\" takes into\n"
      "another library, or as a table.\n"
      "\nExamples:\n"
      "  kolum library export --json >library.jsonl\n"
      "  kolum library export --csv /share/Music >music.csv");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
