// The log macros of the library: everything goes to the host's debug log at one level.
#ifndef KOLUM_BASE_LOG_H
#define KOLUM_BASE_LOG_H

#include <kolum/host.h>

namespace kolum {

inline constexpr int kLogLevel = 5;

// The source that all media probes name in their lines.
inline constexpr char kMediaSource[] = "MediaInfo";

}  // namespace kolum

// Logs under a function name of its own, which host-side log filters rely on.
#define KOLUM_LOG_AS(source, function, ...) \
  koDebugUtilWrapperPrint(::kolum::kLogLevel, nullptr, source, __LINE__, function, __VA_ARGS__)

#define KOLUM_LOG(source, ...) KOLUM_LOG_AS(source, __func__, __VA_ARGS__)

#endif
