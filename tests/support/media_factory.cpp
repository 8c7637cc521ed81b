#include "support/media_factory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "support/child_process.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

const fs::path kMediaFolder = KOLUM_TEST_MEDIA_FOLDER;

std::string hash(const std::string& text) {
  std::uint64_t value = 14695981039346656037U;
  for (const char c : text) value = (value ^ static_cast<unsigned char>(c)) * 1099511628211U;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(value));
  return digits;
}

// Keeps other test processes from making the same thing at the same time.
class MakingLock {
 public:
  explicit MakingLock(const fs::path& file)
      : descriptor_(open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644)) {
    if (descriptor_ < 0 || flock(descriptor_, LOCK_EX) != 0)
      throw std::runtime_error("cannot lock " + file.string());
  }
  ~MakingLock() { close(descriptor_); }
  MakingLock(const MakingLock&) = delete;
  MakingLock& operator=(const MakingLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace

std::string made(const std::string& name, const std::string& recipe,
                 const std::function<void(const std::string& path)>& make) {
  const std::string key = hash(name + '\0' + recipe);
  const fs::path folder = kMediaFolder / key;
  const fs::path result = folder / name;
  if (fs::exists(result)) return result;

  fs::create_directories(kMediaFolder);
  const MakingLock lock(kMediaFolder / (key + ".lock"));
  if (fs::exists(result)) return result;
  const fs::path unfinished = kMediaFolder / (key + ".unfinished");
  fs::remove_all(unfinished);
  fs::create_directories(unfinished);
  make(unfinished / name);
  if (!fs::exists(unfinished / name)) throw std::runtime_error("nothing was made as " + name);
  fs::remove_all(folder);
  fs::rename(unfinished, folder);
  return result;
}

std::string media(std::string_view name, std::string_view ffmpegArguments) {
  const auto make = [&](const std::string& path) {
    std::vector<std::string> command = {"ffmpeg", "-hide_banner", "-loglevel",
                                        "error",  "-nostdin",     "-y"};
    for (std::string& word : shellWords(ffmpegArguments)) command.push_back(std::move(word));
    command.push_back(path);
    mustRun(command);
  };
  return made(std::string(name), std::string(ffmpegArguments), make);
}

std::string replaced(const std::string& path, const std::string& from, const std::string& to) {
  if (from.size() != to.size()) throw std::invalid_argument("the texts differ in length");
  const auto make = [&](const std::string& copy) {
    std::string bytes = contentOf(path);
    std::size_t at = bytes.find(from);
    if (at == std::string::npos) throw std::runtime_error("no " + from + " in " + path);
    for (; at != std::string::npos; at = bytes.find(from, at)) bytes.replace(at, to.size(), to);
    std::ofstream(copy, std::ios::binary) << bytes;
  };
  return made(fs::path(path).filename(), from + " is " + to + " in " + path, make);
}

std::string withRotateTag(const std::string& value) {
  // ffmpeg itself would convert a "rotate" tag.
  const std::string tagged = media("rotate.mkv",
                                   "-f lavfi -i testsrc=s=176x144:r=25:d=1 -pix_fmt yuv420p "
                                   "-c:v libx264 -metadata:s:v 'rotaXe=" +
                                       value + "'");
  return replaced(tagged, "ROTAXE", "ROTATE");
}

nlohmann::json ffprobe(const std::string& path) {
  return nlohmann::json::parse(
      mustRun({"ffprobe", "-v", "error", "-of", "json", "-show_format", "-show_streams",
               "-show_chapters", "-show_programs", path}));
}

nlohmann::json mediainfo(const std::string& path) {
  return nlohmann::json::parse(mustRun({"mediainfo", "--Output=JSON", path}));
}

}  // namespace kolum::test
