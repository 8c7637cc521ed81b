// A file system whose folder holds three files. Two, a.jpg and z.jpg, are good; the third one
// misbehaves.
//
// misbehaving_files FOLDER NAME MISCHIEF CONTENT GOOD: the third one's NAME; both files with the
// content of theirs. It runs until it is killed.
#define FUSE_USE_VERSION 31
#include <fuse.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

enum class Mischief { kHangInOpen, kHangInRead, kTrickle, kShrink, kGrow, kVanish, kFail, kNone };

struct MischiefRow {
  std::string_view name;
  Mischief mischief;
};

constexpr MischiefRow kMischiefs[] = {
    {"hangInOpen", Mischief::kHangInOpen},
    {"hangInRead", Mischief::kHangInRead},
    {"trickle", Mischief::kTrickle},
    {"shrink", Mischief::kShrink},
    {"grow", Mischief::kGrow},
    {"vanish", Mischief::kVanish},
    {"fail", Mischief::kFail},
};

struct Files {
  std::string name;  // with a leading "/"
  Mischief mischief = Mischief::kNone;
  std::string content;
  std::string good;
  std::atomic<off_t> size = 0;  // as it seems to be
  std::atomic<bool> isGone = false;
};

Files& files() {
  static Files all;
  return all;
}

[[noreturn]] void hang() {
  for (;;) pause();
}

bool isCulprit(std::string_view path) {
  return path == files().name && !files().isGone;
}

bool isGood(std::string_view path) {
  return path == "/a.jpg" || path == "/z.jpg";
}

int getAttributes(const char* path, struct stat* status, fuse_file_info* /*file*/) {
  *status = {};
  status->st_nlink = 1;
  if (std::string_view(path) == "/") {
    status->st_mode = S_IFDIR | 0755;
    return 0;
  }
  if (!isCulprit(path) && !isGood(path)) return -ENOENT;
  status->st_mode = S_IFREG | 0644;
  status->st_size = isGood(path) ? static_cast<off_t>(files().good.size()) : files().size.load();
  return 0;
}

int listFolder(const char* /*path*/, void* buffer, fuse_fill_dir_t fill, off_t /*from*/,
               fuse_file_info* /*file*/, fuse_readdir_flags /*flags*/) {
  for (const char* name : {".", "..", "a.jpg", "z.jpg"})
    fill(buffer, name, nullptr, 0, fuse_fill_dir_flags{});
  if (!files().isGone) fill(buffer, files().name.c_str() + 1, nullptr, 0, fuse_fill_dir_flags{});
  return 0;
}

int openFile(const char* path, fuse_file_info* file) {
  if (!isCulprit(path)) return isGood(path) ? 0 : -ENOENT;
  if (files().mischief == Mischief::kHangInOpen) hang();
  // Each read comes here, with the size that its reader wants.
  file->direct_io = 1;
  return 0;
}

int copied(const std::string& content, char* buffer, std::size_t size, off_t at) {
  if (at < 0 || static_cast<std::size_t>(at) >= content.size()) return 0;
  const auto begin = static_cast<std::size_t>(at);
  const std::size_t count = std::min(size, content.size() - begin);
  std::memcpy(buffer, content.data() + begin, count);
  return static_cast<int>(count);
}

int readFile(const char* path, char* buffer, std::size_t size, off_t at, fuse_file_info* /*file*/) {
  Files& all = files();
  if (isGood(path)) return copied(all.good, buffer, size, at);
  switch (all.mischief) {
    case Mischief::kHangInRead:
      hang();
    case Mischief::kTrickle:
      return copied(all.content, buffer, std::min<std::size_t>(size, 1), at);
    case Mischief::kShrink:
      all.size = all.size / 2;
      return at < all.size ? copied(all.content, buffer, size, at) : 0;
    case Mischief::kGrow: {
      // There is always more, and it is the same again.
      all.size += static_cast<off_t>(size);
      const auto begin = at % static_cast<off_t>(all.content.size());
      return copied(all.content, buffer, size, begin);
    }
    case Mischief::kVanish:
      all.isGone = true;
      return at == 0 ? copied(all.content, buffer, size, at) : -ESTALE;
    case Mischief::kFail:
      return -EIO;
    case Mischief::kHangInOpen:
    case Mischief::kNone:
      break;
  }
  return copied(all.content, buffer, size, at);
}

void* begin(fuse_conn_info* /*connection*/, fuse_config* config) {
  // Sizes are never remembered.
  config->attr_timeout = 0;
  config->entry_timeout = 0;
  config->negative_timeout = 0;
  return nullptr;
}

std::string contentOf(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  Files& all = files();
  all.name = std::string("/") + argv[2];
  for (const MischiefRow& row : kMischiefs)
    if (row.name == argv[3]) all.mischief = row.mischief;
  if (all.mischief == Mischief::kNone) return 2;
  all.content = contentOf(argv[4]);
  all.good = contentOf(argv[5]);
  all.size = static_cast<off_t>(all.content.size());
  fuse_operations operations = {};
  operations.getattr = getAttributes;
  operations.readdir = listFolder;
  operations.open = openFile;
  operations.read = readFile;
  operations.init = begin;
  // What hangs keeps its thread.
  std::array<char*, 4> arguments = {argv[0], const_cast<char*>("-f"),
                                    const_cast<char*>("-omax_idle_threads=20"), argv[1]};
  return fuse_main(static_cast<int>(arguments.size()), arguments.data(), &operations, nullptr);
}
