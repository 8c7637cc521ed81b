#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_node.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const XMLNode node = XMLNode::parseString({reinterpret_cast<const char*>(data), size}, "output");
  for (int i = 0; i < node.nChildNode() && i < 10; ++i) {
    const XMLNode child = node.getChildNode(i);
    child.getName();
    child.getText();
    child.getAttribute("language");
  }
  node.createXMLString();
  return 0;
}
