#include <gtest/gtest.h>

#include <string>

#include "host/render/OmHtmlRenderer.h"
#include "host/render/OmJsonRenderer.h"
#include "host/render/OmOutline.h"
#include "host/render/OmTextRenderer.h"

namespace {

int Count(const std::string& text, const std::string& what) {
  int count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

// Two commands of the same kind in a row; the first writes its tables under
// headings that repeat.
OmDocument Repeating() {
  OmDocument document;
  OmHeading& command = document.fRoot.AddHeading("Mixed Model");
  command.AddMessage(OmMessage::NOTE, "first");
  command.AddHeading("Fixed Effects").AddMessage(OmMessage::NOTE, "tests");
  OmHeading& second = command.AddHeading("Fixed Effects");
  second.AddMessage(OmMessage::NOTE, "estimates");
  second.AddHeading("Detail").AddMessage(OmMessage::NOTE, "detail one");
  command.AddHeading("Fixed Effects").AddHeading("Detail").AddMessage(OmMessage::NOTE, "detail two");
  command.AddHeading("Random Effects").AddMessage(OmMessage::NOTE, "predictions");
  command.AddHeading("Fixed Effects").AddMessage(OmMessage::NOTE, "after");
  document.fRoot.AddHeading("Mixed Model").AddMessage(OmMessage::NOTE, "second");
  return document;
}

}  // namespace

TEST(OmOutlineTest, ConsecutiveHeadingsWithTheSameTextAreOneEntry) {
  const OmDocument document = Repeating();
  const OmHeading& command = *document.fRoot.fvItems[0].fpHeading;
  const std::vector<OmOutline::Entry> entries = OmOutline::Entries(OmOutline::ItemsOf(command), true);
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_NE(entries[0].fpItem, nullptr);
  EXPECT_EQ(entries[1].fpItem, nullptr);
  EXPECT_EQ(entries[1].fHeading, "Fixed Effects");
  // The contents of the three headings, in order.
  ASSERT_EQ(entries[1].fvContents.size(), 4u);
  EXPECT_EQ(entries[1].fvContents[0]->fpMessage->fText, "tests");
  EXPECT_EQ(entries[1].fvContents[1]->fpMessage->fText, "estimates");
  EXPECT_EQ(entries[2].fHeading, "Random Effects");
  EXPECT_EQ(entries[3].fHeading, "Fixed Effects");
  // Without merging every heading stands alone.
  EXPECT_EQ(OmOutline::Entries(OmOutline::ItemsOf(command), false).size(), 6u);
}

TEST(OmOutlineTest, TextShowsARepeatedHeadingOnceWithItsContentsInOrder) {
  const std::string text = OmTextRenderer().Render(Repeating());
  EXPECT_EQ(Count(text, "Fixed Effects\n"), 2);
  EXPECT_EQ(Count(text, "Detail\n"), 1);
  // Each command keeps its own heading.
  EXPECT_EQ(Count(text, "Mixed Model\n"), 2);
  const std::size_t tests = text.find("tests");
  const std::size_t estimates = text.find("estimates");
  const std::size_t one = text.find("detail one");
  const std::size_t two = text.find("detail two");
  const std::size_t predictions = text.find("predictions");
  const std::size_t after = text.find("after");
  ASSERT_NE(after, std::string::npos);
  EXPECT_LT(tests, estimates);
  EXPECT_LT(estimates, one);
  EXPECT_LT(one, two);
  EXPECT_LT(two, predictions);
  EXPECT_LT(predictions, after);
  EXPECT_NE(text.find("Fixed Effects\n-------------\n\nNote: tests\n\nNote: estimates\n\nDetail\n"), std::string::npos)
      << text;
}

TEST(OmOutlineTest, HtmlShowsARepeatedHeadingOnce) {
  const std::string html = OmHtmlRenderer().Render(Repeating());
  EXPECT_EQ(Count(html, "<h3>Fixed Effects</h3>"), 2);
  EXPECT_EQ(Count(html, "<h4>Detail</h4>"), 1);
  EXPECT_EQ(Count(html, "<h2>Mixed Model</h2>"), 2);
  EXPECT_EQ(Count(html, ">Fixed Effects</a>"), 2);
}

TEST(OmOutlineTest, JsonKeepsTheOutlineAsBuilt) {
  const std::string json = OmJsonRenderer().Render(Repeating());
  EXPECT_EQ(Count(json, "\"text\": \"Fixed Effects\""), 4);
  EXPECT_EQ(Count(json, "\"text\": \"Detail\""), 2);
}
