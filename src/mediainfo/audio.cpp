#include <kolum/audio.h>
#include <kolum/identifiers.h>
#include <sys/stat.h>

#include <cinttypes>
#include <cstdio>
#include <string>

#include "av/input.h"
#include "media/levels.h"
#include "mediainfo/audio_profile.h"
#include "support/log.h"
#include "support/text.h"
#include "video/container.h"
#include "video/mp4_boxes.h"

namespace kolum::mediainfo {

namespace {

// Where the caller wants the answers.
struct AudioOutputs {
  uint32_t* containerBitRate;
  uint32_t* bitRate;
  uint32_t* sampleRate;
  uint32_t* bitsPerSample;
  uint32_t* channels;
  uint32_t* durationSec;
  uint32_t* containerFormat;
  uint32_t* codecId;
  int32_t* profile;
  int32_t* level;
  char* dlnaProfile;
};

// The promised size of the caller's buffer; the longest name takes 15 bytes of it.
constexpr std::size_t kDlnaProfileSize = 16;

struct Demuxer {
  std::string_view name;
  unsigned format;
};

// What songs have beside, or instead of, the containers of videos.
constexpr Demuxer kSongDemuxers[] = {
    {"mp3", FORMAT_MP3},
    {"wav", FORMAT_WAV},
    {"flac", FORMAT_FLAC},
    {"ape", FORMAT_APE},
    {"ogg", FORMAT_OGG},
    {"ac3", FORMAT_AC3},
    {"aiff", FORMAT_AIFF},
    {"au", FORMAT_AU},
    {"aac", FORMAT_AAC},
    {"wv", FORMAT_WV},
    // Songs are RealAudio, on purpose; videos of this demuxer are FORMAT_RM.
    {av::kDemuxerRm, FORMAT_RA},
};
constexpr unsigned kOtherDemuxer = 0xFFFFFFFF;

unsigned containerFormat(std::string_view demuxer, const std::string& path) {
  for (const Demuxer& row : kSongDemuxers)
    if (row.name == demuxer) return row.format;
  const unsigned format = video::containerFormat(demuxer);
  if (format == FORMAT_UNKNOWN) return kOtherDemuxer;
  if (format != FORMAT_MPEG4) return format;
  return video::mp4SubFormat(path.c_str()).value_or(0) << 16 | FORMAT_MPEG4;
}

template <typename T, typename V>
void put(T* out, V value) {
  if (out != nullptr) *out = static_cast<T>(value);
}

void putDuration(const av::Input& input, uint32_t* durationSec) {
  const std::int64_t seconds = input.duration() / av::kTimeBase;
  if (input.duration() > 0) put(durationSec, seconds);
  std::fprintf(stderr,
               "[%s:%d] >>>> ctx->duration=%" PRId64
               ", AV_TIME_BASE=%d, ctx->duration/AV_TIME_BASE=%" PRId64 " \n",
               kMediaSource, __LINE__, input.duration(), static_cast<int>(av::kTimeBase), seconds);
}

// Writes in the order that leaves, when the codec is unknown, bit rates, duration and profile.
unsigned describe(const av::Input& input, const av::Stream& stream, const std::string& path,
                  std::string_view fileName, const AudioOutputs& out) {
  put(out.containerBitRate, input.bitRate());
  put(out.bitRate, stream.bitRate());
  putDuration(input, out.durationSec);
  put(out.profile, FF_ProfileToKO_Profile(stream.classicCodec(), stream.profile()));
  const int codec = ffmpegCodecIdConvert(stream.classicCodec());
  if (codec < 0) return 1;

  const std::string_view dlnaProfile = dlnaAudioProfile({
      .codec = codec,
      .isMp4 = input.demuxer() == av::kDemuxerMp4,
      .containerBitRate = input.bitRate(),
      .bitRate = stream.bitRate(),
      .sampleRate = stream.sampleRate(),
      .channels = stream.channels(),
      .fileName = fileName,
  });
  if (!dlnaProfile.empty() && out.dlnaProfile != nullptr)
    copyText(out.dlnaProfile, kDlnaProfileSize, dlnaProfile);
  put(out.sampleRate, stream.sampleRate());
  put(out.bitsPerSample, stream.bitsPerCodedSample());
  put(out.channels, stream.channels());
  put(out.containerFormat, containerFormat(input.demuxer(), path));
  put(out.codecId, codec);
  put(out.level, stream.level());
  return 0;
}

struct DsdExtension {
  std::string_view extension;
  unsigned format;
};

constexpr DsdExtension kDsdExtensions[] = {{".dsf", FORMAT_DSF}, {".dff", FORMAT_DFF}};

// The format of a DSD file, told by its name alone; 0 for other files.
unsigned dsdFormat(std::string_view path) {
  const std::string_view extension = extensionOf(path);
  for (const DsdExtension& row : kDsdExtensions)
    if (equalsIgnoringCase(extension, row.extension)) return row.format;
  return FORMAT_UNKNOWN;
}

bool isThere(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0;
}

unsigned describeDsd(const char* folder, const char* fileName, unsigned format,
                     const AudioOutputs& out) {
  put(out.channels, 2);
  put(out.profile, PROFILE_UNKNOWN);
  put(out.level, media::kUnknownLevel);
  put(out.containerFormat, format);
  return GetDsfMetadata2(folder, fileName, out.containerBitRate, out.bitRate, out.sampleRate,
                         out.bitsPerSample, out.channels, out.durationSec);
}

unsigned audioMetadata(const char* folder, const char* fileName, const AudioOutputs& out) {
  const auto path = wholePath(folder, fileName);
  if (!path) return 1;
  if (const unsigned format = dsdFormat(*path); format != FORMAT_UNKNOWN)
    return isThere(*path) ? describeDsd(folder, fileName, format, out) : 1;
  const auto input = av::Input::openWithStreams(path->c_str());
  if (!input) return 1;
  // A file without audio is a success with nothing to tell: hosts keep it listed.
  const av::Stream* stream = input->firstStream(av::MediaType::kAudio);
  return stream != nullptr ? describe(*input, *stream, *path, fileName, out) : 0;
}

}  // namespace

}  // namespace kolum::mediainfo

unsigned int GetAudioMetadata(const char* folder, const char* fileName, uint32_t* containerBitRate,
                              uint32_t* bitRate, uint32_t* sampleRate, uint32_t* bitsPerSample,
                              uint32_t* channels, uint32_t* durationSec, uint32_t* containerFormat,
                              uint32_t* codecId, int32_t* profile, int32_t* level,
                              char* dlnaProfile) try {
  if (folder == nullptr || fileName == nullptr) return 1;
  return kolum::mediainfo::audioMetadata(
      folder, fileName,
      {containerBitRate, bitRate, sampleRate, bitsPerSample, channels, durationSec, containerFormat,
       codecId, profile, level, dlnaProfile});
} catch (...) {
  return 1;
}
