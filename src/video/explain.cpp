#include <kolum/dlna.h>

#include <algorithm>
#include <utility>

#include "video/probe.h"

namespace kolum::video {

namespace {

std::ptrdiff_t failures(const DlnaCandidate& candidate) {
  return std::count_if(candidate.tests.begin(), candidate.tests.end(),
                       [](const DlnaTest& test) { return !test.held; });
}

// The index of the refused candidate that the least is missing for, or -1. Those behind the last
// taken one are no better than it.
int nextBetter(const std::vector<DlnaCandidate>& candidates) {
  const auto taken = std::find_if(candidates.rbegin(), candidates.rend(),
                                  [](const DlnaCandidate& candidate) { return candidate.taken; });
  const auto end = taken != candidates.rend() ? taken.base() : candidates.end();
  auto best = end;
  for (auto it = candidates.begin(); it != end; ++it)
    if (!it->taken && (best == end || failures(*it) < failures(*best))) best = it;
  return best != end ? static_cast<int>(best - candidates.begin()) : -1;
}

// Why the rules were not asked; null when they were and hold.
const char* wayAroundTheRules(const VideoFacts& facts, std::string_view fileName) {
  if (!facts.askedDlnaRules)
    return facts.mimeType.empty() ? "disc images get no profile"
                                  : "files of this container get a MIME type only";
  if (isWmvHighTestStream(fileName)) return "DLNA's own test stream, named so whatever it holds";
  return nullptr;
}

unsigned int explain(const char* folder, const char* fileName, int audioStreamIndex,
                     DlnaNaming& naming) {
  DlnaExplanation explanation;
  const ProbeResult result = probeVideo({.folder = folder,
                                         .fileName = fileName,
                                         .audioStreamIndex = audioStreamIndex,
                                         .explanation = &explanation},
                                        kRecordPolicy);
  if (!result.succeeded) return 1;
  DlnaNaming answer = {.profile = result.facts.dlnaProfile,
                       .mimeType = result.facts.mimeType,
                       .details = std::move(explanation.details),
                       .candidates = std::move(explanation.candidates),
                       .remarks = std::move(explanation.remarks),
                       .next = -1};
  if (const char* remark = wayAroundTheRules(result.facts, fileName))
    answer.remarks.emplace_back(remark);
  else
    answer.next = nextBetter(answer.candidates);
  naming = std::move(answer);
  return 0;
}

}  // namespace

}  // namespace kolum::video

unsigned int ExplainDlnaProfile(const char* folder, const char* fileName, int audioStreamIndex,
                                kolum::DlnaNaming* naming) noexcept {
  try {
    if (folder == nullptr || fileName == nullptr || naming == nullptr) return 1;
    return kolum::video::explain(folder, fileName, audioStreamIndex, *naming);
  } catch (...) {
    return 1;
  }
}
