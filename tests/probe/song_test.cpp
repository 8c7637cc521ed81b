#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/audio.h>
#include <kolum/identifiers.h>
#include <sys/stat.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

constexpr uint32_t kUntouched = 4711;
constexpr int32_t kUntouchedSigned = -4711;
constexpr uint32_t kOtherContainer = 0xFFFFFFFF;

// Every output of one call, and what it printed to standard error.
struct Song {
  unsigned result = 9;
  uint32_t containerBitRate = kUntouched;
  uint32_t bitRate = kUntouched;
  uint32_t sampleRate = kUntouched;
  uint32_t bitsPerSample = kUntouched;
  uint32_t channels = kUntouched;
  uint32_t durationSec = kUntouched;
  uint32_t containerFormat = kUntouched;
  uint32_t codecId = kUntouched;
  int32_t profile = kUntouchedSigned;
  int32_t level = kUntouchedSigned;
  // The documented size, and bytes after it that must stay unchanged.
  struct {
    char text[16];
    char guard[8];
  } dlnaProfile = {"", {'#', '#', '#', '#', '#', '#', '#', '#'}};
  std::string log;
};

Song probe(const std::string& path) {
  Song song;
  const std::size_t slash = path.rfind('/');
  testing::internal::CaptureStderr();
  song.result = GetAudioMetadata(
      path.substr(0, slash + 1).c_str(), path.substr(slash + 1).c_str(), &song.containerBitRate,
      &song.bitRate, &song.sampleRate, &song.bitsPerSample, &song.channels, &song.durationSec,
      &song.containerFormat, &song.codecId, &song.profile, &song.level, song.dlnaProfile.text);
  song.log = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::string(song.dlnaProfile.guard, 8), "########");
  return song;
}

void expectUntouched(const Song& song) {
  for (const uint32_t value :
       {song.containerBitRate, song.bitRate, song.sampleRate, song.bitsPerSample, song.channels,
        song.durationSec, song.containerFormat, song.codecId})
    EXPECT_EQ(value, kUntouched);
  EXPECT_EQ(song.profile, kUntouchedSigned);
  EXPECT_EQ(song.level, kUntouchedSigned);
  EXPECT_STREQ(song.dlnaProfile.text, "");
}

std::string tone(const std::string& name, const std::string& arguments) {
  return media(name, "-f lavfi -i sine=d=2:r=44100 " + arguments);
}

// With noise, an encoder keeps the requested bit rate.
std::string noise(const std::string& name, const std::string& arguments) {
  return media(name, "-f lavfi -i anoisesrc=d=2:r=48000:a=0.5:s=1 " + arguments);
}

std::string little(std::uint64_t value, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

// A WAVE file with this format tag, for formats without an encoder.
std::string waveWithTag(unsigned tag, unsigned bytesPerSecond) {
  const std::string format = little(tag, 2) + little(2, 2) + little(44100, 4) +
                             little(bytesPerSecond, 4) + little(1024, 2) + little(16, 2) +
                             little(18, 2) + little(16, 2) + little(3, 4) + std::string(12, '\0');
  const std::string data(bytesPerSecond, '\0');
  const std::string chunks =
      "WAVEfmt " + little(format.size(), 4) + format + "data" + little(data.size(), 4) + data;
  return "RIFF" + little(chunks.size(), 4) + chunks;
}

// Two seconds of Monkey's Audio: both headers, a seek table of two frames, and some data.
std::string monkeysAudio() {
  constexpr unsigned kRate = 44100;
  const std::string data(8000, '\0');
  const std::string descriptor =
      "MAC " + little(3990, 2) + little(0, 2) + little(52, 4) + little(24, 4) + little(8, 4) +
      little(0, 4) + little(data.size(), 4) + little(0, 4) + little(0, 4) + std::string(16, '\0');
  const std::string header = little(2000, 2) + little(0, 2) + little(kRate, 4) + little(kRate, 4) +
                             little(2, 4) + little(16, 2) + little(2, 2) + little(kRate, 4);
  return descriptor + header + little(84, 4) + little(4084, 4) + data;
}

std::string adaptiveMultiRate() {
  std::string bytes = "#!AMR\n";
  for (int frame = 0; frame < 100; ++frame) bytes += '\x3C' + std::string(31, '\0');
  return bytes;
}

struct Row {
  const char* name;
  const char* arguments;
  uint32_t containerFormat;
  int codecId;
  const char* dlnaProfile;
};

// A row for every demuxer with a number, for some without one, and for the codecs with a profile
// name.
const Row kRows[] = {
    {"song.mp3", "-c:a libmp3lame", FORMAT_MP3, CODEC_ID_MP3, "MP3"},
    {"song.wav", "-c:a pcm_s16le", FORMAT_WAV, CODEC_ID_PCM_S16LE, "LPCM"},
    {"adpcm.wav", "-c:a adpcm_ms", FORMAT_WAV, CODEC_ID_ADPCM_MS, ""},
    {"song.flac", "-c:a flac", FORMAT_FLAC, CODEC_ID_FLAC, ""},
    {"song.ogg", "-c:a libvorbis", FORMAT_OGG, CODEC_ID_VORBIS, ""},
    {"song.ac3", "-c:a ac3", FORMAT_AC3, CODEC_ID_AC3, "AC3"},
    {"song.asf", "-c:a libmp3lame -f asf", FORMAT_ASF, CODEC_ID_MP3, "MP3"},
    {"song.m4a", "-c:a aac -ac 2 -f ipod", FORMAT_MPEG4 | MPEG4_M4A << 16, CODEC_ID_AAC, "AAC_ISO"},
    {"song.mp4", "-c:a aac -brand mp42", FORMAT_MPEG4 | MPEG4_MP4 << 16, CODEC_ID_AAC, "AAC_ISO"},
    {"faststart.mp4", "-c:a aac -brand mp42 -movflags +faststart",
     FORMAT_MPEG4 | MPEG4_MP4_FASTSTART << 16, CODEC_ID_AAC, "AAC_ISO"},
    {"isom.mp4", "-c:a ac3 -brand isom", FORMAT_MPEG4 | MPEG4_ISOM << 16, CODEC_ID_AC3, "AC3"},
    {"song.mov", "-c:a pcm_s16le", FORMAT_MPEG4 | MPEG4_MOV << 16, CODEC_ID_PCM_S16LE, "LPCM"},
    {"unbranded.mp4", "-c:a aac -brand abcd", FORMAT_MPEG4, CODEC_ID_AAC, "AAC_ISO"},
    {"alac.m4a", "-c:a alac -f ipod", FORMAT_MPEG4 | MPEG4_M4A << 16, CODEC_ID_ALAC, ""},
    {"song.avi", "-c:a mp2", FORMAT_AVI, CODEC_ID_MP2, "MP2_MPS"},
    {"song.mpg", "-c:a mp2 -f vob", FORMAT_MPEG, CODEC_ID_MP2, "MP2_MPS"},
    {"song.ts", "-c:a mp2", FORMAT_TS, CODEC_ID_MP2, "MP2_MPS"},
    {"song.mka", "-c:a ac3", FORMAT_MKV, CODEC_ID_AC3, "AC3"},
    {"song.flv", "-c:a libmp3lame", FORMAT_FLV, CODEC_ID_MP3, "MP3"},
    {"song.aiff", "-c:a pcm_s16be", FORMAT_AIFF, CODEC_ID_PCM_S16BE, "LPCM"},
    {"song.au", "-c:a pcm_mulaw", FORMAT_AU, CODEC_ID_PCM_MULAW, "LPCM"},
    {"song.aac", "-c:a aac -f adts", FORMAT_AAC, CODEC_ID_AAC, "AAC_ADTS_320"},
    {"song.ra", "-c:a real_144 -ar 8000 -ac 1 -f rm", FORMAT_RA, CODEC_ID_RA_144, ""},
    {"song.wv", "-c:a wavpack", FORMAT_WV, CODEC_ID_WAVPACK, ""},
    {"song.tta", "-c:a tta", kOtherContainer, CODEC_ID_TTA, ""},
    {"song.dts", "-c:a dca -strict -2 -f dts", kOtherContainer, CODEC_ID_DTS, "AC3"},
    {"dts.mka", "-c:a dca -strict -2", FORMAT_MKV, CODEC_ID_DTS, "AC3"},
    {"song.mp2", "-c:a mp2 -f mp2", FORMAT_MP3, CODEC_ID_MP2, "MP2_MPS"},
    {"song.eac3", "-c:a eac3", kOtherContainer, CODEC_ID_EAC3, ""},
    {"song.caf", "-c:a pcm_s16be", kOtherContainer, CODEC_ID_PCM_S16BE, "LPCM"},
    {"song.w64", "-c:a pcm_s16le", kOtherContainer, CODEC_ID_PCM_S16LE, "LPCM"},
};

// ffprobe writes most numbers as text and leaves out unknown ones.
long long number(const nlohmann::json& object, const char* key) {
  if (!object.contains(key)) return 0;
  const auto& value = object[key];
  return value.is_string() ? std::stoll(value.get<std::string>()) : value.get<long long>();
}

TEST(GetAudioMetadata, DescribesEveryContainerAndCodec) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const Song song = probe(tone(row.name, row.arguments));
    EXPECT_EQ(song.result, 0U);
    EXPECT_EQ(song.containerFormat, row.containerFormat);
    EXPECT_EQ(song.codecId, static_cast<uint32_t>(row.codecId));
    EXPECT_STREQ(song.dlnaProfile.text, row.dlnaProfile);
  }
}

TEST(GetAudioMetadata, AgreesWithFfprobe) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const std::string path = tone(row.name, row.arguments);
    const auto probed = ffprobe(path);
    const auto& stream = probed["streams"][0];
    const Song song = probe(path);
    EXPECT_EQ(song.containerBitRate, number(probed["format"], "bit_rate"));
    EXPECT_EQ(song.bitRate, number(stream, "bit_rate"));
    EXPECT_EQ(song.sampleRate, number(stream, "sample_rate"));
    EXPECT_EQ(song.channels, number(stream, "channels"));
    // ffprobe reports the codec's bits if the codec has a fixed number, but not the file's.
    const long long bits = number(stream, "bits_per_sample");
    EXPECT_EQ(song.bitsPerSample, bits != 0 ? bits : song.bitsPerSample);
    const double duration = std::stod(probed["format"].value("duration", "0"));
    EXPECT_EQ(song.durationSec, duration > 0 ? static_cast<uint32_t>(duration) : kUntouched);
  }
}

TEST(GetAudioMetadata, DescribesFormatsWithoutEncoder) {
  struct Built {
    const char* name;
    std::string bytes;
    uint32_t containerFormat;
    int codecId;
    const char* dlnaProfile;
  };
  const Built built[] = {
      {"song.ape", monkeysAudio(), FORMAT_APE, CODEC_ID_APE, ""},
      {"wmapro.wav", waveWithTag(0x162, 16000), FORMAT_WAV, CODEC_ID_WMAPRO, "WMAPRO"},
      {"song.amr", adaptiveMultiRate(), kOtherContainer, CODEC_ID_AMR_NB, ""},
  };
  const TempDir folder;
  for (const Built& row : built) {
    SCOPED_TRACE(row.name);
    const Song song = probe(folder.write(row.name, row.bytes));
    EXPECT_EQ(song.result, 0U);
    EXPECT_EQ(song.containerFormat, row.containerFormat);
    EXPECT_EQ(song.codecId, static_cast<uint32_t>(row.codecId));
    EXPECT_STREQ(song.dlnaProfile.text, row.dlnaProfile);
  }
}

// Otherwise two frames do not fit into a packet, and padding nearly doubles the container's bit
// rate.
constexpr char kFullPackets[] = " -packet_size 30000";

TEST(GetAudioMetadata, NamesWindowsMediaByTheContainersBitRate) {
  struct Wma {
    const char* codec;
    int kilobits;
    int codecId;
    const char* dlnaProfile;
  };
  const Wma rows[] = {
      {"wmav1", 128, CODEC_ID_WMAV1, "WMABASE"}, {"wmav1", 256, CODEC_ID_WMAV1, "WMAFULL"},
      {"wmav1", 320, CODEC_ID_WMAV1, "WMAFULL"}, {"wmav1", 400, CODEC_ID_WMAV1, ""},
      {"wmav2", 128, CODEC_ID_WMAV2, "WMABASE"}, {"wmav2", 256, CODEC_ID_WMAV2, "WMAFULL"},
      {"wmav2", 320, CODEC_ID_WMAV2, "WMAFULL"}, {"wmav2", 400, CODEC_ID_WMAV2, ""},
  };
  for (const Wma& row : rows) {
    const std::string rate = std::to_string(row.kilobits);
    SCOPED_TRACE(row.codec + (" " + rate));
    const Song song = probe(noise(row.codec + ("-" + rate + ".wma"),
                                  "-ac 2 -c:a " + std::string(row.codec) + " -b:a " + rate + "k" +
                                      (row.kilobits >= 320 ? kFullPackets : "")));
    EXPECT_EQ(song.containerFormat, FORMAT_ASF);
    EXPECT_EQ(song.codecId, static_cast<uint32_t>(row.codecId));
    EXPECT_STREQ(song.dlnaProfile.text, row.dlnaProfile) << song.containerBitRate;
  }
}

TEST(GetAudioMetadata, NamesTheWmaTestFileByItsFileName) {
  const std::string path =
      noise("x-O-WAB-05_C_192_44_2.wma", "-ac 2 -c:a wmav2 -b:a 320k -packet_size 30000");
  EXPECT_STREQ(probe(path).dlnaProfile.text, "WMABASE");
}

TEST(GetAudioMetadata, IgnoresFolderNamedLikeTheWmaTestFile) {
  const TempDir folder;
  mkdir(folder.path("O-WAB-05_C_192_44_2.wma").c_str(), 0700);
  const std::string path = folder.write(
      "O-WAB-05_C_192_44_2.wma/song.wma",
      mustRun({"cat", noise("320.wma", "-ac 2 -c:a wmav2 -b:a 320k -packet_size 30000")}));
  EXPECT_STREQ(probe(path).dlnaProfile.text, "WMAFULL");
}

// Turns off the encoder's optimizations, so that noise needs more than 320 kbit/s.
#define KOLUM_FULL_AAC \
  "-af aformat=channel_layouts=stereo,adelay=10|0 -b:a 450k -aac_pns 0 -aac_is 0 -aac_ms 0"
constexpr char kFullAac[] = KOLUM_FULL_AAC " -f adts";
constexpr char kFullM4a[] = KOLUM_FULL_AAC " -f ipod";

struct Aac {
  const char* name;
  const char* arguments;
  const char* dlnaProfile;
};

TEST(GetAudioMetadata, NamesAacByStreamAndContainer) {
  const Aac rows[] = {
      {"256.aac", "-ac 2 -b:a 256k -f adts", "AAC_ADTS_320"},
      {"429.aac", kFullAac, "AAC_ADTS"},
      {"256.m4a", "-ac 2 -b:a 256k -f ipod", "AAC_ISO"},
      {"384.m4a", "-ac 2 -b:a 384k -f ipod", "AAC_ISO"},
      {"429.m4a", kFullM4a, "AAC_ISO"},
      {"mono.aac", "-ac 1 -b:a 96k -f adts", "AAC_ADTS_320"},
      {"three.aac", "-ac 3 -b:a 192k -f adts", "AAC_MULT5_ADTS"},
      {"six.aac", "-ac 6 -b:a 320k -f adts", "AAC_MULT5_ADTS"},
      {"six.m4a", "-ac 6 -b:a 320k -f ipod", "AAC_MULT5_ISO"},
      // The only eight-channel layout that every release of the encoder can write as ADTS.
      {"eight.aac", "-af aformat=channel_layouts=7.1(wide) -b:a 400k -f adts", ""},
      {"eight.m4a", "-ac 8 -b:a 400k -f ipod", ""},
      {"7350.aac", "-ac 1 -ar 7350 -b:a 24k -f adts", ""},
      {"8000.aac", "-ac 1 -ar 8000 -b:a 24k -f adts", "AAC_ADTS_320"},
      {"44100.aac", "-ac 2 -ar 44100 -b:a 128k -f adts", "AAC_ADTS_320"},
      {"64000.aac", "-ac 2 -ar 64000 -b:a 128k -f adts", ""},
      {"96000.aac", "-ac 2 -ar 96000 -b:a 128k -f adts", ""},
      {"96000.m4a", "-ac 2 -ar 96000 -b:a 128k -f ipod", ""},
      {"O-AAC_ADTS_320-stereo-48kHz-320.adts", kFullAac, "AAC_ADTS_320"},
  };
  for (const Aac& row : rows) {
    SCOPED_TRACE(row.name);
    const Song song = probe(noise(row.name, std::string("-c:a aac ") + row.arguments));
    EXPECT_EQ(song.result, 0U);
    EXPECT_EQ(song.codecId, static_cast<uint32_t>(CODEC_ID_AAC));
    EXPECT_STREQ(song.dlnaProfile.text, row.dlnaProfile)
        << song.bitRate << " bit/s, " << song.channels << " channels, " << song.sampleRate;
  }
}

TEST(GetAudioMetadata, ConvertsProfileAndLevel) {
  const Song aac = probe(tone("song.aac", "-c:a aac -f adts"));
  EXPECT_EQ(aac.profile, PROFILE_AAC_LOW);
  EXPECT_EQ(aac.level, -99);
  EXPECT_EQ(probe(tone("song.mp3", "-c:a libmp3lame")).profile, PROFILE_UNKNOWN);
}

TEST(GetAudioMetadata, PrintsTheDurationToStandardError) {
  const Song song = probe(tone("song.wav", "-c:a pcm_s16le"));
  EXPECT_THAT(song.log, MatchesRegex("\\[MediaInfo:[0-9]+\\] >>>> ctx->duration=2000000, "
                                     "AV_TIME_BASE=1000000, ctx->duration/AV_TIME_BASE=2 \n"));
}

TEST(GetAudioMetadata, KeepsTheCallersValueForUnknownDuration) {
  const std::string path = made("endless.mka", "flac, not finished", [](const std::string& out) {
    mustRun({"sh", "-c",
             "ffmpeg -loglevel error -nostdin -f lavfi -i sine=d=1 -c:a flac -f matroska -live 1 - "
             ">\"$1\"",
             "sh", out});
  });
  const Song song = probe(path);
  EXPECT_EQ(song.result, 0U);
  EXPECT_EQ(song.durationSec, kUntouched);
  EXPECT_EQ(song.codecId, static_cast<uint32_t>(CODEC_ID_FLAC));
  EXPECT_THAT(song.log, HasSubstr("ctx->duration=-9223372036854775808,"));
}

TEST(GetAudioMetadata, FailsForCodecWithoutNumberAfterWritingEarlierOutputs) {
  const std::string path = noise("song.opus", "-c:a libopus -b:a 96k");
  const Song song = probe(path);
  EXPECT_EQ(song.result, 1U);
  EXPECT_EQ(song.containerBitRate, number(ffprobe(path)["format"], "bit_rate"));
  EXPECT_EQ(song.bitRate, 0U);
  EXPECT_EQ(song.durationSec, 2U);
  EXPECT_EQ(song.profile, PROFILE_UNKNOWN);
  for (const uint32_t later :
       {song.sampleRate, song.bitsPerSample, song.channels, song.containerFormat, song.codecId})
    EXPECT_EQ(later, kUntouched);
  EXPECT_EQ(song.level, kUntouchedSigned);
  EXPECT_STREQ(song.dlnaProfile.text, "");
}

// Release 57 reported such a stream as one without a codec.
TEST(GetAudioMetadata, ReportsCodecZeroForCodecsAfterRelease57) {
  const TempDir folder;
  const Song song = probe(folder.write("siren.wav", waveWithTag(0x28E, 2000)));
  EXPECT_EQ(song.result, 0U);
  EXPECT_EQ(song.codecId, 0U);
  EXPECT_EQ(song.profile, -99);
  EXPECT_EQ(song.sampleRate, 44100U);
  EXPECT_STREQ(song.dlnaProfile.text, "");
}

TEST(GetAudioMetadata, FailsForRelease57CodecWithoutIdentifier) {
  const Song song = probe(media("song.opus", "-f lavfi -i sine=d=1 -c:a libopus"));
  EXPECT_EQ(song.result, 1U);
  EXPECT_NE(song.profile, kUntouchedSigned);
  EXPECT_EQ(song.codecId, kUntouched);
}

TEST(GetAudioMetadata, ReportsCodecZeroForCodecUnknownToFfmpeg) {
  const TempDir folder;
  const Song song = probe(folder.write("odd.wav", waveWithTag(0x7777, 2000)));
  EXPECT_EQ(song.result, 0U);
  EXPECT_EQ(song.codecId, 0U);
  EXPECT_EQ(song.sampleRate, 44100U);
  EXPECT_EQ(song.channels, 2U);
  EXPECT_EQ(song.containerFormat, FORMAT_WAV);
  EXPECT_STREQ(song.dlnaProfile.text, "");
}

TEST(GetAudioMetadata, DescribesVideoByItsFirstAudioStream) {
  const Song song =
      probe(media("two-tracks.mkv",
                  "-f lavfi -i testsrc=s=64x48:d=1 -f lavfi -i sine=d=1:r=44100 -f lavfi -i "
                  "sine=d=1:r=48000 -map 0 -map 1 -map 2 -c:v mpeg4 -c:a:0 mp2 -c:a:1 ac3"));
  EXPECT_EQ(song.result, 0U);
  EXPECT_EQ(song.codecId, static_cast<uint32_t>(CODEC_ID_MP2));
  EXPECT_EQ(song.sampleRate, 44100U);
}

TEST(GetAudioMetadata, SucceedsWithoutOutputForSilentVideo) {
  const Song song = probe(media("silent.mkv", "-f lavfi -i testsrc=s=64x48:d=1 -c:v mpeg4"));
  EXPECT_EQ(song.result, 0U);
  expectUntouched(song);
  EXPECT_EQ(song.log, "");
}

TEST(GetAudioMetadata, SucceedsForFileWithoutStreams) {
  const TempDir folder;
  const Song song = probe(folder.write("empty.ffmeta", ";FFMETADATA1\ntitle=none\n"));
  EXPECT_EQ(song.result, 0U);
  expectUntouched(song);
}

TEST(GetAudioMetadata, FailsWithoutOutputIfTheFileCannotBeOpened) {
  const TempDir folder;
  folder.write("empty.mp3", "");
  folder.write("noise.xyz", std::string(600, '\xA5'));
  mkdir(folder.path("folder.mp3").c_str(), 0700);
  ASSERT_EQ(mkfifo(folder.path("pipe.mp3").c_str(), 0600), 0);
  for (const char* name :
       {"empty.mp3", "noise.xyz", "folder.mp3", "pipe.mp3", "missing.mp3", "missing.dsf"}) {
    SCOPED_TRACE(name);
    withinSeconds(20, [&] {
      const Song song = probe(folder.path(name));
      EXPECT_EQ(song.result, 1U);
      expectUntouched(song);
    });
  }
}

TEST(GetAudioMetadata, OpensNameWithoutExtension) {
  const TempDir folder;
  const std::string path =
      folder.write("song", mustRun({"cat", tone("song.wav", "-c:a pcm_s16le")}));
  EXPECT_EQ(probe(path).containerFormat, FORMAT_WAV);
}

TEST(GetAudioMetadata, SkipsNullOutputsAndRejectsNullNames) {
  const std::string path = tone("song.wav", "-c:a pcm_s16le");
  const std::size_t slash = path.rfind('/');
  const auto call = [](const char* folder, const char* name) {
    testing::internal::CaptureStderr();
    const unsigned result =
        GetAudioMetadata(folder, name, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr, nullptr);
    testing::internal::GetCapturedStderr();
    return result;
  };
  EXPECT_EQ(call(path.substr(0, slash + 1).c_str(), "song.wav"), 0U);
  EXPECT_EQ(call(nullptr, "song.wav"), 1U);
  EXPECT_EQ(call("/", nullptr), 1U);
  EXPECT_EQ(call(std::string(1024, '/').c_str(), "song.wav"), 1U);
}

TEST(GetAudioMetadata, SurvivesTruncatedFile) {
  const std::string whole = mustRun({"cat", tone("song.m4a", "-c:a aac -ac 2 -f ipod")});
  const TempDir folder;
  for (std::size_t length = 0; length < whole.size(); length += whole.size() / 23 + 1)
    EXPECT_LE(probe(folder.write("cut.m4a", whole.substr(0, length))).result, 1U) << length;
}

TEST(GetAudioMetadata, LeavesNoDescriptorOpen) {
  const std::string path = tone("song.ogg", "-c:a libvorbis");
  probe(path);
  const ExpectNoDescriptorLeak leak;
  for (int i = 0; i < 3; ++i) probe(path);
  probe(noise("song.opus", "-c:a libopus -b:a 96k"));
  probe("/dev/null");
}

}  // namespace
}  // namespace kolum::test
