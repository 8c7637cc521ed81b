// The edge of the library: what every exported function does around its one call into it.
#ifndef KOLUM_API_GUARDED_H
#define KOLUM_API_GUARDED_H

#include "base/trace.h"

namespace kolum::api {

// Returns what BODY returns, or FAILURE if it throws: no exception leaves the library.
template <typename Result, typename Body>
Result guarded(Result failure, const Body& body) noexcept {
  try {
    return body();
  } catch (...) {
    return failure;
  }
}

// Writes what hosts read on standard output, on standard error and in their debug log.
void write(const Trace& trace);

}  // namespace kolum::api

#endif
