// The tool itself: offline, and with a server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/geocode.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "appliance/loopback_http.h"
#include "base/xml_node.h"
#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using kolum::test::LoopbackHttp;
using kolum::test::mustRun;
using kolum::test::run;
using kolum::test::runInAppliance;
using kolum::test::RunResult;
using kolum::test::sandboxUnavailable;
using kolum::test::TempDir;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kInstalled[] = "/usr/local/medialibrary/bin/osm_info";
constexpr char kSystemSettings[] = "/etc/config/osm_info.conf";
constexpr char kNoSettings[] = "/dev/null/none";

// Runs the tool with a configuration file of this content.
RunResult lookUp(const std::vector<std::string>& arguments, const std::string& settings = "") {
  const TempDir folder;
  std::vector<std::string> command{KOLUM_OSM_INFO};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run(command, {.environment = {{"OSM_INFO_CONFIG", folder.write("conf", settings)}},
                       .folder = folder.folder()});
}

std::string at(double lat, const char* name = "lat") {
  return std::string(name) + "=" + std::to_string(lat);
}

RunResult lookUpAt(double lat, double lon, int zoom = 18, const std::string& settings = "") {
  return lookUp({at(lat), at(lon, "lon"), "zoom=" + std::to_string(zoom)}, settings);
}

// The answer in one language; empty if there is none.
XMLNode answerIn(const RunResult& result, const std::string& language) {
  const XMLNode output = XMLNode::parseString(result.out, "output");
  for (const XMLNode& answer : output.getChildNodes("reversegeocode")) {
    if (answer.getAttribute("language") == language) return answer;
  }
  return {};
}

std::string partOf(const XMLNode& answer, const char* name) {
  return answer.getChildNode("addressparts").getChildNode(name).getText();
}

std::string addressOf(const XMLNode& answer) {
  return answer.getChildNode("result").getText();
}

std::string errorOf(const RunResult& result) {
  return XMLNode::parseString(result.out, "error").getText();
}

bool isBuiltWithout(const char* library, const RunResult& result) {
  return errorOf(result).find("built without " + std::string(library)) != std::string::npos;
}

#define NEEDS_PLACES()                                      \
  if (isBuiltWithout("libgeonames", lookUpAt(48.86, 2.29))) \
  GTEST_SKIP() << "this osm_info is built without libgeonames"

#define NEEDS_CURL()                                                                       \
  if (isBuiltWithout("libcurl", lookUpAt(0, 0, 18, "[server]\nurl=http://127.0.0.1:1\n"))) \
  GTEST_SKIP() << "this osm_info is built without libcurl"

struct PlaceCase {
  const char* what;
  double lat;
  double lon;
  const char* city;
  const char* countryCode;
};

TEST(OsmInfoOffline, NamesTheExpectedCity) {
  NEEDS_PLACES();
  constexpr PlaceCase kPlaces[] = {
      {"Eiffel Tower", 48.8584, 2.2945, "Paris", "fr"},
      {"Palace of Versailles", 48.8049, 2.1204, "Versailles", "fr"},
      {"Big Ben", 51.5007, -0.1246, "London", "gb"},
      {"Brandenburg Gate", 52.5163, 13.3777, "Berlin", "de"},
      {"Sanssouci", 52.4042, 13.0385, "Potsdam", "de"},
      {"Colosseum", 41.8902, 12.4922, "Rome", "it"},
      {"Red Square", 55.7539, 37.6208, "Moscow", "ru"},
      {"Hagia Sophia", 41.0086, 28.9802, "Istanbul", "tr"},
      {"Reykjavik", 64.1466, -21.9426, "Reykjavik", "is"},
      {"Statue of Liberty", 40.6892, -74.0445, "New York", "us"},
      {"Golden Gate Bridge", 37.8199, -122.4783, "San Francisco", "us"},
      {"Honolulu", 21.3069, -157.8583, "Honolulu", "us"},
      {"Christ the Redeemer", -22.9519, -43.2105, "Rio de Janeiro", "br"},
      {"Table Mountain", -33.9628, 18.4098, "Cape Town", "za"},
      {"Great Pyramid", 29.9792, 31.1342, "Giza", "eg"},
      {"Nairobi", -1.2921, 36.8219, "Nairobi", "ke"},
      {"Taj Mahal", 27.1751, 78.0421, "Agra", "in"},
      {"Tokyo Tower", 35.6586, 139.7454, "Tokyo", "jp"},
      {"Petronas Towers", 3.1579, 101.7116, "Kuala Lumpur", "my"},
      {"Sydney Opera House", -33.8568, 151.2153, "Sydney", "au"},
      {"Suva", -18.1416, 178.4419, "Suva", "fj"},
      {"across the date line from Labasa", -16.6, -179.9, "Labasa", "fj"},
  };
  for (const PlaceCase& place : kPlaces) {
    SCOPED_TRACE(place.what);
    const RunResult result = lookUpAt(place.lat, place.lon);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const XMLNode english = answerIn(result, "en");
    EXPECT_EQ(partOf(english, "city"), place.city);
    EXPECT_EQ(partOf(english, "country_code"), place.countryCode);
    EXPECT_THAT(addressOf(english), StartsWith(place.city));
  }
}

TEST(OsmInfoOffline, ReportsThatNothingIsNear) {
  NEEDS_PLACES();
  constexpr PlaceCase kPlaces[] = {
      {"Gulf of Guinea", 0, 0, nullptr, nullptr},
      {"Atlantic", 30, -40, nullptr, nullptr},
      {"Pacific", -48.8767, -123.3933, nullptr, nullptr},
      {"Indian Ocean", -30, 80, nullptr, nullptr},
      {"North Pole", 90, 0, nullptr, nullptr},
      {"South Pole", -90, 180, nullptr, nullptr},
      {"Antarctica", -77.85, 166.67, nullptr, nullptr},
      {"date line", 40, -180, nullptr, nullptr},
  };
  for (const PlaceCase& place : kPlaces) {
    SCOPED_TRACE(place.what);
    const RunResult result = lookUpAt(place.lat, place.lon);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(errorOf(result), "no city is known within 100 km");
    EXPECT_EQ(result.err, "osm_info: no city is known within 100 km\n");
  }
}

// The lines that the tool answers to these, in the mode for many positions.
RunResult askPlaces(const std::string& questions, const std::string& settings = "") {
  const TempDir folder;
  return run(
      {KOLUM_OSM_INFO, "--places"},
      {.environment = {{"OSM_INFO_CONFIG", folder.write("conf", settings)}}, .input = questions});
}

struct NearestPlaceCase {
  const char* what;
  const char* question;
  const char* answer;  // its first part
};

TEST(OsmInfoPlaces, NamesTheNearestPlaceForEachLine) {
  NEEDS_PLACES();
  constexpr NearestPlaceCase kPlaces[] = {
      {"Notre-Dame", "48.853 2.3499", R"("name":"Paris",)"},
      {"Marienplatz", "48.1374 11.5755",
       R"("name":"Munich","region":"Bavaria","country":"Germany",)"
       R"("countryCode":"DE","geonamesId":2867714,"distance":)"},
      {"Reykjavik", "64.1466 -21.9426", R"("name":"Reykjavik",)"},
      {"across the date line from Labasa", "-16.6 -179.9", R"("name":"Labasa",)"},
  };
  std::string questions;
  for (const auto& place : kPlaces) questions += std::string(place.question) + "\n";
  const RunResult result = askPlaces(questions);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  std::istringstream answers(result.out);
  for (const auto& place : kPlaces) {
    SCOPED_TRACE(place.what);
    std::string answer;
    std::getline(answers, answer);
    EXPECT_THAT(answer, StartsWith(std::string(R"({"position":")") + place.question + "\"," +
                                   place.answer));
  }
  EXPECT_EQ(answers.peek(), EOF);
}

TEST(OsmInfoPlaces, SaysThatNothingIsNear) {
  NEEDS_PLACES();
  EXPECT_EQ(askPlaces("0 0\n").out, "{\"position\":\"0 0\"}\n");
}

TEST(OsmInfoPlaces, AsksNoServer) {
  NEEDS_PLACES();
  const std::string server = "[server]\nurl=http://127.0.0.1:1\n";
  EXPECT_EQ(askPlaces("48.1374 11.5755\n", server).out, askPlaces("48.1374 11.5755\n").out);
}

TEST(OsmInfoPlaces, EndsWithItsInput) {
  EXPECT_EQ(askPlaces("").status, 0);
  EXPECT_EQ(askPlaces("").out, "");
  EXPECT_EQ(askPlaces("0 0").status, 1) << "a line without its end";
  EXPECT_EQ(askPlaces(std::string(1000, '1') + "\n").status, 1);
}

TEST(OsmInfoPlaces, TakesNoOtherArguments) {
  EXPECT_EQ(run({KOLUM_OSM_INFO, "--places", "lat=1"}).status, 2);
}

struct NameCase {
  const char* language;
  const char* city;
  const char* country;
};

TEST(OsmInfoOffline, AnswersInEveryLanguageInListOrder) {
  NEEDS_PLACES();
  constexpr NameCase kNames[] = {
      {"cs", "Mnichov", "Německo"},
      {"da", "München", "Tyskland"},
      {"de", "München", "Deutschland"},
      {"el", "Μόναχο", "Γερμανία"},
      {"en", "Munich", "Germany"},
      {"es", "Múnich", "Alemania"},
      {"fi", "München", "Saksa"},
      {"fr", "Munich", "Allemagne"},
      {"hu", "München", "Németország"},
      {"it", "Monaco di Baviera", "Germania"},
      {"ja", "ミュンヘン", "ドイツ連邦共和国"},
      {"ko", "뮌헨", "독일"},
      {"nl", "München", "Duitsland"},
      {"no", "München", "Tyskland"},
      {"pl", "Monachium", "Niemcy"},
      {"pt", "Munique", "Alemanha"},
      {"ro", "München", "Germania"},
      {"ru", "Мюнхен", "Германия"},
      {"sv", "München", "Tyskland"},
      {"th", "มิวนิก", "เยอรมัน"},
      {"tr", "Münih", "Almanya"},
      {"zh-cn", "慕尼黑", "德国"},
      {"zh-tw", "慕尼黑", "德國"},
  };
  const RunResult result = lookUpAt(48.1374, 11.5755);
  const std::vector<XMLNode> answers =
      XMLNode::parseString(result.out, "output").getChildNodes("reversegeocode");
  ASSERT_EQ(answers.size(), std::size(kNames));
  for (std::size_t number = 0; number < answers.size(); ++number) {
    const NameCase& name = kNames[number];
    SCOPED_TRACE(name.language);
    EXPECT_STREQ(answers[number].getAttribute("language"), name.language);
    EXPECT_EQ(partOf(answers[number], "city"), name.city);
    EXPECT_EQ(partOf(answers[number], "country"), name.country);
    const XMLNode place = answers[number].getChildNode("result");
    EXPECT_STREQ(place.getAttribute("osm_type"), "geonames");
    EXPECT_STREQ(place.getAttribute("osm_id"), "2867714");
  }
}

struct ZoomCase {
  int zoom;
  const char* address;
};

TEST(OsmInfoOffline, LeavesOutDetailAtCoarseZoom) {
  NEEDS_PLACES();
  constexpr ZoomCase kZooms[] = {
      {0, "Germany"},
      {4, "Germany"},
      {5, "Bavaria, Germany"},
      {9, "Bavaria, Germany"},
      {10, "Munich, Bavaria, Germany"},
      {18, "Munich, Bavaria, Germany"},
      {-5, "Germany"},
      {99, "Munich, Bavaria, Germany"},
  };
  for (const ZoomCase& row : kZooms) {
    SCOPED_TRACE(row.zoom);
    const XMLNode english = answerIn(lookUpAt(48.1374, 11.5755, row.zoom), "en");
    EXPECT_EQ(addressOf(english), row.address);
    EXPECT_EQ(partOf(english, "city").empty(), row.zoom < 10);
    EXPECT_EQ(partOf(english, "state").empty(), row.zoom < 5);
    EXPECT_EQ(partOf(english, "country_code"), "de");
  }
}

TEST(OsmInfoOffline, NamesCityStateOnce) {
  NEEDS_PLACES();
  const XMLNode english = answerIn(lookUpAt(48.2085, 16.3721), "en");
  EXPECT_EQ(addressOf(english), "Vienna, Austria");
  EXPECT_EQ(partOf(english, "city"), "Vienna");
  EXPECT_EQ(partOf(english, "state"), "Vienna");
}

TEST(OsmInfoOffline, AnswersWithinASecond) {
  NEEDS_PLACES();
  auto best = std::chrono::steady_clock::duration::max();
  for (int round = 0; round < 3; ++round) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(lookUpAt(48.8584, 2.2945).status, 0);
    best = std::min(best, std::chrono::steady_clock::now() - start);
  }
#ifndef KOLUM_SANITIZED
  EXPECT_LT(best, std::chrono::seconds(1));
#endif
}

TEST(OsmInfo, RejectsJunkArguments) {
  const std::vector<std::string> kJunk[] = {
      {},
      {"lat=1"},
      {"lat=x", "lon=1"},
      {"lat=91", "lon=1"},
      {"lat=1", "lon=1", "zoom=deep"},
      {"lat=1", "lon=1", "--verbose"},
      {"lat=nan", "lon=nan"},
      {"48.8584", "2.2945"},
      {std::string(100'000, 'x')},
      {"lat=\xFF\x01<&>", "lon=1"},
  };
  for (const std::vector<std::string>& arguments : kJunk) {
    SCOPED_TRACE(arguments.empty() ? "" : arguments.back().substr(0, 80));
    const RunResult result = lookUp(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_FALSE(XMLNode::parseString(result.out, "error").isEmpty()) << result.out;
    EXPECT_THAT(result.err, StartsWith("osm_info: "));
  }
}

TEST(OsmInfo, PrintsHelpOnRequest) {
  const RunResult result = lookUp({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, StartsWith("Usage: osm_info lat=DEGREES"));
}

TEST(OsmInfo, CreditsTheSourceOfItsPlaces) {
  EXPECT_THAT(
      lookUp({"--help"}).out,
      testing::AllOf(HasSubstr("GeoNames (https://www.geonames.org)"), HasSubstr("CC BY 4.0")));
}

TEST(OsmInfo, FailsForWrongConfiguration) {
  const RunResult wrong = lookUpAt(48.8584, 2.2945, 18, "[server]\nurl=maps.lan\n");
  EXPECT_EQ(wrong.status, 1);
  EXPECT_THAT(errorOf(wrong), HasSubstr("neither http:// nor https://"));

  const RunResult missing =
      run({KOLUM_OSM_INFO, "lat=1", "lon=1"}, {.environment = {{"OSM_INFO_CONFIG", kNoSettings}}});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(errorOf(missing), std::string("cannot read ") + kNoSettings);
}

TEST(OsmInfo, IsInstalledWhereTheLibraryCallsIt) {
  const TempDir root;
  mustRun({"cmake", "--install", KOLUM_BINARY_DIR, "--component", "appliance"},
          {.environment = {{"DESTDIR", root.path("root")}}});
  const std::string tool = root.path("root") + kInstalled;
  EXPECT_THAT(run({tool, "--help"}).out, StartsWith("Usage: osm_info"));
}

TEST(OsmInfo, WorksWithTheLibrary) {
  NEEDS_PLACES();
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    fs::create_directories(fs::path(kInstalled).parent_path());
    fs::copy_file(KOLUM_OSM_INFO, kInstalled);
    osm_param_s param{48.8584, 2.2945, 18};
    MediaLibrary::osm_place_s place{};
    ASSERT_EQ(koOsmInfo(param, place), 0);
    EXPECT_EQ(place.osmType, 4) << "not a map object";
    EXPECT_EQ(place.osmId, "2988507");
    ASSERT_EQ(place.addresses.size(), 23U);
    ASSERT_EQ(place.addressParts.size(), 23U);
    for (int language = 0; language < 23; ++language) {
      const auto& address = place.addresses[static_cast<std::size_t>(language)];
      EXPECT_EQ(address.language, language);
      EXPECT_NE(address.address, "");
    }
    EXPECT_THAT(place.addresses[4].address, StartsWith("Paris, "));
    EXPECT_THAT(place.addresses[10].address, StartsWith("パリ, "));
    EXPECT_EQ(place.addressParts[4].units[0].name, "city");
    EXPECT_EQ(place.addressParts[4].units[0].value, "Paris");
  });
}

constexpr char kTower[] = R"({"osm_type":"way","osm_id":5013364,"display_name":"Tower, Paris",)"
                          R"("address":{"tourism":"Tower","city":"Paris"}})";

std::string settingsFor(const std::string& url, const std::string& more = "") {
  return "[server]\nurl = " + url + "/\n" + more;
}

TEST(OsmInfoServer, IsAskedInEveryLanguageOverOneConnection) {
  NEEDS_CURL();
  const LoopbackHttp server([](const std::string& request) {
    const auto from = request.find("accept-language=") + 16;
    const std::string language = request.substr(from, request.find_first_of(", ", from) - from);
    return LoopbackHttp::reply("200 OK", R"({"osm_type":"way","osm_id":1,"display_name":")" +
                                             language + R"(","address":{"city":"c"}})");
  });
  const RunResult result = lookUpAt(48.8584, 2.2945, 16, settingsFor(server.url()));
  EXPECT_EQ(result.status, 0) << result.out;
  const std::vector<XMLNode> answers =
      XMLNode::parseString(result.out, "output").getChildNodes("reversegeocode");
  ASSERT_EQ(answers.size(), 23U);
  EXPECT_EQ(addressOf(answerIn(result, "de")), "de");
  EXPECT_EQ(addressOf(answerIn(result, "no")), "no");
  EXPECT_EQ(addressOf(answerIn(result, "zh-tw")), "zh-TW");
  EXPECT_EQ(server.connections(), 1);
  ASSERT_EQ(server.requests().size(), 23U);
  EXPECT_EQ(server.requests()[2],
            "GET /reverse?format=jsonv2&addressdetails=1&lat=48.85840000&lon=2.29450000&zoom=16&"
            "accept-language=de HTTP/1.1");
}

TEST(OsmInfoServer, IsAskedInTheConfiguredLanguagesOnly) {
  NEEDS_CURL();
  const LoopbackHttp server(
      [](const std::string&) { return LoopbackHttp::reply("200 OK", kTower); });
  const RunResult result =
      lookUpAt(48.8584, 2.2945, 18, settingsFor(server.url(), "[answer]\nlanguages=fr,en\n"));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(server.requests().size(), 2U);
  const XMLNode place = answerIn(result, "fr").getChildNode("result");
  EXPECT_STREQ(place.getAttribute("osm_type"), "way");
  EXPECT_STREQ(place.getAttribute("osm_id"), "5013364");
  EXPECT_EQ(partOf(answerIn(result, "fr"), "tourism"), "Tower");
}

struct ReplyCase {
  const char* what;
  std::string reply;
  const char* error;
};

TEST(OsmInfoServer, FailuresBecomeErrorsWithoutFallback) {
  NEEDS_CURL();
  const LoopbackHttp elsewhere(
      [](const std::string&) { return LoopbackHttp::reply("200 OK", kTower); });
  const ReplyCase kReplies[] = {
      {"no place", LoopbackHttp::reply("200 OK", R"({"error":"Unable to geocode"})"),
       "the server says: Unable to geocode"},
      {"status", LoopbackHttp::reply("503 Busy", "<html>"), "the server answers with status 503"},
      {"no JSON", LoopbackHttp::reply("200 OK", "<html>"),
       "the server's answer is not a JSON object"},
      {"redirect",
       "HTTP/1.1 302 Found\r\nLocation: " + elsewhere.url() +
           "/reverse\r\nContent-Length: 0\r\n\r\n",
       "the server answers with status 302"},
      {"too large", LoopbackHttp::reply("200 OK", std::string(70'000, ' ') + kTower),
       "cannot ask the server: "},
      {"no HTTP", "220 ready\r\n\r\n", "cannot ask the server: "},
  };
  for (const ReplyCase& row : kReplies) {
    SCOPED_TRACE(row.what);
    const LoopbackHttp server([&](const std::string&) { return row.reply; });
    const RunResult result = lookUpAt(48.8584, 2.2945, 18, settingsFor(server.url()));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(errorOf(result), StartsWith(row.error));
    EXPECT_EQ(server.requests().size(), 1U);
  }
  EXPECT_EQ(elsewhere.connections(), 0);
}

TEST(OsmInfoServer, FailureInOneLanguageFailsTheLookUp) {
  NEEDS_CURL();
  const LoopbackHttp server([](const std::string& request) {
    return request.find("=de ") != std::string::npos ? LoopbackHttp::reply("500 Broken", "")
                                                     : LoopbackHttp::reply("200 OK", kTower);
  });
  const RunResult result = lookUpAt(48.8584, 2.2945, 18, settingsFor(server.url()));
  EXPECT_EQ(errorOf(result), "the server answers with status 500");
}

void expectEndsWithin(std::chrono::seconds longest, const std::string& settings,
                      const std::string& error) {
  const auto start = std::chrono::steady_clock::now();
  const RunResult result = lookUpAt(48.8584, 2.2945, 18, settings);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(errorOf(result), HasSubstr(error));
  EXPECT_LT(std::chrono::steady_clock::now() - start, longest);
}

TEST(OsmInfoServer, TimesOutIfSilent) {
  NEEDS_CURL();
  const LoopbackHttp server([](const std::string&) { return std::nullopt; });
  expectEndsWithin(std::chrono::seconds(8), settingsFor(server.url(), "timeout=1\n"), "timed out");
}

// The time-out is for the whole look-up, however the server spreads its delays.
TEST(OsmInfoServer, TimesOutIfSlowInEveryLanguage) {
  NEEDS_CURL();
  const LoopbackHttp server([](const std::string&) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    return LoopbackHttp::reply("200 OK", kTower);
  });
  expectEndsWithin(std::chrono::seconds(8), settingsFor(server.url(), "timeout=1\n"), "");
}

TEST(OsmInfoServer, FailsIfNotRunning) {
  NEEDS_CURL();
  std::string url;
  {
    url = LoopbackHttp([](const std::string&) { return std::nullopt; }).url();
  }
  expectEndsWithin(std::chrono::seconds(8), settingsFor(url), "cannot ask the server: ");
}

TEST(OsmInfoServer, IsReachedWithoutProxy) {
  NEEDS_CURL();
  const LoopbackHttp server(
      [](const std::string&) { return LoopbackHttp::reply("200 OK", kTower); });
  const TempDir folder;
  const std::string file = folder.write("conf", settingsFor(server.url()));
  const RunResult result = run({KOLUM_OSM_INFO, "lat=1", "lon=1"},
                               {.environment = {{"OSM_INFO_CONFIG", file},
                                                {"http_proxy", "http://127.0.0.1:1"},
                                                {"ALL_PROXY", "http://127.0.0.1:1"}}});
  EXPECT_EQ(result.status, 0) << result.out;
}

TEST(OsmInfoServer, HostilePartsAreEscaped) {
  NEEDS_CURL();
  const LoopbackHttp server([](const std::string&) {
    return LoopbackHttp::reply(
        "200 OK", R"({"osm_type":"\"><x","osm_id":"<1>","display_name":"</result><error>x",)"
                  R"("address":{"a><b":"1","city":"P\u0000\u0007\n&","error":"e"}})");
  });
  const RunResult result =
      lookUpAt(1, 1, 18, settingsFor(server.url(), "[answer]\nlanguages=en\n"));
  EXPECT_EQ(result.status, 0);
  const XMLNode english = answerIn(result, "en");
  EXPECT_STREQ(english.getChildNode("result").getAttribute("osm_type"), "\"><x");
  EXPECT_STREQ(english.getChildNode("result").getAttribute("osm_id"), "<1>");
  EXPECT_EQ(addressOf(english), "</result><error>x");
  EXPECT_EQ(partOf(english, "city"), "P   &");
  EXPECT_TRUE(XMLNode::parseString(result.out, "error").isEmpty()) << "would read as a failure";
}

TEST(OsmInfoServer, IsConfiguredInTheFixedFile) {
  NEEDS_CURL();
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const LoopbackHttp server(
      [](const std::string&) { return LoopbackHttp::reply("200 OK", kTower); });
  runInAppliance([&] {
    kolum::test::writeRootFile(kSystemSettings, settingsFor(server.url()));
    const RunResult result = run({KOLUM_OSM_INFO, "lat=1", "lon=1"});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_EQ(addressOf(answerIn(result, "en")), "Tower, Paris");
  });
}

// A server of the openssl tool with a self-signed certificate.
class TlsServer {
 public:
  explicit TlsServer(const TempDir& folder) : certificate_(folder.path("cert.pem")) {
    const std::string key = folder.path("key.pem");
    mustRun({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "1", "-subj",
             "/CN=localhost", "-addext", "subjectAltName=DNS:localhost", "-keyout", key, "-out",
             certificate_});
    // A port that was free just now.
    const std::string free = LoopbackHttp([](const std::string&) { return std::nullopt; }).url();
    port_ = free.substr(free.rfind(':') + 1);
    process_ = fork();
    if (process_ == 0) {
      fs::current_path(folder.folder());
      execlp("openssl", "openssl", "s_server", "-quiet", "-accept", port_.c_str(), "-cert",
             certificate_.c_str(), "-key", key.c_str(), "-WWW", nullptr);
      _exit(127);
    }
  }
  ~TlsServer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  TlsServer(const TlsServer&) = delete;
  TlsServer& operator=(const TlsServer&) = delete;

  std::string url(const std::string& host) const { return "https://" + host + ":" + port_; }
  const std::string& certificate() const { return certificate_; }

 private:
  std::string certificate_;
  std::string port_;
  pid_t process_ = -1;
};

TEST(OsmInfoServer, MustHaveTrustedCertificate) {
  NEEDS_CURL();
  if (run({"openssl", "version"}).status != 0) GTEST_SKIP() << "no openssl tool";
  const TempDir folder;
  folder.write(
      "reverse?format=jsonv2&addressdetails=1&lat=1.00000000&lon=1.00000000&zoom=18&"
      "accept-language=en",
      kTower);
  const TlsServer server(folder);
  const std::string english = "[answer]\nlanguages=en\n";
  const std::string trusting = "ca_file=" + server.certificate() + "\n" + english;

  RunResult trusted;
  for (int attempt = 0; attempt < 50; ++attempt) {
    trusted = lookUpAt(1, 1, 18, settingsFor(server.url("localhost"), trusting));
    if (trusted.status == 0) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // while the server starts
  }
  EXPECT_EQ(addressOf(answerIn(trusted, "en")), "Tower, Paris") << trusted.out;

  const RunResult unknown = lookUpAt(1, 1, 18, settingsFor(server.url("localhost"), english));
  EXPECT_EQ(unknown.status, 1);
  EXPECT_THAT(errorOf(unknown), HasSubstr("certificate"));

  const RunResult otherName = lookUpAt(1, 1, 18, settingsFor(server.url("127.0.0.1"), trusting));
  EXPECT_EQ(otherName.status, 1);
  EXPECT_THAT(errorOf(otherName), StartsWith("cannot ask the server: "));
}

}  // namespace
