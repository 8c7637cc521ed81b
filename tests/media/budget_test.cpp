#include "media/budget.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "media/source.h"
#include "support/temp_dir.h"

namespace kolum::media {

namespace {

TEST(Meter, IsUsedUpByBytes) {
  Meter meter;
  meter.countBytes(static_cast<std::size_t>(budget::kBytes - 1));
  EXPECT_FALSE(meter.isUsedUp());
  meter.countBytes(1);
  EXPECT_TRUE(meter.isUsedUp());
}

TEST(Source, EndsWhereTheBudgetEnds) {
  const test::TempDir folder;
  const std::string path = folder.write("file", "content");
  constexpr std::size_t kPart = std::size_t{16} << 20;
  std::filesystem::resize_file(path, static_cast<std::uintmax_t>(budget::kBytes) + 2 * kPart);
  const auto source = Source::open(path);
  ASSERT_TRUE(source);
  std::vector<std::uint8_t> part(kPart);
  std::int64_t total = 0;
  while (const std::ptrdiff_t got = source->readAt(total, part)) {
    ASSERT_GT(got, 0);
    total += got;
  }
  EXPECT_EQ(total, budget::kBytes);
  EXPECT_TRUE(source->isUsedUp());
  // Another call begins anew.
  EXPECT_FALSE(Source::open(path)->isUsedUp());
}

TEST(Source, ReadsZerosInBlankedRanges) {
  const test::TempDir folder;
  const auto source = Source::open(folder.write("file", "0123456789"));
  ASSERT_TRUE(source);
  const auto all = [&] {
    std::array<std::uint8_t, 10> bytes = {};
    EXPECT_EQ(source->readAt(0, bytes), 10);
    return std::string(bytes.begin(), bytes.end());
  };
  EXPECT_EQ(source->head().size(), 10U);
  source->blank(2, 4);
  EXPECT_EQ(all(), std::string("01\0\0"
                               "456789",
                               10));
  source->head();
  source->blank(8, 100);
  EXPECT_EQ(all(), std::string("01\0\0"
                               "4567\0\0",
                               10));
  std::array<std::uint8_t, 2> part = {};
  EXPECT_EQ(source->readAt(3, part), 2);
  EXPECT_EQ(part, (std::array<std::uint8_t, 2>{0, '4'}));
}

}  // namespace

}  // namespace kolum::media
