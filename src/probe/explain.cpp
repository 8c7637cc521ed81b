#include "probe/explain.h"

#include <utility>

namespace kolum::probe {

namespace {

// Why the rules did not decide; null if they did.
const char* wayAroundTheRules(const VideoFacts& facts, std::string_view fileName) {
  if (!facts.askedDlnaRules)
    return facts.mimeType.empty() ? "disc images get no profile"
                                  : "files of this container get a MIME type only";
  if (dlna::isWmvHighTestStream(fileName))
    return "DLNA's own test stream, named so whatever it holds";
  return nullptr;
}

}  // namespace

Explained explainProfile(const ProbeRequest& asked) {
  dlna::DlnaExplanation explanation;
  ProbeRequest request = asked;
  request.explanation = &explanation;
  ProbeResult result = probeVideo(request, kRecordPolicy);
  Explained explained = {.naming = std::nullopt, .trace = std::move(result.trace)};
  if (!result.succeeded) return explained;
  DlnaNaming answer = {.profile = result.facts.dlnaProfile,
                       .mimeType = result.facts.mimeType,
                       .details = std::move(explanation.details),
                       .candidates = std::move(explanation.candidates),
                       .remarks = std::move(explanation.remarks),
                       .next = -1};
  if (const char* remark = wayAroundTheRules(result.facts, request.fileName))
    answer.remarks.emplace_back(remark);
  else
    answer.next = dlna::nextBetter(answer.candidates);
  explained.naming = std::move(answer);
  return explained;
}

}  // namespace kolum::probe
