#include "base/spawn.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace kolum {

namespace {

class Attributes {
 public:
  explicit Attributes(bool hasDefaultSignals) {
    posix_spawnattr_init(&value_);
    int flags = POSIX_SPAWN_SETPGROUP;
    if (hasDefaultSignals) {
      sigset_t all;
      sigset_t none;
      sigfillset(&all);
      sigemptyset(&none);
      posix_spawnattr_setsigdefault(&value_, &all);
      posix_spawnattr_setsigmask(&value_, &none);
      flags |= POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
    }
    posix_spawnattr_setflags(&value_, static_cast<short>(flags));
  }
  ~Attributes() { posix_spawnattr_destroy(&value_); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  const posix_spawnattr_t* get() const { return &value_; }

 private:
  posix_spawnattr_t value_ = {};
};

// posix_spawn() takes texts that it could change, and does not.
std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

pid_t spawn(const std::vector<std::string>& arguments, const SpawnActions& actions,
            const SpawnOptions& options) {
  const Attributes attributes(options.hasDefaultSignals);
  std::vector<char*> variables;
  if (options.environment) variables = pointersTo(*options.environment);
  pid_t process = -1;
  const int error =
      posix_spawn(&process, arguments.front().c_str(), &actions.value, attributes.get(),
                  pointersTo(arguments).data(), options.environment ? variables.data() : environ);
  if (error == 0) return process;
  errno = error;
  return -1;
}

}  // namespace kolum
