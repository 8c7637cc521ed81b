#include "describe/content.h"

#include <kolum/filetype.h>
#include <kolum/identifiers.h>

#include <algorithm>
#include <string_view>

#include "describe/dsd.h"
#include "isolation/isolation.h"
#include "media/container.h"
#include "media/identifiers.h"

namespace kolum::describe {

namespace {

// Demuxers of single pictures, besides those whose names end in "_pipe".
constexpr std::string_view kPictureDemuxers[] = {"image2", "gif", "apng", "ico"};
// The brands of pictures in MPEG-4 containers.
constexpr std::string_view kPictureBrands[] = {"heic", "heix", "mif1", "avif"};
// Files of a single picture; sequences of pictures are films to FFmpeg.
constexpr std::string_view kHeifTypes[] = {"image/heic", "image/heif", "image/avif"};

template <std::size_t kCount>
bool isAmong(const std::string_view (&names)[kCount], std::string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

std::string_view tagOf(const media::Container& container, std::string_view key) {
  for (const auto& [name, value] : container.tags)
    if (name == key) return value;
  return "";
}

bool isPicture(const media::Container& container) {
  const std::string_view demuxer = container.demuxer;
  if (demuxer.ends_with("_pipe") || isAmong(kPictureDemuxers, demuxer)) return true;
  return demuxer == media::kDemuxerMp4 && isAmong(kPictureBrands, tagOf(container, "major_brand"));
}

std::int64_t areaOf(const media::Stream& stream) {
  return std::int64_t{stream.width} * stream.height;
}

// The largest picture, the first among equals; a cover only if there is no film. Null if there is
// none.
const media::Stream* mainPicture(const media::Container& container) {
  const media::Stream* found = nullptr;
  const bool leavesOutCovers = container.hasFilm();
  for (const media::Stream& stream : container.streams) {
    if (stream.type != media::StreamType::kVideo) continue;
    if (leavesOutCovers && stream.isAttachedPicture) continue;
    if (found == nullptr || areaOf(stream) > areaOf(*found)) found = &stream;
  }
  return found;
}

std::string unknownCodec(const media::Stream* stream) {
  if (stream == nullptr || media::codecOfFfmpeg(stream->codec) >= 0) return "";
  return stream->codecName;
}

void addStreams(const media::Container& container, Content& content) {
  const media::Stream* video = mainPicture(container);
  const media::Stream* audio = container.first(media::StreamType::kAudio);
  // A damaged index may leave only streams of unknown types.
  content.isOpen = video != nullptr || audio != nullptr ||
                   container.first(media::StreamType::kSubtitle) != nullptr;
  content.hasVideo = video != nullptr;
  content.hasAudio = audio != nullptr;
  content.isPicture = video != nullptr && isPicture(container);
  content.isDsd = dsdSong(container) != nullptr;
  content.isFilm = !content.isPicture && container.hasFilm();
  content.unknownVideoCodec = unknownCodec(video);
  content.unknownAudioCodec = unknownCodec(audio);
}

}  // namespace

bool isHeif(std::string_view contentType) {
  return isAmong(kHeifTypes, contentType);
}

Content contentOf(const read::Findings& found) {
  Content content;
  content.format = found.recognition.format;
  content.opensFurtherFiles = found.recognition.opensFurtherFiles;
  content.failure = found.failure;
  content.isHeif = isHeif(found.content.type);
  if (found.container) addStreams(*found.container, content);
  return content;
}

Content contentOf(const std::string& path) {
  const auto source = media::Source::open(path);
  if (!source) return {};
  return contentOf(isolation::look(
      *source, {.container = ffmpeg::Depth::kStreams, .recognition = true, .content = true}));
}

int kindOf(const Content& content) {
  if (content.isHeif && !content.isFilm) return MEDIA_KIND_PHOTO;
  if (content.format.empty()) return MEDIA_KIND_NONE;
  if (content.isPicture) return MEDIA_KIND_PHOTO;
  if (content.isFilm) return MEDIA_KIND_VIDEO;
  return content.hasAudio ? MEDIA_KIND_MUSIC : MEDIA_KIND_NONE;
}

}  // namespace kolum::describe
