#include "support/disc_media.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "support/child_process.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

// With its folder, because ordinary users do not have it on their path.
constexpr const char* kMakeExt4 = "/sbin/mkfs.ext4";

std::string dvdStream(int seconds) {
  const std::string duration = std::to_string(seconds);
  return media("title" + duration + ".mpg", "-f lavfi -i testsrc=s=720x576:r=25:d=" + duration +
                                                " -f lavfi -i sine=r=48000:d=" + duration +
                                                " -target pal-dvd -b:v 1500k");
}

// Writes the stream with one subtitle picture added.
void addSubtitle(const std::string& from, const std::string& to, const TempDir& work) {
  mustRun({"ffmpeg", "-loglevel", "error", "-nostdin", "-y", "-f", "lavfi", "-i",
           "color=white:s=64x32", "-frames:v", "1", "-pix_fmt", "monow", work.path("sub.png")});
  work.write("sub.xml",
             "<subpictures format=\"PAL\"><stream><spu start=\"00:00:00.00\" end=\"00:00:01.00\" "
             "image=\"" +
                 work.path("sub.png") + "\"/></stream></subpictures>");
  mustRun({"sh", "-c", "spumux -P \"$1\" <\"$2\" >\"$3\"", "sh", work.path("sub.xml"), from, to},
          {.environment = {{"VIDEO_FORMAT", "PAL"}}});
}

// Everything that an image of the folder depends on: names, kinds and contents.
std::string folderContent(const fs::path& folder) {
  std::map<std::string, std::string> entries;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    std::string& content = entries[entry.path().lexically_relative(folder)];
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    content = "file " + std::string(std::istreambuf_iterator<char>(in), {});
  }
  std::string all;
  for (const auto& [name, content] : entries)
    all += name + '\0' + std::to_string(content.size()) + '\0' + content;
  return all;
}

std::string whyLoopMountFails() {
  if (geteuid() != 0) return "mounting disc images needs root";
  const TempDir work;
  work.write("content/file", "x");
  fs::create_directory(work.path("mounted"));
  const RunResult packed = run({"mksquashfs", work.path("content"), work.path("image"), "-quiet"});
  if (packed.status != 0) return "disc images cannot be made here: " + packed.err;
  // In its own mount namespace, so nobody else sees it and it ends with the process.
  const RunResult mounted = run(
      {"unshare", "--mount", "mount", "-o", "loop,ro", work.path("image"), work.path("mounted")});
  if (mounted.status != 0) return "disc images cannot be mounted here: " + mounted.err;
  return "";
}

}  // namespace

std::string dvdFolder() {
  const std::string disc = made("dvd", "two titles, subtitle in the second", [](const auto& path) {
    const TempDir work;
    const RunOptions pal = {.environment = {{"VIDEO_FORMAT", "PAL"}}};
    addSubtitle(dvdStream(2), work.path("long.mpg"), work);
    mustRun({"dvdauthor", "-o", path, "-t", dvdStream(1)}, pal);
    mustRun({"dvdauthor", "-o", path, "-t", work.path("long.mpg")}, pal);
    mustRun({"dvdauthor", "-o", path, "-T"}, pal);
  });
  return disc + "/VIDEO_TS/";
}

std::string dvdWithLanguages() {
  const std::string disc = made("dvd-languages", "three titles", [](const std::string& path) {
    const TempDir work;
    const std::string twoSounds =
        media("two-sounds.mpg",
              "-f lavfi -i testsrc=s=720x576:r=25:d=2 -f lavfi -i sine=r=48000:d=2 -f lavfi -i "
              "sine=f=880:r=48000:d=2 -map 0 -map 1 -map 2 -target pal-dvd -b:v 1500k -g 12");
    addSubtitle(twoSounds, work.path("film.mpg"), work);
    const std::string more = "<vob file=\"" + dvdStream(2) + "\"/>";
    work.write("disc.xml", "<dvdauthor dest=\"" + path +
                               "\" format=\"pal\"><vmgm/>"
                               "<titleset><titles><audio lang=\"en\"/><audio lang=\"de\"/>"
                               "<subpicture lang=\"fr\"/><pgc><vob file=\"" +
                               work.path("film.mpg") +
                               "\" chapters=\"0,0:01\"/></pgc></titles></titleset>"
                               "<titleset><titles><audio lang=\"fr\"/><pgc>" +
                               more + more + "</pgc><pgc>" + more +
                               "</pgc></titles></titleset></dvdauthor>");
    mustRun({"dvdauthor", "-x", work.path("disc.xml")}, {.environment = {{"VIDEO_FORMAT", "PAL"}}});
  });
  return disc + "/VIDEO_TS/";
}

std::string largeDvdFolder() {
  const std::string disc = made("large-dvd", "of " + dvdFolder(), [](const std::string& path) {
    fs::copy(discRoot(dvdFolder()), path, fs::copy_options::recursive);
    const fs::path second = path + "/VIDEO_TS/VTS_02_2.VOB";
    std::ofstream(second).close();
    const auto first = fs::file_size(path + "/VIDEO_TS/VTS_02_1.VOB");
    fs::resize_file(second, (std::uintmax_t{5420} << 20) - first);
  });
  return disc + "/VIDEO_TS/";
}

std::string blurayFolder() {
  const std::string disc = made("bluray", "two streams", [](const std::string& path) {
    const auto stream = [](int seconds) {
      return media("stream" + std::to_string(seconds) + ".m2ts",
                   "-f lavfi -i testsrc=s=320x240:r=25:d=" + std::to_string(seconds) +
                       " -f lavfi -i sine=r=48000:d=1 -pix_fmt yuv420p -c:v libx264 -c:a ac3 "
                       "-f mpegts -mpegts_m2ts_mode 1");
    };
    fs::create_directories(path + "/BDMV/STREAM");
    fs::copy(stream(1), path + "/BDMV/STREAM/00000.m2ts");
    fs::copy(stream(3), path + "/BDMV/STREAM/00001.m2ts");
    std::ofstream(path + "/BDMV/index.bdmv") << "INDX0200";
  });
  return disc + "/BDMV/";
}

std::string discRoot(const std::string& folder) {
  return fs::path(folder).parent_path().parent_path();
}

std::string largeDvdImage() {
  const std::string folder = discRoot(largeDvdFolder());
  return made("large-dvd.iso", "of " + folder, [&](const std::string& path) {
    // ext4 keeps the hole.
    mustRun({kMakeExt4, "-q", "-d", folder, path, "5600M"});
  });
}

std::string discImage(const std::string& folder, const std::string& name, ImageKind kind) {
  const std::string recipe =
      (kind == ImageKind::kExt4 ? "ext4 " : "squashfs ") + folderContent(folder);
  return made(name, recipe, [&](const std::string& path) {
    if (kind == ImageKind::kSquashfs) {
      mustRun({"mksquashfs", folder, path, "-quiet", "-no-progress"});
      return;
    }
    std::uintmax_t size = 8U << 20;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
      if (entry.is_regular_file()) size += entry.file_size();
    std::ofstream(path, std::ios::binary).flush();
    fs::resize_file(path, size);
    mustRun({kMakeExt4, "-q", "-d", folder, path});
  });
}

std::string udfImage(const std::string& folder, const std::string& name) {
  return made(name, "udf " + folderContent(folder), [&](const std::string& path) {
    mustRun({"genisoimage", "-quiet", "-udf", "-o", path, folder});
  });
}

std::optional<std::string> loopMountUnavailable() {
  static const std::string kWhy = whyLoopMountFails();
  if (kWhy.empty()) return std::nullopt;
  return kWhy;
}

}  // namespace kolum::test
