#include "answers/answers.h"

#include <kolum/kolum.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <sstream>

namespace kolum::test {

namespace {

constexpr int kPattern = 0x5A5A5A5A;
constexpr std::size_t kTextSize = 1024;

// Lines of answers, with the entry point's name before each.
class Lines {
 public:
  explicit Lines(const char* entryPoint) : entryPoint_(entryPoint) {}

  template <typename Value>
  Lines& add(const char* output, const Value& value) {
    text_ << entryPoint_ << '.' << output << ' ' << value << '\n';
    return *this;
  }
  Lines& add(const char* output, double value) {
    char exact[64];
    std::snprintf(exact, sizeof exact, "%a", value);
    return add(output, std::string(exact));
  }
  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  const char* entryPoint_;
};

struct Text {
  std::array<char, kTextSize> content = {'~'};
  operator char*() { return content.data(); }
};

std::ostream& operator<<(std::ostream& out, const Text& text) {
  return out << std::string_view(text.content.data());
}

struct Path {
  std::string folder;
  std::string name;
};

Path split(const std::string& path) {
  const std::size_t begin = path.rfind('/') + 1;
  return {path.substr(0, begin), path.substr(begin)};
}

std::string videoRecord(const Path& path, bool wantsAspect) {
  videoObject_st video;
  std::memset(&video, 0x5A, sizeof video);
  if (!wantsAspect) video.sampleAspectNum = 0;
  Lines lines(wantsAspect ? "GetVideoMetadata1(aspect)" : "GetVideoMetadata1");
  lines.add("result", GetVideoMetadata1(path.folder.c_str(), path.name.c_str(), &video, 0))
      .add("yearMonth", video.yearMonth)
      .add("creationDate", video.creationDate)
      .add("creationYear", video.creationYear)
      .add("mimeType", video.mimeType)
      .add("dlnaProfile", video.dlnaProfile)
      .add("duration", video.duration)
      .add("width", video.width)
      .add("height", video.height)
      .add("videoBitRate", video.videoBitRate)
      .add("sampleRate", video.sampleRate)
      .add("bitsPerSample", video.bitsPerSample)
      .add("channels", video.channels)
      .add("playException", video.playException)
      .add("containerFormat", video.containerFormat)
      .add("videoCodec", video.videoCodec)
      .add("videoProfile", video.videoProfile)
      .add("videoLevel", video.videoLevel)
      .add("audioCodec", video.audioCodec)
      .add("audioProfile", video.audioProfile)
      .add("audioClass", video.audioClass)
      .add("audioLevel", video.audioLevel)
      .add("audioBitRate", video.audioBitRate)
      .add("creationTime", video.creationTime)
      .add("orientation", video.orientation)
      .add("subtitleCount", video.subtitleCount)
      .add("is360", video.is360)
      .add("bitRate", video.bitRate)
      .add("frameRate", video.frameRate)
      .add("sampleAspectNum", video.sampleAspectNum)
      .add("sampleAspectDen", video.sampleAspectDen)
      .add("displayAspectNum", video.displayAspectNum)
      .add("displayAspectDen", video.displayAspectDen)
      .add("contentIdentifier", video.contentIdentifier);
  return lines.text();
}

std::string flatVideo(const Path& path) {
  std::array<int, 20> numbers;
  numbers.fill(kPattern);
  std::array<int, 4> aspect;
  aspect.fill(kPattern);
  Text mimeType;
  Text dlnaProfile;
  Text yearMonth;
  Text creationDate;
  int64_t creationTime = kPattern;
  double frameRate = kPattern;
  int is360 = kPattern;
  const unsigned result = GetVideoMetadata3(
      path.folder.c_str(), path.name.c_str(), &numbers[0], &numbers[1], &numbers[2], &numbers[3],
      &numbers[4], &numbers[5], &numbers[6], &numbers[7], &numbers[8], &numbers[9], mimeType,
      dlnaProfile, &numbers[10], &numbers[11], &numbers[12], &numbers[13], &numbers[14],
      &numbers[15], &numbers[16], &numbers[17], &numbers[18], &numbers[19], yearMonth, creationDate,
      &creationTime, 1, &frameRate, &aspect[0], &aspect[1], &aspect[2], &aspect[3], &is360);
  constexpr const char* kNames[] = {
      "width",           "height",        "bitRate",      "videoBitRate", "audioBitRate",
      "sampleRate",      "bitsPerSample", "channels",     "duration",     "playException",
      "containerFormat", "videoCodec",    "videoProfile", "videoLevel",   "audioCodec",
      "audioProfile",    "audioLevel",    "orientation",  "subtitleMode", "subtitleCount"};
  Lines lines("GetVideoMetadata3");
  lines.add("result", result);
  for (std::size_t i = 0; i < std::size(kNames); ++i) lines.add(kNames[i], numbers[i]);
  lines.add("mimeType", mimeType)
      .add("dlnaProfile", dlnaProfile)
      .add("yearMonth", yearMonth)
      .add("creationDate", creationDate)
      .add("creationTime", creationTime)
      .add("frameRate", frameRate)
      .add("is360", is360);
  for (const int term : aspect) lines.add("aspect", term);
  return lines.text();
}

std::string naming(const Path& path) {
  DlnaNaming naming;
  Lines lines("ExplainDlnaProfile");
  lines.add("result", ExplainDlnaProfile(path.folder.c_str(), path.name.c_str(), 0, &naming))
      .add("profile", naming.profile)
      .add("mimeType", naming.mimeType)
      .add("next", naming.next);
  for (const auto& detail : naming.details) lines.add(detail.label.c_str(), detail.value);
  for (const auto& candidate : naming.candidates) {
    lines.add("candidate", candidate.name).add("taken", candidate.taken);
    for (const auto& test : candidate.tests)
      lines.add("test", test.wanted + (test.held ? " yes " : " no ") + test.actual);
  }
  for (const auto& remark : naming.remarks) lines.add("remark", remark);
  return lines.text();
}

std::string song(const Path& path) {
  std::array<uint32_t, 8> numbers;
  numbers.fill(kPattern);
  std::array<int32_t, 2> levels;
  levels.fill(kPattern);
  Text dlnaProfile;
  const unsigned result = GetAudioMetadata(
      path.folder.c_str(), path.name.c_str(), &numbers[0], &numbers[1], &numbers[2], &numbers[3],
      &numbers[4], &numbers[5], &numbers[6], &numbers[7], &levels[0], &levels[1], dlnaProfile);
  constexpr const char* kNames[] = {"containerBitRate", "bitRate",  "sampleRate",
                                    "bitsPerSample",    "channels", "durationSec",
                                    "containerFormat",  "codecId"};
  Lines lines("GetAudioMetadata");
  lines.add("result", result);
  for (std::size_t i = 0; i < numbers.size(); ++i) lines.add(kNames[i], numbers[i]);
  lines.add("profile", levels[0]).add("level", levels[1]).add("dlnaProfile", dlnaProfile);
  return lines.text();
}

std::string dsdSong(const Path& path) {
  songObject_st song;
  std::memset(&song, 0, sizeof song);
  Lines lines("GetDsfMetadata");
  lines.add("result", GetDsfMetadata(path.folder.c_str(), path.name.c_str(), &song))
      .add("track", song.track)
      .add("duration", song.duration)
      .add("title", song.title)
      .add("artist", song.artist)
      .add("albumArtist", song.albumArtist)
      .add("album", song.album)
      .add("year", song.year)
      .add("genre", song.genre)
      .add("sampleRate", song.sampleRate)
      .add("bitRate", song.bitRate)
      .add("channels", song.channels)
      .add("containerFormat", song.containerFormat)
      .add("profile", song.profile)
      .add("level", song.level);
  return lines.text();
}

std::string photo(const Path& path) {
  uint32_t pixelFormat = kPattern;
  uint32_t width = kPattern;
  uint32_t height = kPattern;
  Lines lines("GetPhotoMetadata");
  lines.add("result", GetPhotoMetadata(path.folder.c_str(), path.name.c_str(), &pixelFormat))
      .add("pixelFormat", pixelFormat)
      .add("HW", GetPhotoHW((path.folder + path.name).c_str(), &width, &height))
      .add("width", width)
      .add("height", height);
  return lines.text();
}

void addStream(Lines& lines, const MediaStreamInfo& stream) {
  std::array<std::int32_t, sizeof stream / sizeof(std::int32_t)> words = {};
  std::memcpy(words.data(), &stream, sizeof stream);
  std::string text;
  for (const std::int32_t word : words) text += std::to_string(word) + " ";
  lines.add("stream", text);
}

std::string mediaInfo(const std::string& path, int64_t seconds) {
  MediaInfo* info = nullptr;
  double time = kPattern;
  const std::string name = "GetMediaInfo(" + std::to_string(seconds) + ")";
  Lines lines(name.c_str());
  lines.add("result", GetMediaInfo(path.c_str(), &info, seconds, &time)).add("keyFrame", time);
  if (info != nullptr) {
    lines.add("bitRate", info->bitRate)
        .add("duration", info->duration)
        .add("containerFormat", info->containerFormat)
        .add("sourceKind", info->sourceKind)
        .add("streamCount", info->streamCount);
    for (int i = 0; i < info->streamCount; ++i) addStream(lines, info->streams[i]);
  }
  Free_MediaInfo(info);
  return lines.text();
}

std::string keyFrame(const std::string& path, int seconds) {
  double time = kPattern;
  const std::string name = "getVideoKeyFrameTime(" + std::to_string(seconds) + ")";
  Lines lines(name.c_str());
  lines.add("result", getVideoKeyFrameTime(path.c_str(), seconds, &time)).add("time", time);
  return lines.text();
}

std::string queries(const Path& path) {
  const std::string whole = path.folder + path.name;
  std::array<unsigned, 6> numbers;
  numbers.fill(kPattern);
  Lines lines("queries");
  lines.add("rotation", GetVideoRotationDegree(path.folder.c_str(), path.name.c_str(), &numbers[0]))
      .add("degrees", numbers[0])
      .add("drm", GetDRMProtectedInfo(whole.c_str(), &numbers[1]))
      .add("isProtected", numbers[1])
      .add("audioTracks", GetAudioTrack(whole.c_str(), &numbers[2]))
      .add("count", numbers[2])
      .add("subtitleTracks", GetSubtitleTrack(whole.c_str(), &numbers[3]))
      .add("count", numbers[3])
      .add("packets", ProbeTsPacketSize(whole.c_str(), &numbers[4]))
      .add("size", numbers[4])
      .add("brand", GetMp4SubFormat(whole.c_str(), &numbers[5]))
      .add("subFormat", numbers[5])
      .add("moovAtEnd", CheckMp4MoovAtEnd(whole.c_str()));
  return lines.text();
}

}  // namespace

std::string answersAbout(const std::string& path) {
  const Path parts = split(path);
  std::string text = videoRecord(parts, false) + videoRecord(parts, true) + flatVideo(parts) +
                     naming(parts) + song(parts) + dsdSong(parts) + photo(parts) + queries(parts);
  for (const int seconds : {0, 1, 5, 60}) text += mediaInfo(path, seconds);
  for (const int seconds : {0, 1, 5}) text += keyFrame(path, seconds);
  return text;
}

}  // namespace kolum::test
