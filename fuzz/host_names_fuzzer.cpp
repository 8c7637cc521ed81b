#include <kolum/host.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<char> word(std::strlen(text.c_str()) * 3 + 1);
  std::strcpy(word.data(), text.c_str());
  StringConvert2SystemCmdFilename(word.data());

  char name[64];
  if (StringConvert2LowerFileString(text.data(), static_cast<int>(text.size()), name,
                                    sizeof name) == 0) {
    // The result is a safe name: it has no separator and nothing that ends a quoted word.
    if (std::strpbrk(name, "/'\n") != nullptr || *name == '\0') std::abort();
  }
  return 0;
}
