#include "geocode/osm_answer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/xml_node.h"
#include "support/child_process.h"
#include "support/log_recorder.h"

namespace {

using kolum::geocode::languageIndex;
using kolum::geocode::osmTypeOf;
using kolum::geocode::readAnswer;
using kolum::test::LogMessage;
using kolum::test::LogRecorder;
using kolum::test::withinSeconds;
using MediaLibrary::osm_addr_unit_s;
using MediaLibrary::osm_place_s;
using testing::ElementsAre;
using testing::IsEmpty;

using Parts = std::vector<std::pair<std::string, std::string>>;

Parts pairs(const std::vector<osm_addr_unit_s>& units) {
  Parts parts;
  for (const osm_addr_unit_s& unit : units) parts.emplace_back(unit.name, unit.value);
  return parts;
}

// A record with the content of an earlier look-up.
osm_place_s filledPlace() {
  return {77, "before", {{5, "before"}}, {{5, {{"before", "before"}}}}};
}

std::string answer(const std::string& language, const std::string& type, const std::string& id,
                   const std::string& address, const std::string& parts) {
  return "<reversegeocode language=\"" + language + "\"><result osm_type=\"" + type +
         "\" osm_id=\"" + id + "\">" + address + "</result><addressparts>" + parts +
         "</addressparts></reversegeocode>";
}

std::string output(const std::string& answers) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<output>" + answers + "</output>\n";
}

struct LanguageCase {
  const char* code;
  int index;
};

constexpr LanguageCase kLanguages[] = {
    {"cs", 0},     {"da", 1},     {"de", 2},  {"el", 3},     {"en", 4},      {"es", 5},  {"fi", 6},
    {"fr", 7},     {"hu", 8},     {"it", 9},  {"ja", 10},    {"ko", 11},     {"nl", 12}, {"no", 13},
    {"pl", 14},    {"pt", 15},    {"ro", 16}, {"ru", 17},    {"sv", 18},     {"th", 19}, {"tr", 20},
    {"zh-cn", 21}, {"zh-tw", 22}, {"", 23},   {"pt-br", 23}, {"EN", 23},     {"En", 23}, {"e", 23},
    {"en ", 23},   {"zh", 23},    {"nb", 23}, {"zh-CN", 23}, {"zh-hant", 23}};

TEST(OsmAnswer, NumbersEveryLanguage) {
  for (const LanguageCase& row : kLanguages) {
    SCOPED_TRACE(row.code);
    EXPECT_EQ(languageIndex(row.code), row.index);
    osm_place_s place{};
    EXPECT_EQ(readAnswer(output(answer(row.code, "way", "1", "a", "<b>c</b>")), place), 0);
    ASSERT_EQ(place.addresses.size(), 1U);
    ASSERT_EQ(place.addressParts.size(), 1U);
    EXPECT_EQ(place.addresses[0].language, row.index);
    EXPECT_EQ(place.addressParts[0].language, row.index);
  }
}

TEST(OsmAnswer, NumbersEveryKindOfMapObject) {
  constexpr LanguageCase kTypes[] = {{"node", 1}, {"way", 2},  {"relation", 3}, {"area", 4},
                                     {"", 4},     {"Node", 4}, {"geonames", 4}};
  for (const LanguageCase& row : kTypes) {
    SCOPED_TRACE(row.code);
    EXPECT_EQ(osmTypeOf(row.code), row.index);
    osm_place_s place{};
    EXPECT_EQ(readAnswer(output(answer("en", row.code, "1", "a", "")), place), 0);
    EXPECT_EQ(place.osmType, row.index);
  }
}

TEST(OsmAnswer, FillsThePlace) {
  osm_place_s place = filledPlace();
  EXPECT_EQ(readAnswer(output(answer("en", "way", "5013364", "Eiffel Tower &amp; lawn, Paris",
                                     "<tourism>Eiffel Tower</tourism><road>Avenue Gustave "
                                     "Eiffel</road><city>Paris</city><country>France</country>")),
                       place),
            0);
  EXPECT_EQ(place.osmType, 2);
  EXPECT_EQ(place.osmId, "5013364");
  ASSERT_EQ(place.addresses.size(), 1U);
  EXPECT_EQ(place.addresses[0].address, "Eiffel Tower & lawn, Paris");
  ASSERT_EQ(place.addressParts.size(), 1U);
  EXPECT_EQ(pairs(place.addressParts[0].units), (Parts{{"tourism", "Eiffel Tower"},
                                                       {"road", "Avenue Gustave Eiffel"},
                                                       {"city", "Paris"},
                                                       {"country", "France"}}));
}

TEST(OsmAnswer, KeepsTheOrderOfLanguagesAndTheLastMapObject) {
  osm_place_s place{};
  EXPECT_EQ(readAnswer(output(answer("en", "way", "1", "Munich", "<city>Munich</city>") +
                              answer("de", "relation", "2", "München", "<city>München</city>")),
                       place),
            0);
  EXPECT_EQ(place.osmType, 3);
  EXPECT_EQ(place.osmId, "2");
  ASSERT_EQ(place.addresses.size(), 2U);
  EXPECT_EQ(place.addresses[0].language, 4);
  EXPECT_EQ(place.addresses[0].address, "Munich");
  EXPECT_EQ(place.addresses[1].language, 2);
  EXPECT_EQ(place.addresses[1].address, "München");
  ASSERT_EQ(place.addressParts.size(), 2U);
  EXPECT_EQ(place.addressParts[0].language, 4);
  EXPECT_EQ(pairs(place.addressParts[0].units), (Parts{{"city", "Munich"}}));
  EXPECT_EQ(place.addressParts[1].language, 2);
  EXPECT_EQ(pairs(place.addressParts[1].units), (Parts{{"city", "München"}}));
}

TEST(OsmAnswer, UsesFirstResultAndFirstParts) {
  osm_place_s place{};
  EXPECT_EQ(readAnswer("<output><reversegeocode language=\"en\"><other/>"
                       "<result osm_type=\"node\" osm_id=\"1\">one</result>"
                       "<result osm_type=\"way\" osm_id=\"2\">two</result>"
                       "<addressparts><city>A</city></addressparts>"
                       "<addressparts><city>B</city></addressparts>"
                       "</reversegeocode></output>",
                       place),
            0);
  EXPECT_EQ(place.osmType, 1);
  EXPECT_EQ(place.osmId, "1");
  EXPECT_EQ(place.addresses[0].address, "one");
  EXPECT_EQ(pairs(place.addressParts[0].units), (Parts{{"city", "A"}}));
}

TEST(OsmAnswer, KeepsAnswerWithEmptyTexts) {
  osm_place_s place = filledPlace();
  EXPECT_EQ(readAnswer(output(answer("", "", "", "", "")), place), 0);
  EXPECT_EQ(place.osmType, 4);
  EXPECT_EQ(place.osmId, "");
  ASSERT_EQ(place.addresses.size(), 1U);
  EXPECT_EQ(place.addresses[0].address, "");
  ASSERT_EQ(place.addressParts.size(), 1U);
  EXPECT_THAT(place.addressParts[0].units, IsEmpty());
}

constexpr const char* kIncomplete[] = {
    "<reversegeocode><result osm_type=\"way\" osm_id=\"1\">a</result><addressparts/>"
    "</reversegeocode>",
    "<reversegeocode language=\"de\"><addressparts/></reversegeocode>",
    "<reversegeocode language=\"de\"><result osm_id=\"1\">a</result><addressparts/>"
    "</reversegeocode>",
    "<reversegeocode language=\"de\"><result osm_type=\"way\">a</result><addressparts/>"
    "</reversegeocode>",
    "<reversegeocode language=\"de\"><result osm_type=\"way\" osm_id=\"1\">a</result>"
    "</reversegeocode>",
    "<reversegeocode/>",
};

TEST(OsmAnswer, SkipsIncompleteAnswers) {
  for (const std::string incomplete : kIncomplete) {
    SCOPED_TRACE(incomplete);
    osm_place_s place{};
    const std::string complete = answer("en", "node", "7", "b", "<city>c</city>");
    EXPECT_EQ(readAnswer(output(incomplete + complete + incomplete), place), 0);
    EXPECT_EQ(place.osmType, 1);
    EXPECT_EQ(place.osmId, "7");
    ASSERT_EQ(place.addresses.size(), 1U);
    EXPECT_EQ(place.addresses[0].language, 4);
    EXPECT_EQ(place.addressParts.size(), 1U);
  }
}

TEST(OsmAnswer, FailsAndClearsThePlaceWithoutCompleteAnswer) {
  std::vector<std::string> cases(std::begin(kIncomplete), std::end(kIncomplete));
  cases.insert(cases.end(),
               {"", "<other/>", "text", "<x>" + answer("en", "way", "1", "", "") + "</x>"});
  for (const std::string& answers : cases) {
    SCOPED_TRACE(answers);
    LogRecorder log;
    osm_place_s place = filledPlace();
    EXPECT_EQ(readAnswer(output(answers), place), 3);
    EXPECT_THAT(place.addresses, IsEmpty());
    EXPECT_THAT(place.addressParts, IsEmpty());
    EXPECT_THAT(log.texts(), IsEmpty());
  }
}

void expectUntouched(const osm_place_s& place) {
  EXPECT_EQ(place.osmType, 77);
  EXPECT_EQ(place.osmId, "before");
  EXPECT_EQ(place.addresses.size(), 1U);
  EXPECT_EQ(place.addressParts.size(), 1U);
}

TEST(OsmAnswer, TreatsNestedErrorAsAddressPart) {
  const std::string inAnswer =
      "<reversegeocode language=\"en\"><error>kept out</error>"
      "<result osm_type=\"way\" osm_id=\"1\">a</result><addressparts/></reversegeocode>";
  osm_place_s place = filledPlace();
  EXPECT_EQ(readAnswer(output(inAnswer), place), 0);
  EXPECT_EQ(place.addresses[0].address, "a");

  EXPECT_EQ(readAnswer(output(answer("en", "way", "1", "b", "<error>Error Lane</error>")), place),
            0);
  EXPECT_EQ(pairs(place.addressParts[0].units), (Parts{{"error", "Error Lane"}}));
}

struct ErrorCase {
  const char* xml;
  const char* message;
};

TEST(OsmAnswer, ReturnsTheToolsError) {
  constexpr ErrorCase kCases[] = {
      {"<error>Unable to geocode</error>", "osm error:Unable to geocode"},
      {"<error/>", "osm error:"},
      {"<note/><error>beside another element</error>", "osm error:beside another element"},
      {"<?xml version=\"1.0\"?>\n<output><error>100% %s %n</error></output>",
       "osm error:100% %s %n"},
      {"<output><reversegeocode language=\"en\"><result osm_type=\"way\" osm_id=\"1\">a</result>"
       "<addressparts/></reversegeocode><error>half done</error></output>",
       "osm error:half done"},
  };
  for (const ErrorCase& row : kCases) {
    SCOPED_TRACE(row.xml);
    LogRecorder log;
    osm_place_s place = filledPlace();
    EXPECT_EQ(readAnswer(row.xml, place), 2);
    expectUntouched(place);
    ASSERT_THAT(log.texts(), ElementsAre(row.message));
    const LogMessage message = log.messages()[0];
    EXPECT_EQ(message.level, 5);
    EXPECT_EQ(message.colour, std::nullopt);
    EXPECT_EQ(message.source, "osm_metadata_query");
    EXPECT_EQ(message.function, "parseOsmInfo");
  }
}

TEST(OsmAnswer, ReportsWhyThereIsNoOutput) {
  constexpr ErrorCase kCases[] = {
      {"", "parse osm xml fail:3"},
      {" \n", "parse osm xml fail:3"},
      {"Segmentation fault", "parse osm xml fail:2"},
      {"{\"error\":\"x\"}", "parse osm xml fail:2"},
      {"<output><reversegeocode", "parse osm xml fail:2"},
      {"\x7F"
       "ELF\x02\x01",
       "parse osm xml fail:2"},
      {"<html><body>404</body></html>", "parse osm xml fail:11"},
      {"<Output/>", "parse osm xml fail:11"},
  };
  for (const ErrorCase& row : kCases) {
    SCOPED_TRACE(row.xml);
    LogRecorder log;
    osm_place_s place = filledPlace();
    EXPECT_EQ(readAnswer(row.xml, place), 3);
    expectUntouched(place);
    EXPECT_THAT(log.texts(), ElementsAre(row.message));
  }
}

TEST(OsmAnswer, ReadsMegabytesQuickly) {
  std::string parts;
  for (int part = 0; part < 300'000; ++part) parts += "<p>" + std::to_string(part) + "</p>";
  std::string answers;
  for (int one = 0; one < 10'000; ++one) answers += answer("en", "way", "1", "a", "");
  answers += answer("de", "way", "1", std::string(2'000'000, 'x'), parts);
  withinSeconds(30, [&] {
    osm_place_s place{};
    EXPECT_EQ(readAnswer(output(answers), place), 0);
    ASSERT_EQ(place.addresses.size(), 10'001U);
    EXPECT_EQ(place.addresses.back().address.size(), 2'000'000U);
    ASSERT_EQ(place.addressParts.back().units.size(), 300'000U);
    EXPECT_EQ(place.addressParts.back().units.back().value, "299999");
  });
}

TEST(OsmAnswer, SurvivesDeepNesting) {
  std::string opening;
  std::string closing;
  for (int depth = 0; depth < 100'000; ++depth) {
    opening += "<a>";
    closing += "</a>";
  }
  osm_place_s place{};
  EXPECT_EQ(readAnswer(opening + closing, place), 3);
  EXPECT_EQ(readAnswer(opening, place), 3);
  EXPECT_EQ(readAnswer(output(answer("en", "way", "1", "a", opening + closing)), place), 0);
}

TEST(ParseAddressXml, AppendsNamedPartsInOrder) {
  const XMLNode node = XMLNode::parseString(
      "<addressparts>stray<road>R</road><empty></empty><closed/><city>C &lt;1&gt;</city>"
      "<nested><x>y</x></nested><road>R2</road><!-- note --></addressparts>");
  std::vector<osm_addr_unit_s> units{{"before", "kept"}};
  EXPECT_EQ(parseAddressXml(node, units), 0);
  EXPECT_EQ(pairs(units),
            (Parts{{"before", "kept"}, {"road", "R"}, {"city", "C <1>"}, {"road", "R2"}}));
}

TEST(ParseAddressXml, FindsNothingInAnEmptyNode) {
  std::vector<osm_addr_unit_s> units;
  EXPECT_EQ(parseAddressXml(XMLNode(), units), 0);
  EXPECT_THAT(units, IsEmpty());
}

}  // namespace
