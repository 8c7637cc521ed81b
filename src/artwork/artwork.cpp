#include "artwork/artwork.h"

#include <kolum/host.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>

#include "artwork/artwork_commands.h"
#include "base/child_process.h"

namespace kolum::artwork {

namespace {

constexpr std::size_t kFilePathSize = 512;  // with the terminator

constexpr std::string_view kTranscodedSuffixes[] = {
    ".mobile240p", ".mobile360p", ".ipad720p", ".mobile480p", ".mobile1080p",
};

constexpr std::string_view kUnknown = "UNKNOWN";
constexpr std::size_t kUnknownNameMax = 255;
constexpr std::size_t kArtistMax = 255;
constexpr std::size_t kAlbumMax = 249;

constexpr const char* kSourceExtensions[] = {".jpg", ".png"};
constexpr int kThumbnailPixels = 252;
constexpr int kSmallPixels = 126;

bool fits(const std::string& path) {
  return path.size() < kFilePathSize;
}

bool exists(const std::string& path) {
  return fits(path) && KoUtil_IsFileExist(path.c_str()) != 0;
}

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status {};
  if (!fits(path) || stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

bool isEmptyFile(const struct stat& status) {
  return status.st_size == 0;
}

// The name of an artist's folder or an album's file, of at most MAX bytes. Names that begin with
// the capitals "UNKNOWN" keep their spelling, whatever follows: folders on users' disks are named
// so.
std::optional<std::string> nameOf(const char* text, std::size_t max) {
  const std::string_view given(text);
  if (given.starts_with(kUnknown)) return std::string(given.substr(0, kUnknownNameMax));
  // Hosts count the size with or without the terminator: there is room for both, and a name that is
  // one byte too long is cut.
  std::array<char, kArtistMax + 2> name{};
  if (StringConvert2LowerFileString(text, static_cast<int>(given.size()), name.data(),
                                    static_cast<int>(max) + 1) == -1) {
    return std::nullopt;
  }
  return std::string(name.data(), strnlen(name.data(), max));
}

// An album's files, all in the artist's folder.
struct AlbumFiles {
  std::string thumbnail;
  std::string small;
  std::string source;
};

// Empty if there is no source picture or a path is too long.
std::optional<AlbumFiles> albumFiles(const std::string& base, const AlbumNames& names) {
  const std::string folder = base + names.folder + "/";
  for (const char* extension : kSourceExtensions) {
    AlbumFiles files{.thumbnail = folder + names.album + ".jpg",
                     .small = folder + names.album + "-1.jpg",
                     .source = folder + "@_" + names.album + extension};
    if (exists(files.source) && fits(files.small)) return files;
  }
  return std::nullopt;
}

bool isRegularFile(const std::string& path) {
  const auto status = statusOf(path);
  return status && S_ISREG(status->st_mode);
}

// A command that cannot be built fails like a missing tool.
bool scales(const std::optional<std::string>& command) {
  constexpr std::chrono::seconds kScalingTime{60};
  return command && runShell(*command, kScalingTime) == 0;
}

bool scaleWithFfmpeg(const char* toolFolder, const std::string& source, const std::string& target,
                     int pixels) {
  return toolFolder != nullptr && scales(ffmpegCommand(toolFolder, source, target, pixels));
}

bool scaleWithConvert(const std::string& base, const std::string& source, const std::string& target,
                      int pixels) {
  return scales(convertCommand(base, source, target, pixels));
}

// Only the small picture shows whether ffmpeg works here, not the tool's status: a picture left by
// an earlier attempt counts too.
bool makeThumbnails(const std::string& base, const AlbumFiles& files, const char* toolFolder) {
  scaleWithFfmpeg(toolFolder, files.source, files.small, kSmallPixels);
  const auto small = statusOf(files.small);
  if (small && exists(files.small) && !isEmptyFile(*small)) {
    return scaleWithFfmpeg(toolFolder, files.source, files.thumbnail, kThumbnailPixels);
  }
  scaleWithConvert(base, files.source, files.small, kSmallPixels);
  return scaleWithConvert(base, files.source, files.thumbnail, kThumbnailPixels);
}

}  // namespace

bool hasTranscodedCopy(std::string_view folder, std::string_view fileName) {
  std::string stem(folder);
  stem += ".@__thumb/transcode/";
  stem += fileName;
  for (const std::string_view suffix : kTranscodedSuffixes) {
    if (statusOf(stem + std::string(suffix))) return true;
  }
  return false;
}

std::optional<std::string> artistPicture(const char* artist) {
  const auto folder = nameOf(artist, kArtistMax);
  if (!folder) return std::nullopt;
  return *folder + "/artist.jpg";
}

bool hasArtistPicture(const std::string& base, const std::string& picture) {
  return exists(base + picture);
}

std::optional<AlbumNames> albumNames(const char* artist, const char* album) {
  const auto folder = nameOf(artist, kArtistMax);
  if (!folder) return std::nullopt;
  const auto name = nameOf(album, kAlbumMax);
  if (!name) return std::nullopt;
  return AlbumNames{*folder, *name};
}

bool hasAlbumThumbnail(const std::string& base, const AlbumNames& names, const char* toolFolder) {
  const std::string thumbnail = base + names.thumbnail();
  if (const auto present = statusOf(thumbnail)) {
    if (!isEmptyFile(*present)) return true;
    unlink(thumbnail.c_str());
  }
  const auto files = albumFiles(base, names);
  // Tools would block on a pipe.
  if (!files || !isRegularFile(files->source)) return false;
  if (!makeThumbnails(base, *files, toolFolder)) return false;
  unlink(files->source.c_str());
  return true;
}

}  // namespace kolum::artwork
