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

  // Takes the next packet of any stream; false at the end of the input or on an error.
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

// Goes to the time stamp (in the stream's time base); FFmpeg's default kind of seek, to a key
// frame. False when FFmpeg cannot.
bool seek(const Input& input, const media::Stream& stream, std::int64_t timestamp);

// An opened decoder; closed on destruction.
class Decoder {
 public:
  // True when the linked FFmpeg can decode the stream's codec at all.
  static bool existsFor(const Input& input, const media::Stream& stream);

  // Empty when there is no decoder or it refuses the stream.
  static std::optional<Decoder> open(const Input& input, const media::Stream& stream);

  // Forgets what was fed so far; to be called before a seek.
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
