#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "support/hostile_media.h"

namespace kolum::test {

namespace {

// What only a process of its own can bound: FFmpeg neither reads nor asks between its allocations,
// and the format is one that a media library needs.
struct IsolationRow {
  std::string_view file;
  const char* reason;
};

// Reasons that several files share.
constexpr const char* kTags =
    "FFmpeg and TagLib compare each tag with all before; the budget of time ends it.";
constexpr const char* kEarlyMemory = "The decoder takes its memory before it asks for a picture.";
constexpr const char* kClaims =
    "Memory for all that is claimed is taken before the first of it is read.";
constexpr const char* kDecoders = "Each stream has a decoder and buffers of its own.";
constexpr const char* kSets =
    "Only the pictures say their size, and appear while FFmpeg already decodes them.";

constexpr IsolationRow kNeedsIsolation[] = {
    {"hugeCounts.mp4", "An entry of the index is made for each of 160 million claimed samples."},
    {"inflatingTables.mov",
     "The same tables in a compressed index: all of it is in memory before."},
    {"inflatingMovie.mov", "An index is inflated in one go, to whatever size it claims."},
    {"multiplyingEdits.mp4", "Each of a hundred edits copies the index of a million samples."},
    {"fragmentsOfClaimedSamples.mp4",
     "A few bytes claim a million samples, and each gets an entry."},
    {"fragmentsOfManyTracks.mp4", "Each fragment has entries for each of a thousand tracks."},
    {"segmentIndexOfManyTracks.mp4", "Each segment has entries for each of a thousand tracks."},
    {"protectionSystems.mp4", "Lists of protection systems are searched anew for each entry."},
    {"largeSample.mp4", "A sample is in memory as a whole, twice."},
    {"thousandPictures.mov", "Each of a thousand tracks has a picture below the limit."},
    {"services.ts", "The tables of thousands of services are read by each of three searches."},
    {"inflatingFrames.mkv", "Each packet inflates, and a search reads thousands."},
    {"parameterSets.h264", "The decoder keeps a picture's memory for each of many sizes."},
    {"oddInflatingText.png", "The decoder inflates every text, to whatever size it has."},
    {"texts.tiff", "The decoder keeps every text of the directory."},
    {"numbers.tiff", "The decoder writes every number of the directory as text."},
    {"emptyTracks.mkv", "Two bytes are a track of two kilobytes, long before streams are made."},
    {"manyTracks.mkv", "Later releases of FFmpeg keep eight kilobytes for each of its tracks."},
    {"inflatingCodecData.mkv", "The codec data of all tracks are inflated behind the last read."},
    {"distinctItems.m4a", kTags},
    {"distinctKeys.mov", kTags},
    {"distinctTags.mkv", kTags},
    {"distinctTexts.mp3", kTags},
    {"distinctPrivateFrames.mp3", kTags},
    {"apeItems.tta", kTags},
    {"distinctComments.flac", kTags},
    {"commentBlocks.flac", kTags},
    {"distinctComments.ogg", kTags},
    {"distinctTexts.dsf", kTags},
    {"distinctInfo.wav", kTags},
    {"distinctInfo.avi", kTags},
    {"distinctAttributes.wmv", kTags},
    {"distinctKeys.flv", kTags},
    {"distinctKeysAsVideo.mp4", kTags},
    {"hugeSnow.mkv", kEarlyMemory},
    {"huge_VP31.avi", kEarlyMemory},
    {"huge_ZMBV.avi", kEarlyMemory},
    {"huge_SNOW.avi", kEarlyMemory},
    {"hugeKeyCount.mov", kClaims},
    {"hugeArrays.flv", kClaims},
    {"hugeExtension.wav", kClaims},
    {"hugeText.aiff", kClaims},
    {"thousandTracks.mp4", kDecoders},
    {"thousandTracks.mkv", kDecoders},
    {"manyStreams.avi", kDecoders},
    {"manyStreams.rm", kDecoders},
    {"hugeH264.ts", kSets},
    {"hugeHevc.ts", kSets},
    {"hugeH264.mpg", kSets},
    {"hugeH264.h264", kSets},
    {"hugeHevc.hevc", kSets},
};

}  // namespace

const char* whyIsolated(std::string_view file) {
  const auto* row =
      std::find_if(std::begin(kNeedsIsolation), std::end(kNeedsIsolation),
                   [&](const IsolationRow& candidate) { return candidate.file == file; });
  return row == std::end(kNeedsIsolation) ? nullptr : row->reason;
}

HostileFiles isolatedFiles() {
  HostileFiles files;
  for (HostileFile& file : hostileFiles())
    if (whyIsolated(file.name) != nullptr) files.push_back(std::move(file));
  if (files.size() != std::size(kNeedsIsolation))
    throw std::logic_error("a file that needs isolation is not there, or twice");
  return files;
}

}  // namespace kolum::test
