// Keeps FFmpeg from reading on and on where a file holds nothing: recordings and downloads in
// progress are often as long on the disk as they are to become.
#ifndef KOLUM_AV_READ_LIMIT_H
#define KOLUM_AV_READ_LIMIT_H

#include <cstdint>

struct AVFormatContext;

namespace kolum::av {

// A call that has read so many zero bytes, in whole buffers of them, has met the end of the file.
inline constexpr std::int64_t kZerosLimit = std::int64_t{64} << 20;

// One input's limit. It stays where it is as long as the context lives.
class ReadLimit {
 public:
  // CONTEXT is not opened yet, or the limit has no effect.
  explicit ReadLimit(AVFormatContext* context);
  ReadLimit(const ReadLimit&) = delete;
  ReadLimit& operator=(const ReadLimit&) = delete;

  // For the life of the object, of which there is one at a time. LIMIT may be null.
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

  AVFormatContext* context_;
  bool isOn_ = false;
  std::int64_t left_ = 0;
  std::int64_t position_ = 0;
};

}  // namespace kolum::av

#endif
