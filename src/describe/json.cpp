#include "describe/json.h"

#include <array>
#include <nlohmann/json.hpp>

#include "describe/keys.h"
#include "describe/parts.h"

namespace kolum::describe {

namespace {

using Json = nlohmann::ordered_json;

const auto& parts() {
  static const auto kParts =
      std::to_array<Part>({filePart(), mediaPart(), filmPart(), videoPart(), soundPart(),
                           songPart(), discPart(), photoPart(), streamPart(), problemPart()});
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

Json jsonOf(const Document& document) {
  Json object = Json::object();
  for (const Part& part : parts()) part.add(object, document);
  return object;
}

std::string lineOf(const Json& object) {
  Json line = {{"schema", kJsonSchema}};
  line.update(object);
  return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json errorOf(const Failure& failure) {
  return {{"code", codeOf(failure.cause)}, {"reason", failure.reason}};
}

}  // namespace kolum::describe
