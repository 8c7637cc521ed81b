#include "commands/languages.h"

namespace kolum::tool {

namespace {

constexpr std::string_view kLanguages[] = {
    "cs", "da", "de", "el", "en", "es", "fi", "fr", "hu", "it",    "ja",    "ko",
    "nl", "no", "pl", "pt", "ro", "ru", "sv", "th", "tr", "zh-cn", "zh-tw",
};

}  // namespace

std::span<const std::string_view> placeLanguages() {
  return kLanguages;
}

}  // namespace kolum::tool
