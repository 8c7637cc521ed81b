#include "read/headers/content_type.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "read/headers/id3v2.h"
#include "read/headers/mpeg_audio.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;
using namespace std::string_view_literals;

bool contains(Bytes head, std::size_t position, std::string_view text) {
  return textOf(head).substr(std::min(position, head.size())).starts_with(text);
}

bool isRiff(Bytes head) {
  return contains(head, 0, "RIFF");
}

bool isIff(Bytes head) {
  return contains(head, 0, "FORM");
}

bool isDsdIff(Bytes head) {
  return contains(head, 12, "DSD ");
}

// Two letters are too few: the size of the second header follows.
bool isBmp(Bytes head) {
  constexpr auto kSizes = std::to_array<std::uint8_t>({12, 40, 52, 56, 64, 108, 124});
  constexpr std::size_t kPosition = 14;
  return head.size() > kPosition + 4 &&
         std::find(kSizes.begin(), kSizes.end(), head[kPosition]) != kSizes.end() &&
         head[kPosition + 1] == 0 && head[kPosition + 2] == 0 && head[kPosition + 3] == 0;
}

bool isWebm(Bytes head) {
  constexpr std::size_t kHeaderSize = 64;
  return textOf(head).substr(0, kHeaderSize).find("webm") != std::string_view::npos;
}

bool isMatroska(Bytes head) {
  constexpr std::size_t kHeaderSize = 64;
  return textOf(head).substr(0, kHeaderSize).find("matroska") != std::string_view::npos;
}

template <std::size_t kFirst, std::size_t kStep>
bool hasSyncBytes(Bytes head) {
  constexpr std::size_t kCount = 5;
  constexpr std::uint8_t kSync = 0x47;
  for (std::size_t i = 0; i < kCount; ++i)
    if (head.size() <= kFirst + i * kStep || head[kFirst + i * kStep] != kSync) return false;
  return true;
}

// The first row that matches decides. FURTHER: what the bytes must show besides the text.
struct Signature {
  std::size_t position;
  std::string_view text;
  std::string_view type;
  bool (*further)(Bytes head) = nullptr;
};

constexpr auto kSignatures = std::to_array<Signature>({
    // Pictures
    {0, "\xFF\xD8\xFF", "image/jpeg"},
    {0, "\x89PNG\r\n\x1A\n", "image/png"},
    {0, "GIF87a", "image/gif"},
    {0, "GIF89a", "image/gif"},
    {8, "WEBP", "image/webp", isRiff},
    {8, "CR\x02\x00"sv, "image/x-canon-cr2"},
    {0, "IIRO", "image/x-olympus-orf"},
    {0, "IIRS", "image/x-olympus-orf"},
    {0, "MMOR", "image/x-olympus-orf"},
    {0, "IIU\0"sv, "image/x-panasonic-rw2"},
    {0, "FUJIFILMCCD-RAW", "image/x-fuji-raf"},
    {6, "HEAPCCDR", "image/x-canon-crw"},
    {0, "FOVb", "image/x-sigma-x3f"},
    {0, "\0MRM"sv, "image/x-minolta-mrw"},
    {0, "II*\0"sv, "image/tiff"},
    {0, "MM\0*"sv, "image/tiff"},
    {0, "BM", "image/bmp", isBmp},
    {4, "ftypheic", "image/heic"},
    {4, "ftypheix", "image/heic"},
    {4, "ftypheim", "image/heic"},
    {4, "ftypheis", "image/heic"},
    {4, "ftyphevc", "image/heic-sequence"},
    {4, "ftyphevx", "image/heic-sequence"},
    {4, "ftypmif1", "image/heif"},
    {4, "ftypmsf1", "image/heif-sequence"},
    {4, "ftypavif", "image/avif"},
    {4, "ftypavis", "image/avif"},
    {4, "ftypcrx ", "image/x-canon-cr3"},
    {0, "\0\0\0\x0CjP  \r\n\x87\n"sv, "image/jp2"},
    {0, "\xFF\x4F\xFF\x51", "image/jp2"},
    {0, "\0\0\0\x0CJXL \r\n\x87\n"sv, "image/jxl"},
    {0, "\xFF\x0A", "image/jxl"},
    {0, "8BPS", "image/vnd.adobe.photoshop"},
    {0, "%PDF-", "application/pdf"},
    // Containers
    {4, "ftypM4A ", "audio/mp4"},
    {4, "ftypM4B ", "audio/mp4"},
    {4, "ftypM4P ", "audio/mp4"},
    {4, "ftypqt  ", "video/quicktime"},
    {4, "ftyp3gp", "video/3gpp"},
    {4, "ftyp3g2", "video/3gpp2"},
    {4, "ftyp", "video/mp4"},
    {4, "moov", "video/quicktime"},
    {4, "mdat", "video/quicktime"},
    {4, "wide", "video/quicktime"},
    {0, "\x1A\x45\xDF\xA3", "video/webm", isWebm},
    {0, "\x1A\x45\xDF\xA3", "video/x-matroska", isMatroska},
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11", "video/x-ms-asf"},
    {8, "AVI ", "video/x-msvideo", isRiff},
    {0, "FLV\x01", "video/x-flv"},
    {0, ".RMF", "application/vnd.rn-realmedia"},
    {0, "\0\0\x01\xBA"sv, "video/mpeg"},
    {0, "\0\0\x01\xB3"sv, "video/mpeg"},
    {0, "\x47", "video/mp2t", hasSyncBytes<0, 188>},
    {0, "", "video/mp2t", hasSyncBytes<4, 192>},
    {0, "OggS\0"sv, "video/ogg"},
    // Songs
    {0, "fLaC", "audio/flac"},
    {8, "WAVE", "audio/vnd.wave", isRiff},
    {0, "RF64", "audio/vnd.wave"},
    {8, "AIFF", "audio/aiff", isIff},
    {8, "AIFC", "audio/aiff", isIff},
    {0, "DSD ", "audio/x-dsf"},
    {0, "FRM8", "audio/x-dff", isDsdIff},
    {0, "MAC ", "audio/x-ape"},
    {0, "wvpk", "audio/x-wavpack"},
    {0, "MPCK", "audio/x-musepack"},
    {0, "MP+", "audio/x-musepack"},
    {0, "TTA1", "audio/x-tta"},
    {0, "caff", "audio/x-caf"},
    {0, "#!AMR", "audio/amr"},
    {0, "MThd", "audio/midi"},
    {0, "ADIF", "audio/aac"},
    {0, "\xFF\xF1", "audio/aac"},
    {0, "\xFF\xF9", "audio/aac"},
    {0, "\x0B\x77", "audio/ac3"},
    {0, "\x7F\xFE\x80\x01", "audio/vnd.dts"},
    // Lists
    {0, "#EXTM3U", "audio/mpegurl"},
    {0, "[playlist]", "audio/x-scpls"},
});

std::string_view typeOf(Bytes head) {
  for (const Signature& row : kSignatures)
    if (contains(head, row.position, row.text) && (row.further == nullptr || row.further(head)))
      return row.type;
  return beginsWithMp3Frames(head) ? "audio/mpeg" : "";
}

}  // namespace

std::string_view contentType(const media::Source& source) {
  // As many bytes as a few frames of MP3 take.
  constexpr std::size_t kEnough = 16384;
  const std::int64_t tag = id3v2Size(source.head());
  if (tag == 0) return typeOf(source.head());
  std::array<std::uint8_t, kEnough> behind;
  const std::ptrdiff_t got = source.readAt(tag, behind);
  return got > 0 ? typeOf(Bytes(behind).first(static_cast<std::size_t>(got))) : "";
}

}  // namespace kolum::headers
