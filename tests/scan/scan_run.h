// Scans of real folders with a prober that tests control.
#ifndef KOLUM_TESTS_SCAN_SCAN_RUN_H
#define KOLUM_TESTS_SCAN_SCAN_RUN_H

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "scan/store.h"
#include "scan/supervisor.h"

namespace kolum::test {

// A file's document holds its size and a number that grows with each look.
inline scan::Outcome described(const scan::Job& job, int look = 0) {
  scan::Outcome outcome;
  outcome.kind = scan::Outcome::Kind::kDocument;
  outcome.document = R"({"kind":"music","bytes":)" + std::to_string(job.identity.size) +
                     R"(,"look":)" + std::to_string(look) + "}";
  outcome.bytesRead = static_cast<std::uint64_t>(job.identity.size);
  return outcome;
}

inline scan::Outcome failed(scan::Outcome::Kind kind, const std::string& code) {
  scan::Outcome outcome;
  outcome.kind = kind;
  outcome.reason = {code, "because of " + code};
  return outcome;
}

// Gives prepared answers, and remembers what it was asked. Shared with threads that may outlive a
// test.
class FakeProber {
 public:
  using Answer = std::function<scan::Outcome(const scan::Job&)>;

  scan::Prober prober() const {
    return [state = state_](const scan::Job& job) {
      Answer answer;
      int look = 0;
      {
        const std::lock_guard lock(state->mutex);
        state->asked.push_back(job.file.full());
        if (job.isAlone) state->alone.push_back(job.file.full());
        look = static_cast<int>(state->asked.size());
        const auto found = state->answers.find(job.file.name);
        if (found != state->answers.end()) answer = found->second;
        state->most = std::max(state->most, ++state->now);
      }
      scan::Outcome outcome = answer ? answer(job) : described(job, look);
      const std::lock_guard lock(state->mutex);
      --state->now;
      return outcome;
    };
  }

  // For files of that name.
  void answer(const std::string& name, Answer answer) {
    const std::lock_guard lock(state_->mutex);
    state_->answers[name] = std::move(answer);
  }
  void answer(const std::string& name, scan::Outcome::Kind kind, const std::string& code) {
    answer(name, [kind, code](const scan::Job&) { return failed(kind, code); });
  }
  void answerNormally(const std::string& name) {
    const std::lock_guard lock(state_->mutex);
    state_->answers.erase(name);
  }

  // What was asked since the last time.
  std::vector<std::string> takeAsked() {
    const std::lock_guard lock(state_->mutex);
    state_->alone.clear();
    return std::exchange(state_->asked, {});
  }
  std::vector<std::string> alone() const {
    const std::lock_guard lock(state_->mutex);
    return state_->alone;
  }
  int mostAtOnce() const {
    const std::lock_guard lock(state_->mutex);
    return state_->most;
  }

 private:
  struct State {
    std::mutex mutex;
    std::map<std::string, Answer> answers;
    std::vector<std::string> asked;
    std::vector<std::string> alone;
    int now = 0;
    int most = 0;
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

inline scan::Selection everyFile() {
  const auto all = [](std::string_view, const std::string&) { return true; };
  return {all, all};
}

inline scan::ScanOptions scanOf(const std::vector<std::string>& roots) {
  scan::ScanOptions options;
  for (const std::string& root : roots) options.targets.push_back({.root = root});
  options.selection = everyFile();
  options.processors = 2;
  return options;
}

// What a library knows, without what differs between runs: path, size, state, reason.
inline std::map<std::string, std::string> contentOfLibrary(const std::string& file,
                                                           const scan::Version& version) {
  std::map<std::string, std::string> rows;
  scan::Store store(file, version, scan::Store::Access::kRead);
  store.forEachFile({}, [&](const scan::FoundFile& found) {
    rows[found.path.full()] = std::to_string(static_cast<int>(found.state)) + " " +
                              std::to_string(found.identity.size) + " " +
                              (found.reason ? found.reason->code : "") +
                              (found.document.empty() ? "" : " described");
  });
  return rows;
}

}  // namespace kolum::test

#endif
