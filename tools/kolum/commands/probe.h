// The probes of the probe command, one per kind of media. Each prints the file's result or reports
// why there is none.
#ifndef KOLUM_TOOL_COMMANDS_PROBE_H
#define KOLUM_TOOL_COMMANDS_PROBE_H

#include "files/paths.h"
#include "terminal/context.h"

namespace kolum::tool {

struct ProbeOptions {
  int audioStream = 0;  // counts audio streams only
};

void probeAudio(Context& context, const MediaPath& path, const ProbeOptions& options);
void probePhoto(Context& context, const MediaPath& path, const ProbeOptions& options);
void probeVideo(Context& context, const MediaPath& path, const ProbeOptions& options);

}  // namespace kolum::tool

#endif
