// Texts as photos store them, as UTF-8.
#ifndef KOLUM_READ_EXIF_TEXTS_H
#define KOLUM_READ_EXIF_TEXTS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::exif {

// Up to the first NUL, without spaces at the end, which pad Exif's fields. Exif promises ASCII;
// most programs write UTF-8, and what is not that is taken for Latin-1.
std::string paddedText(std::string_view bytes);

// As it is, but without NULs. Latin-1 if it is not UTF-8.
std::string plainText(std::string_view bytes);

// TEXT with Latin-1 for what is not UTF-8, and spaces for control characters other than tabs and
// ends of lines.
std::string repairedUtf8(std::string_view text);

// Up to the first NUL. What is no character becomes U+FFFD.
std::string utf16Text(std::span<const std::uint8_t> bytes, bool isBigEndian);

// TEXT up to the limit for texts, whole characters only.
std::string limited(std::string text);

bool isBlank(std::string_view text);

// The parts between SEPARATORs, without spaces around them and without blank ones.
std::vector<std::string> parts(std::string_view text, char separator);

// Adds TEXT unless it is blank, there already, or one too many.
void addText(std::vector<std::string>& list, std::string text);

}  // namespace kolum::exif

#endif
