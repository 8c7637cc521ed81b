// The titles of discs, from their index files.
#ifndef KOLUM_DESCRIBE_DISC_H
#define KOLUM_DESCRIBE_DISC_H

#include <string>
#include <string_view>

#include "media/disc.h"

namespace kolum::describe {

// Of a disc's folder, which is named as its index file is and ends with "/". MAIN_FILE is the file
// of the main title, as a probe chooses it.
media::Disc dvdOfFolder(const std::string& folder, std::string_view mainFile);
media::Disc blurayOfFolder(const std::string& folder, std::string_view mainFile);

}  // namespace kolum::describe

#endif
