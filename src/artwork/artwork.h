// Artwork of artists and albums, and transcoded copies of videos: finding them, and making missing
// thumbnails.
#ifndef KOLUM_ARTWORK_ARTWORK_H
#define KOLUM_ARTWORK_ARTWORK_H

#include <optional>
#include <string>
#include <string_view>

namespace kolum::artwork {

// Whether a transcoded copy of the file exists.
bool hasTranscodedCopy(std::string_view folder, std::string_view fileName);

// The path of an artist's picture relative to the base folder; empty if the name cannot be
// converted.
std::optional<std::string> artistPicture(const char* artist);
bool hasArtistPicture(const std::string& base, const std::string& picture);

// An album's names on disk.
struct AlbumNames {
  std::string folder;  // the artist's
  std::string album;

  // The thumbnail's path relative to the base folder.
  std::string thumbnail() const { return folder + "/" + album + ".jpg"; }
};

// Empty if a name cannot be converted.
std::optional<AlbumNames> albumNames(const char* artist, const char* album);

// Whether the album's thumbnail exists, after making it if possible. TOOLFOLDER is ffmpeg's folder
// with its trailing "/"; null if unknown.
bool hasAlbumThumbnail(const std::string& base, const AlbumNames& names, const char* toolFolder);

}  // namespace kolum::artwork

#endif
