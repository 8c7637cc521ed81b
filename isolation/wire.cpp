#include "isolation/wire.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "base/bytes.h"
#include "base/clean_text.h"

namespace kolum::isolation {

namespace {

// An archive takes the fields of a value one after the other: the encoder writes them, the decoder
// reads them. Both therefore agree, and fields() below says once which fields there are.
class Encoder {
 public:
  template <typename... Values>
  void operator()(Values&... values) {
    (put(values), ...);
  }
  template <typename Enum>
  void enumerator(Enum& value, Enum /*last*/) {
    number(static_cast<std::uint32_t>(value));
  }
  void trace(Trace& trace);

  std::vector<std::uint8_t> take() && { return std::move(bytes_); }

 private:
  template <typename Number>
  void number(Number value) {
    std::uint8_t raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes_.insert(bytes_.end(), std::begin(raw), std::end(raw));
  }
  void size(std::size_t count) { number(static_cast<std::uint32_t>(count)); }

  template <typename Value>
  void put(Value& value) {
    if constexpr (std::is_arithmetic_v<Value>)
      number(value);
    else
      fields(*this, value);
  }
  void put(std::string& text) {
    size(text.size());
    bytes_.insert(bytes_.end(), text.begin(), text.end());
  }
  template <typename Value>
  void put(std::optional<Value>& value) {
    number(static_cast<std::uint8_t>(value.has_value()));
    if (value) put(*value);
  }
  template <typename First, typename Second>
  void put(std::pair<First, Second>& value) {
    put(value.first);
    put(value.second);
  }
  template <typename Value>
  void put(std::vector<Value>& values) {
    size(values.size());
    for (Value& value : values) put(value);
  }

  std::vector<std::uint8_t> bytes_;
};

class Decoder {
 public:
  explicit Decoder(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool isDone() const { return !bytes_.failed() && bytes_.left() == 0; }
  void fail() { bytes_.fail(); }

  template <typename... Values>
  void operator()(Values&... values) {
    (get(values), ...);
  }
  template <typename Enum>
  void enumerator(Enum& value, Enum last) {
    const auto found = number<std::uint32_t>();
    if (found > static_cast<std::uint32_t>(last)) return fail();
    value = static_cast<Enum>(found);
  }
  void trace(Trace& trace);

 private:
  template <typename Number>
  Number number() {
    Number value = {};
    const auto raw = bytes_.take(sizeof value);
    if (raw.size() == sizeof value) std::memcpy(&value, raw.data(), sizeof value);
    return value;
  }
  // Of a list whose elements take at least a byte each.
  std::size_t size() {
    const std::size_t count = number<std::uint32_t>();
    if (count > bytes_.left()) fail();
    return bytes_.failed() ? 0 : count;
  }

  template <typename Value>
  void get(Value& value) {
    if constexpr (std::is_arithmetic_v<Value>)
      value = number<Value>();
    else
      fields(*this, value);
  }
  void get(bool& value) {
    const auto found = number<std::uint8_t>();
    if (found > 1) fail();
    value = found == 1;
  }
  void get(std::string& text) { text = bytes_.text(size()); }
  template <typename Value>
  void get(std::optional<Value>& value) {
    bool isThere = false;
    get(isThere);
    if (isThere) get(value.emplace());
  }
  template <typename First, typename Second>
  void get(std::pair<First, Second>& value) {
    get(value.first);
    get(value.second);
  }
  template <typename Value>
  void get(std::vector<Value>& values) {
    for (std::size_t left = size(); left > 0 && !bytes_.failed(); --left)
      get(values.emplace_back());
  }

  ByteReader bytes_;
};

void Encoder::trace(Trace& trace) {
  size(trace.lines().size());
  for (TraceLine line : trace.lines()) put(line.text);
}

// A search for key frames reports a few lines for each stream.
constexpr std::size_t kMostLines = 4096;
constexpr std::size_t kLongestLine = 256;

// Nothing that a terminal obeys.
bool isLine(std::string_view text) {
  return text.size() <= kLongestLine && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= ' ' && c <= '~') || c == '\n';
         });
}

// Readers write lines for standard error only. The host writes them out as they are.
void Decoder::trace(Trace& trace) {
  const std::size_t count = size();
  if (count > kMostLines) fail();
  for (std::size_t left = count; left > 0 && !bytes_.failed(); --left) {
    std::string text;
    get(text);
    if (!isLine(text)) fail();
    trace.error(std::move(text));
  }
}

// No reader gives negative denominators; whoever divides relies on that.
void check(Encoder& /*io*/, const media::Rational& /*value*/) {}
void check(Decoder& io, const media::Rational& value) {
  if (value.den < 0 || value.num == INT_MIN) io.fail();
}

template <typename Archive>
void fields(Archive& io, media::Rational& value) {
  io(value.num, value.den);
  check(io, value);
}

// Texts of details are shown and stored as they are.
template <typename... Texts>
void texts(Encoder& io, Texts&... values) {
  io(values...);
}
template <typename... Texts>
void texts(Decoder& io, Texts&... values) {
  io(values...);
  if (!(isCleanText(values) && ...)) io.fail();
}

template <typename... Numbers>
void finite(Encoder& io, Numbers&... values) {
  io(values...);
}
template <typename... Numbers>
void finite(Decoder& io, Numbers&... values) {
  io(values...);
  if (!(std::isfinite(values) && ...)) io.fail();
}

template <typename Archive>
void fields(Archive& io, media::Dispositions& value) {
  io(value.isDefault, value.isForced, value.isForHearingImpaired, value.isForVisuallyImpaired,
     value.isComment, value.isOriginal, value.isDub, value.isLyrics, value.isKaraoke,
     value.isCleanEffects, value.isCaptions, value.isDescriptions, value.isAttachedPicture,
     value.isTimedThumbnails, value.isStillImage);
}

template <typename Archive>
void fields(Archive& io, media::FieldOrder& value) {
  io.enumerator(value, media::FieldOrder::kBottomStoredTopShown);
}

template <typename Archive>
void fields(Archive& io, media::Colours& value) {
  texts(io, value.primaries, value.transfer, value.matrix, value.range, value.chromaLocation);
}

template <typename Archive>
void fields(Archive& io, media::Chromaticity& value) {
  finite(io, value.x, value.y);
}

template <typename Archive>
void fields(Archive& io, media::DisplayPrimaries& value) {
  io(value.red, value.green, value.blue, value.white);
}

template <typename Archive>
void fields(Archive& io, media::DisplayLuminance& value) {
  finite(io, value.lowest, value.highest);
}

template <typename Archive>
void fields(Archive& io, media::MasteringDisplay& value) {
  io(value.primaries, value.luminance);
}

template <typename Archive>
void fields(Archive& io, media::ContentLight& value) {
  io(value.highest, value.highestAverage);
}

template <typename Archive>
void fields(Archive& io, media::DolbyVision& value) {
  io(value.majorVersion, value.minorVersion, value.profile, value.level, value.hasReferenceData,
     value.hasEnhancementLayer, value.hasBaseLayer, value.compatibility);
}

template <typename Archive>
void fields(Archive& io, media::VideoOrientation& value) {
  finite(io, value.degrees);
  io(value.isMirrored);
}

template <typename Archive>
void fields(Archive& io, media::Spherical& value) {
  texts(io, value.projection);
  finite(io, value.yaw, value.pitch, value.roll, value.left, value.top, value.right, value.bottom);
  io(value.padding);
}

template <typename Archive>
void fields(Archive& io, media::Stereo& value) {
  texts(io, value.layout);
  io(value.isInverted);
}

template <typename Archive>
void fields(Archive& io, media::SubtitleKind& value) {
  io.enumerator(value, media::SubtitleKind::kPicture);
}

template <typename Archive>
void fields(Archive& io, media::Attachment& value) {
  texts(io, value.fileName, value.mimeType);
}

// Durations are optional numbers, which finite() does not take.
void check(Encoder& /*io*/, const media::StreamDetails& /*value*/) {}
void check(Decoder& io, const media::StreamDetails& value) {
  if (value.duration && !std::isfinite(*value.duration)) io.fail();
}

template <typename Archive>
void fields(Archive& io, media::StreamDetails& value) {
  texts(io, value.profileName, value.language, value.title, value.handlerName, value.encoder,
        value.creationTime, value.timecode);
  io(value.dispositions, value.duration, value.frameCount, value.averageFrameRate, value.fieldOrder,
     value.bitDepth);
  texts(io, value.chromaSubsampling);
  io(value.hasAlpha, value.colours, value.masteringDisplay, value.contentLight, value.dolbyVision,
     value.hasHdr10Plus, value.hasClosedCaptions, value.orientation, value.spherical, value.stereo);
  texts(io, value.channelLayout, value.sampleFormat);
  io(value.bitsPerRawSample, value.initialPadding, value.subtitleKind, value.attachment);
  check(io, value);
}

template <typename Archive>
void fields(Archive& io, media::Chapter& value) {
  finite(io, value.start, value.end);
  texts(io, value.title);
}

template <typename Archive>
void fields(Archive& io, media::Program& value) {
  io(value.number);
  texts(io, value.name, value.provider);
}

template <typename Archive>
void fields(Archive& io, media::Stream& value) {
  io.enumerator(value.type, media::StreamType::kOther);
  io(value.index, value.id, value.codec, value.codecName, value.codecTag, value.codecTagText,
     value.extraData, value.profile, value.level, value.bitRate);
  io(value.width, value.height, value.pixelFormat, value.frameRate, value.sampleAspect,
     value.isAttachedPicture, value.isEquirectangular, value.rotation, value.creationTime);
  io(value.sampleRate, value.channels, value.bitsPerSample, value.timeBase, value.startTime,
     value.details);
}

void check(Encoder& /*io*/, const media::Container& /*value*/) {}
void check(Decoder& io, const media::Container& value) {
  if (value.chapters.size() > media::kMostChapters || value.programs.size() > media::kMostPrograms)
    io.fail();
}

template <typename Archive>
void fields(Archive& io, media::Container& value) {
  io(value.demuxer, value.bitRate, value.duration, value.streams, value.tags, value.chapters,
     value.programs);
  check(io, value);
}

template <typename Archive>
void fields(Archive& io, media::TransportPackets& value) {
  io(value.size, value.isTimeStamped);
}

template <typename Archive>
void fields(Archive& io, tags::DsfTags& value) {
  io(value.title, value.artist, value.albumArtist, value.album);
}

template <typename Archive>
void fields(Archive& io, ffmpeg::Recognition& value) {
  io(value.format, value.opensFurtherFiles);
}

template <typename Archive>
void fields(Archive& io, ffmpeg::Depth& value) {
  io.enumerator(value, ffmpeg::Depth::kStreamTimes);
}

template <typename Archive>
void fields(Archive& io, headers::MoovPosition& value) {
  io.enumerator(value, headers::MoovPosition::kUnreadable);
}

template <typename Archive>
void fields(Archive& io, read::Picture& value) {
  io(value.width, value.height, value.pixelFormat);
}

template <typename Archive>
void fields(Archive& io, read::Failure& value) {
  io.enumerator(value.cause, read::FailureCause::kNoReader);
  io(value.reason);
}

template <typename Archive>
void fields(Archive& io, Request& value) {
  read::Query& query = value.query;
  io(value.fileName, query.container, query.picture, query.details, query.mp4SubFormat,
     query.transportPackets, query.moovPosition, query.dsfTags, query.recognition, query.keyFrameAt,
     query.reportedKeyFrameAt);
}

template <typename Archive>
void fields(Archive& io, read::Findings& value) {
  io(value.failure, value.bytesRead, value.container, value.picture, value.mp4SubFormat,
     value.transportPackets);
  io.trace(value.transportPacketsTrace);
  io(value.moovPosition, value.dsfTags, value.recognition, value.keyFrameTime);
  io.trace(value.keyFrameTrace);
}

template <typename Value>
std::vector<std::uint8_t> encoded(Value& value) {
  Encoder encoder;
  encoder(value);
  return std::move(encoder).take();
}

template <typename Value>
std::optional<Value> decoded(std::span<const std::uint8_t> bytes) {
  Value value;
  Decoder decoder(bytes);
  decoder(value);
  if (!decoder.isDone()) return std::nullopt;
  return value;
}

}  // namespace

std::vector<std::uint8_t> encode(Request request) {
  return encoded(request);
}

std::vector<std::uint8_t> encode(read::Findings findings) {
  return encoded(findings);
}

std::optional<Request> decodeRequest(std::span<const std::uint8_t> bytes) {
  return decoded<Request>(bytes);
}

std::optional<read::Findings> decodeFindings(std::span<const std::uint8_t> bytes) {
  return decoded<read::Findings>(bytes);
}

}  // namespace kolum::isolation
