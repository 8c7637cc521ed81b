// Explains the DLNA profile of a video.
#ifndef KOLUM_PROBE_EXPLAIN_H
#define KOLUM_PROBE_EXPLAIN_H

#include <kolum/dlna.h>

#include <optional>

#include "probe/video.h"

namespace kolum::probe {

struct Explained {
  std::optional<DlnaNaming> naming;  // empty if the video cannot be probed
  Trace trace;
};

Explained explainProfile(const ProbeRequest& asked);

}  // namespace kolum::probe

#endif
