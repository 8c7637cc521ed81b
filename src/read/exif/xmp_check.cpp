#include "read/exif/xmp_check.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace kolum::exif {

namespace {

constexpr std::size_t kLongest = std::size_t{4} << 20;
constexpr int kDeepest = 64;
constexpr int kMostNodes = 5000;  // elements and attributes

// The end of the tag that begins TEXT: ">" outside of quotes. Counts attributes.
std::size_t endOfTag(std::string_view text, int& nodes) {
  char quote = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quote == 0 && c == '>') return i;
    if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
      ++nodes;
    } else if (c == quote) {
      quote = 0;
    }
  }
  return text.npos;
}

// The size of what begins with "<" and is no element; 0 if it is one.
std::size_t sizeOfOther(std::string_view text) {
  struct Row {
    std::string_view begin;
    std::string_view end;
  };
  constexpr Row kRows[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
  for (const Row& row : kRows) {
    if (!text.starts_with(row.begin)) continue;
    const std::size_t end = text.find(row.end);
    return end == text.npos ? text.size() : end + row.end.size();
  }
  return 0;
}

// Properties that are left out, by the beginnings of their names.
constexpr std::string_view kUnwanted[] = {"crs:", "xmpMM:", "xmpDM:", "photoshop:DocumentAncestors",
                                          "photoshop:TextLayers"};

bool isUnwanted(std::string_view name) {
  return std::ranges::any_of(kUnwanted,
                             [&](std::string_view begin) { return name.starts_with(begin); });
}

enum class Tag { kBegin, kEnd, kEmpty };

Tag kindOf(std::string_view tag) {
  if (tag.starts_with("</")) return Tag::kEnd;
  return tag.ends_with("/>") ? Tag::kEmpty : Tag::kBegin;
}

// Goes through a document tag by tag.
class Filter {
 public:
  explicit Filter(std::string_view text) : text_(text) {}

  std::string result() && {
    while (!failed_ && at_ < text_.size()) step();
    if (failed_ || depth_ != 0) return {};
    return std::move(kept_);
  }

 private:
  void step() {
    const std::string_view rest = text_.substr(at_);
    if (!rest.starts_with('<')) return take(std::min(rest.find('<'), rest.size()));
    if (const std::size_t other = sizeOfOther(rest); other > 0) return take(other);
    int attributes = 0;
    const std::size_t end = endOfTag(rest, attributes);
    // A document type may define entities.
    failed_ = rest.starts_with("<!") || end == rest.npos;
    if (failed_) return;
    takeTag(rest.substr(0, end + 1), attributes);
  }

  void takeTag(std::string_view tag, int attributes) {
    const Tag kind = kindOf(tag);
    if (unwantedDepth_ == 0 && kind != Tag::kEnd && isUnwanted(tag.substr(1))) {
      unwantedDepth_ = kind == Tag::kBegin ? 1 : 0;
      at_ += tag.size();
      return;
    }
    if (unwantedDepth_ > 0) {
      take(tag.size());
      if (kind != Tag::kEmpty) unwantedDepth_ += kind == Tag::kBegin ? 1 : -1;
      return;
    }
    take(tag.size());
    if (kind != Tag::kEmpty) depth_ += kind == Tag::kBegin ? 1 : -1;
    nodes_ += kind == Tag::kEnd ? 0 : 1 + attributes;
    failed_ = depth_ > kDeepest || nodes_ > kMostNodes;
  }

  void take(std::size_t size) {
    if (unwantedDepth_ == 0) kept_ += text_.substr(at_, size);
    at_ += size;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::string kept_;
  int depth_ = 0;
  int unwantedDepth_ = 0;
  int nodes_ = 0;
  bool failed_ = false;
};

}  // namespace

std::string harmlessXmp(std::string_view text) {
  if (text.size() > kLongest) return {};
  return Filter(text).result();
}

}  // namespace kolum::exif
