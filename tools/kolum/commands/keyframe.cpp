#include <kolum/mediainfo.h>

#include <climits>
#include <memory>

#include "describe/diagnosis.h"
#include "files/descriptions.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

struct Options {
  int seconds = 0;
  MediaFileArguments files;
};

Description keyFrameOf(const MediaFile& file, int seconds) {
  if (file.isDisc)
    return Failure{Cause::kDisc,
                   "a disc; \"kolum info --seek\" finds key frames of its main title"};
  double keyFrame = 0;
  if (getVideoKeyFrameTime(file.path.full().c_str(), seconds, &keyFrame) != 0) {
    return describe::diagnose(file.path, describe::Wanted::kKeyFrames,
                              {Cause::kNoKeyFrame, "no key frame from there on"});
  }
  Result result = Result::ofFile(file.path.given);
  result.data("seconds", seconds);
  result.data("keyFrameTime", keyFrame);
  result.show("Key frame", decimalText(keyFrame, 3) + " s");
  return result;
}

}  // namespace

Action defineKeyframe(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operand({"SECONDS"}, options->seconds, {0, INT_MAX}, "From the start of the video");
  addMediaFileArguments(syntax, options->files);
  syntax.help(
      "Finds the key frame from which a player starts to play at SECONDS: usually the first one at "
      "or\n"
      "after it.\n"
      "\nExample:\n  kolum keyframe 90 movie.mkv");
  return [options](Context& context) {
    describeMediaFiles(context, options->files, MEDIA_KIND_BIT_VIDEO,
                       [&](const MediaFile& file) { return keyFrameOf(file, options->seconds); });
  };
}

}  // namespace kolum::tool
