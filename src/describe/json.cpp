#include "describe/json.h"

#include <array>

#include "describe/keys.h"
#include "describe/parts.h"

namespace kolum::describe {

namespace {

const auto& parts() {
  static const auto kParts = std::to_array<Part>({filePart(), mediaPart(), filmPart(), videoPart(),
                                                  soundPart(), songPart(), discPart(), photoPart(),
                                                  placePart(), streamPart(), problemPart()});
  return kParts;
}

}  // namespace

std::span<const Group> groups() {
  static const auto kGroups = [] {
    std::array<Group, std::tuple_size_v<std::decay_t<decltype(parts())>>> all;
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = parts()[i].group;
    return all;
  }();
  return kGroups;
}

std::string jsonOf(const Document& document) {
  Value object = Value::object();
  object.set("schema", kJsonSchema);
  for (const Part& part : parts()) part.add(object, document);
  return object.json();
}

}  // namespace kolum::describe
