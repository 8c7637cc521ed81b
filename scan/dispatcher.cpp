#include "scan/dispatcher.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kolum::scan {

namespace {

// After a kill, each marked file is read alone, so no more are marked than half a second takes.
constexpr double kSecondsInStore = 0.4;
constexpr std::size_t kSmallestBatch = 16;
constexpr std::size_t kLargestBatch = 2048;

}  // namespace

Dispatcher::Queue& Dispatcher::queue(std::size_t lane) {
  if (queues_.size() <= lane) queues_.resize(lane + 1);
  return queues_[lane];
}

void Dispatcher::add(std::size_t lane, Task&& task) {
  queue(lane).tasks.push_back(std::move(task));
}

std::size_t Dispatcher::waiting(std::size_t lane) const {
  return lane < queues_.size() ? queues_[lane].tasks.size() : 0;
}

bool Dispatcher::isIdle() const {
  return std::all_of(queues_.begin(), queues_.end(),
                     [](const Queue& queue) { return queue.tasks.empty(); });
}

void Dispatcher::write() {
  if (store_.isInBatch()) return;
  store_.begin();
  writtenSince_ = Clock::now();
}

bool Dispatcher::isHungry(std::size_t lane) const {
  const Queue& queue = queues_[lane];
  return !queue.tasks.empty() && lanes_.isHealthy(lane) && lanes_.waiting(lane) <= queue.batch / 2;
}

void Dispatcher::commitIfDue() {
  bool isDue = store_.isInBatch() && Clock::now() - writtenSince_ >= kLongestWait;
  for (std::size_t i = 0; i < queues_.size() && !isDue; ++i) isDue = isHungry(i);
  if (isDue) commit();
}

void Dispatcher::commit() {
  std::vector<std::vector<Task>> next(queues_.size());
  for (std::size_t i = 0; i < queues_.size(); ++i)
    if (isHungry(i)) next[i] = nextTasks(i);
  if (store_.isInBatch()) store_.commit();
  for (std::size_t i = 0; i < next.size(); ++i)
    if (!next[i].empty()) lanes_.begin(i, std::move(next[i]));
}

// Marks them.
std::vector<Task> Dispatcher::nextTasks(std::size_t lane) {
  adaptBatch(lane);
  Queue& queue = queues_[lane];
  const std::size_t room = queue.batch - std::min(queue.batch, lanes_.waiting(lane));
  const auto count = static_cast<std::ptrdiff_t>(std::min(room, queue.tasks.size()));
  std::vector<Task> tasks(std::make_move_iterator(queue.tasks.begin()),
                          std::make_move_iterator(queue.tasks.begin() + count));
  queue.tasks.erase(queue.tasks.begin(), queue.tasks.begin() + count);
  for (const Task& task : tasks) {
    if (task.kind != Task::Kind::kLook) continue;
    write();
    store_.markAtHand({task.job.file, task.job.identity, task.job.isAlone});
  }
  return tasks;
}

void Dispatcher::adaptBatch(std::size_t lane) {
  Queue& queue = queues_[lane];
  const Clock::time_point now = Clock::now();
  const std::uint64_t finished = lanes_.finished(lane);
  const double seconds = std::chrono::duration<double>(now - queue.before).count();
  const auto done = static_cast<double>(finished - queue.finishedBefore);
  if (done > 0 && seconds > 0) {
    const double wanted = std::min(done / seconds * kSecondsInStore, double{kLargestBatch});
    // Growing slowly: the first files may be small ones.
    queue.batch = std::clamp(std::min(static_cast<std::size_t>(wanted), queue.batch * 2),
                             kSmallestBatch, kLargestBatch);
  }
  queue.finishedBefore = finished;
  queue.before = now;
}

std::uint64_t Dispatcher::drop(std::size_t lane) {
  std::vector<Task> begun = lanes_.takeBack(lane);
  for (const Task& task : begun) {
    if (task.kind != Task::Kind::kLook) continue;
    write();
    store_.unmark(task.job.file);
  }
  const std::uint64_t count = begun.size() + waiting(lane);
  if (lane < queues_.size()) queues_[lane].tasks.clear();
  return count;
}

}  // namespace kolum::scan
