// XML documents as trees of nodes: what the library parses and writes, over pugixml.
#ifndef KOLUM_XML_XML_NODE_H
#define KOLUM_XML_XML_NODE_H

#include <memory>
#include <string>

// Why a parse failed.
enum XMLError {
  eXMLErrorNone = 0,
  eXMLErrorNoXMLTagFound = 2,  // no XML at all
  eXMLErrorEmpty = 3,
  eXMLErrorFirstTagNotFound = 11,  // XML, but without the wanted element
};

struct XMLResults {
  XMLError error;
};

// A node by value: copies stand for the same element and keep its document alive. A node that was
// not found is empty; asking an empty node gives empty answers. Documents are not locked.
class XMLNode {
 public:
  XMLNode() = default;

  // The first element named TAG in TEXT, wherever it stands; the document's root element when TAG
  // is null. Empty, with the reason in RESULTS (may be null), when there is none. Broken XML is
  // read as far as it goes.
  static XMLNode parseString(const char* text, const char* tag = nullptr,
                             XMLResults* results = nullptr);
  // A new document: an element, or with ISDECLARATION the "<?xml ...?>" line, whose children then
  // are the document's elements.
  static XMLNode createXMLTopNode(const char* name, bool isDeclaration = false);

  bool isEmpty() const;
  const char* getName() const;                       // null for an empty node
  const char* getText() const;                       // the first text in it, null without one
  const char* getAttribute(const char* name) const;  // null when it has no such attribute
  int nChildNode(const char* name = nullptr) const;  // elements only; null counts all
  XMLNode getChildNode(int index) const;             // of all child elements, from 0
  XMLNode getChildNode(const char* name, int index = 0) const;  // of those so named

  XMLNode addChild(const char* name);
  void addAttribute(const char* name, const char* value);
  void addText(const char* text);

  // The node with all in it as text; a declaration's includes the document's elements. FORMATTED: a
  // line an element, indented with tabs, an element that holds only text on one line. No line end
  // at the end.
  std::string createXMLString(bool formatted = true) const;

 private:
  struct Place;
  explicit XMLNode(std::shared_ptr<const Place> place) : place_(std::move(place)) {}

  std::shared_ptr<const Place> place_;
};

#endif
