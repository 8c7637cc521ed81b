#include "dsf2flac/document.h"

#include <cstdint>
#include <string_view>

#include "base/xml_node.h"

namespace kolum::dsf2flac {

namespace {

// The size of readers' text fields. Three texts in which every byte has to be escaped still leave
// room for the rest of the document.
constexpr std::size_t kLongestText = 255;

// The length of the UTF-8 character at the start of TEXT; 0 if it starts with none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  const unsigned second = length > 1 ? byte(1) : 0;
  const bool isOverlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool isOutside = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
  return isOverlong || isOutside ? 0 : length;
}

bool isAllowed(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first >= 0x20 || first == '\t';
  // Two characters that no XML document may contain, not even escaped.
  return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
}

// TEXT with all characters and bytes that XML cannot contain replaced by spaces.
std::string cleanText(std::string_view text) {
  std::string clean;
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    const bool stays = length != 0 && isAllowed(character);
    if (clean.size() + (stays ? length : 1) > kLongestText) break;
    clean += stays ? character : " ";
    text.remove_prefix(character.size());
  }
  return clean;
}

void addElement(XMLNode& parent, const char* name, const std::string& text) {
  parent.addChild(name).addText(text.c_str());
}

void addText(XMLNode& parent, const char* name, std::string_view text) {
  if (!text.empty()) addElement(parent, name, cleanText(text));
}

void addNumber(XMLNode& parent, const char* name, std::int64_t number) {
  if (number != 0) addElement(parent, name, std::to_string(number));
}

}  // namespace

std::string documentOf(const DsdFacts& facts) {
  XMLNode tag = XMLNode::createXMLTopNode("ID3TAG");
  addText(tag, "TITLE", facts.title);
  addText(tag, "ARTIST", facts.artist);
  addText(tag, "ALBUM", facts.album);
  addNumber(tag, "YEAR", facts.year);
  addNumber(tag, "TRACK", facts.track);
  addElement(tag, "DURATION", std::to_string(facts.seconds));
  addElement(tag, "CHANNEL", std::to_string(facts.channels));
  addElement(tag, "FREQUENCY", std::to_string(facts.frequency));
  return tag.createXMLString(false) + "\n";
}

}  // namespace kolum::dsf2flac
