// The lines that this family writes to standard error.
#ifndef KOLUM_MEDIAINFO_MESSAGE_H
#define KOLUM_MEDIAINFO_MESSAGE_H

#include <cstdio>

#include "support/log.h"

// FORMAT begins with "[%s:%d]": the source's name and the line, ahead of the caller's argument.
#define KOLUM_MEDIAINFO_MESSAGE(format) \
  std::fprintf(stderr, format, ::kolum::kMediaSource, __LINE__)
#define KOLUM_MEDIAINFO_MESSAGE_OF(format, argument) \
  std::fprintf(stderr, format, ::kolum::kMediaSource, __LINE__, argument)

#endif
