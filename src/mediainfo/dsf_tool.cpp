#include "mediainfo/dsf_tool.h"

#include <kolum/frame.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "support/shell.h"

namespace kolum::mediainfo {

namespace {

constexpr std::size_t kFirstRead = 4096;
constexpr std::size_t kGrowth = 2048;

// The tool's output is read in attempts, each into a fresh and larger buffer, and the first that
// does not fill its buffer is the document; what earlier ones brought is dropped. Wanted: a
// document is far shorter than the first buffer, and for one that is not, hosts count on getting
// what its later part gives. Nothing behind a NUL counts.
std::string lastPart(const std::string& output) {
  std::size_t begin = 0;
  for (std::size_t size = kFirstRead; output.size() - begin >= size; size += kGrowth) begin += size;
  return output.c_str() + begin;
}

std::optional<std::string> toolOutput(const std::string& path) try {
  if (g_localWorkingPath == nullptr) return std::nullopt;
  const std::string command =
      std::string(g_localWorkingPath) + "dsf2flac -i " + shellWord(path) + " -f ";
  const auto output = outputOf(command.c_str());
  if (output) return lastPart(*output);
  std::puts("error");
  return std::nullopt;
} catch (const std::bad_alloc&) {
  std::puts("error");
  return std::nullopt;
}

}  // namespace

std::string DsfDocument::text(const char* element) const {
  return tag_.getChildNode(element).getText();
}

std::optional<std::int32_t> DsfDocument::number(const char* element) const {
  const XMLNode node = tag_.getChildNode(element);
  if (node.isEmpty()) return std::nullopt;
  return static_cast<std::int32_t>(std::strtol(node.getText().c_str(), nullptr, 10));
}

std::optional<DsfDocument> runDsfTool(const std::string& path) {
  const auto output = toolOutput(path);
  if (!output) return std::nullopt;
  XMLNode tag = XMLNode::parseString(*output, "ID3TAG");
  if (tag.isEmpty()) return std::nullopt;
  return DsfDocument(std::move(tag));
}

}  // namespace kolum::mediainfo
