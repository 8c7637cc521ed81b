#include "osm_info/answer.h"

#include <algorithm>

#include "ascii.h"
#include "base/xml_node.h"

namespace kolum::osm_info {

namespace {

bool startsName(char c) {
  return ascii::isLetter(c) || c == '_';
}

bool isNameCharacter(char c) {
  return startsName(c) || ascii::isDigit(c) || c == '-' || c == '.';
}

// Readers treat the whole answer as a failure if it contains an element "error".
bool isPartName(std::string_view name) {
  return !name.empty() && name != "error" && startsName(name.front()) &&
         std::all_of(name.begin(), name.end(), isNameCharacter);
}

// XML cannot represent most control characters.
std::string printable(std::string_view text) {
  std::string clean(text);
  std::replace_if(
      clean.begin(), clean.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  return clean;
}

XMLNode newDocument() {
  XMLNode declaration = XMLNode::createXMLTopNode("xml", true);
  declaration.addAttribute("version", "1.0");
  declaration.addAttribute("encoding", "UTF-8");
  return declaration;
}

void addText(XMLNode node, std::string_view text) {
  node.addText(printable(text).c_str());
}

void addAnswer(XMLNode output, const Answer& answer) {
  XMLNode node = output.addChild("reversegeocode");
  node.addAttribute("language", answer.language.c_str());
  XMLNode result = node.addChild("result");
  result.addAttribute("osm_type", printable(answer.osmType).c_str());
  result.addAttribute("osm_id", printable(answer.osmId).c_str());
  addText(result, answer.address);
  XMLNode parts = node.addChild("addressparts");
  for (const AddressPart& part : answer.parts) {
    if (isPartName(part.name)) addText(parts.addChild(part.name.c_str()), part.value);
  }
}

}  // namespace

std::string toXml(const std::vector<Answer>& answers) {
  XMLNode document = newDocument();
  const XMLNode output = document.addChild("output");
  for (const Answer& answer : answers) addAnswer(output, answer);
  return document.createXMLString();
}

std::string errorToXml(std::string_view message) {
  XMLNode document = newDocument();
  addText(document.addChild("error"), message);
  return document.createXMLString();
}

}  // namespace kolum::osm_info
