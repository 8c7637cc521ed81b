#include "describe/disc.h"

#include <chrono>
#include <utility>

#include "isolation/isolation.h"
#include "read/disc/disc.h"
#include "read/headers/disc_index.h"

namespace kolum::describe {

namespace {

// For all index files of a disc; real discs take milliseconds.
class Deadline {
 public:
  bool isOver() const { return std::chrono::steady_clock::now() > end_; }

 private:
  static constexpr std::chrono::seconds kTime{30};
  const std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + kTime;
};

// What one index file says. Links that lead out of FOLDER are not followed.
media::DiscIndex indexOf(const std::string& folder, const std::string& name) {
  const auto source =
      disc::open({.root = folder, .path = folder + name, .containerFormat = 0, .size = 0});
  if (!source) return {};
  const read::Findings found = isolation::look(*source, {.discIndex = true});
  media::DiscIndex index = found.disc.value_or(media::DiscIndex());
  index.bytes = found.bytesRead;
  return index;
}

std::string lastPart(std::string_view path) {
  return std::string(path.substr(path.rfind('/') + 1));
}

}  // namespace

media::Disc dvdOfFolder(const std::string& folder, std::string_view mainFile) {
  const Deadline deadline;
  media::DiscIndex disc;
  for (const auto& [number, names] : headers::dvdIndexNames(disc::namesIn(folder))) {
    for (const std::string& name : names) {
      if (disc.isFull() || deadline.isOver()) {
        disc.isIncomplete = true;
        break;
      }
      media::DiscIndex index = indexOf(folder, name);
      const bool isFound = index.kind != media::DiscKind::kNone;
      disc.add(std::move(index));
      if (isFound) break;
    }
  }
  disc.kind = media::DiscKind::kDvd;
  disc.mainFile = lastPart(mainFile);
  return discOf(std::move(disc));
}

media::Disc blurayOfFolder(const std::string& folder, std::string_view mainFile) {
  const std::string playlists = "PLAYLIST/";
  const Deadline deadline;
  media::DiscIndex disc;
  for (const std::string& name : disc::namesIn(folder + playlists)) {
    if (headers::indexKindOf(name) != headers::IndexKind::kPlaylist) continue;
    if (disc.isFull() || deadline.isOver()) {
      disc.isIncomplete = true;
      break;
    }
    disc.add(indexOf(folder, playlists + name));
  }
  disc.kind = media::DiscKind::kBluray;
  disc.mainFile = lastPart(mainFile);
  return discOf(std::move(disc));
}

}  // namespace kolum::describe
