// Why a file has no DLNA name, from its document alone.
#ifndef KOLUM_TOOL_REPORT_TELEVISION_H
#define KOLUM_TOOL_REPORT_TELEVISION_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace kolum::tool {

struct NamelessReason {
  std::string nearest;               // the name with the fewest failed tests; may be empty
  std::vector<std::string> missing;  // what that needs: "audio AAC-LC stereo"
  std::string remark;                // if there is none

  friend bool operator<(const NamelessReason& left, const NamelessReason& right) {
    return std::tie(left.nearest, left.missing, left.remark) <
           std::tie(right.nearest, right.missing, right.remark);
  }
};

// Empty for a file that has a name, and for one that is no video or song.
std::optional<NamelessReason> namelessReason(const nlohmann::ordered_json& document,
                                             const std::string& path);

}  // namespace kolum::tool

#endif
