#include "numeric/glmm/GLMMConst.h"

#include <gtest/gtest.h>

#include <string>

using namespace GLMMConst_850;

TEST(GLMMConst, CovarTypeValues) {
  EXPECT_EQ(ARH1, 0);
  EXPECT_EQ(AD1, 1);
  EXPECT_EQ(CS, 2);
  EXPECT_EQ(DIAG, 3);
  EXPECT_EQ(ID, 4);
  EXPECT_EQ(TP, 5);
  EXPECT_EQ(UN, 7);
  EXPECT_EQ(VC, 8);
  EXPECT_EQ(AR1, 9);
  EXPECT_EQ(ARMA11, 10);
  EXPECT_EQ(CSH, 11);
  EXPECT_EQ(CSR, 12);
  EXPECT_EQ(FA1, 13);
  EXPECT_EQ(HF, 14);
  EXPECT_EQ(TPH, 15);
  EXPECT_EQ(UNR, 16);
  EXPECT_EQ(FAH1, 17);
  EXPECT_EQ(SP_POW, 18);
  EXPECT_EQ(SP_SPH, 23);
}

TEST(GLMMConst, OtherFixedValues) {
  EXPECT_EQ(REML, 1);
  EXPECT_EQ(ML, 0);
  EXPECT_EQ(DF_SATTERTHWAITE, 1);
  EXPECT_EQ(SCORE_FIXED_PREDICTED, 10);
  EXPECT_EQ(SCORE_PREDICTED, 0);
  EXPECT_EQ(SCORE_RESIDUAL, 6);
  EXPECT_EQ(SCORE_FIXED_PREDICTED_SE, 11);
  EXPECT_EQ(SCORE_PREDICTED_SE, 1);
  EXPECT_EQ(SCORE_FIXED_PREDICTED_DF, 19);
  EXPECT_EQ(SCORE_PREDICTED_DF, 9);
  EXPECT_EQ(LROW_FIXED_WITH_INTERCEPT, 0);
  EXPECT_EQ(LROW_RANDOM, 3);
}

TEST(GLMMConst, KeywordCodesOfBothBlocks) {
  const CovarType shared[] = {AD1, AR1, ARH1, ARMA11, CS,  CSH, CSR, DIAG, FA1,
                              FAH1, HF, ID,   TP,     TPH, UN,  UNR, VC};
  for (long code = 1; code <= 17; ++code) {
    EXPECT_EQ(CovarTypeFromKeyword(code, true), shared[code - 1]) << code;
    EXPECT_EQ(CovarTypeFromKeyword(code, false), shared[code - 1]) << code;
  }
}

TEST(GLMMConst, KeywordCodesOfTheResidualBlockOnly) {
  const CovarType spatial[] = {SP_POW, SP_EXP, SP_GAU, SP_LIN, SP_LINL, SP_SPH};
  for (long code = 20; code <= 25; ++code) {
    EXPECT_EQ(CovarTypeFromKeyword(code, true), spatial[code - 20]) << code;
    EXPECT_EQ(CovarTypeFromKeyword(code, false), VC) << code;
    EXPECT_TRUE(IsSpatial(spatial[code - 20]));
  }
  EXPECT_FALSE(IsSpatial(VC));
}

TEST(GLMMConst, DefaultsForOtherCodes) {
  EXPECT_EQ(CovarTypeFromKeyword(0, true), DIAG);
  EXPECT_EQ(CovarTypeFromKeyword(0, false), VC);
  EXPECT_EQ(CovarTypeFromKeyword(18, true), DIAG);
  EXPECT_EQ(CovarTypeFromKeyword(18, false), VC);
  EXPECT_EQ(CovarTypeFromKeyword(19, true), VC);
  EXPECT_EQ(CovarTypeFromKeyword(19, false), VC);
  EXPECT_EQ(CovarTypeFromKeyword(26, true), DIAG);
  EXPECT_EQ(CovarTypeFromKeyword(26, false), VC);
  EXPECT_EQ(CovarTypeFromKeyword(-1, true), DIAG);
  // Only the low 32 bits of a code count.
  EXPECT_EQ(CovarTypeFromKeyword(0x100000001L, false), AD1);
  EXPECT_EQ(CovarTypeFromKeyword(0x100000000L, true), DIAG);
  EXPECT_EQ(DefaultCovarType(true), DIAG);
  EXPECT_EQ(DefaultCovarType(false), VC);
}

TEST(GLMMConst, NoKeywordGivesTheReservedValue) {
  for (long code = -2; code < 40; ++code) {
    EXPECT_NE(CovarTypeFromKeyword(code, true), COVAR_RESERVED);
    EXPECT_NE(CovarTypeFromKeyword(code, false), COVAR_RESERVED);
  }
}

TEST(GLMMConst, Names) {
  EXPECT_EQ(std::string(GetName(UN)), "UN");
  EXPECT_EQ(std::string(GetName(SP_LINL)), "SP_LINL");
  EXPECT_EQ(std::string(GetName(ML)), "ML");
  EXPECT_EQ(std::string(GetName(SCORE_RESIDUAL)), "residual");
  EXPECT_EQ(std::string(GetName(static_cast<CovarType>(40))), "unknown");
}
