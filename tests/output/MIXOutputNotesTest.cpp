#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OutputFixture.h"
#include "host/data/ZORV_Dataset.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "output/MIXOutput.h"
#include "specs/MIXValidSpecs.h"

namespace output_test {
namespace {

// Group, name and value of every row of a notes table, in order.
std::vector<std::string> Rows(const OmTable* table) {
  std::vector<std::string> rows;
  if (table == nullptr) return rows;
  const std::vector<std::vector<const OmDimensionNode*>> paths = table->fvDimensions[0].LeafPaths();
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const OmCell* cell = table->CellAt({static_cast<int>(i)});
    rows.push_back(paths[i][0]->fLabel.fText + " | " + paths[i].back()->fLabel.fText + " | " +
                   (cell ? cell->fContent.fText : "<none>"));
  }
  return rows;
}

class Notes : public OutputFixture {
 protected:
  Notes() : fRecord(nullptr, fData) { fData.AddVariable("y", 0); }
  MIXOutput MakeOutput() { return MIXOutput(&fRecord, fData, &fProcedure, nullptr); }
  MIXValidSpecs fRecord;
};

const char* const kMissingRow =
    "Missing Value Handling | Definition of Missing | User-missing values are treated as missing.";
const char* const kCasesRow =
    "Missing Value Handling | Cases Used | Statistics are based on all cases with valid data for all variables in "
    "the model.";

TEST_F(Notes, TheStartRowsOfAnUnweightedRun) {
  MIXOutput output = MakeOutput();
  EXPECT_EQ(output.GetComOutputData(), nullptr);
  EXPECT_EQ(output.GetFactory(), nullptr);
  output.AddToNotesTable();
  EXPECT_EQ(Rows(NotesTable()),
            (std::vector<std::string>{"Input | Weight Handling | Not applicable", kMissingRow, kCasesRow}));
}

TEST_F(Notes, IncludedUserMissingValuesAreSaid) {
  fRecord.SetClassMissInclude(true);
  MakeOutput().AddToNotesTable();
  EXPECT_EQ(Rows(NotesTable())[1],
            "Missing Value Handling | Definition of Missing | User-missing values of factors are treated as valid. "
            "System-missing values, and user-missing values of other variables, are treated as missing.");
}

TEST_F(Notes, AWeightedRunSaysThatWeightsAreRounded) {
  fRecord.SetZORVWeightIndex(0);
  MakeOutput().AddToNotesTable();
  EXPECT_EQ(Rows(NotesTable())[0], "Input | Weight Handling | Weight values are rounded to the nearest whole number.");
}

TEST_F(Notes, NoOutputFileWritesNoRow) {
  MakeOutput().CompleteNotesTable();
  EXPECT_EQ(NotesTable(), nullptr);
  MIXOutput output = MakeOutput();
  output.AddToNotesTable();
  output.CompleteNotesTable();
  EXPECT_EQ(Rows(NotesTable()).size(), 3u);
}

TEST_F(Notes, FilesSavedAreNamedAsTheyStand) {
  fRecord.SetOutFModelFileName("out/model\tfile.xml");
  fRecord.SetOutFParameterFileName("Model File");
  MIXOutput output = MakeOutput();
  output.CompleteNotesTable();
  // The name is neither translated nor broken over lines.
  EXPECT_EQ(Rows(NotesTable()), (std::vector<std::string>{"Files Saved | Model File | out/model file.xml",
                                                          "Files Saved | Parameter File | Model File"}));
}

TEST_F(Notes, OnlyTheParameterFile) {
  fRecord.SetOutFParameterFileName("params.xml");
  MakeOutput().CompleteNotesTable();
  EXPECT_EQ(Rows(NotesTable()), (std::vector<std::string>{"Files Saved | Parameter File | params.xml"}));
}

TEST_F(Notes, OutputWithoutFactoryWritesNoTables) {
  MIXOutput output = MakeOutput();
  output.DisplayModelDimension();
  output.DisplayIterationHistory();
  output.DisplayOutput();
  output.DisplayEBLUPs();
  output.DisplayInfoCriteria();
  EXPECT_TRUE(Tables().empty());
  EXPECT_EQ(output.GetComOutputData(), nullptr);
}

// A frequency weight with fractional values: the notes say the weights are
// rounded all the same.
class WeightedRun : public OutputFixture {
 protected:
  void SetUp() override {
    Load("dyestuff");
    const int weight = fData.AddVariable("w", 0);
    for (long row = 0; row < fData.GetCaseCount(); ++row) fData.SetNum(row, weight, row % 2 == 0 ? 1.5 : 2.0);
    ASSERT_TRUE(fData.SetWeightVar(weight));
    Command("Yield", {}, {}, {}, {RandomBlock{{{}}, {"Batch"}, false}});
  }
};

TEST_F(WeightedRun, NotesSayTheWeightsAreRounded) {
  RunDriver();
  const std::vector<std::string> rows = Rows(NotesTable());
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows[0], "Input | Weight Handling | Weight values are rounded to the nearest whole number.");
  EXPECT_EQ(TablesOf("Information Criteria").size(), 1u);
}

// A random block that predicts its effects makes the run use the
// component's StatJSON, from which the predictions table comes.
class PredictingRun : public OutputFixture {
 protected:
  void SetUp() override {
    Load("dyestuff");
    Command("Yield", {}, {}, {}, {RandomBlock{{{}}, {"Batch"}, true}});
  }
};

TEST_F(PredictingRun, ThePredictionsFollowTheFixedEffects) {
  ASSERT_TRUE(Run());
  ASSERT_TRUE(fSpecs->GetUseStatJSON());
  fOutput->DisplayOutput();
  std::vector<std::string> subTypes;
  for (const OmTable* table : Tables()) subTypes.push_back(table->fSubType);
  ASSERT_EQ(subTypes.size(), 4u);
  EXPECT_EQ(subTypes[1], "Information Criteria");
  EXPECT_EQ(subTypes[2], "Tests of Fixed Effects");
  EXPECT_EQ(subTypes[3], "Empirical Best Linear Unbiased Predictions");
  const std::vector<std::string> headings = Headings();
  EXPECT_EQ(headings.back(), "Random Effects Parameters");
}

TEST_F(PredictingRun, WithoutStatJSONNoPredictions) {
  Command("Yield", {}, {}, {}, {RandomBlock{{{}}, {"Batch"}, false}});
  ASSERT_TRUE(Run());
  ASSERT_FALSE(fSpecs->GetUseStatJSON());
  fOutput->DisplayOutput();
  const std::size_t before = Tables().size();
  fOutput->DisplayEBLUPs();
  EXPECT_EQ(Tables().size(), before);
  EXPECT_TRUE(TablesOf("Empirical Best Linear Unbiased Predictions").empty());
}

}  // namespace
}  // namespace output_test
