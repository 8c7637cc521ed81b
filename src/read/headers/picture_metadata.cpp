#include "read/headers/picture_metadata.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "read/headers/nal_units.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;
using media::Chromaticity;
using media::ContentLight;
using media::MasteringDisplay;

// Real units with messages have some hundred bytes.
constexpr std::size_t kLongestUnit = 16384;

// Types of messages (SEI).
constexpr std::uint32_t kRegistered = 4;
constexpr std::uint32_t kMasteringDisplay = 137;
constexpr std::uint32_t kContentLight = 144;
constexpr std::uint32_t kPreferredTransfer = 147;

enum class UnitKind { kMessages, kPicture, kOther };

UnitKind kindOf(std::uint8_t firstByte, NalSyntax syntax) {
  if (syntax == NalSyntax::kH264) {
    const unsigned type = firstByte & 0x1FU;
    if (type == 6) return UnitKind::kMessages;
    return type >= 1 && type <= 5 ? UnitKind::kPicture : UnitKind::kOther;
  }
  const unsigned type = firstByte >> 1 & 0x3FU;
  if (type == 39) return UnitKind::kMessages;
  return type < 32 ? UnitKind::kPicture : UnitKind::kOther;
}

// Nobody's eyes see colours outside of this; the sums leave room for rounding.
bool isColour(const Chromaticity& colour) {
  return colour.y > 0 && colour.x + colour.y <= 1.001;
}

void setMasteringDisplay(const media::DisplayPrimaries& primaries,
                         const media::DisplayLuminance& luminance, PictureMetadata& found) {
  MasteringDisplay display;
  if (isColour(primaries.red) && isColour(primaries.green) && isColour(primaries.blue) &&
      isColour(primaries.white))
    display.primaries = primaries;
  if (luminance.highest > luminance.lowest) display.luminance = luminance;
  if (display.primaries || display.luminance) found.masteringDisplay = display;
}

Chromaticity chromaticity(ByteReader& bytes, double unit) {
  const double x = static_cast<double>(bytes.bigEndian(2)) * unit;
  const double y = static_cast<double>(bytes.bigEndian(2)) * unit;
  return {x, y};
}

// Green, blue and red, by the convention of the standard's example, which every encoder keeps.
void readMasteringDisplay(Bytes message, PictureMetadata& found) {
  constexpr double kColourUnit = 0.00002;
  constexpr double kLightUnit = 0.0001;
  ByteReader bytes(message);
  media::DisplayPrimaries primaries;
  for (Chromaticity* colour : {&primaries.green, &primaries.blue, &primaries.red, &primaries.white})
    *colour = chromaticity(bytes, kColourUnit);
  media::DisplayLuminance luminance;
  luminance.highest = static_cast<double>(bytes.bigEndian(4)) * kLightUnit;
  luminance.lowest = static_cast<double>(bytes.bigEndian(4)) * kLightUnit;
  if (!bytes.failed()) setMasteringDisplay(primaries, luminance, found);
}

void readContentLight(Bytes message, PictureMetadata& found) {
  ByteReader bytes(message);
  ContentLight light;
  light.highest = static_cast<std::uint32_t>(bytes.bigEndian(2));
  light.highestAverage = static_cast<std::uint32_t>(bytes.bigEndian(2));
  if (!bytes.failed() && light != ContentLight()) found.contentLight = light;
}

void readMessage(std::uint32_t type, Bytes message, PictureMetadata& found) {
  switch (type) {
    case kRegistered:
      return readRegisteredMessage(message, found);
    case kMasteringDisplay:
      return readMasteringDisplay(message, found);
    case kContentLight:
      return readContentLight(message, found);
    case kPreferredTransfer:
      if (!message.empty()) found.preferredTransfer = message[0];
      return;
    default:
      return;
  }
}

// Numbers of messages continue after each byte of 255.
std::uint32_t messageNumber(ByteReader& bytes) {
  constexpr std::uint64_t kContinued = 0xFF;
  std::uint32_t number = 0;
  std::uint64_t byte = kContinued;
  while (byte == kContinued && !bytes.failed()) {
    byte = bytes.bigEndian(1);
    number += static_cast<std::uint32_t>(byte);
  }
  return number;
}

// The end of a unit is marked by a single bit, which takes at least a byte.
void readMessages(Bytes unit, PictureMetadata& found) {
  constexpr std::size_t kShortest = 3;
  ByteReader bytes(unit);
  while (bytes.left() >= kShortest && !bytes.failed()) {
    const std::uint32_t type = messageNumber(bytes);
    const Bytes message = bytes.take(messageNumber(bytes));
    if (!bytes.failed()) readMessage(type, message, found);
  }
}

// Whether reading should go on.
bool readUnit(Bytes unit, NalSyntax syntax, PictureMetadata& found) {
  const std::size_t header = syntax == NalSyntax::kH264 ? 1 : 2;
  if (unit.size() <= header) return true;
  const UnitKind kind = kindOf(unit[0], syntax);
  if (kind == UnitKind::kMessages)
    readMessages(payloadOf(unit.first(std::min(unit.size(), kLongestUnit)).subspan(header)), found);
  return kind != UnitKind::kPicture;
}

void readByteStream(Bytes stream, NalSyntax syntax, PictureMetadata& found) {
  constexpr std::size_t kStartCode = 3;
  std::size_t code = startCodeAfter(stream, 0);
  while (stream.size() - code > kStartCode) {
    const std::size_t begin = code + kStartCode;
    // A slice is long, and nothing is wanted after it: its end need not be found.
    if (kindOf(stream[begin], syntax) == UnitKind::kPicture) return;
    code = startCodeAfter(stream, begin);
    if (!readUnit(stream.subspan(begin, code - begin), syntax, found)) return;
  }
}

// Numbers of AV1 have 7 bits per byte, the lowest first.
std::uint64_t leb128(ByteReader& bytes) {
  constexpr int kMostBytes = 8;
  std::uint64_t value = 0;
  for (int i = 0; i < kMostBytes; ++i) {
    const std::uint64_t byte = bytes.bigEndian(1);
    value |= (byte & 0x7F) << (7 * i);
    if ((byte & 0x80) == 0) return value;
  }
  bytes.fail();
  return 0;
}

void readAv1MasteringDisplay(ByteReader& bytes, PictureMetadata& found) {
  constexpr double kColourUnit = 1.0 / 65536;
  constexpr double kHighestUnit = 1.0 / 256;
  constexpr double kLowestUnit = 1.0 / 16384;
  media::DisplayPrimaries primaries;
  for (Chromaticity* colour : {&primaries.red, &primaries.green, &primaries.blue, &primaries.white})
    *colour = chromaticity(bytes, kColourUnit);
  media::DisplayLuminance luminance;
  luminance.highest = static_cast<double>(bytes.bigEndian(4)) * kHighestUnit;
  luminance.lowest = static_cast<double>(bytes.bigEndian(4)) * kLowestUnit;
  if (!bytes.failed()) setMasteringDisplay(primaries, luminance, found);
}

void readAv1Metadata(Bytes unit, PictureMetadata& found) {
  constexpr std::uint64_t kLight = 1;
  constexpr std::uint64_t kDisplay = 2;
  constexpr std::uint64_t kMessage = 4;
  ByteReader bytes(unit);
  switch (leb128(bytes)) {
    case kLight:
      return readContentLight(bytes.take(bytes.left()), found);
    case kDisplay:
      return readAv1MasteringDisplay(bytes, found);
    case kMessage:
      return readRegisteredMessage(bytes.take(bytes.left()), found);
    default:
      return;
  }
}

}  // namespace

void readNalUnits(Bytes packet, NalSyntax syntax, std::size_t lengthSize, PictureMetadata& found) {
  if (lengthSize == 0) return readByteStream(packet, syntax, found);
  ByteReader bytes(packet);
  while (bytes.left() > lengthSize && !bytes.failed()) {
    const std::size_t size = bytes.bigEndian(lengthSize);
    if (!readUnit(bytes.take(size), syntax, found)) return;
  }
}

void readHevcConfiguration(Bytes configuration, PictureMetadata& found) {
  constexpr std::size_t kBeforeArrays = 22;
  if (lengthSizeOf(configuration, NalSyntax::kHevc) == 0) return;
  ByteReader bytes(configuration);
  bytes.skip(kBeforeArrays);
  for (std::uint64_t arrays = bytes.bigEndian(1); arrays > 0 && !bytes.failed(); --arrays) {
    bytes.skip(1);
    for (std::uint64_t units = bytes.bigEndian(2); units > 0 && !bytes.failed(); --units)
      readUnit(bytes.take(bytes.bigEndian(2)), NalSyntax::kHevc, found);
  }
}

std::size_t lengthSizeOf(Bytes configuration, NalSyntax syntax) {
  const bool isH264 = syntax == NalSyntax::kH264;
  const std::size_t position = isH264 ? 4 : 21;
  if (configuration.size() <= position) return 0;
  // As FFmpeg judges: early configurations of HEVC have version 0.
  const bool isConfiguration =
      isH264 ? configuration[0] == 1
             : configuration[0] != 0 || configuration[1] != 0 || configuration[2] > 1;
  return isConfiguration ? (configuration[position] & 3U) + 1 : 0;
}

void readAv1Units(Bytes units, PictureMetadata& found) {
  constexpr unsigned kFrameHeader = 3;
  constexpr unsigned kTiles = 4;
  constexpr unsigned kMetadata = 5;
  constexpr unsigned kFrame = 6;
  ByteReader bytes(units);
  while (bytes.left() > 0 && !bytes.failed()) {
    const std::uint64_t header = bytes.bigEndian(1);
    const auto type = static_cast<unsigned>(header >> 3 & 0xF);
    if ((header & 4) != 0) bytes.skip(1);
    const std::size_t size = (header & 2) != 0 ? leb128(bytes) : bytes.left();
    if (type == kFrameHeader || type == kTiles || type == kFrame) return;
    const Bytes unit = bytes.take(size);
    if (type == kMetadata) readAv1Metadata(unit, found);
  }
}

void readAv1Configuration(Bytes configuration, PictureMetadata& found) {
  constexpr std::uint8_t kMarkerAndVersion = 0x81;
  constexpr std::size_t kBeforeUnits = 4;
  if (configuration.size() > kBeforeUnits && configuration[0] == kMarkerAndVersion)
    readAv1Units(configuration.subspan(kBeforeUnits), found);
}

void readMpeg2Picture(Bytes packet, PictureMetadata& found) {
  constexpr std::uint8_t kUserData = 0xB2;
  constexpr std::uint8_t kFirstSlice = 0x01;
  constexpr std::uint8_t kLastSlice = 0xAF;
  constexpr std::size_t kStartCode = 3;
  // In MPEG-2, the same message has neither country nor provider in front.
  constexpr std::array<std::uint8_t, 3> kCountryAndProvider = {0xB5, 0x00, 0x31};
  std::size_t code = startCodeAfter(packet, 0);
  while (packet.size() - code > kStartCode) {
    const std::uint8_t type = packet[code + kStartCode];
    if (type >= kFirstSlice && type <= kLastSlice) return;
    const std::size_t begin = code + kStartCode + 1;
    code = startCodeAfter(packet, begin);
    if (type != kUserData) continue;
    const Bytes data = packet.subspan(begin, std::min(code - begin, kLongestUnit));
    std::vector<std::uint8_t> message(kCountryAndProvider.begin(), kCountryAndProvider.end());
    message.insert(message.end(), data.begin(), data.end());
    readRegisteredMessage(message, found);
  }
}

void readRegisteredMessage(Bytes message, PictureMetadata& found) {
  constexpr std::uint64_t kUnitedStates = 0xB5;
  constexpr std::uint64_t kAdvancedTelevision = 0x0031;
  constexpr std::string_view kTelevisionData = "GA94";
  constexpr std::uint64_t kCaptions = 3;
  constexpr unsigned kAreCaptionsUsed = 0x40;
  constexpr unsigned kCaptionCount = 0x1F;
  constexpr std::uint64_t kDynamicMetadata = 0x003C;
  constexpr std::uint64_t kOrientedCode = 1;
  constexpr std::uint64_t kApplication = 4;
  ByteReader bytes(message);
  if (bytes.bigEndian(1) != kUnitedStates) return;
  const std::uint64_t provider = bytes.bigEndian(2);
  if (provider == kDynamicMetadata) {
    const bool isHdr10Plus =
        bytes.bigEndian(2) == kOrientedCode && bytes.bigEndian(1) == kApplication;
    if (isHdr10Plus && !bytes.failed()) found.hasHdr10Plus = true;
  } else if (provider == kAdvancedTelevision && bytes.text(4) == kTelevisionData) {
    const bool areCaptions = bytes.bigEndian(1) == kCaptions;
    const auto flags = static_cast<unsigned>(bytes.bigEndian(1));
    if (areCaptions && (flags & kAreCaptionsUsed) != 0 && (flags & kCaptionCount) != 0)
      found.hasClosedCaptions = true;
  }
}

}  // namespace kolum::headers
