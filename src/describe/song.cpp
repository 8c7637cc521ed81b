#include "describe/song.h"

#include "media/container.h"

namespace kolum::describe {

namespace {

std::uint64_t known(const std::optional<std::int64_t>& number) {
  return number.value_or(0) > 0 ? static_cast<std::uint64_t>(*number) : 0;
}

std::uint64_t known(const std::optional<std::int32_t>& number) {
  return number.value_or(0) > 0 ? static_cast<std::uint64_t>(*number) : 0;
}

// The DSD tool reports no bit rate: it is that of all channels' samples, in whole kbit/s.
void addDsd(Song& song, const probe::DsdNumbers& numbers) {
  constexpr std::uint64_t kKilobit = 1000;
  if (numbers.duration) song.duration = *numbers.duration;
  if (numbers.channels) song.channels = known(numbers.channels);
  if (!numbers.sampleRate) return;
  song.sampleRate = known(numbers.sampleRate);
  song.bitRate = song.channels * song.sampleRate / kKilobit * kKilobit;
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
  if (facts.dsd) addDsd(song, *facts.dsd);
  return song;
}

}  // namespace

std::optional<Song> songOf(const probe::SongResult& result) {
  const auto& dsd = result.facts.dsd;
  const bool isFound = result.facts.codec || result.facts.sampleRate || (dsd && dsd->sampleRate);
  if (!result.succeeded || !isFound) return std::nullopt;
  return numbersOf(result.facts);
}

}  // namespace kolum::describe
