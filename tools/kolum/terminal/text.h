// Text for people: bytes made safe for a terminal, numbers with their units.
#ifndef KOLUM_TOOL_TERMINAL_TEXT_H
#define KOLUM_TOOL_TERMINAL_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/utf8.h"

namespace kolum::tool {

// False for characters that move the cursor, control the terminal, break lines, reorder the text or
// are not to be seen.
bool isSafe(char32_t code);

// BYTES made safe for a terminal: invalid bytes as \xff, control characters (including C1 and those
// that change the writing direction) as \n, \x1b, \u202e or \U000e0001, and the backslash itself
// doubled.
std::string printable(std::string_view bytes);

// Printable TEXT, cut between characters to fit COLUMNS terminal columns.
std::string_view cutToColumns(std::string_view text, std::size_t columns);

// Numbers of an audio stream; 0 means unknown.
struct Sound {
  std::uint64_t sampleRate = 0;  // Hz
  std::uint64_t channels = 0;
  std::uint64_t bitsPerSample = 0;
  std::uint64_t bitRate = 0;  // bit/s
};

std::string durationText(std::int64_t seconds);        // "1 h 2 min 5 s"
std::string bitRateText(std::uint64_t bitsPerSecond);  // "1.25 Mbit/s"
std::string frequencyText(std::uint64_t hertz);        // "44.1 kHz"
std::string soundText(const Sound& sound);             // "44.1 kHz, 2 channels, 16 bits/sample"
std::string decimalText(double value, int digits);     // at most DIGITS decimals: "29.97", "25"
std::string counted(std::uint64_t count, std::string_view noun);  // "1 channel", "2 channels"
std::string joined(const std::vector<std::string>& parts);        // with ", ", empty ones left out
std::string capitalized(std::string text);  // its first letter, when it is an ASCII one
std::string pictureSizeText(std::int64_t width, std::int64_t height);  // "1280 x 720"; "" unknown
std::string hexText(std::uint64_t value);                              // "0x15002"
std::string dateText(std::int64_t secondsSince1970);                   // "2015-06-07 08:09:10"

}  // namespace kolum::tool

#endif
