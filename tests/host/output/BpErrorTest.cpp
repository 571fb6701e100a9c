#include "host/output/BpError.h"

#include <gtest/gtest.h>

#include <string>

#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/AddNotes.h"
#include "host/output/BP_ToFront.h"
#include "host/output/BpComposite.h"
#include "host/output/BpNumber.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"

namespace {

class BpErrorTest : public ::testing::Test {
 protected:
  BpErrorTest() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {
    ZORV_Session::Current().BeginCommand();
  }
  ~BpErrorTest() override { ZORV_Session::Current().BeginCommand(); }

  OmHeading& Node() { return *fDocument.fRoot.fvItems[0].fpHeading; }
  const OmItem& LastItem() { return Node().fvItems.back(); }

  OmDocument fDocument;
  BpProcedure fProcedure;
};

std::vector<std::string> Labels(const OmDimensionNode& node) {
  std::vector<std::string> labels;
  for (const auto& child : node.fvChildren) labels.push_back(child.fLabel.fText);
  return labels;
}

}  // namespace

TEST_F(BpErrorTest, WarningIsAMessageAndLeavesTheHostWell) {
  BpError(BpString("Initial Value Failed...", true), 2, 2);
  ASSERT_EQ(Node().fvItems.size(), 1u);
  ASSERT_EQ(LastItem().fKind, OmItem::MESSAGE);
  EXPECT_EQ(LastItem().fpMessage->fLevel, OmMessage::WARNING);
  EXPECT_EQ(LastItem().fpMessage->fText, "Initial values for the model parameters could not be computed. The model cannot be fitted.");
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}

TEST_F(BpErrorTest, ErrorTurnsTheHostFatal) {
  BpError(BpString("No valid cases ...", true), BpErrorShowOutput, BpErrorLevelError);
  EXPECT_EQ(LastItem().fpMessage->fLevel, OmMessage::ERROR);
  EXPECT_TRUE(ZORV_Session::Current().IsFatal());
}

TEST_F(BpErrorTest, SuppressedErrorIsNotWrittenButStillFatal) {
  BpError(BpString("x", false), 0, 3);
  EXPECT_TRUE(Node().fvItems.empty());
  EXPECT_TRUE(ZORV_Session::Current().IsFatal());
  BpError(BpString("note", false), 2, 1);
  EXPECT_EQ(LastItem().fpMessage->fLevel, OmMessage::NOTE);
}

TEST_F(BpErrorTest, UnfinishedCompositeGoesOutWithItsArguments) {
  BpComposite composite("^1 procedure continues ...", true);
  composite.Add(BpString("MIXED", false));
  BpError(composite, 2, 2);
  EXPECT_EQ(LastItem().fpMessage->fText,
            "The MIXED procedure continues despite the above warning. Subsequent results are based on the last "
            "iteration, and the validity of the model fit is uncertain.");
}

TEST_F(BpErrorTest, SplitMessageNamesTheSplit) {
  ZORV_Variable group("group", 0);
  group.SetFormat(ZORV_Format(ZORV_Format::F, 8, 0));
  ZORV_Session::SplitValue value;
  value.fpVariable = &group;
  value.fvValue.resize(1);
  value.fvValue[0].fNum = 3.0;
  ZORV_Session::Current().SetCurrentSplit({value});
  BpComposite composite("The compared factor has at most one level on estimated marginal means request number ^1 for "
                        "split file [%1 = %2:,^1 = ^2:]2.",
                        true);
  composite.Add(BpNumber(2.0, fProcedure.Count()));
  composite.Sublist();
  composite.SplitList();
  composite.EndSublist();
  composite.Finish();
  BpError(composite, 2, 2);
  ZORV_Session::Current().ClearCurrentSplit();
  EXPECT_EQ(LastItem().fpMessage->fText,
            "The compared factor has at most one level in estimated marginal means request number 2 for the split "
            "group = 3, so no comparisons are computed for that request.");
}

TEST_F(BpErrorTest, MessagesGoToTheMostRecentProcedure) {
  OmDocument other;
  {
    BpProcedure inner(other.fRoot.AddHeading("Inner"), "Mixed", "Mixed");
    EXPECT_EQ(BpProcedure::Current().GetOmHeading(), inner.GetOmHeading());
    BpError(BpString("inner", false), 2, 2);
  }
  BpError(BpString("outer", false), 2, 2);
  EXPECT_EQ(other.fRoot.fvItems[0].fpHeading->fvItems.back().fpMessage->fText, "inner");
  EXPECT_EQ(LastItem().fpMessage->fText, "outer");
  EXPECT_EQ(BpProcedure::Current().GetOmHeading(), &Node());
}

TEST(BpErrorHost, WithoutAProcedureMessagesGoToTheHostDocument) {
  ASSERT_FALSE(BpProcedure::Current().IsBound());
  std::size_t before = BpProcedure::HostDocument().fRoot.fvItems.size();
  BpError(BpString("Smaller is better ...", true), 2, 2);
  const auto& items = BpProcedure::HostDocument().fRoot.fvItems;
  ASSERT_EQ(items.size(), before + 1);
  EXPECT_EQ(items.back().fpMessage->fText, "The information criteria are displayed in smaller-is-better form.");
}

TEST_F(BpErrorTest, NotesGoToNamedRowGroupsInTheOrderOfTheirNumbers) {
  AddNotes(4, BpString("Definition of Missing", true), BpString("MISSING is EXCLUDE ...", true));
  AddNotes(4, BpString("Cases Used", true), BpString("Cases used ...", true));
  AddNotes(0, BpString("Weight Handling", true), BpString("not applicable", true));
  AddNotes(2, BpString("Model File", true), BpString("/tmp/model\nfile.xml", false, false));
  ASSERT_EQ(Node().fvItems.size(), 1u);
  const OmTable& notes = *Node().fvItems[0].fpTable;
  EXPECT_EQ(notes.fSubType, "Notes");
  EXPECT_EQ(notes.fTitle.fText, "Notes");
  ASSERT_EQ(notes.fvDimensions.size(), 1u);
  const OmDimensionNode& root = notes.fvDimensions[0].fRoot;
  EXPECT_EQ(Labels(root), (std::vector<std::string>{"Input", "Files Saved", "Missing Value Handling"}));
  EXPECT_EQ(Labels(root.fvChildren[2]), (std::vector<std::string>{"Definition of Missing", "Cases Used"}));
  EXPECT_EQ(notes.CellAt({0})->fContent.fText, "Not applicable");
  EXPECT_EQ(notes.CellAt({1})->fContent.fText, "/tmp/model file.xml");
  EXPECT_EQ(notes.CellAt({2})->fContent.fText, "User-missing values are treated as missing.");
  EXPECT_EQ(notes.CellAt({3})->fContent.fText,
            "Statistics are based on all cases with valid data for all variables in the model.");
  // One notes table, however many rows.
  AddNotes(7, BpString("Other row", false), BpNumber(3.0, fProcedure.Count()));
  EXPECT_EQ(Node().fvItems.size(), 1u);
  EXPECT_EQ(Labels(root).back(), "Other");
  EXPECT_TRUE(notes.CellAt({4})->fbNumeric);
}

TEST_F(BpErrorTest, FrontEndTextStartsAndContinuesLines) {
  BP_ToFront(1, "");
  BP_ToFront(0, "first ");
  BP_Character more("part");
  more += " two";
  BP_ToFront(0, more);
  BP_ToFront(1, std::string(4096, 'x'));
  ASSERT_EQ(LastItem().fKind, OmItem::TEXT);
  const auto& lines = LastItem().fpText->fvLines;
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "first part two");
  EXPECT_EQ(lines[1].size(), 4096u);
  // After another item, text starts a new block.
  BpError(BpString("m", false), 2, 2);
  BP_ToFront(0, "continued");
  ASSERT_EQ(LastItem().fKind, OmItem::TEXT);
  EXPECT_EQ(LastItem().fpText->fvLines, std::vector<std::string>{"continued"});
}

// A long text goes as one line in pieces the front end takes, never cut
// inside a character.
TEST_F(BpErrorTest, LongFrontEndTextGoesInPieces) {
  std::string text = std::string(4095, 'a') + "\xC3\xA9" + std::string(5000, 'b');
  BP_ToFrontText(text);
  ASSERT_EQ(LastItem().fKind, OmItem::TEXT);
  EXPECT_EQ(LastItem().fpText->fvLines, std::vector<std::string>{text});
  BP_ToFrontText("");
  BP_ToFrontText("next");
  EXPECT_EQ(LastItem().fpText->fvLines, (std::vector<std::string>{text, "", "next"}));
}

TEST_F(BpErrorTest, FrontEndTextOverTheLimitIsABrokenInvariant) {
  EXPECT_DEBUG_DEATH(BP_ToFront(0, std::string(4097, 'x')), "pieces of 4096");
}

TEST(BP_Character, AssignsAndAppends) {
  BP_Character text;
  EXPECT_TRUE(text.empty());
  text = "GLMM algorithm status: ";
  text += "OK";
  EXPECT_STREQ(text.c_str(), "GLMM algorithm status: OK");
  EXPECT_EQ(text.size(), 25u);
  text = nullptr;
  EXPECT_TRUE(text.empty());
}
