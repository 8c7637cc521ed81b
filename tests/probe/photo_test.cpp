#include <gtest/gtest.h>
#include <kolum/photo.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <string>

#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

constexpr uint32_t kNoPicture = 0xFFFFFFFF;
constexpr uint32_t kUntouched = 4711;

struct PixelFormat {
  unsigned result;
  uint32_t value;
};

PixelFormat pixelFormat(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  PixelFormat answer = {9, kUntouched};
  answer.result = GetPhotoMetadata(path.substr(0, slash + 1).c_str(),
                                   path.substr(slash + 1).c_str(), &answer.value);
  return answer;
}

struct Size {
  unsigned result;
  uint32_t width;
  uint32_t height;
};

Size size(const std::string& path) {
  Size answer = {9, kUntouched, kUntouched};
  answer.result = GetPhotoHW(path.c_str(), &answer.width, &answer.height);
  return answer;
}

void expectUntouched(const Size& answer) {
  EXPECT_EQ(answer.width, kUntouched);
  EXPECT_EQ(answer.height, kUntouched);
}

// Numbers of release 57. Later releases number formats differently from 15 on.
constexpr uint32_t kYuv420 = 0;
constexpr uint32_t kRgb24 = 2;
constexpr uint32_t kYuvj420 = 12;
constexpr uint32_t kBgr24 = 3;
constexpr uint32_t kPalette = 11;
constexpr uint32_t kBgra = 30;
constexpr uint32_t kGray16 = 31;
constexpr uint32_t kRgb48 = 41;
constexpr uint32_t kRgba64 = 115;

TEST(Photo, HasSizeAndPixelFormatInEveryContainer) {
  struct Row {
    const char* name;
    const char* arguments;
    uint32_t format;
  };
  const Row rows[] = {
      {"photo.jpg", "-pix_fmt yuvj420p", kYuvj420}, {"photo.png", "-pix_fmt rgb24", kRgb24},
      {"photo.bmp", "-pix_fmt bgr24", kBgr24},      {"photo.gif", "-pix_fmt pal8", kBgra},
      {"photo.tiff", "-pix_fmt rgb24", kRgb24},     {"photo.tga", "-pix_fmt bgr24", kBgr24},
      {"palette.png", "-pix_fmt pal8", kPalette},   {"photo.webp", "-pix_fmt yuv420p", kYuv420},
      {"gray16.png", "-pix_fmt gray16be", kGray16}, {"rgb48.png", "-pix_fmt rgb48be", kRgb48},
      {"rgba64.png", "-pix_fmt rgba64be", kRgba64},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string path =
        media(row.name, std::string("-f lavfi -i testsrc=s=202x130 -frames:v 1 ") + row.arguments);
    const Size answer = size(path);
    EXPECT_EQ(answer.result, 0U);
    EXPECT_EQ(answer.width, 202U);
    EXPECT_EQ(answer.height, 130U);
    const PixelFormat format = pixelFormat(path);
    EXPECT_EQ(format.result, 0U);
    EXPECT_EQ(format.value, row.format);
    EXPECT_EQ(ffprobe(path)["streams"][0]["width"], answer.width);
  }
}

TEST(Photo, HasNoPixelFormatIfItCameAfterRelease57) {
  const std::string path =
      media("later.nut", "-f lavfi -i testsrc=s=64x48 -frames:v 1 -c:v rawvideo -pix_fmt gray14le");
  ASSERT_EQ(ffprobe(path)["streams"][0]["pix_fmt"], "gray14le");
  EXPECT_EQ(pixelFormat(path).result, 0U);
  EXPECT_EQ(pixelFormat(path).value, kNoPicture);
}

TEST(Photo, IsTheFirstVideoStream) {
  const std::string path = media(
      "two-pictures.mkv",
      "-f lavfi -i sine=d=1 -f lavfi -i testsrc=s=64x48:d=1 -f lavfi -i testsrc=s=640x480:d=1 "
      "-map 0 -map 1 -map 2 -c:v mpeg4");
  EXPECT_EQ(size(path).width, 64U);
  EXPECT_EQ(size(path).height, 48U);
  EXPECT_EQ(pixelFormat(path).value, kYuv420);
}

TEST(Photo, SucceedsWithoutOutputForFileWithoutPicture) {
  const std::string path = media("no-picture.wav", "-f lavfi -i sine=d=1");
  const Size answer = size(path);
  EXPECT_EQ(answer.result, 0U);
  expectUntouched(answer);
  EXPECT_EQ(pixelFormat(path).result, 0U);
  EXPECT_EQ(pixelFormat(path).value, kNoPicture);
}

TEST(Photo, SucceedsWithoutOutputForFileWithoutStreams) {
  const TempDir folder;
  const std::string path = folder.write("empty.ffmeta", ";FFMETADATA1\ntitle=none\n");
  EXPECT_EQ(size(path).result, 0U);
  expectUntouched(size(path));
  EXPECT_EQ(pixelFormat(path).result, 0U);
  EXPECT_EQ(pixelFormat(path).value, kNoPicture);
}

TEST(Photo, FailsForNonPictures) {
  const TempDir folder;
  folder.write("empty.jpg", "");
  folder.write("noise.xyz", std::string(600, '\xA5'));
  mkdir(folder.path("folder.jpg").c_str(), 0700);
  ASSERT_EQ(mkfifo(folder.path("pipe.jpg").c_str(), 0600), 0);
  for (const char* name : {"empty.jpg", "noise.xyz", "folder.jpg", "pipe.jpg", "missing.jpg"}) {
    SCOPED_TRACE(name);
    withinSeconds(20, [&] {
      EXPECT_EQ(pixelFormat(folder.path(name)).result, 1U);
      EXPECT_EQ(pixelFormat(folder.path(name)).value, kNoPicture);
      EXPECT_EQ(size(folder.path(name)).result, 1U);
      expectUntouched(size(folder.path(name)));
    });
  }
}

// If no demuxer recognises the content, FFmpeg opens the file by its name.
TEST(Photo, HasNoSizeForTextThatFfmpegOpensByName) {
  const TempDir folder;
  for (const char* text : {"no picture at all", "two\nlines\n"}) {
    const std::string path = folder.write("text.jpg", text);
    EXPECT_EQ(size(path).result, 0U) << text;
    EXPECT_EQ(size(path).width, 0U) << text;
    EXPECT_EQ(pixelFormat(path).value, kNoPicture) << text;
  }
}

TEST(Photo, SurvivesDamagedFile) {
  const std::string path = media("damage.jpg", "-f lavfi -i testsrc=s=202x130 -frames:v 1");
  const TempDir folder;
  const std::string whole = mustRun({"cat", path});
  for (std::size_t length = 0; length < whole.size(); length += whole.size() / 20 + 1) {
    const std::string cut = folder.write("cut.jpg", whole.substr(0, length));
    EXPECT_LE(size(cut).result, 1U) << length;
    EXPECT_LE(pixelFormat(cut).result, 1U) << length;
  }
}

TEST(Photo, AcceptsNamesThatAreNotText) {
  const std::string path = media("name.png", "-f lavfi -i testsrc=s=20x10 -frames:v 1");
  const TempDir folder;
  for (const char* name : {"caf\xE9 %s.png", "http:x.png", "a\nb.png", "-i.png"}) {
    folder.write(name, mustRun({"cat", path}));
    EXPECT_EQ(size(folder.path(name)).width, 20U) << name;
    EXPECT_EQ(pixelFormat(folder.path(name)).value, kRgb24) << name;
  }
}

TEST(Photo, RejectsNullArguments) {
  uint32_t value = kUntouched;
  EXPECT_EQ(GetPhotoMetadata("/", "x", nullptr), 1U);
  EXPECT_EQ(GetPhotoMetadata("/", nullptr, &value), 1U);
  EXPECT_EQ(GetPhotoMetadata(nullptr, "x", &value), 1U);
  EXPECT_EQ(value, kNoPicture);
  EXPECT_EQ(GetPhotoHW(nullptr, &value, &value), 1U);
  EXPECT_EQ(GetPhotoHW("/x", nullptr, &value), 1U);
  EXPECT_EQ(GetPhotoHW("/x", &value, nullptr), 1U);
}

TEST(Photo, RejectsTooLongPathInsteadOfCuttingIt) {
  const std::string path = media("long.png", "-f lavfi -i testsrc=s=20x10 -frames:v 1");
  const std::size_t slash = path.rfind('/');
  const std::string longest(1023 - (path.size() - 1), '/');
  const std::string folder = path.substr(0, slash) + longest;
  uint32_t value = 0;
  EXPECT_EQ(GetPhotoMetadata(folder.c_str(), "long.png", &value), 0U);
  EXPECT_EQ(GetPhotoMetadata((folder + "/").c_str(), "long.png", &value), 1U);
  EXPECT_EQ(GetPhotoMetadata(folder.c_str(), "long.pngx", &value), 1U);
}

TEST(Photo, LeavesNoDescriptorOpen) {
  const std::string path = media("name.png", "-f lavfi -i testsrc=s=20x10 -frames:v 1");
  size(path);
  const ExpectNoDescriptorLeak leak;
  for (int i = 0; i < 3; ++i) {
    size(path);
    pixelFormat(path);
    size("/dev/null");
  }
}

}  // namespace
}  // namespace kolum::test
