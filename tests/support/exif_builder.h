// Tags of photos, byte by byte: Exif's directories, and the containers that hold them.
#ifndef KOLUM_TESTS_SUPPORT_EXIF_BUILDER_H
#define KOLUM_TESTS_SUPPORT_EXIF_BUILDER_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kolum::test {

// Exif's types of values.
enum class ExifType : unsigned {
  kByte = 1,
  kAscii = 2,
  kShort = 3,
  kLong = 4,
  kRational = 5,
  kUndefined = 7,
  kSignedLong = 9,
  kSignedRational = 10,
};

struct ExifTag;
using ExifDirectory = std::vector<ExifTag>;

struct ExifTag {
  unsigned tag = 0;
  ExifType type = ExifType::kByte;
  std::vector<std::int64_t> numbers = {};       // rationals: two each
  std::string text = {};                        // of bytes and texts
  std::vector<ExifDirectory> directories = {};  // whose offsets are the value
};

ExifTag exifText(unsigned tag, const std::string& text);  // with a NUL at its end
ExifTag exifBytes(unsigned tag, const std::string& bytes);
ExifTag exifShort(unsigned tag, std::int64_t number);
ExifTag exifLong(unsigned tag, std::int64_t number);
ExifTag exifRational(unsigned tag, std::vector<std::int64_t> numbers);
ExifTag exifSignedRational(unsigned tag, std::int64_t num, std::int64_t den);
// A tag that refers to these directories.
ExifTag exifDirectories(unsigned tag, std::vector<ExifDirectory> directories);

// A TIFF structure whose first directories follow each other. MAGIC: the four bytes in front, for
// cameras that have their own.
std::string exifStructure(const std::vector<ExifDirectory>& chain, bool isBigEndian = false,
                          const std::string& magic = "");

// DIRECTORY with the Exif and GPS directories.
ExifDirectory photoDirectory(ExifDirectory directory, ExifDirectory exif, ExifDirectory gps = {});

// An XMP document with these CHILDREN in its description, where usual prefixes are declared.
std::string xmpDocument(const std::string& children);
std::string xmpList(const std::string& name, const std::string& kind,
                    const std::vector<std::string>& texts);

// Datasets of IPTC's record 2.
std::string iptcDatasets(const std::vector<std::pair<unsigned, std::string>>& datasets);

// What a photo says, as different containers hold it.
struct PhotoBlocks {
  std::string exif = {};
  std::string xmp = {};
  std::string iptc = {};
  std::string segments = {};  // further ones of a JPEG file
};
std::string jpegPhoto(const PhotoBlocks& blocks);
std::string pngPhoto(const PhotoBlocks& blocks);
std::string webpPhoto(const PhotoBlocks& blocks);
std::string gifPhoto(const std::string& xmp);
std::string jpegXlPhoto(const PhotoBlocks& blocks);
std::string compressedJpegXlPhoto(const PhotoBlocks& blocks);  // with Brotli

// A part of extended XMP, as a segment of a JPEG file.
std::string extendedXmpSegment(const std::string& guid, std::size_t total, std::size_t offset,
                               const std::string& part);

struct HeifShape {
  std::string brand = "heic";
  std::vector<std::string> properties = {};  // of the primary item, in this order
  bool isInMetaBox = false;                  // where the tags are
};
std::string heifPhoto(const PhotoBlocks& blocks, const HeifShape& shape = {});

// Canon's raw file: its own first directory, Exif's, the maker's notes and GPS.
std::string canonRaw3(const ExifDirectory& main, const ExifDirectory& exif,
                      const ExifDirectory& notes, const ExifDirectory& gps,
                      const std::string& xmp = "");

// Fujifilm's, with a JPEG picture inside.
std::string fujifilmRaw(const std::string& jpeg, unsigned width, unsigned height);

}  // namespace kolum::test

#endif
