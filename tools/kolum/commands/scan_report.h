// What a scan says while it runs and at its end, for people and for programs.
#ifndef KOLUM_TOOL_COMMANDS_SCAN_REPORT_H
#define KOLUM_TOOL_COMMANDS_SCAN_REPORT_H

#include <chrono>
#include <string>

#include "scan/supervisor.h"
#include "terminal/context.h"

namespace kolum::tool {

class ScanReport {
 public:
  enum class Form { kNone, kLine, kJson };

  // PROTECTIONS: those of the workers, in words.
  ScanReport(Context& context, Form form, std::string protections);
  ~ScanReport();
  ScanReport(const ScanReport&) = delete;
  ScanReport& operator=(const ScanReport&) = delete;

  void progress(const scan::ScanProgress& progress);
  void summary(const scan::ScanSummary& summary, const std::string& library);
  // After a scan of what has changed: for people, one line if anything had.
  void changes(const scan::ScanSummary& summary, const std::string& library);

 private:
  bool isJson() const;

  Context& context_;
  Form form_;
  std::string protections_;
  std::chrono::steady_clock::time_point due_;
};

}  // namespace kolum::tool

#endif
