#include "video/probe.h"

#include <kolum/host.h>
#include <kolum/identifiers.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "av/input.h"
#include "support/log.h"
#include "support/text.h"
#include "video/audio_class.h"
#include "video/container.h"
#include "video/creation.h"
#include "video/disc.h"
#include "video/dlna.h"
#include "video/mp4_boxes.h"
#include "video/ts_packets.h"

namespace kolum::video {

namespace {

constexpr const char* kQuickTimeCreationDate = "com.apple.quicktime.creationdate";
constexpr const char* kQuickTimeContentIdentifier = "com.apple.quicktime.content.identifier";

// A MIME type that follows from the demuxer alone also keeps the file from being named for DLNA.
struct MimeTypeRow {
  std::string_view demuxer;
  std::string_view mimeType;
};

constexpr auto kMimeTypes = std::to_array<MimeTypeRow>({
    {av::kDemuxerAvi, "video/x-msvideo"},
    {av::kDemuxerMatroska, "video/x-matroska"},
    {av::kDemuxerFlv, "video/x-flv"},
});

// MPEG-4 part 2 in AVI that some players refuse, by codec tag (letter case does not count).
struct DivxRow {
  std::string_view tag;
  std::uint32_t playException;
};

constexpr auto kDivxTags = std::to_array<DivxRow>({
    {"XVID", PLAY_EXCEPTION_DIVX_XVID},
    {"DX50", PLAY_EXCEPTION_DIVX_DX50},
    {"DIVX", PLAY_EXCEPTION_DIVX_DIVX},
});

struct OrientationRow {
  int degrees;
  std::uint32_t orientation;
};

constexpr auto kOrientations = std::to_array<OrientationRow>(
    {{180, VIDEO_ORIENTATION_180}, {270, VIDEO_ORIENTATION_270}, {90, VIDEO_ORIENTATION_90}});

std::string_view mimeTypeOf(std::string_view demuxer) {
  for (const MimeTypeRow& row : kMimeTypes)
    if (row.demuxer == demuxer) return row.mimeType;
  return {};
}

// One run of the probe. Each step takes what it needs from the input and adds to the facts.
class Probe {
 public:
  Probe(const ProbeRequest& request, const ProbePolicy& policy)
      : request_(request), policy_(policy) {}

  ProbeResult run() && {
    const bool succeeded = probe();
    return {succeeded, std::move(facts_)};
  }

 private:
  bool probe();
  bool choosePath();
  bool open();
  void readContainerFacts();
  void chooseAudioStream();
  void readAudioFacts();
  bool chooseVideoStream();
  void readContainerFormat();
  void readMp4Format();
  void readDuration();
  void readOrientation();
  void readStreamCreation();
  void readPicture();
  bool readVideoCodec();
  void nameProfile();
  void readQuickTimeCreation();
  void scaleDiscDuration();

  bool isMovPath() const { return endsWithIgnoringCase(path_, ".mov"); }

  const ProbeRequest& request_;
  const ProbePolicy& policy_;
  VideoFacts facts_;

  std::string path_;
  bool isDisc_ = false;
  long long titleSize_ = 0;
  // Declared before the input, so that the input is closed before the image is unmounted.
  std::unique_ptr<MountedImage> image_;
  std::optional<av::Input> input_;
  std::optional<av::Stream> audio_;
  std::optional<av::Stream> video_;
};

bool Probe::probe() {
  if (!choosePath()) return false;
  // An image that is only told apart ends here, known by its format.
  if (image_ != nullptr && !policy_.opensImages) return !path_.empty();
  if (!open()) return false;
  readContainerFacts();
  chooseAudioStream();
  readAudioFacts();
  if (!chooseVideoStream()) return false;
  readContainerFormat();
  readDuration();
  readOrientation();
  readStreamCreation();
  readPicture();
  if (!readVideoCodec()) return false;
  if (facts_.mimeType.empty()) nameProfile();
  if (policy_.readsQuickTimeEntries) readQuickTimeCreation();
  scaleDiscDuration();
  return true;
}

// Leaves in path_ what FFmpeg is to open.
bool Probe::choosePath() {
  const std::string folder(request_.folder);
  std::optional<MainTitle> title;
  switch (sourceOf(request_.fileName)) {
    case Source::kFile:
      path_ = joinPath(request_.folder, request_.fileName);
      return true;
    case Source::kDvdFolder:
      title = dvdFolderTitle(folder);
      break;
    case Source::kBlurayFolder:
      title = blurayFolderTitle(folder);
      break;
    case Source::kImage:
      image_ = MountedImage::mount(
          folder + std::string(request_.fileName),
          policy_.opensImages ? MountFolderFailure::kIgnore : MountFolderFailure::kGiveUp);
      if (image_ != nullptr) title = imageTitle(image_->folder());
      break;
  }
  if (!title) return false;
  isDisc_ = true;
  path_ = title->path;
  titleSize_ = title->size;
  facts_.containerFormat = title->containerFormat;
  return true;
}

bool Probe::open() {
  input_ = av::Input::openWithStreams(path_.c_str());
  return input_ && !input_->streams().empty();
}

void Probe::readContainerFacts() {
  facts_.bitRate = input_->bitRate();
  facts_.subtitleCount = 0;
  if (!isDisc_ && !policy_.countsSubtitlesOfFiles) return;
  const auto& streams = input_->streams();
  const auto count = std::count_if(streams.begin(), streams.end(), [](const av::Stream& stream) {
    return stream.type() == av::MediaType::kSubtitle;
  });
  facts_.subtitleCount = static_cast<int>(count);
  facts_.fileHasSubtitles = !isDisc_ && count > 0;
}

void Probe::chooseAudioStream() {
  int count = 0;
  for (const av::Stream& stream : input_->streams()) {
    if (stream.type() != av::MediaType::kAudio) continue;
    if (!audio_ || count == request_.audioStreamIndex) audio_ = stream;
    ++count;
  }
}

void Probe::readAudioFacts() {
  facts_.audioClass = AUDIO_CLASS_NONE;
  if (!audio_) return;
  const int codec = ffmpegCodecIdConvert(audio_->classicCodec());
  if (codec < 0) return;
  facts_.audioBitRate = audio_->bitRate();
  facts_.audioProfile = FF_ProfileToKO_Profile(codec, audio_->profile());
  facts_.audioClass = audioClass({.codec = codec,
                                  .bitRate = audio_->bitRate(),
                                  .sampleRate = audio_->sampleRate(),
                                  .channels = audio_->channels(),
                                  .extraData = audio_->extraData()});
  facts_.sampleRate = audio_->sampleRate();
  facts_.bitsPerSample = audio_->bitsPerCodedSample();
  facts_.channels = audio_->channels();
  facts_.audioCodec = codec;
  facts_.audioLevel = audio_->level();
}

// The largest picture wins, the earlier stream among equals.
bool Probe::chooseVideoStream() {
  std::int64_t largest = -1;
  for (const av::Stream& stream : input_->streams()) {
    if (stream.type() != av::MediaType::kVideo) continue;
    if (policy_.logsVideoStreams) KOLUM_LOG_AS(kMediaSource, "GetVideoMetadata3", "%s", "");
    const std::int64_t area = std::int64_t{stream.width()} * stream.height();
    if (area <= largest) continue;
    largest = area;
    video_ = stream;
  }
  if (!video_) KOLUM_LOG_AS(kMediaSource, "parseVideoTrack", "video_stream less than 0");
  return video_.has_value();
}

void Probe::readContainerFormat() {
  const std::uint32_t format = containerFormat(input_->demuxer());
  facts_.mimeType = mimeTypeOf(input_->demuxer());

  const std::uint32_t before = facts_.containerFormat.value_or(request_.formatOnEntry);
  const bool isImageFormat = before == FORMAT_DVDISO || before == FORMAT_BDISO;
  // "mpeg" and "mpegts" replace the formats of DVD and Blu-ray folders; only the formats of images
  // stand, and these only against "mpeg". Hosts' databases hold the values that result.
  if (!(policy_.keepsImageFormat && format == FORMAT_MPEG && isImageFormat))
    facts_.containerFormat = format;

  if (format == FORMAT_MPEG4) readMp4Format();
  if (format == FORMAT_AVI && ffmpegCodecIdConvert(video_->classicCodec()) == CODEC_ID_MPEG4) {
    const std::string tag = video_->codecTagText();
    for (const DivxRow& divx : kDivxTags)
      if (equalsIgnoringCase(tag, divx.tag)) facts_.playException = divx.playException;
  }
}

void Probe::readMp4Format() {
  constexpr int kSubFormatShift = 16;
  const std::uint32_t subFormat = mp4SubFormat(path_.c_str()).value_or(0);
  facts_.containerFormat = subFormat << kSubFormatShift | FORMAT_MPEG4;
  if (!isMovPath()) return;
  facts_.mimeType = "video/quicktime";
  if (policy_.readsQuickTimeEntries)
    facts_.contentIdentifier = input_->tagWithPrefix(kQuickTimeContentIdentifier).value_or("");
}

void Probe::readDuration() {
  if (input_->duration() > 0) facts_.duration = input_->duration() / av::kTimeBase;
}

void Probe::readOrientation() {
  const auto rotate = video_->rotate();
  if (!rotate) return;
  const auto degrees = std::strtol(rotate->c_str(), nullptr, 10);
  for (const OrientationRow& row : kOrientations)
    if (row.degrees == degrees) facts_.orientation = row.orientation;
}

void Probe::readStreamCreation() {
  const auto value = video_->tag("creation_time");
  const auto creation = value ? creationOfStream(*value) : std::nullopt;
  if (creation) {
    facts_.creationTime = creation->time;
    facts_.yearMonth = creation->yearMonth;
    facts_.creationDate = creation->date;
  } else if (policy_.clearsMissingCreationTime) {
    facts_.creationTime = 0;
  }
}

void Probe::readPicture() {
  constexpr std::int64_t kLargestAspectTerm = 1048576;
  const av::Rational rate = video_->realFrameRate();
  if (rate.den != 0) facts_.frameRate = static_cast<double>(rate.num) / rate.den;

  if (request_.wantsAspect) {
    const av::Rational sample = video_->sampleAspect();
    if (sample.den != 0) {
      const av::Rational display =
          av::reduce(std::int64_t{sample.num} * video_->width(),
                     std::int64_t{sample.den} * video_->height(), kLargestAspectTerm);
      if (sample.num != 0 && display.num != 0 && display.den != 0)
        facts_.aspect = AspectFacts{sample, display};
    }
  }
  facts_.isEquirectangular = video_->isEquirectangular();
}

bool Probe::readVideoCodec() {
  const int codec = ffmpegCodecIdConvert(video_->classicCodec());
  facts_.videoBitRate = video_->bitRate();
  facts_.videoCodec = codec;
  if (codec < 0) return false;
  facts_.videoProfile = FF_ProfileToKO_Profile(codec, video_->profile());
  facts_.width = video_->width();
  facts_.height = video_->height();
  facts_.videoLevel = video_->level();
  return true;
}

void Probe::nameProfile() {
  facts_.askedDlnaRules = true;
  const DlnaName name = nameDlnaProfile(
      {.codec = *facts_.videoCodec,
       .demuxer = input_->demuxer(),
       .width = video_->width(),
       .height = video_->height(),
       .streamBitRate = video_->bitRate(),
       .containerBitRate = input_->bitRate(),
       .profile = video_->profile(),
       .level = video_->level(),
       .audioClass = *facts_.audioClass,
       .realFrameRate = video_->realFrameRate(),
       .timeBaseDen = video_->timeBase().den,
       .codecTag = video_->codecTag(),
       .path = path_,
       .extraData = video_->extraData()},
      [this] { return transportPackets(path_); }, request_.explanation);
  facts_.dlnaProfile = name.profile;
  facts_.mimeType = name.mimeType;
  if (name.playException) facts_.playException = name.playException;
  if (isWmvHighTestStream(request_.fileName)) facts_.dlnaProfile = kWmvHighTestProfile;
  if (facts_.mimeType.empty()) facts_.mimeType = fallbackMimeType(input_->demuxer(), path_);
}

void Probe::readQuickTimeCreation() {
  KOLUM_LOG_AS(kMediaSource, "GetDictEntry", "@@GetDictEntry key:%s", kQuickTimeCreationDate);
  const auto value = input_->tagWithPrefix(kQuickTimeCreationDate);
  if (!value) return;
  KOLUM_LOG_AS(kMediaSource, "GetVideoMetadata1", "@@creation_time:%s", value->c_str());
  const Creation creation = creationOfQuickTime(*value);
  facts_.creationTime = creation.time;
  KOLUM_LOG_AS(kMediaSource, "GetVideoMetadata1", "@@creation_time:%ld", creation.time);
  facts_.creationYear = creation.year;
  facts_.yearMonth = creation.yearMonth;
  facts_.creationDate = creation.date;
}

// FFmpeg sees only the first part of a DVD title, so the title's size in gibibytes scales what it
// measured.
void Probe::scaleDiscDuration() {
  constexpr long long kMebibyte = 1048576;
  constexpr long long kMebibytesPerGibibyte = 1024;
  if (!isDisc_ || titleSize_ == 0 || !facts_.duration) return;
  facts_.duration = *facts_.duration * (titleSize_ / kMebibyte) / kMebibytesPerGibibyte;
}

}  // namespace

ProbeResult probeVideo(const ProbeRequest& request, const ProbePolicy& policy) {
  return Probe(request, policy).run();
}

}  // namespace kolum::video
