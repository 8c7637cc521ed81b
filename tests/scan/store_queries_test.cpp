// Questions about files, and how far SQL expressions of people go.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "scan/library.h"
#include "scan/store.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using scan::FileQuery;
using scan::FoundFile;
using scan::State;
using scan::Store;
using scan::StoreError;
using Kind = StoreError::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Row {
  const char* folder;
  const char* name;
  std::int64_t size;
  const char* document;
};

constexpr Row kRows[] = {
    {"/m/", "a.mp4", 1000,
     R"({"kind":{"id":2,"name":"video"},"containerFormat":{"id":8,"name":"FORMAT_MPEG4","brand":"MPEG4_ISOM"},"mimeType":"video/mp4","dlnaProfile":"AVC_MP4","duration":60,"width":1280,"height":720,"frameRate":25.0,"videoCodec":{"id":28,"name":"CODEC_ID_H264"},"audioCodec":{"id":86018,"name":"CODEC_ID_AAC"},"creationTime":1433664550,"creationDate":"2015-06-07"})"},
    {"/m/", "b.mkv", 2000,
     R"({"kind":{"id":2,"name":"video"},"duration":3600,"videoCodec":{"id":174,"name":"CODEC_ID_HEVC"},"creationTime":1600000000})"},
    {"/m/deep/", "c.mp3", 3000,
     R"({"kind":{"id":1,"name":"music"},"duration":180,"audioCodec":{"id":86017,"name":"CODEC_ID_MP3"},"title":"Harbour","artist":"The Oscillators","track":3})"},
    {"/n/", "d.jpg", 4000,
     R"({"kind":{"id":3,"name":"photo"},"width":4000,"height":3000,"pictureFormat":1,"isAlbumCover":true})"},
};

class QueriesTest : public testing::Test {
 protected:
  QueriesTest() {
    Store store(file_, kToday, Store::Access::kWrite);
    std::uint64_t inode = 0;
    for (const Row& row : kRows) {
      scan::Identity file = identity(++inode);
      file.size = row.size;
      store.putDocument({row.folder, row.name}, file, row.document);
    }
    store.putFailure({"/n/", "e\xFF.avi"}, identity(10), State::kFailed, {"damaged", "cut off"});
    store.putFailure({"/n/", "f.avi"}, identity(11), State::kQuarantined, {"crashed", "signal 11"});
  }

  void put(const char* name, const char* document) {
    Store(file_, kToday, Store::Access::kWrite).putDocument({"/x/", name}, identity(99), document);
  }
  std::vector<std::string> names(const FileQuery& query) {
    Store store(file_, kToday, Store::Access::kRead);
    std::vector<std::string> names;
    store.forEachFile(query, [&](const FoundFile& file) { names.push_back(file.path.name); });
    return names;
  }
  std::vector<std::string> where(const std::string& expression) {
    return names({.where = expression, .timeLimit = std::chrono::seconds(5)});
  }
  std::string refusal(const std::string& expression) {
    return failure(Kind::kBadExpression, [&] { where(expression); });
  }

  const TempDir folder_;
  const std::string file_ = folder_.path("library.db");
};

TEST_F(QueriesTest, FindsAllFilesInOrder) {
  EXPECT_THAT(names({}), ElementsAre("a.mp4", "b.mkv", "c.mp3", "d.jpg", "f.avi", "e\xFF.avi"));
}

TEST_F(QueriesTest, FindsByState) {
  EXPECT_THAT(names({.states = {State::kFailed}}), ElementsAre("e\xFF.avi"));
  EXPECT_THAT(names({.states = {State::kFailed, State::kQuarantined}}),
              ElementsAre("f.avi", "e\xFF.avi"));
}

TEST_F(QueriesTest, FindsBelowAPath) {
  EXPECT_THAT(names({.below = "/m"}), ElementsAre("a.mp4", "b.mkv", "c.mp3"));
  EXPECT_THAT(names({.below = "/m/"}), ElementsAre("a.mp4", "b.mkv", "c.mp3"));
  EXPECT_THAT(names({.below = "/m/b.mkv"}), ElementsAre("b.mkv"));
  EXPECT_THAT(names({.below = "/n/e\xFF.avi"}), ElementsAre("e\xFF.avi"));
  EXPECT_THAT(names({.below = "/m/a"}), IsEmpty());
  EXPECT_EQ(names({.below = "/"}).size(), 6U);
}

TEST_F(QueriesTest, FindsByKind) {
  EXPECT_THAT(names({.kind = "video"}), ElementsAre("a.mp4", "b.mkv"));
  EXPECT_THAT(names({.kind = "music"}), ElementsAre("c.mp3"));
  EXPECT_THAT(names({.kind = "photo"}), ElementsAre("d.jpg"));
}

TEST_F(QueriesTest, FindsByCodec) {
  for (const char* name : {"H264", "h264", "CODEC_ID_H264", "codec_id_h264"})
    EXPECT_THAT(names({.codec = name}), ElementsAre("a.mp4"));
  EXPECT_THAT(names({.codec = "AAC"}), ElementsAre("a.mp4"));
  EXPECT_THAT(names({.codec = "MP3"}), ElementsAre("c.mp3"));
  EXPECT_THAT(names({.codec = ""}), IsEmpty());
}

TEST_F(QueriesTest, FindsByNumbers) {
  EXPECT_THAT(names({.kind = "video", .size = {2000, {}}}), ElementsAre("b.mkv"));
  EXPECT_THAT(names({.size = {1000, 2000}}), ElementsAre("a.mp4", "b.mkv"));
  EXPECT_THAT(names({.duration = {60, 180}}), ElementsAre("a.mp4", "c.mp3"));
  EXPECT_THAT(names({.duration = {{}, 59}}), IsEmpty());
}

TEST_F(QueriesTest, FindsByDate) {
  // A file without a date of its own has that of its last change, 2014-05-13.
  EXPECT_THAT(names({.kind = "video", .date = {"2015", "2015"}}), ElementsAre("a.mp4"));
  EXPECT_THAT(names({.date = {"2015-06-07", "2015-06"}}), ElementsAre("a.mp4"));
  EXPECT_THAT(names({.date = {"2015-06-08", {}}}), ElementsAre("b.mkv"));
  EXPECT_THAT(names({.date = {{}, "2014-05-13"}}),
              ElementsAre("c.mp3", "d.jpg", "f.avi", "e\xFF.avi"));
  EXPECT_THAT(names({.date = {{}, "2014-05-12"}}), IsEmpty());
}

TEST_F(QueriesTest, FindsByTheDateThatTheContentWasMade) {
  put("p.jpg", R"({"kind":{"name":"photo"},"taken":"2003-02-01T23:30:00-05:00"})");
  put("q.mov", R"({"kind":{"name":"video"},"created":"2004-02-01T08:00:00+09:00",)"
               R"("creationTime":1075590000,"creationDate":"2004-01-31","date":"2001"})");
  put("r.flac", R"({"kind":{"name":"music"},"date":"2005-03"})");
  put("s.flac", R"({"kind":{"name":"music"},"date":"2006"})");
  put("t.jpg", R"({"kind":{"name":"photo"},"taken":"nobody knows"})");
  EXPECT_THAT(names({.date = {"2003-02-01", "2003-02-01"}}), ElementsAre("p.jpg"));
  EXPECT_THAT(names({.date = {"2004", "2004"}}), ElementsAre("q.mov"));
  EXPECT_EQ(askOne(file_, "SELECT date || date_from FROM videos WHERE name = 'q.mov'"),
            "2004-02-01created");
  EXPECT_THAT(names({.date = {"2005-03", "2005-03"}}), ElementsAre("r.flac"));
  EXPECT_THAT(names({.date = {"2006", "2006"}}), ElementsAre("s.flac"));
  EXPECT_EQ(askOne(file_, "SELECT date || date_from FROM photos WHERE name = 't.jpg'"),
            "2014-05-13modified");
}

TEST_F(QueriesTest, FindsByProfile) {
  EXPECT_THAT(names({.profile = "AVC_MP4"}), ElementsAre("a.mp4"));
  EXPECT_THAT(names({.kind = "video", .profile = ""}), ElementsAre("b.mkv"));
}

TEST_F(QueriesTest, FindsTextInNamesAndTags) {
  EXPECT_THAT(names({.text = "oscill"}), ElementsAre("c.mp3"));
  EXPECT_THAT(names({.text = "HARBOUR"}), ElementsAre("c.mp3"));
  EXPECT_THAT(names({.text = "DEEP/"}), ElementsAre("c.mp3"));
  EXPECT_THAT(names({.text = ".avi"}), ElementsAre("f.avi", "e\xFF.avi"));
  EXPECT_THAT(names({.text = "%"}), IsEmpty());
  EXPECT_THAT(names({.text = "' OR 1=1 --"}), IsEmpty());
}

TEST_F(QueriesTest, FindsTextInAllTags) {
  const char* const documents[] = {
      R"({"composer":"some NEEDLE here"})",
      R"({"keywords":["sea","needle"]})",
      R"({"people":[{"name":"Ann"},{"name":"Needle","type":"Face"}]})",
      R"({"show":"needle"})",
      R"({"description":"say \"needle\""})",
      R"({"caption":"\u006eeedle"})",
      R"({"camera":{"model":"Needle 5"}})",
      R"({"address":{"city":"Needleton"}})",
      R"({"performers":[{"name":"needle","role":"organ"}]})",
  };
  std::vector<std::string> all;
  for (const char* document : documents) {
    all.push_back(std::to_string(all.size()));
    put(all.back().c_str(), document);
  }
  put("not", R"({"fingerprint":"needle","needle":"x","streams":[{"encoder":"needle"}]})");
  EXPECT_EQ(names({.text = "Needle"}), all);
  EXPECT_THAT(names({.text = "\"needle\""}), ElementsAre("4"));
  EXPECT_THAT(names({.text = "Face"}), IsEmpty());
}

TEST_F(QueriesTest, FindsTextOfAllScriptsInEitherCase) {
  put("a", R"({"title":"ÉTÉ à la mer"})");
  put("b", R"({"title":"Москва"})");
  put("Ωmega", R"({"title":"x"})");
  put("bad\xFFÉ", R"({"title":"x"})");
  EXPECT_THAT(names({.text = "été À"}), ElementsAre("a"));
  EXPECT_THAT(names({.text = "МОСК"}), ElementsAre("b"));
  EXPECT_THAT(names({.text = "ωMEGA"}), ElementsAre("Ωmega"));
  EXPECT_THAT(names({.text = "\xFFé"}), ElementsAre("bad\xFFÉ"));
}

TEST_F(QueriesTest, LooksForTextInExpressions) {
  EXPECT_THAT(where("has_text(tags, 'OSCILL')"), ElementsAre("c.mp3"));
  EXPECT_THAT(where("has_text(NULL, 'x') IS NULL AND has_text(5, 5) AND has_text(name, '.mp3')"),
              ElementsAre("c.mp3"));
}

TEST_F(QueriesTest, FindsByExpression) {
  EXPECT_THAT(where("width >= 1280 AND frame_rate = 25"), ElementsAre("a.mp4"));
  EXPECT_THAT(where("state = 'quarantined'"), ElementsAre("f.avi"));
  EXPECT_THAT(where("path LIKE '%.mkv' -- a comment"), ElementsAre("b.mkv"));
  EXPECT_THAT(where("json_extract(document, '$.isAlbumCover')"), ElementsAre("d.jpg"));
  EXPECT_THAT(where("id IN (SELECT id FROM songs WHERE track = 3)"), ElementsAre("c.mp3"));
  EXPECT_THAT(where("EXISTS (SELECT 1 FROM json_each(document) WHERE key = 'isAlbumCover')"),
              ElementsAre("d.jpg"));
}

TEST_F(QueriesTest, RefusesWhatIsNotAnExpression) {
  EXPECT_THAT(refusal("no_such_column = 1"), HasSubstr("no such column: no_such_column"));
  EXPECT_THAT(refusal("1 +"), HasSubstr("syntax error"));
  for (const std::string& bad :
       {std::string(), std::string("1); DELETE FROM file; --"), std::string("1); SELECT 1 --"),
        std::string("1) ORDER BY 1; SELECT (1"), std::string("(SELECT 1"), std::string("1)"),
        std::string("1) UNION SELECT (1"), std::string("1\0 OR 1", 7)}) {
    SCOPED_TRACE(bad);
    refusal(bad);
  }
}

TEST_F(QueriesTest, LetsExpressionsOnlyRead) {
  for (const char* bad :
       {"load_extension('x')", "(SELECT sql FROM sqlite_schema)",
        "(SELECT 1 FROM pragma_user_version)", "randomblob(1000000000) IS NULL",
        "zeroblob(1000000000) IS NULL", "printf('%1000000000d', 1) IS NULL",
        "fts3_tokenizer('simple') IS NULL", "(SELECT folder FROM at_hand) IS NULL",
        "(SELECT 1 FROM temp.sqlite_schema)", "readfile('/etc/passwd') IS NULL",
        "(SELECT name FROM sqlite_sequence) IS NULL",
        "(WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n) SELECT max(i) FROM n)",
        "1; ATTACH 'x' AS y", "1; PRAGMA user_version = 5"}) {
    SCOPED_TRACE(bad);
    refusal(bad);
  }
  EXPECT_EQ(names({}).size(), 6U);
  expectSound(file_);
}

TEST_F(QueriesTest, ReportsFaultsThatShowWithAValue) {
  EXPECT_THAT(refusal("json_extract(name, '$')"), HasSubstr("malformed JSON"));
  EXPECT_THAT(refusal("abs(-9223372036854775807 - id) > 0"), HasSubstr("overflow"));
}

TEST_F(QueriesTest, StopsExpressionsWhenTheirTimeIsUp) {
  const std::string forever =
      "(SELECT count(*) FROM file a, file b, file c, file d, file e, file f, file g, file h, file "
      "i,"
      " file j, file k, file l, file m, file n) > 0";
  failure(Kind::kTooLong, [&] { names({.where = forever, .timeLimit = std::chrono::seconds(1)}); });
}

TEST_F(QueriesTest, StopsWhenItsCallerWantsSo) {
  Store(file_, kToday, Store::Access::kWrite).putRoot({"/", 1, 1});
  int asked = 0;
  failure(Kind::kTooLong, [&] {
    names({.where = "(SELECT count(*) FROM file a, file b, file c, file d, file e, file f, file g,"
                    " file h, file i) > 0",
           .keepGoing = [&] { return ++asked < 3; }});
  });
  EXPECT_EQ(asked, 3);
}

TEST_F(QueriesTest, DescribesFoundFiles) {
  Store store(file_, kToday, Store::Access::kRead);
  std::vector<FoundFile> files;
  store.forEachFile({}, [&](const FoundFile& file) { files.push_back(file); });
  ASSERT_EQ(files.size(), 6U);
  EXPECT_EQ(files[0].path.full(), "/m/a.mp4");
  EXPECT_EQ(files[0].identity.size, 1000);
  EXPECT_EQ(files[0].identity.mtimeNs, identity(1).mtimeNs);
  EXPECT_EQ(files[0].schema, 1);
  EXPECT_EQ(files[0].document, kRows[0].document);
  EXPECT_FALSE(files[0].reason.has_value());
  EXPECT_EQ(files[5].state, State::kFailed);
  EXPECT_EQ(files[5].reason->code, "damaged");
  EXPECT_EQ(files[5].reason->text, "cut off");
  EXPECT_EQ(files[5].document, "");
  EXPECT_GT(files[5].lookedAt, 1600000000);
}

TEST_F(QueriesTest, Counts) {
  Store store(file_, kToday, Store::Access::kRead);
  const scan::Counts counts = store.counts();
  EXPECT_EQ(counts.known, 4U);
  EXPECT_EQ(counts.failed, 1U);
  EXPECT_EQ(counts.suspect, 0U);
  EXPECT_EQ(counts.quarantined, 1U);
  EXPECT_EQ(counts.files(), 6U);
  EXPECT_EQ(counts.documents, 4U);
  EXPECT_EQ(counts.folders, 4U);
  EXPECT_THAT(store.countsByKind(),
              ElementsAre(std::pair("music", 1), std::pair("photo", 1), std::pair("video", 2)));
}

TEST_F(QueriesTest, ViewsNameWhatDocumentsHold) {
  EXPECT_EQ(askOne(file_,
                   "SELECT container || ' ' || brand || ' ' || video_codec || ' ' ||"
                   " audio_codec || ' ' || created FROM videos WHERE name = 'a.mp4'"),
            "MPEG4 MPEG4_ISOM H264 AAC 2015-06-07 08:09:10");
  EXPECT_EQ(askOne(file_, "SELECT artist || ' ' || title || ' ' || track FROM songs"),
            "The Oscillators Harbour 3");
  EXPECT_EQ(askOne(file_, "SELECT width || ' ' || is_album_cover FROM photos"), "4000 1");
  EXPECT_THAT(ask(file_, "SELECT code FROM problems ORDER BY code"),
              ElementsAre("crashed", "damaged"));
  EXPECT_EQ(askOne(file_, "SELECT typeof(path) FROM files WHERE name = 'a.mp4'"), "text");
  EXPECT_EQ(askOne(file_, "SELECT typeof(path) FROM files WHERE code = 'damaged'"), "blob");
}

}  // namespace
}  // namespace kolum::test
