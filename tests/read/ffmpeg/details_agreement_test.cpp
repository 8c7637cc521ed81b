// Details of videos that ffprobe and MediaInfo report, too, must agree with theirs.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "media/container.h"
#include "media/film_tags.h"
#include "read/ffmpeg/input.h"
#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

using nlohmann::json;

constexpr const char* kPicture = "-f lavfi -i testsrc2=s=192x128:r=25:d=1 ";
constexpr const char* kFilm =
    "-f lavfi -i testsrc2=s=192x128:r=25:d=1 -f lavfi -i sine=d=1 -pix_fmt yuv420p ";
constexpr const char* kHdr10 =
    "-map 0 -map 1 -pix_fmt yuv420p10le -c:v libx265 -color_primaries bt2020 -color_trc smpte2084 "
    "-colorspace bt2020nc -c:a aac -x265-params log-level=none:hdr-opt=1:repeat-headers=1:"
    "colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc:max-cll=1000,400:"
    "master-display='G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)' ";
constexpr const char* kTracks =
    "-pix_fmt yuv420p -map 0 -map 1 -map 1 -map 1 -map 2 -map 2 -c:v libx264 -c:a aac -ac:a:1 6 "
    "-metadata:s:a:0 language=eng -metadata:s:a:0 title=Main -metadata:s:a:1 language=deu "
    "-metadata:s:a:2 language=fra -metadata:s:a:2 title=Commentaire -disposition:a:0 default "
    "-disposition:a:1 0 -disposition:a:2 comment -metadata:s:s:0 language=eng "
    "-disposition:s:0 forced -metadata:s:s:1 language=spa -disposition:s:1 hearing_impaired "
    "-map_metadata 3 -map_chapters 3 -metadata title=Film -metadata show=Series "
    "-metadata season_number=2 -metadata episode_sort=3 -metadata date=2015-06-07 "
    "-metadata creation_time=2015-06-07T08:09:10Z ";

std::string subtitles() {
  return made("subtitles.srt", "a line", [](const std::string& path) {
    std::ofstream(path) << "1\n00:00:00,000 --> 00:00:01,000\nHello\n";
  });
}

std::string chapters() {
  return made("chapters.txt", "two", [](const std::string& path) {
    std::ofstream(path) << ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=400\ntitle=One\n"
                           "[CHAPTER]\nTIMEBASE=1/1000\nSTART=400\nEND=1000\ntitle=T\u00FCr\n";
  });
}

std::string tracks(const std::string& name, const std::string& more) {
  return media(name, "-f lavfi -i testsrc2=s=192x128:r=25:d=1 -f lavfi -i sine=d=1 -i '" +
                         subtitles() + "' -i '" + chapters() + "' " + kTracks + more);
}

std::string covered(const std::string& name) {
  const std::string cover =
      media("cover.png", "-f lavfi -i testsrc2=s=64x64 -frames:v 1 -pix_fmt rgb24");
  return media(name, std::string(kFilm) + "-attach '" + cover +
                         "' -metadata:s:t mimetype=image/png -c:v libx264 -c:a flac");
}

std::string plain(const std::string& name) {
  return media(name, std::string(kPicture) + "-pix_fmt yuv420p -c:v libx264");
}

struct Sample {
  std::string name;
  std::string (*make)();
};

#define KOLUM_SAMPLE(name, arguments)                        \
  Sample {                                                   \
    name, [] { return media(name, std::string(arguments)); } \
  }

const Sample kSamples[] = {
    KOLUM_SAMPLE("plain.mp4", std::string(kFilm) + "-c:v libx264 -c:a aac"),
    KOLUM_SAMPLE("colours.mp4", std::string(kFilm) +
                                    "-c:v libx264 -color_primaries bt709 -color_trc bt709 "
                                    "-colorspace bt709 -color_range tv -c:a aac"),
    KOLUM_SAMPLE("full.mov",
                 std::string(kPicture) + "-pix_fmt yuvj420p -c:v libx264 -color_range pc"),
    KOLUM_SAMPLE("deep.mkv", std::string(kPicture) + "-pix_fmt yuv422p10le -c:v libx264"),
    KOLUM_SAMPLE("top.ts", std::string(kFilm) + "-c:v libx264 -flags +ildct+ilme "
                                                "-x264-params tff=1 -c:a mp2"),
    KOLUM_SAMPLE("bottom.mov", std::string(kFilm) + "-c:v mpeg2video -flags +ildct+ilme -top 0 "
                                                    "-c:a pcm_s16le"),
    KOLUM_SAMPLE("hdr10.mp4", std::string(kFilm) + kHdr10),
    KOLUM_SAMPLE("hdr10.mkv", std::string(kFilm) + kHdr10),
    KOLUM_SAMPLE("hdr10.ts", std::string(kFilm) + kHdr10),
    KOLUM_SAMPLE("hlg.mp4", std::string(kPicture) +
                                "-pix_fmt yuv420p10le -c:v libx265 -x265-params log-level=none:"
                                "colorprim=bt2020:transfer=arib-std-b67:colormatrix=bt2020nc"),
    KOLUM_SAMPLE("av1.mp4", std::string(kPicture) +
                                "-pix_fmt yuv420p10le -c:v libaom-av1 -cpu-used 8 "
                                "-color_primaries bt2020 -color_trc smpte2084 "
                                "-colorspace bt2020nc"),
    KOLUM_SAMPLE("pq.webm", std::string(kPicture) +
                                "-pix_fmt yuv420p10le -c:v libvpx-vp9 -deadline realtime "
                                "-cpu-used 8 -color_primaries bt2020 -color_trc smpte2084 "
                                "-colorspace bt2020nc"),
    KOLUM_SAMPLE("alpha.mov", std::string(kFilm) +
                                  "-c:v prores_ks -profile:v 4 -pix_fmt yuva444p10le "
                                  "-c:a pcm_s24le -timecode 01:02:03:04"),
    KOLUM_SAMPLE("mpeg2.ts", std::string(kFilm) + "-c:v mpeg2video -c:a ac3 -metadata "
                                                  "service_name=News -metadata "
                                                  "service_provider=Station"),
    KOLUM_SAMPLE("old.avi", std::string(kFilm) + "-c:v mpeg4 -vtag XVID -c:a libmp3lame "
                                                 "-metadata title=Old"),
    KOLUM_SAMPLE("windows.wmv", std::string(kFilm) + "-c:v wmv2 -c:a wmav2 -metadata title=W"),
    Sample{"tracks.mkv", [] { return tracks("tracks.mkv", "-c:s srt"); }},
    Sample{"tracks.mp4", [] { return tracks("tracks.mp4", "-c:s mov_text"); }},
    Sample{"covered.mkv", [] { return covered("covered.mkv"); }},
    Sample{"turned.mp4", [] { return withTrackMatrix(plain("turned.mp4"), rotationMatrix(90)); }},
    Sample{"sphere.mp4", [] { return withSphericalBox(plain("sphere.mp4")); }},
};

void PrintTo(const Sample& sample, std::ostream* out) {
  *out << sample.name;
}

// A stream's values under the names of another program.
using Values = std::map<std::string, std::string>;

std::string text(const json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string number(double value) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%.6f", value);
  return digits;
}

std::string fraction(const media::Rational& value) {
  return std::to_string(value.num) + "/" + std::to_string(value.den);
}

const char* ffprobeName(media::FieldOrder order) {
  constexpr const char* kNames[] = {"progressive", "tt", "bb", "tb", "bt"};
  return kNames[static_cast<std::size_t>(order)];
}

void addNonEmpty(Values& values, const std::string& key, const std::string& value) {
  if (!value.empty()) values[key] = value;
}

Values dispositions(const media::Dispositions& marks) {
  const std::pair<const char*, bool> rows[] = {{"default", marks.isDefault},
                                               {"forced", marks.isForced},
                                               {"hearing_impaired", marks.isForHearingImpaired},
                                               {"visual_impaired", marks.isForVisuallyImpaired},
                                               {"comment", marks.isComment},
                                               {"original", marks.isOriginal},
                                               {"dub", marks.isDub},
                                               {"lyrics", marks.isLyrics},
                                               {"karaoke", marks.isKaraoke},
                                               {"clean_effects", marks.isCleanEffects},
                                               {"captions", marks.isCaptions},
                                               {"descriptions", marks.isDescriptions},
                                               {"attached_pic", marks.isAttachedPicture},
                                               {"timed_thumbnails", marks.isTimedThumbnails},
                                               {"still_image", marks.isStillImage}};
  Values values;
  for (const auto& [name, isSet] : rows)
    values[std::string("disposition ") + name] = isSet ? "1" : "0";
  return values;
}

Values likeFfprobe(const media::Stream& stream) {
  const media::StreamDetails& details = *stream.details;
  Values values = dispositions(details.dispositions);
  addNonEmpty(values, "tag language", details.language);
  addNonEmpty(values, "tag title", details.title);
  addNonEmpty(values, "tag handler_name", details.handlerName);
  addNonEmpty(values, "tag creation_time", details.creationTime);
  addNonEmpty(values, "tag timecode", details.timecode);
  addNonEmpty(values, "tag encoder", details.encoder);
  if (details.attachment) {
    addNonEmpty(values, "tag filename", details.attachment->fileName);
    addNonEmpty(values, "tag mimetype", details.attachment->mimeType);
  }
  addNonEmpty(values, "profile", details.profileName);
  if (details.duration) values["duration"] = number(*details.duration);
  if (details.frameCount) values["nb_frames"] = std::to_string(*details.frameCount);
  if (stream.type == media::StreamType::kVideo && !stream.isAttachedPicture) {
    values["avg_frame_rate"] = fraction(details.averageFrameRate);
    if (details.fieldOrder) values["field_order"] = ffprobeName(*details.fieldOrder);
    addNonEmpty(values, "color_range", details.colours.range);
    addNonEmpty(values, "color_space", details.colours.matrix);
    addNonEmpty(values, "color_transfer", details.colours.transfer);
    addNonEmpty(values, "color_primaries", details.colours.primaries);
    addNonEmpty(values, "chroma_location", details.colours.chromaLocation);
  }
  addNonEmpty(values, "channel_layout", details.channelLayout);
  addNonEmpty(values, "sample_fmt", details.sampleFormat);
  if (details.bitsPerRawSample > 0)
    values["bits_per_raw_sample"] = std::to_string(details.bitsPerRawSample);
  if (details.orientation) values["rotation"] = number(-details.orientation->degrees);
  if (details.spherical) values["projection"] = details.spherical->projection;
  return values;
}

// "00:00:01.023000000" in seconds.
std::string seconds(const std::string& duration) {
  int hours = 0;
  int minutes = 0;
  double rest = 0;
  if (std::sscanf(duration.c_str(), "%d:%d:%lf", &hours, &minutes, &rest) != 3) return duration;
  return number(hours * 3600.0 + minutes * 60.0 + rest);
}

Values ffprobeValues(const json& stream) {
  const bool isMatroska = stream.contains("tags") && stream["tags"].contains("DURATION");
  const bool isCover = stream["disposition"]["attached_pic"] == 1;
  Values values;
  for (const auto& [name, value] : stream["disposition"].items())
    values["disposition " + name] = text(value);
  for (const char* ignored : {"metadata", "dependent", "non_diegetic", "multilayer"})
    values.erase(std::string("disposition ") + ignored);
  for (const char* key : {"profile", "duration", "nb_frames", "channel_layout", "sample_fmt"})
    if (stream.contains(key)) values[key] = text(stream[key]);
  for (const char* key : {"avg_frame_rate", "field_order", "color_range", "color_space",
                          "color_transfer", "color_primaries", "chroma_location"})
    if (stream.contains(key) && stream["codec_type"] == "video" && !isCover)
      values[key] = text(stream[key]);
  if (stream.contains("bits_per_raw_sample") && stream["codec_type"] == "audio")
    values["bits_per_raw_sample"] = text(stream["bits_per_raw_sample"]);
  if (isCover) values.erase("profile");
  const json tags = stream.value("tags", json::object());
  for (const auto& [name, value] : tags.items()) {
    std::string key = name;
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (key == "duration") values["duration"] = seconds(text(value));
    for (const char* wanted : {"language", "title", "handler_name", "creation_time", "timecode",
                               "encoder", "filename", "mimetype"})
      if (key == wanted) values["tag " + key] = text(value);
  }
  if (!isMatroska && stream.value("id", "") == "" && values.count("duration") > 0 &&
      stream.value("codec_tag", "") == "0x0000")
    values.erase("duration");
  for (const json& side : stream.value("side_data_list", json::array())) {
    if (side.contains("rotation")) values["rotation"] = number(side["rotation"].get<double>());
    if (side.contains("projection")) values["projection"] = text(side["projection"]);
  }
  return values;
}

// Where MediaInfo says something else.
struct Difference {
  const char* sample;
  int stream;
  const char* key;
  const char* reason;
};

constexpr Difference kFromMediaInfo[] = {
    {"tracks.mp4", 1, "Title", "FFmpeg does not read the name in a track's user data"},
    {"tracks.mp4", 3, "Title", "FFmpeg does not read the name in a track's user data"},
    {"tracks.mp4", 4, "Forced", "MediaInfo does not read this mark of subtitles in MP4"},
    {"bottom.mov", 0, "TimeCode_FirstFrame", "of the first group of pictures"},
    {"mpeg2.ts", 0, "TimeCode_FirstFrame", "of the first group of pictures"},
    {"old.avi", 0, "ScanType", "FFmpeg does not report what MPEG-4's headers say of fields"},
};

bool isListed(const std::string& sample, int stream, const std::string& key) {
  return std::any_of(std::begin(kFromMediaInfo), std::end(kFromMediaInfo),
                     [&](const Difference& each) {
                       return sample == each.sample && stream == each.stream && key == each.key;
                     });
}

// Except for the differences that are listed; none without a sample.
void expectEqual(const std::string& sample, int stream, const Values& ours, const Values& theirs) {
  for (const auto& [key, value] : theirs) {
    const auto found = ours.find(key);
    const std::string own = found != ours.end() ? found->second : "(none)";
    if (isListed(sample, stream, key))
      EXPECT_NE(own, value) << key << " agrees, and should not be listed";
    else
      EXPECT_EQ(own, value) << key;
  }
}

// Nor may there be values that the other program does not have.
void expectNoMore(const Values& ours, const Values& theirs) {
  for (const auto& [key, value] : ours)
    if (theirs.count(key) == 0) ADD_FAILURE() << "only ours: " << key << " " << value;
}

class DetailsAgreement : public testing::TestWithParam<Sample> {
 protected:
  void SetUp() override {
    path_ = GetParam().make();
    container_ = ffmpeg::readContainer(path_, ffmpeg::Depth::kStreams, ffmpeg::Details::kWanted);
    ASSERT_TRUE(container_);
  }

  std::string path_;
  std::optional<media::Container> container_;
};

TEST_P(DetailsAgreement, WithFfprobeHolds) {
  const json report = ffprobe(path_);
  ASSERT_EQ(report["streams"].size(), container_->streams.size());
  for (const media::Stream& stream : container_->streams) {
    SCOPED_TRACE("stream " + std::to_string(stream.index));
    const Values ours = likeFfprobe(stream);
    const Values theirs = ffprobeValues(report["streams"][static_cast<std::size_t>(stream.index)]);
    expectEqual("", stream.index, ours, theirs);
    expectNoMore(ours, theirs);
  }
  const json& listed = report["chapters"];
  ASSERT_EQ(listed.size(), container_->chapters.size());
  for (std::size_t i = 0; i < listed.size(); ++i) {
    EXPECT_EQ(number(container_->chapters[i].start), text(listed[i]["start_time"]));
    EXPECT_EQ(number(container_->chapters[i].end), text(listed[i]["end_time"]));
    EXPECT_EQ(container_->chapters[i].title, listed[i]["tags"].value("title", ""));
  }
  ASSERT_EQ(report["programs"].size(), container_->programs.size());
  for (std::size_t i = 0; i < container_->programs.size(); ++i) {
    const json& program = report["programs"][i];
    EXPECT_EQ(container_->programs[i].number, program["program_id"]);
    EXPECT_EQ(container_->programs[i].name, program["tags"].value("service_name", ""));
    EXPECT_EQ(container_->programs[i].provider, program["tags"].value("service_provider", ""));
  }
}

// MediaInfo's names for FFmpeg's.
const std::map<std::string, std::string> kMediaInfoNames = {{"bt709", "BT.709"},
                                                            {"bt2020", "BT.2020"},
                                                            {"smpte2084", "PQ"},
                                                            {"arib-std-b67", "HLG"},
                                                            {"bt2020nc", "BT.2020 non-constant"},
                                                            {"tv", "Limited"},
                                                            {"pc", "Full"},
                                                            {"eng", "en"},
                                                            {"deu", "de"},
                                                            {"fra", "fr"},
                                                            {"spa", "es"}};

std::string mediaInfoName(const std::string& name) {
  const auto found = kMediaInfoNames.find(name);
  return found != kMediaInfoNames.end() ? found->second : name;
}

std::string yesOrNo(bool isTrue) {
  return isTrue ? "Yes" : "No";
}

std::string shortNumber(double value, const char* format) {
  char digits[32];
  std::snprintf(digits, sizeof digits, format, value);
  return digits;
}

Values likeMediaInfo(const media::Stream& stream) {
  const media::StreamDetails& details = *stream.details;
  Values values;
  if (details.language != "und") addNonEmpty(values, "Language", mediaInfoName(details.language));
  addNonEmpty(values, "Title", details.title);
  values["Default"] = yesOrNo(details.dispositions.isDefault);
  values["Forced"] = yesOrNo(details.dispositions.isForced);
  if (stream.type == media::StreamType::kAudio) {
    const int bits = details.bitsPerRawSample > 0 ? details.bitsPerRawSample : stream.bitsPerSample;
    if (bits > 0) values["BitDepth"] = std::to_string(bits);
  }
  if (stream.type != media::StreamType::kVideo) return values;
  values["BitDepth"] = std::to_string(details.bitDepth);
  addNonEmpty(values, "ChromaSubsampling", details.chromaSubsampling);
  if (stream.isAttachedPicture) return values;
  if (details.frameCount) values["FrameCount"] = std::to_string(*details.frameCount);
  values["FrameRate_Num"] = std::to_string(details.averageFrameRate.num);
  values["FrameRate_Den"] = std::to_string(details.averageFrameRate.den);
  if (details.fieldOrder) {
    const bool isProgressive = *details.fieldOrder == media::FieldOrder::kProgressive;
    values["ScanType"] = isProgressive ? "Progressive" : "Interlaced";
    if (!isProgressive)
      values["ScanOrder"] = *details.fieldOrder == media::FieldOrder::kTopFirst ? "TFF" : "BFF";
  }
  addNonEmpty(values, "colour_range", mediaInfoName(details.colours.range));
  addNonEmpty(values, "colour_primaries", mediaInfoName(details.colours.primaries));
  addNonEmpty(values, "transfer_characteristics", mediaInfoName(details.colours.transfer));
  addNonEmpty(values, "matrix_coefficients", mediaInfoName(details.colours.matrix));
  addNonEmpty(values, "TimeCode_FirstFrame", details.timecode);
  if (details.orientation) values["Rotation"] = shortNumber(details.orientation->degrees, "%.3f");
  if (const auto& display = details.masteringDisplay; display && display->luminance)
    values["MasteringDisplay_Luminance"] =
        "min: " + shortNumber(display->luminance->lowest, "%.4f") +
        " cd/m2, max: " + shortNumber(display->luminance->highest, "%g") + " cd/m2";
  if (const auto& light = details.contentLight) {
    values["MaxCLL"] = std::to_string(light->highest) + " cd/m2";
    values["MaxFALL"] = std::to_string(light->highestAverage) + " cd/m2";
  }
  return values;
}

constexpr const char* kMediaInfoKeys[] = {
    "Language",
    "Title",
    "Default",
    "Forced",
    "FrameCount",
    "BitDepth",
    "ChromaSubsampling",
    "FrameRate_Num",
    "FrameRate_Den",
    "ScanType",
    "ScanOrder",
    "colour_range",
    "colour_primaries",
    "transfer_characteristics",
    "matrix_coefficients",
    "TimeCode_FirstFrame",
    "Rotation",
    "MasteringDisplay_Luminance",
    "MaxCLL",
    "MaxFALL",
};

Values mediaInfoValues(const json& track, const media::Stream& stream) {
  Values values;
  for (const char* key : kMediaInfoKeys)
    if (track.contains(key)) values[key] = text(track[key]);
  // A kind of interlaced picture; no rotation.
  if (values["ScanType"] == "MBAFF") values["ScanType"] = "Interlaced";
  if (values["Rotation"] == "0.000") values.erase("Rotation");
  // It counts the frames itself if nothing states them, and leaves out audio that is not played.
  if (stream.type != media::StreamType::kVideo)
    for (const char* key : {"FrameRate_Num", "FrameRate_Den"}) values.erase(key);
  if (!stream.details->frameCount || stream.type != media::StreamType::kVideo)
    values.erase("FrameCount");
  std::erase_if(values, [](const auto& each) { return each.second.empty(); });
  return values;
}

// The track of a stream; null if MediaInfo has none.
const json* trackOf(const json& report, const media::Stream& stream) {
  for (const json& track : report["media"]["track"]) {
    const std::string order = track.value("StreamOrder", "");
    const std::string number = order.substr(order.rfind('-') + 1);
    if (!number.empty() && number == std::to_string(stream.index)) return &track;
  }
  return nullptr;
}

TEST_P(DetailsAgreement, WithMediaInfoHolds) {
  const json report = mediainfo(path_);
  int compared = 0;
  for (const media::Stream& stream : container_->streams) {
    const json* track = trackOf(report, stream);
    if (track == nullptr || stream.type == media::StreamType::kOther) continue;
    SCOPED_TRACE("stream " + std::to_string(stream.index));
    ++compared;
    expectEqual(GetParam().name, stream.index, likeMediaInfo(stream),
                mediaInfoValues(*track, stream));
  }
  EXPECT_GT(compared, 0);
}

std::string testName(const testing::TestParamInfo<Sample>& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Samples, DetailsAgreement, testing::ValuesIn(kSamples), testName);

}  // namespace

}  // namespace kolum::test
