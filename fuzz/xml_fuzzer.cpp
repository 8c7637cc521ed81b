// Reads the bytes as the documents of both tools: places and songs.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "base/xml_node.h"
#include "read/tags/dsd_tool.h"

namespace {

void readSong(std::string_view text) {
  XMLNode tag = XMLNode::parseString(text, "ID3TAG");
  if (tag.isEmpty()) return;
  const kolum::tags::DsdDocument document(std::move(tag));
  for (const char* element : {"TITLE", "ARTIST", "ALBUM"}) document.text(element);
  for (const char* element : {"YEAR", "TRACK", "DURATION", "CHANNEL", "FREQUENCY"})
    document.number(element);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const XMLNode node = XMLNode::parseString({reinterpret_cast<const char*>(data), size}, "output");
  for (int i = 0; i < node.nChildNode() && i < 10; ++i) {
    const XMLNode child = node.getChildNode(i);
    child.getName();
    child.getText();
    child.getAttribute("language");
  }
  node.createXMLString();
  readSong({reinterpret_cast<const char*>(data), size});
  return 0;
}
