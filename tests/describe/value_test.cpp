#include "describe/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace kolum::describe {
namespace {

TEST(Value, WritesEveryType) {
  Value object = Value::object();
  object.set("none", nullptr);
  object.set("yes", true);
  object.set("count", -7);
  object.set("large", std::numeric_limits<std::int64_t>::min());
  object.set("texts", std::vector<std::string>{"a", "b"});
  object.set("empty", Value::array());
  EXPECT_EQ(object.json(), R"({"none":null,"yes":true,"count":-7,"large":-9223372036854775808,)"
                           R"("texts":["a","b"],"empty":[]})");
}

TEST(Value, KeepsTheOrderOfKeysAndTheLastValue) {
  Value object = Value::object();
  object.set("b", 1);
  object.set("a", 2);
  object.set("b", 3);
  EXPECT_EQ(object.json(), R"({"b":3,"a":2})");
}

TEST(Value, WritesRealNumbersExactlyAndRecognisably) {
  EXPECT_EQ(Value(25.0).json(), "25.0");
  EXPECT_EQ(Value(0.1).json(), "0.1");
  EXPECT_EQ(Value(-24000 / 1001.0).json(), "-23.976023976023978");
  EXPECT_EQ(std::stod(Value(1e300).json()), 1e300);
  EXPECT_EQ(std::strtod(Value(5e-324).json().c_str(), nullptr), 5e-324);
}

TEST(Value, WritesNumbersThatJsonLacksAsNull) {
  EXPECT_EQ(Value(std::nan("")).json(), "null");
  EXPECT_EQ(Value(HUGE_VAL).json(), "null");
}

TEST(Value, EscapesTexts) {
  EXPECT_EQ(Value("\"\\\b\f\n\r\t").json(), R"("\"\\\b\f\n\r\t")");
  EXPECT_EQ(Value(std::string("a\0\x1F\x7F", 4)).json(), "\"a\\u0000\\u001f\x7F\"");
  EXPECT_EQ(Value("\u00E9\u20AC\U0001F600").json(), "\"\u00E9\u20AC\U0001F600\"");
}

TEST(Value, ReplacesBytesThatAreNoText) {
  EXPECT_EQ(Value("caf\xE9!").json(), "\"caf\uFFFD!\"");
  EXPECT_EQ(Value("\xF0\x9F").json(), "\"\uFFFD\uFFFD\"");
  EXPECT_EQ(Value("\xED\xA0\x80").json(), "\"\uFFFD\uFFFD\uFFFD\"") << "a surrogate";
}

}  // namespace
}  // namespace kolum::describe
