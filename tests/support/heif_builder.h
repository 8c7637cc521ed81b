// HEIF pictures that are stored as tiles, from a real encoded frame.
#ifndef KOLUM_TESTS_SUPPORT_HEIF_BUILDER_H
#define KOLUM_TESTS_SUPPORT_HEIF_BUILDER_H

#include <string>

namespace kolum::test {

// A HEIC file of two tiles side by side, 128 x 128 each, whose grid shows 200 x 100 of their
// pixels.
std::string heicOfTiles();

}  // namespace kolum::test

#endif
