#include "read/headers/signatures.h"

#include <algorithm>
#include <array>
#include <span>

#include "base/bytes.h"
#include "media/container.h"
#include "read/headers/id3v2.h"
#include "read/headers/mpeg_audio.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;
using namespace std::string_view_literals;

// What the beginning of a file must contain. FURTHER excludes files that another demuxer claims.
struct Signature {
  std::size_t position;
  std::string_view text;
  bool (*further)(Bytes head);
  std::string_view demuxer;
};

bool contains(Bytes head, std::size_t position, std::string_view text) {
  return textOf(head).substr(std::min(position, head.size())).starts_with(text);
}

// JPEG 2000 and JPEG XL pictures begin like MP4.
bool isNoPicture(Bytes head) {
  constexpr std::string_view kPictures[] = {"jp2 ", "jpx ", "jpm ", "jxl "};
  return std::none_of(std::begin(kPictures), std::end(kPictures),
                      [&](std::string_view brand) { return contains(head, 8, brand); });
}

// Other EBML documents exist.
bool isMatroska(Bytes head) {
  constexpr std::size_t kHeaderSize = 64;
  const std::string_view header = textOf(head.first(kHeaderSize));
  return header.find("webm") != header.npos || header.find("matroska") != header.npos;
}

bool isRiff(Bytes head) {
  return contains(head, 0, "RIFF");
}

// Another demuxer claims the recordings of voice recorders, whose header is silent up to a mark.
bool isPlainWave(Bytes head) {
  constexpr std::size_t kHeaderEnd = 44;
  constexpr std::size_t kMark = 256;
  if (!isRiff(head) || head.size() <= kMark) return false;
  const Bytes silence = head.subspan(kHeaderEnd, kMark - kHeaderEnd);
  return head[kMark] != 0x84 ||
         std::any_of(silence.begin(), silence.end(), [](std::uint8_t byte) { return byte != 0; });
}

bool isOggPage(Bytes head) {
  constexpr std::size_t kFlags = 5;
  return head[kFlags] <= 7;
}

constexpr auto kSignatures = std::to_array<Signature>({
    {4, "ftyp", isNoPicture, media::kDemuxerMp4},
    {0, "\x1A\x45\xDF\xA3", isMatroska, media::kDemuxerMatroska},
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv, nullptr,
     media::kDemuxerAsf},
    {8, "AVI ", isRiff, media::kDemuxerAvi},
    {8, "WAVEfmt ", isPlainWave, "wav"},
    {0, "fLaC\x00\x00\x00\x22"sv, nullptr, "flac"},
    {0, "fLaC\x80\x00\x00\x22"sv, nullptr, "flac"},
    {0, "OggS\x00"sv, isOggPage, "ogg"},
});

// MP3 frames follow the tag, so many that they cannot be a coincidence.
bool isMp3(const media::Source& source) {
  constexpr std::size_t kSeveralFrames = 16384;
  std::array<std::uint8_t, kSeveralFrames> sound;
  const std::ptrdiff_t got = source.readAt(id3v2Size(source.head()), sound);
  return got > 0 && beginsWithMp3Frames(Bytes(sound).first(static_cast<std::size_t>(got)));
}

}  // namespace

std::string_view demuxerOf(const media::Source& source) {
  constexpr std::size_t kShortest = 64;
  const Bytes head = source.head();
  if (head.size() < kShortest) return {};
  for (const Signature& row : kSignatures)
    if (contains(head, row.position, row.text) && (row.further == nullptr || row.further(head)))
      return row.demuxer;
  return isMp3(source) ? "mp3" : std::string_view();
}

}  // namespace kolum::headers
