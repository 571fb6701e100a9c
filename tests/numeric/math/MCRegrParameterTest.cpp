#include "numeric/math/MCRegrParameter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/math/MCModelEffect.h"

using MCMath_850::MCModelEffect;
using MCMath_850::MCRegrParameter;

TEST(MCRegrParameter, Defaults) {
  MCRegrParameter param;
  EXPECT_TRUE(param.IsIntercept());
  EXPECT_EQ(param.GetEffectIndex(), -1);
  EXPECT_EQ(param.GetTargetCategory(), -1);
  EXPECT_EQ(param.GetNFactors(), 0);
}

TEST(MCRegrParameter, FactorsOrderedByLevel) {
  MCRegrParameter param;
  EXPECT_TRUE(param.AddFactor(1, 5, 2));
  EXPECT_TRUE(param.AddFactor(2, 6, 1));
  EXPECT_TRUE(param.AddFactor(3, 7, 2));
  EXPECT_EQ(param.GetFactors(), (std::vector<int>{2, 1, 3}));
  EXPECT_EQ(param.GetCategories(), (std::vector<int>{6, 5, 7}));
  EXPECT_EQ(param.GetFactorNestLevels(), (std::vector<int>{1, 2, 2}));
}

TEST(MCRegrParameter, RefusesBadFactors) {
  MCRegrParameter param;
  EXPECT_TRUE(param.AddFactor(3, 0, 1));
  EXPECT_FALSE(param.AddFactor(3, 1, 1));
  EXPECT_FALSE(param.AddFactor(-1, 1, 1));
  EXPECT_FALSE(param.AddFactor(4, 1, -1));
  EXPECT_EQ(param.GetNFactors(), 1);
}

TEST(MCRegrParameter, Covariates) {
  MCRegrParameter param;
  EXPECT_EQ(param.AddCovariate(5, 1), 1);
  EXPECT_EQ(param.AddCovariate(5, 2), 3);
  EXPECT_EQ(param.AddCovariate(-5, 2), 0);
  EXPECT_EQ(param.AddCovariate(6, 0), 0);
  EXPECT_EQ(param.GetNCovariates(), 1);
  EXPECT_EQ(param.GetCovariateMult(5), 3);
  EXPECT_EQ(param.GetCovariateMult(6), 0);
}

TEST(MCRegrParameter, SetupFromEffect) {
  const std::vector<int> set = {4, 5, 9};
  MCModelEffect effect;
  effect.Setup(2, 1, &set);
  effect.AddNewFactor(5, true);
  effect.AddNewFactor(4, true);
  effect.AddCovariate(9);
  effect.AddCovariate(9);

  MCRegrParameter param;
  param.SetTargetCategory(1);
  EXPECT_TRUE(param.SetupFromEffect(effect, 3, 0));
  EXPECT_EQ(param.GetEffectIndex(), 3);
  EXPECT_EQ(param.GetFactors(), (std::vector<int>{5, 4}));
  EXPECT_EQ(param.GetFactorNestLevels(), (std::vector<int>{0, 1}));
  EXPECT_EQ(param.GetCategories(), (std::vector<int>{0, 0}));
  EXPECT_EQ(param.GetCovariates(), (std::vector<int>{9}));
  EXPECT_EQ(param.GetCovMultiplicities(), (std::vector<int>{2}));
  EXPECT_EQ(param.GetTargetCategory(), 1);

  param.GetCategories()[1] = 4;
  EXPECT_EQ(param.GetCategories()[1], 4);
}

TEST(MCRegrParameter, SetupFromInterceptFails) {
  MCRegrParameter param;
  param.AddCovariate(2, 1);
  EXPECT_FALSE(param.SetupFromEffect(MCModelEffect(), 0));
  MCModelEffect effect;
  effect.AddCovariate(3);
  EXPECT_FALSE(param.SetupFromEffect(effect, -1));
  EXPECT_EQ(param.GetCovariates(), (std::vector<int>{2}));
  EXPECT_EQ(param.GetEffectIndex(), -1);
}

TEST(MCRegrParameter, Display) {
  MCRegrParameter param;
  std::ostringstream os;
  param.Display(os);
  EXPECT_EQ(os.str(),
            "Begin MCRegrParameter display.\n"
            "No factors are present.\n"
            "No covariates are present.\n"
            "Effect index: -1\n"
            "Target category: -1\n"
            "End MCRegrParameter display.\n");
}
