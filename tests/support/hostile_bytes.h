// The bytes that hostile files of many formats share.
#ifndef KOLUM_TESTS_SUPPORT_HOSTILE_BYTES_H
#define KOLUM_TESTS_SUPPORT_HOSTILE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/mp4_builder.h"

namespace kolum::test {

inline constexpr std::size_t kKiB = 1024;
inline constexpr std::size_t kMiB = 1024 * kKiB;

// The longest side of a square picture that FFmpeg still accepts, in round numbers.
inline constexpr std::uint32_t kHugeSide = 16000;

// FFmpeg refuses a file with more than a thousand streams. Covers and attachments are streams.
inline constexpr std::uint32_t kMostStreams = 900;

// Numbers of so many bits.
inline std::string big16(std::uint64_t value) {
  return bigEndian(value, 2);
}
inline std::string big32(std::uint64_t value) {
  return bigEndian(value, 4);
}
inline std::string little16(std::uint64_t value) {
  return littleEndian(value, 2);
}
inline std::string little32(std::uint64_t value) {
  return littleEndian(value, 4);
}
inline std::string little64(std::uint64_t value) {
  return littleEndian(value, 8);
}

// BLOCK, COUNT times.
std::string repeated(std::string_view block, std::size_t count);

std::string zeros(std::size_t count);

// Bytes without a pattern, the same in each run.
std::string noise(std::size_t size);

// As zlib compresses them.
std::string deflated(std::string_view bytes);
std::string deflatedZeros(std::size_t count);

// As Brotli compresses them.
std::string brotliCompressed(std::string_view bytes);

std::uint32_t crc32Of(std::string_view bytes);

// Bits, the highest of each byte first.
class Bits {
 public:
  // The lowest COUNT bits of VALUE.
  Bits& put(std::uint64_t value, int count);
  // A number as H.264 writes it (Exp-Golomb).
  Bits& putGolomb(std::uint32_t value);
  // Padded with zeros to whole bytes.
  std::string bytes() const { return bytes_; }

 private:
  std::string bytes_;
  int used_ = 8;  // bits of the last byte
};

// A chunk of RIFF: a little-endian size, padded to an even length.
std::string riffChunk(const std::string& id, const std::string& payload);
// "RIFF" or "LIST" with a type in front of its chunks.
std::string riffList(const std::string& id, const std::string& type, const std::string& chunks);

// COUNT chunks, each of another type.
std::string distinctRiffChunks(int count);

// A chunk of AIFF or IFF: a big-endian size.
std::string iffChunk(const std::string& id, const std::string& payload);

// A little-endian length and the text, as Vorbis comments have them.
std::string countedText(const std::string& text);

std::string base64(std::string_view bytes);

// COUNT Vorbis comments "key0=v", "key1=v" and so on, with the length in front of each.
std::string distinctVorbisComments(int count);

// All of a Vorbis comment block, from the vendor on.
std::string vorbisComments(std::uint32_t count, const std::string& comments);

// FLAC's description of a cover.
std::string flacPicture(const std::string& mimeType, const std::string& picture);

}  // namespace kolum::test

#endif
