// The nearest known places for positions, from "osm_info --places", which needs no network.
#ifndef KOLUM_GEOCODE_PLACE_FINDER_H
#define KOLUM_GEOCODE_PLACE_FINDER_H

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "base/dialogue.h"
#include "geocode/place_answer.h"

namespace kolum::geocode {

// Beside the library or tool that contains this code, or where it was built; else the appliance's.
std::string placeProgram();

// Any number of threads may use one. The program is started by the first question, and again when
// it does not answer as it should, but not often: then there are no more answers.
class PlaceFinder {
 public:
  explicit PlaceFinder(std::string program,
                       std::chrono::milliseconds answerTime = std::chrono::seconds(5));

  // In degrees, rounded to ten-thousandths (11 m) first. Empty if no place is near, or if there is
  // no answer: see trouble().
  std::optional<Place> at(double latitude, double longitude);

  // Why there are no answers; empty while there are.
  std::string trouble() const;
  // Whether any place was found, which is GeoNames' to be credited for.
  bool hasFound() const;

  // Ends the program and forgets all answers and troubles.
  void forget();

 private:
  // Of a degree.
  static constexpr double kSteps = 10'000;
  static constexpr std::size_t kMostKnown = 16'384;
  static constexpr int kMostFailures = 3;

  using Spot = std::pair<long, long>;

  std::optional<PlaceAnswer> ask(const std::string& question, std::string& why);

  const std::string program_;
  const std::chrono::milliseconds answerTime_;
  mutable std::mutex mutex_;  // of all below; held while the program is asked
  std::optional<Dialogue> dialogue_;
  std::map<Spot, std::optional<Place>> known_;
  int failures_ = 0;
  std::string trouble_;
  bool hasFound_ = false;
};

}  // namespace kolum::geocode

#endif
