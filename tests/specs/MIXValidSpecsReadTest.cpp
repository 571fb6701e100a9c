// Reading the parser's memory: every offset, the output files, the two user
// errors.
#include <gtest/gtest.h>

#include "SpecsFixture.h"
#include "host/data/ZORV_Session.h"
#include "numeric/glmm/GLMMSettings.h"

using namespace specs_test;
namespace MCConst = MCMath_850::MCConst;

namespace {

using SpecsReading = SpecsFixture;

}  // namespace

TEST_F(SpecsReading, PlainCommandGivesTheDefaults) {
  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(fbRead);
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(specs.GetDependVar(), Y);
  EXPECT_EQ(specs.GetCILevelPct(), 95.0);
  EXPECT_EQ(specs.GetPConvCrit(), 1e-6);
  EXPECT_EQ(specs.GetTolerance(), 1e-12);
  EXPECT_EQ(specs.GetMaxIter(), 100);
  EXPECT_EQ(specs.GetMaxStepHalving(), 5);
  EXPECT_EQ(specs.GetMaxFisherSteps(), 1);
  EXPECT_EQ(specs.GetEstMethod(), MCConst::HESSIAN_FISHER_THEN_NEWTON);
  EXPECT_EQ(specs.GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(specs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_III);
  EXPECT_TRUE(specs.GetInterceptInModel());
  EXPECT_EQ(specs.GetNModelEffect(), 0);
  EXPECT_EQ(specs.GetZORVWeightIndex(), -1);
  EXPECT_EQ(specs.GetRegrWeightIndex(), -1);
  EXPECT_EQ(specs.GetNSaveVars(), 0);
  EXPECT_FALSE(specs.GetUseStatJSON());
}

TEST_F(SpecsReading, EveryScalarOffsetReachesItsField) {
  fMemory.SetNumericReal(L::CONFIDENCE, 90.0);
  fMemory.SetNumericReal(L::HESSIAN_CRITERION, 1e-3);
  fMemory.SetNumericReal(L::LOGLIKELIHOOD_CRITERION, 1e-4);
  fMemory.SetNumericReal(L::PARAMETER_CRITERION, 1e-7);
  fMemory.SetNumericReal(L::SINGULAR, 1e-9);
  fMemory.SetNumericInteger(L::TARGET, Z + 1);
  fMemory.SetNumericInteger(L::HESSIAN_KIND, 1);
  fMemory.SetNumericInteger(L::HISTORY_STEP, 3);
  fMemory.SetNumericInteger(L::SCORING, 4);
  fMemory.SetNumericInteger(L::LOGLIKELIHOOD_KIND, 1);
  fMemory.SetNumericInteger(L::METHOD, 1);
  fMemory.SetNumericInteger(L::ITERATIONS, 50);
  fMemory.SetNumericInteger(L::HALVING, 7);
  fMemory.SetNumericInteger(L::PARAMETER_KIND, 2);
  fMemory.SetNumericInteger(L::TEST_TYPE, 1);
  fMemory.SetNumericInteger(L::INTERCEPT, 0);
  fMemory.SetNumericInteger(L::INCLUDE_USER_MISSING, 1);
  for (int offset : {L::SHOW_CASES, L::SHOW_ESTIMATE_CORRELATIONS, L::SHOW_ESTIMATE_COVARIANCES, L::SHOW_COVARIANCE_TESTS,
                     L::SHOW_VARIABLES, L::SHOW_G, L::SHOW_HISTORY, L::SHOW_L, L::SHOW_R, L::SHOW_ESTIMATES}) {
    fMemory.SetNumericInteger(offset, 1);
  }

  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(fbRead);
  EXPECT_EQ(specs.GetCILevelPct(), 90.0);
  EXPECT_EQ(specs.GetHConvCrit(), 1e-3);
  EXPECT_EQ(specs.GetLConvCrit(), 1e-4);
  EXPECT_EQ(specs.GetPConvCrit(), 1e-7);
  EXPECT_EQ(specs.GetTolerance(), 1e-9);
  EXPECT_EQ(specs.GetDependVar(), Z);
  EXPECT_EQ(specs.GetHConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetPrintHistPar(), 3);
  EXPECT_EQ(specs.GetMaxFisherSteps(), 4);
  EXPECT_EQ(specs.GetEstMethod(), MCConst::HESSIAN_FISHER_THEN_NEWTON);
  EXPECT_EQ(specs.GetLConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetThetaEstType(), GLMMConst_850::ML);
  EXPECT_EQ(specs.GetMaxIter(), 50);
  EXPECT_EQ(specs.GetMaxStepHalving(), 7);
  EXPECT_EQ(specs.GetPConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(specs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_I);
  EXPECT_FALSE(specs.GetInterceptInModel());
  EXPECT_TRUE(specs.GetClassMissInclude());
  EXPECT_TRUE(specs.GetPrintOptionCPS());
  EXPECT_TRUE(specs.GetPrintOptionCORB());
  EXPECT_TRUE(specs.GetPrintOptionCOVB());
  EXPECT_TRUE(specs.GetPrintOptionTestCov());
  EXPECT_TRUE(specs.GetPrintOptionVARIABLEINFO());
  EXPECT_TRUE(specs.GetPrintOptionGMatrix());
  EXPECT_TRUE(specs.GetPrintOptionHISTORY());
  EXPECT_TRUE(specs.GetPrintOptionLMATRIX());
  EXPECT_TRUE(specs.GetPrintOptionRMatrix());
  EXPECT_TRUE(specs.GetPrintOptionSOLUTION());
  // Options the command cannot set keep their defaults.
  EXPECT_FALSE(specs.GetPrintOptionFIT());
  EXPECT_FALSE(specs.GetPrintOptionNONE());
  EXPECT_EQ(specs.GetIterSep(), 20);
  EXPECT_EQ(specs.GetCIConvProfile(), 1e-4);
}

TEST_F(SpecsReading, EachPrintOptionHasItsOwnSlot) {
  fMemory.SetNumericInteger(L::SHOW_L, 1);
  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(specs.GetPrintOptionLMATRIX());
  EXPECT_FALSE(specs.GetPrintOptionCPS());
  EXPECT_FALSE(specs.GetPrintOptionCORB());
  EXPECT_FALSE(specs.GetPrintOptionCOVB());
  EXPECT_FALSE(specs.GetPrintOptionTestCov());
  EXPECT_FALSE(specs.GetPrintOptionVARIABLEINFO());
  EXPECT_FALSE(specs.GetPrintOptionGMatrix());
  EXPECT_FALSE(specs.GetPrintOptionHISTORY());
  EXPECT_FALSE(specs.GetPrintOptionRMatrix());
  EXPECT_FALSE(specs.GetPrintOptionSOLUTION());
}

TEST_F(SpecsReading, KindsOutsideTheirValuesLeaveTheDefaults) {
  fMemory.SetNumericInteger(L::HESSIAN_KIND, 0);
  fMemory.SetNumericInteger(L::LOGLIKELIHOOD_KIND, 3);
  fMemory.SetNumericInteger(L::PARAMETER_KIND, 7);
  fMemory.SetNumericInteger(L::METHOD, 0);
  fMemory.SetNumericInteger(L::TEST_TYPE, 2);
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetHConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetLConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetPConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(specs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_III);

  fMemory.SetNumericInteger(L::HESSIAN_KIND, 2);
  fMemory.SetNumericInteger(L::LOGLIKELIHOOD_KIND, 2);
  fMemory.SetNumericInteger(L::METHOD, 2);
  fMemory.SetNumericInteger(L::TEST_TYPE, 3);
  Read();
  EXPECT_EQ(fSpecs->GetHConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs->GetLConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs->GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(fSpecs->GetEffectAnalysisType(), MCConst::EFFECT_TYPE_III);
}

TEST_F(SpecsReading, CountsAndCodesUseTheLowHalfOfTheirWord) {
  fMemory.SetNumericInteger(L::ITERATIONS, (INTEGER(1) << 32) + 40);
  fMemory.SetNumericInteger(L::TEST_TYPE, (INTEGER(5) << 32) + 1);
  // Flags use bit 0 only.
  fMemory.SetNumericInteger(L::INTERCEPT, 2);
  fMemory.SetNumericInteger(L::INCLUDE_USER_MISSING, 3);
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetMaxIter(), 40);
  EXPECT_EQ(specs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_I);
  EXPECT_FALSE(specs.GetInterceptInModel());
  EXPECT_TRUE(specs.GetClassMissInclude());
}

TEST_F(SpecsReading, NoIterationsMeansOne) {
  fMemory.SetNumericInteger(L::ITERATIONS, 0);
  EXPECT_EQ(Read().GetMaxIter(), 1);
  fMemory.SetNumericInteger(L::ITERATIONS, -4);
  EXPECT_EQ(Read().GetMaxIter(), 1);
}

TEST_F(SpecsReading, NoFisherStepsMeansNewtonRaphson) {
  fMemory.SetNumericInteger(L::SCORING, 0);
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetEstMethod(), MCConst::HESSIAN_NEWTON_RAPHSON);
  EXPECT_EQ(specs.GetMaxFisherSteps(), 0);
}

TEST_F(SpecsReading, VariableListsAndTheFileWeight) {
  fData.SetWeightVar(W);
  SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
  SetVarList(L::N_COVARIATES, L::COVARIATES, {X, Z, T});
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetZORVWeightIndex(), W);
  EXPECT_EQ(specs.GetFactorList(), (std::vector<int>{A, B}));
  EXPECT_EQ(specs.GetRefinedFactorList(), (std::vector<int>{A, B}));
  EXPECT_EQ(specs.GetCovariateList(), (std::vector<int>{X, Z, T}));
  EXPECT_EQ(specs.GetRefinedCovariateList(), (std::vector<int>{X, Z, T}));
}

TEST_F(SpecsReading, AModelOfTheInterceptAloneHasNoFixedEffect) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A});
  SetVarList(L::N_COVARIATES, L::COVARIATES, {X});
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{0, 0}});
  ASSERT_EQ(fMemory.GetNumericInteger(L::N_FIXED_TERMS), 1);
  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(specs.GetModelEffectList().empty());
  EXPECT_TRUE(specs.GetCovarateNested().empty());
  EXPECT_TRUE(specs.GetInterceptInModel());
}

TEST_F(SpecsReading, FixedTermsWithoutTheInterceptRow) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A, B});
  SetVarList(L::N_COVARIATES, L::COVARIATES, {X});
  // Intercept, A, A*B, X(A) with X nested.
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, -1}});
  MIXValidSpecs& specs = Read();
  ASSERT_EQ(specs.GetNModelEffect(), 3);
  EXPECT_EQ(specs.GetModelEffectList()[0].GetFactors(), std::vector<int>{A});
  EXPECT_EQ(specs.GetModelEffectList()[1].GetFactors(), (std::vector<int>{A, B}));
  EXPECT_EQ(specs.GetModelEffectList()[2].GetFactors(), std::vector<int>{A});
  EXPECT_EQ(specs.GetModelEffectList()[2].GetCovariates(), std::vector<int>{X});
  EXPECT_EQ(specs.GetCovarateNested(), (std::vector<std::vector<bool>>{{false}, {false}, {true}}));
  // Terms are over the model's predictors: the factors, then the covariates.
  EXPECT_EQ(specs.GetModelEffectList()[0].GetVarIndices(), (std::vector<int>{A, B, X}));
}

TEST_F(SpecsReading, ScaleWeightFromItsDictionaryPosition) {
  fMemory.SetNumericInteger(L::SCALE_WEIGHT, 0);
  EXPECT_EQ(Read().GetRegrWeightIndex(), -1);
  fMemory.SetNumericInteger(L::SCALE_WEIGHT, -3);
  EXPECT_EQ(Read().GetRegrWeightIndex(), -1);
  fMemory.SetNumericInteger(L::SCALE_WEIGHT, SW + 1);
  EXPECT_EQ(Read().GetRegrWeightIndex(), SW);
}

TEST_F(SpecsReading, SevenSavedItemsFillEverySlot) {
  const char* names[] = {"FXPRED", "PRED", "RESID", "FXSE", "PREDSE", "FXDF", "PREDDF"};
  fMemory.SetNumericInteger(L::N_SAVES, 7);
  for (int slot = 0; slot < 7; ++slot) {
    fMemory.SetNumericInteger(L::SAVE_KINDS.At(slot), slot + 1);
    fMemory.SetNumericInteger(L::SAVE_NAMES.At(slot), fMemory.AddText(std::string("  ") + names[slot], L::SAVE_NAME_BYTES));
  }
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetMaxObsAdded(), 7);
  EXPECT_EQ(specs.GetNSaveVars(), 7);
  EXPECT_EQ(specs.GetSaveVarNames(),
            (std::vector<std::string>{"FXPRED", "PRED", "RESID", "FXSE", "PREDSE", "FXDF", "PREDDF"}));
  EXPECT_EQ(specs.GetSaveVarTypes(),
            (std::vector<MIXValidSpecs::SaveTypes>{MIXValidSpecs::SAVE_FIXED_PREDICTED, MIXValidSpecs::SAVE_PREDICTED,
                                                   MIXValidSpecs::SAVE_RESIDUAL, MIXValidSpecs::SAVE_FIXED_PREDICTED_SE,
                                                   MIXValidSpecs::SAVE_PREDICTED_SE, MIXValidSpecs::SAVE_FIXED_PREDICTED_DF,
                                                   MIXValidSpecs::SAVE_PREDICTED_DF}));
  EXPECT_EQ(specs.GetSaveScoreTypes(),
            (std::vector<GLMMConst_850::ScoreType>{GLMMConst_850::SCORE_FIXED_PREDICTED, GLMMConst_850::SCORE_PREDICTED,
                                                   GLMMConst_850::SCORE_RESIDUAL, GLMMConst_850::SCORE_FIXED_PREDICTED_SE,
                                                   GLMMConst_850::SCORE_PREDICTED_SE, GLMMConst_850::SCORE_FIXED_PREDICTED_DF,
                                                   GLMMConst_850::SCORE_PREDICTED_DF}));
  EXPECT_EQ(specs.GetSaveVarLabels(),
            (std::vector<std::string>{"Fixed Predicted Value", "Predicted Value", "Residual",
                                      "Standard Error of Fixed Predicted Value", "Standard Error of Predicted Value",
                                      "Degrees of Freedom of Fixed Predicted Value",
                                      "Degrees of Freedom of Predicted Value"}));
  const ZORV_Format grown(ZORV_Format::F, 11, 4);
  const ZORV_Format plain(ZORV_Format::F, 8, 2);
  EXPECT_EQ(specs.GetSaveVarFormats(), (std::vector<ZORV_Format>{grown, grown, grown, grown, grown, plain, plain}));
}

// The kinds of generalized targets share the slots: their labels, their
// score types, and the target's own format for a category.
TEST_F(SpecsReading, GeneralizedSavedItemsTakeTheirKinds) {
  fMemory.SetNumericInteger(L::N_SAVES, 3);
  const char* names[] = {"ETA", "PEARSON", "CATEGORY"};
  for (int slot = 0; slot < 3; ++slot) {
    fMemory.SetNumericInteger(L::SAVE_KINDS.At(slot), slot + 8);
    fMemory.SetNumericInteger(L::SAVE_NAMES.At(slot), fMemory.AddText(names[slot], L::SAVE_NAME_BYTES));
  }
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetSaveVarTypes(),
            (std::vector<MIXValidSpecs::SaveTypes>{MIXValidSpecs::SAVE_LINEAR_PREDICTOR,
                                                   MIXValidSpecs::SAVE_PEARSON_RESIDUAL,
                                                   MIXValidSpecs::SAVE_PREDICTED_CATEGORY}));
  EXPECT_EQ(specs.GetSaveScoreTypes(),
            (std::vector<GLMMConst_850::ScoreType>{GLMMConst_850::SCORE_LINEAR_PREDICTOR,
                                                   GLMMConst_850::SCORE_PEARSON_RESIDUAL,
                                                   GLMMConst_850::SCORE_PREDICTED_CATEGORY}));
  EXPECT_EQ(specs.GetSaveVarLabels(),
            (std::vector<std::string>{"Linear Predictor", "Pearson Residual", "Predicted Category"}));
  const ZORV_Format plain(ZORV_Format::F, 8, 2);
  EXPECT_EQ(specs.GetSaveVarFormats()[0], plain);
  EXPECT_EQ(specs.GetSaveVarFormats()[1], plain);
}

TEST_F(SpecsReading, SavedNameTakesSixtyFourBytes) {
  const std::string longName(64, 'n');
  fMemory.SetNumericInteger(L::N_SAVES, 1);
  fMemory.SetNumericInteger(L::SAVE_KINDS, 3);
  fMemory.SetNumericInteger(L::SAVE_NAMES, fMemory.AddText(longName + "TAIL"));
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetSaveVarNames(), std::vector<std::string>{longName});
  EXPECT_EQ(specs.GetSaveVarTypes(), std::vector<MIXValidSpecs::SaveTypes>{MIXValidSpecs::SAVE_RESIDUAL});
}

// ---- output files ----

namespace {

class SpecsFiles : public SpecsFixture {
 protected:
  void Names(INTEGER kind, const std::string& first, const std::string& statJSON, const std::string& statXML) {
    fMemory.SetNumericInteger(L::FILE_KIND, kind);
    SetText(L::MODEL_FILE, first);
    SetText(L::STATJSON_FILE, statJSON);
    SetText(L::STATXML_FILE, statXML);
  }
  void ExpectNoFiles() {
    EXPECT_EQ(fSpecs->GetOutFModelFileName(), "");
    EXPECT_EQ(fSpecs->GetOutFParameterFileName(), "");
    EXPECT_EQ(fSpecs->GetOutFStatXMLFileName(), "");
    EXPECT_EQ(fSpecs->GetOutFStatJSONFileName(), "");
  }
};

}  // namespace

TEST_F(SpecsFiles, ModelFileKinds) {
  for (INTEGER kind : {2, 4}) {
    Names(kind, "  out/model.xml ", "out/r.json", "out/r.xml");
    MIXValidSpecs& specs = Read();
    EXPECT_TRUE(fbRead);
    EXPECT_EQ(specs.GetOutFModelFileName(), "out/model.xml");
    EXPECT_EQ(specs.GetOutFParameterFileName(), "");
    EXPECT_EQ(specs.GetOutFStatXMLFileName(), "out/r.xml");
    EXPECT_EQ(specs.GetOutFStatJSONFileName(), "out/r.json");
    EXPECT_TRUE(specs.GetOutFOptionMODEL());
    EXPECT_FALSE(specs.GetOutFOptionPARAMETER());
  }
}

TEST_F(SpecsFiles, ParameterFileKinds) {
  for (INTEGER kind : {1, 3}) {
    Names(kind, "p.xml", "", "r.xml");
    MIXValidSpecs& specs = Read();
    EXPECT_TRUE(fbRead);
    EXPECT_EQ(specs.GetOutFModelFileName(), "");
    EXPECT_EQ(specs.GetOutFParameterFileName(), "p.xml");
    EXPECT_EQ(specs.GetOutFStatXMLFileName(), "r.xml");
    EXPECT_EQ(specs.GetOutFStatJSONFileName(), "");
    EXPECT_FALSE(specs.GetOutFOptionStatJSON());
  }
}

TEST_F(SpecsFiles, AnyOtherKindReadsNoName) {
  Names(0, "same.xml", "same.xml", "same.xml");
  Read();
  EXPECT_TRUE(fbRead);
  ExpectNoFiles();
  EXPECT_TRUE(Messages().empty());
  Names(5, "m.xml", "r.json", "r.xml");
  Read();
  ExpectNoFiles();
}

TEST_F(SpecsFiles, EmptyNamesNeverConflict) {
  Names(2, "", "", "");
  Read();
  EXPECT_TRUE(fbRead);
  EXPECT_TRUE(Messages().empty());
  ExpectNoFiles();
  Names(2, "m.xml", "", "");
  Read();
  EXPECT_TRUE(fbRead);
  EXPECT_EQ(fSpecs->GetOutFModelFileName(), "m.xml");
}

TEST_F(SpecsFiles, NamesDifferingInCaseConflictAndTheFirstShowsAsTyped) {
  fMemory.SetNumericInteger(L::HISTORY_STEP, 4);
  Names(2, "Out.XML", "r.json", "out.xml");
  Read();
  EXPECT_FALSE(fbRead);
  ExpectNoFiles();
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], "The file Out.XML cannot be used for both MODEL and STATXML. Give each output a file of its own.");
  EXPECT_TRUE(ZORV_Session::Current().IsFatal());
  EXPECT_TRUE(fData.FatalError());
  // Reading stops there.
  EXPECT_EQ(fSpecs->GetPrintHistPar(), 1);
}

TEST_F(SpecsFiles, ChecksRunInOrder) {
  Names(4, "a.out", "A.OUT", "a.out");
  Read();
  EXPECT_FALSE(fbRead);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], "The file a.out cannot be used for both MODEL and STATXML. Give each output a file of its own.");
}

TEST_F(SpecsFiles, ModelAndStatJSON) {
  Names(2, "m.out", "M.out", "x.out");
  Read();
  EXPECT_FALSE(fbRead);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], "The file m.out cannot be used for both MODEL and STATJSON. Give each output a file of its own.");
}

TEST_F(SpecsFiles, StatXMLAndStatJSONShowTheStatXMLName) {
  Names(2, "m.out", "R.out", "r.out");
  Read();
  EXPECT_FALSE(fbRead);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], "The file r.out cannot be used for both STATXML and STATJSON. Give each output a file of its own.");
}

TEST_F(SpecsFiles, AParameterFileIsReportedAsTheModelFile) {
  Names(1, "p.out", "", "p.out");
  Read();
  EXPECT_FALSE(fbRead);
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0], "The file p.out cannot be used for both MODEL and STATXML. Give each output a file of its own.");
  EXPECT_EQ(fSpecs->GetOutFParameterFileName(), "");
}

// ---- spatial coordinates ----

TEST_F(SpecsReading, SpatialCoordinatesInTheirOrder) {
  SetVarList(L::N_COORDINATES, L::COORDINATES, {CY, CX});
  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(fbRead);
  EXPECT_EQ(specs.GetSpatVarInds(), (std::vector<int>{CY, CX}));
  EXPECT_EQ(specs.GetNSpatVars(), 2);
}

TEST_F(SpecsReading, ANonNumericCoordinateIsAUserError) {
  fData.GetVariable(G)->SetLabel("Grade");
  SetVarList(L::N_COORDINATES, L::COORDINATES, {CX, NAME, G});
  fMemory.SetNumericInteger(L::N_SAVES, 1);
  fMemory.SetNumericInteger(L::SAVE_KINDS, 2);
  fMemory.SetNumericInteger(L::SAVE_NAMES, fMemory.AddText("PRED", L::SAVE_NAME_BYTES));
  MIXValidSpecs& specs = Read();
  EXPECT_FALSE(fbRead);
  // Only the first offending coordinate is reported.
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0],
            "The variable name given in /RESIDUAL COORDINATES= is not numeric. Spatial coordinates must be numeric "
            "variables.");
  EXPECT_TRUE(fData.FatalError());
  // What was read before stays; what follows is not read.
  EXPECT_EQ(specs.GetSpatVarInds(), std::vector<int>{CX});
  EXPECT_EQ(specs.GetNSaveVars(), 0);
  EXPECT_EQ(specs.GetDependVar(), Y);
}

TEST_F(SpecsReading, TheCoordinateIsNamedAsTheDisplaySettingSays) {
  fData.GetVariable(NAME)->SetLabel("Case name");
  SetVarList(L::N_COORDINATES, L::COORDINATES, {NAME});
  Read();
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0],
            "The variable Case name given in /RESIDUAL COORDINATES= is not numeric. Spatial coordinates must be numeric "
            "variables.");
}

TEST_F(SpecsReading, APartialRecordStillCompletes) {
  SetVarList(L::N_FACTORS, L::FACTORS, {A});
  SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{0}, {1}});
  SetVarList(L::N_COORDINATES, L::COORDINATES, {NAME});
  MIXValidSpecs& specs = Read();
  EXPECT_FALSE(fbRead);
  specs.CompleteSpecs();
  ASSERT_NE(specs.GetCompSettingsPtr(), nullptr);
  EXPECT_EQ(specs.GetCompFactorList(), std::vector<int>{1});
  EXPECT_EQ(specs.GetCompModelEffectList().size(), 1u);
}
