#include "read/tags/dsd_tool.h"

#include <chrono>
#include <cstdlib>
#include <new>

#include "base/child_process.h"
#include "base/shell.h"

namespace kolum::tags {

namespace {

constexpr std::chrono::seconds kToolTime{30};
constexpr std::size_t kFirstRead = 4096;
constexpr std::size_t kGrowth = 2048;

// Hosts expect only the later part of a long output: it is read in attempts, each into a fresh and
// larger buffer, and the first part that does not fill its buffer is the document; earlier ones are
// dropped. Normal documents are far shorter than the first buffer. Nothing after a NUL counts.
std::string lastPart(const std::string& output) {
  std::size_t begin = 0;
  for (std::size_t size = kFirstRead; output.size() - begin >= size; size += kGrowth) begin += size;
  return output.c_str() + begin;
}

}  // namespace

std::string DsdDocument::text(const char* element) const {
  return tag_.getChildNode(element).getText();
}

std::optional<std::int32_t> DsdDocument::number(const char* element) const {
  const XMLNode node = tag_.getChildNode(element);
  if (node.isEmpty()) return std::nullopt;
  return static_cast<std::int32_t>(std::strtol(node.getText().c_str(), nullptr, 10));
}

DsdToolResult runDsdTool(const std::string& path, const char* toolFolder) try {
  if (toolFolder == nullptr) return {};
  const std::string command = std::string(toolFolder) + "dsf2flac -i " + shellWord(path) + " -f ";
  const auto output = outputOfShell(command, kToolTime);
  if (!output) return {.isMissing = true, .document = {}};
  XMLNode tag = XMLNode::parseString(lastPart(*output), "ID3TAG");
  if (tag.isEmpty()) return {};
  return {.isMissing = false, .document = DsdDocument(std::move(tag))};
} catch (const std::bad_alloc&) {
  return {.isMissing = true, .document = {}};
}

}  // namespace kolum::tags
