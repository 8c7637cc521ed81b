#include "osm_info/places.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <nlohmann/json.hpp>

namespace kolum::osm_info {

namespace {

using Json = nlohmann::ordered_json;

void addText(Json& answer, const char* key, const std::string& text) {
  if (!text.empty()) answer[key] = text;
}

void addNumber(Json& answer, const char* key, const std::string& digits) {
  std::int64_t number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  if (error == std::errc() && stop == end) answer[key] = number;
}

void addPlace(Json& answer, const NearPlace& place) {
  addText(answer, "name", place.names.name);
  addText(answer, "region", place.names.state);
  addText(answer, "country", place.names.country);
  addText(answer, "countryCode", place.names.countryCode);
  addNumber(answer, "geonamesId", place.names.id);
  answer["distance"] = std::llround(place.metres);
}

std::string lineOf(const Json& answer) {
  return answer.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string errorTo(std::string_view question, const char* reason) {
  return lineOf({{"position", question}, {"error", reason}});
}

}  // namespace

std::string answerTo(std::string_view question, const FindPlace& find) {
  try {
    Json answer = {{"position", question}};
    if (const auto place = find(parsePosition(question))) addPlace(answer, *place);
    std::string line = lineOf(answer);
    return line.size() <= kLongestAnswer ? line : errorTo(question, "its names are too long");
  } catch (const std::exception& error) {
    return errorTo(question, error.what());
  }
}

bool servePlaces(const FindPlace& find) {
  std::array<char, kLongestQuestion + 2> line = {};  // with the line end and the terminator
  while (std::fgets(line.data(), line.size(), stdin) != nullptr) {
    const std::size_t length = std::strlen(line.data());
    if (length == 0 || line[length - 1] != '\n') return false;
    const std::string answer = answerTo({line.data(), length - 1}, find) + "\n";
    if (std::fputs(answer.c_str(), stdout) == EOF || std::fflush(stdout) != 0) return false;
  }
  return std::feof(stdin) != 0;
}

}  // namespace kolum::osm_info
