// The media library's thumbnails on the data volume, and the stamps of their last builds.
#ifndef KOLUM_ARTWORK_SYSTEM_THUMBNAILS_H
#define KOLUM_ARTWORK_SYSTEM_THUMBNAILS_H

namespace kolum::artwork {

// Empties a folder below the data volume, creating it if it is missing. False if there is no such
// volume or the path does not lead below it.
bool removeSystemThumbnails(const char* folder);

// Writes the current time to a file below the data volume. Failures are logged.
void saveStamp(const char* stampFile);

}  // namespace kolum::artwork

#endif
