#include "read/headers/h264.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/bytes.h"
#include "read/headers/nal_units.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;

// Types of NAL units.
constexpr unsigned kSlice = 1;
constexpr unsigned kKeySlice = 5;
constexpr unsigned kSps = 7;

unsigned typeOf(std::uint8_t firstByte) {
  return firstByte & 0x1FU;
}
bool isPicture(unsigned type) {
  return type == kSlice || type == kKeySlice;
}

// The longest SPS with every scaling list and both HRD sections has less than half of this.
constexpr std::size_t kLongestSps = 1024;
constexpr unsigned kMostBlocks = 1024;  // 16384 pixels

// FFmpeg's flags on profiles.
constexpr int kConstrained = 1 << 9;
constexpr int kIntra = 1 << 11;

struct ProfileFlag {
  int profile;
  std::uint8_t constraint;  // the bit that has to be set
  int flag;
};
constexpr ProfileFlag kProfileFlags[] = {
    {66, 0x40, kConstrained}, {110, 0x10, kIntra}, {122, 0x10, kIntra}, {244, 0x10, kIntra}};

int profileWithFlags(int profile, unsigned constraints) {
  for (const ProfileFlag& row : kProfileFlags)
    if (row.profile == profile && (constraints & row.constraint) != 0) return profile | row.flag;
  return profile;
}

// The profiles whose SPS describes colours.
constexpr int kProfilesWithChroma[] = {100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 144};

bool describesChroma(int profile) {
  return std::find(std::begin(kProfilesWithChroma), std::end(kProfilesWithChroma), profile) !=
         std::end(kProfilesWithChroma);
}

struct PixelFormatRow {
  unsigned chroma;
  unsigned depth;
  bool isFullRange;
  const char* name;
};
constexpr PixelFormatRow kPixelFormats[] = {
    {1, 8, false, "yuv420p"},      {1, 8, true, "yuvj420p"},      {2, 8, false, "yuv422p"},
    {2, 8, true, "yuvj422p"},      {1, 10, false, "yuv420p10le"}, {1, 10, true, "yuv420p10le"},
    {2, 10, false, "yuv422p10le"}, {2, 10, true, "yuv422p10le"}};

const char* pixelFormatOf(unsigned chroma, unsigned depth, bool isFullRange) {
  for (const PixelFormatRow& row : kPixelFormats)
    if (row.chroma == chroma && row.depth == depth && row.isFullRange == isFullRange)
      return row.name;
  return nullptr;
}

constexpr auto kSampleAspects = std::to_array<media::Rational>({{0, 1},
                                                                {1, 1},
                                                                {12, 11},
                                                                {10, 11},
                                                                {16, 11},
                                                                {40, 33},
                                                                {24, 11},
                                                                {20, 11},
                                                                {32, 11},
                                                                {80, 33},
                                                                {18, 11},
                                                                {15, 11},
                                                                {64, 33},
                                                                {160, 99},
                                                                {4, 3},
                                                                {3, 2},
                                                                {2, 1}});

// Reads an SPS field by field; any value out of the ordinary ends it.
class SpsReader {
 public:
  explicit SpsReader(Bytes payload) : bits_(payload) {}

  std::optional<H264Parameters> read() {
    readProfile();
    readColours();
    readOrder();
    readSize();
    if (bits_.bit()) readUsability();
    if (!isOrdinary_ || bits_.failed()) return std::nullopt;
    found_.pixelFormat = pixelFormatOf(chroma_, depth_, isFullRange_);
    if (found_.pixelFormat == nullptr) return std::nullopt;
    return found_;
  }

 private:
  void require(bool condition) { isOrdinary_ = isOrdinary_ && condition; }

  void readProfile() {
    constexpr unsigned kMostSets = 32;
    profile_ = static_cast<int>(bits_.bits(8));
    found_.profile = profileWithFlags(profile_, bits_.bits(8));
    found_.level = static_cast<int>(bits_.bits(8));
    require(bits_.unsignedCode() < kMostSets);
  }

  void readColours() {
    if (!describesChroma(profile_)) return;
    chroma_ = bits_.unsignedCode();
    require(chroma_ == 1 || chroma_ == 2);  // others have more fields here
    const std::uint32_t luma = bits_.unsignedCode();
    require(luma <= 6 && bits_.unsignedCode() == luma);
    depth_ = luma + 8;
    bits_.skip(1);
    if (bits_.bit()) skipScalingLists();
  }

  void skipScalingLists() {
    constexpr int kLists = 8;
    constexpr int kSmallLists = 6;
    for (int i = 0; i < kLists; ++i)
      if (bits_.bit()) skipScalingList(i < kSmallLists ? 16 : 64);
  }

  void skipScalingList(int size) {
    int last = 8;
    int next = 8;
    for (int i = 0; i < size && next != 0; ++i) {
      const std::int32_t difference = bits_.signedCode();
      if (difference < -128 || difference > 127) return require(false);
      next = (last + difference) & 0xFF;
      if (next != 0) last = next;
    }
  }

  // How pictures are counted.
  void readOrder() {
    constexpr unsigned kMostBits = 12;
    constexpr unsigned kMostReferences = 16;
    constexpr unsigned kByBits = 0;
    constexpr unsigned kByDecoding = 2;
    require(bits_.unsignedCode() <= kMostBits);
    const std::uint32_t order = bits_.unsignedCode();
    require(order == kByBits || order == kByDecoding);
    if (order == kByBits) require(bits_.unsignedCode() <= kMostBits);
    isInDecodingOrder_ = order == kByDecoding;
    require(bits_.unsignedCode() <= kMostReferences);
    bits_.skip(1);
  }

  void readSize() {
    const std::uint32_t columns = bits_.unsignedCode();
    const std::uint32_t rows = bits_.unsignedCode();
    require(columns < kMostBlocks && rows < kMostBlocks);
    const bool isProgressive = bits_.bit();
    if (!isProgressive) bits_.skip(1);
    bits_.skip(1);
    if (!isOrdinary_) return;
    found_.width = static_cast<int>((columns + 1) * 16);
    found_.height = static_cast<int>((rows + 1) * (isProgressive ? 16 : 32));
    require(found_.height <= static_cast<int>(kMostBlocks * 16));
    if (bits_.bit()) crop(isProgressive);
    if (isInDecodingOrder_) found_.heldBackPictures = 0;
  }

  void crop(bool isProgressive) {
    const std::uint32_t left = bits_.unsignedCode();
    const std::uint32_t right = bits_.unsignedCode();
    const std::uint32_t top = bits_.unsignedCode();
    const std::uint32_t bottom = bits_.unsignedCode();
    require(left == 0 && top == 0 && right < kMostBlocks * 16 && bottom < kMostBlocks * 16);
    if (!isOrdinary_) return;
    constexpr int kHorizontalUnit = 2;
    const int verticalUnit = (chroma_ == 1 ? 2 : 1) * (isProgressive ? 1 : 2);
    found_.width -= static_cast<int>(right) * kHorizontalUnit;
    found_.height -= static_cast<int>(bottom) * verticalUnit;
    require(found_.width > 0 && found_.height > 0);
  }

  // The "video usability information".
  void readUsability() {
    if (bits_.bit()) readSampleAspect();
    if (bits_.bit()) bits_.skip(1);  // overscan
    if (bits_.bit()) readRange();
    readChromaLocation();
    if (bits_.bit()) {
      found_.unitTicks = bits_.bits(32);
      found_.ticksPerSecond = bits_.bits(32);
      bits_.skip(1);
    }
    const bool hasNalTimes = bits_.bit();
    if (hasNalTimes) skipBufferTimes();
    const bool hasVclTimes = bits_.bit();
    if (hasVclTimes) skipBufferTimes();
    if (hasNalTimes || hasVclTimes) bits_.skip(1);
    bits_.skip(1);
    if (bits_.bit()) readRestrictions();
  }

  void readSampleAspect() {
    constexpr unsigned kOther = 255;
    const std::uint32_t number = bits_.bits(8);
    if (number == kOther) {
      found_.sampleAspect.num = static_cast<int>(bits_.bits(16));
      found_.sampleAspect.den = static_cast<int>(bits_.bits(16));
      require(found_.sampleAspect.num != 0 && found_.sampleAspect.den != 0);
    } else if (number < kSampleAspects.size()) {
      found_.sampleAspect = kSampleAspects[number];
    } else {
      require(false);
    }
  }

  void readRange() {
    constexpr int kRgb = 0;
    bits_.skip(3);
    isFullRange_ = bits_.bit();
    found_.isFullRange = isFullRange_;
    if (!bits_.bit()) return;
    H264Colours colours;
    for (int* number : {&colours.primaries, &colours.transfer, &colours.matrix})
      *number = static_cast<int>(bits_.bits(8));
    require(colours.matrix != kRgb);
    found_.colours = colours;
  }

  void readChromaLocation() {
    constexpr std::uint32_t kMost = 5;
    found_.chromaLocation = 0;
    if (!bits_.bit()) return;
    const std::uint32_t ofTopField = bits_.unsignedCode();
    bits_.unsignedCode();
    require(ofTopField <= kMost);
    if (isOrdinary_) found_.chromaLocation = static_cast<int>(ofTopField);
  }

  void skipBufferTimes() {
    constexpr unsigned kMostBuffers = 32;
    const std::uint32_t last = bits_.unsignedCode();
    require(last < kMostBuffers);
    bits_.skip(8);
    for (std::uint32_t i = 0; i <= last && isOrdinary_; ++i) {
      bits_.unsignedCode();
      bits_.unsignedCode();
      bits_.skip(1);
    }
    bits_.skip(20);
  }

  void readRestrictions() {
    constexpr unsigned kMostPictures = 16;
    constexpr int kOtherFields = 4;
    bits_.skip(1);
    for (int i = 0; i < kOtherFields; ++i) bits_.unsignedCode();
    const std::uint32_t heldBack = bits_.unsignedCode();
    require(heldBack <= kMostPictures && bits_.unsignedCode() <= kMostPictures);
    if (isOrdinary_ && !isInDecodingOrder_) found_.heldBackPictures = static_cast<int>(heldBack);
  }

  BitReader bits_;
  H264Parameters found_;
  bool isOrdinary_ = true;
  int profile_ = 0;
  unsigned chroma_ = 1;
  unsigned depth_ = 8;
  bool isInDecodingOrder_ = false;
  bool isFullRange_ = false;
};

Bytes withoutTrailingZeros(Bytes nalUnit) {
  while (!nalUnit.empty() && nalUnit.back() == 0) nalUnit = nalUnit.first(nalUnit.size() - 1);
  return nalUnit;
}

}  // namespace

std::optional<H264Parameters> readSps(Bytes nalUnit) {
  if (nalUnit.empty() || nalUnit.size() > kLongestSps || typeOf(nalUnit[0]) != kSps)
    return std::nullopt;
  const std::vector<std::uint8_t> payload = payloadOf(nalUnit.subspan(1));
  return SpsReader(payload).read();
}

Bytes spsOfConfiguration(Bytes configuration) {
  constexpr std::uint64_t kVersion = 1;
  ByteReader reader(configuration);
  const bool isKnown = reader.bigEndian(1) == kVersion;
  reader.skip(4);
  const bool isSingle = (reader.bigEndian(1) & 0x1F) == 1;
  const Bytes sps = reader.take(reader.bigEndian(2));
  const std::uint64_t pictureParameters = reader.bigEndian(1);
  for (std::uint64_t i = 0; i < pictureParameters; ++i) reader.skip(reader.bigEndian(2));
  return !reader.failed() && isKnown && isSingle && pictureParameters > 0 ? sps : Bytes();
}

Bytes spsOfByteStream(Bytes stream) {
  Bytes found;
  for (std::size_t code = startCodeAfter(stream, 0); stream.size() - code > 3;) {
    const std::size_t begin = code + 3;
    const unsigned type = typeOf(stream[begin]);
    if (isPicture(type)) break;
    code = startCodeAfter(stream, begin);
    if (type != kSps) continue;
    const Bytes next = withoutTrailingZeros(stream.subspan(begin, code - begin));
    if (!found.empty() && !std::ranges::equal(found, next)) return {};
    found = next;
  }
  return found;
}

bool isPlainPicture(Bytes packet, Bytes configuration) {
  const Bytes sps = spsOfConfiguration(configuration);
  if (sps.empty()) return false;
  const std::size_t lengthSize = (configuration[4] & 3U) + 1;
  bool hasPicture = false;
  ByteReader reader(packet);
  while (reader.left() > lengthSize) {
    const Bytes nalUnit = reader.take(reader.bigEndian(lengthSize));
    if (nalUnit.empty()) return false;
    const unsigned type = typeOf(nalUnit[0]);
    if (isPicture(type)) hasPicture = true;
    if (type == kSps && !std::ranges::equal(nalUnit, sps)) return false;
  }
  return hasPicture;
}

}  // namespace kolum::headers
