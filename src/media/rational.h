// Fractions, such as frame rates and time bases.
#ifndef KOLUM_MEDIA_RATIONAL_H
#define KOLUM_MEDIA_RATIONAL_H

namespace kolum::media {

struct Rational {
  int num = 0;
  int den = 0;
  bool operator==(const Rational&) const = default;
};

}  // namespace kolum::media

#endif
