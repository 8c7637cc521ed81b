#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "commands/library.h"
#include "files/documents.h"
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

constexpr std::string_view kLineEnd = "\r\n";

// By RFC 4180.
std::string field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += c;
    quoted += c;
  }
  return quoted + '"';
}

// Bytes of paths that are not UTF-8 become U+FFFD, as in JSON.
std::string replaced(const Json& text) {
  return Json::parse(text.dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

std::string valueText(const Json& object, const Json::json_pointer& place) {
  if (!object.contains(place)) return "";
  const Json& value = object.at(place);
  if (value.is_null()) return "";
  if (!value.is_string()) return value.dump();
  std::string text = value.get<std::string>();
  return isUtf8(text) ? text : replaced(value);
}

const std::vector<Json::json_pointer>& places() {
  static const std::vector<Json::json_pointer> kPlaces = [] {
    std::vector<Json::json_pointer> all;
    for (const Column& column : kColumns) all.emplace_back(column.pointer);
    return all;
  }();
  return kPlaces;
}

std::string lineOf(const std::vector<std::string>& values) {
  std::string line;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) line += ',';
    line += field(values[i]);
  }
  return line.append(kLineEnd);
}

std::string header() {
  std::vector<std::string> titles;
  for (const Column& column : kColumns) titles.emplace_back(column.title);
  return lineOf(titles);
}

std::string row(const Json& object) {
  std::vector<std::string> values;
  for (const Json::json_pointer& place : places()) values.push_back(valueText(object, place));
  return lineOf(values);
}

void run(Context& context, const Options& options) {
  if (context.json == options.asCsv) throw UsageError("either --json or --csv is required");
  scan::Store store = libraryToRead(options.library);
  if (options.asCsv) context.printer.raw(header());
  forEachFound(context, store, {}, options.paths, [&](const scan::FoundFile& file) {
    const auto result = foundResult(context, file);
    if (!result) return;
    if (!options.asCsv) return context.printer.block(*result);
    context.printer.raw(row(result->json()));
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
