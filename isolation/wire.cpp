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
#include "base/utf8.h"
#include "media/budget.h"

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
  // Of a list whose elements take at least a byte each, and so much memory. Nothing that grows with
  // the message is decoded without it.
  std::size_t count(std::size_t sizeOfElement) {
    const std::size_t count = number<std::uint32_t>();
    if (count > bytes_.left() || count > memory_ / sizeOfElement) fail();
    if (bytes_.failed()) return 0;
    memory_ -= count * sizeOfElement;
    return count;
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
  void get(std::string& text) { text = bytes_.text(count(sizeof(char))); }
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
    const std::size_t size = count(sizeof(Value));
    // Growing step by step would take up to three times as much.
    values.reserve(size);
    while (values.size() < size && !bytes_.failed()) get(values.emplace_back());
  }

  ByteReader bytes_;
  std::size_t memory_ = kMostDecoded;  // that is left
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
  const std::size_t size = count(sizeof(TraceLine));
  if (size > kMostLines) fail();
  for (std::size_t left = size; left > 0 && !bytes_.failed(); --left) {
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

// An archive that looks at the values of tags: whether they are as readers promise.
class TagValues {
 public:
  template <typename... Values>
  void operator()(Values&... values) {
    (look(values), ...);
  }
  bool areSound() const { return areSound_; }

 private:
  template <typename Value>
  void look(Value& value) {
    if constexpr (std::is_floating_point_v<Value>)
      areSound_ = areSound_ && std::isfinite(value);
    else if constexpr (!std::is_arithmetic_v<Value>)
      fields(*this, value);
  }
  void look(std::string& text) {
    areSound_ = areSound_ && text.size() <= media::kLongestTagText &&
                text.find('\0') == std::string::npos && isUtf8(text);
  }
  template <typename Value>
  void look(std::optional<Value>& value) {
    if (value) look(*value);
  }
  template <typename Value>
  void look(std::vector<Value>& values) {
    areSound_ = areSound_ && values.size() <= media::kMostTagValues;
    for (Value& value : values) look(value);
  }

  bool areSound_ = true;
};

template <typename Value>
void checkTagValues(Encoder& /*io*/, Value& /*value*/) {}
template <typename Value>
void checkTagValues(TagValues& /*io*/, Value& /*value*/) {}
template <typename Value>
void checkTagValues(Decoder& io, Value& value) {
  TagValues values;
  values(value);
  if (!values.areSound()) io.fail();
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
  if (value.streams.size() > std::size_t{media::budget::kStreams} ||
      value.tags.size() > media::kMostContainerTags ||
      value.chapters.size() > media::kMostChapters || value.programs.size() > media::kMostPrograms)
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
void fields(Archive& io, read::Content& value) {
  texts(io, value.type);
  io(value.isTruncated);
}

template <typename Archive>
void fields(Archive& io, media::OffsetOrigin& value) {
  io.enumerator(value, media::OffsetOrigin::kGps);
}

template <typename Archive>
void fields(Archive& io, media::ExposureProgram& value) {
  io.enumerator(value, media::ExposureProgram::kLandscape);
}

template <typename Archive>
void fields(Archive& io, media::Metering& value) {
  io.enumerator(value, media::Metering::kOther);
}

template <typename Archive>
void fields(Archive& io, media::WhiteBalance& value) {
  io.enumerator(value, media::WhiteBalance::kManual);
}

template <typename Archive>
void fields(Archive& io, media::North& value) {
  io.enumerator(value, media::North::kMagnetic);
}

template <typename Archive>
void fields(Archive& io, media::PhotoTime& value) {
  io(value.year, value.month, value.day, value.hasTimeOfDay, value.hour, value.minute, value.second,
     value.subSecond, value.offset, value.offsetOrigin);
}

template <typename Archive>
void fields(Archive& io, media::Flash& value) {
  io(value.hasFired, value.value);
}

template <typename Archive>
void fields(Archive& io, media::Orientation& value) {
  io(value.value, value.degrees, value.isMirrored);
}

template <typename Archive>
void fields(Archive& io, media::PhotoSize& value) {
  io(value.width, value.height);
}

template <typename Archive>
void fields(Archive& io, media::Position& value) {
  io(value.latitude, value.longitude);
}

template <typename Archive>
void fields(Archive& io, media::Direction& value) {
  io(value.degrees, value.north);
}

template <typename Archive>
void fields(Archive& io, media::Area& value) {
  io(value.centreX, value.centreY, value.width, value.height);
}

template <typename Archive>
void fields(Archive& io, media::Region& value) {
  io(value.name, value.type, value.area);
}

void check(Encoder& /*io*/, const media::PhotoTags& /*value*/) {}
void check(Decoder& io, const media::PhotoTags& value) {
  if (!isValid(value)) io.fail();
}

template <typename Archive>
void fields(Archive& io, media::PhotoTags& value) {
  io(value.taken, value.digitized, value.modified);
  io(value.make, value.model, value.lensMake, value.lensModel, value.serial, value.lensSerial,
     value.software);
  io(value.exposureTime, value.aperture, value.iso, value.exposureBias, value.program,
     value.metering, value.whiteBalance, value.focalLength, value.focalLength35, value.flash);
  io(value.orientation, value.storedSize, value.shownSize, value.colourProfile);
  io(value.position, value.altitude, value.direction, value.positionAccuracy, value.gpsTime,
     value.location, value.city, value.state, value.country, value.countryCode);
  io(value.title, value.headline, value.description, value.keywords, value.keywordPaths,
     value.rating, value.label, value.creators, value.copyright, value.credit, value.regions);
  io(value.burst, value.livePhoto, value.motionPhoto);
  check(io, value);
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
void fields(Archive& io, media::Performer& value) {
  io(value.name, value.role);
}

template <typename Archive>
void fields(Archive& io, media::Cover& value) {
  io(value.mimeType, value.type, value.description, value.bytes, value.width, value.height);
}

template <typename Archive>
void fields(Archive& io, media::SongChapter& value) {
  io(value.start, value.end, value.title);
}

template <typename Archive>
void fields(Archive& io, media::MusicBrainzIds& value) {
  io(value.recording, value.track, value.release, value.releaseGroup, value.work, value.artists,
     value.albumArtists);
}

template <typename Archive>
void fields(Archive& io, media::ReplayGain& value) {
  io(value.trackGain, value.trackPeak, value.albumGain, value.albumPeak);
}

template <typename Archive>
void fields(Archive& io, media::SongTags& value) {
  io(value.title, value.album, value.artists, value.albumArtists, value.composers, value.conductors,
     value.lyricists, value.performers, value.genres);
  io(value.titleSort, value.albumSort, value.artistSorts, value.albumArtistSorts,
     value.composerSorts);
  io(value.track, value.trackTotal, value.disc, value.discTotal, value.date, value.originalDate,
     value.releaseDate, value.comments, value.hasLyrics, value.lyricsLanguage, value.languages);
  io(value.musicBrainz, value.acoustId, value.isrcs, value.labels, value.catalogNumbers,
     value.barcode, value.copyright, value.encoder, value.encodedBy);
  io(value.beatsPerMinute, value.key, value.moods, value.replayGain, value.rating,
     value.isCompilation, value.isGapless, value.isPodcast, value.covers, value.chapters);
  checkTagValues(io, value);
}

template <typename Archive>
void fields(Archive& io, media::DiscKind& value) {
  io.enumerator(value, media::DiscKind::kBluray);
}

template <typename Archive>
void fields(Archive& io, media::DiscTitle& value) {
  io(value.source, value.duration, value.chapterCount, value.chapters, value.angles,
     value.audioLanguages, value.subtitleLanguages, value.streams);
}

template <typename Archive>
void fields(Archive& io, media::DvdTitle& value) {
  io(value.titleSet, value.numberInSet, value.chapterCount, value.angles);
}

template <typename Archive>
void fields(Archive& io, media::DvdTitleSet& value) {
  io(value.number, value.longestChain, value.titles);
}

void check(Encoder& /*io*/, const media::DiscIndex& /*value*/) {}
void check(Decoder& io, const media::DiscIndex& value) {
  if (!isValid(value)) io.fail();
}

template <typename Archive>
void fields(Archive& io, media::DiscIndex& value) {
  io(value.kind, value.dvdTitles, value.titleSets, value.playlists, value.mainFile,
     value.isIncomplete);
  check(io, value);
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
     query.transportPackets, query.moovPosition, query.dsfTags, query.recognition, query.content,
     query.fingerprint, query.songTags, query.discIndex, query.discImage, query.photoTags,
     query.keyFrameAt, query.reportedKeyFrameAt);
}

template <typename Archive>
void fields(Archive& io, read::Findings& value) {
  io(value.failure, value.bytesRead, value.container, value.picture, value.mp4SubFormat,
     value.transportPackets);
  io.trace(value.transportPacketsTrace);
  io(value.moovPosition, value.dsfTags, value.recognition, value.keyFrameTime, value.songTags);
  io.trace(value.keyFrameTrace);
  io(value.photoTags, value.disc, value.content);
  texts(io, value.fingerprint);
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
