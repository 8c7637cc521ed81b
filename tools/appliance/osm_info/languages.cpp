#include "osm_info/languages.h"

#include <kolum/geocode.h>

#include <algorithm>

namespace kolum::osm_info {

namespace {

using MediaLibrary::kPlaceLanguageCodes;

constexpr Language kLanguages[] = {
    {kPlaceLanguageCodes[PLACE_LANGUAGE_CS], "cs", "cs"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_DA], "da", "da"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_DE], "de", "de"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_EL], "el", "el"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_EN], "en", "en"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_ES], "es", "es"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_FI], "fi", "fi"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_FR], "fr", "fr"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_HU], "hu", "hu"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_IT], "it", "it"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_JA], "ja", "ja"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_KO], "ko", "ko"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_NL], "nl", "nl"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_NO], "no,nb,nn", "no,nb,nn"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_PL], "pl", "pl"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_PT], "pt", "pt,pt_BR"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_RO], "ro", "ro"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_RU], "ru", "ru"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_SV], "sv", "sv"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_TH], "th", "th"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_TR], "tr", "tr"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_ZH_CN], "zh-CN,zh-Hans,zh", "zh_CN,zh"},
    {kPlaceLanguageCodes[PLACE_LANGUAGE_ZH_TW], "zh-TW,zh-Hant,zh", "zh_TW,zh_HK,zh"},
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
