// Questions that people ask a library.
#ifndef KOLUM_SCAN_QUERY_H
#define KOLUM_SCAN_QUERY_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "scan/values.h"

namespace kolum::scan {

template <typename Value>
struct Bounds {
  std::optional<Value> least = {};
  std::optional<Value> most = {};
};

// Every condition that is set must hold.
struct FileQuery {
  std::vector<State> states = {};           // any of them; all if empty
  std::optional<std::string> below = {};    // a file's path, or a folder's with everything in it
  std::optional<std::string> kind = {};     // "video", "music", "photo"
  std::optional<std::string> codec = {};    // of picture or sound: "H264", in any case
  Bounds<std::int64_t> size = {};           // bytes
  Bounds<std::int64_t> duration = {};       // seconds
  Bounds<std::string> date = {};            // "2015", "2015-06" or "2015-06-07", all of it included
  std::optional<std::string> profile = {};  // the DLNA name; empty: none
  std::optional<std::string> text = {};     // in the path or a tag; letters in any case
  std::optional<std::string> where = {};  // an SQL expression over the columns of the view "files"

  // Limits of the query: it throws kTooLong beyond its time, and when KEEPGOING returns false.
  std::chrono::seconds timeLimit = std::chrono::seconds(0);  // 0: none
  std::function<bool()> keepGoing = {};
};

struct FoundFile {
  FilePath path;
  Identity identity;
  State state = State::kKnown;
  std::optional<Reason> reason;  // unless its state is kKnown
  std::int64_t lookedAt = 0;     // seconds since 1970
  int schema = 0;                // of the document
  std::string document;          // a JSON object, as stored (store.h); may be empty
};

}  // namespace kolum::scan

#endif
