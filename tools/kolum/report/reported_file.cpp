#include "report/reported_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <string_view>

#include "ascii.h"
#include "commands/library.h"
#include "report/values.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kLongest = 1e9;  // seconds; more is nonsense, and sums must stay numbers
constexpr std::int64_t kWidest = 1000000;

struct WidthClass {
  std::int64_t least;  // of the longer side
  const char* name;
};
constexpr WidthClass kWidthClasses[] = {{7000, "8K"},    {3200, "4K"},   {2400, "1440p"},
                                        {1800, "1080p"}, {1200, "720p"}, {1, "SD"}};

struct ChannelsName {
  std::int64_t channels;
  const char* name;
};
constexpr ChannelsName kChannels[] = {{1, "mono"}, {2, "stereo"}, {6, "5.1"}, {8, "7.1"}};

std::string firstText(const Json& document, std::initializer_list<const char*> pointers) {
  for (const char* pointer : pointers)
    if (std::string text = textAt(document, pointer); !text.empty()) return text;
  return "";
}

// "image/x-png" is "PNG".
std::string subtype(const std::string& mimeType) {
  std::string name = without("x-", mimeType.substr(mimeType.find('/') + 1));
  std::transform(name.begin(), name.end(), name.begin(), ascii::upper);
  return name;
}

std::string containerOf(const Json& document) {
  const std::string name = without("FORMAT_", textAt(document, "/containerFormat/name"));
  return name.empty() ? subtype(textAt(document, "/mimeType")) : name;
}

std::string resolutionOf(std::int64_t width, std::int64_t height) {
  for (const WidthClass& row : kWidthClasses)
    if (std::max(width, height) >= row.least) return row.name;
  return "";
}

std::string channelsOf(std::int64_t channels) {
  for (const ChannelsName& row : kChannels)
    if (row.channels == channels) return row.name;
  return channels > 0 ? counted(static_cast<std::uint64_t>(channels), "channel") : "";
}

// Of the first video stream. Empty if the document does not list streams.
std::string dynamicRangeOf(const Json& document) {
  const Json* streams = valueAt(document, "/streams");
  if (streams == nullptr || !streams->is_array()) return "";
  for (const Json& stream : *streams) {
    if (textAt(stream, "/type") != "video") continue;
    const Json* ranges = valueAt(stream, "/dynamicRange");
    if (ranges == nullptr || !ranges->is_array()) return "SDR";
    std::vector<std::string> names;
    for (const Json& range : *ranges)
      if (range.is_string()) names.push_back(range.get<std::string>());
    return joined(names);
  }
  return "";
}

// The day, if the text begins with one.
std::string dayOf(const std::string& moment) {
  constexpr std::string_view kForm = "0000-00-00";
  if (moment.size() < kForm.size()) return "";
  for (std::size_t i = 0; i < kForm.size(); ++i)
    if (kForm[i] == '0' ? !ascii::isDigit(moment[i]) : moment[i] != kForm[i]) return "";
  return moment.substr(0, kForm.size());
}

double tenths(double degrees) {
  return std::round(degrees * 10) / 10 + 0.0;  // no "-0"
}

std::optional<Place> placeOf(const Json& document) {
  const auto latitude = numberAt(document, "/position/latitude");
  const auto longitude = numberAt(document, "/position/longitude");
  if (!latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180)
    return std::nullopt;
  // What the file says, before what is near.
  const std::string city = firstText(document, {"/address/city", "/address/location",
                                                "/address/state", "/placeName", "/place/name"});
  const std::string country = firstText(document, {"/address/country", "/place/country"});
  return Place{tenths(*latitude), tenths(*longitude), printable(joined({city, country}))};
}

std::int64_t pixels(const Json& document, const char* pointer) {
  return std::clamp(integerAt(document, pointer).value_or(0), std::int64_t{0}, kWidest);
}

}  // namespace

std::string Place::text() const {
  const auto fixed = [](double degrees) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%.1f", degrees);
    return std::string(buffer);
  };
  return fixed(latitude) + " " + fixed(longitude);
}

ReportedFile reportedFile(const scan::FoundFile& file, const Json& document) {
  const auto text = [&](const char* pointer) { return printable(textAt(document, pointer)); };
  ReportedFile reported;
  reported.path = printable(file.path.full());
  reported.kind = text("/kind/name");
  reported.bytes = file.identity.size;
  const double seconds = numberAt(document, "/duration").value_or(0);
  reported.seconds = seconds > 0 && seconds < kLongest ? seconds : 0;
  reported.container = printable(containerOf(document));
  reported.videoCodec = without("CODEC_ID_", text("/videoCodec/name"));
  reported.audioCodec = without("CODEC_ID_", text("/audioCodec/name"));
  reported.width = pixels(document, "/width");
  reported.height = pixels(document, "/height");
  if (reported.kind == "video") {
    reported.resolution = resolutionOf(reported.width, reported.height);
    reported.dynamicRange = printable(dynamicRangeOf(document));
  }
  reported.channels = channelsOf(integerAt(document, "/channels").value_or(0));
  reported.dlnaProfile = text("/dlnaProfile");
  if (reported.kind == "photo") reported.taken = dayOf(textAt(document, "/taken"));
  reported.date = dayOf(firstText(document, {"/taken", "/created", "/creationDate"}));
  if (reported.date.empty()) reported.date = dayOf(dateText(file.identity.mtimeNs / 1000000000));
  reported.title = text("/title");
  reported.artist = text("/artist");
  reported.fingerprint = text("/fingerprint");
  reported.state = stateName(file.state);
  reported.place = placeOf(document);
  return reported;
}

}  // namespace kolum::tool
