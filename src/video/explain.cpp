#include <kolum/dlna.h>

#include <utility>

#include "video/probe.h"

namespace kolum::video {

namespace {

unsigned int explain(const char* folder, const char* fileName, int audioStreamIndex,
                     DlnaNaming& naming) {
  DlnaExplanation candidates;
  const ProbeResult result = probeVideo({.folder = folder,
                                         .fileName = fileName,
                                         .audioStreamIndex = audioStreamIndex,
                                         .explanation = &candidates},
                                        kRecordPolicy);
  if (!result.succeeded) return 1;
  naming = {.profile = result.facts.dlnaProfile,
            .mimeType = result.facts.mimeType,
            .wasAsked = result.facts.askedDlnaRules,
            .candidates = std::move(candidates)};
  return 0;
}

}  // namespace

}  // namespace kolum::video

unsigned int ExplainDlnaProfile(const char* folder, const char* fileName, int audioStreamIndex,
                                kolum::DlnaNaming* naming) noexcept try {
  if (folder == nullptr || fileName == nullptr || naming == nullptr) return 1;
  return kolum::video::explain(folder, fileName, audioStreamIndex, *naming);
} catch (...) {
  return 1;
}
