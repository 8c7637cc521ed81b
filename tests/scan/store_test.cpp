// What a library remembers of files and folders.
#include "scan/store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "scan/library.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using scan::FilePath;
using scan::Identity;
using scan::Known;
using scan::State;
using scan::Store;
using scan::StoreError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr auto kRead = Store::Access::kRead;
constexpr auto kWrite = Store::Access::kWrite;
const std::string kSong = R"({"schema":2,"file":"x","kind":{"id":1,"name":"music"},"duration":5})";

class StoreTest : public testing::Test {
 protected:
  Store opened() { return {file_, kToday, kWrite}; }
  std::string document(const std::string& path) {
    return askOne(file_, "SELECT document FROM files WHERE path = '" + path + "'");
  }

  const TempDir folder_;
  const std::string file_ = folder_.path("deep/library.db");
};

std::vector<std::string> namesOf(const scan::KnownFolder& folder) {
  std::vector<std::string> names;
  for (const Known& known : folder.files) names.push_back(known.name);
  return names;
}

TEST_F(StoreTest, KnowsFilesOfOneFolder) {
  Store store = opened();
  store.putDocument({"/share/", "b.mp3"}, identity(1), kSong);
  store.putFailure({"/share/", "a.mp4"}, identity(2), State::kFailed, {"damaged", "cut"});
  store.putDocument({"/share/deep/", "c.mp3"}, identity(3), kSong);
  const scan::KnownFolder known = store.folder("/share/");
  ASSERT_THAT(namesOf(known), ElementsAre("a.mp4", "b.mp3"));
  EXPECT_EQ(known.files[0].state, State::kFailed);
  EXPECT_EQ(known.files[1].state, State::kKnown);
  EXPECT_TRUE(isUnchanged(known.files[1], identity(1)));
  EXPECT_FALSE(isUnchanged(known.files[1], identity(2)));
  EXPECT_THAT(known.folders, ElementsAre("deep"));
  EXPECT_THAT(store.folder("/").folders, ElementsAre("share"));
  EXPECT_THAT(namesOf(store.folder("/none/")), IsEmpty());
}

TEST_F(StoreTest, ComparesEveryPartOfAnIdentity) {
  Store store = opened();
  store.putDocument({"/", "a"}, identity(1), kSong);
  const Known known = *store.file({"/", "a"});
  for (const auto part : {&Identity::size, &Identity::mtimeNs, &Identity::ctimeNs}) {
    Identity other = identity(1);
    --(other.*part);  // older counts as changed, too
    EXPECT_FALSE(isUnchanged(known, other));
  }
  for (const auto part : {&Identity::device, &Identity::inode}) {
    Identity other = identity(1);
    ++(other.*part);
    EXPECT_FALSE(isUnchanged(known, other));
  }
}

TEST_F(StoreTest, KeepsNumbersOf64Bits) {
  const Identity extreme = {~std::uint64_t{0}, ~std::uint64_t{0} - 1, INT64_MAX, INT64_MIN, -1};
  Store store = opened();
  store.putDocument({"/", "a"}, extreme, kSong);
  EXPECT_TRUE(isUnchanged(*store.file({"/", "a"}), extreme));
  EXPECT_EQ(store.filesWithInode(extreme.device, extreme.inode, 9).size(), 1U);
}

TEST_F(StoreTest, TakesFilesOfOtherReadersForChanged) {
  opened().putDocument({"/", "a"}, identity(1), kSong);
  for (const scan::Version& other : {scan::Version{1, "later readers"}, {2, kToday.readers}}) {
    Store store(file_, other, kWrite);
    EXPECT_FALSE(isUnchanged(*store.file({"/", "a"}), identity(1)));
  }
  EXPECT_TRUE(isUnchanged(*opened().file({"/", "a"}), identity(1)));
}

TEST_F(StoreTest, RemembersNamesOfAnyBytes) {
  std::string every;
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') every += static_cast<char>(byte);
  const std::vector<std::string> names = {every, "caf\xE9", "caf\xC3\xA9", "'", "\"", "%", "\n"};
  Store store = opened();
  for (const std::string& folder : names)
    for (const std::string& name : names)
      store.putDocument({"/" + folder + "/", name}, identity(1), kSong);
  for (const std::string& folder : names) {
    const scan::KnownFolder known = store.folder("/" + folder + "/");
    EXPECT_THAT(namesOf(known), testing::UnorderedElementsAreArray(names));
    EXPECT_TRUE(std::is_sorted(known.files.begin(), known.files.end(),
                               [](const Known& a, const Known& b) { return a.name < b.name; }));
    for (const std::string& name : names)
      EXPECT_TRUE(store.file({"/" + folder + "/", name}).has_value());
  }
  EXPECT_THAT(store.folder("/").folders, testing::UnorderedElementsAreArray(names));
  EXPECT_EQ(store.removeTree("/"), names.size() * names.size());
  EXPECT_EQ(store.counts().folders, 0U);
}

TEST_F(StoreTest, HoldsVeryDeepFolders) {
  std::string deep = "/";
  for (int level = 0; level < 3000; ++level) deep += "d/";
  Store store = opened();
  store.putDocument({deep, "a"}, identity(1), kSong);
  EXPECT_THAT(namesOf(store.folder(deep)), ElementsAre("a"));
  EXPECT_TRUE(store.hasFilesBelow("/d/"));
  store.removeFile({deep, "a"});
  EXPECT_EQ(store.counts().folders, 0U);
}

TEST_F(StoreTest, LeavesWhatItKnowsBetterOutOfDocuments) {
  opened().putDocument({"/", "a"}, identity(1),
                       R"({"schema":2,"file":"a","fileBytes":"%61","size":5,"title":"T",)"
                       R"("modified":"2015-06-07T08:09:10Z"})");
  EXPECT_EQ(document("/a"), R"({"title":"T"})");
}

TEST_F(StoreTest, RefusesWhatIsNotADocument) {
  Store store = opened();
  store.putDocument({"/", "a"}, identity(1), kSong);
  for (const std::string& bad :
       {std::string(), std::string("{"), std::string("[]"), std::string("7"),
        std::string("{\"a\":\"\xFF\"}"), std::string("{}\0", 3), std::string(5000, '['),
        "{\"a\":\"" + std::string(2 << 20, 'x') + "\"}"}) {
    failure(StoreError::Kind::kBadDocument, [&] {
      store.putDocument({"/", "a"}, identity(2), bad);
    });
  }
  EXPECT_TRUE(isUnchanged(*store.file({"/", "a"}), identity(1)));
}

TEST_F(StoreTest, KeepsEarlierDocumentAfterFailure) {
  for (const State state : {State::kFailed, State::kSuspect, State::kQuarantined}) {
    Store store = opened();
    store.putDocument({"/", "a"}, identity(1), kSong);
    store.putFailure({"/", "a"}, identity(2), state, {"code", "reason"});
    EXPECT_EQ(store.file({"/", "a"})->state, state);
    EXPECT_TRUE(isUnchanged(*store.file({"/", "a"}), identity(2)));
    EXPECT_THAT(document("/a"), HasSubstr("duration"));
    EXPECT_EQ(askOne(file_, "SELECT reason FROM problems"), "reason");
    // The document says which file it describes.
    EXPECT_EQ(askOne(file_, "SELECT size FROM document"), std::to_string(identity(1).size));
  }
}

TEST_F(StoreTest, ForgetsReasonAfterSuccess) {
  Store store = opened();
  store.putFailure({"/", "a"}, identity(1), State::kQuarantined, {"code", "reason"});
  store.putDocument({"/", "a"}, identity(1), kSong);
  EXPECT_EQ(askOne(file_, "SELECT code IS NULL AND reason IS NULL FROM file"), "1");
  EXPECT_THAT(store.filesInState(State::kQuarantined, 10), IsEmpty());
}

TEST_F(StoreTest, MovesRowsWithTheirDocuments) {
  Store store = opened();
  store.putDocument({"/old/deep/", "a"}, identity(1), kSong);
  const std::int64_t id = store.file({"/old/deep/", "a"})->id;
  Identity renamed = identity(1);
  ++renamed.ctimeNs;
  EXPECT_TRUE(store.move(id, {"/new/", "b"}, renamed));
  EXPECT_EQ(store.file({"/new/", "b"})->id, id);
  EXPECT_TRUE(isUnchanged(*store.file({"/new/", "b"}), renamed));
  EXPECT_THAT(document("/new/b"), HasSubstr("duration"));
  EXPECT_FALSE(store.file({"/old/deep/", "a"}).has_value());
  EXPECT_THAT(store.folder("/").folders, ElementsAre("new"));
}

TEST_F(StoreTest, MovesOverAnotherFile) {
  Store store = opened();
  store.putDocument({"/", "a"}, identity(1), kSong);
  store.putDocument({"/", "b"}, identity(2), kSong);
  const std::int64_t id = store.file({"/", "a"})->id;
  EXPECT_TRUE(store.move(id, {"/", "b"}, identity(1)));
  EXPECT_EQ(store.file({"/", "b"})->id, id);
  EXPECT_EQ(store.counts().files(), 1U);
  EXPECT_EQ(store.counts().documents, 1U);
}

TEST_F(StoreTest, DoesNotMoveUnknownFiles) {
  Store store = opened();
  EXPECT_FALSE(store.move(5, {"/", "b"}, identity(1)));
  EXPECT_EQ(store.counts().files(), 0U);
  EXPECT_EQ(store.counts().folders, 0U);
}

TEST_F(StoreTest, NeverUsesAnIdAgain) {
  Store store = opened();
  store.putDocument({"/", "a"}, identity(1), kSong);
  const std::int64_t id = store.file({"/", "a"})->id;
  store.removeFile({"/", "a"});
  store.putDocument({"/", "b"}, identity(2), kSong);
  EXPECT_GT(store.file({"/", "b"})->id, id);
}

TEST_F(StoreTest, FindsAllNamesOfAnInode) {
  Store store = opened();
  store.putDocument({"/x/", "a"}, identity(1), kSong);
  store.putDocument({"/y/", "b"}, identity(1), kSong);
  store.putDocument({"/y/", "c"}, identity(2), kSong);
  const auto files = store.filesWithInode(7, 1, 9);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].path(), (FilePath{"/x/", "a"}));
  EXPECT_EQ(files[1].path(), (FilePath{"/y/", "b"}));
  EXPECT_THAT(store.filesWithInode(8, 1, 9), IsEmpty());
  EXPECT_EQ(store.filesWithInode(7, 1, 1).size(), 1U);
}

TEST_F(StoreTest, RemovesOnlyTheTree) {
  Store store = opened();
  const std::vector<std::string> kept = {"/s.x/", "/s0/", "/sh/", "/s\xFF/", "/"};
  const std::vector<std::string> below = {"/s/", "/s/a/", "/s/\xFF/", "/s/a/\xFF/b/"};
  for (const auto& folders : {kept, below})
    for (const std::string& folder : folders) store.putDocument({folder, "f"}, identity(1), kSong);
  store.markAtHand({{"/s/a/", "m"}, identity(2)});
  EXPECT_EQ(store.removeTree("/s/"), below.size());
  EXPECT_FALSE(store.hasFilesBelow("/s/"));
  EXPECT_THAT(store.marks(), IsEmpty());
  for (const std::string& folder : kept) EXPECT_TRUE(store.file({folder, "f"}).has_value());
  EXPECT_EQ(store.counts().documents, kept.size());
}

TEST_F(StoreTest, RemovesFoldersThatHoldNothingAnyMore) {
  Store store = opened();
  store.putDocument({"/a/b/c/", "f"}, identity(1), kSong);
  store.putDocument({"/a/", "g"}, identity(2), kSong);
  store.removeFile({"/a/b/c/", "f"});
  EXPECT_THAT(store.folder("/a/").folders, IsEmpty());
  EXPECT_THAT(namesOf(store.folder("/a/")), ElementsAre("g"));
}

TEST_F(StoreTest, RemembersRoots) {
  opened().putRoot({"/a/", 3, 1000});
  Store store = opened();
  store.putRoot({"/a/", 4, 2000});
  const auto roots = store.roots();
  ASSERT_EQ(roots.size(), 1U);
  EXPECT_EQ(roots[0].folder, "/a/");
  EXPECT_EQ(roots[0].device, 4U);
  EXPECT_EQ(roots[0].scannedAt, 2000);
}

TEST_F(StoreTest, TakesMarkedFilesForSuspectsAfterAKill) {
  {
    Store store = opened();
    store.putDocument({"/", "a"}, identity(1), kSong);
    store.begin();
    store.markAtHand({{"/", "a"}, identity(2)});
    store.markAtHand({{"/", "b"}, identity(3)});
    store.markAtHand({{"/", "c"}, identity(4), true});
    store.commit();
  }
  Store store = opened();
  EXPECT_EQ(store.takeOverMarks().size(), 3U);
  EXPECT_THAT(store.takeOverMarks(), IsEmpty());
  EXPECT_EQ(store.file({"/", "a"})->state, State::kSuspect);
  EXPECT_TRUE(isUnchanged(*store.file({"/", "a"}), identity(2)));
  EXPECT_EQ(store.file({"/", "b"})->state, State::kSuspect);
  EXPECT_EQ(store.file({"/", "c"})->state, State::kQuarantined);
  EXPECT_THAT(document("/a"), HasSubstr("duration"));
  EXPECT_EQ(store.filesInState(State::kSuspect, 10).size(), 2U);
}

TEST_F(StoreTest, TakesMarksAwayWithResults) {
  Store store = opened();
  for (const char* name : {"a", "b", "c", "d", "e"}) store.markAtHand({{"/", name}, identity(1)});
  store.putDocument({"/", "a"}, identity(1), kSong);
  store.putFailure({"/", "b"}, identity(1), State::kFailed, {"code", ""});
  store.unmark({"/", "c"});
  store.removeFile({"/", "d"});
  ASSERT_EQ(store.marks().size(), 1U);
  EXPECT_EQ(store.marks()[0].path.name, "e");
}

TEST_F(StoreTest, ListsFilesOfAStateInPieces) {
  Store store = opened();
  store.begin();
  for (int i = 0; i < 25; ++i)
    store.putFailure({"/", std::to_string(i)}, identity(1), State::kSuspect, {"c", "r"});
  store.commit();
  std::size_t count = 0;
  std::int64_t after = 0;
  for (auto piece = store.filesInState(State::kSuspect, 10); !piece.empty();
       piece = store.filesInState(State::kSuspect, 10, after)) {
    EXPECT_LE(piece.size(), 10U);
    EXPECT_GT(piece.front().known.id, after);
    count += piece.size();
    after = piece.back().known.id;
  }
  EXPECT_EQ(count, 25U);
}

TEST_F(StoreTest, MakesBatchesDurableAsAWhole) {
  {
    Store store = opened();
    store.begin();
    store.putDocument({"/a/", "f"}, identity(1), kSong);
    store.commit();
    store.begin();
    store.putDocument({"/b/", "f"}, identity(1), kSong);
    EXPECT_TRUE(store.isInBatch());
    store.rollback();
    EXPECT_FALSE(store.isInBatch());
    store.rollback();
    // Ids of folders that were rolled back must not be used.
    store.putDocument({"/b/", "g"}, identity(1), kSong);
    store.begin();
    store.putDocument({"/c/", "f"}, identity(1), kSong);
  }
  EXPECT_THAT(ask(file_, "SELECT path FROM files ORDER BY path"), ElementsAre("/a/f", "/b/g"));
  expectSound(file_);
}

TEST_F(StoreTest, WritesNothingWhileReading) {
  Store store = opened();
  store.putDocument({"/", "a"}, identity(1), kSong);
  const std::string before = contentOf(store.file() + "-wal");
  ASSERT_FALSE(before.empty());
  store.folder("/");
  store.filesWithInode(7, 1, 9);
  store.hasFilesBelow("/");
  EXPECT_EQ(contentOf(store.file() + "-wal"), before);
}

TEST_F(StoreTest, ReadersSeeWhatWasCommitted) {
  Store writer = opened();
  writer.putDocument({"/", "a"}, identity(1), kSong);
  Store reader(file_, kToday, kRead);
  writer.begin();
  writer.putDocument({"/", "b"}, identity(1), kSong);
  EXPECT_THAT(namesOf(reader.folder("/")), ElementsAre("a"));
  EXPECT_TRUE(isUnchanged(reader.folder("/").files[0], identity(1)));
  writer.commit();
  EXPECT_THAT(namesOf(reader.folder("/")), ElementsAre("a", "b"));
}

TEST_F(StoreTest, ReadersFindTheLibraryWholeOrNotAtAllWhileItIsMade) {
  for (int round = 0; round < 40; ++round) {
    const std::string file = folder_.path("made" + std::to_string(round) + "/library.db");
    std::thread writer([&] { Store(file, kToday, kWrite); });
    for (bool isThere = false; !isThere;) {
      try {
        Store(file, kToday, kRead);
        isThere = true;
      } catch (const StoreError& error) {
        EXPECT_EQ(error.kind(), StoreError::Kind::kMissing) << error.what();
      }
    }
    writer.join();
  }
}

TEST_F(StoreTest, ReadersCannotWrite) {
  opened();
  Store reader(file_, kToday, kRead);
  failure(StoreError::Kind::kReadOnly, [&] { reader.putDocument({"/", "a"}, identity(1), kSong); });
}

TEST_F(StoreTest, RefusesSecondWriterAndNamesTheFirst) {
  const Store first = opened();
  const std::string text = failure(StoreError::Kind::kInUse, [&] { opened(); });
  EXPECT_EQ(text, file_ + ": in use by process " + std::to_string(getpid()));
}

TEST_F(StoreTest, RefusesSecondWriterByAnotherName) {
  const Store first = opened();
  const std::string link = folder_.path("link.db");
  std::filesystem::create_symlink(file_, link);
  failure(StoreError::Kind::kInUse, [&] { Store(link, kToday, kWrite); });
  std::filesystem::create_directory_symlink(folder_.path("deep"), folder_.path("way"));
  failure(StoreError::Kind::kInUse, [&] { Store(folder_.path("way/library.db"), kToday, kWrite); });
}

TEST_F(StoreTest, WaitsForTheFirstWriterIfWanted) {
  auto first = std::make_unique<Store>(file_, kToday, kWrite);
  int asked = 0;
  const Store second(file_, kToday, [&] {
    if (++asked == 2) first.reset();
    return true;
  });
  EXPECT_EQ(asked, 2);
  failure(StoreError::Kind::kInUse, [&] { Store(file_, kToday, [] { return false; }); });
}

TEST_F(StoreTest, DoesNotPassItsLockToPrograms) {
  const Store first = opened();
  EXPECT_THAT(run({"ls", "-l", "/proc/self/fd"}).out, Not(HasSubstr("library.db")));
}

TEST_F(StoreTest, IsThereOnceItIsOpenedForWriting) {
  const std::string text = failure(StoreError::Kind::kMissing, [&] {
    std::filesystem::create_directories(folder_.path("deep"));
    Store(file_, kToday, kRead);
  });
  EXPECT_THAT(text, HasSubstr("there is no library yet"));
  EXPECT_FALSE(std::filesystem::exists(file_));
  opened();
  EXPECT_EQ(Store(file_, kToday, kRead).counts().files(), 0U);
}

// An unchanged scan must not slow down with the size of documents, and 100,000 files a second leave
// 10 microseconds for each.
TEST_F(StoreTest, ReadsNoDocumentForTheFilesOfAFolder) {
  const std::string plan =
      "EXPLAIN QUERY PLAN SELECT id, name, state, version, device, inode, size,"
      " mtime_ns, ctime_ns FROM file WHERE folder = 1";
  opened();
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(file_.c_str(), &database), SQLITE_OK);
  std::string detail;
  sqlite3_exec(
      database, plan.c_str(),
      [](void* into, int, char** columns, char**) {
        *static_cast<std::string*>(into) += columns[3];
        return 0;
      },
      &detail, nullptr);
  sqlite3_close(database);
  EXPECT_EQ(detail, "SEARCH file USING INDEX sqlite_autoindex_file_1 (folder=?)");
}

TEST_F(StoreTest, HoldsHundredThousandFiles) {
  Store store = opened();
  constexpr int kFolders = 100;
  constexpr int kFiles = 1000;
  store.begin();
  for (int folder = 0; folder < kFolders; ++folder)
    for (int file = 0; file < kFiles; ++file)
      store.putDocument({"/" + std::to_string(folder) + "/", std::to_string(file)},
                        identity(static_cast<std::uint64_t>(folder * kFiles + file)), kSong);
  store.commit();
  std::size_t found = 0;
  for (int folder = 0; folder < kFolders; ++folder)
    found += store.folder("/" + std::to_string(folder) + "/").files.size();
  EXPECT_EQ(found, std::size_t{kFolders} * kFiles);
  EXPECT_EQ(store.removeTree("/5/"), std::uint64_t{kFiles});
  EXPECT_EQ(store.counts().known, std::uint64_t{kFolders - 1} * kFiles);
  expectSound(file_);
}

}  // namespace
}  // namespace kolum::test
