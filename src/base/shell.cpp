#include "base/shell.h"

#include <kolum/host.h>

#include <vector>

#include "base/text.h"

namespace kolum {

std::string shellWord(const std::string& path) {
  // Room for any in-place quoting: a quoted quote takes four bytes.
  std::vector<char> word(path.size() * 4 + sizeof "''");
  copyText(word.data(), word.size(), path);
  StringConvert2SystemCmdFilename(word.data());
  return word.data();
}

}  // namespace kolum
