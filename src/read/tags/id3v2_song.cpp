#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <popularimeterframe.h>
#include <textidentificationframe.h>
#include <uniquefileidentifierframe.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "read/headers/id3v2.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

using namespace std::string_view_literals;

// The frames of texts: versions 3 and 4, version 2, and the name for SongTagBuilder.
struct FrameRow {
  std::string_view id;
  std::string_view shortId;
  std::string_view name;
};

constexpr auto kFrames = std::to_array<FrameRow>({
    {"TIT2", "TT2", "TITLE"},
    {"TALB", "TAL", "ALBUM"},
    {"TPE1", "TP1", "ARTIST"},
    {"TPE2", "TP2", "ALBUMARTIST"},
    {"TPE3", "TP3", "CONDUCTOR"},
    {"TPE4", "TP4", "REMIXER"},
    {"TCOM", "TCM", "COMPOSER"},
    {"TEXT", "TXT", "LYRICIST"},
    {"TCON", "TCO", "GENRE"},
    {"TRCK", "TRK", "TRACKNUMBER"},
    {"TPOS", "TPA", "DISCNUMBER"},
    {"TDRC", "", "DATE"},
    {"TDOR", "", "ORIGINALDATE"},
    {"TORY", "TOR", "ORIGINALDATE"},
    {"TDRL", "", "RELEASEDATE"},
    {"TLAN", "TLA", "LANGUAGE"},
    {"TSRC", "TRC", "ISRC"},
    {"TPUB", "TPB", "LABEL"},
    {"TCOP", "TCR", "COPYRIGHT"},
    {"TENC", "TEN", "ENCODEDBY"},
    {"TSSE", "TSS", "ENCODER"},
    {"TBPM", "TBP", "BPM"},
    {"TKEY", "TKE", "INITIALKEY"},
    {"TMOO", "", "MOOD"},
    {"TCMP", "TCP", "COMPILATION"},
    {"TSOT", "TST", "TITLESORT"},
    {"TSOA", "TSA", "ALBUMSORT"},
    {"TSOP", "TSP", "ARTISTSORT"},
    {"TSO2", "TS2", "ALBUMARTISTSORT"},
    {"TSOC", "TSC", "COMPOSERSORT"},
    // As version 3 had them before version 4 named them.
    {"XSOT", "", "TITLESORT"},
    {"XSOA", "", "ALBUMSORT"},
    {"XSOP", "", "ARTISTSORT"},
});

enum class FrameKind {
  kNamedText,
  kComment,
  kLyrics,
  kPicture,
  kIdentifier,
  kPopularity,
  kVolume,
  kPeople,
  kChapter,
  kPodcast,
  kYear,
  kDay,
  kTime,
};

struct KindRow {
  std::string_view id;
  std::string_view shortId;
  FrameKind kind;
};

constexpr auto kKinds = std::to_array<KindRow>({
    {"TXXX", "TXX", FrameKind::kNamedText},
    {"COMM", "COM", FrameKind::kComment},
    {"USLT", "ULT", FrameKind::kLyrics},
    {"SYLT", "SLT", FrameKind::kLyrics},
    {"APIC", "PIC", FrameKind::kPicture},
    {"UFID", "UFI", FrameKind::kIdentifier},
    {"POPM", "POP", FrameKind::kPopularity},
    {"RVA2", "", FrameKind::kVolume},
    {"TIPL", "IPL", FrameKind::kPeople},
    {"IPLS", "", FrameKind::kPeople},
    {"TMCL", "", FrameKind::kPeople},
    {"CHAP", "", FrameKind::kChapter},
    {"PCST", "PCS", FrameKind::kPodcast},
    {"TYER", "TYE", FrameKind::kYear},
    {"TDAT", "TDA", FrameKind::kDay},
    {"TIME", "TIM", FrameKind::kTime},
});

template <typename Row>
const Row* rowOf(std::span<const Row> rows, std::string_view id) {
  const auto row = std::ranges::find_if(
      rows, [id](const Row& each) { return each.id == id || each.shortId == id; });
  return row != rows.end() ? &*row : nullptr;
}

std::int64_t synchSafe(std::uint64_t number) {
  std::int64_t value = 0;
  for (int shift = 24; shift >= 0; shift -= 8)
    value = value << 7 | static_cast<std::int64_t>(number >> shift & 0x7F);
  return value;
}

bool isIdCharacter(std::uint8_t c) {
  return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Undoes what keeps players from taking a tag for sound: a zero behind each 0xFF.
std::vector<std::uint8_t> synchronized(Bytes bytes) {
  std::vector<std::uint8_t> plain;
  plain.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (i == 0 || bytes[i] != 0 || bytes[i - 1] != 0xFF) plain.push_back(bytes[i]);
  return plain;
}

struct Frame {
  std::string id;
  std::int64_t begin = 0;  // of the content
  std::int64_t size = 0;
  bool isUnsynchronized = false;
  bool isReadable = true;  // neither compressed nor encrypted
};

class Frames {
 public:
  Frames(TagBytes& bytes, unsigned version, bool areUnsynchronized)
      : bytes_(bytes), version_(version), areUnsynchronized_(areUnsynchronized) {}

  // The next frame; empty at the end, and where no frame can be.
  std::optional<Frame> next();
  // The first bytes of the content. SIZE becomes that of all of it.
  std::vector<std::uint8_t> content(const Frame& frame, std::size_t most, std::uint64_t& size);

 private:
  std::size_t idSize() const { return version_ == 2 ? 3 : 4; }
  bool isEndOrFrameAt(std::int64_t position);
  std::int64_t sizeOf(std::uint64_t stored);
  void readFlags(unsigned flags, Frame& frame) const;

  TagBytes& bytes_;
  unsigned version_;
  bool areUnsynchronized_;
  std::int64_t position_ = 0;
  int count_ = 0;
};

bool Frames::isEndOrFrameAt(std::int64_t position) {
  if (position == bytes_.size()) return true;
  const auto id = bytes_.at(position, 4);
  return id.size() == 4 && (id[0] == 0 || std::ranges::all_of(id, isIdCharacter));
}

// Version 4 has seven bits in a byte; iTunes wrote eight.
std::int64_t Frames::sizeOf(std::uint64_t stored) {
  constexpr std::uint64_t kHighBits = 0x80808080;
  constexpr std::uint64_t kSame = 0x7F;
  constexpr std::int64_t kHeader = 10;
  const auto plain = static_cast<std::int64_t>(stored);
  if (version_ != 4 || stored <= kSame) return plain;
  if ((stored & kHighBits) != 0) return plain;
  const std::int64_t size = synchSafe(stored);
  const std::int64_t begin = position_ + kHeader;
  return !isEndOrFrameAt(begin + size) && isEndOrFrameAt(begin + plain) ? plain : size;
}

void Frames::readFlags(unsigned flags, Frame& frame) const {
  struct Flags {
    unsigned compressedOrEncrypted;
    unsigned grouped;
    unsigned unsynchronized;
    unsigned hasLength;
  };
  constexpr Flags kVersion3 = {0xC0, 0x20, 0, 0};
  constexpr Flags kVersion4 = {0x0C, 0x40, 0x02, 0x01};
  constexpr int kLengthSize = 4;
  const Flags& meaning = version_ == 4 ? kVersion4 : kVersion3;
  frame.isReadable = (flags & meaning.compressedOrEncrypted) == 0;
  frame.isUnsynchronized = (flags & meaning.unsynchronized) != 0 || areUnsynchronized_;
  const int further = ((flags & meaning.grouped) != 0 ? 1 : 0) +
                      ((flags & meaning.hasLength) != 0 ? kLengthSize : 0);
  frame.begin += further;
  frame.size -= further;
}

std::optional<Frame> Frames::next() {
  const std::size_t headerSize = version_ == 2 ? 6 : 10;
  if (++count_ > kMostEntries) return std::nullopt;
  const auto header = bytes_.at(position_, headerSize);
  if (header.size() < headerSize) return std::nullopt;
  ByteReader reader(header);
  const auto id = reader.take(idSize());
  // iTunes ends version 2's names, where they are four letters long, with a zero.
  if (!std::ranges::all_of(id.first(3), isIdCharacter) ||
      !(isIdCharacter(id.back()) || id.back() == 0))
    return std::nullopt;
  Frame frame = {.id = std::string(textOf(id.back() == 0 ? id.first(3) : id))};
  frame.size = sizeOf(reader.bigEndian(idSize()));
  frame.begin = position_ + static_cast<std::int64_t>(headerSize);
  if (frame.size > bytes_.size() - frame.begin) return std::nullopt;
  position_ = frame.begin + frame.size;
  if (version_ > 2) {
    reader.skip(1);
    readFlags(static_cast<unsigned>(reader.bigEndian(1)), frame);
  }
  if (frame.size <= 0) frame.isReadable = false;
  return frame;
}

std::vector<std::uint8_t> Frames::content(const Frame& frame, std::size_t most,
                                          std::uint64_t& size) {
  size = static_cast<std::uint64_t>(frame.size);
  if (!frame.isUnsynchronized) return bytes_.at(frame.begin, std::min<std::uint64_t>(size, most));
  auto plain = synchronized(bytes_.at(frame.begin, size));
  size = plain.size();
  plain.resize(std::min(plain.size(), most));
  return plain;
}

// A frame as TagLib's classes take it: that of version 4.
TagLib::ByteVector frameOf(std::string_view id, Bytes content) {
  std::string frame(id);
  for (int shift = 21; shift >= 0; shift -= 7)
    frame += static_cast<char>(content.size() >> shift & 0x7F);
  frame += "\0\0"sv;
  frame += textOf(content);
  return {frame.data(), static_cast<unsigned>(frame.size())};
}

std::string_view viewOf(const TagLib::ByteVector& bytes) {
  return {bytes.data(), bytes.size()};
}

std::string decoded(const TagLib::String& text, TagLib::String::Type encoding) {
  return encoding == TagLib::String::Latin1 ? utf8Of(text.to8Bit(false)) : text.to8Bit(true);
}

std::vector<std::string> textsOf(const TagLib::ID3v2::TextIdentificationFrame& frame) {
  std::vector<std::string> texts;
  for (const auto& text : frame.fieldList()) {
    if (texts.size() >= media::kMostTagValues) break;
    texts.push_back(decoded(text, frame.textEncoding()));
  }
  return texts;
}

// TagLib takes the first byte for an encoding without a look.
bool hasEncoding(Bytes content) {
  return !content.empty() && content.front() <= TagLib::String::UTF8;
}

std::vector<std::string> textsOf(Bytes content) {
  if (!hasEncoding(content)) return {};
  return textsOf(TagLib::ID3v2::TextIdentificationFrame(frameOf("TIT2", content)));
}

std::string firstTextOf(Bytes content) {
  auto texts = textsOf(content);
  return texts.empty() ? std::string() : std::move(texts.front());
}

// Reads one tag.
class Reader {
 public:
  Reader(unsigned version, SongTagBuilder& builder) : version_(version), builder_(builder) {}

  void read(TagBytes& bytes, bool areUnsynchronized);

 private:
  void add(FrameKind kind, Bytes content, std::uint64_t size);
  void addNamedText(Bytes content);
  void addComment(Bytes content);
  void addPicture(Bytes content, std::uint64_t size);
  void addIdentifier(Bytes content);
  void addPeople(Bytes content);
  void addVolume(Bytes content);
  void addChapter(Bytes content);
  std::string chapterTitle(Bytes frames) const;
  void finish();

  // TagLib may need a hundred bytes for a byte of text.
  static constexpr std::size_t kMostText = std::size_t{4} << 20;
  // With its description.
  static constexpr std::size_t kPictureHead = kCoverHead + 4096;
  std::size_t textLeft() const {
    return std::min(kLongestEntry, kMostText - std::min(textRead_, kMostText));
  }

  unsigned version_;
  SongTagBuilder& builder_;
  std::size_t textRead_ = 0;
  // What depends on the whole tag.
  std::string describedComment_;
  std::vector<std::string> plainComments_;
  std::vector<std::pair<std::optional<double> media::ReplayGain::*, double>> volumes_;
  std::string year_;
  std::string day_;
  std::string time_;
};

void Reader::read(TagBytes& bytes, bool areUnsynchronized) {
  Frames frames(bytes, version_, areUnsynchronized);
  while (const auto frame = frames.next()) {
    if (!frame->isReadable) continue;
    std::uint64_t size = 0;
    if (const auto* text = rowOf<FrameRow>(kFrames, frame->id)) {
      for (const std::string& value : textsOf(frames.content(*frame, textLeft(), size)))
        builder_.add(text->name, value);
    } else if (const auto* kind = rowOf<KindRow>(kKinds, frame->id)) {
      const bool isPicture = kind->kind == FrameKind::kPicture;
      const auto content = frames.content(*frame, isPicture ? kPictureHead : textLeft(), size);
      add(kind->kind, content, size);
      if (isPicture) continue;
    } else {
      continue;
    }
    textRead_ += std::min<std::uint64_t>(size, kLongestEntry);
  }
  finish();
}

void Reader::add(FrameKind kind, Bytes content, std::uint64_t size) {
  switch (kind) {
    case FrameKind::kNamedText:
      return addNamedText(content);
    case FrameKind::kComment:
      return addComment(content);
    case FrameKind::kLyrics: {
      constexpr std::size_t kLanguage = 3;
      constexpr std::size_t kShortest = 6;
      if (content.size() >= kShortest) builder_.addLyrics(textOf(content.subspan(1, kLanguage)));
      return;
    }
    case FrameKind::kPicture:
      return addPicture(content, size);
    case FrameKind::kIdentifier:
      return addIdentifier(content);
    case FrameKind::kPopularity:
      return builder_.addPopularity(
          TagLib::ID3v2::PopularimeterFrame(frameOf("POPM", content)).rating());
    case FrameKind::kVolume:
      return addVolume(content);
    case FrameKind::kPeople:
      return addPeople(content);
    case FrameKind::kChapter:
      return addChapter(content);
    case FrameKind::kPodcast:
      return builder_.add("PODCAST", "1");
    case FrameKind::kYear:
      year_ = firstTextOf(content);
      return;
    case FrameKind::kDay:
      day_ = firstTextOf(content);
      return;
    case FrameKind::kTime:
      time_ = firstTextOf(content);
      return;
  }
}

void Reader::addNamedText(Bytes content) {
  if (!hasEncoding(content)) return;
  const TagLib::ID3v2::UserTextIdentificationFrame frame(frameOf("TXXX", content));
  const auto texts = textsOf(frame);
  for (std::size_t i = 1; i < texts.size(); ++i) builder_.add(texts.front(), texts[i]);
}

// Programs keep values of their own in comments with a description.
void Reader::addComment(Bytes content) {
  if (!hasEncoding(content)) return;
  const TagLib::ID3v2::CommentsFrame frame(frameOf("COMM", content));
  const std::string description = decoded(frame.description(), frame.textEncoding());
  const std::string text = decoded(frame.text(), frame.textEncoding());
  if (description.empty())
    plainComments_.push_back(text);
  else if (description.starts_with("iTun"))
    builder_.add(description, text);
  else if (describedComment_.empty())
    describedComment_ = text;
}

void Reader::addPicture(Bytes content, std::uint64_t size) {
  if (!hasEncoding(content)) return;
  std::string widened;
  if (version_ == 2) {
    // Three letters instead of a MIME type.
    constexpr std::size_t kLetters = 3;
    if (content.size() < 1 + kLetters) return;
    const std::string_view text = textOf(content);
    const std::string_view letters = text.substr(1, kLetters);
    const std::string type = letters == "JPG"   ? "image/jpeg"
                             : letters == "-->" ? "-->"
                                                : "image/" + std::string(letters);
    widened = std::string(text.substr(0, 1)) + type + '\0' + std::string(text.substr(1 + kLetters));
    size += widened.size() - content.size();
    content = Bytes(reinterpret_cast<const std::uint8_t*>(widened.data()), widened.size());
  }
  // TagLib takes any number for a type.
  const std::size_t mimeTypeEnd = textOf(content).find('\0', 1);
  if (mimeTypeEnd >= content.size() - 1) return;
  const std::uint32_t type = content[mimeTypeEnd + 1];
  const TagLib::ID3v2::AttachedPictureFrame frame(frameOf("APIC", content));
  const TagLib::ByteVector picture = frame.picture();
  if (picture.isEmpty()) return;
  const Bytes head(reinterpret_cast<const std::uint8_t*>(picture.data()), picture.size());
  builder_.addCover(frame.mimeType().to8Bit(true), media::coverTypeName(type),
                    decoded(frame.description(), frame.textEncoding()),
                    head.first(std::min(head.size(), kCoverHead)),
                    size - (content.size() - picture.size()));
}

void Reader::addIdentifier(Bytes content) {
  const TagLib::ID3v2::UniqueFileIdentifierFrame frame(frameOf("UFID", content));
  if (frame.owner() == "http://musicbrainz.org")
    builder_.add("MUSICBRAINZ_TRACKID", viewOf(frame.identifier()));
}

// Roles and names in turn.
void Reader::addPeople(Bytes content) {
  const auto texts = textsOf(content);
  for (std::size_t i = 0; i + 1 < texts.size(); i += 2)
    builder_.addPerformer(texts[i + 1], texts[i]);
}

// A name, and for each channel its number, steps of 1/512 dB, and a peak of so many bits. (TagLib
// takes any number for a channel.)
void Reader::addVolume(Bytes content) {
  using media::ReplayGain;
  constexpr std::uint64_t kMaster = 1;
  constexpr double kSteps = 512;
  const std::size_t name = textOf(content).find('\0');
  if (name == std::string_view::npos) return;
  const bool isAlbum = textOf(content).starts_with("album\0"sv);
  if (!isAlbum && !textOf(content).starts_with("track\0"sv)) return;
  ByteReader reader(content.subspan(name + 1));
  while (reader.left() > 0) {
    const std::uint64_t channel = reader.bigEndian(1);
    const auto steps = static_cast<std::int16_t>(reader.bigEndian(2));
    const auto bits = static_cast<std::size_t>(reader.bigEndian(1));
    const Bytes peak = reader.take((bits + 7) / 8);
    if (reader.failed()) return;
    if (channel != kMaster) continue;
    volumes_.emplace_back(isAlbum ? &ReplayGain::albumGain : &ReplayGain::trackGain,
                          steps / kSteps);
    if (bits == 0) continue;
    double value = 0;
    for (const std::uint8_t byte : peak) value = value * 256 + byte;
    volumes_.emplace_back(isAlbum ? &ReplayGain::albumPeak : &ReplayGain::trackPeak,
                          std::ldexp(value, 1 - static_cast<int>(bits)));
  }
}

// A name, four numbers (times in milliseconds and positions), and frames.
void Reader::addChapter(Bytes content) {
  constexpr std::uint64_t kUnknown = 0xFFFFFFFF;
  constexpr double kMilliseconds = 1000;
  constexpr std::size_t kPositions = 8;
  const std::size_t name = textOf(content).find('\0');
  if (name == std::string_view::npos) return;
  ByteReader reader(content.subspan(name + 1));
  const std::uint64_t start = reader.bigEndian(4);
  const std::uint64_t end = reader.bigEndian(4);
  reader.skip(kPositions);
  if (reader.failed() || start == kUnknown) return;
  builder_.addChapter(
      static_cast<double>(start) / kMilliseconds,
      end != kUnknown ? std::optional(static_cast<double>(end) / kMilliseconds) : std::nullopt,
      chapterTitle(reader.take(reader.left())));
}

std::string Reader::chapterTitle(Bytes bytes) const {
  constexpr int kMostFrames = 16;
  TagBytes memory(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
  Frames frames(memory, version_, false);
  for (int i = 0; i < kMostFrames; ++i) {
    const auto frame = frames.next();
    if (!frame) break;
    std::uint64_t size = 0;
    if (frame->isReadable && frame->id == "TIT2")
      return firstTextOf(frames.content(*frame, kLongestEntry, size));
  }
  return {};
}

void Reader::finish() {
  for (const std::string& comment : plainComments_) builder_.add("COMMENT", comment);
  if (plainComments_.empty()) builder_.add("COMMENT", describedComment_);
  for (const auto& [field, value] : volumes_) builder_.addGain(field, value);
  // Day and month, hour and minute: four digits each.
  constexpr std::size_t kDigits = 4;
  if (day_.size() == kDigits) {
    year_ += "-" + day_.substr(2) + "-" + day_.substr(0, 2);
    if (time_.size() == kDigits) year_ += "T" + time_.substr(0, 2) + ":" + time_.substr(2);
  }
  builder_.add("DATE", year_);
}

// The end of the extended header.
std::int64_t framesBegin(TagBytes& body, unsigned version) {
  constexpr std::int64_t kSizeField = 4;
  const auto bytes = body.at(0, kSizeField);
  const std::uint64_t stored = ByteReader(bytes).bigEndian(4);
  const std::int64_t size =
      version == 4 ? synchSafe(stored) : static_cast<std::int64_t>(stored) + kSizeField;
  return std::min(size, body.size());
}

}  // namespace

std::int64_t addId3v2(TagFile& file, const Range& range, SongTagBuilder& builder) {
  constexpr std::int64_t kHeaderSize = 10;
  constexpr unsigned kUnsynchronized = 0x80;
  constexpr unsigned kExtended = 0x40;  // "compressed" in version 2
  constexpr unsigned kFooter = 0x10;
  const auto header = file.read(range, kHeaderSize);
  const std::int64_t size = headers::id3v2Size(header);
  if (size == 0) return range.begin;
  const unsigned version = header[3];
  const unsigned flags = header[5];
  const std::int64_t end = range.begin + size;
  if (version < 2 || version > 4 || (version == 2 && (flags & kExtended) != 0)) return end;
  builder.beginTag();
  const std::int64_t footer = version == 4 && (flags & kFooter) != 0 ? kHeaderSize : 0;
  Range body = range.part(range.begin + kHeaderSize,
                          static_cast<std::uint64_t>(size - kHeaderSize - footer));
  const bool isUnsynchronized = (flags & kUnsynchronized) != 0;
  // Version 4 does it frame by frame.
  const bool isWhole = isUnsynchronized && version < 4;
  TagBytes bytes =
      isWhole ? TagBytes(synchronized(file.read(body, kLargestPiece))) : TagBytes(file, body);
  if ((flags & kExtended) != 0) {
    const std::int64_t begin = framesBegin(bytes, version);
    if (isWhole) {
      bytes = TagBytes(bytes.at(begin, kLargestPiece));
    } else {
      body.begin += begin;
      bytes = TagBytes(file, body);
    }
  }
  Reader(version, builder).read(bytes, isUnsynchronized && version == 4);
  return end;
}

}  // namespace kolum::tags
