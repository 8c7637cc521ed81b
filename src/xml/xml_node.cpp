#include "xml/xml_node.h"

#include <cstring>
#include <pugixml.hpp>
#include <sstream>

struct XMLNode::Place {
  std::shared_ptr<pugi::xml_document> document;
  pugi::xml_node node;

  bool isDeclaration() const { return node.type() == pugi::node_declaration; }
  // Where child elements stand: a declaration's are its document's.
  pugi::xml_node parent() const { return isDeclaration() ? document->root() : node; }
};

namespace {

bool isElement(const pugi::xml_node& node) {
  return node.type() == pugi::node_element;
}

bool isNamed(const pugi::xml_node& node, const char* name) {
  return isElement(node) && (name == nullptr || std::strcmp(node.name(), name) == 0);
}

pugi::xml_node findElement(const pugi::xml_node& document, const char* tag) {
  return document.find_node([&](const pugi::xml_node& node) { return isNamed(node, tag); });
}

pugi::xml_node child(const pugi::xml_node& parent, const char* name, int index) {
  for (const pugi::xml_node& node : parent.children()) {
    if (isNamed(node, name) && index-- == 0) return node;
  }
  return {};
}

std::string withoutLineEnd(std::string text) {
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

XMLNode XMLNode::parseString(const char* text, const char* tag, XMLResults* results) {
  XMLResults unused = {};
  XMLResults& result = results != nullptr ? *results : unused;
  result.error = eXMLErrorEmpty;
  if (text == nullptr || *text == '\0') return {};
  auto document = std::make_shared<pugi::xml_document>();
  document->load_buffer(text, std::strlen(text), pugi::parse_default, pugi::encoding_utf8);
  result.error = eXMLErrorNoXMLTagFound;
  if (!findElement(*document, nullptr)) return {};
  const pugi::xml_node found = findElement(*document, tag);
  result.error = found ? eXMLErrorNone : eXMLErrorFirstTagNotFound;
  if (!found) return {};
  return XMLNode(std::make_shared<const Place>(Place{std::move(document), found}));
}

XMLNode XMLNode::createXMLTopNode(const char* name, bool isDeclaration) {
  auto document = std::make_shared<pugi::xml_document>();
  pugi::xml_node node =
      document->append_child(isDeclaration ? pugi::node_declaration : pugi::node_element);
  node.set_name(name);
  return XMLNode(std::make_shared<const Place>(Place{std::move(document), node}));
}

bool XMLNode::isEmpty() const {
  return place_ == nullptr;
}

const char* XMLNode::getName() const {
  return isEmpty() ? nullptr : place_->node.name();
}

const char* XMLNode::getText() const {
  if (isEmpty()) return nullptr;
  const pugi::xml_text text = place_->node.text();
  return text.empty() ? nullptr : text.get();
}

const char* XMLNode::getAttribute(const char* name) const {
  if (isEmpty()) return nullptr;
  const pugi::xml_attribute attribute = place_->node.attribute(name);
  return attribute ? attribute.value() : nullptr;
}

int XMLNode::nChildNode(const char* name) const {
  int count = 0;
  if (isEmpty()) return count;
  for (const pugi::xml_node& node : place_->parent().children())
    count += isNamed(node, name) ? 1 : 0;
  return count;
}

XMLNode XMLNode::getChildNode(int index) const {
  return getChildNode(nullptr, index);
}

XMLNode XMLNode::getChildNode(const char* name, int index) const {
  if (isEmpty()) return {};
  const pugi::xml_node found = child(place_->parent(), name, index);
  if (!found) return {};
  return XMLNode(std::make_shared<const Place>(Place{place_->document, found}));
}

XMLNode XMLNode::addChild(const char* name) {
  if (isEmpty()) return {};
  const pugi::xml_node added = place_->parent().append_child(name);
  return XMLNode(std::make_shared<const Place>(Place{place_->document, added}));
}

void XMLNode::addAttribute(const char* name, const char* value) {
  if (isEmpty()) return;
  pugi::xml_node node = place_->node;
  node.append_attribute(name).set_value(value);
}

void XMLNode::addText(const char* text) {
  if (isEmpty()) return;
  pugi::xml_node node = place_->node;
  node.append_child(pugi::node_pcdata).set_value(text);
}

std::string XMLNode::createXMLString(bool formatted) const {
  if (isEmpty()) return "";
  std::ostringstream out;
  const unsigned flags = formatted ? pugi::format_indent : pugi::format_raw;
  if (place_->isDeclaration()) {
    place_->document->save(out, "\t", flags, pugi::encoding_utf8);
  } else {
    place_->node.print(out, "\t", flags, pugi::encoding_utf8);
  }
  return withoutLineEnd(out.str());
}
