// Finds out all about a file.
#ifndef KOLUM_DESCRIBE_DESCRIBE_H
#define KOLUM_DESCRIBE_DESCRIBE_H

#include <optional>

#include "describe/document.h"
#include "describe/media_path.h"
#include "geocode/place_finder.h"

namespace kolum::describe {

struct Options {
  std::optional<int> kind = {};  // MEDIA_KIND_*; otherwise the name says which
  bool byContent = false;        // or the content, if it says so
  bool wantsDetails = true;      // tags, streams, chapters: all that no record has
  bool mountsImages = true;      // images of discs that can be read in no other way
  bool wantsFingerprint = false;
  int audioStream = 0;                    // counts audio streams only
  const char* toolFolder = nullptr;       // of the DSD tool, with its trailing "/"
  const media::Source* opened = nullptr;  // the file; otherwise it is opened by its path
  // Is asked for the place at the position of photos and films, which are details.
  geocode::PlaceFinder* places = nullptr;
};

// One opening of the file, whatever its kind. What goes wrong is the document's failure.
Document describe(const MediaPath& path, const Options& options);

// The kind (MEDIA_KIND_*) of a file by its content, or by its name if the content does not say.
int kindByContent(const MediaPath& path);

}  // namespace kolum::describe

#endif
