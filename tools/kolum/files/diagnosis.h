// Why the library refused a file: looked into only after it did.
#ifndef KOLUM_TOOL_FILES_DIAGNOSIS_H
#define KOLUM_TOOL_FILES_DIAGNOSIS_H

#include <optional>
#include <string>

#include "files/paths.h"
#include "terminal/failure.h"

namespace kolum::tool {

// What a command looks for in a file.
enum class Wanted {
  kVideo,      // a video, also on a disc or in a disc image
  kKeyFrames,  // video of any codec, in a plain file
  kSong,
  kDsdSong,
  kPicture,
  kStreams,  // of any kind, also on a disc
};

// Why a file cannot be read at all, whatever is in it.
std::optional<Failure> readingFailure(const std::string& path);

// Of a DSD song whose numbers the external tool does not report.
Failure noNumbersFailure();

// OTHERWISE when the file has all that was wanted.
Failure diagnose(const MediaPath& path, Wanted wanted, const Failure& otherwise);
// The same, where the file can only be damaged then.
Failure diagnose(const MediaPath& path, Wanted wanted);

}  // namespace kolum::tool

#endif
