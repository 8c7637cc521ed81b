#include "describe/failure.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace kolum::describe {

namespace {

struct Code {
  Cause cause;
  std::string_view text;
};

// Programs compare these texts: none may change; new ones may be added.
constexpr Code kCodes[] = {
    {Cause::kNotFound, "not-found"},
    {Cause::kPermissionDenied, "permission-denied"},
    {Cause::kPathTooLong, "path-too-long"},
    {Cause::kTooManyOpenFiles, "too-many-open-files"},
    {Cause::kSystemError, "system-error"},
    {Cause::kEmpty, "empty"},
    {Cause::kNotAFile, "not-a-file"},
    {Cause::kUnknownName, "unknown-name"},
    {Cause::kNothingKnown, "nothing-known"},
    {Cause::kNotMedia, "not-media"},
    {Cause::kPlaylist, "playlist"},
    {Cause::kDamaged, "damaged"},
    {Cause::kNoSuchStream, "no-such-stream"},
    {Cause::kUnknownCodec, "unknown-codec"},
    {Cause::kDisc, "disc"},
    {Cause::kDiscImage, "disc-image"},
    {Cause::kNoMainTitle, "no-main-title"},
    {Cause::kNoKeyFrame, "no-key-frame"},
    {Cause::kNotDsd, "not-dsd"},
    {Cause::kNoNumbers, "no-numbers"},
    {Cause::kReaderCrashed, "reader-crashed"},
    {Cause::kTookTooLong, "took-too-long"},
    {Cause::kOutOfMemory, "out-of-memory"},
    {Cause::kNoReader, "no-reader"},
};

struct SystemError {
  int error;
  Cause cause;
};

constexpr SystemError kSystemErrors[] = {
    {ENOENT, Cause::kNotFound},          {ENOTDIR, Cause::kNotFound},
    {EACCES, Cause::kPermissionDenied},  {EPERM, Cause::kPermissionDenied},
    {ENAMETOOLONG, Cause::kPathTooLong}, {EMFILE, Cause::kTooManyOpenFiles},
    {ENFILE, Cause::kTooManyOpenFiles},
};

}  // namespace

std::string_view codeOf(Cause cause) {
  const auto* row = std::find_if(std::begin(kCodes), std::end(kCodes),
                                 [&](const Code& code) { return code.cause == cause; });
  return row == std::end(kCodes) ? "" : row->text;
}

std::vector<std::string_view> codesOfCauses() {
  std::vector<std::string_view> codes;
  for (const Code& code : kCodes) codes.push_back(code.text);
  return codes;
}

Failure systemFailure(int error) {
  const auto* row = std::find_if(std::begin(kSystemErrors), std::end(kSystemErrors),
                                 [&](const SystemError& known) { return known.error == error; });
  return {row == std::end(kSystemErrors) ? Cause::kSystemError : row->cause, std::strerror(error)};
}

}  // namespace kolum::describe
