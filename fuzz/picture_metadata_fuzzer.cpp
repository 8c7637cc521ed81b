// What coded pictures carry, and the texts of dates and places in films' tags.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "base/bytes.h"
#include "media/film_date.h"
#include "media/film_position.h"
#include "read/headers/picture_metadata.h"

namespace headers = kolum::headers;
namespace media = kolum::media;

namespace {

void readPictures(std::span<const std::uint8_t> bytes) {
  headers::PictureMetadata found;
  for (const auto syntax : {headers::NalSyntax::kH264, headers::NalSyntax::kHevc})
    for (std::size_t lengthSize = 0; lengthSize <= 4; ++lengthSize)
      headers::readNalUnits(bytes, syntax, lengthSize, found);
  headers::readHevcConfiguration(bytes, found);
  headers::readAv1Units(bytes, found);
  headers::readAv1Configuration(bytes, found);
  headers::readMpeg2Picture(bytes, found);
  const auto& display = found.masteringDisplay;
  if (display && display->luminance && !std::isfinite(display->luminance->highest)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span bytes(data, size);
  readPictures(bytes);
  const auto date = media::filmDateOf(kolum::textOf(bytes));
  if (date && (date->year < 1 || date->year > 9999 || (date->day && !date->month))) std::abort();
  const auto position = media::positionOf(kolum::textOf(bytes));
  if (position && !(std::abs(position->latitude) <= 90 && std::abs(position->longitude) <= 180))
    std::abort();
  return 0;
}
