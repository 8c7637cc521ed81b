#include "isolation/isolation.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "base/log.h"
#include "isolation/client.h"

namespace kolum::isolation {

namespace {

// What hosts choose that do not know of isolation.
Mode modeOfEnvironment() {
  const char* value = secure_getenv("KOLUM_ISOLATION");
  const std::string_view mode = value != nullptr ? value : "";
  if (mode == "strict") return Mode::kStrict;
  return mode == "on" ? Mode::kOn : Mode::kOff;
}

thread_local std::uint64_t g_bytesRead = 0;
// Of an InWorker of this thread.
thread_local std::shared_ptr<Client> t_chosen;

struct State {
  std::mutex mutex;
  Settings settings = {.mode = modeOfEnvironment()};
  std::atomic<bool> isOn = settings.mode != Mode::kOff;
  std::shared_ptr<Client> client;
  // For an InWorker with other settings than those above; the last ones at the end.
  std::vector<std::pair<Settings, std::shared_ptr<Client>>> others;
  pid_t owner = 0;
  // Their destructors would end workers of another process.
  std::vector<std::shared_ptr<Client>> ofParents;
};

// Never destroyed: threads of a host may still look while the process ends.
State& state() {
  static auto* const kState = [] {
    static auto* const kNew = new State;
    // A forked child must not find the lock held by a thread that it does not have.
    pthread_atfork([] { kNew->mutex.lock(); }, [] { kNew->mutex.unlock(); },
                   [] { kNew->mutex.unlock(); });
    return kNew;
  }();
  return *kState;
}

// A forked child does not touch the workers of its parent.
void leaveToParent(State& shared) {
  if (shared.owner == getpid()) return;
  shared.owner = getpid();
  if (shared.client != nullptr) shared.ofParents.push_back(std::move(shared.client));
  shared.client = nullptr;
  for (auto& [settings, client] : shared.others) shared.ofParents.push_back(std::move(client));
  shared.others.clear();
}

// The settings' own client.
const std::shared_ptr<Client>& configured(State& shared) {
  if (shared.client == nullptr) shared.client = std::make_shared<Client>(shared.settings);
  return shared.client;
}

std::shared_ptr<Client> clientFor(const Settings& settings) {
  constexpr std::size_t kMostOthers = 4;
  State& shared = state();
  const std::lock_guard lock(shared.mutex);
  leaveToParent(shared);
  if (settings == shared.settings) return configured(shared);
  const auto known = std::find_if(shared.others.begin(), shared.others.end(),
                                  [&](const auto& each) { return each.first == settings; });
  if (known != shared.others.end()) {
    std::rotate(known, known + 1, shared.others.end());
  } else {
    // Those at work end when they are done.
    if (shared.others.size() == kMostOthers) shared.others.erase(shared.others.begin());
    shared.others.emplace_back(settings, std::make_shared<Client>(settings));
  }
  return shared.others.back().second;
}

// Null if files are read in this process.
std::shared_ptr<Client> currentClient() {
  if (t_chosen != nullptr) return t_chosen;
  State& shared = state();
  if (!shared.isOn) return nullptr;
  const std::lock_guard lock(shared.mutex);
  leaveToParent(shared);
  return configured(shared);
}

}  // namespace

void configure(const Settings& settings) {
  State& shared = state();
  std::shared_ptr<Client> former;
  {
    const std::lock_guard lock(shared.mutex);
    shared.settings = settings;
    shared.isOn = settings.mode != Mode::kOff;
    leaveToParent(shared);
    former = std::exchange(shared.client, nullptr);
  }
}

Settings settings() {
  State& shared = state();
  const std::lock_guard lock(shared.mutex);
  return shared.settings;
}

read::Findings look(const media::Source& source, const read::Query& query) {
  const auto client = currentClient();
  if (client == nullptr) return read::look(source, query);
  read::Findings findings = client->look(source, query);
  g_bytesRead += findings.bytesRead;
  if (findings.failure)
    KOLUM_LOG(kMediaSource, "%s: %s", source.name().c_str(), findings.failure->reason.c_str());
  return findings;
}

InWorker::InWorker(const Settings& settings) {
  t_chosen = clientFor(settings);
}

InWorker::~InWorker() {
  t_chosen = nullptr;
}

void forgetWorkers() {
  State& shared = state();
  decltype(shared.others) former;
  const std::lock_guard lock(shared.mutex);
  leaveToParent(shared);
  std::swap(former, shared.others);
}

std::uint64_t bytesReadForThread() {
  return g_bytesRead;
}

void stop() {
  if (const auto client = currentClient()) client->stop();
}

std::optional<std::uint32_t> activeLayers(std::string& why) {
  if (const auto client = currentClient()) return client->activeLayers(why);
  why = "isolation is off";
  return std::nullopt;
}

}  // namespace kolum::isolation
