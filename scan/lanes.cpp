#include "scan/lanes.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <system_error>
#include <utility>

#include "scan/pace.h"

namespace kolum::scan {

namespace {

constexpr std::size_t kManyResults = 256;
// For the files at hand, if nobody has waited for them.
constexpr std::chrono::milliseconds kTimeToEnd{500};

}  // namespace

struct Lanes::Lane {
  // A task that a thread works on.
  struct Running {
    Task task;
    Clock::time_point since;
    bool isLeft = false;  // taken away from its thread, which has to end when it returns
  };

  Lane(Device itsDevice, std::size_t most)
      : device(std::move(itsDevice)), mostThreads(most), pace(most) {}

  std::size_t unfinished() const { return tasks.size() + running.size() + hung.size(); }

  Device device;
  std::size_t mostThreads;
  Pace pace;
  std::deque<Task> tasks;
  std::list<std::shared_ptr<Running>> running;
  std::size_t threads = 0;  // those that were not left behind
  Clock::time_point pausedUntil;
  std::uint64_t finished = 0;
  bool isHealthy = true;

  // Until the device has answered a question.
  std::vector<Task> hung;
  std::optional<Clock::time_point> askedAt;
  bool hasAnswered = false;
};

struct Lanes::State {
  mutable std::mutex mutex;
  std::condition_variable tasksCame;
  std::shared_ptr<Bell> bell;
  Work work;
  Question question;
  Crew crew;
  std::size_t mostRunning = 0;  // of all lanes; 0: any number
  std::size_t running = 0;
  bool isStopping = false;
  std::deque<Lane> lanes;
  std::vector<TaskResult> results;

  bool mayBegin(const Lane& lane) const {
    return lane.isHealthy && !lane.tasks.empty() && lane.running.size() < lane.pace.jobs() &&
           (mostRunning == 0 || running < mostRunning) && Clock::now() >= lane.pausedUntil;
  }
  bool isWorthWaking() const {
    return results.size() >= kManyResults ||
           std::any_of(lanes.begin(), lanes.end(), [](const Lane& lane) {
             return lane.tasks.empty() && lane.running.size() < lane.threads;
           });
  }
};

Lanes::Lanes(Work work, Question question, Limits limits, std::shared_ptr<Bell> bell)
    : state_(std::make_shared<State>()), limits_(limits) {
  state_->work = std::move(work);
  state_->question = std::move(question);
  state_->bell = std::move(bell);
  state_->mostRunning = limits.jobs;
}

Lanes::~Lanes() {
  stop(Clock::now() + kTimeToEnd);
}

std::size_t Lanes::laneOf(const Device& device) {
  const std::lock_guard lock(state_->mutex);
  const auto found = std::find_if(state_->lanes.begin(), state_->lanes.end(),
                                  [&](const Lane& lane) { return lane.device.id == device.id; });
  if (found == state_->lanes.end()) {
    const std::size_t jobs =
        limits_.jobs != 0 ? limits_.jobs : jobsFor(device.medium, limits_.processors);
    state_->lanes.emplace_back(device, jobs);
    return state_->lanes.size() - 1;
  }
  return static_cast<std::size_t>(found - state_->lanes.begin());
}

std::size_t Lanes::size() const {
  const std::lock_guard lock(state_->mutex);
  return state_->lanes.size();
}

void Lanes::begin(std::size_t number, std::vector<Task>&& tasks) {
  const std::lock_guard lock(state_->mutex);
  Lane& lane = state_->lanes[number];
  for (Task& task : tasks) lane.tasks.push_back(std::move(task));
  startThreads(number);
  state_->tasksCame.notify_all();
}

// As many as the lane has use for. One is enough if there can be no more.
void Lanes::startThreads(std::size_t number) {
  Lane& lane = state_->lanes[number];
  if (state_->isStopping || !lane.isHealthy) return;
  const std::size_t wanted = std::min(lane.mostThreads, lane.tasks.size() + lane.running.size());
  while (lane.threads < wanted) {
    try {
      state_->crew.start([state = state_, number] { runThread(state, number); });
    } catch (const std::system_error&) {
      if (lane.threads == 0) throw;
      return;
    }
    ++lane.threads;
  }
}

void Lanes::runThread(const std::shared_ptr<State>& state, std::size_t number) {
  std::unique_lock lock(state->mutex);
  Lane& lane = state->lanes[number];
  for (;;) {
    while (!state->isStopping && !state->mayBegin(lane)) {
      const bool isPaused = Clock::now() < lane.pausedUntil;
      if (isPaused) {
        state->tasksCame.wait_until(lock, lane.pausedUntil);
      } else {
        state->tasksCame.wait(lock);
      }
    }
    if (state->isStopping) return;
    const auto running = std::make_shared<Lane::Running>();
    running->task = std::move(lane.tasks.front());
    running->since = Clock::now();
    lane.tasks.pop_front();
    lane.running.push_back(running);
    ++state->running;
    Task own = running->task;
    lock.unlock();
    TaskResult result = state->work(std::move(own));
    lock.lock();
    if (running->isLeft) return;
    lane.running.remove(running);
    --state->running;
    ++lane.finished;
    lane.pace.finished(result.waiting, result.outcome.bytesRead);
    lane.pausedUntil = Clock::now() + lane.pace.pause();
    state->results.push_back(std::move(result));
    if (state->isWorthWaking()) state->bell->ring();
    // Another lane may have waited for its turn, or this one may use more threads again.
    if (state->mostRunning != 0 || lane.threads > 1) state->tasksCame.notify_all();
  }
}

std::size_t Lanes::waiting(std::size_t lane) const {
  const std::lock_guard lock(state_->mutex);
  return state_->lanes[lane].tasks.size();
}

std::size_t Lanes::unfinished() const {
  const std::lock_guard lock(state_->mutex);
  std::size_t count = state_->results.size();
  for (const Lane& lane : state_->lanes) count += lane.unfinished();
  return count;
}

std::uint64_t Lanes::finished(std::size_t lane) const {
  const std::lock_guard lock(state_->mutex);
  return state_->lanes[lane].finished;
}

std::vector<TaskResult> Lanes::takeResults() {
  const std::lock_guard lock(state_->mutex);
  return std::exchange(state_->results, {});
}

// In a thread of its own, with one of the tasks that hang.
void Lanes::ask(std::size_t number) {
  Lane& lane = state_->lanes[number];
  lane.askedAt = Clock::now();
  lane.hasAnswered = false;
  state_->crew.start([state = state_, number, job = lane.hung.front().job] {
    state->question(job);
    const std::lock_guard lock(state->mutex);
    state->lanes[number].hasAnswered = true;
  });
}

std::vector<HungTask> Lanes::takeHung(Clock::duration limit, Clock::duration answerLimit) {
  const std::lock_guard lock(state_->mutex);
  const Clock::time_point now = Clock::now();
  std::vector<HungTask> taken;
  for (std::size_t i = 0; i < state_->lanes.size(); ++i) {
    Lane& lane = state_->lanes[i];
    for (auto at = lane.running.begin(); at != lane.running.end();) {
      const std::shared_ptr<Lane::Running> running = *at;
      if (now - running->since < limit) {
        ++at;
        continue;
      }
      at = lane.running.erase(at);
      running->isLeft = true;
      --state_->running;
      --lane.threads;
      lane.hung.push_back(std::move(running->task));
    }
    if (lane.hung.empty()) continue;
    if (!lane.askedAt) ask(i);
    if (!lane.hasAnswered && now - *lane.askedAt < answerLimit) continue;
    if (!lane.hasAnswered) lane.isHealthy = false;
    for (Task& task : lane.hung) taken.push_back({std::move(task), !lane.isHealthy});
    lane.hung.clear();
    if (lane.isHealthy) lane.askedAt.reset();
    startThreads(i);  // in the place of those that were left behind
  }
  return taken;
}

bool Lanes::isHealthy(std::size_t lane) const {
  const std::lock_guard lock(state_->mutex);
  return state_->lanes[lane].isHealthy;
}

void Lanes::giveUp(std::size_t lane) {
  const std::lock_guard lock(state_->mutex);
  state_->lanes[lane].isHealthy = false;
}

std::string Lanes::mountOf(std::size_t lane) const {
  const std::lock_guard lock(state_->mutex);
  return state_->lanes[lane].device.mount;
}

std::vector<Task> Lanes::takeBack(std::size_t number) {
  const std::lock_guard lock(state_->mutex);
  std::deque<Task>& tasks = state_->lanes[number].tasks;
  std::vector<Task> taken(std::make_move_iterator(tasks.begin()),
                          std::make_move_iterator(tasks.end()));
  tasks.clear();
  return taken;
}

std::vector<Lanes::AtHand> Lanes::atHand() const {
  const std::lock_guard lock(state_->mutex);
  std::vector<AtHand> files;
  for (const Lane& lane : state_->lanes)
    for (const auto& running : lane.running)
      files.push_back({running->task.job.file, running->since});
  return files;
}

std::size_t Lanes::threads() const {
  return state_->crew.size();
}

bool Lanes::stop(Clock::time_point deadline) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->isStopping = true;
    state_->tasksCame.notify_all();
  }
  return state_->crew.waitUntil(deadline);
}

}  // namespace kolum::scan
