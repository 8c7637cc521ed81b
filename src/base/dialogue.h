// A long-lived program that answers each line with a line.
#ifndef KOLUM_BASE_DIALOGUE_H
#define KOLUM_BASE_DIALOGUE_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/descriptor.h"

namespace kolum {

// The program leads its own process group, and reads and writes one socket, so that a program that
// has ended raises no SIGPIPE here. It gets no other descriptor of this process. When this process
// ends, it reads the end of its input. Not for several threads at a time.
class Dialogue {
 public:
  struct Limits {
    std::chrono::milliseconds answerTime{0};  // for each question
    std::size_t longestAnswer = 0;            // in bytes, without the line end
  };

  // ARGUMENTS begin with the program's path. Empty if it cannot be started.
  static std::optional<Dialogue> start(const std::vector<std::string>& arguments,
                                       const Limits& limits);

  Dialogue(Dialogue&& other) noexcept;
  Dialogue& operator=(Dialogue&&) = delete;
  // Kills the program's group.
  ~Dialogue();

  // QUESTION and the answer have no line end. Empty with the reason in WHY if the program has
  // ended, takes too long, says too much, or says anything that it was not asked for: then it is
  // killed, and has no more answers.
  std::optional<std::string> ask(std::string_view question, std::string& why);

  // Whether this process started it, and not the one that this was forked from.
  bool isOwn() const;

 private:
  using Clock = std::chrono::steady_clock;

  Dialogue(pid_t pid, Descriptor socket, const Limits& limits);
  bool send(std::string_view line, Clock::time_point deadline, std::string& why) const;
  std::optional<std::string> receive(Clock::time_point deadline, std::string& why) const;
  void end();

  pid_t pid_;
  pid_t owner_;
  Descriptor socket_;
  Descriptor process_;  // readable once the program has ended; not open on old kernels
  Limits limits_;
};

}  // namespace kolum

#endif
