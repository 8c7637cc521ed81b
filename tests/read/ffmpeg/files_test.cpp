// Files that would make FFmpeg open other files, or read gigabytes of zeros.
#include <gtest/gtest.h>
#include <kolum/kolum.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "read/ffmpeg/formats.h"
#include "read/ffmpeg/input.h"
#include "read/ffmpeg/key_frames.h"
#include "read/ffmpeg/recognition.h"
#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

// Expects every kind of entry point that opens media to refuse the file.
void expectRefused(const std::string& folder, const std::string& name) {
  const std::string path = folder + name;
  testing::internal::CaptureStderr();
  videoObject_st record = {};
  EXPECT_EQ(GetVideoMetadata1(folder.c_str(), name.c_str(), &record, 0), 1U);
  unsigned tracks = 4711;
  EXPECT_EQ(GetAudioTrack(path.c_str(), &tracks), 1U);
  EXPECT_EQ(GetVideoRotationDegree(folder.c_str(), name.c_str(), &tracks), 1U);
  MediaInfo* info = nullptr;
  double time = 0;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, 1, &time), 1U);
  EXPECT_EQ(getVideoKeyFrameTime(path.c_str(), 1, &time), 1U);
  EXPECT_EQ(GetAudioMetadata(folder.c_str(), name.c_str(), nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            1U);
  uint32_t number = 0;
  EXPECT_EQ(GetPhotoHW(path.c_str(), &number, &number), 1U);
  testing::internal::GetCapturedStderr();
}

TEST(FileDemuxers, RefuseFilesThatOpenOthers) {
  constexpr char kPlaylist[] = "#EXTM3U\n#EXT-X-TARGETDURATION:5\n";
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("pipe.ts").c_str(), 0600), 0);
  const struct {
    const char* what;
    const char* name;
    std::string content;
  } rows[] = {
      {"a live playlist without its part", "live.mp4",
       kPlaylist + std::string("#EXTINF:3,\nmissing.ts\n")},
      {"a live playlist of itself", "own.m3u8", kPlaylist + std::string("#EXTINF:3,\nown.m3u8\n")},
      {"a playlist that is its own variant", "variant.m3u8",
       "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\nvariant.m3u8\n"},
      {"a playlist of a pipe", "pipe.m3u8",
       kPlaylist + std::string("#EXTINF:3,\npipe.ts\n#EXT-X-ENDLIST\n")},
      {"a list with a pipe", "pipe.mp4", "ffconcat version 1.0\nfile pipe.ts\n"},
      {"a list with itself", "self.mp4", "ffconcat version 1.0\nfile self.mp4\n"},
      {"a manifest with a pipe", "manifest.mp4",
       "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
       "mediaPresentationDuration=\"PT3S\"><Period><AdaptationSet mimeType=\"video/mp2t\">"
       "<Representation id=\"1\" bandwidth=\"1000\"><BaseURL>pipe.ts</BaseURL></Representation>"
       "</AdaptationSet></Period></MPD>"},
      {"a session description", "session.mp4",
       "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP 96\n"
       "a=rtpmap:96 H264/90000\n"},
      {"an index of subtitles", "subtitles.idx",
       "# VobSub index file, v7 (do not modify this line!)\nid: en, index: 0\n"
       "timestamp: 00:00:01:000, filepos: 000000000\n"},
  };
  ASSERT_EQ(mkfifo(folder.path("subtitles.sub").c_str(), 0600), 0);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    folder.write(row.name, row.content);
    withinSeconds(10, [&] { expectRefused(folder.folder(), row.name); });
  }
}

TEST(ReadLimit, StopsReadingFileOfZeros) {
  const TempDir folder;
  const struct {
    const char* name;
    std::string head;
  } rows[] = {
      {"begun.avi", std::string("RIFF\0\0\0\x80"
                                "AVI LIST",
                                16)},
      {"begun.flv", std::string("FLV\1\5\0\0\0\11\0\0\0\0", 13)},
      {"begun.mp3", std::string("ID3\3\0\0\x7F\x7F\x7F\x7F", 10)},
      {"begun.mp4", ""},
      {"begun.mpg", std::string("\0\0\1\xBA\x44", 5)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string path = folder.write(row.name, row.head);
    try {
      std::filesystem::resize_file(path, std::uintmax_t{10} << 30);
    } catch (const std::filesystem::filesystem_error& error) {
      GTEST_SKIP() << "no sparse file of 10 GB here: " << error.what();
    }
    withinSeconds(20, [&] {
      videoObject_st record = {};
      GetVideoMetadata1(folder.folder().c_str(), row.name, &record, 0);
    });
  }
}

// A copy of the file at PATH, in FOLDER, with SIZE zeros inserted at AT.
std::string withHole(const TempDir& folder, const std::string& path, std::size_t at,
                     std::size_t size) {
  const std::string content = contentOf(path);
  const std::string name = std::filesystem::path(path).filename().string();
  std::string copy = folder.write(name, content.substr(0, at));
  std::filesystem::resize_file(copy, at + size);
  std::ofstream(copy, std::ios::binary | std::ios::app) << content.substr(at);
  return copy;
}

constexpr const char* kMovie =
    "-f lavfi -i testsrc=s=320x240:r=25:d=12 -f lavfi -i sine=d=12:r=48000 -pix_fmt yuv420p "
    "-c:v mpeg2video -b:v 1500k -g 60 -c:a mp2";
constexpr std::size_t kMebibyte = std::size_t{1} << 20;

struct HoleCase {
  const char* name;
  std::size_t packetSize;
};

// The data after the hole is found by seeking to the end.
TEST(ReadLimit, KeepsDurationAndSoundOfFileWithHole) {
  for (const HoleCase& row : {HoleCase{"hole.vob", 2048}, HoleCase{"hole.ts", 188}}) {
    SCOPED_TRACE(row.name);
    const TempDir folder;
    const std::string whole = media(row.name, kMovie);
    const std::size_t tenth = contentOf(whole).size() / 10 / row.packetSize * row.packetSize;
    withHole(folder, whole, tenth, 70 * kMebibyte / row.packetSize * row.packetSize);
    videoObject_st record = {};
    EXPECT_EQ(GetVideoMetadata1(folder.folder().c_str(), row.name, &record, 0), 0U);
    EXPECT_NEAR(record.duration, 12, 1);
    EXPECT_GT(record.bitRate, 0U);
    EXPECT_EQ(record.sampleRate, 48000U);
  }
}

double keyFrameTimeOf(const std::string& path, int seconds) {
  MediaInfo* info = nullptr;
  double time = -1;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, seconds, &time), 0U);
  Free_MediaInfo(info);
  return time;
}

// URLs are read without a limit.
double unlimitedKeyFrameTimeOf(const std::string& path, int seconds) {
  const auto input =
      kolum::ffmpeg::Input::openUrl(("file:" + path).c_str(), kolum::ffmpeg::Depth::kStreams);
  const auto* video = input->container().first(kolum::media::StreamType::kVideo);
  return kolum::ffmpeg::keyFrameTime(*input, *video, seconds).value_or(seconds);
}

TEST(ReadLimit, KeepsKeyFramesOfFileWithHole) {
  const std::string whole = media("hole.vob", kMovie);
  const std::size_t quarter = contentOf(whole).size() / 4 / 2048 * 2048;
  for (const std::size_t quarters : {1U, 2U, 3U}) {
    const TempDir folder;
    const std::string holed = withHole(folder, whole, quarters * quarter, 80 * kMebibyte);
    for (const int seconds : {3, 5, 7, 9})
      EXPECT_DOUBLE_EQ(keyFrameTimeOf(holed, seconds), unlimitedKeyFrameTimeOf(holed, seconds))
          << quarters << " quarters, " << seconds << " s";
  }
}

TEST(Formats, AllowTheContainersOfLibraries) {
  for (const char* name :
       {"mov,mp4,m4a,3gp,3g2,mj2", "matroska,webm", "mpegts", "mpeg", "avi", "asf", "flv", "mp3",
        "flac", "wav", "ogg", "dsf", "iff", "image2", "tiff_pipe", "rm", "wtv", "ape"})
    EXPECT_TRUE(kolum::ffmpeg::isAllowedDemuxer(name)) << name;
}

TEST(Formats, AllowNothingElse) {
  for (const char* name :
       {"concat",   "hls",      "dash",       "imf",      "sdp",      "vobsub",   "sunrast_pipe",
        "sgi_pipe", "dds_pipe", "qoi_pipe",   "exr_pipe", "xbm_pipe", "pcx_pipe", "svg_pipe",
        "tty",      "lavfi",    "image2pipe", "rawvideo", "",         ",",        "mp4"})
    EXPECT_FALSE(kolum::ffmpeg::isAllowedDemuxer(name)) << name;
}

bool isInList(const std::string& list, const std::string& name) {
  return ("," + list + ",").find("," + name + ",") != std::string::npos;
}

TEST(Formats, AllowTheDecodersOfLibraries) {
  const std::string all = kolum::ffmpeg::allowedDecoders();
  const std::string butH264 = kolum::ffmpeg::allowedDecodersButH264();
  for (const char* name :
       {"hevc", "mpeg4", "mpeg2video", "vp9", "vc1", "mjpeg", "png", "tiff", "aac", "mp3float",
        "flac", "opus", "dca", "dsd_lsbf", "pcm_s16le", "subrip", "pgssub"}) {
    EXPECT_TRUE(isInList(all, name)) << name;
    EXPECT_TRUE(isInList(butH264, name)) << name;
  }
  EXPECT_TRUE(isInList(all, "h264"));
  EXPECT_FALSE(isInList(butH264, "h264"));
  for (const char* name : {"sunrast", "sgi", "pcx", "dds", "qoi", "exr", "xbm", "xwd", "librsvg",
                           "psd", "h264_cuvid", "h264_v4l2m2m"})
    EXPECT_FALSE(isInList(all, name)) << name;
}

// A decoder of FFmpeg 5 ends the process for these bytes.
TEST(Formats, RefusePicturesThatNoLibraryContains) {
  const TempDir folder;
  const std::string raster(
      "\x59\xa6\x6a\x95\0\0\x3e\x80\0\0\x3e\x80\0\0\0\x20\0\0\0\0\0\0\0\x02\0\0\0\0\0\0\0\0\x80\xff"
      "\0"
      "\x80\xff\0\x80\xff",
      40);
  for (const char* name : {"abort.mp4", "abort.mp3", "abort", "abort.sun", "abort.ras"}) {
    SCOPED_TRACE(name);
    folder.write(name, raster);
    videoObject_st record = {};
    EXPECT_NE(GetVideoMetadata1(folder.folder().c_str(), name, &record, 0), 0U);
    unsigned width = 0;
    unsigned height = 0;
    EXPECT_NE(GetPhotoHW(folder.path(name).c_str(), &width, &height), 0U);
  }
}

unsigned quietKeyFrameTime(const std::string& url) {
  double time = -1;
  testing::internal::CaptureStderr();
  const unsigned result = getVideoKeyFrameTime(url.c_str(), 1, &time);
  testing::internal::GetCapturedStderr();
  return result;
}

TEST(FileDemuxers, LimitFileUrlsAsFiles) {
  const TempDir folder;
  const std::string part = media(
      "part.ts", "-f lavfi -i testsrc=s=64x48:r=25:d=3 -pix_fmt yuv420p -c:v mpeg2video -g 5");
  const std::string list = folder.write(
      "list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:3,\n" + part + "\n#EXT-X-ENDLIST\n");
  EXPECT_EQ(quietKeyFrameTime("file:" + part), 0U);
  EXPECT_EQ(quietKeyFrameTime("file:" + list), 1U);
  EXPECT_EQ(quietKeyFrameTime(list), 1U);
}

TEST(FileDemuxers, LeaveOtherUrlsToTheirTransport) {
  const std::string part = media(
      "part.ts", "-f lavfi -i testsrc=s=64x48:r=25:d=3 -pix_fmt yuv420p -c:v mpeg2video -g 5");
  EXPECT_EQ(quietKeyFrameTime("subfile,,start,0,end,0,,:" + part), 0U);
  EXPECT_EQ(quietKeyFrameTime("nosuch://" + part), 1U);
}

std::string widthAndHeight(const std::string& path) {
  unsigned width = 0;
  unsigned height = 0;
  if (GetPhotoHW(path.c_str(), &width, &height) != 0) return "not read";
  return std::to_string(width) + "x" + std::to_string(height);
}

std::string picture(const char* name, const char* size) {
  return contentOf(media(name, std::string("-f lavfi -i color=size=") + size + " -frames:v 1"));
}

// FFmpeg takes such names for series of pictures.
TEST(FileNames, AreNoPatterns) {
  const TempDir folder;
  const std::string asked = picture("asked.png", "32x16");
  const std::string other = picture("other.png", "64x48");
  for (const char* name : {"pic0.png", "hundred0/a.png", "a1.png", "b00.png", "s1/x.png"})
    folder.write(name, other);
  for (const char* name : {"pic%d.png", "hundred%d/a.png", "a[1].png", "b%02d.png", "s?/x.png",
                           "100%dance.png", "%.png", "{a,b}.png", "*.png", "%d", "no dot %d"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(widthAndHeight(folder.write(name, asked)), "32x16");
  }
}

TEST(FileNames, AreNoUrls) {
  const TempDir folder;
  const std::string asked = picture("asked.png", "32x16");
  folder.write("plain.png", picture("other.png", "64x48"));
  for (const char* name : {"file:plain.png", "http:a.png", "concat:plain.png|plain.png",
                           "subfile,,start,0,end,0,,:plain.png", "async:cache:plain.png"}) {
    SCOPED_TRACE(name);
    folder.write(name, asked);
    // Relative, so that nothing hides how the name begins.
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(folder.folder());
    EXPECT_EQ(widthAndHeight(name), "32x16");
    std::filesystem::current_path(before);
  }
}

kolum::ffmpeg::Recognition recognize(const std::string& path) {
  const auto source = kolum::media::Source::open(path);
  return source ? kolum::ffmpeg::recognize(*source) : kolum::ffmpeg::Recognition{};
}

TEST(Recognition, UsesTheFirstBytesOnly) {
  const TempDir folder;
  const std::string whole =
      contentOf(media("whole.mp4", "-f lavfi -i color=size=64x48:rate=5:duration=1 -c:v mpeg4"));
  const std::string cut = folder.write("cut.mkv", std::string_view(whole).substr(0, 64));
  EXPECT_EQ(recognize(cut).format, "QuickTime / MOV");
  EXPECT_FALSE(recognize(cut).opensFurtherFiles);
  for (const std::string& content : {std::string(), std::string(5000, 'x'), std::string(5000, 0)})
    EXPECT_EQ(recognize(folder.write("text.mp4", content)).format, "");
  EXPECT_EQ(recognize(folder.path("missing.mp4")).format, "");
  EXPECT_EQ(recognize(folder.folder()).format, "");
  ASSERT_EQ(mkfifo(folder.path("fifo.mp4").c_str(), 0600), 0);
  EXPECT_EQ(recognize(folder.path("fifo.mp4")).format, "");
}

TEST(Recognition, MarksFilesThatOpenOthers) {
  const TempDir folder;
  const std::string list = folder.write(
      "list.mp4", "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n#EXTINF:1\na.ts\n");
  EXPECT_NE(recognize(list).format, "");
  EXPECT_TRUE(recognize(list).opensFurtherFiles);
}

}  // namespace
