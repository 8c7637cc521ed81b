// How a probe reads its file, for callers who want more of the file than the probe asks for.
#ifndef KOLUM_PROBE_READING_H
#define KOLUM_PROBE_READING_H

#include <string>

#include "media/source.h"
#include "read/findings/findings.h"

namespace kolum::probe {

struct Reading {
  const media::Source* source = nullptr;  // the file; if null, the probe opens it
  read::Query also = {};                  // beyond what the probe asks for
  const read::Findings* found = nullptr;  // if not null: all of this, from an earlier reading
};

// What is found in the file. Empty if it cannot be opened.
std::optional<read::Findings> findingsOf(const std::string& path, const read::Query& wanted,
                                         const Reading& reading);
read::Findings findingsOf(const media::Source& source, const read::Query& wanted,
                          const Reading& reading);

}  // namespace kolum::probe

#endif
