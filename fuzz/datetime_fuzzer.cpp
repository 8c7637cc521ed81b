#include <kolum/datetime.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "probe/creation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  DateTimeStringToSeconds(text.c_str());
  kolum::probe::creationOfStream(text);
  kolum::probe::creationOfQuickTime(text);
  if (isYYYYMMDD(text.data()) == 1) {
    // An accepted date is now in year-first order and must be accepted again.
    const std::string ordered = text;
    if (isYYYYMMDD(text.data()) != 1 || text != ordered) std::abort();
  }
  return 0;
}
