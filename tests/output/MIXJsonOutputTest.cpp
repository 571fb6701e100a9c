#include "output/MIXJsonOutput.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/json/JNIJSONObject.h"
#include "host/json/PredictionTables.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "output/MIXComOutputData.h"

namespace {

using namespace prediction_tables;

// A procedure writing into a document of its own, over a dataset of two
// groups (1 "Alpha" and 2 "Beta") that may be split by group.
class MIXJsonOutputTest : public ::testing::Test {
 protected:
  MIXJsonOutputTest() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed"), fSpecs(true, true, true) {
    fGroup = fData.AddVariable("group", 0);
    fY = fData.AddVariable("y", 0);
    fData.GetVariable(fGroup)->ValueLabels().Add(1.0, "Alpha");
    fData.GetVariable(fGroup)->ValueLabels().Add(2.0, "Beta");
    fData.AppendCases(4);
    for (long row = 0; row < 4; ++row) {
      fData.SetNum(row, fGroup, row < 2 ? 1.0 : 2.0);
      fData.SetNum(row, fY, static_cast<double>(row));
    }
    fSpecs.AddVariable(fY, false, false, true, true);
  }

  ~MIXJsonOutputTest() override {
    fpOutput.reset();
    fpComOutputData.reset();
    fpAdapter.reset();
    ZORV_Session::Current().ClearCurrentSplit();
  }

  // Splits the file by group, shown in one table or split by split, and
  // makes the first split current.
  void Split(bool inOneTable) {
    ASSERT_TRUE(fData.SetSplitVars({fGroup}));
    fData.SetSplitsInOneTable(inOneTable);
    fpAdapter = std::make_unique<ACAInputAdapter>(&fSpecs, fData);
    fpAdapter->SetSplitFile(fProcedure, true, true, true);
    fpAdapter->ChangeSplitNoIter();
    ASSERT_EQ(fpAdapter->GetSplitValues().size(), 1u);
  }

  MIXJsonOutput& Make(const std::string& text) {
    fpComOutputData = std::make_unique<MIXComOutputData>(nullptr, nullptr, fData, &fProcedure);
    fpOutput = std::make_unique<MIXJsonOutput>(&fProcedure, &fData, fpComOutputData.get(), text);
    if (fpAdapter) fpOutput->SetInpAdapt(fpAdapter.get());
    return *fpOutput;
  }

  const OmHeading& Node() const { return *fDocument.fRoot.fvItems[0].fpHeading; }

  // The heading the tables go under; fails the test when there is none.
  const OmHeading& EBLUPHeading() const {
    static const OmHeading kNone;
    const OmHeading& node = Node();
    EXPECT_EQ(node.fvItems.size(), 1u);
    if (node.fvItems.empty() || node.fvItems[0].fKind != OmItem::HEADING) return kNone;
    EXPECT_EQ(node.fvItems[0].fpHeading->fText, "Random Effects Parameters");
    return *node.fvItems[0].fpHeading;
  }

  // The titles of the tables directly under a heading.
  static std::vector<std::string> TableTitles(const OmHeading& heading) {
    std::vector<std::string> titles;
    for (const OmItem& item : heading.fvItems) {
      if (item.fKind == OmItem::TABLE) titles.push_back(item.fpTable->fTitle.fText);
    }
    return titles;
  }

  OmDocument fDocument;
  BpProcedure fProcedure;
  ZORV_Dataset fData;
  ACAVarValidSpecs fSpecs;
  int fGroup = -1;
  int fY = -1;
  std::unique_ptr<ACAInputAdapter> fpAdapter;
  std::unique_ptr<MIXComOutputData> fpComOutputData;
  std::unique_ptr<MIXJsonOutput> fpOutput;
};

}  // namespace

TEST_F(MIXJsonOutputTest, KeepsWhatItIsGivenAndParsesTheText) {
  MIXJsonOutput& output = Make(Nested("[" + Table("a") + "]"));
  EXPECT_EQ(output.GetProcedure(), &fProcedure);
  EXPECT_EQ(output.GetProcDS(), &fData);
  EXPECT_EQ(output.GetComOutputData(), fpComOutputData.get());
  // Without a factory there is no adapter.
  EXPECT_EQ(output.GetInpAdapt(), nullptr);
  ASSERT_NE(output.GetJSON(), nullptr);
  EXPECT_TRUE(output.GetJSON()->isGood());
}

TEST_F(MIXJsonOutputTest, ASingleTableTakesTheTitleWithoutANumber) {
  Make(Nested("[" + Table("a") + "]")).DisplayEBLUPTable();
  const OmHeading& heading = EBLUPHeading();
  EXPECT_EQ(TableTitles(heading), (std::vector<std::string>{kTitle}));
  ASSERT_EQ(heading.fvItems.size(), 1u);
  const OmTable& table = *heading.fvItems[0].fpTable;
  EXPECT_EQ(table.fSubType, kTitle);
  ASSERT_EQ(table.fvDimensions.size(), 2u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Subject");
  ASSERT_NE(table.CellAt({0, 0}), nullptr);
  EXPECT_EQ(table.CellAt({0, 0})->fContent.fText, "0.500");
}

TEST_F(MIXJsonOutputTest, ThreeTablesAreNumberedOneToThree) {
  Make(Nested("[" + Table("a") + "," + Table("b") + "," + Table("c") + "]")).DisplayEBLUPTable();
  const std::string title = kTitle;
  EXPECT_EQ(TableTitles(EBLUPHeading()), (std::vector<std::string>{title + " 1", title + " 2", title + " 3"}));
}

TEST_F(MIXJsonOutputTest, TablesAtTheTopServeWhenTheLongPathIsAbsent) {
  Make(R"({"tables": [)" + Table("a") + "," + Table("b") + "]}").DisplayEBLUPTable();
  const std::string title = kTitle;
  EXPECT_EQ(TableTitles(EBLUPHeading()), (std::vector<std::string>{title + " 1", title + " 2"}));
}

TEST_F(MIXJsonOutputTest, TheLongPathComesBeforeTablesAtTheTop) {
  const std::string text = R"({"tables": [)" + Table("a") + "," + Table("b") + "," + Table("c") +
                           R"(], "glmm": {"RandomEffectsParameters": {"tables": [)" + Table("d") + "]}}}";
  Make(text).DisplayEBLUPTable();
  EXPECT_EQ(TableTitles(EBLUPHeading()), (std::vector<std::string>{kTitle}));
}

TEST_F(MIXJsonOutputTest, ATopLevelObjectWithNeitherPathIsItselfTheTable) {
  Make(Table("whole")).DisplayEBLUPTable();
  const OmHeading& heading = EBLUPHeading();
  EXPECT_EQ(TableTitles(heading), (std::vector<std::string>{kTitle}));
  ASSERT_EQ(heading.fvItems.size(), 1u);
  EXPECT_EQ(heading.fvItems[0].fpTable->fvDimensions.size(), 2u);
}

TEST_F(MIXJsonOutputTest, OneTableObjectUnderTheLongPathIsUnnumbered) {
  Make(Nested(Table("a"))).DisplayEBLUPTable();
  EXPECT_EQ(TableTitles(EBLUPHeading()), (std::vector<std::string>{kTitle}));
}

TEST_F(MIXJsonOutputTest, AnEmptyArrayWritesOnlyTheHeading) {
  Make(Nested("[]")).DisplayEBLUPTable();
  EXPECT_TRUE(EBLUPHeading().fvItems.empty());
}

TEST_F(MIXJsonOutputTest, TextThatDoesNotParseWritesAndSaysNothing) {
  MIXJsonOutput& output = Make("{\"tables\": [");
  EXPECT_FALSE(output.GetJSON()->isGood());
  output.DisplayEBLUPTable();
  EXPECT_TRUE(Node().fvItems.empty());
}

TEST_F(MIXJsonOutputTest, ARefusedTableLeavesItsPlaceAndTheOthersAreWritten) {
  Make(Nested("[" + Table("a") + R"(, 5, {"dimensions": []}, )" + Table("d") + "]")).DisplayEBLUPTable();
  const std::string title = kTitle;
  EXPECT_EQ(TableTitles(EBLUPHeading()), (std::vector<std::string>{title + " 1", title + " 4"}));
}

TEST_F(MIXJsonOutputTest, DisplayOutputWritesTheTables) {
  Make(Nested("[" + Table("a") + "]")).DisplayOutput();
  EXPECT_EQ(TableTitles(EBLUPHeading()), (std::vector<std::string>{kTitle}));
}

TEST_F(MIXJsonOutputTest, AnUnsplitFileLetsTheBuilderShowSplitsAndAddsNoHeading) {
  Make(Nested("[" + Table("a") + "]")).DisplayEBLUPTable();
  const OmHeading& heading = EBLUPHeading();
  ASSERT_EQ(heading.fvItems.size(), 1u);
  ASSERT_EQ(heading.fvItems[0].fKind, OmItem::TABLE);
  EXPECT_EQ(heading.fvItems[0].fpTable->fvDimensions.size(), 2u);
}

TEST_F(MIXJsonOutputTest, ASplitFileInOneTableHasTheBuilderShowTheSplit) {
  Split(true);
  Make(Nested("[" + Table("a") + "]")).DisplayEBLUPTable();
  const OmHeading& heading = EBLUPHeading();
  ASSERT_EQ(heading.fvItems.size(), 1u);
  ASSERT_EQ(heading.fvItems[0].fKind, OmItem::TABLE);
  const OmTable& table = *heading.fvItems[0].fpTable;
  EXPECT_EQ(table.fTitle.fText, kTitle);
  // The split's variable is the outermost row dimension, with its value.
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "group");
  ASSERT_EQ(table.fvDimensions[0].fRoot.fvChildren.size(), 1u);
  EXPECT_EQ(table.fvDimensions[0].fRoot.fvChildren[0].fLabel.fText, "Alpha");
  ASSERT_NE(table.CellAt({0, 0, 0}), nullptr);
  EXPECT_EQ(table.CellAt({0, 0, 0})->fContent.fText, "0.500");
}

TEST_F(MIXJsonOutputTest, ASplitShownSplitBySplitGetsAHeadingAndItsNameAsTitle) {
  Split(false);
  Make(Nested("[" + Table("a") + "," + Table("b") + "]")).DisplayEBLUPTable();
  const OmHeading& heading = EBLUPHeading();
  ASSERT_EQ(heading.fvItems.size(), 2u);
  const std::string title = kTitle;
  for (int i = 0; i < 2; ++i) {
    const OmItem& item = heading.fvItems[static_cast<std::size_t>(i)];
    ASSERT_EQ(item.fKind, OmItem::HEADING);
    EXPECT_EQ(item.fpHeading->fText, title + " " + std::to_string(i + 1));
    ASSERT_EQ(item.fpHeading->fvItems.size(), 1u);
    const OmTable& table = *item.fpHeading->fvItems[0].fpTable;
    EXPECT_EQ(table.fTitle.fText, "group = Alpha");
    EXPECT_EQ(table.fSubType, kTitle);
    // The builder adds no split dimension of its own.
    EXPECT_EQ(table.fvDimensions.size(), 2u);
  }
}

TEST_F(MIXJsonOutputTest, TheSecondSplitIsNamedByItsOwnValue) {
  Split(false);
  fpAdapter->ChangeSplitNoIter();
  Make(Nested("[" + Table("a") + "]")).DisplayEBLUPTable();
  const OmHeading& heading = EBLUPHeading();
  ASSERT_EQ(heading.fvItems.size(), 1u);
  ASSERT_EQ(heading.fvItems[0].fKind, OmItem::HEADING);
  EXPECT_EQ(heading.fvItems[0].fpHeading->fText, kTitle);
  ASSERT_EQ(heading.fvItems[0].fpHeading->fvItems.size(), 1u);
  EXPECT_EQ(heading.fvItems[0].fpHeading->fvItems[0].fpTable->fTitle.fText, "group = Beta");
}

TEST_F(MIXJsonOutputTest, MessageModelViewerIssuesAWarning) {
  Make("{}").MessageModelViewer();
  const OmHeading& node = Node();
  ASSERT_EQ(node.fvItems.size(), 1u);
  ASSERT_EQ(node.fvItems[0].fKind, OmItem::MESSAGE);
  EXPECT_EQ(node.fvItems[0].fpMessage->fLevel, OmMessage::WARNING);
  EXPECT_EQ(node.fvItems[0].fpMessage->fText,
            "The table of empirical best linear unbiased predictions is shown separately from the model viewer "
            "output.");
  EXPECT_FALSE(ZORV_Session::Current().IsFatal());
}
