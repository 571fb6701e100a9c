#include "specs/MIXValidSpecs.h"

#include <ostream>
#include <sstream>

#include "base/MIXAssert.h"
#include "host/adapter/ACACommonDisplay.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BP_ToFront.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMComponentDisplay.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/gzl/GZLComponentDisplay.h"

namespace MCConst = MCMath_850::MCConst;

// ---------------------------------------------------------------------------
// Debug text

namespace {

std::string VarText(const ProcedureDataSource* source, int index) {
  const ZORV_Variable* variable = source != nullptr ? source->GetVariable(index) : nullptr;
  std::ostringstream text;
  if (variable != nullptr) text << variable->GetName() << ' ';
  text << '(' << index << ')';
  return text.str();
}

std::vector<std::string> VarTexts(const ProcedureDataSource* source, const std::vector<int>& indices) {
  std::vector<std::string> texts;
  for (int index : indices) texts.push_back(VarText(source, index));
  return texts;
}

void DisplayVarList(const ProcedureDataSource* source, const std::string& label, const std::vector<int>& hostIndices,
                    const std::vector<int>& compIndices, const std::string& absent) {
  if (hostIndices.empty()) {
    ACACommonDisplay::DisplayText(absent);
    return;
  }
  ACACommonDisplay::DisplaySV(label + ":", VarTexts(source, hostIndices));
  ACACommonDisplay::DisplayIV(label + " (component):", compIndices);
}

void DisplayVar(const ProcedureDataSource* source, const std::string& label, int hostIndex, int compIndex,
                const std::string& absent) {
  if (hostIndex < 0) {
    ACACommonDisplay::DisplayText(absent);
    return;
  }
  ACACommonDisplay::DisplayS(label + ":", VarText(source, hostIndex));
  ACACommonDisplay::DisplayI(label + " (component):", compIndex);
}

void DisplayFileName(const std::string& keyword, const std::string& name) {
  if (name.empty()) {
    ACACommonDisplay::DisplayText(keyword + " is not defined");
  } else {
    ACACommonDisplay::DisplayS(keyword + ":", name);
  }
}

}  // namespace

void MIXValidSpecs::Display(std::ostream& os) const {
  std::ostream* pSaveCompStream = ACACommonDisplay::GetOutStream();
  MIX_ASSERT(pSaveCompStream != nullptr, "pSaveCompStream != 0");
  ACACommonDisplay::SetOutStream(os);
  using ACA = ACACommonDisplay;

  ACA::DisplayText("**************************************************");
  ACA::DisplayText("*  This text output is for debugging purposes only.");
  ACA::DisplayText("*  It shows the validated specification of the run.");
  ACA::DisplayText("**************************************************");
  ACA::DisplayText("MIXValidSpecs display start");

  // Variables.
  DisplayVar(DataSource, "Dependent variable", DependVar, CompDependVar, "Dependent variable is not defined");
  DisplayVarList(DataSource, "Factors", FactorList, CompFactorList, "Factors are not defined");
  ACA::DisplaySV("Refined factors:", VarTexts(DataSource, RefinedFactorList));
  ACA::DisplayIV("Factor levels:", NFactorLevelList);
  MCDisplay_850::DisplayC(os, "Factor sort order:", FactorSortOrder);
  DisplayVarList(DataSource, "Covariates", CovariateList, CompCovariateList, "Covariates are not defined");
  ACA::DisplaySV("Refined covariates:", VarTexts(DataSource, RefinedCovariateList));
  ACA::DisplaySV("Model variables:", VarTexts(DataSource, ModelVarList));
  ACA::DisplayIV("Model variables (component):", CompModelVarList);

  // Fixed effects.
  ACA::DisplayB("Intercept in model:", InterceptInModel);
  if (ModelEffectList.empty()) ACA::DisplayText("Fixed effects are not defined");
  for (std::size_t e = 0; e < ModelEffectList.size(); ++e) {
    ACA::DisplayI("Fixed effect:", static_cast<long>(e));
    ModelEffectList[e].Display(os);
    if (e < CovarateNested.size()) ACA::DisplayBV("Nested covariates:", CovarateNested[e]);
    if (e < CompModelEffectList.size()) {
      ACA::DisplayText("In component indices:");
      CompModelEffectList[e].Display(os);
    }
  }

  // Random effects.
  if (RandEffectList.empty()) ACA::DisplayText("Random effects are not defined");
  for (std::size_t e = 0; e < RandEffectList.size(); ++e) {
    ACA::DisplayI("Random effect:", static_cast<long>(e));
    RandEffectList[e].Display(os);
    if (e < RandEffectNested.size()) ACA::DisplayBV("Nested covariates:", RandEffectNested[e]);
    if (e < CompRandEffectList.size()) {
      ACA::DisplayText("In component indices:");
      CompRandEffectList[e].Display(os);
    }
  }
  DisplayVarList(DataSource, "Random subjects", RandVarList, CompRandVarList, "Random subjects are not defined");
  if (RandomList.empty()) ACA::DisplayText("Random blocks are not defined");
  for (std::size_t b = 0; b < RandomList.size(); ++b) {
    ACA::DisplayI("Random block:", static_cast<long>(b));
    if (b < NRandEffects.size()) ACA::DisplayI("Effects in block:", NRandEffects[b]);
    RandomList[b].Display(os);
    if (b < CompRandomList.size()) {
      ACA::DisplayText("In component indices:");
      CompRandomList[b].Display(os);
    }
  }
  for (const std::vector<bool>& flags : RandCovarNested) ACA::DisplayBV("Nested covariates in blocks:", flags);

  // Repeated block.
  DisplayVarList(DataSource, "Repeated measures", RepeatedVarList, CompRepeatedVarList,
                 "Repeated measures are not defined");
  DisplayVarList(DataSource, "Repeated subjects", RepeatedSubjVarList, CompRepeatedSubjVarList,
                 "Repeated subjects are not defined");
  ACA::DisplayText("Repeated block:");
  RepeatedSpec.Display(os);
  ACA::DisplayText("Repeated block in component indices:");
  CompRepeatedSpec.Display(os);
  DisplayVarList(DataSource, "Spatial coordinates", SpatVarInds, CompSpatVarInds,
                 "Spatial coordinates are not defined");

  // Offset and weights.
  MCDisplay_850::DisplayC(os, "Offset type:", OffsetType);
  if (OffsetType == MCConst::OFFSET_VARIABLE) {
    DisplayVar(DataSource, "Offset variable", OffsetIndex, CompOffsetIndex, "Offset variable is not defined");
  } else if (OffsetType == MCConst::OFFSET_VALUE) {
    ACA::DisplayD("Offset value:", OffsetValue);
  } else {
    ACA::DisplayText("Offset is not defined");
  }
  DisplayVar(DataSource, "Frequency weight", ZORVWeightIndex, CompZORVWeightIndex,
             "Frequency weight is not defined");
  DisplayVar(DataSource, "Regression weight", RegrWeightIndex, CompRegrWeightIndex,
             "Regression weight is not defined");

  // Estimation.
  MCDisplay_850::DisplayC(os, "Effect analysis type:", EffectAnalysisType);
  GZLComponentDisplay_850::DisplayC(os, "Effect analysis statistic:", EffectAnalysisStat);
  ACA::DisplayI("Separation check from iteration:", IterSep);
  MCDisplay_850::DisplayC(os, "Hessian convergence type:", HConvType);
  ACA::DisplayD("Hessian convergence criterion:", HConvCrit);
  MCDisplay_850::DisplayC(os, "Log-likelihood convergence type:", LConvType);
  ACA::DisplayB("Log-likelihood convergence type set:", LConvTypeSetByUser);
  ACA::DisplayD("Log-likelihood convergence criterion:", LConvCrit);
  ACA::DisplayB("Log-likelihood convergence criterion set:", LConvCritSetByUser);
  MCDisplay_850::DisplayC(os, "Parameter convergence type:", PConvType);
  ACA::DisplayD("Parameter convergence criterion:", PConvCrit);
  ACA::DisplayI("Maximum iterations:", MaxIter);
  ACA::DisplayI("Maximum step-halvings:", MaxStepHalving);
  ACA::DisplayD("Confidence level (%):", CILevelPct);
  GZLComponentDisplay_850::DisplayC(os, "Confidence interval type:", CIType);
  ACA::DisplayD("Profile interval convergence:", CIConvProfile);
  MCDisplay_850::DisplayC(os, "Parameter covariance:", CovbType);
  GLMMComponentDisplay_850::DisplayC(os, "Covariance parameter estimation:", ThetaEstType);
  MCDisplay_850::DisplayC(os, "Estimation method:", EstMethod);
  ACA::DisplayI("Maximum Fisher steps:", MaxFisherSteps);
  ACA::DisplayD("Singularity tolerance:", Tolerance);
  MCDisplay_850::DisplayC(os, "Type I and III convergence type:", ConvTypeTypeIandIII);
  ACA::DisplayD("Type I and III convergence criterion:", ConvCritTypeIandIII);
  ACA::DisplayD("Missing value:", MissingValue);

  // Custom tests.
  if (CustomTests.empty() && CompCustomTests.empty()) ACA::DisplayText("Custom tests are not defined");
  for (std::size_t t = 0; t < CustomTests.size(); ++t) {
    ACA::DisplayI("Custom test:", static_cast<long>(t));
    CustomTests[t].Display(os);
  }
  for (std::size_t t = 0; t < CompCustomTests.size(); ++t) {
    ACA::DisplayI("Custom test in component indices:", static_cast<long>(t));
    CompCustomTests[t].Display(os);
  }

  // Marginal means.
  if (EMMeansList.empty()) ACA::DisplayText("EMMEANS are not defined");
  for (std::size_t r = 0; r < EMMeansList.size(); ++r) {
    ACA::DisplayI("EMMEANS request:", static_cast<long>(r));
    EMMeansList[r].Display(os);
    if (r < EmmRCTypeList.size()) ACA::DisplayI("Reference category kind:", EmmRCTypeList[r]);
    if (r < ContrastPairList.size()) {
      const ContrastPair& pair = ContrastPairList[r];
      ACA::DisplayS("Compare factor format:", pair.second.fType != 0 ? pair.second.ToText() : "(none)");
      if (pair.first == nullptr) {
        ACA::DisplayText("Reference value is not defined");
      } else if (r < EmmRCTypeList.size() && EmmRCTypeList[r] == REFCAT_TEXT) {
        ACA::DisplayS("Reference value:", r < ContrastStringList.size() ? "\"" + ContrastStringList[r] + "\"" : "");
      } else {
        ACA::DisplayObs("Reference value:", pair.first, 0);
      }
    }
    if (r < EmmRCLongList.size()) ACA::DisplayB("Reference text too long:", EmmRCLongList[r]);
    if (r < EmmFixCovStr.size()) ACA::DisplaySV("Fixed covariate values:", EmmFixCovStr[r]);
    if (r < CompEMMeansList.size()) {
      ACA::DisplayText("In component indices:");
      CompEMMeansList[r].Display(os);
    }
  }

  // Per split.
  ACA::DisplayBV("Valid splits:", fvbSplitValid);
  for (std::size_t s = 0; s < fvvbEMMeansValid.size(); ++s) ACA::DisplayBV("Valid EMMEANS of split:", fvvbEMMeansValid[s]);

  // Printed output.
  ACA::DisplayB("Include user-missing categories:", ClassMissInclude);
  ACA::DisplayB("PRINT CORB:", PrintOptionCORB);
  ACA::DisplayB("PRINT COVB:", PrintOptionCOVB);
  ACA::DisplayB("PRINT CPS:", PrintOptionCPS);
  ACA::DisplayB("PRINT FIT:", PrintOptionFIT);
  ACA::DisplayB("PRINT GEF:", PrintOptionGEF);
  ACA::DisplayB("PRINT HISTORY:", PrintOptionHISTORY);
  ACA::DisplayI("PRINT HISTORY interval:", PrintHistPar);
  ACA::DisplayB("PRINT LAGRANGE:", PrintOptionLAGRANGE);
  ACA::DisplayB("PRINT LMATRIX:", PrintOptionLMATRIX);
  ACA::DisplayB("PRINT MODELINFO:", PrintOptionMODELINFO);
  ACA::DisplayB("PRINT SOLUTION:", PrintOptionSOLUTION);
  ACA::DisplayB("PRINT SUMMARY:", PrintOptionSUMMARY);
  ACA::DisplayB("PRINT VARIABLEINFO:", PrintOptionVARIABLEINFO);
  ACA::DisplayB("PRINT WORKINGCORR:", PrintOptionWORKINGCORR);
  ACA::DisplayB("PRINT EXPONENTIATED:", PrintOptionEXPONENTIATED);
  ACA::DisplayB("PRINT TESTCOV:", PrintOptionTestCov);
  ACA::DisplayB("PRINT G:", PrintOptionGMatrix);
  ACA::DisplayB("PRINT R:", PrintOptionRMatrix);
  ACA::DisplayB("PRINT NONE:", PrintOptionNONE);

  // Saved variables.
  if (SaveVarNames.empty()) ACA::DisplayText("Saved variables are not defined");
  for (std::size_t v = 0; v < SaveVarNames.size(); ++v) {
    ACA::DisplayS("Saved variable:", SaveVarNames[v]);
    if (v < SaveVarTypes.size()) ACA::DisplayI("Saved type:", SaveVarTypes[v]);
    if (v < SaveScoreTypes.size()) GLMMComponentDisplay_850::DisplayC(os, "Score type:", SaveScoreTypes[v]);
    if (v < SaveVarLabels.size()) ACA::DisplayS("Label:", SaveVarLabels[v]);
    if (v < SaveVarFormats.size()) ACA::DisplayS("Format:", SaveVarFormats[v].ToText());
  }
  ACA::DisplayI("Maximum new variables:", MaxObsAdded);

  // Files.
  DisplayFileName("OUTFILE MODEL", OutFModelFileName);
  DisplayFileName("OUTFILE PARAMETER", OutFParameterFileName);
  DisplayFileName("OUTFILE STATXML", OutFStatXMLFileName);
  DisplayFileName("OUTFILE STATJSON", OutFStatJSONFileName);
  ACA::DisplayB("StatJSON required:", UseStatJSON);

  // Completed objects.
  if (VarValidSpecsPtr == nullptr) {
    ACA::DisplayText("Record layout is not defined");
  } else {
    ACA::DisplayI("Record variables:", VarValidSpecsPtr->GetNRecordVars());
  }
  if (CompSettingsPtr == nullptr) {
    ACA::DisplayText("Component settings are not defined");
  } else {
    ACA::DisplayText("Component settings:");
    CompSettingsPtr->Display(os);
  }

  ACA::DisplayText("MIXValidSpecs display end");
  ACACommonDisplay::SetOutStream(*pSaveCompStream);
}

void MIXValidSpecs::Display() const {
  std::ostringstream stream;
  Display(stream);
  BP_ToFrontText(stream.str());
}
