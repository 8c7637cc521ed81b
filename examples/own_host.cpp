// The host library of a program that brings its own: libkolum logs through it and asks it for the
// data volume. Functions that it does not define come from the next library, here libkohost; a
// library that defines everything in kolum/host.h replaces libkohost completely.
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
