#include "media/film_position.h"

#include <gtest/gtest.h>

#include <string>

namespace kolum::media {

namespace {

struct Row {
  const char* text;
  double latitude;
  double longitude;
  std::optional<double> altitude = {};
};

TEST(PositionOf, ReadsEveryForm) {
  constexpr double kTower = 48 + 51 / 60.0 + 27.7 / 3600;
  constexpr double kTowerEast = 2 + 17 / 60.0 + 42 / 3600.0;
  const Row rows[] = {
      {"+48.8577+002.295/", 48.8577, 2.295},
      {"+48.8577+002.2950", 48.8577, 2.295},
      {"-33.8568+151.2153+005.5/", -33.8568, 151.2153, 5.5},
      {"+27.5916+086.5640+8850CRSWGS_84/", 27.5916, 86.564, 8850},
      {"+31.5-035.5-430CRSWGS_84/", 31.5, -35.5, -430},
      {"+40-075CRSxxxx/", 40, -75},
      {"+4012.22-07500.25/", 40 + 12.22 / 60, -(75 + 0.25 / 60)},
      {"+401213.1-0750015.1/", 40 + 12 / 60.0 + 13.1 / 3600, -(75 + 15.1 / 3600)},
      {"+485127.7+0021742/", kTower, kTowerEast},
      {"+90+000/", 90, 0},
      {"+00-025/", 0, -25},
      {"+01.5-180/", 1.5, -180},
      {"\u221233.8568+151.2153/", -33.8568, 151.2153},
      {"48.8577, 2.295", 48.8577, 2.295},
      {"-33.8568,151.2153", -33.8568, 151.2153},
      {"48.8577 2.295", 48.8577, 2.295},
      {" +48.8577 +002.295", 48.8577, 2.295},
      {"48\u00B051\u203227.7\u2033N 2\u00B017\u203242\u2033E", kTower, kTowerEast},
      {"48\u00B051'27.7\"N 2\u00B017'42\"W", kTower, -kTowerEast},
      {"48\u00B0N 2\u00B017\u2032E 35m", 48, 2 + 17 / 60.0, 35},
      {"50 deg 3' 4\" S 20 deg 2' 1.5\" E", -(50 + 3 / 60.0 + 4 / 3600.0),
       20 + 2 / 60.0 + 1.5 / 3600},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const auto found = positionOf(row.text);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->latitude, row.latitude, 1e-9);
    EXPECT_NEAR(found->longitude, row.longitude, 1e-9);
    EXPECT_EQ(found->altitude, row.altitude);
  }
}

TEST(PositionOf, RejectsEverythingElse) {
  for (const std::string text : {"",
                                 "/",
                                 "+",
                                 "+48.8577",
                                 "+48.8577/",
                                 "48.8577",
                                 "Paris",
                                 "+91+000/",
                                 "-90.1+000/",
                                 "+48+181/",
                                 "+48-180.5/",
                                 "+4861+00200/",
                                 "+485161+0020000/",
                                 "+1234567+0021742/",
                                 "+48.8577+00212345678/",
                                 "48\u00B0 2\u00B0",
                                 "48\u00B0N",
                                 "nan,nan",
                                 "+nan+nan/",
                                 "1e5,2",
                                 "+.5+.5/",
                                 "+00.0000+000.0000/",
                                 "0, 0"})
    EXPECT_FALSE(positionOf(text)) << text;
  EXPECT_FALSE(positionOf("+" + std::string(100'000, '1') + "+" + std::string(100'000, '1')));
  EXPECT_FALSE(positionOf(std::string(100'000, ' ')));
}

TEST(PositionOf, LeavesImpossibleAltitudesOut) {
  for (const char* text : {"+48+002+200000/", "+48+002-20000/", "+48+002CRSWGS_84/"}) {
    const auto found = positionOf(text);
    ASSERT_TRUE(found) << text;
    EXPECT_FALSE(found->altitude) << text;
  }
}

TEST(PlaceNameOf, IsWhatFollowsThePosition) {
  EXPECT_EQ(placeNameOf("+48.8577+002.2950/Eiffel Tower"), "Eiffel Tower");
  EXPECT_EQ(placeNameOf("+48.8577+002.2950/"), "");
  EXPECT_EQ(placeNameOf("+48.8577+002.2950"), "");
}

}  // namespace

}  // namespace kolum::media
