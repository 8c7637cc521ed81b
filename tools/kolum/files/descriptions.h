// What commands say about files, and saying it for many files at a time.
#ifndef KOLUM_TOOL_FILES_DESCRIPTIONS_H
#define KOLUM_TOOL_FILES_DESCRIPTIONS_H

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "describe/failure.h"
#include "files/media_files.h"
#include "terminal/context.h"
#include "terminal/output.h"

namespace kolum::tool {

// What a file is, or why that is not known; or both, if a part is missing.
struct Description {
  Description(Result found) : result(std::move(found)) {}      // NOLINT: a result is one
  Description(Failure reason) : failure(std::move(reason)) {}  // NOLINT: and so is a failure
  Description(Result found, Failure reason)
      : result(std::move(found)), failure(std::move(reason)) {}

  std::optional<Result> result;
  std::optional<Failure> failure;
};

// Empty for a file that is left out.
using Describe = std::function<std::optional<Description>(const MediaFile&)>;

// Prints what DESCRIBE, called by ARGUMENTS.JOBS threads at a time, says about the files that
// forEachMediaFile() finds: in their order, each as soon as it and those before are there.
void describeMediaFiles(Context& context, const MediaFileArguments& arguments, unsigned kinds,
                        const Describe& describe);

}  // namespace kolum::tool

#endif
