#include "read/headers/picture_metadata.h"

#include <gtest/gtest.h>

#include <string>

#include "support/hostile_bytes.h"

namespace kolum::headers {

namespace {

using namespace std::string_literals;
using test::big16;
using test::big32;
using test::bigEndian;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

const std::string kStartCode = "\0\0\1"s;
const std::string kHevcMessages = "\x4E\x01"s;  // the header of a prefix SEI unit
const std::string kHevcSlice = "\x26\x01slice"s;
const std::string kH264Messages = "\x06"s;
const std::string kH264Slice = "\x65slice"s;
const std::string kDynamic = "\xB5\x00\x3C\x00\x01\x04\x01"s;
const std::string kCaptions = "\xB5\x00\x31GA94\x03\x41\xFF\xFC\x94\x2C\xFF"s;

std::string message(int type, const std::string& payload) {
  std::string bytes(static_cast<std::size_t>(type / 255), '\xFF');
  bytes += static_cast<char>(type % 255);
  bytes += std::string(payload.size() / 255, '\xFF');
  return bytes + static_cast<char>(payload.size() % 255) + payload;
}

std::string masteringDisplay() {
  std::string bytes;
  for (const int number : {13250, 34500, 7500, 3000, 34000, 16000, 15635, 16450})
    bytes += big16(static_cast<std::uint64_t>(number));
  return bytes + big32(10'000'000) + big32(50);
}

std::string hevcUnit(const std::string& messages) {
  return kHevcMessages + messages + "\x80";
}

std::string counted(const std::string& unit, int lengthSize = 4) {
  return bigEndian(unit.size(), lengthSize) + unit;
}

PictureMetadata readHevc(const std::string& packet, std::size_t lengthSize) {
  PictureMetadata found;
  readNalUnits(bytesOf(packet), NalSyntax::kHevc, lengthSize, found);
  return found;
}

PictureMetadata readH264(const std::string& packet, std::size_t lengthSize) {
  PictureMetadata found;
  readNalUnits(bytesOf(packet), NalSyntax::kH264, lengthSize, found);
  return found;
}

void expectMasteringDisplay(const PictureMetadata& found) {
  ASSERT_TRUE(found.masteringDisplay && found.masteringDisplay->primaries &&
              found.masteringDisplay->luminance);
  const auto& primaries = *found.masteringDisplay->primaries;
  EXPECT_NEAR(primaries.red.x, 0.68, 1e-4);
  EXPECT_NEAR(primaries.red.y, 0.32, 1e-4);
  EXPECT_NEAR(primaries.green.y, 0.69, 1e-4);
  EXPECT_NEAR(primaries.blue.x, 0.15, 1e-4);
  EXPECT_NEAR(primaries.white.x, 0.3127, 1e-4);
  EXPECT_NEAR(found.masteringDisplay->luminance->highest, 1000, 1e-3);
  EXPECT_NEAR(found.masteringDisplay->luminance->lowest, 0.005, 1e-4);
}

TEST(ReadNalUnits, FindsLightOfHevc) {
  const std::string units = hevcUnit(message(137, masteringDisplay()) +
                                     message(144, big16(1000) + big16(400)) + message(147, "\x12"));
  for (const auto& [packet, lengthSize] :
       {std::pair(counted(units) + counted(kHevcSlice), 4UL),
        std::pair(counted(units, 2) + counted(kHevcSlice, 2), 2UL),
        std::pair("\0"s + kStartCode + units + kStartCode + kHevcSlice, 0UL)}) {
    const PictureMetadata found = readHevc(packet, lengthSize);
    expectMasteringDisplay(found);
    EXPECT_EQ(found.contentLight, (media::ContentLight{1000, 400}));
    EXPECT_EQ(found.preferredTransfer, 18);
    EXPECT_FALSE(found.hasHdr10Plus || found.hasClosedCaptions);
  }
}

TEST(ReadNalUnits, FindsRegisteredMessages) {
  EXPECT_TRUE(readHevc(counted(hevcUnit(message(4, kDynamic))), 4).hasHdr10Plus);
  EXPECT_TRUE(readHevc(counted(hevcUnit(message(4, kCaptions))), 4).hasClosedCaptions);
  EXPECT_TRUE(
      readH264(counted(kH264Messages + message(4, kCaptions) + "\x80"), 4).hasClosedCaptions);
  EXPECT_TRUE(
      readH264(kStartCode + kH264Messages + message(4, kCaptions) + "\x80", 0).hasClosedCaptions);
}

// Zeros in messages are followed by a byte that keeps start codes from appearing.
TEST(ReadNalUnits, LeavesEscapesOut) {
  const std::string unit = hevcUnit(message(144, "\0\0\x01\x90"s));
  std::string escaped = unit;
  escaped.insert(escaped.find("\0\0\x01"s) + 2, "\x03");
  EXPECT_EQ(readHevc(kStartCode + escaped, 0).contentLight, (media::ContentLight{0, 400}));
}

TEST(ReadNalUnits, EndsAtTheFirstSlice) {
  const std::string late = hevcUnit(message(144, big16(1000) + big16(400)));
  EXPECT_FALSE(readHevc(counted(kHevcSlice) + counted(late), 4).contentLight);
  EXPECT_FALSE(readHevc(kStartCode + kHevcSlice + kStartCode + late, 0).contentLight);
  EXPECT_FALSE(readH264(counted(kH264Slice) + counted(kH264Messages + message(4, kCaptions)), 4)
                   .hasClosedCaptions);
}

TEST(ReadNalUnits, LeavesOtherMessagesOut) {
  for (const std::string& other :
       {"\xB5\x00\x3C\x00\x02\x04\x01"s, "\xB5\x00\x3C\x00\x01\x05\x01"s, "\xB5\x00\x3C\x00"s,
        "\xB4\x00\x3C\x00\x01\x04\x01"s, "\xB5\x00\x31GA95\x03\x41\xFF"s,
        "\xB5\x00\x31GA94\x06\x41\xFF"s, "\xB5\x00\x31GA94\x03\x40\xFF"s,
        "\xB5\x00\x31GA94\x03\x01\xFF"s, ""s}) {
    const PictureMetadata found = readHevc(counted(hevcUnit(message(4, other))), 4);
    EXPECT_FALSE(found.hasHdr10Plus || found.hasClosedCaptions);
  }
}

TEST(ReadNalUnits, LeavesImpossibleLightOut) {
  std::string noColour = masteringDisplay();
  noColour.replace(2, 2, big16(0));
  const auto display = readHevc(counted(hevcUnit(message(137, noColour))), 4).masteringDisplay;
  ASSERT_TRUE(display);
  EXPECT_FALSE(display->primaries);
  EXPECT_TRUE(display->luminance);
  std::string noLight = masteringDisplay();
  noLight.replace(16, 4, big32(0));
  EXPECT_FALSE(readHevc(counted(hevcUnit(message(137, noLight))), 4).masteringDisplay->luminance);
  EXPECT_FALSE(
      readHevc(counted(hevcUnit(message(137, std::string(24, '\0')))), 4).masteringDisplay);
  EXPECT_FALSE(readHevc(counted(hevcUnit(message(144, "\0\0\0\0"s))), 4).contentLight);
}

TEST(ReadNalUnits, SurvivesAnythingCut) {
  const std::string unit =
      hevcUnit(message(137, masteringDisplay()) + message(4, kDynamic) + message(4, kCaptions));
  const std::string packet = counted(unit) + counted(kHevcSlice);
  for (std::size_t size = 0; size < packet.size(); ++size)
    for (const std::size_t lengthSize : {0U, 1U, 2U, 4U})
      readHevc(packet.substr(0, size), lengthSize);
  for (const std::string& hostile :
       {std::string(100'000, '\xFF'), std::string(100'000, '\0'),
        kHevcMessages + std::string(100'000, '\xFF'), test::repeated(kStartCode, 100'000),
        test::repeated(kStartCode + kHevcMessages, 100'000),
        hevcUnit(std::string(2, '\xFF') + "\x01\xFF\xFF\xFF\x7F")}) {
    readHevc(hostile, 0);
    readHevc(counted(hostile), 4);
    readH264(hostile, 0);
  }
}

TEST(ReadHevcConfiguration, FindsMessagesAmongParameterSets) {
  const std::string unit = hevcUnit(message(144, big16(1000) + big16(400)));
  const std::string configuration = "\x01" + std::string(20, '\x60') + "\x03" + "\x02" + "\xA0" +
                                    big16(1) + counted("\x40\x01xy", 2) + "\xA7" + big16(1) +
                                    counted(unit, 2);
  PictureMetadata found;
  readHevcConfiguration(bytesOf(configuration), found);
  EXPECT_EQ(found.contentLight, (media::ContentLight{1000, 400}));
  EXPECT_EQ(lengthSizeOf(bytesOf(configuration), NalSyntax::kHevc), 4U);
  for (std::size_t size = 0; size < configuration.size(); ++size)
    readHevcConfiguration(bytesOf(configuration.substr(0, size)), found);
}

TEST(LengthSizeOf, IsNoneForStartCodes) {
  const std::string stream = "\0\0\0\1"s + std::string(40, 'x');
  EXPECT_EQ(lengthSizeOf(bytesOf(stream), NalSyntax::kHevc), 0U);
  EXPECT_EQ(lengthSizeOf(bytesOf(stream), NalSyntax::kH264), 0U);
  EXPECT_EQ(lengthSizeOf({}, NalSyntax::kH264), 0U);
  EXPECT_EQ(lengthSizeOf(bytesOf("\x01\x64\x00\x28\xFD"s), NalSyntax::kH264), 2U);
}

std::string obu(unsigned type, const std::string& payload) {
  return std::string(1, static_cast<char>(type << 3 | 2)) + static_cast<char>(payload.size()) +
         payload;
}

TEST(ReadAv1Units, FindsMetadata) {
  std::string display = "\x02";
  for (const int number : {44564, 20972, 17367, 45220, 9830, 3932, 20493, 21561})
    display += big16(static_cast<std::uint64_t>(number));
  display += big32(1000 << 8) + big32(82);
  const std::string units = obu(2, "") + obu(5, "\x01" + big16(1000) + big16(400)) +
                            obu(5, display) + obu(5, "\x04" + kDynamic) + obu(6, "frame");
  PictureMetadata found;
  readAv1Units(bytesOf(units), found);
  expectMasteringDisplay(found);
  EXPECT_EQ(found.contentLight, (media::ContentLight{1000, 400}));
  EXPECT_TRUE(found.hasHdr10Plus);
  PictureMetadata ofConfiguration;
  readAv1Configuration(bytesOf("\x81\0\x0C\0"s + units), ofConfiguration);
  EXPECT_TRUE(ofConfiguration.hasHdr10Plus);
  for (std::size_t size = 0; size < units.size(); ++size)
    readAv1Units(bytesOf(units.substr(0, size)), found);
}

TEST(ReadAv1Units, EndsAtTheFirstFrame) {
  PictureMetadata found;
  readAv1Units(bytesOf(obu(6, "frame") + obu(5, "\x04" + kDynamic)), found);
  EXPECT_FALSE(found.hasHdr10Plus);
}

TEST(ReadMpeg2Picture, FindsCaptions) {
  const std::string picture = kStartCode + "\x00head"s;
  const std::string captions = kStartCode + "\xB2" + kCaptions.substr(3);
  const std::string slice = kStartCode + "\x01slice";
  PictureMetadata found;
  readMpeg2Picture(bytesOf(picture + captions + slice), found);
  EXPECT_TRUE(found.hasClosedCaptions);
  PictureMetadata late;
  readMpeg2Picture(bytesOf(picture + slice + captions), late);
  readMpeg2Picture(bytesOf(picture + kStartCode + "\xB2other"), late);
  readMpeg2Picture({}, late);
  EXPECT_FALSE(late.hasClosedCaptions);
}

}  // namespace

}  // namespace kolum::headers
