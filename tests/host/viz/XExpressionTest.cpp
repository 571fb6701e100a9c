#include <gtest/gtest.h>

#include <map>
#include <string>

#include "host/viz/XExpression.h"

namespace {

bool Holds(const std::string& text, const std::map<std::string, std::string>& values) {
  XExpression expression;
  std::string error;
  EXPECT_TRUE(XExpression::Parse(text, expression, error)) << text << ": " << error;
  return expression.Evaluate([&](const std::string& name) {
    auto found = values.find(name);
    return found == values.end() ? std::string() : found->second;
  });
}

std::string Problem(const std::string& text) {
  XExpression expression;
  std::string error;
  EXPECT_FALSE(XExpression::Parse(text, expression, error)) << text;
  return error;
}

}  // namespace

TEST(XExpression, HidesAGuideInEveryPanelButItsOwn) {
  // The conditions the composer writes into the line guide slots.
  const std::string one = "facet1!=\"A\"";
  const std::string two = "facet1!=\"A\"||facet2!=\"x\"";
  EXPECT_FALSE(Holds(one, {{"facet1", "A"}}));
  EXPECT_TRUE(Holds(one, {{"facet1", "B"}}));
  EXPECT_FALSE(Holds(two, {{"facet1", "A"}, {"facet2", "x"}}));
  EXPECT_TRUE(Holds(two, {{"facet1", "A"}, {"facet2", "y"}}));
  EXPECT_TRUE(Holds(two, {{"facet1", "B"}, {"facet2", "x"}}));
  EXPECT_FALSE(Holds("false", {}));
  EXPECT_TRUE(Holds("true", {}));
}

TEST(XExpression, ComparesNumbersAsNumbersAndTextsAsTexts) {
  EXPECT_TRUE(Holds("facet1==\"1\"", {{"facet1", "1.0"}}));
  EXPECT_TRUE(Holds("facet1==1e0", {{"facet1", "1"}}));
  EXPECT_FALSE(Holds("facet1==\"a \"", {{"facet1", "a"}}));
  EXPECT_TRUE(Holds("facet1==''", {}));
  EXPECT_TRUE(Holds("facet1=='caf\xc3\xa9'", {{"facet1", "caf\xc3\xa9"}}));
}

TEST(XExpression, CombinesWithPrecedenceAndParentheses) {
  EXPECT_TRUE(Holds("true || false && false", {}));
  EXPECT_FALSE(Holds("(true || false) && false", {}));
  EXPECT_TRUE(Holds("!(a==\"1\") && !false", {{"a", "2"}}));
  EXPECT_TRUE(Holds("a", {{"a", "yes"}}));
  EXPECT_FALSE(Holds("a", {{"a", "0"}}));
  EXPECT_FALSE(Holds("whenText", {}));
}

TEST(XExpression, NamesWhatItReads) {
  XExpression expression;
  std::string error;
  ASSERT_TRUE(XExpression::Parse("facet1!=\"A\"||facet2!=\"B\"", expression, error));
  EXPECT_EQ(expression.Names(), (std::vector<std::string>{"facet1", "facet2"}));
}

TEST(XExpression, SaysWhatIsWrongAndWhere) {
  EXPECT_EQ(Problem("facet1!=\"A"), "a quoted text is not closed at character 9");
  EXPECT_EQ(Problem("(true"), "a \")\" is missing at character 6");
  EXPECT_EQ(Problem("true false"), "unexpected \"f\" at character 6");
  EXPECT_EQ(Problem("a=="), "the condition ends too early at character 4");
  EXPECT_EQ(Problem("true==a"), "unexpected \"=\" at character 5");
  EXPECT_EQ(Problem(""), "the condition ends too early at character 1");
  EXPECT_EQ(Problem("a==#"), "unexpected \"#\" at character 4");
}
