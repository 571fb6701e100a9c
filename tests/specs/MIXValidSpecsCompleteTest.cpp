// Completing the record: registration, the component's settings, splits and
// the variable list.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "base/AssertText.h"
#include "SpecsFixture.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAStopProcessor.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/MCVarList.h"

using namespace specs_test;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCEmmeansSpec;
namespace MCConst = MCMath_850::MCConst;

namespace {

// A text value in whole words, blank padded.
std::vector<OBS> TextCells(const std::string& text, int width) {
  std::vector<OBS> cells(static_cast<std::size_t>(ObsWordsForWidth(width)));
  std::string padded = text;
  padded.resize(cells.size() * sizeof(OBS), ' ');
  std::memcpy(cells.data(), padded.data(), padded.size());
  return cells;
}

class SpecsComplete : public SpecsFixture {
 protected:
  INTEGER List(const std::vector<INTEGER>& words) { return fMemory.AddIntegers(words); }

  // y by a b with x z; fixed terms: the intercept, a, x; one random block of
  // b by subj; weighted by w, scale weight sw; repeated measures t and a by
  // name; spatial coordinate cx.
  void FullModel() {
    fData.SetWeightVar(W);
    SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
    SetVarList(L::N_COVARIATES, L::COVARIATES, {X, Z});
    SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}, {1, 0, 0, 0}, {0, 0, 1, 0}});
    SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{0, 1, 0, 0}});
    fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
    fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({1}));
    fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0}));
    fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({15}));
    fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({1}));
    fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({List({SUBJ + 1})}));
    SetVarList(L::N_RANDOM_SUBJECTS, L::RANDOM_SUBJECTS, {SUBJ});
    fMemory.SetNumericInteger(L::SCALE_WEIGHT, SW + 1);
    SetVarList(L::N_REPEATED, L::REPEATED, {T, A});
    SetVarList(L::N_REPEATED_SUBJECTS, L::REPEATED_SUBJECTS, {NAME});
    fMemory.SetNumericInteger(L::REPEATED_COVARIANCE, 20);
    SetVarList(L::N_COORDINATES, L::COORDINATES, {CX});
  }

};

using SpecsCompleteDeathTest = SpecsComplete;

}  // namespace

TEST_F(SpecsComplete, RegistrationOrderAndFlags) {
  FullModel();
  fMemory.SetNumericInteger(L::INCLUDE_USER_MISSING, 1);
  Read();
  fSpecs->SetOffsetType(MCConst::OFFSET_VARIABLE);
  fSpecs->SetOffsetIndex(CY);
  fSpecs->CompleteSpecs();
  const MIXValidSpecs& specs = *fSpecs;
  const ACAVarValidSpecs* layout = specs.GetVarValidSpecsPtr();
  ASSERT_NE(layout, nullptr);
  ASSERT_NE(specs.GetCompSettingsPtr(), nullptr);
  ASSERT_EQ(layout->GetNRecordVars(), 13);

  // y, a b, x z, the offset, the weight, sw, subj, name, cx, then t and a
  // once more under multiple recoding.
  const int hosts[] = {Y, A, B, X, Z, CY, -1, SW, SUBJ, NAME, CX, T, A};
  for (int i = 0; i < 13; ++i) EXPECT_EQ(layout->GetZORVVarIndex(i), hosts[i]) << i;
  EXPECT_TRUE(layout->GetRecordVar(6)->fbWeight);
  EXPECT_EQ(layout->GetWeightRecIndex(), 6);

  // Categorical: the factors and every subject and repeated measure.
  const bool categorical[] = {false, true, true, false, false, false, false, false, true, true, false, true, true};
  // The third flag follows the missing value setting (user-missing values
  // are valid here), except for the target, the covariates and the weights.
  const bool userMissing[] = {true, false, false, true, true, true, true, true, false, false, false, false, false};
  for (int i = 0; i < 13; ++i) {
    const ACAVarValidSpecs::RecordVarData* var = layout->GetRecordVar(i);
    EXPECT_EQ(var->fbCategorical, categorical[i]) << i;
    EXPECT_FALSE(var->fbSysmisValid) << i;
    EXPECT_EQ(var->fbUserMissingExcluded, userMissing[i]) << i;
    EXPECT_TRUE(var->fbListwise) << i;
    EXPECT_EQ(var->fbMultRecode, i >= 11) << i;
  }

  EXPECT_EQ(specs.GetCompFactorList(), (std::vector<int>{1, 2}));
  EXPECT_EQ(specs.GetCompCovariateList(), (std::vector<int>{3, 4}));
  EXPECT_EQ(specs.GetCompSpatVarInds(), std::vector<int>{10});
  EXPECT_EQ(specs.GetCompRandomList()[0].GetSubjectVars(), std::vector<int>{8});
  EXPECT_EQ(specs.GetCompRepeatedSpec().GetSubjectVars(), std::vector<int>{9});
  EXPECT_EQ(specs.GetCompRepeatedSpec().GetEffects()[0].GetVarsIndicesForTheEffectInSetting(),
            (std::vector<int>{11, 12}));

  const GLMMSettings& settings = *specs.GetCompSettingsPtr();
  EXPECT_EQ(settings.GetSingleDependent(), 0);
  EXPECT_EQ(settings.GetOffsetType(), MCConst::OFFSET_VARIABLE);
  EXPECT_EQ(settings.GetOffset(), 5);
  EXPECT_EQ(settings.GetFrequencyWeightVar(), 6);
  EXPECT_EQ(settings.GetRegrWeightVar(), 7);
}

TEST_F(SpecsComplete, MissingValuesExcludedByDefault) {
  FullModel();
  Read();
  fSpecs->CompleteSpecs();
  const ACAVarValidSpecs* layout = fSpecs->GetVarValidSpecsPtr();
  // Without an offset: y, a b, x z, weight, sw, subj, name, cx, t, a.
  ASSERT_EQ(layout->GetNRecordVars(), 12);
  for (int i = 0; i < 12; ++i) EXPECT_TRUE(layout->GetRecordVar(i)->fbUserMissingExcluded) << i;
}

TEST_F(SpecsComplete, RunSettingsTakeEveryValue) {
  FullModel();
  fMemory.SetNumericReal(L::CONFIDENCE, 90.0);
  fMemory.SetNumericReal(L::HESSIAN_CRITERION, 1e-3);
  fMemory.SetNumericReal(L::LOGLIKELIHOOD_CRITERION, 1e-4);
  fMemory.SetNumericReal(L::PARAMETER_CRITERION, 1e-7);
  fMemory.SetNumericReal(L::SINGULAR, 1e-9);
  fMemory.SetNumericInteger(L::HESSIAN_KIND, 2);
  fMemory.SetNumericInteger(L::HISTORY_STEP, 3);
  fMemory.SetNumericInteger(L::SCORING, 4);
  fMemory.SetNumericInteger(L::LOGLIKELIHOOD_KIND, 2);
  fMemory.SetNumericInteger(L::PARAMETER_KIND, 2);
  fMemory.SetNumericInteger(L::METHOD, 1);
  fMemory.SetNumericInteger(L::ITERATIONS, 60);
  fMemory.SetNumericInteger(L::HALVING, 8);
  fMemory.SetNumericInteger(L::TEST_TYPE, 1);
  fMemory.SetNumericInteger(L::INTERCEPT, 0);
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{1, 0, 0, 0}, {0, 0, 1, 0}});
  fMemory.SetNumericInteger(L::N_SAVES, 2);
  fMemory.SetNumericInteger(L::SAVE_KINDS, 2);
  fMemory.SetNumericInteger(L::SAVE_NAMES, fMemory.AddText("P", L::SAVE_NAME_BYTES));
  fMemory.SetNumericInteger(L::SAVE_KINDS.At(1), 7);
  fMemory.SetNumericInteger(L::SAVE_NAMES.At(1), fMemory.AddText("D", L::SAVE_NAME_BYTES));
  Read();
  fSpecs->SetEffectAnalysisStat(GZLConst_850::EFFECT_STAT_LIKELIHOOD_RATIO);
  fSpecs->SetIterSep(7);
  fSpecs->SetCIType(GZLConst_850::CI_PROFILE_LIKELIHOOD);
  fSpecs->SetCIConvProfile(1e-3);
  fSpecs->SetCovbType(MCConst::COVB_ROBUST);
  fSpecs->SetPrintOptionGEF(true);
  fSpecs->SetPrintOptionSUMMARY(true);
  fSpecs->CompleteSpecs();
  const GLMMSettings& s = *fSpecs->GetCompSettingsPtr();

  EXPECT_TRUE(s.GetUse4Mixed());
  EXPECT_FALSE(s.GetTransformEffects());
  EXPECT_EQ(s.GetSingleDependent(), 0);
  // Factors have one category without data; the repeated measures count as
  // factors too.
  EXPECT_EQ(s.GetFactors(), (std::vector<int>{1, 2, 10, 11}));
  EXPECT_EQ(s.GetFactorNCategories(), (std::vector<int>{1, 1, 1, 1}));
  EXPECT_EQ(s.GetCovariates(), (std::vector<int>{3, 4}));
  ASSERT_EQ(s.GetModelEffects().size(), 2u);
  EXPECT_EQ(s.GetModelEffects()[0].GetVarsIndicesForTheEffectInSetting(), std::vector<int>{1});
  EXPECT_EQ(s.GetModelEffects()[1].GetVarsIndicesForTheEffectInSetting(), std::vector<int>{3});
  EXPECT_EQ(s.GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(s.GetFrequencyWeightVar(), 5);
  EXPECT_EQ(s.GetRegrWeightVar(), 6);
  ASSERT_EQ(s.GetNRandomSpecs(), 1);
  EXPECT_EQ(s.GetRandomSpecs()[0].GetSubjectVars(), std::vector<int>{7});
  EXPECT_EQ(s.GetRandomSpecs()[0].GetCovarianceType(), GLMMConst_850::UN);
  EXPECT_EQ(s.GetRepeated().GetSubjectVars(), std::vector<int>{8});
  EXPECT_EQ(s.GetRepeated().GetCovarianceType(), GLMMConst_850::SP_POW);
  EXPECT_EQ(s.GetSpatialVars(), std::vector<int>{9});
  EXPECT_TRUE(s.GetEmmeans().empty());

  EXPECT_FALSE(s.GetInterceptUse());
  EXPECT_EQ(s.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_I);
  EXPECT_EQ(s.GetEffectAnalysisStat(), GZLConst_850::EFFECT_STAT_LIKELIHOOD_RATIO);
  EXPECT_EQ(s.GetCSIteration(), 7);
  EXPECT_DOUBLE_EQ(s.GetConfidenceLevel(), 0.9);
  EXPECT_EQ(s.GetCIType(), GZLConst_850::CI_PROFILE_LIKELIHOOD);
  EXPECT_EQ(s.GetCIConvProfile(), 1e-3);
  EXPECT_EQ(s.GetToleranceLogLikePLCI(), 1e-3);
  EXPECT_EQ(s.GetToleranceHessianPLCI(), 1e-3);
  EXPECT_EQ(s.GetCovbType(), MCConst::COVB_ROBUST);
  EXPECT_EQ(s.GetHConvergeType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(s.GetLConvergeType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(s.GetPConvergeType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(s.GetToleranceHessian(), 1e-3);
  EXPECT_EQ(s.GetLLConCriterion(), 1e-4);
  EXPECT_EQ(s.GetParamEstConCriterion(), 1e-7);
  EXPECT_EQ(s.GetMaxIterations(), 60);
  EXPECT_EQ(s.GetMaxStepHalvingValue(), 8);
  EXPECT_EQ(s.GetThetaEstType(), GLMMConst_850::ML);
  EXPECT_EQ(s.GetHessianCompMethod(), MCConst::HESSIAN_FISHER_THEN_NEWTON);
  EXPECT_EQ(s.GetMaxFisherIterNum(), 5);
  EXPECT_EQ(s.GetTolerance(), 1e-9);
  EXPECT_EQ(s.GetMaxIterationsPLCI(), 60);
  EXPECT_EQ(s.GetMaxIterationsSQP(), 60);
  EXPECT_EQ(s.GetToleranceHessianSQP(), 1e-3);
  EXPECT_EQ(s.GetToleranceLogLikeSQP(), 1e-4);
  EXPECT_EQ(s.GetToleranceParamSQP(), 1e-7);
  EXPECT_EQ(s.GetHConvergeTypeSQP(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(s.GetLConvergeTypeSQP(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(s.GetPConvergeTypeSQP(), MCConst::CONV_ABSOLUTE);
  // Read from the command, both log-likelihood values count as set.
  EXPECT_EQ(s.GetLConvergeTypeTypeIandIII(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(s.GetTolLogLikeTypeIandIII(), 1e-4);
  EXPECT_EQ(s.GetDegreesFreedomType(), GLMMConst_850::DF_SATTERTHWAITE);
  EXPECT_TRUE(s.GetGEFTest());
  EXPECT_EQ(s.GetIterationFrequency(), 3);
  EXPECT_TRUE(s.GetModelFittingTest());
  EXPECT_EQ(s.GetScoringTypes(), (std::vector<GLMMConst_850::ScoreType>{GLMMConst_850::SCORE_PREDICTED,
                                                                         GLMMConst_850::SCORE_PREDICTED_DF}));
  ASSERT_NE(s.GetCancelPointer(), nullptr);
  EXPECT_FALSE(s.GetCancelPointer()->IsCancelled());
  EXPECT_EQ(dynamic_cast<const ACAStopProcessor*>(s.GetCancelPointer())->GetTimeLimit(), 0.0);
}

TEST_F(SpecsComplete, FisherIterationsCountTheSwitch) {
  Read();
  fSpecs->SetMaxFisherSteps(1);
  fSpecs->CompleteSpecs();
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetMaxFisherIterNum(), 2);
  fSpecs->SetMaxFisherSteps(0);
  GLMMSettings settings;
  fSpecs->CompleteSettings(&settings, nullptr, -1);
  EXPECT_EQ(settings.GetHessianCompMethod(), MCConst::HESSIAN_NEWTON_RAPHSON);
  EXPECT_EQ(settings.GetMaxFisherIterNum(), 0);
}

TEST_F(SpecsComplete, ConfidenceLevelAsAFraction) {
  ReadAndComplete();
  EXPECT_DOUBLE_EQ(fSpecs->GetCompSettingsPtr()->GetConfidenceLevel(), 0.95);
}

TEST_F(SpecsComplete, TypeIAndIIISettingsOnlyWhenSetExplicitly) {
  MIXValidSpecs specs(nullptr, fData);
  specs.SetDependVar(Y);
  specs.CompleteSpecs();
  const GLMMSettings defaults;
  EXPECT_EQ(specs.GetCompSettingsPtr()->GetTolLogLikeTypeIandIII(), defaults.GetTolLogLikeTypeIandIII());
  EXPECT_EQ(specs.GetCompSettingsPtr()->GetLConvergeTypeTypeIandIII(), defaults.GetLConvergeTypeTypeIandIII());
  // The record's own Type I and III fields are not passed on.
  specs.SetConvCritTypeIandIII(0.5);
  specs.SetConvTypeTypeIandIII(MCConst::CONV_ABSOLUTE);
  GLMMSettings unset;
  specs.CompleteSettings(&unset, nullptr, -1);
  EXPECT_EQ(unset.GetTolLogLikeTypeIandIII(), defaults.GetTolLogLikeTypeIandIII());
  EXPECT_EQ(unset.GetLConvergeTypeTypeIandIII(), defaults.GetLConvergeTypeTypeIandIII());

  specs.SetLConvCrit(1e-5);
  GLMMSettings criterion;
  specs.CompleteSettings(&criterion, nullptr, -1);
  EXPECT_EQ(criterion.GetTolLogLikeTypeIandIII(), 1e-5);
  EXPECT_EQ(criterion.GetLConvergeTypeTypeIandIII(), defaults.GetLConvergeTypeTypeIandIII());

  specs.SetLConvType(MCConst::CONV_ABSOLUTE);
  GLMMSettings type;
  specs.CompleteSettings(&type, nullptr, -1);
  EXPECT_EQ(type.GetLConvergeTypeTypeIandIII(), MCConst::CONV_ABSOLUTE);
}

TEST_F(SpecsComplete, OffsetAndFrequencyWeightStayWithTheRunsSettings) {
  FullModel();
  Read();
  fSpecs->SetOffsetType(MCConst::OFFSET_VARIABLE);
  fSpecs->SetOffsetIndex(CY);
  fSpecs->CompleteSpecs();
  auto adapter = OpenAdapter();
  GLMMSettings split;
  fSpecs->CompleteSettings(&split, adapter.get(), 0);
  EXPECT_EQ(split.GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(split.GetOffset(), -1);
  EXPECT_EQ(split.GetFrequencyWeightVar(), -1);
  EXPECT_EQ(split.GetRegrWeightVar(), 7);
  const GLMMSettings& run = *fSpecs->GetCompSettingsPtr();
  EXPECT_EQ(run.GetOffset(), 5);
  EXPECT_EQ(run.GetFrequencyWeightVar(), 6);

  // A fixed offset value goes the same way.
  fSpecs->SetOffsetType(MCConst::OFFSET_VALUE);
  fSpecs->SetOffsetValue(1.25);
  GLMMSettings another;
  fSpecs->CompleteSettings(&another, adapter.get(), 0);
  EXPECT_EQ(another.GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(run.GetOffsetType(), MCConst::OFFSET_VALUE);
  EXPECT_EQ(run.GetOffsetValue(), 1.25);
}

TEST_F(SpecsComplete, ADefaultRunHasNoOffset) {
  ReadAndComplete();
  auto adapter = OpenAdapter();
  GLMMSettings split;
  fSpecs->CompleteSettings(&split, adapter.get(), 0);
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetOffsetType(), MCConst::OFFSET_NONE);
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetOffset(), -1);
  EXPECT_EQ(split.GetOffsetType(), MCConst::OFFSET_NONE);
}

TEST_F(SpecsComplete, SortVariablesAreTheSubjectsResidualFirst) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
  SetTerms(L::N_RANDOM_TERMS, L::RANDOM_TERMS, {{}, {1, 0}});
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, 2);
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, List({1, 1}));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, List({0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, List({0, 0}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, List({2, 1}));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, List({List({SUBJ + 1, C + 1}), List({B + 1})}));
  SetVarList(L::N_RANDOM_SUBJECTS, L::RANDOM_SUBJECTS, {SUBJ, C, B});
  SetVarList(L::N_REPEATED_SUBJECTS, L::REPEATED_SUBJECTS, {NAME, SUBJ});
  ReadAndComplete();
  // Record: y 0, a b 1 2, subj c 3 4 (b is there already), name 5.
  std::vector<int> sortVars;
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetSortDataVariables(sortVars), 4);
  EXPECT_EQ(sortVars, (std::vector<int>{5, 3, 4, 2}));
  auto adapter = OpenAdapter();
  GLMMSettings split;
  fSpecs->CompleteSettings(&split, adapter.get(), 0);
  std::vector<int> splitSortVars;
  split.GetSortDataVariables(splitSortVars);
  EXPECT_EQ(splitSortVars, sortVars);
}

TEST_F(SpecsComplete, FactorsTakeTheSplitsCategoriesInTheirOrder) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A, G});
  SetVarList(L::N_REPEATED, L::REPEATED, {B});
  ReadAndComplete();
  auto adapter = OpenAdapter();
  int type = 0;

  fSpecs->SetFactorSortOrder(MCConst::CATEG_DESCENDING);
  GLMMSettings descending;
  fSpecs->CompleteSettings(&descending, adapter.get(), 0);
  EXPECT_EQ(descending.GetFactors(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(descending.GetFactorNCategories(), (std::vector<int>{3, 3, 2}));
  EXPECT_EQ(adapter->DecodeCatValue(1, 0, type)->fNum, 3.0);
  EXPECT_EQ(std::string(adapter->DecodeCatValue(2, 0, type)->fStr, 3), "mid");
  EXPECT_EQ(adapter->DecodeCatValue(3, 0, type)->fNum, 20.0);

  // Another order leaves the categories as they are.
  fSpecs->SetFactorSortOrder(MCConst::CATEG_DATA_ORDER);
  GLMMSettings asTheyAre;
  fSpecs->CompleteSettings(&asTheyAre, adapter.get(), 0);
  EXPECT_EQ(adapter->DecodeCatValue(1, 0, type)->fNum, 3.0);

  fSpecs->SetFactorSortOrder(MCConst::CATEG_ASCENDING);
  GLMMSettings ascending;
  fSpecs->CompleteSettings(&ascending, adapter.get(), 0);
  EXPECT_EQ(adapter->DecodeCatValue(1, 0, type)->fNum, 1.0);
  EXPECT_EQ(std::string(adapter->DecodeCatValue(2, 0, type)->fStr, 2), "hi");
  EXPECT_EQ(adapter->DecodeCatValue(3, 0, type)->fNum, 10.0);
}

TEST_F(SpecsComplete, SplitBookkeeping) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A});
  Read();
  MCEmmeansSpec request;
  request.AddFactor(A, 0);
  fSpecs->SetEMMeansSpec({request, request}, {{nullptr, ZORV_Format()}, {nullptr, ZORV_Format()}}, {"", ""},
                         {MIXValidSpecs::REFCAT_NONE, MIXValidSpecs::REFCAT_NONE}, {{}, {}});
  fSpecs->CompleteSpecs();
  // The run's own settings leave the splits alone.
  EXPECT_TRUE(fSpecs->GetValidSplits().empty());
  EXPECT_TRUE(fSpecs->GetEmmValidList().empty());

  auto adapter = OpenAdapter();
  GLMMSettings first;
  fSpecs->CompleteSettings(&first, adapter.get(), 0);
  GLMMSettings second;
  fSpecs->CompleteSettings(&second, nullptr, 1);
  EXPECT_EQ(fSpecs->GetValidSplits(), (std::vector<bool>{true, false}));
  EXPECT_EQ(fSpecs->GetEmmValidList(), (std::vector<std::vector<bool>>{{true, true}, {false, false}}));
  // Without an adapter factors have one category.
  EXPECT_EQ(second.GetFactorNCategories(), std::vector<int>{1});
  EXPECT_EQ(first.GetFactorNCategories(), std::vector<int>{3});

  GLMMSettings fifth;
  fSpecs->CompleteSettings(&fifth, adapter.get(), 4);
  EXPECT_EQ(fSpecs->GetValidSplits(), (std::vector<bool>{true, false, false, false, true}));
  ASSERT_EQ(fSpecs->GetEmmValidList().size(), 5u);
  EXPECT_EQ(fSpecs->GetEmmValidList()[2], (std::vector<bool>{false, false}));
  EXPECT_EQ(fSpecs->GetEmmValidList()[3], (std::vector<bool>{false, false}));
  EXPECT_EQ(fSpecs->GetEmmValidList()[4], (std::vector<bool>{true, true}));

  // A split done again without data turns invalid.
  GLMMSettings again;
  fSpecs->CompleteSettings(&again, nullptr, 0);
  EXPECT_EQ(fSpecs->GetValidSplits()[0], false);
  EXPECT_EQ(fSpecs->GetEmmValidList()[0], (std::vector<bool>{false, false}));

  fSpecs->CompleteSplits(3);
  EXPECT_EQ(fSpecs->GetValidSplits().size(), 5u);
  fSpecs->CompleteSplits(7);
  EXPECT_EQ(fSpecs->GetValidSplits(), (std::vector<bool>{false, false, false, false, true, false, false}));
  ASSERT_EQ(fSpecs->GetEmmValidList().size(), 7u);
  EXPECT_EQ(fSpecs->GetEmmValidList()[6], (std::vector<bool>{false, false}));
}

TEST_F(SpecsCompleteDeathTest, SettingsAreRequired) {
  ReadAndComplete();
  EXPECT_DEATH(fSpecs->CompleteSettings(nullptr, nullptr, 0), AssertText("pSettings != 0"));
}

// ---- marginal means in a split ----

namespace {

class SpecsCompleteMeans : public SpecsComplete {
 protected:
  SpecsCompleteMeans() : fMid(TextCells("mid", 4)), fUnknown(TextCells("zzz", 4)) {
    fTwo.fNum = 2.0;
    fSeven.fNum = 7.0;
    SetVarList(L::N_FACTORS, L::FACTORS, {A, B, G});
  }

  MCEmmeansSpec Request(int factor, MCConst::MCContrastType contrast) {
    MCEmmeansSpec request;
    request.AddFactor(factor, 0);
    request.AddCompareFactor(factor);
    request.SetContrastType(contrast);
    return request;
  }

  OBS fTwo;
  OBS fSeven;
  std::vector<OBS> fMid;
  std::vector<OBS> fUnknown;
};

}  // namespace

TEST_F(SpecsCompleteMeans, EachReferenceKindInASplit) {
  Read();
  const ZORV_Format numeric(ZORV_Format::F, 3, 0);
  const ZORV_Format text(ZORV_Format::A, 4, 0);
  MCEmmeansSpec table;
  table.AddFactor(A, 0);
  fSpecs->SetEMMeansSpec(
      {Request(G, MCConst::CONTRAST_SIMPLE), Request(A, MCConst::CONTRAST_SIMPLE), Request(A, MCConst::CONTRAST_SIMPLE),
       Request(A, MCConst::CONTRAST_SIMPLE), Request(B, MCConst::CONTRAST_SIMPLE), Request(B, MCConst::CONTRAST_PAIRWISE),
       Request(G, MCConst::CONTRAST_SIMPLE), table},
      {{fMid.data(), text}, {&fTwo, numeric}, {&fSeven, numeric}, {nullptr, numeric}, {nullptr, numeric},
       {nullptr, numeric}, {fUnknown.data(), text}, {nullptr, ZORV_Format()}},
      {"mid", "", "", "", "", "", "zzz", ""},
      {MIXValidSpecs::REFCAT_TEXT, MIXValidSpecs::REFCAT_VALUE, MIXValidSpecs::REFCAT_VALUE, MIXValidSpecs::REFCAT_FIRST,
       MIXValidSpecs::REFCAT_LAST, MIXValidSpecs::REFCAT_NONE, MIXValidSpecs::REFCAT_TEXT, MIXValidSpecs::REFCAT_NONE},
      {{}, {}, {}, {}, {}, {}, {}, {}});
  fSpecs->CompleteSpecs();

  // Without data the requests go to the run's settings as read.
  const std::vector<MCEmmeansSpec>& asRead = fSpecs->GetCompSettingsPtr()->GetEmmeans();
  ASSERT_EQ(asRead.size(), 8u);
  for (const MCEmmeansSpec& request : asRead) EXPECT_EQ(request.GetRefCateg(), -1);

  auto adapter = OpenAdapter();
  GLMMSettings split;
  fSpecs->CompleteSettings(&split, adapter.get(), 0);
  const std::vector<MCEmmeansSpec>& requests = split.GetEmmeans();
  ASSERT_EQ(requests.size(), 8u);
  // g in ascending order: hi lo mid; a: 1 2 3.
  EXPECT_EQ(requests[0].GetRefCateg(), 2);
  EXPECT_EQ(requests[1].GetRefCateg(), 1);
  EXPECT_EQ(requests[2].GetRefCateg(), -1);
  EXPECT_EQ(requests[3].GetRefCateg(), 0);
  EXPECT_EQ(requests[4].GetRefCateg(), -1);
  EXPECT_EQ(requests[5].GetRefCateg(), -1);
  EXPECT_EQ(requests[6].GetRefCateg(), -1);
  EXPECT_EQ(fSpecs->GetEmmValidList()[0],
            (std::vector<bool>{true, true, false, true, true, true, false, true}));
  // The run's settings are not touched by a split.
  EXPECT_EQ(fSpecs->GetCompSettingsPtr()->GetEmmeans()[3].GetRefCateg(), -1);

  // Without data every request of the split is invalid.
  GLMMSettings noData;
  fSpecs->CompleteSettings(&noData, nullptr, 1);
  EXPECT_EQ(fSpecs->GetEmmValidList()[1], std::vector<bool>(8, false));
  EXPECT_EQ(noData.GetEmmeans()[3].GetRefCateg(), -1);
}

TEST_F(SpecsCompleteMeans, ACompareFactorAtRecordPositionZeroIsNotEncoded) {
  // Without a target the first factor takes record position 0.
  fMemory.SetNumericInteger(L::TARGET, 0);
  Read();
  ASSERT_EQ(fSpecs->GetDependVar(), -1);
  fSpecs->SetEMMeansSpec({Request(A, MCConst::CONTRAST_SIMPLE), Request(B, MCConst::CONTRAST_SIMPLE)},
                         {{&fSeven, ZORV_Format(ZORV_Format::F, 3, 0)}, {&fSeven, ZORV_Format(ZORV_Format::F, 3, 0)}},
                         {"", ""}, {MIXValidSpecs::REFCAT_VALUE, MIXValidSpecs::REFCAT_VALUE}, {{}, {}});
  fSpecs->CompleteSpecs();
  EXPECT_EQ(fSpecs->GetCompFactorList(), (std::vector<int>{0, 1, 2}));
  auto adapter = OpenAdapter();
  GLMMSettings split;
  fSpecs->CompleteSettings(&split, adapter.get(), 0);
  EXPECT_EQ(fSpecs->GetEmmValidList()[0], (std::vector<bool>{true, false}));
  EXPECT_EQ(split.GetEmmeans()[0].GetRefCateg(), -1);
}

// ---- the variable list ----

TEST_F(SpecsComplete, VariableListWithoutListOrAdapterIsLeftAlone) {
  ReadAndComplete();
  auto adapter = OpenAdapter();
  MCXML_850::MCVarList list;
  EXPECT_TRUE(fSpecs->CompleteVarList(nullptr, adapter.get()));
  EXPECT_TRUE(fSpecs->CompleteVarList(&list, nullptr));
  EXPECT_EQ(list.Size(), 0);
}

TEST_F(SpecsComplete, VariableListRolesNamesAndCounts) {
  FullModel();
  ReadAndComplete();
  auto adapter = OpenAdapter();
  MCXML_850::MCVarList list;
  ASSERT_TRUE(fSpecs->CompleteVarList(&list, adapter.get()));
  // Record: y, a b, x z, weight, sw, subj, name, cx, t, a.
  ASSERT_EQ(list.Size(), 12);
  EXPECT_EQ(list.GetVarAt(0)->GetName(), "y");
  EXPECT_EQ(list.GetVarAt(0)->GetRole(), MCConst::ROLE_TARGET);
  EXPECT_FALSE(list.GetVarAt(0)->IsCategorical());
  EXPECT_EQ(list.GetVarAt(1)->GetName(), "a");
  EXPECT_EQ(list.GetVarAt(1)->GetRole(), MCConst::ROLE_PREDICTOR);
  EXPECT_TRUE(list.GetVarAt(1)->IsCategorical());
  EXPECT_EQ(list.GetVarAt(1)->GetNCategories(), 3);
  EXPECT_EQ(list.GetVarAt(3)->GetRole(), MCConst::ROLE_PREDICTOR);
  EXPECT_FALSE(list.GetVarAt(3)->IsCategorical());
  EXPECT_EQ(list.GetVarAt(5)->GetRole(), MCConst::ROLE_FREQUENCY_WEIGHT);
  EXPECT_EQ(list.GetVarAt(5)->GetWeightRounding(), 1);
  EXPECT_EQ(list.GetVarAt(6)->GetName(), "sw");
  EXPECT_EQ(list.GetVarAt(6)->GetRole(), MCConst::ROLE_PREDICTOR);
  EXPECT_TRUE(list.GetVarAt(7)->IsCategorical());
  EXPECT_EQ(list.GetVarAt(8)->GetName(), "name");
  EXPECT_TRUE(list.GetVarAt(8)->IsCategorical());
  EXPECT_FALSE(list.GetVarAt(9)->IsCategorical());
  // The repeated measures are categorical predictors under names of their own.
  EXPECT_EQ(list.GetVarAt(10)->GetName(), "@#$ordinal@#$_t");
  EXPECT_TRUE(list.GetVarAt(10)->IsCategorical());
  EXPECT_EQ(list.GetVarAt(10)->GetRole(), MCConst::ROLE_PREDICTOR);
  EXPECT_EQ(list.GetVarAt(11)->GetName(), "@#$ordinal@#$_a");
  EXPECT_EQ(list.GetVarAt(11)->GetRecordIndex(), 11);

  EXPECT_TRUE(list.GetListwiseDeletion());
  EXPECT_EQ(list.GetUnWeightedCount(), adapter->GetUnweightedCount());
  EXPECT_EQ(list.GetUnWeightedCount(), 8);
  EXPECT_DOUBLE_EQ(list.GetWeightedCount(), adapter->GetWeightedCount());
  EXPECT_EQ(list.GetDroppedCount(), adapter->GetDroppedCount());
  EXPECT_DOUBLE_EQ(list.GetWeightedDroppedCount(), adapter->GetWeightedDroppedCount());
}

TEST_F(SpecsCompleteMeans, EachSplitEncodesWithItsOwnCategories) {
  // Split by c: b is 10 in the first split and 20 in the second.
  fData.SetSplitVars({C});
  Read();
  const ZORV_Format numeric(ZORV_Format::F, 3, 0);
  OBS twenty;
  twenty.fNum = 20.0;
  fSpecs->SetEMMeansSpec({Request(B, MCConst::CONTRAST_SIMPLE), Request(A, MCConst::CONTRAST_SIMPLE)},
                         {{&twenty, numeric}, {nullptr, numeric}}, {"", ""},
                         {MIXValidSpecs::REFCAT_VALUE, MIXValidSpecs::REFCAT_FIRST}, {{}, {}});
  fSpecs->CompleteSpecs();
  auto adapter = OpenAdapter();
  ASSERT_TRUE(adapter->GetSplitFile());
  GLMMSettings first;
  fSpecs->CompleteSettings(&first, adapter.get(), 0);
  adapter->ChangeSplitNoIter();
  ASSERT_EQ(adapter->GetSplitIndex(), 1);
  GLMMSettings second;
  fSpecs->CompleteSettings(&second, adapter.get(), 1);

  EXPECT_EQ(fSpecs->GetValidSplits(), (std::vector<bool>{true, true}));
  EXPECT_EQ(fSpecs->GetEmmValidList(), (std::vector<std::vector<bool>>{{false, true}, {true, true}}));
  EXPECT_EQ(first.GetEmmeans()[0].GetRefCateg(), -1);
  EXPECT_EQ(second.GetEmmeans()[0].GetRefCateg(), 0);
  // The first category in every split.
  EXPECT_EQ(first.GetEmmeans()[1].GetRefCateg(), 0);
  EXPECT_EQ(second.GetEmmeans()[1].GetRefCateg(), 0);
  EXPECT_EQ(first.GetFactorNCategories(), (std::vector<int>{3, 1, 3}));
}
