#include <kolum/host.h>
#include <kolum/thumbnail.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "base/appliance.h"
#include "describe/media_path.h"
#include "files/media_files.h"
#include "machine/library.h"
#include "machine/programs.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/numbers.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// Enough for every relative path that the library writes.
constexpr std::size_t kRelativePathSize = 1024;

struct MusicNames {
  std::string base;
  std::string artist;
  std::string album;
};

struct SystemThumbnail {
  std::string mediaType;
  std::string item;
};

void print(Context& context, const std::string& base, const char* relativePath) {
  Result result = Result::ofFile(base + relativePath);
  result.data("relativePath", relativePath);
  result.show("Relative path", relativePath);
  context.printer.block(result);
}

void showArtist(Context& context, const MusicNames& names) {
  char relativePath[kRelativePathSize] = "";
  const std::string base = describe::withSlash(names.base);
  if (LUM_CheckMusicArtistThumbnail(base.c_str(), names.artist.c_str(), relativePath) == 1) {
    return print(context, base, relativePath);
  }
  context.fail(base + relativePath, "no picture of this artist");
}

bool hasContent(const std::filesystem::path& file) {
  std::error_code error;
  return std::filesystem::file_size(file, error) > 0 && !error;
}

// An album's "@_" picture, found as the library finds it; empty if there is none.
std::string albumSource(const std::filesystem::path& thumbnail) {
  for (const char* extension : {".jpg", ".png"}) {
    std::filesystem::path source = thumbnail.parent_path() / "@_";
    source += thumbnail.stem();
    source += extension;
    std::error_code error;
    if (!std::filesystem::exists(source, error)) continue;
    return std::filesystem::is_regular_file(source, error) ? source.string() : "";
  }
  return "";
}

bool scale(const std::string& tool, const std::string& source, const std::string& target,
           const char* size) {
  const char* argv[] = {tool.c_str(), "-limit",  "memory", "64",           "-limit",       "map",
                        "128",        "-resize", size,     source.c_str(), target.c_str(), nullptr};
  return KoUtil_ExecSync(argv, 1) == 0 && hasContent(target);
}

// Repeats the library's last step with the ImageMagick installed here: the library knows only the
// appliance's copy.
bool makeWithImageMagick(const std::string& base, const std::string& relativePath) {
  const std::string tool = convertTool();
  if (relativePath.empty() || tool.empty() || tool == kConvertTool) return false;
  // Keeps relative paths from being taken for an option or a format.
  const std::string folder = base.starts_with('/') ? base : "./" + base;
  const std::filesystem::path thumbnail = folder + relativePath;
  const std::string source = albumSource(thumbnail);
  const std::filesystem::path small =
      thumbnail.parent_path() / (thumbnail.stem().string() + "-1.jpg");
  // As in the library: if ffmpeg made the small picture, nothing else is tried.
  if (source.empty() || hasContent(small)) return false;
  setenv("MAGICK_TMPDIR", base.c_str(), 1);
  scale(tool, source, small.string(), "126x126");
  return scale(tool, source, thumbnail.string(), "252x252") && std::filesystem::remove(source);
}

void makeAlbum(Context& context, const MusicNames& names) {
  initLibrary();
  char relativePath[kRelativePathSize] = "";
  const std::string base = describe::withSlash(names.base);
  const bool made = LUM_CheckMusicAlbumArt(base.c_str(), names.artist.c_str(), names.album.c_str(),
                                           relativePath) == 1;
  if (made || makeWithImageMagick(base, relativePath)) return print(context, base, relativePath);
  context.fail(base + relativePath, "no thumbnail, and none could be made from a \"@_\" picture");
}

void showTranscoded(Context& context, const FileArguments& files) {
  forEachName(context, files, [&](const std::string& name) {
    const describe::MediaPath path = describe::splitPath(name);
    const bool exists = LUM_IsTranscodeFileExist(path.folder.c_str(), path.name.c_str()) == 0;
    Result result = Result::ofFile(name);
    result.data("isTranscoded", exists);
    result.show("Transcoded copy", exists ? "yes" : "no");
    context.printer.block(result);
  });
}

void showFolder(Context& context, const SystemThumbnail& thumbnail) {
  const auto mediaType = parseNumber(thumbnail.mediaType);
  const auto item = parseNumber(thumbnail.item);
  char name[16] = "";
  if (!mediaType || !item || *mediaType < 0 || *mediaType > UINT32_MAX ||
      getSystemThumbFolderName(static_cast<unsigned>(*mediaType), *item, sizeof name, name) != 0) {
    throw UsageError("TYPE must be from 0 to 20, ITEM at least 1");
  }
  Result result;
  result.text("folder", "Folder", name);
  context.printer.block(result);
}

Action defineAlbum(Syntax& syntax) {
  auto names = std::make_shared<MusicNames>();
  syntax.operand({"BASE", Offer::kFiles}, names->base, "The music thumbnails' folder");
  syntax.operand({"ARTIST"}, names->artist, "The artist's name");
  syntax.operand({"ALBUM"}, names->album, "The album's name");
  syntax.help("Example:\n  kolum artwork album /share/.thumbs/ \"The Oscillators\" Tones");
  return [names](Context& context) { makeAlbum(context, *names); };
}

Action defineArtist(Syntax& syntax) {
  auto names = std::make_shared<MusicNames>();
  syntax.operand({"BASE", Offer::kFiles}, names->base, "The music thumbnails' folder");
  syntax.operand({"ARTIST"}, names->artist, "The artist's name");
  syntax.help("Example:\n  kolum artwork artist /share/.thumbs/ \"The Oscillators\"");
  return [names](Context& context) { showArtist(context, *names); };
}

Action defineTranscoded(Syntax& syntax) {
  auto files = std::make_shared<FileArguments>();
  addFileArguments(syntax, *files);
  syntax.help("Example:\n  kolum artwork transcoded Movies/*.avi");
  return [files](Context& context) { showTranscoded(context, *files); };
}

Action defineFolder(Syntax& syntax) {
  auto thumbnail = std::make_shared<SystemThumbnail>();
  syntax.operand({"TYPE"}, thumbnail->mediaType, "The media type's number, 0 to 20");
  syntax.operand({"ITEM"}, thumbnail->item, "The item's number");
  syntax.help("Example:\n  kolum artwork folder 3 4660");
  return [thumbnail](Context& context) { showFolder(context, *thumbnail); };
}

}  // namespace

Action defineArtwork(Syntax& syntax) {
  static constexpr Command kCommands[] = {
      {"album", "Makes an album's thumbnails when they are missing", defineAlbum},
      {"artist", "Finds an artist's picture", defineArtist},
      {"transcoded", "Looks for transcoded copies of videos", defineTranscoded},
      {"folder", "Names the folder of a system thumbnail", defineFolder},
  };
  syntax.commands(kCommands);
  syntax.help(
      "Artwork as the media library keeps it: below BASE a folder for each artist, in it "
      "artist.jpg\n"
      "and a thumbnail for each album. An album's thumbnails are made from the picture "
      "\"@_ALBUM.jpg\" or\n"
      "\".png\" beside them, which is deleted afterwards: by ffmpeg, or, if it makes none, by "
      "ImageMagick\n"
      "(/usr/local/sbin/convert, else convert on the PATH).\n"
      "\nExample:\n  kolum artwork album /share/.thumbs/ \"The Oscillators\" Tones");
  return nullptr;
}

}  // namespace kolum::tool
