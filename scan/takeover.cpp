#include "scan/takeover.h"

#include <optional>
#include <set>

#include "scan/open_files.h"

namespace kolum::scan {

namespace {

const Reason kFirstTimeAlone = {"interrupted-alone",
                                "the scan was killed while this file was open, alone at last"};

// Whether a kill has hit it alone before.
bool wasHitAlone(const Store& store, const FilePath& path) {
  bool wasHit = false;
  Store reader(store.file(), Version(), Store::Access::kRead);
  FileQuery query;
  query.states = {State::kSuspect};
  query.below = path.full();
  reader.forEachFile(query, [&](const FoundFile& found) {
    wasHit = wasHit ||
             (found.path == path && found.reason && found.reason->code == kFirstTimeAlone.code);
  });
  return wasHit;
}

}  // namespace

std::vector<Mark> takeOver(Store& store) {
  const std::optional<std::set<OpenFiles::Hash>> open = OpenFiles::left(store.file());
  const std::vector<Mark> marks = store.marks();
  if (marks.empty()) return {};
  std::vector<Mark> suspects;
  store.begin();
  for (const Mark& mark : marks) {
    const bool wasOpen = !open || open->contains(OpenFiles::hashOf(mark.path.full()));
    if (!wasOpen) {
      store.unmark(mark.path);
    } else if (mark.isAlone && !wasHitAlone(store, mark.path)) {
      store.unmark(mark.path);
      store.putFailure(mark.path, mark.identity, State::kSuspect, kFirstTimeAlone);
      suspects.push_back({mark.path, mark.identity, false});
    }
  }
  store.commit();
  for (const Mark& mark : store.takeOverMarks()) suspects.push_back(mark);
  return suspects;
}

}  // namespace kolum::scan
