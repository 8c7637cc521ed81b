#include "geocode/place_finder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/place_tool.h"
#include "support/temp_dir.h"

namespace kolum::geocode {

namespace {

using namespace std::chrono_literals;
using test::contentOf;
using test::countingPlaceTool;
using test::placeTool;
using test::TempDir;

TEST(PlaceFinder, FindsTheRealPlaces) {
  PlaceFinder finder(placeProgram());
  const auto place = finder.at(48.1374, 11.5755);
  if (finder.trouble().find("built without") != std::string::npos)
    GTEST_SKIP() << "this osm_info is built without libgeonames";
  ASSERT_TRUE(place) << finder.trouble();
  EXPECT_EQ(place->name, "Munich");
  EXPECT_EQ(place->region, "Bavaria");
  EXPECT_EQ(place->country, "Germany");
  EXPECT_EQ(place->countryCode, "DE");
  EXPECT_EQ(place->geonamesId, 2867714);
  EXPECT_LT(place->distance, 1000);
  EXPECT_FALSE(finder.at(0, 0));
  EXPECT_EQ(finder.trouble(), "");
}

TEST(PlaceFinder, AsksOncePerSpotAndStartsOnce) {
  const TempDir folder;
  const std::string notes = folder.path("notes");
  PlaceFinder finder(countingPlaceTool(folder, notes));
  EXPECT_FALSE(finder.hasFound());
  EXPECT_EQ(finder.at(48.85841, 2.29451)->distance, 1);
  EXPECT_EQ(finder.at(48.85838, 2.29449)->distance, 1) << "within ten metres";
  EXPECT_EQ(finder.at(-0.00001, -179.99999)->distance, 2);
  EXPECT_EQ(contentOf(notes), "start\n48.8584 2.2945\n0.0000 -180.0000\n");
  EXPECT_TRUE(finder.hasFound());
}

TEST(PlaceFinder, StartsAnewWhenAllIsForgotten) {
  const TempDir folder;
  const std::string notes = folder.path("notes");
  PlaceFinder finder(countingPlaceTool(folder, notes));
  finder.at(1, 2);
  finder.forget();
  EXPECT_FALSE(finder.hasFound());
  EXPECT_EQ(finder.at(1, 2)->distance, 1);
  EXPECT_EQ(contentOf(notes), "start\n1.0000 2.0000\nstart\n1.0000 2.0000\n");
}

TEST(PlaceFinder, AsksNothingThatIsNoPosition) {
  const TempDir folder;
  const std::string notes = folder.path("notes");
  PlaceFinder finder(countingPlaceTool(folder, notes));
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_FALSE(finder.at(90.1, 0));
  EXPECT_FALSE(finder.at(0, -180.1));
  EXPECT_FALSE(finder.at(kNan, 0));
  EXPECT_FALSE(finder.at(0, kNan));
  EXPECT_FALSE(finder.at(-kInfinity, 1e300));
  EXPECT_EQ(contentOf(notes), "");
  EXPECT_EQ(finder.trouble(), "");
}

TEST(PlaceFinder, GivesUpAProgramThatDoesNotAnswerAsItShould) {
  for (const auto& row : test::kBadPlaceTools) {
    SCOPED_TRACE(row.what);
    const TempDir folder;
    const std::string program = placeTool(folder, row.script);
    PlaceFinder finder(program, 1s);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(finder.at(5, 5));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
    const std::string trouble = finder.trouble();
    EXPECT_TRUE(trouble.starts_with(program + ": ")) << trouble;
    if (*row.reason != '\0' && std::string(row.what).find("floods") == std::string::npos) {
      EXPECT_EQ(trouble, program + ": " + row.reason);
    }
    EXPECT_FALSE(finder.at(6, 6)) << "asked again";
    EXPECT_FALSE(finder.hasFound());
  }
}

TEST(PlaceFinder, SaysThatThereIsNoProgram) {
  PlaceFinder finder("/nowhere/osm_info");
  EXPECT_FALSE(finder.at(1, 2));
  EXPECT_EQ(finder.trouble(), "/nowhere/osm_info: no such program");
}

TEST(PlaceFinder, SaysWhatTheProgramSaysOfItself) {
  const TempDir folder;
  const std::string program =
      placeTool(folder,
                "while read -r p; do echo \"{\\\"position\\\":\\\"$p\\\",\\\"error\\\":\\\"no "
                "data\\\"}\"; done");
  PlaceFinder finder(program);
  EXPECT_FALSE(finder.at(1, 2));
  EXPECT_EQ(finder.trouble(), program + ": no data");
}

// Ends after each question, without an answer to the second one.
TEST(PlaceFinder, StartsAProgramAgainThatHasEnded) {
  const TempDir folder;
  const std::string notes = folder.path("notes");
  const std::string program =
      placeTool(folder, "echo start >>'" + notes +
                            "'; read -r p; echo \"{\\\"position\\\":\\\"$p\\\","
                            "\\\"name\\\":\\\"A\\\",\\\"distance\\\":1}\"");
  PlaceFinder finder(program);
  EXPECT_TRUE(finder.at(1, 1));
  EXPECT_TRUE(finder.at(2, 2));
  EXPECT_TRUE(finder.at(3, 3));
  EXPECT_FALSE(finder.at(4, 4)) << "the third end is the last";
  EXPECT_EQ(finder.trouble(), program + ": it has ended");
  EXPECT_TRUE(finder.at(1, 1)) << "what is known stays known";
  EXPECT_EQ(contentOf(notes), "start\nstart\nstart\n");
}

TEST(PlaceFinder, ServesManyThreads) {
  const TempDir folder;
  PlaceFinder finder(countingPlaceTool(folder, folder.path("notes")));
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&finder, number] {
      for (int i = 0; i < 50; ++i) EXPECT_TRUE(finder.at(number, i % 10));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(finder.trouble(), "");
}

TEST(PlaceFinder, GivesAForkedChildAProgramOfItsOwn) {
  const TempDir folder;
  const std::string notes = folder.path("notes");
  PlaceFinder finder(countingPlaceTool(folder, notes));
  EXPECT_EQ(finder.at(1, 1)->distance, 1);
  test::runInChild([&] {
    EXPECT_EQ(finder.at(2, 2)->distance, 1);
    finder.forget();
  });
  EXPECT_EQ(finder.at(3, 3)->distance, 2);
  EXPECT_EQ(contentOf(notes), "start\n1.0000 1.0000\nstart\n2.0000 2.0000\n3.0000 3.0000\n");
}

}  // namespace

}  // namespace kolum::geocode
