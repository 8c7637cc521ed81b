// Why a file gave no result: a cause, whose code programs read, and the reason in words.
#ifndef KOLUM_TOOL_TERMINAL_FAILURE_H
#define KOLUM_TOOL_TERMINAL_FAILURE_H

#include <string>
#include <string_view>

namespace kolum::tool {

enum class Cause {
  kNotFound,
  kPermissionDenied,
  kPathTooLong,
  kTooManyOpenFiles,
  kSystemError,
  kEmpty,
  kNotAFile,
  kUnknownName,
  kNothingKnown,
  kNotMedia,
  kPlaylist,
  kDamaged,
  kNoSuchStream,
  kUnknownCodec,
  kDisc,
  kDiscImage,
  kNoMainTitle,
  kNoKeyFrame,
  kNotDsd,
  kNoNumbers,
};

struct Failure {
  Cause cause;
  std::string reason;  // may hold any bytes
};

// The code of a cause, "not-found"; docs/tool.md lists them all.
std::string_view codeOf(Cause cause);

// What a call to the system failed with, an errno.
Failure systemFailure(int error);

}  // namespace kolum::tool

#endif
