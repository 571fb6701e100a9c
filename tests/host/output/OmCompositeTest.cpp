#include "host/output/OmComposite.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/output/OmMemoryRegion.h"
#include "host/output/OmParseTreeNode.h"
#include "host/output/OmStringCell.h"

namespace {

// Expands `pattern` with plain arguments and, when `list` is given, a list
// argument at the position `listAt` (counted from 0 among the arguments).
std::string Expand(const std::string& pattern, const std::vector<std::string>& arguments,
                   const std::vector<std::string>* list = nullptr, std::size_t listAt = 0) {
  OmComposite composite(pattern);
  for (std::size_t i = 0; i <= arguments.size(); ++i) {
    if (list != nullptr && i == listAt) {
      composite.BeginRepeatList();
      for (const std::string& item : *list) composite.Add(OmStringCell(item));
      composite.EndRepeatList();
    }
    if (i < arguments.size()) composite.Add(OmStringCell(arguments[i]));
  }
  composite.End();
  return composite.AsString();
}

}  // namespace

TEST(OmComposite, ReplacesArgumentMarkers) {
  EXPECT_EQ(Expand("Dependent Variable: ^1.", {"y"}), "Dependent Variable: y.");
  EXPECT_EQ(Expand("^2 before ^1, ^1 again", {"a", "b"}), "b before a, a again");
  EXPECT_EQ(Expand("^1% Confidence Interval", {"95"}), "95% Confidence Interval");
}

TEST(OmComposite, WritesPairsFromAList) {
  std::vector<std::string> pairs = {"A", "1", "B", "2"};
  EXPECT_EQ(Expand("[%1=%2:,^1=^2:]1", {}, &pairs), "A=1,B=2");
  EXPECT_EQ(Expand("[%1 = %2:,^1 = ^2:]1", {}, &pairs), "A = 1,B = 2");
  EXPECT_EQ(Expand("[%1 = %2:, ^1 = ^2:]1", {}, &pairs), "A = 1, B = 2");
}

TEST(OmComposite, ListOpensInThePlaceOfItsArgument) {
  std::vector<std::string> effects = {"(Intercept)", "A", "A*B"};
  EXPECT_EQ(Expand("Dependent ^1 Model [%1:, ^1:]2", {"y"}, &effects, 1), "Dependent y Model (Intercept), A, A*B");
  std::vector<std::string> split = {"sex", "F"};
  EXPECT_EQ(Expand("request number ^1 for split file [%1 = %2:,^1 = ^2:]2.", {"3"}, &split, 1),
            "request number 3 for split file sex = F.");
}

TEST(OmComposite, EmptyListExpandsToNothing) {
  std::vector<std::string> none;
  EXPECT_EQ(Expand("Split [%1=%2:,^1=^2:]1 done", {}, &none), "Split  done");
}

TEST(OmComposite, EmptyFirstTextUsesTheRestTextForEveryElement) {
  std::vector<std::string> pieces = {std::string(3, 'a'), "b"};
  EXPECT_EQ(Expand("[:^1:]1", {}, &pieces), "aaab");
}

TEST(OmComposite, SeparatesElementsWithLineFeeds) {
  std::vector<std::string> notes = {"first", "second"};
  EXPECT_EQ(Expand("[%1:\n^1:]1", {}, &notes), "first\nsecond");
}

TEST(OmComposite, PlainArgumentWhereAListIsExpectedIsAListOfOne) {
  EXPECT_EQ(Expand("[%1:, ^1:]1", {"alone"}), "alone");
}

TEST(OmComposite, ListUsedAsPlainArgumentJoinsItsItems) {
  std::vector<std::string> items = {"a", "b", "c"};
  EXPECT_EQ(Expand("items: ^1", {}, &items), "items: a, b, c");
}

TEST(OmComposite, MarkerBeyondTheArgumentsStaysAsWritten) {
  EXPECT_EQ(Expand("^1 and ^3", {"x"}), "x and ^3");
  OmComposite composite("^1 and ^2");
  composite.Add(OmStringCell("x"));
  composite.End();
  OmParseTreeNode* tree = nullptr;
  EXPECT_FALSE(composite.Substitute(&tree, true));
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(tree->AsString(), "x and ^2");
  EXPECT_FALSE(composite.Substitute(&tree, false));
  EXPECT_EQ(tree->AsString(), "x and ");
  EXPECT_EQ(composite.AsString(), "x and ");
}

TEST(OmComposite, AbsentListArgumentWritesNothing) {
  EXPECT_EQ(Expand("Structure: ^1[\n%1:\n^1:]2", {"Diagonal"}), "Structure: Diagonal");
}

TEST(OmComposite, MissingSubItemStaysAsWritten) {
  std::vector<std::string> odd = {"A", "1", "B"};
  EXPECT_EQ(Expand("[%1=%2:,^1=^2:]1", {}, &odd), "A=1,B=^2");
}

TEST(OmComposite, MalformedBracketsAreLiteral) {
  std::vector<std::string> pairs = {"A", "1"};
  // Without its closing ":]" the bracket is text; the carets in it are still
  // top-level markers.
  EXPECT_EQ(Expand("[%1=%2:,^1=^2]1", {}, &pairs), "[%1=%2:,A, 1=^2]1");
  EXPECT_EQ(Expand("open [%1:^1", {"x"}), "open [%1:x");
  EXPECT_EQ(Expand("[%1:^1:]", {"x"}), "[%1:x:]");
  EXPECT_EQ(Expand("a [b [%1:, ^1:]1", {}, &pairs), "a [b A, 1");
  EXPECT_EQ(Expand("[x]1 and ]2 and [", {"x"}), "[x]1 and ]2 and [");
}

TEST(OmComposite, CaretsAndPercentsWithoutDigitsAreLiteral) {
  EXPECT_EQ(Expand("^ ^x 100% ^0 %1", {"a"}), "^ ^x 100% ^0 %1");
  EXPECT_EQ(Expand("^99999999999999999999", {"a"}), "^99999999999999999999");
}

TEST(OmComposite, ArgumentsAreNotExpandedAgain) {
  EXPECT_EQ(Expand("^1", {"^2 [%1:^1:]1"}), "^2 [%1:^1:]1");
}

TEST(OmComposite, UnclosedListStillExpands) {
  OmComposite composite("^1: [%1=%2:, ^1=^2:]2");
  composite.Add(OmStringCell("split"));
  composite.BeginRepeatList();
  composite.Add(OmStringCell("A"));
  composite.Add(OmStringCell("1"));
  EXPECT_EQ(composite.AsString(), "split: A=1");
  composite.EndRepeatList();
  composite.EndRepeatList();  // nothing open: no effect
  composite.Add(OmStringCell("extra"));
  EXPECT_EQ(composite.GetArgumentCount(), 3);
}

TEST(OmComposite, NestedListIsOneItem) {
  OmComposite composite("[%1 / %2:; ^1 / ^2:]1");
  composite.BeginRepeatList();
  composite.Add(OmStringCell("a"));
  composite.BeginRepeatList();
  composite.Add(OmStringCell("b"));
  composite.Add(OmStringCell("c"));
  composite.EndRepeatList();
  composite.EndRepeatList();
  composite.End();
  EXPECT_EQ(composite.AsString(), "a / b, c");
}

TEST(OmComposite, CompositeCanBeAnArgumentOfAnother) {
  OmComposite inner("(^1)");
  inner.Add(OmStringCell("x"));
  OmComposite outer("f^1");
  outer.Add(inner);
  EXPECT_EQ(outer.AsString(), "f(x)");
}

TEST(OmComposite, GetSplitNameStyleUse) {
  OmComposite composite("[%1 = %2:, ^1 = ^2:]1");
  composite.BeginRepeatList();
  composite.Add(OmStringCell("region"));
  composite.Add(OmStringCell("North"));
  composite.Add(OmStringCell("year"));
  composite.Add(OmStringCell("2001"));
  composite.EndRepeatList();
  composite.End();
  OmParseTreeNode* tree = nullptr;
  EXPECT_TRUE(composite.Substitute(&tree, true));
  EXPECT_EQ(composite.AsString(), "region = North, year = 2001");
}

TEST(OmComposite, GivesBackEveryBlockOfItsRegion) {
  OmMemoryRegion region;
  {
    OmComposite composite("[%1=%2:,^1=^2:]1 ^2", region);
    composite.BeginRepeatList();
    composite.Add(OmStringCell("A"));
    composite.Add(OmStringCell("1"));
    composite.EndRepeatList();
    OmComposite inner("^1", region);
    inner.Add(OmStringCell("z"));
    composite.Add(inner);
    composite.End();
    EXPECT_GT(region.GetLiveBlocks(), 0u);
    composite.Substitute(nullptr, true);
    composite.Substitute(nullptr, true);
    EXPECT_EQ(composite.AsString(), "A=1 z");
  }
  EXPECT_EQ(region.GetLiveBlocks(), 0u);
}

TEST(OmParseTreeNode, ParsesMarkersAndLists) {
  OmMemoryRegion region;
  OmParseTreeNode* tree = OmParseTreeNode::Parse("a ^1 [%1=%2:,^1=^2:]2 b", region);
  ASSERT_EQ(tree->GetKind(), OmParseTreeNode::SEQUENCE);
  const auto& parts = tree->GetChildren();
  ASSERT_EQ(parts.size(), 5u);
  EXPECT_EQ(parts[0]->GetKind(), OmParseTreeNode::LITERAL);
  EXPECT_EQ(parts[1]->GetKind(), OmParseTreeNode::ARGUMENT);
  EXPECT_EQ(parts[1]->GetIndex(), 1);
  EXPECT_EQ(parts[3]->GetKind(), OmParseTreeNode::LIST);
  EXPECT_EQ(parts[3]->GetIndex(), 2);
  EXPECT_EQ(parts[3]->GetElementSize(), 2);
  EXPECT_EQ(parts[3]->GetFirstText()->AsString(), "%1=%2");
  EXPECT_EQ(parts[3]->GetRestText()->AsString(), ",^1=^2");
  EXPECT_EQ(tree->AsString(), "a ^1 [%1=%2:,^1=^2:]2 b");
  OmParseTreeNode::Destroy(tree, region);
  EXPECT_EQ(region.GetLiveBlocks(), 0u);
}
