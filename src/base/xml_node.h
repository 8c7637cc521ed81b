// A node of an XML document, with the names of the hosts' former XML library, over pugixml.
//
// A node is a small value; copies speak of the same element, and the document lives as long as any
// of its nodes. An empty node answers every question with "nothing". One thread at a time works on
// a document; different documents are independent.
#ifndef KOLUM_BASE_XML_NODE_H
#define KOLUM_BASE_XML_NODE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pugi {
class xml_document;
struct xml_node_struct;
}  // namespace pugi

// Why a text gave no node. The numbers are in hosts' logs.
enum XmlError {
  kXmlErrorNone = 0,
  kXmlErrorNoTagFound = 2,  // the text is no XML
  kXmlErrorEmpty = 3,
  kXmlErrorTagMissing = 11,  // it is, but the wanted element is not in it
};

struct XmlResults {
  XmlError error = kXmlErrorNone;
};

class XMLNode {
 public:
  // An empty node.
  XMLNode() = default;

  // The first element of this name, in document order, or the top element when TAG is null. Empty
  // when there is none; RESULTS, if given, says why. A text with a fault anywhere, a cut one too,
  // is no XML.
  static XMLNode parseString(std::string_view text, const char* tag = nullptr,
                             XmlResults* results = nullptr);

  // The document itself: its children are the elements at the top. Empty when TEXT is no XML.
  static XMLNode parseDocument(std::string_view text, XmlResults* results = nullptr);

  // A new document: an element, or a declaration ("<?NAME ...?>").
  static XMLNode createXMLTopNode(const char* name, bool isDeclaration = false);

  bool isEmpty() const { return element_ == nullptr; }
  std::string getName() const;

  // The first piece of the element's own text, before, between or behind its children; empty when
  // there is none.
  std::string getText() const;
  // The attribute's value; null when there is no such attribute. Valid as long as the document.
  const char* getAttribute(const char* name) const;

  // Child elements: all of them, or those of one name.
  int nChildNode() const;
  int nChildNode(const char* name) const;
  // The child element with this number among those; empty beyond the last.
  XMLNode getChildNode(int number) const;
  XMLNode getChildNode(const char* name, int number = 0) const;
  // All of them (those of one name) in one pass: one by one takes quadratic time.
  std::vector<XMLNode> getChildNodes(const char* name = nullptr) const;

  // Below a declaration, what is added stands after it.
  XMLNode addChild(const char* name);
  void addAttribute(const char* name, const char* value);
  // An empty text adds nothing: "<a />" stays that.
  void addText(const char* text);

  // The whole document as text: indented with tabs, an element with nothing but text on one line;
  // or without any white space. No line end at the end.
  std::string createXMLString(bool isFormatted = true) const;

 private:
  using Document = std::shared_ptr<pugi::xml_document>;
  XMLNode(Document document, pugi::xml_node_struct* element);

  Document document_;
  pugi::xml_node_struct* element_ = nullptr;
};

#endif
