// Two ways, one answer: whenever a header gives one, it is FFmpeg's, for real pictures of every
// kind, and for cut and damaged ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

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

// Whether both ways agree about the file at PATH; true if only FFmpeg answers.
bool agrees(const std::string& path) {
  const std::string words = headerAnswerForFile(path);
  const bool isSame = words == kNone || words == ffmpegAnswer(path);
  EXPECT_TRUE(isSame) << words << " by its header, " << ffmpegAnswer(path) << " by FFmpeg";
  return isSame;
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
      agrees(sample(kind, kind.options.front(), size));
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

// A small file that is changed again and again.
class Changed {
 public:
  explicit Changed(const std::string& path)
      : path_(folder_.path(std::filesystem::path(path).filename().string())),
        whole_(contentOf(path)) {}

  const std::string& whole() const { return whole_; }
  bool agreesWith(const std::string& bytes) const {
    std::ofstream(path_, std::ios::binary) << bytes;
    return agrees(path_);
  }

 private:
  TempDir folder_;
  std::string path_;
  std::string whole_;
};

TEST(PictureAgreement, HoldsForCutFiles) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    const Changed file(sample(kind, kind.options.front(), "35x21"));
    const std::size_t size = file.whole().size();
    for (std::size_t length = 0; length < size; length += length < 200 ? 3 : size / 40 + 1)
      ASSERT_TRUE(file.agreesWith(file.whole().substr(0, length))) << length;
  }
}

TEST(PictureAgreement, HoldsForDamagedHeaders) {
  constexpr int kRounds = 120;
  constexpr std::size_t kWindow = 1024;
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same damage each time
  for (const Kind& kind : kKinds)
    for (const char* options : {kind.options.front(), kind.options.back()}) {
      SCOPED_TRACE(std::string(kind.name) + " " + options);
      const Changed file(sample(kind, options, "35x21"));
      const std::size_t window = std::min(file.whole().size(), kWindow);
      for (int round = 0; round < kRounds; ++round) {
        std::string bytes = file.whole();
        // Most of them where the headers are.
        const std::size_t at =
            random() % (round % 4 == 0 ? window : std::min<std::size_t>(window, 64));
        const char bit = static_cast<char>(1U << random() % 8);
        bytes[at] = static_cast<char>(bytes[at] ^ bit);
        ASSERT_TRUE(file.agreesWith(bytes)) << "bit " << int{bit} << " at " << at;
      }
    }
}

}  // namespace
}  // namespace kolum::test
