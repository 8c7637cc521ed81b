#include <kolum/filetype.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "support/appliance.h"
#include "support/ini_file.h"
#include "xml/xml_node.h"

namespace {

struct Index {
  const char* name;
  std::span<MediaHashNode* const> buckets;
};

const std::array<Index, 4> kIndexes = {{
    {"g_pHashVideo", g_pHashVideo},
    {"g_pHashMusic", g_pHashMusic},
    {"g_pHashPicture", g_pHashPicture},
    {"g_pHashPlaylist", g_pHashPlaylist},
}};

void printIndex(const Index& index) {
  std::printf("%s[] -> \n", index.name);
  for (const MediaHashNode* head : index.buckets) {
    int depth = 0;
    for (const MediaHashNode* node = head; node != nullptr; node = node->next)
      std::printf("%s mappingIndex: %d, collision dep = %d\n", node->extension,
                  static_cast<int>(node->row), depth++);
  }
}

// Kinds by their number in the configuration.
struct Kind {
  const char* name;
  const MediaFileInfo* table;
};

constexpr std::array<Kind, 4> kKinds = {{
    {"Music", g_SongFileInfo},
    {"Photo", g_PictureFileInfo},
    {"Video", g_VideoFileInfo},
    {"Playlist", g_PlaylistFileInfo},
}};

// Without the closing one.
std::span<const MediaFileInfo> rowsOf(const Kind& kind) {
  std::size_t rows = 0;
  while (kind.table[rows].extension != nullptr) ++rows;
  return {kind.table, rows};
}

// Rows 32 and up share the bits of rows 0 and up, because the configured value has 32; and the
// built-in exclusions of classification do not show. Both are what hosts' pages expect.
void addExtensions(XMLNode& media, std::span<const MediaFileInfo> rows, std::uint32_t excluded) {
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if ((excluded >> row % 32 & 1) != 0) continue;
    XMLNode extension = media.addChild("Extension");
    extension.addAttribute("ID", std::to_string(row + 1).c_str());
    extension.addText(rows[row].extension + 1);
  }
}

std::string extensionList(const kolum::IniFile& configuration) {
  XMLNode document = XMLNode::createXMLTopNode("xml", true);
  document.addAttribute("version", "1.0");
  document.addAttribute("encoding", "UTF-8");
  XMLNode root = document.addChild("Root");
  for (std::size_t number = 0; number < kKinds.size(); ++number) {
    const Kind& kind = kKinds[number];
    const std::string key = "OPTIONS:FileUmaskInternal" + std::to_string(number);
    const int excluded = configuration.number(key.c_str(), 0);
    const std::span<const MediaFileInfo> rows = rowsOf(kind);
    XMLNode media = root.addChild("Media");
    media.addAttribute("Type", kind.name);
    media.addAttribute("MaxID", std::to_string(rows.size()).c_str());
    addExtensions(media, rows, static_cast<std::uint32_t>(excluded));
  }
  return document.createXMLString();
}

}  // namespace

int KoLUM_PrintFileExtList() try {
  const auto configuration = kolum::IniFile::load(kolum::kLibraryConfigFile);
  if (!configuration) return 1;
  std::printf("%s\n", extensionList(*configuration).c_str());
  return 0;
} catch (...) {
  return 1;
}

void dumpHashTable() {
  for (std::size_t i = 0; i < kIndexes.size(); ++i) {
    if (i > 0) std::printf("\n");
    printIndex(kIndexes[i]);
  }
}
