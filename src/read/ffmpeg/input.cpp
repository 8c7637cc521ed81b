#include "read/ffmpeg/input.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <utility>

#include "base/text.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/file_demuxers.h"
#include "read/ffmpeg/source_reader.h"
#include "read/ffmpeg/values.h"

namespace kolum::ffmpeg {

namespace {

// For a context that is not open yet.
struct Freer {
  void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

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

}  // namespace

void Input::Closer::operator()(AVFormatContext* context) const {
  avformat_close_input(&context);
}

Input::Input(AVFormatContext* context, std::unique_ptr<SourceReader> reader, Depth depth)
    : reader_(std::move(reader)), context_(context) {
  if (depth == Depth::kStreams) {
    beginOperation();
    // The result is ignored: what was found before an error is still worth reporting.
    avformat_find_stream_info(context, nullptr);
  }
  container_ = containerOf(*context);
}

Input::Input(Input&&) noexcept = default;

// The context must be closed before its reader is destroyed.
Input::~Input() {
  context_.reset();
}

std::optional<Input> Input::open(const media::Source& source, Depth depth) {
  const char* demuxers = fileDemuxers();
  std::unique_ptr<AVFormatContext, Freer> context(avformat_alloc_context());
  if (context == nullptr) return std::nullopt;
  context->format_whitelist = av_strdup(demuxers);
  if (context->format_whitelist == nullptr) return std::nullopt;
  context->io_open = refuseToOpen;
  auto reader = std::make_unique<SourceReader>(source);
  context->pb = reader->context();
  const std::string name = nameForGuess(source.name());
  AVFormatContext* opened = context.release();
  // Frees the context if it fails.
  if (avformat_open_input(&opened, name.c_str(), nullptr, nullptr) != 0) return std::nullopt;
  return Input(opened, std::move(reader), depth);
}

std::optional<Input> Input::openUrl(const char* url, Depth depth) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, url, nullptr, nullptr) != 0) return std::nullopt;
  return Input(context, nullptr, depth);
}

AVStream* Input::raw(const media::Stream& stream) const {
  return context_->streams[stream.index];
}

void Input::beginOperation() const {
  if (reader_ != nullptr) reader_->renew();
}

std::optional<media::Container> readContainer(const std::string& path, Depth depth) {
  const auto source = media::Source::open(path);
  auto input = source ? Input::open(*source, depth) : std::nullopt;
  if (!input) return std::nullopt;
  return std::move(*input).takeContainer();
}

media::Rational reduce(std::int64_t num, std::int64_t den, std::int64_t max) {
  media::Rational result;
  av_reduce(&result.num, &result.den, num, den, max);
  return result;
}

media::Rational timeBase(const AVStream& stream) {
  return rationalOf(stream.time_base);
}

}  // namespace kolum::ffmpeg
