#include "machine/library.h"

#include <fcntl.h>
#include <kolum/frame.h>
#include <unistd.h>

#include <string>

#include "machine/programs.h"

namespace kolum::tool {

namespace {

// The library puts this folder into shell commands unquoted. If a shell would read its name
// differently, an open descriptor represents it for the life of this process.
std::string plainName(const std::string& folder) {
  constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._+-";
  if (folder.find_first_not_of(kPlain) == std::string::npos) return folder;
  const int descriptor = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return folder;
  return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(descriptor) + "/";
}

}  // namespace

bool initLibrary() {
  static const bool kHasChannels = [] {
    const std::string tools = plainName(standInFolder());
    return KoLUM_Init(tools.empty() ? nullptr : tools.c_str()) == 0;
  }();
  return kHasChannels;
}

}  // namespace kolum::tool
