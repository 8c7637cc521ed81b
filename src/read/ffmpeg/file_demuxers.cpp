#include "read/ffmpeg/file_demuxers.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "read/ffmpeg/ffmpeg.h"

namespace kolum::ffmpeg {

namespace {

constexpr std::string_view kOpenFurtherFiles[] = {
    "avisynth", "concat", "dash",        "hls",    "hls,applehttp",
    "imf",      "sdp",    "vapoursynth", "vobsub", "webm_dash_manifest",
};

// FFmpeg searches the list linearly: common formats first.
constexpr std::string_view kUsual =
    "mov,matroska,mpegts,mpeg,avi,asf,flv,mp3,flac,wav,ogg,jpeg_pipe,png_pipe";

std::string listed() {
  // Not every caller registers the formats. The list is built only once, so on releases that need
  // registration it would otherwise lack the other formats for good.
  release::registerFormats();
  std::string list(kUsual);
  void* position = nullptr;
  while (const AVInputFormat* demuxer = release::nextDemuxer(position)) {
    if (!opensFurtherFiles(demuxer->name)) list += std::string(",") + demuxer->name;
  }
  return list;
}

}  // namespace

bool opensFurtherFiles(std::string_view demuxer) {
  return std::find(std::begin(kOpenFurtherFiles), std::end(kOpenFurtherFiles), demuxer) !=
         std::end(kOpenFurtherFiles);
}

const char* fileDemuxers() {
  static const std::string kList = listed();
  return kList.c_str();
}

}  // namespace kolum::ffmpeg
