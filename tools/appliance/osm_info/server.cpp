#include <chrono>

#include "osm_info/http.h"
#include "osm_info/server_reply.h"
#include "osm_info/sources.h"

namespace kolum::osm_info {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// At least one millisecond: libcurl treats 0 as no limit.
milliseconds leftUntil(Clock::time_point end) {
  const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
  if (left < milliseconds(1)) throw LookUpError("the server takes too long");
  return left;
}

}  // namespace

std::vector<Answer> askServer(const Settings& settings, const Query& query) {
  const Clock::time_point end = Clock::now() + settings.timeout;
  HttpClient client(settings.caFile, settings.connectTimeout);
  std::vector<Answer> answers;
  for (const Language* language : settings.languages) {
    const std::string url = requestUrl(settings.serverUrl, query, *language);
    const HttpReply reply = client.get(url, leftUntil(end));
    answers.push_back(readReply(reply.status, reply.body, *language));
  }
  return answers;
}

}  // namespace kolum::osm_info
