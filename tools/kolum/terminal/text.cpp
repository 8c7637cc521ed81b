#include "terminal/text.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ctime>

#include "ascii.h"
#include "base/utf8.h"

namespace kolum::tool {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr Range kUnsafe[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C}, {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x2069}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0x1D173, 0x1D17A}, {0xE0000, 0xE007F},
};

std::string formatted(const char* format, unsigned value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

std::string escaped(char32_t code) {
  switch (code) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  const char* format = code < 0x80 ? "\\x%02x" : code < 0x10000 ? "\\u%04x" : "\\U%08x";
  return formatted(format, static_cast<unsigned>(code));
}

// CHARACTER, the first of BYTES.
std::string printableCharacter(std::string_view bytes, const Utf8Character& character) {
  if (character.length == 0) return formatted("\\x%02x", static_cast<unsigned char>(bytes[0]));
  if (character.code == '\\') return "\\\\";
  if (!isSafe(character.code)) return escaped(character.code);
  return std::string(bytes.substr(0, character.length));
}

// Terminal columns: 0 for combining characters, 2 for wide characters and, to stay within the line,
// for those that the C library does not know.
std::size_t columnsOf(char32_t code) {
  constexpr std::size_t kMost = 2;
  if (code < 0x80) return 1;
  // The tool itself runs in the "C" locale, which knows only the widths of ASCII.
  static const locale_t kUtf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (kUtf8 == nullptr) return kMost;
  const locale_t before = uselocale(kUtf8);
  const int width = wcwidth(static_cast<wchar_t>(code));
  uselocale(before);
  return width < 0 ? kMost : static_cast<std::size_t>(width);
}

}  // namespace

bool isSafe(char32_t code) {
  return std::none_of(std::begin(kUnsafe), std::end(kUnsafe), [code](const Range& range) {
    return code >= range.first && code <= range.last;
  });
}

std::string printable(std::string_view bytes) {
  std::string out;
  while (!bytes.empty()) {
    const Utf8Character character = firstUtf8Character(bytes);
    out += printableCharacter(bytes, character);
    bytes.remove_prefix(std::max<std::size_t>(character.length, 1));
  }
  return out;
}

std::string_view cutToColumns(std::string_view text, std::size_t columns) {
  std::size_t length = 0;
  std::size_t used = 0;
  while (length < text.size()) {
    const Utf8Character character = firstUtf8Character(text.substr(length));
    used += columnsOf(character.code);
    if (used > columns) break;
    length += std::max<std::size_t>(character.length, 1);
  }
  return text.substr(0, length);
}

std::string durationText(std::int64_t seconds) {
  const std::int64_t hours = seconds / 3600;
  const std::int64_t minutes = seconds / 60 % 60;
  std::string text;
  if (hours > 0) text += std::to_string(hours) + " h ";
  if (hours > 0 || minutes > 0) text += std::to_string(minutes) + " min ";
  return text + std::to_string(seconds % 60) + " s";
}

std::string decimalText(double value, int digits) {
  char buffer[400];
  std::snprintf(buffer, sizeof buffer, "%.*f", digits, value);
  std::string text = buffer;
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

std::string bitRateText(std::uint64_t bitsPerSecond) {
  const auto value = static_cast<double>(bitsPerSecond);
  if (bitsPerSecond >= 1000000) return decimalText(value / 1e6, 2) + " Mbit/s";
  if (bitsPerSecond >= 1000) return decimalText(value / 1e3, 1) + " kbit/s";
  return std::to_string(bitsPerSecond) + " bit/s";
}

std::string frequencyText(std::uint64_t hertz) {
  const auto value = static_cast<double>(hertz);
  if (hertz >= 1000000) return decimalText(value / 1e6, 4) + " MHz";
  if (hertz >= 1000) return decimalText(value / 1e3, 3) + " kHz";
  return std::to_string(hertz) + " Hz";
}

std::string counted(std::uint64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) {
    if (part.empty()) continue;
    if (!text.empty()) text += ", ";
    text += part;
  }
  return text;
}

std::string soundText(const Sound& sound) {
  return joined({sound.sampleRate == 0 ? "" : frequencyText(sound.sampleRate),
                 sound.channels == 0 ? "" : counted(sound.channels, "channel"),
                 sound.bitsPerSample == 0 ? "" : counted(sound.bitsPerSample, "bit") + "/sample",
                 sound.bitRate == 0 ? "" : bitRateText(sound.bitRate)});
}

std::string pictureSizeText(std::int64_t width, std::int64_t height) {
  if (width <= 0 || height <= 0) return "";
  return std::to_string(width) + " x " + std::to_string(height);
}

std::string capitalized(std::string text) {
  if (!text.empty()) text[0] = ascii::upper(text[0]);
  return text;
}

std::string hexText(std::uint64_t value) {
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "0x%llX", static_cast<unsigned long long>(value));
  return buffer;
}

std::string dateText(std::int64_t secondsSince1970) {
  const std::time_t time = secondsSince1970;
  std::tm fields = {};
  char buffer[64];
  if (gmtime_r(&time, &fields) == nullptr ||
      std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &fields) == 0) {
    return std::to_string(secondsSince1970) + " seconds since 1970";
  }
  return buffer;
}

}  // namespace kolum::tool
