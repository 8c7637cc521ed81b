// A node of an XML document: pugixml behind the interface of the hosts' former XML library.
//
// A node is a small value. Copies refer to the same element, and the document lives as long as any
// of its nodes. An empty node gives empty results. Only one thread at a time may use a document;
// different documents are independent.
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

// Why a text gave no node. Hosts' logs contain these numbers.
enum XmlError {
  kXmlErrorNone = 0,
  kXmlErrorNoTagFound = 2,  // the text is not XML
  kXmlErrorEmpty = 3,
  kXmlErrorTagMissing = 11,  // it is XML, but without the wanted element
};

struct XmlResults {
  XmlError error = kXmlErrorNone;
};

class XMLNode {
 public:
  // An empty node.
  XMLNode() = default;

  // The first element named TAG in document order, or the top element if TAG is null. Empty if
  // there is none; RESULTS, if given, says why. A text with any error, even a truncated one, is not
  // XML.
  static XMLNode parseString(std::string_view text, const char* tag = nullptr,
                             XmlResults* results = nullptr);

  // The document itself; its children are the top-level elements. Empty if TEXT is not XML.
  static XMLNode parseDocument(std::string_view text, XmlResults* results = nullptr);

  // A new document: an element, or a declaration ("<?NAME ...?>").
  static XMLNode createXMLTopNode(const char* name, bool isDeclaration = false);

  bool isEmpty() const { return element_ == nullptr; }
  std::string getName() const;

  // The first piece of the element's own text, before, between or after its children; empty if
  // there is none.
  std::string getText() const;
  // The attribute's value; null if there is none. Valid as long as the document.
  const char* getAttribute(const char* name) const;

  // Child elements: all of them, or those of one name.
  int nChildNode() const;
  int nChildNode(const char* name) const;
  // The child element with this index among them; empty beyond the last.
  XMLNode getChildNode(int number) const;
  XMLNode getChildNode(const char* name, int number = 0) const;
  // All of them (or those of one name) in one pass: one call per child would take quadratic time.
  std::vector<XMLNode> getChildNodes(const char* name = nullptr) const;

  // Children added to a declaration come after it.
  XMLNode addChild(const char* name);
  void addAttribute(const char* name, const char* value);
  // An empty text adds nothing: "<a />" stays as it is.
  void addText(const char* text);

  // The whole document as text: indented with tabs, with text-only elements on one line, or else
  // without any white space. No line end at the end.
  std::string createXMLString(bool isFormatted = true) const;

 private:
  using Document = std::shared_ptr<pugi::xml_document>;
  XMLNode(Document document, pugi::xml_node_struct* element);

  Document document_;
  pugi::xml_node_struct* element_ = nullptr;
};

#endif
