#include <kolum/host.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr const char* kColourReset = "\x1b[0m";

// Callers may log between a failed call and reading errno.
class KeptErrno {
 public:
  KeptErrno() = default;
  ~KeptErrno() { errno = before_; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;

 private:
  int before_ = errno;
};

bool isShown(int level) {
  const char* wanted = std::getenv("KO_LOG_LEVEL");
  return (wanted != nullptr ? std::strtol(wanted, nullptr, 10) : 0) >= level;
}

struct Freer {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Freer>;

// Null if memory runs out.
Text formatted(const char* format, std::va_list arguments) {
  char* text = nullptr;
  return Text(vasprintf(&text, format, arguments) >= 0 ? text : nullptr);
}

// A single write per line, so that lines of other threads do not mix with it.
void writeLine(std::string text, const char* colour, const char* source, int line,
               const char* function) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::string out = colour != nullptr ? colour : "";
  out.append("[").append(source != nullptr ? source : "");
  out.append(":").append(std::to_string(line));
  out.append(" ").append(function != nullptr ? function : "").append("] ").append(text);
  if (colour != nullptr) out += kColourReset;
  out += '\n';
  // If standard error itself fails, nothing can report it.
  [[maybe_unused]] const auto written = write(STDERR_FILENO, out.data(), out.size());
}

}  // namespace

void koDebugUtilWrapperPrint(int level, const char* colour, const char* source, int line,
                             const char* function, const char* format, ...) {
  const KeptErrno kept;
  if (format == nullptr || !isShown(level)) return;
  std::va_list arguments;
  va_start(arguments, format);
  try {
    const Text text = formatted(format, arguments);
    if (text != nullptr) writeLine(text.get(), colour, source, line, function);
  } catch (...) {
    // A message that does not fit in memory is dropped; the program continues.
  }
  va_end(arguments);
}
