#include "describe/warnings.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/text.h"
#include "describe/document.h"

namespace kolum::describe {

namespace {

// What files with these extensions may contain. Both are lists with a space before and after each.
struct NamedContent {
  std::string_view extensions;
  std::string_view types;
};

constexpr auto kNamedContents = std::to_array<NamedContent>({
    {" .jpg .jpeg .jpe .jps .mpo .insp ", " image/jpeg "},
    {" .png ", " image/png "},
    {" .gif ", " image/gif "},
    {" .bmp ", " image/bmp "},
    {" .tif .tiff ", " image/tiff "},
    {" .webp ", " image/webp "},
    {" .heic .heif ", " image/heic image/heic-sequence image/heif image/heif-sequence "},
    {" .avif ", " image/avif "},
    {" .jxl ", " image/jxl "},
    {" .mp4 .m4v .mov .qt .3gp .3g2 .m4a .m4b ",
     " video/mp4 audio/mp4 video/quicktime video/3gpp video/3gpp2 "},
    {" .mkv .mka .mk3d .webm ", " video/x-matroska video/webm "},
    {" .avi ", " video/x-msvideo "},
    {" .asf .wmv .wma ", " video/x-ms-asf "},
    {" .flv ", " video/x-flv "},
    {" .rm .rmvb ", " application/vnd.rn-realmedia "},
    {" .mpg .mpeg .vob ", " video/mpeg video/mp2t "},
    {" .ts .m2ts .mts .m2t ", " video/mp2t "},
    {" .ogg .oga .ogv .opus ", " video/ogg "},
    {" .flac ", " audio/flac video/ogg "},
    {" .wav ", " audio/vnd.wave audio/vnd.dts audio/ac3 "},
    {" .aif .aiff .aifc ", " audio/aiff "},
    {" .mp3 ", " audio/mpeg "},
    {" .aac ", " audio/aac "},
    {" .ape ", " audio/x-ape "},
    {" .wv ", " audio/x-wavpack "},
    {" .dsf ", " audio/x-dsf "},
    {" .dff ", " audio/x-dff "},
});

bool contains(std::string_view list, std::string_view word) {
  return list.find(" " + std::string(word) + " ") != std::string_view::npos;
}

std::optional<std::string> misnamed(const Document& document) {
  std::string extension(extensionOf(document.path.name));
  for (char& c : extension) c = lowerCase(c);
  const std::string& type = document.found.content.type;
  if (type.empty() || extension.empty()) return std::nullopt;
  const auto* row = std::find_if(
      kNamedContents.begin(), kNamedContents.end(),
      [&](const NamedContent& named) { return contains(named.extensions, extension); });
  if (row == kNamedContents.end() || contains(row->types, type)) return std::nullopt;
  return "named " + extension + ", but its content is " + type;
}

std::optional<std::string> truncated(const Document& document) {
  if (!document.found.content.isTruncated) return std::nullopt;
  return "its end is missing";
}

std::optional<std::string> pictureAsVideo(const Document& document) {
  const auto& container = document.found.container;
  if (!document.video || document.isDisc || !container) return std::nullopt;
  const bool isPicture = document.found.content.type.starts_with("image/");
  if (!isPicture && container->hasFilm()) return std::nullopt;
  return "has no film, only a picture, which counts as one";
}

std::optional<std::string> incompleteDisc(const Document& document) {
  if (!document.disc || !document.disc->isIncomplete) return std::nullopt;
  return "its index files list more than is read: titles, chapters or streams are left out";
}

std::optional<std::string> placeUnknown(const Document& document) {
  if (document.placeTrouble.empty()) return std::nullopt;
  return document.placeTrouble;
}

struct Rule {
  std::string_view code;
  std::optional<std::string> (*reason)(const Document& document);
};

// Programs compare these codes: none may change; new ones may be added.
constexpr auto kRules = std::to_array<Rule>({
    {"misnamed", misnamed},
    {"truncated", truncated},
    {"picture-as-video", pictureAsVideo},
    {"incomplete-disc", incompleteDisc},
    {"place-unknown", placeUnknown},
});

}  // namespace

std::vector<Warning> warningsOf(const Document& document) {
  std::vector<Warning> warnings;
  for (const Rule& rule : kRules)
    if (auto reason = rule.reason(document)) warnings.push_back({rule.code, std::move(*reason)});
  return warnings;
}

std::vector<std::string_view> codesOfWarnings() {
  std::vector<std::string_view> codes;
  codes.reserve(kRules.size());
  for (const Rule& rule : kRules) codes.push_back(rule.code);
  return codes;
}

}  // namespace kolum::describe
