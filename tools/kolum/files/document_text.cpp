#include "files/document_text.h"

#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "describe/json.h"
#include "describe/names.h"
#include "files/identifiers.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

// Values of a document; 0 or empty if it does not have them.

const Json* at(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

std::int64_t number(const Json& object, const char* key) {
  const Json* value = at(object, key);
  return value != nullptr ? value->get<std::int64_t>() : 0;
}

std::string text(const Json& object, const char* key) {
  const Json* value = at(object, key);
  return value != nullptr ? value->get<std::string>() : "";
}

bool isTrue(const Json& object, const char* key) {
  const Json* value = at(object, key);
  return value != nullptr && value->get<bool>();
}

int id(const Json& object, const char* key, int otherwise) {
  const Json* value = at(object, key);
  return value != nullptr ? value->at("id").get<int>() : otherwise;
}

std::string ratioText(std::int64_t num, std::int64_t den) {
  return std::to_string(num) + ":" + std::to_string(den);
}

std::string aspectText(const Json& document) {
  const std::int64_t num = number(document, "sampleAspectNum");
  const std::int64_t den = number(document, "sampleAspectDen");
  if (num == 0) return "";
  std::string shown = "shown as " + ratioText(number(document, "displayAspectNum"),
                                              number(document, "displayAspectDen"));
  if (num != den) shown += " (pixels " + ratioText(num, den) + ")";
  return shown;
}

std::string kindText(const Json& document) {
  return text(document.at("kind"), "name");
}

std::string containerText(const Json& document) {
  const Json* container = at(document, "containerFormat");
  if (container == nullptr) return "";
  return ContainerIdentifier{container->at("id").get<unsigned>()}.text();
}

std::string durationLine(const Json& document) {
  const Json* duration = at(document, "duration");
  return duration != nullptr ? durationText(static_cast<std::int64_t>(duration->get<double>()))
                             : "";
}

std::string bitRateOf(const Json& document, const char* key) {
  const std::int64_t rate = number(document, key);
  return rate != 0 ? bitRateText(static_cast<std::uint64_t>(rate)) : "";
}

std::string pictureText(const Json& document) {
  const Json* rate = at(document, "frameRate");
  return joined({pictureSizeText(number(document, "width"), number(document, "height")),
                 aspectText(document),
                 rate != nullptr ? decimalText(rate->get<double>(), 3) + " frames/s" : ""});
}

std::string rotationText(const Json& document) {
  switch (number(document, "orientation")) {
    case VIDEO_ORIENTATION_180:
      return "180 degrees";
    case VIDEO_ORIENTATION_270:
      return "270 degrees";
    case VIDEO_ORIENTATION_90:
      return "90 degrees";
    default:
      return "";
  }
}

std::string videoText(const Json& document) {
  if (at(document, "videoCodec") == nullptr) return "";
  const int codec = id(document, "videoCodec", 0);
  const Json* level = at(document, "videoLevel");
  return joined({codecText(codec, id(document, "videoProfile", PROFILE_UNKNOWN)),
                 levelText(codec, level != nullptr ? level->get<int>() : LEVEL_UNKNOWN),
                 bitRateOf(document, "videoBitRate")});
}

std::string audioText(const Json& document) {
  const auto known = [&](const char* key) {
    return static_cast<std::uint64_t>(number(document, key));
  };
  const Sound sound = {.sampleRate = known("sampleRate"),
                       .channels = known("channels"),
                       .bitsPerSample = known("bitsPerSample"),
                       .bitRate = known("audioBitRate")};
  const std::string codec =
      at(document, "audioCodec") != nullptr
          ? codecText(id(document, "audioCodec", 0), id(document, "audioProfile", PROFILE_UNKNOWN))
          : "";
  return joined({codec, soundText(sound)});
}

std::string named(const Json& document, const char* key, std::string_view prefix) {
  const Json* value = at(document, key);
  if (value == nullptr) return "";
  return Identifier{value->at("id").get<std::int64_t>(), text(*value, "name"), prefix}.text();
}

struct Line {
  const char* label;
  std::string (*text)(const Json& document);
};

// Those without a text are left out.
constexpr Line kLines[] = {
    {"Kind", kindText},
    {"Container", containerText},
    {"MIME type", [](const Json& d) { return text(d, "mimeType"); }},
    {"DLNA profile", [](const Json& d) { return text(d, "dlnaProfile"); }},
    {"Duration", durationLine},
    {"Bit rate", [](const Json& d) { return bitRateOf(d, "bitRate"); }},
    {"Picture", pictureText},
    {"Rotation", rotationText},
    {"360 degrees",
     [](const Json& d) { return std::string(isTrue(d, "is360") ? "yes, equirectangular" : ""); }},
    {"Video", videoText},
    {"Play exception",
     [](const Json& d) { return named(d, "playException", describe::playExceptions().prefix); }},
    {"Audio", audioText},
    {"Audio class",
     [](const Json& d) {
       return id(d, "audioClass", AUDIO_CLASS_NONE) != AUDIO_CLASS_NONE ? named(d, "audioClass", "")
                                                                        : "";
     }},
    {"Subtitles",
     [](const Json& d) {
       const std::int64_t count = number(d, "subtitleCount");
       return count != 0 ? std::to_string(count) : "";
     }},
    {"Created",
     [](const Json& d) {
       return at(d, "creationTime") != nullptr ? dateText(number(d, "creationTime")) : "";
     }},
    {"Content identifier", [](const Json& d) { return text(d, "contentIdentifier"); }},
    {"Album cover",
     [](const Json& d) {
       return std::string(isTrue(d, "isAlbumCover") ? "yes, by its name" : "");
     }},
};

}  // namespace

Result resultOf(const describe::Document& document) {
  Result result = Result::ofFile(document.path.given);
  const Json json = describe::jsonOf(document);
  result.data(json);
  if (document.failure) return result;
  for (const Line& line : kLines)
    if (std::string text = line.text(json); !text.empty()) result.show(line.label, std::move(text));
  return result;
}

}  // namespace kolum::tool
