#include "app/AppRecodeCommand.h"

#include <gtest/gtest.h>

#include "AppDataFixture.h"
#include "AppPeopleData.h"
#include "host/io/NumberText.h"

using namespace peopledata;

namespace {

class AppRecodeCommandTest : public AppDataFixture {
 protected:
  void SetUp() override {
    AppDataFixture::SetUp();
    Write("people.csv", kCsv);
    Write("people.dictionary.json", kDictionary);
  }

  // A numeric column as written: "." for the system-missing value.
  std::string Numbers(const std::string& name) {
    std::string text;
    for (long row = 0; row < Data().GetCaseCount(); ++row) {
      if (!text.empty()) text += " ";
      text += SysMissing(row, name) ? "." : NumberText::Shortest(Num(row, name));
    }
    return text;
  }
};

}  // namespace

TEST_F(AppRecodeCommandTest, RangesWithOpenEndsAndElseInPlace) {
  // age: 23 35 47 . 61; the first rule that matches decides.
  Run(std::string(kLoad) + "RECODE age (LOWEST THRU 30 = 1) (30 THRU 50 = 2) (ELSE = 3).");
  EXPECT_TRUE(Messages(1).empty());
  EXPECT_EQ(Said(1), "age: 4 values of 5 recoded.");
  EXPECT_EQ(Numbers("age"), "1 2 2 . 3");
  EXPECT_EQ(Command(1).fText, "Recode");
}

TEST_F(AppRecodeCommandTest, SingleValuesAndAValueNoRuleMatches) {
  Run(std::string(kLoad) + "RECODE id (1 2 = 0) (5 = 50).");
  EXPECT_EQ(Numbers("id"), "0 0 3 4 50");
}

TEST_F(AppRecodeCommandTest, IntoANewVariableWithMissingAndCopy) {
  Run(std::string(kLoad) + "RECODE score (MISSING = 0) (ELSE = COPY) INTO score0.");
  EXPECT_EQ(Said(1), "score into score0: 5 values of 5 recoded.");
  EXPECT_EQ(Numbers("score0"), "5.5 0 7.25 3 9");
  EXPECT_EQ(Numbers("score"), "5.5 . 7.25 3 9");
  const ZORV_Variable& variable = *Data().GetVariable(Column("score0"));
  EXPECT_EQ(variable.GetFormat().ToText(), "F4.2");
  EXPECT_EQ(variable.GetMeasurementLevel(), ZORV_Variable::NOMINAL);
}

TEST_F(AppRecodeCommandTest, IntoANewVariableAValueNoRuleMatchesIsMissing) {
  Run(std::string(kLoad) + "RECODE age (23 = 1) INTO young.");
  EXPECT_EQ(Numbers("young"), "1 . . . .");
}

TEST_F(AppRecodeCommandTest, AMissingValueIsMatchedOnlyByMissingOrByItsOwnValue) {
  // grp: 1 2 1 2 and the user-missing 9.
  Run(std::string(kLoad) +
      "RECODE grp (1 = 10) (ELSE = 20) INTO g1.\n"
      "RECODE grp (1 THRU 100 = 1) INTO g2.\n"
      "RECODE grp (9 = 0) INTO g3.\n"
      "RECODE grp (MISSING = -1) (ELSE = COPY) INTO g4.\n"
      "RECODE score (MISSING = 0) (ELSE = 1) INTO g5.");
  EXPECT_EQ(Numbers("g1"), "10 20 10 20 .");
  EXPECT_EQ(Numbers("g2"), "1 1 1 1 .");
  EXPECT_EQ(Numbers("g3"), ". . . . 0");
  EXPECT_EQ(Numbers("g4"), "1 2 1 2 -1");
  EXPECT_EQ(Numbers("g5"), "1 0 1 1 1");
}

TEST_F(AppRecodeCommandTest, TextsIntoTextsAndIntoNumbers) {
  Run(std::string(kLoad) +
      "RECODE sex ('m' = 'male') ('f' = 'female') INTO sexname.\n"
      "RECODE sex ('m' = 1) ('f' = 2) INTO sexcode.\n"
      "RECODE sexname ('male' = 'M') (ELSE = COPY).");
  EXPECT_EQ(Text(1, "sexname"), "female");
  EXPECT_EQ(Text(0, "sexname"), "M");
  EXPECT_EQ(Data().GetVariable(Column("sexname"))->GetType(), 6);
  EXPECT_EQ(Numbers("sexcode"), "1 2 2 1 2");
}

TEST_F(AppRecodeCommandTest, SeveralVariablesAndGroupsInOneCommand) {
  Run(std::string(kLoad) + "RECODE id grp (1 = 100) (2 = 200) INTO a b / age (LOWEST THRU 40 = 0) (ELSE = 1).");
  EXPECT_EQ(Lines(1).size(), 4u);
  EXPECT_EQ(Numbers("a"), "100 200 . . .");
  EXPECT_EQ(Numbers("b"), "100 200 100 200 .");
  EXPECT_EQ(Numbers("age"), "0 0 1 . 1");
}

TEST_F(AppRecodeCommandTest, EveryResultComesFromTheDataBeforeTheCommand) {
  // b is made from grp before grp takes the results of id.
  Run(std::string(kLoad) + "RECODE id (ELSE = 0) INTO grp / grp (ELSE = COPY) INTO b.");
  EXPECT_EQ(Numbers("grp"), "0 0 0 0 0");
  EXPECT_EQ(Numbers("b"), "1 2 1 2 .");
}

TEST_F(AppRecodeCommandTest, TextsCutToTheWidthAreCounted) {
  Run(std::string(kLoad) + "RECODE sex ('m' = 'male').");
  EXPECT_EQ(Messages(1), (std::vector<std::string>{"WARNING 2 texts were cut to the width of sex (1 byte)."}));
}

TEST_F(AppRecodeCommandTest, MistakesAreReportedWhereTheyStandAndChangeNothing) {
  Run(std::string(kLoad) +
      "RECODE age (1 = 'a').\n"                     // 2
      "RECODE sex (1 = 2) INTO x.\n"                // 3
      "RECODE age ('a' = 1).\n"                     // 4
      "RECODE age (ELSE = 1) (2 = 3).\n"            // 5
      "RECODE age (5 THRU 1 = 0).\n"                // 6
      "RECODE age score (1 = 2) INTO a1.\n"         // 7
      "RECODE age (1 = 2) (3 = 'x') INTO t.\n"      // 8
      "RECODE age (1 = 'a') (ELSE = COPY) INTO t.\n"  // 9
      "RECODE age sex (1 = 2).\n"                   // 10
      "RECODE age (1 = 2) INTO sex.\n"              // 11
      "RECODE age.\n"                               // 12
      "RECODE age (1 THRU = 2).\n"                  // 13
      "RECODE age (LOWEST = 2).\n"                  // 14
      "RECODE age (1 2 = ).\n"                      // 15
      "RECODE age (1 ELSE = 2).\n"                  // 16
      "RECODE age (1 = 2) INTO a b.\n"              // 17
      "RECODE age id (1 = 2) INTO n n.\n"           // 18
      "RECODE age (1 = 2) INTO n / id (1 = 2) INTO n.\n"  // 19
      "RECODE nosuch (1 = 2).");                    // 20
  EXPECT_EQ(Error(1), "t.gmx:2:17: expected a number for the numeric variables recoded in place, found the text 'a'.");
  EXPECT_EQ(Error(2), "t.gmx:3:13: expected a text, MISSING or ELSE (the variables are strings), found 1.");
  EXPECT_EQ(Error(3), "t.gmx:4:13: expected a number, a range, MISSING or ELSE (the variables are numeric), found "
                      "the text 'a'.");
  EXPECT_EQ(Error(4), "t.gmx:5:23: expected INTO, '/' or the end of the command after the rule with ELSE, found '('.");
  EXPECT_EQ(Error(5), "t.gmx:6:13: expected a range whose low end is not above its high end, found 5 THRU a lower "
                      "value.");
  EXPECT_EQ(Error(6), "t.gmx:7:33: expected as many variables after INTO as are recoded (2), found the end of the "
                      "command.");
  EXPECT_EQ(Error(7), "t.gmx:8:25: expected a number like the results of the rules before, found the text 'x'.");
  EXPECT_EQ(Error(8), "t.gmx:9:30: expected a text like the other results, found COPY, which keeps the numbers.");
  EXPECT_EQ(Error(9), "t.gmx:10:12: expected a numeric variable like the first of the list, found 'sex'.");
  EXPECT_EQ(Error(10), "t.gmx:11:25: expected a numeric variable for the results, found 'sex'.");
  EXPECT_EQ(Error(11), "t.gmx:12:11: expected a variable or '(' to start a rule such as (1=2), found the end of the "
                       "command.");
  EXPECT_EQ(Error(12), "t.gmx:13:20: expected a number or HIGHEST, found '='.");
  EXPECT_EQ(Error(13), "t.gmx:14:20: expected THRU after LOWEST, found '='.");
  EXPECT_EQ(Error(14), "t.gmx:15:19: expected a value, MISSING or COPY after '=', found ')'.");
  EXPECT_EQ(Error(15), "t.gmx:16:15: expected a value, a range, MISSING or '=', found 'ELSE'.");
  EXPECT_EQ(Error(16), "t.gmx:17:27: expected as many variables after INTO as are recoded (1), found 'b' more.");
  EXPECT_EQ(Error(17), "t.gmx:18:30: expected each variable once after INTO, found 'n' again.");
  EXPECT_EQ(Error(18), "t.gmx:19:1: expected each new variable once, found 'n' again.");
  EXPECT_EQ(Error(19), "t.gmx:20:8: expected a variable to recode, found 'nosuch' (the data have no variable of that "
                       "name).");
  EXPECT_EQ(Data().ColumnCount(), 6);
  EXPECT_EQ(Numbers("age"), "23 35 47 . 61");
}
