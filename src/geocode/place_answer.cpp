#include "geocode/place_answer.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

namespace kolum::geocode {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kLongestName = 512;       // bytes
constexpr std::int64_t kFarthest = 20'040'000;  // metres: half way around Earth
constexpr std::int64_t kLargestId = std::int64_t{1} << 53;

// What a line says.
struct Said {
  std::string position;
  std::string name;
  std::string region;
  std::string country;
  std::string countryCode;
  std::string error;
  std::optional<std::int64_t> geonamesId;
  std::optional<std::int64_t> distance;
};

struct TextKey {
  std::string_view key;
  std::string Said::*text;
};
constexpr TextKey kTexts[] = {
    {"position", &Said::position}, {"name", &Said::name},   {"region", &Said::region},
    {"country", &Said::country},   {"error", &Said::error}, {"countryCode", &Said::countryCode},
};

struct NumberKey {
  std::string_view key;
  std::optional<std::int64_t> Said::*number;
  std::int64_t least;
  std::int64_t most;
};
constexpr NumberKey kNumbers[] = {
    {"geonamesId", &Said::geonamesId, 1, kLargestId},
    {"distance", &Said::distance, 0, kFarthest},
};

bool isName(std::string_view text) {
  const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
  return text.size() <= kLongestName && !std::any_of(text.begin(), text.end(), isControl);
}

bool isCountryCode(std::string_view text) {
  const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
  return text.empty() || (text.size() == 2 && std::all_of(text.begin(), text.end(), isCapital));
}

// Takes the parts of one flat object as they are read. No values of the library are made: their
// destructors allocate memory, which would end a host that has none left. Each function says
// whether reading goes on.
class Reader : public nlohmann::json_sax<Json> {
 public:
  Said said;

  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_float(double /*value*/, const std::string& /*text*/) override { return !isKnown(); }
  bool number_integer(std::int64_t value) override { return number(value); }
  bool number_unsigned(std::uint64_t value) override {
    return value <= INT64_MAX && number(static_cast<std::int64_t>(value));
  }
  bool string(std::string& value) override {
    for (const TextKey& row : kTexts) {
      if (row.key != key_) continue;
      if (!isName(value)) return false;
      said.*row.text = std::move(value);
      return true;
    }
    return !isKnown();
  }
  bool binary(Json::binary_t& /*value*/) override { return false; }
  bool start_object(std::size_t /*size*/) override { return !std::exchange(hasBegun_, true); }
  bool key(std::string& name) override {
    key_ = std::move(name);
    return true;
  }
  bool end_object() override { return true; }
  bool start_array(std::size_t /*size*/) override { return false; }
  bool end_array() override { return false; }
  bool parse_error(std::size_t /*at*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

  bool hasBegun() const { return hasBegun_; }

 private:
  // Numbers under the keys of texts are nonsense, and the other way round.
  bool isKnown() const {
    const auto isIt = [this](const auto& row) { return row.key == key_; };
    return std::any_of(std::begin(kTexts), std::end(kTexts), isIt) ||
           std::any_of(std::begin(kNumbers), std::end(kNumbers), isIt);
  }
  bool number(std::int64_t value) {
    for (const NumberKey& row : kNumbers) {
      if (row.key != key_) continue;
      if (value < row.least || value > row.most) return false;
      said.*row.number = value;
      return true;
    }
    return !isKnown();
  }

  std::string key_;
  bool hasBegun_ = false;
};

}  // namespace

std::optional<PlaceAnswer> readPlaceAnswer(std::string_view line, std::string_view question) {
  if (line.size() > kLongestPlaceAnswer) return std::nullopt;
  Reader reader;
  if (!Json::sax_parse(line, &reader) || !reader.hasBegun()) return std::nullopt;
  Said& said = reader.said;
  if (said.position != question || !isCountryCode(said.countryCode)) return std::nullopt;
  if (!said.error.empty()) return PlaceAnswer{.error = std::move(said.error)};
  // No place is near.
  if (said.name.empty() && !said.distance) return PlaceAnswer();
  if (said.name.empty() || !said.distance) return std::nullopt;
  return PlaceAnswer{.place = Place{.name = std::move(said.name),
                                    .region = std::move(said.region),
                                    .country = std::move(said.country),
                                    .countryCode = std::move(said.countryCode),
                                    .geonamesId = said.geonamesId,
                                    .distance = *said.distance}};
}

}  // namespace kolum::geocode
