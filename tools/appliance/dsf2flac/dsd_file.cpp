#include "dsf2flac/dsd_file.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "dsf2flac/dff_tag.h"
#include "media/classic_codecs.h"
#include "read/ffmpeg/input.h"

namespace kolum::dsf2flac {

namespace {

// FFmpeg counts bytes, each of eight samples.
constexpr int kSamplesPerByte = 8;

constexpr std::string_view kDsdCodecs[] = {"dsd_lsbf", "dsd_msbf", "dsd_lsbf_planar",
                                           "dsd_msbf_planar", "dst"};

bool isDsd(const media::Stream& stream) {
  return std::any_of(std::begin(kDsdCodecs), std::end(kDsdCodecs), [&](std::string_view name) {
    return stream.codec == media::classicCodecNumber(name);
  });
}

struct TextRow {
  std::string_view key;
  std::string DsdFacts::*field;
};
constexpr TextRow kTexts[] = {
    {"title", &DsdFacts::title},
    {"artist", &DsdFacts::artist},
    {"album", &DsdFacts::album},
};

struct NumberRow {
  std::string_view key;
  int DsdFacts::*field;
};
constexpr NumberRow kNumbers[] = {
    {"date", &DsdFacts::year},
    {"track", &DsdFacts::track},
};

int leadingNumber(const std::string& text) {
  const long number = std::strtol(text.c_str(), nullptr, 10);
  return number > 0 && number < 100'000 ? static_cast<int>(number) : 0;
}

void takeTags(const media::Container& container, DsdFacts& facts) {
  for (const auto& [key, value] : container.tags) {
    for (const TextRow& row : kTexts)
      if (row.key == key) facts.*row.field = value;
    for (const NumberRow& row : kNumbers)
      if (row.key == key) facts.*row.field = leadingNumber(value);
  }
}

// FFmpeg does not read the ID3v2 tags of DFF files.
void takeDffTag(const std::string& path, DsdFacts& facts) {
  const DffTag tag = readDffTag(path);
  if (facts.title.empty()) facts.title = tag.title;
  if (facts.artist.empty()) facts.artist = tag.artist;
  if (facts.album.empty()) facts.album = tag.album;
  if (facts.year == 0) facts.year = tag.year;
  if (facts.track == 0) facts.track = tag.track;
}

}  // namespace

std::optional<DsdFacts> readDsdFile(const std::string& path) {
  const auto container = ffmpeg::readContainer(path, ffmpeg::Depth::kStreams);
  if (!container) return std::nullopt;
  const auto& streams = container->streams;
  const auto stream = std::find_if(streams.begin(), streams.end(), isDsd);
  if (stream == streams.end()) return std::nullopt;

  DsdFacts facts;
  facts.seconds = std::max<std::int64_t>(container->duration, 0) / media::kTimeBase;
  facts.channels = stream->channels;
  facts.frequency = std::int64_t{stream->sampleRate} * kSamplesPerByte;
  takeTags(*container, facts);
  takeDffTag(path, facts);
  return facts;
}

}  // namespace kolum::dsf2flac
