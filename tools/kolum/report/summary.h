// The sums of a report, gathered file by file.
#ifndef KOLUM_TOOL_REPORT_SUMMARY_H
#define KOLUM_TOOL_REPORT_SUMMARY_H

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "report/reported_file.h"
#include "report/television.h"
#include "scan/query.h"

namespace kolum::tool {

class Summary {
 public:
  // One file: its row of the table, in the order of the columns.
  nlohmann::ordered_json add(const scan::FoundFile& file, const nlohmann::ordered_json& document);
  std::uint64_t files() const { return total_.files; }
  // All but the rows.
  nlohmann::ordered_json json() const;

 private:
  struct Amount {
    std::uint64_t files = 0;
    double bytes = 0;  // sums of hostile sizes must not overflow
    double seconds = 0;

    void add(const ReportedFile& file);
  };
  struct Nameless {
    std::size_t index = 0;
    std::uint64_t files = 0;
    double bytes = 0;
    std::string example;
  };
  struct Problem {
    std::size_t index = 0;
    std::uint64_t files = 0;
  };
  struct Equal {
    std::int64_t bytes = 0;
    std::uint64_t files = 0;
    std::vector<std::string> paths;  // the first
  };
  struct Spot {
    std::uint64_t files = 0;
    std::string name;
  };
  // State, code and reason.
  using ProblemKey = std::tuple<scan::State, std::string, std::string>;

  void addGroups(const ReportedFile& file);
  std::int64_t addNameless(const ReportedFile& file, std::optional<NamelessReason> reason);
  std::int64_t addProblem(const scan::FoundFile& file);
  void addFingerprint(const ReportedFile& file);
  nlohmann::ordered_json groupsJson() const;
  nlohmann::ordered_json televisionsJson() const;
  nlohmann::ordered_json duplicatesJson() const;
  nlohmann::ordered_json problemsJson() const;
  nlohmann::ordered_json placesJson() const;

  Amount total_;
  std::vector<std::map<std::string, Amount>> groups_;
  std::map<std::string, std::uint64_t> months_;
  std::uint64_t undated_ = 0;
  std::uint64_t named_ = 0;
  std::map<NamelessReason, Nameless> nameless_;
  std::map<ProblemKey, Problem> problems_;
  std::uint64_t fingerprints_ = 0;
  std::map<std::string, Equal> equal_;
  std::map<std::pair<double, double>, Spot> places_;
};

}  // namespace kolum::tool

#endif
