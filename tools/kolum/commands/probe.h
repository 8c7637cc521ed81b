// The descriptions of files, one function per kind of media.
#ifndef KOLUM_TOOL_COMMANDS_PROBE_H
#define KOLUM_TOOL_COMMANDS_PROBE_H

#include <variant>

#include "files/paths.h"
#include "terminal/failure.h"
#include "terminal/output.h"

namespace kolum::tool {

struct ProbeOptions {
  int audioStream = 0;  // counts audio streams only
};

// What a file is, or why that is not known.
using Description = std::variant<Result, Failure>;

Description describeAudio(const MediaPath& path, const ProbeOptions& options);
Description describePhoto(const MediaPath& path, const ProbeOptions& options);
Description describeVideo(const MediaPath& path, const ProbeOptions& options);

// Of a file of that kind (MEDIA_KIND_*). BYCONTENT: its content was asked for the kind.
Description describe(int kind, bool byContent, const MediaPath& path, const ProbeOptions& options);

}  // namespace kolum::tool

#endif
