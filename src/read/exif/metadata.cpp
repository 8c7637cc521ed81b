#include "read/exif/metadata.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <mutex>
#include <new>
#include <tuple>

#include "base/bytes.h"
#include "media/photo_tags.h"
#include "read/exif/extended_xmp.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

// Whatever is wrong with one part, the others count.
template <typename Decode>
void attempt(Decode decode) {
  try {
    decode();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {  // NOLINT(bugprone-empty-catch): nothing is known then
  }
}

// Of anything but pictures, maker notes and colour profiles.
constexpr std::size_t kLongestValue = std::size_t{1} << 20;

// The lowest byte of each number first. Texts are as in the file: Exiv2 would convert some.
Bytes raw(const Exiv2::Exifdatum& datum) {
  if (const auto* text = dynamic_cast<const Exiv2::StringValueBase*>(&datum.value()))
    return {text->value_.begin(), text->value_.end()};
  const Exiv2::Value& value = datum.value();
  const auto size = static_cast<std::size_t>(value.size());
  if (size == 0 || size > kLargestBlock) return {};
  Bytes bytes(size);
  value.copy(bytes.data(), Exiv2::littleEndian);
  return bytes;
}

std::int64_t signedNumber(ByteReader& reader, std::size_t size) {
  const auto value = reader.littleEndian(size);
  const unsigned unused = 64 - static_cast<unsigned>(size) * 8;
  return static_cast<std::int64_t>(value << unused) >> unused;
}

std::optional<Ratio> valueAt(Exiv2::TypeId type, const Bytes& bytes, std::size_t index) {
  const auto size = static_cast<std::size_t>(Exiv2::TypeInfo::typeSize(type));
  if (size == 0 || index > bytes.size()) return std::nullopt;
  ByteReader reader(bytes);
  reader.skip(size * index);
  Ratio found = {.num = 0, .den = 1};
  switch (type) {
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::tiffIfd:
      found.num = static_cast<std::int64_t>(reader.littleEndian(size));
      break;
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong:
      found.num = signedNumber(reader, size);
      break;
    case Exiv2::unsignedRational:
      found.num = static_cast<std::int64_t>(reader.littleEndian(4));
      found.den = static_cast<std::int64_t>(reader.littleEndian(4));
      break;
    case Exiv2::signedRational:
      found.num = signedNumber(reader, 4);
      found.den = signedNumber(reader, 4);
      break;
    default:
      return std::nullopt;
  }
  return reader.failed() ? std::nullopt : std::optional(found);
}

auto keyOf(unsigned tag, std::string_view group) {
  return std::tuple(tag, group);
}

// Exiv2 would write what it does not like about a file to the standard error.
void silenceExiv2() {
  static std::once_flag done;
  std::call_once(done, [] { Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute); });
}

}  // namespace

std::optional<double> numberIn(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

std::optional<double> Ratio::value() const {
  if (den == 0) return std::nullopt;
  return static_cast<double>(num) / static_cast<double>(den);
}

Metadata::Metadata(const Blocks& blocks) {
  silenceExiv2();
  attempt([&] { decodeExif(blocks); });
  attempt([&] { decodeXmp(blocks); });
  attempt([&] { decodeIptc(blocks); });
  attempt([&] { makeIndex(); });
}

void Metadata::decodeExif(const Blocks& blocks) {
  const auto bytes = blocks.tiff.bytes();
  if (bytes.empty()) return;
  Exiv2::XmpData none;  // findBlocks() leaves no XMP there
  const auto decode = [&](auto parse) {
    return parse(exif_, iptc_, none, bytes.data(), static_cast<ExivSize>(bytes.size()));
  };
  Exiv2::ByteOrder order = Exiv2::invalidByteOrder;
  switch (blocks.tiffKind) {
    case TiffKind::kPlain:
      order = decode(&Exiv2::TiffParser::decode);
      break;
    case TiffKind::kOlympus:
      order = decode(&Exiv2::OrfParser::decode);
      break;
    case TiffKind::kPanasonic:
      order = decode(&Exiv2::Rw2Parser::decode);
      break;
  }
  isBigEndian_ = order == Exiv2::bigEndian;
}

void Metadata::decodeXmp(const Blocks& blocks) {
  xmp_ = readXmp(blocks.xmp);
  const std::string guid = xmp_.text(XmpProperty::kExtendedXmp);
  if (guid.empty()) return;
  const std::string extended = joinedXmp(blocks.extendedXmp, guid);
  if (mayHaveProperties(extended)) xmp_.complete(readXmp(extended));
}

void Metadata::decodeIptc(const Blocks& blocks) {
  if (blocks.iptc.empty()) return;
  Exiv2::IptcParser::decode(iptc_, blocks.iptc.data(), static_cast<ExivSize>(blocks.iptc.size()));
}

void Metadata::makeIndex() {
  for (const Exiv2::Exifdatum& datum : exif_)
    index_.push_back({datum.tag(), datum.groupName(), &datum});
  std::ranges::stable_sort(index_, {},
                           [](const Entry& entry) { return keyOf(entry.tag, entry.group); });
}

const Exiv2::Exifdatum* Metadata::find(std::string_view group, unsigned tag) const {
  const auto found =
      std::ranges::lower_bound(index_, keyOf(tag, group), {},
                               [](const Entry& entry) { return keyOf(entry.tag, entry.group); });
  const bool isThere = found != index_.end() && found->tag == tag && found->group == group;
  return isThere ? found->datum : nullptr;
}

Bytes Metadata::bytes(std::string_view group, unsigned tag) const {
  const Exiv2::Exifdatum* datum = find(group, tag);
  return datum != nullptr ? raw(*datum) : Bytes{};
}

std::string Metadata::text(std::string_view group, unsigned tag) const {
  return paddedText(textOf(bytes(group, tag)));
}

std::string Metadata::utf16(std::string_view group, unsigned tag) const {
  return utf16Text(bytes(group, tag), false);
}

std::optional<Ratio> Metadata::ratio(std::string_view group, unsigned tag,
                                     std::size_t index) const {
  const Exiv2::Exifdatum* datum = find(group, tag);
  if (datum == nullptr || static_cast<std::size_t>(datum->size()) > kLongestValue)
    return std::nullopt;
  return valueAt(datum->typeId(), raw(*datum), index);
}

std::optional<std::int64_t> Metadata::integer(std::string_view group, unsigned tag,
                                              std::size_t index) const {
  const auto found = ratio(group, tag, index);
  if (!found || found->den == 0) return std::nullopt;
  return found->num / found->den;
}

std::optional<double> Metadata::number(std::string_view group, unsigned tag,
                                       std::size_t index) const {
  const auto found = ratio(group, tag, index);
  return found ? found->value() : std::nullopt;
}

std::string Metadata::meaning(std::string_view group, unsigned tag) const {
  const Exiv2::Exifdatum* datum = find(group, tag);
  std::string words;
  if (datum != nullptr) attempt([&] { words = plainText(datum->print(&exif_)); });
  return words;
}

std::vector<std::string> Metadata::iptcTexts(unsigned dataset) const {
  constexpr unsigned kRecord = 2;
  std::vector<std::string> texts;
  for (const Exiv2::Iptcdatum& datum : iptc_) {
    if (datum.record() != kRecord || datum.tag() != dataset) continue;
    if (texts.size() >= media::kMostPhotoTexts) break;
    attempt([&] { addText(texts, plainText(datum.toString())); });
  }
  return texts;
}

std::string Metadata::iptcText(unsigned dataset) const {
  const auto texts = iptcTexts(dataset);
  return texts.empty() ? "" : texts.front();
}

}  // namespace kolum::exif
