#include <kolum/video.h>

#include <memory>

#include "describe/diagnosis.h"
#include "files/descriptions.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

Description tracksOf(const describe::MediaPath& path) {
  const std::string full = path.full();
  unsigned audio = 0;
  unsigned subtitles = 0;
  unsigned isProtected = 0;
  if (GetAudioTrack(full.c_str(), &audio) != 0 || GetSubtitleTrack(full.c_str(), &subtitles) != 0 ||
      GetDRMProtectedInfo(full.c_str(), &isProtected) != 0)
    return describe::diagnose(path, describe::Wanted::kStreams);
  Result result = Result::ofFile(path.given);
  result.number("audioTracks", "Audio tracks", audio);
  result.number("subtitleTracks", "Subtitle tracks", subtitles);
  // The call fails for a file without video, and leaves the preset if no rotation is stored.
  unsigned degrees = 0;
  if (GetVideoRotationDegree(path.folder.c_str(), path.name.c_str(), &degrees) == 0) {
    result.data("rotation", degrees);
    result.show("Rotation", std::to_string(degrees) + " degrees");
  }
  result.data("isProtected", isProtected != 0);
  result.show("Protected", isProtected != 0 ? "yes, encrypted" : "no");
  return result;
}

// The queries open single files; on a disc no file represents the whole.
std::optional<Description> describe(Context& context, const MediaFile& file) {
  constexpr char kDisc[] = "discs are not opened; name one of their stream files";
  if (!file.isDisc) return tracksOf(file.path);
  if (file.isNamed) return Failure{Cause::kDisc, kDisc};
  context.note(file.path.given, kDisc);
  return std::nullopt;
}

}  // namespace

Action defineTracks(Syntax& syntax) {
  auto files = std::make_shared<MediaFileArguments>();
  addMediaFileArguments(syntax, *files);
  syntax.help(
      "Counts the audio and subtitle tracks of videos and songs, and reports the picture's stored\n"
      "rotation and whether streams are encrypted.\n"
      "\nExample:\n  kolum tracks --json movie.mkv");
  return [files](Context& context) {
    describeMediaFiles(context, *files, MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC,
                       [&](const MediaFile& file) { return describe(context, file); });
  };
}

}  // namespace kolum::tool
