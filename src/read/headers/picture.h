// What FFmpeg reports of a still picture, read from the picture's own header. Decoding whole
// pictures for these few numbers is by far the slowest part of a probe.
//
// An answer is what FFmpeg's decoder reports for the same bytes. There is none for anything
// unusual, damaged, or different in FFmpeg's releases: then FFmpeg must be asked.
#ifndef KOLUM_READ_HEADERS_PICTURE_H
#define KOLUM_READ_HEADERS_PICTURE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "media/rational.h"
#include "media/source.h"

namespace kolum::headers {

enum class PictureFormat { kPng, kJpeg, kGif, kBmp, kTiff, kWebp };

struct Picture {
  PictureFormat format = PictureFormat::kPng;
  int width = 0;
  int height = 0;
  std::string_view pixelFormat;        // FFmpeg's name ("yuvj420p"), static storage
  media::Rational sampleAspect{0, 1};  // as stored; 0/1 when unknown
};

// HEAD: the first bytes of a picture of SIZE bytes, or all of them. Empty also if HEAD ends too
// early.
//
// For a picture inside another file: the answer is that of FFmpeg's decoder of this format if it
// gets these bytes as one packet and was not given another size before. (For a JPEG picture that is
// much lower than announced, FFmpeg expects a second field and doubles the height.)
std::optional<Picture> readPicture(std::span<const std::uint8_t> head, std::int64_t size);

// The same for a file. Empty also if FFmpeg might take the file for something else because of its
// name.
std::optional<Picture> readPicture(const media::Source& source);

}  // namespace kolum::headers

#endif
