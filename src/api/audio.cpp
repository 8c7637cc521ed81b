#include <kolum/audio.h>
#include <kolum/frame.h>
#include <kolum/identifiers.h>

#include <cstdio>

#include "api/guarded.h"
#include "api/outputs.h"
#include "artwork/cover.h"
#include "base/trace.h"
#include "media/levels.h"
#include "probe/dsd.h"
#include "probe/song.h"

using namespace kolum;
using api::put;

namespace {

// The promised size of the caller's buffer; the longest name takes 15 bytes of it.
constexpr std::size_t kDlnaProfileSize = 16;
constexpr std::size_t kTextSize = 256;
static_assert(sizeof(songObject_st::title) == kTextSize);

// The caller's outputs for the DSD tool's numbers.
struct NumberOutputs {
  uint32_t* channels;
  uint32_t* sampleRate;
  uint32_t* bitRate;
};

// Signed 32 bits, wrapping, rounded towards zero.
uint32_t kilobits(uint32_t channels, int32_t frequency) {
  const auto bits = static_cast<int32_t>(channels * static_cast<uint32_t>(frequency));
  return static_cast<uint32_t>(bits / 1000);
}

// If the tool reports no channels, the rate is calculated with the caller's preset.
void putNumbers(const probe::DsdNumbers& numbers, const NumberOutputs& out) {
  put(out.channels, numbers.channels);
  if (out.sampleRate == nullptr || !numbers.sampleRate) return;
  *out.sampleRate = static_cast<uint32_t>(*numbers.sampleRate);
  const uint32_t preset = out.channels != nullptr ? *out.channels : 0;
  const uint32_t channels = numbers.channels ? static_cast<uint32_t>(*numbers.channels) : preset;
  put(out.bitRate, kilobits(channels, *numbers.sampleRate));
}

void putIfNotZero(int32_t* out, std::optional<int32_t> number) {
  if (number.value_or(0) != 0) put(out, *number);
}

unsigned resultOfTool(bool toolIsMissing, bool hasDocument) {
  if (toolIsMissing) std::puts("error");
  return hasDocument ? 0 : 1;
}

void fillEmptyText(char (&text)[kTextSize], const std::string& value) {
  if (text[0] == '\0') copyText(text, value);
}

void fillEmptyFields(songObject_st& record, const probe::SongTags& tags) {
  fillEmptyText(record.title, tags.title);
  fillEmptyText(record.artist, tags.artist);
  fillEmptyText(record.albumArtist, tags.albumArtist);
  fillEmptyText(record.album, tags.album);
  fillEmptyText(record.genre, tags.genre);
  if (record.year == 0) record.year = tags.year;
  if (record.track == 0) record.track = tags.track;
}

// The outputs for a DSD song's texts and, if wanted, its numbers.
struct DsdOutputs {
  char* title;
  char* artist;
  char* albumArtist;
  char* album;
  int32_t* year;
  int32_t* track;
  uint32_t* duration;
  NumberOutputs numbers;
};

unsigned putDsd(const std::string& path, const DsdOutputs& out) {
  const probe::DsdResult song = probe::probeDsd(path, g_localWorkingPath);
  api::putText(out.title, kTextSize, song.texts.title);
  api::putText(out.artist, kTextSize, song.texts.artist);
  api::putText(out.albumArtist, kTextSize, song.texts.albumArtist);
  api::putText(out.album, kTextSize, song.texts.album);
  if (!song.numbers) return resultOfTool(song.toolIsMissing, false);
  // Year and track are written only with the duration: hosts depend on it.
  if (out.duration != nullptr) {
    putIfNotZero(out.year, song.numbers->year);
    putIfNotZero(out.track, song.numbers->track);
    *out.duration = static_cast<uint32_t>(song.numbers->duration.value_or(0));
  }
  putNumbers(*song.numbers, out.numbers);
  return 0;
}

}  // namespace

unsigned int GetAudioMetadata(const char* folder, const char* fileName, uint32_t* containerBitRate,
                              uint32_t* bitRate, uint32_t* sampleRate, uint32_t* bitsPerSample,
                              uint32_t* channels, uint32_t* durationSec, uint32_t* containerFormat,
                              uint32_t* codecId, int32_t* profile, int32_t* level,
                              char* dlnaProfile) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr) return 1U;
    const auto path = wholePath(folder, fileName);
    if (!path) return 1U;
    const probe::SongResult song = probe::probeSong(*path, fileName, g_localWorkingPath);
    write(song.trace);
    const probe::SongFacts& facts = song.facts;
    put(containerBitRate, facts.containerBitRate);
    put(bitRate, facts.bitRate);
    put(durationSec, facts.duration);
    put(profile, facts.profile);
    api::putText(dlnaProfile, kDlnaProfileSize, facts.dlnaProfile);
    put(sampleRate, facts.sampleRate);
    put(bitsPerSample, facts.bitsPerSample);
    put(channels, facts.channels);
    put(containerFormat, facts.containerFormat);
    put(codecId, facts.codec);
    put(level, facts.level);
    if (facts.dsd) {
      put(durationSec, facts.dsd->duration);
      putNumbers(*facts.dsd, {channels, sampleRate, bitRate});
    }
    return resultOfTool(song.toolIsMissing, song.succeeded);
  });
}

unsigned int GetDsfMetadata2(const char* folder, const char* fileName,
                             uint32_t* /*containerBitRate*/, uint32_t* bitRate,
                             uint32_t* sampleRate, uint32_t* /*bitsPerSample*/, uint32_t* channels,
                             uint32_t* durationSec) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr) return 1U;
    const auto path = wholePath(folder, fileName);
    if (!path) return 1U;
    const tags::DsdToolResult tool = tags::runDsdTool(*path, g_localWorkingPath);
    if (tool.document) {
      const probe::DsdNumbers numbers = probe::numbersOf(*tool.document);
      put(durationSec, numbers.duration);
      putNumbers(numbers, {channels, sampleRate, bitRate});
    }
    return resultOfTool(tool.isMissing, tool.document.has_value());
  });
}

unsigned int GetDsfMetadata3(const char* folder, const char* fileName, char* title, char* artist,
                             char* albumArtist, char* album, int32_t* year, int32_t* track,
                             uint32_t* duration, uint32_t* channels, uint32_t* sampleRate,
                             uint32_t* bitRate) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr) return 1U;
    const auto path = wholePath(folder, fileName);
    if (!path) return 1U;
    return putDsd(*path, {title,
                          artist,
                          albumArtist,
                          album,
                          year,
                          track,
                          duration,
                          {channels, sampleRate, bitRate}});
  });
}

unsigned int GetDsfMetadata(const char* folder, const char* fileName, songObject_st* record) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr || record == nullptr) return 1U;
    record->channels = 2;
    record->profile = PROFILE_UNKNOWN;
    record->level = media::kUnknownLevel;
    record->containerFormat = FORMAT_DSF;
    const auto path = wholePath(folder, fileName);
    if (!path) return 1U;
    // FFmpeg may find what the tool does not report.
    api::guarded(1U, [&] {
      return putDsd(*path, {record->title,
                            record->artist,
                            record->albumArtist,
                            record->album,
                            &record->year,
                            &record->track,
                            &record->duration,
                            {&record->channels, &record->sampleRate, &record->bitRate}});
    });
    const auto tags = probe::readSongTags(*path);
    if (!tags) return 1U;
    fillEmptyFields(*record, *tags);
    return 0U;
  });
}

unsigned int KoLUM_CheckLocalAlbum(const char* folder, char* coverPath) {
  return api::guarded(1U, [&] {
    if (folder == nullptr || coverPath == nullptr) return 1U;
    const auto cover = artwork::coverIn(folder);
    if (!cover) return 1U;
    copyText(coverPath, kPathSize, *cover);
    return 0U;
  });
}

unsigned int KoLUM_CheckSpecialCover(const char* fileName) {
  return fileName != nullptr && artwork::isCoverName(fileName) ? 0 : 1;
}
