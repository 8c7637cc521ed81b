// Why a file gave no result: a cause, with a code for programs, and the reason in words.
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
  kReaderCrashed,
  kTookTooLong,
  kOutOfMemory,
  kNoReader,
};

struct Failure {
  Cause cause;
  std::string reason;  // may contain any bytes
};

// The code of a cause, such as "not-found"; docs/tool.md lists them all.
std::string_view codeOf(Cause cause);

// The failure for a system call's errno.
Failure systemFailure(int error);

}  // namespace kolum::tool

#endif
