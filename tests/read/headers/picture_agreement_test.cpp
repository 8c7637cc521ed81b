// Two ways, one answer: whenever a header gives one, it is FFmpeg's, for real pictures of every
// kind, and for cut and damaged ones.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/descriptor.h"
#include "read/headers/picture_reading.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

struct Kind {
  const char* name;  // of files
  std::vector<const char*> options;
};

const std::vector<Kind> kKinds = {
    {"photo.png",
     {"-pix_fmt rgb24", "-pix_fmt rgba", "-pix_fmt rgb48be", "-pix_fmt rgba64be", "-pix_fmt pal8",
      "-pix_fmt gray", "-pix_fmt ya8", "-pix_fmt gray16be", "-pix_fmt ya16be", "-pix_fmt monob",
      "-pix_fmt rgb24 -dpi 72", "-pix_fmt rgb24 -vf setsar=4/3"}},
    {"photo.jpg",
     {"-pix_fmt yuvj420p", "-pix_fmt yuvj422p", "-pix_fmt yuvj444p",
      "-pix_fmt yuv420p -strict unofficial", "-pix_fmt yuvj420p -huffman optimal",
      "-pix_fmt yuvj420p -vf setsar=4/3"}},
    {"photo.gif", {"-pix_fmt pal8", "-pix_fmt rgb8", "-pix_fmt gray"}},
    {"photo.bmp",
     {"-pix_fmt bgra", "-pix_fmt bgr24", "-pix_fmt rgb565le", "-pix_fmt rgb555le",
      "-pix_fmt rgb444le", "-pix_fmt rgb8", "-pix_fmt gray", "-pix_fmt pal8", "-pix_fmt monob"}},
    {"photo.tif",
     {"-pix_fmt rgb24",
      "-pix_fmt rgb48le",
      "-pix_fmt pal8",
      "-pix_fmt rgba",
      "-pix_fmt rgba64le",
      "-pix_fmt gray",
      "-pix_fmt ya8",
      "-pix_fmt gray16le",
      "-pix_fmt ya16le",
      "-pix_fmt monob",
      "-pix_fmt monow",
      "-pix_fmt yuv420p",
      "-pix_fmt yuv422p",
      "-pix_fmt yuv440p",
      "-pix_fmt yuv444p",
      "-pix_fmt yuv410p",
      "-pix_fmt yuv411p",
      "-pix_fmt rgb24 -compression_algo raw",
      "-pix_fmt rgb24 -compression_algo lzw",
      "-pix_fmt rgb24 -compression_algo deflate"}},
    {"photo.webp",
     {"-c:v libwebp -pix_fmt yuv420p", "-c:v libwebp -pix_fmt yuva420p",
      "-c:v libwebp -pix_fmt bgra -lossless 1"}},
};

std::string sample(const Kind& kind, const std::string& options, const char* size) {
  return media(kind.name, "-f lavfi -i testsrc=s=" + std::string(size) + " -frames:v 1 " + options);
}

// FFmpeg takes seconds and gigabytes for what a single bit makes of a width.
bool isLarge(const std::optional<headers::Picture>& picture) {
  constexpr std::int64_t kMostPixels = 1'000'000;
  return picture && std::int64_t{picture->width} * picture->height > kMostPixels;
}

// Whether both ways agree. True also if the header gives no answer, or that of a large picture.
bool agrees(const media::Source& source) {
  const auto picture = headers::readPicture(source);
  if (!picture || isLarge(picture)) return true;
  EXPECT_EQ(inWords(picture), ffmpegAnswer(source));
  return inWords(picture) == ffmpegAnswer(source);
}

// A file of BYTES that is not on the disk.
media::Source fileOf(const std::string& bytes, const std::string& name) {
  Descriptor file(memfd_create("photo", MFD_CLOEXEC));
  if (write(file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    throw std::runtime_error("cannot write to memory");
  return media::Source::adopt(std::move(file), name).value();
}

TEST(PictureAgreement, HoldsForEveryPixelFormatAndOddSizes) {
  for (const Kind& kind : kKinds)
    for (const char* options : kind.options)
      for (const char* size : {"35x21", "202x130"}) {
        SCOPED_TRACE(std::string(kind.name) + " " + options + " " + size);
        const std::string path = sample(kind, options, size);
        EXPECT_EQ(headerAnswerForFile(path), ffmpegAnswer(path));
      }
}

TEST(PictureAgreement, HoldsForTinyPictures) {
  for (const Kind& kind : kKinds)
    for (const char* size : {"1x1", "7x5"}) {
      SCOPED_TRACE(std::string(kind.name) + " " + size);
      agrees(media::Source::open(sample(kind, kind.options.front(), size)).value());
    }
}

// Animations have several pictures, which is FFmpeg's affair, but not for GIF files.
TEST(PictureAgreement, HoldsForAnimations) {
  const std::string input = "-f lavfi -i testsrc=s=35x21:r=5:d=1 ";
  const std::string gif = media("several.gif", input);
  EXPECT_EQ(headerAnswerForFile(gif), ffmpegAnswer(gif));
  for (const std::string& path : {media("several.png", input + "-f apng"),
                                  media("several.webp", input + "-c:v libwebp_anim")})
    EXPECT_EQ(headerAnswerForFile(path), kNone) << path;
}

TEST(PictureAgreement, HoldsForCutFiles) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    const std::string whole = contentOf(sample(kind, kind.options.front(), "35x21"));
    for (std::size_t length = 0; length < whole.size(); length += length < 500 ? 1 : 50)
      ASSERT_TRUE(agrees(fileOf(whole.substr(0, length), kind.name))) << length;
  }
}

TEST(PictureAgreement, HoldsForDamagedHeaders) {
  constexpr int kRounds = 400;
  constexpr std::size_t kWindow = 1024;
  constexpr std::size_t kHeader = 64;
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same damage each time
  for (const Kind& kind : kKinds)
    for (const char* options : {kind.options.front(), kind.options.back()}) {
      SCOPED_TRACE(std::string(kind.name) + " " + options);
      const std::string whole = contentOf(sample(kind, options, "35x21"));
      const std::size_t window = std::min(whole.size(), kWindow);
      for (int round = 0; round < kRounds; ++round) {
        // Most of them where the headers are.
        const std::size_t within = round % 4 == 0 ? window : std::min(window, kHeader);
        const std::size_t at = random() % within;
        const unsigned bit = 1U << random() % 8;
        std::string bytes = whole;
        bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ bit);
        ASSERT_TRUE(agrees(fileOf(bytes, kind.name))) << "bit " << bit << " at " << at;
      }
    }
}

}  // namespace
}  // namespace kolum::test
