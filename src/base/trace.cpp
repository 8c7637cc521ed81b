#include "base/trace.h"

#include <cstdio>

#include "base/log.h"

namespace kolum {

void write(const Trace& trace) {
  for (const TraceLine& line : trace.lines()) {
    switch (line.channel) {
      case TraceChannel::kOutput:
        std::fputs(line.text.c_str(), stdout);
        break;
      case TraceChannel::kError:
        std::fputs(line.text.c_str(), stderr);
        break;
      case TraceChannel::kLog:
        KOLUM_LOG_AS(kMediaSource, line.function.c_str(), "%s", line.text.c_str());
        break;
    }
  }
}

}  // namespace kolum
