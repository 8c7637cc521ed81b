#include "scan/open_files.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>

#include "base/descriptor.h"

namespace kolum::scan {

namespace {

constexpr std::array<char, 16> kMagic = {'k', 'o', 'l', 'u', 'm', ' ', 'o', 'p',
                                         'e', 'n', ' ', 'f', 'i', 'l', 'e', '1'};
using BootId = std::array<char, 40>;

// Of this run of the machine: the page cache does not survive it.
BootId bootId() {
  BootId id = {};
  std::ifstream("/proc/sys/kernel/random/boot_id").read(id.data(), id.size() - 1);
  return id;
}

std::string nameFor(const std::string& library) {
  return library + ".open";
}

}  // namespace

struct OpenFiles::Table {
  std::array<char, 16> magic;
  BootId boot;
  std::atomic<Hash> open[kSlots];  // 0: none
};

// FNV-1a: the same in every build.
OpenFiles::Hash OpenFiles::hashOf(std::string_view path) {
  Hash hash = 0xcbf29ce484222325;
  for (const char c : path) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return std::max<Hash>(hash, 1);
}

std::optional<std::set<OpenFiles::Hash>> OpenFiles::left(const std::string& library) {
  const Descriptor file(::open(nameFor(library).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!file.isOpen()) return std::nullopt;
  Table table = {};
  const BootId now = bootId();
  if (read(file.get(), &table, sizeof table) != sizeof table || table.magic != kMagic ||
      table.boot != now || now.front() == '\0')
    return std::nullopt;
  std::set<Hash> open;
  for (const auto& slot : table.open)
    if (slot != 0) open.insert(slot);
  return open;
}

OpenFiles::OpenFiles(const std::string& library) : name_(nameFor(library)) {
  unlink(name_.c_str());
  const Descriptor file(
      ::open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.isOpen()) return;
  // On a full disk, writing to memory without a place on the disk would end the process.
  void* memory =
      posix_fallocate(file.get(), 0, sizeof(Table)) == 0
          ? mmap(nullptr, sizeof(Table), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0)
          : MAP_FAILED;
  if (memory == MAP_FAILED) {
    unlink(name_.c_str());
    return;
  }
  table_ = static_cast<Table*>(memory);
  table_->boot = bootId();
  table_->magic = kMagic;
}

OpenFiles::~OpenFiles() {
  if (table_ == nullptr) return;
  unlink(name_.c_str());
  munmap(table_, sizeof(Table));
}

OpenFiles::Note::Note(OpenFiles& files, std::string_view path) : files_(files), slot_(kSlots) {
  if (files_.table_ == nullptr) return;
  for (std::size_t i = 0; i < kSlots && slot_ == kSlots; ++i) {
    bool isTaken = false;
    if (files_.isTaken_[i].compare_exchange_strong(isTaken, true)) slot_ = i;
  }
  if (slot_ != kSlots) files_.table_->open[slot_] = hashOf(path);
}

OpenFiles::Note::~Note() {
  if (slot_ == kSlots) return;
  files_.table_->open[slot_] = 0;
  files_.isTaken_[slot_] = false;
}

}  // namespace kolum::scan
