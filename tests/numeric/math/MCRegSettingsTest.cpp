#include "numeric/math/MCRegSettings.h"
#include "numeric/math/MCLogRegSettings.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "numeric/common/MCQueryCancel.h"

using namespace MCMath_850;

namespace {

class NeverCancel : public MCCommon_850::MCQueryCancel {
 public:
  bool IsCancelled() const override { return false; }
};

}  // namespace

TEST(MCRegSettings, Defaults) {
  MCRegSettings settings;
  EXPECT_EQ(settings.GetDependent(), -1);
  EXPECT_TRUE(settings.GetFactors().empty());
  EXPECT_TRUE(settings.GetCovariates().empty());
  EXPECT_TRUE(settings.GetModelEffects().empty());
  EXPECT_TRUE(settings.GetInterceptUse());
  EXPECT_EQ(settings.GetFrequencyWeightVar(), -1);
  EXPECT_EQ(settings.GetRegrWeightVar(), -1);
  EXPECT_DOUBLE_EQ(settings.GetConfidenceLevel(), 0.95);
  EXPECT_EQ(settings.GetCovbType(), MCConst::COVB_MODEL_BASED);
  EXPECT_EQ(settings.GetTolerance(), 1e-12);
  EXPECT_FALSE(settings.GetTransformEffects());
  EXPECT_EQ(settings.GetCancelPointer(), nullptr);
}

TEST(MCRegSettings, RoundTrip) {
  MCRegSettings settings;
  NeverCancel cancel;
  settings.SetDependent(0);
  settings.AddFactor(1, 3);
  settings.AddFactor(2, 4);
  settings.AddCovariate(5);
  MCModelEffect effect;
  effect.AddNewFactor(1, true);
  settings.AddModelEffect(effect);
  settings.SetInterceptUse(false);
  settings.SetFrequencyWeightVar(6);
  settings.SetRegrWeightVar(7);
  settings.SetConfidenceLevel(0.9);
  settings.SetCovbType(MCConst::COVB_ROBUST);
  settings.SetTolerance(1e-8);
  settings.SetTransformEffects(true);
  settings.SetCancelPointer(&cancel);
  EXPECT_EQ(settings.GetDependent(), 0);
  EXPECT_EQ(settings.GetFactors(), (std::vector<int>{1, 2}));
  EXPECT_EQ(settings.GetFactorNCategories(), (std::vector<int>{3, 4}));
  EXPECT_EQ(settings.GetFactorNCategoriesOf(2), 4);
  EXPECT_EQ(settings.GetFactorNCategoriesOf(5), 0);
  EXPECT_EQ(settings.GetCovariates(), (std::vector<int>{5}));
  ASSERT_EQ(settings.GetModelEffects().size(), 1u);
  EXPECT_EQ(settings.GetModelEffects()[0].GetFactors(), (std::vector<int>{1}));
  EXPECT_FALSE(settings.GetInterceptUse());
  EXPECT_EQ(settings.GetFrequencyWeightVar(), 6);
  EXPECT_EQ(settings.GetRegrWeightVar(), 7);
  EXPECT_EQ(settings.GetConfidenceLevel(), 0.9);
  EXPECT_EQ(settings.GetCovbType(), MCConst::COVB_ROBUST);
  EXPECT_EQ(settings.GetTolerance(), 1e-8);
  EXPECT_TRUE(settings.GetTransformEffects());
  EXPECT_EQ(settings.GetCancelPointer(), &cancel);
}

TEST(MCLogRegSettings, DefaultsAndRoundTrip) {
  MCLogRegSettings settings;
  EXPECT_EQ(settings.GetDependentRefCateg(), -1);
  EXPECT_EQ(settings.GetIterationFrequency(), 1);
  EXPECT_EQ(settings.GetLLConCriterion(), 0.0);
  EXPECT_EQ(settings.GetMaxIterations(), 100);
  EXPECT_EQ(settings.GetMaxStepHalvingValue(), 5);
  EXPECT_EQ(settings.GetParamEstConCriterion(), 1e-6);
  settings.SetDependentRefCateg(0);
  settings.SetIterationFrequency(3);
  settings.SetLLConCriterion(1e-5);
  settings.SetMaxIterations(20);
  settings.SetMaxStepHalvingValue(8);
  settings.SetParamEstConCriterion(1e-8);
  EXPECT_EQ(settings.GetDependentRefCateg(), 0);
  EXPECT_EQ(settings.GetIterationFrequency(), 3);
  EXPECT_EQ(settings.GetLLConCriterion(), 1e-5);
  EXPECT_EQ(settings.GetMaxIterations(), 20);
  EXPECT_EQ(settings.GetMaxStepHalvingValue(), 8);
  EXPECT_EQ(settings.GetParamEstConCriterion(), 1e-8);
}

TEST(MCLogRegSettings, DeletesThroughTheBase) {
  std::unique_ptr<MCRegSettings> settings(new MCLogRegSettings());
  settings->SetDependent(2);
  EXPECT_EQ(settings->GetDependent(), 2);
}

TEST(MCLogRegSettings, DisplayCoversBothLevels) {
  MCLogRegSettings settings;
  settings.SetDependent(4);
  std::ostringstream os;
  settings.Display(os);
  const std::string text = os.str();
  EXPECT_EQ(text.rfind("Dependent variable: 4\n", 0), 0u);
  EXPECT_NE(text.find("\nConfidence level: 0.95\n"), std::string::npos);
  EXPECT_NE(text.find("\nCovariance of estimates: model-based (0)\n"), std::string::npos);
  EXPECT_NE(text.find("\nMaximum iterations: 100\n"), std::string::npos);
  EXPECT_NE(text.find("\nMaximum step-halving: 5\n"), std::string::npos);
}
