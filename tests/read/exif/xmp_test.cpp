// XMP packets: RDF in all the ways that programs write it, and in some that none does.
#include "read/exif/xmp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "base/utf8.h"
#include "media/photo_tags.h"
#include "read/exif/extended_xmp.h"
#include "support/exif_builder.h"
#include "support/hostile_bytes.h"

namespace kolum::test {

namespace {

using exif::joinedXmp;
using exif::readXmp;
using exif::Xmp;
using exif::XmpPart;
using P = exif::XmpProperty;
using testing::ElementsAre;
using testing::IsEmpty;

Xmp xmpOf(const std::string& children) {
  return readXmp(xmpDocument(children));
}

std::string titleOf(const std::string& packet) {
  return readXmp(packet).text(P::kTitle);
}

const std::string kRdf = "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'";
const std::string kDc = "xmlns:dc='http://purl.org/dc/elements/1.1/'";

// --- Ways to write a property

TEST(XmpPacket, HasTextsAsElementsAndAsAttributes) {
  EXPECT_EQ(xmpOf("<xmp:Label>Red</xmp:Label>").text(P::kLabel), "Red");
  const std::string packet = "<rdf:RDF " + kRdf +
                             "><rdf:Description xmp:Label='Red' dc:title=\"A\" " + kDc +
                             " xmlns:xmp='http://ns.adobe.com/xap/1.0/'/></rdf:RDF>";
  EXPECT_EQ(readXmp(packet).text(P::kLabel), "Red");
  EXPECT_EQ(titleOf(packet), "A");
}

TEST(XmpPacket, HasListsOfEachKind) {
  for (const char* kind : {"Alt", "Bag", "Seq"})
    EXPECT_THAT(xmpOf(xmpList("dc:subject", kind, {"alps", "snow", "alps"})).texts(P::kSubject),
                ElementsAre("alps", "snow"));
  EXPECT_THAT(xmpOf("<dc:subject>one</dc:subject>").texts(P::kSubject), ElementsAre("one"));
  EXPECT_THAT(xmpOf("<dc:subject/>").texts(P::kSubject), IsEmpty());
  EXPECT_EQ(xmpOf(xmpList("dc:creator", "Seq", {"Ann", "Ben"})).text(P::kCreator), "Ann");
}

TEST(XmpPacket, PrefersTheTextForEverybody) {
  const auto title = [](const std::string& items) {
    return xmpOf("<dc:title><rdf:Alt>" + items + "</rdf:Alt></dc:title>").text(P::kTitle);
  };
  const std::string german = "<rdf:li xml:lang='de'>Berg</rdf:li>";
  EXPECT_EQ(title(german + "<rdf:li xml:lang='x-default'>Hill</rdf:li>"), "Hill");
  EXPECT_EQ(title(german + "<rdf:li xml:lang='X-Default'>Hill</rdf:li>"), "Hill");
  EXPECT_EQ(title(german + "<rdf:li xml:lang='fr'>Mont</rdf:li>"), "Berg");
  EXPECT_EQ(title("<rdf:li xml:lang='x-default'> </rdf:li>" + german), "Berg");
}

TEST(XmpPacket, HasValuesWithQualifiers) {
  for (const char* property :
       {"<dc:title rdf:parseType='Resource'><rdf:value>A</rdf:value><xmp:x>q</xmp:x></dc:title>",
        "<dc:title><rdf:Description><rdf:value>A</rdf:value><xmp:x>q</xmp:x></rdf:Description>"
        "</dc:title>",
        "<dc:title><rdf:Description rdf:value='A' xmp:x='q'/></dc:title>",
        "<dc:title rdf:value='A' xmp:x='q'/>",
        "<dc:title rdf:parseType='Resource'><rdf:value><rdf:Alt><rdf:li>A</rdf:li></rdf:Alt>"
        "</rdf:value></dc:title>",
        "<dc:title><rdf:Alt><rdf:li rdf:parseType='Resource'><rdf:value>A</rdf:value>"
        "<xmp:x>q</xmp:x></rdf:li></rdf:Alt></dc:title>"})
    EXPECT_EQ(xmpOf(property).text(P::kTitle), "A") << property;
}

TEST(XmpPacket, HasReferencesAsTexts) {
  EXPECT_EQ(xmpOf("<photoshop:Credit rdf:resource='http://a/'/>").text(P::kCredit), "http://a/");
}

TEST(XmpPacket, HasStructuresInEachNotation) {
  for (const char* regions :
       {"<mwg-rs:Regions rdf:parseType='Resource'><mwg-rs:RegionList><rdf:Bag>"
        "<rdf:li rdf:parseType='Resource'><mwg-rs:Name>Ann</mwg-rs:Name>"
        "<mwg-rs:Area rdf:parseType='Resource'><stArea:x>0.5</stArea:x></mwg-rs:Area></rdf:li>"
        "</rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>",
        "<mwg-rs:Regions><rdf:Description><mwg-rs:RegionList><rdf:Bag>"
        "<rdf:li><rdf:Description mwg-rs:Name='Ann'><mwg-rs:Area stArea:x='0.5'/>"
        "</rdf:Description></rdf:li>"
        "</rdf:Bag></mwg-rs:RegionList></rdf:Description></mwg-rs:Regions>",
        "<mwg-rs:Regions><mwg-rs:RegionInfo><mwg-rs:RegionList><rdf:Seq>"
        "<rdf:li mwg-rs:Name='Ann' rdf:parseType='Resource'>"
        "<mwg-rs:Area><stArea:Area stArea:x='0.5'/></mwg-rs:Area></rdf:li>"
        "</rdf:Seq></mwg-rs:RegionList></mwg-rs:RegionInfo></mwg-rs:Regions>"}) {
    const Xmp xmp = xmpOf(regions);
    EXPECT_EQ(xmp.items(P::kRegionList), 1U) << regions;
    EXPECT_EQ(xmp.text(P::kRegionName, 1), "Ann") << regions;
    EXPECT_EQ(xmp.text(P::kAreaX, 1), "0.5") << regions;
  }
}

TEST(XmpPacket, KeepsTheElementsOfListsApart) {
  const Xmp xmp = xmpOf(
      "<mwg-rs:Regions rdf:parseType='Resource'><mwg-rs:RegionList><rdf:Bag>"
      "<rdf:li mwg-rs:Type='Face'/><rdf:li mwg-rs:Name='Ben'/><rdf:li/>"
      "<rdf:li rdf:parseType='Resource'><mwg-rs:Name><rdf:Alt><rdf:li>Cid</rdf:li>"
      "<rdf:li xml:lang='x-default'>Dan</rdf:li></rdf:Alt></mwg-rs:Name></rdf:li>"
      "</rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>");
  EXPECT_EQ(xmp.items(P::kRegionList), 4U);
  EXPECT_EQ(xmp.text(P::kRegionName, 1), "");
  EXPECT_EQ(xmp.text(P::kRegionType, 1), "Face");
  EXPECT_EQ(xmp.text(P::kRegionName, 2), "Ben");
  EXPECT_EQ(xmp.text(P::kRegionName, 4), "Dan");
}

TEST(XmpPacket, HasPlacesAsListsAndAlone) {
  const std::string xmlns = " xmlns:e='http://iptc.org/std/Iptc4xmpExt/2008-02-29/'";
  Xmp xmp = xmpOf("<e:LocationCreated" + xmlns +
                  "><rdf:Bag><rdf:li e:City='Bern'/><rdf:li e:City='Chur'/></rdf:Bag>"
                  "</e:LocationCreated>");
  EXPECT_EQ(xmp.text(P::kCreatedCity, 1), "Bern");
  EXPECT_EQ(xmp.text(P::kCreatedCity, 2), "Chur");
  xmp = xmpOf("<e:LocationShown" + xmlns + " e:City='Bern' e:CountryCode='CH'/>");
  EXPECT_EQ(xmp.text(P::kShownCity, 0), "Bern");
  EXPECT_EQ(xmp.text(P::kShownCountryCode, 0), "CH");
  EXPECT_EQ(xmp.text(P::kCreatedCity, 0), "");
}

TEST(XmpPacket, MayHaveSeveralDescriptions) {
  const std::string packet = "<rdf:RDF " + kRdf + " " + kDc +
                             "><rdf:Description><dc:title>A</dc:title></rdf:Description>"
                             "<rdf:Description dc:rights='B'/></rdf:RDF>";
  EXPECT_EQ(titleOf(packet), "A");
  EXPECT_EQ(readXmp(packet).text(P::kRights), "B");
}

// --- Namespaces

TEST(XmpPacket, IsReadByNamespacesAndNotByPrefixes) {
  EXPECT_EQ(titleOf("<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Description>"
                    "<title xmlns='http://purl.org/dc/elements/1.1/'>A</title>"
                    "</r:Description></r:RDF>"),
            "A");
  EXPECT_EQ(xmpOf("<dc:title xmlns:dc='http://other/'>A</dc:title>").text(P::kTitle), "");
  EXPECT_EQ(xmpOf("<x:title xmlns:x='http://purl.org/dc/elements/1.1'>A</x:title>").text(P::kTitle),
            "A");
  EXPECT_EQ(xmpOf("<nobody:title>A</nobody:title><dc:rights>B</dc:rights>").text(P::kRights), "B");
}

TEST(XmpPacket, ForgetsNamespacesAtTheEndOfTheirElements) {
  const Xmp xmp = xmpOf(
      "<dc:subject xmlns:photoshop='http://other/'>a</dc:subject>"
      "<dc:format xmlns:xmp='http://other/'>a</dc:format>"
      "<photoshop:City>Bern</photoshop:City><xmp:Label>Red</xmp:Label>");
  EXPECT_EQ(xmp.text(P::kCity), "Bern");
  EXPECT_EQ(xmp.text(P::kLabel), "Red");
}

TEST(XmpPacket, HasNoFieldsOfOtherStructures) {
  const Xmp xmp = xmpOf(
      "<mwg-rs:Name>Ann</mwg-rs:Name><dc:other rdf:parseType='Resource'><dc:title>A</dc:title>"
      "</dc:other><dc:rights><rdf:Bag><dc:title>B</dc:title></rdf:Bag></dc:rights>");
  EXPECT_EQ(xmp.text(P::kRegionName), "");
  EXPECT_EQ(xmp.text(P::kTitle), "");
}

// --- Texts

TEST(XmpPacket, DecodesWhatXmlHasForCharacters) {
  EXPECT_EQ(
      xmpOf("<dc:title>a &amp; &#98; <![CDATA[<c>]]><!-- no --> &lt;</dc:title>").text(P::kTitle),
      "a & b <c> <");
}

std::string utf16(const std::string& ascii, bool isBigEndian) {
  std::string text;
  for (const char c : ascii) text += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
  return text;
}

TEST(XmpPacket, MayBeUtf16) {
  const std::string packet = xmpDocument("<dc:title>A</dc:title>");
  EXPECT_EQ(titleOf("\xFF\xFE" + utf16(packet, false)), "A");
  EXPECT_EQ(titleOf("\xFE\xFF" + utf16(packet, true)), "A");
  EXPECT_EQ(titleOf("\xEF\xBB\xBF" + packet), "A");
}

TEST(XmpPacket, TakesLatin1AndControlCharactersForWhatTheyMean) {
  EXPECT_EQ(xmpOf("<dc:title>caf\xE9 \xC3\xBC</dc:title>").text(P::kTitle), "caf\xC3\xA9 \xC3\xBC");
  EXPECT_EQ(xmpOf("<dc:title>a\x01\x0B"
                  "b\tc</dc:title>")
                .text(P::kTitle),
            "a  b\tc");
  EXPECT_EQ(xmpOf("<dc:title>a<1</dc:title>").text(P::kTitle), "");
}

TEST(XmpPacket, MayHaveAnythingBehindIt) {
  const std::string packet = xmpDocument("<dc:title>A</dc:title>");
  EXPECT_EQ(titleOf(packet + std::string(3000, '\0')), "A");
  EXPECT_EQ(titleOf(packet + "\xFF <junk"), "A");
}

TEST(XmpPacket, HasLongTextsUpToTheirLimit) {
  const std::string text =
      xmpOf("<dc:title>x" + repeated("\xE2\x82\xAC", 40'000) + "</dc:title>").text(P::kTitle);
  EXPECT_GT(text.size(), media::kLongestPhotoText - 3);
  EXPECT_LE(text.size(), media::kLongestPhotoText);
  EXPECT_TRUE(isUtf8(text));
}

// --- What is no use, or no packet

TEST(XmpPacket, PassesOverHistoriesOfAnyLength) {
  const std::string history =
      "<xmpMM:History xmlns:xmpMM='http://ns.adobe.com/xap/1.0/mm/'><rdf:Seq>" +
      repeated("<rdf:li stEvt:when='2015'>a</rdf:li>", 60'000) + "</rdf:Seq></xmpMM:History>";
  EXPECT_EQ(xmpOf(history + "<dc:title>A</dc:title>").text(P::kTitle), "A");
  EXPECT_EQ(xmpOf("<dc:title rdf:parseType='Literal'><b>A</b></dc:title>"
                  "<dc:rights rdf:parseType='Collection'><rdf:Description/></dc:rights>")
                .text(P::kTitle),
            "");
}

TEST(XmpPacket, IsOnlyReadAsAWhole) {
  const std::string packet = xmpDocument("<dc:title>A</dc:title>");
  const std::size_t end = packet.find("</x:xmpmeta>") + std::string("</x:xmpmeta>").size();
  EXPECT_EQ(titleOf(packet.substr(0, end)), "A");
  for (std::size_t size = 0; size < end; ++size) EXPECT_EQ(titleOf(packet.substr(0, size)), "");
  EXPECT_EQ(titleOf("<a>" + packet.substr(packet.find("<x:xmpmeta")) + "</b>"), "");
}

std::string nested(std::size_t levels) {
  return repeated("<a>", levels) + repeated("</a>", levels);
}

TEST(XmpPacket, IsNotReadIfItIsMoreThanProgramsWrite) {
  const std::string title = "<dc:title>A</dc:title>";
  EXPECT_EQ(xmpOf(title + nested(60)).text(P::kTitle), "A");
  EXPECT_EQ(xmpOf(title + nested(65)).text(P::kTitle), "");
  const auto manyTexts = [&](std::size_t count) {
    return title + "<dc:subject><rdf:Bag>" + repeated("<rdf:li>a</rdf:li>", count) +
           "</rdf:Bag></dc:subject>";
  };
  EXPECT_EQ(xmpOf(manyTexts(2000)).text(P::kTitle), "A");
  EXPECT_EQ(xmpOf(manyTexts(6000)).text(P::kTitle), "");
  std::string attributes;
  for (int i = 0; i < 6000; ++i) attributes += " a" + std::to_string(i) + "='x'";
  EXPECT_EQ(xmpOf(title + "<b" + attributes + "/>").text(P::kTitle), "");
  EXPECT_EQ(titleOf(xmpDocument(title) + std::string(std::size_t{4} << 20, ' ')), "");
}

TEST(XmpPacket, HasNoEntitiesOfItsOwn) {
  const std::string packet = xmpDocument("<dc:title>&b;</dc:title>");
  EXPECT_EQ(titleOf("<!DOCTYPE a [<!ENTITY b 'c'>]>" + packet.substr(packet.find("<x:"))), "");
  EXPECT_EQ(titleOf("<!DOCTYPE a>" + xmpDocument("<dc:title>A</dc:title>")), "");
  EXPECT_EQ(titleOf(packet), "");
}

// --- Extended XMP

TEST(ExtendedXmp, AddsOnlyWhatIsMissing) {
  Xmp xmp = xmpOf(xmpList("dc:subject", "Bag", {"alps"}) +
                  "<mwg-rs:Regions rdf:parseType='Resource'><mwg-rs:RegionList><rdf:Bag>"
                  "<rdf:li mwg-rs:Name='Ann'/></rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>");
  xmp.complete(xmpOf(xmpList("dc:subject", "Bag", {"snow"}) + "<dc:title>A</dc:title>" +
                     "<mwg-rs:Regions rdf:parseType='Resource'><mwg-rs:RegionList><rdf:Bag>"
                     "<rdf:li mwg-rs:Name='Ben' mwg-rs:Type='Face'/><rdf:li mwg-rs:Name='Cid'/>"
                     "</rdf:Bag></mwg-rs:RegionList></mwg-rs:Regions>"));
  EXPECT_THAT(xmp.texts(P::kSubject), ElementsAre("alps"));
  EXPECT_EQ(xmp.text(P::kTitle), "A");
  EXPECT_EQ(xmp.items(P::kRegionList), 1U);
  EXPECT_EQ(xmp.text(P::kRegionName, 1), "Ann");
  EXPECT_EQ(xmp.text(P::kRegionType, 1), "");
}

TEST(ExtendedXmp, IsJoinedInAnyOrder) {
  const XmpPart first = {.guid = "A", .total = 6, .offset = 0, .bytes = "ab"};
  const XmpPart second = {.guid = "A", .total = 6, .offset = 2, .bytes = "cde"};
  const XmpPart third = {.guid = "A", .total = 6, .offset = 5, .bytes = "f"};
  const XmpPart other = {.guid = "B", .total = 2, .offset = 0, .bytes = "xy"};
  EXPECT_EQ(joinedXmp({first, second, third}, "A"), "abcdef");
  EXPECT_EQ(joinedXmp({third, other, first, second}, "A"), "abcdef");
  EXPECT_EQ(joinedXmp({third, other, first, second}, "B"), "xy");
  EXPECT_EQ(joinedXmp({first, second, third}, "C"), "");
}

TEST(ExtendedXmp, IsParsedIfItMayHaveProperties) {
  EXPECT_TRUE(exif::mayHaveProperties(xmpDocument("")));
  EXPECT_TRUE(exif::mayHaveProperties("<a xmlns=\"http://purl.org/dc/elements/1.1/\"/>"));
  const std::string map = "<a xmlns:G='http://ns.google.com/photos/1.0/image/' G:Data='";
  EXPECT_FALSE(exif::mayHaveProperties(map + "QUJD' " + kRdf + "/>"));
  EXPECT_TRUE(exif::mayHaveProperties(map + "xmlns' " + kDc + "/>"));
  for (const char* cut : {"", "xmlns", "xmlns:a='", "xmlns:a='http://purl"})
    EXPECT_FALSE(exif::mayHaveProperties(cut)) << cut;
}

TEST(ExtendedXmp, IsNothingUnlessEachByteIsThereOnce) {
  const XmpPart first = {.guid = "A", .total = 4, .offset = 0, .bytes = "ab"};
  const auto part = [](std::uint64_t total, std::uint64_t offset, const char* bytes) {
    return XmpPart{.guid = "A", .total = total, .offset = offset, .bytes = bytes};
  };
  EXPECT_EQ(joinedXmp({first}, "A"), "");
  EXPECT_EQ(joinedXmp({first, part(4, 3, "d")}, "A"), "");
  EXPECT_EQ(joinedXmp({first, part(4, 1, "bcd")}, "A"), "");
  EXPECT_EQ(joinedXmp({first, first, part(4, 2, "cd")}, "A"), "");
  EXPECT_EQ(joinedXmp({first, part(4, 2, "cde")}, "A"), "");
  EXPECT_EQ(joinedXmp({first, part(5, 2, "cd")}, "A"), "");
  EXPECT_EQ(joinedXmp({part(0, 0, "")}, "A"), "");
  const std::string large(exif::kLargestBlock + 1, 'x');
  EXPECT_EQ(joinedXmp({part(large.size(), 0, large.c_str())}, "A"), "");
}

}  // namespace

}  // namespace kolum::test
