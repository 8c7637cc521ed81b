#include <kolum/dlna.h>

#include "api/guarded.h"
#include "base/trace.h"
#include "probe/explain.h"

using namespace kolum;

unsigned int ExplainDlnaProfile(const char* folder, const char* fileName, int audioStreamIndex,
                                DlnaNaming* naming) noexcept {
  return api::guarded(1U, [&] {
    if (folder == nullptr || fileName == nullptr || naming == nullptr) return 1U;
    probe::Explained explained = probe::explainProfile(
        {.folder = folder, .fileName = fileName, .audioStreamIndex = audioStreamIndex});
    write(explained.trace);
    if (!explained.naming) return 1U;
    *naming = std::move(*explained.naming);
    return 0U;
  });
}
