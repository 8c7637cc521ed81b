// The shortcut by headers and FFmpeg's own way lead to the same answers, also about damaged files.
#include "answers/two_ways.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/media_factory.h"

namespace kolum::test {

namespace {

struct FileCase {
  const char* name;
  const char* arguments;
};

std::ostream& operator<<(std::ostream& out, const FileCase& row) {
  return out << row.name;
}

class TwoWays : public testing::TestWithParam<FileCase> {};

TEST_P(TwoWays, LeadToTheSameAnswers) {
  constexpr const char* kVideo = "-f lavfi -i testsrc2=s=176x144:r=25:d=2 -f lavfi -i sine=d=2 ";
  constexpr int kDamage = 20;
  const FileCase& row = GetParam();
  const std::string path = media(row.name, kVideo + std::string(row.arguments));
  EXPECT_EQ(differencesAbout(path, Extent::kAnswers), "");
  forEachDamaged(path, kDamage, [](const std::string& copy, const std::string& damage) {
    EXPECT_EQ(differencesAbout(copy, Extent::kFacts), "") << damage;
  });
}

std::string testName(const testing::TestParamInfo<FileCase>& info) {
  std::string name = info.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(
    Files, TwoWays,
    testing::Values(
        FileCase{"h264.mp4", "-pix_fmt yuv420p -c:v libx264 -c:a aac"},
        FileCase{"baseline.mp4", "-pix_fmt yuv420p -c:v libx264 -profile:v baseline -c:a aac"},
        FileCase{"fragments.mp4", "-pix_fmt yuv420p -c:v libx264 -c:a aac -movflags frag_keyframe"},
        FileCase{"h264.mov", "-pix_fmt yuv420p -c:v libx264 -c:a pcm_s16le"},
        FileCase{"h264.mkv", "-pix_fmt yuv420p -c:v libx264 -c:a ac3"},
        FileCase{"tracks.mkv",
                 "-map 0 -map 1 -map 1 -map 1 -pix_fmt yuv420p -c:v libx264 -c:a ac3"},
        // FFmpeg stops looking before it comes to the video.
        FileCase{"late.mkv",
                 "-f lavfi -i sine=d=9 -itsoffset 8 -f lavfi -i testsrc2=s=176x144:r=25:d=1 "
                 "-map 2 -map 3 -pix_fmt yuv420p -c:v libx264 -c:a ac3"},
        FileCase{"h264.flv", "-pix_fmt yuv420p -c:v libx264 -c:a aac"},
        FileCase{"h264.ts", "-pix_fmt yuv420p -c:v libx264 -c:a aac"},
        FileCase{"late.ts",
                 "-f lavfi -i sine=d=9 -itsoffset 6 -f lavfi -i testsrc2=s=176x144:r=25:d=2 "
                 "-map 2 -map 3 -pix_fmt yuv420p -c:v libx264 -c:a aac"},
        FileCase{"interlaced.ts",
                 "-pix_fmt yuv420p -c:v libx264 -flags +ildct+ilme -x264-params tff=1 -c:a mp2"},
        FileCase{"h264.m2ts", "-pix_fmt yuv420p -c:v libx264 -c:a ac3 -mpegts_m2ts_mode 1"},
        FileCase{"hevc.ts", "-pix_fmt yuv420p -c:v libx265 -x265-params log-level=none -c:a aac"},
        // Details that the decoder would find: colours, fields, light.
        FileCase{"colours.mp4",
                 "-pix_fmt yuv420p -c:v libx264 -color_primaries bt709 -color_trc bt709 "
                 "-colorspace bt709 -color_range tv -c:a aac"},
        FileCase{"pq.mkv",
                 "-pix_fmt yuv420p10le -c:v libx264 -x264-params "
                 "transfer=smpte2084:colorprim=bt2020:colormatrix=bt2020nc:chromaloc=2 -c:a ac3"},
        FileCase{"full.mov", "-pix_fmt yuvj420p -c:v libx264 -color_range pc -c:a pcm_s16le"},
        FileCase{"contradiction.mp4",
                 "-pix_fmt yuvj420p -c:v libx264 -color_range pc -bsf:v "
                 "h264_metadata=video_full_range_flag=0 -movflags +write_colr -c:a aac"},
        FileCase{"bottom.mp4",
                 "-pix_fmt yuv420p -c:v libx264 -flags +ildct+ilme -x264-params bff=1 -c:a aac"},
        FileCase{"top.mkv",
                 "-pix_fmt yuv422p10le -c:v libx264 -flags +ildct+ilme -x264-params tff=1 "
                 "-c:a flac"},
        FileCase{"pq.webm",
                 "-map 0 -pix_fmt yuv420p10le -c:v libvpx-vp9 -deadline realtime -cpu-used 8 "
                 "-color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc"},
        FileCase{"full.webm",
                 "-map 0 -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -color_range pc"},
        FileCase{"hdr10.ts",
                 "-pix_fmt yuv420p10le -c:v libx265 -c:a aac -x265-params "
                 "log-level=none:hdr-opt=1:repeat-headers=1:colorprim=bt2020:transfer=smpte2084:"
                 "colormatrix=bt2020nc:max-cll=1000,400:master-display='G(13250,34500)"
                 "B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)'"},
        FileCase{"mpeg2.ts", "-c:v mpeg2video -c:a mp2"}, FileCase{"mpeg4.avi", "-c:v mpeg4"},
        FileCase{"vp9.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a libopus"},
        FileCase{"vp9.mkv", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a ac3"},
        FileCase{"vp9.mp4",
                 "-pix_fmt yuv420p -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a aac"},
        FileCase{"vp9.ivf", "-map 0 -c:v libvpx-vp9 -deadline realtime -cpu-used 8"},
        FileCase{"deep.webm",
                 "-map 0 -pix_fmt yuv422p10le -c:v libvpx-vp9 -deadline realtime -cpu-used 8"},
        FileCase{"variable.webm",
                 "-map 0 -vf 'select=not(mod(n\\,3))' -fps_mode vfr -c:v libvpx-vp9 "
                 "-deadline realtime -cpu-used 8"},
        FileCase{"alpha.webm",
                 "-map 0 -pix_fmt yuva420p -c:v libvpx-vp9 -deadline realtime -cpu-used 8"},
        FileCase{"late.webm",
                 "-f lavfi -i sine=d=9 -itsoffset 8 -f lavfi -i testsrc2=s=176x144:r=25:d=1 "
                 "-map 2 -map 3 -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a libopus"},
        FileCase{"vp8.webm", "-c:v libvpx -deadline realtime -c:a libvorbis"},
        FileCase{"vp8.mkv", "-c:v libvpx -deadline realtime -c:a ac3"},
        FileCase{"vp8.ivf", "-map 0 -c:v libvpx -deadline realtime"},
        FileCase{"wmv.wmv", "-c:v wmv2 -c:a wmav2"}, FileCase{"song.mp3", "-map 1"},
        FileCase{"song.m4a", "-map 1"}, FileCase{"song.flac", "-map 1"},
        FileCase{"song.ogg", "-map 1 -c:a libvorbis"}, FileCase{"song.wav", "-map 1"},
        FileCase{"8bit.wav", "-map 1 -c:a pcm_u8"},
        FileCase{"24bit.wav", "-map 1 -c:a pcm_s24le -ac 2"},
        FileCase{"32bit.wav", "-map 1 -c:a pcm_f32le -ac 6"},
        FileCase{"surround.wav", "-map 1 -c:a pcm_s16le -ac 8 -ar 96000"},
        FileCase{"silent.wav", "-f lavfi -i anullsrc -map 2 -t 2"},
        FileCase{"noise.wav", "-f lavfi -i anoisesrc=d=2 -map 2"},
        FileCase{"ac3.wav", "-map 1 -c:a ac3"}, FileCase{"dts.wav", "-map 1 -c:a dca -strict -2"},
        FileCase{"song.wma", "-map 1 -c:a wmav2"},
        FileCase{"cover.mp3",
                 "-map 0 -map 1 -c:v mjpeg -pix_fmt yuvj420p -frames:v 1 "
                 "-disposition:v attached_pic"},
        FileCase{"cover.m4a",
                 "-map 0 -map 1 -c:v png -pix_fmt rgb24 -frames:v 1 "
                 "-disposition:v attached_pic"},
        FileCase{"photo.jpg", "-map 0 -frames:v 1 -pix_fmt yuvj420p"},
        FileCase{"photo.png", "-map 0 -frames:v 1"}, FileCase{"photo.gif", "-map 0 -frames:v 1"},
        FileCase{"photo.bmp", "-map 0 -frames:v 1 -pix_fmt bgr24"},
        FileCase{"photo.tiff", "-map 0 -frames:v 1 -pix_fmt rgb24"},
        FileCase{"photo.webp", "-map 0 -frames:v 1 -pix_fmt yuv420p -c:v libwebp"},
        FileCase{"photo.tga", "-map 0 -frames:v 1 -pix_fmt bgr24"}),
    testName);

TEST(TwoWaysOfVp9, AgreeIfTheContainerStatesAnotherSize) {
  using namespace std::string_literals;
  const std::string path =
      media("size.ivf", "-f lavfi -i testsrc2=s=176x144:d=1 -c:v libvpx-vp9 -deadline realtime");
  EXPECT_EQ(differencesAbout(replaced(path, "VP90\xB0\x00\x90\x00"s, "VP90\x40\x01\xF0\x00"s),
                             Extent::kAnswers),
            "");
}

}  // namespace

}  // namespace kolum::test
