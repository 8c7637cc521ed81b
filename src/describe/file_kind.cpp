#include "describe/file_kind.h"

#include <kolum/identifiers.h>

#include <algorithm>

#include "filetype/index.h"
#include "filetype/tables.h"

namespace kolum::describe {

namespace {

struct Kind {
  int kind;
  unsigned bit;
  filetype::KindNumber table;
};

constexpr Kind kKinds[] = {
    {MEDIA_KIND_VIDEO, MEDIA_KIND_BIT_VIDEO, filetype::kVideo},
    {MEDIA_KIND_MUSIC, MEDIA_KIND_BIT_MUSIC, filetype::kMusic},
    {MEDIA_KIND_PHOTO, MEDIA_KIND_BIT_PHOTO, filetype::kPhoto},
    {MEDIA_KIND_PLAYLIST, MEDIA_KIND_BIT_PLAYLIST, filetype::kPlaylist},
};

const Kind* rowOf(int kind) {
  const auto* row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [kind](const Kind& each) { return each.kind == kind; });
  return row != std::end(kKinds) ? row : nullptr;
}

}  // namespace

FileKind fileKind(const std::string& name, unsigned kinds) {
  filetype::buildIndex();
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) return {};
  const filetype::Classified found = filetype::classify(name.c_str(), name.c_str() + dot, kinds);
  const Kind* row = rowOf(found.result);
  if (row == nullptr) return {};
  return {found.result, &filetype::rowsOf(row->table)[found.row - 1]};
}

const MediaFileInfo* typeOfKind(const std::string& name, int kind) {
  const Kind* row = rowOf(kind);
  return row != nullptr ? fileKind(name, row->bit).type : nullptr;
}

bool isDsdName(const std::string& name) {
  const MediaFileInfo* type = typeOfKind(name, MEDIA_KIND_MUSIC);
  return type != nullptr && type->formatIds >> 32 == CODEC_ID_DSD;
}

}  // namespace kolum::describe
