// Programs in place of osm_info: one that answers, and those that do anything else.
#ifndef KOLUM_TESTS_SUPPORT_PLACE_TOOL_H
#define KOLUM_TESTS_SUPPORT_PLACE_TOOL_H

#include <string>

#include "support/temp_dir.h"

namespace kolum::test {

// Answers every position with a place whose distance is the number of the question. NOTES gets a
// line for each start and each question.
std::string countingPlaceTool(const TempDir& folder, const std::string& notes);

struct BadPlaceTool {
  const char* what;
  const char* script;  // for /bin/sh
  const char* reason;
};

// Each takes its whole answer time at most.
inline constexpr BadPlaceTool kBadPlaceTools[] = {
    {"ends", "exit 3", "it has ended"},
    {"hangs", "sleep 60", "it does not answer in time"},
    {"drips", "read -r p; while :; do printf x; sleep 0.1; done", "it does not answer in time"},
    {"floods in a line", "read -r p; yes yes | tr -d '\\n'", "its answer is too long"},
    {"floods with lines",
     "read -r p; while :; do echo \"{\\\"position\\\":\\\"$p\\\",\\\"name\\\":\\\"A\\\","
     "\\\"distance\\\":1}\"; done | head -c 100000; sleep 60",
     "it says more than it was asked for"},
    {"talks nonsense", "while read -r p; do echo place; done", "it answers nonsense"},
    {"knows no --places", "echo '<?xml version=\"1.0\"?><error>unknown</error>'; exit 2", ""},
    {"answers another question",
     "while read -r p; do echo '{\"position\":\"1.0000 1.0000\",\"name\":\"A\",\"distance\":1}'; "
     "done",
     "it answers nonsense"},
    {"answers early",
     "echo '{\"position\":\"1.0000 1.0000\",\"name\":\"A\",\"distance\":1}'; while read -r p; do "
     "echo \"{\\\"position\\\":\\\"$p\\\",\\\"name\\\":\\\"A\\\",\\\"distance\\\":1}\"; done",
     ""},
};

// A program with this SCRIPT, and its path.
std::string placeTool(const TempDir& folder, const std::string& script);

}  // namespace kolum::test

#endif
