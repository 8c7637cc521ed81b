#include <kolum/audio.h>
#include <kolum/identifiers.h>

#include <cstdlib>
#include <string>

#include "av/input.h"
#include "media/levels.h"
#include "mediainfo/dsf_tags.h"
#include "mediainfo/dsf_tool.h"
#include "support/text.h"

namespace kolum::mediainfo {

namespace {

constexpr std::size_t kTextSize = 256;

// Where the technical numbers go; null ones are skipped.
struct NumberOutputs {
  uint32_t* channels;
  uint32_t* sampleRate;
  uint32_t* bitRate;
};

// Signed 32 bits, wrapping, rounded towards zero.
uint32_t kilobits(std::uint32_t channels, std::int32_t frequency) {
  const auto bits = static_cast<std::int32_t>(channels * static_cast<std::uint32_t>(frequency));
  return static_cast<std::uint32_t>(bits / 1000);
}

void putNumbers(const DsfDocument& document, const NumberOutputs& out) {
  const auto channels = document.number("CHANNEL");
  if (out.channels != nullptr && channels) *out.channels = static_cast<std::uint32_t>(*channels);
  const auto frequency = document.number("FREQUENCY");
  if (out.sampleRate == nullptr || !frequency) return;
  *out.sampleRate = static_cast<std::uint32_t>(*frequency);
  if (out.bitRate == nullptr) return;
  const std::uint32_t preset = out.channels != nullptr ? *out.channels : 0;
  *out.bitRate = kilobits(channels ? static_cast<std::uint32_t>(*channels) : preset, *frequency);
}

void putText(char* out, const std::string& text) {
  if (out != nullptr && !text.empty()) copyText(out, kTextSize, text);
}

void putIfNotZero(int32_t* out, std::optional<std::int32_t> number) {
  if (out != nullptr && number.value_or(0) != 0) *out = *number;
}

struct TextOutputs {
  char* title;
  char* artist;
  char* albumArtist;
  char* album;
};

void putTags(const std::string& path, const TextOutputs& out) {
  const DsfTags tags = readDsfTags(path);
  putText(out.title, tags.title);
  putText(out.artist, tags.artist);
  putText(out.albumArtist, tags.albumArtist);
  putText(out.album, tags.album);
}

void putTexts(const DsfDocument& document, const TextOutputs& out) {
  putText(out.title, document.text("TITLE"));
  putText(out.artist, document.text("ARTIST"));
  putText(out.albumArtist, document.text("ARTIST"));
  putText(out.album, document.text("ALBUM"));
}

std::optional<DsfDocument> documentOf(const char* folder, const char* fileName) {
  const auto path = wholePath(folder, fileName);
  return path ? runDsfTool(*path) : std::nullopt;
}

// A container metadata entry and the one field that it fills.
struct KeyRow {
  std::string_view key;
  char (songObject_st::*text)[kTextSize];
  int32_t songObject_st::*number;
};

constexpr KeyRow kKeys[] = {
    {"title", &songObject_st::title, nullptr},
    {"artist", &songObject_st::artist, nullptr},
    {"album_artist", &songObject_st::albumArtist, nullptr},
    {"album artist", &songObject_st::albumArtist, nullptr},
    {"album", &songObject_st::album, nullptr},
    {"genre", &songObject_st::genre, nullptr},
    {"date", nullptr, &songObject_st::year},
    {"track", nullptr, &songObject_st::track},
};

void fillEmptyField(songObject_st& record, const KeyRow& row, const std::string& value) {
  if (row.text != nullptr) {
    if ((record.*row.text)[0] == '\0') copyText(record.*row.text, value);
  } else if (record.*row.number == 0) {
    record.*row.number = static_cast<int32_t>(std::strtol(value.c_str(), nullptr, 10));
  }
}

unsigned fillFromFfmpeg(const std::string& path, songObject_st& record) {
  const auto input = av::Input::openWithStreams(path.c_str());
  if (!input || input->streams().empty()) return 1;
  for (const auto& [key, value] : input->tags())
    for (const KeyRow& row : kKeys)
      if (row.key == key) fillEmptyField(record, row, value);
  return 0;
}

}  // namespace

}  // namespace kolum::mediainfo

using namespace kolum::mediainfo;

unsigned int GetDsfMetadata2(const char* folder, const char* fileName,
                             uint32_t* /*containerBitRate*/, uint32_t* bitRate,
                             uint32_t* sampleRate, uint32_t* /*bitsPerSample*/, uint32_t* channels,
                             uint32_t* durationSec) try {
  if (folder == nullptr || fileName == nullptr) return 1;
  const auto document = documentOf(folder, fileName);
  if (!document) return 1;
  if (const auto seconds = document->number("DURATION"); seconds && durationSec != nullptr)
    *durationSec = static_cast<uint32_t>(*seconds);
  putNumbers(*document, {channels, sampleRate, bitRate});
  return 0;
} catch (...) {
  return 1;
}

unsigned int GetDsfMetadata3(const char* folder, const char* fileName, char* title, char* artist,
                             char* albumArtist, char* album, int32_t* year, int32_t* track,
                             uint32_t* duration, uint32_t* channels, uint32_t* sampleRate,
                             uint32_t* bitRate) try {
  if (folder == nullptr || fileName == nullptr) return 1;
  const auto path = kolum::wholePath(folder, fileName);
  if (!path) return 1;
  const TextOutputs texts = {title, artist, albumArtist, album};
  // DSF files have their texts from their tag alone; what is missing there is not the tool's to
  // add.
  const bool isDsf = kolum::equalsIgnoringCase(kolum::extensionOf(fileName), ".dsf");
  if (isDsf) putTags(*path, texts);
  const auto document = runDsfTool(*path);
  if (!document) return 1;
  if (!isDsf) putTexts(*document, texts);
  // Year and track go with the duration on purpose: a caller that wants no duration wants neither.
  if (duration != nullptr) {
    putIfNotZero(year, document->number("YEAR"));
    putIfNotZero(track, document->number("TRACK"));
    *duration = static_cast<uint32_t>(document->number("DURATION").value_or(0));
  }
  putNumbers(*document, {channels, sampleRate, bitRate});
  return 0;
} catch (...) {
  return 1;
}

unsigned int GetDsfMetadata(const char* folder, const char* fileName, songObject_st* record) try {
  if (folder == nullptr || fileName == nullptr || record == nullptr) return 1;
  record->channels = 2;
  record->profile = PROFILE_UNKNOWN;
  record->level = kolum::media::kUnknownLevel;
  record->containerFormat = FORMAT_DSF;
  // What the tool cannot tell, FFmpeg may.
  GetDsfMetadata3(folder, fileName, record->title, record->artist, record->albumArtist,
                  record->album, &record->year, &record->track, &record->duration,
                  &record->channels, &record->sampleRate, &record->bitRate);
  const auto path = kolum::wholePath(folder, fileName);
  return path ? fillFromFfmpeg(*path, *record) : 1;
} catch (...) {
  return 1;
}
