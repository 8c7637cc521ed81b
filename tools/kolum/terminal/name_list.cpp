#include "terminal/name_list.h"

#include <unistd.h>

#include <cerrno>

#include "terminal/interruption.h"

namespace kolum::tool {

namespace {

// No path is this long; anything longer is not a list of names.
constexpr std::size_t kLongestName = std::size_t{1} << 20;

class NameList {
 public:
  NameList(NameEnd end, const std::function<void(const std::string&)>& visit)
      : end_(end), visit_(visit) {}

  // False if they are not names.
  bool take(std::string_view bytes) {
    pending_ += bytes;
    if (end_ == NameEnd::kFirstThatComes) decide();
    visitWholeNames();
    return pending_.size() <= kLongestName && !isMixed_;
  }

  // The last name may lack its terminator; false as above.
  bool finish() {
    isMixed_ = end_ != NameEnd::kNul && pending_.find('\0') != std::string::npos;
    if (!isMixed_ && !pending_.empty()) visit_(pending_);
    return !isMixed_;
  }

  bool isMixed() const { return isMixed_; }

 private:
  void decide() {
    if (pending_.find('\0') != std::string::npos) {
      end_ = NameEnd::kNul;
    } else if (pending_.find('\n') != std::string::npos) {
      end_ = NameEnd::kNewline;
    }
  }

  void visitWholeNames() {
    if (end_ == NameEnd::kFirstThatComes) return;
    const char end = end_ == NameEnd::kNul ? '\0' : '\n';
    std::size_t begin = 0;
    for (std::size_t at = 0; (at = pending_.find(end, begin)) != std::string::npos;) {
      const std::string name = pending_.substr(begin, at - begin);
      begin = at + 1;
      // A NUL inside a name shows that the newlines so far did not end names.
      isMixed_ = name.find('\0') != std::string::npos;
      if (isMixed_) break;
      if (!name.empty()) visit_(name);
    }
    pending_.erase(0, begin);
  }

  NameEnd end_;
  const std::function<void(const std::string&)>& visit_;
  std::string pending_;  // the beginning of an incomplete name
  bool isMixed_ = false;
};

describe::Failure listFailure(const NameList& list) {
  if (list.isMixed())
    return {describe::Cause::kSystemError,
            "some names end with newlines and some with NUL; use -0"};
  return describe::systemFailure(ENAMETOOLONG);
}

}  // namespace

std::optional<describe::Failure> forEachNameIn(
    int descriptor, NameEnd end, const std::function<void(const std::string&)>& visit) {
  NameList list(end, visit);
  char buffer[65536];
  for (;;) {
    waitForInput(descriptor);
    const ssize_t length = read(descriptor, buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) return describe::systemFailure(errno);
    if (length == 0) break;
    if (!list.take({buffer, static_cast<std::size_t>(length)})) return listFailure(list);
  }
  return list.finish() ? std::nullopt : std::optional(listFailure(list));
}

}  // namespace kolum::tool
