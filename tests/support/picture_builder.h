// Still pictures, byte by byte: headers as FFmpeg wants them, with hardly any pixels behind them.
#ifndef KOLUM_TESTS_SUPPORT_PICTURE_BUILDER_H
#define KOLUM_TESTS_SUPPORT_PICTURE_BUILDER_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kolum::test {

struct PngShape {
  unsigned width = 20;
  unsigned height = 10;
  unsigned depth = 8;
  unsigned colourType = 2;  // RGB
  unsigned compression = 0;
  unsigned filter = 0;
  unsigned interlacing = 0;
};

// A chunk with a wrong checksum, at which FFmpeg does not look.
std::string pngChunk(const std::string& type, const std::string& content);
// A file with these CHUNKS between its header and its data.
std::string png(const PngShape& shape, const std::string& chunks = "");

struct JpegComponent {
  unsigned id;
  unsigned sampling;  // horizontal and vertical, four bits each
};

struct JpegShape {
  unsigned width = 20;
  unsigned height = 10;
  unsigned marker = 0xC0;  // baseline
  unsigned depth = 8;
  std::vector<JpegComponent> components = {{1, 0x22}, {2, 0x11}, {3, 0x11}};
};

std::string jpegSegment(unsigned marker, const std::string& content);
std::string jpegFileHeader(unsigned xDensity = 1, unsigned yDensity = 1);  // JFIF
std::string jpegAdobe(unsigned transform);
std::string jpegFrame(const JpegShape& shape);
std::string jpegScan(const std::string& data = std::string(64, 'x'));
// A file of these SEGMENTS, a scan and the end.
std::string jpeg(const std::string& segments);

// ASPECT as stored: (15 + ASPECT) / 64, 0 for unknown.
std::string gif(unsigned width, unsigned height, unsigned aspect = 0);

struct BmpShape {
  int width = 20;
  int height = 10;
  unsigned depth = 24;
  unsigned compression = 0;
  unsigned infoSize = 40;
  std::size_t palette = 0;                // bytes
  std::vector<std::uint32_t> masks = {};  // red, green, blue, alpha
  std::string pixels = std::string(std::size_t{4000}, 'x');
};
std::string bmp(const BmpShape& shape);

// A tag's values: of type 1 (byte), 2 (text), 3 (short), 4 (long) or 5 (rational: two each).
struct TiffTag {
  unsigned tag;
  unsigned type;
  std::vector<std::uint32_t> values;
};
using TiffTags = std::vector<TiffTag>;
// Tags of a picture of 20 x 10 with samples of this depth.
TiffTags tiffTags(unsigned samples, unsigned depth, unsigned interpretation);
// TAGS with MORE instead of those with the same numbers, in the order of numbers.
TiffTags withTags(TiffTags tags, const TiffTags& more);
TiffTags withoutTag(TiffTags tags, unsigned tag);
// A file with some data and then the directory.
std::string tiff(const TiffTags& tags, bool isBigEndian = false, std::size_t dataSize = 100);

std::string webpChunk(const std::string& type, const std::string& content);
std::string webp(const std::string& chunks);
std::string webpExtended(unsigned flags, unsigned width, unsigned height);
// HEADER: the arithmetically coded one; zeros mean zero everywhere.
std::string webpLossy(unsigned width, unsigned height,
                      const std::string& header = std::string(64, '\0'));
std::string webpLossless(unsigned width, unsigned height, unsigned version = 0);

}  // namespace kolum::test

#endif
