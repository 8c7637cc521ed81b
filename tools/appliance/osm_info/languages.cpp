#include "osm_info/languages.h"

#include <algorithm>

namespace kolum::osm_info {

namespace {

constexpr Language kLanguages[] = {
    {"cs", "cs", "cs"},
    {"da", "da", "da"},
    {"de", "de", "de"},
    {"el", "el", "el"},
    {"en", "en", "en"},
    {"es", "es", "es"},
    {"fi", "fi", "fi"},
    {"fr", "fr", "fr"},
    {"hu", "hu", "hu"},
    {"it", "it", "it"},
    {"ja", "ja", "ja"},
    {"ko", "ko", "ko"},
    {"nl", "nl", "nl"},
    {"no", "no,nb,nn", "no,nb,nn"},
    {"pl", "pl", "pl"},
    {"pt", "pt", "pt,pt_BR"},
    {"ro", "ro", "ro"},
    {"ru", "ru", "ru"},
    {"sv", "sv", "sv"},
    {"th", "th", "th"},
    {"tr", "tr", "tr"},
    {"zh-cn", "zh-CN,zh-Hans,zh", "zh_CN,zh"},
    {"zh-tw", "zh-TW,zh-Hant,zh", "zh_TW,zh_HK,zh"},
};

}  // namespace

std::span<const Language> languages() {
  return kLanguages;
}

const Language* findLanguage(std::string_view code) {
  const auto* found = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                   [code](const Language& one) { return one.code == code; });
  return found != std::end(kLanguages) ? found : nullptr;
}

}  // namespace kolum::osm_info
