#include "app/AppExprParser.h"

#include <gtest/gtest.h>

#include "AppExprTestSupport.h"
#include "AppTestSupport.h"
#include "app/AppExprFunction.h"

using namespace exprtest;

namespace {

class AppExprParserTest : public ::testing::Test {
 protected:
  AppExprParserTest() { MakeFile(fData); }

  std::string Error(const std::string& expression) { return Parse(fData, expression)->fError; }
  AppExprNode::Type Type(const std::string& expression) {
    std::unique_ptr<Parsed> parsed = Parse(fData, expression);
    EXPECT_EQ(parsed->fError, "") << expression;
    return parsed->fpNode ? parsed->fpNode->fType : AppExprNode::NUMERIC;
  }
  // The tree as text, operators by their number, to see how it was grouped.
  std::string Shape(const std::string& expression) {
    std::unique_ptr<Parsed> parsed = Parse(fData, expression);
    EXPECT_EQ(parsed->fError, "") << expression;
    return parsed->fpNode ? Shape(*parsed->fpNode) : std::string();
  }
  static std::string Shape(const AppExprNode& node) {
    switch (node.fKind) {
      case AppExprNode::NUMBER: {
        std::string text = std::to_string(node.fNumber);
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
        return text;
      }
      case AppExprNode::TEXT:
        return "'" + node.fText + "'";
      case AppExprNode::VARIABLE:
        return node.fText;
      case AppExprNode::FUNCTION: {
        std::string text = std::string(node.fpFunction->fName) + "(";
        for (std::size_t i = 0; i < node.fvArgs.size(); ++i) text += (i ? "," : "") + Shape(*node.fvArgs[i]);
        return text + ")";
      }
      case AppExprNode::UNARY:
        return std::string(node.fOperator == AppExprNode::NOT ? "not" : "neg") + "(" + Shape(*node.fvArgs[0]) + ")";
      case AppExprNode::BINARY: {
        static const char* const names[] = {"", "", "+", "-", "*", "/", "**", "=", "<>", "<", "<=", ">", ">=", "and", "or"};
        return "(" + Shape(*node.fvArgs[0]) + " " + names[node.fOperator] + " " + Shape(*node.fvArgs[1]) + ")";
      }
    }
    return "?";
  }

  ZORV_Dataset fData;
};

}  // namespace

TEST_F(AppExprParserTest, OperatorsBindFromPowerToOr) {
  EXPECT_EQ(Shape("1 + 2 * 3"), "(1 + (2 * 3))");
  EXPECT_EQ(Shape("(1 + 2) * 3"), "((1 + 2) * 3)");
  EXPECT_EQ(Shape("10 / 4 / 5"), "((10 / 4) / 5)");
  EXPECT_EQ(Shape("2 ** 3 ** 2"), "(2 ** (3 ** 2))");
  EXPECT_EQ(Shape("-2 ** 2"), "neg((2 ** 2))");
  EXPECT_EQ(Shape("- x ** 2"), "neg((x ** 2))");
  EXPECT_EQ(Shape("2 ** -1"), "(2 ** -1)");
  EXPECT_EQ(Shape("x + 1 < y * 2"), "((x + 1) < (y * 2))");
  EXPECT_EQ(Shape("NOT x = 1"), "not((x = 1))");
  EXPECT_EQ(Shape("~ x = 1"), "not((x = 1))");
  EXPECT_EQ(Shape("x OR y AND NOT x"), "(x or (y and not(x)))");
  EXPECT_EQ(Shape("x | y & x"), "(x or (y and x))");
}

TEST_F(AppExprParserTest, ASignBeforeANumberIsAnOperatorAfterAnOperand) {
  EXPECT_EQ(Shape("x-1"), "(x - 1)");
  EXPECT_EQ(Shape("x -1"), "(x - 1)");
  EXPECT_EQ(Shape("x - -1"), "(x - -1)");
  EXPECT_EQ(Shape("x +2*y"), "(x + (2 * y))");
  EXPECT_EQ(Shape("x -2 ** 2"), "(x - (2 ** 2))");
  EXPECT_EQ(Shape("x * -2"), "(x * -2)");
  EXPECT_EQ(Shape("-1 + x"), "(-1 + x)");
}

TEST_F(AppExprParserTest, ComparisonsOfOneAndTwoCharacters) {
  EXPECT_EQ(Shape("x <= 1"), "(x <= 1)");
  EXPECT_EQ(Shape("x >= 1"), "(x >= 1)");
  EXPECT_EQ(Shape("x <> 1"), "(x <> 1)");
  EXPECT_EQ(Shape("x ~= 1"), "(x <> 1)");
  EXPECT_EQ(Shape("x < -1"), "(x < -1)");
  EXPECT_EQ(Shape("x > 1"), "(x > 1)");
  // Apart, the two characters are two operators, and make no sense.
  EXPECT_EQ(Error("x < = 1"), "t.gmx:1:5: expected a variable, number, text, function or '(', found '='.");
}

TEST_F(AppExprParserTest, NamesAreVariablesOrFunctionsWithoutRegardToCase) {
  EXPECT_EQ(Shape("X + abs(Y)"), "(x + ABS(y))");
  EXPECT_EQ(Shape("pi()"), "PI()");
  EXPECT_EQ(Shape("IF(x > 0, s, 'none')"), "IF((x > 0),s,'none')");
}

TEST_F(AppExprParserTest, EveryNodeKnowsItsType) {
  EXPECT_EQ(Type("s"), AppExprNode::STRING);
  EXPECT_EQ(Type("x"), AppExprNode::NUMERIC);
  EXPECT_EQ(Type("s = 'a'"), AppExprNode::NUMERIC);
  EXPECT_EQ(Type("CONCAT(s, n)"), AppExprNode::STRING);
  EXPECT_EQ(Type("LENGTH(s)"), AppExprNode::NUMERIC);
  EXPECT_EQ(Type("IF(x, s, n)"), AppExprNode::STRING);
  EXPECT_EQ(Type("IF(x, 1)"), AppExprNode::NUMERIC);
  EXPECT_EQ(Type("MISSING(s)"), AppExprNode::NUMERIC);
  EXPECT_EQ(Type("STRING(x, 'F8.2')"), AppExprNode::STRING);
}

TEST_F(AppExprParserTest, OperandsOfTheWrongTypeAreReportedWhereTheyStand) {
  EXPECT_EQ(Error("x + s"), "t.gmx:1:5: expected a numeric operand of '+', found the string variable 's'.");
  EXPECT_EQ(Error("'a' * 2"), "t.gmx:1:1: expected a numeric operand of '*', found the text 'a'.");
  EXPECT_EQ(Error("-s"), "t.gmx:1:2: expected a numeric operand of '-', found the string variable 's'.");
  EXPECT_EQ(Error("NOT s"), "t.gmx:1:5: expected a numeric operand of NOT, found the string variable 's'.");
  EXPECT_EQ(Error("x AND UPPER(s)"),
            "t.gmx:1:7: expected a numeric operand of AND, found the text function UPPER.");
  EXPECT_EQ(Error("s = 1"), "t.gmx:1:5: expected a text to compare with the text before '=', found the number 1.");
  EXPECT_EQ(Error("x < 'a'"), "t.gmx:1:5: expected a number to compare with the number before '<', found the text 'a'.");
}

TEST_F(AppExprParserTest, CallsAreCheckedAgainstTheFunction) {
  EXPECT_EQ(Error("LN(s)"), "t.gmx:1:4: expected a number as argument 1 of LN, found the string variable 's'.");
  EXPECT_EQ(Error("ROUND(x, '2')"), "t.gmx:1:10: expected a number as argument 2 of ROUND, found the text '2'.");
  EXPECT_EQ(Error("UPPER(x + 1)"), "t.gmx:1:7: expected a text as argument 1 of UPPER, found a numeric expression.");
  EXPECT_EQ(Error("LN(1, 2)"), "t.gmx:1:1: the function LN takes 1 argument, found 2.");
  EXPECT_EQ(Error("ROUND()"), "t.gmx:1:1: the function ROUND takes 1 or 2 arguments, found 0.");
  EXPECT_EQ(Error("MIN()"), "t.gmx:1:1: the function MIN takes at least 1 argument, found 0.");
  EXPECT_EQ(Error("PI(1)"), "t.gmx:1:1: the function PI takes no arguments, found 1.");
  EXPECT_EQ(Error("IF(x, 1, 'a')"), "t.gmx:1:10: expected a number as argument 3 of IF, found the text 'a'.");
  EXPECT_EQ(Error("IF(s, 1, 2)"), "t.gmx:1:4: expected a number as argument 1 of IF, found the string variable 's'.");
  EXPECT_EQ(Error("STRING(x, 'Q9')"),
            "t.gmx:1:11: expected a number format such as 'F8.2' as argument 2 of STRING, found the text 'Q9'.");
  EXPECT_EQ(Error("STRING(x, 'A8')"),
            "t.gmx:1:11: expected a number format such as 'F8.2' as argument 2 of STRING, found the text 'A8'.");
}

TEST_F(AppExprParserTest, UnknownNamesAndMisplacedCallsAreNamed) {
  EXPECT_EQ(Error("Dayz + 1"), "t.gmx:1:1: expected a variable, number, text, function or '(', found 'Dayz' (the "
                               "data have no variable of that name).");
  EXPECT_EQ(Error("x(1)"), "t.gmx:1:1: expected a function, found 'x', which is a variable.");
  EXPECT_EQ(Error("FOO(1)"), "t.gmx:1:1: expected a function, found 'FOO' (there is no function of that name).");
  EXPECT_EQ(Error("ABS + 1"), "t.gmx:1:5: expected '(' after the function ABS, found '+'.");
}

TEST_F(AppExprParserTest, ParenthesesMustBalance) {
  EXPECT_EQ(Error("(x + 1"), "t.gmx:1:7: expected ')' to close the '(' at 1:1, found the end of the command.");
  EXPECT_EQ(Error("ABS((x)"), "t.gmx:1:8: expected ',' or ')' to close the '(' at 1:4, found the end of the command.");
  EXPECT_EQ(Error("x + 1)"), "t.gmx:1:6: expected an operator or the end of the command, found ')'.");
  EXPECT_EQ(Error("1 +"), "t.gmx:1:4: expected a variable, number, text, function or '(', found the end of the command.");
  EXPECT_EQ(Error("MAX(x,)"), "t.gmx:1:7: expected a variable, number, text, function or '(', found ')'.");
}

TEST_F(AppExprParserTest, ComparisonsDoNotChain) {
  EXPECT_EQ(Error("x < y < 3"), "t.gmx:1:7: expected AND or OR between two comparisons, found '<'.");
  EXPECT_EQ(Shape("x < y AND y < 3"), "((x < y) and (y < 3))");
}

TEST_F(AppExprParserTest, TheColumnsReadAreListedOnce) {
  std::unique_ptr<Parsed> parsed = Parse(fData, "x + y * x + LENGTH(s)");
  ASSERT_EQ(parsed->fError, "");
  EXPECT_EQ(parsed->fpNode->UsedColumns(), (std::vector<int>{0, 1, 2}));
}

TEST(AppExprFunction, EachFunctionIsFoundByNameAndSaysWhatItTakes) {
  EXPECT_EQ(AppExprFunction::Find("log10"), AppExprFunction::Find("LOG10"));
  EXPECT_EQ(AppExprFunction::Find("nosuch"), nullptr);
  for (const AppExprFunction& function : AppExprFunction::All()) {
    EXPECT_EQ(AppExprFunction::Find(function.fName), &function);
    EXPECT_NE(std::string(function.fUsage).find(function.fName), std::string::npos) << function.fName;
    EXPECT_FALSE(std::string(function.fSummary).empty()) << function.fName;
  }
  EXPECT_EQ(AppExprFunction::Find("SUBSTR")->DescribeArity(), "takes 2 or 3 arguments");
  EXPECT_EQ(AppExprFunction::Find("SUBSTR")->ArgType(0), 'S');
  EXPECT_EQ(AppExprFunction::Find("MEAN")->ArgType(7), 'N');
}

TEST_F(AppExprParserTest, NestingIsBoundedSoThatNothingRunsOutOfStack) {
  const std::string tooDeep = "expected an expression nested at most 1000 levels deep, found a deeper one (split it "
                              "over several commands).";
  const std::string parens = std::string(5000, '(') + "x" + std::string(5000, ')');
  EXPECT_NE(Error(parens).find(tooDeep), std::string::npos);
  std::string signs;
  for (int i = 0; i < 5000; ++i) signs += "- ";
  EXPECT_NE(Error(signs + "x").find(tooDeep), std::string::npos);
  std::string nots;
  for (int i = 0; i < 5000; ++i) nots += "NOT ";
  EXPECT_NE(Error(nots + "x").find(tooDeep), std::string::npos);
  std::string sum = "x";
  for (int i = 0; i < 5000; ++i) sum += " + 1";
  EXPECT_NE(Error(sum).find(tooDeep), std::string::npos);
  std::string powers = "x";
  for (int i = 0; i < 5000; ++i) powers += " ** 1";
  EXPECT_NE(Error(powers).find(tooDeep), std::string::npos);
  // Everyday nesting is far from the bound.
  EXPECT_EQ(Error(std::string(100, '(') + "x" + std::string(100, ')')), "");
  std::string long_sum = "x";
  for (int i = 0; i < 500; ++i) long_sum += " + 1";
  EXPECT_EQ(Error(long_sum), "");
}
