// Reading packets and opening decoders, for the key-frame searches.
#ifndef KOLUM_READ_FFMPEG_PACKETS_H
#define KOLUM_READ_FFMPEG_PACKETS_H

#include <cstdint>
#include <memory>
#include <optional>

#include "read/ffmpeg/input.h"

struct AVCodecContext;
struct AVPacket;

namespace kolum::ffmpeg {

// One packet; empty until the first successful read.
class Packet {
 public:
  Packet();

  // Reads the next packet of any stream; false at the end of the input or on an error.
  bool readFrom(const Input& input);

  int streamIndex() const;
  // In the stream's time base.
  std::optional<std::int64_t> pts() const;
  bool isKeyFrame() const;

 private:
  struct Deleter {
    void operator()(AVPacket* packet) const;
  };
  std::unique_ptr<AVPacket, Deleter> packet_;
};

// Seeks to the time stamp (in the stream's time base) with FFmpeg's default kind of seek, which
// goes to a key frame. False if FFmpeg cannot.
bool seek(const Input& input, const media::Stream& stream, std::int64_t timestamp);

// An opened decoder; closed on destruction.
class Decoder {
 public:
  // Whether the linked FFmpeg has any decoder for the stream's codec.
  static bool existsFor(const Input& input, const media::Stream& stream);

  // Empty if there is no decoder or it rejects the stream.
  static std::optional<Decoder> open(const Input& input, const media::Stream& stream);

  // Drops what was fed so far; call it before a seek.
  void flush();

 private:
  struct Deleter {
    void operator()(AVCodecContext* context) const;
  };
  explicit Decoder(AVCodecContext* context) : context_(context) {}
  std::unique_ptr<AVCodecContext, Deleter> context_;
};

}  // namespace kolum::ffmpeg

#endif
