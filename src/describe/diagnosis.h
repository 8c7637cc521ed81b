// Why the library refused a file; examined only after it did.
#ifndef KOLUM_DESCRIBE_DIAGNOSIS_H
#define KOLUM_DESCRIBE_DIAGNOSIS_H

#include <optional>
#include <string>
#include <string_view>

#include "describe/failure.h"
#include "describe/media_path.h"
#include "read/findings/findings.h"

namespace kolum::describe {

// What a command requires of a file.
enum class Wanted {
  kVideo,      // a video, also on a disc or in a disc image
  kKeyFrames,  // video of any codec, in a plain file
  kSong,
  kDsdSong,
  kPicture,
  kStreams,  // of any kind, also on a disc
};

// Why a file cannot be read at all, whatever its content.
std::optional<Failure> readingFailure(const std::string& path);

// For a file at which an isolated reader failed.
Failure readerFailure(const read::Failure& failure);

// For a DSD song about which the external tool reports nothing.
Failure noNumbersFailure();

// Returns OTHERWISE if the file has everything required.
Failure diagnose(const MediaPath& path, Wanted wanted, const Failure& otherwise);
// The same, but reports a damaged file if it has everything required.
Failure diagnose(const MediaPath& path, Wanted wanted);

}  // namespace kolum::describe

#endif
