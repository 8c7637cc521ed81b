#include "read/headers/vp9.h"

#include "base/bytes.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;

// FFmpeg refuses only much larger pictures.
constexpr int kLargest = 8192;

// By the depth of colours, and by whether they have half the rows and half the columns.
constexpr const char* kPixelFormats[3][2][2] = {
    {{"yuv444p", "yuv422p"}, {"yuv440p", "yuv420p"}},
    {{"yuv444p10le", "yuv422p10le"}, {"yuv440p10le", "yuv420p10le"}},
    {{"yuv444p12le", "yuv422p12le"}, {"yuv440p12le", "yuv420p12le"}}};
constexpr const char* kRgbFormats[3] = {"gbrp", "gbrp10le", "gbrp12le"};

// Several frames share a packet. Encoders let no other packet end like that.
bool isSuperframe(Bytes packet) {
  return (packet.back() & 0xE0) == 0xC0;
}

// Reads the header of a key frame to its end, also what nobody asks for: some of FFmpeg's releases
// refuse the frame if a later part is damaged.
class KeyFrameReader {
 public:
  explicit KeyFrameReader(Bytes packet) : bits_(packet) {}

  std::optional<Vp9Parameters> read() {
    readProfile();
    readKind();
    if (!isOrdinary_) return std::nullopt;
    readColours();
    readSize();
    skipContexts();
    skipLoopFilter();
    skipQuantization();
    skipSegmentation();
    skipTiles();
    const std::size_t rest = bits_.bits(16);
    while (bits_.left() % 8 != 0 && !bits_.failed()) require(!bits_.bit());
    require(rest != 0 && rest <= bits_.left() / 8);
    if (!isOrdinary_ || bits_.failed()) return std::nullopt;
    return found_;
  }

 private:
  void require(bool condition) { isOrdinary_ = isOrdinary_ && condition; }

  void readProfile() {
    constexpr unsigned kMarker = 2;
    constexpr int kLast = 3;
    require(bits_.bits(2) == kMarker);
    found_.profile = bits_.bit() ? 1 : 0;
    if (bits_.bit()) found_.profile += 2;
    if (found_.profile == kLast) require(!bits_.bit());
  }

  void readKind() {
    constexpr unsigned kSyncCode = 0x498342;
    require(!bits_.bit());  // shows an earlier frame
    require(!bits_.bit());  // is no key frame
    require(bits_.bit());   // is shown
    resistsErrors_ = bits_.bit();
    require(bits_.bits(24) == kSyncCode);
  }

  void readColours() {
    constexpr unsigned kRgb = 7;
    const bool isFurtherProfile = found_.profile % 2 != 0;  // with other than 4:2:0
    const unsigned depth = found_.profile < 2 ? 0 : 1 + static_cast<unsigned>(bits_.bit());
    found_.colourSpace = bits_.bits(3);
    if (found_.colourSpace == kRgb) {
      found_.isFullRange = true;
      require(isFurtherProfile && !bits_.bit());
      found_.pixelFormat = kRgbFormats[depth];
      return;
    }
    found_.isFullRange = bits_.bit();
    bool hasHalfColumns = true;
    bool hasHalfRows = true;
    if (isFurtherProfile) {
      hasHalfColumns = bits_.bit();
      hasHalfRows = bits_.bit();
      require(!(hasHalfColumns && hasHalfRows) && !bits_.bit());
    }
    found_.pixelFormat = kPixelFormats[depth][hasHalfRows ? 1 : 0][hasHalfColumns ? 1 : 0];
  }

  void readSize() {
    found_.width = static_cast<int>(bits_.bits(16)) + 1;
    found_.height = static_cast<int>(bits_.bits(16)) + 1;
    require(found_.width <= kLargest && found_.height <= kLargest);
    if (bits_.bit()) bits_.skip(32);  // the size to show it in, which FFmpeg ignores
  }

  void skipContexts() {
    if (!resistsErrors_) bits_.skip(2);
    bits_.skip(2);
  }

  void skipLoopFilter() {
    constexpr int kDeltas = 6;
    bits_.skip(9);
    if (!bits_.bit() || !bits_.bit()) return;
    for (int i = 0; i < kDeltas; ++i) skipOptional(7);
  }

  void skipQuantization() {
    constexpr int kDeltas = 3;
    bits_.skip(8);
    for (int i = 0; i < kDeltas; ++i) skipOptional(5);
  }

  void skipSegmentation() {
    constexpr int kTreeProbabilities = 7;
    constexpr int kTimeProbabilities = 3;
    constexpr int kSegments = 8;
    constexpr std::size_t kFeatureBits[] = {9, 7, 2, 0};
    if (!bits_.bit()) return;
    if (bits_.bit()) {
      for (int i = 0; i < kTreeProbabilities; ++i) skipOptional(8);
      const bool isTemporal = bits_.bit();
      for (int i = 0; isTemporal && i < kTimeProbabilities; ++i) skipOptional(8);
    }
    if (!bits_.bit()) return;
    bits_.skip(1);
    for (int i = 0; i < kSegments; ++i)
      for (const std::size_t count : kFeatureBits) skipOptional(count);
  }

  void skipTiles() {
    constexpr int kBlock = 64;
    constexpr int kMostColumns = 64;  // in blocks
    constexpr int kFewestColumns = 4;
    const int columns = (found_.width + kBlock - 1) / kBlock;
    int least = 0;
    while (kMostColumns << least < columns) ++least;
    int most = 0;
    while (columns >> (most + 1) >= kFewestColumns) ++most;
    while (least < most && bits_.bit()) ++least;
    if (bits_.bit()) bits_.skip(1);
  }

  void skipOptional(std::size_t count) {
    if (bits_.bit()) bits_.skip(count);
  }

  BitReader bits_;
  Vp9Parameters found_;
  bool isOrdinary_ = true;
  bool resistsErrors_ = false;
};

}  // namespace

std::optional<Vp9Parameters> readVp9KeyFrame(Bytes packet) {
  if (packet.empty() || isSuperframe(packet)) return std::nullopt;
  return KeyFrameReader(packet).read();
}

}  // namespace kolum::headers
