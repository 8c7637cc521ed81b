#include "terminal/channels.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "terminal/text.h"

namespace kolum::tool {

namespace {

// Private duplicates do not use the standard numbers and are not inherited.
constexpr int kFirstPrivateDescriptor = 10;
constexpr int kFirstDescriptor = 3;  // if the limit is below ten descriptors

int duplicate(int descriptor) {
  const int own = fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstPrivateDescriptor);
  if (own >= 0 || errno == EBADF) return own;
  return fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstDescriptor);
}

// Points DESCRIPTOR at /dev/null, so that no file opened later gets its number.
void pointAtNull(int descriptor) {
  const int null = open("/dev/null", O_RDWR);
  if (null < 0 && (errno == EMFILE || errno == ENFILE))
    throw std::system_error(errno, std::generic_category());
  if (null == descriptor || null < 0) return;
  dup2(null, descriptor);
  close(null);
}

// A private duplicate of a standard descriptor, -1 if the caller closed it.
int takeOver(int descriptor) {
  const int own = duplicate(descriptor);
  if (own < 0 && errno != EBADF) throw std::system_error(errno, std::generic_category());
  if (own < 0) pointAtNull(descriptor);
  return own;
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::string readAll(int descriptor) {
  std::string text;
  char buffer[65536];
  for (ssize_t length = 0; (length = read(descriptor, buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(length));
  }
  return text;
}

// Whether a terminal understands control sequences such as "clear the line".
bool understandsControls(int descriptor) {
  const char* terminal = std::getenv("TERM");
  return isatty(descriptor) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

// Asked again for each line, because windows can be resized.
std::size_t columnsOfTerminal(int descriptor) {
  constexpr std::size_t kUsual = 80;
  winsize size = {};
  return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace

Channels::Channels()
    : input_(takeOver(0)),
      results_(takeOver(1)),
      messages_(takeOver(2)),
      canReplaceLines_(understandsControls(messages_)),
      areResultsElsewhere_(isatty(results_) == 0) {
  pointAtNull(0);
  // If a reader leaves, the write fails and reports it. A handler instead of SIG_IGN, so that
  // programs started by the library get the default action back.
  struct sigaction ignore = {};
  ignore.sa_handler = [](int) {};
  ignore.sa_flags = SA_RESTART;
  sigaction(SIGPIPE, &ignore, nullptr);
}

void Channels::muteLibrary() const {
  pointAtNull(1);
  pointAtNull(2);
}

void Channels::showLibrary() const {
  if (messages_ < 0) return muteLibrary();
  dup2(messages_, 1);
  dup2(messages_, 2);
}

void Channels::writeResults(std::string_view text) const {
  if (writeAll(results_, text)) return;
  throw OutputError(std::strerror(errno), errno == EPIPE);
}

void Channels::writeMessage(std::string_view text) const {
  const std::lock_guard lock(mutex_);
  replaceProgress("", true);
  writeAll(messages_, text);
}

void Channels::showProgress(std::string_view text, bool amongResults) const {
  const std::lock_guard lock(mutex_);
  replaceProgress(text, amongResults);
}

void Channels::replaceProgress(std::string_view text, bool amongResults) const {
  constexpr std::string_view kClearLine = "\r\x1b[K";
  const bool mayShow = canReplaceLines_ && (areResultsElsewhere_ || !amongResults);
  if (text.empty() ? !progressShown_ : !mayShow) return;
  // The last column stays free: some terminals wrap once it is used.
  const std::string_view shown = cutToColumns(text, columnsOfTerminal(messages_) - 1);
  writeAll(messages_, std::string(kClearLine).append(shown));
  progressShown_ = !text.empty();
}

bool Channels::mayColourResults() const {
  const char* noColour = std::getenv("NO_COLOR");
  return understandsControls(results_) && (noColour == nullptr || *noColour == '\0');
}

bool Channels::areResultsShown() const {
  return !areResultsElsewhere_;
}

std::string Channels::capture(const std::function<void()>& work) const {
  const int memory = memfd_create("kolum-output", MFD_CLOEXEC);
  if (memory < 0) throw OutputError(std::strerror(errno), false);
  std::fflush(stdout);
  const int before = duplicate(1);
  dup2(memory, 1);
  work();
  std::fflush(stdout);
  dup2(before, 1);
  close(before);
  lseek(memory, 0, SEEK_SET);
  std::string text = readAll(memory);
  close(memory);
  return text;
}

}  // namespace kolum::tool
