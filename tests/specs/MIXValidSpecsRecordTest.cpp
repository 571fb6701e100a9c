// The record itself: defaults, accessors, setters and their checks, codes.
#include "specs/MIXValidSpecs.h"

#include <gtest/gtest.h>

#include <limits>

#include "SpecsTestData.h"
#include "base/AssertText.h"
#include "host/data/ZORV_Dataset.h"
#include "numeric/common/MCStatusCode.h"

using namespace specs_test;
using base_test::AssertText;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
using MCGLMM_850::GLMMRandomSpec;
namespace MCConst = MCMath_850::MCConst;

namespace {

class MIXValidSpecsRecord : public ::testing::Test {
 protected:
  MIXValidSpecsRecord() : fSpecs(nullptr, fData) { MakeSpecsFile(fData); }

  ZORV_Dataset fData;
  MIXValidSpecs fSpecs;
};

}  // namespace

TEST_F(MIXValidSpecsRecord, FreshRecordHasTheDefaults) {
  EXPECT_FALSE(fSpecs.GetOutFOptionMODEL());
  EXPECT_TRUE(fSpecs.GetInterceptInModel());
  EXPECT_EQ(fSpecs.GetCILevelPct(), 95.0);

  EXPECT_TRUE(fSpecs.GetValidSplits().empty());
  EXPECT_TRUE(fSpecs.GetEmmValidList().empty());
  EXPECT_EQ(fSpecs.GetDependVar(), -1);
  EXPECT_TRUE(fSpecs.GetFactorList().empty());
  EXPECT_TRUE(fSpecs.GetRefinedFactorList().empty());
  EXPECT_TRUE(fSpecs.GetCompFactorList().empty());
  EXPECT_TRUE(fSpecs.GetNFactorLevelList().empty());
  EXPECT_EQ(fSpecs.GetFactorSortOrder(), MCConst::CATEG_ASCENDING);
  EXPECT_TRUE(fSpecs.GetCovariateList().empty());
  EXPECT_TRUE(fSpecs.GetRefinedCovariateList().empty());
  EXPECT_TRUE(fSpecs.GetCompCovariateList().empty());
  EXPECT_TRUE(fSpecs.GetModelEffectList().empty());
  EXPECT_TRUE(fSpecs.GetCovarateNested().empty());
  EXPECT_TRUE(fSpecs.GetCompModelEffectList().empty());
  EXPECT_EQ(fSpecs.GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(fSpecs.GetOffsetIndex(), -1);
  EXPECT_EQ(fSpecs.GetOffsetValue(), 0.0);
  EXPECT_EQ(fSpecs.GetZORVWeightIndex(), -1);
  EXPECT_EQ(fSpecs.GetRegrWeightIndex(), -1);
  EXPECT_EQ(fSpecs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_III);
  EXPECT_EQ(fSpecs.GetEffectAnalysisStat(), GZLConst_850::EFFECT_STAT_WALD);
  EXPECT_EQ(fSpecs.GetIterSep(), 20);
  EXPECT_EQ(fSpecs.GetHConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(fSpecs.GetLConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(fSpecs.GetPConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(fSpecs.GetHConvCrit(), 0.0);
  EXPECT_EQ(fSpecs.GetLConvCrit(), 0.0);
  EXPECT_EQ(fSpecs.GetPConvCrit(), 1e-6);
  EXPECT_EQ(fSpecs.GetMaxIter(), 100);
  EXPECT_EQ(fSpecs.GetMaxStepHalving(), 5);
  EXPECT_EQ(fSpecs.GetCIType(), GZLConst_850::CI_WALD);
  EXPECT_EQ(fSpecs.GetCIConvProfile(), 1e-4);
  EXPECT_EQ(fSpecs.GetCovbType(), MCConst::COVB_MODEL_BASED);
  EXPECT_EQ(fSpecs.GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(fSpecs.GetEstMethod(), MCConst::HESSIAN_FISHER_THEN_NEWTON);
  EXPECT_EQ(fSpecs.GetMaxFisherSteps(), 1);
  EXPECT_EQ(fSpecs.GetTolerance(), 1e-12);
  EXPECT_TRUE(fSpecs.GetRandomList().empty());
  EXPECT_TRUE(fSpecs.GetNRandEffects().empty());
  EXPECT_TRUE(fSpecs.GetRandCovarNested().empty());
  EXPECT_TRUE(fSpecs.GetCompRandomList().empty());
  EXPECT_TRUE(fSpecs.GetRepeatedSpec().GetEffects().empty());
  EXPECT_TRUE(fSpecs.GetCompRepeatedSpec().GetSubjectVars().empty());
  EXPECT_TRUE(fSpecs.GetSpatVarInds().empty());
  EXPECT_TRUE(fSpecs.GetCompSpatVarInds().empty());
  EXPECT_TRUE(fSpecs.GetCustomTests().empty());
  EXPECT_TRUE(fSpecs.GetCompCustomTests().empty());
  EXPECT_TRUE(fSpecs.GetEMMeansList().empty());
  EXPECT_TRUE(fSpecs.GetContrastPairList().empty());
  EXPECT_TRUE(fSpecs.GetEmmRCTypeList().empty());
  EXPECT_TRUE(fSpecs.GetEmmRCLongList().empty());
  EXPECT_TRUE(fSpecs.GetEmmFixCovStr().empty());
  EXPECT_TRUE(fSpecs.GetCompEMMeansList().empty());
  EXPECT_FALSE(fSpecs.GetClassMissInclude());
  EXPECT_FALSE(fSpecs.GetPrintOptionCORB());
  EXPECT_FALSE(fSpecs.GetPrintOptionCOVB());
  EXPECT_FALSE(fSpecs.GetPrintOptionCPS());
  EXPECT_FALSE(fSpecs.GetPrintOptionFIT());
  EXPECT_FALSE(fSpecs.GetPrintOptionGEF());
  EXPECT_FALSE(fSpecs.GetPrintOptionHISTORY());
  EXPECT_FALSE(fSpecs.GetPrintOptionLAGRANGE());
  EXPECT_FALSE(fSpecs.GetPrintOptionLMATRIX());
  EXPECT_FALSE(fSpecs.GetPrintOptionMODELINFO());
  EXPECT_FALSE(fSpecs.GetPrintOptionSOLUTION());
  EXPECT_FALSE(fSpecs.GetPrintOptionSUMMARY());
  EXPECT_FALSE(fSpecs.GetPrintOptionVARIABLEINFO());
  EXPECT_FALSE(fSpecs.GetPrintOptionWORKINGCORR());
  EXPECT_EQ(fSpecs.GetPrintHistPar(), 1);
  EXPECT_FALSE(fSpecs.GetPrintOptionEXPONENTIATED());
  EXPECT_FALSE(fSpecs.GetPrintOptionTestCov());
  EXPECT_FALSE(fSpecs.GetPrintOptionGMatrix());
  EXPECT_FALSE(fSpecs.GetPrintOptionRMatrix());
  EXPECT_FALSE(fSpecs.GetPrintOptionNONE());
  EXPECT_TRUE(fSpecs.GetSaveVarTypes().empty());
  EXPECT_TRUE(fSpecs.GetSaveScoreTypes().empty());
  EXPECT_TRUE(fSpecs.GetSaveVarNames().empty());
  EXPECT_TRUE(fSpecs.GetSaveVarLabels().empty());
  EXPECT_TRUE(fSpecs.GetSaveVarFormats().empty());
  EXPECT_EQ(fSpecs.GetMaxObsAdded(), 0);
  EXPECT_EQ(fSpecs.GetOutFModelFileName(), "");
  EXPECT_EQ(fSpecs.GetOutFParameterFileName(), "");
  EXPECT_EQ(fSpecs.GetOutFStatXMLFileName(), "");
  EXPECT_EQ(fSpecs.GetOutFStatJSONFileName(), "");
  EXPECT_FALSE(fSpecs.GetOutFOptionPARAMETER());
  EXPECT_FALSE(fSpecs.GetOutFOptionStatXML());
  EXPECT_FALSE(fSpecs.GetOutFOptionStatJSON());
  EXPECT_FALSE(fSpecs.GetUseStatJSON());
  EXPECT_EQ(fSpecs.GetVarValidSpecsPtr(), nullptr);
  EXPECT_EQ(fSpecs.GetCompSettingsPtr(), nullptr);
  EXPECT_EQ(fSpecs.GetConvTypeTypeIandIII(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(fSpecs.GetConvCritTypeIandIII(), 1e-4);
}

TEST_F(MIXValidSpecsRecord, CountsFollowTheirLists) {
  fSpecs.SetFactorList({A, B});
  fSpecs.SetRefinedFactorList({A});
  fSpecs.SetCovariateList({X, Z, T});
  fSpecs.SetRefinedCovariateList({X, Z});
  fSpecs.SetNFactorLevelList({3, 2});
  EXPECT_EQ(fSpecs.GetNFactorVar(), 2);
  EXPECT_EQ(fSpecs.GetNRefinedFactorVar(), 1);
  EXPECT_EQ(fSpecs.GetNCovariateVar(), 3);
  EXPECT_EQ(fSpecs.GetNRefinedCovariateVar(), 2);
  EXPECT_EQ(fSpecs.GetNFactorLevelList(), (std::vector<int>{3, 2}));
  EXPECT_EQ(fSpecs.GetNModelEffect(), 0);
  EXPECT_EQ(fSpecs.GetNRandSpecs(), 0);
  EXPECT_EQ(fSpecs.GetNCustomTests(), 0);
  EXPECT_EQ(fSpecs.GetNEMMeans(), 0);
  EXPECT_EQ(fSpecs.GetNSaveVars(), 0);
  EXPECT_EQ(fSpecs.GetNSpatVars(), 0);

  fSpecs.SetOutFModelFileName("m.xml");
  fSpecs.SetOutFParameterFileName("p.xml");
  fSpecs.SetOutFStatXMLFileName("s.xml");
  fSpecs.SetOutFStatJSONFileName("s.json");
  EXPECT_TRUE(fSpecs.GetOutFOptionMODEL());
  EXPECT_TRUE(fSpecs.GetOutFOptionPARAMETER());
  EXPECT_TRUE(fSpecs.GetOutFOptionStatXML());
  EXPECT_TRUE(fSpecs.GetOutFOptionStatJSON());
  EXPECT_EQ(fSpecs.GetOutFStatJSONFileName(), "s.json");
  fSpecs.SetOutFModelFileName("");
  EXPECT_FALSE(fSpecs.GetOutFOptionMODEL());
}

TEST_F(MIXValidSpecsRecord, PlainSettersStore) {
  fSpecs.SetDependVar(Y);
  fSpecs.SetFactorSortOrder(MCConst::CATEG_DATA_ORDER);
  fSpecs.SetInterceptInModel(false);
  fSpecs.SetOffsetType(MCConst::OFFSET_VALUE);
  fSpecs.SetOffsetIndex(X);
  fSpecs.SetOffsetValue(2.5);
  fSpecs.SetZORVWeightIndex(W);
  fSpecs.SetRegrWeightIndex(SW);
  fSpecs.SetEffectAnalysisType(MCConst::EFFECT_TYPE_I);
  fSpecs.SetEffectAnalysisStat(GZLConst_850::EFFECT_STAT_LIKELIHOOD_RATIO);
  fSpecs.SetHConvType(MCConst::CONV_ABSOLUTE);
  fSpecs.SetPConvType(MCConst::CONV_ABSOLUTE);
  fSpecs.SetCIType(GZLConst_850::CI_PROFILE_LIKELIHOOD);
  fSpecs.SetCovbType(MCConst::COVB_ROBUST);
  fSpecs.SetThetaEstType(GLMMConst_850::ML);
  fSpecs.SetEstMethod(MCConst::HESSIAN_NEWTON_RAPHSON);
  fSpecs.SetClassMissInclude(true);
  fSpecs.SetMaxObsAdded(4);
  fSpecs.SetConvTypeTypeIandIII(MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs.GetDependVar(), Y);
  EXPECT_EQ(fSpecs.GetFactorSortOrder(), MCConst::CATEG_DATA_ORDER);
  EXPECT_FALSE(fSpecs.GetInterceptInModel());
  EXPECT_EQ(fSpecs.GetOffsetType(), MCConst::OFFSET_VALUE);
  EXPECT_EQ(fSpecs.GetOffsetIndex(), X);
  EXPECT_EQ(fSpecs.GetOffsetValue(), 2.5);
  EXPECT_EQ(fSpecs.GetZORVWeightIndex(), W);
  EXPECT_EQ(fSpecs.GetRegrWeightIndex(), SW);
  EXPECT_EQ(fSpecs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_I);
  EXPECT_EQ(fSpecs.GetEffectAnalysisStat(), GZLConst_850::EFFECT_STAT_LIKELIHOOD_RATIO);
  EXPECT_EQ(fSpecs.GetHConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs.GetPConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs.GetCIType(), GZLConst_850::CI_PROFILE_LIKELIHOOD);
  EXPECT_EQ(fSpecs.GetCovbType(), MCConst::COVB_ROBUST);
  EXPECT_EQ(fSpecs.GetThetaEstType(), GLMMConst_850::ML);
  EXPECT_EQ(fSpecs.GetEstMethod(), MCConst::HESSIAN_NEWTON_RAPHSON);
  EXPECT_TRUE(fSpecs.GetClassMissInclude());
  EXPECT_EQ(fSpecs.GetMaxObsAdded(), 4);
  EXPECT_EQ(fSpecs.GetConvTypeTypeIandIII(), MCConst::CONV_ABSOLUTE);

  fSpecs.SetPrintOptionCORB(true);
  fSpecs.SetPrintOptionCOVB(true);
  fSpecs.SetPrintOptionCPS(true);
  fSpecs.SetPrintOptionFIT(true);
  fSpecs.SetPrintOptionGEF(true);
  fSpecs.SetPrintOptionHISTORY(true);
  fSpecs.SetPrintOptionLAGRANGE(true);
  fSpecs.SetPrintOptionLMATRIX(true);
  fSpecs.SetPrintOptionMODELINFO(true);
  fSpecs.SetPrintOptionSOLUTION(true);
  fSpecs.SetPrintOptionSUMMARY(true);
  fSpecs.SetPrintOptionVARIABLEINFO(true);
  fSpecs.SetPrintOptionWORKINGCORR(true);
  fSpecs.SetPrintOptionEXPONENTIATED(true);
  fSpecs.SetPrintOptionTestCov(true);
  fSpecs.SetPrintOptionGMatrix(true);
  fSpecs.SetPrintOptionRMatrix(true);
  fSpecs.SetPrintOptionNONE(true);
  EXPECT_TRUE(fSpecs.GetPrintOptionCORB() && fSpecs.GetPrintOptionCOVB() && fSpecs.GetPrintOptionCPS() &&
              fSpecs.GetPrintOptionFIT() && fSpecs.GetPrintOptionGEF() && fSpecs.GetPrintOptionHISTORY() &&
              fSpecs.GetPrintOptionLAGRANGE() && fSpecs.GetPrintOptionLMATRIX() &&
              fSpecs.GetPrintOptionMODELINFO() && fSpecs.GetPrintOptionSOLUTION() &&
              fSpecs.GetPrintOptionSUMMARY() && fSpecs.GetPrintOptionVARIABLEINFO() &&
              fSpecs.GetPrintOptionWORKINGCORR() && fSpecs.GetPrintOptionEXPONENTIATED() &&
              fSpecs.GetPrintOptionTestCov() && fSpecs.GetPrintOptionGMatrix() && fSpecs.GetPrintOptionRMatrix() &&
              fSpecs.GetPrintOptionNONE());
}

TEST_F(MIXValidSpecsRecord, CheckedSettersStoreValidValues) {
  fSpecs.SetIterSep(0);
  fSpecs.SetHConvCrit(0.0);
  fSpecs.SetLConvCrit(1e-8);
  fSpecs.SetPConvCrit(1e-5);
  fSpecs.SetCIConvProfile(1e-3);
  fSpecs.SetConvCritTypeIandIII(1e-6);
  fSpecs.SetMaxIter(0);
  fSpecs.SetMaxStepHalving(1);
  fSpecs.SetCILevelPct(0.0);
  fSpecs.SetTolerance(1e-10);
  fSpecs.SetPrintHistPar(3);
  EXPECT_EQ(fSpecs.GetIterSep(), 0);
  EXPECT_EQ(fSpecs.GetHConvCrit(), 0.0);
  EXPECT_EQ(fSpecs.GetLConvCrit(), 1e-8);
  EXPECT_EQ(fSpecs.GetPConvCrit(), 1e-5);
  EXPECT_EQ(fSpecs.GetCIConvProfile(), 1e-3);
  EXPECT_EQ(fSpecs.GetConvCritTypeIandIII(), 1e-6);
  EXPECT_EQ(fSpecs.GetMaxIter(), 0);
  EXPECT_EQ(fSpecs.GetMaxStepHalving(), 1);
  EXPECT_EQ(fSpecs.GetCILevelPct(), 0.0);
  EXPECT_EQ(fSpecs.GetTolerance(), 1e-10);
  EXPECT_EQ(fSpecs.GetPrintHistPar(), 3);
  fSpecs.SetCILevelPct(99.9);
  EXPECT_EQ(fSpecs.GetCILevelPct(), 99.9);
}

TEST_F(MIXValidSpecsRecord, FisherStepsChooseTheMethod) {
  fSpecs.SetMaxFisherSteps(0);
  EXPECT_EQ(fSpecs.GetEstMethod(), MCConst::HESSIAN_NEWTON_RAPHSON);
  EXPECT_EQ(fSpecs.GetMaxFisherSteps(), 0);
  fSpecs.SetMaxFisherSteps(1);
  EXPECT_EQ(fSpecs.GetEstMethod(), MCConst::HESSIAN_FISHER_THEN_NEWTON);
  fSpecs.SetMaxFisherSteps(4);
  EXPECT_EQ(fSpecs.GetEstMethod(), MCConst::HESSIAN_FISHER_THEN_NEWTON);
  EXPECT_EQ(fSpecs.GetMaxFisherSteps(), 4);
}

using MIXValidSpecsRecordDeathTest = MIXValidSpecsRecord;

TEST_F(MIXValidSpecsRecordDeathTest, ConfidenceLevelMustBeBelowAHundred) {
  EXPECT_DEATH(fSpecs.SetCILevelPct(100.0), AssertText("ciLevelPct < 100.0"));
  EXPECT_DEATH(fSpecs.SetCILevelPct(-0.5), AssertText("ciLevelPct >= 0.0"));
  EXPECT_DEATH(fSpecs.SetCILevelPct(std::numeric_limits<double>::quiet_NaN()), AssertText("ciLevelPct >= 0.0"));
}

TEST_F(MIXValidSpecsRecordDeathTest, CheckedSettersRefuseBadValues) {
  EXPECT_DEATH(fSpecs.SetIterSep(-1), AssertText("iterSep >= 0"));
  EXPECT_DEATH(fSpecs.SetHConvCrit(-1e-9), AssertText("convCrit >= 0.0"));
  EXPECT_DEATH(fSpecs.SetLConvCrit(-1.0), AssertText("convCrit >= 0.0"));
  EXPECT_DEATH(fSpecs.SetPConvCrit(-1.0), AssertText("convCrit >= 0.0"));
  EXPECT_DEATH(fSpecs.SetCIConvProfile(-1.0), AssertText("convCrit >= 0.0"));
  EXPECT_DEATH(fSpecs.SetConvCritTypeIandIII(-1.0), AssertText("convCrit >= 0.0"));
  EXPECT_DEATH(fSpecs.SetMaxIter(-1), AssertText("maxIter >= 0"));
  EXPECT_DEATH(fSpecs.SetMaxStepHalving(0), AssertText("maxStepHalving > 0"));
  EXPECT_DEATH(fSpecs.SetMaxFisherSteps(-1), AssertText("maxFisherSteps >= 0"));
  EXPECT_DEATH(fSpecs.SetTolerance(0.0), AssertText("toler > 0.0"));
  EXPECT_DEATH(fSpecs.SetPrintHistPar(0), AssertText("printHistPar > 0"));
}

TEST_F(MIXValidSpecsRecord, GroupSettersReplaceTheirLists) {
  MCModelEffect effect;
  effect.Setup(0, 1, nullptr);
  effect.AddCovariate(X);
  fSpecs.SetModelEffectList({effect, effect}, {{true}, {false}});
  EXPECT_EQ(fSpecs.GetNModelEffect(), 2);
  EXPECT_EQ(fSpecs.GetCovarateNested(), (std::vector<std::vector<bool>>{{true}, {false}}));

  GLMMRandomSpec block;
  block.Reset(false);
  block.AddEffect(effect);
  fSpecs.SetRandomSpec({block}, {1}, {{false}});
  EXPECT_EQ(fSpecs.GetNRandSpecs(), 1);
  EXPECT_EQ(fSpecs.GetNRandEffects(), std::vector<int>{1});
  EXPECT_EQ(fSpecs.GetRandCovarNested(), std::vector<std::vector<bool>>{{false}});

  MCEmmeansSpec request;
  request.AddFactor(A, 0);
  request.SetContrastType(MCConst::CONTRAST_POLYNOMIAL);
  OBS reference;
  reference.fNum = 2.0;
  const ZORV_Format format(ZORV_Format::F, 3, 0);
  fSpecs.SetEMMeansSpec({request}, {MIXValidSpecs::ContrastPair(&reference, format)}, {"2"},
                        {MIXValidSpecs::REFCAT_VALUE}, {{"1.5"}});
  EXPECT_EQ(fSpecs.GetNEMMeans(), 1);
  EXPECT_EQ(fSpecs.GetEMMeansList()[0].GetContrastType(), MCConst::CONTRAST_POLYNOMIAL);
  EXPECT_EQ(fSpecs.GetContrastPairList()[0].first, &reference);
  EXPECT_EQ(fSpecs.GetContrastPairList()[0].second, format);
  EXPECT_EQ(fSpecs.GetContrastString(0), "2");
  EXPECT_EQ(fSpecs.GetEmmRCTypeList(), std::vector<MIXValidSpecs::RefCatTypes>{MIXValidSpecs::REFCAT_VALUE});
  EXPECT_EQ(fSpecs.GetEmmFixCovStr(), std::vector<std::vector<std::string>>{{"1.5"}});
  // The flags of reference texts that are too long are not among them.
  EXPECT_TRUE(fSpecs.GetEmmRCLongList().empty());
}

TEST_F(MIXValidSpecsRecordDeathTest, MarginalMeansListsMustHaveOneEntryPerRequest) {
  MCEmmeansSpec request;
  const MIXValidSpecs::ContrastPair pair(nullptr, ZORV_Format());
  EXPECT_DEATH(fSpecs.SetEMMeansSpec({request}, {}, {""}, {MIXValidSpecs::REFCAT_NONE}, {{}}),
               AssertText("nEMMeans == nContrasts"));
  EXPECT_DEATH(fSpecs.SetEMMeansSpec({request}, {pair}, {}, {MIXValidSpecs::REFCAT_NONE}, {{}}),
               AssertText("nEMMeans == nValues"));
  EXPECT_DEATH(fSpecs.SetEMMeansSpec({request}, {pair}, {""}, {}, {{}}), AssertText("nEMMeans == nRefCatTypes"));
  EXPECT_DEATH(fSpecs.SetEMMeansSpec({request}, {pair}, {""}, {MIXValidSpecs::REFCAT_NONE}, {}),
               AssertText("nEMMeans == nvFixCovStr"));
}

TEST_F(MIXValidSpecsRecordDeathTest, ContrastStringOutsideTheRequests) {
  EXPECT_DEATH(fSpecs.GetContrastString(0), AssertText("(emmeansIndex >= 0) && (emmeansIndex < GetNEMMeans())"));
  EXPECT_DEATH(fSpecs.GetContrastString(-1), AssertText("(emmeansIndex >= 0) && (emmeansIndex < GetNEMMeans())"));
}

TEST(MIXValidSpecsCodes, CovarianceCodesOfBothKindsOfBlock) {
  using namespace GLMMConst_850;
  const CovarType repeated[] = {DIAG, AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, HF, ID,
                                TP,   TPH, UN,  UNR,  VC,     DIAG, VC, SP_POW, SP_EXP, SP_GAU, SP_LIN,
                                SP_LINL, SP_SPH};
  const CovarType random[] = {VC, AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, HF, ID,
                              TP, TPH, UN,  UNR,  VC,     VC, VC, VC,  VC,  VC,   VC,  VC, VC};
  for (long code = 0; code <= 25; ++code) {
    EXPECT_EQ(MIXValidSpecs::GetCovarType(code, true), repeated[code]) << "code " << code;
    EXPECT_EQ(MIXValidSpecs::GetCovarType(code, false), random[code]) << "code " << code;
  }
  EXPECT_EQ(MIXValidSpecs::GetCovarType(18, true), 3);
  EXPECT_EQ(MIXValidSpecs::GetCovarType(18, false), 8);
  EXPECT_EQ(MIXValidSpecs::GetCovarType(26, true), 3);
  EXPECT_EQ(MIXValidSpecs::GetCovarType(26, false), 8);
  // Compared as unsigned 32 bits, a negative code is a large one.
  EXPECT_EQ(MIXValidSpecs::GetCovarType(-1, true), DIAG);
  EXPECT_EQ(MIXValidSpecs::GetCovarType(-1, false), VC);
  // Only the low 32 bits count.
  EXPECT_EQ(MIXValidSpecs::GetCovarType((1L << 32) + 2, false), AR1);
}

TEST(MIXValidSpecsCodes, ScoreTypesOfTheSavedItems) {
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(0)), 10);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(1)), 0);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(2)), 6);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(3)), 11);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(4)), 1);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(5)), 19);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(6)), 9);
  // The generalized target's items.
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(7)), 20);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(8)), 21);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(9)), 22);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(10)), -1);
  EXPECT_EQ(MIXValidSpecs::GetScoreType(MIXValidSpecs::SaveTypes(-1)), -1);
}

TEST(MIXValidSpecsCodes, ConvergenceKeywordCodes) {
  const long codes[] = {MCCommon_850::MC_ITERATION_LIMIT,
                        MCCommon_850::MC_CONVERGED_SINGULAR_HESSIAN,
                        MCCommon_850::MC_PARAM_HESSIAN_SINGULAR,
                        MCCommon_850::MC_PARAM_AT_LOWER_BOUND,
                        MCCommon_850::MC_PERFECT_FIT,
                        MCCommon_850::MC_STEP_HALVING_LIMIT,
                        MCCommon_850::MC_PARAM_AT_UPPER_BOUND,
                        1,
                        0};
  const long results[] = {3, 4, 6, 3, 8, 2, 3, 0, 0};
  const int signs[] = {0, 0, 0, -1, 0, 0, 1, 0, 0};
  for (std::size_t i = 0; i < sizeof codes / sizeof codes[0]; ++i) {
    int sign = 99;
    EXPECT_EQ(MIXValidSpecs::GetConvCode(codes[i], &sign), results[i]) << codes[i];
    EXPECT_EQ(sign, signs[i]) << codes[i];
  }
  EXPECT_EQ(MIXValidSpecs::GetConvCode(MCCommon_850::MC_PARAM_AT_LOWER_BOUND, nullptr), 3);
}

TEST_F(MIXValidSpecsRecord, SavedFormatsGrowTheTargetsFormat) {
  fSpecs.SetDependVar(Y);
  for (int type = 0; type <= 4; ++type) {
    EXPECT_EQ(fSpecs.GetSaveFormat(MIXValidSpecs::SaveTypes(type)), ZORV_Format(ZORV_Format::F, 11, 4)) << type;
  }
  EXPECT_EQ(fSpecs.GetSaveFormat(MIXValidSpecs::SAVE_FIXED_PREDICTED_DF), ZORV_Format(ZORV_Format::F, 8, 2));
  EXPECT_EQ(fSpecs.GetSaveFormat(MIXValidSpecs::SAVE_PREDICTED_DF), ZORV_Format(ZORV_Format::F, 8, 2));

  fData.GetVariable(Y)->SetFormat(ZORV_Format(ZORV_Format::F, 40, 16));
  for (int type = 0; type <= 4; ++type) {
    EXPECT_EQ(fSpecs.GetSaveFormat(MIXValidSpecs::SaveTypes(type)), ZORV_Format(ZORV_Format::F, 40, 16)) << type;
  }
  fData.GetVariable(Y)->SetFormat(ZORV_Format(ZORV_Format::COMMA, 38, 15));
  EXPECT_EQ(fSpecs.GetSaveFormat(MIXValidSpecs::SAVE_RESIDUAL), ZORV_Format(ZORV_Format::COMMA, 40, 16));
  EXPECT_EQ(fSpecs.GetSaveFormat(MIXValidSpecs::SAVE_PREDICTED_DF), ZORV_Format(ZORV_Format::F, 8, 2));
}
