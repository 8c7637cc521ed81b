#include "support/heif_builder.h"

#include <stdexcept>

#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

constexpr int kTileSize = 128;
constexpr int kGridWidth = 200;
constexpr int kGridHeight = 100;
constexpr int kFirstTile = 1;
constexpr int kSecondTile = 2;
constexpr int kGrid = 3;

// The first box of this type anywhere in FILE, with its header.
std::string boxIn(const std::string& file, const std::string& type) {
  const std::size_t at = file.find(type);
  if (at == std::string::npos || at < 4) throw std::runtime_error("no " + type + " box");
  std::size_t size = 0;
  for (std::size_t i = at - 4; i < at; ++i) size = size << 8 | static_cast<unsigned char>(file[i]);
  return file.substr(at - 4, size);
}

std::string sizeProperty(int width, int height) {
  return fullBox(
      "ispe", 0, 0,
      bigEndian(static_cast<unsigned>(width), 4) + bigEndian(static_cast<unsigned>(height), 4));
}

std::string item(int id, const std::string& type) {
  return fullBox(
      "infe", 2, 0,
      bigEndian(static_cast<unsigned>(id), 2) + bigEndian(0, 2) + type + std::string(1, '\0'));
}

// Items 1 to 3 at these places in the file: 32-bit offsets and lengths, one extent each.
std::string places(std::size_t tileAt, std::size_t tileSize, std::size_t gridAt,
                   std::size_t gridSize) {
  const auto place = [](int id, std::size_t at, std::size_t size) {
    return bigEndian(static_cast<unsigned>(id), 2) + bigEndian(0, 2) + bigEndian(1, 2) +
           bigEndian(at, 4) + bigEndian(size, 4);
  };
  return fullBox("iloc", 0, 0,
                 bigEndian(0x4400, 2) + bigEndian(3, 2) + place(kFirstTile, tileAt, tileSize) +
                     place(kSecondTile, tileAt, tileSize) + place(kGrid, gridAt, gridSize));
}

// The properties of each item: 1 (decoder set-up), 2 (tile size) and 3 (grid size).
std::string associations() {
  const std::string tile = bigEndian(2, 1) + bigEndian(0x81, 1) + bigEndian(2, 1);
  const std::string grid = bigEndian(1, 1) + bigEndian(3, 1);
  return fullBox("ipma", 0, 0,
                 bigEndian(3, 4) + bigEndian(kFirstTile, 2) + tile + bigEndian(kSecondTile, 2) +
                     tile + bigEndian(kGrid, 2) + grid);
}

}  // namespace

std::string heicOfTiles() {
  const std::string movie =
      contentOf(media("tile.mp4",
                      "-f lavfi -i testsrc=s=128x128 -frames:v 1 -pix_fmt yuv420p -c:v libx265 "
                      "-x265-params log-level=none -tag:v hvc1"));
  const std::string tile = boxIn(movie, "mdat").substr(8);
  // Version, flags, rows and columns minus one, 16-bit sizes.
  const std::string grid = bigEndian(0, 2) + bigEndian(0, 1) + bigEndian(1, 1) +
                           bigEndian(kGridWidth, 2) + bigEndian(kGridHeight, 2);

  const auto header = [&](std::size_t dataAt) {
    return ftyp("heic", {"mif1", "heic"}) +
           fullBox(
               "meta", 0, 0,
               fullBox("hdlr", 0, 0, bigEndian(0, 4) + "pict" + std::string(13, '\0')) +
                   fullBox("pitm", 0, 0, bigEndian(kGrid, 2)) +
                   places(dataAt, tile.size(), dataAt + tile.size(), grid.size()) +
                   fullBox("iinf", 0, 0,
                           bigEndian(3, 2) + item(kFirstTile, "hvc1") + item(kSecondTile, "hvc1") +
                               item(kGrid, "grid")) +
                   fullBox("iref", 0, 0,
                           box("dimg", bigEndian(kGrid, 2) + bigEndian(2, 2) +
                                           bigEndian(kFirstTile, 2) + bigEndian(kSecondTile, 2))) +
                   box("iprp",
                       box("ipco", boxIn(movie, "hvcC") + sizeProperty(kTileSize, kTileSize) +
                                       sizeProperty(kGridWidth, kGridHeight)) +
                           associations()));
  };
  constexpr std::size_t kBoxHeader = 8;
  const std::size_t dataAt = header(0).size() + kBoxHeader;
  return header(dataAt) + box("mdat", tile + grid);
}

}  // namespace kolum::test
