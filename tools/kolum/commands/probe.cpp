#include "commands/probe.h"

#include <kolum/frame.h>

#include <memory>

#include "base/trace.h"
#include "files/columns.h"
#include "files/csv.h"
#include "files/document_text.h"
#include "files/media_files.h"
#include "machine/library.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Options {
  MediaFileArguments files;
  int audioStream = 0;
  bool wantsFingerprint = false;
  bool wantsPlaces = false;
  std::string fields;
  View view;
};

struct ForcedKind {
  int kind;
  unsigned bit;
  const char* word;  // on the command line
};

constexpr ForcedKind kForcedKinds[] = {
    {MEDIA_KIND_VIDEO, MEDIA_KIND_BIT_VIDEO, "video"},
    {MEDIA_KIND_MUSIC, MEDIA_KIND_BIT_MUSIC, "audio"},
    {MEDIA_KIND_PHOTO, MEDIA_KIND_BIT_PHOTO, "photo"},
};

Words kindWords() {
  Words words;
  for (const ForcedKind& kind : kForcedKinds) words.emplace_back(kind.word);
  return words;
}

// The kind forced by the first operand; a single operand is always a file.
const ForcedKind* forcedKind(FileArguments& files) {
  const bool moreNames = files.operands.size() > 1 || !files.listFile.empty();
  if (!moreNames || files.operands.empty()) return nullptr;
  for (const ForcedKind& kind : kForcedKinds) {
    if (files.operands.front() != kind.word) continue;
    files.operands.erase(files.operands.begin());
    return &kind;
  }
  return nullptr;
}

// What the options choose, and the titles of a table.
void begin(Context& context, Options& options) {
  if (!options.fields.empty()) options.view.fields.emplace(options.fields);
  if (!options.view.isCsv) return;
  if (context.json) throw UsageError("--json and --csv exclude each other");
  if (!options.view.fields) return context.printer.csv(csvTitles(Columns::kOfDocuments));
  std::vector<std::string> titles = options.view.fields->names();
  if (titles.front() != "file") titles.insert(titles.begin(), "file");
  context.printer.csv(csvRow(titles));
}

Description description(const describe::MediaPath& path, const describe::Options& options,
                        const View& view) {
  const describe::Document document = documentOf(path, options);
  write(document.trace);
  if (document.failure) return *document.failure;
  return resultOf(document, view);
}

void run(Context& context, Options& options) {
  const ForcedKind* forced = forcedKind(options.files.names);
  begin(context, options);
  const unsigned kinds = forced != nullptr
                             ? forced->bit
                             : MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC | MEDIA_KIND_BIT_PHOTO;
  geocode::PlaceFinder places(geocode::placeProgram());
  describeMediaFiles(context, options.files, kinds, [&](const MediaFile& file) {
    return description(file.path,
                       {.kind = forced != nullptr ? forced->kind : file.kind,
                        .byContent = options.files.byContent,
                        .wantsFingerprint = options.wantsFingerprint,
                        .audioStream = options.audioStream,
                        .places = options.wantsPlaces ? &places : nullptr},
                       options.view);
  });
  closePlaces(context, places);
}

}  // namespace

void closePlaces(Context& context, const geocode::PlaceFinder& places) {
  if (const std::string trouble = places.trouble(); !trouble.empty())
    context.fail("--places", trouble);
  if (places.hasFound() && !context.json)
    context.note("places", "GeoNames (https://www.geonames.org), licence CC BY 4.0");
}

describe::Document documentOf(const describe::MediaPath& path, describe::Options options) {
  initLibrary();
  options.toolFolder = g_localWorkingPath;
  return describe::describe(path, options);
}

Action defineProbe(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addMediaFileArguments(syntax, options->files, kindWords);
  addAudioStreamOption(syntax, options->audioStream);
  syntax.option("--fields", {"KEY,..."}, options->fields,
                "Only these keys: title, position.latitude, streams.language");
  syntax.flag("--csv", options->view.isCsv, "Prints a table of comma-separated values (RFC 4180)");
  syntax.flag("--fingerprint", options->wantsFingerprint, kFingerprintHelp);
  syntax.flag("--places", options->wantsPlaces, kPlacesHelp);
  syntax.flag("-v,--verbose", options->view.isVerbose, "Prints every key");
  syntax.help(
      "Describes media files. A folder stands for the media in it; one with a DVD\n"
      "(VIDEO_TS.IFO) or a Blu-ray disc (index.bdmv) is one video. The kind of a file follows "
      "from\n"
      "its name; \"video\", \"audio\" or \"photo\" before the names forces it for all of "
      "them.\n"
      "--all decides by each file's content instead.\n"
      "\nExamples:\n"
      "  kolum probe Movies/ holiday.mp4\n"
      "  kolum probe -v song.flac\n"
      "  kolum probe --csv --fields title,artist,duration Music/\n"
      "  kolum probe video recording.dat\n"
      "  kolum probe --all --exclude Trailers --exclude '*.tmp' /share\n"
      "  find /share -name '*.mkv' -print0 | kolum probe --json -");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
