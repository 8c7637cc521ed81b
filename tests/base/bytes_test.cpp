#include "base/bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace kolum {

namespace {

constexpr std::array<std::uint8_t, 8> kBytes = {0x01, 0x02, 0x03, 0x04, 0x80, 0xFF, 'o', 'k'};

TEST(ByteReader, ReadsNumbersOfBothByteOrders) {
  ByteReader bytes(kBytes);
  EXPECT_EQ(bytes.bigEndian(2), 0x0102U);
  EXPECT_EQ(bytes.littleEndian(2), 0x0403U);
  EXPECT_EQ(bytes.bigEndian(1), 0x80U);
  EXPECT_EQ(bytes.position(), 5U);
  bytes.skip(1);
  EXPECT_EQ(bytes.text(2), "ok");
  EXPECT_EQ(bytes.left(), 0U);
  EXPECT_FALSE(bytes.failed());
  EXPECT_EQ(ByteReader(kBytes).bigEndian(8), 0x0102030480FF6F6BU);
  EXPECT_EQ(ByteReader(kBytes).littleEndian(8), 0x6B6FFF8004030201U);
}

TEST(ByteReader, StaysFailedBeyondTheEnd) {
  ByteReader bytes(kBytes);
  bytes.skip(7);
  EXPECT_EQ(bytes.bigEndian(2), 0U);
  EXPECT_TRUE(bytes.failed());
  EXPECT_EQ(bytes.bigEndian(1), 0U) << "though there is a byte left";
  EXPECT_EQ(bytes.text(0), "");
  ByteReader far(kBytes);
  far.skip(SIZE_MAX);
  EXPECT_TRUE(far.failed());
}

TEST(ByteReader, FailsForACallerThatNeedsMore) {
  ByteReader bytes(kBytes);
  bytes.skip(2);
  bytes.fail();
  EXPECT_TRUE(bytes.failed());
  EXPECT_EQ(bytes.bigEndian(1), 0U);
}

TEST(BitReader, ReadsTheHighestBitFirst) {
  BitReader bits(kBytes);
  EXPECT_EQ(bits.bits(7), 0U);
  EXPECT_TRUE(bits.bit());
  EXPECT_EQ(bits.bits(16), 0x0203U);
  bits.skip(8);
  EXPECT_EQ(bits.bits(12), 0x80FU);
  EXPECT_EQ(bits.left(), 20U);
  EXPECT_FALSE(bits.failed());
}

TEST(BitReader, StaysFailedBeyondTheEnd) {
  BitReader bits(kBytes);
  bits.skip(40);
  EXPECT_EQ(bits.bits(32), 0U) << "not a number that is cut";
  EXPECT_TRUE(bits.failed());
  EXPECT_FALSE(bits.bit());
}

}  // namespace

}  // namespace kolum
