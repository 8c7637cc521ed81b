#include "scan/schema.h"

#include <algorithm>
#include <string>
#include <vector>

#include "scan/columns.h"

namespace kolum::scan {

namespace {

using Kind = StoreError::Kind;

// Texts in "name" and "path" columns are UTF-8; of other bytes, they are blobs. In numbers of the
// system's 64 bits without a sign, the highest bit is SQLite's sign.
constexpr const char* kVersion1 = R"sql(
CREATE TABLE version (
  id INTEGER PRIMARY KEY,
  schema INTEGER NOT NULL,
  readers TEXT NOT NULL,
  UNIQUE (schema, readers)
) STRICT;

CREATE TABLE folder (
  id INTEGER PRIMARY KEY,
  parent INTEGER REFERENCES folder (id),
  path ANY NOT NULL UNIQUE,
  device INTEGER
) STRICT;
CREATE INDEX folder_parent ON folder (parent);

CREATE TABLE file (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  folder INTEGER NOT NULL REFERENCES folder (id),
  name ANY NOT NULL,
  device INTEGER NOT NULL,
  inode INTEGER NOT NULL,
  size INTEGER NOT NULL,
  mtime_ns INTEGER NOT NULL,
  ctime_ns INTEGER NOT NULL,
  version INTEGER NOT NULL REFERENCES version (id),
  state INTEGER NOT NULL CHECK (state BETWEEN 0 AND 3),
  code TEXT,
  reason TEXT,
  looked_at INTEGER NOT NULL,
  UNIQUE (folder, name)
) STRICT;
CREATE INDEX file_inode ON file (inode, device);
CREATE INDEX file_trouble ON file (state) WHERE state <> 0;

CREATE TABLE document (
  file INTEGER PRIMARY KEY REFERENCES file (id) ON DELETE CASCADE,
  version INTEGER NOT NULL REFERENCES version (id),
  size INTEGER NOT NULL,
  mtime_ns INTEGER NOT NULL,
  kind TEXT,
  json TEXT NOT NULL
) STRICT;
CREATE INDEX document_kind ON document (kind);

CREATE TABLE at_hand (
  folder ANY NOT NULL,
  name ANY NOT NULL,
  device INTEGER NOT NULL,
  inode INTEGER NOT NULL,
  size INTEGER NOT NULL,
  mtime_ns INTEGER NOT NULL,
  ctime_ns INTEGER NOT NULL,
  alone INTEGER NOT NULL,
  PRIMARY KEY (folder, name)
) STRICT, WITHOUT ROWID;

CREATE TABLE root (
  folder ANY PRIMARY KEY NOT NULL,
  device INTEGER NOT NULL,
  scanned_at INTEGER NOT NULL
) STRICT, WITHOUT ROWID;

CREATE VIEW files AS
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
  coalesce(json_extract(json, '$.creationDate'),
           date(json_extract(json, '$.creationTime'), 'unixepoch'),
           date(file.mtime_ns / 1000000000, 'unixepoch')) AS date,
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
  file.ctime_ns AS ctime_ns
FROM file
JOIN folder ON folder.id = file.folder
LEFT JOIN document ON document.file = file.id
LEFT JOIN version ON version.id = document.version;

CREATE VIEW videos AS
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
  datetime(json_extract(document, '$.creationTime'), 'unixepoch') AS created
FROM files WHERE kind = 'video';

CREATE VIEW songs AS
SELECT id, path, folder, name, size, modified, date, state, mime_type, dlna_profile, title, artist,
  album_artist, album, genre, track, year, container, duration, bit_rate, audio_codec,
  json_extract(document, '$.audioProfile.name') AS audio_profile,
  json_extract(document, '$.audioBitRate') AS audio_bit_rate,
  sample_rate, channels,
  json_extract(document, '$.bitsPerSample') AS bits_per_sample
FROM files WHERE kind = 'music';

CREATE VIEW photos AS
SELECT id, path, folder, name, size, modified, date, state, mime_type, width, height,
  json_extract(document, '$.pictureFormat') AS picture_format,
  json_extract(document, '$.pixelFormatName') AS pixel_format,
  json_extract(document, '$.isAlbumCover') AS is_album_cover
FROM files WHERE kind = 'photo';

CREATE VIEW problems AS
SELECT id, path, folder, name, size, modified, state, code, reason, looked_at,
  document IS NOT NULL AS has_document
FROM files WHERE state <> 'known';
)sql";

// Nothing ever filled the column. Before the views go: those of the library's owner need them.
constexpr const char* kVersion2 = R"sql(
ALTER TABLE folder DROP COLUMN device;

UPDATE document SET json = json_remove(json, '$.size', '$.modified')
WHERE json_type(json, '$.size') IS NOT NULL OR json_type(json, '$.modified') IS NOT NULL;
)sql";

// Changes of tables; each version after the first one makes the views anew, too. A version in which
// only columns came needs no row.
constexpr const char* kTables[] = {kVersion1, kVersion2};

std::vector<std::string> allSteps() {
  int newest = static_cast<int>(std::size(kTables));
  for (const Column& column : columns()) newest = std::max(newest, column.schema);
  std::vector<std::string> steps;
  for (int version = 1; version <= newest; ++version) {
    const auto row = static_cast<std::size_t>(version - 1);
    steps.emplace_back(row < std::size(kTables) ? kTables[row] : "");
    if (version > 1) steps.back() += sqlOfViews(version);
  }
  return steps;
}

std::string numbered(const char* pragma, std::size_t value) {
  return std::string("PRAGMA ") + pragma + " = " + std::to_string(value);
}

[[noreturn]] void refuse(const Database& database, Kind kind, const std::string& reason) {
  throw StoreError(kind, database.file() + ": " + reason);
}

void run(Database& database, std::span<const char* const> steps, std::size_t version) {
  for (const char* step : steps) database.execute(step);
  database.execute(numbered("application_id", kApplicationId).c_str());
  database.execute(numbered("user_version", version).c_str());
}

constexpr const char* kNotALibrary = "not a library of kolum";

}  // namespace

std::span<const char* const> migrations() {
  static const std::vector<std::string> kSteps = allSteps();
  static const std::vector<const char*> kTexts = [] {
    std::vector<const char*> texts(kSteps.size());
    std::transform(kSteps.begin(), kSteps.end(), texts.begin(),
                   [](const std::string& step) { return step.c_str(); });
    return texts;
  }();
  return kTexts;
}

int newestSchema() {
  return static_cast<int>(migrations().size());
}

Content contentOf(Database& database, std::span<const char* const> steps) {
  const std::int64_t application = database.number("PRAGMA application_id");
  const std::int64_t version = database.number("PRAGMA user_version");
  if (application == 0 && version == 0 &&
      database.number("SELECT count(*) FROM sqlite_schema") == 0)
    return Content::kNothing;
  if (application != kApplicationId || version < 1)
    refuse(database, Kind::kNotALibrary, kNotALibrary);
  const auto newest = static_cast<std::int64_t>(steps.size());
  if (version > newest) {
    refuse(database, Kind::kNewer,
           "made by a later kolum (schema " + std::to_string(version) + "; this one knows " +
               std::to_string(newest) + ")");
  }
  return version == newest ? Content::kPresent : Content::kOlder;
}

void checkSchema(Database& database, std::span<const char* const> steps) {
  Database fresh;
  fresh.trustSchema();
  run(fresh, steps, steps.size());
  Run wanted(fresh, "SELECT type, name, tbl_name, sql FROM sqlite_schema");
  while (wanted.next()) {
    Run found(database,
              "SELECT count(*) FROM sqlite_schema WHERE type = ? AND name = ? AND tbl_name = ? "
              "AND sql IS ?");
    const std::string type = wanted.text(0);
    const std::string name = wanted.text(1);
    const std::string table = wanted.text(2);
    const std::string sql = wanted.text(3);
    found.bind(std::string_view(type));
    found.bind(std::string_view(name));
    found.bind(std::string_view(table));
    if (wanted.isNull(3)) {
      found.bind(Null());
    } else {
      found.bind(std::string_view(sql));
    }
    if (!found.next() || found.number(0) != 1)
      refuse(database, Kind::kNotALibrary,
             std::string(kNotALibrary) + ": its \"" + name + "\" has been changed");
  }
  database.trustSchema();
}

void migrate(Database& database, std::span<const char* const> steps) {
  const auto version = static_cast<std::size_t>(database.number("PRAGMA user_version"));
  const auto known = steps.first(std::min(version, steps.size()));
  checkSchema(database, known);
  database.atomically([&] { run(database, steps.subspan(known.size()), steps.size()); });
}

}  // namespace kolum::scan
