// Which file a video's name stands for: DVD folders, Blu-ray folders and disc images lead to a main
// title, every other name to itself.
#ifndef KOLUM_VIDEO_DISC_H
#define KOLUM_VIDEO_DISC_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kolum::video {

enum class Source { kFile, kDvdFolder, kBlurayFolder, kImage };

// Told by the name alone; the two index names are case-sensitive, the image suffix is not.
Source sourceOf(std::string_view fileName);

// The title that a disc is probed by.
struct MainTitle {
  // The file to open. Empty when the host reports a DVD title without naming a file.
  std::string path;
  // FORMAT_DVDIFO, FORMAT_BDBDMV, FORMAT_DVDISO or FORMAT_BDISO.
  std::uint32_t containerFormat = 0;
  // Bytes of all files of a DVD title; 0 for Blu-ray.
  long long size = 0;
};

// FOLDER is the one that holds VIDEO_TS.IFO, with its closing "/".
std::optional<MainTitle> dvdFolderTitle(const std::string& folder);

// FOLDER is the one that holds index.bdmv, with its closing "/".
std::optional<MainTitle> blurayFolderTitle(const std::string& folder);

// The title of a mounted image, DVD before Blu-ray.
std::optional<MainTitle> imageTitle(const std::string& mountFolder);

// The largest regular file in FOLDER whose suffix begins with EXTENSION, whatever the letter case;
// of equal ones the last in the folder's own order.
std::optional<std::string> largestFile(const std::string& folder, std::string_view extension);

// What to do when the mount folder cannot be created, for instance because it exists.
enum class MountFolderFailure { kGiveUp, kIgnore };

// A disc image mounted read-only under a folder of its own; unmounted, and the folder removed, on
// destruction.
class MountedImage {
 public:
  // Null when the image cannot be mounted; nothing is left behind then.
  static std::unique_ptr<MountedImage> mount(const std::string& imagePath,
                                             MountFolderFailure onFolderFailure);

  MountedImage(const MountedImage&) = delete;
  MountedImage& operator=(const MountedImage&) = delete;
  ~MountedImage();

  // The mount folder with its closing "/".
  const std::string& folder() const { return folder_; }

 private:
  explicit MountedImage(std::string folder);

  std::string folder_;
  // Made at the beginning, as the end must not need memory.
  std::string unmountCommand_;
  bool hasFolder_ = false;
  bool isMounted_ = false;
};

}  // namespace kolum::video

#endif
