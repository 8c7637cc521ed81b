#include <kolum/video.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/memory_file.h"

namespace {

template <std::size_t kSize>
void mustEnd(const char (&text)[kSize]) {
  if (std::memchr(text, '\0', kSize) == nullptr) std::abort();
}

void probeFlat(const kolum::fuzz::MemoryFile& file) {
  videoObject_st room;
  std::memset(&room, 0, sizeof room);
  int numbers[20] = {};
  int64_t creationTime = 0;
  double frameRate = 0;
  int aspect[4] = {};
  int is360 = 0;
  GetVideoMetadata3(file.folder().c_str(), file.name().c_str(), &numbers[0], &numbers[1],
                    &numbers[2], &numbers[3], &numbers[4], &numbers[5], &numbers[6], &numbers[7],
                    &numbers[8], &numbers[9], room.mimeType, room.dlnaProfile, &numbers[10],
                    &numbers[11], &numbers[12], &numbers[13], &numbers[14], &numbers[15],
                    &numbers[16], &numbers[17], &numbers[18], &numbers[19], room.yearMonth,
                    room.creationDate, &creationTime, 1, &frameRate, &aspect[0], &aspect[1],
                    &aspect[2], &aspect[3], &is360);
  mustEnd(room.yearMonth);
  mustEnd(room.creationDate);
  mustEnd(room.mimeType);
  mustEnd(room.dlnaProfile);
}

void askAboutStreams(const kolum::fuzz::MemoryFile& file) {
  const std::string path = file.path();
  unsigned number = 0;
  GetVideoRotationDegree(file.folder().c_str(), file.name().c_str(), &number);
  if (GetDRMProtectedInfo(path.c_str(), &number) == 0 && number > 1) std::abort();
  GetAudioTrack(path.c_str(), &number);
  GetSubtitleTrack(path.c_str(), &number);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  videoObject_st record;
  std::memset(&record, 0xFF, sizeof record);
  GetVideoMetadata1(file.folder().c_str(), file.name().c_str(), &record, 0);
  mustEnd(record.yearMonth);
  mustEnd(record.creationDate);
  mustEnd(record.mimeType);
  mustEnd(record.dlnaProfile);
  mustEnd(record.contentIdentifier);
  probeFlat(file);
  askAboutStreams(file);
  return 0;
}
