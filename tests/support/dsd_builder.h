// DSD files, byte by byte: DSF and DFF containers, and the ID3v2 tags in them.
#ifndef KOLUM_TESTS_SUPPORT_DSD_BUILDER_H
#define KOLUM_TESTS_SUPPORT_DSD_BUILDER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kolum::test {

enum class TextEncoding { kLatin1 = 0, kUtf16 = 1, kUtf16BigEndian = 2, kUtf8 = 3 };

// A text frame of an ID3v2 tag. TEXT is ASCII, or UTF-8 for kUtf8, or Latin-1 for kLatin1.
struct TextFrame {
  std::string id;  // "TIT2"; "TT2" in ID3v2.2
  std::string text;
  TextEncoding encoding = TextEncoding::kUtf8;
};

// VERSION is the 4 of ID3v2.4; 3 and 2 store sizes differently.
std::string id3v2Tag(const std::vector<TextFrame>& frames, int version = 4);

// The same around frames that are bytes already.
std::string id3v2TagOf(const std::string& frames, int version = 4);

// A size of ID3v2 in four bytes of seven bits.
std::string synchSafe(std::size_t value);

struct DsdFile {
  std::uint32_t sampleRate = 2822400;
  std::uint32_t channels = 2;
  std::uint32_t seconds = 2;
  std::string tag = "";
  // The tag's offset in the header; by default the real one, or 0 if there is no tag.
  std::optional<std::uint64_t> tagOffset = {};
};

std::string dsfFile(const DsdFile& file);
// TAG becomes an "ID3 " chunk; artist and title, unless empty, become the container's own text
// chunks.
std::string dffFile(const DsdFile& file, const std::string& artist = "",
                    const std::string& title = "");

}  // namespace kolum::test

#endif
