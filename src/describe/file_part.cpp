#include <kolum/identifiers.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/moment.h"
#include "base/percent.h"
#include "base/utf8.h"
#include "describe/names.h"
#include "describe/parts.h"
#include "describe/table.h"
#include "describe/warnings.h"

namespace kolum::describe {

namespace {

// Containers of films that also have songs, and what the songs are called.
constexpr std::pair<std::string_view, std::string_view> kSongTypes[] = {
    {"video/mp4", "audio/mp4"},     {"video/x-matroska", "audio/x-matroska"},
    {"video/webm", "audio/webm"},   {"video/x-ms-asf", "audio/x-ms-wma"},
    {"video/ogg", "audio/ogg"},     {"video/3gpp", "audio/3gpp"},
    {"video/3gpp2", "audio/3gpp2"},
};

Value contentTypeOf(const Document& d) {
  const std::string& type = d.found.content.type;
  if (!d.found.container || d.found.container->hasFilm()) return text(type);
  const auto* row = std::find_if(std::begin(kSongTypes), std::end(kSongTypes),
                                 [&](const auto& pair) { return pair.first == type; });
  return text(row == std::end(kSongTypes) ? type : row->second);
}

constexpr auto kFileRows = std::to_array<Row<Document>>({
    {{"file", Type::kText, Unit::kNone,
      "Path as given, or as found below a given folder; bytes that are not UTF-8 are U+FFFD",
      "the caller"},
     [](const Document& d) -> Value { return d.path.given; }},
    {{"fileBytes", Type::kText, Unit::kNone, "The path percent-encoded, only when it is not UTF-8",
      "the caller"},
     [](const Document& d) {
       return isUtf8(d.path.given) ? Value() : Value(percentEncoded(d.path.given));
     }},
    {{"size", Type::kInteger, Unit::kBytes, "Size of the file", "the file system"},
     [](const Document& d) { return d.status ? Value(d.status->size) : Value(); }},
    {{"contentType", Type::kText, Unit::kNone, "MIME type that its first bytes say", "the content"},
     contentTypeOf},
    {{"modified", Type::kText, Unit::kMoment, "When the file was last changed", "the file system"},
     [](const Document& d) { return d.status ? text(momentText(d.status->modifiedNs)) : Value(); }},
    {{"fingerprint", Type::kText, Unit::kNone,
      "On request: SHA-256 of the size (8 bytes, the lowest first) and of the first and last 64 "
      "KiB",
      "the content"},
     [](const Document& d) { return text(d.found.fingerprint); }},
});

constexpr auto kFileKeys = keysOf(kFileRows);

// What the numbers of a video and a song have in common, in one place.
std::optional<std::uint32_t> containerFormat(const Document& d) {
  if (d.video && d.video->containerFormat.value_or(FORMAT_UNKNOWN) != FORMAT_UNKNOWN)
    return d.video->containerFormat;
  return d.song ? d.song->containerFormat : std::nullopt;
}

Value containerValue(const Document& d) {
  const auto format = containerFormat(d);
  if (!format) return nullptr;
  const ContainerNames names = containerNames(*format);
  Value object = identifier(*format, names.format);
  if (!names.brand.empty()) object.set("brand", names.brand);
  return object;
}

std::string_view mimeType(const Document& d) {
  if (d.video) return d.video->mimeType;
  return (d.song || d.photo) && d.type != nullptr ? d.type->mimeType : "";
}

// Scaled by its title's size, the duration of a short DVD comes to nothing.
Value durationOf(const Document& d) {
  const auto& whole = d.video ? d.video->duration : d.song ? d.song->duration : std::nullopt;
  if (!whole || (d.isDisc && *whole == 0)) return nullptr;
  const auto& container = d.found.container;
  if (d.isDisc || !container || container->duration <= 0) return *whole;
  return static_cast<double>(container->duration) / media::kTimeBase;
}

Value bitRateOf(const Document& d) {
  if (d.video) return positive(d.video->bitRate);
  return d.song ? positive(d.song->containerBitRate) : Value();
}

constexpr auto kMediaRows = std::to_array<Row<Document>>({
    {{"kind", Type::kIdentifier, Unit::kNone, "music, video or photo", "the name or the content"},
     [](const Document& d) -> Value {
       if (d.failure) return nullptr;
       return identifier(d.kind, kindName(d.kind));
     }},
    {{"containerFormat", Type::kContainer, Unit::kNone, "The container", "the content"},
     containerValue},
    {{"mimeType", Type::kText, Unit::kNone, "MIME type, as servers announce it",
      "the name; for videos the content"},
     [](const Document& d) { return text(mimeType(d)); }},
    {{"dlnaProfile", Type::kText, Unit::kNone, "DLNA media format profile", "the content"},
     [](const Document& d) {
       return text(d.video ? d.video->dlnaProfile : d.song ? d.song->dlnaProfile : "");
     }},
    {{"duration", Type::kNumber, Unit::kSeconds, "How long it plays", "the container"}, durationOf},
    {{"bitRate", Type::kInteger, Unit::kBitsPerSecond, "Of the whole file", "the container"},
     bitRateOf},
});

constexpr auto kMediaKeys = keysOf(kMediaRows);

constexpr auto kErrorKeys = std::to_array<Key>({
    {"code", Type::kText, Unit::kNone, "The cause, for programs; values may be added", ""},
    {"reason", Type::kText, Unit::kNone, "The cause in words, for people", ""},
});

Value problem(std::string_view code, std::string_view reason) {
  Value object = Value::object();
  object.set("code", code);
  object.set("reason", reason);
  return object;
}

Value warnings(const Document& d) {
  Value warnings = Value::array();
  for (const Warning& warning : warningsOf(d)) warnings.push(problem(warning.code, warning.reason));
  if (warnings.isEmpty()) return nullptr;
  return warnings;
}

constexpr auto kProblemRows = std::to_array<Row<Document>>({
    {{"warnings", Type::kObjects, Unit::kNone, "What is odd about the file",
      "the name and the content", kErrorKeys},
     warnings},
    {{"error", Type::kObject, Unit::kNone, "Why a file gave no result, or not all of it",
      "what was tried", kErrorKeys},
     [](const Document& d) {
       return d.failure ? problem(codeOf(d.failure->cause), d.failure->reason) : Value();
     }},
});

constexpr auto kProblemKeys = keysOf(kProblemRows);

}  // namespace

Part filePart() {
  return {{"file", "Every file", kFileKeys},
          [](Value& object, const Document& document) { add(object, kFileRows, document); }};
}

Part mediaPart() {
  return {{"media", "All media", kMediaKeys},
          [](Value& object, const Document& document) { add(object, kMediaRows, document); }};
}

Part problemPart() {
  return {{"problems", "Problems", kProblemKeys},
          [](Value& object, const Document& document) { add(object, kProblemRows, document); }};
}

}  // namespace kolum::describe
