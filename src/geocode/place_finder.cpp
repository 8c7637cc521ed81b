#include "geocode/place_finder.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cmath>

#include "base/appliance.h"
#include "base/own_folder.h"

namespace kolum::geocode {

namespace {

constexpr const char* kFolders[] = {KOLUM_TOOLS_FROM_LIBRARY, KOLUM_TOOLS_FROM_TOOL,
                                    "../tools/appliance/bin", "../appliance/bin",
                                    "../../tools/appliance/bin"};

// "48.8584", with a decimal point whatever the host's locale.
std::string degreesText(double degrees) {
  std::array<char, 32> digits;
  const auto end =
      std::to_chars(digits.begin(), digits.end(), degrees, std::chars_format::fixed, 4).ptr;
  return {digits.begin(), end};
}

bool isPosition(double latitude, double longitude) {
  return std::abs(latitude) <= 90 && std::abs(longitude) <= 180;
}

}  // namespace

std::string placeProgram() {
  return programNear(kFolders, "osm_info").value_or(kOsmInfoTool);
}

PlaceFinder::PlaceFinder(std::string program, std::chrono::milliseconds answerTime)
    : program_(std::move(program)), answerTime_(answerTime) {}

std::optional<Place> PlaceFinder::at(double latitude, double longitude) {
  if (!isPosition(latitude, longitude)) return std::nullopt;
  const Spot spot = {std::lround(latitude * kSteps), std::lround(longitude * kSteps)};
  const std::lock_guard lock(mutex_);
  if (const auto known = known_.find(spot); known != known_.end()) return known->second;
  // Without a sign before zero.
  const std::string question = degreesText(static_cast<double>(spot.first) / kSteps) + " " +
                               degreesText(static_cast<double>(spot.second) / kSteps);
  while (trouble_.empty()) {
    std::string why;
    auto answer = ask(question, why);
    if (answer && answer->error.empty()) {
      if (known_.size() >= kMostKnown) known_.clear();
      hasFound_ = hasFound_ || answer->place;
      return known_[spot] = std::move(answer->place);
    }
    // What the program says of itself is final.
    if (answer) trouble_ = program_ + ": " + answer->error;
    if (!answer && ++failures_ >= kMostFailures) trouble_ = program_ + ": " + why;
    dialogue_.reset();
  }
  return std::nullopt;
}

std::optional<PlaceAnswer> PlaceFinder::ask(const std::string& question, std::string& why) {
  // A forked child has no part in the program of its parent.
  if (dialogue_ && !dialogue_->isOwn()) dialogue_.reset();
  if (!dialogue_) {
    auto started = Dialogue::start(
        {program_, "--places"}, {.answerTime = answerTime_, .longestAnswer = kLongestPlaceAnswer});
    if (!started) {
      why = "no such program";
      failures_ = kMostFailures;  // it will not come
      return std::nullopt;
    }
    dialogue_.emplace(std::move(*started));
  }
  const auto line = dialogue_->ask(question, why);
  if (!line) return std::nullopt;
  auto answer = readPlaceAnswer(*line, question);
  if (!answer) why = "it answers nonsense";
  return answer;
}

std::string PlaceFinder::trouble() const {
  const std::lock_guard lock(mutex_);
  return trouble_;
}

bool PlaceFinder::hasFound() const {
  const std::lock_guard lock(mutex_);
  return hasFound_;
}

void PlaceFinder::forget() {
  const std::lock_guard lock(mutex_);
  dialogue_.reset();
  known_.clear();
  failures_ = 0;
  trouble_.clear();
  hasFound_ = false;
}

}  // namespace kolum::geocode
