// Reads XMP packets: RDF in XML, in one pass and without a tree.
//
// Prefixes are looked up here and not by Expat, which would copy the whole of a namespace's name
// for every attribute. What is of no use is passed over, whatever it is.
#include <expat.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/text.h"
#include "media/photo_tags.h"
#include "read/exif/blocks.h"
#include "read/exif/texts.h"
#include "read/exif/xmp.h"
#include "read/exif/xmp_names.h"

namespace kolum::exif {

namespace {

// Real documents have a dozen levels, some hundred properties and some dozen namespaces.
constexpr unsigned kDeepest = 64;
constexpr unsigned kMostNodes = 5000;  // elements and attributes that are of use
constexpr std::size_t kMostBindings = 256;

struct Name {
  XmpNamespace space = XmpNamespace::kUnknown;
  std::string_view local;

  bool isRdf(std::string_view wanted) const {
    return space == XmpNamespace::kRdf && local == wanted;
  }
};

// What an element is to RDF.
enum class Role {
  kAround,    // of the document, around RDF
  kRdf,       // holds nodes
  kNode,      // has properties, which are a packet's or the fields of a structure
  kProperty,  // has a text, a node or a list
  kList,      // has elements, which are like properties
};

struct Element {
  Role role = Role::kAround;
  XmpPlace place = {};
  unsigned items = 0;        // of a list
  bool hasText = false;      // a text may be its value
  std::size_t bindings = 0;  // as many are outside of it
};

// What prefixes stand for where the reader is. Any number of elements may look up any of them.
class Bindings {
 public:
  void add(std::string_view prefix, XmpNamespace space) {
    auto found = spaces_.find(prefix);
    if (found == spaces_.end()) found = spaces_.emplace(prefix, std::vector<XmpNamespace>()).first;
    found->second.push_back(space);
    order_.push_back(found);
  }
  // Takes back all but the first ones.
  void keep(std::size_t count) {
    for (; order_.size() > count; order_.pop_back()) {
      const auto last = order_.back();
      last->second.pop_back();
      if (last->second.empty()) spaces_.erase(last);
    }
  }
  std::size_t size() const { return order_.size(); }
  XmpNamespace at(std::string_view prefix) const {
    const auto found = spaces_.find(prefix);
    return found != spaces_.end() ? found->second.back() : XmpNamespace::kUnknown;
  }

 private:
  using Spaces = std::map<std::string, std::vector<XmpNamespace>, std::less<>>;

  Spaces spaces_;  // of each prefix the innermost one last, and none without any
  std::vector<Spaces::iterator> order_;
};

struct Attribute {
  std::string_view name;
  std::string_view value;
};

using Attributes = std::vector<Attribute>;

class Reader {
 public:
  // Whether TEXT is a whole document.
  bool read(std::string_view text);
  // Whether it contains bytes that no document may have.
  bool hasInvalidBytes() const { return hasInvalidBytes_; }
  Xmp result() && { return std::move(xmp_); }

 private:
  void begin(std::string_view name, const char** attributes);
  void end();
  void take(std::string_view text);
  void stop() {
    hasStopped_ = true;
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  void bind();
  Name resolved(std::string_view name) const;
  bool isUseful(const Name& name, Element& element);
  bool isUsefulNode(const Name& name, Element& element) const;
  bool isUsefulProperty(const Name& name, Element& element) const;
  bool isUsefulElementOfProperty(const Name& name, Element& element);
  bool isUsefulElementOfList(const Name& name, Element& element);
  bool takeSyntax(Element& element);
  void takeFields(Element& element);
  void addAttribute(const XmpPlace& place, std::string_view text);

  // Nothing that is thrown may pass through Expat.
  template <typename Work>
  static void guarded(void* reader, Work work) {
    auto& self = *static_cast<Reader*>(reader);
    if (self.hasStopped_) return;  // Expat may still end an element that has just begun
    try {
      work(self);
    } catch (...) {
      self.thrown_ = std::current_exception();
      self.stop();
    }
  }

  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser_;
  std::exception_ptr thrown_;
  Xmp xmp_;
  std::vector<Element> elements_;  // from the outermost to the innermost
  Bindings bindings_;
  Attributes attributes_;  // of the element that begins
  std::string text_;       // of the innermost property
  unsigned depth_ = 0;     // of all elements
  unsigned nodes_ = 0;
  unsigned skipped_ = 0;  // levels of elements that are of no use
  bool isWhole_ = false;
  bool hasStopped_ = false;
  bool hasInvalidBytes_ = false;
};

bool Reader::read(std::string_view text) {
  parser_.reset(XML_ParserCreate(nullptr));
  if (!parser_) throw std::bad_alloc();
  XML_SetUserData(parser_.get(), this);
  XML_SetElementHandler(
      parser_.get(),
      [](void* reader, const char* name, const char** attributes) {
        guarded(reader, [&](Reader& self) { self.begin(name, attributes); });
      },
      [](void* reader, const char*) { guarded(reader, [](Reader& self) { self.end(); }); });
  XML_SetCharacterDataHandler(parser_.get(), [](void* reader, const char* piece, int size) {
    guarded(reader, [&](Reader& self) { self.take({piece, static_cast<std::size_t>(size)}); });
  });
  // A document type may define entities.
  XML_SetStartDoctypeDeclHandler(parser_.get(),
                                 [](void* reader, const char*, const char*, const char*, int) {
                                   guarded(reader, [](Reader& self) { self.stop(); });
                                 });
  XML_Parse(parser_.get(), text.data(), static_cast<int>(text.size()), XML_TRUE);
  if (thrown_) std::rethrow_exception(thrown_);
  const XML_Error error = XML_GetErrorCode(parser_.get());
  if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
  hasInvalidBytes_ = !isWhole_ && error == XML_ERROR_INVALID_TOKEN;
  return isWhole_;
}

void Reader::begin(std::string_view name, const char** attributes) {
  if (++depth_ > kDeepest) return stop();
  if (skipped_ > 0) {
    ++skipped_;
    return;
  }
  attributes_.clear();
  for (; *attributes != nullptr && attributes_.size() <= kMostNodes; attributes += 2)
    attributes_.push_back({attributes[0], attributes[1]});
  Element element = {.bindings = bindings_.size()};
  bind();
  if (attributes_.size() > kMostNodes || bindings_.size() > kMostBindings) return stop();
  if (!isUseful(resolved(name), element) || !takeSyntax(element)) {
    bindings_.keep(element.bindings);
    skipped_ = 1;
    return;
  }
  takeFields(element);
  text_.clear();
  elements_.push_back(element);
  if (++nodes_ > kMostNodes) stop();
}

void Reader::end() {
  --depth_;
  if (skipped_ > 0) {
    --skipped_;
  } else {
    const Element element = elements_.back();
    elements_.pop_back();
    bindings_.keep(element.bindings);
    if (element.hasText) xmp_.add(element.place, text_);
    text_.clear();
    if (element.role == Role::kList && element.place.item == 0)
      xmp_.countItems(element.place.property, element.items);
  }
  if (depth_ > 0) return;
  // What is behind the document, such as room for changes, says nothing.
  isWhole_ = true;
  stop();
}

void Reader::take(std::string_view text) {
  if (skipped_ > 0 || elements_.empty() || !elements_.back().hasText) return;
  if (text_.size() <= media::kLongestPhotoText) text_ += text;
}

// --- Names

void Reader::bind() {
  constexpr std::string_view kDefault = "xmlns";
  constexpr std::string_view kOther = "xmlns:";
  for (const Attribute& attribute : attributes_) {
    if (bindings_.size() > kMostBindings) return;
    if (attribute.name == kDefault)
      bindings_.add("", namespaceOf(attribute.value));
    else if (attribute.name.starts_with(kOther))
      bindings_.add(attribute.name.substr(kOther.size()), namespaceOf(attribute.value));
  }
}

Name Reader::resolved(std::string_view name) const {
  const std::size_t colon = name.find(':');
  if (colon == name.npos) return {bindings_.at(""), name};
  return {bindings_.at(name.substr(0, colon)), name.substr(colon + 1)};
}

// --- RDF

bool Reader::isUseful(const Name& name, Element& element) {
  if (elements_.empty() || elements_.back().role == Role::kAround) {
    element.role = name.isRdf("RDF") ? Role::kRdf : Role::kAround;
    return true;
  }
  Element& parent = elements_.back();
  element.place = parent.place;
  switch (parent.role) {
    case Role::kRdf:
      return isUsefulNode(name, element);
    case Role::kNode:
      return isUsefulProperty(name, element);
    case Role::kProperty:
      return isUsefulElementOfProperty(name, element);
    case Role::kList:
      return isUsefulElementOfList(name, element);
    case Role::kAround:
      break;
  }
  return false;
}

bool Reader::isUsefulNode(const Name& name, Element& element) const {
  element.role = Role::kNode;
  return name.isRdf("Description");
}

bool Reader::isUsefulProperty(const Name& name, Element& element) const {
  element.role = Role::kProperty;
  element.hasText = true;
  // The value itself, beside what qualifies it.
  if (name.isRdf("value")) return element.place.property != XmpProperty::kNone;
  element.place.property = propertyIn(element.place.property, name.space, name.local);
  return element.place.property != XmpProperty::kNone;
}

bool Reader::isUsefulElementOfProperty(const Name& name, Element& element) {
  elements_.back().hasText = false;
  const bool isList = name.isRdf("Alt") || name.isRdf("Bag") || name.isRdf("Seq");
  element.role = isList ? Role::kList : Role::kNode;
  // A node may have its type for a name.
  return isList || name.isRdf("Description") || name.space != XmpNamespace::kRdf;
}

bool Reader::isUsefulElementOfList(const Name& name, Element& element) {
  if (!name.isRdf("li")) return false;
  Element& list = elements_.back();
  ++list.items;
  if (element.place.item == 0) element.place.item = list.items;
  element.role = Role::kProperty;
  element.hasText = true;
  return true;
}

// What RDF itself says in attributes of properties. Returns whether that is XMP.
bool Reader::takeSyntax(Element& element) {
  if (element.role != Role::kProperty) return true;
  for (const Attribute& attribute : attributes_) {
    if (attribute.name == "xml:lang")
      element.place.isDefault = equalsIgnoringCase(attribute.value, "x-default");
    const Name name = resolved(attribute.name);
    if (name.isRdf("parseType")) {
      if (attribute.value != "Resource") return false;
      element.role = Role::kNode;
      element.hasText = false;
    } else if (name.isRdf("resource")) {
      addAttribute(element.place, attribute.value);
      element.hasText = false;
    }
  }
  return true;
}

// Properties as attributes: of a node, or of a property whose value is a structure.
void Reader::takeFields(Element& element) {
  if (element.role != Role::kNode && element.role != Role::kProperty) return;
  for (const Attribute& attribute : attributes_) {
    if (attribute.name.find(':') == std::string_view::npos) continue;
    const Name name = resolved(attribute.name);
    XmpPlace place = element.place;
    if (!name.isRdf("value")) place.property = propertyIn(place.property, name.space, name.local);
    if (place.property == XmpProperty::kNone) continue;
    element.hasText = false;
    addAttribute(place, attribute.value);
  }
}

void Reader::addAttribute(const XmpPlace& place, std::string_view text) {
  xmp_.add(place, text);
  if (++nodes_ > kMostNodes) stop();
}

}  // namespace

Xmp readXmp(std::string_view packet) {
  if (packet.size() > kLargestBlock) return {};
  Reader reader;
  if (reader.read(packet)) return std::move(reader).result();
  if (!reader.hasInvalidBytes()) return {};
  Reader second;
  return second.read(repairedUtf8(packet)) ? std::move(second).result() : Xmp();
}

}  // namespace kolum::exif
