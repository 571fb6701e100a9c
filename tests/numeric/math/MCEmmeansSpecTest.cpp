#include "numeric/math/MCEmmeansSpec.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "numeric/common/MCMV.h"

using namespace MCMath_850;

TEST(MCEmmeansSpec, Defaults) {
  MCEmmeansSpec spec;
  EXPECT_TRUE(spec.GetFactors().empty());
  EXPECT_TRUE(spec.GetCompareFactors().empty());
  EXPECT_EQ(spec.GetContrastType(), MCConst::CONTRAST_NONE);
  EXPECT_EQ(spec.GetReferenceType(), MCConst::REFERENCE_CATEGORY);
  EXPECT_EQ(spec.GetRefCateg(), -1);
  EXPECT_EQ(spec.GetPAdjust(), MCConst::PADJUST_LSD);
  EXPECT_EQ(spec.GetEmmScaleType(), MCConst::EMM_SCALE_ORIGINAL);
  EXPECT_TRUE(spec.GetMetricValueList().empty());
}

TEST(MCEmmeansSpec, AddsAndRefusals) {
  MCEmmeansSpec spec;
  EXPECT_EQ(spec.AddFactor(3, 0), 0);
  EXPECT_EQ(spec.AddFactor(5, 1), 1);
  EXPECT_EQ(spec.AddFactor(3, 2), -1);
  EXPECT_EQ(spec.AddFactor(-1, 0), -1);
  EXPECT_EQ(spec.GetFactors(), (std::vector<int>{3, 5}));
  EXPECT_EQ(spec.GetFactorsNestLevel(), (std::vector<int>{0, 1}));

  EXPECT_EQ(spec.AddCovariate(8, 2.5), 0);
  EXPECT_EQ(spec.AddCovariate(9, MCCommon_850::MCMV::Missing()), 1);
  EXPECT_EQ(spec.AddCovariate(-2, 1.0), -1);
  EXPECT_EQ(spec.GetCovariates(), (std::vector<int>{8, 9}));
  EXPECT_EQ(spec.GetCovariateValues()[0], 2.5);

  EXPECT_EQ(spec.AddCompareFactor(5), 0);
  EXPECT_EQ(spec.AddCompareFactor(-5), -1);
  EXPECT_EQ(spec.GetCompareFactors(), (std::vector<int>{5}));
}

TEST(MCEmmeansSpec, SettersRoundTripAndReset) {
  MCEmmeansSpec spec;
  spec.SetContrastType(MCConst::CONTRAST_SIMPLE);
  spec.SetReferenceType(MCConst::REFERENCE_LAST);
  spec.SetRefCateg(2);
  spec.SetPAdjust(MCConst::PADJUST_SEQ_SIDAK);
  spec.SetEmmScaleType(MCConst::EMM_SCALE_TRANSFORMED);
  EXPECT_EQ(spec.GetContrastType(), MCConst::CONTRAST_SIMPLE);
  EXPECT_EQ(spec.GetReferenceType(), MCConst::REFERENCE_LAST);
  EXPECT_EQ(spec.GetRefCateg(), 2);
  EXPECT_EQ(spec.GetPAdjust(), MCConst::PADJUST_SEQ_SIDAK);
  EXPECT_EQ(spec.GetEmmScaleType(), MCConst::EMM_SCALE_TRANSFORMED);
  spec.Reset();
  EXPECT_EQ(spec.GetRefCateg(), -1);
  EXPECT_EQ(spec.GetContrastType(), MCConst::CONTRAST_NONE);
}

TEST(MCEmmeansSpec, MetricValues) {
  MCEmmeansSpec spec;
  EXPECT_TRUE(spec.SetMetricValueList({1.0, 2.0, 4.0}));
  EXPECT_EQ(spec.GetMetricValueList(), (std::vector<double>{1.0, 2.0, 4.0}));
  EXPECT_FALSE(spec.SetMetricValueList({1.0, 1.0}));
  EXPECT_FALSE(spec.SetMetricValueList({1.0, MCCommon_850::MCMV::Missing()}));
  EXPECT_FALSE(spec.SetMetricValueList({std::numeric_limits<double>::quiet_NaN()}));
  EXPECT_EQ(spec.GetMetricValueList().size(), 3u);
}

TEST(MCEmmeansSpec, Display) {
  MCEmmeansSpec spec;
  spec.AddFactor(3, 0);
  spec.AddCovariate(8, MCCommon_850::MCMV::Missing());
  std::ostringstream os;
  spec.Display(os);
  const std::string text = os.str();
  EXPECT_NE(text.find("\nFactors: 3\n"), std::string::npos);
  EXPECT_NE(text.find("\nCovariate values: missing\n"), std::string::npos);
  EXPECT_NE(text.find("\nContrast type: none (7)\n"), std::string::npos);
  EXPECT_NE(text.find("\nSignificance adjustment: LSD (0)\n"), std::string::npos);
}
