#include "support/disc_builder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "support/hostile_bytes.h"
#include "support/media_factory.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

std::string byte(std::uint64_t value) {
  return bigEndian(value, 1);
}

std::string ticks(double seconds) {
  return big32(static_cast<std::uint64_t>(seconds * 45000));
}

std::string sized16(const std::string& content) {
  return big16(content.size()) + content;
}

// Where a stream is, and what it is.
std::string stream(const std::string& attributes) {
  const std::string place = byte(1) + big16(0x1100) + zeros(6);
  return byte(place.size()) + place + byte(attributes.size()) + attributes;
}

std::string streamTable(const PlaylistItem& item) {
  std::string table = zeros(2) + byte(1) + byte(item.audio.size()) + byte(item.subtitles.size()) +
                      zeros(1 + 1 + 1 + 1 + 5) + stream(byte(0x1B) + byte(0x61) + zeros(3));
  for (const std::string& language : item.audio)
    table += stream(byte(0x81) + byte(0x61) + language);
  for (const std::string& language : item.subtitles)
    table += stream(byte(0x90) + language + byte(0));
  return table;
}

std::string itemBytes(const PlaylistItem& item) {
  std::string bytes = item.stream + "M2TS" + big16(item.angles > 1 ? 0x11 : 1) + byte(0) +
                      ticks(item.begin) + ticks(item.begin + item.duration) + zeros(12);
  if (item.angles > 1) {
    bytes += byte(static_cast<std::uint64_t>(item.angles)) + byte(0);
    for (int i = 1; i < item.angles; ++i) bytes += "00009M2TS" + byte(0);
  }
  return sized16(bytes + sized16(streamTable(item)));
}

}  // namespace

std::string playlist(const std::vector<PlaylistItem>& items,
                     const std::vector<PlaylistMark>& marks) {
  constexpr std::size_t kHeader = 40;
  std::string list = zeros(2) + big16(items.size()) + big16(0);
  for (const PlaylistItem& item : items) list += itemBytes(item);
  std::string chapters = big16(marks.size());
  for (const PlaylistMark& mark : marks) {
    const double begin = mark.item < items.size() ? items[mark.item].begin : 0;
    chapters += byte(0xFF) + byte(mark.type) + big16(mark.item) + ticks(begin + mark.time) +
                big16(0xFFFF) + big32(0);
  }
  const std::string listBytes = big32(list.size()) + list;
  const std::string header =
      "MPLS0200" + big32(kHeader) + big32(kHeader + listBytes.size()) + zeros(24);
  return header + listBytes + big32(chapters.size()) + chapters;
}

std::string blurayDisc(const std::string& folder,
                       const std::vector<std::pair<std::string, std::string>>& playlists,
                       const std::vector<std::pair<std::string, std::size_t>>& streams) {
  const std::string one =
      media("disc-stream.m2ts",
            "-f lavfi -i testsrc=s=320x240:r=25:d=1 -f lavfi -i sine=r=48000:d=1 -pix_fmt yuv420p "
            "-c:v libx264 -c:a ac3 -f mpegts -mpegts_m2ts_mode 1");
  const std::string disc = folder + "/BDMV/";
  fs::create_directories(disc + "PLAYLIST");
  fs::create_directories(disc + "STREAM");
  std::ofstream(disc + "index.bdmv") << "INDX0200";
  for (const auto& [name, content] : playlists)
    std::ofstream(disc + "PLAYLIST/" + name, std::ios::binary) << content;
  for (const auto& [name, size] : streams) {
    fs::copy(one, disc + "STREAM/" + name);
    fs::resize_file(disc + "STREAM/" + name, std::max<std::uintmax_t>(fs::file_size(one), size));
  }
  return disc;
}

std::string dvdTitleList(std::size_t count) {
  constexpr std::size_t kSector = 2048;
  std::string head = "DVDVIDEO-VMG" + zeros(0xC4 - 12) + big32(1);
  head += zeros(kSector - head.size());
  std::string table = big16(count) + zeros(2) + big32(8 + count * 12 - 1);
  for (std::size_t i = 0; i < count; ++i)
    table += byte(0) + byte(1) + big16(5) + big16(0) + byte(1) + byte(1) + big32(0);
  return head + table;
}

}  // namespace kolum::test
