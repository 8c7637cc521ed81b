// An open file descriptor.
#ifndef KOLUM_BASE_DESCRIPTOR_H
#define KOLUM_BASE_DESCRIPTOR_H

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kolum {

// Closed on destruction, which preserves errno. -1 means none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~Descriptor() { reset(); }

  bool isOpen() const { return value_ >= 0; }
  int get() const { return value_; }
  int release() { return std::exchange(value_, -1); }
  void reset(int value = -1) {
    if (value_ >= 0) {
      const int reason = errno;
      ::close(value_);
      errno = reason;
    }
    value_ = value;
  }

 private:
  int value_ = -1;
};

}  // namespace kolum

#endif
