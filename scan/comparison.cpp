#include "scan/comparison.h"

#include <algorithm>

namespace kolum::scan {

namespace {

// Of a file with hard links; backups have files with hundreds.
constexpr std::size_t kMostNames = 16;

bool isSameContent(const Identity& a, const Identity& b) {
  return a.inode == b.inode && a.size == b.size && a.mtimeNs == b.mtimeNs;
}

}  // namespace

Comparison::Comparison(Store& store, const Selection& selection, const Storage& storage,
                       const Target& target, std::string root, Options options)
    : store_(store),
      selection_(selection),
      storage_(storage),
      target_(target),
      root_(std::move(root)),
      options_(options) {}

void Comparison::add(const Piece& piece, const Visitor& visitor) {
  if (!isInFolder_) {
    isInFolder_ = true;
    folder_ = root_ + piece.folder;
    known_ = store_.folder(folder_);
    isSeen_.assign(known_.files.size(), false);
  }
  if (!piece.files.empty()) devicesWithFiles_.insert(piece.device);
  for (const SeenFile& file : piece.files) compare(file, visitor);
  if (!piece.isLast) return;
  if (piece.error == 0) finishFolder(piece);
  isInFolder_ = false;
  known_ = {};
}

void Comparison::compare(const SeenFile& file, const Visitor& visitor) {
  const auto at = std::lower_bound(
      known_.files.begin(), known_.files.end(), file.name,
      [](const Known& known, const std::string& name) { return known.name < name; });
  const bool isKnown = at != known_.files.end() && at->name == file.name;
  if (isKnown) isSeen_[static_cast<std::size_t>(at - known_.files.begin())] = true;
  if (file.error != 0) return visitor.unreadable(file);
  if (!isKnown) return visitor.look(taskFor(file, Origin::kNew));
  noteEvidence(*at, file.identity);
  if (!isUnchanged(*at, file.identity)) return visitor.look(taskFor(file, Origin::kChanged));
  // Suspects and what is in quarantine are looked at later, alone.
  if (options_.isRetry && at->state == State::kFailed)
    return visitor.look(taskFor(file, Origin::kRetried));
  visitor.unchanged(file);
}

Task Comparison::taskFor(const SeenFile& file, Origin origin) {
  Task task;
  task.job.file = {folder_, file.name};
  task.job.rootLength = root_.size();
  task.job.identity = file.identity;
  task.origin = origin;
  if (!options_.findsMoves || origin == Origin::kRetried) return task;
  for (KnownFile& other :
       store_.filesWithInode(file.identity.device, file.identity.inode, kMostNames)) {
    const bool isItself = other.folder == folder_ && other.known.name == file.name;
    if (!isItself && isSameContent(other.known.identity, file.identity))
      task.formerNames.push_back(std::move(other));
  }
  return task;
}

void Comparison::noteEvidence(const Known& known, const Identity& seen) {
  if (known.identity.inode != seen.inode) return;
  if (known.identity.device == seen.device) {
    recognizedDevices_.insert(seen.device);
  } else if (isSameContent(known.identity, seen)) {
    renumbered_.insert({known.identity.device, seen.device});
  }
}

void Comparison::noteMove(const Identity& before, const Identity& now) {
  if (before.device == now.device) recognizedDevices_.insert(now.device);
}

void Comparison::finishFolder(const Piece& piece) {
  bool isMissing = false;
  for (std::size_t i = 0; i < isSeen_.size() && !isMissing; ++i)
    isMissing = !isSeen_[i] && selection_.countsFile(piece.folder, known_.files[i].name);
  if (isMissing) gone_.push_back({folder_, piece.device, false});
  std::vector<std::string> present = piece.folders;
  std::sort(present.begin(), present.end());
  for (const std::string& name : known_.folders) {
    const bool isThere = std::binary_search(present.begin(), present.end(), name);
    if (!isThere && selection_.entersFolder(piece.folder, name))
      gone_.push_back({folder_ + name + "/", piece.device, true});
  }
}

bool Comparison::mayRemove(const GoneFolder& folder, const Known& known) const {
  const std::uint64_t before = known.identity.device;
  if (before != folder.device) return renumbered_.contains({before, folder.device});
  if (target_.isWatched || recognizedDevices_.contains(before)) return true;
  return devicesWithFiles_.contains(before) && isWithinMount(folder.folder);
}

// Whether the root lies below the place where the folder's file system is mounted, so that another
// disk cannot have taken its place.
bool Comparison::isWithinMount(const std::string& folder) const {
  const Device device = storage_.deviceOf(folder);
  const std::string place = device.mount.ends_with('/') ? device.mount : device.mount + "/";
  return root_.size() > place.size() && root_.starts_with(place);
}

}  // namespace kolum::scan
