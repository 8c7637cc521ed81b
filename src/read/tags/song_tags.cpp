#include "read/tags/song_tags.h"

#include <algorithm>
#include <array>

#include "base/bytes.h"
#include "read/headers/id3v2.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

using namespace std::string_view_literals;

// What the beginning of a file must contain.
struct Format {
  std::size_t position;
  std::string_view text;
  void (*add)(TagFile& file, SongTagBuilder& builder);
};

constexpr auto kFormats = std::to_array<Format>({
    {4, "ftyp", addMp4},
    {4, "moov", addMp4},
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv, addAsf},
    {0, "OggS", addOgg},
    {0, "DSD ", addDsf},
});

bool contains(Bytes head, std::size_t position, std::string_view text) {
  return textOf(head).substr(std::min(position, head.size())).starts_with(text);
}

// Sound that knows no tags of its own: ID3v2 before it, APE and ID3v1 behind it.
void addAround(TagFile& file, SongTagBuilder& builder) {
  constexpr int kMostTags = 4;
  Range rest = {.begin = 0, .end = file.size()};
  // FLAC, where ID3v2 should not be but is, has better tags.
  const std::int64_t behind = headers::id3v2Size(file.head());
  addFlac(file, behind, builder);
  for (int i = 0; i < kMostTags; ++i) {
    const std::int64_t end = addId3v2(file, rest, builder);
    if (end == rest.begin) break;
    rest.begin = end;
  }
  addTrailingTags(file, builder);
}

}  // namespace

Range Range::part(std::int64_t from, std::uint64_t size) const {
  from = std::clamp(from, begin, end);
  const auto left = static_cast<std::uint64_t>(end - from);
  return {.begin = from, .end = from + static_cast<std::int64_t>(std::min(size, left))};
}

std::vector<std::uint8_t> TagFile::read(const Range& range, std::size_t most) {
  constexpr std::size_t kWindow = 8192;
  const std::int64_t end = std::min(range.end, size());
  if (range.begin < 0 || end <= range.begin) return {};
  const std::size_t wanted =
      static_cast<std::size_t>(std::min(end - range.begin, static_cast<std::int64_t>(most)));
  const std::int64_t windowEnd = windowBegin_ + static_cast<std::int64_t>(window_.size());
  if (range.begin < windowBegin_ || range.begin + static_cast<std::int64_t>(wanted) > windowEnd) {
    // No byte is read twice.
    const bool overlaps = range.begin >= windowBegin_ && range.begin < windowEnd;
    const std::int64_t kept = overlaps ? windowEnd - range.begin : 0;
    window_.erase(window_.begin(), window_.end() - kept);
    window_.resize(std::max(kWindow, wanted));
    windowBegin_ = range.begin;
    const std::ptrdiff_t got = source_.readAt(
        range.begin + kept, std::span(window_).subspan(static_cast<std::size_t>(kept)));
    window_.resize(static_cast<std::size_t>(kept + std::max<std::ptrdiff_t>(got, 0)));
  }
  const auto from = static_cast<std::size_t>(range.begin - windowBegin_);
  if (from > window_.size()) return {};
  const auto bytes = Bytes(window_).subspan(from, std::min(wanted, window_.size() - from));
  return {bytes.begin(), bytes.end()};
}

TagBytes::TagBytes(TagFile& file, std::vector<Range> parts)
    : file_(&file), parts_(std::move(parts)) {
  for (const Range& part : parts_) size_ += part.size();
}

void TagBytes::skip(std::size_t count) {
  begin_ = std::min(begin_ + static_cast<std::int64_t>(count), size_);
}

std::vector<std::uint8_t> TagBytes::at(std::int64_t position, std::uint64_t size) {
  Range wanted = Range{.begin = begin_, .end = size_}.part(
      begin_ + position, std::min<std::uint64_t>(size, kLargestPiece));
  if (file_ == nullptr) return {memory_.begin() + wanted.begin, memory_.begin() + wanted.end};
  std::vector<std::uint8_t> bytes;
  std::int64_t partBegin = 0;
  for (const Range& part : parts_) {
    if (wanted.size() == 0) break;
    const std::int64_t partEnd = partBegin + part.size();
    if (wanted.begin < partEnd) {
      const auto piece = file_->read(part.part(part.begin + wanted.begin - partBegin,
                                               static_cast<std::uint64_t>(wanted.size())),
                                     kLargestPiece);
      bytes.insert(bytes.end(), piece.begin(), piece.end());
      wanted.begin = std::min(partEnd, wanted.end);
    }
    partBegin = partEnd;
  }
  return bytes;
}

std::optional<media::SongTags> readSongTags(const media::Source& source) {
  SongTagBuilder builder;
  TagFile file(source);
  const Bytes head = source.head();
  const auto format = std::ranges::find_if(
      kFormats, [head](const Format& row) { return contains(head, row.position, row.text); });
  if (format != kFormats.end())
    format->add(file, builder);
  else if (!addChunks(file, builder))
    addAround(file, builder);
  return std::move(builder).take();
}

}  // namespace kolum::tags
