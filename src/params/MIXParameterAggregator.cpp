#include "params/MIXParameterAggregator.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>

#include "base/MIXAssert.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ObsVecMap.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpComposite.h"
#include "host/output/BpGroup.h"
#include "host/output/BpString.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMRandomSpec.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCConst.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/math/MCRegrParameter.h"
#include "params/MIXLabelGrammar.h"
#include "specs/MIXValidSpecs.h"

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// Labels longer than this go to a pivot table in pieces.
const std::size_t kLabelPieceBytes = 255;

}  // namespace

MIXParameterAggregator::MIXParameterAggregator(const MIXValidSpecs& specs, const ACAInputAdapter* pInpAdapt,
                                               const ProcedureDataSource& dataSource, int randomIndex, int nSplits)
    : fpSpecs(&specs),
      fpInpAdapt(pInpAdapt),
      fpVarValidSpecs(specs.GetVarValidSpecsPtr()),
      fpDataSource(&dataSource),
      fbGroupCats(false),
      fRandomIndex(randomIndex),
      fNSplits(nSplits),
      fbParamAggregated(false) {
  MIX_ASSERT(pInpAdapt != nullptr, "pInpAdapt != 0");
  MIX_ASSERT(fpVarValidSpecs != nullptr, "fpVarValidSpecs != 0");
  fbGroupCats = pInpAdapt->GetSplitFile() && !dataSource.SplitsInSeparateTables();

  const unsigned long extraWords = fNSplits > 0 ? static_cast<unsigned long>(fNSplits) : 0ul;
  for (const MCMath_850::MCModelEffect& effect : EffectList()) {
    // The key holds the factors in the order a parameter keeps them, by
    // nesting level.
    MIXRegrParameter layout;
    layout.SetupFromEffect(effect, 0);
    std::vector<int> hostIndices;
    for (int factor : layout.GetFactors()) hostIndices.push_back(fpVarValidSpecs->GetZORVVarIndex(factor));
    fvpObsVecMaps.push_back(new ObsVecMap(ObsVecMap::MakeKeySpec(dataSource, hostIndices), extraWords));
  }
  fvGlobalToLocalMap.assign(U(std::max(fNSplits, 0)), std::vector<int>());
  fvLocalToGlobalMap.assign(U(std::max(fNSplits, 0)), std::vector<int>());
}

MIXParameterAggregator::~MIXParameterAggregator() { ClearObsVecMaps(); }

void MIXParameterAggregator::ClearObsVecMaps() {
  for (ObsVecMap* pMap : fvpObsVecMaps) delete pMap;
  fvpObsVecMaps.clear();
}

const std::vector<MCMath_850::MCModelEffect>& MIXParameterAggregator::EffectList() const {
  if (fRandomIndex < 0) return fpSpecs->GetCompModelEffectList();
  const std::vector<MCGLMM_850::GLMMRandomSpec>& blocks = fpSpecs->GetCompRandomList();
  MIX_ASSERT(U(fRandomIndex) < blocks.size(), "fRandomIndex < nRandSpecs");
  return blocks[U(fRandomIndex)].GetEffects();
}

const std::vector<MCMath_850::MCModelEffect>& MIXParameterAggregator::SettingsEffectList(
    const MCGLMM_850::GLMMSettings& settings) const {
  if (fRandomIndex < 0) return settings.GetModelEffects();
  MIX_ASSERT(fRandomIndex < settings.GetNRandomSpecs(), "fRandomIndex < nRandSpecs");
  return settings.GetRandomSpecs()[U(fRandomIndex)].GetEffects();
}

int MIXParameterAggregator::CurrentSplitIndex() const {
  const int iSplit = fpInpAdapt->GetSplitFile() ? fpInpAdapt->GetSplitCount() - 1 : 0;
  MIX_ASSERT(fNSplits > 0, "fNSplits > 0");
  MIX_ASSERT(iSplit >= 0 && iSplit < fNSplits, "iSplit >= 0 && iSplit < fNSplits");
  return iSplit;
}

int MIXParameterAggregator::KeyWords(const ObsVecMap& map) const {
  return static_cast<int>(map.CellSize()) - fNSplits;
}

int MIXParameterAggregator::FactorWords(int compIndex) const {
  const ZORV_Variable* variable = MIXLabelGrammar::Variable(*fpDataSource, fpVarValidSpecs, compIndex);
  const int width = variable != nullptr ? variable->GetType() : 0;
  return width <= 8 ? 1 : ObsWordsForWidth(width);
}

bool MIXParameterAggregator::AddSplitParams(const MCGLMM_850::GLMMAlgorithm* pAlgorithm) {
  const MCGLMM_850::GLMMSettings* pSettings = fpSpecs->GetCompSettingsPtr();
  MIX_ASSERT(pSettings != nullptr, "pSettings != 0");
  const MCGLMM_850::GLMMOutputStats* pStats = pAlgorithm != nullptr ? pAlgorithm->GetOutputStats() : nullptr;
  if (pStats == nullptr) return false;

  const std::vector<MCMath_850::MCRegrParameter>* pParams = nullptr;
  if (fRandomIndex < 0) {
    pParams = &pStats->GetBetaParameters();
  } else {
    const std::vector<std::vector<MCMath_850::MCRegrParameter>>& blocks = pStats->GetGammaBasicParameters();
    if (U(fRandomIndex) >= blocks.size()) return false;
    pParams = &blocks[U(fRandomIndex)];
  }
  const std::vector<MCMath_850::MCRegrParameter>& params = *pParams;

  std::vector<std::vector<int>> groups;
  bool result = GroupParamsByEffects(groups, params, *pSettings);
  for (std::size_t e = 0; result && e < groups.size(); ++e) {
    result = AddParamsForEffect(params, groups[e], static_cast<int>(e), *pSettings);
  }

  const int iSplit = CurrentSplitIndex();
  fvLocalToGlobalMap[U(iSplit)].assign(params.size(), -1);
  return result;
}

bool MIXParameterAggregator::GroupParamsByEffects(std::vector<std::vector<int>>& groups,
                                                  const std::vector<MCMath_850::MCRegrParameter>& params,
                                                  const MCGLMM_850::GLMMSettings& settings) const {
  const std::size_t nEffects = SettingsEffectList(settings).size();
  groups.assign(nEffects, std::vector<int>());
  for (std::size_t iParam = 0; iParam < params.size(); ++iParam) {
    const int effectIndex = params[iParam].GetEffectIndex();
    if (effectIndex < 0) {
      MIX_ASSERT(params[iParam].IsIntercept(), "paramList[iParam].IsIntercept()");
      continue;
    }
    MIX_ASSERT(U(effectIndex) < nEffects, "effectIndex < nEffects");
    groups[U(effectIndex)].push_back(static_cast<int>(iParam));
  }
  return true;
}

bool MIXParameterAggregator::AddParamsForEffect(const std::vector<MCMath_850::MCRegrParameter>& params,
                                                const std::vector<int>& paramIndices, int effectIndex,
                                                const MCGLMM_850::GLMMSettings& settings) {
  const int nParams = static_cast<int>(paramIndices.size());
  for (int index : paramIndices) {
    ObsVecMap* pObsVecMap = U(effectIndex) < fvpObsVecMaps.size() ? fvpObsVecMaps[U(effectIndex)] : nullptr;
    MIX_ASSERT(pObsVecMap != nullptr, "pObsVecMap != 0");
    const int nKeyObs = KeyWords(*pObsVecMap);
    MIX_ASSERT(nKeyObs >= 0, "nKeyObs >= 0");

    MIXRegrParameter param;
    param.SetEffectIndex(effectIndex);
    param.DecodeCategories(params[U(index)], settings, fpInpAdapt, fRandomIndex);

    std::vector<OBS> key(U(std::max(nKeyObs, 1)));
    std::memset(key.data(), 0, key.size() * sizeof(OBS));
    const std::vector<const OBS*>& categories = param.GetCategories();
    if (!categories.empty()) {
      int shift = 0;
      const std::vector<int>& factors = param.GetFactors();
      for (std::size_t i = 0; i < categories.size(); ++i) {
        // A code the split does not know gives no value to key the parameter by.
        if (categories[i] == nullptr) return false;
        const int words = FactorWords(factors[i]);
        MIX_ASSERT(shift + words <= nKeyObs, "shift + words <= nKeyObs");
        std::memcpy(&key[U(shift)], categories[i], U(words) * sizeof(OBS));
        shift += words;
      }
      MIX_ASSERT(shift == nKeyObs, "shift == nKeyObs");
    } else {
      MIX_ASSERT(nParams == 1, "nParams == 1");
      MIX_ASSERT(nKeyObs == 1, "nKeyObs == 1");
    }

    OBS* pCell = pObsVecMap->Contains(key.data());
    if (pCell == nullptr) {
      pCell = pObsVecMap->Insert(key.data());
      for (int s = 0; s < fNSplits; ++s) pCell[nKeyObs + s].fNum = -1.0;
    }
    const int iSplit = CurrentSplitIndex();
    pCell[nKeyObs + iSplit].fNum = static_cast<double>(index);
  }
  return true;
}

bool MIXParameterAggregator::CreateAggregationMaps() {
  MIX_ASSERT(!fbParamAggregated, "!fbParamAggregated");
  if (fpSpecs->GetInterceptInModel()) {
    fvAllRegrParams.push_back(MIXRegrParameter());
    for (int s = 0; s < fNSplits; ++s) {
      fvGlobalToLocalMap[U(s)].push_back(0);
      if (!fvLocalToGlobalMap[U(s)].empty()) fvLocalToGlobalMap[U(s)][0] = 0;
    }
  }
  const int nEffects = static_cast<int>(EffectList().size());
  for (int e = 0; e < nEffects; ++e) {
    if (!UpdateMapsForEffect(e)) return false;
  }
  CreateParamLabels();
  MIX_ASSERT(fvAllRegrParams.size() == fvAllParamLabels.size(), "fvAllRegrParams.size() == fvAllParamLabels.size()");
  CreateEffectLabels();
  fbParamAggregated = true;
  return true;
}

bool MIXParameterAggregator::UpdateMapsForEffect(int effectIndex) {
  const std::vector<MCMath_850::MCModelEffect>& effects = EffectList();
  const MCMath_850::MCModelEffect& effect = effects[U(effectIndex)];
  ObsVecMap* pObsVecMap = U(effectIndex) < fvpObsVecMaps.size() ? fvpObsVecMaps[U(effectIndex)] : nullptr;
  MIX_ASSERT(pObsVecMap != nullptr, "pObsVecMap != 0");
  const int nKeyObs = KeyWords(*pObsVecMap);
  MIX_ASSERT(nKeyObs >= 0, "nKeyObs >= 0");

  std::vector<OBS*> effectCells;
  switch (fpSpecs->GetFactorSortOrder()) {
    case MCMath_850::MCConst::CATEG_DESCENDING:
      pObsVecMap->Sort(effectCells);
      std::reverse(effectCells.begin(), effectCells.end());
      break;
    case MCMath_850::MCConst::CATEG_DATA_ORDER: {
      MIX_ASSERT(fNSplits == 1, "fNSplits == 1");
      const unsigned long nCells = pObsVecMap->Size();
      std::map<int, OBS*> indexMap;
      for (unsigned long c = 0; c < nCells; ++c) {
        OBS* pCell = (*pObsVecMap)[c];
        const int localParamInd = static_cast<int>(pCell[nKeyObs].fNum);
        MIX_ASSERT(localParamInd >= 0, "localParamInd >= 0");
        MIX_ASSERT(indexMap.count(localParamInd) == 0, "indexMap.count( localParamInd ) == 0");
        indexMap[localParamInd] = pCell;
      }
      MIX_ASSERT(nCells == indexMap.size(), "nCells == indexMap.size()");
      for (const auto& entry : indexMap) {
        OBS* pKeyObs = entry.second;
        MIX_ASSERT(pKeyObs != nullptr, "pKeyObs != 0");
        effectCells.push_back(pKeyObs);
      }
      MIX_ASSERT(nCells == effectCells.size(), "nCells == effectCells.size()");
      break;
    }
    default:
      pObsVecMap->Sort(effectCells);
      break;
  }

  const int nParams = static_cast<int>(effectCells.size());
  for (OBS* pCell : effectCells) {
    MIXRegrParameter param;
    const bool setupOK = param.SetupFromEffect(effect, effectIndex);
    if (setupOK && param.GetNFactors() > 0) {
      std::vector<const OBS*>& categories = param.GetCategories();
      const std::vector<int>& factors = param.GetFactors();
      int shift = 0;
      for (std::size_t i = 0; i < categories.size(); ++i) {
        categories[i] = pCell + shift;
        shift += FactorWords(factors[i]);
      }
      MIX_ASSERT(shift == nKeyObs, "shift == nKeyObs");
    } else {
      MIX_ASSERT(nParams == 1, "nParams == 1");
      MIX_ASSERT(nKeyObs == 1, "nKeyObs == 1");
    }

    fvAllRegrParams.push_back(param);
    const int global = static_cast<int>(fvAllRegrParams.size()) - 1;
    if (!setupOK) return false;
    for (int iSplit = 0; iSplit < fNSplits; ++iSplit) {
      const int localParamInd = static_cast<int>(pCell[nKeyObs + iSplit].fNum);
      fvGlobalToLocalMap[U(iSplit)].push_back(localParamInd);
      if (localParamInd >= 0) {
        MIX_ASSERT(U(localParamInd) < fvLocalToGlobalMap[U(iSplit)].size(),
                   "localParamInd < fvLocalToGlobalMap[iSplit].size()");
        fvLocalToGlobalMap[U(iSplit)][U(localParamInd)] = global;
      }
    }
  }
  return true;
}

std::string MIXParameterAggregator::GetCombSubjString() const {
  if (fRandomIndex < 0) return std::string();
  const MCGLMM_850::GLMMSettings* pSettings = fpSpecs->GetCompSettingsPtr();
  if (pSettings == nullptr || fRandomIndex >= pSettings->GetNRandomSpecs()) return std::string();
  std::vector<std::string> names;
  for (int compIndex : pSettings->GetRandomSpecs()[U(fRandomIndex)].GetSubjectVars()) {
    names.push_back(MIXLabelGrammar::VariableName(*fpDataSource, fpVarValidSpecs, compIndex));
  }
  return MIXLabelGrammar::JoinNames(names);
}

void MIXParameterAggregator::CreateEffectLabels() {
  MIX_ASSERT(fvAllEffectLabels.size() == fvAllEffLabSubj.size(), "fvAllEffectLabels.size() == fvAllEffLabSubj.size()");
  if (!fvAllEffectLabels.empty()) return;
  const std::string suffix = MIXLabelGrammar::EffectSubjectSuffix(GetCombSubjString());
  for (const MCMath_850::MCModelEffect& effect : EffectList()) {
    const std::string label = MIXLabelGrammar::EffectLabel(*fpDataSource, fpVarValidSpecs, effect);
    fvAllEffectLabels.push_back(label);
    fvAllEffLabSubj.push_back(label + suffix);
  }
}

void MIXParameterAggregator::CreateParamLabels() {
  MIX_ASSERT(fvAllParamLabels.size() == fvAllParLabSubj.size(), "fvAllParamLabels.size() == fvAllParLabSubj.size()");
  if (!fvAllParamLabels.empty()) return;
  const std::vector<MCMath_850::MCModelEffect>& effects = EffectList();
  fvParLabEff.assign(effects.size(), std::vector<std::string>());
  fvParLabSubjEff.assign(effects.size(), std::vector<std::string>());
  const std::string suffix = MIXLabelGrammar::ParamSubjectSuffix(GetCombSubjString());

  std::string interceptText;
  bool interceptTextKnown = false;
  for (const MIXRegrParameter& param : fvAllRegrParams) {
    const int effectIndex = param.GetEffectIndex();
    std::string label;
    if (param.IsIntercept()) {
      if (!interceptTextKnown) {
        interceptText = MIXLabelGrammar::InterceptText();
        interceptTextKnown = true;
      }
      label = interceptText;
    } else {
      MIX_ASSERT(effectIndex >= 0, "effectIndex >= 0");
      MIX_ASSERT(U(effectIndex) < effects.size(), "effectIndex < nEffects");
      const std::vector<int>& factors = param.GetFactors();
      const std::vector<const OBS*>& categories = param.GetCategories();
      std::vector<std::string> factorTexts;
      for (std::size_t i = 0; i < factors.size(); ++i) {
        factorTexts.push_back(MIXLabelGrammar::FactorValueText(
            MIXLabelGrammar::VariableName(*fpDataSource, fpVarValidSpecs, factors[i]),
            MIXLabelGrammar::ValueText(*fpDataSource, fpVarValidSpecs, factors[i], categories[i])));
      }
      label = MIXLabelGrammar::Compose(
          factorTexts, param.GetFactorNestLevels(),
          MIXLabelGrammar::CovariateNames(*fpDataSource, fpVarValidSpecs, param.GetCovariates(),
                                          param.GetCovariateMultiplicities()),
          effects[U(effectIndex)].GetFactorsInParens());
    }
    fvAllParamLabels.push_back(label);
    fvAllParLabSubj.push_back(label + suffix);
    if (effectIndex >= 0 && U(effectIndex) < effects.size()) {
      fvParLabEff[U(effectIndex)].push_back(label);
      fvParLabSubjEff[U(effectIndex)].push_back(label + suffix);
    }
  }
}

const std::vector<std::string>& MIXParameterAggregator::GetAllParamLabels(bool withSubject) const {
  return withSubject ? fvAllParLabSubj : fvAllParamLabels;
}

const std::vector<std::string>& MIXParameterAggregator::GetAllEffectLabels(bool withSubject) const {
  return withSubject ? fvAllEffLabSubj : fvAllEffectLabels;
}

const std::vector<std::vector<std::string>>& MIXParameterAggregator::GetAllParamLabelsEff(bool withSubject) const {
  return withSubject ? fvParLabSubjEff : fvParLabEff;
}

int MIXParameterAggregator::GetGlobalParamIndex(int split, int local) const {
  if (split < 0 || U(split) >= fvLocalToGlobalMap.size()) return -1;
  const std::vector<int>& map = fvLocalToGlobalMap[U(split)];
  if (local < 0 || U(local) >= map.size()) return -1;
  return map[U(local)];
}

int MIXParameterAggregator::GetLocalParamIndex(int split, int global) const {
  if (split < 0 || U(split) >= fvGlobalToLocalMap.size()) return -1;
  const std::vector<int>& map = fvGlobalToLocalMap[U(split)];
  if (global < 0 || U(global) >= map.size()) return -1;
  return map[U(global)];
}

void MIXParameterAggregator::SetParamBagpipeCats(BpGroup* group, int effectIndex, bool withSubject) const {
  if (!fbGroupCats) return;
  MIX_ASSERT(group != nullptr, "group != 0");
  const std::vector<std::string>* pLabels = nullptr;
  if (effectIndex < 0) {
    const std::size_t nParams = fvAllParamLabels.size();
    MIX_ASSERT(fvAllRegrParams.size() == nParams, "fvAllRegrParams.size() == nParams");
    MIX_ASSERT(fvAllParLabSubj.size() == nParams, "fvAllParLabSubj.size() == nParams");
    pLabels = withSubject ? &fvAllParLabSubj : &fvAllParamLabels;
  } else {
    // Before aggregation there are no labels to declare.
    if (U(effectIndex) >= fvParLabEff.size()) return;
    const std::vector<std::string>& vParLabEff = fvParLabEff[U(effectIndex)];
    const std::vector<std::string>& vParLabSubjEff = fvParLabSubjEff[U(effectIndex)];
    const std::size_t nParams = vParLabEff.size();
    MIX_ASSERT(vParLabSubjEff.size() == nParams, "vParLabSubjEff.size() == nParams");
    pLabels = withSubject ? &vParLabSubjEff : &vParLabEff;
  }
  for (const std::string& label : *pLabels) {
    BpCellText* pCell = LongStrToComposite(label);
    group->Category(*pCell);
    delete pCell;
  }
}

BpCellText* MIXParameterAggregator::LongStrToComposite(const std::string& text) {
  if (text.size() <= kLabelPieceBytes) return new BpString(text, false);
  BpComposite* pComposite = new BpComposite("[:^1:]1", true);
  pComposite->Sublist();
  for (std::size_t start = 0; start < text.size(); start += kLabelPieceBytes) {
    pComposite->Add(BpString(text.substr(start, kLabelPieceBytes), false));
  }
  pComposite->EndSublist();
  pComposite->Finish();
  return pComposite;
}

void MIXParameterAggregator::Display() const {}
