#include "files/columns.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "files/csv.h"
#include "files/fields.h"

namespace kolum::tool {

namespace {

struct Column {
  const char* title;  // never changes
  const char* field;  // the key, as for --fields
  bool isOfLibrary = false;
};

// New ones are added at the end, with the field as title.
constexpr Column kColumns[] = {
    {"file", "file"},
    {"fileBytes", "fileBytes"},
    {"kind", "kind.name"},
    {"size", "size"},
    {"modified", "modified"},
    {"state", "state", true},
    {"errorCode", "error.code", true},
    {"errorReason", "error.reason", true},
    {"mimeType", "mimeType"},
    {"containerFormat", "containerFormat.name"},
    {"brand", "containerFormat.brand"},
    {"dlnaProfile", "dlnaProfile"},
    {"duration", "duration"},
    {"bitRate", "bitRate"},
    {"width", "width"},
    {"height", "height"},
    {"frameRate", "frameRate"},
    {"orientation", "orientation"},
    {"videoCodec", "videoCodec.name"},
    {"videoProfile", "videoProfile.name"},
    {"videoLevel", "videoLevel"},
    {"videoBitRate", "videoBitRate"},
    {"audioCodec", "audioCodec.name"},
    {"audioProfile", "audioProfile.name"},
    {"audioBitRate", "audioBitRate"},
    {"sampleRate", "sampleRate"},
    {"bitsPerSample", "bitsPerSample"},
    {"channels", "channels"},
    {"creationDate", "creationDate"},
    {"creationTime", "creationTime"},
    {"pixelFormatName", "pixelFormatName"},
    {"isAlbumCover", "isAlbumCover"},
    {"title", "title"},
    {"artist", "artist"},
    {"albumArtist", "albumArtist"},
    {"album", "album"},
    {"genre", "genre"},
    {"track", "track"},
    {"year", "year"},
    {"contentType", "contentType"},
    {"fingerprint", "fingerprint"},
    {"warnings.code", "warnings.code"},
    {"composer", "composer"},
    {"trackTotal", "trackTotal"},
    {"disc", "disc"},
    {"discTotal", "discTotal"},
    {"date", "date"},
    {"originalDate", "originalDate"},
    {"comment", "comment"},
    {"hasLyrics", "hasLyrics"},
    {"languages", "languages"},
    {"compilation", "compilation"},
    {"replayGain.trackGain", "replayGain.trackGain"},
    {"replayGain.albumGain", "replayGain.albumGain"},
    {"musicBrainz.recording", "musicBrainz.recording"},
    {"musicBrainz.release", "musicBrainz.release"},
    {"covers.type", "covers.type"},
    {"show", "show"},
    {"season", "season"},
    {"episode", "episode"},
    {"description", "description"},
    {"directors", "directors"},
    {"actors", "actors"},
    {"created", "created"},
    {"createdZone", "createdZone"},
    {"mainTitle", "mainTitle"},
    {"taken", "taken"},
    {"takenOffsetFrom", "takenOffsetFrom"},
    {"camera.make", "camera.make"},
    {"camera.model", "camera.model"},
    {"lens.model", "lens.model"},
    {"exposureTime", "exposureTime"},
    {"aperture", "aperture"},
    {"iso", "iso"},
    {"focalLength", "focalLength"},
    {"position.latitude", "position.latitude"},
    {"position.longitude", "position.longitude"},
    {"position.altitude", "position.altitude"},
    {"rotation", "rotation"},
    {"shownWidth", "shownWidth"},
    {"shownHeight", "shownHeight"},
    {"headline", "headline"},
    {"caption", "caption"},
    {"keywords", "keywords"},
    {"rating", "rating"},
    {"people.name", "people.name"},
    {"creators", "creators"},
    {"copyright", "copyright"},
    {"streams.type", "streams.type"},
    {"streams.language", "streams.language"},
    {"streams.dynamicRange", "streams.dynamicRange"},
    {"place.name", "place.name"},
    {"place.region", "place.region"},
    {"place.country", "place.country"},
    {"place.distance", "place.distance"},
};

template <typename Text>
std::string row(Columns columns, const Text& text) {
  std::vector<std::string> values;
  for (const Column& column : kColumns)
    if (columns == Columns::kOfLibrary || !column.isOfLibrary) values.push_back(text(column));
  return csvRow(values);
}

}  // namespace

std::string csvTitles(Columns columns) {
  return row(columns, [](const Column& column) { return std::string(column.title); });
}

std::string csvRow(const nlohmann::ordered_json& document, Columns columns) {
  return row(columns, [&](const Column& column) { return fieldText(document, column.field); });
}

}  // namespace kolum::tool
