#include "numeric/glmm/GLMMTargetSpec.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/glmm/GLMMSettings.h"

using MCGLMM_850::GLMMTargetSpec;
using namespace GLMMConst_850;

TEST(GLMMTargetSpec, DefaultIsTheLinearModel) {
  GLMMTargetSpec spec;
  EXPECT_EQ(spec.GetDistribution(), DIST_NORMAL);
  EXPECT_EQ(spec.GetLinkGiven(), LINK_DEFAULT);
  EXPECT_EQ(spec.GetLink(), LINK_IDENTITY);
  EXPECT_TRUE(spec.IsLinear());
  EXPECT_EQ(spec.GetTrialsType(), TRIALS_NONE);
  EXPECT_EQ(spec.GetReferenceType(), REFERENCE_LAST);
  EXPECT_EQ(spec.GetFitMethod(), FIT_PSEUDO_LIKELIHOOD);
  EXPECT_TRUE(MCGLMM_850::GLMMSettings().GetTargetSpec().IsLinear());
}

TEST(GLMMTargetSpec, EachDistributionHasItsCustomaryLink) {
  EXPECT_EQ(DefaultLink(DIST_BINOMIAL), LINK_LOGIT);
  EXPECT_EQ(DefaultLink(DIST_MULTINOMIAL), LINK_LOGIT);
  EXPECT_EQ(DefaultLink(DIST_POISSON), LINK_LOG);
  EXPECT_EQ(DefaultLink(DIST_NEGBIN), LINK_LOG);
  EXPECT_EQ(DefaultLink(DIST_GAMMA), LINK_LOG);
  EXPECT_EQ(DefaultLink(DIST_IGAUSS), LINK_POWER);
  GLMMTargetSpec spec;
  spec.SetDistribution(DIST_IGAUSS);
  EXPECT_EQ(spec.GetLink(), LINK_POWER);
  EXPECT_DOUBLE_EQ(spec.GetLinkPower(), -2.0);
  EXPECT_FALSE(spec.IsLinear());
  spec.SetLinkPower(0.5);
  EXPECT_DOUBLE_EQ(spec.GetLinkPower(), 0.5);
}

TEST(GLMMTargetSpec, GivenValuesRoundTrip) {
  GLMMTargetSpec spec;
  spec.SetDistribution(DIST_BINOMIAL);
  spec.SetLink(LINK_PROBIT);
  spec.SetTrialsVariable(3);
  spec.SetFitMethod(FIT_QUADRATURE);
  spec.SetQuadraturePoints(7);
  EXPECT_EQ(spec.GetLink(), LINK_PROBIT);
  EXPECT_EQ(spec.GetTrialsType(), TRIALS_VARIABLE);
  EXPECT_EQ(spec.GetTrialsVariable(), 3);
  spec.SetTrialsValue(10);
  EXPECT_EQ(spec.GetTrialsType(), TRIALS_VALUE);
  EXPECT_DOUBLE_EQ(spec.GetTrialsValue(), 10.0);
  spec.SetReference(REFERENCE_VALUE, "low");
  EXPECT_EQ(spec.GetReferenceType(), REFERENCE_VALUE);
  EXPECT_EQ(spec.GetReferenceValue(), "low");
  EXPECT_EQ(spec.GetQuadraturePoints(), 7);
  std::ostringstream os;
  spec.Display(os);
  EXPECT_NE(os.str().find("BINOMIAL"), std::string::npos);
  EXPECT_NE(os.str().find("PROBIT"), std::string::npos);
  EXPECT_NE(os.str().find("adaptive quadrature"), std::string::npos);
}

TEST(GLMMTargetSpec, SettingsShowATargetOnlyWhenItIsNotLinear) {
  MCGLMM_850::GLMMSettings settings;
  std::ostringstream linear;
  settings.Display(linear);
  EXPECT_EQ(linear.str().find("Distribution"), std::string::npos);
  GLMMTargetSpec spec;
  spec.SetDistribution(DIST_POISSON);
  settings.SetTargetSpec(spec);
  std::ostringstream poisson;
  settings.Display(poisson);
  EXPECT_NE(poisson.str().find("POISSON"), std::string::npos);
}
