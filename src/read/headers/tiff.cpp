#include <algorithm>
#include <array>
#include <numeric>

#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

// Types of values.
constexpr unsigned kByte = 1;
constexpr unsigned kShort = 3;
constexpr unsigned kLong = 4;
constexpr unsigned kRational = 5;
constexpr auto kTypeSizes = std::to_array<std::uint64_t>({0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8});

constexpr std::size_t kFileHeader = 8;

constexpr std::uint64_t kYcc = 6;  // photometric interpretation
constexpr std::uint64_t kInk = 5;
constexpr std::uint64_t kLastInterpretation = kYcc;

// A number in the directory, in its byte order.
class Numbers {
 public:
  Numbers(std::span<const std::uint8_t> bytes, bool isBigEndian)
      : bytes_(bytes), isBigEndian_(isBigEndian) {}
  std::uint64_t next(std::size_t size) {
    return isBigEndian_ ? bytes_.bigEndian(size) : bytes_.littleEndian(size);
  }
  bool failed() const { return bytes_.failed(); }

 private:
  ByteReader bytes_;
  bool isBigEndian_;
};

struct Entry {
  std::uint64_t tag = 0;
  std::uint64_t type = 0;
  std::uint64_t count = 0;
  std::uint64_t valueAt = 0;  // in the file

  std::uint64_t size() const { return count * kTypeSizes[type]; }
};

struct Resolution {
  std::uint64_t num = 0;
  std::uint64_t den = 0;
};

struct Header {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t depth = 1;  // of each sample
  std::uint64_t depths = 1;
  std::uint64_t samples = 0;
  std::optional<std::uint64_t> interpretation;
  bool isPlanar = false;
  bool hasPalette = false;
  bool hasData = false;
  std::array<std::uint64_t, 2> subsampling = {0, 0};
  Resolution x;
  Resolution y;
};

class Directory {
 public:
  Directory(Content& content, bool isBigEndian) : content_(content), isBigEndian_(isBigEndian) {}

  std::optional<Header> read(std::uint64_t position);

 private:
  bool take(const Entry& entry);
  std::optional<std::uint64_t> number(const Entry& entry);
  std::optional<std::uint64_t> positive(const Entry& entry);
  std::optional<Resolution> rational(const Entry& entry);
  bool takeDepths(const Entry& entry);
  bool takeSubsampling(const Entry& entry);
  bool isInFile(const Entry& entry) const;
  Numbers at(std::uint64_t position, std::uint64_t size) {
    return {content_.at(position, size), isBigEndian_};
  }

  Content& content_;
  bool isBigEndian_;
  Header header_;
};

// What becomes of an entry.
enum class Rule {
  kWidth,
  kHeight,
  kDepths,
  kCompression,
  kInterpretation,
  kData,
  kSamples,
  kDataSize,
  kResolutionX,
  kResolutionY,
  kPlanes,
  kPalette,
  kSubsampling,
};

struct TagRule {
  std::uint64_t tag;
  Rule rule;
};

constexpr auto kRules = std::to_array<TagRule>({
    {256, Rule::kWidth},
    {257, Rule::kHeight},
    {258, Rule::kDepths},
    {259, Rule::kCompression},
    {262, Rule::kInterpretation},
    {273, Rule::kData},
    {277, Rule::kSamples},
    {279, Rule::kDataSize},
    {282, Rule::kResolutionX},
    {283, Rule::kResolutionY},
    {284, Rule::kPlanes},
    {320, Rule::kPalette},
    {530, Rule::kSubsampling},
});

// Descriptions, and how pixels are stored and shown. Any other tag is unusual (tiles, raw pictures
// of cameras, maps): FFmpeg reads some of them in a way that may fail, or that differs in its
// releases.
constexpr auto kSkippedTags = std::to_array<std::uint64_t>(
    {254, 255, 266, 269, 270, 271,   272,   274,   278,   280,   281,   285,  286,
     287, 292, 293, 296, 297, 305,   306,   315,   316,   317,   318,   319,  338,
     339, 529, 531, 532, 700, 33432, 33723, 34377, 34665, 34675, 34853, 37724});

bool isKnownCompression(std::uint64_t method) {
  // None, fax, LZW, Deflate, PackBits.
  constexpr auto kMethods = std::to_array<std::uint64_t>({1, 2, 3, 4, 5, 8, 32773, 32946});
  return std::find(kMethods.begin(), kMethods.end(), method) != kMethods.end();
}

std::optional<std::uint64_t> Directory::number(const Entry& entry) {
  const bool isNumber = entry.type == kByte || entry.type == kShort || entry.type == kLong;
  if (!isNumber || entry.count != 1) return std::nullopt;
  Numbers numbers = at(entry.valueAt, entry.size());
  const std::uint64_t value = numbers.next(entry.size());
  return numbers.failed() ? std::nullopt : std::optional(value);
}

std::optional<std::uint64_t> Directory::positive(const Entry& entry) {
  const auto value = number(entry);
  return value && *value > 0 && *value <= INT_MAX ? value : std::nullopt;
}

std::optional<Resolution> Directory::rational(const Entry& entry) {
  if (entry.type != kRational || entry.count != 1) return std::nullopt;
  Numbers numbers = at(entry.valueAt, entry.size());
  const Resolution value{.num = numbers.next(4), .den = numbers.next(4)};
  return numbers.failed() || value.num == 0 || value.den == 0 ? std::nullopt : std::optional(value);
}

// All samples must have the same depth.
bool Directory::takeDepths(const Entry& entry) {
  constexpr std::uint64_t kMost = 4;
  if (entry.type != kShort || entry.count == 0 || entry.count > kMost) return false;
  Numbers numbers = at(entry.valueAt, entry.size());
  header_.depth = numbers.next(2);
  header_.depths = entry.count;
  for (std::uint64_t i = 1; i < entry.count; ++i)
    if (numbers.next(2) != header_.depth) return false;
  return !numbers.failed();
}

bool Directory::takeSubsampling(const Entry& entry) {
  if (entry.type != kShort || entry.count != 2) return false;
  Numbers numbers = at(entry.valueAt, entry.size());
  header_.subsampling = {numbers.next(2), numbers.next(2)};
  return !numbers.failed();
}

bool Directory::isInFile(const Entry& entry) const {
  const auto size = static_cast<std::uint64_t>(content_.size());
  return entry.count > 0 && entry.valueAt >= kFileHeader && entry.size() <= size &&
         entry.valueAt <= size - entry.size();
}

// Stores a value if there is one.
template <typename Value>
bool store(const std::optional<Value>& value, Value& out) {
  if (value) out = *value;
  return value.has_value();
}

bool Directory::take(const Entry& entry) {
  constexpr std::uint64_t kLongestPalette = std::uint64_t{3} * 256;
  if (!isInFile(entry)) return false;
  const auto rule = std::find_if(kRules.begin(), kRules.end(),
                                 [&](const TagRule& each) { return each.tag == entry.tag; });
  if (rule == kRules.end()) {
    return std::find(kSkippedTags.begin(), kSkippedTags.end(), entry.tag) != kSkippedTags.end();
  }
  switch (rule->rule) {
    case Rule::kWidth:
      return store(positive(entry), header_.width);
    case Rule::kHeight:
      return store(positive(entry), header_.height);
    case Rule::kDepths:
      return takeDepths(entry);
    case Rule::kCompression:
      return isKnownCompression(number(entry).value_or(0));
    case Rule::kInterpretation:
      header_.interpretation = number(entry);
      return header_.interpretation.has_value();
    case Rule::kData:
      header_.hasData = entry.count > 1 || positive(entry).has_value();
      return header_.hasData && (entry.type == kShort || entry.type == kLong);
    case Rule::kDataSize:
      return entry.count > 1 || positive(entry).has_value();
    case Rule::kSamples:
      return store(positive(entry), header_.samples);
    case Rule::kResolutionX:
      return store(rational(entry), header_.x);
    case Rule::kResolutionY:
      return store(rational(entry), header_.y);
    case Rule::kPlanes:
      header_.isPlanar = number(entry) == 2U;
      return header_.isPlanar || number(entry) == 1U;
    case Rule::kPalette:
      header_.hasPalette = true;
      return entry.type == kShort && entry.count % 3 == 0 && entry.count <= kLongestPalette;
    case Rule::kSubsampling:
      return takeSubsampling(entry);
  }
  return false;
}

std::optional<Header> Directory::read(std::uint64_t position) {
  constexpr std::size_t kEntrySize = 12;
  constexpr std::size_t kMostEntries = 128;
  constexpr std::uint64_t kLongestDirectory = 2 + kMostEntries * kEntrySize;
  const std::uint64_t count = at(position, 2).next(2);
  if (count == 0 || count > kMostEntries) return std::nullopt;
  const auto bytes = content_.at(position + 2, count * kEntrySize);
  std::array<std::uint8_t, kLongestDirectory> entries = {};
  std::copy(bytes.begin(), bytes.end(), entries.begin());

  std::uint64_t lastTag = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Numbers numbers(std::span<const std::uint8_t>(entries).subspan(i * kEntrySize, kEntrySize),
                    isBigEndian_);
    Entry entry;
    entry.tag = numbers.next(2);
    entry.type = numbers.next(2);
    entry.count = numbers.next(4);
    const std::uint64_t value = numbers.next(4);
    if (entry.tag <= lastTag || entry.type == 0 || entry.type >= kTypeSizes.size())
      return std::nullopt;
    lastTag = entry.tag;
    constexpr std::size_t kValueOffset = 8;
    entry.valueAt = entry.size() > 4 ? value : position + 2 + i * kEntrySize + kValueOffset;
    if (!take(entry)) return std::nullopt;
  }
  return bytes.size() == count * kEntrySize ? std::optional(header_) : std::nullopt;
}

struct Layout {
  bool isPlanar;
  std::uint64_t samples;
  std::uint64_t depth;
  std::string_view littleEndian;
  std::string_view bigEndian;
};

constexpr auto kLayouts = std::to_array<Layout>({
    {false, 1, 1, "monob", "monob"},
    {false, 1, 2, "pal8", "pal8"},
    {false, 1, 4, "pal8", "pal8"},
    {false, 1, 8, "gray", "gray"},
    {false, 1, 16, "gray16le", "gray16be"},
    {false, 2, 8, "ya8", "ya8"},
    {false, 2, 16, "ya16le", "ya16be"},
    {false, 3, 8, "rgb24", "rgb24"},
    {false, 3, 16, "rgb48le", "rgb48be"},
    {false, 4, 8, "rgba", "rgba"},
    {false, 4, 16, "rgba64le", "rgba64be"},
    {true, 3, 8, "gbrp", "gbrp"},
    {true, 3, 16, "gbrp16le", "gbrp16be"},
    {true, 4, 8, "gbrap", "gbrap"},
    {true, 4, 16, "gbrap16le", "gbrap16be"},
});

struct YccLayout {
  std::array<std::uint64_t, 2> subsampling;
  std::string_view pixelFormat;
};

constexpr auto kYccLayouts = std::to_array<YccLayout>({
    {{1, 1}, "yuv444p"},
    {{2, 1}, "yuv422p"},
    {{4, 1}, "yuv411p"},
    {{1, 2}, "yuv440p"},
    {{2, 2}, "yuv420p"},
    {{4, 4}, "yuv410p"},
});

std::string_view yccFormat(const Header& header) {
  if (header.isPlanar || header.samples != 3 || header.depth != 8) return "";
  const auto layout = std::find_if(
      kYccLayouts.begin(), kYccLayouts.end(),
      [&](const YccLayout& candidate) { return candidate.subsampling == header.subsampling; });
  return layout != kYccLayouts.end() ? layout->pixelFormat : "";
}

// Empty if FFmpeg would refuse the picture, or if it is unusual.
std::string_view pixelFormatOf(const Header& header, bool isBigEndian) {
  if (!header.interpretation || *header.interpretation > kLastInterpretation) return "";
  constexpr std::uint64_t kTransparencyMask = 4;
  if (header.interpretation == kTransparencyMask) return "";
  if (header.interpretation == kYcc) return yccFormat(header);
  const auto layout = std::find_if(kLayouts.begin(), kLayouts.end(), [&](const Layout& candidate) {
    return candidate.isPlanar == header.isPlanar && candidate.samples == header.samples &&
           candidate.depth == header.depth;
  });
  if (layout == kLayouts.end()) return "";
  if (header.hasPalette) return header.samples == 1 && header.depth <= 8 ? "pal8" : "";
  if (header.interpretation == kInk && layout->littleEndian == "rgba") return "rgb0";
  return isBigEndian ? layout->bigEndian : layout->littleEndian;
}

// The pixels' width / height; empty if FFmpeg would round it.
std::optional<media::Rational> aspectOf(const Resolution& x, const Resolution& y) {
  if (x.num == 0 || y.num == 0) return media::Rational{0, 1};
  const std::uint64_t num = y.num * x.den;
  const std::uint64_t den = x.num * y.den;
  const std::uint64_t divisor = std::gcd(num, den);
  if (num / divisor > INT_MAX || den / divisor > INT_MAX) return std::nullopt;
  return media::Rational{static_cast<int>(num / divisor), static_cast<int>(den / divisor)};
}

}  // namespace

std::optional<Picture> readTiff(Content& content) {
  const auto bytes = content.head().first(std::min(content.head().size(), kFileHeader));
  if (bytes.size() < kFileHeader) return std::nullopt;
  const bool isBigEndian = bytes[0] == 'M';
  const std::uint64_t position = Numbers(bytes.subspan(4), isBigEndian).next(4);
  // FFmpeg wants at least one entry.
  constexpr std::uint64_t kShortestDirectory = 14;
  if (position < kFileHeader ||
      position + kShortestDirectory > static_cast<std::uint64_t>(content.size()))
    return std::nullopt;

  auto header = Directory(content, isBigEndian).read(position);
  if (!header || !header->hasData || !isPossibleSize(header->width, header->height))
    return std::nullopt;
  // One depth may stand for all samples.
  if (header->samples == 0) header->samples = header->depths;
  if (header->depths != 1 && header->depths != header->samples) return std::nullopt;
  const std::string_view pixelFormat = pixelFormatOf(*header, isBigEndian);
  const auto aspect = aspectOf(header->x, header->y);
  if (pixelFormat.empty() || !aspect) return std::nullopt;
  return Picture{.format = PictureFormat::kTiff,
                 .width = static_cast<int>(header->width),
                 .height = static_cast<int>(header->height),
                 .pixelFormat = pixelFormat,
                 .sampleAspect = *aspect};
}

}  // namespace kolum::headers
