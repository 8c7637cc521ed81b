#include "commands/scan_report.h"

#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "terminal/text.h"

namespace kolum::tool {

namespace {

using scan::ScanProgress;
using scan::ScanSummary;
using std::chrono::milliseconds;

constexpr std::chrono::seconds kBetweenJson{1};
constexpr milliseconds kBeforeFirstLine{500};

double seconds(milliseconds time) {
  return std::chrono::duration<double>(time).count();
}

std::string_view nameOf(ScanProgress::Phase phase) {
  switch (phase) {
    case ScanProgress::Phase::kFiles:
      break;
    case ScanProgress::Phase::kGone:
      return "gone";
    case ScanProgress::Phase::kSuspects:
      return "suspects";
  }
  return "files";
}

// Digits in groups: "1,234,567".
std::string grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, ",");
  return text;
}

std::string bytesText(std::uint64_t bytes) {
  constexpr std::string_view kUnits[] = {"bytes", "kB", "MB", "GB", "TB"};
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  while (value >= 1000 && unit + 1 < std::size(kUnits)) {
    value /= 1000;
    ++unit;
  }
  return decimalText(value, unit == 0 ? 0 : 1) + " " + std::string(kUnits[unit]);
}

Result atHand(const ScanProgress::AtHand& file) {
  Result result = Result::ofFile(file.path);
  result.data("seconds", seconds(file.since));
  return result;
}

Result progressObject(const ScanProgress& progress) {
  Result object;
  object.data("phase", nameOf(progress.phase));
  object.data("done", progress.done);
  object.data("total", progress.total);
  object.data("totalIsFinal", progress.isTotalFinal);
  object.data("filesPerSecond", std::round(progress.perSecond * 10) / 10);
  if (progress.left) object.data("secondsLeft", progress.left->count());
  object.data("failed", progress.failed);
  object.data("bytesRead", progress.bytesRead);
  object.data("elapsed", seconds(progress.elapsed));
  std::vector<Result> files;
  for (const auto& file : progress.atHand) files.push_back(atHand(file));
  object.data("atHand", files);
  return object;
}

// The file that has been at hand for the longest time.
std::string oldestName(const ScanProgress& progress) {
  const ScanProgress::AtHand* oldest = nullptr;
  for (const auto& file : progress.atHand)
    if (oldest == nullptr || file.since > oldest->since) oldest = &file;
  return oldest == nullptr ? "" : printable(oldest->path.substr(oldest->path.rfind('/') + 1));
}

std::string lineOf(const ScanProgress& progress) {
  const std::string total =
      (progress.isTotalFinal ? "" : "at least ") + grouped(progress.total) + " files";
  std::string line = grouped(progress.done) + " of " + total + ", " +
                     grouped(static_cast<std::uint64_t>(progress.perSecond)) + "/s";
  if (progress.left) line += ", " + durationText(progress.left->count()) + " left";
  if (progress.failed != 0) line += ", " + grouped(progress.failed) + " failed";
  const std::string name = oldestName(progress);
  return name.empty() ? line : line + "  " + name;
}

std::string elapsedText(milliseconds time) {
  return time < std::chrono::minutes(1)
             ? decimalText(seconds(time), 2) + " s"
             : durationText(std::chrono::duration_cast<std::chrono::seconds>(time).count());
}

struct Count {
  const char* key;
  const char* label;
  std::uint64_t ScanSummary::*value;
  const char* remark;  // after the number
  bool isAlwaysShown;
};

constexpr Count kCounts[] = {
    {"new", "New", &ScanSummary::added, "", true},
    {"changed", "Changed", &ScanSummary::changed, "", true},
    {"unchanged", "Unchanged", &ScanSummary::unchanged, "", true},
    {"moved", "Moved", &ScanSummary::moved, "", false},
    {"gone", "Gone", &ScanSummary::gone, "", true},
    {"kept", "Not found", &ScanSummary::kept, "kept, because their disk may be missing", false},
    {"retried", "Tried again", &ScanSummary::retried, "", false},
    {"skipped", "Skipped", &ScanSummary::skipped, "", false},
    {"described", "Described", &ScanSummary::described, "", false},
    {"failed", "Failed", &ScanSummary::failed, "", true},
    {"quarantined", "Quarantined", &ScanSummary::quarantined, "", false},
    {"problems", "Problems", &ScanSummary::problems, "folders or devices that cannot be read",
     false},
    {"linksNotFollowed", "Links", &ScanSummary::links, "not followed", false},
};

void addCounts(Result& result, const ScanSummary& summary) {
  for (const Count& count : kCounts) {
    const std::uint64_t value = summary.*count.value;
    result.data(count.key, value);
    if (value == 0 && !count.isAlwaysShown) continue;
    const std::string remark = *count.remark == '\0' ? "" : std::string(", ") + count.remark;
    result.show(count.label, grouped(value) + remark);
  }
}

void addReasons(Result& result, const ScanSummary& summary) {
  std::vector<Result> rows;
  for (const auto& [code, count] : summary.failedByReason) {
    Result row;
    row.data("code", code);
    row.data("count", count);
    rows.push_back(std::move(row));
    result.show("  " + code, grouped(count));
  }
  result.data("failedByReason", rows);
}

void addTimes(Result& result, const ScanSummary& summary) {
  result.data("bytesRead", summary.bytesRead);
  result.show("Bytes read", bytesText(summary.bytesRead));
  result.data("elapsed", seconds(summary.elapsed));
  const double time = seconds(summary.elapsed);
  const auto rate = time > 0 ? static_cast<double>(summary.files()) / time : 0;
  result.show("Time", elapsedText(summary.elapsed) + ", " +
                          grouped(static_cast<std::uint64_t>(rate)) + " files/s");
  std::vector<Result> files;
  for (const auto& file : summary.slowest) {
    Result row = Result::ofFile(file.path);
    row.data("seconds", seconds(file.elapsed));
    files.push_back(std::move(row));
    result.show(files.size() == 1 ? "Slowest" : "",
                decimalText(seconds(file.elapsed), 3) + " s  " + printable(file.path));
  }
  result.data("slowest", files);
}

}  // namespace

ScanReport::ScanReport(Context& context, Form form, std::string protections)
    : context_(context),
      form_(form),
      protections_(std::move(protections)),
      due_(std::chrono::steady_clock::now()) {
  if (form_ == Form::kLine) due_ += kBeforeFirstLine;
}

ScanReport::~ScanReport() {
  context_.channels.showProgress("", false);
}

bool ScanReport::isJson() const {
  return form_ == Form::kJson || context_.json;
}

void ScanReport::progress(const ScanProgress& progress) {
  const auto now = std::chrono::steady_clock::now();
  if (form_ == Form::kNone || now < due_) return;
  if (form_ == Form::kLine) return context_.channels.showProgress(lineOf(progress), false);
  due_ += kBetweenJson;
  if (due_ < now) due_ = now + kBetweenJson;
  Result result;
  result.data("progress", progressObject(progress));
  context_.printer.json(result);
}

void ScanReport::summary(const ScanSummary& summary, const std::string& library) {
  context_.channels.showProgress("", false);
  Result object = Result::titled(summary.isStopped ? "Stopped" : "Scanned");
  addCounts(object, summary);
  addReasons(object, summary);
  addTimes(object, summary);
  object.data("stopped", summary.isStopped);
  object.text("protections", "Protections", protections_);
  object.text("library", "Library", library);
  if (!isJson()) return context_.printer.block(object);
  Result result;
  result.data("summary", object);
  context_.printer.json(result);
}

void ScanReport::changes(const ScanSummary& found, const std::string& library) {
  if (isJson()) return summary(found, library);
  std::vector<std::string> parts;
  for (const Count& count : kCounts) {
    const std::uint64_t value = found.*count.value;
    const bool isChange = count.value != &ScanSummary::unchanged &&
                          count.value != &ScanSummary::described &&
                          count.value != &ScanSummary::links;
    if (value != 0 && isChange) parts.push_back(grouped(value) + " " + count.key);
  }
  context_.channels.showProgress("", false);
  if (!parts.empty()) context_.printer.raw(joined(parts) + "\n");
}

}  // namespace kolum::tool
