#include "base/xml_node.h"

#include <gtest/gtest.h>

#include <string>

namespace {

XMLNode parse(const std::string& text, const char* tag, XmlError expected) {
  XmlResults results;
  const XMLNode node = XMLNode::parseString(text, tag, &results);
  EXPECT_EQ(results.error, expected);
  EXPECT_EQ(node.isEmpty(), expected != kXmlErrorNone);
  return node;
}

TEST(XmlNode, FindsElementByNameAnywhere) {
  const char* text = "<?xml version='1.0'?><a><b><c>first</c></b><c>second</c></a>";
  EXPECT_EQ(parse(text, "a", kXmlErrorNone).getName(), "a");
  EXPECT_EQ(parse(text, "c", kXmlErrorNone).getText(), "first");
  EXPECT_EQ(parse(text, nullptr, kXmlErrorNone).getName(), "a");
}

TEST(XmlNode, ReportsWhyNoElementWasFound) {
  parse("", "a", kXmlErrorEmpty);
  parse(" \r\n\t", "a", kXmlErrorEmpty);
  parse("no XML at all", "a", kXmlErrorNoTagFound);
  parse("<a><b></a>", "a", kXmlErrorNoTagFound);
  parse("<a>cut off", "a", kXmlErrorNoTagFound);
  parse(std::string("\0\0\0", 3), "a", kXmlErrorNoTagFound);
  parse("<!-- nothing -->", "a", kXmlErrorNoTagFound);
  parse("<a/>", "b", kXmlErrorTagMissing);
  parse("<A/>", "a", kXmlErrorTagMissing);
}

// Tools may print other text around their documents.
TEST(XmlNode, FindsElementAfterOtherText) {
  EXPECT_EQ(parse("reading file ...\n<ID3TAG><TITLE>t</TITLE></ID3TAG>", "TITLE", kXmlErrorNone)
                .getText(),
            "t");
  EXPECT_EQ(parse("<a/><b>second top</b>", "b", kXmlErrorNone).getText(), "second top");
  EXPECT_EQ(parse("\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>\n<!DOCTYPE a>\n<a>t</a>", "a",
                  kXmlErrorNone)
                .getText(),
            "t");
}

// An incomplete answer counts as none, so that callers ask again.
TEST(XmlNode, RejectsTruncatedDocument) {
  const std::string whole = "<output><part lang='en'>text</part></output>";
  for (std::size_t length = 1; length < whole.size(); ++length) {
    SCOPED_TRACE(whole.substr(0, length));
    parse(whole.substr(0, length), "output", kXmlErrorNoTagFound);
    parse(whole.substr(whole.size() - length), "output", kXmlErrorNoTagFound);
  }
}

TEST(XmlNode, DoesNotExpandTheDocumentsEntities) {
  const XMLNode node = parse(
      "<!DOCTYPE a [<!ENTITY x 'xx'><!ENTITY y '&x;&x;'><!ENTITY f SYSTEM 'file:///etc/passwd'>]>"
      "<a>&y;&f;</a>",
      "a", kXmlErrorNone);
  EXPECT_EQ(node.getText(), "&y;&f;");
}

TEST(XmlNode, PassesNonUtf8BytesThrough) {
  EXPECT_EQ(parse("<a>\xFF\xE9</a>", "a", kXmlErrorNone).getText(), "\xFF\xE9");
}

TEST(XmlNode, HasFixedErrorNumbers) {
  EXPECT_EQ(static_cast<int>(kXmlErrorNone), 0);
  EXPECT_EQ(static_cast<int>(kXmlErrorNoTagFound), 2);
  EXPECT_EQ(static_cast<int>(kXmlErrorEmpty), 3);
  EXPECT_EQ(static_cast<int>(kXmlErrorTagMissing), 11);
}

TEST(XmlNode, ParsesWithoutResults) {
  EXPECT_TRUE(XMLNode::parseString("no XML", "a").isEmpty());
  EXPECT_FALSE(XMLNode::parseString("<a/>", "a").isEmpty());
}

TEST(XmlNode, WalksChildElementsOnly) {
  const XMLNode node =
      parse("<a>text<b x='1'/><!-- c --><c/><b x='2'>t</b><![CDATA[d]]></a>", "a", kXmlErrorNone);
  EXPECT_EQ(node.nChildNode(), 3);
  EXPECT_EQ(node.nChildNode("b"), 2);
  EXPECT_EQ(node.nChildNode("z"), 0);
  EXPECT_EQ(node.getChildNode(1).getName(), "c");
  EXPECT_STREQ(node.getChildNode("b").getAttribute("x"), "1");
  EXPECT_STREQ(node.getChildNode("b", 1).getAttribute("x"), "2");
  EXPECT_TRUE(node.getChildNode("b", 2).isEmpty());
  EXPECT_TRUE(node.getChildNode(3).isEmpty());
  EXPECT_TRUE(node.getChildNode(-1).isEmpty());
  EXPECT_EQ(node.getText(), "text");
}

TEST(XmlNode, DecodesEntitiesAndCdata) {
  EXPECT_EQ(parse("<a>&lt;&amp;&#x41;</a>", "a", kXmlErrorNone).getText(), "<&A");
  EXPECT_EQ(parse("<a><![CDATA[<b>]]></a>", "a", kXmlErrorNone).getText(), "<b>");
  EXPECT_STREQ(parse("<a x='&quot;'/>", "a", kXmlErrorNone).getAttribute("x"), "\"");
}

TEST(XmlNode, ReturnsNothingWhenEmpty) {
  const XMLNode node;
  EXPECT_TRUE(node.isEmpty());
  EXPECT_EQ(node.getName(), "");
  EXPECT_EQ(node.getText(), "");
  EXPECT_EQ(node.getAttribute("x"), nullptr);
  EXPECT_EQ(node.nChildNode(), 0);
  EXPECT_TRUE(node.getChildNode(0).isEmpty());
  EXPECT_EQ(node.createXMLString(), "");
}

TEST(XmlNode, DistinguishesMissingFromEmptyAttribute) {
  const XMLNode node = parse("<a x=''/>", "a", kXmlErrorNone);
  EXPECT_STREQ(node.getAttribute("x"), "");
  EXPECT_EQ(node.getAttribute("y"), nullptr);
}

TEST(XmlNode, OutlivesItsParent) {
  XMLNode child;
  { child = parse("<a><b>kept</b></a>", "a", kXmlErrorNone).getChildNode("b"); }
  EXPECT_EQ(child.getText(), "kept");
}

TEST(XmlNode, SurvivesHostileDocuments) {
  std::string deep;
  for (int i = 0; i < 200'000; ++i) deep += "<a>";
  EXPECT_TRUE(XMLNode::parseString(deep, "b").isEmpty());
  for (int i = 0; i < 200'000; ++i) deep += "</a>";
  EXPECT_TRUE(XMLNode::parseString(deep, "b").isEmpty());
  const std::string wide = "<a>" + std::string(3'000'000, 'x') + "</a>";
  EXPECT_EQ(XMLNode::parseString(wide, "a").getText().size(), 3'000'000U);
}

TEST(XmlNode, WritesDocumentIndentedWithTabs) {
  XMLNode declaration = XMLNode::createXMLTopNode("xml", true);
  declaration.addAttribute("version", "1.0");
  XMLNode root = declaration.addChild("Root");
  XMLNode media = root.addChild("Media");
  media.addAttribute("Type", "a \"b\" <c>");
  media.addChild("Extension").addText("x & y");
  root.addChild("Empty");
  EXPECT_EQ(declaration.createXMLString(),
            "<?xml version=\"1.0\"?>\n"
            "<Root>\n"
            "\t<Media Type=\"a &quot;b&quot; &lt;c>\">\n"
            "\t\t<Extension>x &amp; y</Extension>\n"
            "\t</Media>\n"
            "\t<Empty />\n"
            "</Root>");
  EXPECT_EQ(root.createXMLString(false).find('\n'), std::string::npos);
}

TEST(XmlNode, WritesEmptyTextAsEmptyElement) {
  XMLNode top = XMLNode::createXMLTopNode("a");
  top.addChild("b").addText("");
  EXPECT_EQ(top.createXMLString(), "<a>\n\t<b />\n</a>");
  EXPECT_EQ(top.createXMLString(false), "<a><b/></a>");
}

TEST(XmlNode, ReadsBackWhatItWrote) {
  XMLNode top = XMLNode::createXMLTopNode("a");
  top.addAttribute("x", "<>&\"'\n");
  top.addText("<>&\"'");
  const XMLNode read = XMLNode::parseString(top.createXMLString(), "a");
  EXPECT_EQ(read.getText(), "<>&\"'");
  EXPECT_STREQ(read.getAttribute("x"), "<>&\"'\n");
}

}  // namespace
