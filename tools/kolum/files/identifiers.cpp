#include "files/identifiers.h"

#include <kolum/identifiers.h>

#include <algorithm>

#include "ascii.h"
#include "media/identifiers.h"
#include "media/levels.h"
#include "terminal/text.h"

namespace kolum::tool {

using describe::codecs;
using describe::NamedNumber;
using describe::profiles;

Identifier named(std::span<const NamedNumber> rows, std::int64_t id) {
  const auto row =
      std::find_if(rows.begin(), rows.end(), [&](const auto& r) { return r.id == id; });
  return {id, row == rows.end() ? "" : std::string(row->name)};
}

Identifier codecIdentifier(int codec) {
  return {codec, std::string(describe::codecName(codec)), codecs().prefix};
}

Identifier profileIdentifier(int profile, int codec) {
  return {profile, std::string(describe::profileName(profile, codec)), profiles().prefix};
}

namespace {

// A codec's name without its prefix. The library prefers names that mark the start of a range
// ("FIRST_AUDIO"); people know the codec with the same number.
std::string codecWord(int codec) {
  std::string word;
  for (const NamedNumber& row : codecs().rows) {
    if (row.id != codec) continue;
    const std::string_view name = row.name.substr(codecs().prefix.size());
    if (word.empty() || word.starts_with("FIRST_")) word = name;
  }
  return word.empty() ? "codec " + std::to_string(codec) : word;
}

}  // namespace

std::string codecText(int codec, int profile) {
  std::string text = codecWord(codec);
  const std::string_view name = describe::profileName(profile, codec);
  if (profile == PROFILE_UNKNOWN || name.empty()) return text;
  const std::string prefix = std::string(media::profileFamilyName(profile, codec)) + "_";
  std::string words(
      name.substr(name.starts_with(prefix) ? prefix.size() : profiles().prefix.size()));
  for (char& c : words) c = c == '_' ? ' ' : ascii::lower(c);
  return text + " " + words;
}

std::string levelText(int codec, int level) {
  const std::string name = media::levelName(codec, level);
  if (name.empty()) return "";
  const bool isNumber = ascii::isDigit(name.front());
  return isNumber ? "level " + name : name + " level";
}

Identifier kindIdentifier(int kind) {
  return {kind, std::string(describe::kindName(kind))};
}

Result ContainerIdentifier::object() const {
  const describe::ContainerNames names = describe::containerNames(id);
  Result object;
  object.data("id", id);
  if (!names.format.empty()) object.data("name", names.format);
  if (!names.brand.empty()) object.data("brand", names.brand);
  return object;
}

std::string ContainerIdentifier::text() const {
  const auto [format, brand] = describe::containerNames(id);
  if (format.empty()) return hexText(id);
  std::string text(format.substr(describe::formats().prefix.size()));
  if (!brand.empty())
    text.append(", brand ").append(brand.substr(describe::brands().prefix.size()));
  return text;
}

void addKind(Result& result, int kind) {
  const Identifier identifier = kindIdentifier(kind);
  result.data("kind", identifier);
  result.show("Kind", identifier.name);
}

void addContainer(Result& result, unsigned containerFormat) {
  if (containerFormat == FORMAT_UNKNOWN) return;
  const ContainerIdentifier container = {containerFormat};
  result.data("containerFormat", container.object());
  result.show("Container", container.text());
}

}  // namespace kolum::tool
