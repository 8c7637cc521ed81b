#include "osm_info/server_reply.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <utility>

namespace kolum::osm_info {

namespace {

// Preserves the server's order of the parts of an address.
using Json = nlohmann::ordered_json;

constexpr long kHttpOk = 200;
constexpr std::size_t kLongestWords = 200;

std::string decimal(double value) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, 8)
                       .ptr;
  return {digits.data(), end};
}

// A text or a number as text; empty for anything else.
std::string textOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return {};
  if (found->is_string()) return found->get<std::string>();
  return found->is_number_integer() ? found->dump() : std::string();
}

// Cut between characters to a length that suits a log.
std::string shortened(std::string words) {
  if (words.size() <= kLongestWords) return words;
  std::size_t size = kLongestWords;
  while (size > 0 && (words[size] & 0xC0) == 0x80) --size;
  words.resize(size);
  return words;
}

// {"error": "words"} or {"error": {"message": "words", ...}}; empty if it is no such object.
std::string errorOf(const Json& reply) {
  if (!reply.is_object() || !reply.contains("error")) return {};
  const Json& error = reply["error"];
  std::string words = error.is_object() ? textOf(error, "message") : textOf(reply, "error");
  if (words.empty()) words = "no reason given";
  return shortened(std::move(words));
}

std::vector<AddressPart> partsOf(const Json& reply) {
  std::vector<AddressPart> parts;
  const auto address = reply.find("address");
  if (address == reply.end() || !address->is_object()) return parts;
  for (const auto& [name, value] : address->items()) {
    if (value.is_string()) parts.push_back({name, value.get<std::string>()});
  }
  return parts;
}

}  // namespace

std::string requestUrl(const std::string& serverUrl, const Query& query, const Language& language) {
  return serverUrl + "/reverse?format=jsonv2&addressdetails=1&lat=" + decimal(query.lat) +
         "&lon=" + decimal(query.lon) + "&zoom=" + std::to_string(query.zoom) +
         "&accept-language=" + std::string(language.accepted);
}

Answer readReply(long httpStatus, std::string_view body, const Language& language) {
  const Json reply = Json::parse(body, nullptr, false);
  if (const std::string words = errorOf(reply); !words.empty()) {
    throw LookUpError("the server says: " + words);
  }
  if (httpStatus != kHttpOk) {
    throw LookUpError("the server answers with status " + std::to_string(httpStatus));
  }
  if (!reply.is_object()) throw LookUpError("the server's answer is not a JSON object");
  return {.language = std::string(language.code),
          .osmType = textOf(reply, "osm_type"),
          .osmId = textOf(reply, "osm_id"),
          .address = textOf(reply, "display_name"),
          .parts = partsOf(reply)};
}

}  // namespace kolum::osm_info
