#include "probe/video.h"

#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/text.h"
#include "dlna/audio_class.h"
#include "dlna/naming.h"
#include "media/container.h"
#include "media/identifiers.h"
#include "probe/creation.h"
#include "probe/numbers.h"
#include "read/disc/disc.h"
#include "read/disc/image.h"
#include "read/ffmpeg/input.h"

namespace kolum::probe {

namespace {

constexpr std::string_view kQuickTimeCreationDate = "com.apple.quicktime.creationdate";
constexpr std::string_view kQuickTimeContentIdentifier = "com.apple.quicktime.content.identifier";

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

// One run of the probe. Each step reads what it needs from the input and adds to the facts.
class Probe {
 public:
  Probe(const ProbeRequest& request, const ProbePolicy& policy)
      : request_(request), policy_(policy) {}

  ProbeResult run() && {
    const bool succeeded = probe();
    return {succeeded,      std::move(facts_), std::move(trace_),
            found_.failure, std::move(found_), title_ ? path_ : ""};
  }

 private:
  bool probe();
  bool choosePath();
  bool open();
  bool look(const read::Query& wanted);
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
  media::TransportPackets packets();
  std::optional<std::string> tagWithPrefix(std::string_view prefix) const;

  const media::Container& container() const { return *found_.container; }
  bool isMovPath() const { return endsWithIgnoringCase(path_, ".mov"); }

  const ProbeRequest& request_;
  const ProbePolicy& policy_;
  VideoFacts facts_;
  Trace trace_;

  std::string path_;
  std::optional<disc::Title> title_;
  std::unique_ptr<disc::MountedImage> image_;
  read::Findings found_;
  const media::Stream* audio_ = nullptr;
  const media::Stream* video_ = nullptr;
};

bool Probe::probe() {
  if (!choosePath()) return false;
  // If images are not opened, the probe ends here with only the image's format.
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

// Sets path_ to the file to open.
bool Probe::choosePath() {
  const std::string folder(request_.folder);
  switch (disc::kindOf(request_.fileName)) {
    case disc::Kind::kNone:
      path_ = joinPath(request_.folder, request_.fileName);
      return true;
    case disc::Kind::kDvdFolder:
      title_ = disc::dvdFolderTitle(folder);
      break;
    case disc::Kind::kBlurayFolder:
      title_ = disc::blurayFolderTitle(folder, trace_);
      break;
    case disc::Kind::kImage:
      image_ = disc::MountedImage::mount(folder + std::string(request_.fileName),
                                         policy_.opensImages ? disc::MountFolderFailure::kIgnore
                                                             : disc::MountFolderFailure::kGiveUp);
      if (image_ != nullptr) title_ = disc::imageTitle(image_->folder(), trace_);
      break;
  }
  if (!title_) return false;
  path_ = title_->path;
  facts_.containerFormat = title_->containerFormat;
  return true;
}

bool Probe::open() {
  constexpr read::Query kWanted = {
      .container = ffmpeg::Depth::kStreams, .mp4SubFormat = true, .transportPackets = true};
  if (!look(kWanted) || !found_.container) return false;
  return !found_.container->streams.empty();
}

// Finds out about the file, or about the disc's title. False if it cannot be opened.
bool Probe::look(const read::Query& wanted) {
  std::optional<read::Findings> found;
  if (!title_) {
    found = findingsOf(path_, wanted, request_.reading);
  } else if (const auto source = disc::open(*title_)) {
    found = findingsOf(*source, wanted, {.also = request_.reading.also});
  }
  if (found) found_ = std::move(*found);
  return found.has_value();
}

void Probe::readContainerFacts() {
  facts_.bitRate = container().bitRate;
  facts_.subtitleCount = 0;
  if (!title_ && !policy_.countsSubtitlesOfFiles) return;
  const std::ptrdiff_t count = container().count(media::StreamType::kSubtitle);
  facts_.subtitleCount = static_cast<int>(count);
  facts_.fileHasSubtitles = !title_ && count > 0;
}

void Probe::chooseAudioStream() {
  int count = 0;
  for (const media::Stream& stream : container().streams) {
    if (stream.type != media::StreamType::kAudio) continue;
    if (audio_ == nullptr || count == request_.audioStreamIndex) audio_ = &stream;
    ++count;
  }
}

void Probe::readAudioFacts() {
  facts_.audioClass = AUDIO_CLASS_NONE;
  if (audio_ == nullptr) return;
  const int codec = media::codecOfFfmpeg(audio_->codec);
  if (codec < 0) return;
  facts_.audioBitRate = audio_->bitRate;
  facts_.audioProfile = media::profileOfFfmpeg(codec, profileNumber(*audio_));
  facts_.audioClass = dlna::audioClass({.codec = codec,
                                        .bitRate = audio_->bitRate,
                                        .sampleRate = audio_->sampleRate,
                                        .channels = audio_->channels,
                                        .extraData = audio_->extraData});
  facts_.sampleRate = audio_->sampleRate;
  facts_.bitsPerSample = audio_->bitsPerSample;
  facts_.channels = audio_->channels;
  facts_.audioCodec = codec;
  facts_.audioLevel = levelNumber(*audio_);
}

// The first container entry whose key begins with PREFIX.
std::optional<std::string> Probe::tagWithPrefix(std::string_view prefix) const {
  for (const auto& [key, value] : container().tags)
    if (startsWithIgnoringCase(key, prefix)) return value;
  return std::nullopt;
}

// A file that cannot be read counts as time-stamped: stored profile names depend on it.
media::TransportPackets Probe::packets() {
  trace_.add(found_.transportPacketsTrace);
  return found_.transportPackets.value_or(
      media::TransportPackets{.size = 0, .isTimeStamped = true});
}

// The largest picture wins; among equals the earlier stream.
bool Probe::chooseVideoStream() {
  std::int64_t largest = -1;
  const bool leavesOutCovers = policy_.prefersFilms && container().hasFilm();
  for (const media::Stream& stream : container().streams) {
    if (stream.type != media::StreamType::kVideo) continue;
    if (policy_.logsVideoStreams) trace_.log("GetVideoMetadata3", "");
    if (leavesOutCovers && stream.isAttachedPicture) continue;
    const std::int64_t area = std::int64_t{stream.width} * stream.height;
    if (area <= largest) continue;
    largest = area;
    video_ = &stream;
  }
  if (video_ == nullptr) trace_.log("parseVideoTrack", "video_stream less than 0");
  return video_ != nullptr;
}

void Probe::readContainerFormat() {
  const media::ContainerType& type = media::containerType(container().demuxer);
  const std::uint32_t format = type.videoFormat;
  // This also excludes the file from DLNA naming.
  if (type.mimeTypeDecides) facts_.mimeType = type.mimeType;

  const std::uint32_t before = facts_.containerFormat.value_or(request_.formatOnEntry);
  const bool isImageFormat = before == FORMAT_DVDISO || before == FORMAT_BDISO;
  // "mpeg" and "mpegts" replace the formats of DVD and Blu-ray folders; only the formats of images
  // are kept, and only against "mpeg". Hosts' databases hold the resulting values.
  if (!(policy_.keepsImageFormat && format == FORMAT_MPEG && isImageFormat))
    facts_.containerFormat = format;

  if (format == FORMAT_MPEG4) readMp4Format();
  if (format == FORMAT_AVI && media::codecOfFfmpeg(video_->codec) == CODEC_ID_MPEG4) {
    for (const DivxRow& divx : kDivxTags)
      if (equalsIgnoringCase(video_->codecTagText, divx.tag))
        facts_.playException = divx.playException;
  }
}

void Probe::readMp4Format() {
  const std::uint32_t subFormat = found_.mp4SubFormat.value_or(0);
  facts_.containerFormat = subFormat << media::kBrandShift | FORMAT_MPEG4;
  if (!isMovPath()) return;
  facts_.mimeType = "video/quicktime";
  if (policy_.readsQuickTimeEntries)
    facts_.contentIdentifier = tagWithPrefix(kQuickTimeContentIdentifier).value_or("");
}

void Probe::readDuration() {
  if (container().duration > 0) facts_.duration = container().duration / media::kTimeBase;
}

void Probe::readOrientation() {
  if (!video_->rotation) return;
  const auto degrees = std::strtol(video_->rotation->c_str(), nullptr, 10);
  for (const OrientationRow& row : kOrientations)
    if (row.degrees == degrees) facts_.orientation = row.orientation;
}

void Probe::readStreamCreation() {
  const auto& value = video_->creationTime;
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
  const media::Rational rate = video_->frameRate;
  if (rate.den != 0) facts_.frameRate = static_cast<double>(rate.num) / rate.den;

  if (request_.wantsAspect) {
    const media::Rational sample = video_->sampleAspect;
    if (sample.den != 0) {
      const media::Rational display =
          ffmpeg::reduce(std::int64_t{sample.num} * video_->width,
                         std::int64_t{sample.den} * video_->height, kLargestAspectTerm);
      if (sample.num != 0 && display.num != 0 && display.den != 0)
        facts_.aspect = AspectFacts{sample, display};
    }
  }
  facts_.isEquirectangular = video_->isEquirectangular;
}

bool Probe::readVideoCodec() {
  const int codec = media::codecOfFfmpeg(video_->codec);
  facts_.videoBitRate = video_->bitRate;
  facts_.videoCodec = codec;
  if (codec < 0) return false;
  facts_.videoProfile = media::profileOfFfmpeg(codec, profileNumber(*video_));
  facts_.width = video_->width;
  facts_.height = video_->height;
  facts_.videoLevel = levelNumber(*video_);
  return true;
}

void Probe::nameProfile() {
  facts_.askedDlnaRules = true;
  const dlna::DlnaName name = dlna::nameDlnaProfile(
      {.codec = *facts_.videoCodec,
       .demuxer = container().demuxer,
       .width = video_->width,
       .height = video_->height,
       .streamBitRate = video_->bitRate,
       .containerBitRate = container().bitRate,
       .profile = profileNumber(*video_),
       .level = levelNumber(*video_),
       .audioClass = *facts_.audioClass,
       .realFrameRate = video_->frameRate,
       .timeBaseDen = video_->timeBase.den,
       .codecTag = video_->codecTag,
       .path = path_,
       .extraData = video_->extraData},
      [this] { return packets(); }, request_.explanation);
  for (const std::string& line : name.outputLines) trace_.output(line);
  facts_.dlnaProfile = name.profile;
  facts_.mimeType = name.mimeType;
  if (name.playException) facts_.playException = name.playException;
  if (dlna::isWmvHighTestStream(request_.fileName)) facts_.dlnaProfile = dlna::kWmvHighTestProfile;
  if (facts_.mimeType.empty())
    facts_.mimeType = media::fallbackMimeType(container().demuxer, path_);
}

void Probe::readQuickTimeCreation() {
  trace_.log("GetDictEntry", "@@GetDictEntry key:" + std::string(kQuickTimeCreationDate));
  const auto value = tagWithPrefix(kQuickTimeCreationDate);
  if (!value) return;
  trace_.log("GetVideoMetadata1", "@@creation_time:" + *value);
  const Creation creation = creationOfQuickTime(*value);
  facts_.creationTime = creation.time;
  trace_.log("GetVideoMetadata1", "@@creation_time:" + std::to_string(creation.time));
  facts_.creationYear = creation.year;
  facts_.yearMonth = creation.yearMonth;
  facts_.creationDate = creation.date;
}

// FFmpeg sees only the first part of a DVD title, so the duration it measured is scaled by the
// title's size in gibibytes.
void Probe::scaleDiscDuration() {
  constexpr long long kMebibyte = 1048576;
  constexpr long long kMebibytesPerGibibyte = 1024;
  if (!title_ || title_->size == 0 || !facts_.duration) return;
  facts_.duration = *facts_.duration * (title_->size / kMebibyte) / kMebibytesPerGibibyte;
}

}  // namespace

ProbeResult probeVideo(const ProbeRequest& request, const ProbePolicy& policy) {
  if (disc::kindOf(request.fileName) != disc::Kind::kImage) return Probe(request, policy).run();
  ProbeResult result;
  disc::inPrivateMounts([&] { result = Probe(request, policy).run(); });
  return result;
}

}  // namespace kolum::probe
