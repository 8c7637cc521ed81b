#include <kolum/host.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

// A message is shown when KO_LOG_LEVEL is at least its level.
void koDebugUtilWrapperPrint(int level, const char* colour, const char* source, int line,
                             const char* function, const char* format, ...) {
  const char* wanted = std::getenv("KO_LOG_LEVEL");
  if (wanted == nullptr || std::atoi(wanted) < level) return;
  std::fprintf(stderr, "%s[%s:%d:%s] ", colour != nullptr ? colour : "", source, line, function);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}
