#include "host/adapter/ACAVarValidSpecs.h"

#include <gtest/gtest.h>

#include <sstream>
#include <cstring>

#include "host/adapter/ACACommonDisplay.h"

TEST(ACAVarValidSpecs, RegistersVariablesInRecordOrder) {
  ACAVarValidSpecs specs(true, true, true);
  EXPECT_TRUE(specs.GetUseFilter());
  EXPECT_EQ(specs.GetNRecordVars(), 0);
  EXPECT_EQ(specs.AddVariable(7, false, false, true, true), 0);
  std::vector<int> factors;
  EXPECT_TRUE(specs.AddVariables({3, 5}, factors, true, false, false, true));
  EXPECT_EQ(factors, (std::vector<int>{1, 2}));
  std::vector<int> covariates;
  EXPECT_TRUE(specs.AddVariables({9}, covariates, false, false, true, true));
  EXPECT_EQ(covariates, std::vector<int>{3});

  EXPECT_EQ(specs.GetNRecordVars(), 4);
  EXPECT_EQ(specs.GetRecVarIndex(7), 0);
  EXPECT_EQ(specs.GetRecVarIndex(5), 2);
  EXPECT_EQ(specs.GetRecVarIndex(4), -1);
  EXPECT_EQ(specs.GetRecVarIndex(-1), -1);
  EXPECT_EQ(specs.GetZORVVarIndex(3), 9);
  EXPECT_EQ(specs.GetZORVVarIndex(4), -1);
  EXPECT_FALSE(specs.GetRecordCatVar(0));
  EXPECT_TRUE(specs.GetRecordCatVar(1));
  EXPECT_FALSE(specs.GetRecordCatVar(-1));
  ASSERT_NE(specs.GetRecordVar(1), nullptr);
  EXPECT_FALSE(specs.GetRecordVar(1)->fbUserMissingExcluded);
  EXPECT_TRUE(specs.GetRecordVar(3)->fbUserMissingExcluded);
  EXPECT_EQ(specs.GetRecordVar(99), nullptr);
}

TEST(ACAVarValidSpecs, ASecondRegistrationKeepsTheFirstPosition) {
  ACAVarValidSpecs specs(true, true, true);
  specs.AddVariable(4, true, false, true, true);
  EXPECT_EQ(specs.AddVariable(4, false, true, false, false), 0);
  EXPECT_EQ(specs.GetNRecordVars(), 1);
  EXPECT_TRUE(specs.GetRecordCatVar(0));
}

TEST(ACAVarValidSpecs, MultipleRecodingGivesNewPositions) {
  ACAVarValidSpecs specs(true, true, true);
  std::vector<int> subjects;
  specs.AddVariables({2, 6}, subjects, true, false, true, true);
  specs.SetMultRecode(true);
  EXPECT_TRUE(specs.GetMultRecode());
  std::vector<int> repeated;
  specs.AddVariables({6, 8, 6}, repeated, true, false, true, true);
  EXPECT_EQ(repeated, (std::vector<int>{2, 3, 2}));
  EXPECT_EQ(specs.GetNRecordVars(), 4);
  EXPECT_EQ(specs.GetRecVarIndex(6), 1);
  EXPECT_EQ(specs.GetRecVarIndex(8), 3);
  EXPECT_TRUE(specs.GetRecordVar(2)->fbMultRecode);
  EXPECT_EQ(specs.GetZORVVarIndex(2), 6);
}

TEST(ACAVarValidSpecs, NegativeHostIndicesRegisterNothing) {
  ACAVarValidSpecs specs(true, true, true);
  EXPECT_EQ(specs.AddVariable(-1, false, false, true, true), -1);
  std::vector<int> out;
  EXPECT_FALSE(specs.AddVariables({1, -3, 2}, out, false, false, true, true));
  EXPECT_EQ(out, (std::vector<int>{0, -1, 1}));
  EXPECT_EQ(specs.GetNRecordVars(), 2);
}

TEST(ACAVarValidSpecs, WeightTakesOnePosition) {
  ACAVarValidSpecs specs(true, true, true);
  EXPECT_EQ(specs.GetWeightRecIndex(), -1);
  specs.AddVariable(0, false, false, true, true);
  EXPECT_EQ(specs.SetWeightVar(), 1);
  EXPECT_EQ(specs.SetWeightVar(), 1);
  EXPECT_EQ(specs.GetWeightRecIndex(), 1);
  EXPECT_TRUE(specs.GetRecordVar(1)->fbWeight);
  EXPECT_EQ(specs.GetZORVVarIndex(1), -1);
  specs.SetWeightHostIndex(12);
  EXPECT_EQ(specs.GetZORVVarIndex(1), 12);
  // The weight column is not found as an ordinary variable.
  EXPECT_EQ(specs.GetRecVarIndex(12), -1);
  EXPECT_EQ(specs.AddVariable(12, false, false, true, true), 2);
}

TEST(ACAVarValidSpecs, DisplaysTheLayout) {
  ACAVarValidSpecs specs(true, false, true);
  specs.AddVariable(3, true, false, false, true);
  std::ostringstream text;
  std::ostream* saved = ACACommonDisplay::GetOutStream();
  ACACommonDisplay::SetOutStream(text);
  specs.Display();
  ACACommonDisplay::SetOutStream(*saved);
  EXPECT_NE(text.str().find("use weight false\n"), std::string::npos);
  EXPECT_NE(text.str().find("count 1\n"), std::string::npos);
  EXPECT_NE(text.str().find("position 0 column 3 categorical listwise\n"), std::string::npos);
}

TEST(ACAVarValidSpecs, WritesValuesInTheirFormat) {
  ACAVarValidSpecs specs(true, true, true);
  OBS value;
  value.fNum = 2.5;
  EXPECT_EQ(specs.ConvertObsToString(&value, ZORV_Format(ZORV_Format::F, 8, 2), false), "2.50");
  EXPECT_EQ(specs.ConvertObsToString(&value, ZORV_Format(ZORV_Format::F, 8, 2), true), "    2.50");
  OBS text;
  std::memcpy(text.fStr, "ab  ", 4);
  EXPECT_EQ(specs.ConvertObsToString(&text, ZORV_Format(ZORV_Format::A, 4, 0), false), "ab");
  EXPECT_EQ(specs.ConvertObsToString(&text, ZORV_Format(ZORV_Format::A, 4, 0), true), "ab  ");
  EXPECT_EQ(specs.ConvertObsToString(nullptr, ZORV_Format(ZORV_Format::F, 8, 2), true), "");
}
