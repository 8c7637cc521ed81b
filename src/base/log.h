// The library's log macros: everything goes to the host's debug log at one level.
#ifndef KOLUM_BASE_LOG_H
#define KOLUM_BASE_LOG_H

#include <kolum/host.h>

namespace kolum {

inline constexpr int kLogLevel = 5;

// The source name that all media probes log under.
inline constexpr char kMediaSource[] = "MediaInfo";

}  // namespace kolum

// Logs under the given function name, which hosts' log filters match.
#define KOLUM_LOG_AS(source, function, ...) \
  koDebugUtilWrapperPrint(::kolum::kLogLevel, nullptr, source, __LINE__, function, __VA_ARGS__)

#define KOLUM_LOG(source, ...) KOLUM_LOG_AS(source, __func__, __VA_ARGS__)

#endif
