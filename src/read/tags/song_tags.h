// The tags of a song.
#ifndef KOLUM_READ_TAGS_SONG_TAGS_H
#define KOLUM_READ_TAGS_SONG_TAGS_H

#include <optional>

#include "media/song_tags.h"
#include "media/source.h"

namespace kolum::tags {

// The file's first bytes decide what it is, whatever its name says. Empty if it has no tags. Reads
// the tags only, and of covers no more than their beginning. Throws std::bad_alloc.
//
// Where a file has several tags, the first of these that has a value counts: the format's own
// (Vorbis comments, boxes, attributes), ID3v2, APE, the text chunks of WAV and AIFF, ID3v1.
// Compressed and encrypted frames of ID3v2 are not read.
std::optional<media::SongTags> readSongTags(const media::Source& source);

}  // namespace kolum::tags

#endif
