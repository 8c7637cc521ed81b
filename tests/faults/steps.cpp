#include "faults/steps.h"

#include <gtest/gtest.h>
#include <kolum/kolum.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "server/running_echo_server.h"
#include "support/appliance_sandbox.h"
#include "support/disc_media.h"
#include "support/dsd_builder.h"
#include "support/leak_check.h"
#include "support/media_factory.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

constexpr char kFolder[] = "/files/";
constexpr char kVideo[] = "/files/video.mp4";
constexpr char kPhoto[] = "/files/cover.jpg";
constexpr char kSource[] = "/data/music/artist/@_album.jpg";
constexpr char kPlace[] = "cat /files/place.xml";

constexpr char kPlaceAnswer[] =
    "<output><reversegeocode language=\"en\"><result osm_type=\"way\" osm_id=\"7\">Paris</result>"
    "<addressparts><city>Paris</city></addressparts></reversegeocode></output>";
constexpr char kSongAnswer[] =
    "<ID3TAG><TITLE>T</TITLE><ARTIST>A</ARTIST><ALBUM>B</ALBUM><DURATION>2</DURATION>"
    "<CHANNEL>2</CHANNEL><FREQUENCY>2822400</FREQUENCY></ID3TAG>";

std::string videoFile() {
  return media("faults.mp4",
               "-f lavfi -i testsrc2=size=64x48:rate=25:duration=1 -f lavfi -i sine=duration=1 "
               "-c:v libx264 -preset ultrafast -c:a aac -metadata title=Title");
}

std::string photoFile() {
  return media("faults.jpg", "-f lavfi -i testsrc2=size=64x48 -frames:v 1");
}

// Runs in its own process, so that faults in the test's process do not affect it.
class ServerProcess {
 public:
  ServerProcess() : process_(fork()) {
    if (process_ == 0) serve();
    while (!fs::exists(MediaLibrary::LUM::wire::kSocketPath)) usleep(1000);
  }
  ~ServerProcess() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

 private:
  [[noreturn]] static void serve() {
    // It must not outlive a test that crashes.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const RunningEchoServer server(MediaLibrary::LUM::wire::kSocketPath);
    while (true) pause();
  }

  pid_t process_;
};

void prepareSandbox(const std::string& image) {
  fs::create_directories(kFolder);
  fs::copy_file(videoFile(), kVideo);
  fs::copy_file(photoFile(), kPhoto);
  writeRootFile(
      "/files/song.dsf",
      dsfFile({.tag = id3v2Tag({{"TIT2", "Title"}, {"TALB", "A longer text, kept apart"}})}));
  writeRootFile("/files/place.xml", kPlaceAnswer);
  writeRootFile("/files/answer.xml", kSongAnswer);
  if (!image.empty()) fs::create_symlink(image, "/files/disc.iso");
  writeTool("/tools/dsf2flac", "exec cat /files/answer.xml");
  // The source's name follows "-i", and the target's is last.
  writeTool("/tools/ffmpeg", "for last; do :; done; exec cp \"$3\" \"$last\"");
  writeTool("/usr/local/sbin/convert", "exit 1");
  fs::copy_file(KOLUM_SETCFG, "/sbin/setcfg", fs::copy_options::overwrite_existing);
  writeRootFile("/etc/config/medialibrary.conf", "");
  fs::create_directories(std::string(kDataVolume) + "/.system/tmp");
  fs::create_directories(std::string(kMusic) + "artist");
  writeRootFile(std::string(kDataVolume) + "/.system/lumserver.conf", "[KOLUMSERVER]\nMODE=1\n");
  for (const auto& entry : fs::recursive_directory_iterator(kDataVolume))
    fs::permissions(entry, fs::perms::all);
  fs::permissions(kDataVolume, fs::perms::all);
  setenv("KO_DATA_DIR", kDataVolume, 1);
  if (KoLUM_Init(kTools) != 0) throw std::runtime_error("KoLUM_Init failed");
}

bool probesRecord(const char* name) {
  videoObject_st record;
  std::memset(&record, 0, sizeof record);
  return GetVideoMetadata1(kFolder, name, &record, 0) == 0;
}

bool findsLargestFile() {
  char path[1024] = "/files/";
  get_maxsizefilename(path, ".mp4");
  return std::string_view(path) == kVideo;
}

bool probesFlat(const char* name) {
  int width = 0;
  char mimeType[128] = {};
  return GetVideoMetadata3(kFolder, name, &width, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr, mimeType, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr) == 0;
}

bool readsMediaInfo() {
  MediaInfo* info = nullptr;
  double time = 0;
  const bool isDone = GetMediaInfo(kVideo, &info, 1, &time) == 0;
  Free_MediaInfo(info);
  return isDone;
}

bool findsKeyFrame() {
  double time = 0;
  return getVideoKeyFrameTime(kVideo, 0, &time) == 0;
}

bool readsSong() {
  uint32_t rate = 0;
  return GetAudioMetadata(kFolder, "video.mp4", nullptr, nullptr, &rate, nullptr, nullptr, nullptr,
                          nullptr, nullptr, nullptr, nullptr, nullptr) == 0;
}

bool readsDsdTexts() {
  char title[256] = {};
  char album[256] = {};
  return GetDsfMetadata3(kFolder, "song.dsf", title, nullptr, nullptr, album, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr) == 0;
}

bool readsDsdRecord() {
  songObject_st record;
  std::memset(&record, 0, sizeof record);
  return GetDsfMetadata(kFolder, "song.dsf", &record) == 0;
}

bool readsPhoto() {
  uint32_t width = 0;
  uint32_t height = 0;
  return GetPhotoHW(kPhoto, &width, &height) == 0;
}

bool findsCover() {
  char path[1024] = {};
  return KoLUM_CheckLocalAlbum(kFolder, path) == 0;
}

bool makesAlbumArt() {
  char path[1024] = {};
  return LUM_CheckMusicAlbumArt(kMusic, "artist", "album", path) == 1;
}

bool sendsCommand() {
  MediaLibrary::LUM::SocketResp_t answer = {};
  const bool isDone = sendCommand(&answer, 1, "payload", 7) == 0;
  std::free(answer.data);
  return isDone;
}

bool looksUpPlace() {
  MediaLibrary::osm_place_s place;
  return parseOsmInfo(kPlace, place) == 0;
}

bool runsProgram() {
  const char* argv[] = {"true", nullptr};
  return ExecCommand(argv, 1) == 0;
}

bool readsConfig() {
  lumCfg_s cfg = {};
  return parseConfig(&cfg) == 0;
}

// Making album art deletes its source.
void putSource() {
  std::error_code ignored;
  const std::string folder = std::string(kMusic) + "artist";
  fs::remove_all(folder, ignored);
  fs::create_directory(folder, ignored);
  fs::permissions(folder, fs::perms::all, ignored);
  fs::copy_file(kPhoto, kSource, fs::copy_options::overwrite_existing, ignored);
  fs::permissions(kSource, fs::perms::all, ignored);
}

}  // namespace

void writeTool(const std::string& path, const std::string& script) {
  writeRootFile(path, "#!/bin/sh\n" + script + "\n", 0755);
}

std::vector<Step> steps() {
  std::vector<Step> all = {
      {"video, record", [] { return probesRecord("video.mp4"); }, kDescriptors},
      {"video, flat", [] { return probesFlat("video.mp4"); }, kDescriptors},
      {"rotation",
       [] {
         unsigned degrees = 0;
         return GetVideoRotationDegree(kFolder, "video.mp4", &degrees) == 0;
       },
       kDescriptors},
      {"audio tracks",
       [] {
         unsigned count = 0;
         return GetAudioTrack(kVideo, &count) == 0;
       },
       kDescriptors},
      {"protection",
       [] {
         unsigned isProtected = 0;
         return GetDRMProtectedInfo(kVideo, &isProtected) == 0;
       },
       kDescriptors},
      {"MP4 brand",
       [] {
         unsigned subFormat = 0;
         return GetMp4SubFormat(kVideo, &subFormat) == 0;
       },
       kDescriptors},
      {"MP4 boxes", [] { return CheckMp4MoovAtEnd(kVideo) != 2; }, kDescriptors},
      {"transport packets",
       [] {
         unsigned size = 7;
         return ProbeTsPacketSize(kVideo, &size) == 0 && size != 7;
       },
       kDescriptors},
      {"largest file", findsLargestFile, kDescriptors},
      {"media info", readsMediaInfo, kDescriptors},
      {"key frame", findsKeyFrame, kDescriptors},
      {"song", readsSong, kDescriptors},
      {"DSD texts", readsDsdTexts, kDescriptors | kPrograms | kWorkingPath},
      // This needs no tools: FFmpeg is enough.
      {"DSD record", readsDsdRecord, kDescriptors},
      {"DSD numbers",
       [] {
         uint32_t rate = 0;
         return GetDsfMetadata2(kFolder, "song.dsf", nullptr, nullptr, &rate, nullptr, nullptr,
                                nullptr) == 0;
       },
       kDescriptors | kPrograms | kWorkingPath},
      {"photo", readsPhoto, kDescriptors},
      {"pixel format",
       [] {
         uint32_t format = 0;
         return GetPhotoMetadata(kFolder, "cover.jpg", &format) == 0;
       },
       kDescriptors},
      {"explanation",
       [] {
         DlnaNaming naming;
         return ExplainDlnaProfile(kFolder, "video.mp4", 0, &naming) == 0;
       },
       kDescriptors},
      {"cover", findsCover},
      {"artist picture",
       [] {
         char path[1024] = {};
         LUM_CheckMusicArtistThumbnail(kMusic, "artist", path);
         return true;
       }},
      {"album art", makesAlbumArt, kPrograms | kSpace | kWorkingPath, putSource},
      {"transcoded copy",
       [] {
         LUM_IsTranscodeFileExist(kMusic, "video.mp4");
         return true;
       }},
      // It succeeds even if it cannot write the stamp.
      {"stamp", [] { return saveLastBuildTime(kThumbLastBuildTime) == 0; }},
      {"thumbnail folder", [] { return removeSystemThumbnail(".system/thumb") == 0; }},
      {"configuration", readsConfig, kDescriptors},
      {"configuration update", [] { return updateConfig("KOLUMSERVER", "MODE", "2") == 0; },
       kPrograms | kSpace},
      {"command", sendsCommand, kDescriptors},
      {"place", looksUpPlace, kDescriptors | kPrograms},
      // It succeeds even if the program cannot be started.
      {"program", runsProgram},
      {"copy", [] { return copyAndChmod(kPhoto, "/data/copy.jpg") == 0; }, kPrograms},
  };
  if (fs::exists("/files/disc.iso")) {
    all.push_back(
        {"disc image, recognised", [] { return probesRecord("disc.iso"); }, kPrograms | kMounts});
    all.push_back({"disc image, opened", [] { return probesFlat("disc.iso"); },
                   kDescriptors | kPrograms | kMounts});
  }
  return all;
}

void inPreparedSandbox(const std::function<void()>& body) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  // Made outside the sandbox, so that they are kept.
  videoFile();
  photoFile();
  const std::string image =
      loopMountUnavailable() ? "" : discImage(discRoot(dvdFolder()), "dvd.iso");
  runInAppliance([&] {
    prepareSandbox(image);
    const ServerProcess server;
    body();
  });
}

bool runDisturbed(const Step& step, const std::function<void()>& disturb,
                  const std::function<void()>& restore) {
  SCOPED_TRACE(step.name);
  step.prepare();
  const LeakCheck check;
  disturb();
  const bool isDone = step.call();
  restore();
  check.expectNothingNew();
  return isDone;
}

bool runUndisturbed(const Step& step) {
  return runDisturbed(
      step, [] {}, [] {});
}

}  // namespace kolum::test
