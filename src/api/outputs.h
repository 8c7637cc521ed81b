// Writing facts to callers' outputs.
#ifndef KOLUM_API_OUTPUTS_H
#define KOLUM_API_OUTPUTS_H

#include <optional>
#include <string_view>

#include "base/text.h"

namespace kolum::api {

// A null output is skipped.
template <typename Output, typename Value>
void put(Output* output, const Value& value) {
  if (output != nullptr) *output = static_cast<Output>(value);
}

// An unknown fact leaves the output unchanged.
template <typename Output, typename Fact>
void put(Output* output, const std::optional<Fact>& fact) {
  if (output != nullptr && fact) *output = static_cast<Output>(*fact);
}

// So does an empty text. SIZE is that of the caller's buffer.
inline void putText(char* output, std::size_t size, std::string_view text) {
  if (output != nullptr && !text.empty()) copyText(output, size, text);
}

}  // namespace kolum::api

#endif
