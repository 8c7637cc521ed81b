// Disc images, mounted while they are read.
#ifndef KOLUM_READ_DISC_IMAGE_H
#define KOLUM_READ_DISC_IMAGE_H

#include <functional>
#include <memory>
#include <string>

#include "base/descriptor.h"

namespace kolum::disc {

// What to do when the mount folder exists already. One that is ours alone will do for kIgnore.
enum class MountFolderFailure { kGiveUp, kIgnore };

// A disc image mounted read-only under a folder of its own; unmounted, and the folder removed, on
// destruction.
class MountedImage {
 public:
  // Null when the image cannot be mounted; nothing is left behind then. What an ended process has
  // left behind is removed on the way.
  static std::unique_ptr<MountedImage> mount(const std::string& imagePath,
                                             MountFolderFailure onFolderFailure);

  MountedImage(const MountedImage&) = delete;
  MountedImage& operator=(const MountedImage&) = delete;
  ~MountedImage();

  // The mount folder with its closing "/".
  const std::string& folder() const { return folder_; }

 private:
  explicit MountedImage(std::string folder);
  bool makeFolder(MountFolderFailure onFailure);

  std::string folder_;
  // Made at the beginning, as the end must not need memory.
  std::string unmountCommand_;
  bool hasFolder_ = false;
  bool isMounted_ = false;
  // Locked as long as the folder is in use.
  Descriptor folderLock_;
  Descriptor mountLock_;
};

// Runs BODY where its mounts are seen by nobody else, and end with it even when this process is
// killed: on a thread with a mount namespace of its own. Where the process may have none, BODY runs
// all the same. Throws what BODY throws.
void inPrivateMounts(const std::function<void()>& body);

}  // namespace kolum::disc

#endif
