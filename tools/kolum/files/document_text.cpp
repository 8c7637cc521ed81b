#include "files/document_text.h"

#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "describe/json.h"
#include "describe/names.h"
#include "files/columns.h"
#include "files/csv.h"
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

// --- Tags

// "Tones, by The Oscillators" if the album is not the artist's.
std::string albumText(const Json& document) {
  std::string album = text(document, "album");
  const std::string artist = text(document, "albumArtist");
  if (!album.empty() && !artist.empty() && artist != text(document, "artist"))
    album += ", by " + artist;
  return album;
}

// "3 of 12"; empty if the number is unknown.
std::string ofTotal(const Json& document, const char* key, const char* total) {
  if (number(document, key) == 0) return "";
  std::string said = std::to_string(number(document, key));
  if (number(document, total) != 0) said += " of " + std::to_string(number(document, total));
  return said;
}

std::string trackText(const Json& document) {
  const std::string disc = ofTotal(document, "disc", "discTotal");
  return joined({ofTotal(document, "track", "trackTotal"), disc.empty() ? "" : "disc " + disc});
}

std::string showText(const Json& document) {
  const auto numbered = [&](const char* key) {
    return at(document, key) != nullptr
               ? std::string(key) + " " + std::to_string(number(document, key))
               : "";
  };
  return joined({text(document, "show"), numbered("season"), numbered("episode")});
}

// A moment with a space before its time of day.
std::string momentText(const Json& document, const char* key) {
  std::string moment = text(document, key);
  if (const std::size_t time = moment.find('T'); time != std::string::npos) moment[time] = ' ';
  return moment;
}

std::string listText(const Json& document, const char* key) {
  const Json* values = at(document, key);
  return values != nullptr ? joined(values->get<std::vector<std::string>>()) : "";
}

std::string coverText(const Json& document) {
  const Json* covers = at(document, "covers");
  if (covers == nullptr) return "";
  const Json& first = covers->front();
  return joined({text(first, "type"), text(first, "mimeType"),
                 pictureSizeText(number(first, "width"), number(first, "height"))});
}

// --- Photos

std::string deviceText(const Json& document, const char* key) {
  const Json* device = at(document, key);
  if (device == nullptr) return "";
  const std::string make = text(*device, "make");
  const std::string model = text(*device, "model");
  return make + (make.empty() || model.empty() ? "" : " ") + model;
}

std::string decimal(const Json& document, const char* key, const char* before, const char* after) {
  constexpr int kDigits = 3;
  const Json* value = at(document, key);
  return value != nullptr ? before + decimalText(value->get<double>(), kDigits) + after : "";
}

// "1/250 s", or "2.5 s".
std::string exposureTimeText(const Json& document) {
  const Json* time = at(document, "exposureTime");
  if (time == nullptr) return "";
  const auto seconds = time->get<double>();
  constexpr double kLongestFraction = 0.3;
  if (seconds > kLongestFraction || seconds <= 0)
    return decimal(document, "exposureTime", "", " s");
  return "1/" + decimalText(1 / seconds, 0) + " s";
}

std::string exposureText(const Json& document) {
  const Json* flash = at(document, "flash");
  return joined({exposureTimeText(document), decimal(document, "aperture", "f/", ""),
                 decimal(document, "iso", "ISO ", ""), decimal(document, "focalLength", "", " mm"),
                 flash != nullptr && isTrue(*flash, "fired") ? "flash" : ""});
}

std::string turningText(const Json& document) {
  if (at(document, "orientation") != nullptr) return rotationText(document);
  const std::int64_t degrees = number(document, "rotation");
  return joined({degrees != 0 ? std::to_string(degrees) + " degrees" : "",
                 isTrue(document, "mirrored") ? "mirrored" : ""});
}

std::string positionText(const Json& document) {
  constexpr int kDigits = 6;
  const Json* position = at(document, "position");
  if (position == nullptr || at(*position, "latitude") == nullptr) return "";
  return joined({decimalText(position->at("latitude").get<double>(), kDigits),
                 decimalText(position->at("longitude").get<double>(), kDigits),
                 decimal(*position, "altitude", "", " m")});
}

// "Munich, Bavaria, Germany (1.2 km)"
std::string placeText(const Json& document) {
  const Json* place = at(document, "place");
  if (place == nullptr) return "";
  constexpr std::int64_t kMetresPerKm = 1000;
  const auto metres = number(*place, "distance");
  const std::string distance =
      metres < kMetresPerKm
          ? std::to_string(metres) + " m"
          : decimalText(static_cast<double>(metres) / static_cast<double>(kMetresPerKm), 1) + " km";
  return joined({text(*place, "name"), text(*place, "region"), text(*place, "country")}) + " (" +
         distance + ")";
}

std::string addressText(const Json& document) {
  const Json* address = at(document, "address");
  if (address == nullptr) return "";
  return joined({text(*address, "location"), text(*address, "city"), text(*address, "state"),
                 text(*address, "country")});
}

std::string peopleText(const Json& document) {
  std::vector<std::string> names;
  if (const Json* people = at(document, "people"))
    for (const Json& person : *people) names.push_back(text(person, "name"));
  return joined(names);
}

// --- Streams

// What the streams of a type say under a key, each once.
std::string inStreams(const Json& document, std::string_view type, const char* key) {
  std::vector<std::string> found;
  if (const Json* streams = at(document, "streams")) {
    for (const Json& stream : *streams) {
      const std::string value = text(stream, "type") == type ? text(stream, key) : "";
      if (value != "und" && std::find(found.begin(), found.end(), value) == found.end())
        found.push_back(value);
    }
  }
  return joined(found);
}

std::string dynamicRangeText(const Json& document) {
  if (const Json* streams = at(document, "streams"))
    for (const Json& stream : *streams)
      if (std::string range = listText(stream, "dynamicRange"); !range.empty()) return range;
  return "";
}

std::string subtitlesText(const Json& document) {
  const std::int64_t count = number(document, "subtitleCount");
  const std::string languages = inStreams(document, "subtitle", "language");
  return count != 0 && languages.empty() ? std::to_string(count) : languages;
}

// --- Discs

std::string titleCountText(const Json& document) {
  const Json* titles = at(document, "titles");
  return titles != nullptr ? std::to_string(titles->size()) : "";
}

// "2, 1:52:03, 24 chapters, audio en de, subtitles de; the longest title"
std::string mainTitleText(const Json& document) {
  const std::int64_t main = number(document, "mainTitle");
  if (main == 0) return "";
  const Json& title = document.at("titles").at(static_cast<std::size_t>(main) - 1);
  const auto spaced = [&](const char* label, const char* key) {
    std::string said;
    if (const Json* values = at(title, key))
      for (const Json& value : *values) said += " " + value.get<std::string>();
    return said.empty() ? said : label + said;
  };
  const std::int64_t chapters = number(title, "chapterCount");
  const std::string facts = joined(
      {std::to_string(main), durationLine(title),
       chapters != 0 ? std::to_string(chapters) + (chapters == 1 ? " chapter" : " chapters") : "",
       spaced("audio", "audioLanguages"), spaced("subtitles", "subtitleLanguages")});
  return facts + "; " + text(document, "mainTitleReason");
}

std::string chaptersText(const Json& document) {
  const Json* chapters = at(document, "chapters");
  return chapters != nullptr ? std::to_string(chapters->size()) : "";
}

struct Line {
  const char* label;
  std::string (*text)(const Json& document);
};

// Those without a text are left out.
constexpr Line kLines[] = {
    {"Kind", kindText},
    {"Title", [](const Json& d) { return text(d, "title"); }},
    {"Artist", [](const Json& d) { return text(d, "artist"); }},
    {"Album", albumText},
    {"Track", trackText},
    {"Show", showText},
    {"Genre", [](const Json& d) { return text(d, "genre"); }},
    {"Composer", [](const Json& d) { return text(d, "composer"); }},
    {"Date", [](const Json& d) { return momentText(d, "date"); }},
    {"Taken", [](const Json& d) { return momentText(d, "taken"); }},
    {"Caption", [](const Json& d) { return text(d, "caption"); }},
    {"Keywords", [](const Json& d) { return listText(d, "keywords"); }},
    {"People", peopleText},
    {"Position", positionText},
    {"Place", placeText},
    {"Address", addressText},
    {"Camera", [](const Json& d) { return deviceText(d, "camera"); }},
    {"Lens", [](const Json& d) { return deviceText(d, "lens"); }},
    {"Exposure", exposureText},
    {"Container", containerText},
    {"MIME type", [](const Json& d) { return text(d, "mimeType"); }},
    {"DLNA profile", [](const Json& d) { return text(d, "dlnaProfile"); }},
    {"Duration", durationLine},
    {"Bit rate", [](const Json& d) { return bitRateOf(d, "bitRate"); }},
    {"Picture", pictureText},
    {"Rotation", turningText},
    {"Dynamic range", dynamicRangeText},
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
    {"Languages", [](const Json& d) { return inStreams(d, "audio", "language"); }},
    {"Subtitles", subtitlesText},
    {"Chapters", chaptersText},
    {"Titles", titleCountText},
    {"Main title", mainTitleText},
    {"Cover", coverText},
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

// Every value under its path.
void addAll(Result& result, const Json& value, const std::string& path) {
  if (value.is_object()) {
    const std::string before = path.empty() ? "" : path + ".";
    for (const auto& [key, member] : value.items()) addAll(result, member, before + key);
  } else if (value.is_array() && !value.empty() && value.front().is_object()) {
    for (std::size_t i = 0; i < value.size(); ++i)
      addAll(result, value[i], std::string(path).append("[").append(std::to_string(i)).append("]"));
  } else if (value.is_array()) {
    for (const Json& element : value) result.show(path, plainText(element));
  } else if (path != "file" && path != "fileBytes") {
    result.show(path, plainText(value));
  }
}

void addFields(Result& result, const Json& json, const View& view) {
  const Fields& fields = *view.fields;
  std::vector<std::string> values = fields.values(json);
  if (view.isCsv) {
    if (fields.names().front() != "file") values.insert(values.begin(), plainText(json.at("file")));
    return result.setLine(csvRow(values));
  }
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!values[i].empty()) result.show(fields.names()[i], values[i]);
}

}  // namespace

Result resultOf(const describe::Document& document, const View& view) {
  Result result = Result::ofFile(document.path.given);
  Json json = Json::parse(describe::jsonOf(document));
  json.erase("schema");  // every result gets it when it is printed
  result.data(view.fields ? view.fields->of(json) : json);
  if (document.failure) return result;
  if (view.fields) {
    addFields(result, json, view);
    return result;
  }
  if (view.isCsv) {
    result.setLine(csvRow(json, Columns::kOfDocuments));
    return result;
  }
  if (view.isVerbose) {
    addAll(result, json, "");
    return result;
  }
  for (const Line& line : kLines)
    if (std::string text = line.text(json); !text.empty()) result.show(line.label, std::move(text));
  return result;
}

}  // namespace kolum::tool
