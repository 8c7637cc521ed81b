#include "base/clean_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kolum {

namespace {

TEST(CleanText, LeavesUtf8AsItIs) {
  for (const std::string text : {"", "a", "T\u00FCr", "\u65E5\u672C", "\U0001F600", "a\tb\nc"}) {
    EXPECT_EQ(cleanText(text), text);
    EXPECT_TRUE(isCleanText(text));
  }
}

TEST(CleanText, EndsAtNul) {
  EXPECT_EQ(cleanText(std::string("ab\0cd", 5)), "ab");
  EXPECT_FALSE(isCleanText(std::string("ab\0", 3)));
}

TEST(CleanText, ReplacesEachByteThatIsNoUtf8) {
  const struct {
    std::string text;
    std::string expected;
  } rows[] = {{"T\xFCr", "T\uFFFDr"},
              {"\xC3", "\uFFFD"},
              {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
              {"\xC0\x80x", "\uFFFD\uFFFDx"},
              {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"}};
  for (const auto& row : rows) {
    EXPECT_EQ(cleanText(row.text), row.expected);
    EXPECT_FALSE(isCleanText(row.text));
  }
}

TEST(CleanText, IsCutBetweenCharacters) {
  EXPECT_EQ(cleanText("a\u00FCb", 1), "a");
  EXPECT_EQ(cleanText("a\u00FCb", 2), "a");
  EXPECT_EQ(cleanText("a\u00FCb", 3), "a\u00FC");
  EXPECT_EQ(cleanText("\xFFx", 2), "");
  EXPECT_FALSE(isCleanText("ab", 1));
  EXPECT_EQ(cleanText(std::string(100'000, 'a')).size(), kLongestText);
}

}  // namespace

}  // namespace kolum
