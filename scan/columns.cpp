#include "scan/columns.h"

#include <array>
#include <string_view>

namespace kolum::scan {

namespace {

constexpr unsigned kAll = kVideos | kSongs | kPhotos;

// To add a column, add a row at the end with the next version of the schema, and one to
// docs/library.md; the migration follows from it. Rows never change once a release has them:
// libraries of every version are compared with what their rows make.
constexpr Column kColumns[] = {
    {"content_type", From::kValue, "contentType", kAll},
    {"fingerprint", From::kValue, "fingerprint", kAll},
    {"warnings", From::kMembers, "warnings[].code", kAll},
    {"date_from", From::kDateKey, "", kAll},
    {"tags", From::kTags, "", kAll},
    {"title", From::kFiles, "title", kVideos | kPhotos},
    {"artist", From::kFiles, "artist", kVideos},
    {"genre", From::kFiles, "genre", kVideos},
    {"year", From::kFiles, "year", kVideos},
    {"composer", From::kValue, "composer", kSongs},
    {"conductors", From::kList, "conductors", kSongs},
    {"lyricists", From::kList, "lyricists", kSongs},
    {"performers", From::kMembers, "performers[].name", kSongs},
    {"track_total", From::kValue, "trackTotal", kSongs},
    {"disc", From::kValue, "disc", kSongs},
    {"disc_total", From::kValue, "discTotal", kSongs},
    {"tagged_date", From::kValue, "date", kVideos | kSongs},
    {"original_date", From::kValue, "originalDate", kSongs},
    {"release_date", From::kValue, "releaseDate", kSongs},
    {"comment", From::kValue, "comment", kVideos | kSongs},
    {"has_lyrics", From::kValue, "hasLyrics", kSongs},
    {"lyrics_language", From::kValue, "lyricsLanguage", kSongs},
    {"languages", From::kList, "languages", kSongs},
    {"title_sort", From::kValue, "titleSort", kSongs},
    {"album_sort", From::kValue, "albumSort", kSongs},
    {"artist_sort", From::kValue, "artistSort", kSongs},
    {"album_artist_sort", From::kValue, "albumArtistSort", kSongs},
    {"composer_sort", From::kValue, "composerSort", kSongs},
    {"compilation", From::kValue, "compilation", kSongs},
    {"gapless", From::kValue, "gapless", kSongs},
    {"podcast", From::kValue, "podcast", kSongs},
    {"tag_rating", From::kValue, "tagRating", kSongs},
    {"beats_per_minute", From::kValue, "beatsPerMinute", kSongs},
    {"musical_key", From::kValue, "musicalKey", kSongs},
    {"moods", From::kList, "moods", kSongs},
    {"track_gain", From::kValue, "replayGain.trackGain", kSongs},
    {"track_peak", From::kValue, "replayGain.trackPeak", kSongs},
    {"album_gain", From::kValue, "replayGain.albumGain", kSongs},
    {"album_peak", From::kValue, "replayGain.albumPeak", kSongs},
    {"musicbrainz_recording", From::kValue, "musicBrainz.recording", kSongs},
    {"musicbrainz_track", From::kValue, "musicBrainz.track", kSongs},
    {"musicbrainz_release", From::kValue, "musicBrainz.release", kSongs},
    {"musicbrainz_release_group", From::kValue, "musicBrainz.releaseGroup", kSongs},
    {"musicbrainz_work", From::kValue, "musicBrainz.work", kSongs},
    {"musicbrainz_artists", From::kList, "musicBrainz.artists", kSongs},
    {"musicbrainz_album_artists", From::kList, "musicBrainz.albumArtists", kSongs},
    {"acoust_id", From::kValue, "acoustId", kSongs},
    {"isrcs", From::kList, "isrcs", kSongs},
    {"labels", From::kList, "labels", kSongs},
    {"catalog_numbers", From::kList, "catalogNumbers", kSongs},
    {"barcode", From::kValue, "barcode", kSongs},
    {"copyright", From::kValue, "copyright", kAll},
    {"encoder", From::kValue, "encoder", kVideos | kSongs},
    {"encoded_by", From::kValue, "encodedBy", kSongs},
    {"cover_count", From::kCount, "covers", kSongs},
    {"cover_type", From::kValue, "covers[0].type", kSongs},
    {"cover_mime_type", From::kValue, "covers[0].mimeType", kSongs},
    {"cover_bytes", From::kValue, "covers[0].bytes", kSongs},
    {"cover_width", From::kValue, "covers[0].width", kSongs},
    {"cover_height", From::kValue, "covers[0].height", kSongs},
    {"layout", From::kSound, "layout", kVideos | kSongs},
    {"chapter_count", From::kCount, "chapters", kVideos | kSongs},
    {"show", From::kValue, "show", kVideos},
    {"season", From::kValue, "season", kVideos},
    {"episode", From::kValue, "episode", kVideos},
    {"episode_id", From::kValue, "episodeId", kVideos},
    {"network", From::kValue, "network", kVideos},
    {"description", From::kValue, "description", kVideos},
    {"synopsis", From::kValue, "synopsis", kVideos},
    {"directors", From::kList, "directors", kVideos},
    {"actors", From::kList, "actors", kVideos},
    {"filmed", From::kValue, "created", kVideos},
    {"filmed_zone", From::kValue, "createdZone", kVideos},
    {"live_photo", From::kValue, "livePhoto", kVideos},
    {"content_identifier", From::kValue, "contentIdentifier", kVideos | kPhotos},
    {"audio_languages", From::kSounds, "language", kVideos},
    {"subtitle_languages", From::kSubtitles, "language", kVideos},
    {"dynamic_range", From::kVideoList, "dynamicRange", kVideos},
    {"dolby_vision_profile", From::kVideo, "dolbyVision.profile", kVideos},
    {"bit_depth", From::kVideo, "bitDepth", kVideos},
    {"pixel_format", From::kVideo, "pixelFormat", kVideos},
    {"colour_primaries", From::kVideo, "colours.primaries", kVideos},
    {"colour_transfer", From::kVideo, "colours.transfer", kVideos},
    {"colour_matrix", From::kVideo, "colours.matrix", kVideos},
    {"colour_range", From::kVideo, "colours.range", kVideos},
    {"field_order", From::kVideo, "fieldOrder", kVideos},
    {"exact_frame_rate", From::kVideo, "frameRate", kVideos},
    {"title_count", From::kCount, "titles", kVideos},
    {"main_title", From::kValue, "mainTitle", kVideos},
    {"program_names", From::kMembers, "programs[].name", kVideos},
    {"camera_make", From::kValue, "camera.make", kVideos | kPhotos},
    {"camera_model", From::kValue, "camera.model", kVideos | kPhotos},
    {"software", From::kValue, "software", kVideos | kPhotos},
    {"latitude", From::kValue, "position.latitude", kVideos | kPhotos},
    {"longitude", From::kValue, "position.longitude", kVideos | kPhotos},
    {"altitude", From::kValue, "position.altitude", kVideos | kPhotos},
    {"direction", From::kValue, "position.direction", kPhotos},
    {"place_name", From::kValue, "placeName", kVideos},
    {"location", From::kValue, "address.location", kPhotos},
    {"city", From::kValue, "address.city", kPhotos},
    {"province", From::kValue, "address.state", kPhotos},
    {"country", From::kValue, "address.country", kPhotos},
    {"country_code", From::kValue, "address.countryCode", kPhotos},
    {"nearest_place", From::kValue, "place.name", kVideos | kPhotos},
    {"nearest_region", From::kValue, "place.region", kVideos | kPhotos},
    {"nearest_country", From::kValue, "place.country", kVideos | kPhotos},
    {"nearest_country_code", From::kValue, "place.countryCode", kVideos | kPhotos},
    {"nearest_distance", From::kValue, "place.distance", kVideos | kPhotos},
    {"rotation", From::kPictureOrVideo, "rotation", kVideos | kPhotos},
    {"mirrored", From::kPictureOrVideo, "mirrored", kVideos | kPhotos},
    {"shown_width", From::kValue, "shownWidth", kPhotos},
    {"shown_height", From::kValue, "shownHeight", kPhotos},
    {"taken", From::kValue, "taken", kPhotos},
    {"taken_offset_from", From::kValue, "takenOffsetFrom", kPhotos},
    {"digitized", From::kValue, "digitized", kPhotos},
    {"edited", From::kValue, "edited", kPhotos},
    {"camera_serial", From::kValue, "camera.serial", kPhotos},
    {"lens_make", From::kValue, "lens.make", kPhotos},
    {"lens_model", From::kValue, "lens.model", kPhotos},
    {"exposure_time", From::kValue, "exposureTime", kPhotos},
    {"aperture", From::kValue, "aperture", kPhotos},
    {"iso", From::kValue, "iso", kPhotos},
    {"exposure_bias", From::kValue, "exposureBias", kPhotos},
    {"exposure_program", From::kValue, "exposureProgram", kPhotos},
    {"metering", From::kValue, "metering", kPhotos},
    {"white_balance", From::kValue, "whiteBalance", kPhotos},
    {"focal_length", From::kValue, "focalLength", kPhotos},
    {"focal_length_35", From::kValue, "focalLength35", kPhotos},
    {"flash_fired", From::kValue, "flash.fired", kPhotos},
    {"colour_profile", From::kValue, "colourProfile", kPhotos},
    {"headline", From::kValue, "headline", kPhotos},
    {"caption", From::kValue, "caption", kPhotos},
    {"keywords", From::kList, "keywords", kPhotos},
    {"rating", From::kValue, "rating", kPhotos},
    {"label", From::kValue, "label", kPhotos},
    {"creators", From::kList, "creators", kPhotos},
    {"people", From::kMembers, "people[].name", kPhotos},
    {"burst", From::kValue, "burst", kPhotos},
    {"motion_photo", From::kValue, "motionPhoto", kPhotos},
};

// What the column "tags" has, and "kolum library find --text" looks into. Of lists that have a
// joined text beside them, that.
struct Tag {
  From from;
  const char* path;
};
constexpr Tag kTags[] = {
    {From::kValue, "title"},
    {From::kValue, "artist"},
    {From::kValue, "album"},
    {From::kValue, "albumArtist"},
    {From::kValue, "composer"},
    {From::kValue, "genre"},
    {From::kList, "conductors"},
    {From::kList, "lyricists"},
    {From::kMembers, "performers[].name"},
    {From::kValue, "comment"},
    {From::kValue, "show"},
    {From::kValue, "network"},
    {From::kValue, "description"},
    {From::kValue, "synopsis"},
    {From::kList, "directors"},
    {From::kList, "actors"},
    {From::kMembers, "programs[].name"},
    {From::kValue, "headline"},
    {From::kValue, "caption"},
    {From::kList, "keywords"},
    {From::kMembers, "people[].name"},
    {From::kList, "creators"},
    {From::kValue, "placeName"},
    {From::kValue, "address.location"},
    {From::kValue, "address.city"},
    {From::kValue, "address.state"},
    {From::kValue, "address.country"},
    {From::kValue, "place.name"},
    {From::kValue, "place.region"},
    {From::kValue, "place.country"},
    {From::kValue, "camera.make"},
    {From::kValue, "camera.model"},
    {From::kValue, "lens.model"},
};

// Where the column "date" comes from: the first key that has one.
struct DateKey {
  const char* name;
  bool isText;  // else seconds since 1970
};
constexpr DateKey kDateKeys[] = {
    {"taken", true},         {"created", true}, {"creationDate", true},
    {"creationTime", false}, {"date", true},
};

std::string concatenated(std::initializer_list<std::string_view> parts) {
  std::string all;
  for (const std::string_view part : parts) all += part;
  return all;
}

std::string valueOf(std::string_view path) {
  return concatenated({"json_extract(document.json, '$.", path, "')"});
}

// Documents hold what "kolum library add" was given: a key may have a value of any type. None may
// become an error, which would end every query that meets it. So json_each gets JSON ("->") and
// never a plain value, and keys are taken only from objects.
std::string elementsOf(std::string_view json) {
  return concatenated({"(SELECT group_concat(atom, '; ') FROM json_each(", json, "))"});
}

std::string membersOf(std::string_view path) {
  const std::size_t end = path.find("[].");
  return concatenated({"(SELECT group_concat(atom, '; ') FROM json_tree(document.json -> '$.",
                       path.substr(0, end), "') WHERE key = '", path.substr(end + 3), "')"});
}

// The rest of a query of the streams of a type.
std::string streamsOf(std::string_view type) {
  return concatenated(
      {" FROM json_each(document.json -> '$.streams')"
       " WHERE iif(type = 'object', value, NULL) ->> '$.type' = '",
       type, "'"});
}

std::string ofFirstStream(std::string_view type, std::string_view path, std::string_view arrow) {
  return concatenated({"(SELECT value ", arrow, " '$.", path, "'", streamsOf(type), " LIMIT 1)"});
}

// Of the streams, or else of the main title of a disc.
std::string ofStreams(std::string_view type, std::string_view path, std::string_view ofTitle) {
  constexpr std::string_view kTitles = " FROM json_each(document.json -> '$.titles')";
  constexpr std::string_view kNumber = "iif(type = 'object', value, NULL) ->> '$.number'";
  const std::string mainTitle =
      concatenated({"(SELECT value -> '$.", ofTitle, "'", kTitles, " WHERE ", kNumber, " = ",
                    valueOf("mainTitle"), " LIMIT 1)"});
  return concatenated({"coalesce((SELECT group_concat(value ->> '$.", path, "', '; ')",
                       streamsOf(type), "),\n    ", elementsOf(mainTitle), ")"});
}

// "2015-06-07", or as much of it as is known; NULL if there is no date.
std::string dayOf(const DateKey& key) {
  const std::string value = valueOf(key.name);
  if (!key.isText) return "date(" + value + ", 'unixepoch')";
  return "CASE WHEN " + value + " || '-' GLOB '[0-9][0-9][0-9][0-9]-*' THEN substr(" + value +
         ", 1, 10) END";
}

std::string date() {
  std::string days;
  for (const DateKey& key : kDateKeys) days += dayOf(key) + ",\n    ";
  return "coalesce(" + days + "date(file.mtime_ns / 1000000000, 'unixepoch'))";
}

std::string dateKey() {
  std::string cases;
  for (const DateKey& key : kDateKeys)
    cases += "WHEN " + dayOf(key) + " IS NOT NULL THEN '" + key.name + "'\n    ";
  return "CASE " + cases + "ELSE 'modified' END";
}

std::string expression(From from, std::string_view path);

std::string tags() {
  std::string lines;
  for (const Tag& tag : kTags) {
    lines += (lines.empty() ? "" : "\n    || ") +
             concatenated({"coalesce(char(10) || ", expression(tag.from, tag.path), ", '')"});
  }
  return "nullif(substr(" + lines + ", 2), '')";
}

std::string expression(From from, std::string_view path) {
  switch (from) {
    case From::kValue:
      return valueOf(path);
    case From::kList:
      return elementsOf(concatenated({"document.json -> '$.", path, "'"}));
    case From::kMembers:
      return membersOf(path);
    case From::kCount:
      return concatenated({"json_array_length(document.json, '$.", path, "')"});
    case From::kVideo:
      return ofFirstStream("video", path, "->>");
    case From::kVideoList:
      return elementsOf(ofFirstStream("video", path, "->"));
    case From::kSound:
      return ofFirstStream("audio", path, "->>");
    case From::kSounds:
      return ofStreams("audio", path, "audioLanguages");
    case From::kSubtitles:
      return ofStreams("subtitle", path, "subtitleLanguages");
    case From::kPictureOrVideo:
      return concatenated(
          {"coalesce(", valueOf(path), ",\n    ", ofFirstStream("video", path, "->>"), ")"});
    case From::kDateKey:
      return dateKey();
    case From::kTags:
      return tags();
    case From::kFiles:
      break;
  }
  return "";
}

// A view with the columns that it has had since version 1, but for "date".
struct View {
  const char* name;
  const char* columns;
  const char* source;
  unsigned bit;  // in the rows of columns; 0: none of them
};

constexpr const char* kFilesBeforeDate = R"sql(
SELECT
  file.id AS id,
  CASE WHEN typeof(folder.path) = 'text' AND typeof(file.name) = 'text'
    THEN folder.path || file.name
    ELSE CAST(folder.path || file.name AS BLOB) END AS path,
  folder.path AS folder,
  file.name AS name,
  document.kind AS kind,
  file.size AS size,
  datetime(file.mtime_ns / 1000000000, 'unixepoch') AS modified,
)sql";

constexpr const char* kFilesAfterDate = R"sql(
  CASE file.state WHEN 0 THEN 'known' WHEN 1 THEN 'failed' WHEN 2 THEN 'suspect'
    WHEN 3 THEN 'quarantined' END AS state,
  file.code AS code,
  file.reason AS reason,
  datetime(file.looked_at, 'unixepoch') AS looked_at,
  replace(json_extract(json, '$.containerFormat.name'), 'FORMAT_', '') AS container,
  json_extract(json, '$.containerFormat.brand') AS brand,
  json_extract(json, '$.mimeType') AS mime_type,
  json_extract(json, '$.dlnaProfile') AS dlna_profile,
  json_extract(json, '$.duration') AS duration,
  json_extract(json, '$.bitRate') AS bit_rate,
  json_extract(json, '$.width') AS width,
  json_extract(json, '$.height') AS height,
  json_extract(json, '$.frameRate') AS frame_rate,
  replace(json_extract(json, '$.videoCodec.name'), 'CODEC_ID_', '') AS video_codec,
  replace(json_extract(json, '$.audioCodec.name'), 'CODEC_ID_', '') AS audio_codec,
  json_extract(json, '$.sampleRate') AS sample_rate,
  json_extract(json, '$.channels') AS channels,
  json_extract(json, '$.title') AS title,
  json_extract(json, '$.artist') AS artist,
  json_extract(json, '$.albumArtist') AS album_artist,
  json_extract(json, '$.album') AS album,
  json_extract(json, '$.genre') AS genre,
  json_extract(json, '$.track') AS track,
  json_extract(json, '$.year') AS year,
  json AS document,
  version.schema AS schema,
  version.readers AS readers,
  file.device AS device,
  file.inode AS inode,
  file.mtime_ns AS mtime_ns,
  file.ctime_ns AS ctime_ns)sql";

constexpr const char* kFilesSource = R"sql(
FROM file
JOIN folder ON folder.id = file.folder
LEFT JOIN document ON document.file = file.id
LEFT JOIN version ON version.id = document.version)sql";

constexpr View kViews[] = {
    {"videos", R"sql(
SELECT id, path, folder, name, size, modified, date, state, mime_type, dlna_profile, container,
  brand, duration, bit_rate, width, height, frame_rate, video_codec,
  json_extract(document, '$.videoProfile.name') AS video_profile,
  json_extract(document, '$.videoLevel') AS video_level,
  json_extract(document, '$.videoBitRate') AS video_bit_rate,
  json_extract(document, '$.orientation') AS orientation,
  json_extract(document, '$.is360') AS is_360,
  audio_codec,
  json_extract(document, '$.audioProfile.name') AS audio_profile,
  json_extract(document, '$.audioClass.name') AS audio_class,
  json_extract(document, '$.audioBitRate') AS audio_bit_rate,
  sample_rate, channels,
  json_extract(document, '$.subtitleCount') AS subtitle_count,
  datetime(json_extract(document, '$.creationTime'), 'unixepoch') AS created)sql",
     "FROM files WHERE kind = 'video'", kVideos},
    {"songs", R"sql(
SELECT id, path, folder, name, size, modified, date, state, mime_type, dlna_profile, title, artist,
  album_artist, album, genre, track, year, container, duration, bit_rate, audio_codec,
  json_extract(document, '$.audioProfile.name') AS audio_profile,
  json_extract(document, '$.audioBitRate') AS audio_bit_rate,
  sample_rate, channels,
  json_extract(document, '$.bitsPerSample') AS bits_per_sample)sql",
     "FROM files WHERE kind = 'music'", kSongs},
    {"photos", R"sql(
SELECT id, path, folder, name, size, modified, date, state, mime_type, width, height,
  json_extract(document, '$.pictureFormat') AS picture_format,
  json_extract(document, '$.pixelFormatName') AS pixel_format,
  json_extract(document, '$.isAlbumCover') AS is_album_cover)sql",
     "FROM files WHERE kind = 'photo'", kPhotos},
    {"problems", R"sql(
SELECT id, path, folder, name, size, modified, state, code, reason, looked_at,
  document IS NOT NULL AS has_document)sql",
     "FROM files WHERE state <> 'known'", 0},
};

std::string sqlOfFiles(int schema) {
  std::string sql = concatenated(
      {"CREATE VIEW files AS", kFilesBeforeDate, "  ", date(), " AS date,", kFilesAfterDate});
  for (const Column& column : kColumns) {
    if (column.schema > schema || column.from == From::kFiles) continue;
    sql += concatenated({",\n  ", expression(column.from, column.path), " AS ", column.name});
  }
  return sql + kFilesSource + ";\n";
}

std::string sqlOf(const View& view, int schema) {
  std::string sql = concatenated({"CREATE VIEW ", view.name, " AS", view.columns});
  for (const Column& column : kColumns)
    if (column.schema <= schema && (column.views & view.bit) != 0)
      sql += concatenated({",\n  ", column.name});
  return concatenated({sql, "\n", view.source, ";\n"});
}

}  // namespace

std::span<const Column> columns() {
  return kColumns;
}

std::string sqlOfViews(int schema) {
  std::string sql = "DROP VIEW files;\n";
  for (const View& view : kViews) sql += concatenated({"DROP VIEW ", view.name, ";\n"});
  sql += sqlOfFiles(schema);
  for (const View& view : kViews) sql += sqlOf(view, schema);
  return sql;
}

}  // namespace kolum::scan
