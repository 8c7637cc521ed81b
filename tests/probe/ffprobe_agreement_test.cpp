// Values that both the probe and ffprobe report must agree.
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "media/classic_codecs.h"
#include "support/media_factory.h"

using namespace kolum::test;

namespace {

struct Sample {
  const char* name;
  const char* arguments;
};

const Sample kSamples[] = {
    {"agree.mp4", "-c:v libx264 -c:a aac -ac 2"},
    {"agree-hevc.mp4", "-c:v libx265 -x265-params log-level=none -tag:v hvc1 -c:a ac3"},
    {"agree.mov", "-c:v mpeg4 -c:a pcm_s16be"},
    {"agree.3gp", "-c:v h263 -c:a aac -ar 8000 -ac 1"},
    {"agree.m4v", "-c:v libx264 -c:a aac -f ipod"},
    {"agree.avi", "-c:v mpeg4 -vtag XVID -c:a libmp3lame"},
    {"agree.mpg", "-c:v mpeg2video -b:v 1500k -c:a mp2 -f vob"},
    {"agree-vcd.mpg", "-target pal-vcd"},
    {"agree.ts", "-c:v libx264 -c:a ac3 -f mpegts"},
    {"agree-mpeg2.ts", "-c:v mpeg2video -c:a mp2 -f mpegts"},
    {"agree.m2ts", "-c:v libx264 -c:a ac3 -f mpegts -mpegts_m2ts_mode 1"},
    {"agree.mkv", "-c:v libx264 -c:a flac"},
    {"agree.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -c:a libvorbis"},
    {"agree.flv", "-c:v flv1 -c:a libmp3lame"},
    {"agree.wmv", "-c:v wmv2 -c:a wmav2"},
    {"agree.asf", "-c:v msmpeg4v3 -c:a libmp3lame"},
    {"agree.rm", "-c:v rv10 -c:a ac3 -f rm"},
};

// ffprobe writes most numbers as text and leaves out unknown ones.
long long number(const nlohmann::json& object, const char* key) {
  if (!object.contains(key)) return 0;
  const auto& value = object[key];
  return value.is_string() ? std::stoll(value.get<std::string>()) : value.get<long long>();
}

const nlohmann::json& largestVideo(const nlohmann::json& streams) {
  return *std::max_element(streams.begin(), streams.end(), [](const auto& a, const auto& b) {
    const auto area = [](const auto& stream) {
      return stream["codec_type"] == "video" ? number(stream, "width") * number(stream, "height")
                                             : -1;
    };
    return area(a) < area(b);
  });
}

TEST(FfprobeAgreement, HoldsForEveryContainer) {
  for (const Sample& sample : kSamples) {
    SCOPED_TRACE(sample.name);
    const std::string path =
        media(sample.name, std::string("-f lavfi -i testsrc=s=352x288:r=25:d=2 -f lavfi -i "
                                       "sine=d=2:r=44100 -pix_fmt yuv420p ") +
                               sample.arguments);
    const auto probed = ffprobe(path);
    const auto& streams = probed["streams"];
    const auto& video = largestVideo(streams);
    const auto audio = std::find_if(streams.begin(), streams.end(), [](const auto& stream) {
      return stream["codec_type"] == "audio";
    });
    ASSERT_NE(audio, streams.end());

    videoObject_st record = {};
    const std::size_t slash = path.rfind('/');
    ASSERT_EQ(GetVideoMetadata1(path.substr(0, slash + 1).c_str(), path.substr(slash + 1).c_str(),
                                &record, 0),
              0U);

    EXPECT_EQ(record.width, number(video, "width"));
    EXPECT_EQ(record.height, number(video, "height"));
    EXPECT_EQ(record.videoBitRate, number(video, "bit_rate"));
    EXPECT_EQ(record.audioBitRate, number((*audio), "bit_rate"));
    EXPECT_EQ(record.sampleRate, number((*audio), "sample_rate"));
    EXPECT_EQ(record.channels, number((*audio), "channels"));
    EXPECT_EQ(record.bitRate, number(probed["format"], "bit_rate"));
    EXPECT_EQ(record.duration, std::floor(std::stod(probed["format"].value("duration", "0"))));

    const auto codecId = [](const nlohmann::json& stream) {
      return ffmpegCodecIdConvert(
          kolum::media::classicCodecNumber(stream["codec_name"].get<std::string>()));
    };
    EXPECT_EQ(record.videoCodec, codecId(video));
    EXPECT_EQ(record.audioCodec, codecId(*audio));

    // FFmpeg 6.1 and later double the base rate of MPEG-1 video; the library reports the headers'
    // rate.
    const bool isMpeg1 = video["codec_name"] == "mpeg1video";
    const auto rate = video[isMpeg1 ? "avg_frame_rate" : "r_frame_rate"].get<std::string>();
    const std::size_t stroke = rate.find('/');
    EXPECT_DOUBLE_EQ(record.frameRate,
                     std::stod(rate.substr(0, stroke)) / std::stod(rate.substr(stroke + 1)));
  }
}

}  // namespace
