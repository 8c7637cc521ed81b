#include "report/packed_text.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <new>
#include <utility>

namespace kolum::tool {

namespace {

constexpr int kGzip = 15 + 16;  // zlib: the largest window, with the header of gzip
constexpr int kMemory = 8;      // zlib's default
constexpr std::size_t kPiece =
    std::size_t{48} * 1024;  // a multiple of 3, the bytes of four base64 characters

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j)
      group = group << 8 | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    for (std::size_t j = 0; j < 4; ++j)
      text += j <= count ? kDigits[group >> (18 - 6 * j) & 63U] : '=';
  }
  return text;
}

}  // namespace

struct PackedText::Stream : z_stream {
  Stream() : z_stream() {
    if (deflateInit2(this, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, kMemory, Z_DEFAULT_STRATEGY) !=
        Z_OK)
      throw std::bad_alloc();
  }
  ~Stream() { deflateEnd(this); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
};

PackedText::PackedText(Sink sink) : sink_(std::move(sink)), stream_(std::make_unique<Stream>()) {}

PackedText::~PackedText() = default;

void PackedText::write(std::string_view text) {
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, UINT_MAX);
    pack(piece, Z_NO_FLUSH);
    text.remove_prefix(piece.size());
  }
}

void PackedText::end() {
  pack("", Z_FINISH);
  encode(true);
}

void PackedText::pack(std::string_view text, int flush) {
  std::string input(text);  // zlib takes no constant bytes
  stream_->next_in = reinterpret_cast<Bytef*>(input.data());
  stream_->avail_in = static_cast<uInt>(input.size());
  std::array<char, 32768> output;
  do {
    stream_->next_out = reinterpret_cast<Bytef*>(output.data());
    stream_->avail_out = static_cast<uInt>(output.size());
    deflate(stream_.get(), flush);
    packed_.append(output.data(), output.size() - stream_->avail_out);
    encode(false);
  } while (stream_->avail_out == 0);
}

void PackedText::encode(bool isLast) {
  while (packed_.size() >= kPiece) {
    sink_(base64(std::string_view(packed_).substr(0, kPiece)));
    packed_.erase(0, kPiece);
  }
  if (isLast) sink_(base64(std::exchange(packed_, "")));
}

}  // namespace kolum::tool
