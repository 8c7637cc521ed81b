#include <kolum/audio.h>

#include <memory>

#include "describe/content.h"
#include "describe/diagnosis.h"
#include "describe/file_kind.h"
#include "describe/media_path.h"
#include "files/descriptions.h"
#include "files/file_types.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "machine/library.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

constexpr std::uint64_t kBitsOfAKilobit = 1000;

void addTags(Result& result, const songObject_st& song) {
  result.text("title", "Title", song.title);
  result.text("artist", "Artist", song.artist);
  result.text("albumArtist", "Album artist", song.albumArtist);
  result.text("album", "Album", song.album);
  if (song.track != 0) result.number("track", "Track", song.track);
  if (song.year != 0) result.number("year", "Year", song.year);
  result.text("genre", "Genre", song.genre);
}

void addNumbers(Result& result, const songObject_st& song) {
  if (song.duration != 0) result.duration("duration", "Duration", song.duration);
  if (song.sampleRate != 0) result.frequency("sampleRate", "Sample rate", song.sampleRate);
  result.number("channels", "Channels", song.channels);
  if (song.bitRate != 0) result.bitRate("bitRate", "Bit rate", song.bitRate * kBitsOfAKilobit);
}

Description describe(const describe::MediaPath& path) {
  songObject_st song = {};
  // The library reads tags from any song and treats it as DSF.
  if (!describe::contentOf(path.full()).isDsd ||
      GetDsfMetadata(path.folder.c_str(), path.name.c_str(), &song) != 0) {
    return describe::diagnose(path, describe::Wanted::kDsdSong);
  }
  Result result = Result::ofFile(path.given);
  addContainer(result, song.containerFormat);
  addTags(result, song);
  addNumbers(result, song);
  if (song.sampleRate == 0) return {std::move(result), describe::noNumbersFailure()};
  return result;
}

// A file in a folder counts if it is a DSD song by its name, or with --all by its content.
bool isWanted(const MediaFile& file, bool byContent) {
  if (file.isNamed || describe::isDsdName(file.path.name)) return true;
  return byContent && describe::contentOf(file.path.full()).isDsd;
}

}  // namespace

Action defineDsf(Syntax& syntax) {
  auto files = std::make_shared<MediaFileArguments>();
  addMediaFileArguments(syntax, *files);
  syntax.help(
      "Describes DSD songs (.dsf and .dff) with their tags, as the server stores them. The "
      "numbers\n"
      "come from the tool dsf2flac.\n"
      "\nExample:\n  kolum dsf Music/*.dsf");
  return [files](Context& context) {
    initLibrary();
    const auto describeWanted = [&](const MediaFile& file) -> std::optional<Description> {
      if (!isWanted(file, files->byContent)) return std::nullopt;
      return describe(file.path);
    };
    describeMediaFiles(context, *files, MEDIA_KIND_BIT_MUSIC, describeWanted);
  };
}

}  // namespace kolum::tool
