// kolum library: pipes, questions and hostile lines.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace fs = std::filesystem;

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string video() {
  return media("short.mkv", "-f lavfi -i color=size=64x48:rate=5:duration=1 -c:v mpeg4");
}
std::string song() {
  return media("short.mp3", "-f lavfi -i sine=duration=1 -c:a libmp3lame");
}

std::vector<std::string> linesOf(const std::string& text, char end = '\n') {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line, end);) lines.push_back(line);
  return lines;
}

class Library : public testing::Test {
 protected:
  Outcome library(std::vector<std::string> arguments, RunOptions options = {}) const {
    arguments.insert(arguments.begin(), "library");
    arguments.insert(arguments.end(), {"--library", file_});
    options.folder = folder_.folder();
    return kolum(arguments, options);
  }
  Outcome add(const std::string& lines) const { return library({"add"}, {.input = lines}); }

  void put(const std::string& name, const std::string& file = video()) const {
    fs::create_directories(fs::path(folder_.path(name)).parent_path());
    fs::copy(file, folder_.path(name), fs::copy_options::overwrite_existing);
  }
  // A line for a file that exists, with more keys.
  std::string lineFor(const std::string& name, const std::string& more = "") const {
    folder_.write(name, "content");
    return R"({"schema":2,"file":)" + json(folder_.path(name)).dump() +
           R"(,"kind":{"id":2,"name":"video"})" + more + "}\n";
  }
  // The pipe of the documentation.
  RunResult scan(const std::string& roots) const {
    const std::string tool = "'" KOLUM_PROGRAM "'";
    return run({"sh", "-c",
                tool + " library stale -0 --library '" + file_ + "' " + roots + " | " + tool +
                    " probe --json - | " + tool + " library add --library '" + file_ + "'"},
               {.folder = folder_.folder()});
  }
  std::vector<std::string> found(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "find");
    std::vector<std::string> names;
    for (const std::string& path : linesOf(library(arguments).out))
      names.push_back(path.substr(folder_.folder().size()));
    return names;
  }

  const TempDir folder_;
  const std::string file_ = folder_.path("data/library.db");
};

TEST_F(Library, IsFilledByAPipe) {
  put("m/a.mkv");
  put("m/deep/b.mp3", song());
  put("m/caf\xE9\n.mkv");
  folder_.write("m/damaged.mp4", "not a video");
  folder_.write("m/text.txt", "text");
  put("m/.hidden/c.mkv");
  const RunResult first = scan("m");
  EXPECT_EQ(first.out, "Added  3 documents\nNoted  1 failure\n") << first.err;
  EXPECT_THAT(linesOf(library({"find", "-0"}).out, '\0'),
              ElementsAre(folder_.path("m/a.mkv"), folder_.path("m/damaged.mp4"),
                          folder_.path("m/caf\xE9\n.mkv"), folder_.path("m/deep/b.mp3")));
  EXPECT_EQ(library({"stale", "m"}).out, "");
  const RunResult second = scan("m");
  EXPECT_EQ(second.out, "Added  0 documents\n");
}

TEST_F(Library, ListsWhatIsNewOrChanged) {
  put("m/a.mkv");
  put("m/b.mkv");
  EXPECT_EQ(library({"stale", "m"}).out, "m/a.mkv\nm/b.mkv\n");
  EXPECT_FALSE(fs::exists(file_));
  scan("m");
  put("m/c.mkv");
  fs::last_write_time(folder_.path("m/a.mkv"), fs::file_time_type::clock::now());
  const Outcome stale = library({"stale", "--json", "m"});
  expectFitsSchema("library", stale);
  const auto lines = stale.json();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], (json{{"file", "m/a.mkv"}, {"change", "changed"}}));
  EXPECT_EQ(lines[1], (json{{"file", "m/c.mkv"}, {"change", "new"}}));
  EXPECT_EQ(library({"stale", "m/c.mkv", "m/b.mkv"}).out, "m/c.mkv\n");
  EXPECT_EQ(library({"stale", "--exclude", "c*", "m/"}).out, "m/a.mkv\n");
  folder_.write("m/d.txt", "text");
  EXPECT_EQ(library({"stale", "--all", "m"}).out, "m/a.mkv\nm/c.mkv\nm/d.txt\n");
}

// "library add" makes it at the other end of the pipe.
TEST_F(Library, ListsEverythingWhileTheLibraryIsBeingMade) {
  put("m/a.mkv");
  folder_.write("data/library.db", "");
  EXPECT_EQ(library({"stale", "m"}).out, "m/a.mkv\n");
}

TEST_F(Library, ListsRootsThatAreLinksByTheirTargets) {
  put("m/a.mkv");
  fs::create_directory_symlink("m", folder_.path("way"));
  EXPECT_EQ(library({"stale", "way"}).out, "way/a.mkv\n");
  scan("way");
  EXPECT_EQ(library({"stale", "m", "way"}).out, "");
  EXPECT_THAT(found({}), ElementsAre("m/a.mkv"));
}

TEST_F(Library, ListsNamesWithNewlinesOnlyWithNul) {
  put("m/a\nb.mkv");
  const Outcome lines = library({"stale", "m"});
  EXPECT_EQ(lines.status, 1);
  EXPECT_EQ(lines.out, "");
  EXPECT_EQ(lines.err, "kolum: m/a\\nb.mkv: contains a newline; --null prints it\n");
  const Outcome names = library({"stale", "--null", "m"});
  EXPECT_EQ(names.status, 0);
  EXPECT_EQ(names.out, std::string("m/a\nb.mkv\0", 10));
}

TEST_F(Library, ReportsRootsThatCannotBeRead) {
  const Outcome outcome = library({"stale", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "kolum: none: No such file or directory\n");
}

TEST_F(Library, FindsByEveryCondition) {
  EXPECT_EQ(add(lineFor("a.mkv", R"(,"duration":60,"dlnaProfile":"X","width":640,)"
                                 R"("videoCodec":{"id":28,"name":"CODEC_ID_H264"},)"
                                 R"("creationDate":"2015-06-07")") +
                lineFor("deep/b.mkv", R"(,"duration":7200,"title":"Harbour")"))
                .status,
            0);
  EXPECT_THAT(found({"--kind", "video"}), ElementsAre("a.mkv", "deep/b.mkv"));
  EXPECT_THAT(found({"--kind", "music"}), IsEmpty());
  EXPECT_THAT(found({"--codec", "h264"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--duration", "1m"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--duration", "1.5h.."}), ElementsAre("deep/b.mkv"));
  EXPECT_THAT(found({"--duration", "..60s"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--size", "7..1K"}), ElementsAre("a.mkv", "deep/b.mkv"));
  EXPECT_THAT(found({"--size", "1M.."}), IsEmpty());
  EXPECT_THAT(found({"--date", "2015"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--date", "2015-06-07..2015-06"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--dlna", "X"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--dlna", "none"}), ElementsAre("deep/b.mkv"));
  EXPECT_THAT(found({"--text", "harbour"}), ElementsAre("deep/b.mkv"));
  EXPECT_THAT(found({"--text", "DEEP"}), ElementsAre("deep/b.mkv"));
  EXPECT_THAT(found({"--where", "width = 640"}), ElementsAre("a.mkv"));
  EXPECT_THAT(found({"--state", "known", "--state", "failed"}), ElementsAre("a.mkv", "deep/b.mkv"));
  EXPECT_THAT(found({folder_.path("deep")}), ElementsAre("deep/b.mkv"));
  EXPECT_THAT(found({"--kind", "video", "--dlna", "X", "--duration", "1h.."}), IsEmpty());
}

TEST_F(Library, RefusesConditionsThatMakeNoSense) {
  add(lineFor("a.mkv"));
  for (const std::vector<std::string>& bad :
       std::vector<std::vector<std::string>>{{"--kind", "film"},
                                             {"--size", ""},
                                             {"--size", ".."},
                                             {"--size", "-5"},
                                             {"--size", "9999999T"},
                                             {"--size", "1X"},
                                             {"--duration", "nan"},
                                             {"--date", "15"},
                                             {"--date", "2015-6-7"},
                                             {"--state", "good"}}) {
    SCOPED_TRACE(bad[0] + " " + bad[1]);
    EXPECT_EQ(library({"find", bad[0], bad[1]}).status, 2);
  }
  for (const char* bad : {"no_such_column", "1; DROP TABLE file", "load_extension('x')"}) {
    const Outcome outcome = library({"find", "--where", bad});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, StartsWith("kolum: not a condition: "));
  }
  EXPECT_EQ(library({"find", "none"}).err, "kolum: none: not in the library\n");
}

TEST_F(Library, PrintsDocumentsThatItTakesBack) {
  put("a.mkv");
  put("caf\xE9.mp3", song());
  folder_.write("damaged.mp4", "not a video");
  const std::string lines = kolum({"probe", "--json", "."}, {.folder = folder_.folder()}).out;
  add(lines);
  const Outcome exported = library({"export", "--json"});
  EXPECT_EQ(exported.status, 0);
  expectFitsSchema("library", exported);
  ASSERT_EQ(exported.json().size(), 3U);
  EXPECT_THAT(exported.json()[2]["fileBytes"].get<std::string>(), testing::EndsWith("caf%E9.mp3"));
  EXPECT_EQ(exported.json()[1]["error"]["code"], "not-media");

  const std::string other = folder_.path("other.db");
  const Outcome taken = kolum({"library", "add", "--library", other}, {.input = exported.out});
  EXPECT_EQ(taken.out, "Added  2 documents\nNoted  1 failure\n");
  EXPECT_EQ(kolum({"library", "export", "--json", "--library", other}).out, exported.out);
  EXPECT_EQ(library({"find", "--json"}).out, exported.out);
}

TEST_F(Library, ExportsCsv) {
  add(lineFor("a,\"b\".mkv", R"(,"title":"one\r\ntwo","duration":5,"width":-1.5)"));
  const Outcome outcome = library({"export", "--csv"});
  const std::size_t end = outcome.out.find("\r\n");
  EXPECT_THAT(outcome.out.substr(0, end), StartsWith("file,fileBytes,kind,size,modified,state,"));
  const std::string row = outcome.out.substr(end + 2);
  EXPECT_THAT(row,
              AllOf(StartsWith("\"" + folder_.path("a,\"\"b\"\".mkv") + "\",,video,7,"),
                    HasSubstr(",\"one\r\ntwo\","), HasSubstr(",-1.5,"), testing::EndsWith("\r\n")));
  // A reader of CSV sees as many values as there are titles.
  const RunResult count =
      test::run({"python3", "-c",
                 "import csv,sys; rows=list(csv.reader(open(sys.argv[1],newline='')));"
                 "print(len(rows), len(rows[0])==len(rows[1]), rows[1][0])",
                 folder_.write("x.csv", outcome.out)});
  EXPECT_EQ(count.out, "2 True " + folder_.path("a,\"b\".mkv") + "\n");
}

TEST_F(Library, FindsATableOfTheColumnsThatItExports) {
  add(lineFor("a.mkv", R"(,"keywords":["sea","ships"],"camera":{"model":"P5"},"duration":5)") +
      lineFor("b.mkv", R"(,"duration":500)"));
  const Outcome exported = library({"export", "--csv"});
  const Outcome table = library({"find", "--csv", "--duration", "..9"});
  EXPECT_EQ(table.status, 0) << table.err;
  EXPECT_THAT(exported.out, StartsWith(table.out));
  EXPECT_THAT(table.out, AllOf(HasSubstr("a.mkv,,video,7,"), HasSubstr(",P5,"),
                               HasSubstr(",sea; ships,"), Not(HasSubstr("b.mkv"))));
  EXPECT_EQ(library({"find", "--csv", "--json"}).status, 2);
}

TEST_F(Library, HasColumnsOfItsOwnInTheOrderOfThoseOfDocuments) {
  put("a.mp3", song());
  const auto titles = [](const std::string& out) { return out.substr(0, out.find("\r\n")); };
  std::string expected = titles(kolum({"probe", "--csv", folder_.path("a.mp3")}).out);
  add(lineFor("b.mkv"));
  const std::size_t end = expected.find(",mimeType,");
  ASSERT_NE(end, std::string::npos);
  expected.insert(end, ",state,errorCode,errorReason");
  EXPECT_EQ(titles(library({"export", "--csv"}).out), expected);
}

TEST_F(Library, FindsTagsOfFilesThatItReads) {
  const std::string tagged =
      media("tagged.mp3",
            "-f lavfi -i sine=duration=1 -c:a libmp3lame -metadata composer=\"Zoë Ödland\""
            " -metadata date=2003-05-06 -metadata title=Dawn");
  put("m/a.mp3", tagged);
  put("m/b.mkv");
  scan("m");
  EXPECT_THAT(found({"--text", "zoË öd"}), ElementsAre("m/a.mp3"));
  EXPECT_THAT(found({"--date", "2003-05"}), ElementsAre("m/a.mp3"));
  EXPECT_THAT(found({"--where", "composer LIKE 'Zo%' AND tagged_date = '2003-05-06'"}),
              ElementsAre("m/a.mp3"));
}

TEST_F(Library, ExportsInOneForm) {
  add(lineFor("a.mkv"));
  EXPECT_EQ(library({"export"}).status, 2);
  EXPECT_EQ(library({"export", "--csv", "--json"}).status, 2);
}

TEST_F(Library, ListsProblems) {
  folder_.write("a.mkv", "text");
  add(R"({"schema":2,"file":"a.mkv","error":{"code":"not-media","reason":"not a media file"}})"
      "\n" +
      lineFor("b.mkv"));
  const Outcome text = library({"problems"});
  EXPECT_THAT(text.out,
              AllOf(StartsWith(folder_.path("a.mkv") + "\n  State        failed\n"),
                    HasSubstr("  Reason       not a media file (not-media)\n"),
                    HasSubstr("  Tried again  when it changes, or by \"kolum scan --retry\"\n"),
                    Not(HasSubstr("b.mkv"))));
  const Outcome lines = library({"problems", "--json"});
  expectFitsSchema("library", lines);
  EXPECT_EQ(lines.json()[0]["error"]["code"], "not-media");
  EXPECT_EQ(lines.json()[0]["hasDocument"], false);
}

TEST_F(Library, KeepsEarlierDocumentOfAFileThatFails) {
  add(lineFor("a.mkv", R"(,"duration":5)"));
  add(R"({"schema":2,"file":"a.mkv","error":{"code":"damaged","reason":"cut off"}})"
      "\n");
  const auto lines = library({"find", "--json"}).json();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0]["duration"], 5);
  EXPECT_EQ(lines[0]["state"], "failed");
  EXPECT_EQ(lines[0]["error"]["code"], "damaged");
}

TEST_F(Library, CountsWhatItKnows) {
  put("m/a.mkv");
  put("m/b.mp3", song());
  scan("m");
  const Outcome text = library({"status"});
  EXPECT_THAT(text.out, AllOf(StartsWith(file_ + "\n"), HasSubstr("  Files          2\n"),
                              HasSubstr("  Kinds          1 music, 1 video\n")));
  const Outcome lines = library({"status", "--json"});
  expectFitsSchema("library", lines);
  EXPECT_EQ(lines.json()[0]["kinds"], (json{{"music", 1}, {"video", 1}}));
}

TEST_F(Library, ForgetsFilesAndFolders) {
  add(lineFor("a.mkv") + lineFor("m/b.mkv") + lineFor("m/deep/c.mkv") + lineFor("mm/d.mkv"));
  const Outcome outcome = library({"forget", "--json", "a.mkv", "m", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "kolum: none: not in the library\n");
  expectFitsSchema("library", outcome);
  EXPECT_EQ(outcome.json()[0]["forgotten"], 1);
  EXPECT_EQ(outcome.json()[1]["forgotten"], 2);
  EXPECT_THAT(found({}), ElementsAre("mm/d.mkv"));
  EXPECT_TRUE(fs::exists(folder_.path("a.mkv")));
}

TEST_F(Library, MakesNoLibraryToForgetIn) {
  const Outcome outcome = library({"forget", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(Library, RefusesHostileLinesByTheirNumbers) {
  const std::string good = lineFor("good.mkv");
  const std::string path = json(folder_.path("good.mkv")).dump();
  const std::string begin = R"({"schema":2,"kind":{"name":"video"},"file":)";
  struct Row {
    std::string line;
    const char* why;
  };
  const std::vector<Row> rows = {
      {"nonsense", "not JSON at byte 2"},
      {"{\"schema\":1", "not JSON at byte"},
      {std::string("{}\0{}", 5), "contains a NUL"},
      {"\xFF\xFE", "not JSON at byte 1"},
      {"{\"file\":\"\xFF\"}", "not JSON at byte"},
      {"[]", "not a JSON object"},
      {"7", "not a JSON object"},
      {"{}", "no \"schema\""},
      {R"({"schema":3,"file":"a"})", "schema 3, but this kolum knows 2"},
      {R"({"schema":"1"})", "\"schema\" is not a whole number"},
      {R"({"schema":2.0})", "\"schema\" is not a whole number"},
      {R"({"schema":2})", "no text \"file\""},
      {begin + "7}", "no text \"file\""},
      {begin + R"(""})", "\"file\" is empty"},
      {begin + R"("a\u0000b"})", "\"file\" contains a NUL"},
      {begin + R"("a","fileBytes":"%00"})", "\"file\" contains a NUL"},
      {begin + R"("a","fileBytes":"%4"})", "\"fileBytes\" is not percent-encoded"},
      {begin + R"("a","fileBytes":"%-1"})", "\"fileBytes\" is not percent-encoded"},
      {begin + R"("/none"})", "/none: No such file or directory"},
      {begin + R"("/"})", "/: not a file"},
      {begin + R"("/dev/null"})", "/dev/null: not a file"},
      {begin + json(std::string(5000, 'x')).dump() + "}", "File name too long"},
      {begin + path + R"(,"a":1,"a":2})", "the key \"a\" is there twice"},
      {begin + path + R"(,"a":1e999})", "a number that is too large"},
      {begin + path + R"(,"size":"7"})", "\"size\" is not a whole number"},
      {begin + path + R"(,"size":18446744073709551615})", "\"size\" is not a whole number"},
      {begin + path + R"(,"size":8})", "has changed since it was described"},
      {begin + path + R"(,"modified":"1970-01-01T00:00:01Z"})",
       "has changed since it was described"},
      {begin + path + R"(,"modified":1})", "no text \"modified\""},
      {begin + path + R"(,"modified":"2015-02-30T00:00:00Z"})", "is not a moment in UTC"},
      {begin + path + R"(,"error":7})", "\"error\" is not an object"},
      {begin + path + R"(,"error":{"code":"","reason":""}})", "\"code\" is empty"},
      {R"({"schema":2,"file":)" + path + "}", "neither \"kind\" nor \"error\""},
      {R"({"schema":2,"kind":{"name":7},"file":)" + path + "}", "no text \"name\""},
      {std::string(100000, '['), "nested too deeply"},
      {begin + path + ",\"a\":" + std::string(50, '[') + std::string(50, ']') + "}",
       "nested too deeply"},
      {begin + path + ",\"a\":\"" + std::string(1 << 20, 'x') + "\"}", "larger than 1048576 bytes"},
      {std::string(10 << 20, 'x'), "longer than 1114112 bytes"},
  };
  std::string lines;
  for (const Row& row : rows) lines += row.line + "\n";
  const Outcome outcome = add(lines + "\n" + good.substr(0, good.size() - 1));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "Added    1 document\nRefused  " + std::to_string(rows.size()) + " lines\n");
  const std::vector<std::string> messages = linesOf(outcome.err);
  ASSERT_EQ(messages.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_THAT(messages[i],
                AllOf(StartsWith("kolum: standard input: line " + std::to_string(i + 1) + ": "),
                      HasSubstr(rows[i].why)));
  }
  EXPECT_THAT(found({}), ElementsAre("good.mkv"));
}

TEST_F(Library, TakesLineOfHundredMegabytesInLittleMemory) {
#ifdef KOLUM_SANITIZED
  const std::string limit;  // sanitizers reserve terabytes of addresses
#else
  const std::string limit = "ulimit -v 400000; ";
#endif
  const std::string good = lineFor("good.mkv");
  const RunResult result =
      run({"sh", "-c",
           limit + "{ head -c 100000000 /dev/zero | tr '\\0' '['; echo; cat; } | '" +
               std::string(KOLUM_PROGRAM) + "' library add --library '" + file_ + "'"},
          {.input = good});
  EXPECT_EQ(result.out, "Added    1 document\nRefused  1 line\n") << result.err;
}

TEST_F(Library, LeavesKeysOfTheLineOutOfDocuments) {
  const std::string line = lineFor("a.mkv", R"(,"state":"quarantined","x":1)");
  EXPECT_EQ(add(line).status, 0);
  const auto lines = library({"find", "--json"}).json();
  EXPECT_EQ(lines[0]["state"], "known");
  EXPECT_EQ(lines[0]["x"], 1);
}

TEST_F(Library, SaysThatItIsInUse) {
  const std::string line = lineFor("a.mkv");
  add(line);
  const int lock = open((file_ + ".lock").c_str(), O_RDWR | O_CLOEXEC);
  struct flock whole = {};
  whole.l_type = F_WRLCK;
  ASSERT_EQ(fcntl(lock, F_OFD_SETLK, &whole), 0);
  const Outcome second = add(line);
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.err, StartsWith("kolum: " + file_ + ": in use by process "));
  EXPECT_EQ(library({"find"}).status, 0);
  std::thread releasing([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    close(lock);
  });
  EXPECT_EQ(library({"add", "--wait"}, {.input = line}).status, 0);
  releasing.join();
}

// Commits what it has within about a second, even if its input falls silent.
// Others may have put it there, in a folder where they can write.
TEST_F(Library, EmptiesNoFileThatTheNameOfItsLockLeadsTo) {
  const std::string precious = folder_.write("precious", "of another program");
  const std::string line = lineFor("a.mkv");
  ASSERT_EQ(add(line).status, 0);
  fs::remove(file_ + ".lock");
  using Link = void (*)(const fs::path&, const fs::path&);
  for (const Link link : {Link(fs::create_hard_link), Link(fs::create_symlink)}) {
    link(precious, file_ + ".lock");
    const Outcome refused = add(line);
    EXPECT_EQ(refused.status, 1) << refused.err;
    EXPECT_THAT(refused.err, HasSubstr(".lock: "));
    EXPECT_EQ(fs::file_size(precious), 18U);
    fs::remove(file_ + ".lock");
  }
  EXPECT_EQ(add(line).status, 0);
}

TEST_F(Library, CommitsWhileItsInputIsSilent) {
  const std::string line = folder_.write("line", lineFor("a.mkv"));
  const std::string script = "{ cat '" + line +
                             "'; sleep 4; } | '" KOLUM_PROGRAM "' library add --library '" + file_ +
                             "'";
  std::thread adding([&] { run({"sh", "-c", script}); });
  std::this_thread::sleep_for(std::chrono::milliseconds(2500));
  EXPECT_THAT(found({}), ElementsAre("a.mkv"));
  adding.join();
}

TEST_F(Library, KeepsWhatItHasWhenItIsInterrupted) {
  const std::string line = folder_.write("line", lineFor("a.mkv"));
  const std::string script = "{ cat '" + line +
                             "'; sleep 3; } | { timeout --signal=INT 0.4 '" KOLUM_PROGRAM
                             "' library add --library '" +
                             file_ + "'; }";
  run({"sh", "-c", script});
  EXPECT_THAT(found({}), ElementsAre("a.mkv"));
}

TEST_F(Library, IsBelowTheDataOfItsUser) {
  folder_.write("a.mkv", "content");
  const std::string line = lineFor("a.mkv");
  const auto addWith = [&](Environment environment) {
    return kolum({"library", "add"}, {.environment = std::move(environment), .input = line});
  };
  addWith({{"XDG_DATA_HOME", folder_.path("xdg")}, {"HOME", folder_.path("home")}});
  EXPECT_TRUE(fs::exists(folder_.path("xdg/kolum/library.db")));
  addWith({{"XDG_DATA_HOME", "relative"}, {"HOME", folder_.path("home")}});
  EXPECT_TRUE(fs::exists(folder_.path("home/.local/share/kolum/library.db")));
  EXPECT_EQ(addWith({{"XDG_DATA_HOME", ""}, {"HOME", ""}}).err,
            "kolum: HOME is not set; --library FILE names the library; see kolum library add "
            "--help\n");
}

TEST_F(Library, ReportsFilesThatAreNoLibrary) {
  folder_.write("data/library.db", std::string(1000, 'x'));
  for (const char* command : {"find", "status", "problems"}) {
    const Outcome outcome = library({command});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "kolum: " + file_ + ": not a library of kolum\n");
  }
  fs::remove(file_);
  EXPECT_EQ(library({"find"}).err,
            "kolum: " + file_ + ": there is no library yet; \"kolum scan\" makes it\n");
}

}  // namespace
}  // namespace kolum::test
