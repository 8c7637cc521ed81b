// Versions of a library's schema, and files that are none.
#include "scan/schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "scan/library.h"
#include "scan/version1.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using scan::Database;
using scan::Store;
using scan::StoreError;
using Kind = StoreError::Kind;
using testing::HasSubstr;

constexpr auto kRead = Store::Access::kRead;
constexpr auto kWrite = Store::Access::kWrite;
constexpr const char* kSong = R"({"kind":{"name":"music"}})";

class SchemaTest : public testing::Test {
 protected:
  void make() { Store(file_, kToday, kWrite).putDocument({"/", "a"}, identity(1), kSong); }
  void makeVersion1(const std::string& more = "") {
    ask(file_, std::string(kVersion1) + kRowsOfVersion1 + more);
  }
  // All migrations that there are, and more.
  static std::vector<const char*> stepsAnd(std::initializer_list<const char*> more) {
    std::vector<const char*> steps(scan::migrations().begin(), scan::migrations().end());
    steps.insert(steps.end(), more);
    return steps;
  }
  std::string refused(Kind kind, Store::Access access = kWrite) {
    return failure(kind, [&] { Store(file_, kToday, access); });
  }

  const TempDir folder_;
  const std::string file_ = folder_.path("library.db");
};

TEST_F(SchemaTest, MigratesAnEmptyDatabase) {
  folder_.write("library.db", "");
  make();
  EXPECT_EQ(askOne(file_, "PRAGMA user_version"), std::to_string(scan::newestSchema()));
  EXPECT_EQ(askOne(file_, "PRAGMA application_id"), std::to_string(scan::kApplicationId));
  EXPECT_EQ(askOne(file_, "PRAGMA journal_mode"), "wal");
  EXPECT_EQ(askOne(file_, "SELECT count(*) FROM songs"), "1");
}

TEST_F(SchemaTest, TakesAnEmptyFileForALibraryInTheMaking) {
  folder_.write("library.db", "");
  refused(Kind::kMissing, kRead);
  EXPECT_EQ(contentOf(file_), "");
}

TEST_F(SchemaTest, MigratesStepByStep) {
  make();
  const auto steps =
      stepsAnd({"ALTER TABLE folder ADD COLUMN two INTEGER", "UPDATE folder SET two = 2"});
  Database database(file_, Database::Mode::kWrite);
  EXPECT_EQ(contentOf(database, steps), scan::Content::kOlder);
  migrate(database, steps);
  EXPECT_EQ(contentOf(database, steps), scan::Content::kPresent);
  checkSchema(database, steps);
  EXPECT_EQ(askOne(file_, "PRAGMA user_version"), std::to_string(scan::newestSchema() + 2));
  EXPECT_EQ(askOne(file_, "SELECT two FROM folder"), "2");
  EXPECT_EQ(askOne(file_, "SELECT path FROM songs"), "/a");
}

TEST_F(SchemaTest, LeavesLibraryAsItWasIfAMigrationFails) {
  make();
  const auto steps =
      stepsAnd({"ALTER TABLE folder ADD COLUMN two INTEGER", "UPDATE nothing SET two = 2"});
  Database database(file_, Database::Mode::kWrite);
  failure(Kind::kOther, [&] { migrate(database, steps); });
  EXPECT_FALSE(database.isInTransaction());
  EXPECT_EQ(contentOf(database), scan::Content::kPresent);
  checkSchema(database);
  EXPECT_EQ(askOne(file_, "SELECT path FROM songs"), "/a");
}

TEST_F(SchemaTest, KeepsWhatALibraryOfVersion1Knows) {
  makeVersion1("CREATE VIEW mine AS SELECT path FROM songs;");
  Store store(file_, kToday, kWrite);
  EXPECT_EQ(askOne(file_, "PRAGMA user_version"), std::to_string(scan::newestSchema()));
  EXPECT_EQ(store.counts().files(), 2U);
  EXPECT_EQ(store.file({"/m/", "b.jpg"})->id, 5);
  EXPECT_EQ(store.file({"/m/", "b.jpg"})->state, scan::State::kQuarantined);
  EXPECT_EQ(store.marks().size(), 1U);
  EXPECT_EQ(store.roots().size(), 1U);
  EXPECT_EQ(askOne(file_, "SELECT path || composer || size FROM songs"), "/m/a.mp3Ann1000");
  EXPECT_EQ(askOne(file_, "SELECT date || date_from FROM photos"), "2015-06-07taken");
  EXPECT_EQ(askOne(file_, "SELECT path FROM mine"), "/m/a.mp3");
  EXPECT_EQ(askOne(file_, "SELECT document FROM songs JOIN files USING (id)"),
            R"({"kind":{"id":1,"name":"music"},"title":"Harbour","composer":"Ann"})");
  expectSound(file_);
}

TEST_F(SchemaTest, MakesTheSameSchemaOfVersion1AsAnew) {
  makeVersion1();
  const Store store(file_, kToday, kWrite);
  const std::string fresh = folder_.path("fresh.db");
  const Store other(fresh, kToday, kWrite);
  const std::string sql = "SELECT sql FROM sqlite_schema ORDER BY type, name";
  EXPECT_EQ(ask(file_, sql), ask(fresh, sql));
}

TEST_F(SchemaTest, SaysWhatBringsAnEarlierLibraryUpToDate) {
  makeVersion1();
  const std::string before = contentOf(file_);
  EXPECT_THAT(refused(Kind::kOther, kRead),
              HasSubstr("made by an earlier kolum; the next \"kolum scan\" or"));
  EXPECT_EQ(contentOf(file_), before);
}

// A view of the owner that makes no sense stands in the way of changes to tables.
TEST_F(SchemaTest, LeavesVersion1AsItWasIfItsMigrationFails) {
  makeVersion1("CREATE VIEW mine AS SELECT path FROM lost;");
  EXPECT_THAT(refused(Kind::kOther), HasSubstr("error in view mine"));
  EXPECT_EQ(askOne(file_, "PRAGMA user_version"), "1");
  EXPECT_EQ(askOne(file_, "SELECT device FROM folder WHERE id = 2"), "7");
  ask(file_, "DROP VIEW mine");
  EXPECT_EQ(Store(file_, kToday, kWrite).counts().files(), 2U);
}

TEST_F(SchemaTest, RefusesLaterSchema) {
  make();
  ask(file_, "PRAGMA user_version = 99");
  for (const auto access : {kRead, kWrite}) {
    EXPECT_THAT(refused(Kind::kNewer, access),
                HasSubstr("made by a later kolum (schema 99; this one knows " +
                          std::to_string(scan::newestSchema()) + ")"));
  }
  EXPECT_EQ(askOne(file_, "PRAGMA user_version"), "99");
  EXPECT_EQ(askOne(file_, "SELECT path FROM songs"), "/a");
}

TEST_F(SchemaTest, RefusesOtherFiles) {
  for (const std::string& content : {std::string("text"), std::string(100000, 'x'),
                                     "SQLite format 3" + std::string(5000, '\0')}) {
    folder_.write("library.db", content);
    for (const auto access : {kRead, kWrite}) refused(Kind::kNotALibrary, access);
    EXPECT_EQ(contentOf(file_), content);
  }
}

TEST_F(SchemaTest, RefusesOtherDatabases) {
  ask(file_, "CREATE TABLE file (a)");
  const std::string before = contentOf(file_);
  for (const auto access : {kRead, kWrite}) refused(Kind::kNotALibrary, access);
  EXPECT_EQ(contentOf(file_), before);
  ask(file_, "PRAGMA user_version = 1");
  refused(Kind::kNotALibrary);
}

TEST_F(SchemaTest, RefusesFolders) {
  std::filesystem::create_directory(file_);
  refused(Kind::kCannotOpen);
}

TEST_F(SchemaTest, RefusesChangedTablesAndViews) {
  for (const char* change :
       {"DROP VIEW songs; CREATE VIEW songs AS SELECT 1", "DROP INDEX file_inode",
        "ALTER TABLE file ADD COLUMN more INTEGER", "ALTER TABLE document RENAME TO documents"}) {
    SCOPED_TRACE(change);
    std::filesystem::remove(file_);
    make();
    ask(file_, change);
    EXPECT_THAT(refused(Kind::kNotALibrary, kRead), HasSubstr("has been changed"));
  }
}

TEST_F(SchemaTest, AllowsFurtherViews) {
  make();
  ask(file_, "CREATE VIEW mine AS SELECT path FROM songs");
  EXPECT_EQ(Store(file_, kToday, kRead).counts().files(), 1U);
}

TEST_F(SchemaTest, RunsNoTriggers) {
  make();
  ask(file_, "CREATE TRIGGER evil AFTER INSERT ON file BEGIN DELETE FROM document; END");
  Store(file_, kToday, kWrite).putDocument({"/", "b"}, identity(2), kSong);
  EXPECT_EQ(askOne(file_, "SELECT count(*) FROM document"), "2");
}

// Whatever the bytes are: an error or an answer, in a bounded time.
TEST_F(SchemaTest, SurvivesDamagedDatabases) {
  {
    Store store(file_, kToday, kWrite);
    for (std::uint64_t i = 0; i < 300; ++i)
      store.putDocument({"/f" + std::to_string(i % 7) + "/", std::to_string(i)}, identity(i),
                        kSong);
  }
  const std::string sound = contentOf(file_);
  std::uint32_t random = 1;
  const auto next = [&](std::size_t limit) {
    random = random * 1664525 + 1013904223;
    return random / 7 % limit;
  };
  for (int round = 0; round < 300; ++round) {
    std::string damaged = sound;
    for (int i = 0; i < 20; ++i) damaged[next(damaged.size())] = static_cast<char>(next(256));
    if (round % 3 == 0) damaged.resize(next(damaged.size()));
    folder_.write("library.db", damaged);
    std::filesystem::remove(file_ + "-wal");
    try {
      Store store(file_, kToday, kWrite);
      store.folder("/f1/");
      store.putDocument({"/f1/", "new"}, identity(1), kSong);
      store.removeTree("/f2/");
      store.forEachFile({}, [](const scan::FoundFile&) {});
    } catch (const StoreError&) {
    }
  }
}

}  // namespace
}  // namespace kolum::test
