#include <gtest/gtest.h>
#include <kolum/identifiers.h>

#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "media/expected_identifiers.h"

using namespace kolum::test;

namespace {

constexpr unsigned kPattern = 0xABABABAB;

// Calls a conversion to a name with a buffer of the documented size and checks the bytes after it.
template <typename Convert>
std::optional<std::string> nameFrom(Convert convert) {
  struct {
    char name[KOLUM_IDENTIFIER_NAME_SIZE];
    char guard[16];
  } buffer = {};
  std::memset(&buffer, '#', sizeof buffer);
  const int result = convert(buffer.name);
  EXPECT_EQ(std::string(buffer.guard, sizeof buffer.guard), std::string(16, '#'));
  if (result == 0) return buffer.name;
  EXPECT_EQ(result, 1);
  EXPECT_EQ(buffer.name[0], '#') << "written on failure";
  return std::nullopt;
}

std::optional<std::string> formatName(unsigned id, std::string* brandOut = nullptr) {
  char brand[KOLUM_IDENTIFIER_NAME_SIZE] = "untouched";
  const auto name = nameFrom(
      [&](char* out) { return ContainerFormatIDToName(out, brand, static_cast<int>(id)); });
  if (brandOut != nullptr) *brandOut = brand;
  return name;
}

std::optional<unsigned> formatId(const char* name, const char* brand) {
  unsigned id = kPattern;
  if (ContainerFormatNameToID(name, brand, &id) == 0) return id;
  EXPECT_EQ(id, kPattern) << "written on failure";
  return std::nullopt;
}

TEST(ContainerFormats, ConvertBothWays) {
  ASSERT_EQ(std::size(kExpectedFormats), 26U);
  for (const auto& [id, name] : kExpectedFormats) {
    SCOPED_TRACE(name);
    EXPECT_EQ(formatId(name, nullptr), static_cast<unsigned>(id));
    EXPECT_EQ(formatId(name, ""), static_cast<unsigned>(id));
    std::string brand;
    EXPECT_EQ(formatName(static_cast<unsigned>(id), &brand), name);
    EXPECT_EQ(brand, "");
  }
}

TEST(ContainerFormats, HaveBrandsForMpeg4Only) {
  ASSERT_EQ(std::size(kExpectedBrands), 11U);
  for (const auto& [number, name] : kExpectedBrands) {
    SCOPED_TRACE(name);
    const unsigned id = static_cast<unsigned>(number) << 16 | 8;
    EXPECT_EQ(formatId("FORMAT_MPEG4", name), id);
    EXPECT_EQ(formatId("FORMAT_AVI", name), 9U);
    std::string brand;
    EXPECT_EQ(formatName(id, &brand), "FORMAT_MPEG4");
    EXPECT_EQ(brand, name);
    // The high bits of other formats are ignored.
    EXPECT_EQ(formatName(id + 1, &brand), "FORMAT_AVI");
    EXPECT_EQ(brand, "");
  }
}

TEST(ContainerFormats, IgnoreUnknownBrands) {
  EXPECT_EQ(formatId("FORMAT_MPEG4", "MPEG4_MOV"), 0x40008U);
  EXPECT_EQ(formatId("FORMAT_MPEG4", "MPEG4_NONE"), 8U);
  EXPECT_EQ(formatId("FORMAT_MPEG4", "mpeg4_mov"), 8U);
  std::string brand;
  EXPECT_EQ(formatName(0x40008, &brand), "FORMAT_MPEG4");
  EXPECT_EQ(brand, "MPEG4_MOV");
  EXPECT_EQ(formatName(0x0C0008, &brand), "FORMAT_MPEG4");
  EXPECT_EQ(brand, "");
  EXPECT_EQ(formatName(0xFFFF0008, &brand), "FORMAT_MPEG4");
  EXPECT_EQ(brand, "");
}

TEST(ContainerFormats, RejectUnknownNamesAndNumbers) {
  EXPECT_EQ(formatId("format_mpeg4", nullptr), std::nullopt);
  EXPECT_EQ(formatId("", nullptr), std::nullopt);
  EXPECT_EQ(formatId(nullptr, nullptr), std::nullopt);
  std::string brand;
  EXPECT_EQ(formatName(26, &brand), std::nullopt);
  EXPECT_EQ(brand, "") << "cleared before the look-up";
  EXPECT_EQ(formatName(0xFFFF, nullptr), std::nullopt);
  EXPECT_EQ(formatName(0xFFFFFFFF, nullptr), std::nullopt);
}

TEST(ContainerFormats, NameTheUnknownFormatWhateverTheHighBits) {
  EXPECT_EQ(formatName(0), "FORMAT_UNKNOWN");
  EXPECT_EQ(formatName(0x50000), "FORMAT_UNKNOWN");
}

TEST(ContainerFormats, AllowNullBrand) {
  char name[KOLUM_IDENTIFIER_NAME_SIZE] = {};
  EXPECT_EQ(ContainerFormatIDToName(name, nullptr, 0x40008), 0);
  EXPECT_STREQ(name, "FORMAT_MPEG4");
}

TEST(AudioAttachedNames, ConvertEveryFormat) {
  const auto extension = [](int id) {
    return nameFrom([id](char* out) { return ContainerFormatIDToAudioAttachedName(out, id); });
  };
  ASSERT_EQ(std::size(kExpectedAudioAttachedNames), 26U);
  for (const auto& [id, name] : kExpectedAudioAttachedNames)
    EXPECT_EQ(extension(static_cast<int>(id)), name) << id;
  EXPECT_EQ(extension(0x10008), "mp4") << "brands are ignored";
  EXPECT_EQ(extension(17), "iso");
  EXPECT_EQ(extension(18), "iso");
  EXPECT_EQ(extension(0x70000), "dat");
  EXPECT_EQ(extension(26), std::nullopt);
  EXPECT_EQ(extension(0xFFFF), std::nullopt);
  EXPECT_EQ(extension(-1), std::nullopt);
}

TEST(Codecs, ConvertFromEveryName) {
  ASSERT_EQ(std::size(kExpectedCodecs), 334U);
  for (const auto& [id, name] : kExpectedCodecs) {
    unsigned found = kPattern;
    EXPECT_EQ(CodecNameToID(name, &found), 0) << name;
    EXPECT_EQ(found, static_cast<unsigned>(id)) << name;
  }
  unsigned found = kPattern;
  for (const char* name : {"codec_id_h264", "CODEC_ID_", "", "H264"})
    EXPECT_EQ(CodecNameToID(name, &found), 1) << name;
  EXPECT_EQ(CodecNameToID(nullptr, &found), 1);
  EXPECT_EQ(found, kPattern);
}

std::optional<std::string> codecName(unsigned id) {
  return nameFrom([id](char* out) { return CodecIDToName(out, id); });
}

TEST(Codecs, ConvertToTheFirstNameOfEveryNumber) {
  std::map<long long, std::string> first;
  for (const auto& [id, name] : kExpectedCodecs) first.try_emplace(id, name);
  for (const auto& [id, name] : first) EXPECT_EQ(codecName(static_cast<unsigned>(id)), name) << id;
  EXPECT_EQ(codecName(177), std::nullopt);
  EXPECT_EQ(codecName(0xFFFFFFFF), std::nullopt);
}

TEST(Codecs, ReturnTheFirstOfTwoNames) {
  EXPECT_EQ(codecName(164), "CODEC_ID_HEVC");
  EXPECT_EQ(codecName(0x10000), "CODEC_ID_FIRST_AUDIO");
  EXPECT_EQ(codecName(0x17000), "CODEC_ID_FIRST_SUBTITLE");
  EXPECT_EQ(codecName(0x18000), "CODEC_ID_FIRST_UNKNOWN");
}

TEST(Profiles, ConvertFromEveryName) {
  ASSERT_EQ(std::size(kExpectedProfiles), 50U);
  for (const auto& [id, name] : kExpectedProfiles) {
    int found = 12345;
    EXPECT_EQ(ProfileNameToID(name, &found), 0) << name;
    EXPECT_EQ(found, id) << name;
  }
  int found = 12345;
  EXPECT_EQ(ProfileNameToID("PROFILE_NONE", &found), 1);
  EXPECT_EQ(ProfileNameToID(nullptr, &found), 1);
  EXPECT_EQ(found, 12345);
}

// Hosts display the family, so the profile's own name must not appear.
TEST(Profiles, AreNamedByCodecFamilyOnly) {
  const auto name = [](int profile, int codec) {
    return nameFrom([&](char* out) { return ProfileIDToName(out, profile, codec); });
  };
  const std::map<int, std::string> families = {
      {72, "PROFILE_VC1"},      {154, "PROFILE_VC1"},     {13, "PROFILE_MPEG4"},
      {2, "PROFILE_MPEG2"},     {3, "PROFILE_MPEG2"},     {28, "PROFILE_H264"},
      {0x15002, "PROFILE_AAC"}, {0x15032, "PROFILE_AAC"}, {0x15004, "PROFILE_DTS"},
  };
  for (const auto& [id, codec] : kExpectedCodecs) {
    const auto family = families.find(static_cast<int>(id));
    const std::string expected = family != families.end() ? family->second : "UNKNOWN";
    EXPECT_EQ(name(260098, static_cast<int>(id)), expected) << codec;
    EXPECT_EQ(name(1, static_cast<int>(id)), expected) << codec;
    for (const int profile : {0, -1, -99, -100})
      EXPECT_EQ(name(profile, static_cast<int>(id)), "UNKNOWN") << codec;
  }
  EXPECT_EQ(ProfileIDToName(nullptr, 1, 28), 0);
}

TEST(PlayExceptions, ConvertFromEveryName) {
  const std::map<std::string, unsigned> rows = {
      {"PLAY_EXCEPTION_DIVX_XVID", 0x10001},
      {"PLAY_EXCEPTION_DIVX_DX50", 0x10002},
      {"PLAY_EXCEPTION_DIVX_DIVX", 0x10004},
      {"PLAY_EXCEPTION_H264_AVC1", 0x20001},
  };
  for (const auto& [name, id] : rows) {
    unsigned found = kPattern;
    EXPECT_EQ(PlayExceptionNameToID(name.c_str(), &found), 0);
    EXPECT_EQ(found, id) << name;
  }
  unsigned found = kPattern;
  EXPECT_EQ(PlayExceptionNameToID("PLAY_EXCEPTION", &found), 1);
  EXPECT_EQ(PlayExceptionNameToID(nullptr, &found), 1);
  EXPECT_EQ(found, kPattern);
}

TEST(Conversions, AllowNullOutputs) {
  EXPECT_EQ(ContainerFormatNameToID("FORMAT_AVI", nullptr, nullptr), 1);
  EXPECT_EQ(CodecNameToID("CODEC_ID_H264", nullptr), 1);
  EXPECT_EQ(ProfileNameToID("PROFILE_DTS", nullptr), 1);
  EXPECT_EQ(PlayExceptionNameToID("PLAY_EXCEPTION_DIVX_XVID", nullptr), 1);
  EXPECT_EQ(CodecIDToName(nullptr, 28), 1);
  EXPECT_EQ(ContainerFormatIDToName(nullptr, nullptr, 8), 1);
  EXPECT_EQ(ContainerFormatIDToAudioAttachedName(nullptr, 8), 1);
}

// The library's number for FFmpeg's number of release 57, listed as the pairs that hosts use.
int expectedLibraryCodec(int ffmpeg) {
  static const std::map<int, int> kOthers = {
      {0x800C, 57},
      {137, 138},
      {174, 164},
      {0x17800, 0x6D445644},
      {0x17801, 0x63363038},
      {0x17802, 0x4A535542},
      {0x17803, 0x53414D49},
      {0x17804, 0x52545854},
      {0x17806, 0x53625631},
      {0x17807, 0x53756256},
      {0x17808, 0x53526970},
      {0x17809, 0x57565454},
      {0x1780A, 0x4D504C32},
      {0x1780B, 0x56506C72},
      {0x1780C, 0x50684A53},
      {0x1780D, 0x41535320},
  };
  if (const auto other = kOthers.find(ffmpeg); other != kOthers.end()) return other->second;
  if (ffmpeg >= 57 && ffmpeg <= 136) return ffmpeg + 1;
  if (ffmpeg >= 138 && ffmpeg <= 161) return ffmpeg + 2;
  if (ffmpeg >= 162 && ffmpeg <= 173) return ffmpeg + 3;
  if (ffmpeg > 174 && ffmpeg < 0x10000) return -1;
  if (ffmpeg > 0x21000) return -1;
  for (const auto& row : kExpectedCodecs)
    if (row.id == ffmpeg) return ffmpeg;
  return -1;
}

TEST(FfmpegCodecs, ConvertEveryNumberUpToTheLast) {
  for (int ffmpeg = -10; ffmpeg <= 0x22000; ++ffmpeg)
    ASSERT_EQ(ffmpegCodecIdConvert(ffmpeg), ffmpeg == 0 ? 0 : expectedLibraryCodec(ffmpeg))
        << ffmpeg;
}

// The library numbers later subtitle codecs by their tags, FFmpeg by position.
TEST(FfmpegCodecs, RejectNumbersBeyondTheLast) {
  for (const auto& row : kExpectedCodecs) {
    if (row.id < 0x22000) continue;
    EXPECT_EQ(ffmpegCodecIdConvert(static_cast<int>(row.id)), -1) << row.name;
  }
}

// Every codec is reached except the second one that claims 137: 334 rows, four of them second
// names.
TEST(FfmpegCodecs, ReachEveryCodec) {
  std::set<int> reached;
  for (int ffmpeg = 0; ffmpeg <= 0x22000; ++ffmpeg)
    if (const int id = ffmpegCodecIdConvert(ffmpeg); id != -1) reached.insert(id);
  for (const auto& row : kExpectedCodecs)
    EXPECT_EQ(reached.contains(static_cast<int>(row.id)), row.id != 139) << row.name;
  EXPECT_EQ(reached.size(), 334U - 4 - 1);
}

TEST(FfmpegCodecs, ConvertCommonNumbers) {
  EXPECT_EQ(ffmpegCodecIdConvert(28), 28);
  EXPECT_EQ(ffmpegCodecIdConvert(174), 164) << "HEVC";
  EXPECT_EQ(ffmpegCodecIdConvert(168), 171) << "VP9";
  EXPECT_EQ(ffmpegCodecIdConvert(0x800C), 57);
  EXPECT_EQ(ffmpegCodecIdConvert(0x15002), 0x15002);
  EXPECT_EQ(ffmpegCodecIdConvert(0x1503C), -1) << "Opus";
  EXPECT_EQ(ffmpegCodecIdConvert(-1), -1);
  EXPECT_EQ(ffmpegCodecIdConvert(INT32_MAX), -1);
  EXPECT_EQ(ffmpegCodecIdConvert(INT32_MIN), -1);
}

// Library number 139 also claims FFmpeg's 137, but after 138 in the table.
TEST(FfmpegCodecs, ConvertNumber137ToItsFirstCodec) {
  EXPECT_EQ(ffmpegCodecIdConvert(137), 138);
  for (int ffmpeg = 0; ffmpeg <= 0x22000; ++ffmpeg)
    ASSERT_NE(ffmpegCodecIdConvert(ffmpeg), 139) << ffmpeg;
}

struct ProfileRow {
  int ffmpeg;
  int expected;
};

template <std::size_t kRows>
void expectProfiles(std::initializer_list<int> codecs, const ProfileRow (&rows)[kRows]) {
  for (const int codec : codecs)
    for (const ProfileRow& row : rows)
      EXPECT_EQ(FF_ProfileToKO_Profile(codec, row.ffmpeg), row.expected)
          << "codec " << codec << ", profile " << row.ffmpeg;
}

TEST(FfmpegProfiles, ConvertByTheCodecsTable) {
  expectProfiles({0x15002, 0x15032}, {{0, 87004},
                                      {1, 4},
                                      {2, 5076},
                                      {3, 87004},
                                      {4, 36},
                                      {22, 58725120},
                                      {38, 58725120},
                                      {28, 134217764},
                                      {128, 4},
                                      {131, 36}});
  expectProfiles({0x15004}, {{20, 2}, {30, 6}, {40, 10}, {50, 78}, {60, 206}});
  expectProfiles({2, 3}, {{0, 38}, {1, 62}, {2, 30}, {3, 14}, {4, 6}, {5, 2}});
  expectProfiles({28}, {{66, 450},
                        {578, 2},
                        {77, 14338},
                        {88, 8130},
                        {100, 260098},
                        {110, 260102},
                        {2158, 1308678},
                        {122, 260118},
                        {2170, 1308694},
                        {144, 260158},
                        {244, 1046590},
                        {2292, 2095166},
                        {44, 4192318}});
  expectProfiles({72, 154}, {{0, 126}, {1, 65534}, {2, 524286}, {3, 524286}});
}

constexpr int kMpeg4Visual[] = {2,      258, 18,   2098, 178,  2048, 32768, 165888,
                                428050, 10,  1298, 82,   4114, 4096, 8192,  6};

TEST(FfmpegProfiles, ConvertMpeg4ByItsList) {
  for (int profile = 0; profile < 16; ++profile)
    EXPECT_EQ(FF_ProfileToKO_Profile(13, profile), kMpeg4Visual[profile]) << profile;
}

// Hosts' databases hold these values, so the list also applies to unrelated codecs.
TEST(FfmpegProfiles, FallBackToTheMpeg4ListForEveryCodec) {
  const std::map<int, std::set<int>> own = {
      {0x15002, {0, 1, 2, 3, 4}}, {0x15032, {0, 1, 2, 3, 4}}, {2, {0, 1, 2, 3, 4, 5}},
      {3, {0, 1, 2, 3, 4, 5}},    {72, {0, 1, 2, 3}},         {154, {0, 1, 2, 3}},
  };
  for (const auto& [id, name] : kExpectedCodecs) {
    const int codec = static_cast<int>(id);
    for (int profile = 0; profile < 16; ++profile) {
      const auto exceptions = own.find(codec);
      if (exceptions != own.end() && exceptions->second.contains(profile)) continue;
      ASSERT_EQ(FF_ProfileToKO_Profile(codec, profile), kMpeg4Visual[profile]) << name;
    }
  }
  EXPECT_EQ(FF_ProfileToKO_Profile(28, 5), 2048);
  EXPECT_EQ(FF_ProfileToKO_Profile(73, 0), 2) << "WMV3 Simple";
}

TEST(FfmpegProfiles, AreUnknownBeyondTheLists) {
  for (const int profile : {16, 25, 999, -1, -98, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(FF_ProfileToKO_Profile(28, profile), -99) << profile;
    EXPECT_EQ(FF_ProfileToKO_Profile(13, profile), -99) << profile;
  }
  EXPECT_EQ(FF_ProfileToKO_Profile(0x15004, 25), -99);
}

TEST(FfmpegProfiles, KeepUnknownAndReserved) {
  for (const int codec : {0, 2, 13, 28, 72, 0x15002, 0x15004}) {
    EXPECT_EQ(FF_ProfileToKO_Profile(codec, -99), -99);
    EXPECT_EQ(FF_ProfileToKO_Profile(codec, -100), -100);
  }
}

}  // namespace
