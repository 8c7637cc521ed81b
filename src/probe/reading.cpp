#include "probe/reading.h"

#include "isolation/isolation.h"

namespace kolum::probe {

read::Findings findingsOf(const media::Source& source, const read::Query& wanted,
                          const Reading& reading) {
  if (reading.found != nullptr) return *reading.found;
  return isolation::look(source, read::both(wanted, reading.also));
}

std::optional<read::Findings> findingsOf(const std::string& path, const read::Query& wanted,
                                         const Reading& reading) {
  if (reading.source != nullptr) return findingsOf(*reading.source, wanted, reading);
  const auto source = media::Source::open(path);
  if (!source) return std::nullopt;
  return findingsOf(*source, wanted, reading);
}

}  // namespace kolum::probe
