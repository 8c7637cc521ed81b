#include "osm_info/catalogue.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

namespace kolum::osm_info {

namespace {

// The file begins with 32-bit words in the byte order of the machine that made it; catalogues from
// packages for this machine use this machine's order.
constexpr std::uint32_t kMagic = 0x950412de;
constexpr std::size_t kCountOffset = 8;
constexpr std::size_t kKeysOffset = 12;
constexpr std::size_t kTranslationsOffset = 16;
constexpr std::size_t kHeaderSize = 20;
constexpr std::size_t kRowSize = 8;  // length and offset of a text

constexpr std::uintmax_t kLargestFile = std::uintmax_t{32} << 20;

bool tableFits(std::size_t fileSize, std::size_t offset, std::size_t count) {
  return offset <= fileSize && count <= (fileSize - offset) / kRowSize;
}

}  // namespace

Catalogue::Catalogue(std::string bytes) : bytes_(std::move(bytes)) {
  if (bytes_.size() < kHeaderSize || word(0) != kMagic) return;
  const std::uint32_t count = word(kCountOffset);
  keys_ = word(kKeysOffset);
  translations_ = word(kTranslationsOffset);
  if (tableFits(bytes_.size(), keys_, count) && tableFits(bytes_.size(), translations_, count)) {
    count_ = count;
  }
}

std::uint32_t Catalogue::word(std::size_t offset) const {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes_.data() + offset, sizeof value);
  return value;
}

std::string_view Catalogue::textAt(std::size_t table, std::size_t number) const {
  const std::size_t length = word(table + number * kRowSize);
  const std::size_t offset = word(table + number * kRowSize + sizeof(std::uint32_t));
  if (offset > bytes_.size() || length > bytes_.size() - offset) return {};
  return std::string_view(bytes_).substr(offset, length);
}

// Keys are in ascending order.
std::string_view Catalogue::translation(std::string_view key) const {
  std::size_t low = 0;
  std::size_t high = count_;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    const int order = textAt(keys_, middle).compare(key);
    if (order == 0) return textAt(translations_, middle);
    if (order < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return {};
}

Catalogue loadCatalogue(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error || size > kLargestFile) return {};
  std::ifstream file(path, std::ios::binary);
  std::string bytes(size, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return Catalogue(std::move(bytes));
}

}  // namespace kolum::osm_info
