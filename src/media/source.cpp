#include "media/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace kolum::media {

namespace {

Descriptor openWithoutWaiting(const std::string& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

}  // namespace

std::optional<Source> Source::open(const std::string& path) {
  Descriptor descriptor = openWithoutWaiting(path);
  return descriptor.isOpen() ? adopt(std::move(descriptor), path) : std::nullopt;
}

std::optional<Source> Source::openUnchecked(const std::string& path) {
  Descriptor descriptor = openWithoutWaiting(path);
  if (!descriptor.isOpen()) return std::nullopt;
  return adoptUnchecked(std::move(descriptor), path);
}

std::optional<Source> Source::adopt(Descriptor descriptor, std::string name) {
  struct stat status = {};
  if (fstat(descriptor.get(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)) return std::nullopt;
  Source source(std::move(descriptor), std::move(name));
  source.size_ = status.st_size;
  return source;
}

// cppcheck-suppress passedByValue; it is moved from
Source Source::adoptUnchecked(Descriptor descriptor, std::string name) {
  return {std::move(descriptor), std::move(name)};
}

// cppcheck-suppress passedByValue; it is moved from
Source::Source(Descriptor descriptor, std::string name) noexcept
    : descriptor_(std::move(descriptor)), name_(std::move(name)) {}

std::int64_t Source::size() const {
  if (!size_) {
    struct stat status = {};
    size_ = fstat(descriptor_.get(), &status) == 0 ? status.st_size : 0;
  }
  return *size_;
}

std::ptrdiff_t Source::readAt(std::int64_t position, std::span<std::uint8_t> out) const {
  if (position < 0 || position >= static_cast<std::int64_t>(head_.size()))
    return readDirectly(position, out);
  const auto begin = static_cast<std::size_t>(position);
  const std::size_t fromHead = std::min(out.size(), head_.size() - begin);
  std::copy_n(head_.data() + begin, fromHead, out.data());
  if (fromHead == out.size()) return static_cast<std::ptrdiff_t>(fromHead);
  const std::ptrdiff_t rest =
      readDirectly(static_cast<std::int64_t>(head_.size()), out.subspan(fromHead));
  // Bytes read before a failure count, as for read().
  return static_cast<std::ptrdiff_t>(fromHead) + std::max<std::ptrdiff_t>(rest, 0);
}

std::span<const std::uint8_t> Source::head() const noexcept try {
  if (head_.empty()) {
    head_.resize(kHeadSize);
    const std::ptrdiff_t got = readDirectly(0, head_);
    head_.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  }
  return head_;
} catch (const std::bad_alloc&) {
  // Every reader reads for itself then.
  return {};
}

void Source::blank(std::int64_t begin, std::int64_t end) const {
  head_.clear();
  blanks_.push_back({begin, end});
}

bool Source::canSeekTo(std::int64_t position) const {
  return ::lseek(descriptor_.get(), position, SEEK_SET) >= 0;
}

std::optional<std::int64_t> Source::distanceToData(std::int64_t position) const {
  const off_t data = ::lseek(descriptor_.get(), position, SEEK_DATA);
  if (data < 0 && errno == ENXIO) return std::nullopt;
  return std::max<std::int64_t>(data - position, 0);
}

std::ptrdiff_t Source::readDirectly(std::int64_t position, std::span<std::uint8_t> out) const {
  if (meter_.isUsedUp()) return 0;
  std::size_t done = 0;
  while (done < out.size()) {
    const ssize_t got = ::pread(descriptor_.get(), out.data() + done, out.size() - done,
                                position + static_cast<std::int64_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return done > 0 ? static_cast<std::ptrdiff_t>(done) : -1;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  meter_.countBytes(done);
  applyBlanks(position, out.first(done));
  return static_cast<std::ptrdiff_t>(done);
}

void Source::applyBlanks(std::int64_t position, std::span<std::uint8_t> bytes) const {
  const std::int64_t end = position + static_cast<std::int64_t>(bytes.size());
  for (const Range& range : blanks_) {
    const std::int64_t from = std::max(position, range.begin);
    const std::int64_t to = std::min(end, range.end);
    if (from < to)
      std::ranges::fill(bytes.subspan(static_cast<std::size_t>(from - position),
                                      static_cast<std::size_t>(to - from)),
                        std::uint8_t{0});
  }
}

}  // namespace kolum::media
