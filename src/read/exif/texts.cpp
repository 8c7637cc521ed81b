#include "read/exif/texts.h"

#include <algorithm>
#include <utility>

#include "base/bytes.h"
#include "base/utf8.h"
#include "media/photo_tags.h"

namespace kolum::exif {

namespace {

constexpr std::string_view kSpaces = " \t\r\n\f\v";

void putUtf8(std::string& text, std::uint32_t code) {
  const auto tail = [&](unsigned shift) {
    text += static_cast<char>(0x80U | (code >> shift & 0x3FU));
  };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0U | code >> 6);
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0U | code >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | code >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

std::string fromLatin1(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) putUtf8(text, static_cast<unsigned char>(c));
  return text;
}

// A text that was cut may end within a character.
std::string toUtf8(std::string_view bytes) {
  if (isUtf8(bytes)) return std::string(bytes);
  constexpr std::size_t kLongestCharacter = 4;
  for (std::size_t cut = 1; cut < kLongestCharacter && bytes.size() >= media::kLongestPhotoText;
       ++cut)
    if (const auto rest = bytes.substr(0, bytes.size() - cut); isUtf8(rest))
      return std::string(rest);
  return fromLatin1(bytes.substr(0, media::kLongestPhotoText));
}

bool isHighSurrogate(std::uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(std::uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

std::string_view withoutSpacesAround(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kSpaces);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kSpaces) + 1 - begin);
}

}  // namespace

std::string paddedText(std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find('\0'));
  return limited(toUtf8(bytes.substr(0, bytes.find_last_not_of(kSpaces) + 1)));
}

std::string plainText(std::string_view bytes) {
  std::string text = toUtf8(bytes);
  std::erase(text, '\0');
  return limited(std::move(text));
}

std::string repairedUtf8(std::string_view text) {
  std::string repaired;
  while (!text.empty()) {
    const std::size_t length = firstUtf8Character(text).length;
    const auto byte = static_cast<unsigned char>(text[0]);
    if (byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r')
      repaired += ' ';
    else if (length > 0)
      repaired += text.substr(0, length);
    else
      putUtf8(repaired, byte);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return repaired;
}

std::string utf16Text(std::span<const std::uint8_t> bytes, bool isBigEndian) {
  constexpr std::uint32_t kNoCharacter = 0xFFFD;
  std::string text;
  ByteReader reader(bytes);
  const auto unit = [&] {
    return static_cast<std::uint32_t>(isBigEndian ? reader.bigEndian(2) : reader.littleEndian(2));
  };
  while (reader.left() >= 2 && text.size() <= media::kLongestPhotoText) {
    std::uint32_t code = unit();
    if (code == 0) break;
    ByteReader ahead = reader;
    const auto next =
        static_cast<std::uint32_t>(isBigEndian ? ahead.bigEndian(2) : ahead.littleEndian(2));
    if (isHighSurrogate(code) && isLowSurrogate(next))
      code = 0x10000 + ((code - 0xD800) << 10) + (unit() - 0xDC00);
    else if (isHighSurrogate(code) || isLowSurrogate(code))
      code = kNoCharacter;
    putUtf8(text, code);
  }
  return limited(std::move(text));
}

std::string limited(std::string text) {
  if (text.size() <= media::kLongestPhotoText) return text;
  std::size_t size = media::kLongestPhotoText;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) --size;
  text.resize(size);
  return text;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(kSpaces) == text.npos;
}

std::vector<std::string> parts(std::string_view text, char separator) {
  std::vector<std::string> found;
  while (!text.empty() && found.size() < media::kMostPhotoTexts) {
    const std::size_t end = text.find(separator);
    addText(found, std::string(withoutSpacesAround(text.substr(0, end))));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  return found;
}

void addText(std::vector<std::string>& list, std::string text) {
  if (isBlank(text) || list.size() >= media::kMostPhotoTexts) return;
  std::size_t size = text.size();
  for (const std::string& other : list) size += other.size();
  if (size > media::kLongestPhotoList) return;
  if (std::ranges::find(list, text) == list.end()) list.push_back(std::move(text));
}

}  // namespace kolum::exif
