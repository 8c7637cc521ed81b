// A program that brings its own host library: libkolum logs through it, and finds the data volume
// where it says. What it does not define comes from the next library, here libkohost; a library
// that defines all of kolum/host.h makes an appliance independent of that one.
#include <kolum/host.h>

#include <cstdarg>
#include <cstdio>

void koDebugUtilWrapperPrint(int level, const char* /*colour*/, const char* source, int line,
                             const char* function, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::printf("<%d> %s:%d %s: ", level, source, line, function);
  std::vprintf(format, arguments);
  va_end(arguments);
}

void KoUtil_GetDataDir(std::string& dir) {
  dir = "/nonexistent/volume";
}
