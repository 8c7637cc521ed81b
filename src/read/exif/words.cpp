// What people have written into a photo.
#include <algorithm>
#include <cmath>
#include <string>

#include "base/bytes.h"
#include "read/exif/readers.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

// Windows' fields, in UTF-16.
constexpr unsigned kWindowsTitle = 0x9C9B;
constexpr unsigned kWindowsComment = 0x9C9C;
constexpr unsigned kWindowsAuthor = 0x9C9D;
constexpr unsigned kWindowsKeywords = 0x9C9E;

// The first that is not blank.
std::string firstOf(std::initializer_list<std::string> texts) {
  const auto* found =
      std::ranges::find_if(texts, [](const std::string& text) { return !isBlank(text); });
  return found != texts.end() ? *found : "";
}

// A text behind the name of its encoding, of 8 bytes.
std::string userComment(const Metadata& metadata) {
  constexpr std::size_t kNameSize = 8;
  const Bytes bytes = metadata.bytes(kPhoto, 0x9286);
  if (bytes.size() <= kNameSize) return "";
  const auto name = textOf(bytes).substr(0, kNameSize);
  const auto text = std::span(bytes).subspan(kNameSize);
  if (name == "ASCII\0\0\0"sv || name == "\0\0\0\0\0\0\0\0"sv) return paddedText(textOf(text));
  return name == "UNICODE\0"sv ? utf16Text(text, metadata.isBigEndian()) : "";
}

// The photographer's, and behind a NUL the editor's.
std::string exifCopyright(const Metadata& metadata) {
  const Bytes bytes = metadata.bytes(kImage, 0x8298);
  const std::string_view text = textOf(bytes);
  const std::string photographer = paddedText(text);
  const std::size_t end = text.find('\0');
  std::string editor = end == text.npos ? "" : paddedText(text.substr(end + 1));
  if (isBlank(photographer)) return editor;
  return isBlank(editor) ? photographer : limited(photographer + "; " + editor);
}

using Texts = std::vector<std::string>;

Texts firstList(std::initializer_list<Texts> lists) {
  const auto* found = std::ranges::find_if(lists, [](const Texts& list) { return !list.empty(); });
  return found != lists.end() ? *found : Texts{};
}

Texts keywords(const Metadata& metadata) {
  Texts all;
  for (const Texts& list : {metadata.xmp().texts(XmpProperty::kSubject), metadata.iptcTexts(25),
                            parts(metadata.utf16(kImage, kWindowsKeywords), ';')})
    for (const std::string& text : list) addText(all, text);
  return all;
}

struct PathRow {
  XmpProperty property;
  char separator;
};

constexpr PathRow kPaths[] = {{XmpProperty::kHierarchicalSubject, '|'},
                              {XmpProperty::kTagsList, '/'},
                              {XmpProperty::kLastKeyword, '/'}};

// Programs write the same list in several ways. A single word is in the other list.
Texts keywordPaths(const Metadata& metadata) {
  Texts all;
  for (const PathRow& row : kPaths)
    for (std::string text : metadata.xmp().texts(row.property)) {
      std::ranges::replace(text, row.separator, '|');
      if (text.find('|') != text.npos) addText(all, text);
    }
  return all;
}

std::optional<int> rating(const Metadata& metadata) {
  constexpr double kRejected = -1;
  constexpr double kBest = 5;
  const Xmp& xmp = metadata.xmp();
  auto stars = numberIn(xmp.text(XmpProperty::kRating));
  if (!stars) stars = metadata.number(kImage, 0x4746);
  if (!stars || *stars < kRejected || *stars > kBest) return std::nullopt;
  return static_cast<int>(std::lround(*stars));
}

}  // namespace

void readWords(const Metadata& metadata, media::PhotoTags& tags) {
  const Xmp& xmp = metadata.xmp();
  tags.title = firstOf(
      {xmp.text(XmpProperty::kTitle), metadata.iptcText(5), metadata.utf16(kImage, kWindowsTitle)});
  tags.headline = firstOf({xmp.text(XmpProperty::kHeadline), metadata.iptcText(105)});
  tags.description = firstOf({metadata.text(kImage, 0x010E), xmp.text(XmpProperty::kDescription),
                              metadata.iptcText(120), metadata.utf16(kImage, kWindowsComment),
                              userComment(metadata)});
  tags.keywords = keywords(metadata);
  tags.keywordPaths = keywordPaths(metadata);
  tags.rating = rating(metadata);
  tags.label = xmp.text(XmpProperty::kLabel);
  tags.creators =
      firstList({parts(metadata.text(kImage, 0x013B), ';'), xmp.texts(XmpProperty::kCreator),
                 metadata.iptcTexts(80), parts(metadata.utf16(kImage, kWindowsAuthor), ';')});
  tags.copyright =
      firstOf({exifCopyright(metadata), xmp.text(XmpProperty::kRights), metadata.iptcText(116)});
  tags.credit = firstOf({xmp.text(XmpProperty::kCredit), metadata.iptcText(110)});
}

}  // namespace kolum::exif
