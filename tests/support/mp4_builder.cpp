#include "support/mp4_builder.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>

#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

constexpr std::size_t kHeaderSize = 8;

void writeFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary);
  out << content;
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

std::size_t sizeAt(const std::string& file, std::size_t offset) {
  std::size_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | static_cast<unsigned char>(file.at(offset + i));
  return value;
}

// Where the first box of this type starts among the boxes from BEGIN to END.
std::size_t findBox(const std::string& file, std::size_t begin, std::size_t end,
                    const std::string& type) {
  for (std::size_t at = begin; at + kHeaderSize <= end; at += sizeAt(file, at)) {
    if (file.compare(at + 4, 4, type) == 0) return at;
    if (sizeAt(file, at) < kHeaderSize) break;
  }
  throw std::runtime_error("no " + type + " box");
}

std::size_t findChild(const std::string& file, std::size_t parent, const std::string& type) {
  return findBox(file, parent + kHeaderSize, parent + sizeAt(file, parent), type);
}

void growBox(std::string& file, std::size_t offset, std::size_t by) {
  file.replace(offset, 4, bigEndian(sizeAt(file, offset) + by, 4));
}

}  // namespace

std::string bigEndian(std::uint64_t value, int size) {
  std::string bytes;
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
    bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

std::string littleEndian(std::uint64_t value, int size) {
  const std::string bytes = bigEndian(value, size);
  return {bytes.rbegin(), bytes.rend()};
}

std::string box(const std::string& type, const std::string& payload) {
  return bigEndian(kHeaderSize + payload.size(), 4) + type + payload;
}

std::string largeBox(const std::string& type, const std::string& payload) {
  return bigEndian(1, 4) + type + bigEndian(2 * kHeaderSize + payload.size(), 8) + payload;
}

std::string fullBox(const std::string& type, int version, std::uint32_t flags,
                    const std::string& payload) {
  return box(type, static_cast<char>(version) + bigEndian(flags, 3) + payload);
}

std::string ftyp(const std::string& brand, const std::vector<std::string>& compatibleBrands) {
  std::string payload = brand + bigEndian(0, 4);
  for (const std::string& compatible : compatibleBrands) payload += compatible;
  return box("ftyp", payload);
}

TrackMatrix rotationMatrix(int degrees, bool flipped) {
  const double angle = degrees * std::numbers::pi / 180;
  const auto fixed = [](double value) {
    return static_cast<std::int32_t>(std::lround(value * 65536));
  };
  const double mirror = flipped ? -1 : 1;
  return {fixed(mirror * std::cos(angle)),
          fixed(mirror * std::sin(angle)),
          0,
          fixed(-std::sin(angle)),
          fixed(std::cos(angle)),
          0,
          0,
          0,
          1 << 30};
}

std::string withTrackMatrix(const std::string& mp4Path, const TrackMatrix& matrix) {
  std::string numbers;
  for (const std::int32_t number : matrix)
    numbers += bigEndian(static_cast<std::uint32_t>(number), 4);
  const std::string name = std::filesystem::path(mp4Path).filename();
  return made(name, "matrix " + mp4Path + numbers, [&](const std::string& path) {
    std::string file = contentOf(mp4Path);
    const std::size_t movie = findBox(file, 0, file.size(), "moov");
    const std::size_t header = findChild(file, findChild(file, movie, "trak"), "tkhd");
    constexpr std::size_t kMatrixOffset = 48;
    constexpr std::size_t kMatrixOffsetOfVersion1 = 60;
    const bool isVersion1 = file.at(header + kHeaderSize) == 1;
    file.replace(header + (isVersion1 ? kMatrixOffsetOfVersion1 : kMatrixOffset), numbers.size(),
                 numbers);
    writeFile(path, file);
  });
}

std::string withDescriptionBoxes(const std::string& mp4Path, const std::string& boxes) {
  const std::string name = std::filesystem::path(mp4Path).filename();
  return made(name, "boxes " + mp4Path + boxes, [&](const std::string& path) {
    std::string file = contentOf(mp4Path);
    std::vector<std::size_t> parents = {findBox(file, 0, file.size(), "moov")};
    for (const char* type : {"trak", "mdia", "minf", "stbl", "stsd"})
      parents.push_back(findChild(file, parents.back(), type));
    // The first sample description, after version, flags and the number of descriptions.
    parents.push_back(parents.back() + kHeaderSize + 8);
    file.insert(parents.back() + sizeAt(file, parents.back()), boxes);
    for (const std::size_t parent : parents) growBox(file, parent, boxes.size());
    writeFile(path, file);
  });
}

std::string withSphericalBox(const std::string& mp4Path, const std::string& projection) {
  const std::string zeros(16, '\0');
  const std::string sphere =
      box("sv3d", fullBox("svhd", 0, 0, std::string("test") + '\0') +
                      box("proj", fullBox("prhd", 0, 0, zeros.substr(0, 12)) +
                                      fullBox(projection, 0, 0, zeros)));
  return withDescriptionBoxes(mp4Path, sphere);
}

}  // namespace kolum::test
