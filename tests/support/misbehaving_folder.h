// A mounted folder with a file that misbehaves: see misbehaving_files.cpp.
#ifndef KOLUM_TESTS_SUPPORT_MISBEHAVING_FOLDER_H
#define KOLUM_TESTS_SUPPORT_MISBEHAVING_FOLDER_H

#include <sys/types.h>

#include <optional>
#include <string>

namespace kolum::test {

class MisbehavingFolder {
 public:
  // Why there can be none here, if so. In a sandbox (runInAppliance()), whose mounts end with it.
  static std::optional<std::string> unavailable();

  // Mounted on FOLDER. CONTENT and GOOD are names of files.
  MisbehavingFolder(const std::string& folder, const std::string& name, const std::string& mischief,
                    const std::string& content, const std::string& good);
  // Whoever waits for it gets an error, and it is unmounted.
  ~MisbehavingFolder();
  MisbehavingFolder(const MisbehavingFolder&) = delete;
  MisbehavingFolder& operator=(const MisbehavingFolder&) = delete;

 private:
  std::string folder_;
  pid_t server_ = -1;
};

}  // namespace kolum::test

#endif
