// make_page TEMPLATE OUT NAME=FILE...: the page of reports as C++. In TEMPLATE, "@@style:NAME@@"
// and
// "@@script:NAME@@" stand for a file as it is, "@@text:NAME@@" for one as text, and "@@slot:NAME@@"
// for what a report puts there.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view kMark = "@@";

struct Part {
  std::string text;
  std::string slot;  // after the text; empty at the end
};

std::string contentOf(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::string content(std::istreambuf_iterator<char>(in), {});
  if (!in || content.empty()) throw std::runtime_error(file + " cannot be read");
  return content;
}

// What would end the element that the text is in, or change how it is read.
void checkInside(std::string text, const std::string& name) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; });
  const bool ends = text.find("</script") != text.npos || text.find("</style") != text.npos;
  const bool opens = text.find("<!--") != text.npos && text.find("<script") != text.npos;
  if (ends || opens) throw std::runtime_error(name + " cannot stand in a page");
}

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '>')
      out += "&gt;";
    else
      out += c;
  }
  return out;
}

std::string filling(const std::string& kind, const std::string& name,
                    const std::map<std::string, std::string>& files) {
  const auto file = files.find(name);
  if (file == files.end()) throw std::runtime_error("no file for " + name);
  std::string content = contentOf(file->second);
  if (kind == "text") return escaped(content);
  if (kind != "script" && kind != "style") throw std::runtime_error("what is \"" + kind + "\"?");
  checkInside(content, file->second);
  return content;
}

std::vector<Part> partsOf(const std::string& page,
                          const std::map<std::string, std::string>& files) {
  std::vector<Part> parts(1);
  std::size_t at = 0;
  for (std::size_t mark = 0; (mark = page.find(kMark, at)) != page.npos;) {
    const std::size_t end = page.find(kMark, mark + kMark.size());
    if (end == page.npos) throw std::runtime_error("a mark without an end");
    const std::string words = page.substr(mark + kMark.size(), end - mark - kMark.size());
    const std::size_t colon = words.find(':');
    if (colon == words.npos) throw std::runtime_error("a mark without a kind: " + words);
    parts.back().text += page.substr(at, mark - at);
    if (words.substr(0, colon) == "slot") {
      parts.back().slot = words.substr(colon + 1);
      parts.emplace_back();
    } else {
      parts.back().text += filling(words.substr(0, colon), words.substr(colon + 1), files);
    }
    at = end + kMark.size();
  }
  parts.back().text += page.substr(at);
  return parts;
}

void write(const std::vector<Part>& parts, const std::string& file) {
  std::ofstream out(file);
  out << "// Made by make_page.\n#include \"report/page.h\"\n\nnamespace kolum::tool "
         "{\n\nnamespace {\n";
  for (std::size_t i = 0; i < parts.size(); ++i) {
    out << "\nconstexpr unsigned char kText" << i << "[] = {";
    std::size_t column = 0;
    for (const unsigned char byte : parts[i].text)
      out << (column++ % 24 == 0 ? "\n" : "") << static_cast<int>(byte) << ',';
    out << "};\n";
  }
  out << "\nconstexpr PagePart kParts[] = {\n";
  for (std::size_t i = 0; i < parts.size(); ++i)
    out << "    {kText" << i << ", \"" << parts[i].slot << "\"},\n";
  out << "};\n\n}  // namespace\n\nstd::span<const PagePart> pageParts() {\n  return kParts;\n}\n\n"
         "}  // namespace kolum::tool\n";
  if (!out.flush()) throw std::runtime_error(file + " cannot be written");
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3) throw std::runtime_error("usage: make_page TEMPLATE OUT NAME=FILE...");
  std::map<std::string, std::string> files;
  for (int i = 3; i < argc; ++i) {
    const std::string pair = argv[i];
    const std::size_t equals = pair.find('=');
    if (equals == pair.npos) throw std::runtime_error("not NAME=FILE: " + pair);
    files[pair.substr(0, equals)] = pair.substr(equals + 1);
  }
  write(partsOf(contentOf(argv[1]), files), argv[2]);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "make_page: %s\n", error.what());
  return 1;
}
