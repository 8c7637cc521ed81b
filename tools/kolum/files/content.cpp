#include "files/content.h"

#include <kolum/filetype.h>
#include <kolum/identifiers.h>

#include <algorithm>
#include <string_view>

#include "av/input.h"
#include "av/recognition.h"

namespace kolum::tool {

namespace {

// Demuxers of one picture each; those whose names end in "_pipe" are further ones.
constexpr std::string_view kPictureDemuxers[] = {"image2", "gif", "apng", "ico"};
// The brands of pictures in the container of MPEG-4.
constexpr std::string_view kPictureBrands[] = {"heic", "heix", "mif1", "avif"};

template <std::size_t kCount>
bool isAmong(const std::string_view (&names)[kCount], std::string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool isPicture(const av::Input& input) {
  const std::string_view demuxer = input.demuxer();
  if (demuxer.ends_with("_pipe") || isAmong(kPictureDemuxers, demuxer)) return true;
  const auto brand = input.tagWithPrefix("major_brand");
  return demuxer == av::kDemuxerMp4 && brand && isAmong(kPictureBrands, *brand);
}

// DSD in one of its own containers.
bool isDsd(const av::Input& input) {
  const av::Stream* song = input.firstStream(av::MediaType::kAudio);
  const bool isContainer = input.demuxer() == "dsf" || input.demuxer() == "iff";
  return song != nullptr && isContainer &&
         (song->codecName().starts_with("dsd") || song->codecName() == "dst");
}

std::int64_t areaOf(const av::Stream& stream) {
  return std::int64_t{stream.width()} * stream.height();
}

// The stream of a type with the largest picture, the first among equals; null when there is none.
const av::Stream* largest(const av::Input& input, av::MediaType type) {
  const av::Stream* found = nullptr;
  for (const av::Stream& stream : input.streams()) {
    if (stream.type() != type) continue;
    if (found == nullptr || areaOf(stream) > areaOf(*found)) found = &stream;
  }
  return found;
}

std::string unknownCodec(const av::Stream* stream) {
  if (stream == nullptr || ffmpegCodecIdConvert(stream->classicCodec()) >= 0) return "";
  return std::string(stream->codecName());
}

void addStreams(const av::Input& input, Content& content) {
  const av::Stream* video = largest(input, av::MediaType::kVideo);
  const av::Stream* audio = input.firstStream(av::MediaType::kAudio);
  // What is left of a damaged index may be streams of no known type.
  content.isOpen = video != nullptr || audio != nullptr ||
                   input.firstStream(av::MediaType::kSubtitle) != nullptr;
  content.hasVideo = video != nullptr;
  content.hasAudio = audio != nullptr;
  content.isPicture = video != nullptr && isPicture(input);
  content.isDsd = isDsd(input);
  content.isFilm =
      !content.isPicture &&
      std::any_of(input.streams().begin(), input.streams().end(), [](const av::Stream& stream) {
        return stream.type() == av::MediaType::kVideo && !stream.isAttachedPicture();
      });
  content.unknownVideoCodec = unknownCodec(video);
  content.unknownAudioCodec = unknownCodec(audio);
}

}  // namespace

Content contentOf(const std::string& path) {
  const av::Recognition recognition = av::recognize(path.c_str());
  Content content;
  content.format = recognition.format;
  content.opensFurtherFiles = recognition.opensFurtherFiles;
  if (const auto input = av::Input::openWithStreams(path.c_str())) addStreams(*input, content);
  return content;
}

int kindOf(const Content& content) {
  if (content.format.empty()) return MEDIA_KIND_NONE;
  if (content.isPicture) return MEDIA_KIND_PHOTO;
  if (content.isFilm) return MEDIA_KIND_VIDEO;
  return content.hasAudio ? MEDIA_KIND_MUSIC : MEDIA_KIND_NONE;
}

std::optional<Picture> pictureOf(const std::string& path) {
  const auto input = av::Input::openWithStreams(path.c_str());
  const av::Stream* stream = input ? input->firstStream(av::MediaType::kVideo) : nullptr;
  if (stream == nullptr || stream->pixelFormatName().empty()) return std::nullopt;
  return Picture{static_cast<std::uint32_t>(stream->width()),
                 static_cast<std::uint32_t>(stream->height()),
                 std::string(stream->pixelFormatName())};
}

}  // namespace kolum::tool
