#include "files/file_types.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <sstream>

#include "files/identifiers.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/context.h"
#include "terminal/numbers.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// The playlist table publishes no size: its last row has no extension.
std::span<const MediaFileInfo> rowsOf(const MediaFileInfo* table) {
  std::size_t count = 0;
  while (table[count].extension != nullptr) ++count;
  return {table, count};
}

const FileTypeTable& tableNamed(const std::string& name) {
  const std::span<const FileTypeTable> tables = fileTypeTables();
  const auto table =
      std::find_if(tables.begin(), tables.end(), [&](const auto& t) { return name == t.name; });
  if (table == tables.end()) {
    throw UsageError("unknown kind \"" + name + "\": video, music, photo or playlist");
  }
  return *table;
}

Words kindNames() {
  Words words;
  for (const FileTypeTable& table : fileTypeTables()) words.emplace_back(table.name);
  return words;
}

Words kindMasks() {
  Words words = kindNames();
  for (std::string& word : words) word += '=';
  return words;
}

}  // namespace

std::span<const FileTypeTable> fileTypeTables() {
  static const FileTypeTable kTables[] = {
      {MEDIA_KIND_VIDEO, MEDIA_KIND_BIT_VIDEO, MEDIA_KIND_MASK_VIDEO,
       kindIdentifier(MEDIA_KIND_VIDEO).name, rowsOf(g_VideoFileInfo)},
      {MEDIA_KIND_MUSIC, MEDIA_KIND_BIT_MUSIC, MEDIA_KIND_MASK_MUSIC,
       kindIdentifier(MEDIA_KIND_MUSIC).name, rowsOf(g_SongFileInfo)},
      {MEDIA_KIND_PHOTO, MEDIA_KIND_BIT_PHOTO, MEDIA_KIND_MASK_PHOTO,
       kindIdentifier(MEDIA_KIND_PHOTO).name, rowsOf(g_PictureFileInfo)},
      {MEDIA_KIND_PLAYLIST, MEDIA_KIND_BIT_PLAYLIST, MEDIA_KIND_MASK_PLAYLIST,
       kindIdentifier(MEDIA_KIND_PLAYLIST).name, rowsOf(g_PlaylistFileInfo)},
  };
  return kTables;
}

const FileTypeTable* fileTypesOfKind(int kind) {
  const std::span<const FileTypeTable> tables = fileTypeTables();
  const auto table =
      std::find_if(tables.begin(), tables.end(), [&](const auto& t) { return t.kind == kind; });
  return table == tables.end() ? nullptr : &*table;
}

void addKindsOption(Syntax& syntax, std::vector<std::string>& kinds) {
  syntax.repeatedOption("--kinds", {"KIND,...", Offer::kWordList, kindNames}, kinds,
                        "Only these kinds: video, music, photo, playlist");
}

unsigned kindBits(const std::vector<std::string>& kinds) {
  if (kinds.empty()) return MEDIA_KIND_BITS_ALL;
  unsigned bits = 0;
  for (const std::string& list : kinds) {
    std::istringstream names(list);
    for (std::string kind; std::getline(names, kind, ',');) bits |= tableNamed(kind).bit;
  }
  return bits;
}

void addMasksOption(Syntax& syntax, std::vector<std::string>& masks) {
  syntax.repeatedOption("--mask", {"KIND=MASK", Offer::kWordStarts, kindMasks}, masks,
                        "Excludes the rows whose bits (row - 1) are set, in decimal or with 0x");
}

void setExclusionMask(const std::string& value) {
  const std::size_t equals = value.find('=');
  const std::string kind = value.substr(0, equals);
  const FileTypeTable& table = tableNamed(kind);
  const auto mask = parseNumber(equals == std::string::npos ? "" : value.substr(equals + 1));
  if (!mask || KoLUM_SetFileTypeUmaskInternal(table.maskNumber, *mask) != 0) {
    throw UsageError("\"" + value + "\" has no mask from 0 to 0x7fffffffffffffff");
  }
}

void addFileTypeData(Result& result, const FileTypeTable& table, std::size_t row) {
  const MediaFileInfo& type = table.rows[row];
  result.data("extension", type.extension);
  result.data("mimeType", type.mimeType);
  if (table.kind == MEDIA_KIND_PHOTO) result.data("pictureFormat", type.formatIds);
  if (table.kind != MEDIA_KIND_MUSIC) return;
  const auto codec = static_cast<int>(type.formatIds >> 32);
  result.data("containerFormat",
              ContainerIdentifier{static_cast<unsigned>(type.formatIds)}.object());
  result.data("audioCodec", codecIdentifier(codec));
  result.data("flag", type.flag);
}

}  // namespace kolum::tool
