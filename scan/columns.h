// The columns of a library's views that come from keys of documents, and the views themselves.
#ifndef KOLUM_SCAN_COLUMNS_H
#define KOLUM_SCAN_COLUMNS_H

#include <span>
#include <string>

namespace kolum::scan {

// How a column gets its value from the key that is its path.
enum class From {
  kValue,           // the value itself: "camera.make", "covers[0].type"
  kList,            // the elements of a list, joined by "; ": "keywords"
  kMembers,         // a key of all objects in a list, joined by "; ": "people[].name"
  kCount,           // the length of a list
  kVideo,           // a key of the first video stream
  kVideoList,       // a list of the first video stream, joined by "; "
  kSound,           // a key of the first sound
  kSounds,          // a key of all sounds, joined by "; "; of a disc, of those of its main title
  kSubtitles,       // the same of subtitles
  kPictureOrVideo,  // the value, or else that of the same key of the first video stream
  kFiles,           // a column that the view "files" has had since version 1
  kDateKey,         // the name of the key that the column "date" is from
  kTags,            // the texts of all tags, one per line
};

// Which views have a column; "files" has all of them.
inline constexpr unsigned kVideos = 1;
inline constexpr unsigned kSongs = 2;
inline constexpr unsigned kPhotos = 4;

struct Column {
  const char* name;
  From from;
  const char* path;  // of the key
  unsigned views;
  int schema = 2;  // the version of the database's schema that brought it
};

// In the order in which they follow the columns of version 1 in each view.
std::span<const Column> columns();

// SQL that makes all views anew, as they are in this version of the schema (2 and later).
std::string sqlOfViews(int schema);

}  // namespace kolum::scan

#endif
