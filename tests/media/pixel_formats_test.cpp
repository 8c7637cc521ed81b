#include "media/pixel_formats.h"

#include <gtest/gtest.h>

#include <set>

namespace kolum::media {
namespace {

TEST(ClassicPixelFormats, ConvertBetweenNameAndNumber) {
  constexpr struct {
    const char* name;
    int number;
  } kRows[] = {{"yuv420p", 0},   {"pal8", 11},    {"xvmcmc", 15},    {"bgra", 30},
               {"gray16le", 32}, {"rgb48be", 41}, {"drm_prime", 355}};
  for (const auto& row : kRows) {
    EXPECT_EQ(classicPixelFormat(row.name), row.number) << row.name;
    EXPECT_EQ(classicPixelFormatName(row.number), row.name);
  }
}

TEST(ClassicPixelFormats, ListEachNameOnce) {
  std::set<std::string_view> names;
  int count = 0;
  for (int number = 0; number < 1000; ++number) {
    const std::string_view name = classicPixelFormatName(number);
    if (name.empty()) continue;
    ++count;
    EXPECT_TRUE(names.insert(name).second) << name;
    EXPECT_EQ(classicPixelFormat(name), number);
  }
  EXPECT_EQ(count, 191);
}

TEST(ClassicPixelFormats, RejectLaterFormats) {
  for (const char* name : {"x2rgb10le", "p210le", "rgbf32le", "", "YUV420P"})
    EXPECT_EQ(classicPixelFormat(name), kUnknownPixelFormat) << name;
  for (const int number : {-1, 356, 1000}) EXPECT_EQ(classicPixelFormatName(number), "");
}

}  // namespace
}  // namespace kolum::media
