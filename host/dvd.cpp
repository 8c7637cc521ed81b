#include <dirent.h>
#include <dvdread/dvd_reader.h>
#include <dvdread/ifo_read.h>
#include <kolum/host.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr const char* kVideoFolder = "VIDEO_TS";

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
struct DiscCloser {
  void operator()(dvd_reader_t* disc) const { DVDClose(disc); }
};
struct IfoCloser {
  void operator()(ifo_handle_t* ifo) const { ifoClose(ifo); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;
using Disc = std::unique_ptr<dvd_reader_t, DiscCloser>;
using Ifo = std::unique_ptr<ifo_handle_t, IfoCloser>;

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

// FOLDER, or the VIDEO_TS folder in it, with a closing "/".
std::string videoFolder(std::string folder) {
  if (folder.empty() || folder.back() != '/') folder += '/';
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return folder;
  while (const dirent* entry = readdir(directory.get())) {
    if (strcasecmp(entry->d_name, kVideoFolder) != 0) continue;
    std::string video = folder + entry->d_name + "/";
    if (isFolderExist(video.c_str()) != 0) return video;
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
    TitleSet& set = sets[place->titleSet];
    set.size += status.st_size;
    if (set.firstFile.empty() || place->part < set.firstPart) {
      set.firstFile = path;
      set.firstPart = place->part;
    }
  }
  return sets;
}

// Whether a pipe or a device poses as an index file: opening it could wait forever.
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
  }
  return false;
}

// Seconds of a program chain's playback time, which is in packed decimal digits.
long seconds(const dvd_time_t& time) {
  const auto decimal = [](unsigned packed) { return (packed >> 4) * 10L + (packed & 0xF); };
  return decimal(time.hour) * 3600 + decimal(time.minute) * 60 + decimal(time.second);
}

// The longest program chain of a title set; 0 when its IFO file tells none.
long longestPlayback(dvd_reader_t* disc, int titleSet) {
  const Ifo ifo(ifoOpenVTSI(disc, titleSet));
  if (ifo == nullptr || ifoRead_PGCIT(ifo.get()) == 0 || ifo->vts_pgcit == nullptr) return 0;
  const pgcit_t& chains = *ifo->vts_pgcit;
  long longest = 0;
  for (int i = 0; i < chains.nr_of_pgci_srp; ++i) {
    const pgc_t* chain = chains.pgci_srp[i].pgc;
    if (chain != nullptr) longest = std::max(longest, seconds(chain->playback_time));
  }
  return longest;
}

void dropMessage(void* /*context*/, dvd_logger_level_t /*level*/, const char* /*format*/,
                 va_list /*arguments*/) {}

Disc openDisc(const std::string& folder) {
  if (holdsOddIndex(folder)) return nullptr;
  static const dvd_logger_cb kQuiet = {dropMessage};
  return Disc(DVDOpen2(nullptr, &kQuiet, folder.c_str()));
}

// The title set that plays longest, the larger of equal ones. Sets whose IFO files cannot be read
// count as playing for no time, so on a disc with damaged ones the size alone decides.
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
