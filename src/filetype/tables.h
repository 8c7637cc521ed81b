// The file name extensions that the media library knows.
#ifndef KOLUM_FILETYPE_TABLES_H
#define KOLUM_FILETYPE_TABLES_H

#include <kolum/filetype.h>

#include <array>
#include <cstdint>
#include <span>

namespace kolum::filetype {

// Kinds, numbered as in masks and the configuration.
enum KindNumber {
  kMusic = MEDIA_KIND_MASK_MUSIC,
  kPhoto = MEDIA_KIND_MASK_PHOTO,
  kVideo = MEDIA_KIND_MASK_VIDEO,
  kPlaylist = MEDIA_KIND_MASK_PLAYLIST,
  kKindCount
};

// Rows without the closing one.
std::span<const MediaFileInfo> rowsOf(KindNumber kind);

}  // namespace kolum::filetype

#endif
