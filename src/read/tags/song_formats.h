// Readers of the kinds of tags that songs have. All of them look at a bounded number of entries,
// and read of each no more than counts: TagLib's own files read whole tags, search whole files for
// them, and follow boxes and chapters as deep as they are nested.
#ifndef KOLUM_READ_TAGS_SONG_FORMATS_H
#define KOLUM_READ_TAGS_SONG_FORMATS_H

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "media/source.h"
#include "read/tags/song_tag_builder.h"

namespace kolum::tags {

using Bytes = std::span<const std::uint8_t>;

// How many entries of a tag (frames, items, boxes, comments) are looked at, and how much of one
// that is text: more than the longest text that counts takes in UTF-16.
inline constexpr int kMostEntries = 4096;
inline constexpr std::size_t kLongestEntry = std::size_t{160} << 10;
// What is read in one piece, if a tag must be.
inline constexpr std::size_t kLargestPiece = std::size_t{16} << 20;

// A part of a file, or of anything else that has positions.
struct Range {
  std::int64_t begin = 0;
  std::int64_t end = 0;

  std::int64_t size() const { return end - begin; }
  // The part from BEGIN on, SIZE bytes long at most.
  Range part(std::int64_t begin, std::uint64_t size) const;
};

// Reads a file in windows: the entries of a tag are small and follow each other.
class TagFile {
 public:
  explicit TagFile(const media::Source& source) : source_(source) {}

  std::int64_t size() const { return source_.size(); }
  Bytes head() const { return source_.head(); }
  // The bytes of a range, MOST at most; fewer where the file ends.
  std::vector<std::uint8_t> read(const Range& range, std::size_t most);

 private:
  const media::Source& source_;
  std::vector<std::uint8_t> window_;
  std::int64_t windowBegin_ = 0;
};

// What a tag consists of: parts of a file, one after the other, or bytes in memory.
class TagBytes {
 public:
  TagBytes(TagFile& file, const Range& range) : TagBytes(file, std::vector<Range>{range}) {}
  TagBytes(TagFile& file, std::vector<Range> parts);
  explicit TagBytes(std::vector<std::uint8_t> memory)
      : memory_(std::move(memory)), size_(static_cast<std::int64_t>(memory_.size())) {}

  std::int64_t size() const { return size_ - begin_; }
  // SIZE bytes at POSITION; fewer where the tag ends, and kLargestPiece at most.
  std::vector<std::uint8_t> at(std::int64_t position, std::uint64_t size);
  // Leaves out the first bytes.
  void skip(std::size_t count);

 private:
  TagFile* file_ = nullptr;
  std::vector<Range> parts_;
  std::vector<std::uint8_t> memory_;
  std::int64_t size_ = 0;
  std::int64_t begin_ = 0;
};

// Another tag may follow an ID3v2 tag in the same file. Returns where the one at the range's
// beginning ends; the beginning itself if there is none.
std::int64_t addId3v2(TagFile& file, const Range& range, SongTagBuilder& builder);
// A file's last bytes: APE, ID3v1.
void addTrailingTags(TagFile& file, SongTagBuilder& builder);
// Vorbis comments, from the vendor on.
void addVorbisComments(TagBytes bytes, SongTagBuilder& builder);
// FLAC's description of a picture, followed by the picture.
void addFlacPicture(TagBytes bytes, SongTagBuilder& builder);
// FLAC's blocks from BEGIN on, where "fLaC" stands.
void addFlac(TagFile& file, std::int64_t begin, SongTagBuilder& builder);
// Vorbis, Opus, Speex, FLAC and Theora in Ogg.
void addOgg(TagFile& file, SongTagBuilder& builder);
void addMp4(TagFile& file, SongTagBuilder& builder);
void addAsf(TagFile& file, SongTagBuilder& builder);
// RIFF WAVE, AIFF and DSDIFF; false if the file is neither.
bool addChunks(TagFile& file, SongTagBuilder& builder);
void addDsf(TagFile& file, SongTagBuilder& builder);

}  // namespace kolum::tags

#endif
