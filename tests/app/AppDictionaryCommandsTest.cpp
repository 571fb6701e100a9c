#include "app/AppDictionaryCommands.h"

#include <gtest/gtest.h>

#include <cmath>

#include "AppDataFixture.h"
#include "AppPeopleData.h"

using namespace peopledata;

namespace {

class AppDictionaryCommandsTest : public AppDataFixture {
 protected:
  void SetUp() override {
    AppDataFixture::SetUp();
    Write("people.csv", kCsv);
    Write("people.dictionary.json", kDictionary);
  }
  const ZORV_Variable& Variable(const std::string& name) const { return *Data().GetVariable(Column(name)); }
};

}  // namespace

TEST_F(AppDictionaryCommandsTest, LabelSetsAndRemovesVariableLabels) {
  Run(std::string(kLoad) + "LABEL age 'Age in years' score 'Test score'.\nLABEL sex ''.");
  EXPECT_EQ(Command(1).fText, "Variable Labels");
  EXPECT_EQ(Said(1), "Labels set for 2 variables.");
  EXPECT_STREQ(Variable("age").GetLabel(), "Age in years");
  EXPECT_STREQ(Variable("score").GetLabel(), "Test score");
  EXPECT_EQ(Variable("sex").GetLabel(), nullptr);
}

TEST_F(AppDictionaryCommandsTest, ValuesReplaceTheValueLabelsOfEachGroup) {
  Run(std::string(kLoad) + "VALUES grp id 1 'one' 2 'two' / sex 'f' 'woman'.\nVALUES id.");
  EXPECT_EQ(Command(1).fText, "Value Labels");
  EXPECT_EQ(Said(1), "Value labels set for 3 variables.");
  EXPECT_STREQ(Variable("grp").GetValueLabels().GetLabel(2.0), "two");
  EXPECT_EQ(Variable("id").GetValueLabels().Size(), 0u);
  EXPECT_STREQ(Variable("sex").GetValueLabels().GetLabel("f"), "woman");
  // The labels of "m" from the dictionary are replaced, not kept.
  EXPECT_EQ(Variable("sex").GetValueLabels().GetLabel("m"), nullptr);
  // The level is LEVEL's business.
  EXPECT_EQ(Variable("id").GetMeasurementLevel(), ZORV_Variable::SCALE);
}

TEST_F(AppDictionaryCommandsTest, MissingSetsValuesAndARange) {
  Run(std::string(kLoad) +
      "MISSING age 23 LOWEST THRU 0 / score 3 5.5 THRU HIGHEST / sex 'm'.\n"
      "COMPUTE a = MISSING(age).\nCOMPUTE s = MISSING(score).\nCOMPUTE x = MISSING(sex).\nMISSING grp NONE.");
  EXPECT_EQ(Command(1).fText, "Missing Values");
  EXPECT_EQ(Said(1), "Missing values set for 3 variables.");
  const ZORV_Variable& age = Variable("age");
  EXPECT_EQ(age.GetMissingValues(), (std::vector<double>{23}));
  ASSERT_TRUE(age.HasMissingRange());
  EXPECT_EQ(age.GetMissingRangeLow(), -HUGE_VAL);
  EXPECT_EQ(age.GetMissingRangeHigh(), 0.0);
  EXPECT_EQ(Num(0, "a"), 1.0);
  EXPECT_EQ(Num(1, "a"), 0.0);
  // score 5.5, 7.25 and 9 lie in the range; 3 is a value; row 1 is empty.
  for (long row = 0; row < 5; ++row) EXPECT_EQ(Num(row, "s"), 1.0) << row;
  EXPECT_EQ(Num(0, "x"), 1.0);
  EXPECT_EQ(Num(1, "x"), 0.0);
  EXPECT_TRUE(Variable("grp").GetMissingValues().empty());
}

TEST_F(AppDictionaryCommandsTest, LevelAndFormat) {
  Run(std::string(kLoad) + "LEVEL id grp ORDINAL / age NOMINAL / sex ORDINAL.\nFORMAT score age F6.3 / id COMMA8.0.");
  EXPECT_EQ(Said(1), "Measurement levels set for 4 variables.");
  EXPECT_EQ(Variable("id").GetMeasurementLevel(), ZORV_Variable::ORDINAL);
  EXPECT_EQ(Variable("age").GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(Variable("sex").GetMeasurementLevel(), ZORV_Variable::ORDINAL);
  EXPECT_EQ(Said(2), "Formats set for 3 variables.");
  EXPECT_EQ(Variable("score").GetFormat().ToText(), "F6.3");
  EXPECT_EQ(Variable("age").GetWriteFormat().ToText(), "F6.3");
  EXPECT_EQ(Variable("id").GetFormat().ToText(), "COMMA8.0");
}

TEST_F(AppDictionaryCommandsTest, MistakesAreReportedWhereTheyStandAndChangeNothing) {
  Run(std::string(kLoad) +
      "LABEL age.\n"                           // 2
      "LABEL age 'a' age 'b'.\n"               // 3
      "VALUES age 'x' 'y'.\n"                  // 4
      "VALUES age sex 1 'one'.\n"              // 5
      "VALUES age 1 'one' 1 'uno'.\n"          // 6
      "VALUES age 1.\n"                        // 7
      "MISSING age 1 THRU 2 3 THRU 4.\n"       // 8
      "MISSING age 'x'.\n"                     // 9
      "MISSING age.\n"                         // 10
      "MISSING age 5 THRU 1.\n"                // 11
      "LEVEL sex SCALE.\n"                     // 12
      "LEVEL age.\n"                           // 13
      "FORMAT sex F8.2.\n"                     // 14
      "FORMAT age A8.\n"                       // 15
      "FORMAT age.\n"                          // 16
      "LEVEL age SCALE age NOMINAL.");         // 17
  EXPECT_EQ(Error(1), "t.gmx:2:10: expected the variable's label in quotes, found the end of the command.");
  EXPECT_EQ(Error(2), "t.gmx:3:15: expected each variable once, found 'age' again.");
  EXPECT_EQ(Error(3), "t.gmx:4:12: expected a number, '/' or the end of the command (the variables are numeric), "
                      "found the text 'x'.");
  EXPECT_EQ(Error(4), "t.gmx:5:12: expected a numeric variable like the first of the list, found 'sex'.");
  EXPECT_EQ(Error(5), "t.gmx:6:20: expected each value once, found 1 again.");
  EXPECT_EQ(Error(6), "t.gmx:7:13: expected the value's label in quotes, found the end of the command.");
  EXPECT_EQ(Error(7), "t.gmx:8:22: expected one range of missing values at most, found a second.");
  EXPECT_EQ(Error(8), "t.gmx:9:13: expected a number, a range (low THRU high) or NONE (the variables are numeric), "
                      "found the text 'x'.");
  EXPECT_EQ(Error(9), "t.gmx:10:12: expected a number, a range (low THRU high) or NONE (the variables are numeric), "
                      "found the end of the command.");
  EXPECT_EQ(Error(10), "t.gmx:11:13: expected a range whose low end is not above its high end, found 5 THRU a lower "
                       "value.");
  EXPECT_EQ(Error(11), "t.gmx:12:7: expected a numeric variable for SCALE, found the string variable 'sex'.");
  EXPECT_EQ(Error(12), "t.gmx:13:10: expected a variable, NOMINAL, ORDINAL or SCALE, found the end of the command.");
  EXPECT_EQ(Error(13), "t.gmx:14:8: expected a numeric variable, found the string variable 'sex'.");
  EXPECT_EQ(Error(14), "t.gmx:15:12: expected a variable or a numeric format (F, E, COMMA, DOLLAR, DOT or PCT, such "
                       "as F8.2), found 'A8'.");
  EXPECT_EQ(Error(15), "t.gmx:16:11: expected a variable or a numeric format (F, E, COMMA, DOLLAR, DOT or PCT, such "
                       "as F8.2), found the end of the command.");
  EXPECT_EQ(Error(16), "t.gmx:17:17: expected '/' or the end of the command, found 'age'.");
  EXPECT_EQ(Variable("age").GetLabel(), nullptr);
  EXPECT_TRUE(Variable("age").GetMissingValues().empty());
  EXPECT_EQ(Variable("age").GetMeasurementLevel(), ZORV_Variable::SCALE);
}
