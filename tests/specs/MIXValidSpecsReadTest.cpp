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
  fMemory.SetNumericReal(0, 90.0);
  fMemory.SetNumericReal(8, 1e-3);
  fMemory.SetNumericReal(16, 1e-4);
  fMemory.SetNumericReal(64, 1e-7);
  fMemory.SetNumericReal(80, 1e-9);
  fMemory.SetNumericInteger(104, Z + 1);
  fMemory.SetNumericInteger(144, 1);
  fMemory.SetNumericInteger(232, 3);
  fMemory.SetNumericInteger(240, 4);
  fMemory.SetNumericInteger(272, 1);
  fMemory.SetNumericInteger(312, 1);
  fMemory.SetNumericInteger(336, 50);
  fMemory.SetNumericInteger(344, 7);
  fMemory.SetNumericInteger(584, 2);
  fMemory.SetNumericInteger(1696, 1);
  fMemory.SetNumericInteger(1736, 0);
  fMemory.SetNumericInteger(1752, 1);
  const long printOffsets[] = {1760, 1768, 1776, 1784, 1792, 1800, 1808, 1816, 1824, 1832};
  for (long offset : printOffsets) fMemory.SetNumericInteger(offset, 1);

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
  fMemory.SetNumericInteger(1816, 1);
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
  fMemory.SetNumericInteger(144, 0);
  fMemory.SetNumericInteger(272, 3);
  fMemory.SetNumericInteger(584, 7);
  fMemory.SetNumericInteger(312, 0);
  fMemory.SetNumericInteger(1696, 2);
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetHConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetLConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetPConvType(), MCConst::CONV_RELATIVE);
  EXPECT_EQ(specs.GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(specs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_III);

  fMemory.SetNumericInteger(144, 2);
  fMemory.SetNumericInteger(272, 2);
  fMemory.SetNumericInteger(312, 2);
  fMemory.SetNumericInteger(1696, 3);
  Read();
  EXPECT_EQ(fSpecs->GetHConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs->GetLConvType(), MCConst::CONV_ABSOLUTE);
  EXPECT_EQ(fSpecs->GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(fSpecs->GetEffectAnalysisType(), MCConst::EFFECT_TYPE_III);
}

TEST_F(SpecsReading, CountsAndCodesUseTheLowHalfOfTheirWord) {
  fMemory.SetNumericInteger(336, (INTEGER(1) << 32) + 40);
  fMemory.SetNumericInteger(1696, (INTEGER(5) << 32) + 1);
  // Flags use bit 0 only.
  fMemory.SetNumericInteger(1736, 2);
  fMemory.SetNumericInteger(1752, 3);
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetMaxIter(), 40);
  EXPECT_EQ(specs.GetEffectAnalysisType(), MCConst::EFFECT_TYPE_I);
  EXPECT_FALSE(specs.GetInterceptInModel());
  EXPECT_TRUE(specs.GetClassMissInclude());
}

TEST_F(SpecsReading, NoIterationsMeansOne) {
  fMemory.SetNumericInteger(336, 0);
  EXPECT_EQ(Read().GetMaxIter(), 1);
  fMemory.SetNumericInteger(336, -4);
  EXPECT_EQ(Read().GetMaxIter(), 1);
}

TEST_F(SpecsReading, NoFisherStepsMeansNewtonRaphson) {
  fMemory.SetNumericInteger(240, 0);
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetEstMethod(), MCConst::HESSIAN_NEWTON_RAPHSON);
  EXPECT_EQ(specs.GetMaxFisherSteps(), 0);
}

TEST_F(SpecsReading, VariableListsAndTheFileWeight) {
  fData.SetWeightVar(W);
  SetVarList(392, 720, {A, B});
  SetVarList(360, 600, {X, Z, T});
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetZORVWeightIndex(), W);
  EXPECT_EQ(specs.GetFactorList(), (std::vector<int>{A, B}));
  EXPECT_EQ(specs.GetRefinedFactorList(), (std::vector<int>{A, B}));
  EXPECT_EQ(specs.GetCovariateList(), (std::vector<int>{X, Z, T}));
  EXPECT_EQ(specs.GetRefinedCovariateList(), (std::vector<int>{X, Z, T}));
}

TEST_F(SpecsReading, AModelOfTheInterceptAloneHasNoFixedEffect) {
  SetVarList(392, 720, {A});
  SetVarList(360, 600, {X});
  SetTerms(368, 696, {{0, 0}});
  ASSERT_EQ(fMemory.GetNumericInteger(368), 1);
  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(specs.GetModelEffectList().empty());
  EXPECT_TRUE(specs.GetCovarateNested().empty());
  EXPECT_TRUE(specs.GetInterceptInModel());
}

TEST_F(SpecsReading, FixedTermsWithoutTheInterceptRow) {
  SetVarList(392, 720, {A, B});
  SetVarList(360, 600, {X});
  // Intercept, A, A*B, X(A) with X nested.
  SetTerms(368, 696, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 0, -1}});
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
  fMemory.SetNumericInteger(1560, 0);
  EXPECT_EQ(Read().GetRegrWeightIndex(), -1);
  fMemory.SetNumericInteger(1560, -3);
  EXPECT_EQ(Read().GetRegrWeightIndex(), -1);
  fMemory.SetNumericInteger(1560, SW + 1);
  EXPECT_EQ(Read().GetRegrWeightIndex(), SW);
}

TEST_F(SpecsReading, SevenSavedItemsFillEverySlot) {
  const char* names[] = {"FXPRED", "PRED", "RESID", "FXSE", "PREDSE", "FXDF", "PREDDF"};
  fMemory.SetNumericInteger(528, 7);
  for (int slot = 0; slot < 7; ++slot) {
    fMemory.SetNumericInteger(1576 + 8 * slot, slot + 1);
    fMemory.SetNumericInteger(1632 + 8 * slot, fMemory.AddText(std::string("  ") + names[slot], 64));
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

TEST_F(SpecsReading, SavedNameTakesSixtyFourBytes) {
  const std::string longName(64, 'n');
  fMemory.SetNumericInteger(528, 1);
  fMemory.SetNumericInteger(1576, 3);
  fMemory.SetNumericInteger(1632, fMemory.AddText(longName + "TAIL"));
  MIXValidSpecs& specs = Read();
  EXPECT_EQ(specs.GetSaveVarNames(), std::vector<std::string>{longName});
  EXPECT_EQ(specs.GetSaveVarTypes(), std::vector<MIXValidSpecs::SaveTypes>{MIXValidSpecs::SAVE_RESIDUAL});
}

// ---- output files ----

namespace {

class SpecsFiles : public SpecsFixture {
 protected:
  void Names(INTEGER kind, const std::string& first, const std::string& statJSON, const std::string& statXML) {
    fMemory.SetNumericInteger(1688, kind);
    fMemory.SetCharacterText(40, 255, first);
    fMemory.SetCharacterText(295, 255, statJSON);
    fMemory.SetCharacterText(550, 255, statXML);
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
  fMemory.SetNumericInteger(232, 4);
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
  SetVarList(520, 1256, {CY, CX});
  MIXValidSpecs& specs = Read();
  EXPECT_TRUE(fbRead);
  EXPECT_EQ(specs.GetSpatVarInds(), (std::vector<int>{CY, CX}));
  EXPECT_EQ(specs.GetNSpatVars(), 2);
}

TEST_F(SpecsReading, ANonNumericCoordinateIsAUserError) {
  fData.GetVariable(G)->SetLabel("Grade");
  SetVarList(520, 1256, {CX, NAME, G});
  fMemory.SetNumericInteger(528, 1);
  fMemory.SetNumericInteger(1576, 2);
  fMemory.SetNumericInteger(1632, fMemory.AddText("PRED", 64));
  MIXValidSpecs& specs = Read();
  EXPECT_FALSE(fbRead);
  // Only the first offending coordinate is reported.
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0],
            "The variable name given in REPEATED SPCOORDS is not numeric. Spatial coordinates must be numeric "
            "variables.");
  EXPECT_TRUE(fData.FatalError());
  // What was read before stays; what follows is not read.
  EXPECT_EQ(specs.GetSpatVarInds(), std::vector<int>{CX});
  EXPECT_EQ(specs.GetNSaveVars(), 0);
  EXPECT_EQ(specs.GetDependVar(), Y);
}

TEST_F(SpecsReading, TheCoordinateIsNamedAsTheDisplaySettingSays) {
  fData.GetVariable(NAME)->SetLabel("Case name");
  SetVarList(520, 1256, {NAME});
  Read();
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_EQ(Messages()[0],
            "The variable Case name given in REPEATED SPCOORDS is not numeric. Spatial coordinates must be numeric "
            "variables.");
}

TEST_F(SpecsReading, APartialRecordStillCompletes) {
  SetVarList(392, 720, {A});
  SetTerms(368, 696, {{0}, {1}});
  SetVarList(520, 1256, {NAME});
  MIXValidSpecs& specs = Read();
  EXPECT_FALSE(fbRead);
  specs.CompleteSpecs();
  ASSERT_NE(specs.GetCompSettingsPtr(), nullptr);
  EXPECT_EQ(specs.GetCompFactorList(), std::vector<int>{1});
  EXPECT_EQ(specs.GetCompModelEffectList().size(), 1u);
}
