#include "read/exif/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/utf8.h"
#include "media/photo_tags.h"

namespace kolum::exif {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string utf16(const std::vector<std::uint8_t>& bytes, bool isBigEndian = false) {
  return utf16Text(bytes, isBigEndian);
}

TEST(PhotoText, EndsAtItsNulAndPadding) {
  EXPECT_EQ(paddedText(std::string_view("Canon  \0rest", 12)), "Canon");
  EXPECT_EQ(paddedText("  "), "");
  EXPECT_EQ(paddedText(" a "), " a");
}

TEST(PhotoText, IsLatin1IfItIsNotUtf8) {
  EXPECT_EQ(paddedText("caf\xC3\xA9"), "caf\xC3\xA9");
  EXPECT_EQ(paddedText("caf\xE9"), "caf\xC3\xA9");
  EXPECT_EQ(plainText(std::string("a\0b", 3)), "ab");
}

TEST(PhotoText, IsCutAtACharacter) {
  std::string text;
  for (int i = 0; i < 40000; ++i) text += "\xE2\x82\xAC";
  const std::string cut = plainText(text);
  EXPECT_EQ(cut.size(), media::kLongestPhotoText / 3 * 3);
  EXPECT_TRUE(isUtf8(cut));
  // As it comes if Exif's value was cut before.
  EXPECT_EQ(paddedText(text.substr(0, media::kLongestPhotoText)), cut);
}

TEST(PhotoText, MayBeUtf16) {
  EXPECT_EQ(utf16({'a', 0, 0xAC, 0x20, 0, 0, 'b', 0}), "a\xE2\x82\xAC");
  EXPECT_EQ(utf16({0, 'a', 0x20, 0xAC}, true), "a\xE2\x82\xAC");
  EXPECT_EQ(utf16({0x3D, 0xD8, 0x00, 0xDE}), "\xF0\x9F\x98\x80");
}

TEST(PhotoText, ReplacesHalvesOfUtf16Characters) {
  EXPECT_EQ(utf16({0x3D, 0xD8, 'a', 0}),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(utf16({0x00, 0xDE}), "\xEF\xBF\xBD");
  EXPECT_EQ(utf16({0x3D, 0xD8}), "\xEF\xBF\xBD");
  EXPECT_EQ(utf16({'a', 0, 'b'}), "a");
}

TEST(PhotoText, IsSplitIntoParts) {
  EXPECT_THAT(parts(" a ;b;;  ;a", ';'), ElementsAre("a", "b"));
  EXPECT_THAT(parts("", ';'), IsEmpty());
}

TEST(PhotoText, FillsListsUpToTheirLimits) {
  std::vector<std::string> list;
  for (int i = 0; i < 1000; ++i) addText(list, std::to_string(i));
  EXPECT_THAT(list, SizeIs(media::kMostPhotoTexts));
  list.clear();
  for (char c = 'a'; c < 'k'; ++c) addText(list, std::string(media::kLongestPhotoText, c));
  EXPECT_THAT(list, SizeIs(4));
}

TEST(PhotoText, IsRepairedByteByByte) {
  EXPECT_EQ(repairedUtf8("caf\xE9 caf\xC3\xA9\n"), "caf\xC3\xA9 caf\xC3\xA9\n");
  EXPECT_EQ(repairedUtf8(std::string("a\0\x1F\tb", 5)), "a  \tb");
  EXPECT_EQ(repairedUtf8("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80");
}

}  // namespace

}  // namespace kolum::exif
