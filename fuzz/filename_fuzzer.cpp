#include <kolum/audio.h>
#include <kolum/filetype.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned kinds = data[0];
  const std::string name(reinterpret_cast<const char*>(data) + 1, size - 1);
  unsigned row = 0;
  unsigned tag = 0;
  const int kind = KoLUM_GetFilenameType(name.c_str(), &row, kinds, &tag);
  // Every kind but "none" has a row.
  if (kind != 0 && row == 0) std::abort();
  KoLUM_CheckSpecialCover(name.c_str());
  return 0;
}
