#include "app/AppComputeCommand.h"

#include <gtest/gtest.h>

#include <cmath>

#include "AppDataFixture.h"
#include "AppPeopleData.h"
#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppLexer.h"

using namespace peopledata;

namespace {

class AppComputeCommandTest : public AppDataFixture {
 protected:
  void SetUp() override {
    AppDataFixture::SetUp();
    Write("people.csv", kCsv);
    Write("people.dictionary.json", kDictionary);
  }
};

}  // namespace

TEST_F(AppComputeCommandTest, ANewNumericVariableShowsItsWholeValues) {
  Run(std::string(kLoad) + "COMPUTE age2 = age ** 2.");
  ASSERT_EQ(Commands(), 2u);
  EXPECT_TRUE(Messages(1).empty());
  EXPECT_EQ(Said(1), "The new variable age2 holds 5 computed values, 1 missing.");
  EXPECT_EQ(Num(0, "age2"), 529.0);
  EXPECT_EQ(Num(4, "age2"), 3721.0);
  EXPECT_TRUE(SysMissing(3, "age2"));
  const ZORV_Variable& variable = *Data().GetVariable(Column("age2"));
  EXPECT_EQ(variable.GetFormat().ToText(), "F4.0");
  EXPECT_EQ(variable.GetWriteFormat().ToText(), "F4.0");
  EXPECT_EQ(variable.GetMeasurementLevel(), ZORV_Variable::SCALE);
  EXPECT_EQ(Commands(), 2u);
  EXPECT_EQ(Command(1).fText, "Compute");
}

TEST_F(AppComputeCommandTest, FractionsShowTheDecimalsOfTheirOperandsAndAtLeastTwo) {
  Run(std::string(kLoad) + "COMPUTE half = score / 2.\nCOMPUTE third = id / 3.\nCOMPUTE big = -id * 1E39.");
  EXPECT_EQ(Num(0, "half"), 2.75);
  // score is written with up to 2 decimals: 3.625 shows as 3.63 in F4.2.
  EXPECT_EQ(Data().GetVariable(Column("half"))->GetFormat().ToText(), "F4.2");
  EXPECT_EQ(Data().GetVariable(Column("third"))->GetFormat().ToText(), "F4.2");
  EXPECT_EQ(Data().GetVariable(Column("big"))->GetFormat().ToText(), "E12.4");
}

TEST_F(AppComputeCommandTest, AnExistingVariableGetsNewValuesAndKeepsItsDictionary) {
  Run(std::string(kLoad) + "COMPUTE Age = age + 1.");
  EXPECT_EQ(Said(1), "The variable age holds 5 computed values, 1 missing.");
  EXPECT_EQ(Num(0, "age"), 24.0);
  EXPECT_TRUE(SysMissing(3, "age"));
  EXPECT_EQ(Data().ColumnCount(), 6);
  EXPECT_EQ(Data().GetVariable(Column("age"))->GetFormat().ToText(), "F2.0");
}

TEST_F(AppComputeCommandTest, ANewStringVariableIsAsWideAsItsLongestText) {
  Run(std::string(kLoad) + "COMPUTE tag = CONCAT(sex, '-', STRING(id)).\nCOMPUTE empty = ''.");
  EXPECT_EQ(Said(1), "The new variable tag holds 5 computed values.");
  EXPECT_EQ(Text(1, "tag"), "f-2");
  const ZORV_Variable& tag = *Data().GetVariable(Column("tag"));
  EXPECT_EQ(tag.GetType(), 3);
  EXPECT_EQ(tag.GetFormat().ToText(), "A3");
  EXPECT_EQ(tag.GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(Data().GetVariable(Column("empty"))->GetType(), 1);
}

TEST_F(AppComputeCommandTest, UserMissingValuesAreMissingInExpressions) {
  Run(std::string(kLoad) + "COMPUTE g = grp * 10.\nCOMPUTE gone = MISSING(grp).");
  EXPECT_EQ(Num(0, "g"), 10.0);
  EXPECT_TRUE(SysMissing(4, "g"));
  EXPECT_EQ(Num(4, "gone"), 1.0);
  EXPECT_EQ(Num(3, "gone"), 0.0);
}

TEST_F(AppComputeCommandTest, ValuesThatCannotBeComputedAreWarnedAboutOncePerCommand) {
  Run(std::string(kLoad) + "COMPUTE inv = 1 / (age - 35) + LN(age - 47).\nCOMPUTE ok = age / 2.");
  // Row 1: 1/0 and LN(-12); row 2: LN(0); row 0: LN(-24). Row 3 is missing.
  EXPECT_EQ(Messages(1), (std::vector<std::string>{
                             "WARNING 4 values could not be computed (a division by zero, or a value outside a "
                             "function's domain or beyond the range of numbers) and are missing."}));
  EXPECT_TRUE(Messages(2).empty());
  EXPECT_EQ(Said(1), "The new variable inv holds 5 computed values, 4 missing.");
  EXPECT_EQ(fpSession->ExitStatus(), 0);
}

TEST_F(AppComputeCommandTest, TextsLongerThanAnExistingStringAreCutAndCounted) {
  Run(std::string(kLoad) + "COMPUTE sex = CONCAT(sex, 'x').");
  EXPECT_EQ(Messages(1), (std::vector<std::string>{"WARNING 5 texts were cut to the width of sex (1 byte)."}));
  EXPECT_EQ(Text(0, "sex"), "m");
}

TEST_F(AppComputeCommandTest, MistakesAreReportedWhereTheyStandAndChangeNothing) {
  Run(std::string(kLoad) + "COMPUTE age = sex.\nCOMPUTE sex = 1.\nCOMPUTE z = agee + 1.\nCOMPUTE z = (1.\n"
                           "COMPUTE AND = 1.\nCOMPUTE z 1.\nCOMPUTE = 1.\nCOMPUTE z = 1 2.");
  EXPECT_EQ(Error(1), "t.gmx:2:15: expected a numeric expression for the numeric variable 'age', found the string "
                      "variable 'sex'.");
  EXPECT_EQ(Error(2), "t.gmx:3:15: expected a text expression for the string variable 'sex', found the number 1.");
  EXPECT_EQ(Error(3), "t.gmx:4:13: expected a variable, number, text, function or '(', found 'agee' (the data have "
                      "no variable of that name).");
  EXPECT_EQ(Error(4), "t.gmx:5:15: expected ')' to close the '(' at 5:13, found the end of the command.");
  EXPECT_EQ(Error(5), "t.gmx:6:9: expected a name for the new variable, found 'AND', which is an operator of "
                      "expressions.");
  EXPECT_EQ(Error(6), "t.gmx:7:11: expected '=' after the variable's name, found 1.");
  EXPECT_EQ(Error(7), "t.gmx:8:9: expected the name of the variable to compute, found '='.");
  EXPECT_EQ(Error(8), "t.gmx:9:15: expected an operator or the end of the command, found 2.");
  EXPECT_EQ(Data().ColumnCount(), 6);
  EXPECT_EQ(Num(0, "age"), 23.0);
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

TEST_F(AppComputeCommandTest, ANewNameIsAtMostSixtyFourBytes) {
  const std::string name(65, 'v');
  Run(std::string(kLoad) + "COMPUTE " + name + " = 1.\nCOMPUTE " + name.substr(1) + " = 1.");
  EXPECT_EQ(Error(1), "t.gmx:2:9: expected a name of at most 64 bytes, found '" + name + "' (65 bytes).");
  EXPECT_TRUE(Messages(2).empty());
}

TEST_F(AppComputeCommandTest, WithoutDataThereIsNothingToCompute) {
  Run("COMPUTE z = 1.");
  EXPECT_EQ(Error(0), "t.gmx:1:1: expected data to work on, found none: LOAD a data file before COMPUTE.");
}

TEST_F(AppComputeCommandTest, TheCasePositionGivesATimeIndex) {
  Run(std::string(kLoad) + "COMPUTE t = ROW().\nCOMPUTE season = SIN(2 * PI() * t / 4).");
  EXPECT_EQ(Num(4, "t"), 5.0);
  EXPECT_NEAR(Num(0, "season"), 1.0, 1e-15);
  EXPECT_NEAR(Num(1, "season"), 0.0, 1e-15);
}

TEST(AppComputeCommand, AnInterruptedCommandChangesNothing) {
  ZORV_Dataset data;
  data.AddVariable("x", 0);
  data.AppendCases(3);
  std::vector<AppCommandText> commands = AppLexer::Split("COMPUTE y = x + 1.");
  AppCommandReader reader(commands[0], "t.gmx");
  ZORV_StopFlag::Raise();
  try {
    AppComputeCommand::Run(reader, &data);
    ADD_FAILURE() << "the command ran";
  } catch (const AppCommandError& e) {
    EXPECT_EQ(std::string(e.what()), "t.gmx:1:1: the command was interrupted before it changed anything.");
  }
  ZORV_StopFlag::Clear();
  EXPECT_EQ(data.ColumnCount(), 1);
}
