#include "media/song_tags.h"

#include <array>

namespace kolum::media {

namespace {

constexpr std::array kCoverTypes = {
    "other",          "icon",          "other icon",    "front cover",  "back cover",
    "leaflet page",   "medium",        "lead artist",   "artist",       "conductor",
    "band",           "composer",      "lyricist",      "location",     "recording session",
    "performance",    "video capture", "coloured fish", "illustration", "band logo",
    "publisher logo",
};
static_assert(kCoverTypes.size() == 21);

}  // namespace

const char* coverTypeName(std::uint32_t number) noexcept {
  return number < kCoverTypes.size() ? kCoverTypes[number] : "";
}

}  // namespace kolum::media
