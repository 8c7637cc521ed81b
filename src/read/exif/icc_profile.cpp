#include "read/exif/icc_profile.h"

#include <algorithm>

#include "base/bytes.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

// "desc": a length and ASCII.
std::string asciiDescription(ByteReader reader) {
  reader.skip(4);
  const auto size = reader.bigEndian(4);
  return paddedText(reader.text(std::min<std::uint64_t>(size, reader.left())));
}

// "mluc": a table of languages, and where their texts are.
std::string localizedDescription(std::span<const std::uint8_t> tag, ByteReader reader) {
  reader.skip(4);
  const auto count = reader.bigEndian(4);
  reader.skip(8);  // the size of a row, language and country
  const auto size = reader.bigEndian(4);
  const auto offset = reader.bigEndian(4);
  if (reader.failed() || count == 0 || offset > tag.size()) return {};
  const auto text = tag.subspan(offset);
  return utf16Text(text.first(std::min<std::size_t>(size, text.size())), true);
}

std::string textOfTag(std::span<const std::uint8_t> tag) {
  ByteReader reader(tag);
  const std::string_view type = reader.text(4);
  if (type == "desc") return asciiDescription(reader);
  return type == "mluc" ? localizedDescription(tag, reader) : "";
}

}  // namespace

std::string iccDescription(std::span<const std::uint8_t> profile) {
  constexpr std::size_t kHeader = 128;
  constexpr std::uint64_t kMostTags = 200;
  ByteReader reader(profile);
  reader.skip(kHeader);
  const auto count = std::min(reader.bigEndian(4), kMostTags);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::string_view name = reader.text(4);
    const auto offset = reader.bigEndian(4);
    const auto size = reader.bigEndian(4);
    if (reader.failed()) break;
    if (name != "desc" || offset > profile.size()) continue;
    const auto tag = profile.subspan(offset);
    return textOfTag(tag.first(std::min<std::size_t>(size, tag.size())));
  }
  return {};
}

}  // namespace kolum::exif
