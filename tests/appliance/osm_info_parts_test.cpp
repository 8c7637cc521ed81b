#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "osm_info/answer.h"
#include "osm_info/catalogue.h"
#include "osm_info/cities.h"
#include "osm_info/languages.h"
#include "osm_info/nearest.h"
#include "osm_info/places.h"
#include "osm_info/query.h"
#include "osm_info/server_reply.h"
#include "osm_info/settings.h"
#include "support/temp_dir.h"

namespace kolum::osm_info {
namespace {

using std::chrono::seconds;
using test::TempDir;
using testing::HasSubstr;
using testing::SizeIs;

// The message of the exception that FUNCTION throws; fails the test if it throws none.
template <typename Error = LookUpError, typename Function>
std::string errorOf(Function function) {
  try {
    function();
  } catch (const Error& error) {
    return error.what();
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

struct QueryCase {
  std::vector<std::string_view> arguments;
  Query query;
};

TEST(OsmInfoQuery, ReadsTheArgumentsInAnyOrder) {
  const QueryCase kCases[] = {
      {{"lat=48.85840000", "lon=2.29450000", "zoom=18"}, {48.8584, 2.2945, 18}},
      {{"zoom=3", "lon=-180", "lat=-90"}, {-90, -180, 3}},
      {{"lat=90", "lon=180"}, {90, 180, 18}},
      {{"lat=1e1", "lon=-0.00000000", "zoom=0"}, {10, 0, 0}},
      {{"lat=0", "lon=0", "zoom=-1"}, {0, 0, 0}},
      {{"lat=0", "lon=0", "zoom=21"}, {0, 0, 18}},
      {{"lat=1", "lat=2", "lon=0"}, {2, 0, 18}},
  };
  for (const QueryCase& row : kCases) {
    SCOPED_TRACE(row.arguments.front());
    const Query query = parseQuery(row.arguments);
    EXPECT_EQ(query.lat, row.query.lat);
    EXPECT_EQ(query.lon, row.query.lon);
    EXPECT_EQ(query.zoom, row.query.zoom);
  }
}

struct BadQueryCase {
  std::vector<std::string_view> arguments;
  const char* reason;
};

TEST(OsmInfoQuery, RejectsEverythingElse) {
  const BadQueryCase kCases[] = {
      {{}, "lat is missing"},
      {{"lat=1"}, "lon is missing"},
      {{"lon=1"}, "lat is missing"},
      {{"lat=", "lon=1"}, "lat is not a number"},
      {{"lat", "lon=1"}, "lat is not a number"},
      {{"lat=x", "lon=1"}, "lat is not a number"},
      {{"lat=1,5", "lon=1"}, "lat is not a number"},
      {{"lat=1 ", "lon=1"}, "lat is not a number"},
      {{"lat=nan", "lon=1"}, "lat is beyond 90 degrees"},
      {{"lat=90.00000001", "lon=1"}, "lat is beyond 90 degrees"},
      {{"lat=1", "lon=-inf"}, "lon is beyond 180 degrees"},
      {{"lat=1", "lon=-180.1"}, "lon is beyond 180 degrees"},
      {{"lat=1e999", "lon=1"}, "lat is not a number"},
      {{"lat=1", "lon=1", "zoom=1.5"}, "zoom is not a number"},
      {{"lat=1", "lon=1", "zoom=99999999999"}, "zoom is not a number"},
      {{"lat=1", "lon=1", "depth=1"}, "argument 'depth=1' is unknown"},
      {{"lat=1", "lon=1", "LAT=1"}, "argument 'LAT=1' is unknown"},
      {{"--lat=1"}, "argument '--lat=1' is unknown"},
      {{""}, "argument '' is unknown"},
  };
  for (const BadQueryCase& row : kCases) {
    SCOPED_TRACE(row.reason);
    EXPECT_EQ(errorOf<std::invalid_argument>([&] { parseQuery(row.arguments); }), row.reason);
  }
}

TEST(OsmInfoAnswer, WritesTheDocumentedXml) {
  EXPECT_EQ(toXml({{"en", "way", "5013364", "Eiffel Tower, Paris", {{"city", "Paris"}}},
                   {"zh-cn", "node", "", "", {}}}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<output>\n"
            "\t<reversegeocode language=\"en\">\n"
            "\t\t<result osm_type=\"way\" osm_id=\"5013364\">Eiffel Tower, Paris</result>\n"
            "\t\t<addressparts>\n"
            "\t\t\t<city>Paris</city>\n"
            "\t\t</addressparts>\n"
            "\t</reversegeocode>\n"
            "\t<reversegeocode language=\"zh-cn\">\n"
            "\t\t<result osm_type=\"node\" osm_id=\"\" />\n"
            "\t\t<addressparts />\n"
            "\t</reversegeocode>\n"
            "</output>");
  EXPECT_EQ(errorToXml("a < b & \"c\"\n\x1B[1m"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<error>a &lt; b &amp; \"c\"  [1m</error>");
}

TEST(OsmInfoAnswer, LeavesOutPartsWithInvalidElementNames) {
  const std::string xml = toXml({{"en",
                                  "way\"<",
                                  "1",
                                  "<b>",
                                  {{"ISO3166-2-lvl4", "FR-IDF"},
                                   {"", "x1"},
                                   {"2nd", "x2"},
                                   {"a b", "x3"},
                                   {"a><b", "x4"},
                                   {"-a", "x5"},
                                   {"error", "x7"},
                                   {"\xC3\xA9t\xC3\xA9", "x6"},
                                   {"_a.b-1", "A & B"}}}});
  EXPECT_THAT(xml, HasSubstr("<ISO3166-2-lvl4>FR-IDF</ISO3166-2-lvl4>"));
  EXPECT_THAT(xml, HasSubstr("<_a.b-1>A &amp; B</_a.b-1>"));
  EXPECT_THAT(xml, HasSubstr("osm_type=\"way&quot;&lt;\""));
  EXPECT_THAT(xml, HasSubstr(">&lt;b&gt;</result>"));
  EXPECT_EQ(xml.find('x', xml.find("<addressparts>")), std::string::npos);
}

TEST(OsmInfoSettings, HaveDefaultsWithoutFile) {
  const TempDir folder;
  const Settings settings = readSettings(folder.path("missing"), false);
  EXPECT_EQ(settings.serverUrl, "") << "no server is contacted unless one is configured";
  EXPECT_EQ(settings.caFile, "");
  EXPECT_EQ(settings.connectTimeout, seconds(3));
  EXPECT_EQ(settings.timeout, seconds(20));
  ASSERT_EQ(settings.languages.size(), 23U);
  EXPECT_EQ(settings.languages.front()->code, "cs");
  EXPECT_EQ(settings.languages.back()->code, "zh-tw");
}

TEST(OsmInfoSettings, ReadTheFile) {
  const TempDir folder;
  const std::string file =
      folder.write("conf",
                   "# a comment\n[Server]\nURL = https://maps.lan/nominatim//\n"
                   "ca_file=/etc/ca.pem\nconnect_timeout = 1\ntimeout = 300\n"
                   "[answer]\nlanguages = en, zh-tw ,de\n");
  const Settings settings = readSettings(file, true);
  EXPECT_EQ(settings.serverUrl, "https://maps.lan/nominatim");
  EXPECT_EQ(settings.caFile, "/etc/ca.pem");
  EXPECT_EQ(settings.connectTimeout, seconds(1));
  EXPECT_EQ(settings.timeout, seconds(300));
  ASSERT_EQ(settings.languages.size(), 3U);
  EXPECT_EQ(settings.languages[0]->code, "en");
  EXPECT_EQ(settings.languages[1]->code, "zh-tw");
  EXPECT_EQ(settings.languages[2]->code, "de");
}

struct BadSettingsCase {
  const char* content;
  const char* reason;
};

TEST(OsmInfoSettings, RejectWrongValues) {
  constexpr BadSettingsCase kCases[] = {
      {"[server]\nurl=ftp://maps.lan\n",
       "the server's url begins with neither http:// nor https://"},
      {"[server]\nurl=maps.lan\n", "the server's url begins with neither http:// nor https://"},
      {"[server]\nurl=file:///etc/passwd\n",
       "the server's url begins with neither http:// nor https://"},
      {"[server]\ntimeout=0\n", "server:timeout is not between 1 and 300 seconds"},
      {"[server]\ntimeout=301\n", "server:timeout is not between 1 and 300 seconds"},
      {"[server]\nconnect_timeout=-1\n", "server:connect_timeout is not between 1 and 300 seconds"},
      {"[server]\nconnect_timeout=soon\n",
       "server:connect_timeout is not between 1 and 300 seconds"},
      {"[answer]\nlanguages=en,xx\n", "unknown language 'xx'"},
      {"[answer]\nlanguages=en,,de\n", "unknown language ''"},
      {"[answer]\nlanguages=EN\n", "unknown language 'EN'"},
  };
  for (const BadSettingsCase& row : kCases) {
    SCOPED_TRACE(row.content);
    const TempDir folder;
    const std::string file = folder.write("conf", row.content);
    EXPECT_EQ(errorOf([&] { readSettings(file, false); }), row.reason);
  }
}

TEST(OsmInfoSettings, RejectUnreadableFile) {
  const TempDir folder;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  const std::string missing = folder.path("missing");
  EXPECT_EQ(errorOf([&] { readSettings(pipe, false); }), "cannot read " + pipe);
  EXPECT_EQ(errorOf([&] { readSettings(missing, true); }), "cannot read " + missing);
}

TEST(OsmInfoLanguages, MatchTheAnswers) {
  EXPECT_THAT(languages(), SizeIs(23));
  for (const Language& language : languages()) EXPECT_EQ(findLanguage(language.code), &language);
  EXPECT_EQ(findLanguage("xx"), nullptr);
  EXPECT_EQ(findLanguage(""), nullptr);
}

const Language& english() {
  return *findLanguage("en");
}

TEST(OsmInfoServerReply, RequestsTheLanguage) {
  EXPECT_EQ(requestUrl("http://maps.lan", {48.8584, -2.2945, 10}, english()),
            "http://maps.lan/reverse?format=jsonv2&addressdetails=1&lat=48.85840000&"
            "lon=-2.29450000&zoom=10&accept-language=en");
  EXPECT_THAT(requestUrl("http://maps.lan", {0, 0, 0}, *findLanguage("no")),
              HasSubstr("&accept-language=no,nb,nn"));
}

TEST(OsmInfoServerReply, KeepsThePartsInTheServersOrder) {
  const Answer answer = readReply(
      200,
      R"({"place_id":1,"osm_type":"way","osm_id":5013364,"lat":"48.8","display_name":"Eiffel Tower",
          "address":{"tourism":"Eiffel Tower","road":"Avenue","city":"Paris","ISO3166-2-lvl4":"FR-IDF",
          "postcode":"75007","country":"France","country_code":"fr","levels":{"x":"y"},"n":7},
          "boundingbox":["1","2","3","4"]})",
      english());
  EXPECT_EQ(answer.language, "en");
  EXPECT_EQ(answer.osmType, "way");
  EXPECT_EQ(answer.osmId, "5013364");
  EXPECT_EQ(answer.address, "Eiffel Tower");
  std::string names;
  for (const AddressPart& part : answer.parts) names += part.name + "=" + part.value + ";";
  EXPECT_EQ(names,
            "tourism=Eiffel Tower;road=Avenue;city=Paris;ISO3166-2-lvl4=FR-IDF;postcode=75007;"
            "country=France;country_code=fr;");
}

TEST(OsmInfoServerReply, LeavesMissingOrMistypedValuesEmpty) {
  for (const char* body : {"{}", R"({"osm_type":1.5,"osm_id":[],"display_name":{},"address":[1]})",
                           R"({"osm_type":null,"osm_id":null,"address":"x"})"}) {
    SCOPED_TRACE(body);
    const Answer answer = readReply(200, body, english());
    EXPECT_EQ(answer.osmType, "");
    EXPECT_EQ(answer.osmId, "");
    EXPECT_EQ(answer.address, "");
    EXPECT_TRUE(answer.parts.empty());
  }
}

struct BadReplyCase {
  long status;
  std::string body;
  std::string reason;
};

TEST(OsmInfoServerReply, ReportsWhyThereIsNoAnswer) {
  std::string characters;
  for (int count = 0; count < 100; ++count) characters += "\u4E2D";
  const BadReplyCase kCases[] = {
      {200, R"({"error":"Unable to geocode"})", "the server says: Unable to geocode"},
      {400, R"({"error":{"code":400,"message":"Bad lat"}})", "the server says: Bad lat"},
      {200, R"({"error":{}})", "the server says: no reason given"},
      {200, R"({"error":null})", "the server says: no reason given"},
      {200, R"({"error":")" + std::string(1000, 'x') + "\"}",
       "the server says: " + std::string(200, 'x')},
      {200, R"({"error":")" + characters + "\"}", "the server says: " + characters.substr(0, 198)},
      {500, "<html>", "the server answers with status 500"},
      {301, "", "the server answers with status 301"},
      {404, "{}", "the server answers with status 404"},
      {200, "", "the server's answer is not a JSON object"},
      {200, "[]", "the server's answer is not a JSON object"},
      {200, R"({"osm_type":"way")", "the server's answer is not a JSON object"},
      {200, "{\"display_name\":\"\xFF\"}", "the server's answer is not a JSON object"},
      {200, std::string(60'000, '['), "the server's answer is not a JSON object"},
  };
  for (const BadReplyCase& row : kCases) {
    SCOPED_TRACE(row.body.substr(0, 60));
    EXPECT_EQ(errorOf([&] { readReply(row.status, row.body, english()); }), row.reason);
  }
}

struct NamedCity {
  const char* name;
  City city;
};

struct ChoiceCase {
  const char* what;
  double lat;
  double lon;
  const char* name;  // null: none
};

TEST(OsmInfoCities, ChoosesByRelativeDistance) {
  constexpr NamedCity kCities[] = {
      {"Metropolis", {0, 0, 2'000'000}}, {"Suburb", {0, 0.06, 60'000}},
      {"Town", {0, 0.9, 20'000}},        {"East of the line", {-16.43, 179.36, 25'000}},
      {"North", {89.9, 0, 20'000}},      {"Ghost town", {40, 40, 0}},
  };
  constexpr ChoiceCase kRows[] = {
      {"between, nearer to the suburb", 0, 0.035, "Metropolis"},
      {"in the suburb", 0, 0.055, "Suburb"},
      {"outside both reaches, nearer to the town's edge", 0, 0.6, "Town"},
      {"outside, nearer to the large city's edge", 0, 0.3, "Metropolis"},
      {"just within the longest distance", 0, -0.89, "Metropolis"},
      {"beyond it", 0, -0.91, nullptr},
      {"across the date line", -16.43, -179.99, "East of the line"},
      {"across the pole", 89.9, 180, "North"},
      {"at the pole", 90, -77, "North"},
      {"at the other pole", -90, 0, nullptr},
      {"a city without people", 40.01, 40.01, "Ghost town"},
      {"in the middle of nowhere", 20, -40, nullptr},
  };
  std::vector<City> cities;
  for (const NamedCity& one : kCities) cities.push_back(one.city);
  for (const ChoiceCase& row : kRows) {
    SCOPED_TRACE(row.what);
    const auto found = cityAt(cities, row.lat, row.lon);
    EXPECT_STREQ(found ? kCities[*found].name : nullptr, row.name);
  }
  EXPECT_EQ(cityAt({}, 0, 0), std::nullopt);
}

struct NearestCase {
  const char* what;
  double lat;
  double lon;
  const char* name;  // null: none
  double metres;
};

TEST(OsmInfoNearest, IsTheNearestWhateverItsSize) {
  constexpr NamedCity kCities[] = {
      {"Metropolis", {0, 0, 2'000'000}},
      {"Suburb", {0, 0.06, 60'000}},
      {"East of the line", {-16.43, 179.36, 25'000}},
      {"North", {89.9, 0, 20'000}},
  };
  // A degree of a great circle has 111,195 m.
  constexpr NearestCase kRows[] = {
      {"there", 0, 0, "Metropolis", 0},
      {"a step away", 0.0001, 0, "Metropolis", 11.1},
      {"nearer to the suburb", 0, 0.035, "Suburb", 2779.9},
      {"nearer to the large city", 0, 0.025, "Metropolis", 2779.9},
      {"just within the longest distance", 0, -0.89, "Metropolis", 98963.5},
      {"beyond it", 0, -0.91, nullptr, 0},
      {"across the date line", -16.43, -179.99, "East of the line", 69325.3},
      {"across the pole", 89.9, 180, "North", 22239},
      {"at the pole", 90, -77, "North", 11119.5},
      {"at the other pole", -90, 0, nullptr, 0},
  };
  std::vector<City> cities;
  for (const NamedCity& one : kCities) cities.push_back(one.city);
  const NearestCity nearest(cities);
  for (const NearestCase& row : kRows) {
    SCOPED_TRACE(row.what);
    const auto found = nearest.at(row.lat, row.lon);
    ASSERT_STREQ(found ? kCities[found->number].name : nullptr, row.name);
    if (found) {
      EXPECT_NEAR(found->metres, row.metres, 0.1);
    }
  }
  EXPECT_FALSE(NearestCity({}).at(0, 0));
}

std::optional<NearPlace> paris(const Query&) {
  return NearPlace{.names = {.id = "2988507",
                             .name = "Paris",
                             .state = "Île-de-France",
                             .stateCode = "A8",
                             .country = "France",
                             .countryCode = "FR"},
                   .metres = 4119.6};
}

TEST(OsmInfoPlaces, AnswersWithThePlaceInALine) {
  EXPECT_EQ(answerTo("48.8584 2.2945", paris),
            R"({"position":"48.8584 2.2945","name":"Paris","region":"Île-de-France",)"
            R"("country":"France","countryCode":"FR","geonamesId":2988507,"distance":4120})");
}

TEST(OsmInfoPlaces, LeavesOutWhatIsUnknown) {
  const auto nameless = [](const Query&) {
    return std::optional<NearPlace>({.names = {.id = "x1", .name = "A\nB\xFF"}, .metres = 0});
  };
  EXPECT_EQ(answerTo("0 0", nameless),
            "{\"position\":\"0 0\",\"name\":\"A\\nB\uFFFD\",\"distance\":0}");
  EXPECT_EQ(answerTo("0 0", [](const Query&) { return std::nullopt; }), R"({"position":"0 0"})");
}

TEST(OsmInfoPlaces, SaysWhyThereIsNoAnswer) {
  struct {
    const char* question;
    const char* reason;
  } const kRows[] = {
      {"", "lon is missing"},
      {"1", "lon is missing"},
      {" 1", "lat is not a number"},
      {"1 ", "lon is not a number"},
      {"1  2", "lon is not a number"},
      {"1 2 3", "lon is not a number"},
      {"91 2", "lat is beyond 90 degrees"},
      {"nan 2", "lat is beyond 90 degrees"},
      {"1 -181", "lon is beyond 180 degrees"},
      {"lat=1 lon=2", "lat is not a number"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(answerTo(row.question, paris), std::string("{\"position\":\"") + row.question +
                                                 "\",\"error\":\"" + row.reason + "\"}");
  }
  const auto broken = [](const Query&) -> std::optional<NearPlace> {
    throw LookUpError("no data");
  };
  EXPECT_EQ(answerTo("1 2", broken), R"({"position":"1 2","error":"no data"})");
}

TEST(OsmInfoPlaces, AnswersAreShort) {
  const auto longNamed = [](const Query&) {
    return std::optional<NearPlace>(
        {.names = {.name = std::string(kLongestAnswer, 'x')}, .metres = 0});
  };
  EXPECT_EQ(answerTo("1 2", longNamed), R"({"position":"1 2","error":"its names are too long"})");
}

void putWord(std::string& bytes, std::size_t word) {
  const auto value = static_cast<std::uint32_t>(word);
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// A compiled catalogue: header, table of keys, table of translations, texts.
std::string compiled(const std::map<std::string, std::string>& translations) {
  constexpr std::size_t kHeader = 28;
  const std::size_t count = translations.size();
  std::string texts;
  std::string keys;
  std::string values;
  const std::size_t begin = kHeader + 16 * count;
  const auto add = [&](std::string& table, const std::string& text) {
    putWord(table, text.size());
    putWord(table, begin + texts.size());
    texts += text + '\0';
  };
  for (const auto& [key, value] : translations) {
    add(keys, key);
    add(values, value);
  }
  std::string bytes;
  for (const std::size_t word : {std::size_t{0x950412de}, std::size_t{0}, count, kHeader,
                                 kHeader + 8 * count, std::size_t{0}, std::size_t{0}}) {
    putWord(bytes, word);
  }
  return bytes + keys + values + texts;
}

const std::map<std::string, std::string> kTranslations = {
    {"", "Content-Type: text/plain\n"},
    {"2988507", "Paris"},
    {"2867714", "M\u00FCnchen"},
    {"DE", "Deutschland"},
    {"DE.02", "Bayern"},
};

TEST(OsmInfoCatalogue, FindsTranslations) {
  const Catalogue catalogue(compiled(kTranslations));
  for (const auto& [key, value] : kTranslations) EXPECT_EQ(catalogue.translation(key), value);
  for (const char* key : {"2988508", "1", "D", "DE.", "DE.021", "ZZ"}) {
    EXPECT_EQ(catalogue.translation(key), "") << key;
  }
}

TEST(OsmInfoCatalogue, IsEmptyIfInvalid) {
  EXPECT_EQ(Catalogue().translation("x"), "");
  EXPECT_EQ(Catalogue("").translation("x"), "");
  EXPECT_EQ(Catalogue(std::string(1000, '\0')).translation("x"), "");
  EXPECT_EQ(Catalogue(compiled({})).translation("x"), "");
}

// Tries every prefix, and every byte inverted: nothing may be read beyond the end.
TEST(OsmInfoCatalogue, SurvivesDamage) {
  const std::string good = compiled(kTranslations);
  for (std::size_t size = 0; size < good.size(); ++size) {
    const Catalogue catalogue(good.substr(0, size));
    for (const auto& [key, value] : kTranslations) catalogue.translation(key);
  }
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const char flip : {'\xFF', '\x80', '\x01'}) {
      std::string bad = good;
      bad[at] = static_cast<char>(bad[at] ^ flip);
      const Catalogue catalogue(bad);
      for (const auto& [key, value] : kTranslations) catalogue.translation(key);
    }
  }
}

TEST(OsmInfoCatalogue, LoadsRegularFilesOnly) {
  const TempDir folder;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  EXPECT_EQ(loadCatalogue(folder.write("good", compiled(kTranslations))).translation("DE"),
            "Deutschland");
  EXPECT_EQ(loadCatalogue(pipe).translation("DE"), "");
  EXPECT_EQ(loadCatalogue(folder.folder()).translation("DE"), "");
  EXPECT_EQ(loadCatalogue(folder.path("missing")).translation("DE"), "");
}

}  // namespace
}  // namespace kolum::osm_info
