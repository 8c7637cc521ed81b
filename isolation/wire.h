// Queries and findings as bytes, for the way between two processes. The bytes may come from a
// process that a hostile file has taken over: decoding checks every length and number.
#ifndef KOLUM_ISOLATION_WIRE_H
#define KOLUM_ISOLATION_WIRE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "read/findings/findings.h"

namespace kolum::isolation {

struct Request {
  std::string fileName;  // without folders; readers judge by its extension
  read::Query query;
};

std::vector<std::uint8_t> encode(Request request);
std::vector<std::uint8_t> encode(read::Findings findings);

// Empty unless all of BYTES is such a value.
std::optional<Request> decodeRequest(std::span<const std::uint8_t> bytes);
std::optional<read::Findings> decodeFindings(std::span<const std::uint8_t> bytes);

}  // namespace kolum::isolation

#endif
