#include "numeric/gzl/GZLSettings.h"

#include <gtest/gtest.h>

#include <sstream>

using GZLM_NAMESPACE_850::GZLSettings;
using namespace MCMath_850::MCConst;

TEST(GZLSettings, Defaults) {
  GZLSettings settings;
  EXPECT_EQ(settings.GetSingleDependent(), -1);
  EXPECT_EQ(settings.GetOffset(), -1);
  EXPECT_EQ(settings.GetOffsetValue(), 0.0);
  EXPECT_EQ(settings.GetOffsetType(), OFFSET_NONE);
  EXPECT_EQ(settings.GetEffectAnalysisType(), EFFECT_TYPE_III);
  EXPECT_EQ(settings.GetEffectAnalysisStat(), GZLConst_850::EFFECT_STAT_WALD);
  EXPECT_EQ(settings.GetCSIteration(), 20);
  EXPECT_EQ(settings.GetCIType(), GZLConst_850::CI_WALD);
  EXPECT_EQ(settings.GetCIConvProfile(), 1e-4);
  EXPECT_FALSE(settings.GetGEFTest());
  EXPECT_FALSE(settings.GetModelFittingTest());
  EXPECT_EQ(settings.GetHessianCompMethod(), HESSIAN_FISHER_THEN_NEWTON);
  EXPECT_TRUE(settings.GetEmmeans().empty());
  EXPECT_EQ(settings.GetHConvergeType(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetLConvergeType(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetPConvergeType(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetToleranceHessian(), 0.0);
  EXPECT_EQ(settings.GetMaxIterationsSQP(), 100);
  EXPECT_EQ(settings.GetHConvergeTypeSQP(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetLConvergeTypeSQP(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetPConvergeTypeSQP(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetToleranceHessianSQP(), 0.0);
  EXPECT_EQ(settings.GetToleranceLogLikeSQP(), 0.0);
  EXPECT_EQ(settings.GetToleranceParamSQP(), 1e-6);
  EXPECT_EQ(settings.GetMaxIterationsPLCI(), 100);
  EXPECT_EQ(settings.GetToleranceHessianPLCI(), 1e-4);
  EXPECT_EQ(settings.GetToleranceLogLikePLCI(), 1e-4);
  EXPECT_EQ(settings.GetLConvergeTypeTypeIandIII(), CONV_RELATIVE);
  EXPECT_EQ(settings.GetTolLogLikeTypeIandIII(), 1e-4);
  // Inherited defaults.
  EXPECT_EQ(settings.GetMaxIterations(), 100);
  EXPECT_EQ(settings.GetTolerance(), 1e-12);
}

TEST(GZLSettings, RoundTrip) {
  GZLSettings settings;
  settings.SetSingleDependent(3);
  settings.SetEffectAnalysisType(EFFECT_TYPE_I);
  settings.SetEffectAnalysisStat(GZLConst_850::EFFECT_STAT_LIKELIHOOD_RATIO);
  settings.SetCSIteration(5);
  settings.SetCIType(GZLConst_850::CI_PROFILE_LIKELIHOOD);
  settings.SetCIConvProfile(1e-3);
  settings.SetGEFTest(true);
  settings.SetModelFittingTest(true);
  settings.SetHessianCompMethod(HESSIAN_NEWTON_RAPHSON);
  settings.SetHConvergeType(CONV_ABSOLUTE);
  settings.SetLConvergeType(CONV_ABSOLUTE);
  settings.SetPConvergeType(CONV_ABSOLUTE);
  settings.SetToleranceHessian(1e-9);
  settings.SetMaxIterationsSQP(30);
  settings.SetHConvergeTypeSQP(CONV_ABSOLUTE);
  settings.SetLConvergeTypeSQP(CONV_ABSOLUTE);
  settings.SetPConvergeTypeSQP(CONV_ABSOLUTE);
  settings.SetToleranceHessianSQP(1e-7);
  settings.SetToleranceLogLikeSQP(1e-6);
  settings.SetToleranceParamSQP(1e-5);
  settings.SetMaxIterationsPLCI(40);
  settings.SetToleranceHessianPLCI(1e-3);
  settings.SetToleranceLogLikePLCI(1e-2);
  settings.SetLConvergeTypeTypeIandIII(CONV_ABSOLUTE);
  settings.SetTolLogLikeTypeIandIII(1e-3);
  EXPECT_EQ(settings.GetSingleDependent(), 3);
  EXPECT_EQ(settings.GetDependent(), 3);
  EXPECT_EQ(settings.GetEffectAnalysisType(), EFFECT_TYPE_I);
  EXPECT_EQ(settings.GetEffectAnalysisStat(), GZLConst_850::EFFECT_STAT_LIKELIHOOD_RATIO);
  EXPECT_EQ(settings.GetCSIteration(), 5);
  EXPECT_EQ(settings.GetCIType(), GZLConst_850::CI_PROFILE_LIKELIHOOD);
  EXPECT_EQ(settings.GetCIConvProfile(), 1e-3);
  EXPECT_TRUE(settings.GetGEFTest());
  EXPECT_TRUE(settings.GetModelFittingTest());
  EXPECT_EQ(settings.GetHessianCompMethod(), HESSIAN_NEWTON_RAPHSON);
  EXPECT_EQ(settings.GetHConvergeType(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetLConvergeType(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetPConvergeType(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetToleranceHessian(), 1e-9);
  EXPECT_EQ(settings.GetMaxIterationsSQP(), 30);
  EXPECT_EQ(settings.GetHConvergeTypeSQP(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetLConvergeTypeSQP(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetPConvergeTypeSQP(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetToleranceHessianSQP(), 1e-7);
  EXPECT_EQ(settings.GetToleranceLogLikeSQP(), 1e-6);
  EXPECT_EQ(settings.GetToleranceParamSQP(), 1e-5);
  EXPECT_EQ(settings.GetMaxIterationsPLCI(), 40);
  EXPECT_EQ(settings.GetToleranceHessianPLCI(), 1e-3);
  EXPECT_EQ(settings.GetToleranceLogLikePLCI(), 1e-2);
  EXPECT_EQ(settings.GetLConvergeTypeTypeIandIII(), CONV_ABSOLUTE);
  EXPECT_EQ(settings.GetTolLogLikeTypeIandIII(), 1e-3);
}

TEST(GZLSettings, OffsetVariableOrValue) {
  GZLSettings settings;
  settings.SetOffset(4);
  EXPECT_EQ(settings.GetOffsetType(), OFFSET_VARIABLE);
  EXPECT_EQ(settings.GetOffset(), 4);
  settings.SetOffsetValue(1.5);
  EXPECT_EQ(settings.GetOffsetType(), OFFSET_VALUE);
  EXPECT_EQ(settings.GetOffsetValue(), 1.5);
  settings.SetOffset(-1);
  EXPECT_EQ(settings.GetOffsetType(), OFFSET_NONE);
}

TEST(GZLSettings, Emmeans) {
  GZLSettings settings;
  MCMath_850::MCEmmeansSpec first;
  first.AddFactor(2, 0);
  MCMath_850::MCEmmeansSpec second;
  second.AddFactor(3, 0);
  second.SetRefCateg(1);
  settings.SetEmmeans({first, second});
  ASSERT_EQ(settings.GetEmmeans().size(), 2u);
  EXPECT_EQ(settings.GetEmmeans()[1].GetRefCateg(), 1);
  EXPECT_EQ(settings.GetEmmeans()[0].GetFactors(), (std::vector<int>{2}));
}

TEST(GZLSettings, Display) {
  GZLSettings settings;
  std::ostringstream os;
  settings.Display(os);
  const std::string text = os.str();
  EXPECT_NE(text.find("\nEffect analysis type: Type III (1)\n"), std::string::npos);
  EXPECT_NE(text.find("\nConfidence interval type: Wald (0)\n"), std::string::npos);
  EXPECT_NE(text.find("\nHessian computation: Fisher scoring, then Newton-Raphson (3)\n"), std::string::npos);
  EXPECT_NE(text.find("\nMaximum iterations: 100\n"), std::string::npos);
}
