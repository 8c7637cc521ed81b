// The edge of the library: what every exported function does around the one call that it is for.
#ifndef KOLUM_API_GUARDED_H
#define KOLUM_API_GUARDED_H

namespace kolum::api {

// What BODY answers, or FAILURE when it throws: nothing thrown leaves the library.
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
