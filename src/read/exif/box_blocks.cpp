// Containers that are made of boxes: HEIF with its relatives, JPEG XL.
#include <brotli/decode.h>

#include <algorithm>
#include <map>
#include <memory>
#include <new>
#include <string_view>

#include "base/bytes.h"
#include "read/exif/blocks.h"
#include "read/exif/boxes.h"
#include "read/exif/orientation.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

using Span = std::span<const std::uint8_t>;

// Photos have some dozens: tiles, thumbnails, depth maps.
constexpr std::size_t kMostItems = 4096;

struct Extent {
  bool isInMetaBox = false;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

struct Item {
  std::string type;
  std::string contentType;
  std::optional<Extent> extent;  // if it is in one piece
  std::vector<std::size_t> properties;
};

struct Property {
  std::string type;
  Span content;
};

// What a meta box says.
struct Items {
  std::map<std::uint64_t, Item> items;
  std::vector<Property> properties;
  std::uint64_t primary = 0;
  Span data;  // "idat"
};

std::string_view textUpToZero(ByteReader& reader, Span whole) {
  const std::string_view rest = textOf(whole).substr(std::min(reader.position(), whole.size()));
  const std::string_view text = rest.substr(0, rest.find('\0'));
  reader.skip(text.size() + 1);
  return text;
}

void readItemEntry(Span content, Items& found) {
  ByteReader reader(content);
  const auto version = reader.bigEndian(1);
  reader.skip(3);
  if (version < 2) return;
  const auto id = reader.bigEndian(version == 2 ? 2 : 4);
  reader.skip(2);
  const std::string_view type = reader.text(4);
  if (reader.failed() || found.items.size() >= kMostItems) return;
  Item& item = found.items[id];
  item.type = type;
  textUpToZero(reader, content);  // its name
  if (type == "mime") item.contentType = textUpToZero(reader, content);
}

void readItemList(Span content, Items& found) {
  ByteReader reader(content);
  const auto version = reader.bigEndian(1);
  reader.skip(3 + (version == 0 ? 2 : 4));
  forEachBox(reader.take(reader.left()), [&](const Box& box) {
    if (box.type == "infe") readItemEntry(box.content, found);
  });
}

struct LocationSizes {
  std::size_t offset;
  std::size_t length;
  std::size_t base;
  std::size_t index;
};

// Empty unless there is one extent: tags are not stored in pieces.
std::optional<Extent> readExtents(ByteReader& reader, std::uint64_t base,
                                  const LocationSizes& sizes) {
  const auto count = reader.bigEndian(2);
  if (count != 1) {
    reader.skip(count * (sizes.index + sizes.offset + sizes.length));
    return std::nullopt;
  }
  reader.skip(sizes.index);
  Extent extent;
  const bool isTooFar =
      __builtin_add_overflow(reader.bigEndian(sizes.offset), base, &extent.offset);
  extent.size = reader.bigEndian(sizes.length);
  return isTooFar || reader.failed() ? std::nullopt : std::optional(extent);
}

void readLocations(Span content, Items& found) {
  ByteReader reader(content);
  const auto version = reader.bigEndian(1);
  reader.skip(3);
  const auto first = reader.bigEndian(1);
  const auto second = reader.bigEndian(1);
  const LocationSizes sizes = {.offset = first >> 4,
                               .length = first & 15U,
                               .base = second >> 4,
                               .index = version == 0 ? 0 : second & 15U};
  if (version > 2 || std::max({sizes.offset, sizes.length, sizes.base, sizes.index}) > 8) return;
  const std::size_t idSize = version == 2 ? 4 : 2;
  const auto count = std::min<std::uint64_t>(reader.bigEndian(idSize), kMostItems);
  for (std::uint64_t i = 0; i < count && !reader.failed(); ++i) {
    const auto id = reader.bigEndian(idSize);
    const auto method = version == 0 ? 0 : reader.bigEndian(2) & 15U;
    reader.skip(2);
    const auto base = reader.bigEndian(sizes.base);
    auto extent = readExtents(reader, base, sizes);
    const auto item = found.items.find(id);
    if (!extent || method > 1 || item == found.items.end()) continue;
    extent->isInMetaBox = method == 1;
    item->second.extent = extent;
  }
}

void readAssociations(Span content, Items& found) {
  ByteReader reader(content);
  const auto version = reader.bigEndian(1);
  const bool isWide = (reader.bigEndian(3) & 1U) != 0;
  const auto count = reader.bigEndian(4);
  for (std::uint64_t i = 0; i < count && !reader.failed(); ++i) {
    const auto item = found.items.find(reader.bigEndian(version == 0 ? 2 : 4));
    for (auto left = reader.bigEndian(1); left > 0 && !reader.failed(); --left) {
      const auto index = isWide ? reader.bigEndian(2) & 0x7FFFU : reader.bigEndian(1) & 0x7FU;
      if (item != found.items.end() && index > 0 && item->second.properties.size() < kMostItems)
        item->second.properties.push_back(static_cast<std::size_t>(index) - 1);
    }
  }
}

void readPropertyContainer(Span content, Items& found) {
  forEachBox(content, [&](const Box& box) {
    if (found.properties.size() < kMostItems)
      found.properties.push_back({std::string(box.type), box.content});
  });
}

void readProperties(Span content, Items& found) {
  forEachBox(content, [&](const Box& box) {
    if (box.type == "ipco") readPropertyContainer(box.content, found);
    if (box.type == "ipma") readAssociations(box.content, found);
  });
}

std::uint64_t primaryItem(Span content) {
  ByteReader reader(content);
  const auto version = reader.bigEndian(1);
  reader.skip(3);
  return reader.bigEndian(version == 0 ? 2 : 4);
}

// Boxes may come in any order, but all need the list of items.
Items readItems(Span meta) {
  Items found;
  constexpr std::size_t kVersionAndFlags = 4;
  const Span boxes = meta.subspan(std::min(kVersionAndFlags, meta.size()));
  forEachBox(boxes, [&](const Box& box) {
    if (box.type == "iinf") readItemList(box.content, found);
  });
  forEachBox(boxes, [&](const Box& box) {
    if (box.type == "iloc") readLocations(box.content, found);
    if (box.type == "iprp") readProperties(box.content, found);
    if (box.type == "pitm") found.primary = primaryItem(box.content);
    if (box.type == "idat") found.data = box.content;
  });
  return found;
}

Bytes contentOf(const media::Source& source, const Items& items, const Item& item) {
  if (!item.extent) return {};
  const Extent& extent = *item.extent;
  if (!extent.isInMetaBox)
    return extent.offset > INT64_MAX
               ? Bytes{}
               : bytesAt(source, static_cast<std::int64_t>(extent.offset), extent.size);
  ByteReader reader(items.data);
  reader.skip(extent.offset);
  const Span bytes = reader.take(extent.size);
  return {bytes.begin(), bytes.end()};
}

// A number of bytes in front of the TIFF structure, and then these.
void takeExifItem(Span content, Blocks& blocks) {
  ByteReader reader(content);
  reader.skip(reader.bigEndian(4));
  takeExif(reader.take(reader.left()), blocks);
}

void applyProperty(const Property& property, Blocks& blocks) {
  ByteReader reader(property.content);
  const media::Orientation before = blocks.orientation.value_or(media::Orientation{});
  if (property.type == "ispe") {
    reader.skip(4);
    const auto width = static_cast<int>(reader.bigEndian(4) & INT32_MAX);
    const auto height = static_cast<int>(reader.bigEndian(4) & INT32_MAX);
    blocks.size = {.width = width, .height = height};
  } else if (property.type == "irot") {
    const int quarters = static_cast<int>(reader.bigEndian(1) & 3U);
    blocks.orientation = orientationOf(before.isMirrored, before.degrees - quarters * 90);
  } else if (property.type == "imir") {
    const bool isUpsideDown = (reader.bigEndian(1) & 1U) != 0;
    blocks.orientation =
        orientationOf(!before.isMirrored, (isUpsideDown ? 180 : 0) - before.degrees);
  } else if (property.type == "colr" && blocks.iccProfile.empty()) {
    const std::string_view kind = reader.text(4);
    const Span profile = reader.take(reader.left());
    if (kind == "prof" || kind == "rICC") blocks.iccProfile.assign(profile.begin(), profile.end());
  }
}

}  // namespace

void findInHeif(const media::Source& source, Blocks& blocks) {
  const Bytes meta = contentOfBox(source, {.begin = 0, .end = source.size()}, "meta");
  const Items items = readItems(meta);
  // Exif's own number says nothing: writers leave it as it was when they turn the picture.
  blocks.orientation = media::Orientation{};
  if (const auto primary = items.items.find(items.primary); primary != items.items.end())
    for (const std::size_t index : primary->second.properties)
      if (index < items.properties.size()) applyProperty(items.properties[index], blocks);
  const auto firstWith = [&](std::string Item::*field, std::string_view value) {
    const auto found = std::ranges::find_if(
        items.items, [&](const auto& entry) { return entry.second.*field == value; });
    return found != items.items.end() ? contentOf(source, items, found->second) : Bytes{};
  };
  takeExifItem(firstWith(&Item::type, "Exif"), blocks);
  blocks.xmp = textOf(firstWith(&Item::contentType, "application/rdf+xml"));
}

namespace {

struct FreeBrotli {
  void operator()(BrotliDecoderState* decoder) const { BrotliDecoderDestroyInstance(decoder); }
};

// Empty if they are not that, or more than any block.
Bytes decompressed(Span bytes) {
  const std::unique_ptr<BrotliDecoderState, FreeBrotli> decoder(
      BrotliDecoderCreateInstance(nullptr, nullptr, nullptr));
  if (!decoder) throw std::bad_alloc();
  constexpr std::size_t kStep = 65536;
  Bytes result;
  std::size_t inputLeft = bytes.size();
  const std::uint8_t* input = bytes.data();
  BrotliDecoderResult state = BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT;
  while (state == BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT && result.size() < kLargestBlock) {
    const std::size_t before = result.size();
    result.resize(before + kStep);
    std::size_t outputLeft = kStep;
    std::uint8_t* output = result.data() + before;
    state = BrotliDecoderDecompressStream(decoder.get(), &inputLeft, &input, &outputLeft, &output,
                                          nullptr);
    result.resize(result.size() - outputLeft);
  }
  if (state != BROTLI_DECODER_RESULT_SUCCESS) result.clear();
  return result;
}

// Of the box of that TYPE, which may be inside another that compresses it.
Bytes contentOfJpegXlBox(const media::Source& source, std::string_view type) {
  const FileRange whole = {.begin = 0, .end = source.size()};
  if (const auto plain = findBox(source, whole, type)) return contentOf(source, plain);
  return decompressed(contentOf(source, findBoxWith(source, whole, "brob", type)));
}

}  // namespace

void findInJpegXl(const media::Source& source, Blocks& blocks) {
  takeExifItem(contentOfJpegXlBox(source, "Exif"), blocks);
  // Decoders turn the picture by a number of its own, and viewers ignore Exif's.
  blocks.orientation = media::Orientation{};
  blocks.xmp = textOf(contentOfJpegXlBox(source, "xml "));
}

}  // namespace kolum::exif
