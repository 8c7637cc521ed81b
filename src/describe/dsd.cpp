#include "describe/dsd.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kolum::describe {

namespace {

struct FormatRow {
  std::string_view demuxer;
  std::uint32_t format;
};

constexpr FormatRow kFormats[] = {{"dsf", FORMAT_DSF}, {"iff", FORMAT_DFF}};

const FormatRow* formatOf(const media::Container& container) {
  const auto* row = std::ranges::find(kFormats, container.demuxer, &FormatRow::demuxer);
  return row != std::end(kFormats) ? row : nullptr;
}

}  // namespace

bool isDsd(const media::Stream& stream) {
  return stream.codecName.starts_with("dsd") || stream.codecName == "dst";
}

const media::Stream* dsdSong(const media::Container& container) {
  const media::Stream* song = container.first(media::StreamType::kAudio);
  return formatOf(container) != nullptr && song != nullptr && isDsd(*song) ? song : nullptr;
}

std::optional<std::uint32_t> dsdFormat(const media::Container& container) {
  const FormatRow* row = formatOf(container);
  return row != nullptr ? std::optional(row->format) : std::nullopt;
}

std::int64_t sampleRateOf(const media::Stream& stream) {
  constexpr std::int64_t kSamplesPerByte = 8;
  return isDsd(stream) ? stream.sampleRate * kSamplesPerByte : stream.sampleRate;
}

}  // namespace kolum::describe
