// Reads the bytes as an XMP packet. Whatever it says, texts are within their limits, and a packet
// adds nothing to itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/utf8.h"
#include "media/photo_tags.h"
#include "read/exif/xmp.h"

namespace {

using kolum::exif::Xmp;
using kolum::exif::XmpProperty;

void check(bool isTrue) {
  if (!isTrue) std::abort();
}

void checkTexts(const Xmp& xmp, XmpProperty property) {
  const auto texts = xmp.texts(property);
  check(texts.size() <= kolum::media::kMostPhotoTexts);
  for (const auto& text : texts)
    check(text.size() <= kolum::media::kLongestPhotoText && kolum::isUtf8(text));
  check(texts.empty() == xmp.text(property).empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view packet(reinterpret_cast<const char*>(data), size);
  const Xmp xmp = kolum::exif::readXmp(packet);
  Xmp twice = xmp;
  twice.complete(xmp);
  for (std::size_t i = 0; i < kolum::exif::kXmpProperties; ++i) {
    const auto property = static_cast<XmpProperty>(i);
    checkTexts(xmp, property);
    check(twice.texts(property) == xmp.texts(property));
    check(twice.items(property) == xmp.items(property));
    for (unsigned item = 0; item < 3; ++item)
      check(twice.text(property, item) == xmp.text(property, item));
  }
  return 0;
}
