// Reads files in this process, or in workers that no file can make do harm: they have no file
// system, no network and no programs, little memory and little time, and may crash.
#ifndef KOLUM_ISOLATION_ISOLATION_H
#define KOLUM_ISOLATION_ISOLATION_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "media/source.h"
#include "read/findings/findings.h"

namespace kolum::isolation {

enum class Mode {
  kOff,     // files are read in this process
  kOn,      // in a worker, with the protections that this kernel has
  kStrict,  // in a worker with all protections, or not at all
};

struct Settings {
  Mode mode = Mode::kOff;
  std::chrono::milliseconds deadline = std::chrono::seconds(30);  // for each file
  std::size_t memory = std::size_t{1} << 30;                      // bytes of address space
  bool isIdle = false;      // workers give way to all other processes
  std::string worker = {};  // the program; if empty, it is looked for beside this library

  bool operator==(const Settings&) const = default;
};

// For all later calls of look(). Workers that are there end with their current file.
void configure(const Settings& settings);
Settings settings();

// Reads a file as the settings say. Any number of threads may call it; each gets a worker of its
// own. Never throws for what a worker does: that is a failure in the findings.
read::Findings look(const media::Source& source, const read::Query& query);

// While it lives, look() of this thread asks a worker, with these settings, whatever configure()
// said. Workers stay for the next one with the same settings. The mode must not be kOff.
class InWorker {
 public:
  explicit InWorker(const Settings& settings);
  ~InWorker();
  InWorker(const InWorker&) = delete;
  InWorker& operator=(const InWorker&) = delete;
};

// Ends the workers that were started for InWorkers and are at rest.
void forgetWorkers();

// Bytes of files that workers have read for calls of this thread.
std::uint64_t bytesReadForThread();

// Ends all workers at once, also those at work, whose files fail. Later calls fail, too, until the
// next configure().
void stop();

// Starts a worker and asks for its protections (Layer in message.h); empty with the reason in WHY
// if there is none.
std::optional<std::uint32_t> activeLayers(std::string& why);

}  // namespace kolum::isolation

#endif
