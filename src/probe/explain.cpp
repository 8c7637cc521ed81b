#include "probe/explain.h"

#include <algorithm>
#include <utility>

namespace kolum::probe {

namespace {

std::ptrdiff_t failures(const DlnaCandidate& candidate) {
  return std::count_if(candidate.tests.begin(), candidate.tests.end(),
                       [](const DlnaTest& test) { return !test.held; });
}

// The index of the rejected candidate with the fewest failed tests, or -1. Candidates after the
// last one taken are no improvement and do not count.
int nextBetter(const std::vector<DlnaCandidate>& candidates) {
  const auto taken = std::find_if(candidates.rbegin(), candidates.rend(),
                                  [](const DlnaCandidate& candidate) { return candidate.taken; });
  const auto end = taken != candidates.rend() ? taken.base() : candidates.end();
  auto best = end;
  for (auto it = candidates.begin(); it != end; ++it)
    if (!it->taken && (best == end || failures(*it) < failures(*best))) best = it;
  return best != end ? static_cast<int>(best - candidates.begin()) : -1;
}

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
    answer.next = nextBetter(answer.candidates);
  explained.naming = std::move(answer);
  return explained;
}

}  // namespace kolum::probe
