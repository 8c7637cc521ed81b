#include "terminal/line_reader.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "terminal/interruption.h"

namespace kolum::tool {

LineReader::What LineReader::finished() {
  ++number_;
  if (!std::exchange(isTooLong_, false) && line_.size() <= longest_) return What::kLine;
  line_.clear();
  return What::kTooLong;
}

std::optional<LineReader::What> LineReader::takeLine() {
  const std::size_t end = pending_.find('\n', searched_);
  if (end != std::string::npos) {
    line_.assign(pending_, 0, end);
    pending_.erase(0, end + 1);
    searched_ = 0;
    return finished();
  }
  searched_ = pending_.size();
  if (pending_.size() > longest_) {
    isTooLong_ = true;
    pending_.clear();
    searched_ = 0;
  }
  if (!isAtEnd_) return std::nullopt;
  if (pending_.empty() && !isTooLong_) return What::kEnd;
  line_.clear();
  line_.swap(pending_);
  searched_ = 0;
  return finished();
}

LineReader::What LineReader::next(std::optional<std::chrono::milliseconds> limit) {
  for (;;) {
    if (const auto what = takeLine()) return *what;
    if (!waitForInput(descriptor_, limit)) return What::kNothingYet;
    char buffer[65536];
    const ssize_t length = read(descriptor_, buffer, sizeof buffer);
    if (length < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category());
    if (length == 0) isAtEnd_ = true;
    if (length > 0) pending_.append(buffer, static_cast<std::size_t>(length));
  }
}

}  // namespace kolum::tool
