// What the tags of a song say about it.
#ifndef KOLUM_MEDIA_SONG_TAGS_H
#define KOLUM_MEDIA_SONG_TAGS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kolum::media {

// A text is UTF-8 without NUL and at most this long, a list has at most so many values.
inline constexpr std::size_t kLongestTagText = std::size_t{64} << 10;
inline constexpr std::size_t kMostTagValues = 256;

struct Performer {
  std::string name;
  std::string role;  // "guitar", "producer"; empty if unknown
};

// A picture inside the song.
struct Cover {
  std::string mimeType;      // from the picture's first bytes if they are known, else as stored
  std::string type;          // "front cover", a name of coverTypeName(); empty if unknown
  std::string description;   // empty if there is none
  std::uint64_t bytes = 0;   // its size
  std::optional<int> width;  // in pixels; both or none
  std::optional<int> height;
};

struct SongChapter {
  double start = 0;           // in seconds from the beginning of the song
  std::optional<double> end;  // in seconds; empty if not stated
  std::string title;          // empty if there is none
};

// Identifiers of the MusicBrainz database, in lower case: 8-4-4-4-12 hexadecimal digits.
struct MusicBrainzIds {
  std::string recording;
  std::string track;
  std::string release;  // the album
  std::string releaseGroup;
  std::string work;
  std::vector<std::string> artists;
  std::vector<std::string> albumArtists;
};

// In decibels to a loudness of -18 LUFS (ReplayGain's 89 dB), and as peaks relative to full scale.
// Opus states gains to -23 LUFS: 5 dB are added to these. What iTunes states counts if there is
// nothing else.
struct ReplayGain {
  std::optional<double> trackGain;  // -100 to 100
  std::optional<double> trackPeak;  // 0 to 1000; 1 is full scale
  std::optional<double> albumGain;
  std::optional<double> albumPeak;
};

// Empty values are unknown. Lists hold different values in the order of the tag.
struct SongTags {
  std::string title;
  std::string album;
  std::vector<std::string> artists;
  std::vector<std::string> albumArtists;
  std::vector<std::string> composers;
  std::vector<std::string> conductors;
  std::vector<std::string> lyricists;
  std::vector<Performer> performers;  // everyone else, from the band to the engineer
  std::vector<std::string> genres;    // names; numbers are replaced

  std::string titleSort;
  std::string albumSort;
  std::vector<std::string> artistSorts;
  std::vector<std::string> albumArtistSorts;
  std::vector<std::string> composerSorts;

  std::optional<int> track;  // from 1 to 65535, as the three below
  std::optional<int> trackTotal;
  std::optional<int> disc;
  std::optional<int> discTotal;

  // "1999", "1999-12", "1999-12-31" or "1999-12-31T23:59:59" (or without seconds), as far as known.
  std::string date;
  std::string originalDate;  // of the first release
  std::string releaseDate;   // of this one, if the tag has it besides the date

  std::vector<std::string> comments;
  bool hasLyrics = false;
  std::string lyricsLanguage;          // as stored, usually three letters of ISO 639-2
  std::vector<std::string> languages;  // that are sung; as stored

  MusicBrainzIds musicBrainz;
  std::string acoustId;             // in the form of MusicBrainz' identifiers
  std::vector<std::string> isrcs;   // as stored
  std::vector<std::string> labels;  // companies
  std::vector<std::string> catalogNumbers;
  std::string barcode;
  std::string copyright;
  std::string encoder;    // the program that made the sound
  std::string encodedBy;  // who used it

  std::optional<double> beatsPerMinute;  // above 0, at most 1000
  std::string key;                       // as stored: "Am", "C#", "8A"
  std::vector<std::string> moods;
  ReplayGain replayGain;
  std::optional<int> rating;  // 0 to 100; stars count 20
  std::optional<bool> isCompilation;
  std::optional<bool> isGapless;
  std::optional<bool> isPodcast;

  std::vector<Cover> covers;
  std::vector<SongChapter> chapters;  // in the order of their start
};

// The name of a cover's type, of which ID3v2, FLAC and ASF have the same numbers: 3 is "front
// cover". Static storage; empty for other numbers.
const char* coverTypeName(std::uint32_t number) noexcept;

}  // namespace kolum::media

#endif
