// A library as it was in version 1 of the schema, whatever becomes of the code that made it.
#ifndef KOLUM_TESTS_SCAN_VERSION1_H
#define KOLUM_TESTS_SCAN_VERSION1_H

namespace kolum::test {

inline constexpr const char* kVersion1 = R"sql(
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

inline constexpr const char* kRowsOfVersion1 = R"sql(
PRAGMA application_id = 0x4B4F4C4D;
PRAGMA user_version = 1;
INSERT INTO version VALUES (1, 2, 'readers of old');
INSERT INTO folder VALUES (1, NULL, '/', NULL), (2, 1, '/m/', 7);
INSERT INTO file VALUES
  (1, 2, 'a.mp3', 7, 1, 1000, 1400000000000000000, 1500000000000000000, 1, 0, NULL, NULL, 1600000000),
  (5, 2, 'b.jpg', 7, 2, 2000, 1400000000000000000, 1500000000000000000, 1, 3, 'crashed', 'signal 11',
   1600000000);
INSERT INTO document VALUES
  (1, 1, 1000, 1400000000000000000, 'music',
   '{"kind":{"id":1,"name":"music"},"size":1000,"title":"Harbour","modified":"2014-05-13T16:53:20Z","composer":"Ann"}'),
  (5, 1, 2000, 1400000000000000000, 'photo',
   '{"kind":{"id":3,"name":"photo"},"size":2000,"modified":"2014-05-13T16:53:20Z","taken":"2015-06-07T08:09:10"}');
INSERT INTO at_hand VALUES ('/m/', 'c.mp3', 7, 3, 3000, 1, 1, 0);
INSERT INTO root VALUES ('/m/', 7, 1600000000);
)sql";

}  // namespace kolum::test

#endif
