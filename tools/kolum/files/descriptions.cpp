#include "files/descriptions.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <future>
#include <mutex>
#include <semaphore>
#include <thread>

#include "terminal/interruption.h"

namespace kolum::tool {

namespace {

using Answer = std::optional<Description>;

void print(Context& context, const std::string& name, Answer answer) {
  if (!answer) return;
  if (!answer->result) return context.fail(name, *answer->failure);
  if (answer->failure) {
    context.fail(name, std::string_view(answer->failure->reason));
    addFailure(*answer->result, *answer->failure);
  }
  context.printer.block(*answer->result);
}

// Describes several files at a time, and prints the answers in the order of the files.
class Pipeline {
 public:
  Pipeline(Context& context, std::ptrdiff_t jobs, const Describe& describe)
      : context_(context),
        describe_(describe),
        free_(jobs),
        mostPending_(std::max(kFewestPending, static_cast<std::size_t>(jobs))),
        printer_([this] { printAll(); }) {}
  // What was begun is finished, and nothing else is begun.
  ~Pipeline() {
    isCancelled_ = true;
    end();
  }
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  void add(const MediaFile& file) {
    push(file.path.given, [this, file] {
      free_.acquire();
      const Release release(free_);
      return isCancelled_ || Interruption::hasCome() ? Answer() : describe_(file);
    });
  }

  // Printed in its turn, too.
  void fail(const std::string& name, const Failure& failure) {
    push(name, [failure]() -> Answer { return failure; });
  }

  // Waits until everything is printed. Throws what describing or printing threw.
  void finish() {
    end();
    if (error_ != nullptr) std::rethrow_exception(error_);
  }

 private:
  // Files that may wait for one before them, which may take its whole time.
  static constexpr std::size_t kFewestPending = 64;

  using Slots = std::counting_semaphore<>;
  class Release {
   public:
    explicit Release(Slots& slots) : slots_(slots) {}
    ~Release() { slots_.release(); }
    Release(const Release&) = delete;
    Release& operator=(const Release&) = delete;

   private:
    Slots& slots_;
  };

  struct Pending {
    std::string name;
    std::future<Answer> answer;
  };

  void end() {
    {
      const std::lock_guard lock(mutex_);
      isEnded_ = true;
    }
    changed_.notify_all();
    if (printer_.joinable()) printer_.join();
  }

  // Throws what describing or printing threw before.
  void push(const std::string& name, std::function<Answer()> work) {
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return pending_.size() < mostPending_ || error_ != nullptr; });
      if (error_ != nullptr) std::rethrow_exception(error_);
      pending_.push_back({name, std::async(std::launch::async, std::move(work))});
    }
    changed_.notify_all();
  }

  std::optional<Pending> next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !pending_.empty() || isEnded_; });
    if (pending_.empty()) return std::nullopt;
    std::optional<Pending> first = std::move(pending_.front());
    pending_.pop_front();
    return first;
  }

  void printAll() {
    while (auto file = next()) {
      changed_.notify_all();
      try {
        print(context_, file->name, file->answer.get());
      } catch (...) {
        isCancelled_ = true;
        const std::lock_guard lock(mutex_);
        error_ = std::current_exception();
        break;
      }
    }
    changed_.notify_all();
  }

  Context& context_;
  const Describe& describe_;
  Slots free_;
  const std::size_t mostPending_;
  std::atomic<bool> isCancelled_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Pending> pending_;
  std::exception_ptr error_;
  bool isEnded_ = false;
  std::thread printer_;
};

std::ptrdiff_t jobsOf(const MediaFileArguments& arguments) {
  return arguments.jobs > 0 ? arguments.jobs
                            : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

}  // namespace

void describeMediaFiles(Context& context, const MediaFileArguments& arguments, unsigned kinds,
                        const Describe& describe) {
  const std::ptrdiff_t jobs = jobsOf(arguments);
  if (jobs == 1) {
    const auto visit = [&](const MediaFile& file) {
      print(context, file.path.given, describe(file));
    };
    return forEachMediaFile(
        context, arguments, kinds, visit,
        [&](const std::string& name, const Failure& failure) { context.fail(name, failure); });
  }
  Pipeline pipeline(context, jobs, describe);
  forEachMediaFile(
      context, arguments, kinds, [&](const MediaFile& file) { pipeline.add(file); },
      [&](const std::string& name, const Failure& failure) { pipeline.fail(name, failure); });
  // The walk's own has ended with it.
  const Interruption interruption;
  pipeline.finish();
  Interruption::check();
}

}  // namespace kolum::tool
