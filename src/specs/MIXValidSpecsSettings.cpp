#include "specs/MIXValidSpecs.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "base/MIXAssert.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAStopProcessor.h"
#include "host/adapter/ACAVarListMetaData.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/MCVarList.h"

using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;

// ---------------------------------------------------------------------------
// Settings and variable list, for the run and for each split

void MIXValidSpecs::CompleteSettings(GLMMSettings* pSettings, ACAInputAdapter* pInpAdapt, int iSplit) {
  MIX_ASSERT(pSettings != nullptr, "pSettings != 0");
  GLMMSettings& settings = *pSettings;
  settings.SetUse4Mixed(true);
  settings.SetTransformEffects(false);

  MIX_ASSERT(fvvbEMMeansValid.size() == fvbSplitValid.size(), "fvvbEMMeansValid.size() == fvbSplitValid.size()");
  const std::size_t nRequests = EMMeansList.size();
  if (iSplit >= 0 && static_cast<std::size_t>(iSplit) >= fvbSplitValid.size()) {
    fvbSplitValid.resize(static_cast<std::size_t>(iSplit) + 1, false);
    fvvbEMMeansValid.resize(static_cast<std::size_t>(iSplit) + 1, std::vector<bool>(nRequests, false));
  }
  if (iSplit >= 0) {
    const bool withData = pInpAdapt != nullptr;
    fvbSplitValid[static_cast<std::size_t>(iSplit)] = withData;
    std::vector<bool>& requestsValid = fvvbEMMeansValid[static_cast<std::size_t>(iSplit)];
    std::fill(requestsValid.begin(), requestsValid.end(), withData);
  }

  if (CompDependVar >= 0) settings.SetSingleDependent(CompDependVar);

  auto addFactors = [this, &settings, pInpAdapt](const std::vector<int>& factors) {
    for (int index : factors) {
      if (pInpAdapt == nullptr) {
        settings.AddFactor(index, 1);
        continue;
      }
      const int categories = pInpAdapt->GetRecordCatVarSize(index);
      if (FactorSortOrder == MCConst::CATEG_ASCENDING) pInpAdapt->ReorderRecordCats(index, true);
      if (FactorSortOrder == MCConst::CATEG_DESCENDING) pInpAdapt->ReorderRecordCats(index, false);
      settings.AddFactor(index, categories);
    }
  };
  addFactors(CompFactorList);
  for (int index : CompCovariateList) settings.AddCovariate(index);
  for (const MCModelEffect& effect : CompModelEffectList) settings.AddModelEffect(effect);

  // The offset and the frequency weight belong to the run's own settings
  // only; a split's settings carry neither.
  if (CompSettingsPtr != nullptr) {
    if (OffsetType == MCConst::OFFSET_VARIABLE && CompOffsetIndex >= 0) CompSettingsPtr->SetOffset(CompOffsetIndex);
    if (OffsetType == MCConst::OFFSET_VALUE) CompSettingsPtr->SetOffsetValue(OffsetValue);
    if (CompZORVWeightIndex >= 0) CompSettingsPtr->SetFrequencyWeightVar(CompZORVWeightIndex);
  }
  if (CompRegrWeightIndex >= 0) settings.SetRegrWeightVar(CompRegrWeightIndex);

  for (const GLMMRandomSpec& block : CompRandomList) settings.AddRandomSpec(block);

  if (!CompEMMeansList.empty()) {
    std::vector<MCEmmeansSpec> requests;
    for (std::size_t i = 0; i < CompEMMeansList.size(); ++i) {
      MCEmmeansSpec request = CompEMMeansList[i];
      bool valid = true;
      const std::vector<int>& compareFactors = request.GetCompareFactors();
      const RefCatTypes refCatType = i < EmmRCTypeList.size() ? EmmRCTypeList[i] : REFCAT_NONE;
      const OBS* refValue = i < ContrastPairList.size() ? ContrastPairList[i].first : nullptr;
      if (compareFactors.empty() || compareFactors[0] < 1 || pInpAdapt == nullptr) {
        valid = true;
      } else if (refCatType == REFCAT_FIRST) {
        request.SetRefCateg(0);
      } else if (refValue == nullptr) {
        valid = true;
      } else if (i < EmmRCLongList.size() && EmmRCLongList[i]) {
        valid = false;
      } else {
        // A text is compared blank padded to the factor's width, so that
        // the adapter never reads past the characters of the command.
        std::vector<OBS> padded;
        if (refCatType == REFCAT_TEXT) {
          const std::string& text = ContrastStringList[i];
          const std::size_t width = std::max<std::size_t>(text.size(), ContrastPairList[i].second.fWidth);
          padded.resize(static_cast<std::size_t>(ObsWordsForWidth(static_cast<int>(std::max<std::size_t>(width, 1)))));
          std::memset(padded.data(), ' ', padded.size() * sizeof(OBS));
          std::memcpy(padded.data(), text.data(), text.size());
          refValue = padded.data();
        }
        bool notFound = false;
        const int code = pInpAdapt->EncodeRecordCatValue(compareFactors[0], refValue, notFound, false);
        if (notFound) {
          valid = false;
        } else {
          request.SetRefCateg(code);
        }
      }
      requests.push_back(request);
      if (pInpAdapt != nullptr && iSplit >= 0) {
        std::vector<bool>& requestsValid = fvvbEMMeansValid[static_cast<std::size_t>(iSplit)];
        if (i < requestsValid.size()) requestsValid[i] = valid;
      }
    }
    settings.SetEmmeans(requests);
  }
  // Our extension: the custom tests reach the component, which computes them.
  if (!CompCustomTests.empty()) settings.SetCustomTests(CompCustomTests);

  addFactors(CompRepeatedVarList);
  settings.SetRepeated(CompRepeatedSpec);
  for (int index : CompSpatVarInds) settings.AddSpatialVar(index);

  settings.SetInterceptUse(InterceptInModel);
  settings.SetEffectAnalysisType(EffectAnalysisType);
  settings.SetEffectAnalysisStat(EffectAnalysisStat);
  settings.SetCSIteration(IterSep);
  settings.SetConfidenceLevel(CILevelPct / 100.0);
  settings.SetCIType(CIType);
  settings.SetCIConvProfile(CIConvProfile);
  settings.SetToleranceLogLikePLCI(CIConvProfile);
  settings.SetToleranceHessianPLCI(CIConvProfile);
  settings.SetCovbType(CovbType);
  CompleteTargetSettings(settings);
  settings.SetHConvergeType(HConvType);
  settings.SetLConvergeType(LConvType);
  settings.SetPConvergeType(PConvType);
  settings.SetToleranceHessian(HConvCrit);
  settings.SetLLConCriterion(LConvCrit);
  settings.SetParamEstConCriterion(PConvCrit);
  settings.SetMaxIterations(MaxIter);
  settings.SetMaxStepHalvingValue(MaxStepHalving);
  settings.SetThetaEstType(ThetaEstType);
  settings.SetHessianCompMethod(EstMethod);
  settings.SetMaxFisherIterNum(EstMethod == MCConst::HESSIAN_NEWTON_RAPHSON ? MaxFisherSteps : MaxFisherSteps + 1);
  settings.SetTolerance(Tolerance);
  settings.SetMaxIterationsPLCI(MaxIter);
  settings.SetMaxIterationsSQP(MaxIter);
  settings.SetToleranceHessianSQP(HConvCrit);
  settings.SetToleranceLogLikeSQP(LConvCrit);
  settings.SetToleranceParamSQP(PConvCrit);
  settings.SetHConvergeTypeSQP(HConvType);
  settings.SetLConvergeTypeSQP(LConvType);
  settings.SetPConvergeTypeSQP(PConvType);
  if (LConvTypeSetByUser) settings.SetLConvergeTypeTypeIandIII(LConvType);
  if (LConvCritSetByUser) settings.SetTolLogLikeTypeIandIII(LConvCrit);
  settings.SetDegreesFreedomType(GLMMConst_850::DF_SATTERTHWAITE);
  settings.SetGEFTest(PrintOptionGEF);
  settings.SetIterationFrequency(PrintHistPar);
  settings.SetModelFittingTest(PrintOptionSUMMARY);
  settings.SetScoringTypes(SaveScoreTypes);
  settings.SetCancelPointer(StopProcessor);
}

void MIXValidSpecs::CompleteSplits(int nSplits) {
  MIX_ASSERT(fvvbEMMeansValid.size() == fvbSplitValid.size(), "fvvbEMMeansValid.size() == fvbSplitValid.size()");
  if (nSplits <= static_cast<int>(fvbSplitValid.size())) return;
  fvbSplitValid.resize(static_cast<std::size_t>(nSplits), false);
  fvvbEMMeansValid.resize(static_cast<std::size_t>(nSplits), std::vector<bool>(EMMeansList.size(), false));
}

bool MIXValidSpecs::CompleteVarList(MCXML_850::MCVarList* pVarList, ACAInputAdapter* pInpAdapt) {
  if (pVarList == nullptr || pInpAdapt == nullptr) return true;
  ACAVarListMetaData metaData(*pVarList, VarValidSpecsPtr, *DataSource, pInpAdapt, true);

  std::map<int, int> repeatedHostIndex;
  for (std::size_t k = 0; k < CompRepeatedVarList.size() && k < RepeatedVarList.size(); ++k) {
    repeatedHostIndex.emplace(CompRepeatedVarList[k], RepeatedVarList[k]);
  }

  bool ok = true;
  const int nRecordVars = VarValidSpecsPtr != nullptr ? VarValidSpecsPtr->GetNRecordVars() : 0;
  for (int i = 0; i < nRecordVars && ok; ++i) {
    if (i == CompZORVWeightIndex) {
      ok = metaData.AddRecWeightVar(i, MCConst::ROLE_FREQUENCY_WEIGHT, 1, "");
    } else if (i == CompDependVar) {
      ok = metaData.AddRecVariable(i, false, MCConst::ROLE_TARGET, nullptr, "");
    } else if (repeatedHostIndex.count(i) != 0) {
      // A repeated measure that is also a factor needs a name of its own.
      const int zorvInd = repeatedHostIndex[i];
      MIX_ASSERT(zorvInd >= 0, "zorvInd >= 0");
      const ZORV_Variable* variable = DataSource->GetVariable(zorvInd);
      const std::string name = MCXML_850::IMCVariable::RecodedName(variable != nullptr ? variable->GetName() : "");
      ok = metaData.AddRecVariable(i, true, MCConst::ROLE_PREDICTOR, nullptr, name);
    } else {
      ok = metaData.AddRecVariable(i, VarValidSpecsPtr->GetRecordCatVar(i), MCConst::ROLE_PREDICTOR, nullptr, "");
    }
  }

  pVarList->SetListwiseDeletion(true);
  pVarList->SetUnWeightedCount(pInpAdapt->GetUnweightedCount());
  pVarList->SetWeightedCount(pInpAdapt->GetWeightedCount());
  pVarList->SetDroppedCount(pInpAdapt->GetDroppedCount());
  pVarList->SetWeightedDroppedCount(pInpAdapt->GetWeightedDroppedCount());
  return ok;
}
