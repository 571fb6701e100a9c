#include "numeric/glmm/GLMMRandomSpec.h"

#include <gtest/gtest.h>

#include <sstream>

using MCGLMM_850::GLMMRandomSpec;

TEST(GLMMRandomSpec, Defaults) {
  GLMMRandomSpec spec;
  EXPECT_TRUE(spec.GetEffects().empty());
  EXPECT_TRUE(spec.GetSubjectVars().empty());
  EXPECT_EQ(spec.GetCovarianceType(), GLMMConst_850::VC);
  EXPECT_EQ(spec.GetIndex(), -1);
  EXPECT_FALSE(spec.GetComputeEBLUPs());
}

TEST(GLMMRandomSpec, RoundTripAndReset) {
  GLMMRandomSpec spec;
  MCMath_850::MCModelEffect intercept;
  spec.AddEffect(intercept);
  spec.AddSubjectVar(4);
  spec.AddSubjectVar(2);
  spec.SetCovarianceType(GLMMConst_850::UN);
  spec.SetIndex(1);
  spec.SetComputeEBLUPs(true);
  EXPECT_EQ(spec.GetNEffects(), 1);
  EXPECT_TRUE(spec.GetEffects()[0].IsIntercept());
  EXPECT_EQ(spec.GetSubjectVars(), (std::vector<int>{4, 2}));
  EXPECT_EQ(spec.GetCovarianceType(), GLMMConst_850::UN);
  EXPECT_EQ(spec.GetIndex(), 1);
  EXPECT_TRUE(spec.GetComputeEBLUPs());

  spec.Reset(true);
  EXPECT_EQ(spec.GetNEffects(), 0);
  EXPECT_TRUE(spec.GetSubjectVars().empty());
  EXPECT_EQ(spec.GetCovarianceType(), GLMMConst_850::DIAG);
  EXPECT_EQ(spec.GetIndex(), -1);
  EXPECT_FALSE(spec.GetComputeEBLUPs());
  spec.Reset(false);
  EXPECT_EQ(spec.GetCovarianceType(), GLMMConst_850::VC);
}

TEST(GLMMRandomSpec, Display) {
  GLMMRandomSpec spec;
  spec.AddSubjectVar(3);
  spec.SetIndex(0);
  std::ostringstream os;
  spec.Display(os);
  EXPECT_EQ(os.str(),
            "Begin GLMMRandomSpec display.\n"
            "Block index: 0\n"
            "Covariance type: VC (8)\n"
            "Subject variables: 3\n"
            "Compute EBLUPs: false\n"
            "Effects: 0\n"
            "End GLMMRandomSpec display.\n");
}
