#include "describe/diagnosis.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "describe/content.h"
#include "describe/file_kind.h"
#include "read/disc/disc.h"
#include "read/disc/mounting.h"

namespace kolum::describe {

namespace {

// What a path can be besides a file or folder.
struct NoFile {
  mode_t mode;
  const char* reason;
};

constexpr NoFile kNoFiles[] = {
    {S_IFIFO, "a FIFO, not a file"},
    {S_IFSOCK, "a socket, not a file"},
    {S_IFCHR, "a device, not a file"},
    {S_IFDIR, "a folder, not a file"},
};

std::optional<Failure> openingFailure(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return systemFailure(errno);
  // A disk that fails says so only when it is read.
  char byte = 0;
  const int error = ::read(descriptor, &byte, 1) < 0 ? errno : 0;
  close(descriptor);
  if (error != 0) return systemFailure(error);
  return std::nullopt;
}

// By its name, as in the library.
Failure imageFailure(Wanted wanted) {
  if (wanted != Wanted::kVideo) {
    return {Cause::kDiscImage, "disc images are not opened",
            "\"kolum probe video\" describes their main title"};
  }
  if (const auto obstacle = disc::mountingObstacle())
    return {Cause::kDiscImage, "a disc image, which cannot be mounted: " + *obstacle};
  return {Cause::kDiscImage,
          "a disc image that cannot be mounted, or holds no DVD or Blu-ray disc"};
}

std::optional<Failure> discFailure(std::string_view name, Wanted wanted) {
  const bool looksIntoDiscs = wanted == Wanted::kVideo || wanted == Wanted::kStreams;
  if (!looksIntoDiscs) return std::nullopt;
  switch (disc::kindOf(name)) {
    case disc::Kind::kNone:
      return std::nullopt;
    case disc::Kind::kImage:
      return imageFailure(wanted);
    case disc::Kind::kDvdFolder:
    case disc::Kind::kBlurayFolder:
      break;
  }
  return Failure{Cause::kNoMainTitle, "a disc without a main title that can be read"};
}

Failure damaged(const Content& content) {
  if (content.opensFurtherFiles) {
    return {Cause::kPlaylist,
            "a playlist (" + content.format + "), which has no content of its own"};
  }
  if (content.format.empty()) return {Cause::kNotMedia, "not a media file"};
  return {Cause::kDamaged, "begins like " + content.format +
                               " but cannot be read: damaged, incomplete, or newer than the FFmpeg "
                               "in use"};
}

// What there is instead of a missing kind of stream, and the command for it.
Failure missing(const char* what, const Content& content) {
  const char* const kinds[][2] = {
      {"a picture", "photo"}, {"video only", "video"}, {"sound only", "audio"}};
  const std::string reason = std::string("no ") + what + " in it";
  if (!content.hasVideo && !content.hasAudio) return {Cause::kNoSuchStream, reason};
  const auto& [instead, command] = kinds[content.isPicture ? 0 : content.hasVideo ? 1 : 2];
  return {Cause::kNoSuchStream, reason + "; it has " + instead,
          std::string("\"kolum probe ") + command + " FILE\" describes it"};
}

std::optional<Failure> codecFailure(const std::string& codec) {
  if (codec.empty()) return std::nullopt;
  return Failure{Cause::kUnknownCodec, "its codec \"" + codec + "\" has no number in the library"};
}

Failure notDsd(const Content& content) {
  const std::string format = content.format.empty() ? "" : ", but " + content.format;
  return {Cause::kNotDsd, "not a DSD song" + format};
}

// Why the library reports no data for a song.
std::optional<Failure> songFailure(const std::string& name, const Content& content) {
  if (!content.hasAudio) return missing("sound", content);
  // The external tool handles songs with these names.
  if (isDsdName(name)) return noNumbersFailure();
  return codecFailure(content.unknownAudioCodec);
}

// Why the content of a file does not match; empty if it does.
std::optional<Failure> contentFailure(const std::string& name, const Content& content,
                                      Wanted wanted) {
  if (content.failure) return readerFailure(*content.failure);
  if (!content.isOpen) return damaged(content);
  switch (wanted) {
    case Wanted::kVideo:
      if (!content.hasVideo) return missing("video", content);
      return codecFailure(content.unknownVideoCodec);
    case Wanted::kKeyFrames:
      if (!content.hasVideo) return missing("video", content);
      break;
    case Wanted::kSong:
      return songFailure(name, content);
    case Wanted::kDsdSong:
      if (!content.isDsd) return notDsd(content);
      break;
    case Wanted::kPicture:
      if (!content.hasVideo) return missing("picture", content);
      break;
    case Wanted::kStreams:
      break;
  }
  return std::nullopt;
}

std::optional<Failure> knownFailure(const MediaPath& path, Wanted wanted, Content& content) {
  if (auto failure = readingFailure(path.full())) return failure;
  if (auto failure = discFailure(path.name, wanted)) return failure;
  content = contentOf(path.full());
  return contentFailure(path.name, content, wanted);
}

}  // namespace

std::optional<Failure> readingFailure(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return systemFailure(errno);
  for (const NoFile& kind : kNoFiles)
    if ((status.st_mode & S_IFMT) == kind.mode) return Failure{Cause::kNotAFile, kind.reason};
  if (auto failure = openingFailure(path)) return failure;
  if (S_ISREG(status.st_mode) && status.st_size == 0) return Failure{Cause::kEmpty, "empty file"};
  return std::nullopt;
}

Failure readerFailure(const read::Failure& failure) {
  switch (failure.cause) {
    case read::FailureCause::kCrashed:
    case read::FailureCause::kInvalidAnswer:
      return {Cause::kReaderCrashed, failure.reason};
    case read::FailureCause::kTimeOver:
      return {Cause::kTookTooLong, failure.reason};
    case read::FailureCause::kOutOfMemory:
      return {Cause::kOutOfMemory, failure.reason};
    case read::FailureCause::kNoReader:
      break;
  }
  return {Cause::kNoReader, failure.reason};
}

Failure noNumbersFailure() {
  return {Cause::kNoNumbers, "dsf2flac reported no technical data"};
}

Failure diagnose(const MediaPath& path, Wanted wanted, const Failure& otherwise) {
  Content content;
  return knownFailure(path, wanted, content).value_or(otherwise);
}

Failure diagnose(const MediaPath& path, Wanted wanted) {
  Content content;
  const auto failure = knownFailure(path, wanted, content);
  return failure ? *failure : damaged(content);
}

}  // namespace kolum::describe
