#include "numeric/common/MCMarkupText.h"

#include <gtest/gtest.h>

#include <string>

using MCCommon_850::MCMarkupText;

namespace {

const std::string kFFFD = "\xEF\xBF\xBD";

std::string Content(const std::string& text) { return MCMarkupText::Escape(text, MCMarkupText::XML_CONTENT); }
std::string Attribute(const std::string& text) { return MCMarkupText::Escape(text, MCMarkupText::XML_ATTRIBUTE); }
std::string Html(const std::string& text) { return MCMarkupText::Escape(text, MCMarkupText::HTML); }

}  // namespace

TEST(MCMarkupText, MarkupCharactersBecomeEntities) {
  EXPECT_EQ(Content("a < b & c > \"d\" 'e'"), "a &lt; b &amp; c &gt; \"d\" 'e'");
  EXPECT_EQ(Attribute("a < b & c > \"d\" 'e'"), "a &lt; b &amp; c &gt; &quot;d&quot; 'e'");
  EXPECT_EQ(Html("<a href='x'>&\"</a>"), "&lt;a href=&#39;x&#39;&gt;&amp;&quot;&lt;/a&gt;");
}

TEST(MCMarkupText, LineEndsAndTabs) {
  EXPECT_EQ(Content("a\tb\nc\rd"), "a\tb\nc&#13;d");
  EXPECT_EQ(Attribute("a\tb\nc\rd"), "a&#9;b&#10;c&#13;d");
  EXPECT_EQ(Html("a\tb\r\nc"), "a\tb\nc");
}

TEST(MCMarkupText, ControlCharactersBecomeBlanks) {
  const std::string controls("a\x01" "b\x1F" "c\x7F" "d\0e", 9);
  EXPECT_EQ(Content(controls), std::string("a b c\x7F" "d e"));
  EXPECT_EQ(Attribute(controls), std::string("a b c\x7F" "d e"));
  EXPECT_EQ(Html(controls), "a b c d e");
}

TEST(MCMarkupText, MalformedUtf8BecomesTheReplacementCharacter) {
  for (MCMarkupText::Context context : {MCMarkupText::XML_CONTENT, MCMarkupText::XML_ATTRIBUTE, MCMarkupText::HTML}) {
    EXPECT_EQ(MCMarkupText::Escape("\xC0\xAF", context), kFFFD + kFFFD);
    EXPECT_EQ(MCMarkupText::Escape("\xED\xA0\x80", context), kFFFD + kFFFD + kFFFD);
    EXPECT_EQ(MCMarkupText::Escape("a\xFF" "b", context), "a" + kFFFD + "b");
    EXPECT_EQ(MCMarkupText::Escape("Z\xC3\xBCrich \xF0\x9F\x98\x80", context), "Z\xC3\xBCrich \xF0\x9F\x98\x80");
  }
}

TEST(MCMarkupText, XmlReplacesItsTwoNonCharacters) {
  EXPECT_EQ(Content("\xEF\xBF\xBE\xEF\xBF\xBF"), kFFFD + kFFFD);
  EXPECT_EQ(Attribute("\xEF\xBF\xBE"), kFFFD);
  EXPECT_EQ(Html("\xEF\xBF\xBE"), "\xEF\xBF\xBE");
}
