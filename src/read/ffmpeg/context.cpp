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

// Options of demuxers, for the searches that cost most.
AVDictionary* optionsFor(AVFormatContext& context, std::string_view demuxer) {
  AVDictionary* options = nullptr;
  // FFmpeg ignores the options that a release does not have.
  av_dict_set_int(&options, "max_streams", media::budget::kStreams, 0);
  if (demuxer == "wav") {
    // WAV files may contain DTS or AC-3: one look at what 32 packets hold, where FFmpeg looks after
    // 1, 2, 4, 8, 16 and 32.
    av_dict_set_int(&options, "max_size", 131072, 0);
    context.max_probe_packets = 1;
  }
  return options;
}

}  // namespace

void ContextCloser::operator()(AVFormatContext* context) const {
  avformat_close_input(&context);
}

Context::Context(std::unique_ptr<SourceReader> reader_, AVFormatContext* format_)
    : reader(std::move(reader_)), format(format_) {}
Context::Context(Context&&) noexcept = default;
Context::~Context() = default;

std::optional<Context> openContext(const media::Source& source, std::string_view demuxer) {
  std::unique_ptr<AVFormatContext, Freer> prepared(avformat_alloc_context());
  auto reader = std::make_unique<SourceReader>(source);
  if (prepared == nullptr || !setLimits(*prepared, *reader)) return std::nullopt;
  const std::string name = nameForGuess(source.name());
  const auto format = findDemuxer(*prepared, name, demuxer);
  if (format == nullptr) return std::nullopt;
  AVDictionary* options = optionsFor(*prepared, demuxer);
  AVFormatContext* opened = prepared.release();
  // Frees the context if it fails.
  const int result = avformat_open_input(&opened, name.c_str(), format, &options);
  av_dict_free(&options);
  if (result != 0) return std::nullopt;
  Context context(std::move(reader), opened);
  if (isForeignPicture(*opened)) return std::nullopt;
  if (searchesForData(opened->iformat->name)) context.reader->limitSearches();
  return context;
}

}  // namespace kolum::ffmpeg
