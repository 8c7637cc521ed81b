#include <tstring.h>

#include <algorithm>
#include <array>
#include <string>

#include "base/bytes.h"
#include "base/text.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kGuid = 16;
constexpr std::size_t kObjectHeader = kGuid + 8;
constexpr std::size_t kFileHeader = kObjectHeader + 6;

constexpr std::string_view kDescription =
    "\x33\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
constexpr std::string_view kExtendedDescription =
    "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50"sv;
constexpr std::string_view kExtension =
    "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65"sv;
constexpr std::string_view kMetadata =
    "\xEA\xCB\xF8\xC5\xAF\x5B\x77\x48\x84\x67\xAA\x8C\x44\xFA\x4C\xCA"sv;
constexpr std::string_view kMetadataLibrary =
    "\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54"sv;

// The attributes and the names for SongTagBuilder, which knows many of them without "WM/", too.
struct AttributeRow {
  std::string_view attribute;
  std::string_view name;
};

constexpr auto kAttributes = std::to_array<AttributeRow>({
    {"Title", "TITLE"},
    {"Author", "ARTIST"},
    {"Copyright", "COPYRIGHT"},
    {"Description", "COMMENT"},
    {"WM/AlbumTitle", "ALBUM"},
    {"WM/AlbumArtist", "ALBUMARTIST"},
    {"WM/Composer", "COMPOSER"},
    {"WM/Conductor", "CONDUCTOR"},
    {"WM/Writer", "LYRICIST"},
    {"WM/ModifiedBy", "REMIXER"},
    {"WM/Producer", "PRODUCER"},
    {"WM/Genre", "GENRE"},
    {"WM/TrackNumber", "TRACKNUMBER"},
    {"WM/PartOfSet", "DISCNUMBER"},
    {"WM/Year", "DATE"},
    {"WM/OriginalReleaseTime", "ORIGINALDATE"},
    {"WM/OriginalReleaseYear", "ORIGINALDATE"},
    {"WM/Language", "LANGUAGE"},
    {"WM/Publisher", "LABEL"},
    {"WM/ISRC", "ISRC"},
    {"WM/CatalogNo", "CATALOGNUMBER"},
    {"WM/Barcode", "BARCODE"},
    {"WM/EncodedBy", "ENCODEDBY"},
    {"WM/EncodingSettings", "ENCODER"},
    {"WM/ToolName", "ENCODER"},
    {"WM/BeatsPerMinute", "BPM"},
    {"WM/InitialKey", "INITIALKEY"},
    {"WM/Mood", "MOOD"},
    {"WM/Lyrics", "LYRICS"},
    {"WM/IsCompilation", "COMPILATION"},
    {"WM/TitleSortOrder", "TITLESORT"},
    {"WM/AlbumSortOrder", "ALBUMSORT"},
    {"WM/ArtistSortOrder", "ARTISTSORT"},
    {"WM/AlbumArtistSortOrder", "ALBUMARTISTSORT"},
    {"WM/ComposerSortOrder", "COMPOSERSORT"},
    {"WM/SharedUserRating", "WINDOWSRATING"},
});

std::string utf16(Bytes bytes) {
  const auto size = static_cast<unsigned>(bytes.size() / 2 * 2);
  const TagLib::ByteVector text(reinterpret_cast<const char*>(bytes.data()), size);
  return TagLib::String(text, TagLib::String::UTF16LE).to8Bit(true);
}

// Two characters of zero end a text.
std::size_t sizeOfText(Bytes bytes) {
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    if (bytes[i] == 0 && bytes[i + 1] == 0) return i;
  return bytes.size();
}

// The numbers of types are those of the format.
enum Type : std::uint64_t {
  kUnicode = 0,
  kBytes = 1,
  kBool = 2,
  kFirstNumber = 2,
  kLastNumber = 5
};

// A number for its type, a size, a MIME type and a description in UTF-16, and the picture.
void addPicture(Bytes head, std::uint64_t size, SongTagBuilder& builder) {
  constexpr std::size_t kFixed = 5;
  if (head.size() < kFixed) return;
  ByteReader reader(head);
  const auto type = static_cast<std::uint32_t>(reader.littleEndian(1));
  const std::uint64_t bytes = reader.littleEndian(4);
  const auto text = [&] {
    const Bytes rest = head.subspan(reader.position());
    const std::size_t length = sizeOfText(rest);
    std::string value = utf16(rest.first(length));
    reader.skip(length + 2);
    return value;
  };
  const std::string mimeType = text();
  const std::string description = text();
  if (reader.failed() || bytes > size - reader.position()) return;
  const Bytes picture = head.subspan(reader.position());
  builder.addCover(mimeType, media::coverTypeName(type), description,
                   picture.first(std::min(picture.size(), kCoverHead)), bytes);
}

void addAttribute(TagBytes& object, std::string_view attribute, std::uint64_t type,
                  std::int64_t position, std::uint64_t size, SongTagBuilder& builder) {
  constexpr std::uint64_t kDescriptionAndHead = kCoverHead + 4096;
  if (attribute == "WM/Picture") {
    if (type == kBytes)
      addPicture(object.at(position, std::min(size, kDescriptionAndHead)), size, builder);
    return;
  }
  const auto row = std::ranges::find_if(kAttributes, [&](const AttributeRow& each) {
    return equalsIgnoringCase(each.attribute, attribute);
  });
  const std::string_view name = row != kAttributes.end() ? row->name : attribute;
  if (type == kUnicode) {
    builder.add(name, utf16(object.at(position, std::min<std::uint64_t>(size, kLongestEntry))));
  } else if (type >= kFirstNumber && type <= kLastNumber && size <= sizeof(std::uint64_t)) {
    const auto bytes = object.at(position, size);
    builder.add(name, std::to_string(ByteReader(bytes).littleEndian(bytes.size())));
  }
}

// Five texts, whose sizes stand before them.
void addDescription(TagBytes object, SongTagBuilder& builder) {
  constexpr auto kNames =
      std::to_array<std::string_view>({"TITLE", "ARTIST", "COPYRIGHT", "COMMENT", ""});
  constexpr std::size_t kSizes = kNames.size() * 2;
  const auto sizes = object.at(0, kSizes);
  ByteReader reader(sizes);
  std::int64_t position = kSizes;
  for (const std::string_view name : kNames) {
    const std::uint64_t size = reader.littleEndian(2);
    builder.add(name, utf16(object.at(position, size)));
    position += static_cast<std::int64_t>(size);
  }
}

// The attributes of one song, or those that belong to a stream or a language.
struct Layout {
  bool hasStream;  // and a language before it
  std::size_t header;
  std::size_t sizeBytes;
};

constexpr Layout kShort = {.hasStream = false, .header = 2, .sizeBytes = 2};
constexpr Layout kLong = {.hasStream = true, .header = 12, .sizeBytes = 4};

void addAttributes(TagBytes object, const Layout& layout, SongTagBuilder& builder) {
  constexpr std::size_t kLongestName = 512;
  const auto count = object.at(0, 2);
  const auto most = std::min<std::uint64_t>(ByteReader(count).littleEndian(2), kMostEntries);
  std::int64_t position = 2;
  for (std::uint64_t i = 0; i < most; ++i) {
    const auto header = object.at(position, layout.header);
    ByteReader reader(header);
    if (layout.hasStream) reader.skip(4);
    const std::uint64_t nameSize = reader.littleEndian(2);
    // Of the short form, type and size follow the name.
    std::uint64_t type = layout.hasStream ? reader.littleEndian(2) : 0;
    std::uint64_t size = layout.hasStream ? reader.littleEndian(layout.sizeBytes) : 0;
    if (reader.failed()) return;
    position += static_cast<std::int64_t>(layout.header);
    auto name = object.at(position, std::min<std::uint64_t>(nameSize, kLongestName));
    position += static_cast<std::int64_t>(nameSize);
    if (!layout.hasStream) {
      const auto numbers = object.at(position, 2 + layout.sizeBytes);
      ByteReader rest(numbers);
      type = rest.littleEndian(2);
      size = rest.littleEndian(layout.sizeBytes);
      if (rest.failed()) return;
      position += static_cast<std::int64_t>(2 + layout.sizeBytes);
    }
    name.resize(sizeOfText(name));
    addAttribute(object, utf16(name), type, position, size, builder);
    position += static_cast<std::int64_t>(size);
  }
}

// Where the tags are. Several values of an attribute begin in the extended description and go on in
// the library, which may stand before it.
struct Objects {
  std::vector<Range> descriptions;
  std::vector<Range> attributes;
  std::vector<Range> libraries;
};

void find(TagFile& file, const Range& range, bool isExtension, Objects& found) {
  constexpr std::int64_t kExtensionHeader = 22;
  std::int64_t position = range.begin;
  for (int i = 0; i < kMostEntries; ++i) {
    const auto header = file.read(range.part(position, kObjectHeader), kObjectHeader);
    ByteReader reader(header);
    const std::string_view guid = reader.text(kGuid);
    const std::uint64_t size = reader.littleEndian(8);
    if (reader.failed() || size < kObjectHeader) return;
    const Range content =
        range.part(position + static_cast<std::int64_t>(kObjectHeader), size - kObjectHeader);
    if (guid == kDescription)
      found.descriptions.push_back(content);
    else if (guid == kExtendedDescription)
      found.attributes.push_back(content);
    else if (guid == kMetadata || guid == kMetadataLibrary)
      found.libraries.push_back(content);
    else if (guid == kExtension && !isExtension)
      find(file, content.part(content.begin + kExtensionHeader, size), true, found);
    position = content.end;
  }
}

}  // namespace

void addAsf(TagFile& file, SongTagBuilder& builder) {
  ByteReader reader(file.head());
  reader.skip(kGuid);
  const std::uint64_t size = reader.littleEndian(8);
  const Range whole = {.begin = 0, .end = file.size()};
  if (reader.failed() || size < kFileHeader) return;
  builder.beginTag();
  Objects found;
  find(file, whole.part(kFileHeader, size - kFileHeader), false, found);
  // There is one of each in sound files.
  constexpr std::size_t kMostOfEach = 4;
  const auto forEach = [&](const std::vector<Range>& ranges, auto use) {
    for (std::size_t i = 0; i < std::min(ranges.size(), kMostOfEach); ++i)
      use(TagBytes(file, ranges[i]));
  };
  forEach(found.descriptions, [&](TagBytes bytes) { addDescription(std::move(bytes), builder); });
  forEach(found.attributes,
          [&](TagBytes bytes) { addAttributes(std::move(bytes), kShort, builder); });
  forEach(found.libraries,
          [&](TagBytes bytes) { addAttributes(std::move(bytes), kLong, builder); });
}

}  // namespace kolum::tags
