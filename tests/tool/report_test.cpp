// kolum library report: what is in the page, and how it gets to its place. tests/report looks at
// the page in a browser.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace fs = std::filesystem;

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

std::string contentOf(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The packed data of a page: "files" or "summary".
json packed(const std::string& page, const std::string& id) {
  const std::string begin = "id=\"packed-" + id + "\">";
  const std::size_t at = page.find(begin);
  if (at == std::string::npos) return nullptr;
  const std::size_t from = at + begin.size();
  return json::parse(mustRun({"sh", "-c", "base64 -d | gunzip"},
                             {.input = page.substr(from, page.find('<', from) - from)}));
}

// The page without what its scripts hold, and without its nonce.
std::string withoutScripts(const std::string& page) {
  const std::size_t nonce = page.find("'nonce-") + 7;
  std::string markup = page.substr(0, nonce);
  std::size_t at = nonce + 32;
  for (std::size_t script; (script = page.find("<script", at)) != std::string::npos;) {
    markup += page.substr(at, script - at);
    at = page.find("</script>", script);
  }
  return markup + page.substr(at);
}

class Report : public testing::Test {
 protected:
  Outcome library(std::vector<std::string> arguments, const std::string& redirection = "",
                  const std::string& input = "") const {
    arguments.insert(arguments.begin(), "library");
    arguments.insert(arguments.end(), {"--library", file_});
    return kolum(arguments, {.input = input, .folder = folder_.folder()}, redirection);
  }
  void add(const std::string& lines) const {
    const Outcome outcome = library({"add"}, "", lines);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
  // A line for a file that exists, with MORE in its document.
  std::string line(const std::string& name, const json& more) const {
    folder_.write(name, "content");
    json document = {{"schema", kJsonSchema}, {"file", folder_.path(name)}};
    document.update(more);
    return document.dump() + "\n";
  }
  // The page, which must be made without any complaint.
  std::string page(std::vector<std::string> paths = {}) const {
    paths.insert(paths.begin(), {"report", "page.html"});
    const Outcome outcome = library(paths);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    return contentOf(folder_.path("page.html"));
  }
  std::vector<std::string> names(const std::string& below = "") const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(folder_.path(below)))
      all.push_back(entry.path().filename());
    return all;
  }

  const TempDir folder_;
  const std::string file_ = folder_.path("data/library.db");
  const json video_ = {{"kind", {{"id", 2}, {"name", "video"}}},
                       {"containerFormat", {{"id", 12}, {"name", "FORMAT_MKV"}}},
                       {"videoCodec", {{"id", 28}, {"name", "CODEC_ID_H264"}}},
                       {"width", 3840},
                       {"height", 2160},
                       {"duration", 7200.5}};
  const json photo_ = {{"kind", {{"id", 3}, {"name", "photo"}}}, {"mimeType", "image/jpeg"}};
};

json with(json document, const json& more) {
  document.update(more);
  return document;
}

// Rows of a chart by name: files, bytes, seconds.
json groupOf(const json& summary, const std::string& id) {
  json rows = json::object();
  for (const json& group : summary.at("groups"))
    if (group.at("id") == id)
      for (const json& row : group.at("rows")) rows[row[0]] = {row[1], row[2], row[3]};
  return rows;
}

// The values of one column.
json column(const std::string& page, const std::string& name) {
  const json columns = packed(page, "summary").at("columns");
  const auto index = std::find(columns.begin(), columns.end(), name) - columns.begin();
  json values = json::array();
  for (const json& row : packed(page, "files")) values.push_back(row.at(std::size_t(index)));
  return values;
}

TEST_F(Report, CountsFilesBytesAndSeconds) {
  const json hdr = {
      {"streams",
       {{{"type", "audio"}}, {{"type", "video"}, {"dynamicRange", {"Dolby Vision", "HDR10"}}}}}};
  add(line("a.mkv", with(video_, hdr)) +
      line("b.mkv", with(video_, {{"width", 1080}, {"height", 1920}, {"channels", 6}})) +
      line("c.jpg", with(photo_, {{"taken", "2015-06-07T08:09:10"}})) + line("d.jpg", photo_));
  const json summary = packed(page(), "summary");
  EXPECT_EQ(summary["totals"], (json{{"files", 4}, {"bytes", 28.0}, {"seconds", 14401.0}}));
  EXPECT_EQ(groupOf(summary, "kind"),
            (json{{"video", {2, 14.0, 14401.0}}, {"photo", {2, 14.0, 0.0}}}));
  EXPECT_EQ(groupOf(summary, "container"),
            (json{{"MKV", {2, 14.0, 14401.0}}, {"JPEG", {2, 14.0, 0.0}}}));
  EXPECT_EQ(groupOf(summary, "videoCodec"), (json{{"H264", {2, 14.0, 14401.0}}}));
  EXPECT_EQ(groupOf(summary, "resolution"),
            (json{{"4K", {1, 7.0, 7200.5}}, {"1080p", {1, 7.0, 7200.5}}}));
  EXPECT_EQ(groupOf(summary, "dynamicRange"),
            (json{{"Dolby Vision, HDR10", {1, 7.0, 7200.5}}, {"unknown", {1, 7.0, 7200.5}}}));
  EXPECT_EQ(groupOf(summary, "channels"),
            (json{{"5.1", {1, 7.0, 7200.5}}, {"unknown", {1, 7.0, 7200.5}}}));
  EXPECT_EQ(summary["months"], json::parse(R"([["2015-06", 1]])"));
  EXPECT_EQ(summary["undated"], 1);
}

TEST_F(Report, ListsEveryFile) {
  add(line("a.mkv", with(video_, {{"title", "A film"}})) +
      line("b.mp4", {{"error", {{"code", "damaged"}, {"reason", "it is damaged"}}}}));
  const std::string made = page();
  EXPECT_EQ(column(made, "file"), (json{folder_.path("a.mkv"), folder_.path("b.mp4")}));
  EXPECT_EQ(column(made, "title"), (json{"A film", ""}));
  EXPECT_EQ(column(made, "state"), (json{"known", "failed"}));
  EXPECT_EQ(column(made, "problem"), (json{-1, 0}));
  const json problems = packed(made, "summary")["problems"];
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems[0]["reason"], "it is damaged");
  EXPECT_EQ(problems[0]["files"], 1);
}

// The library has no reasons: they come from the documents, and must be those of the files.
TEST_F(Report, NamesWhatTheFileItselfMissesForTelevisions) {
  const std::string sound = " -f lavfi -i sine=duration=1 ";
  const std::string h264 = " -c:v libx264 -preset ultrafast -pix_fmt yuv420p ";
  const auto picture = [](const std::string& size) {
    return "-f lavfi -i color=size=" + size + ":rate=25:duration=1 ";
  };
  const std::vector<std::string> files = {
      media("main.mp4", picture("1280x720") + sound +
                            "-c:v libx264 -profile:v main -pix_fmt yuv420p "
                            "-c:a ac3"),
      media("high422.mp4", picture("640x480") + "-c:v libx264 -profile:v high422 -pix_fmt yuv422p"),
      media("silent.ts", picture("640x480") + h264),
      media("large.mp4", picture("1920x1080") + sound + "-c:v mpeg4 -c:a aac"),
      media("hevc.mp4", picture("640x480") + "-c:v libx265 -x265-params log-level=none"),
      media("small.mpg", picture("352x240") + sound + "-c:v mpeg1video -c:a mp2"),
  };
  std::vector<std::string> names;
  for (std::size_t i = 0; i < files.size(); ++i) {
    names.push_back(folder_.path(std::to_string(i) + fs::path(files[i]).extension().string()));
    fs::copy(files[i], names.back());
  }
  const Outcome probed = kolum({"probe", "--json", folder_.folder()});
  add(probed.out);
  const std::string made = page();
  const json reasons = packed(made, "summary")["televisions"]["reasons"];
  const json rows = column(made, "televisionReason");
  std::size_t compared = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const json explained = kolum({"dlna", "--explain", "--json", names[i]}).json().at(0);
    ASSERT_EQ(rows[i] == -1, explained.contains("dlnaProfile")) << names[i];
    if (rows[i] == -1) continue;
    const json& reason = reasons.at(rows[i].get<std::size_t>());
    ASSERT_EQ(reason["nearest"] != "", explained.contains("next")) << names[i] << reason;
    if (!explained.contains("next")) continue;
    ++compared;
    EXPECT_EQ(reason["nearest"], explained["next"]["name"]) << names[i];
    json missing = json::array();
    for (const json& test : explained["next"]["missing"]) missing.push_back(test["wanted"]);
    EXPECT_EQ(reason["missing"], missing) << names[i];
  }
  EXPECT_GE(compared, 2U);
}

TEST_F(Report, SaysThatSomeContainersHaveNoNames) {
  add(line("a.mkv", video_) + line("b.mkv", with(video_, {{"dlnaProfile", "SOME_NAME"}})));
  const json televisions = packed(page(), "summary")["televisions"];
  EXPECT_EQ(televisions["named"], 1);
  ASSERT_EQ(televisions["reasons"].size(), 1U);
  EXPECT_THAT(televisions["reasons"][0]["remark"].get<std::string>(), HasSubstr("MKV"));
  EXPECT_EQ(televisions["reasons"][0]["example"], folder_.path("a.mkv"));
}

TEST_F(Report, FindsDuplicatesByTheirFingerprints) {
  add(line("a.mkv", with(video_, {{"fingerprint", "x"}})) + line("b.mkv", video_) +
      line("c.mkv", with(video_, {{"fingerprint", "y"}})) +
      line("d.mkv", with(video_, {{"fingerprint", "x"}})));
  const json duplicates = packed(page(), "summary")["duplicates"];
  EXPECT_EQ(duplicates["fingerprints"], 3);
  EXPECT_EQ(duplicates["count"], 1);
  EXPECT_EQ(duplicates["bytes"], 7.0);
  EXPECT_EQ(duplicates["groups"][0]["files"], (json{folder_.path("a.mkv"), folder_.path("d.mkv")}));
}

TEST_F(Report, PutsPlacesTogetherByTenthsOfADegree) {
  const auto at = [&](double latitude, double longitude) {
    return with(photo_, {{"position", {{"latitude", latitude}, {"longitude", longitude}}},
                         {"address", {{"city", "Paris"}, {"country", "France"}}}});
  };
  add(line("a.jpg", at(48.8584, 2.2945)) + line("b.jpg", at(48.9, 2.31)) +
      line("c.jpg", at(-0.01, -0.04)) + line("d.jpg", at(91, 0)) + line("e.jpg", at(0, 1e300)));
  const std::string made = page();
  EXPECT_EQ(packed(made, "summary")["places"],
            (json{{0.0, 0.0, 1, "Paris, France"}, {48.9, 2.3, 2, "Paris, France"}}));
  EXPECT_EQ(column(made, "place"), (json{"48.9 2.3", "48.9 2.3", "0.0 0.0", "", ""}));
}

TEST_F(Report, NamesPlacesByWhatIsNearestIfTheFileDoesNotSay) {
  const json position = {{"latitude", 48.8584}, {"longitude", 2.2945}};
  const json nearest = {{"name", "Levallois-Perret"}, {"country", "France"}};
  add(line("a.jpg", with(photo_, {{"position", position}, {"place", nearest}})));
  EXPECT_EQ(packed(page(), "summary")["places"],
            (json{{48.9, 2.3, 1, "Levallois-Perret, France"}}));
}

TEST_F(Report, PrefersThePlaceThatTheFileStates) {
  const json position = {{"latitude", 48.8584}, {"longitude", 2.2945}};
  const json stated = {{"city", "Paris"}, {"country", "France"}};
  const json nearest = {{"name", "Levallois-Perret"}, {"country", "France"}};
  add(line("a.jpg",
           with(photo_, {{"position", position}, {"address", stated}, {"place", nearest}})));
  EXPECT_EQ(packed(page(), "summary")["places"], (json{{48.9, 2.3, 1, "Paris, France"}}));
}

TEST_F(Report, HoldsHostileTextsAsTextsOnly) {
  add("");
  const std::string plain = page();
  const std::string script = "</script><script>alert(1)</script>";
  add(line("a.mkv", with(video_, {{"title", script + "\u202E\u2028\x1b"}, {"artist", "<!--"}})) +
      line("<script>b.mkv", video_));
  const std::string made = page();
  EXPECT_THAT(made, Not(HasSubstr("alert(1)")));
  EXPECT_THAT(made, Not(HasSubstr("b.mkv")));
  EXPECT_EQ(withoutScripts(made), withoutScripts(plain));
  EXPECT_EQ(column(made, "title"), (json{"", script + "\\u202e\\u2028\\x1b"}));
}

TEST_F(Report, ShowsNamesThatAreNotUtf8) {
  folder_.write("caf\xE9\n.mkv", "content");
  add(R"({"schema":2,"file":"x","fileBytes":")" + folder_.folder() + R"(caf%E9%0A.mkv",)" +
      video_.dump().substr(1) + "\n");
  EXPECT_EQ(column(page(), "file"), (json{folder_.path("caf\\xe9\\n.mkv")}));
}

// Whatever "library add" takes, as nobody else checks the types of keys.
TEST_F(Report, TakesValuesOfOtherTypesAsUnknown) {
  for (const char* value : {"1e300", "-1", "true", "\"text\"", "[1]", "{\"id\":1e300,\"name\":2}",
                            "[{\"type\":\"video\",\"dynamicRange\":[1]}]", "null"}) {
    json document = video_;
    for (const char* key :
         {"containerFormat", "videoCodec", "audioCodec",  "audioClass",  "videoProfile",
          "videoLevel",      "width",      "height",      "duration",    "channels",
          "streams",         "position",   "address",     "taken",       "created",
          "place",           "title",      "fingerprint", "dlnaProfile", "frameRate",
          "bitRate",         "mimeType"})
      document[key] = json::parse(value);
    const std::string name = std::to_string(std::hash<std::string>()(value)) + ".mp4";
    add(line(name, document));
  }
  EXPECT_EQ(packed(page(), "files").size(), 8U);
}

TEST_F(Report, NeedsNothingFromOutside) {
  add(line("a.mkv", video_));
  const std::string made = page();
  EXPECT_THAT(made, HasSubstr("default-src 'none'; script-src 'nonce-"));
  const std::string markup = withoutScripts(made);
  EXPECT_THAT(markup, Not(HasSubstr("url(")));
  EXPECT_THAT(markup, Not(HasSubstr("@import")));
  const std::regex reference(R"re(\s(src|href|action)="([^"]*)")re");
  std::size_t references = 0;
  for (std::sregex_iterator it(markup.begin(), markup.end(), reference), end; it != end; ++it) {
    ++references;
    EXPECT_TRUE((*it)[2].str().starts_with("#") || (*it)[2] == "data:,") << it->str();
  }
  EXPECT_GE(references, 5U);
  EXPECT_THAT(made, HasSubstr("Permission is hereby granted"));
}

// Text that becomes a script after all must not know it.
TEST_F(Report, HasItsOwnNonce) {
  add(line("a.mkv", video_));
  const std::regex nonce("'nonce-([0-9a-f]{32})'");
  std::smatch first;
  std::smatch second;
  const std::string one = page();
  const std::string other = page();
  ASSERT_TRUE(std::regex_search(one, first, nonce));
  ASSERT_TRUE(std::regex_search(other, second, nonce));
  EXPECT_NE(first[1], second[1]);
  EXPECT_THAT(other, HasSubstr("<script nonce=\"" + second[1].str() + "\">"));
}

TEST_F(Report, IsOfTheGivenFolders) {
  add(line("m/a.mkv", video_) + line("n/b.mkv", video_));
  EXPECT_EQ(column(page({"m"}), "file"), (json{folder_.path("m/a.mkv")}));
  const Outcome outcome = library({"report", "page.html", "absent"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("absent: not in the library"));
}

TEST_F(Report, OfAnEmptyLibraryIsAPage) {
  add("");
  const std::string made = page();
  EXPECT_EQ(packed(made, "files"), json::array());
  EXPECT_EQ(packed(made, "summary")["totals"]["files"], 0);
}

TEST_F(Report, NeedsALibrary) {
  const Outcome outcome = library({"report", "page.html"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err, "");
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Report, GoesToStandardOutputForADash) {
  add(line("a.mkv", video_));
  const Outcome outcome = library({"report", "-"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(column(outcome.out, "file"), (json{folder_.path("a.mkv")}));
  EXPECT_EQ(library({"report", "-", "--json"}).status, 2);
  EXPECT_EQ(library({"report", "-"}, ">/dev/full").status, 1);
  EXPECT_THAT(names(), UnorderedElementsAre("a.mkv", "data"));
}

TEST_F(Report, SaysWhatItWrote) {
  add(line("a.mkv", video_));
  const Outcome outcome = library({"report", "page.html", "--json"});
  expectFitsSchema("library", outcome);
  EXPECT_EQ(outcome.json().at(0), (json{{"file", "page.html"}, {"files", 1}}));
  EXPECT_EQ(library({"report", "page.html"}).out, "page.html\n  Files  1\n");
}

TEST_F(Report, ReplacesAPageForItsOwnerOnly) {
  add(line("a.mkv", video_));
  folder_.write("old.html", "old");
  fs::create_symlink("old.html", folder_.path("page.html"));
  fs::permissions(folder_.path("old.html"), fs::perms(0644));
  const mode_t before = umask(022);
  EXPECT_THAT(page(), HasSubstr("<!DOCTYPE html>"));
  umask(before);
  EXPECT_TRUE(fs::is_symlink(folder_.path("page.html")));
  struct stat status = {};
  ASSERT_EQ(stat(folder_.path("old.html").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(Report, IsForItsOwnerWithAnyUmask) {
  add(line("a.mkv", video_));
  for (const auto& [mask, mode] : {std::pair<mode_t, mode_t>{0, 0600}, {0377, 0400}}) {
    const mode_t before = umask(mask);
    const Outcome outcome = library({"report", "page.html"});
    umask(before);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    struct stat status = {};
    ASSERT_EQ(stat(folder_.path("page.html").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode);
  }
}

// Whether or not the shell's limit sends a signal.
TEST_F(Report, LeavesNothingBehindAtALimitOfFileSizes) {
  add(line("a.mkv", video_));
  const RunResult outcome = run(
      {"sh", "-c",
       "ulimit -f 64; exec '" KOLUM_PROGRAM "' library report page.html --library '" + file_ + "'"},
      {.folder = folder_.folder()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "kolum: page.html: File too large\n");
  EXPECT_THAT(names(), UnorderedElementsAre("a.mkv", "data"));
}

// The library itself, and what is beside it, by any name, whether it is there now or not.
TEST_F(Report, NeverReplacesAPartOfTheLibrary) {
  add(line("a.mkv", video_));
  fs::create_symlink("data/library.db", folder_.path("link.html"));
  fs::create_hard_link(file_, folder_.path("hard.html"));
  fs::create_directory_symlink("data", folder_.path("elsewhere"));
  for (const char* suffix : {"-wal", "-shm", "-journal", ".lock"}) fs::remove(file_ + suffix);
  folder_.write("data/library.db.lock", "");
  fs::create_hard_link(file_ + ".lock", folder_.path("lock.html"));
  const std::string before = contentOf(file_);
  const char* const kPlaces[] = {"link.html",
                                 "hard.html",
                                 "lock.html",
                                 "./data/../data/library.db",
                                 "elsewhere/library.db",
                                 "data/library.db-wal",
                                 "data/library.db-shm",
                                 "data/library.db-journal",
                                 "data//library.db.lock",
                                 "elsewhere/library.db-wal"};
  for (const char* place : kPlaces) {
    const Outcome outcome = library({"report", place});
    EXPECT_EQ(outcome.status, 2) << place;
    EXPECT_THAT(outcome.err, HasSubstr("OUT is")) << place;
  }
  EXPECT_EQ(contentOf(file_), before);
  EXPECT_THAT(names("data"), Not(testing::Contains("library.db-journal")));
}

TEST_F(Report, KnowsThePartsOfALibraryThatALinkLeadsTo) {
  add(line("a.mkv", video_));
  fs::create_symlink(file_, folder_.path("other.db"));
  for (const char* place : {"data/library.db-wal", "data/library.db", "other.db"}) {
    const Outcome outcome =
        kolum({"library", "report", place, "--library", "other.db"}, {.folder = folder_.folder()});
    EXPECT_EQ(outcome.status, 2) << place;
    EXPECT_THAT(outcome.err, HasSubstr("OUT is")) << place;
  }
}

TEST_F(Report, LeavesAnEarlierPageAloneWhenItFails) {
  add(line("a.mkv", video_));
  folder_.write("page.html", "old");
  const RunResult outcome =
      run({"sh", "-c",
           "trap '' XFSZ; ulimit -f 64; exec '" KOLUM_PROGRAM "' library report page.html "
           "--library '" +
               file_ + "'"},
          {.folder = folder_.folder()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "kolum: page.html: File too large\n");
  EXPECT_EQ(contentOf(folder_.path("page.html")), "old");
  EXPECT_THAT(names(), UnorderedElementsAre("a.mkv", "data", "page.html"));
}

TEST_F(Report, RefusesPlacesThatAreNoFiles) {
  add(line("a.mkv", video_));
  fs::create_directory(folder_.path("folder"));
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const std::pair<const char*, const char*> kPlaces[] = {
      {"folder", "is a folder, not a file"},
      {"/dev/null", "is a device, not a file; \"-\""},
      {"pipe", "is a pipe, not a file"},
      {"absent/page.html", "No such file or directory"},
      {"", "OUT is required"},
      {"data/library.db", "OUT is the library itself"}};
  for (const auto& [place, reason] : kPlaces) {
    const Outcome outcome = library({"report", place});
    EXPECT_GT(outcome.status, 0) << place;
    EXPECT_THAT(outcome.err, HasSubstr(reason)) << place;
  }
  EXPECT_THAT(names("folder"), IsEmpty());
  EXPECT_EQ(library({"status"}).status, 0);
}

}  // namespace
}  // namespace kolum::test
