#include <iniparser.h>
#include <kolum/filetype.h>

#include <cstdio>
#include <exception>
#include <iterator>
#include <memory>
#include <string>

#include "xml/xml_node.h"

namespace {

constexpr char kConfigFile[] = "/etc/config/medialibrary.conf";
constexpr char kSection[] = "OPTIONS";
constexpr int kMaskBits = 32;

struct Kind {
  const char* name;
  const MediaFileInfo* table;
  int rows;
};

// By kind number, as the configuration keys and the masks count them.
constexpr Kind kKinds[] = {
    {"Music", g_SongFileInfo, 22},
    {"Photo", g_PictureFileInfo, 33},
    {"Video", g_VideoFileInfo, 33},
    {"Playlist", g_PlaylistFileInfo, 4},
};

struct FreeDictionary {
  void operator()(dictionary* ini) const { iniparser_freedict(ini); }
};

using Dictionary = std::unique_ptr<dictionary, FreeDictionary>;

unsigned configuredMask(const Dictionary& ini, int kind) {
  const std::string key = std::string(kSection) + ":FileUmaskInternal" + std::to_string(kind);
  return static_cast<unsigned>(iniparser_getint(ini.get(), key.c_str(), 0));
}

// The configured value has 32 bits and tables have more rows, so the bits start over; the
// exclusions that classification builds in do not count. Both are wanted: hosts compare this list
// with theirs.
void addKind(XMLNode& root, const Kind& kind, unsigned mask) {
  XMLNode media = root.addChild("Media");
  media.addAttribute("Type", kind.name);
  media.addAttribute("MaxID", std::to_string(kind.rows).c_str());
  for (int row = 0; row < kind.rows; ++row) {
    if ((mask >> (row % kMaskBits) & 1) != 0) continue;
    XMLNode extension = media.addChild("Extension");
    extension.addAttribute("ID", std::to_string(row + 1).c_str());
    extension.addText(kind.table[row].extension + 1);  // without its dot
  }
}

std::string extensionList(const Dictionary& ini) {
  XMLNode declaration = XMLNode::createXMLTopNode("xml", true);
  declaration.addAttribute("version", "1.0");
  declaration.addAttribute("encoding", "UTF-8");
  XMLNode root = declaration.addChild("Root");
  for (int kind = 0; kind < static_cast<int>(std::size(kKinds)); ++kind) {
    addKind(root, kKinds[kind], configuredMask(ini, kind));
  }
  return declaration.createXMLString();
}

}  // namespace

extern "C" int KoLUM_PrintFileExtList(void) try {
  const Dictionary ini(iniparser_load(kConfigFile));
  if (ini == nullptr) return 1;
  std::printf("%s\n", extensionList(ini).c_str());
  return 0;
} catch (const std::exception&) {
  return 1;  // out of memory
}
