// Bounded readers of bytes and bits. Reading beyond the end gives zeros and marks the reader as
// failed: check once, after the last read.
#ifndef KOLUM_BASE_BYTES_H
#define KOLUM_BASE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kolum {

inline std::string_view textOf(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class ByteReader {
 public:
  explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool failed() const { return failed_; }
  std::size_t position() const { return position_; }
  std::size_t left() const { return bytes_.size() - position_; }

  // The next COUNT bytes; none if fewer are left.
  std::span<const std::uint8_t> take(std::size_t count) {
    if (failed_ || count > left()) {
      failed_ = true;
      return {};
    }
    position_ += count;
    return bytes_.subspan(position_ - count, count);
  }
  void skip(std::size_t count) { take(count); }
  // For a caller that needs more bytes, but does not know how many.
  void fail() { failed_ = true; }
  std::string_view text(std::size_t count) { return textOf(take(count)); }

  // Numbers of COUNT bytes, at most 8.
  std::uint64_t bigEndian(std::size_t count) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : take(count)) value = value << 8 | byte;
    return value;
  }
  std::uint64_t littleEndian(std::size_t count) {
    std::uint64_t value = 0;
    const auto bytes = take(count);
    for (std::size_t i = bytes.size(); i > 0; --i) value = value << 8 | bytes[i - 1];
    return value;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

// The highest bit of each byte comes first.
class BitReader {
 public:
  explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool failed() const { return failed_; }
  std::size_t left() const { return bytes_.size() * 8 - position_; }

  bool bit() {
    if (failed_ || left() == 0) {
      failed_ = true;
      return false;
    }
    const bool value = (bytes_[position_ / 8] >> (7 - position_ % 8) & 1) != 0;
    ++position_;
    return value;
  }
  // A number of COUNT bits, at most 32.
  std::uint32_t bits(unsigned count) {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < count; ++i) value = value << 1 | static_cast<unsigned>(bit());
    return failed_ ? 0 : static_cast<std::uint32_t>(value);
  }
  void skip(std::size_t count) {
    if (failed_ || count > left())
      failed_ = true;
    else
      position_ += count;
  }

  // Exponential-Golomb codes, as H.264 and its successors write most numbers; at most 32 bits.
  std::uint32_t unsignedCode() {
    constexpr unsigned kMostZeros = 31;
    unsigned zeros = 0;
    while (zeros <= kMostZeros && !failed_ && !bit()) ++zeros;
    if (zeros > kMostZeros) failed_ = true;
    const std::uint32_t rest = bits(zeros);
    return failed_ ? 0 : (std::uint32_t{1} << zeros) - 1 + rest;
  }
  std::int32_t signedCode() {
    const std::uint32_t code = unsignedCode();
    const auto half = static_cast<std::int32_t>(code / 2);
    return code % 2 != 0 ? half + 1 : -half;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

}  // namespace kolum

#endif
