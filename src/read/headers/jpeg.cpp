#include <algorithm>
#include <array>
#include <cstring>

#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

constexpr std::uint8_t kMarker = 0xFF;

// Markers, the byte after 0xFF.
constexpr std::uint8_t kBaseline = 0xC0;
constexpr std::uint8_t kExtended = 0xC1;
constexpr std::uint8_t kProgressive = 0xC2;
constexpr std::uint8_t kHuffmanTables = 0xC4;
constexpr std::uint8_t kFirstRestart = 0xD0;
constexpr std::uint8_t kLastRestart = 0xD7;
constexpr std::uint8_t kEnd = 0xD9;
constexpr std::uint8_t kScan = 0xDA;
constexpr std::uint8_t kQuantisationTables = 0xDB;
constexpr std::uint8_t kRestartInterval = 0xDD;
constexpr std::uint8_t kFirstApplication = 0xE0;
constexpr std::uint8_t kLastApplication = 0xEF;
constexpr std::uint8_t kComment = 0xFE;

// The sampling factors of the components, horizontal in the high four bits; 0 for none.
using Sampling = std::array<std::uint8_t, 4>;

enum class Colours { kYuv, kYuvLimited, kRgb, kCmyk, kYcck };

struct Layout {
  Sampling sampling;
  Colours colours;
  std::string_view pixelFormat;
};

constexpr auto kLayouts = std::to_array<Layout>({
    {{0x11}, Colours::kYuv, "gray"},
    {{0x11}, Colours::kYuvLimited, "gray"},
    {{0x11}, Colours::kRgb, "gray"},
    {{0x11, 0x11, 0x11}, Colours::kYuv, "yuvj444p"},
    {{0x11, 0x11, 0x11}, Colours::kYuvLimited, "yuv444p"},
    {{0x11, 0x11, 0x11}, Colours::kRgb, "gbrp"},
    {{0x22, 0x11, 0x11}, Colours::kYuv, "yuvj420p"},
    {{0x22, 0x11, 0x11}, Colours::kYuvLimited, "yuv420p"},
    {{0x21, 0x11, 0x11}, Colours::kYuv, "yuvj422p"},
    {{0x21, 0x11, 0x11}, Colours::kYuvLimited, "yuv422p"},
    {{0x12, 0x11, 0x11}, Colours::kYuv, "yuvj440p"},
    {{0x12, 0x11, 0x11}, Colours::kYuvLimited, "yuv440p"},
    {{0x41, 0x11, 0x11}, Colours::kYuv, "yuvj411p"},
    {{0x41, 0x11, 0x11}, Colours::kYuvLimited, "yuv411p"},
    {{0x11, 0x11, 0x11, 0x11}, Colours::kCmyk, "gbrap"},
    {{0x11, 0x11, 0x11, 0x11}, Colours::kYcck, "yuva444p"},
    {{0x22, 0x11, 0x11, 0x22}, Colours::kCmyk, "gbrap"},
    {{0x22, 0x11, 0x11, 0x22}, Colours::kYcck, "yuva444p"},
});

// The picture's frame header.
struct Frame {
  int width = 0;
  int height = 0;
  std::size_t components = 0;
  std::array<std::uint8_t, 4> ids = {};
  Sampling sampling = {};
  bool isProgressive = false;
};

struct Header {
  std::optional<Frame> frame;
  std::optional<int> adobeTransform;
  bool isLimitedRange = false;
  bool hasFileHeader = false;  // JFIF or Exif, by which FFmpeg recognises the file early
  media::Rational sampleAspect{0, 1};
};

// FFmpeg halves factors that are 2 in all components.
Sampling inLowestTerms(Sampling sampling) {
  const auto allAreTwo = [&](std::uint8_t mask, std::uint8_t two) {
    return std::all_of(sampling.begin(), sampling.end(),
                       [&](std::uint8_t each) { return each == 0 || (each & mask) == two; });
  };
  const bool halvesWidth = allAreTwo(0xF0, 0x20);
  const bool halvesHeight = allAreTwo(0x0F, 0x02);
  for (std::uint8_t& each : sampling) {
    if (halvesWidth) each = static_cast<std::uint8_t>(each & 0x0F) | (each != 0 ? 0x10 : 0);
    if (halvesHeight) each = static_cast<std::uint8_t>(each & 0xF0) | (each != 0 ? 0x01 : 0);
  }
  return sampling;
}

bool isNamedRgb(const Frame& frame) {
  return frame.ids[0] == 'R' && frame.ids[1] == 'G' && frame.ids[2] == 'B';
}

// Empty if the combination is unusual.
std::optional<Colours> coloursOf(const Header& header, const Frame& frame) {
  const auto& transform = header.adobeTransform;
  if (frame.components == 4) {
    if (!transform || header.isLimitedRange || frame.ids[0] == 'C') return std::nullopt;
    if (*transform == 0) return Colours::kCmyk;
    return *transform == 2 ? std::optional(Colours::kYcck) : std::nullopt;
  }
  if (transform == 0 || isNamedRgb(frame)) {
    if (header.isLimitedRange) return std::nullopt;
    return Colours::kRgb;
  }
  return header.isLimitedRange ? Colours::kYuvLimited : Colours::kYuv;
}

std::string_view pixelFormatOf(const Header& header, const Frame& frame) {
  const auto colours = coloursOf(header, frame);
  if (!colours) return "";
  const Sampling sampling = inLowestTerms(frame.sampling);
  const auto layout = std::find_if(kLayouts.begin(), kLayouts.end(), [&](const Layout& candidate) {
    return candidate.colours == *colours && candidate.sampling == sampling;
  });
  return layout != kLayouts.end() ? layout->pixelFormat : "";
}

// Each of these takes a segment's content; false if it is unusual.

bool takeFrame(ByteReader bytes, std::uint8_t marker, Header& header) {
  Frame frame;
  const std::uint64_t depth = bytes.bigEndian(1);
  const std::uint64_t height = bytes.bigEndian(2);
  const std::uint64_t width = bytes.bigEndian(2);
  frame.components = bytes.bigEndian(1);
  if (header.frame || depth != 8 || !isPossibleSize(width, height)) return false;
  if (frame.components == 0 || frame.components > frame.ids.size()) return false;
  for (std::size_t i = 0; i < frame.components; ++i) {
    constexpr std::uint64_t kTables = 4;
    frame.ids[i] = static_cast<std::uint8_t>(bytes.bigEndian(1));
    frame.sampling[i] = static_cast<std::uint8_t>(bytes.bigEndian(1));
    const bool isSampled = frame.sampling[i] >> 4 != 0 && (frame.sampling[i] & 0x0F) != 0;
    if (bytes.bigEndian(1) >= kTables || !isSampled) return false;
  }
  if (bytes.failed() || bytes.left() != 0) return false;
  frame.width = static_cast<int>(width);
  frame.height = static_cast<int>(height);
  frame.isProgressive = marker == kProgressive;
  header.frame = frame;
  return true;
}

// FFmpeg gives up at a table that it cannot read.
bool takeQuantisationTables(ByteReader bytes) {
  while (bytes.left() > 0) {
    const std::uint64_t precisionAndIndex = bytes.bigEndian(1);
    if (precisionAndIndex >> 4 > 1 || (precisionAndIndex & 0x0F) > 3) return false;
    bytes.skip(precisionAndIndex >> 4 == 0 ? 64 : 128);
    if (bytes.failed()) return false;
  }
  return true;
}

// FFmpeg skips some segments by looking for the next marker.
bool hasNoMarker(std::span<const std::uint8_t> bytes) {
  return std::find(bytes.begin(), bytes.end(), kMarker) == bytes.end();
}

bool takeFileHeader(ByteReader bytes, Header& header) {
  bytes.skip(4 + 1 + 2 + 1);  // "JFIF", zero, version, unit
  const auto x = static_cast<int>(bytes.bigEndian(2));
  const auto y = static_cast<int>(bytes.bigEndian(2));
  const std::uint64_t thumbnailWidth = bytes.bigEndian(1);
  const std::uint64_t thumbnailHeight = bytes.bigEndian(1);
  // FFmpeg looks for markers in the pixels of a thumbnail.
  if (bytes.failed() || thumbnailWidth != 0 || thumbnailHeight != 0) return false;
  header.sampleAspect = x > 0 && y > 0 ? media::Rational{x, y} : media::Rational{0, 1};
  header.hasFileHeader = true;
  return true;
}

bool takeAdobe(ByteReader bytes, Header& header) {
  // Photoshop's own settings, which FFmpeg skips.
  if (bytes.left() >= 8 && ByteReader(bytes).text(8) == "Adobe_CM") return true;
  const bool isAdobe = bytes.text(5) == "Adobe";
  bytes.skip(2 + 2 + 2);  // version, flags
  const auto transform = static_cast<int>(bytes.bigEndian(1));
  if (bytes.failed() || !isAdobe) return false;
  header.adobeTransform = transform;
  return true;
}

bool takeApplication(ByteReader bytes, std::uint8_t marker, Header& header) {
  constexpr std::string_view kUnusual[] = {"AVI1", "LJIF", "colr", "xfrm", "_JPS"};
  const std::string_view id = ByteReader(bytes).text(4);
  // FFmpeg does not skip segments that are too short for an identifier.
  if (id.empty()) return false;
  if (std::find(std::begin(kUnusual), std::end(kUnusual), id) != std::end(kUnusual)) return false;
  if (id == "JFIF") return marker == kFirstApplication && takeFileHeader(bytes, header);
  if (id == "Adob") return takeAdobe(bytes, header);
  if (id == "Exif" && marker == kFirstApplication + 1) header.hasFileHeader = true;
  return true;
}

bool takeComment(std::string_view comment, Header& header) {
  constexpr std::string_view kLimitedRange = "CS=ITU601";
  constexpr std::string_view kUnusual[] = {"AVID", "MULTISCOPE II", kLimitedRange};
  if (comment == kLimitedRange || comment == std::string_view("CS=ITU601\0", 10)) {
    header.isLimitedRange = true;
    return true;
  }
  return std::none_of(std::begin(kUnusual), std::end(kUnusual),
                      [&](std::string_view each) { return comment.starts_with(each); });
}

// SEGMENT: from its length on.
bool takeSegment(std::uint8_t marker, std::span<const std::uint8_t> segment, Header& header) {
  ByteReader bytes(segment);
  bytes.skip(2);
  switch (marker) {
    case kBaseline:
    case kExtended:
    case kProgressive:
      return takeFrame(bytes, marker, header);
    case kQuantisationTables:
      return takeQuantisationTables(bytes);
    case kHuffmanTables:
    case kRestartInterval:
      return hasNoMarker(segment);
    default:
      break;
  }
  // Some of FFmpeg's releases take these into account after the frame header, some do not.
  if (header.frame) return false;
  if (marker == kComment) return takeComment(bytes.text(bytes.left()), header);
  if (marker < kFirstApplication || marker > kLastApplication) return false;
  return takeApplication(bytes, marker, header);
}

// The next marker, which must follow directly; 0 if something else does.
std::uint8_t takeMarker(ByteReader& bytes) {
  if (bytes.bigEndian(1) != kMarker) return 0;
  std::uint64_t marker = kMarker;
  while (marker == kMarker && !bytes.failed()) marker = bytes.bigEndian(1);
  return static_cast<std::uint8_t>(marker);
}

struct Scans {
  std::size_t size = 0;
  bool hasEnd = false;
};

// The scans at the beginning of BYTES, up to the picture's end; empty if anything else is among
// them.
std::optional<Scans> scansIn(std::span<const std::uint8_t> bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const void* found = std::memchr(bytes.data() + at, kMarker, bytes.size() - at);
    if (found == nullptr) break;
    at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
    if (bytes.size() - at < 2) break;
    const std::uint8_t marker = bytes[at + 1];
    at += 2;
    if (marker == kEnd) return Scans{at, true};
    const bool isRestart = marker >= kFirstRestart && marker <= kLastRestart;
    if (marker != 0 && !isRestart && marker != kHuffmanTables && marker != kScan)
      return std::nullopt;
  }
  return Scans{bytes.size(), false};
}

// FFmpeg refuses a picture with less than two bits for each block of 8 x 8.
bool isLongEnough(const Frame& frame, std::int64_t size) {
  const std::int64_t blocks =
      std::int64_t{(frame.width + 7) / 8} * std::int64_t{(frame.height + 7) / 8};
  return frame.isProgressive || blocks <= size * 4;
}

// Takes the rest of the bytes; false if the scans in them are unusual.
bool takeScans(ByteReader& bytes, std::int64_t size, const Header& header) {
  const std::size_t begin = bytes.position();
  const auto rest = bytes.take(bytes.left());
  const auto scans = scansIn(rest);
  // Another picture behind this one.
  if (!scans || !hasNoMarker(rest.subspan(scans->size))) return false;
  // Without a file header, FFmpeg recognises the file by its end. And a second frame header would
  // overrule the first in most of FFmpeg's releases: small files are looked through.
  constexpr std::int64_t kSmall = std::int64_t{64} << 10;
  const bool isCut = static_cast<std::int64_t>(bytes.position()) < size;
  if (!scans->hasEnd && (!header.hasFileHeader || (isCut && size <= kSmall))) bytes.fail();
  return isLongEnough(*header.frame,
                      scans->hasEnd ? static_cast<std::int64_t>(begin + scans->size) : size);
}

}  // namespace

std::optional<Picture> readJpeg(ByteReader& bytes, std::int64_t size) {
  bytes.skip(2);
  Header header;
  for (;;) {
    const std::uint8_t marker = takeMarker(bytes);
    constexpr std::uint64_t kShortest = 2;
    const std::uint64_t length = ByteReader(bytes).bigEndian(2);
    const auto segment = bytes.take(std::max(length, kShortest));
    if (bytes.failed()) return std::nullopt;
    if (marker == kScan) {
      if (!hasNoMarker(segment)) return std::nullopt;
      break;
    }
    if (length < kShortest || !takeSegment(marker, segment, header)) return std::nullopt;
  }
  if (!header.frame || !takeScans(bytes, size, header)) return std::nullopt;
  const std::string_view pixelFormat = pixelFormatOf(header, *header.frame);
  if (pixelFormat.empty()) return std::nullopt;
  return Picture{.format = PictureFormat::kJpeg,
                 .width = header.frame->width,
                 .height = header.frame->height,
                 .pixelFormat = pixelFormat,
                 .sampleAspect = header.sampleAspect};
}

}  // namespace kolum::headers
