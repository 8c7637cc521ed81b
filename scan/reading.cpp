#include "scan/reading.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <exception>
#include <new>
#include <utility>

#include "base/descriptor.h"
#include "scan/beneath.h"

namespace kolum::scan {

namespace {

bool isNothingThere(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

bool exists(const FilePath& path) {
  struct stat status = {};
  return lstat(path.full().c_str(), &status) == 0 || !isNothingThere(errno);
}

std::chrono::nanoseconds processorTime() {
  std::timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

Descriptor openRoot(const Job& job) {
  return Descriptor(::open(job.root().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool isMissingIn(int folder, const std::string& name) {
  struct stat status = {};
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0)
    return !S_ISREG(status.st_mode);
  return isNothingThere(errno);
}

// If it is not certain that a file is missing, it is not.
void check(TaskResult& result) {
  const Job& job = result.task.job;
  const Descriptor root = openRoot(job);
  if (!root.isOpen()) return;
  const Descriptor folder = Beneath(root.get()).openFolder(job.file.folder.substr(job.rootLength));
  if (!folder.isOpen()) {
    if (isNothingThere(errno)) result.missing = result.task.names;
    return;
  }
  for (const std::string& name : result.task.names)
    if (isMissingIn(folder.get(), name)) result.missing.push_back(name);
}

// A suspect was found in the library, not on a walk of this moment.
void lookForSuspect(TaskResult& result) {
  Job& job = result.task.job;
  const Descriptor root = openRoot(job);
  const auto status = root.isOpen() ? Beneath(root.get()).status(job.pathBeneath()) : std::nullopt;
  if (status && S_ISREG(status->st_mode)) {
    job.identity = identityOf(*status);
  } else {
    result.isMissing = true;
  }
}

Outcome failure(Outcome::Kind kind, const char* code, const char* text) {
  Outcome outcome;
  outcome.kind = kind;
  outcome.reason = {code, text};
  return outcome;
}

Outcome probed(const Job& job, const Prober& prober, OpenFiles& openFiles) {
  const OpenFiles::Note note(openFiles, job.file.full());
  try {
    return prober(job);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return failure(Outcome::Kind::kFailure, "system-error", error.what());
  }
}

void look(TaskResult& result, const Prober& prober, OpenFiles& openFiles) {
  const Task& task = result.task;
  for (std::size_t i = 0; i < task.formerNames.size(); ++i) {
    if (exists(task.formerNames[i].path())) continue;
    result.movedFrom = i;
    return;
  }
  if (task.origin == Origin::kSuspect) lookForSuspect(result);
  if (!result.isMissing) result.outcome = probed(task.job, prober, openFiles);
}

}  // namespace

void readRoot(const Job& job) {
  DIR* folder = opendir(job.root().c_str());
  if (folder == nullptr) return;
  static_cast<void>(readdir(folder));
  closedir(folder);
}

TaskResult carryOut(Task&& task, const Prober& prober, OpenFiles& openFiles) noexcept {
  const auto begin = std::chrono::steady_clock::now();
  const std::chrono::nanoseconds busyBefore = processorTime();
  TaskResult result;
  result.task = std::move(task);
  try {
    if (result.task.kind == Task::Kind::kCheck) {
      check(result);
    } else {
      look(result, prober, openFiles);
    }
  } catch (...) {
    result.missing.clear();
    result.isOutOfMemory = true;
  }
  result.elapsed = std::chrono::steady_clock::now() - begin;
  result.waiting = result.elapsed - (processorTime() - busyBefore);
  return result;
}

}  // namespace kolum::scan
