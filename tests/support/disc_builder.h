// Index files of discs, byte by byte.
#ifndef KOLUM_TESTS_SUPPORT_DISC_BUILDER_H
#define KOLUM_TESTS_SUPPORT_DISC_BUILDER_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kolum::test {

// A playlist of a Blu-ray disc. Times are in seconds.
struct PlaylistItem {
  std::string stream = "00001";
  double begin = 600;  // on the stream's clock
  double duration = 10;
  int angles = 1;
  std::vector<std::string> audio = {};
  std::vector<std::string> subtitles = {};
};

struct PlaylistMark {
  unsigned item = 0;
  double time = 0;  // from the beginning of the item
  unsigned type = 1;
};

std::string playlist(const std::vector<PlaylistItem>& items,
                     const std::vector<PlaylistMark>& marks = {});

// A Blu-ray disc below FOLDER: playlists by their names, and streams of one second each, with
// further bytes that make them so large. Gives its BDMV folder with a trailing "/".
std::string blurayDisc(const std::string& folder,
                       const std::vector<std::pair<std::string, std::string>>& playlists,
                       const std::vector<std::pair<std::string, std::size_t>>& streams);

// The list of titles of a DVD ("VIDEO_TS.IFO"), with so many lines.
std::string dvdTitleList(std::size_t count);

}  // namespace kolum::test

#endif
