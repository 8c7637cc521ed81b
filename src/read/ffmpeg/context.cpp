#include "read/ffmpeg/context.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string>
#include <utility>

#include "base/text.h"
#include "media/budget.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"
#include "read/ffmpeg/source_reader.h"
#include "read/headers/wave.h"

namespace kolum::ffmpeg {

namespace {

// For a context that is not open yet.
struct Freer {
  void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

using DemuxerPointer = decltype(AVFormatContext::iformat);

int refuseToOpen(AVFormatContext* /*context*/, AVIOContext** /*io*/, const char* /*url*/,
                 int /*flags*/, AVDictionary** /*options*/) {
  return AVERROR(EACCES);
}

// The part of a name that FFmpeg's guess of the format may use. The rest could have a meaning to
// it: "pic%d.png" is a series of pictures.
std::string nameForGuess(const std::string& name) {
  const std::string_view extension = extensionOf(name);
  const bool isPlain = std::all_of(extension.begin(), extension.end(), [](unsigned char c) {
    return c == '.' || std::isalnum(c) != 0 || c == '_' || c == '-' || c == '+';
  });
  return "media" + std::string(isPlain ? extension : "");
}

bool setLimits(AVFormatContext& context, SourceReader& reader) {
  context.pb = reader.context();
  context.io_open = refuseToOpen;
  context.interrupt_callback = {SourceReader::isInterrupted, &reader};
  context.codec_whitelist = av_strdup(allowedDecoders());
  return context.codec_whitelist != nullptr;
}

// The demuxer of this name, or the one that FFmpeg's search finds; null if it is not allowed.
DemuxerPointer findDemuxer(AVFormatContext& context, const std::string& fileName,
                           std::string_view demuxer) {
  DemuxerPointer found = nullptr;
  if (!demuxer.empty())
    found = av_find_input_format(std::string(demuxer.substr(0, demuxer.find(','))).c_str());
  else if (av_probe_input_buffer2(context.pb, &found, fileName.c_str(), &context, 0,
                                  static_cast<unsigned>(context.format_probesize)) < 0)
    return nullptr;
  return found != nullptr && isAllowedDemuxer(found->name) ? found : nullptr;
}

AVDictionary* commonOptions() {
  AVDictionary* options = nullptr;
  // FFmpeg ignores the options that a release does not have.
  av_dict_set_int(&options, "max_streams", media::budget::kStreams, 0);
  return options;
}

// How FFmpeg looks for DTS, AC-3 and the like among 16-bit samples: after 1, 2, 4, 8, 16 and 32
// packets, with all its demuxers.
enum class SampleSearch { kWhole, kOnePacket };

// Whether looking at one packet of a WAV file finds what looking at all of them finds: nothing.
bool mayEndSearchEarly(const AVFormatContext& context, const media::Source& source) {
  constexpr std::int64_t kPackets = 32;
  constexpr std::int64_t kWorthwhile = std::int64_t{1} << 20;
  if (context.nb_streams == 0) return false;
  const AVCodecParameters& parameters = *context.streams[0]->codecpar;
  if (parameters.codec_id != AV_CODEC_ID_PCM_S16LE) return true;  // FFmpeg does not search
  const std::int64_t searched = kPackets * release::longestWavPacket(parameters);
  return std::all_of(context.streams + 1, context.streams + context.nb_streams,
                     [](const AVStream* stream) { return isCover(*stream); }) &&
         parameters.sample_rate > 0 && searched <= kWorthwhile &&
         headers::isPlainPcm(source, avio_tell(context.pb), static_cast<std::size_t>(searched));
}

std::optional<Context> openContext(const media::Source& source, std::string_view demuxer,
                                   SampleSearch search) {
  std::unique_ptr<AVFormatContext, Freer> prepared(avformat_alloc_context());
  auto reader = std::make_unique<SourceReader>(source);
  if (prepared == nullptr || !setLimits(*prepared, *reader)) return std::nullopt;
  if (search == SampleSearch::kOnePacket) prepared->max_probe_packets = 1;
  const std::string name = nameForGuess(source.name());
  const auto format = findDemuxer(*prepared, name, demuxer);
  if (format == nullptr) return std::nullopt;
  if (searchesForData(format->name)) reader->limitSearches();
  AVDictionary* options = commonOptions();
  AVFormatContext* opened = prepared.release();
  // Frees the context if it fails.
  const int result = avformat_open_input(&opened, name.c_str(), format, &options);
  av_dict_free(&options);
  if (result != 0) return std::nullopt;
  return Context(std::move(reader), opened);
}

}  // namespace

void ContextCloser::operator()(AVFormatContext* context) const {
  avformat_close_input(&context);
}

Context::Context(std::unique_ptr<SourceReader> sourceReader, AVFormatContext* formatContext)
    : reader(std::move(sourceReader)), format(formatContext) {}
Context::Context(Context&&) noexcept = default;
Context::~Context() = default;

std::optional<Context> openContext(const media::Source& source, std::string_view demuxer) {
  const bool isWav = demuxer == "wav";
  auto context =
      openContext(source, demuxer, isWav ? SampleSearch::kOnePacket : SampleSearch::kWhole);
  if (!context || isForeignPicture(*context->format)) return std::nullopt;
  if (isWav && !mayEndSearchEarly(*context->format, source))
    return openContext(source, demuxer, SampleSearch::kWhole);
  return context;
}

}  // namespace kolum::ffmpeg
