#include "read/image/disc_image.h"

#include <udfread/blockinput.h>
#include <udfread/udfread.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "read/headers/disc_index.h"

namespace kolum::image {

namespace {

// A Blu-ray disc has a file for each of its streams and playlists.
constexpr std::size_t kMostEntries = 10'000;

struct ImageCloser {
  void operator()(udfread* image) const { udfread_close(image); }
};
struct FolderCloser {
  void operator()(UDFDIR* folder) const { udfread_closedir(folder); }
};
struct FileCloser {
  void operator()(UDFFILE* file) const { udfread_file_close(file); }
};
using Image = std::unique_ptr<udfread, ImageCloser>;
using Folder = std::unique_ptr<UDFDIR, FolderCloser>;
using File = std::unique_ptr<UDFFILE, FileCloser>;

// Gives the library the source's bytes. Its first member is what the library knows of it.
struct Input {
  udfread_block_input callbacks;
  const media::Source* source;

  static Input& of(udfread_block_input* input) { return *reinterpret_cast<Input*>(input); }
};

std::uint32_t blocksOf(udfread_block_input* input) {
  const std::int64_t blocks = Input::of(input).source->size() / UDF_BLOCK_SIZE;
  return static_cast<std::uint32_t>(std::min<std::int64_t>(blocks, UINT32_MAX));
}

int readBlocks(udfread_block_input* input, std::uint32_t block, void* out, std::uint32_t count,
               int /*flags*/) {
  const std::span<std::uint8_t> bytes(static_cast<std::uint8_t*>(out),
                                      std::size_t{count} * UDF_BLOCK_SIZE);
  const std::ptrdiff_t read =
      Input::of(input).source->readAt(std::int64_t{block} * UDF_BLOCK_SIZE, bytes);
  return static_cast<int>(read < 0 ? -1 : read / UDF_BLOCK_SIZE);
}

// A folder of the image and the names of the files in it.
class Listing {
 public:
  Listing(udfread* image, std::string path) : image_(image), path_(std::move(path)) {
    const Folder folder(udfread_opendir(image_, path_.c_str()));
    udfread_dirent entry = {};
    for (std::size_t i = 0; folder != nullptr && i < kMostEntries; ++i) {
      if (udfread_readdir(folder.get(), &entry) == nullptr) break;
      if (entry.d_type == UDF_DT_REG && entry.d_name != nullptr) names_.emplace_back(entry.d_name);
    }
  }

  const std::vector<std::string>& names() const { return names_; }

  std::int64_t sizeOf(const std::string& name) const {
    const File file = open(name);
    return file != nullptr ? std::max<std::int64_t>(udfread_file_size(file.get()), 0) : 0;
  }

  // The first bytes, as many as an index file may have.
  std::vector<std::uint8_t> contentOf(const std::string& name) const {
    const File file = open(name);
    if (file == nullptr) return {};
    // One byte more shows that there is more.
    const auto size =
        std::clamp<std::int64_t>(udfread_file_size(file.get()), 0, headers::kMostIndexBytes + 1);
    std::vector<std::uint8_t> content(static_cast<std::size_t>(size));
    const ssize_t count = udfread_file_read(file.get(), content.data(), content.size());
    content.resize(static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, size)));
    return content;
  }

 private:
  File open(const std::string& name) const {
    return File(udfread_file_open(image_, (path_ + "/" + name).c_str()));
  }

  udfread* image_;
  std::string path_;
  std::vector<std::string> names_;
};

media::DiscIndex indexOf(const Listing& files, const std::string& name) {
  return headers::readDiscIndex(name, files.contentOf(name));
}

// --- DVDs

// The title sets that have something to play, in the order of their numbers.
std::vector<media::TitleSetSize> titleSetSizes(const Listing& files) {
  std::map<int, media::TitleSetSize> sets;
  std::map<int, int> firstParts;
  for (const std::string& name : files.names()) {
    const auto file = media::titleSetFile(name);
    if (!file || file->titleSet < 1 || file->part < 1 || !endsWithIgnoringCase(name, ".VOB"))
      continue;
    const std::int64_t size = files.sizeOf(name);
    if (size == 0) continue;
    media::TitleSetSize& set = sets[file->titleSet];
    set.number = file->titleSet;
    set.size += size;
    int& firstPart = firstParts[file->titleSet];
    if (set.firstFile.empty() || file->part < firstPart) {
      set.firstFile = name;
      firstPart = file->part;
    }
  }
  std::vector<media::TitleSetSize> found;
  found.reserve(sets.size());
  for (auto& [number, set] : sets) found.push_back(std::move(set));
  return found;
}

media::DiscIndex readDvd(const Listing& files) {
  media::DiscIndex disc;
  for (const auto& [number, names] : headers::dvdIndexNames(files.names())) {
    for (const std::string& name : names) {
      if (disc.isFull()) {
        disc.isIncomplete = true;
        break;
      }
      media::DiscIndex index = indexOf(files, name);
      const bool isFound = index.kind != media::DiscKind::kNone;
      disc.add(std::move(index));
      if (isFound) break;
    }
  }
  disc.mainFile = mainFileOf(disc, titleSetSizes(files));
  return disc;
}

// --- Blu-ray discs

// The last among equals, as in folders.
std::string largestStream(const Listing& files) {
  std::string largest;
  std::int64_t largestSize = 0;
  for (const std::string& name : files.names()) {
    if (!endsWithIgnoringCase(name, ".m2ts")) continue;
    const std::int64_t size = files.sizeOf(name);
    if (size < largestSize) continue;
    largestSize = size;
    largest = name;
  }
  return largest;
}

media::DiscIndex readBluray(udfread* image) {
  media::DiscIndex disc;
  const Listing playlists(image, "/BDMV/PLAYLIST");
  std::vector<std::string> names = playlists.names();
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    if (headers::indexKindOf(name) != headers::IndexKind::kPlaylist) continue;
    if (disc.isFull()) {
      disc.isIncomplete = true;
      break;
    }
    disc.add(indexOf(playlists, name));
  }
  disc.mainFile = largestStream(Listing(image, "/BDMV/STREAM"));
  // As in folders, a disc is one by its streams.
  if (!disc.mainFile.empty()) disc.kind = media::DiscKind::kBluray;
  return disc;
}

}  // namespace

std::optional<media::DiscIndex> readDiscImage(const media::Source& source) {
  Input input = {.callbacks = {.close = nullptr, .read = readBlocks, .size = blocksOf},
                 .source = &source};
  const Image image(udfread_init());
  if (image == nullptr || udfread_open_input(image.get(), &input.callbacks) < 0)
    return std::nullopt;
  // The order in which mounted images are looked at.
  media::DiscIndex disc = readDvd(Listing(image.get(), "/VIDEO_TS"));
  if (disc.mainFile.empty()) disc = readBluray(image.get());
  if (disc.mainFile.empty()) return std::nullopt;
  return disc;
}

}  // namespace kolum::image
