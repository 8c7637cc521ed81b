// Gives FFmpeg a file's bytes: an AVIOContext over an opened source, with limits on zeros and on
// searching.
#ifndef KOLUM_READ_FFMPEG_SOURCE_READER_H
#define KOLUM_READ_FFMPEG_SOURCE_READER_H

#include <cstdint>
#include <memory>

#include "media/source.h"

struct AVIOContext;

namespace kolum::ffmpeg {

// Avoids reading gigabytes of zeros: recordings and downloads in progress often have their final
// length already. After this many zero bytes an operation gets the end of the file until it seeks
// elsewhere, unless the file system reports a hole that ends soon: then the data after it counts.
inline constexpr std::int64_t kZerosLimit = std::int64_t{64} << 20;
inline constexpr std::int64_t kLongestHole = std::int64_t{1} << 30;

class SourceReader {
 public:
  // SOURCE must outlive the reader.
  explicit SourceReader(const media::Source& source);
  SourceReader(const SourceReader&) = delete;
  SourceReader& operator=(const SourceReader&) = delete;
  ~SourceReader();

  AVIOContext* context() const { return context_; }
  // Begins an operation: what it may read is counted anew.
  void renew();
  // From now on, an operation may read only as much as a search for data takes.
  void limitSearches() { limit_ = left_ = media::budget::kSearchedBytes; }
  // For AVIOInterruptCB: whether the call has used up its budget.
  static int isInterrupted(void* reader) noexcept;

 private:
  // Called by FFmpeg, through which nothing may be thrown.
  static int readPacket(void* reader, std::uint8_t* buffer, int size) noexcept;
  static std::int64_t seek(void* reader, std::int64_t offset, int whence) noexcept;
  int read(std::span<std::uint8_t> out);
  std::int64_t seekTo(std::int64_t position);
  void count(std::span<const std::uint8_t> bytes);

  const media::Source& source_;
  AVIOContext* context_;
  std::int64_t position_ = 0;
  std::int64_t limit_ = media::budget::kBytes;
  std::int64_t left_ = limit_;
  std::int64_t zerosLeft_ = kZerosLimit;
};

}  // namespace kolum::ffmpeg

#endif
