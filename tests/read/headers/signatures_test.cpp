#include "read/headers/signatures.h"

#include <gtest/gtest.h>

#include <string>

#include "read/ffmpeg/input.h"
#include "read/headers/shortcuts.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace headers = kolum::headers;
using kolum::test::media;
using kolum::test::TempDir;

namespace {

std::string demuxerOf(const std::string& path) {
  const auto source = kolum::media::Source::open(path);
  return source ? std::string(headers::demuxerOf(*source)) : "no file";
}

std::string demuxerOfBytes(const std::string& bytes) {
  const TempDir folder;
  return demuxerOf(folder.write("file", bytes));
}

std::string foundByFfmpeg(const std::string& path) {
  headers::allowShortcuts(false);
  const auto container = kolum::ffmpeg::readContainer(path, kolum::ffmpeg::Depth::kHeader);
  headers::allowShortcuts(true);
  return container ? container->demuxer : "none";
}

TEST(Signatures, NameTheDemuxerThatFfmpegFinds) {
  const std::string video = "-f lavfi -i testsrc=s=64x48:d=1 -pix_fmt yuv420p ";
  const std::string sound = "-f lavfi -i sine=d=3 ";
  const struct {
    const char* name;
    std::string arguments;
  } kFiles[] = {
      {"a.mp4", video + "-c:v libx264"},
      {"a.mov", video + "-c:v libx264"},
      {"a.3gp", video + "-c:v mpeg4"},
      {"a.m4a", sound},
      {"a.mkv", video + "-c:v libx264"},
      {"a.webm", video + "-c:v libvpx"},
      {"a.wmv", video + "-c:v wmv2"},
      {"a.avi", video + "-c:v mpeg4"},
      {"a.wav", sound},
      {"a.flac", sound},
      {"a.ogg", sound + "-c:a libvorbis"},
      {"a.opus", sound + "-c:a libopus"},
      {"a.mp3", sound},
      {"low.mp3", sound + "-ar 22050 -ac 1"},
      {"lowest.mp3", sound + "-ar 11025 -ac 1"},
  };
  for (const auto& row : kFiles) {
    SCOPED_TRACE(row.name);
    const std::string path = media(row.name, row.arguments);
    EXPECT_EQ(demuxerOf(path), foundByFfmpeg(path));
  }
}

TEST(Signatures, LeaveOtherFilesToFfmpeg) {
  const std::string rest(300, 'x');
  EXPECT_EQ(demuxerOfBytes(""), "");
  EXPECT_EQ(demuxerOfBytes("RIFF"), "");
  EXPECT_EQ(demuxerOfBytes(rest), "");
  EXPECT_EQ(demuxerOfBytes(std::string("\0\0\0\x14", 4) + "ftypjp2 " + rest), "");
  EXPECT_EQ(demuxerOfBytes("\x1A\x45\xDF\xA3" + rest), "");
  EXPECT_EQ(demuxerOfBytes("RIFX1234WAVEfmt " + rest), "");
  EXPECT_EQ(demuxerOfBytes(std::string("OggS\0\x08", 6) + rest), "");
  EXPECT_EQ(demuxerOfBytes("fLaC" + rest), "");
}

// FFmpeg takes these for the recordings of voice recorders.
TEST(Signatures, LeaveSilentWaveHeadersToFfmpeg) {
  std::string file = "RIFF1234WAVEfmt " + std::string(300, '\0');
  EXPECT_EQ(demuxerOfBytes(file), "wav");
  file[256] = '\x84';
  EXPECT_EQ(demuxerOfBytes(file), "");
  file[100] = 'x';
  EXPECT_EQ(demuxerOfBytes(file), "wav");
}

}  // namespace
