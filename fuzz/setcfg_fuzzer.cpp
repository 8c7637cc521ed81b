// Edits the bytes as the text of an ini file: the text around the value never depends on the value.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "../tools/appliance/setcfg/ini_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const kolum::setcfg::KeyPlace place(text, "S", "key");
  const std::string without = place.with("");
  for (const std::string& way : kolum::setcfg::waysToWrite("value", place.quote())) {
    const std::string with = place.with(way);
    if (with.size() != without.size() + way.size()) std::abort();
  }
  return 0;
}
