// One regression parameter: factors by nesting level, covariates by
// multiplicity, identity by shared values, and the way between component
// codes and data values.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "ParamsTestSupport.h"
#include "numeric/display/MCDisplay.h"
#include "params/MIXRegrParameter.h"

using namespace params_test;

namespace {

OBS Number(double value) {
  OBS cell;
  cell.fNum = value;
  return cell;
}

OBS Text(const char* text) {
  OBS cell;
  std::memset(cell.fStr, ' ', sizeof(cell.fStr));
  std::memcpy(cell.fStr, text, std::strlen(text));
  return cell;
}

// Four cases: a factor a (1, 2, 3), a string factor g, a covariate x.
void MakeSmallFile(ZORV_Dataset& data) {
  data.AddVariable("y", 0);
  data.AddVariable("a", 0);
  data.AddVariable("g", 4);
  data.AddVariable("x", 0);
  data.GetVariable(1)->SetFormat(ZORV_Format(ZORV_Format::F, 3, 0));
  data.GetVariable(2)->SetFormat(ZORV_Format(ZORV_Format::A, 4, 0));
  data.AppendCases(4);
  const double as[] = {3, 1, 2, 1};
  const char* gs[] = {"hi", "lo", "hi", "mid"};
  for (long r = 0; r < 4; ++r) {
    data.SetNum(r, 0, static_cast<double>(r));
    data.SetNum(r, 1, as[r]);
    data.SetString(r, 2, gs[r]);
    data.SetNum(r, 3, 0.5 * static_cast<double>(r));
  }
}

class RegrParameterData : public ParamsTest {
 protected:
  RegrParameterData() {
    MakeSmallFile(fData);
    fpRun = std::make_unique<ModelRun>(fData);
    ModelRun& run = *fpRun;
    run.SetTarget(0);
    run.SetPredictors({1, 2}, {3});
    run.AddFixed(run.Effect({{1, false}}, {}));
    run.AddFixed(run.Effect({{1, false}, {2, false}}, {3}));
    run.Complete();
    run.fpAdapter->ChangeSplitNoIter();
  }
  ~RegrParameterData() override { fpRun.reset(); }

  const GLMMSettings& Settings() const { return *fpRun->fSpecs.GetCompSettingsPtr(); }

  ZORV_Dataset fData;
  std::unique_ptr<ModelRun> fpRun;
};

}  // namespace

TEST(MIXRegrParameter, DefaultIsTheIntercept) {
  MIXRegrParameter param;
  EXPECT_TRUE(param.IsIntercept());
  EXPECT_EQ(param.GetEffectIndex(), -1);
  EXPECT_EQ(param.GetTargetCategory(), nullptr);
  EXPECT_EQ(param.GetNFactors(), 0);
  EXPECT_EQ(param.GetNCovariates(), 0);
  EXPECT_EQ(param.GetNCovariateMult(), 0);
}

TEST(MIXRegrParameter, AddingAFactorTwiceChangesNothing) {
  const OBS one = Number(1.0);
  const OBS two = Number(2.0);
  MIXRegrParameter param;
  EXPECT_TRUE(param.AddFactor(3, &one, 1));
  EXPECT_FALSE(param.AddFactor(3, &two, 1));
  EXPECT_EQ(param.GetFactors(), std::vector<int>{3});
  EXPECT_EQ(param.GetFactorNestLevels(), std::vector<int>{1});
  ASSERT_EQ(param.GetCategories().size(), 1u);
  EXPECT_EQ(param.GetCategories()[0], &one);
  EXPECT_FALSE(param.IsIntercept());
}

TEST(MIXRegrParameter, NegativeFactorOrLevelIsRefused) {
  MIXRegrParameter param;
  EXPECT_FALSE(param.AddFactor(-1, nullptr, 0));
  EXPECT_FALSE(param.AddFactor(2, nullptr, -1));
  EXPECT_TRUE(param.IsIntercept());
}

TEST(MIXRegrParameter, FactorsStandInOrderOfTheirLevels) {
  const OBS first = Number(1.0);
  const OBS second = Number(2.0);
  const OBS third = Number(3.0);
  MIXRegrParameter param;
  EXPECT_TRUE(param.AddFactor(10, &first, 2));
  EXPECT_TRUE(param.AddFactor(11, &second, 1));
  EXPECT_TRUE(param.AddFactor(12, &third, 2));
  EXPECT_EQ(param.GetFactors(), (std::vector<int>{11, 10, 12}));
  EXPECT_EQ(param.GetFactorNestLevels(), (std::vector<int>{1, 2, 2}));
  EXPECT_EQ(param.GetCategories(), (std::vector<const OBS*>{&second, &first, &third}));
}

TEST(MIXRegrParameter, ContainsFactorGivesTheCategory) {
  const OBS value = Number(4.0);
  MIXRegrParameter param;
  param.AddFactor(2, &value, 0);
  param.AddFactor(5, nullptr, 0);
  EXPECT_EQ(param.ContainsFactor(2), &value);
  EXPECT_EQ(param.ContainsFactor(5), nullptr);
  EXPECT_EQ(param.ContainsFactor(7), nullptr);
}

TEST(MIXRegrParameter, CovariateMultiplicitiesAddUp) {
  MIXRegrParameter param;
  EXPECT_EQ(param.AddCovariate(5, 1), 1);
  EXPECT_EQ(param.AddCovariate(5, 2), 3);
  EXPECT_EQ(param.GetCovariates(), std::vector<int>{5});
  EXPECT_EQ(param.GetCovariateMult(5), 3);
  EXPECT_EQ(param.GetCovariateMult(6), 0);
  EXPECT_EQ(param.GetNCovariates(), 1);
}

TEST(MIXRegrParameter, BadCovariateArgumentsGiveZero) {
  MIXRegrParameter param;
  EXPECT_EQ(param.AddCovariate(-1, 1), 0);
  EXPECT_EQ(param.AddCovariate(1, 0), 0);
  EXPECT_TRUE(param.IsIntercept());
}

TEST(MIXRegrParameter, TotalMultiplicity) {
  MIXRegrParameter param;
  param.AddCovariate(1, 2);
  param.AddCovariate(4, 3);
  EXPECT_EQ(param.GetNCovariateMult(), 5);
  EXPECT_EQ(param.GetCovariateMultiplicities(), (std::vector<int>{2, 3}));
}

TEST(MIXRegrParameter, SetupFromEffectTakesTheEffectsTerms) {
  // Predictors: factors 20 21, covariates 30 31.
  const std::vector<int> predictors = {20, 21, 30, 31};
  MCModelEffect effect;
  effect.Setup(2, 2, &predictors);
  effect.AddNewFactor(21, false);
  effect.AddNewFactor(20, true);
  effect.AddCovariate(31);
  effect.AddCovariate(31);
  MIXRegrParameter param;
  param.AddCovariate(30, 1);
  EXPECT_TRUE(param.SetupFromEffect(effect, 4));
  EXPECT_EQ(param.GetEffectIndex(), 4);
  EXPECT_EQ(param.GetFactors(), (std::vector<int>{21, 20}));
  EXPECT_EQ(param.GetFactorNestLevels(), (std::vector<int>{0, 1}));
  EXPECT_EQ(param.GetCategories(), (std::vector<const OBS*>{nullptr, nullptr}));
  EXPECT_EQ(param.GetCovariates(), std::vector<int>{31});
  EXPECT_EQ(param.GetCovariateMultiplicities(), std::vector<int>{2});
}

TEST(MIXRegrParameter, SetupFromAnInterceptEffectFails) {
  MCModelEffect intercept;
  MIXRegrParameter param;
  EXPECT_FALSE(param.SetupFromEffect(intercept, 0));
  EXPECT_TRUE(param.IsIntercept());
  EXPECT_EQ(param.GetEffectIndex(), -1);

  const std::vector<int> predictors = {7};
  MCModelEffect effect;
  effect.Setup(1, 0, &predictors);
  effect.AddNewFactor(7, false);
  EXPECT_FALSE(param.SetupFromEffect(effect, -1));
  EXPECT_TRUE(param.IsIntercept());
}

TEST(MIXRegrParameter, EqualTextsInDifferentCellsAreNotEqual) {
  const OBS first = Text("abc");
  const OBS second = Text("abc");
  MIXRegrParameter a;
  MIXRegrParameter b;
  a.AddFactor(1, &first, 0);
  b.AddFactor(1, &second, 0);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  MIXRegrParameter c;
  c.AddFactor(1, &first, 0);
  EXPECT_TRUE(a == c);
}

TEST(MIXRegrParameter, EqualityLooksAtEveryField) {
  const OBS value = Number(1.0);
  const OBS target = Number(2.0);
  MIXRegrParameter base;
  base.AddFactor(1, &value, 0);
  base.AddCovariate(3, 1);
  base.SetEffectIndex(2);

  MIXRegrParameter copy = base;
  EXPECT_TRUE(copy == base);
  EXPECT_EQ(copy.GetCategories()[0], &value);

  MIXRegrParameter otherEffect = base;
  otherEffect.SetEffectIndex(3);
  EXPECT_FALSE(otherEffect == base);
  MIXRegrParameter otherTarget = base;
  otherTarget.SetTargetCategory(&target);
  EXPECT_FALSE(otherTarget == base);
  MIXRegrParameter otherCovariate = base;
  otherCovariate.AddCovariate(3, 1);
  EXPECT_FALSE(otherCovariate == base);
  MIXRegrParameter otherLevel;
  otherLevel.AddFactor(1, &value, 1);
  otherLevel.AddCovariate(3, 1);
  otherLevel.SetEffectIndex(2);
  EXPECT_FALSE(otherLevel == base);
}

TEST(MIXRegrParameter, DisplayWritesTheParts) {
  std::ostringstream text;
  std::ostream* previous = MCDisplay_850::GetOutStream();
  MCDisplay_850::SetOutStream(text);
  MIXRegrParameter intercept;
  intercept.Display();
  MIXRegrParameter param;
  param.AddFactor(4, nullptr, 0);
  param.AddCovariate(6, 2);
  param.SetEffectIndex(1);
  param.Display();
  MCDisplay_850::SetOutStream(*previous);

  const std::string out = text.str();
  EXPECT_NE(out.find("Begin MIXRegrParameter object display."), std::string::npos);
  EXPECT_NE(out.find("No factors are present."), std::string::npos);
  EXPECT_NE(out.find("No covariates are present."), std::string::npos);
  EXPECT_NE(out.find("The factors: 4"), std::string::npos);
  EXPECT_NE(out.find("Factor nesting levels: 0"), std::string::npos);
  EXPECT_NE(out.find("Covariates: 6"), std::string::npos);
  EXPECT_NE(out.find("Covariate multiplicities: 2"), std::string::npos);
  EXPECT_NE(out.find("Index of the effect 1"), std::string::npos);
  EXPECT_NE(out.find("End MIXRegrParameter object display.\n"), std::string::npos);
}

TEST_F(RegrParameterData, DecodeOfTheInterceptLeavesItAlone) {
  MIXRegrParameter param;
  MCRegrParameter compIntercept;
  EXPECT_TRUE(param.DecodeCategories(compIntercept, Settings(), fpRun->fpAdapter.get(), -1));
  EXPECT_TRUE(param.IsIntercept());
  EXPECT_EQ(param.GetEffectIndex(), -1);
}

TEST_F(RegrParameterData, DecodeGivesTheValuesOfTheCodes) {
  const MCModelEffect& effect = Settings().GetModelEffects()[1];
  MCRegrParameter comp;
  ASSERT_TRUE(comp.SetupFromEffect(effect, 1));
  // a: codes 0 1 2 for 1 2 3; g: codes 0 1 2 for "hi" "lo" "mid".
  comp.GetCategories()[0] = 2;
  comp.GetCategories()[1] = 1;

  MIXRegrParameter param;
  param.SetEffectIndex(1);
  ASSERT_TRUE(param.DecodeCategories(comp, Settings(), fpRun->fpAdapter.get(), -1));
  EXPECT_EQ(param.GetFactors(), comp.GetFactors());
  EXPECT_EQ(param.GetCovariates(), comp.GetCovariates());
  ASSERT_EQ(param.GetCategories().size(), 2u);
  ASSERT_NE(param.GetCategories()[0], nullptr);
  ASSERT_NE(param.GetCategories()[1], nullptr);
  EXPECT_EQ(param.GetCategories()[0]->fNum, 3.0);
  EXPECT_EQ(std::string(param.GetCategories()[1]->fStr, 4), "lo  ");

  // And back again.
  MCRegrParameter encoded;
  ASSERT_TRUE(param.EncodeCategories(encoded, Settings(), fpRun->fpAdapter.get(), -1));
  EXPECT_EQ(encoded.GetCategories(), comp.GetCategories());
  EXPECT_EQ(encoded.GetEffectIndex(), 1);
}

TEST_F(RegrParameterData, DecodeOfAnUnknownCodeFails) {
  MCRegrParameter comp;
  ASSERT_TRUE(comp.SetupFromEffect(Settings().GetModelEffects()[0], 0));
  comp.GetCategories()[0] = 3;
  MIXRegrParameter param;
  param.SetEffectIndex(0);
  EXPECT_FALSE(param.DecodeCategories(comp, Settings(), fpRun->fpAdapter.get(), -1));
}

TEST_F(RegrParameterData, EncodeOfAValueTheSplitLacksFails) {
  const OBS missingValue = Number(7.0);
  MIXRegrParameter param;
  ASSERT_TRUE(param.SetupFromEffect(Settings().GetModelEffects()[0], 0));
  param.GetCategories()[0] = &missingValue;
  MCRegrParameter comp;
  EXPECT_FALSE(param.EncodeCategories(comp, Settings(), fpRun->fpAdapter.get(), -1));

  const OBS present = Number(2.0);
  param.GetCategories()[0] = &present;
  MCRegrParameter found;
  ASSERT_TRUE(param.EncodeCategories(found, Settings(), fpRun->fpAdapter.get(), -1));
  EXPECT_EQ(found.GetCategories(), std::vector<int>{1});
}

TEST_F(RegrParameterData, EncodeSetsTheTargetCategory) {
  // The target y is not categorical, so no value of it is found.
  const OBS target = Number(1.0);
  MIXRegrParameter param;
  ASSERT_TRUE(param.SetupFromEffect(Settings().GetModelEffects()[0], 0));
  const OBS value = Number(1.0);
  param.GetCategories()[0] = &value;
  param.SetTargetCategory(&target);
  MCRegrParameter comp;
  EXPECT_FALSE(param.EncodeCategories(comp, Settings(), fpRun->fpAdapter.get(), -1));
}

using RegrParameterDataDeathTest = RegrParameterData;

TEST_F(RegrParameterDataDeathTest, AdapterIsRequired) {
  MIXRegrParameter param;
  MCRegrParameter comp;
  EXPECT_DEATH(param.DecodeCategories(comp, Settings(), nullptr, -1), AssertText("pInpAdapt != 0"));
  EXPECT_DEATH(param.EncodeCategories(comp, Settings(), nullptr, -1), AssertText("pInpAdapt != 0"));
}

TEST_F(RegrParameterDataDeathTest, ComponentParameterMustMatch) {
  // The component's parameter has a factor, the intercept none.
  MCRegrParameter comp;
  ASSERT_TRUE(comp.SetupFromEffect(Settings().GetModelEffects()[0], 0));
  MIXRegrParameter param;
  EXPECT_DEATH(param.DecodeCategories(comp, Settings(), fpRun->fpAdapter.get(), -1),
               AssertText("compCategs.size() == fCategories.size()"));
}
