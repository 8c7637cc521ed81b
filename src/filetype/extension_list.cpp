#include "filetype/extension_list.h"

#include <cstdint>
#include <span>

#include "base/appliance.h"
#include "base/ini_file.h"
#include "base/xml_node.h"
#include "filetype/tables.h"

namespace kolum::filetype {

namespace {

constexpr const char* kKindNames[kKindCount] = {"Music", "Photo", "Video", "Playlist"};

// Rows 32 and up share the bits of rows 0 and up, because a configured mask has 32 bits. Rows that
// classification always excludes are listed too. Hosts' pages expect both.
void addExtensions(XMLNode& media, std::span<const MediaFileInfo> rows, std::uint32_t excluded) {
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if ((excluded >> row % 32 & 1) != 0) continue;
    XMLNode extension = media.addChild("Extension");
    extension.addAttribute("ID", std::to_string(row + 1).c_str());
    extension.addText(rows[row].extension + 1);
  }
}

std::string listOf(const IniFile& configuration) {
  XMLNode document = XMLNode::createXMLTopNode("xml", true);
  document.addAttribute("version", "1.0");
  document.addAttribute("encoding", "UTF-8");
  XMLNode root = document.addChild("Root");
  for (int number = 0; number < kKindCount; ++number) {
    const std::string key = "OPTIONS:FileUmaskInternal" + std::to_string(number);
    const int excluded = configuration.number(key.c_str(), 0);
    const std::span<const MediaFileInfo> rows = rowsOf(static_cast<KindNumber>(number));
    XMLNode media = root.addChild("Media");
    media.addAttribute("Type", kKindNames[number]);
    media.addAttribute("MaxID", std::to_string(rows.size()).c_str());
    addExtensions(media, rows, static_cast<std::uint32_t>(excluded));
  }
  return document.createXMLString();
}

}  // namespace

std::optional<std::string> extensionList() {
  const auto configuration = IniFile::load(kLibraryConfigFile);
  if (!configuration) return std::nullopt;
  return listOf(*configuration);
}

}  // namespace kolum::filetype
