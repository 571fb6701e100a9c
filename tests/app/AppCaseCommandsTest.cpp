#include "app/AppCaseCommands.h"

#include <gtest/gtest.h>

#include <cmath>

#include "AppDataFixture.h"
#include "AppPeopleData.h"
#include "app/AppProcedureHook.h"
#include "run/MixDriver.h"

using namespace peopledata;

namespace {

class AppCaseCommandsTest : public AppDataFixture {
 protected:
  void SetUp() override {
    AppDataFixture::SetUp();
    Write("people.csv", kCsv);
    Write("people.dictionary.json", kDictionary);
  }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    AppDataFixture::TearDown();
  }

  // Every number of the tables of the last command, the notes aside: the
  // table's sub-type, the cell's place and its value.
  struct Number {
    std::string fTable;
    std::vector<int> fCell;
    double fValue;
  };
  static void Collect(const OmHeading& heading, std::vector<Number>& out) {
    for (const OmItem& item : heading.fvItems) {
      if (item.fKind == OmItem::HEADING) Collect(*item.fpHeading, out);
      if (item.fKind != OmItem::TABLE || item.fpTable->fSubType == "Notes") continue;
      for (const auto& cell : item.fpTable->fCells) {
        if (cell.second.fbNumeric && !cell.second.fbMissing)
          out.push_back({item.fpTable->fSubType, cell.first, cell.second.fValue});
      }
    }
  }
  std::vector<Number> LastFit() const {
    std::vector<Number> numbers;
    Collect(Command(Commands() - 1), numbers);
    return numbers;
  }
  // The split categories of the last command's tables of a kind.
  std::vector<std::string> Splits(const std::string& subtype) const {
    std::vector<std::string> splits;
    for (const OmItem& item : Command(Commands() - 1).fvItems) {
      if (item.fKind != OmItem::TABLE || item.fpTable->fSubType != subtype) continue;
      for (const OmDimensionNode& node : item.fpTable->fvDimensions.at(0).fRoot.fvChildren)
        splits.push_back(node.fLabel.fText);
    }
    return splits;
  }

  std::string Orthodont() const { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/orthodont.csv"; }
};

}  // namespace

TEST_F(AppCaseCommandsTest, SelectKeepsTheCasesWhereTheConditionIsTrue) {
  Run(std::string(kLoad) + "SELECT IF age > 30 AND sex = 'f'.");
  EXPECT_EQ(Command(1).fText, "Select Cases");
  EXPECT_EQ(Said(1), "3 cases of 5 kept, 2 removed.");
  ASSERT_EQ(Data().GetCaseCount(), 3);
  EXPECT_EQ(Num(0, "id"), 2.0);
  EXPECT_EQ(Num(1, "id"), 3.0);
  EXPECT_EQ(Num(2, "id"), 5.0);
  EXPECT_TRUE(Messages(1).empty());
}

TEST_F(AppCaseCommandsTest, ACaseWhoseConditionIsMissingIsRemoved) {
  // age is missing in row 3, and 1 / (age - 35) cannot be computed in row 1.
  Run(std::string(kLoad) + "SELECT IF 1 / (age - 35) < 1.");
  EXPECT_EQ(Said(1), "3 cases of 5 kept, 2 removed.");
  EXPECT_EQ(Messages(1), (std::vector<std::string>{
                             "WARNING 1 value could not be computed (a division by zero, or a value outside a "
                             "function's domain or beyond the range of numbers) and is missing; a case whose "
                             "condition is missing is removed."}));
}

TEST_F(AppCaseCommandsTest, SelectingNoCaseLeavesEmptyData) {
  Run(std::string(kLoad) + "SELECT IF id > 10.\nCOMPUTE z = id.");
  EXPECT_EQ(Messages(1), (std::vector<std::string>{"WARNING No case is left in the data."}));
  EXPECT_EQ(Data().GetCaseCount(), 0);
  EXPECT_EQ(Said(2), "The new variable z holds 0 computed values, 0 missing.");
}

TEST_F(AppCaseCommandsTest, SelectNeedsANumericCondition) {
  Run(std::string(kLoad) + "SELECT IF sex.\nSELECT age > 1.\nSELECT IF.\nSELECT IF id > 1 2.");
  EXPECT_EQ(Error(1), "t.gmx:2:11: expected a condition (a numeric expression), found the string variable 'sex'.");
  EXPECT_EQ(Error(2), "t.gmx:3:8: expected IF and a condition, found 'age'.");
  EXPECT_EQ(Error(3), "t.gmx:4:10: expected a variable, number, text, function or '(', found the end of the command.");
  EXPECT_EQ(Error(4), "t.gmx:5:18: expected an operator or the end of the command, found 2.");
  EXPECT_EQ(Data().GetCaseCount(), 5);
}

TEST_F(AppCaseCommandsTest, TheFilterSetsCasesAsideUntilItIsSwitchedOff) {
  Run(std::string(kLoad) + "FILTER BY grp.\nFILTER OFF.\nFILTER BY sex.\nFILTER BY nosuch.\nFILTER grp.\n"
                           "FILTER BY grp id.");
  EXPECT_EQ(Command(1).fText, "Filter");
  // grp 9 is user-missing.
  EXPECT_EQ(Said(1), "The analyses use the 4 cases of 5 whose grp is neither missing nor 0.");
  EXPECT_EQ(Said(2), "The filter is off: the analyses use every case.");
  EXPECT_EQ(Data().GetFilterVarIndex(), -1);
  EXPECT_EQ(Error(3), "t.gmx:4:11: expected a numeric filter variable, found the string variable 'sex'.");
  EXPECT_EQ(Error(4), "t.gmx:5:11: expected a numeric filter variable, found 'nosuch' (the data have no variable of "
                      "that name).");
  EXPECT_EQ(Error(5), "t.gmx:6:8: expected BY or OFF, found 'grp'.");
  EXPECT_EQ(Error(6), "t.gmx:7:15: expected the end of the command (one filter variable), found 'id'.");
  EXPECT_EQ(Data().GetCaseCount(), 5);
}

TEST_F(AppCaseCommandsTest, AFilterNeedsDataButSwitchingItOffDoesNot) {
  Run("FILTER OFF.\nFILTER BY x.");
  EXPECT_TRUE(Messages(0).empty());
  EXPECT_EQ(Error(1), "t.gmx:2:1: expected data to work on, found none: LOAD a data file before FILTER.");
}

TEST_F(AppCaseCommandsTest, LoadingNewDataEndsTheFilter) {
  Run(std::string(kLoad) + "FILTER BY grp.\n" + kLoad);
  EXPECT_EQ(Data().GetFilterVarIndex(), -1);
}

// A fit of a split, weighted file through a filter equals the fit of the
// same file with the cases removed: the procedure never sees a case that the
// filter sets aside, nor counts it.
TEST_F(AppCaseCommandsTest, AFitThroughTheFilterEqualsAFitOfTheSelectedCases) {
  AppProcedureHook::Set(MixDriver);
  const std::string prepare = "LOAD '" + Orthodont() + "'.\n" +
                              "COMPUTE w = 1 + MOD(ROW(), 3).\n"
                              "COMPUTE keep = age < 14 AND Subject <> 'M05' AND Subject <> 'F02'.\n"
                              "SPLIT BY Sex.\nWEIGHT BY w.\n";
  const std::string fit = "GLMIXFIT distance WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject"
                          " /DISPLAY ESTIMATES.";
  Run(prepare + "FILTER BY keep.\n" + fit);
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  const std::vector<Number> filtered = LastFit();
  EXPECT_EQ(Splits("Information Criteria"), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(Data().GetCaseCount(), 108);

  Run(prepare + "SELECT IF keep.\n" + fit);
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_EQ(Data().GetCaseCount(), 108 - 27 - 6);
  const std::vector<Number> selected = LastFit();
  ASSERT_EQ(filtered.size(), selected.size());
  ASSERT_GT(filtered.size(), 20u);
  for (std::size_t i = 0; i < filtered.size(); ++i) {
    EXPECT_EQ(filtered[i].fTable, selected[i].fTable);
    EXPECT_EQ(filtered[i].fCell, selected[i].fCell);
    EXPECT_NEAR(filtered[i].fValue, selected[i].fValue, 1e-9 * std::max(1.0, std::fabs(selected[i].fValue)))
        << filtered[i].fTable;
  }

  // Without the filter the fit differs.
  Run(prepare + fit);
  const std::vector<Number> all = LastFit();
  ASSERT_FALSE(all.empty());
  EXPECT_NE(all.front().fValue, filtered.front().fValue);
}

TEST_F(AppCaseCommandsTest, ASplitWhoseCasesTheFilterSetsAsideIsNotFitted) {
  AppProcedureHook::Set(MixDriver);
  Run("LOAD '" + Orthodont() + "'.\nCOMPUTE girls = Sex = 'Female'.\nSPLIT BY Sex.\nFILTER BY girls.\n"
      "GLMIXFIT distance WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject.");
  EXPECT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_TRUE(Messages(4).empty());
  EXPECT_EQ(Splits("Information Criteria"), (std::vector<std::string>{"Female"}));
}
