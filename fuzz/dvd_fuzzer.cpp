// Reads the bytes as the index file of a DVD's title set.
#include <kolum/host.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

// A disc with two title sets of one video file each; removed when the program ends.
class Disc {
 public:
  Disc() {
    std::string pattern = (fs::temp_directory_path() / "kolum-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    folder_ = pattern + "/VIDEO_TS";
    fs::create_directory(folder_);
    write("VTS_01_1.VOB", "first");
    write("VTS_02_1.VOB", "second");
  }
  ~Disc() {
    std::error_code ignored;
    fs::remove_all(folder_.parent_path(), ignored);
  }
  Disc(const Disc&) = delete;
  Disc& operator=(const Disc&) = delete;

  void write(const char* name, const std::string& content) const {
    std::ofstream out(folder_ / name, std::ios::binary);
    out << content;
    if (!out.flush()) std::abort();
  }
  std::string folder() const { return folder_.string() + "/"; }

 private:
  fs::path folder_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Disc disc;
  disc.write("VTS_01_0.IFO", {reinterpret_cast<const char*>(data), size});
  const std::string folder = disc.folder();
  char path[1024] = {};
  long long titleSize = 0;
  if (DVDGetMainVTSNo(folder.c_str(), path, sizeof path, 0, &titleSize, 0) != 0) std::abort();
  // Whatever the index says, one of the two titles is the main one.
  if (path != folder + "VTS_01_1.VOB" && path != folder + "VTS_02_1.VOB") std::abort();
  return 0;
}
