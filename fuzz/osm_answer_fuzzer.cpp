// Reads the bytes as the place look-up tool's answer: both lists of a place keep the same length.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "geocode/osm_answer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  MediaLibrary::osm_place_s place{};
  const int result = kolum::geocode::readAnswer({reinterpret_cast<const char*>(data), size}, place);
  if (place.addresses.size() != place.addressParts.size()) std::abort();
  if (result == PLACE_FOUND && place.addresses.empty()) std::abort();
  return 0;
}
