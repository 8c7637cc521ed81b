#include <kolum/filetype.h>

#include <memory>

#include "files/file_types.h"
#include "files/identifiers.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Options {
  FileArguments files;
  std::vector<std::string> kinds;
  std::vector<std::string> masks;
  int tag = 0;
};

void classify(Context& context, const std::string& file, unsigned kinds) {
  unsigned row = 0;
  unsigned tag = 0;
  const int kind = KoLUM_GetFilenameType(file.c_str(), &row, kinds, &tag);
  Result result = Result::ofFile(file);
  addKind(result, kind);
  const FileTypeTable* table = fileTypesOfKind(kind);
  if (row != 0) result.data("row", row);
  result.show("Row", row != 0 ? std::to_string(row) : "-");
  if (tag != 0) result.data("tag", tag);
  result.show("MIME type", table != nullptr ? table->rows[row - 1].mimeType : "-");
  if (table != nullptr) addFileTypeData(result, *table, row - 1);
  context.printer.row(result);
}

void run(Context& context, const Options& options) {
  for (const std::string& mask : options.masks) setExclusionMask(mask);
  const unsigned kinds = kindBits(options.kinds) | static_cast<unsigned>(options.tag) << 8;
  requireNames(options.files);
  context.printer.table({{"Kind", 8}, {"Row", 3}, {"MIME type", 24}, {"File", 0}});
  forEachName(context, options.files,
              [&](const std::string& name) { classify(context, name, kinds); });
}

}  // namespace

Action defineClassify(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addFileArguments(syntax, options->files);
  addKindsOption(syntax, options->kinds);
  addMasksOption(syntax, options->masks);
  syntax.option("--tag", {"N"}, options->tag, {0, 255}, "A tag byte, returned for videos");
  syntax.help(
      "Finds the kind of a file by its name alone (the file need not exist): music, video, photo,\n"
      "playlist or none. The row is the type's place in the table that \"kolum extensions\" "
      "prints.\n"
      "\nExample:\n  kolum classify --kinds video,photo *");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
