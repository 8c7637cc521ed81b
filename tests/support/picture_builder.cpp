#include "support/picture_builder.h"

#include <algorithm>

#include "support/mp4_builder.h"

namespace kolum::test {

std::string pngChunk(const std::string& type, const std::string& content) {
  return bigEndian(content.size(), 4) + type + content + bigEndian(0, 4);
}

std::string png(const PngShape& shape, const std::string& chunks) {
  return "\x89PNG\r\n\x1A\n" +
         pngChunk("IHDR", bigEndian(shape.width, 4) + bigEndian(shape.height, 4) +
                              bigEndian(shape.depth, 1) + bigEndian(shape.colourType, 1) +
                              bigEndian(shape.compression, 1) + bigEndian(shape.filter, 1) +
                              bigEndian(shape.interlacing, 1)) +
         chunks + pngChunk("IDAT", "data") + pngChunk("IEND", "");
}

std::string jpegSegment(unsigned marker, const std::string& content) {
  return bigEndian(0xFF00 | marker, 2) + bigEndian(content.size() + 2, 2) + content;
}

std::string jpegFileHeader(unsigned xDensity, unsigned yDensity) {
  constexpr unsigned kVersion = 0x0102;
  return jpegSegment(0xE0, std::string("JFIF\0", 5) + bigEndian(kVersion, 2) + bigEndian(0, 1) +
                               bigEndian(xDensity, 2) + bigEndian(yDensity, 2) + bigEndian(0, 2));
}

std::string jpegAdobe(unsigned transform) {
  return jpegSegment(0xEE, "Adobe" + bigEndian(100, 2) + bigEndian(0, 4) + bigEndian(transform, 1));
}

std::string jpegFrame(const JpegShape& shape) {
  std::string content = bigEndian(shape.depth, 1) + bigEndian(shape.height, 2) +
                        bigEndian(shape.width, 2) + bigEndian(shape.components.size(), 1);
  for (const JpegComponent& component : shape.components)
    content += bigEndian(component.id, 1) + bigEndian(component.sampling, 1) + bigEndian(0, 1);
  return jpegSegment(shape.marker, content);
}

std::string jpegScan(const std::string& data) {
  return jpegSegment(0xDA, bigEndian(1, 1) + bigEndian(1, 1) + bigEndian(0, 4)) + data;
}

std::string jpeg(const std::string& segments) {
  return "\xFF\xD8" + segments + jpegScan() + "\xFF\xD9";
}

std::string gif(unsigned width, unsigned height, unsigned aspect) {
  // No palette, and an image of one pixel.
  return "GIF89a" + littleEndian(width, 2) + littleEndian(height, 2) + littleEndian(0, 2) +
         littleEndian(aspect, 1) + "," + littleEndian(0, 4) + littleEndian(1, 2) +
         littleEndian(1, 2) + littleEndian(0, 1) + std::string("\x02\x02\x44\x01\x00;", 6);
}

std::string bmp(const BmpShape& shape) {
  constexpr std::size_t kFileHeader = 14;
  constexpr unsigned kOld = 12;
  const bool isOld = shape.infoSize == kOld;
  const int numbers = isOld ? 2 : 4;
  std::string info = littleEndian(shape.infoSize, 4) +
                     littleEndian(static_cast<std::uint32_t>(shape.width), numbers) +
                     littleEndian(static_cast<std::uint32_t>(shape.height), numbers) +
                     littleEndian(1, 2) + littleEndian(shape.depth, 2);
  if (!isOld) info += littleEndian(shape.compression, 4) + std::string(20, '\0');
  for (const std::uint32_t mask : shape.masks) info += littleEndian(mask, 4);
  info.resize(std::max<std::size_t>(info.size(), shape.infoSize));
  info += std::string(shape.palette, '\0');
  const std::size_t begin = kFileHeader + info.size();
  return "BM" + littleEndian(begin + shape.pixels.size(), 4) + littleEndian(0, 4) +
         littleEndian(begin, 4) + info + shape.pixels;
}

TiffTags tiffTags(unsigned samples, unsigned depth, unsigned interpretation) {
  return {{256, 3, {20}},
          {257, 3, {10}},
          {258, 3, std::vector<std::uint32_t>(samples, depth)},
          {259, 3, {1}},  // not compressed
          {262, 3, {interpretation}},
          {273, 4, {8}},
          {277, 3, {samples}},
          {278, 3, {10}},
          {279, 4, {100}},
          {284, 3, {1}}};
}

TiffTags withoutTag(TiffTags tags, unsigned tag) {
  std::erase_if(tags, [tag](const TiffTag& each) { return each.tag == tag; });
  return tags;
}

TiffTags withTags(TiffTags tags, const TiffTags& more) {
  for (const TiffTag& tag : more) {
    tags = withoutTag(std::move(tags), tag.tag);
    tags.push_back(tag);
  }
  std::sort(tags.begin(), tags.end(),
            [](const TiffTag& a, const TiffTag& b) { return a.tag < b.tag; });
  return tags;
}

std::string tiff(const TiffTags& tags, bool isBigEndian, std::size_t dataSize) {
  constexpr std::size_t kFileHeader = 8;
  constexpr int kSizes[] = {0, 1, 1, 2, 4, 4};
  constexpr unsigned kRational = 5;
  const auto number = [isBigEndian](std::uint64_t value, int size) {
    return isBigEndian ? bigEndian(value, size) : littleEndian(value, size);
  };
  std::string data(dataSize, 'x');
  std::string directory = number(tags.size(), 2);
  for (const TiffTag& tag : tags) {
    std::string values;
    for (const std::uint32_t value : tag.values) values += number(value, kSizes[tag.type]);
    const std::size_t count = tag.values.size() / (tag.type == kRational ? 2 : 1);
    directory += number(tag.tag, 2) + number(tag.type, 2) + number(count, 4);
    if (values.size() <= 4) {
      values.resize(4);
      directory += values;
    } else {
      directory += number(kFileHeader + data.size(), 4);
      data += values;
    }
  }
  return (isBigEndian ? std::string("MM\0*", 4) : std::string("II*\0", 4)) +
         number(kFileHeader + data.size(), 4) + data + directory + number(0, 4);
}

std::string webpChunk(const std::string& type, const std::string& content) {
  return type + littleEndian(content.size(), 4) + content + std::string(content.size() % 2, '\0');
}

std::string webp(const std::string& chunks) {
  return "RIFF" + littleEndian(chunks.size() + 4, 4) + "WEBP" + chunks;
}

std::string webpExtended(unsigned flags, unsigned width, unsigned height) {
  return webpChunk(
      "VP8X", littleEndian(flags, 4) + littleEndian(width - 1, 3) + littleEndian(height - 1, 3));
}

std::string webpLossy(unsigned width, unsigned height, const std::string& header) {
  return webpChunk("VP8 ", littleEndian(header.size() << 5 | 0x10, 3) + littleEndian(0x2A019D, 3) +
                               littleEndian(width, 2) + littleEndian(height, 2) + header +
                               std::string(20, '\0'));
}

std::string webpLossless(unsigned width, unsigned height, unsigned version) {
  const std::uint64_t sizes = (width - 1) | (height - 1) << 14 | version << 29;
  return webpChunk("VP8L", "\x2F" + littleEndian(sizes, 4) + std::string(20, '\0'));
}

}  // namespace kolum::test
