// The columns of a library's views: their values, their names, and the page about them.
#include "scan/columns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "describe/keys.h"
#include "scan/library.h"
#include "scan/schema.h"
#include "scan/version1.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using describe::Key;
using scan::Column;
using scan::From;
using scan::Store;
using testing::HasSubstr;

struct Expected {
  const char* column;
  const char* value;
};

constexpr const char* kViews[] = {"files", "videos", "songs", "photos", "problems"};

std::vector<std::string> columnsOf(const std::string& library, const std::string& view) {
  return ask(library, "SELECT name FROM pragma_table_info('" + view + "') ORDER BY cid");
}

class ColumnsTest : public testing::Test {
 protected:
  ColumnsTest() { ask(before_, kVersion1); }

  void put(const std::string& name, std::string_view document) {
    Store(file_, kToday, Store::Access::kWrite)
        .putDocument({"/", name}, identity(++files_), document);
  }
  // What a column of a view has for the only file in it.
  std::string value(const std::string& view, const std::string& column) {
    return askOne(file_, "SELECT " + column + " FROM " + view);
  }
  void expect(const std::string& view, std::span<const Expected> rows) {
    for (const Expected& row : rows)
      EXPECT_EQ(value(view, row.column), row.value) << view << ": " << row.column;
  }

  const TempDir folder_;
  const std::string file_ = folder_.path("library.db");
  const std::string before_ = folder_.path("before.db");
  std::uint64_t files_ = 0;
};

constexpr const char* kSong = R"({"kind":{"id":1,"name":"music"},"title":"Dawn","artist":"Ann; Bob",
  "artists":["Ann","Bob"],"composer":"Cem","conductors":["Dan","Eve"],
  "performers":[{"name":"Flo","role":"organ"},{"name":"Gus","role":"horn"}],"track":3,"trackTotal":9,
  "disc":1,"discTotal":2,"date":"2014-05","hasLyrics":true,"languages":["deu","eng"],
  "compilation":false,"replayGain":{"trackGain":-7.5,"trackPeak":0.9},
  "musicBrainz":{"recording":"r1","artists":["a1","a2"]},"isrcs":["X1"],
  "covers":[{"mimeType":"image/png","type":"front cover","bytes":70,"width":5,"height":6},{"bytes":1}],
  "chapters":[{"start":0},{"start":5}],"contentType":"audio/flac",
  "streams":[{"type":"picture"},{"type":"audio","layout":"5.1"},{"type":"audio","layout":"mono"}],
  "warnings":[{"code":"misnamed","reason":"x"},{"code":"truncated","reason":"y"}]})";

constexpr const char* kFilm = R"({"kind":{"id":2,"name":"video"},"title":"Harbour","show":"Ports",
  "season":1,"episode":2,"description":"Ships","directors":["Ann","Bob"],
  "created":"2015-06-07T08:09:10+02:00","createdZone":"explicit","creationTime":1433657350,
  "camera":{"make":"M","model":"P5"},"position":{"latitude":47.5,"longitude":-8.25,"altitude":400},
  "streams":[{"type":"video","pixelFormat":"yuv420p10le","bitDepth":10,"frameRate":"24000/1001",
   "dynamicRange":["HDR10","HDR10+"],"colours":{"primaries":"bt2020","transfer":"smpte2084"},
   "dolbyVision":{"profile":8},"rotation":90},{"type":"video","bitDepth":8},
   {"type":"audio","language":"deu"},{"type":"audio","language":"eng"},{"type":"audio"},
   {"type":"subtitle","language":"fra"}],"chapters":[{"start":0}]})";

constexpr const char* kDisc = R"({"kind":{"id":2,"name":"video"},"mainTitle":2,
  "titles":[{"number":1,"audioLanguages":["en"]},
            {"number":2,"audioLanguages":["de","fr"],"subtitleLanguages":["und"]}]})";

constexpr const char* kPhoto = R"({"kind":{"id":3,"name":"photo"},"width":400,"height":300,
  "shownWidth":300,"shownHeight":400,"rotation":90,"mirrored":true,
  "taken":"2015-06-07T08:09:10+02:00","takenOffsetFrom":"stated","camera":{"make":"M","model":"P5"},
  "lens":{"model":"50 mm"},"exposureTime":0.008,"aperture":2.8,"iso":200,"focalLength":50,
  "flash":{"fired":false},"position":{"latitude":47.5,"longitude":8.25},"caption":"Ships",
  "keywords":["sea","Größe"],"rating":4,"people":[{"name":"Ann","type":"Face"},{"name":"Bob"}],
  "address":{"city":"Bern","state":"BE"},
  "place":{"name":"Köniz","region":"Bern","country":"Switzerland","countryCode":"CH","distance":900}})";

TEST_F(ColumnsTest, SaysWhatSongsHave) {
  put("a", kSong);
  const Expected rows[] = {
      {"composer", "Cem"},
      {"conductors", "Dan; Eve"},
      {"performers", "Flo; Gus"},
      {"track_total", "9"},
      {"disc", "1"},
      {"disc_total", "2"},
      {"tagged_date", "2014-05"},
      {"date", "2014-05"},
      {"date_from", "date"},
      {"has_lyrics", "1"},
      {"languages", "deu; eng"},
      {"compilation", "0"},
      {"track_gain", "-7.5"},
      {"musicbrainz_recording", "r1"},
      {"musicbrainz_artists", "a1; a2"},
      {"isrcs", "X1"},
      {"cover_count", "2"},
      {"cover_type", "front cover"},
      {"cover_bytes", "70"},
      {"cover_width", "5"},
      {"chapter_count", "2"},
      {"layout", "5.1"},
      {"content_type", "audio/flac"},
      {"warnings", "misnamed; truncated"},
      {"tags", "Dawn\nAnn; Bob\nCem\nDan; Eve\nFlo; Gus"},
      {"podcast", "NULL"},
  };
  expect("songs", rows);
  expect("files", rows);
}

TEST_F(ColumnsTest, SaysWhatVideosHave) {
  put("a", kFilm);
  const Expected rows[] = {
      {"title", "Harbour"},
      {"show", "Ports"},
      {"season", "1"},
      {"episode", "2"},
      {"description", "Ships"},
      {"directors", "Ann; Bob"},
      {"filmed", "2015-06-07T08:09:10+02:00"},
      {"filmed_zone", "explicit"},
      {"date", "2015-06-07"},
      {"date_from", "created"},
      {"camera_model", "P5"},
      {"latitude", "47.5"},
      {"longitude", "-8.25"},
      {"altitude", "400"},
      {"pixel_format", "yuv420p10le"},
      {"bit_depth", "10"},
      {"exact_frame_rate", "24000/1001"},
      {"dynamic_range", "HDR10; HDR10+"},
      {"colour_primaries", "bt2020"},
      {"dolby_vision_profile", "8"},
      {"rotation", "90"},
      {"audio_languages", "deu; eng"},
      {"subtitle_languages", "fra"},
      {"chapter_count", "1"},
      {"title_count", "NULL"},
  };
  expect("videos", rows);
}

TEST_F(ColumnsTest, SaysWhatDiscsHave) {
  put("VIDEO_TS.IFO", kDisc);
  EXPECT_EQ(value("videos", "title_count"), "2");
  EXPECT_EQ(value("videos", "main_title"), "2");
  EXPECT_EQ(value("videos", "audio_languages"), "de; fr");
  EXPECT_EQ(value("videos", "subtitle_languages"), "und");
}

TEST_F(ColumnsTest, SaysWhatPhotosHave) {
  put("a", kPhoto);
  const Expected rows[] = {
      {"taken", "2015-06-07T08:09:10+02:00"},
      {"taken_offset_from", "stated"},
      {"date", "2015-06-07"},
      {"date_from", "taken"},
      {"camera_make", "M"},
      {"camera_model", "P5"},
      {"lens_model", "50 mm"},
      {"exposure_time", "0.008"},
      {"aperture", "2.8"},
      {"iso", "200"},
      {"focal_length", "50"},
      {"flash_fired", "0"},
      {"latitude", "47.5"},
      {"longitude", "8.25"},
      {"altitude", "NULL"},
      {"caption", "Ships"},
      {"keywords", "sea; Größe"},
      {"rating", "4"},
      {"people", "Ann; Bob"},
      {"city", "Bern"},
      {"province", "BE"},
      {"nearest_place", "Köniz"},
      {"nearest_region", "Bern"},
      {"nearest_country", "Switzerland"},
      {"nearest_country_code", "CH"},
      {"nearest_distance", "900"},
      {"state", "known"},
      {"width", "400"},
      {"shown_width", "300"},
      {"shown_height", "400"},
      {"rotation", "90"},
      {"mirrored", "1"},
  };
  expect("photos", rows);
}

// "kolum library add" takes keys with values of any type; one file must not end the queries of all.
TEST_F(ColumnsTest, AnswersForValuesOfAnyType) {
  const char* const kValues[] = {"null",         "true",         "7",        "1e300",
                                 R"("text")",    "[]",           R"(["x"])", R"([{}])",
                                 R"([[["x"]]])", R"({"x":[1]})", "{}"};
  std::set<std::string> keys = {"streams", "titles", "creationTime", "creationDate", "created"};
  for (const Column& column : scan::columns()) {
    const std::string path = column.path;
    if (!path.empty()) keys.insert(path.substr(0, path.find_first_of(".[")));
  }
  for (const char* value : kValues) {
    std::string document = R"({"kind":{"name":"video"})";
    for (const std::string& key : keys) document += ",\"" + key + "\":" + value;
    put(std::to_string(files_), document + "}");
    put(std::to_string(files_), std::string(R"({"kind":{"name":"video"},"streams":[)") + value +
                                    R"(,{"type":"video","dynamicRange":)" + value +
                                    R"(},{"type":"audio","language":)" + value +
                                    R"(}],"mainTitle":1,"titles":[{"number":1,"audioLanguages":)" +
                                    value + "},{\"number\":" + value + "}]}");
  }
  for (const char* view : kViews)
    for (const std::string& column : columnsOf(file_, view))
      ask(file_, "SELECT " + column + " FROM " + view);
}

TEST_F(ColumnsTest, FollowThoseOfVersion1) {
  put("a", kSong);
  for (const char* view : kViews) {
    const std::vector<std::string> before = columnsOf(before_, view);
    const std::vector<std::string> now = columnsOf(file_, view);
    ASSERT_GE(now.size(), before.size()) << view;
    EXPECT_TRUE(std::equal(before.begin(), before.end(), now.begin())) << view;
    EXPECT_EQ(std::set(now.begin(), now.end()).size(), now.size()) << view << ": a name twice";
  }
}

bool isKey(std::span<const Key> keys, const std::string& path) {
  const std::size_t dot = path.find('.');
  const std::string name = path.substr(0, std::min(dot, path.find('[')));
  return std::any_of(keys.begin(), keys.end(), [&](const Key& key) {
    return key.name == name &&
           (dot == std::string::npos || isKey(key.members, path.substr(dot + 1)));
  });
}

bool isOfStreams(From from) {
  return from == From::kVideo || from == From::kVideoList || from == From::kSound ||
         from == From::kSounds || from == From::kSubtitles;
}

// As docs/document.md writes it.
std::string keyOf(const Column& column) {
  return isOfStreams(column.from) ? std::string("streams[].") + column.path : column.path;
}

TEST_F(ColumnsTest, AreKeysOfDocuments) {
  const auto groups = describe::groups();
  for (const Column& column : scan::columns()) {
    if (*column.path == '\0') continue;
    EXPECT_TRUE(std::any_of(groups.begin(), groups.end(), [&](const auto& group) {
      return isKey(group.keys, keyOf(column));
    })) << column.path;
  }
}

// The cells of the lines of a table in docs/library.md that begins with this line.
std::vector<std::vector<std::string>> tableOf(const std::string& page, const std::string& head) {
  std::vector<std::vector<std::string>> rows;
  const std::size_t start = page.find("\n" + head + "\n");
  if (start == std::string::npos) return rows;
  std::istringstream lines(page.substr(start + 1));
  std::string line;
  std::getline(lines, line);
  std::getline(lines, line);
  while (std::getline(lines, line) && line.starts_with("| ")) {
    std::vector<std::string> cells;
    for (std::size_t at = 2; at < line.size();) {
      const std::size_t end = line.find(" |", at);
      cells.push_back(line.substr(at, end - at));
      at = end + 3;
    }
    rows.push_back(cells);
  }
  return rows;
}

std::string joined(const std::vector<std::string>& parts, const std::string& quote) {
  std::string all;
  for (const std::string& part : parts)
    all.append(all.empty() ? "" : ", ").append(quote).append(part).append(quote);
  return all;
}

std::string viewsOf(const Column& column) {
  if (column.views == (scan::kVideos | scan::kSongs | scan::kPhotos)) return "all";
  std::vector<std::string> views;
  if ((column.views & scan::kVideos) != 0) views.emplace_back("videos");
  if ((column.views & scan::kSongs) != 0) views.emplace_back("songs");
  if ((column.views & scan::kPhotos) != 0) views.emplace_back("photos");
  return joined(views, "");
}

TEST_F(ColumnsTest, AreThoseOfThePage) {
  const std::string page = contentOf(KOLUM_LIBRARY_PAGE);
  const auto views = tableOf(page, "| View | Rows | Columns |");
  ASSERT_EQ(views.size(), std::size(kViews));
  for (std::size_t i = 0; i < views.size(); ++i) {
    EXPECT_EQ(views[i][0], "`" + std::string(kViews[i]) + "`");
    EXPECT_EQ(views[i][2], joined(columnsOf(before_, kViews[i]), "`"));
  }
  const auto rows = tableOf(page, "| Column | Views | Key |");
  const auto columns = scan::columns();
  ASSERT_EQ(rows.size(), columns.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i][0], "`" + std::string(columns[i].name) + "`");
    EXPECT_EQ(rows[i][1], viewsOf(columns[i])) << columns[i].name;
    if (*columns[i].path == '\0') continue;
    EXPECT_THAT(rows[i][2], testing::StartsWith("`" + keyOf(columns[i]) + "`"));
  }
  EXPECT_THAT(page, HasSubstr("version of the schema, at present " +
                              std::to_string(scan::newestSchema()) + ";"));
}

}  // namespace
}  // namespace kolum::test
