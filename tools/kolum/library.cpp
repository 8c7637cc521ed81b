#include <kolum/frame.h>

#include "context.h"
#include "programs.h"

namespace kolum::tool {

bool Context::initLibrary() {
  if (!hasChannels_) {
    const std::string tools = standInFolder();
    hasChannels_ = KoLUM_Init(tools.empty() ? nullptr : tools.c_str()) == 0;
  }
  return *hasChannels_;
}

}  // namespace kolum::tool
