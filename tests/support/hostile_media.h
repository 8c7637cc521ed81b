// Files that make a reader take far more memory or time than they are worth, or end the process.
// Each is made from a few lines of bytes.
#ifndef KOLUM_TESTS_SUPPORT_HOSTILE_MEDIA_H
#define KOLUM_TESTS_SUPPORT_HOSTILE_MEDIA_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::test {

struct HostileFile {
  std::string name;  // what is hostile about it, and the extension
  std::function<std::string()> content;
  std::int64_t size = 0;  // if larger than the content: the rest is a hole
};

// How GoogleTest shows a file.
void PrintTo(const HostileFile& file, std::ostream* out);

using HostileFiles = std::vector<HostileFile>;

HostileFiles hostilePictures();  // also pictures of codecs that no media library needs
HostileFiles hostileMp4Files();  // MP4, QuickTime, HEIF
HostileFiles hostileMatroskaFiles();
HostileFiles hostileStreams();     // transport and program streams, elementary streams
HostileFiles hostileSongs();       // MP3, FLAC, Ogg, DSD, WAV and their relatives
HostileFiles hostileContainers();  // AVI, ASF, FLV, RealMedia and everything else

// All of these.
HostileFiles hostileFiles();

// Those that only a process of their own can bound.
HostileFiles isolatedFiles();
// Why a file of that name is among them; null if it is not.
const char* whyIsolated(std::string_view file);

// Writes the file into FOLDER (which ends with "/") and returns its path.
std::string writeHostileFile(const HostileFile& file, const std::string& folder);

// Parts that other formats contain, too. The huge ones are only headers of 16000 x 16000 pixels, or
// the most that the format allows, with next to no data behind them.
std::string sunRasterAbort();  // FFmpeg's decoder fails an assertion
std::string hugePng();
std::string hugeJpeg();
std::string hugeJpeg2000();
std::string hugeTiff();
std::string hugeGif();
std::string hugeVp8();
std::string hugeMpeg2();
std::string hugeMpeg4();
std::string hugeH264();
std::string hugeHevc();

}  // namespace kolum::test

#endif
