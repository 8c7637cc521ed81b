// Two programs that read tags on their own agree with what is read here, on songs with every tag.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "read/tags/song_tags.h"
#include "support/child_process.h"
#include "support/hostile_bytes.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::media::SongTags;
using nlohmann::json;

namespace {

// Debian's own: others do not see its packages.
const std::string kPython = "/usr/bin/python3";

struct Song {
  const char* name;
  const char* encoder;  // null: bytes that only its readers of tags take for such a song
};

constexpr Song kSongs[] = {
    {"song.mp3", "-c:a libmp3lame"}, {"song.v23.mp3", "-c:a libmp3lame"},
    {"song.flac", "-c:a flac"},      {"song.ogg", "-c:a libvorbis"},
    {"song.opus", "-c:a libopus"},   {"song.m4a", "-c:a aac"},
    {"song.wma", "-c:a wmav2"},      {"song.ape", nullptr},
    {"song.wv", "-c:a wavpack"},     {"song.aiff", "-c:a pcm_s16be"},
    {"song.wav", "-c:a pcm_s16le"},
};

// A song of that kind with every tag, written by Mutagen.
std::string tagged(const Song& song, const TempDir& folder) {
  const std::string path = folder.path(song.name);
  const std::string encoder = song.encoder != nullptr ? song.encoder : "";
  const std::string content =
      song.encoder != nullptr
          ? contentOf(media(song.name, "-f lavfi -i sine=duration=1 -map_metadata -1 " +
                                           std::string("-fflags +bitexact ") + encoder))
          : "MAC " + zeros(4000);
  folder.write(song.name, content);
  const std::string cover = media("cover.png", "-f lavfi -i testsrc=size=300x200 -frames:v 1");
  mustRun({kPython, KOLUM_SONG_TAGS, "write", cover, path});
  return path;
}

std::string counted(const std::optional<int>& number, const std::optional<int>& total) {
  return std::to_string(number.value_or(0)) + "/" + std::to_string(total.value_or(0));
}

// What was found, under the names that the Python program uses too.
json found(const std::string& path) {
  const auto source = kolum::media::Source::open(path);
  if (!source) return {};
  const auto read = kolum::tags::readSongTags(*source);
  if (!read) return {};
  const SongTags& tags = *read;
  json values;
  const auto put = [&values](const char* key, const auto& value) {
    if (!value.empty()) values[key] = value;
  };
  const auto putNumber = [&values](const char* key, const auto& value) {
    if (value) values[key] = *value;
  };
  put("title", tags.title);
  put("album", tags.album);
  put("artists", tags.artists);
  put("albumArtists", tags.albumArtists);
  put("composers", tags.composers);
  put("conductors", tags.conductors);
  put("lyricists", tags.lyricists);
  put("genres", tags.genres);
  put("titleSort", tags.titleSort);
  put("albumSort", tags.albumSort);
  put("artistSorts", tags.artistSorts);
  put("albumArtistSorts", tags.albumArtistSorts);
  put("composerSorts", tags.composerSorts);
  put("date", tags.date);
  put("originalDate", tags.originalDate);
  put("comments", tags.comments);
  put("languages", tags.languages);
  put("recording", tags.musicBrainz.recording);
  put("trackId", tags.musicBrainz.track);
  put("release", tags.musicBrainz.release);
  put("releaseGroup", tags.musicBrainz.releaseGroup);
  put("work", tags.musicBrainz.work);
  put("artistIds", tags.musicBrainz.artists);
  put("albumArtistIds", tags.musicBrainz.albumArtists);
  put("acoustId", tags.acoustId);
  put("isrcs", tags.isrcs);
  put("labels", tags.labels);
  put("catalogNumbers", tags.catalogNumbers);
  put("barcode", tags.barcode);
  put("copyright", tags.copyright);
  put("encoder", tags.encoder);
  put("encodedBy", tags.encodedBy);
  put("key", tags.key);
  put("moods", tags.moods);
  put("lyricsLanguage", tags.lyricsLanguage);
  putNumber("beatsPerMinute", tags.beatsPerMinute);
  putNumber("trackGain", tags.replayGain.trackGain);
  putNumber("trackPeak", tags.replayGain.trackPeak);
  putNumber("albumGain", tags.replayGain.albumGain);
  putNumber("albumPeak", tags.replayGain.albumPeak);
  putNumber("rating", tags.rating);
  putNumber("isCompilation", tags.isCompilation);
  putNumber("isGapless", tags.isGapless);
  putNumber("isPodcast", tags.isPodcast);
  values["hasLyrics"] = tags.hasLyrics;
  values["track"] = counted(tags.track, tags.trackTotal);
  values["disc"] = counted(tags.disc, tags.discTotal);
  for (const auto& performer : tags.performers)
    values["performers"].push_back({performer.name, performer.role});
  if (values.contains("performers"))
    std::sort(values["performers"].begin(), values["performers"].end());
  for (const auto& cover : tags.covers)
    values["covers"].push_back({{"mimeType", cover.mimeType},
                                {"type", cover.type},
                                {"description", cover.description},
                                {"bytes", cover.bytes}});
  for (const auto& chapter : tags.chapters)
    values["chapters"].push_back(
        {chapter.start, chapter.end ? json(*chapter.end) : json(), chapter.title});
  return values;
}

class Agreement : public testing::TestWithParam<Song> {};

TEST_P(Agreement, HoldsWithMutagen) {
  const TempDir folder;
  const std::string path = tagged(GetParam(), folder);
  const json theirs = json::parse(mustRun({kPython, KOLUM_SONG_TAGS, "read", path}));
  const json ours = found(path);
  for (const auto& [key, value] : theirs.items()) EXPECT_EQ(ours.value(key, json()), value) << key;
  for (const auto& [key, value] : ours.items()) EXPECT_TRUE(theirs.contains(key)) << key;
}

// The tags under all their names, in lower case and without punctuation, that stand for a value.
const std::map<std::string, std::string> kExifToolNames = {
    {"title", "title"},
    {"album", "album"},
    {"albumtitle", "album"},
    {"artist", "artists"},
    {"author", "artists"},
    {"band", "albumArtists"},
    {"albumartist", "albumArtists"},
    {"composer", "composers"},
    {"conductor", "conductors"},
    {"lyricist", "lyricists"},
    {"writer", "lyricists"},
    {"genre", "genres"},
    {"titlesort", "titleSort"},
    {"titlesortorder", "titleSort"},
    {"sortname", "titleSort"},
    {"albumsort", "albumSort"},
    {"albumsortorder", "albumSort"},
    {"sortalbum", "albumSort"},
    {"artistsort", "artistSorts"},
    {"performersortorder", "artistSorts"},
    {"sortartist", "artistSorts"},
    {"albumartistsort", "albumArtistSorts"},
    {"albumartistsortorder", "albumArtistSorts"},
    {"sortalbumartist", "albumArtistSorts"},
    {"composersort", "composerSorts"},
    {"composersortorder", "composerSorts"},
    {"sortcomposer", "composerSorts"},
    {"track", "track"},
    {"partofset", "disc"},
    {"disc", "disc"},
    {"date", "date"},
    {"originaldate", "originalDate"},
    {"comment", "comments"},
    {"description", "comments"},
    {"language", "languages"},
    {"musicbrainztrackid", "recording"},
    {"musicbrainzreleasetrackid", "trackId"},
    {"musicbrainzalbumid", "release"},
    {"musicbrainzreleasegroupid", "releaseGroup"},
    {"musicbrainzworkid", "work"},
    {"musicbrainzartistid", "artistIds"},
    {"musicbrainzalbumartistid", "albumArtistIds"},
    {"acoustidid", "acoustId"},
    {"isrc", "isrcs"},
    {"isrcnumber", "isrcs"},
    {"label", "labels"},
    {"publisher", "labels"},
    {"catalognumber", "catalogNumbers"},
    {"barcode", "barcode"},
    {"copyright", "copyright"},
    {"encoder", "encoder"},
    {"encodersettings", "encoder"},
    {"encodingsettings", "encoder"},
    {"encodedby", "encodedBy"},
    {"bpm", "beatsPerMinute"},
    {"beatsperminute", "beatsPerMinute"},
    {"key", "key"},
    {"initialkey", "key"},
    {"mood", "moods"},
    {"replaygaintrackgain", "trackGain"},
    {"replaytrackgain", "trackGain"},
    {"replaygaintrackpeak", "trackPeak"},
    {"replaytrackpeak", "trackPeak"},
    {"replaygainalbumgain", "albumGain"},
    {"replaygainalbumpeak", "albumPeak"},
};

std::string plainName(const std::string& name) {
  std::string plain;
  for (const char c : name)
    if (std::isalnum(static_cast<unsigned char>(c)) != 0)
      plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return plain;
}

std::string textOf(const json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string joined(const json& list, const std::string& separator) {
  std::string text;
  for (const json& value : list) text += (text.empty() ? "" : separator) + textOf(value);
  return text;
}

// ExifTool joins several values in its own way for each format, or keeps only one of them.
bool agrees(const json& ours, const json& theirs) {
  if (ours == theirs) return true;
  if (ours.is_number()) return std::abs(std::stod(textOf(theirs)) - ours.get<double>()) < 1e-9;
  const std::string text = textOf(theirs);
  if (!ours.is_array()) return textOf(ours) == text;
  return joined(ours, "/") == text || joined(ours, "") == text ||
         std::find(ours.begin(), ours.end(), text) != ours.end();
}

struct Difference {
  const char* song;
  const char* name;
  const char* reason;
};

constexpr Difference kDifferences[] = {
    {"song.wma", "title", "ExifTool replaces characters beyond 16 bits in UTF-16"},
    {"song.v23.mp3", "title", "the same"},
    {"song.v23.mp3", "date", "ExifTool reports the day alone"},
};

bool isKnown(const std::string& song, const std::string& name) {
  return std::any_of(std::begin(kDifferences), std::end(kDifferences),
                     [&](const Difference& row) { return row.song == song && row.name == name; });
}

TEST_P(Agreement, HoldsWithExifTool) {
  const TempDir folder;
  const std::string path = tagged(GetParam(), folder);
  const json theirs = json::parse(run({"exiftool", "-json", path}).out).at(0);
  if (theirs.contains("Error")) {
    // Releases up to 12 do not know the format.
    EXPECT_STREQ(GetParam().name, "song.wv");
    return;
  }
  const json ours = found(path);
  std::set<std::string> compared;
  for (const auto& [name, value] : theirs.items()) {
    const auto key = kExifToolNames.find(plainName(name));
    if (key == kExifToolNames.end()) continue;
    compared.insert(key->second);
    EXPECT_EQ(agrees(ours.value(key->second, json()), value), !isKnown(GetParam().name, key->first))
        << name << ": " << value << " " << ours.value(key->second, json());
  }
  // It reads fewer tags of some formats, but these of all.
  constexpr std::size_t kLeast = 18;
  EXPECT_GE(compared.size(), kLeast);
}

INSTANTIATE_TEST_SUITE_P(Songs, Agreement, testing::ValuesIn(kSongs), [](const auto& song) {
  std::string name = song.param.name + std::string("song.").size();
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
});

}  // namespace
