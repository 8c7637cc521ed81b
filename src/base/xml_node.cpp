#include "base/xml_node.h"

#include <cstring>
#include <pugixml.hpp>
#include <utility>

namespace {

pugi::xml_node node(pugi::xml_node_struct* element) {
  return pugi::xml_node(element);
}

bool isElement(const pugi::xml_node& candidate) {
  return candidate.type() == pugi::node_element;
}

// The element that holds a node's children. Children added to a declaration belong to the document.
pugi::xml_node childrenOf(pugi::xml_node_struct* element) {
  const pugi::xml_node self = node(element);
  return self.type() == pugi::node_declaration ? self.parent() : self;
}

struct StringWriter : pugi::xml_writer {
  std::string text;
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }
};

// The child element with index NUMBER among those that MATCHES accepts, or a null node.
template <typename Matches>
pugi::xml_node childElement(pugi::xml_node_struct* element, int number, Matches matches) {
  if (number < 0) return {};
  for (const pugi::xml_node child : childrenOf(element).children())
    if (isElement(child) && matches(child) && number-- == 0) return child;
  return {};
}

template <typename Matches>
int countElements(pugi::xml_node_struct* element, Matches matches) {
  int count = 0;
  for (const pugi::xml_node child : childrenOf(element).children())
    if (isElement(child) && matches(child)) ++count;
  return count;
}

constexpr auto kAny = [](const pugi::xml_node&) { return true; };

auto named(const char* name) {
  return [name](const pugi::xml_node& child) { return std::strcmp(child.name(), name) == 0; };
}

// The next element in document order, without recursion: hostile documents nest deeply.
pugi::xml_node nextInOrder(pugi::xml_node current) {
  if (current.first_child()) return current.first_child();
  while (current && !current.next_sibling()) current = current.parent();
  return current ? current.next_sibling() : current;
}

pugi::xml_node firstElement(const pugi::xml_node& root, const char* tag) {
  for (pugi::xml_node at = root.first_child(); at; at = nextInOrder(at))
    if (isElement(at) && (tag == nullptr || std::strcmp(at.name(), tag) == 0)) return at;
  return {};
}

}  // namespace

XMLNode::XMLNode(Document document, pugi::xml_node_struct* element)
    : document_(std::move(document)), element_(element) {}

XMLNode XMLNode::parseDocument(std::string_view text, XmlResults* results) {
  XmlResults ignored;
  XmlResults& result = results != nullptr ? *results : ignored;
  constexpr std::string_view kWhiteSpace = " \t\r\n";
  if (text.find_first_not_of(kWhiteSpace) == std::string_view::npos) {
    result.error = kXmlErrorEmpty;
    return {};
  }
  auto document = std::make_shared<pugi::xml_document>();
  const bool isWellFormed = document->load_buffer(text.data(), text.size());
  if (!isWellFormed || !firstElement(*document, nullptr)) {
    result.error = kXmlErrorNoTagFound;
    return {};
  }
  result.error = kXmlErrorNone;
  pugi::xml_node_struct* const top = document->internal_object();
  return {std::move(document), top};
}

XMLNode XMLNode::parseString(std::string_view text, const char* tag, XmlResults* results) {
  const XMLNode parsed = parseDocument(text, results);
  if (parsed.isEmpty()) return {};
  const pugi::xml_node found = firstElement(node(parsed.element_), tag);
  if (results != nullptr) results->error = found ? kXmlErrorNone : kXmlErrorTagMissing;
  if (!found) return {};
  return {parsed.document_, found.internal_object()};
}

XMLNode XMLNode::createXMLTopNode(const char* name, bool isDeclaration) {
  auto document = std::make_shared<pugi::xml_document>();
  pugi::xml_node top =
      document->append_child(isDeclaration ? pugi::node_declaration : pugi::node_element);
  top.set_name(name);
  return {std::move(document), top.internal_object()};
}

std::string XMLNode::getName() const {
  return node(element_).name();
}
std::string XMLNode::getText() const {
  return node(element_).child_value();
}

const char* XMLNode::getAttribute(const char* name) const {
  const pugi::xml_attribute attribute = node(element_).attribute(name);
  return attribute ? attribute.value() : nullptr;
}

int XMLNode::nChildNode() const {
  return countElements(element_, kAny);
}
int XMLNode::nChildNode(const char* name) const {
  return countElements(element_, named(name));
}

XMLNode XMLNode::getChildNode(int number) const {
  return {document_, childElement(element_, number, kAny).internal_object()};
}

XMLNode XMLNode::getChildNode(const char* name, int number) const {
  return {document_, childElement(element_, number, named(name)).internal_object()};
}

std::vector<XMLNode> XMLNode::getChildNodes(const char* name) const {
  std::vector<XMLNode> nodes;
  for (const pugi::xml_node child : childrenOf(element_).children())
    if (isElement(child) && (name == nullptr || std::strcmp(child.name(), name) == 0))
      nodes.push_back(XMLNode(document_, child.internal_object()));
  return nodes;
}

XMLNode XMLNode::addChild(const char* name) {
  return {document_, childrenOf(element_).append_child(name).internal_object()};
}

void XMLNode::addAttribute(const char* name, const char* value) {
  node(element_).append_attribute(name).set_value(value);
}

void XMLNode::addText(const char* text) {
  // pugixml releases write an empty text node differently.
  if (*text == '\0') return;
  node(element_).append_child(pugi::node_pcdata).set_value(text);
}

std::string XMLNode::createXMLString(bool isFormatted) const {
  if (document_ == nullptr) return {};
  StringWriter writer;
  const unsigned flags =
      (isFormatted ? pugi::format_indent : pugi::format_raw) | pugi::format_no_declaration;
  document_->save(writer, "\t", flags, pugi::encoding_utf8);
  while (writer.text.ends_with('\n')) writer.text.pop_back();
  return writer.text;
}
