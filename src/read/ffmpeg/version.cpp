#include "read/ffmpeg/version.h"

#include "read/ffmpeg/ffmpeg.h"

namespace kolum::ffmpeg {

namespace {

std::string dotted(unsigned version) {
  return std::to_string(AV_VERSION_MAJOR(version)) + "." +
         std::to_string(AV_VERSION_MINOR(version)) + "." +
         std::to_string(AV_VERSION_MICRO(version));
}

}  // namespace

std::string versionInUse() {
  return "libavformat " + dotted(avformat_version()) + ", libavcodec " + dotted(avcodec_version());
}

std::string licenceInUse() {
  return avutil_license();
}

}  // namespace kolum::ffmpeg
