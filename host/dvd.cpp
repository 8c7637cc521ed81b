#include <dirent.h>
#include <dvdread/dvd_reader.h>
#include <kolum/host.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

namespace {

constexpr const char* kVideoFolder = "VIDEO_TS";

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
struct DiscCloser {
  void operator()(dvd_reader_t* disc) const { DVDClose(disc); }
};
struct FileCloser {
  void operator()(dvd_file_t* file) const { DVDCloseFile(file); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;
using Disc = std::unique_ptr<dvd_reader_t, DiscCloser>;
using File = std::unique_ptr<dvd_file_t, FileCloser>;

// Whether a path is a link that leads out of a disc.
bool leadsOut(const std::string& path, const std::string& disc) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return false;
  std::error_code error;
  const auto top = std::filesystem::canonical(disc, error);
  const auto target = error ? top : std::filesystem::canonical(path, error);
  return error || *target.lexically_relative(top).begin() == "..";
}

// The video files of one title set.
struct TitleSet {
  std::string firstFile;
  int firstPart = 0;
  long long size = 0;
};
using TitleSets = std::map<int, TitleSet>;

struct FilePlace {
  int titleSet;
  int part;
};

// "VTS_nn_p.VOB" in any case, p from 1; part 0 is the menu.
std::optional<FilePlace> placeOf(std::string_view name) {
  constexpr std::string_view kPattern = "VTS_00_0.VOB";
  if (name.size() != kPattern.size()) return std::nullopt;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool isDigit = name[i] >= '0' && name[i] <= '9';
    const auto byte = static_cast<unsigned char>(name[i]);
    const bool fits = kPattern[i] == '0' ? isDigit : std::toupper(byte) == kPattern[i];
    if (!fits) return std::nullopt;
  }
  const FilePlace place = {(name[4] - '0') * 10 + (name[5] - '0'), name[7] - '0'};
  if (place.titleSet < 1 || place.part < 1) return std::nullopt;
  return place;
}

// FOLDER, or the VIDEO_TS folder in it, with a trailing "/". An empty FOLDER means the current one.
std::string videoFolder(std::string folder) {
  if (folder.empty()) folder = "./";
  if (folder.back() != '/') folder += '/';
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return folder;
  while (const dirent* entry = readdir(directory.get())) {
    if (strcasecmp(entry->d_name, kVideoFolder) != 0) continue;
    std::string video = folder + entry->d_name + "/";
    if (isFolderExist(video.c_str()) != 0 && !leadsOut(folder + entry->d_name, folder))
      return video;
  }
  return folder;
}

TitleSets readTitleSets(const std::string& folder) {
  TitleSets sets;
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return sets;
  while (const dirent* entry = readdir(directory.get())) {
    const auto place = placeOf(entry->d_name);
    if (!place) continue;
    struct stat status = {};
    const std::string path = folder + entry->d_name;
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
      continue;
    if (leadsOut(path, folder)) continue;
    TitleSet& set = sets[place->titleSet];
    set.size += status.st_size;
    if (set.firstFile.empty() || place->part < set.firstPart) {
      set.firstFile = path;
      set.firstPart = place->part;
    }
  }
  return sets;
}

// Whether an index file is a pipe or a device, which opening could block on, or a link out of the
// disc.
bool holdsOddIndex(const std::string& folder) {
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return false;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    const std::string extension(name.substr(name.size() - std::min<std::size_t>(4, name.size())));
    if (strcasecmp(extension.c_str(), ".IFO") != 0 && strcasecmp(extension.c_str(), ".BUP") != 0)
      continue;
    struct stat status = {};
    const std::string path = folder + entry->d_name;
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return true;
    if (leadsOut(path, folder)) return true;
  }
  return false;
}

// libdvdread's own parser is not used for the index files: it crashes on damaged ones.
constexpr std::size_t kMaxIndexSize = 32U << 20U;
constexpr std::uint64_t kChainTableSector = 0xCC;

// The whole index file of a title set; empty if it cannot be read.
std::vector<std::uint8_t> readIndex(dvd_reader_t* disc, int titleSet, dvd_read_domain_t domain) {
  const File file(DVDOpenFile(disc, titleSet, domain));
  if (file == nullptr) return {};
  const auto blocks = DVDFileSize(file.get());
  if (blocks <= 0 || static_cast<std::size_t>(blocks) > kMaxIndexSize / DVD_VIDEO_LB_LEN) return {};
  std::vector<std::uint8_t> content(static_cast<std::size_t>(blocks) * DVD_VIDEO_LB_LEN);
  const auto size = static_cast<ssize_t>(content.size());
  if (DVDReadBytes(file.get(), content.data(), content.size()) != size) return {};
  return content;
}

// The big-endian number of SIZE bytes at AT; 0 when it reaches beyond the end.
std::uint32_t number(std::span<const std::uint8_t> bytes, std::uint64_t at, std::size_t size) {
  kolum::ByteReader reader(bytes);
  reader.skip(at);
  return static_cast<std::uint32_t>(reader.bigEndian(size));
}

// A playback time in seconds, from hours, minutes, seconds and frames with two decimal digits per
// byte. 0 if it is not a decimal number.
long seconds(std::uint32_t time) {
  long total = 0;
  for (const unsigned shift : {24U, 16U, 8U}) {
    const std::uint32_t tens = time >> (shift + 4) & 0xFU;
    const std::uint32_t ones = time >> shift & 0xFU;
    if (tens > 9 || ones > 9) return 0;
    total = total * 60 + static_cast<long>(tens * 10 + ones);
  }
  return total;
}

// The playing time of the longest program chain in an index file.
long longestChain(std::span<const std::uint8_t> index) {
  constexpr std::string_view kMagic = "DVDVIDEO-VTS";
  if (kolum::ByteReader(index).text(kMagic.size()) != kMagic) return 0;
  const std::uint64_t sector = number(index, kChainTableSector, 4);
  if (sector == 0) return 0;
  const std::uint64_t table = sector * DVD_VIDEO_LB_LEN;
  const std::uint32_t count = number(index, table, 2);
  long longest = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    // An entry is eight bytes after the table's eight; its second half is the chain's offset.
    const std::uint64_t chain = number(index, table + 8 + std::uint64_t{i} * 8 + 4, 4);
    longest = std::max(longest, seconds(number(index, table + chain + 4, 4)));
  }
  return longest;
}

// The playing time of a title set's longest program chain; 0 if neither its index file nor the
// backup gives one.
long longestPlayback(dvd_reader_t* disc, int titleSet) {
  for (const auto domain : {DVD_READ_INFO_FILE, DVD_READ_INFO_BACKUP_FILE})
    if (const long playback = longestChain(readIndex(disc, titleSet, domain))) return playback;
  return 0;
}

void dropMessage(void* /*context*/, dvd_logger_level_t /*level*/, const char* /*format*/,
                 va_list /*arguments*/) {}

Disc openDisc(const std::string& folder) {
  if (holdsOddIndex(folder)) return nullptr;
  static const dvd_logger_cb kQuiet = {dropMessage};
  return Disc(DVDOpen2(nullptr, &kQuiet, folder.c_str()));
}

// The title set that plays longest; among equals the larger one. Sets whose IFO files cannot be
// read count as having no playing time, so on a damaged disc the size alone decides.
const TitleSet* mainTitleSet(const std::string& folder, const TitleSets& sets) {
  if (sets.empty()) return nullptr;
  const Disc disc = openDisc(folder);
  const TitleSet* best = nullptr;
  long bestPlayback = 0;
  for (const auto& [number, set] : sets) {
    const long playback = disc != nullptr ? longestPlayback(disc.get(), number) : 0;
    const bool isBetter = best == nullptr || playback > bestPlayback ||
                          (playback == bestPlayback && set.size > best->size);
    if (!isBetter) continue;
    best = &set;
    bestPlayback = playback;
  }
  return best;
}

}  // namespace

int DVDGetMainVTSNo(const char* folder, char* pathOut, int pathOutSize, int /*reserved1*/,
                    long long* titleSize, int /*reserved2*/) try {
  if (folder == nullptr || pathOut == nullptr || pathOutSize <= 0) return -1;
  const std::string video = videoFolder(folder);
  const TitleSets sets = readTitleSets(video);
  const TitleSet* title = mainTitleSet(video, sets);
  if (title == nullptr || title->firstFile.size() >= static_cast<std::size_t>(pathOutSize))
    return -1;
  std::memcpy(pathOut, title->firstFile.c_str(), title->firstFile.size() + 1);
  if (titleSize != nullptr) *titleSize = title->size;
  return 0;
} catch (...) {
  return -1;
}
