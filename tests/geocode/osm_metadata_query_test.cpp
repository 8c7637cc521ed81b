#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/geocode.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/log_recorder.h"
#include "support/temp_dir.h"

namespace {

std::vector<unsigned> waits;

}  // namespace

// Replaces the system's function in this program: waits are recorded instead of slept through.
extern "C" unsigned int sleep(unsigned int seconds) {
  waits.push_back(seconds);
  return 0;
}

namespace {

namespace fs = std::filesystem;
using kolum::test::contentOf;
using kolum::test::ExpectNoDescriptorLeak;
using kolum::test::LogMessage;
using kolum::test::LogRecorder;
using kolum::test::runInAppliance;
using kolum::test::runInChild;
using kolum::test::sandboxUnavailable;
using kolum::test::TempDir;
using kolum::test::withinSeconds;
using kolum::test::writeRootFile;
using MediaLibrary::osm_place_s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;

constexpr char kTool[] = "/usr/local/medialibrary/bin/osm_info";

constexpr char kParis[] =
    "<output><reversegeocode language=\"fr\"><result osm_type=\"relation\" osm_id=\"7444\">Paris, "
    "France</result><addressparts><city>Paris</city></addressparts></reversegeocode></output>";

void expectParis(const osm_place_s& place) {
  EXPECT_EQ(place.osmType, 3);
  EXPECT_EQ(place.osmId, "7444");
  ASSERT_EQ(place.addresses.size(), 1U);
  EXPECT_EQ(place.addresses[0].language, 7);
  EXPECT_EQ(place.addresses[0].address, "Paris, France");
  ASSERT_EQ(place.addressParts.size(), 1U);
  ASSERT_EQ(place.addressParts[0].units.size(), 1U);
  EXPECT_EQ(place.addressParts[0].units[0].name, "city");
  EXPECT_EQ(place.addressParts[0].units[0].value, "Paris");
}

std::string printing(const std::string& text) {
  return "printf '%s' '" + text + "'";
}

int parse(const std::string& command, osm_place_s& place) {
  return parseOsmInfo(command.c_str(), place);
}

TEST(ParseOsmInfo, ReadsWhatTheCommandPrints) {
  const ExpectNoDescriptorLeak noLeak;
  osm_place_s place{};
  EXPECT_EQ(parse(printing(kParis), place), 0);
  expectParis(place);
}

TEST(ParseOsmInfo, IgnoresTheExitStatus) {
  osm_place_s place{};
  EXPECT_EQ(parse(printing(kParis) + "; exit 9", place), 0);
  expectParis(place);
  EXPECT_EQ(parse(printing("<error>no</error>") + "; exit 0", place), 2);
}

TEST(ParseOsmInfo, FailsForAnyOtherOutput) {
  const ExpectNoDescriptorLeak noLeak;
  for (const char* command : {"true", "echo not XML", "exit 1", "no-such-tool 2>/dev/null",
                              "kill -9 $$", "printf '<output>'; kill -9 $$", "'", "",
                              "head -c 100000 /dev/urandom", "printf '\\000\\000'"}) {
    SCOPED_TRACE(command);
    osm_place_s place{5, "kept", {}, {}};
    EXPECT_EQ(parseOsmInfo(command, place), 3);
    EXPECT_EQ(place.osmId, "kept");
  }
  osm_place_s place{};
  EXPECT_EQ(parseOsmInfo(nullptr, place), 3);
}

TEST(ParseOsmInfo, ReadsMegabytesOfOutput) {
  const TempDir folder;
  std::string xml = kParis;
  xml.insert(xml.find("Paris, France"), std::string(8'000'000, 'x'));
  const std::string file = folder.write("answer.xml", xml);
  osm_place_s place{};
  EXPECT_EQ(parse("cat " + file, place), 0);
  ASSERT_EQ(place.addresses.size(), 1U);
  EXPECT_EQ(place.addresses[0].address.size(), 8'000'000U + 13);
}

TEST(ParseOsmInfo, ReadsLinesLongerAndShorterThanItsBuffer) {
  for (const std::size_t length : {1U, 1022U, 1023U, 1024U, 1025U, 2047U, 5000U}) {
    SCOPED_TRACE(length);
    std::string xml = kParis;
    xml.insert(xml.find("Paris, France"), std::string(length, 'x') + "\n");
    osm_place_s place{};
    EXPECT_EQ(parse(printing(xml), place), 0);
    ASSERT_EQ(place.addresses.size(), 1U);
    EXPECT_EQ(place.addresses[0].address, std::string(length, 'x') + "\nParis, France");
  }
}

TEST(ParseOsmInfo, KillsToolThatNeverStopsPrinting) {
  const ExpectNoDescriptorLeak noLeak;
  LogRecorder log;
  osm_place_s place{5, "kept", {}, {}};
  withinSeconds(30, [&] { EXPECT_EQ(parse("yes '<a>'", place), 3); });
  EXPECT_EQ(place.osmId, "kept");
  EXPECT_THAT(log.texts(), ElementsAre("parse osm xml fail:3"));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
}

TEST(ParseOsmInfo, LosesNoOutputToSignals) {
  runInChild([] {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // without SA_RESTART
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval often{{0, 10'000}, {0, 10'000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
    const std::string xml = kParis;
    osm_place_s place{};
    EXPECT_EQ(
        parse(printing(xml.substr(0, 50)) + "; sleep 0.3; " + printing(xml.substr(50)), place), 0);
    expectParis(place);
  });
}

TEST(ParseOsmInfo, FailsWithoutFreeDescriptors) {
  runInChild([] {
    const rlimit few{64, 64};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<FILE*> files;
    while (FILE* file = std::fopen("/dev/null", "r")) files.push_back(file);
    osm_place_s place{};
    EXPECT_EQ(parse(printing(kParis), place), 3);
    for (FILE* file : files) std::fclose(file);
    EXPECT_EQ(parse(printing(kParis), place), 0);
  });
}

TEST(ParseOsmInfo, KeepsThreadsApart) {
  const ExpectNoDescriptorLeak noLeak;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([thread] {
      const std::string id = std::to_string(thread);
      std::string xml = kParis;
      xml.replace(xml.find("7444"), 4, id);
      for (int round = 0; round < 10; ++round) {
        osm_place_s place{};
        EXPECT_EQ(parse(printing(xml), place), 0);
        EXPECT_EQ(place.osmId, id);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The tool as a script, which also records its arguments, one call per line.
void putTool(const std::string& script) {
  writeRootFile(kTool, "#!/bin/sh\necho \"$*\" >> /tmp/calls\n" + script + "\n", 0755);
}

int lookUp(double lat, double lon, int zoom, osm_place_s& place) {
  osm_param_s param{lat, lon, zoom};
  return koOsmInfo(param, place);
}

TEST(KoOsmInfo, RunsTheToolAtItsFixedPath) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    putTool(printing(kParis));
    LogRecorder log;
    osm_place_s place{};
    EXPECT_EQ(lookUp(48.8584, 2.2945, 18, place), 0);
    expectParis(place);
    EXPECT_EQ(contentOf("/tmp/calls"), "lat=48.85840000 lon=2.29450000 zoom=18\n");
    ASSERT_THAT(log.texts(),
                ElementsAre("@@@@@@@@cmd:/usr/local/medialibrary/bin/osm_info lat=48.85840000 "
                            "lon=2.29450000 zoom=18"));
    const LogMessage message = log.messages()[0];
    EXPECT_EQ(message.level, 5);
    EXPECT_EQ(message.colour, std::nullopt);
    EXPECT_EQ(message.source, "osm_metadata_query");
    EXPECT_EQ(message.function, "koOsmInfo");
  });
}

struct ArgumentCase {
  double lat;
  double lon;
  int zoom;
  const char* arguments;
};

TEST(KoOsmInfo, WritesEightDecimals) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const ArgumentCase kCases[] = {
      {0, 0, 0, "lat=0.00000000 lon=0.00000000 zoom=0"},
      {-90, -180, -1, "lat=-90.00000000 lon=-180.00000000 zoom=-1"},
      {-33.856784, 151.215297, 18, "lat=-33.85678400 lon=151.21529700 zoom=18"},
      {1.123456789, -0.000000004, 3, "lat=1.12345679 lon=-0.00000000 zoom=3"},
      {std::nan(""), -std::numeric_limits<double>::infinity(), 2147483647,
       "lat=nan lon=-inf zoom=2147483647"},
  };
  for (const ArgumentCase& row : kCases) {
    SCOPED_TRACE(row.arguments);
    runInAppliance([&] {
      putTool(printing(kParis));
      osm_place_s place{};
      EXPECT_EQ(lookUp(row.lat, row.lon, row.zoom, place), 0);
      EXPECT_EQ(contentOf("/tmp/calls"), std::string(row.arguments) + "\n");
    });
  }
}

TEST(KoOsmInfo, AcceptsTheLargestNumbers) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    putTool(printing(kParis));
    constexpr double kLargest = std::numeric_limits<double>::max();
    osm_place_s place{};
    EXPECT_EQ(lookUp(-kLargest, -kLargest, -2147483647 - 1, place), 0);
    const std::string call = contentOf("/tmp/calls");
    EXPECT_EQ(call.size(), 4 + 319 + 1 + 4 + 319 + 1 + 5 + 11 + 1U) << call;
  });
}

TEST(KoOsmInfo, RetriesUntilThereIsAnAnswer) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance([] {
    putTool("[ \"$(wc -l < /tmp/calls)\" -gt 1 ] || { echo '<error>busy</error>'; exit 1; }\n" +
            printing(kParis));
    LogRecorder log;
    osm_place_s place{};
    EXPECT_EQ(lookUp(48.8584, 2.2945, 18, place), 0);
    expectParis(place);
    const std::vector<std::string> texts = log.texts();
    EXPECT_THAT(std::vector(texts.begin() + 1, texts.end()),
                ElementsAre("osm error:busy", "retry:0"));
  });
}

struct FailureCase {
  std::optional<const char*> script;  // empty: no tool
  int result;
  const char* message;
};

void expectThreeAttempts(const FailureCase& row) {
  runInAppliance([&] {
    if (row.script) putTool(*row.script);
    LogRecorder log;
    osm_place_s place{5, "kept", {}, {}};
    waits.clear();
    EXPECT_EQ(lookUp(1, 2, 3, place), row.result);
    EXPECT_THAT(waits, ElementsAre(Le(1U), Le(2U), Le(4U))) << "also after the last attempt";
    EXPECT_EQ(place.osmId, "kept");
    EXPECT_THAT(
        log.texts(),
        ElementsAre("@@@@@@@@cmd:/usr/local/medialibrary/bin/osm_info lat=1.00000000 "
                    "lon=2.00000000 zoom=3",
                    row.message, "retry:0", row.message, "retry:1", row.message, "retry:2"));
    EXPECT_EQ(log.messages()[2].function, "koOsmInfo");
    if (row.script) {
      EXPECT_EQ(contentOf("/tmp/calls"), [] {
        const std::string call = "lat=1.00000000 lon=2.00000000 zoom=3\n";
        return call + call + call;
      }());
    }
  });
}

TEST(KoOsmInfo, ReturnsTheToolsErrorAfterThreeAttempts) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  expectThreeAttempts(
      {"echo '<error>Unable to geocode</error>'", 2, "osm error:Unable to geocode"});
}

TEST(KoOsmInfo, FailsAfterThreeAttemptsWhenTheToolPrintsNoXml) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  expectThreeAttempts({"echo usage: osm_info", 3, "parse osm xml fail:2"});
}

TEST(KoOsmInfo, FailsAfterThreeAttemptsWhenTheToolIsKilled) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  expectThreeAttempts({"printf '<output>'; kill -9 $$", 3, "parse osm xml fail:2"});
}

TEST(KoOsmInfo, FailsAfterThreeAttemptsWithoutATool) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  expectThreeAttempts({std::nullopt, 3, "parse osm xml fail:3"});
}

TEST(SetWaitSecond, StaysWithinTwoToThePowerOfTheAttempt) {
  struct Row {
    int attempt;
    unsigned longest;
  };
  constexpr Row kRows[] = {{0, 1},
                           {1, 2},
                           {2, 4},
                           {5, 32},
                           {-1, 0},
                           {-1000, 0},
                           {31, 2147483647},
                           {1000, 2147483647},
                           {2147483647, 2147483647}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.attempt);
    unsigned seconds = 4'000'000'000;
    setWaitSecond(row.attempt, seconds);
    EXPECT_LE(seconds, row.longest);
  }
}

// Seeded with the time on every call, so that the result depends on the second only.
TEST(SetWaitSecond, DependsOnTheSecondOnly) {
  std::set<unsigned> drawn;
  for (int round = 0; round < 20; ++round) {
    const std::time_t before = std::time(nullptr);
    unsigned seconds = 0;
    setWaitSecond(2, seconds);
    if (std::time(nullptr) != before) continue;
    std::srand(static_cast<unsigned>(before));
    EXPECT_EQ(seconds, static_cast<unsigned>(std::rand()) % 5);
    drawn.insert(seconds);
  }
  EXPECT_LE(drawn.size(), 2U) << "calls within the same second return the same";
}

}  // namespace
