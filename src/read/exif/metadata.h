// The tags of a photo, decoded by Exiv2 and, if they are in XMP, by readXmp(). To be asked one by
// one.
#ifndef KOLUM_READ_EXIF_METADATA_H
#define KOLUM_READ_EXIF_METADATA_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/rational.h"
#include "read/exif/blocks.h"
#include "read/exif/exiv2.h"
#include "read/exif/xmp.h"

namespace kolum::exif {

// Exiv2's names of directories.
inline constexpr std::string_view kImage = "Image";
inline constexpr std::string_view kPhoto = "Photo";
inline constexpr std::string_view kGps = "GPSInfo";
inline constexpr std::string_view kInterop = "Iop";

struct Ratio {
  std::int64_t num = 0;
  std::int64_t den = 0;
  // Empty if the denominator is 0.
  std::optional<double> value() const;
};

class Metadata {
 public:
  // Decodes BLOCKS as far as possible. Throws std::bad_alloc only.
  explicit Metadata(const Blocks& blocks);
  Metadata(const Metadata&) = delete;
  Metadata& operator=(const Metadata&) = delete;

  // --- Exif. Where a tag is there several times, its first value counts.
  bool has(std::string_view group, unsigned tag) const { return find(group, tag) != nullptr; }
  Bytes bytes(std::string_view group, unsigned tag) const;
  std::string text(std::string_view group, unsigned tag) const;  // see paddedText()
  std::string utf16(std::string_view group, unsigned tag) const;
  // The value at INDEX. A ratio of a whole number has the denominator 1.
  std::optional<std::int64_t> integer(std::string_view group, unsigned tag,
                                      std::size_t index = 0) const;
  std::optional<Ratio> ratio(std::string_view group, unsigned tag, std::size_t index = 0) const;
  std::optional<double> number(std::string_view group, unsigned tag, std::size_t index = 0) const;
  // As Exiv2 words it for people.
  std::string meaning(std::string_view group, unsigned tag) const;
  bool isBigEndian() const { return isBigEndian_; }

  // --- XMP, with what is extended.
  const Xmp& xmp() const { return xmp_; }

  // --- IPTC, by the number of the dataset in record 2.
  std::string iptcText(unsigned dataset) const;
  std::vector<std::string> iptcTexts(unsigned dataset) const;

 private:
  struct Entry {
    unsigned tag;
    std::string group;
    const Exiv2::Exifdatum* datum;
  };

  void decodeExif(const Blocks& blocks);
  void decodeXmp(const Blocks& blocks);
  void decodeIptc(const Blocks& blocks);
  void makeIndex();
  const Exiv2::Exifdatum* find(std::string_view group, unsigned tag) const;

  Exiv2::ExifData exif_;
  Xmp xmp_;
  Exiv2::IptcData iptc_;
  bool isBigEndian_ = false;
  std::vector<Entry> index_;
};

// A decimal number; empty if TEXT is anything else.
std::optional<double> numberIn(std::string_view text);

}  // namespace kolum::exif

#endif
