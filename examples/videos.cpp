// A small host in C++: lists the videos in a folder with their duration and picture size.
//
//   videos FOLDER
#include <kolum/kolum.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

bool isVideo(const std::string& name) {
  unsigned row = 0;
  unsigned tag = 0;
  return KoLUM_GetFilenameType(name.c_str(), &row, MEDIA_KIND_BIT_VIDEO, &tag) == MEDIA_KIND_VIDEO;
}

void describe(const std::string& folder, const std::string& name) {
  videoObject_st video = {};
  if (GetVideoMetadata1(folder.c_str(), name.c_str(), &video, 0) != 0) {
    std::fprintf(stderr, "%s: cannot be probed\n", name.c_str());
    return;
  }
  char codec[KOLUM_IDENTIFIER_NAME_SIZE] = "?";
  CodecIDToName(codec, static_cast<unsigned>(video.videoCodec));
  std::printf("%s: %d s, %dx%d, %s\n", name.c_str(), video.duration, video.width, video.height,
              codec);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: videos FOLDER\n");
    return 2;
  }
  // The library expects folders with a trailing "/".
  const std::string folder = std::string(argv[1]) + "/";
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (isVideo(name)) describe(folder, name);
  }
  if (!error) return 0;
  std::fprintf(stderr, "%s: %s\n", folder.c_str(), error.message().c_str());
  return 1;
}
