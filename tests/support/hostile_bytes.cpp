#include "support/hostile_bytes.h"

#include <brotli/encode.h>
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <stdexcept>

#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

struct DeflateEnder {
  void operator()(z_stream* stream) const { deflateEnd(stream); }
};

// BLOCK, COUNT times, compressed only once: after a full flush the same bytes compress to the same
// ones again.
std::string deflatedBlocks(std::string_view block, std::size_t count) {
  constexpr std::size_t kHeaderSize = 2;
  constexpr char kLastEmptyBlock[] = "\x03\0";
  z_stream stream = {};
  if (deflateInit(&stream, Z_BEST_COMPRESSION) != Z_OK) throw std::runtime_error("deflateInit");
  const std::unique_ptr<z_stream, DeflateEnder> ender(&stream);
  std::string packed(deflateBound(&stream, block.size()) + 64, '\0');
  // zlib never writes through this pointer.
  auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(block.data()));
  stream.next_in = bytes;
  stream.avail_in = static_cast<unsigned>(block.size());
  stream.next_out = reinterpret_cast<unsigned char*>(packed.data());
  stream.avail_out = static_cast<unsigned>(packed.size());
  if (deflate(&stream, Z_FULL_FLUSH) != Z_OK) throw std::runtime_error("deflate");
  packed.resize(stream.total_out);

  const uLong checksum = adler32(1, bytes, static_cast<unsigned>(block.size()));
  uLong whole = 1;
  for (std::size_t i = 0; i < count; ++i)
    whole = adler32_combine(whole, checksum, static_cast<z_off_t>(block.size()));
  return packed.substr(0, kHeaderSize) +
         repeated(std::string_view(packed).substr(kHeaderSize), count) +
         std::string(kLastEmptyBlock, 2) + bigEndian(whole, 4);
}

}  // namespace

std::string repeated(std::string_view block, std::size_t count) {
  std::string text;
  text.reserve(block.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += block;
  return text;
}

std::string zeros(std::size_t count) {
  return std::string(count, '\0');
}

std::string noise(std::size_t size) {
  std::string bytes;
  bytes.reserve(size + sizeof(std::uint64_t));
  for (std::uint64_t state = 0x9E3779B97F4A7C15; bytes.size() < size;) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    bytes.append(reinterpret_cast<const char*>(&state), sizeof state);
  }
  bytes.resize(size);
  return bytes;
}

std::string deflated(std::string_view bytes) {
  return deflatedBlocks(bytes, 1);
}

std::string brotliCompressed(std::string_view bytes) {
  constexpr int kQuality = 5;
  std::string packed(BrotliEncoderMaxCompressedSize(bytes.size()), '\0');
  std::size_t size = packed.size();
  if (BrotliEncoderCompress(kQuality, BROTLI_DEFAULT_WINDOW, BROTLI_MODE_GENERIC, bytes.size(),
                            reinterpret_cast<const std::uint8_t*>(bytes.data()), &size,
                            reinterpret_cast<std::uint8_t*>(packed.data())) == BROTLI_FALSE)
    throw std::runtime_error("BrotliEncoderCompress");
  packed.resize(size);
  return packed;
}

std::string deflatedZeros(std::size_t count) {
  const std::size_t block = std::min(count, kMiB);
  return deflatedBlocks(zeros(block), count / block);
}

std::uint32_t crc32Of(std::string_view bytes) {
  return static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const unsigned char*>(bytes.data()),
                                          static_cast<unsigned>(bytes.size())));
}

Bits& Bits::put(std::uint64_t value, int count) {
  for (int i = count - 1; i >= 0; --i) {
    if (used_ == 8) {
      bytes_ += '\0';
      used_ = 0;
    }
    const auto bit = static_cast<unsigned>(value >> i & 1);
    bytes_.back() =
        static_cast<char>(static_cast<unsigned char>(bytes_.back()) | bit << (7 - used_));
    ++used_;
  }
  return *this;
}

Bits& Bits::putGolomb(std::uint32_t value) {
  const int size = std::bit_width(value + 1);
  return put(0, size - 1).put(value + 1, size);
}

std::string riffChunk(const std::string& id, const std::string& payload) {
  return id + littleEndian(payload.size(), 4) + payload + zeros(payload.size() % 2);
}

std::string riffList(const std::string& id, const std::string& type, const std::string& chunks) {
  return riffChunk(id, type + chunks);
}

std::string distinctRiffChunks(int count) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  constexpr int kBase = sizeof kDigits - 1;
  std::string chunks;
  for (int i = 0; i < count; ++i) {
    std::string type;
    for (int rest = i; type.size() < 4; rest /= kBase) type += kDigits[rest % kBase];
    chunks += riffChunk(type, "v");
  }
  return chunks;
}

std::string iffChunk(const std::string& id, const std::string& payload) {
  return id + bigEndian(payload.size(), 4) + payload + zeros(payload.size() % 2);
}

std::string countedText(const std::string& text) {
  return littleEndian(text.size(), 4) + text;
}

std::string base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned value = 0;
    for (std::size_t j = i; j < i + 3; ++j)
      value = value << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    for (int shift = 18; shift >= 0; shift -= 6) text += kDigits[value >> shift & 63];
  }
  const std::size_t padding = (3 - bytes.size() % 3) % 3;
  return text.replace(text.size() - padding, padding, padding, '=');
}

std::string distinctVorbisComments(int count) {
  std::string comments;
  for (int i = 0; i < count; ++i) comments += countedText("KEY" + std::to_string(i) + "=v");
  return comments;
}

std::string vorbisComments(std::uint32_t count, const std::string& comments) {
  return countedText("test") + littleEndian(count, 4) + comments;
}

std::string flacPicture(const std::string& mimeType, const std::string& picture) {
  constexpr int kFrontCover = 3;
  return bigEndian(kFrontCover, 4) + bigEndian(mimeType.size(), 4) + mimeType + bigEndian(0, 4) +
         zeros(16) + bigEndian(picture.size(), 4) + picture;
}

}  // namespace kolum::test
