// Disc images that are mounted while they are read.
#ifndef KOLUM_READ_DISC_IMAGE_H
#define KOLUM_READ_DISC_IMAGE_H

#include <functional>
#include <memory>
#include <string>

#include "base/descriptor.h"

namespace kolum::disc {

// What to do if the mount folder already exists. kIgnore accepts one that only we can write to.
enum class MountFolderFailure { kGiveUp, kIgnore };

// A disc image mounted read-only under a folder of its own; unmounted, and the folder removed, on
// destruction.
class MountedImage {
 public:
  // Null, with nothing left behind, if the image cannot be mounted. Also removes what ended
  // processes have left behind.
  static std::unique_ptr<MountedImage> mount(const std::string& imagePath,
                                             MountFolderFailure onFolderFailure);

  MountedImage(const MountedImage&) = delete;
  MountedImage& operator=(const MountedImage&) = delete;
  ~MountedImage();

  // The mount folder with its trailing "/".
  const std::string& folder() const { return folder_; }

 private:
  explicit MountedImage(std::string folder);
  bool makeFolder(MountFolderFailure onFailure);

  std::string folder_;
  // Built at the start, because destruction must not need memory.
  std::string unmountCommand_;
  bool hasFolder_ = false;
  bool isMounted_ = false;
  // Locked while the folder is in use.
  Descriptor folderLock_;
  Descriptor mountLock_;
};

// Runs BODY on a thread with a mount namespace of its own: nobody else sees its mounts, and they
// end with it even if this process is killed. If the process may not create one, BODY runs without
// it. Throws what BODY throws.
void inPrivateMounts(const std::function<void()>& body);

}  // namespace kolum::disc

#endif
