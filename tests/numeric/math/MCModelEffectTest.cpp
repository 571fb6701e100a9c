#include "numeric/math/MCModelEffect.h"

#include <gtest/gtest.h>

#include <sstream>

using MCMath_850::MCModelEffect;

namespace {

// Predictors: factors 10, 11, 12, then covariates 20, 21.
const std::vector<int> kHostSet = {10, 11, 12, 20, 21};
const std::vector<int> kCompSet = {0, 1, 2, 3, 4};

}  // namespace

TEST(MCModelEffect, DefaultIsIntercept) {
  MCModelEffect effect;
  EXPECT_TRUE(effect.IsIntercept());
  EXPECT_EQ(effect.GetNFactors(), 0);
  EXPECT_EQ(effect.GetNCovariates(), 0);
  EXPECT_FALSE(effect.GetFactorsInParens());
  EXPECT_TRUE(effect.GetVarsIndicesForTheEffectInSetting().empty());
}

TEST(MCModelEffect, NestingLevelsStartAtZero) {
  MCModelEffect effect;
  effect.Setup(3, 2, &kHostSet);
  // B and C on the outer level, A nested within them.
  EXPECT_EQ(effect.AddNewFactor(11, true), 0);
  EXPECT_EQ(effect.AddNewFactor(12, false), 1);
  EXPECT_EQ(effect.AddNewFactor(10, true), 2);
  EXPECT_EQ(effect.GetFactors(), (std::vector<int>{11, 12, 10}));
  EXPECT_EQ(effect.GetFactorLevels(), (std::vector<int>{0, 0, 1}));
  EXPECT_EQ(effect.GetFactorPositions(), (std::vector<int>{1, 2, 0}));
  EXPECT_FALSE(effect.IsIntercept());
}

TEST(MCModelEffect, CrossedFactorsShareLevelZero) {
  MCModelEffect effect;
  const std::vector<int> repeated = {7, 8};
  effect.Setup(2, 0, &repeated);
  effect.AddNewFactor(7, false);
  effect.AddNewFactor(8, false);
  EXPECT_EQ(effect.GetFactorLevels(), (std::vector<int>{0, 0}));
}

TEST(MCModelEffect, RefusesUnknownAndRepeatedFactors) {
  MCModelEffect effect;
  effect.Setup(3, 2, &kHostSet);
  EXPECT_EQ(effect.AddNewFactor(99, true), -1);
  EXPECT_EQ(effect.AddNewFactor(20, true), -1);  // a covariate of the set
  EXPECT_EQ(effect.AddNewFactor(10, true), 0);
  EXPECT_EQ(effect.AddNewFactor(10, false), -1);
  EXPECT_EQ(effect.GetNFactors(), 1);
}

TEST(MCModelEffect, CovariateMultiplicities) {
  MCModelEffect effect;
  effect.Setup(3, 2, &kHostSet);
  EXPECT_EQ(effect.AddCovariate(21), 1);
  EXPECT_EQ(effect.AddCovariate(20), 1);
  EXPECT_EQ(effect.AddCovariate(21), 2);
  EXPECT_EQ(effect.AddCovariate(10), -1);
  EXPECT_EQ(effect.GetCovariates(), (std::vector<int>{21, 20}));
  EXPECT_EQ(effect.GetCovMultiplicities(), (std::vector<int>{2, 1}));
  EXPECT_EQ(effect.GetCovariateMult(21), 2);
  EXPECT_EQ(effect.GetCovariateMult(20), 1);
  EXPECT_EQ(effect.GetCovariateMult(10), 0);
  EXPECT_EQ(effect.GetNCovariates(), 2);
}

TEST(MCModelEffect, NewSetOfPredictorsCarriesTheTermsOver) {
  MCModelEffect effect;
  effect.Setup(3, 2, &kHostSet);
  effect.AddNewFactor(12, true);
  effect.AddCovariate(20);
  effect.SetVarsIndicesForTheEffectInSetting({12, 20});

  MCModelEffect comp = effect;
  comp.SetVarIndices(&kCompSet);
  EXPECT_EQ(comp.GetFactors(), (std::vector<int>{2}));
  EXPECT_EQ(comp.GetCovariates(), (std::vector<int>{3}));
  EXPECT_EQ(comp.GetCovariateMult(3), 1);
  EXPECT_EQ(comp.GetFactorLevels(), effect.GetFactorLevels());
  // The ordered list is the caller's to translate.
  EXPECT_EQ(comp.GetVarsIndicesForTheEffectInSetting(), (std::vector<int>{12, 20}));
  EXPECT_EQ(effect.GetFactors(), (std::vector<int>{12}));
}

TEST(MCModelEffect, WithoutASetIndicesStandForThemselves) {
  MCModelEffect effect;
  EXPECT_EQ(effect.AddNewFactor(5, true), 0);
  EXPECT_EQ(effect.AddCovariate(9), 1);
  EXPECT_EQ(effect.GetFactors(), (std::vector<int>{5}));
  EXPECT_EQ(effect.GetCovariates(), (std::vector<int>{9}));
  EXPECT_EQ(effect.AddNewFactor(-1, true), -1);
}

TEST(MCModelEffect, ResetAndSetupClearTheTerms) {
  MCModelEffect effect;
  effect.Setup(3, 2, &kHostSet);
  effect.AddNewFactor(10, true);
  effect.SetFactorsInParens(true);
  effect.Setup(3, 2, &kHostSet);
  EXPECT_TRUE(effect.IsIntercept());
  EXPECT_FALSE(effect.GetFactorsInParens());
  EXPECT_EQ(effect.GetVarIndices(), kHostSet);
  effect.Reset();
  EXPECT_TRUE(effect.GetVarIndices().empty());
  EXPECT_EQ(effect.GetNFactorsInSet(), 0);
}

TEST(MCModelEffect, Display) {
  MCModelEffect effect;
  effect.Setup(3, 2, &kHostSet);
  effect.AddNewFactor(10, true);
  effect.AddCovariate(20);
  effect.AddCovariate(20);
  std::ostringstream os;
  effect.Display(os);
  const std::string text = os.str();
  EXPECT_NE(text.find("Begin MCModelEffect display.\n"), std::string::npos);
  EXPECT_NE(text.find("\nFactors: 10\n"), std::string::npos);
  EXPECT_NE(text.find("\nCovariate multiplicities: 2\n"), std::string::npos);
  EXPECT_NE(text.find("\nFactors in parentheses: false\n"), std::string::npos);
  EXPECT_EQ(text.find("Intercept."), std::string::npos);
}
