#include "support/shell.h"

#include <kolum/host.h>

#include <vector>

#include "support/text.h"

namespace kolum {

std::string shellWord(const std::string& path) {
  // The host rewrites in place and needs up to three bytes for one.
  std::vector<char> word(path.size() * 3 + 1);
  copyText(word.data(), word.size(), path);
  StringConvert2SystemCmdFilename(word.data());
  return word.data();
}

}  // namespace kolum
