// Why a file gave no result: a cause, with a code for programs, and the reason in words.
#ifndef KOLUM_DESCRIBE_FAILURE_H
#define KOLUM_DESCRIBE_FAILURE_H

#include <string>
#include <string_view>
#include <vector>

namespace kolum::describe {

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
  std::string reason;       // may contain any bytes
  std::string advice = {};  // what a caller of kolum can do, if anything
};

// The code of a cause, such as "not-found"; docs/tool.md lists them all.
std::string_view codeOf(Cause cause);
// All of them.
std::vector<std::string_view> codesOfCauses();

// The failure for a system call's errno.
Failure systemFailure(int error);

}  // namespace kolum::describe

#endif
