#include "geocode/place_answer.h"

#include <gtest/gtest.h>

#include <string>

namespace kolum::geocode {

namespace {

constexpr char kQuestion[] = "48.8584 2.2945";

std::optional<PlaceAnswer> answer(const std::string& keys) {
  return readPlaceAnswer(R"({"position":"48.8584 2.2945")" + keys + "}", kQuestion);
}

TEST(PlaceAnswer, HasAllThatIsSaid) {
  const auto found =
      answer(R"(,"name":"Neuilly","region":"Île-de-France","country":"France","countryCode":"FR",)"
             R"("geonamesId":2990970,"distance":3380)");
  ASSERT_TRUE(found && found->place);
  EXPECT_EQ(found->error, "");
  EXPECT_EQ(*found->place, (Place{.name = "Neuilly",
                                  .region = "Île-de-France",
                                  .country = "France",
                                  .countryCode = "FR",
                                  .geonamesId = 2990970,
                                  .distance = 3380}));
}

TEST(PlaceAnswer, NeedsOnlyNameAndDistance) {
  const auto found = answer(R"(,"distance":0,"name":"Nowhere")");
  ASSERT_TRUE(found && found->place);
  EXPECT_EQ(*found->place, (Place{.name = "Nowhere"}));
}

TEST(PlaceAnswer, MaySayThatNothingIsNear) {
  const auto found = answer("");
  ASSERT_TRUE(found);
  EXPECT_FALSE(found->place);
  EXPECT_EQ(found->error, "");
}

TEST(PlaceAnswer, MaySayWhyThereIsNone) {
  const auto found = answer(R"(,"error":"no data")");
  ASSERT_TRUE(found);
  EXPECT_FALSE(found->place);
  EXPECT_EQ(found->error, "no data");
}

TEST(PlaceAnswer, MayHaveMoreKeysWithPlainValues) {
  const auto found =
      answer(R"(,"name":"A","distance":1,"population":2.5,"x":"y","z":null,"w":true,"v":-1)");
  ASSERT_TRUE(found && found->place);
  EXPECT_EQ(found->place->name, "A");
}

TEST(PlaceAnswer, IsNothingElse) {
  const std::string longName(513, 'x');
  for (const std::string& keys : {
           std::string(R"(,"name":"A")"),
           std::string(R"(,"distance":1)"),
           std::string(R"(,"name":"","distance":1)"),
           std::string(R"(,"name":"A","distance":-1)"),
           std::string(R"(,"name":"A","distance":20040001)"),
           std::string(R"(,"name":"A","distance":18446744073709551615)"),
           std::string(R"(,"name":"A","distance":1e999)"),
           std::string(R"(,"name":"A","distance":1.5)"),
           std::string(R"(,"name":"A","distance":"1")"),
           std::string(R"(,"name":1,"distance":1)"),
           std::string(R"(,"name":["A"],"distance":1)"),
           std::string(R"(,"name":{"A":"B"},"distance":1)"),
           std::string(R"(,"name":"A","distance":1,"more":{})"),
           std::string(R"(,"name":"A","distance":1,"more":[])"),
           std::string(R"(,"name":"A","distance":1,"geonamesId":0)"),
           std::string(R"(,"name":"A","distance":1,"geonamesId":"7")"),
           std::string(R"(,"name":"A","distance":1,"geonamesId":9007199254740993)"),
           std::string(R"(,"name":"A","distance":1,"countryCode":"fr")"),
           std::string(R"(,"name":"A","distance":1,"countryCode":"FRA")"),
           std::string(R"(,"name":"A\nB","distance":1)"),
           std::string(R"(,"name":"A\u0000B","distance":1)"),
           std::string(R"(,"name":"A\u001b[2J","distance":1)"),
           std::string(",\"name\":\"A\xFF\",\"distance\":1"),
           ",\"name\":\"" + longName + "\",\"distance\":1",
           std::string(R"(,"position":"0.0000 0.0000","name":"A","distance":1)"),
           std::string(R"(,"name":"A","distance":1)") + "} {",
       }) {
    EXPECT_FALSE(answer(keys)) << keys;
  }
  for (const char* line : {"", " ", "null", "[]", "1", "\"48.8584 2.2945\"", "{}", "{", "error",
                           R"({"name":"A","distance":1})", R"({"position":"48.8584 2.2946"})",
                           R"([{"position":"48.8584 2.2945"}])"}) {
    EXPECT_FALSE(readPlaceAnswer(line, kQuestion)) << line;
  }
}

TEST(PlaceAnswer, IsShort) {
  const std::string spaces(kLongestPlaceAnswer, ' ');
  EXPECT_FALSE(readPlaceAnswer(spaces + R"({"position":"48.8584 2.2945"})", kQuestion));
  EXPECT_FALSE(readPlaceAnswer(std::string(kLongestPlaceAnswer, '['), kQuestion));
}

}  // namespace

}  // namespace kolum::geocode
