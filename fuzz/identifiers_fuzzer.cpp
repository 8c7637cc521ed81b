// Reads the bytes as names of identifiers, and as numbers to convert back.
#include <kolum/identifiers.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  // The brand follows the name's terminator.
  const char* name = text.c_str();
  const std::size_t length = std::strlen(name);
  const char* brand = length < size ? name + length + 1 : "";
  unsigned number = 0;
  int profile = 0;
  ContainerFormatNameToID(name, brand, &number);
  ContainerFormatNameToID(name, nullptr, &number);
  CodecNameToID(name, &number);
  ProfileNameToID(name, &profile);
  PlayExceptionNameToID(name, &number);

  int numbers[2] = {};
  std::memcpy(numbers, data, size < sizeof numbers ? size : sizeof numbers);
  FF_ProfileToKO_Profile(ffmpegCodecIdConvert(numbers[0]), numbers[1]);
  FF_ProfileToKO_Profile(numbers[0], numbers[1]);
  return 0;
}
