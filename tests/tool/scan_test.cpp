// kolum scan: folders, summaries, progress and interruptions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "scan/store.h"
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
using testing::UnorderedElementsAre;

std::string song() {
  return media("short.mp3", "-f lavfi -i sine=duration=1 -c:a libmp3lame");
}

// So many that a scan can be interrupted; a sanitized one takes twenty times as long for each.
#ifdef KOLUM_SANITIZED
constexpr int kMany = 2000;
#else
constexpr int kMany = 10000;
#endif

class ScanTool : public testing::Test {
 protected:
  Outcome scan(std::vector<std::string> arguments, const RunOptions& options = {}) const {
    arguments.insert(arguments.begin(), {"scan", "--library", library()});
    return kolum(arguments, options);
  }
  json summary(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--json", folder_.folder()});
    const Outcome run = scan(arguments);
    const std::vector<json> lines = run.json();
    if (lines.empty()) throw std::runtime_error(run.err);
    return lines.back()["summary"];
  }
  std::string library() const { return libraries_.path("library.db"); }

  void put(const std::string& name, const std::string& file = song()) const {
    fs::create_directories(fs::path(folder_.path(name)).parent_path());
    fs::copy(file, folder_.path(name), fs::copy_options::overwrite_existing);
  }
  // Enough to scan for some seconds.
  void putMany(int count) const {
    put("0.mp3");
    for (int i = 1; i < count; ++i) {
      const std::string name = std::to_string(i) + ".mp3";
      fs::create_hard_link(folder_.path("0.mp3"), folder_.path(name));
    }
  }

  // {path: document}, as the library has them.
  std::map<std::string, json> documents() const {
    std::map<std::string, json> found;
    kolum::scan::Store store(library(), {}, kolum::scan::Store::Access::kRead);
    store.forEachFile({}, [&](const kolum::scan::FoundFile& file) {
      if (!file.document.empty()) found[file.path.full()] = json::parse(file.document);
    });
    return found;
  }
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& [path, document] : documents())
      found.push_back(path.substr(folder_.folder().size()));
    return found;
  }

  TempDir folder_;
  TempDir libraries_;
};

TEST_F(ScanTool, FindsWhatProbeFinds) {
  const std::string root = fs::canonical(samples()).string() + "/";
  const Outcome run = scan({root});
  EXPECT_EQ(run.status, 0) << run.err;
  std::map<std::string, json> probed;
  for (json line : kolum({"probe", "--json", root}).json()) {
    const std::string file = line["file"];
    // The library has these of its own.
    for (const char* key : {"file", "size", "modified"}) line.erase(key);
    probed[file] = line;
  }
  EXPECT_GT(probed.size(), 10U);
  EXPECT_EQ(documents(), probed);
}

TEST_F(ScanTool, ReadsNothingTheSecondTime) {
  put("a.mp3");
  put("x/b.mp3");
  EXPECT_EQ(summary({})["new"], 2);
  const json second = summary({});
  EXPECT_EQ(second["unchanged"], 2);
  EXPECT_EQ(second["new"], 0);
  EXPECT_EQ(second["bytesRead"], 0);
  EXPECT_EQ(second["library"], fs::canonical(library()).string());
}

TEST_F(ScanTool, PrintsASummaryForPeople) {
  put("a.mp3");
  folder_.write("bad.mp3", "no song");
  const Outcome run = scan({folder_.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, AllOf(StartsWith("Scanned\n"), HasSubstr("  New          2\n"),
                             HasSubstr("  Failed       1\n"), HasSubstr("  not-media  1\n"),
                             HasSubstr("  Slowest      ")));
#ifndef KOLUM_SANITIZED
  EXPECT_EQ(run.err, "");
#endif
}

TEST_F(ScanTool, SucceedsAgainOnceFailuresAreKnown) {
  folder_.write("bad.mp3", "no song");
  EXPECT_EQ(scan({folder_.folder()}).status, 1);
  EXPECT_EQ(scan({folder_.folder()}).status, 0);
  EXPECT_EQ(scan({"--retry", folder_.folder()}).status, 1);
}

TEST_F(ScanTool, LeavesOutHiddenAndExcludedEntries) {
  for (const char* name : {"a.mp3", ".b.mp3", "x/.c/d.mp3", "@eaDir/e.mp3", "no/f.mp3",
                           "x/no/g.mp3", "x/h.tmp.mp3", "x/i.mp3"})
    put(name);
  folder_.write("text.txt", "x");
  summary({"--exclude", "no", "--exclude", "*.tmp.mp3"});
  EXPECT_THAT(names(), UnorderedElementsAre("a.mp3", "x/i.mp3"));
}

TEST_F(ScanTool, ExcludesByPathsBelowTheRoot) {
  for (const char* name : {"no/f.mp3", "x/no/g.mp3"}) put(name);
  summary({"--exclude", "x/no"});
  EXPECT_THAT(names(), ElementsAre("no/f.mp3"));
}

TEST_F(ScanTool, DecidesByContentIfThatIsWanted) {
  put("song");
  folder_.write("text", "x");
  EXPECT_EQ(summary({})["new"], 0);
  const json all = summary({"--all"});
  EXPECT_EQ(all["described"], 1);
  EXPECT_EQ(all["failed"], 1);
}

TEST_F(ScanTool, CountsLinksThatItDoesNotFollow) {
  put("a.mp3");
  fs::create_symlink("a.mp3", folder_.path("b.mp3"));
  fs::create_symlink("a.mp3", folder_.path("c.txt"));
  const json counts = summary({});
  EXPECT_EQ(counts["linksNotFollowed"], 1);
  EXPECT_EQ(counts["new"], 1);
}

TEST_F(ScanTool, KeepsNamesOfAnyBytes) {
  put("caf\xe9.mp3");
  put("new\nline.mp3");
  EXPECT_EQ(summary({})["described"], 2);
  EXPECT_THAT(names(), UnorderedElementsAre("caf\xe9.mp3", "new\nline.mp3"));
}

TEST_F(ScanTool, ReportsPathsThatAreTooLongForTheLibrary) {
  std::string name;
  for (int i = 0; i < 6; ++i) name += std::string(200, 'x') + "/";
  put(name + "a.mp3");
  const json counts = summary({});
  EXPECT_EQ(counts["failedByReason"], json::parse(R"([{"code":"path-too-long","count":1}])"));
}

TEST_F(ScanTool, PrintsProgressForPrograms) {
  putMany(kMany / 2);
  const Outcome run = scan({"--progress", "json", "--jobs", "1", folder_.folder()});
  ASSERT_EQ(run.status, 0);
  expectFitsSchema("scan", run);
  const std::vector<json> lines = run.json();
  ASSERT_GE(lines.size(), 2U);
  for (std::size_t i = 0; i + 1 < lines.size(); ++i) EXPECT_TRUE(lines[i].contains("progress"));
  EXPECT_EQ(lines.front()["progress"]["phase"], "files");
  EXPECT_EQ(lines.back()["summary"]["described"], kMany / 2);
}

TEST_F(ScanTool, ReportsWrongUsage) {
  EXPECT_EQ(scan({}).status, 2);
  EXPECT_EQ(scan({"--progress", "xml", folder_.folder()}).status, 2);
  EXPECT_EQ(scan({"--jobs", "0", folder_.folder()}).status, 2);
}

TEST_F(ScanTool, ReportsRootsThatCannotBeScanned) {
  const Outcome run = scan({folder_.path("missing")});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "kolum: " + folder_.path("missing") + ": No such file or directory\n");
}

TEST_F(ScanTool, ReportsALibraryThatIsNone) {
  libraries_.write("library.db", "no database, but some text");
  const Outcome run = scan({folder_.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr(library()));
  EXPECT_EQ(contentOf(library()), "no database, but some text");
}

// ---- Other scans, and interruptions ----

TEST_F(ScanTool, SaysWhenAnotherScanHasTheLibrary) {
  put("a.mp3");
  const kolum::scan::Store other(library(), {1, "x"}, kolum::scan::Store::Access::kWrite);
  const Outcome run = scan({folder_.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("in use"));
}

TEST_F(ScanTool, WaitsForAnotherScanIfThatIsWanted) {
  put("a.mp3");
  auto other = std::make_unique<kolum::scan::Store>(library(), kolum::scan::Version{1, "x"},
                                                    kolum::scan::Store::Access::kWrite);
  const pid_t holder = fork();
  if (holder == 0) {
    // The lock is shared with this process, and goes when both are done with it.
    sleep(3);
    _exit(0);
  }
  other.reset();
  const Outcome run = scan({"--wait", folder_.folder()});
  waitpid(holder, nullptr, 0);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("waiting until it is no longer in use"));
}

struct Interrupted {
  int status;
  double seconds;  // from the signal to the end
  std::string out;
};

// Scans, and sends a signal that time after the scan has its first reader. Without "set -m" the
// shell's background jobs would ignore SIGINT.
Interrupted interrupted(const std::string& library, const std::string& folder,
                        const std::string& signal, double after) {
  const std::string script =
      "set -m; '" KOLUM_PROGRAM "' scan --json --jobs 1 --library '" + library + "' '" + folder +
      "' & until [ -n \"$(cat /proc/$!/task/*/children)\" ]; do sleep 0.02; done; "
      "sleep " +
      std::to_string(after) + "; begin=$(date +%s%N); kill -" + signal +
      " $!; wait $!; status=$?; end=$(date +%s%N)\n"
      "echo $status $(((end - begin) / 1000000))";
  const RunResult run = test::run({"bash", "-c", script});
  std::istringstream last(run.out.substr(run.out.rfind('\n', run.out.size() - 2) + 1));
  Interrupted result = {-1, 0, run.out};
  last >> result.status >> result.seconds;
  result.seconds /= 1000;
  return result;
}

TEST_F(ScanTool, StopsWithinASecond) {
  putMany(kMany);
  // In memory: a disk that other tests keep busy may take a second for one commit.
  const std::string memory =
      "/dev/shm/" + fs::path(libraries_.folder()).parent_path().filename().string();
  fs::create_directory(memory);
  fs::create_symlink(memory + "/library.db", library());
  for (const auto& [signal, status] : std::map<std::string, int>{{"TERM", 143}, {"INT", 130}}) {
    const Interrupted run = interrupted(library(), folder_.folder(), signal, 0.4);
    EXPECT_EQ(run.status, status);
    EXPECT_LT(run.seconds, 1);
    EXPECT_THAT(run.out, HasSubstr(R"("stopped":true)"));
  }
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(memory)) files.push_back(entry.path().filename());
  EXPECT_THAT(files, UnorderedElementsAre("library.db", "library.db.lock"));
  const json rest = summary({});
  EXPECT_GT(rest["unchanged"], 0);
  EXPECT_EQ(rest["failed"], 0);
  EXPECT_EQ(rest["new"].get<int>() + rest["unchanged"].get<int>(), kMany);
  fs::remove_all(memory);
}

TEST_F(ScanTool, GoesOnAfterAKill) {
  putMany(kMany);
  interrupted(library(), folder_.folder(), "KILL", 1.5);
  const json rest = summary({});
  EXPECT_GT(rest["unchanged"], 0);
  EXPECT_EQ(rest["failed"], 0);
  EXPECT_EQ(documents().size(), std::size_t{kMany});
}

TEST_F(ScanTool, GoesOnWithWhatChanges) {
  put("a.mp3");
  const std::string lines = libraries_.path("lines");
  // Each step waits for the summary of the one before.
  const std::string script =
      "set -m; '" KOLUM_PROGRAM "' scan --watch --json --library '" + library() + "' '" +
      folder_.folder() + "' >'" + lines + "' & " +
      "lines() { for i in $(seq 300); do [ $(wc -l <'" + lines +
      "') -ge $1 ] && return; sleep 0.1; done; }\n"
      "cd '" +
      folder_.folder() +
      "'; lines 1; mkdir new; cp a.mp3 new/b.mp3; lines 2\n"
      "mv new/b.mp3 c.mp3; lines 3; rm c.mp3; lines 4; kill -INT $!; wait $!; exit $?";
  EXPECT_EQ(test::run({"bash", "-c", script}, {.timeout = std::chrono::seconds(100)}).status, 130);
  std::istringstream in(contentOf(lines));
  std::vector<json> summaries;
  for (std::string line; std::getline(in, line);) summaries.push_back(json::parse(line)["summary"]);
  ASSERT_GE(summaries.size(), 4U);
  EXPECT_EQ(summaries[0]["new"], 1);
  EXPECT_EQ(summaries[1]["new"], 1);
  EXPECT_EQ(summaries[2]["moved"], 1);
  EXPECT_EQ(summaries[3]["gone"], 1);
  EXPECT_THAT(names(), ElementsAre("a.mp3"));
}

}  // namespace
}  // namespace kolum::test
