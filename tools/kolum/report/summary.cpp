#include "report/summary.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>

#include "commands/library.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

// What a chart counts. KINDS: of which files; all if there is none.
struct Grouping {
  const char* id;
  const char* title;
  std::string ReportedFile::*value;
  std::vector<std::string> kinds;
};

const std::vector<Grouping>& groupings() {
  static const std::vector<Grouping> kGroupings = {
      {"kind", "Kind", &ReportedFile::kind, {}},
      {"videoCodec", "Codec of the pictures", &ReportedFile::videoCodec, {"video"}},
      {"audioCodec", "Codec of the sound", &ReportedFile::audioCodec, {"video", "music"}},
      {"container", "Container", &ReportedFile::container, {}},
      {"resolution", "Resolution of videos", &ReportedFile::resolution, {"video"}},
      {"dynamicRange", "Dynamic range of videos", &ReportedFile::dynamicRange, {"video"}},
      {"channels", "Channels of the sound", &ReportedFile::channels, {"video", "music"}},
  };
  return kGroupings;
}

// The columns of the rows, in their order.
constexpr const char* kColumns[] = {
    "file",  "kind",   "bytes",      "seconds",      "container", "videoCodec",       "audioCodec",
    "width", "height", "resolution", "dynamicRange", "channels",  "dlnaProfile",      "date",
    "taken", "title",  "artist",     "state",        "problem",   "televisionReason", "fingerprint",
    "place"};

constexpr std::size_t kPathsOfEqual = 20;
constexpr std::size_t kEqualShown = 500;

// Nobody needs to know more of a text than this, and strangers' may be long.
std::string shortened(const std::string& text) {
  constexpr std::size_t kColumnsShown = 300;
  return std::string(cutToColumns(text, kColumnsShown));
}

const char* retryText(scan::State state) {
  return state == scan::State::kSuspect ? "by the next scan" : "when it changes, or with --retry";
}

// Items of MAP in the order of their indexes.
template <typename Map>
std::vector<const typename Map::value_type*> byIndex(const Map& map) {
  std::vector<const typename Map::value_type*> items(map.size());
  for (const auto& item : map) items[item.second.index] = &item;
  return items;
}

}  // namespace

void Summary::Amount::add(const ReportedFile& file) {
  ++files;
  bytes += static_cast<double>(file.bytes);
  seconds += file.seconds;
}

Json Summary::add(const scan::FoundFile& file, const Json& document) {
  const ReportedFile reported = reportedFile(file, document);
  total_.add(reported);
  addGroups(reported);
  if (reported.kind == "photo") {
    if (reported.taken.empty())
      ++undated_;
    else
      ++months_[reported.taken.substr(0, 7)];
  }
  if (!reported.dlnaProfile.empty()) ++named_;
  const std::int64_t nameless = addNameless(reported, namelessReason(document, file.path.full()));
  const std::int64_t problem = addProblem(file);
  addFingerprint(reported);
  std::string place;
  if (reported.place) {
    place = reported.place->text();
    Spot& spot = places_[{reported.place->latitude, reported.place->longitude}];
    ++spot.files;
    if (spot.name.empty()) spot.name = shortened(reported.place->name);
  }
  return {reported.path,
          reported.kind,
          reported.bytes,
          reported.seconds,
          reported.container,
          reported.videoCodec,
          reported.audioCodec,
          reported.width,
          reported.height,
          reported.resolution,
          reported.dynamicRange,
          reported.channels,
          reported.dlnaProfile,
          reported.date,
          reported.taken,
          shortened(reported.title),
          shortened(reported.artist),
          reported.state,
          problem,
          nameless,
          reported.fingerprint,
          place};
}

void Summary::addGroups(const ReportedFile& file) {
  groups_.resize(groupings().size());
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    const Grouping& grouping = groupings()[i];
    const auto& kinds = grouping.kinds;
    if (!kinds.empty() && std::find(kinds.begin(), kinds.end(), file.kind) == kinds.end()) continue;
    const std::string& value = file.*grouping.value;
    groups_[i][value.empty() ? "unknown" : value].add(file);
  }
}

std::int64_t Summary::addNameless(const ReportedFile& file, std::optional<NamelessReason> reason) {
  if (!reason) return -1;
  const std::size_t next = nameless_.size();
  const auto [item, isNew] = nameless_.try_emplace(std::move(*reason));
  Nameless& nameless = item->second;
  if (isNew) {
    nameless.index = next;
    nameless.example = file.path;
  }
  ++nameless.files;
  nameless.bytes += static_cast<double>(file.bytes);
  return static_cast<std::int64_t>(nameless.index);
}

std::int64_t Summary::addProblem(const scan::FoundFile& file) {
  if (!file.reason) return -1;
  const std::size_t next = problems_.size();
  const auto [item, isNew] = problems_.try_emplace(
      {file.state, printable(file.reason->code), shortened(printable(file.reason->text))});
  if (isNew) item->second.index = next;
  ++item->second.files;
  return static_cast<std::int64_t>(item->second.index);
}

void Summary::addFingerprint(const ReportedFile& file) {
  if (file.fingerprint.empty()) return;
  ++fingerprints_;
  Equal& equal = equal_[file.fingerprint];
  equal.bytes = file.bytes;
  ++equal.files;
  if (equal.paths.size() < kPathsOfEqual) equal.paths.push_back(file.path);
}

Json Summary::json() const {
  Json json;
  json["columns"] = kColumns;
  json["totals"] = {{"files", total_.files}, {"bytes", total_.bytes}, {"seconds", total_.seconds}};
  json["groups"] = groupsJson();
  json["months"] = Json::array();
  for (const auto& [month, files] : months_) json["months"].push_back(Json::array({month, files}));
  json["undated"] = undated_;
  json["televisions"] = televisionsJson();
  json["duplicates"] = duplicatesJson();
  json["problems"] = problemsJson();
  json["places"] = placesJson();
  return json;
}

Json Summary::groupsJson() const {
  Json groups = Json::array();
  for (std::size_t i = 0; i < groupings().size(); ++i) {
    const Grouping& grouping = groupings()[i];
    Json rows = Json::array();
    if (i < groups_.size())
      for (const auto& [name, amount] : groups_[i])
        rows.push_back(Json::array({name, amount.files, amount.bytes, amount.seconds}));
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Json& a, const Json& b) { return a[1] > b[1]; });
    groups.push_back({{"id", grouping.id},
                      {"title", grouping.title},
                      {"column", grouping.id},
                      {"kinds", grouping.kinds},
                      {"rows", rows}});
  }
  return groups;
}

Json Summary::televisionsJson() const {
  Json reasons = Json::array();
  for (const auto* item : byIndex(nameless_)) {
    const auto& [reason, nameless] = *item;
    reasons.push_back({{"nearest", reason.nearest},
                       {"missing", reason.missing},
                       {"remark", shortened(reason.remark)},
                       {"files", nameless.files},
                       {"bytes", nameless.bytes},
                       {"example", nameless.example}});
  }
  return {{"named", named_}, {"reasons", reasons}};
}

Json Summary::duplicatesJson() const {
  std::vector<const std::pair<const std::string, Equal>*> groups;
  double bytes = 0;
  for (const auto& item : equal_) {
    if (item.second.files < 2) continue;
    groups.push_back(&item);
    bytes += static_cast<double>(item.second.bytes) * static_cast<double>(item.second.files - 1);
  }
  const std::size_t count = groups.size();
  std::stable_sort(groups.begin(), groups.end(),
                   [](const auto* a, const auto* b) { return a->second.bytes > b->second.bytes; });
  groups.resize(std::min(count, kEqualShown));
  Json json = Json::array();
  for (const auto* item : groups)
    json.push_back({{"fingerprint", item->first},
                    {"bytes", item->second.bytes},
                    {"count", item->second.files},
                    {"files", item->second.paths}});
  return {{"fingerprints", fingerprints_}, {"count", count}, {"bytes", bytes}, {"groups", json}};
}

Json Summary::problemsJson() const {
  Json problems = Json::array();
  for (const auto* item : byIndex(problems_)) {
    const auto& [state, code, reason] = item->first;
    problems.push_back({{"state", stateName(state)},
                        {"code", code},
                        {"reason", reason},
                        {"retry", retryText(state)},
                        {"files", item->second.files}});
  }
  return problems;
}

Json Summary::placesJson() const {
  Json places = Json::array();
  for (const auto& [place, spot] : places_)
    places.push_back(Json::array({place.first, place.second, spot.files, spot.name}));
  return places;
}

}  // namespace kolum::tool
