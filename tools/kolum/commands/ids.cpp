#include <kolum/identifiers.h>

#include <memory>
#include <optional>
#include <utility>

#include "files/identifiers.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/numbers.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

using describe::brands;
using describe::codecs;
using describe::Enumeration;
using describe::enumerations;
using describe::formats;
using describe::NamedEnumeration;
using describe::NamedNumber;
using describe::profiles;

namespace {

struct Options {
  std::string table;
  std::vector<std::string> values;
  std::string codec;
  bool ffmpeg = false;
};

void printRow(Context& context, std::optional<int> ffmpeg, const Identifier& identifier,
              const std::string& extension = "") {
  Result result;
  if (ffmpeg) {
    result.data("ffmpeg", *ffmpeg);
    result.show("", std::to_string(*ffmpeg));
  }
  result.data("id", identifier.id);
  if (!identifier.name.empty()) result.data("name", identifier.name);
  result.show("", std::to_string(identifier.id));
  result.show("", identifier.id < 0 ? "" : hexText(static_cast<std::uint64_t>(identifier.id)));
  result.show("", identifier.name.empty() ? "(no name)" : identifier.name);
  result.text("extension", "", extension);
  context.printer.row(result);
}

void startTable(Context& context, bool ffmpeg, bool extension) {
  std::vector<Column> columns;
  if (ffmpeg) columns.push_back({"FFmpeg", 7});
  columns.insert(columns.end(), {{"Number", 10}, {"Hex", 10}, {"Name", extension ? 26U : 0U}});
  if (extension) columns.push_back({"Attached audio", 0});
  context.printer.table(columns);
}

const Enumeration& enumerationNamed(const std::string& table) {
  for (const NamedEnumeration& known : enumerations())
    if (known.name == table) return known.enumeration();
  throw UsageError("unknown table \"" + table +
                   "\": formats, brands, codecs, profiles or exceptions");
}

// A container format with its brand, "FORMAT_MPEG4/MPEG4_MOV"; the brand may be left out.
std::optional<unsigned> containerNamed(const std::string& value) {
  const std::size_t slash = value.find('/');
  const NamedNumber* format = formats().find(value.substr(0, slash));
  const NamedNumber* brand = slash == std::string::npos
                                 ? nullptr
                                 : brands().find(std::string_view(value).substr(slash + 1));
  if (format == nullptr || (slash != std::string::npos && brand == nullptr)) return std::nullopt;
  unsigned id = 0;
  const std::string brandName(brand == nullptr ? "" : brand->name);
  if (ContainerFormatNameToID(std::string(format->name).c_str(), brandName.c_str(), &id) != 0) {
    return std::nullopt;
  }
  return id;
}

Identifier containerIdentifier(unsigned id) {
  const auto [format, brand] = describe::containerNames(id);
  std::string name(format);
  if (!brand.empty()) name.append("/").append(brand);
  return {id, std::move(name)};
}

std::string attachedName(std::int64_t id) {
  char extension[KOLUM_IDENTIFIER_NAME_SIZE] = "";
  ContainerFormatIDToAudioAttachedName(extension, static_cast<int>(id));
  return extension;
}

// A number within the range of the library's parameter type TYPE.
template <typename Type>
std::optional<Type> parseAs(const std::string& value) {
  const auto number = parseNumber(value);
  if (!number || !std::in_range<Type>(*number)) return std::nullopt;
  return static_cast<Type>(*number);
}

Words tableNames() {
  Words words;
  for (const NamedEnumeration& table : enumerations()) words.emplace_back(table.name);
  return words;
}

Words codecNames() {
  Words words;
  for (const NamedNumber& row : codecs().rows)
    words.emplace_back(row.name.substr(codecs().prefix.size()));
  return words;
}

int codecNumber(const std::string& value) {
  if (value.empty()) return CODEC_ID_NONE;
  if (const NamedNumber* row = codecs().find(std::string_view(value)))
    return static_cast<int>(row->id);
  if (const auto number = parseAs<int>(value)) return *number;
  throw UsageError("unknown codec \"" + value + "\"");
}

void printAll(Context& context, const Options& options, const Enumeration& enumeration) {
  const bool isFormats = &enumeration == &formats();
  startTable(context, options.ffmpeg, isFormats);
  if (!options.ffmpeg) {
    for (const NamedNumber& row : enumeration.rows) {
      printRow(context, std::nullopt, {row.id, std::string(row.name)},
               isFormats ? attachedName(row.id) : "");
    }
    return;
  }
  constexpr int kLastFfmpegCodec = 0x21000;
  for (int ffmpeg = 0; ffmpeg <= kLastFfmpegCodec; ++ffmpeg) {
    const int id = ffmpegCodecIdConvert(ffmpeg);
    if (id >= 0) printRow(context, ffmpeg, codecIdentifier(id));
  }
}

void printFfmpeg(Context& context, const Options& options, const std::string& value, int codec) {
  const auto ffmpeg = parseAs<int>(value);
  if (!ffmpeg) return context.fail(value, "no FFmpeg number");
  if (options.table == "profiles") {
    return printRow(context, *ffmpeg,
                    profileIdentifier(FF_ProfileToKO_Profile(codec, *ffmpeg), codec));
  }
  const int id = ffmpegCodecIdConvert(*ffmpeg);
  if (id < 0) return context.fail(value, "the library has no number for this FFmpeg codec");
  printRow(context, *ffmpeg, codecIdentifier(id));
}

void printValue(Context& context, const Enumeration& enumeration, const std::string& value,
                int codec) {
  const bool isFormats = &enumeration == &formats();
  const bool isProfiles = &enumeration == &profiles();
  if (isFormats) {
    const auto number = parseAs<unsigned>(value);
    const std::optional<unsigned> id = number ? number : containerNamed(value);
    if (!id || containerIdentifier(*id).name.empty()) return context.fail(value, "no such format");
    return printRow(context, std::nullopt, containerIdentifier(*id), attachedName(*id));
  }
  if (const NamedNumber* row = enumeration.find(std::string_view(value))) {
    return printRow(context, std::nullopt, {row->id, std::string(row->name)});
  }
  if (const auto number = parseAs<int>(value); number && isProfiles && codec != CODEC_ID_NONE) {
    return printRow(context, std::nullopt, profileIdentifier(*number, codec));
  }
  const auto number = parseNumber(value);
  const NamedNumber* row = number ? enumeration.find(*number) : nullptr;
  if (row == nullptr) return context.fail(value, "no such name or number");
  printRow(context, std::nullopt, {row->id, std::string(row->name)});
}

void run(Context& context, const Options& options) {
  const Enumeration& enumeration = enumerationNamed(options.table);
  const bool isProfiles = &enumeration == &profiles();
  if (!options.codec.empty() && !isProfiles) throw UsageError("--codec works only with profiles");
  if (options.ffmpeg && !isProfiles && &enumeration != &codecs()) {
    throw UsageError("--ffmpeg works only with codecs and profiles");
  }
  const int codec = codecNumber(options.codec);
  if (options.ffmpeg && isProfiles && (options.codec.empty() || options.values.empty())) {
    throw UsageError("FFmpeg profile numbers need --codec and a number");
  }
  if (options.values.empty()) return printAll(context, options, enumeration);
  startTable(context, options.ffmpeg, &enumeration == &formats());
  for (const std::string& value : options.values) {
    if (options.ffmpeg) {
      printFfmpeg(context, options, value, codec);
    } else {
      printValue(context, enumeration, value, codec);
    }
  }
}

}  // namespace

Action defineIds(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operand({"TABLE", Offer::kWords, tableNames}, options->table,
                 "formats, brands, codecs, profiles or exceptions");
  syntax.operands({"VALUE"}, options->values, "Names or numbers to look up");
  syntax.option("--codec", {"CODEC", Offer::kWords, codecNames}, options->codec,
                "The codec that profile numbers belong to");
  syntax.flag("--ffmpeg", options->ffmpeg, "Converts FFmpeg's numbers");
  syntax.help(
      "Prints a table of the library's identifiers, or looks up values in it: names with or "
      "without\n"
      "their prefix, numbers in decimal or with 0x. FFmpeg's numbers are those of release 57.\n"
      "\nExamples:\n"
      "  kolum ids codecs\n"
      "  kolum ids codecs H264 0x15002\n"
      "  kolum ids formats MPEG4/MOV 0x10008\n"
      "  kolum ids codecs --ffmpeg 174\n"
      "  kolum ids profiles --codec H264 --ffmpeg 100");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
