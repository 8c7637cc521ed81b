#include "describe/parts.h"
#include "describe/table.h"
#include "describe/text_lists.h"
#include "media/song_tags.h"

namespace kolum::describe {

namespace {

using media::SongTags;

constexpr const char* kTag = "the tag";
constexpr const char* kName = "the tag; MusicBrainz";

constexpr auto kPerformerRows = std::to_array<Row<media::Performer>>({
    {{"name", Type::kText, Unit::kNone, "Who", kTag},
     [](const media::Performer& p) { return text(p.name); }},
    {{"role", Type::kText, Unit::kNone, "Instrument or task", kTag},
     [](const media::Performer& p) { return text(p.role); }},
});
constexpr auto kPerformerKeys = keysOf(kPerformerRows);

constexpr auto kMusicBrainzRows = std::to_array<Row<media::MusicBrainzIds>>({
    {{"recording", Type::kText, Unit::kNone, "Of the recording", kName},
     [](const media::MusicBrainzIds& ids) { return text(ids.recording); }},
    {{"track", Type::kText, Unit::kNone, "Of the recording on this album", kName},
     [](const media::MusicBrainzIds& ids) { return text(ids.track); }},
    {{"release", Type::kText, Unit::kNone, "Of the album", kName},
     [](const media::MusicBrainzIds& ids) { return text(ids.release); }},
    {{"releaseGroup", Type::kText, Unit::kNone, "Of all editions of the album", kName},
     [](const media::MusicBrainzIds& ids) { return text(ids.releaseGroup); }},
    {{"work", Type::kText, Unit::kNone, "Of the composition", kName},
     [](const media::MusicBrainzIds& ids) { return text(ids.work); }},
    {{"artists", Type::kTexts, Unit::kNone, "Of the artists", kName},
     [](const media::MusicBrainzIds& ids) { return texts(ids.artists); }},
    {{"albumArtists", Type::kTexts, Unit::kNone, "Of the album's artists", kName},
     [](const media::MusicBrainzIds& ids) { return texts(ids.albumArtists); }},
});
constexpr auto kMusicBrainzKeys = keysOf(kMusicBrainzRows);

constexpr auto kGainRows = std::to_array<Row<media::ReplayGain>>({
    {{"trackGain", Type::kNumber, Unit::kDecibels, "To ReplayGain's loudness", kTag},
     [](const media::ReplayGain& gain) { return known(gain.trackGain); }},
    {{"trackPeak", Type::kNumber, Unit::kNone, "1 is full scale", kTag},
     [](const media::ReplayGain& gain) { return known(gain.trackPeak); }},
    {{"albumGain", Type::kNumber, Unit::kDecibels, "The same for the album", kTag},
     [](const media::ReplayGain& gain) { return known(gain.albumGain); }},
    {{"albumPeak", Type::kNumber, Unit::kNone, "The same for the album", kTag},
     [](const media::ReplayGain& gain) { return known(gain.albumPeak); }},
});
constexpr auto kGainKeys = keysOf(kGainRows);

constexpr auto kCoverRows = std::to_array<Row<media::Cover>>({
    {{"mimeType", Type::kText, Unit::kNone, "MIME type", "the picture, or the tag"},
     [](const media::Cover& cover) { return text(cover.mimeType); }},
    {{"type", Type::kText, Unit::kNone, "What it shows: \"front cover\"", kTag},
     [](const media::Cover& cover) { return text(cover.type); }},
    {{"description", Type::kText, Unit::kNone, "In words", kTag},
     [](const media::Cover& cover) { return text(cover.description); }},
    {{"bytes", Type::kInteger, Unit::kBytes, "Its size", kTag},
     [](const media::Cover& cover) -> Value { return cover.bytes; }},
    {{"width", Type::kInteger, Unit::kPixels, "Width", "the picture"},
     [](const media::Cover& cover) { return known(cover.width); }},
    {{"height", Type::kInteger, Unit::kPixels, "Height", "the picture"},
     [](const media::Cover& cover) { return known(cover.height); }},
});
constexpr auto kCoverKeys = keysOf(kCoverRows);

constexpr auto kTagRows = std::to_array<Row<SongTags>>({
    {{"title", Type::kText, Unit::kNone, "Title", kTag},
     [](const SongTags& t) { return text(t.title); }},
    {{"artist", Type::kText, Unit::kNone, "Artist; several are joined by \"; \"", kTag},
     [](const SongTags& t) { return joinedTexts(t.artists); }},
    {{"artists", Type::kTexts, Unit::kNone, "Artists, if there are several", kTag},
     [](const SongTags& t) { return severalTexts(t.artists); }},
    {{"album", Type::kText, Unit::kNone, "Album", kTag},
     [](const SongTags& t) { return text(t.album); }},
    {{"albumArtist", Type::kText, Unit::kNone, "Artist of the album, as artist", kTag},
     [](const SongTags& t) { return joinedTexts(t.albumArtists); }},
    {{"albumArtists", Type::kTexts, Unit::kNone, "If there are several", kTag},
     [](const SongTags& t) { return severalTexts(t.albumArtists); }},
    {{"composer", Type::kText, Unit::kNone, "Composer, as artist", kTag},
     [](const SongTags& t) { return joinedTexts(t.composers); }},
    {{"composers", Type::kTexts, Unit::kNone, "If there are several", kTag},
     [](const SongTags& t) { return severalTexts(t.composers); }},
    {{"genre", Type::kText, Unit::kNone, "Genre, as artist", kTag},
     [](const SongTags& t) { return joinedTexts(t.genres); }},
    {{"genres", Type::kTexts, Unit::kNone, "If there are several", kTag},
     [](const SongTags& t) { return severalTexts(t.genres); }},
    {{"conductors", Type::kTexts, Unit::kNone, "Conductors", kTag},
     [](const SongTags& t) { return texts(t.conductors); }},
    {{"lyricists", Type::kTexts, Unit::kNone, "Writers of the text", kTag},
     [](const SongTags& t) { return texts(t.lyricists); }},
    {{"performers", Type::kObjects, Unit::kNone, "Everyone else", kTag, kPerformerKeys},
     [](const SongTags& t) { return objectsOf(kPerformerRows, t.performers); }},
    {{"track", Type::kInteger, Unit::kCount, "Number on the disc", kTag},
     [](const SongTags& t) { return known(t.track); }},
    {{"trackTotal", Type::kInteger, Unit::kCount, "Tracks of the disc", kTag},
     [](const SongTags& t) { return known(t.trackTotal); }},
    {{"disc", Type::kInteger, Unit::kCount, "Number of the disc", kTag},
     [](const SongTags& t) { return known(t.disc); }},
    {{"discTotal", Type::kInteger, Unit::kCount, "Discs of the album", kTag},
     [](const SongTags& t) { return known(t.discTotal); }},
    {{"year", Type::kInteger, Unit::kNone, "Year of the date", kTag},
     [](const SongTags& t) { return yearOf(t.date); }},
    {{"date", Type::kText, Unit::kMoment, "Date, as far as known", kTag},
     [](const SongTags& t) { return text(t.date); }},
    {{"originalDate", Type::kText, Unit::kMoment, "Of the first release", kTag},
     [](const SongTags& t) { return text(t.originalDate); }},
    {{"releaseDate", Type::kText, Unit::kMoment, "Of this release, besides the date", kTag},
     [](const SongTags& t) { return text(t.releaseDate); }},
    {{"comment", Type::kText, Unit::kNone, "Comment, as artist", kTag},
     [](const SongTags& t) { return joinedTexts(t.comments); }},
    {{"hasLyrics", Type::kBoolean, Unit::kNone, "Whether the text is in the file", kTag},
     [](const SongTags& t) { return ifTrue(t.hasLyrics); }},
    {{"lyricsLanguage", Type::kText, Unit::kNone, "Language of that text, as stored", kTag},
     [](const SongTags& t) { return text(t.lyricsLanguage); }},
    {{"languages", Type::kTexts, Unit::kNone, "Languages that are sung, as stored", kTag},
     [](const SongTags& t) { return texts(t.languages); }},
    {{"titleSort", Type::kText, Unit::kNone, "Title to sort by", kTag},
     [](const SongTags& t) { return text(t.titleSort); }},
    {{"albumSort", Type::kText, Unit::kNone, "Album to sort by", kTag},
     [](const SongTags& t) { return text(t.albumSort); }},
    {{"artistSort", Type::kText, Unit::kNone, "Artist to sort by, as artist", kTag},
     [](const SongTags& t) { return joinedTexts(t.artistSorts); }},
    {{"albumArtistSort", Type::kText, Unit::kNone, "Artist of the album to sort by", kTag},
     [](const SongTags& t) { return joinedTexts(t.albumArtistSorts); }},
    {{"composerSort", Type::kText, Unit::kNone, "Composer to sort by", kTag},
     [](const SongTags& t) { return joinedTexts(t.composerSorts); }},
    {{"compilation", Type::kBoolean, Unit::kNone, "Whether the album has several artists", kTag},
     [](const SongTags& t) { return known(t.isCompilation); }},
    {{"gapless", Type::kBoolean, Unit::kNone, "Whether no gap belongs between songs", kTag},
     [](const SongTags& t) { return known(t.isGapless); }},
    {{"podcast", Type::kBoolean, Unit::kNone, "Whether it is a podcast", kTag},
     [](const SongTags& t) { return known(t.isPodcast); }},
    {{"tagRating",
      Type::kInteger,
      Unit::kNone,
      "0 to 100",
      kTag,
      {},
      R"("minimum":0,"maximum":100)"},
     [](const SongTags& t) { return known(t.rating); }},
    {{"beatsPerMinute", Type::kNumber, Unit::kNone, "Tempo", kTag},
     [](const SongTags& t) { return known(t.beatsPerMinute); }},
    {{"musicalKey", Type::kText, Unit::kNone, "As stored: \"Am\"", kTag},
     [](const SongTags& t) { return text(t.key); }},
    {{"moods", Type::kTexts, Unit::kNone, "Moods", kTag},
     [](const SongTags& t) { return texts(t.moods); }},
    {{"replayGain", Type::kObject, Unit::kNone, "How loud it is", kTag, kGainKeys},
     [](const SongTags& t) { return objectOf(kGainRows, t.replayGain); }},
    {{"musicBrainz", Type::kObject, Unit::kNone, "Identifiers of MusicBrainz", kTag,
      kMusicBrainzKeys},
     [](const SongTags& t) { return objectOf(kMusicBrainzRows, t.musicBrainz); }},
    {{"acoustId", Type::kText, Unit::kNone, "Identifier of the sound", kTag},
     [](const SongTags& t) { return text(t.acoustId); }},
    {{"isrcs", Type::kTexts, Unit::kNone, "Numbers of the recording", kTag},
     [](const SongTags& t) { return texts(t.isrcs); }},
    {{"labels", Type::kTexts, Unit::kNone, "Companies", kTag},
     [](const SongTags& t) { return texts(t.labels); }},
    {{"catalogNumbers", Type::kTexts, Unit::kNone, "Their numbers of the album", kTag},
     [](const SongTags& t) { return texts(t.catalogNumbers); }},
    {{"barcode", Type::kText, Unit::kNone, "Of the album", kTag},
     [](const SongTags& t) { return text(t.barcode); }},
    {{"copyright", Type::kText, Unit::kNone, "Copyright", kTag},
     [](const SongTags& t) { return text(t.copyright); }},
    {{"encoder", Type::kText, Unit::kNone, "The program that made the sound", kTag},
     [](const SongTags& t) { return text(t.encoder); }},
    {{"encodedBy", Type::kText, Unit::kNone, "Who used it", kTag},
     [](const SongTags& t) { return text(t.encodedBy); }},
    {{"covers", Type::kObjects, Unit::kNone, "Pictures in the file", kTag, kCoverKeys},
     [](const SongTags& t) { return objectsOf(kCoverRows, t.covers); }},
});
constexpr auto kTagKeys = keysOf(kTagRows);

}  // namespace

Part songPart() {
  return {{"songs", "Songs", kTagKeys}, [](Value& object, const Document& document) {
            if (document.song && document.found.songTags)
              add(object, kTagRows, *document.found.songTags);
          }};
}

}  // namespace kolum::describe
