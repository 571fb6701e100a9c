// Each operator and function, with missing values, and the values that
// cannot be computed. The expected values are worked out by hand.
#include "app/AppExprEvaluator.h"

#include <gtest/gtest.h>

#include <cmath>

#include "AppExprTestSupport.h"

using namespace exprtest;

namespace {

class AppExprEvaluatorTest : public ::testing::Test {
 protected:
  AppExprEvaluatorTest() { MakeFile(fData); }

  // The value for one case; `failures` receives the values that could not
  // be computed.
  AppExprValue Value(const std::string& expression, long row, long* failures = nullptr) {
    std::unique_ptr<Parsed> parsed = Parse(fData, expression);
    EXPECT_EQ(parsed->fError, "") << expression;
    if (!parsed->fpNode) return AppExprValue();
    AppExprEvaluator evaluator(fData);
    AppExprValue value = evaluator.Evaluate(*parsed->fpNode, row);
    if (failures != nullptr) *failures = evaluator.GetFailures();
    return value;
  }
  double Number(const std::string& expression, long row = 0) { return Value(expression, row).fNumber; }
  bool Missing(const std::string& expression, long row = 0) { return Value(expression, row).IsMissingNumber(); }
  std::string Text(const std::string& expression, long row = 0) {
    AppExprValue value = Value(expression, row);
    return value.fbMissingText ? "<missing>" : value.fText;
  }
  // A value that cannot be computed is missing, and counted once.
  void ExpectFailure(const std::string& expression, long row = 0) {
    long failures = 0;
    AppExprValue value = Value(expression, row, &failures);
    EXPECT_TRUE(value.IsMissingNumber()) << expression;
    EXPECT_EQ(failures, 1) << expression;
  }
  // A missing operand makes the value missing, which is no failure.
  void ExpectMissing(const std::string& expression, long row) {
    long failures = 0;
    AppExprValue value = Value(expression, row, &failures);
    EXPECT_TRUE(value.IsMissingNumber()) << expression << " at row " << row;
    EXPECT_EQ(failures, 0) << expression;
  }

  ZORV_Dataset fData;
};

}  // namespace

TEST_F(AppExprEvaluatorTest, ArithmeticOnNumbers) {
  EXPECT_EQ(Number("x + y"), 6.0);
  EXPECT_EQ(Number("x - y"), 2.0);
  EXPECT_EQ(Number("x-1"), 3.0);
  EXPECT_EQ(Number("x * y"), 8.0);
  EXPECT_EQ(Number("x / y"), 2.0);
  EXPECT_EQ(Number("x ** y"), 16.0);
  EXPECT_EQ(Number("-x", 1), 1.0);
  EXPECT_EQ(Number("+x", 1), -1.0);
  EXPECT_EQ(Number("2 ** -1"), 0.5);
  EXPECT_EQ(Number("-2 ** 2"), -4.0);
  EXPECT_EQ(Number("2 ** 3 ** 2"), 512.0);
  EXPECT_EQ(Number("1 + 2 * 3 - 4 / 2"), 5.0);
}

TEST_F(AppExprEvaluatorTest, ArithmeticOnAMissingValueIsMissing) {
  for (const char* expression : {"x + y", "x - y", "x * y", "x / y", "x ** y", "-x"}) {
    ExpectMissing(expression, 2);  // x system-missing
    ExpectMissing(expression, 4);  // x user-missing
  }
  ExpectMissing("x + y", 3);  // y system-missing
  // A user-missing value counts as missing wherever it is read.
  ExpectMissing("x * 0", 4);
}

TEST_F(AppExprEvaluatorTest, ValuesThatCannotBeComputedAreMissingAndCounted) {
  ExpectFailure("x / y", 1);      // -1 / 0
  ExpectFailure("0 / 0");
  ExpectFailure("0 ** -1");
  ExpectFailure("(-8) ** 0.5");
  ExpectFailure("10 ** 400");
  ExpectFailure("1E308 * 10");
}

TEST_F(AppExprEvaluatorTest, ComparisonsGiveOneOrZero) {
  EXPECT_EQ(Number("x = 4"), 1.0);
  EXPECT_EQ(Number("x <> 4"), 0.0);
  EXPECT_EQ(Number("x ~= 3"), 1.0);
  EXPECT_EQ(Number("x < 4"), 0.0);
  EXPECT_EQ(Number("x <= 4"), 1.0);
  EXPECT_EQ(Number("x > y"), 1.0);
  EXPECT_EQ(Number("x >= 5"), 0.0);
  ExpectMissing("x > 1", 2);
  ExpectMissing("y = 1", 3);
}

TEST_F(AppExprEvaluatorTest, TextsCompareByTheirBytesWithoutTrailingBlanks) {
  EXPECT_EQ(Number("s = 'abc'"), 1.0);
  EXPECT_EQ(Number("s = 'abc   '"), 1.0);
  EXPECT_EQ(Number("s < 'abd'"), 1.0);
  EXPECT_EQ(Number("s > 'ab'"), 1.0);
  EXPECT_EQ(Number("s = ' Hi'", 1), 1.0);  // a leading blank counts
  EXPECT_EQ(Number("s = 'Hi'", 1), 0.0);
  EXPECT_EQ(Number("s = ''", 2), 1.0);     // blanks are a value, not missing
  ExpectMissing("s = 'NA'", 4);            // user-missing
}

TEST_F(AppExprEvaluatorTest, LogicalOperatorsLetADecidingSideWinOverAMissingOne) {
  EXPECT_EQ(Number("x > 0 AND y > 0"), 1.0);
  EXPECT_EQ(Number("x > 0 AND y > 0", 1), 0.0);
  EXPECT_EQ(Number("x > 0 OR y > 0", 1), 0.0);
  EXPECT_EQ(Number("x > 0 OR y = 0", 1), 1.0);
  // x is missing in row 2: a false side makes AND false, a true side makes OR true.
  EXPECT_EQ(Number("x > 0 AND y > 5", 2), 0.0);
  EXPECT_EQ(Number("x > 0 OR y > 0", 2), 1.0);
  ExpectMissing("x > 0 AND y > 0", 2);
  ExpectMissing("x > 0 OR y > 5", 2);
  EXPECT_EQ(Number("NOT x", 3), 1.0);
  EXPECT_EQ(Number("NOT x", 1), 0.0);
  ExpectMissing("NOT x", 2);
  EXPECT_EQ(Number("2 AND -1"), 1.0);  // any number but 0 is true
}

TEST_F(AppExprEvaluatorTest, NumericFunctions) {
  EXPECT_EQ(Number("ABS(x)", 1), 1.0);
  EXPECT_EQ(Number("EXP(0)"), 1.0);
  EXPECT_DOUBLE_EQ(Number("LN(EXP(2))"), 2.0);
  EXPECT_DOUBLE_EQ(Number("LOG10(1000)"), 3.0);
  EXPECT_EQ(Number("SQRT(x)"), 2.0);
  EXPECT_DOUBLE_EQ(Number("SIN(PI() / 2)"), 1.0);
  EXPECT_DOUBLE_EQ(Number("COS(PI())"), -1.0);
  EXPECT_DOUBLE_EQ(Number("ATAN(1) * 4"), std::acos(-1.0));
  EXPECT_EQ(Number("TRUNC(-2.7)"), -2.0);
  EXPECT_EQ(Number("MOD(7, 3)"), 1.0);
  EXPECT_EQ(Number("MOD(-7, 3)"), -1.0);
  EXPECT_EQ(Number("MOD(7.5, 2)"), 1.5);
  for (const char* expression : {"ABS(x)", "EXP(x)", "LN(x)", "LOG10(x)", "SQRT(x)", "SIN(x)", "COS(x)", "ATAN(x)",
                                 "ROUND(x)", "ROUND(1, x)", "TRUNC(x)", "MOD(x, 2)", "MOD(2, x)"}) {
    ExpectMissing(expression, 2);
    ExpectMissing(expression, 4);
  }
}

TEST_F(AppExprEvaluatorTest, FunctionsOutsideTheirDomainCannotBeComputed) {
  ExpectFailure("LN(x)", 1);
  ExpectFailure("LN(x)", 3);
  ExpectFailure("LOG10(x)", 1);
  ExpectFailure("SQRT(x)", 1);
  ExpectFailure("EXP(1000)");
  ExpectFailure("MOD(1, 0)");
  ExpectFailure("ROUND(1, 16)");
}

TEST_F(AppExprEvaluatorTest, RoundingGoesHalfAwayFromZeroAtTheDecimalsAsked) {
  EXPECT_EQ(Number("ROUND(2.5)"), 3.0);
  EXPECT_EQ(Number("ROUND(-2.5)"), -3.0);
  EXPECT_EQ(Number("ROUND(2.4999)"), 2.0);
  EXPECT_DOUBLE_EQ(Number("ROUND(2.675, 2)"), 2.68);
  EXPECT_DOUBLE_EQ(Number("ROUND(-1.005, 2)"), -1.01);
  EXPECT_EQ(Number("ROUND(1250, -2)"), 1300.0);
  EXPECT_EQ(Number("ROUND(3.7, 0.9)"), 4.0);  // decimals are whole: 0.9 is 0
}

TEST_F(AppExprEvaluatorTest, SummariesTakeTheArgumentsThatAreNotMissing) {
  EXPECT_EQ(Number("MIN(x, y, 10)"), 2.0);
  EXPECT_EQ(Number("MAX(x, y, 10)"), 10.0);
  EXPECT_EQ(Number("MEAN(x, y)"), 3.0);
  EXPECT_EQ(Number("SUM(x, y, 1)"), 7.0);
  // Row 2: x is missing, y is 3.
  EXPECT_EQ(Number("MIN(x, y)", 2), 3.0);
  EXPECT_EQ(Number("MAX(x, y)", 2), 3.0);
  EXPECT_EQ(Number("MEAN(x, y)", 2), 3.0);
  EXPECT_EQ(Number("SUM(x, y)", 2), 3.0);
  // Row 4: x is user-missing.
  EXPECT_EQ(Number("MEAN(x, y)", 4), 1.0);
  for (const char* expression : {"MIN(x)", "MAX(x)", "MEAN(x)", "SUM(x)"}) ExpectMissing(expression, 2);
}

TEST_F(AppExprEvaluatorTest, MissingTestsForSystemAndUserMissingValues) {
  EXPECT_EQ(Number("MISSING(x)", 0), 0.0);
  EXPECT_EQ(Number("MISSING(x)", 2), 1.0);
  EXPECT_EQ(Number("MISSING(x)", 4), 1.0);
  EXPECT_EQ(Number("MISSING(x / y)", 1), 1.0);
  EXPECT_EQ(Number("MISSING(s)", 4), 1.0);
  EXPECT_EQ(Number("MISSING(s)", 2), 0.0);
}

TEST_F(AppExprEvaluatorTest, IfComputesOnlyTheBranchItChooses) {
  EXPECT_EQ(Number("IF(x > 0, 1, 2)", 0), 1.0);
  EXPECT_EQ(Number("IF(x > 0, 1, 2)", 1), 2.0);
  ExpectMissing("IF(x > 0, 1, 2)", 2);
  ExpectMissing("IF(x > 0, 1)", 1);
  // Row 1 has y = 0: the division is never made, so nothing is counted.
  long failures = 0;
  EXPECT_EQ(Value("IF(y <> 0, 10 / y, 0)", 1, &failures).fNumber, 0.0);
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(Text("IF(x > 0, s, 'neg')", 1), "neg");
  EXPECT_EQ(Text("IF(x > 0, s)", 1), "<missing>");
  EXPECT_EQ(Text("IF(x > 0, s)", 2), "<missing>");
}

TEST_F(AppExprEvaluatorTest, TheCasePositionAndPi) {
  EXPECT_EQ(Number("ROW()", 0), 1.0);
  EXPECT_EQ(Number("ROW()", 4), 5.0);
  EXPECT_DOUBLE_EQ(Number("PI()"), std::acos(-1.0));
}

TEST_F(AppExprEvaluatorTest, TextFunctions) {
  EXPECT_EQ(Text("CONCAT(s, '-', n)"), "abc-12.5");
  EXPECT_EQ(Text("CONCAT(s, '|')", 1), " Hi|");
  EXPECT_EQ(Text("SUBSTR('h\xC3\xA9llo', 2, 3)"), "\xC3\xA9ll");
  EXPECT_EQ(Text("SUBSTR('abc', 2)"), "bc");
  EXPECT_EQ(Text("SUBSTR('abc', 5)"), "");
  EXPECT_EQ(Text("SUBSTR('abc', 0, 2)"), "ab");
  EXPECT_EQ(Text("SUBSTR('abc', 2, -1)"), "");
  EXPECT_EQ(Text("UPPER('a\xC3\xA9 b')"), "A\xC3\xA9 B");
  EXPECT_EQ(Text("LOWER('AbC')"), "abc");
  EXPECT_EQ(Text("TRIM(s)", 1), "Hi");
  EXPECT_EQ(Number("LENGTH(s)", 1), 3.0);
  EXPECT_EQ(Number("LENGTH('h\xC3\xA9')"), 2.0);
  EXPECT_EQ(Text("STRING(x)"), "4");
  EXPECT_EQ(Text("STRING(0.1)"), "0.1");
  EXPECT_EQ(Text("STRING(x, 'F8.2')", 1), "-1.00");
  EXPECT_EQ(Text("STRING(1234.5, 'COMMA9.1')"), "1,234.5");
}

TEST_F(AppExprEvaluatorTest, TextFunctionsOfAMissingValueAreMissing) {
  for (const char* expression : {"CONCAT(s, 'a')", "SUBSTR(s, 1)", "UPPER(s)", "LOWER(s)", "TRIM(s)"}) {
    EXPECT_EQ(Text(expression, 4), "<missing>") << expression;
  }
  ExpectMissing("LENGTH(s)", 4);
  ExpectMissing("SUBSTR(s, x)", 2);
  EXPECT_EQ(Text("STRING(x)", 2), "<missing>");
  EXPECT_EQ(Text("STRING(x, 'F8.2')", 4), "<missing>");
}

TEST_F(AppExprEvaluatorTest, NumbersFromTexts) {
  EXPECT_EQ(Number("NUMBER(n)", 0), 12.5);
  EXPECT_EQ(Number("NUMBER(n)", 3), 3.0);
  EXPECT_EQ(Number("NUMBER(n)", 4), 1000.0);
  ExpectMissing("NUMBER(n)", 2);  // blank
  ExpectFailure("NUMBER(n)", 1);  // 'x'
  ExpectMissing("NUMBER(s)", 4);  // user-missing
}

TEST_F(AppExprEvaluatorTest, FailuresAreCountedOverCases) {
  std::unique_ptr<Parsed> parsed = Parse(fData, "LN(x) + 1 / y");
  ASSERT_EQ(parsed->fError, "");
  AppExprEvaluator evaluator(fData);
  for (long row = 0; row < 5; ++row) evaluator.Evaluate(*parsed->fpNode, row);
  // Row 1: LN(-1) and 1/0; row 3: LN(0) (y missing makes the sum missing
  // after the logarithm failed). Rows 2 and 4 are missing.
  EXPECT_EQ(evaluator.GetFailures(), 3);
}
