#include <zlib.h>

#include <algorithm>
#include <string_view>

#include "base/bytes.h"
#include "read/exif/blocks.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

// Large pictures have a chunk for every 8 KB.
constexpr int kMostChunks = 100'000;

// Empty if they are not that, or more than any block.
Bytes inflated(std::span<const std::uint8_t> bytes) {
  Bytes result;
  z_stream stream = {};
  if (inflateInit(&stream) != Z_OK) return {};
  // zlib does not write to its input.
  stream.next_in = const_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  constexpr std::size_t kStep = 65536;
  int state = Z_OK;
  while (state == Z_OK && result.size() < kLargestBlock) {
    result.resize(result.size() + kStep);
    stream.next_out = result.data() + result.size() - kStep;
    stream.avail_out = kStep;
    state = inflate(&stream, Z_NO_FLUSH);
    result.resize(result.size() - stream.avail_out);
  }
  inflateEnd(&stream);
  if (state != Z_STREAM_END) result.clear();
  return result;
}

// "\nexif\n      28\n" and then hexadecimal digits in lines, as older programs store blocks.
Bytes rawProfile(std::string_view text) {
  const std::size_t name = text.find('\n', 1);
  const std::size_t size = name == text.npos ? name : text.find('\n', name + 1);
  if (!text.starts_with('\n') || size == text.npos) return {};
  Bytes bytes;
  unsigned digits = 1;  // a one in front counts them
  for (const char c : text.substr(size)) {
    const std::size_t value = "0123456789abcdef"sv.find(c);
    if (value == std::string_view::npos) continue;
    digits = digits << 4 | static_cast<unsigned>(value);
    if (digits < 0x100) continue;
    bytes.push_back(static_cast<std::uint8_t>(digits));
    digits = 1;
  }
  return bytes;
}

void takeRawProfile(std::string_view keyword, std::span<const std::uint8_t> content,
                    Blocks& blocks) {
  constexpr std::string_view kPrefix = "Raw profile type ";
  if (!keyword.starts_with(kPrefix)) return;
  const std::string_view type = keyword.substr(kPrefix.size());
  const Bytes bytes = rawProfile(textOf(content));
  if (type == "exif" || type == "APP1") takeExif(bytes, blocks);
  if (type == "xmp" && blocks.xmp.empty()) blocks.xmp = textOf(bytes);
  if (type != "iptc") return;
  // Either datasets, or Photoshop's resources around them: the first dataset begins with 0x1C.
  const auto begin = std::ranges::find(bytes, std::uint8_t{0x1C});
  if (blocks.iptc.empty()) blocks.iptc.assign(begin, bytes.end());
}

// All texts begin with a keyword and a zero.
std::string_view keywordOf(ByteReader& reader, std::span<const std::uint8_t> content) {
  constexpr std::size_t kLongestKeyword = 80;
  const std::string_view text = textOf(content).substr(0, kLongestKeyword);
  const std::string_view keyword = text.substr(0, text.find('\0'));
  reader.skip(keyword.size() + 1);
  return keyword;
}

void takeInternationalText(std::span<const std::uint8_t> content, Blocks& blocks) {
  ByteReader reader(content);
  if (keywordOf(reader, content) != "XML:com.adobe.xmp" || !blocks.xmp.empty()) return;
  const bool isCompressed = reader.bigEndian(1) != 0;
  reader.skip(1);
  // Language and translated keyword.
  for (int i = 0; i < 2; ++i)
    while (!reader.failed() && reader.bigEndian(1) != 0) continue;
  if (reader.failed()) return;
  const auto text = reader.take(reader.left());
  blocks.xmp = isCompressed ? std::string(textOf(inflated(text))) : std::string(textOf(text));
}

void takeText(std::span<const std::uint8_t> content, bool isCompressed, Blocks& blocks) {
  ByteReader reader(content);
  const std::string_view keyword = keywordOf(reader, content);
  if (!keyword.starts_with("Raw profile")) return;
  if (isCompressed) reader.skip(1);
  const auto text = reader.take(reader.left());
  if (isCompressed)
    takeRawProfile(keyword, inflated(text), blocks);
  else
    takeRawProfile(keyword, text, blocks);
}

void takeProfile(std::span<const std::uint8_t> content, Blocks& blocks) {
  ByteReader reader(content);
  keywordOf(reader, content);
  reader.skip(1);
  if (!reader.failed()) blocks.iccProfile = inflated(reader.take(reader.left()));
}

bool isWanted(std::string_view type) {
  return type == "eXIf" || type == "iTXt" || type == "zTXt" || type == "tEXt" || type == "iCCP";
}

void takeChunk(std::string_view type, std::span<const std::uint8_t> content, Blocks& blocks) {
  if (type == "eXIf") takeExif(content, blocks);
  if (type == "iTXt") takeInternationalText(content, blocks);
  if (type == "zTXt") takeText(content, true, blocks);
  if (type == "tEXt") takeText(content, false, blocks);
  if (type == "iCCP") takeProfile(content, blocks);
}

}  // namespace

// Texts may stand behind the picture.
void findInPng(const media::Source& source, Blocks& blocks) {
  constexpr std::int64_t kSignature = 8;
  constexpr std::int64_t kChecksum = 4;
  std::int64_t position = kSignature;
  std::uint64_t taken = 0;
  for (int i = 0; i < kMostChunks; ++i) {
    std::array<std::uint8_t, 8> header = {};
    if (source.readAt(position, header) != std::ssize(header)) return;
    ByteReader reader(header);
    const auto size = reader.bigEndian(4);
    const std::string_view type = reader.text(4);
    if (type == "IEND") return;
    position += std::ssize(header);
    if (isWanted(type)) taken += size;
    if (isWanted(type) && taken <= kLargestBlock)
      takeChunk(type, bytesAt(source, position, size), blocks);
    position += static_cast<std::int64_t>(size) + kChecksum;
  }
}

}  // namespace kolum::exif
