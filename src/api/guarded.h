// The edge of the library: what every exported function does around its one call into it.
#ifndef KOLUM_API_GUARDED_H
#define KOLUM_API_GUARDED_H

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

}  // namespace kolum::api

#endif
