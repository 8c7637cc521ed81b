#include "describe/song.h"

#include "describe/dsd.h"
#include "media/container.h"

namespace kolum::describe {

namespace {

std::uint64_t known(const std::optional<std::int64_t>& number) {
  return number.value_or(0) > 0 ? static_cast<std::uint64_t>(*number) : 0;
}

std::uint64_t known(const std::optional<std::int32_t>& number) {
  return number.value_or(0) > 0 ? static_cast<std::uint64_t>(*number) : 0;
}

// Neither the DSD tool nor the header holds a bit rate: it is that of all channels' samples, in
// whole kbit/s.
void addDsdBitRate(Song& song) {
  constexpr std::uint64_t kKilobit = 1000;
  song.bitRate = song.channels * song.sampleRate / kKilobit * kKilobit;
}

void addDsd(Song& song, const probe::DsdNumbers& numbers) {
  if (known(numbers.duration) > 0 || !song.duration) song.duration = numbers.duration;
  if (known(numbers.channels) > 0) song.channels = known(numbers.channels);
  if (known(numbers.sampleRate) > 0) song.sampleRate = known(numbers.sampleRate);
  addDsdBitRate(song);
}

void addDsdHeader(Song& song, const media::Container& container, const media::Stream& stream) {
  song.channels = known(std::optional(std::int32_t{stream.channels}));
  song.sampleRate = known(std::optional(sampleRateOf(stream)));
  song.bitsPerSample = kDsdBitsPerSample;
  if (!song.containerFormat) song.containerFormat = dsdFormat(container);
  if (container.duration > 0) song.duration = container.duration / media::kTimeBase;
  addDsdBitRate(song);
}

// Of lossless sound the samples have as many bits as they had before they were coded.
std::uint64_t losslessBits(const media::Container& container) {
  const media::Stream* sound = container.first(media::StreamType::kAudio);
  if (sound == nullptr || !sound->details) return 0;
  return known(std::optional(std::int32_t{sound->details->bitsPerRawSample}));
}

Song numbersOf(const probe::SongFacts& facts) {
  Song song = {.containerBitRate = known(facts.containerBitRate),
               .bitRate = known(facts.bitRate),
               .sampleRate = known(facts.sampleRate),
               .bitsPerSample = known(facts.bitsPerSample),
               .channels = known(facts.channels),
               .duration = facts.duration,
               .containerFormat = facts.containerFormat,
               .codec = facts.codec,
               .profile = facts.profile,
               .level = facts.level,
               .dlnaProfile = facts.dlnaProfile};
  if (song.containerFormat == media::kOtherSongFormat) song.containerFormat.reset();
  return song;
}

}  // namespace

std::optional<Song> songOf(const probe::SongResult& result) {
  const auto& facts = result.facts;
  const auto& container = result.found.container;
  const media::Stream* header = container ? dsdSong(*container) : nullptr;
  const bool isFound = facts.codec || facts.sampleRate || (facts.dsd && facts.dsd->sampleRate);
  if (header == nullptr && !(result.succeeded && isFound)) return std::nullopt;
  Song song = numbersOf(facts);
  if (header != nullptr) addDsdHeader(song, *container, *header);
  if (facts.dsd) addDsd(song, *facts.dsd);
  if (song.bitsPerSample == 0 && container) song.bitsPerSample = losslessBits(*container);
  return song;
}

}  // namespace kolum::describe
