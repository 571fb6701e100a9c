#include "host/documents/SDOMXMLWrapper.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/documents/SDOMXMLIterator.h"

namespace {

const char* kDocument =
    "<?xml version=\"1.0\"?>\n"
    "<Root kind=\"test\">\n"
    "  <Settings>\n"
    "    <Parameter name=\"A\" value=\"1\"/>\n"
    "    <Parameter name=\"B\" value=\"\"/>\n"
    "    <Parameter name=\"C\"/>\n"
    "    <Other/>\n"
    "  </Settings>\n"
    "  <Model>\n"
    "    <Summary algorithmName=\"GLMM\"/>\n"
    "    <Data description=\"first\"><Array n=\"3\">1 2.5 __MISSING__</Array></Data>\n"
    "    <Data description=\"second\"><Leaf text=\"x\"/></Data>\n"
    "  </Model>\n"
    "</Root>\n";

std::vector<std::string> Names(SDOMXMLIterator* it, const std::string& attribute) {
  std::vector<std::string> out;
  SDOMXMLWrapper* element = nullptr;
  while (it->Next(&element)) {
    std::string value = "<absent>";
    element->GetAttribute(attribute, value);
    out.push_back(value);
  }
  return out;
}

}  // namespace

TEST(SDOMXMLWrapper, InitializingThePlatformRepeatedlyIsHarmless) {
  SDOMXMLWrapper::InitializePlatform();
  SDOMXMLWrapper::InitializePlatform();
  SDOMXMLWrapper doc;
  EXPECT_TRUE(doc.LoadFromString("<a/>"));
  SDOMXMLWrapper::InitializePlatform();
  EXPECT_EQ(doc.GetName(), "a");
}

TEST(SDOMXMLWrapper, LoadsAWellFormedDocumentAsItsRootElement) {
  SDOMXMLWrapper doc;
  EXPECT_FALSE(doc.IsLoaded());
  ASSERT_TRUE(doc.LoadFromString(kDocument)) << doc.GetLastError();
  EXPECT_TRUE(doc.IsLoaded());
  EXPECT_EQ(doc.GetName(), "Root");
  EXPECT_TRUE(doc.GetLastError().empty());
  std::string kind;
  EXPECT_TRUE(doc.GetAttribute("kind", kind));
  EXPECT_EQ(kind, "test");
}

TEST(SDOMXMLWrapper, ReportsMalformedDocumentsWithLineAndColumn) {
  SDOMXMLWrapper doc;
  EXPECT_FALSE(doc.LoadFromString("<a>\n  <b>\n</a>"));
  EXPECT_FALSE(doc.IsLoaded());
  EXPECT_FALSE(doc.GetLastError().empty());
  EXPECT_EQ(doc.GetErrorLine(), 3);
  EXPECT_GT(doc.GetErrorColumn(), 0);

  EXPECT_FALSE(doc.LoadFromString(""));
  EXPECT_FALSE(doc.GetLastError().empty());
  EXPECT_FALSE(doc.LoadFromString("just text"));
  EXPECT_FALSE(doc.LoadFromString("<a attr=\"1\" attr=\"2\"/>"));
  EXPECT_FALSE(doc.LoadFromString("<a></b>"));
  EXPECT_FALSE(doc.LoadFromString("<a>&undefined;</a>"));
  EXPECT_FALSE(doc.LoadFromString("<a/><b/>"));
  EXPECT_FALSE(doc.LoadFromString(std::string("<a>\0</a>", 8)));
  EXPECT_FALSE(doc.LoadFromString("<p:a/>"));  // an unbound prefix
  EXPECT_FALSE(doc.LoadFromString("<a>\xff\xfe</a>"));
}

TEST(SDOMXMLWrapper, LoadingAlongPathsHoldsOnlyTheirElements) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(kDocument, {"Model/Data"})) << doc.GetLastError();
  EXPECT_EQ(doc.GetName(), "Root");
  SDOMXMLWrapper* element = nullptr;
  // Off the path: not held, empty elements among them.
  EXPECT_FALSE(doc.GetFirstElement("Settings", &element));
  EXPECT_FALSE(doc.GetFirstElement("Model/Summary", &element));
  // Along it: the path's last elements with all they hold, empty ones
  // included, and the attributes and text of each.
  SDOMXMLIterator* data = nullptr;
  SDOMXMLWrapper* model = nullptr;
  ASSERT_TRUE(doc.GetFirstElement("Model", &model));
  ASSERT_TRUE(model->GetElementIterator("Data", &data));
  EXPECT_EQ(Names(data, "description"), (std::vector<std::string>{"first", "second"}));
  ASSERT_TRUE(doc.GetFirstElement("Model/Data/Array", &element));
  EXPECT_EQ(element->GetText(), "1 2.5 __MISSING__");
  ASSERT_TRUE(doc.GetFirstElement("Model/Data/Leaf", &element));
  std::string text;
  EXPECT_TRUE(element->GetAttribute("text", text));
  EXPECT_EQ(text, "x");

  // Two paths, one of them an empty element.
  ASSERT_TRUE(doc.LoadFromString(kDocument, {"Settings/Other", "Model/Summary"})) << doc.GetLastError();
  EXPECT_TRUE(doc.GetFirstElement("Settings/Other", &element));
  EXPECT_FALSE(doc.GetFirstElement("Settings/Parameter", &element));
  EXPECT_TRUE(doc.GetFirstElement("Model/Summary", &element));
  EXPECT_FALSE(doc.GetFirstElement("Model/Data", &element));

  // A path that names nothing holds the root alone; one that cannot name an
  // element too.
  ASSERT_TRUE(doc.LoadFromString(kDocument, {"Nothing"}));
  EXPECT_FALSE(doc.GetFirstElement("Settings", &element));
  ASSERT_TRUE(doc.LoadFromString(kDocument, {"Model//Data"}));
  EXPECT_FALSE(doc.GetFirstElement("Model", &element));

  // What is not held is still read: a document broken there fails, at its
  // place.
  EXPECT_FALSE(doc.LoadFromString("<a>\n  <b><c></b>\n  <d/>\n</a>", {"d"}));
  EXPECT_EQ(doc.GetErrorLine(), 2);
  EXPECT_FALSE(doc.IsLoaded());
}

TEST(SDOMXMLWrapper, AFailedLoadLeavesNothingBehindAndAGoodOneClearsTheError) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString("<a><b/></a>"));
  EXPECT_FALSE(doc.LoadFromString("<a>"));
  EXPECT_FALSE(doc.IsLoaded());
  SDOMXMLWrapper* b = nullptr;
  EXPECT_FALSE(doc.GetFirstElement("b", &b));
  EXPECT_EQ(b, nullptr);
  ASSERT_TRUE(doc.LoadFromString("<a><b/></a>"));
  EXPECT_TRUE(doc.GetLastError().empty());
  EXPECT_EQ(doc.GetErrorLine(), 0);
  EXPECT_TRUE(doc.GetFirstElement("b", &b));
}

TEST(SDOMXMLWrapper, DoesNotReadExternalEntities) {
  SDOMXMLWrapper doc;
  std::string text = std::string("<!DOCTYPE a [<!ENTITY other SYSTEM \"file://") + GLMIX_TEST_DATA_DIR +
                     "/documents/build-settings.xml\">]><a>&other;</a>";
  if (doc.LoadFromString(text)) {
    EXPECT_EQ(doc.GetText().find("TargetField"), std::string::npos);
  } else {
    EXPECT_FALSE(doc.GetLastError().empty());
  }
}

TEST(SDOMXMLWrapper, LimitsTheExpansionOfInternalEntities) {
  std::string text = "<!DOCTYPE a [<!ENTITY e0 \"xxxxxxxxxx\">";
  for (int i = 1; i < 8; ++i) {
    std::string prev = "&e" + std::to_string(i - 1) + ";";
    std::string body;
    for (int k = 0; k < 10; ++k) body += prev;
    text += "<!ENTITY e" + std::to_string(i) + " \"" + body + "\">";
  }
  text += "]><a>&e7;</a>";
  SDOMXMLWrapper doc;
  EXPECT_FALSE(doc.LoadFromString(text));
  EXPECT_FALSE(doc.GetLastError().empty());
}

TEST(SDOMXMLWrapper, ExpandsPredefinedAndCharacterEntities) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString("<a v=\"&lt;&amp;&gt;&quot;&#233;\">x &amp; y</a>"));
  std::string v;
  ASSERT_TRUE(doc.GetAttribute("v", v));
  EXPECT_EQ(v, "<&>\"\xc3\xa9");
  EXPECT_EQ(doc.GetText(), "x & y");
}

TEST(SDOMXMLWrapper, FindsTheFirstElementAlongAPath) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(kDocument));
  SDOMXMLWrapper* summary = nullptr;
  ASSERT_TRUE(doc.GetFirstElement("Model/Summary", &summary, true));
  ASSERT_NE(summary, nullptr);
  EXPECT_EQ(summary->GetName(), "Summary");
  std::string name;
  EXPECT_TRUE(summary->GetAttribute("algorithmName", name));
  EXPECT_EQ(name, "GLMM");

  // Only children are searched at each step, not deeper descendants.
  SDOMXMLWrapper* none = reinterpret_cast<SDOMXMLWrapper*>(&doc);
  EXPECT_FALSE(doc.GetFirstElement("Summary", &none));
  EXPECT_EQ(none, nullptr);
  EXPECT_FALSE(doc.GetFirstElement("Model/Missing", &none));
  EXPECT_FALSE(doc.GetFirstElement("", &none));
  EXPECT_FALSE(doc.GetFirstElement("Model/", &none));
  EXPECT_FALSE(doc.GetFirstElement("/Model", &none));
  EXPECT_FALSE(doc.GetFirstElement("Model//Summary", &none));
  EXPECT_FALSE(doc.GetFirstElement("model", &none));  // names are case-sensitive
  EXPECT_FALSE(doc.GetFirstElement("Model", nullptr));
}

TEST(SDOMXMLWrapper, APathStepMayTryLaterSiblingsOfTheSameName) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(kDocument));
  SDOMXMLWrapper* leaf = nullptr;
  ASSERT_TRUE(doc.GetFirstElement("Model/Data/Leaf", &leaf));
  std::string text;
  EXPECT_TRUE(leaf->GetAttribute("text", text));
  EXPECT_EQ(text, "x");
}

TEST(SDOMXMLWrapper, MatchesElementsByLocalNameWhateverTheirNamespace) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(
      "<s:Root xmlns:s=\"urn:a\" xmlns=\"urn:b\"><Child/><s:Child/></s:Root>"));
  EXPECT_EQ(doc.GetName(), "Root");
  SDOMXMLIterator* it = nullptr;
  ASSERT_TRUE(doc.GetElementIterator("Child", &it));
  EXPECT_EQ(it->GetCount(), 2u);
}

TEST(SDOMXMLWrapper, IteratesChildrenOfOneNameInDocumentOrder) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(kDocument));
  SDOMXMLWrapper* settings = nullptr;
  ASSERT_TRUE(doc.GetFirstElement("Settings", &settings));
  SDOMXMLIterator* it = nullptr;
  ASSERT_TRUE(settings->GetElementIterator("Parameter", &it, true));
  ASSERT_NE(it, nullptr);
  EXPECT_EQ(it->GetCount(), 3u);
  EXPECT_EQ(Names(it, "name"), (std::vector<std::string>{"A", "B", "C"}));
  SDOMXMLWrapper* element = settings;
  EXPECT_FALSE(it->Next(&element));
  EXPECT_EQ(element, nullptr);
  EXPECT_FALSE(it->Next(nullptr));
  it->Reset();
  EXPECT_EQ(Names(it, "value"), (std::vector<std::string>{"1", "", "<absent>"}));

  SDOMXMLIterator* none = it;
  EXPECT_FALSE(settings->GetElementIterator("Missing", &none));
  EXPECT_EQ(none, nullptr);
  EXPECT_FALSE(settings->GetElementIterator("", &none));
  EXPECT_FALSE(settings->GetElementIterator("Parameter", nullptr));
  // Grandchildren are not children.
  EXPECT_FALSE(doc.GetElementIterator("Parameter", &none));
}

TEST(SDOMXMLWrapper, ANullParentHasNothing) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(kDocument));
  SDOMXMLWrapper* missing = nullptr;
  EXPECT_FALSE(doc.GetFirstElement("Training", &missing));
  SDOMXMLIterator* it = reinterpret_cast<SDOMXMLIterator*>(&doc);
  EXPECT_FALSE(SDOMXMLWrapper::GetElementIterator(missing, "Message", &it, true));
  EXPECT_EQ(it, nullptr);
  SDOMXMLWrapper* element = &doc;
  EXPECT_FALSE(SDOMXMLWrapper::GetFirstElement(missing, "Message", &element));
  EXPECT_EQ(element, nullptr);

  SDOMXMLWrapper* model = nullptr;
  ASSERT_TRUE(doc.GetFirstElement("Model", &model));
  EXPECT_TRUE(SDOMXMLWrapper::GetElementIterator(model, "Data", &it));
  EXPECT_EQ(it->GetCount(), 2u);
  EXPECT_TRUE(SDOMXMLWrapper::GetFirstElement(model, "Summary", &element));
  EXPECT_EQ(element->GetName(), "Summary");
}

TEST(SDOMXMLWrapper, AttributesDistinguishAbsentFromEmpty) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString("<a empty=\"\" full=\" x \"/>"));
  std::string value = "unchanged";
  EXPECT_FALSE(doc.GetAttribute("missing", value));
  EXPECT_EQ(value, "unchanged");
  EXPECT_FALSE(doc.GetAttribute("", value));
  EXPECT_TRUE(doc.GetAttribute("empty", value));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(doc.GetAttribute("full", value));
  EXPECT_EQ(value, " x ");
  EXPECT_TRUE(doc.HasAttribute("empty"));
  EXPECT_FALSE(doc.HasAttribute("Empty"));
}

TEST(SDOMXMLWrapper, ReadsTextContentAsUTF8) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString("<a>caf\xc3\xa9 <b>and</b> <![CDATA[<raw>]]></a>"));
  EXPECT_EQ(doc.GetText(), "caf\xc3\xa9 and <raw>");
}

TEST(SDOMXMLWrapper, ReadsDocumentsInOtherEncodings) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a v=\"\xe9\"/>"));
  std::string v;
  ASSERT_TRUE(doc.GetAttribute("v", v));
  EXPECT_EQ(v, "\xc3\xa9");
}

TEST(SDOMXMLWrapper, ReadsSimpleArrays) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(kDocument));
  SDOMXMLWrapper* array = nullptr;
  ASSERT_TRUE(doc.GetFirstElement("Model/Data/Array", &array));
  std::vector<std::string> items{"stale"};
  EXPECT_TRUE(array->GetSimpleArray(items));
  EXPECT_EQ(items, (std::vector<std::string>{"1", "2.5", "__MISSING__"}));
}

TEST(SDOMXMLWrapper, ReadsQuotedArrayItems) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromString(
      "<Array type=\"string\">\"a b\"  plain\n\t\"\" \"say \\\"hi\\\"\" \"back\\\\slash\" \"c:\\dir\"</Array>"));
  std::vector<std::string> items;
  EXPECT_TRUE(doc.GetSimpleArray(items));
  EXPECT_EQ(items, (std::vector<std::string>{"a b", "plain", "", "say \"hi\"", "back\\slash", "c:\\dir"}));
}

TEST(SDOMXMLWrapper, ReportsBadArraysButKeepsWhatItRead) {
  SDOMXMLWrapper doc;
  std::vector<std::string> items;
  ASSERT_TRUE(doc.LoadFromString("<Array>1 \"open</Array>"));
  EXPECT_FALSE(doc.GetSimpleArray(items));
  EXPECT_EQ(items, (std::vector<std::string>{"1", "open"}));

  ASSERT_TRUE(doc.LoadFromString("<Array n=\"3\">1 2</Array>"));
  EXPECT_FALSE(doc.GetSimpleArray(items));
  EXPECT_EQ(items.size(), 2u);

  ASSERT_TRUE(doc.LoadFromString("<Array n=\"two\">1 2</Array>"));
  EXPECT_FALSE(doc.GetSimpleArray(items));

  ASSERT_TRUE(doc.LoadFromString("<Array n=\"0\">  </Array>"));
  EXPECT_TRUE(doc.GetSimpleArray(items));
  EXPECT_TRUE(items.empty());
}

TEST(SDOMXMLWrapper, ElementsHandedToTheCallerOutliveTheirDocument) {
  SDOMXMLWrapper* summary = nullptr;
  SDOMXMLIterator* it = nullptr;
  {
    SDOMXMLWrapper doc;
    ASSERT_TRUE(doc.LoadFromString(kDocument));
    ASSERT_TRUE(doc.GetFirstElement("Model/Summary", &summary, false));
    SDOMXMLWrapper* model = nullptr;
    ASSERT_TRUE(doc.GetFirstElement("Model", &model));
    ASSERT_TRUE(model->GetElementIterator("Data", &it, false));
  }
  std::unique_ptr<SDOMXMLWrapper> ownedSummary(summary);
  std::unique_ptr<SDOMXMLIterator> ownedIterator(it);
  std::string name;
  EXPECT_TRUE(ownedSummary->GetAttribute("algorithmName", name));
  EXPECT_EQ(name, "GLMM");
  EXPECT_EQ(Names(ownedIterator.get(), "description"), (std::vector<std::string>{"first", "second"}));
}

TEST(SDOMXMLWrapper, AnEmptyWrapperAnswersEverythingWithNothing) {
  SDOMXMLWrapper doc;
  SDOMXMLWrapper* element = nullptr;
  SDOMXMLIterator* it = nullptr;
  std::string value = "kept";
  std::vector<std::string> items{"x"};
  EXPECT_EQ(doc.GetName(), "");
  EXPECT_FALSE(doc.GetFirstElement("a", &element));
  EXPECT_FALSE(doc.GetElementIterator("a", &it));
  EXPECT_FALSE(doc.GetAttribute("a", value));
  EXPECT_EQ(value, "kept");
  EXPECT_EQ(doc.GetText(), "");
  EXPECT_FALSE(doc.GetSimpleArray(items));
  EXPECT_TRUE(items.empty());
}

TEST(SDOMXMLWrapper, LoadsFromAFile) {
  SDOMXMLWrapper doc;
  ASSERT_TRUE(doc.LoadFromFile(std::string(GLMIX_TEST_DATA_DIR) + "/documents/build-settings.xml"))
      << doc.GetLastError();
  EXPECT_EQ(doc.GetName(), "StatXML");
  SDOMXMLWrapper* value = nullptr;
  ASSERT_TRUE(doc.GetFirstElement(
      "BuildSettings/Parameter/ListValue/StructuredValue/Attribute/ListValue/Value", &value));
  std::string field;
  EXPECT_TRUE(value->GetAttribute("value", field));
  EXPECT_EQ(field, "group");
}

TEST(SDOMXMLWrapper, ReportsAFileThatCannotBeOpened) {
  SDOMXMLWrapper doc;
  EXPECT_FALSE(doc.LoadFromFile(std::string(GLMIX_TEST_DATA_DIR) + "/documents/no-such-file.xml"));
  EXPECT_NE(doc.GetLastError().find("no-such-file.xml"), std::string::npos);
  EXPECT_FALSE(doc.IsLoaded());
}

TEST(SDOMXMLIterator, WalksAGivenListAndOwnsIt) {
  std::vector<std::unique_ptr<SDOMXMLWrapper>> none;
  SDOMXMLIterator empty(std::move(none));
  SDOMXMLWrapper* element = nullptr;
  EXPECT_EQ(empty.GetCount(), 0u);
  EXPECT_FALSE(empty.Next(&element));
  EXPECT_EQ(element, nullptr);
}
