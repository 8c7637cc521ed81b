#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "read/headers/id3v2.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

using namespace std::string_view_literals;

struct TextRow {
  std::string_view id;
  std::string_view name;
};

// The texts of WAV's "INFO" list, AIFF's chunks, and the names for SongTagBuilder.
constexpr auto kTexts = std::to_array<TextRow>({
    {"INAM", "TITLE"},       {"IPRD", "ALBUM"},       {"IART", "ARTIST"},     {"IMUS", "COMPOSER"},
    {"IWRI", "WRITER"},      {"IPRO", "PRODUCER"},    {"IENG", "ENGINEER"},   {"IGNR", "GENRE"},
    {"IPRT", "TRACKNUMBER"}, {"ITRK", "TRACKNUMBER"}, {"IFRM", "TRACKTOTAL"}, {"ICRD", "DATE"},
    {"ICMT", "COMMENT"},     {"ILNG", "LANGUAGE"},    {"ICOP", "COPYRIGHT"},  {"ISFT", "ENCODER"},
    {"ITCH", "ENCODEDBY"},   {"IBPM", "BPM"},         {"ISRC", "ISRC"},       {"NAME", "TITLE"},
    {"AUTH", "ARTIST"},      {"ANNO", "COMMENT"},     {"(c) ", "COPYRIGHT"},
});

struct Layout {
  std::string_view magic;
  std::string_view type;
  bool isBigEndian;
  std::size_t sizeBytes;
};

constexpr auto kLayouts = std::to_array<Layout>({
    {"RIFF", "WAVE", false, 4},
    {"RF64", "WAVE", false, 4},
    {"BW64", "WAVE", false, 4},
    {"FORM", "AIFF", true, 4},
    {"FORM", "AIFC", true, 4},
    {"FRM8", "DSD ", true, 8},
});

constexpr std::size_t kId = 4;

struct Chunk {
  std::string id;
  Range content;
};

class Chunks {
 public:
  Chunks(TagFile& file, const Layout& layout, SongTagBuilder& builder)
      : file_(file), layout_(layout), builder_(builder) {}

  void addAll();

 private:
  template <typename Use>
  void forEach(const Range& range, Use use);
  void addText(const Chunk& chunk);
  void addDiscText(const Chunk& chunk);
  void note(const Chunk& chunk);
  bool isList(const Chunk& chunk, std::string_view type);

  TagFile& file_;
  const Layout& layout_;
  SongTagBuilder& builder_;
  std::uint64_t largeSize_ = 0;  // of the sound, in RF64
  std::vector<Range> tags_;
  std::vector<Chunk> texts_;
  std::vector<Range> lists_;
};

template <typename Use>
void Chunks::forEach(const Range& range, Use use) {
  constexpr std::uint64_t kElsewhere = 0xFFFFFFFF;
  const std::size_t headerSize = kId + layout_.sizeBytes;
  std::int64_t position = range.begin;
  for (int i = 0; i < kMostEntries && position < range.end; ++i) {
    const auto header = file_.read(range.part(position, headerSize), headerSize);
    ByteReader reader(header);
    Chunk chunk;
    chunk.id = reader.text(kId);
    std::uint64_t size = layout_.isBigEndian ? reader.bigEndian(layout_.sizeBytes)
                                             : reader.littleEndian(layout_.sizeBytes);
    if (reader.failed()) return;
    if (chunk.id == "data" && size == kElsewhere && largeSize_ > 0) size = largeSize_;
    chunk.content = range.part(position + static_cast<std::int64_t>(headerSize), size);
    use(chunk);
    position = chunk.content.end + chunk.content.size() % 2;
  }
}

bool Chunks::isList(const Chunk& chunk, std::string_view type) {
  return chunk.id == "LIST" && textOf(file_.read(chunk.content, kId)) == type;
}

void Chunks::note(const Chunk& chunk) {
  constexpr std::int64_t kCountSize = 8;
  if (chunk.id == "ID3 " || chunk.id == "id3 ") {
    tags_.push_back(chunk.content);
  } else if (chunk.id == "ds64") {
    const auto sizes = file_.read(chunk.content, 16);
    ByteReader reader(sizes);
    reader.skip(kCountSize);
    largeSize_ = reader.littleEndian(8);
  } else if (isList(chunk, "INFO")) {
    lists_.push_back(chunk.content.part(chunk.content.begin + static_cast<std::int64_t>(kId),
                                        static_cast<std::uint64_t>(chunk.content.size())));
  } else if (chunk.id == "DIIN") {
    lists_.push_back(chunk.content);
  } else if (layout_.magic == "FORM") {
    texts_.push_back(chunk);
  }
}

void Chunks::addText(const Chunk& chunk) {
  const auto row = std::ranges::find(kTexts, chunk.id, &TextRow::id);
  if (row == kTexts.end()) return;
  const auto bytes = file_.read(chunk.content, kLongestEntry);
  // Padded with zeros; behind the first there may be anything.
  const std::string_view text = textOf(bytes);
  builder_.add(row->name, utf8Of(text.substr(0, text.find('\0'))));
}

// DSDIFF counts a text's letters before it.
void Chunks::addDiscText(const Chunk& chunk) {
  const std::string_view name = chunk.id == "DITI" ? "TITLE" : chunk.id == "DIAR" ? "ARTIST" : "";
  if (name.empty()) return;
  const auto bytes = file_.read(chunk.content, kLongestEntry);
  ByteReader reader(bytes);
  const std::uint64_t count = reader.bigEndian(4);
  builder_.add(name, utf8Of(reader.text(std::min<std::uint64_t>(count, reader.left()))));
}

void Chunks::addAll() {
  const auto begin = static_cast<std::int64_t>(kId + layout_.sizeBytes + layout_.type.size());
  forEach({.begin = begin, .end = file_.size()}, [this](const Chunk& chunk) { note(chunk); });
  for (const Range& tag : tags_) addId3v2(file_, tag, builder_);
  builder_.beginTag();
  for (const Chunk& chunk : texts_) addText(chunk);
  for (const Range& list : lists_)
    forEach(list, [this](const Chunk& chunk) {
      if (layout_.magic == "FRM8")
        addDiscText(chunk);
      else
        addText(chunk);
    });
}

}  // namespace

bool addChunks(TagFile& file, SongTagBuilder& builder) {
  const std::string_view head = textOf(file.head());
  const auto layout = std::ranges::find_if(kLayouts, [head](const Layout& row) {
    return head.starts_with(row.magic) &&
           head.substr(std::min(head.size(), kId + row.sizeBytes)).starts_with(row.type);
  });
  if (layout == kLayouts.end()) return false;
  Chunks(file, *layout, builder).addAll();
  return true;
}

void addDsf(TagFile& file, SongTagBuilder& builder) {
  const std::int64_t begin = headers::dsfTagPosition(file.head());
  if (begin > 0)
    addId3v2(file, Range{.begin = 0, .end = file.size()}.part(begin, INT64_MAX), builder);
}

}  // namespace kolum::tags
