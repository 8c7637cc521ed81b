#include "support/shell.h"

#include <kolum/host.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <vector>

#include "support/text.h"

namespace kolum {

namespace {

constexpr std::size_t kOutputMax = std::size_t{16} << 20;
constexpr std::size_t kPieceSize = 4096;

struct ClosePipe {
  // Waits for the command, so that no child is left behind.
  void operator()(FILE* pipe) const { pclose(pipe); }
};
using Pipe = std::unique_ptr<FILE, ClosePipe>;

// Signals do not end the reading. The number of bytes read, none at the end.
std::size_t readPiece(FILE* pipe, std::array<char, kPieceSize>& piece) {
  ssize_t count = 0;
  do {
    count = read(fileno(pipe), piece.data(), piece.size());
  } while (count < 0 && errno == EINTR);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace

std::string shellWord(const std::string& path) {
  // Room for every way of quoting in place: a quoted quote takes four bytes.
  std::vector<char> word(path.size() * 4 + sizeof "''");
  copyText(word.data(), word.size(), path);
  StringConvert2SystemCmdFilename(word.data());
  return word.data();
}

std::optional<std::string> outputOf(const char* command) {
  const Pipe pipe(popen(command, "re"));
  if (pipe == nullptr) return std::nullopt;
  std::string output;
  std::array<char, kPieceSize> piece{};
  while (const std::size_t count = readPiece(pipe.get(), piece)) {
    output.append(piece.data(), count);
    if (output.size() > kOutputMax) return "";
  }
  return output;
}

}  // namespace kolum
