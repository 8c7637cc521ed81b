#include "read/ffmpeg/formats.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "media/classic_codecs.h"
#include "media/identifiers.h"
#include "read/ffmpeg/ffmpeg.h"

namespace kolum::ffmpeg {

namespace {

// What a playlist or a script names may hang, lead in circles or run programs, so none of these is
// here.
struct DemuxerRow {
  std::string_view name;  // the first of its names
  bool searchesForData;
  std::string_view reason;
};

constexpr auto kDemuxers = std::to_array<DemuxerRow>({
    // clang-format off
    {"mov", false, "MP4, QuickTime, 3GP, M4A, HEIF and AVIF"},
    {"matroska", true, "MKV, MKA and WebM"},
    {"mpegts", true, "recordings, M2TS, Blu-ray discs"},
    {"mpeg", true, "program streams, VOB, DVDs"},
    {"avi", true, "AVI and DivX"},
    {"asf", true, "WMV and WMA"},
    {"flv", true, "FLV and F4V"},
    {"mp3", true, "songs"},
    {"flac", false, "songs"},
    {"wav", false, "songs"},
    {"ogg", true, "songs, Opus, Theora"},
    {"jpeg_pipe", false, "photos"},
    {"png_pipe", false, "photos"},
    {"image2", false, "photos that FFmpeg recognizes by their names only: TGA"},
    {"rm", true, "RealMedia and RealAudio"},
    {"mpegvideo", true, "M1V, M2V"},
    {"m4v", true, "MPEG-4 video without a container, also named .m4v"},
    {"h264", true, "cameras' recordings without a container"},
    {"hevc", true, "cameras' recordings without a container"},
    {"h263", true, "old phones' recordings without a container"},
    {"vc1", true, "Blu-ray video without a container"},
    {"mjpeg", true, "cameras' recordings without a container"},
    {"dv", true, "camcorders"},
    {"ivf", false, "VP8, VP9 and AV1 of conferences"},
    {"obu", true, "AV1 without a container"},
    {"av1", true, "AV1 without a container"},
    {"mxf", true, "professional cameras"},
    {"nut", true, "FFmpeg's own container"},
    {"wtv", true, "recordings of Media Center"},
    {"gxf", true, "professional recordings"},
    {"ape", false, "songs"},
    {"aac", true, "ADTS"},
    {"loas", true, "AAC of broadcasts"},
    {"ac3", true, "songs"},
    {"eac3", true, "songs"},
    {"dts", true, "songs"},
    {"dtshd", false, "songs"},
    {"truehd", true, "songs"},
    {"mlp", true, "songs"},
    {"aiff", false, "songs"},
    {"au", false, "songs"},
    {"wv", true, "songs"},
    {"dsf", false, "DSD songs"},
    {"iff", false, "DFF: DSD songs"},
    {"w64", false, "long WAV recordings"},
    {"caf", false, "Apple's recordings"},
    {"tta", false, "songs"},
    {"tak", false, "songs"},
    {"mpc", false, "songs"},
    {"mpc8", false, "songs"},
    {"oma", false, "songs of MiniDisc players"},
    {"amr", true, "phones' recordings"},
    {"amrnb", true, "phones' recordings"},
    {"amrwb", true, "phones' recordings"},
    {"voc", false, "old recordings"},
    {"aptx", false, "Bluetooth recordings"},
    {"gif", false, "photos"},
    {"gif_pipe", false, "photos"},
    {"apng", false, "photos"},
    {"bmp_pipe", false, "photos"},
    {"tiff_pipe", false, "photos, also raw ones"},
    {"webp_pipe", false, "photos"},
    {"j2k_pipe", false, "photos"},
    {"pam_pipe", false, "photos"},
    {"pbm_pipe", false, "photos"},
    {"pgm_pipe", false, "photos"},
    {"ppm_pipe", false, "photos"},
    {"ffmetadata", false, "tags without streams, which hosts keep listed"},
    {"srt", false, "subtitles beside films"},
    {"ass", false, "subtitles beside films"},
    {"webvtt", false, "subtitles beside films"},
    {"sup", false, "subtitles beside films"},
    // clang-format on
});

constexpr std::string_view kOpenFurtherFiles[] = {
    "avisynth", "concat", "dash",        "hls",    "hls,applehttp",
    "imf",      "sdp",    "vapoursynth", "vobsub", "webm_dash_manifest",
};

struct CodecRow {
  std::string_view descriptor;
  std::string_view reason;
};

// The codecs of the identifiers that hosts know are allowed, except these pictures.
constexpr auto kForeignPictures = std::to_array<CodecRow>({
    // clang-format off
    {"ansi", "text"},
    {"dpx", "scanned films"},
    {"iff_ilbm", "home computers; the container is that of DFF songs"},
    {"jpegls", "medicine"},
    {"pcx", "old drawings"},
    {"pgmyuv", "FFmpeg's tests"},
    {"pictor", "old drawings"},
    {"ptx", "toys; raw photos have this extension, too, and are TIFF"},
    {"sgi", "workstations"},
    {"sunrast", "workstations; FFmpeg 5's decoder ends the process for some"},
    {"txd", "games"},
    {"xbm", "icons"},
    {"xwd", "screenshots of workstations"},
    // clang-format on
});

// Codecs that hosts have no identifier for, though people have such files.
constexpr auto kFurtherCodecs = std::to_array<CodecRow>({
    // clang-format off
    {"apng", "animated PNG"},
    {"av1", "films and AVIF photos"},
    {"cfhd", "action cameras"},
    {"hap", "stage shows"},
    {"imm4", "surveillance"},
    {"imm5", "surveillance"},
    {"vp4", "old films"},
    {"vp7", "old films"},
    {"vvc", "films"},
    {"y41p", "captured video"},
    {"ayuv", "captured video"},
    {"yuv4", "captured video"},
    {"v308", "captured video"},
    {"v408", "captured video"},
    {"adpcm_g726le", "voice recorders"},
    {"aptx", "Bluetooth recordings"},
    {"aptx_hd", "Bluetooth recordings"},
    {"atrac3al", "MiniDisc players"},
    {"atrac3pal", "MiniDisc players"},
    {"dsd_lsbf", "DSD songs"},
    {"dsd_lsbf_planar", "DSD songs"},
    {"dsd_msbf", "DSD songs"},
    {"dsd_msbf_planar", "DSD songs"},
    {"dst", "DSD songs"},
    {"ilbc", "voice recorders"},
    {"opus", "songs and films"},
    {"pcm_s16be_planar", "songs"},
    {"pcm_s24le_planar", "songs"},
    {"pcm_s32le_planar", "songs"},
    {"pcm_s64be", "songs"},
    {"pcm_s64le", "songs"},
    {"pcm_f16le", "songs"},
    {"pcm_f24le", "songs"},
    {"tak", "songs"},
    // clang-format on
});

template <std::size_t kSize>
bool contains(const std::array<CodecRow, kSize>& rows, std::string_view descriptor) {
  return std::any_of(rows.begin(), rows.end(),
                     [&](const CodecRow& row) { return row.descriptor == descriptor; });
}

bool hasIdentifier(std::string_view descriptor) {
  const int codec = media::classicCodecNumber(descriptor);
  return codec != media::kNoCodec && media::codecOfFfmpeg(codec) >= 0;
}

bool isAllowed(AVCodecID codec) {
  const AVCodecDescriptor* found = avcodec_descriptor_get(codec);
  if (found == nullptr) return false;
  const std::string_view name = found->name;
  return (hasIdentifier(name) && !contains(kForeignPictures, name)) ||
         contains(kFurtherCodecs, name);
}

const DemuxerRow* rowOf(std::string_view demuxer) {
  const std::string_view first = demuxer.substr(0, demuxer.find(','));
  const auto row = std::find_if(kDemuxers.begin(), kDemuxers.end(),
                                [first](const DemuxerRow& each) { return each.name == first; });
  return row != kDemuxers.end() ? &*row : nullptr;
}

std::string decoderList(AVCodecID except) {
  // Not every caller registers the codecs, and the list is built only once.
  release::registerFormats();
  std::string list;
  void* position = nullptr;
  while (const AVCodec* codec = release::nextCodec(position))
    if (av_codec_is_decoder(codec) != 0 && !release::usesHardware(*codec) && codec->id != except &&
        isAllowed(codec->id))
      list += (list.empty() ? "" : ",") + std::string(codec->name);
  return list;
}

}  // namespace

bool isAllowedDemuxer(std::string_view demuxer) {
  return rowOf(demuxer) != nullptr;
}

const char* allowedDecoders() {
  static const std::string kList = decoderList(AV_CODEC_ID_NONE);
  return kList.c_str();
}

const char* allowedDecodersButH264() {
  static const std::string kList = decoderList(AV_CODEC_ID_H264);
  return kList.c_str();
}

bool isAllowedCodec(const AVStream& stream) {
  return isAllowed(stream.codecpar->codec_id);
}

bool isCover(const AVStream& stream) {
  return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

bool isStillPictureFile(const AVFormatContext& context) {
  const std::string_view name = context.iformat->name;
  return name.ends_with("_pipe") || name == "image2";
}

bool isForeignPicture(const AVFormatContext& context) {
  constexpr std::string_view kByName = "image2";
  return context.iformat->name == kByName && context.nb_streams == 1 &&
         !isAllowedCodec(*context.streams[0]);
}

bool opensFurtherFiles(std::string_view demuxer) {
  return std::find(std::begin(kOpenFurtherFiles), std::end(kOpenFurtherFiles), demuxer) !=
         std::end(kOpenFurtherFiles);
}

bool searchesForData(std::string_view demuxer) {
  const DemuxerRow* row = rowOf(demuxer);
  return row != nullptr && row->searchesForData;
}

}  // namespace kolum::ffmpeg
