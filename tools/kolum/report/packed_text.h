// Text as a page carries it: compressed (gzip), in base64.
#ifndef KOLUM_TOOL_REPORT_PACKED_TEXT_H
#define KOLUM_TOOL_REPORT_PACKED_TEXT_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kolum::tool {

class PackedText {
 public:
  using Sink = std::function<void(std::string_view)>;

  // Throws std::bad_alloc without memory, as write() and end() do.
  explicit PackedText(Sink sink);
  ~PackedText();
  PackedText(const PackedText&) = delete;
  PackedText& operator=(const PackedText&) = delete;

  void write(std::string_view text);
  // Once, after the last text.
  void end();

 private:
  struct Stream;

  void pack(std::string_view text, int flush);
  void encode(bool isLast);

  Sink sink_;
  std::unique_ptr<Stream> stream_;
  std::string packed_;  // not yet in base64
};

}  // namespace kolum::tool

#endif
