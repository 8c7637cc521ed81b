#include "read/ffmpeg/input.h"

#include <utility>

#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/shortcut.h"
#include "read/ffmpeg/source_reader.h"
#include "read/ffmpeg/values.h"
#include "read/headers/id3v2.h"
#include "read/headers/shortcuts.h"
#include "read/headers/signatures.h"

namespace kolum::ffmpeg {

namespace {

void beginOperationOf(const Context& context) {
  if (context.reader != nullptr) context.reader->renew();
}

// The result of FFmpeg's search is ignored: what was found before an error is still worth
// reporting.
void readStreams(const Context& context) {
  beginOperationOf(context);
  avformat_find_stream_info(context.format.get(), nullptr);
}

// The same with a shortcut. False if another way has to be taken.
bool readStreamsFromHeaders(const Context& context, const media::Source& source, Shortcuts allowed,
                            FirstPictures* pictures) {
  beginOperationOf(context);
  Shortcut shortcut(*context.format, source, allowed);
  shortcut.fill();
  avformat_find_stream_info(context.format.get(), shortcut.options());
  return shortcut.isSound(pictures);
}

std::optional<Context> openFile(const media::Source& source) {
  return openContext(source, headers::mayTakeShortcuts() ? headers::demuxerOf(source) : "");
}

}  // namespace

Input::Input(Context context, Depth depth, std::optional<FirstPictures>& pictures)
    : context_(std::move(context)) {
  if (depth != Depth::kHeader) readStreams(context_);
  container_ = containerOf(*raw());
  if (!pictures) return;
  beginOperation();
  pictures->readOn(*raw());
  addDetails(*raw(), *pictures, container_);
}

std::optional<Input> Input::open(const media::Source& source, Depth depth, Details details) {
  headers::blankInflatingTags(source);
  std::optional<FirstPictures> pictures;
  if (details == Details::kWanted && depth == Depth::kStreams) pictures.emplace();
  auto context = openFile(source);
  if (!context) return std::nullopt;
  if (depth == Depth::kHeader || !headers::mayTakeShortcuts())
    return Input(std::move(*context), depth, pictures);
  const Shortcuts allowed = depth == Depth::kStreams ? Shortcuts::kAll : Shortcuts::kStillPictures;
  if (readStreamsFromHeaders(*context, source, allowed, pictures ? &*pictures : nullptr))
    return Input(std::move(*context), Depth::kHeader, pictures);
  context.reset();
  if (pictures) pictures.emplace();
  auto again = openFile(source);
  if (!again) return std::nullopt;
  return Input(std::move(*again), depth, pictures);
}

std::optional<Input> Input::openUrl(const char* url, Depth depth) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, url, nullptr, nullptr) != 0) return std::nullopt;
  std::optional<FirstPictures> noPictures;
  return Input(Context(nullptr, context), depth, noPictures);
}

AVStream* Input::raw(const media::Stream& stream) const {
  return raw()->streams[stream.index];
}

void Input::beginOperation() const {
  beginOperationOf(context_);
}

std::optional<media::Container> readContainer(const std::string& path, Depth depth,
                                              Details details) {
  const auto source = media::Source::open(path);
  auto input = source ? Input::open(*source, depth, details) : std::nullopt;
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
