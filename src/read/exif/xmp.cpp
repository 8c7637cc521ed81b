#include "read/exif/xmp.h"

#include <algorithm>
#include <utility>

#include "media/photo_tags.h"
#include "read/exif/texts.h"
#include "read/exif/xmp_names.h"

namespace kolum::exif {

std::string Xmp::text(XmpProperty property) const {
  const auto& values = values_[indexOf(property)];
  const auto found = std::ranges::find_if(values, &Value::isDefault);
  if (found != values.end()) return found->text;
  return values.empty() ? "" : values.front().text;
}

std::string Xmp::text(XmpProperty property, unsigned item) const {
  const Value* found = nullptr;
  for (const Value& value : values_[indexOf(property)])
    if (value.item == item && (found == nullptr || (value.isDefault && !found->isDefault)))
      found = &value;
  return found != nullptr ? found->text : "";
}

std::vector<std::string> Xmp::texts(XmpProperty property) const {
  std::vector<std::string> all;
  for (const Value& value : values_[indexOf(property)]) {
    if (all.size() >= media::kMostPhotoTexts) break;
    addText(all, value.text);
  }
  return all;
}

void Xmp::add(const XmpPlace& place, std::string_view text) {
  if (place.property == XmpProperty::kNone || isBlank(text)) return;
  // One byte more than is kept shows whether a character ends at the limit.
  values_[indexOf(place.property)].push_back(
      {limited(std::string(text.substr(0, media::kLongestPhotoText + 1))), place.item,
       place.isDefault});
}

void Xmp::countItems(XmpProperty list, unsigned items) {
  if (list == XmpProperty::kNone) return;
  unsigned& count = items_[indexOf(list)];
  count = std::max(count, items);
}

bool Xmp::has(std::size_t property) const {
  return !values_[property].empty() || items_[property] > 0;
}

void Xmp::complete(Xmp other) {
  const auto wholeOf = [](std::size_t index) {
    auto property = static_cast<XmpProperty>(index);
    while (parentOf(property) != XmpProperty::kNone) property = parentOf(property);
    return indexOf(property);
  };
  std::array<bool, kXmpProperties> isHere = {};
  for (std::size_t i = 0; i < kXmpProperties; ++i)
    if (has(i)) isHere[wholeOf(i)] = true;
  for (std::size_t i = 0; i < kXmpProperties; ++i) {
    if (isHere[wholeOf(i)]) continue;
    values_[i] = std::move(other.values_[i]);
    items_[i] = other.items_[i];
  }
}

}  // namespace kolum::exif
