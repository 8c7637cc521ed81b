#include "mediainfo/dsf_tool.h"

#include <kolum/frame.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "support/shell.h"

namespace kolum::mediainfo {

namespace {

constexpr std::size_t kFirstRead = 4096;
constexpr std::size_t kGrowth = 2048;

struct PipeCloser {
  // Waits for the tool, so that no child is left behind.
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};
using Pipe = std::unique_ptr<std::FILE, PipeCloser>;

// What the first read that does not fill its buffer brings; earlier reads are dropped. Wanted: a
// document is far shorter than the first buffer, and for one that is not, hosts count on getting
// what its later part gives. Nothing behind a NUL counts.
std::string readLastPart(std::FILE* pipe) {
  for (std::size_t size = kFirstRead;; size += kGrowth) {
    std::vector<char> buffer(size + 1);
    if (std::fread(buffer.data(), 1, size, pipe) < size) return buffer.data();
  }
}

std::optional<std::string> toolOutput(const std::string& path) try {
  if (g_localWorkingPath == nullptr) return std::nullopt;
  const std::string command =
      std::string(g_localWorkingPath) + "dsf2flac -i " + shellWord(path) + " -f ";
  const Pipe pipe(popen(command.c_str(), "re"));
  if (pipe != nullptr) return readLastPart(pipe.get());
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
