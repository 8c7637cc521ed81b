// The thumbnails that the media library keeps on the data volume, and the stamps of their building.
#ifndef KOLUM_ARTWORK_SYSTEM_THUMBNAILS_H
#define KOLUM_ARTWORK_SYSTEM_THUMBNAILS_H

namespace kolum::artwork {

// Empties a folder below the data volume, which is made when it is missing. False when there is no
// such volume, or the path leads anywhere but below it.
bool removeSystemThumbnails(const char* folder);

// Writes the present time to a file below the data volume. What goes wrong is logged.
void saveStamp(const char* stampFile);

}  // namespace kolum::artwork

#endif
