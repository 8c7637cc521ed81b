// Finds the file to probe for a video's name: DVD folders, Blu-ray folders and disc images lead to
// a main title, every other name is the file itself.
#ifndef KOLUM_READ_DISC_DISC_H
#define KOLUM_READ_DISC_DISC_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/trace.h"
#include "media/source.h"

namespace kolum::disc {

enum class Kind { kNone, kDvdFolder, kBlurayFolder, kImage };

// By the name alone; the two index names are case-sensitive, the image suffix is not.
Kind kindOf(std::string_view fileName);

// The title that stands for a disc.
struct Title {
  std::string root;  // the disc's folder, with its trailing "/"
  // The file to open. Empty if the host reports a DVD title without naming a file.
  std::string path;
  // FORMAT_DVDIFO, FORMAT_BDBDMV, FORMAT_DVDISO or FORMAT_BDISO.
  std::uint32_t containerFormat = 0;
  // Bytes of all files of a DVD title; 0 for Blu-ray.
  long long size = 0;
};

// FOLDER contains VIDEO_TS.IFO and ends with "/"; an empty one is the current folder.
std::optional<Title> dvdFolderTitle(const std::string& folder);
// FOLDER contains index.bdmv and ends with "/".
std::optional<Title> blurayFolderTitle(const std::string& folder, Trace& trace);
// The title of a mounted image, DVD before Blu-ray.
std::optional<Title> imageTitle(const std::string& mountFolder, Trace& trace);

// The names of all that is in FOLDER, which ends with "/", in byte order; of very many, some.
std::vector<std::string> namesIn(const std::string& folder);

// Opens a title's file. Links that lead out of the disc are not followed.
std::optional<media::Source> open(const Title& title);

// The largest regular file in FOLDER whose suffix begins with EXTENSION, in any letter case; among
// equals the last in the folder's own order.
std::optional<std::string> largestFile(const std::string& folder, std::string_view extension,
                                       Trace& trace);

}  // namespace kolum::disc

#endif
