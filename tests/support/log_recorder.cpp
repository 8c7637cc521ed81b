#include "support/log_recorder.h"

#include <kolum/host.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace kolum::test {

namespace {

struct Recording {
  const LogRecorder* owner;
  std::vector<LogMessage> messages;
};

std::mutex g_mutex;
std::vector<Recording> g_recordings;  // of the existing recorders, guarded by g_mutex

// The library also logs between fork and exec: the lock must not be held there by a thread that the
// child does not have.
[[maybe_unused]] const int g_forkHandlers =
    pthread_atfork([] { g_mutex.lock(); }, [] { g_mutex.unlock(); }, [] { g_mutex.unlock(); });

std::vector<LogMessage>& messagesOf(const LogRecorder* owner) {
  return std::find_if(g_recordings.begin(), g_recordings.end(),
                      [owner](const Recording& recording) { return recording.owner == owner; })
      ->messages;
}

std::string orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

void record(const LogMessage& message) {
  const std::lock_guard lock(g_mutex);
  for (Recording& recording : g_recordings) recording.messages.push_back(message);
}

}  // namespace

void PrintTo(const LogMessage& message, std::ostream* out) {
  *out << message.source << ':' << message.function << " level " << message.level << ": "
       << message.text;
}

LogRecorder::LogRecorder() {
  const std::lock_guard lock(g_mutex);
  g_recordings.push_back({this, {}});
}

LogRecorder::~LogRecorder() {
  const std::lock_guard lock(g_mutex);
  std::erase_if(g_recordings, [this](const Recording& one) { return one.owner == this; });
}

std::vector<LogMessage> LogRecorder::messages() const {
  const std::lock_guard lock(g_mutex);
  return messagesOf(this);
}

std::vector<std::string> LogRecorder::texts() const {
  std::vector<std::string> texts;
  for (LogMessage& message : messages()) texts.push_back(std::move(message.text));
  return texts;
}

void LogRecorder::clear() {
  const std::lock_guard lock(g_mutex);
  messagesOf(this).clear();
}

}  // namespace kolum::test

// Replaces the host library's function: a definition in the program itself takes precedence.
void koDebugUtilWrapperPrint(int level, const char* colour, const char* source, int line,
                             const char* function, const char* format, ...) {
  std::array<char, 8192> text{};
  va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): clang-tidy 14 does not see va_start
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);

  kolum::test::LogMessage message;
  message.level = level;
  if (colour != nullptr) message.colour = colour;
  message.source = kolum::test::orEmpty(source);
  message.line = line;
  message.function = kolum::test::orEmpty(function);
  message.format = format;
  message.text = text.data();
  kolum::test::record(message);
}
