// Keeps FFmpeg from reading gigabytes of zeros: recordings and downloads in progress are often as
// long on the disk as they are to become.
#ifndef KOLUM_AV_READ_LIMIT_H
#define KOLUM_AV_READ_LIMIT_H

#include <cstdint>
#include <string>

struct AVFormatContext;

namespace kolum::av {

// Reading that has met so many zero bytes, buffer after buffer, ends as at the end of the file
// until FFmpeg jumps elsewhere, unless the file system knows of a hole that ends soon: what follows
// it counts.
inline constexpr std::int64_t kZerosLimit = std::int64_t{64} << 20;
inline constexpr std::int64_t kLongestHole = std::int64_t{1} << 30;

// One input's limit. It stays where it is as long as the context lives.
class ReadLimit {
 public:
  // CONTEXT is not opened yet, or the limit has no effect. PATH is the file that it will read.
  ReadLimit(AVFormatContext* context, std::string path);
  ReadLimit(const ReadLimit&) = delete;
  ReadLimit& operator=(const ReadLimit&) = delete;

  // For the life of the object; scopes do not nest. LIMIT may be null.
  class Scope {
   public:
    explicit Scope(ReadLimit* limit);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    ReadLimit* limit_;
  };

 private:
  static int isReached(void* limit);
  void count(std::int64_t position, std::int64_t buffered, bool isZero);

  AVFormatContext* context_;
  std::string path_;
  bool isOn_ = false;
  std::int64_t left_ = 0;
  std::int64_t position_ = 0;
};

}  // namespace kolum::av

#endif
