// What bytes say of a file, whatever its name: its type, and whether its end is missing.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "read/headers/content_type.h"
#include "read/headers/truncation.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace headers = kolum::headers;
using kolum::test::contentOf;
using kolum::test::media;
using kolum::test::TempDir;

namespace {

const std::string kFilm = "-f lavfi -i testsrc=s=64x48:d=2 -pix_fmt yuv420p ";
const std::string kSound = "-f lavfi -i sine=d=3 ";
const std::string kPicture = "-f lavfi -i mandelbrot=s=320x240 -frames:v 1 ";

struct MadeFile {
  const char* name;
  std::string arguments;
  const char* type;
  bool saysItsEnd;  // whether half of it is known to be half
};

const std::vector<MadeFile>& madeFiles() {
  static const std::vector<MadeFile> kFiles = {
      {"a.mp4", kFilm + "-c:v libx264", "video/mp4", true},
      {"a.mov", kFilm + "-c:v libx264", "video/quicktime", true},
      {"a.3gp", kFilm + "-c:v mpeg4", "video/3gpp", true},
      {"a.m4a", kSound, "audio/mp4", true},
      {"a.mkv", kFilm + "-c:v libx264", "video/x-matroska", true},
      {"a.webm", kFilm + "-c:v libvpx", "video/webm", true},
      {"a.wmv", kFilm + "-c:v wmv2", "video/x-ms-asf", false},
      {"a.avi", kFilm + "-c:v mpeg4", "video/x-msvideo", true},
      {"a.flv", kFilm + "-c:v flv", "video/x-flv", false},
      {"a.mpg", kFilm + "-c:v mpeg2video", "video/mpeg", false},
      {"a.ts", kFilm + "-c:v mpeg2video", "video/mp2t", false},
      {"a.m2ts", kFilm + "-c:v mpeg2video -mpegts_m2ts_mode 1", "video/mp2t", false},
      {"a.wav", kSound, "audio/vnd.wave", true},
      {"a.aiff", kSound, "audio/aiff", true},
      {"a.flac", kSound, "audio/flac", false},
      {"a.ogg", kSound + "-c:a libvorbis", "video/ogg", false},
      {"a.mp3", kSound + "-metadata title=Tagged", "audio/mpeg", false},
      {"bare.mp3", kSound + "-write_id3v2 0 -id3v2_version 0", "audio/mpeg", false},
      {"a.aac", kSound, "audio/aac", false},
      {"a.ac3", kSound, "audio/ac3", false},
      {"a.wv", kSound, "audio/x-wavpack", false},
      {"a.jpg", kPicture, "image/jpeg", true},
      {"a.png", kPicture, "image/png", true},
      {"a.gif", kPicture, "image/gif", true},
      {"a.bmp", kPicture, "image/bmp", false},
      {"a.tiff", kPicture, "image/tiff", false},
      {"a.webp", kPicture, "image/webp", true},
  };
  return kFiles;
}

template <typename Answer>
Answer ask(const std::string& path, Answer (*question)(const kolum::media::Source&)) {
  const auto source = kolum::media::Source::open(path);
  if (!source) throw std::runtime_error("cannot open " + path);
  return question(*source);
}

std::string typeOfBytes(std::string_view bytes) {
  const TempDir folder;
  return std::string(ask(folder.write("file", bytes), headers::contentType));
}

TEST(ContentType, NamesWhatTheBytesAre) {
  for (const MadeFile& file : madeFiles()) {
    SCOPED_TRACE(file.name);
    EXPECT_EQ(ask(media(file.name, file.arguments), headers::contentType), file.type);
  }
}

TEST(ContentType, KnowsPicturesThatFfmpegDoesNotWrite) {
  using namespace std::string_view_literals;
  const std::string rest(100, '\0');
  const auto type = [&rest](std::string_view head) {
    return typeOfBytes(std::string(head) + rest);
  };
  EXPECT_EQ(type("\0\0\0\x18"
                 "ftypheic"sv),
            "image/heic");
  EXPECT_EQ(type("\0\0\0\x18"
                 "ftypavif"sv),
            "image/avif");
  EXPECT_EQ(type("\0\0\0\x18"
                 "ftypcrx "sv),
            "image/x-canon-cr3");
  EXPECT_EQ(type("\0\0\0\x0CJXL \r\n\x87\n"sv), "image/jxl");
  EXPECT_EQ(type("II*\0\x10\0\0\0CR\x02\0"sv), "image/x-canon-cr2");
  EXPECT_EQ(type("%PDF-1.7"), "application/pdf");
}

TEST(ContentType, IsUnknownForOtherBytes) {
  EXPECT_EQ(typeOfBytes(""), "");
  EXPECT_EQ(typeOfBytes("B"), "");
  EXPECT_EQ(typeOfBytes("BMW is a maker of cars, and this is a text"), "");
  EXPECT_EQ(typeOfBytes(std::string(4096, '\0')), "");
  EXPECT_EQ(typeOfBytes("ID3"), "");
  EXPECT_EQ(typeOfBytes(std::string("ID3\x04\0\0\x7F\x7F\x7F\x7F", 10)), "") << "a tag without end";
}

TEST(Truncation, IsSeenWhereTheFileSaysHowLongItIs) {
  const TempDir folder;
  for (const MadeFile& file : madeFiles()) {
    SCOPED_TRACE(file.name);
    const std::string whole = contentOf(media(file.name, file.arguments));
    EXPECT_FALSE(ask(folder.write(file.name, whole), headers::isTruncated));
    const std::string half = whole.substr(0, whole.size() / 2);
    EXPECT_EQ(ask(folder.write(file.name, half), headers::isTruncated), file.saysItsEnd);
  }
}

TEST(Truncation, IsNotSeenInFilesWithDataBehindTheirEnd) {
  const TempDir folder;
  for (const MadeFile& file : madeFiles()) {
    SCOPED_TRACE(file.name);
    const std::string longer =
        contentOf(media(file.name, file.arguments)) + "more data; of a camera";
    EXPECT_FALSE(ask(folder.write(file.name, longer), headers::isTruncated));
  }
}

// Programs that write into a pipe cannot go back to say how much it was.
TEST(Truncation, IsNotSeenInStreams) {
  const TempDir folder;
  std::string wave = contentOf(media("a.wav", kSound));
  wave.replace(4, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_FALSE(ask(folder.write("a.wav", wave), headers::isTruncated));
  const std::string live = media("live.mkv", kFilm + "-c:v libx264 -live 1");
  const std::string half = contentOf(live).substr(0, contentOf(live).size() / 2);
  EXPECT_FALSE(ask(folder.write("live.mkv", half), headers::isTruncated));
}

TEST(Truncation, IsNotSeenInOtherFiles) {
  using namespace std::string_view_literals;
  const TempDir folder;
  for (const std::string_view bytes :
       {""sv, "RIFF"sv, "\x1A\x45\xDF\xA3"sv, "\x1A\x45\xDF\xA3\x01"sv, "\0\0\0\x02moov"sv,
        "\0\0\0\0mdat and the rest"sv, "\0\0\0\x01mdat\xFF"sv})
    EXPECT_FALSE(ask(folder.write("file", bytes), headers::isTruncated));
  EXPECT_TRUE(ask(folder.write("file", "\0\0\0\x01mdat\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv),
                  headers::isTruncated))
      << "a size beyond every file";
}

}  // namespace
