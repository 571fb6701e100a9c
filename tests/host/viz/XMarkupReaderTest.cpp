#include <gtest/gtest.h>

#include <string>

#include "host/viz/XMarkupReader.h"
#include "host/viz/XMarkupWriter.h"

namespace {

std::unique_ptr<XMarkupNode> Read(const std::string& text) {
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  EXPECT_TRUE(root) << error.ToText();
  return root;
}

XMarkupError Refused(const std::string& text) {
  XMarkupError error;
  EXPECT_FALSE(XMarkupReader::Read(text, error));
  return error;
}

}  // namespace

TEST(XMarkupReader, ReadsElementsAttributesAndTextInOrder) {
  const std::string text =
      "<?xml version=\"1.0\"?>\n<chart b=\"2\" a=\"1 &amp; 2\">\n  <title><text>A<BR/>B &lt; "
      "C</text></title>\n</chart>";
  auto root = Read(text);
  ASSERT_TRUE(root);
  EXPECT_EQ(root->fName, "chart");
  ASSERT_EQ(root->fvAttributes.size(), 2u);
  EXPECT_EQ(root->fvAttributes[0].first, "b");
  EXPECT_EQ(root->Attribute("a"), "1 & 2");
  EXPECT_EQ(root->Attribute("missing", "fallback"), "fallback");
  const XMarkupNode* inner = root->FindDescendant("text");
  ASSERT_NE(inner, nullptr);
  ASSERT_EQ(inner->fvChildren.size(), 3u);
  EXPECT_EQ(inner->fvChildren[0]->fText, "A");
  EXPECT_EQ(inner->fvChildren[1]->fName, "BR");
  EXPECT_EQ(inner->fvChildren[2]->fText, "B < C");
  EXPECT_EQ(inner->fpParent->fName, "title");
}

TEST(XMarkupReader, RemembersWhereEachElementStands) {
  const std::string text =
      "<chart>\n  <data><variable source=\"s\" name=\"\xc3\xa9\"/></data>\n  <graph>\xc3\xa9<point/></graph></chart>";
  auto root = Read(text);
  ASSERT_TRUE(root);
  const XMarkupNode* data = root->FirstChild("data");
  const XMarkupNode* variable = data->FirstChild("variable");
  EXPECT_EQ(text.substr(data->fStart, data->fEnd - data->fStart),
            "<data><variable source=\"s\" name=\"\xc3\xa9\"/></data>");
  EXPECT_EQ(text.substr(data->fStart, data->fStartTagEnd - data->fStart), "<data>");
  EXPECT_FALSE(data->fbEmptyTag);
  EXPECT_TRUE(variable->fbEmptyTag);
  EXPECT_EQ(variable->fEnd, variable->fStartTagEnd);
  EXPECT_EQ(text.substr(variable->fStart, variable->fEnd - variable->fStart),
            "<variable source=\"s\" name=\"\xc3\xa9\"/>");
  EXPECT_EQ(data->fLine, 2);
  EXPECT_EQ(data->fColumn, 3);
  // Columns count characters, not bytes.
  const XMarkupNode* point = root->FindDescendant("point");
  EXPECT_EQ(point->fLine, 3);
  EXPECT_EQ(point->fColumn, 11);
}

TEST(XMarkupReader, SaysWhereMalformedMarkupGoesWrong) {
  XMarkupError error = Refused("<chart>\n  <graph>\n</chart>");
  EXPECT_EQ(error.fLine, 3);
  EXPECT_NE(error.fMessage.find("mismatched tag"), std::string::npos) << error.fMessage;
  EXPECT_EQ(error.ToText().rfind("line 3, column ", 0), 0u);

  error = Refused("<chart a=\"1\" a=\"2\"/>");
  EXPECT_EQ(error.fLine, 1);
  error = Refused("<chart>&nosuch;</chart>");
  EXPECT_NE(error.fMessage.find("entity"), std::string::npos) << error.fMessage;
  error = Refused("<chart>caf\xff</chart>");
  EXPECT_EQ(error.fLine, 1);
  error = Refused("<chart/><chart/>");
  EXPECT_NE(error.fMessage.find("junk"), std::string::npos) << error.fMessage;
  error = Refused(" \n\t");
  EXPECT_EQ(error.ToText(), "the chart markup is empty");
  error = Refused("<chart");
  EXPECT_EQ(error.fLine, 1);
}

TEST(XMarkupReader, RefusesDocumentTypesAndSoEntityBombs) {
  const std::string bomb =
      "<?xml version=\"1.0\"?><!DOCTYPE chart [<!ENTITY a \"aaaaaaaaaa\">"
      "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
      "<chart>&c;</chart>";
  XMarkupError error = Refused(bomb);
  EXPECT_NE(error.fMessage.find("document type declaration"), std::string::npos) << error.fMessage;
  error = Refused("<!DOCTYPE chart SYSTEM \"file:///etc/passwd\"><chart/>");
  EXPECT_NE(error.fMessage.find("document type declaration"), std::string::npos);
}

TEST(XMarkupReader, RefusesElementsNestedTooDeep) {
  std::string deep;
  for (int i = 0; i < XMarkupReader::kMaxDepth + 1; ++i) deep += "<a>";
  for (int i = 0; i < XMarkupReader::kMaxDepth + 1; ++i) deep += "</a>";
  const XMarkupError error = Refused(deep);
  EXPECT_NE(error.fMessage.find("nest deeper"), std::string::npos);
  std::string allowed;
  for (int i = 0; i < XMarkupReader::kMaxDepth; ++i) allowed += "<a>";
  for (int i = 0; i < XMarkupReader::kMaxDepth; ++i) allowed += "</a>";
  EXPECT_TRUE(Read(allowed));
}

TEST(XMarkupWriter, WritesWhatReadsBackTheSame) {
  const std::string text =
      "<chart kind=\"k\" label=\"a&quot;b &lt;c&gt; &amp;\">\n <title><text>x<BR/>y &amp; "
      "z</text></title><empty/></chart>";
  auto root = Read(text);
  ASSERT_TRUE(root);
  const std::string written = XMarkupWriter::Write(*root);
  EXPECT_EQ(written,
            "<chart kind=\"k\" label=\"a&quot;b &lt;c&gt; &amp;\">\n <title><text>x<BR/>y &amp; "
            "z</text></title><empty/></chart>");
  // Line feeds and tabs in attribute values survive a second reading.
  root->SetAttribute("label", "one\ntwo\tthree");
  auto again = Read(XMarkupWriter::Write(*root));
  ASSERT_TRUE(again);
  EXPECT_EQ(again->Attribute("label"), "one\ntwo\tthree");
  EXPECT_EQ(XMarkupWriter::Content("a<b>&\"'"), "a&lt;b&gt;&amp;\"'");
  // Bytes that are not UTF-8 are written as replacement characters, so the
  // text written is always markup.
  EXPECT_EQ(XMarkupWriter::AttributeValue("a\xff"), "a\xef\xbf\xbd");
}
