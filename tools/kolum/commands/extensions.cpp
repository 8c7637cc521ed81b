#include <kolum/filetype.h>
#include <kolum/identifiers.h>

#include <memory>

#include "base/appliance.h"
#include "describe/diagnosis.h"
#include "files/file_types.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Options {
  std::vector<std::string> kinds;
  bool xml = false;
};

// Codec and container names of songs, the picture format's number of photos.
std::string implied(const FileTypeTable& table, const MediaFileInfo& type) {
  if (table.kind == MEDIA_KIND_PHOTO) return "picture format " + std::to_string(type.formatIds);
  if (table.kind != MEDIA_KIND_MUSIC) return "";
  return ContainerIdentifier{static_cast<unsigned>(type.formatIds)}.text() + ", codec " +
         codecText(static_cast<int>(type.formatIds >> 32), PROFILE_UNKNOWN);
}

void printTable(Context& context, const FileTypeTable& table) {
  for (std::size_t row = 0; row < table.rows.size(); ++row) {
    const MediaFileInfo& type = table.rows[row];
    Result result;
    addKind(result, table.kind);
    result.number("row", "", static_cast<std::int64_t>(row + 1));
    result.show("", type.extension);
    result.show("", type.mimeType);
    result.show("", implied(table, type));
    addFileTypeData(result, table, row);
    context.printer.row(result);
  }
}

// The extensions that the appliance's configuration enables, as the library prints them.
void printXml(Context& context) {
  int failed = 0;
  const std::string xml = context.channels.capture([&] { failed = KoLUM_PrintFileExtList(); });
  if (failed != 0) {
    const auto failure = describe::readingFailure(kLibraryConfigFile);
    return context.fail(kLibraryConfigFile, failure ? failure->reason : "not an ini file");
  }
  context.printer.raw(xml);
}

void run(Context& context, const Options& options) {
  if (options.xml) return printXml(context);
  const unsigned bits = kindBits(options.kinds);
  context.printer.table({{"Kind", 8}, {"Row", 3}, {"Ext.", 5}, {"MIME type", 24}, {"Implies", 0}});
  for (const FileTypeTable& table : fileTypeTables()) {
    if ((bits & table.bit) != 0) printTable(context, table);
  }
}

}  // namespace

Action defineExtensions(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addKindsOption(syntax, options->kinds);
  syntax.flag("--xml", options->xml, "The enabled extensions as XML");
  syntax.help(
      "Prints the file types the media library knows: kind, row, extension, MIME type, and what\n"
      "the extension alone implies. With --xml only those that /etc/config/medialibrary.conf "
      "leaves\n"
      "enabled.\n"
      "\nExample:\n  kolum extensions --kinds music");
  return [options](Context& context) {
    if (options->xml && (context.json || !options->kinds.empty())) {
      throw UsageError("--xml cannot be combined with other options");
    }
    run(context, *options);
  };
}

}  // namespace kolum::tool
