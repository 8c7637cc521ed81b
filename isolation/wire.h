// Queries and findings as bytes, for the way between two processes. The bytes may come from a
// process that a hostile file has taken over: decoding checks every length and number.
#ifndef KOLUM_ISOLATION_WIRE_H
#define KOLUM_ISOLATION_WIRE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "read/findings/findings.h"

namespace kolum::isolation {

// What a message may take in memory once it is decoded: an empty text of four bytes becomes an
// object of 32, a stream of a hundred bytes one of thousand. Honest answers stay below a third.
inline constexpr std::size_t kMostDecoded = std::size_t{32} << 20;

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
