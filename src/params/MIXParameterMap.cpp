#include "params/MIXParameterMap.h"

#include <cstddef>

#include "base/MIXAssert.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/math/MCRegrParameter.h"
#include "params/MIXLabelGrammar.h"
#include "specs/MIXValidSpecs.h"

MIXParameterMap::MIXParameterMap(const MIXValidSpecs* pSpecs, ProcedureDataSource& dataSource,
                                 const ACAInputAdapter* pInpAdapt)
    : fpDataSource(&dataSource),
      fpSpecs(pSpecs),
      fpVarValidSpecs(pSpecs != nullptr ? pSpecs->GetVarValidSpecsPtr() : nullptr),
      fpInpAdapt(pInpAdapt) {}

void MIXParameterMap::CreateParameterMap(const std::vector<MCMath_850::MCRegrParameter>& params,
                                         const std::vector<MCMath_850::MCModelEffect>& effects) {
  CreateParameterMap(params, effects, std::vector<int>());
}

void MIXParameterMap::CreateParameterMap(const std::vector<MCMath_850::MCRegrParameter>& params,
                                         const std::vector<MCMath_850::MCModelEffect>& effects,
                                         const std::vector<int>& subjectVars) {
  MIX_ASSERT(fParamList.size() == fParamListSubj.size(), "fParamList.size() == fParamListSubj.size()");
  if (!fParamList.empty()) return;

  const std::size_t nEffects = effects.size();
  fParamListEff.assign(nEffects, std::vector<std::string>());
  fParamListSubjEff.assign(nEffects, std::vector<std::string>());
  const std::string suffix = MIXLabelGrammar::ParamSubjectSuffix(GetCombSubjString(subjectVars));

  std::string interceptText;
  bool interceptTextKnown = false;
  for (const MCMath_850::MCRegrParameter& param : params) {
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
      MIX_ASSERT(static_cast<std::size_t>(effectIndex) < nEffects, "effectIndex < nEffects");
      label = ParamLabel(param, effects[static_cast<std::size_t>(effectIndex)]);
    }
    fParamList.push_back(label);
    fParamListSubj.push_back(label + suffix);
    if (effectIndex >= 0) {
      MIX_ASSERT(static_cast<std::size_t>(effectIndex) < nEffects, "effectIndex < nEffects");
      fParamListEff[static_cast<std::size_t>(effectIndex)].push_back(label);
      fParamListSubjEff[static_cast<std::size_t>(effectIndex)].push_back(label + suffix);
    }
  }
}

void MIXParameterMap::CreateEffectMap(const std::vector<MCMath_850::MCModelEffect>& effects) {
  CreateEffectMap(effects, std::vector<int>());
}

void MIXParameterMap::CreateEffectMap(const std::vector<MCMath_850::MCModelEffect>& effects,
                                      const std::vector<int>& subjectVars) {
  MIX_ASSERT(fEffectList.size() == fEffectListSubj.size(), "fEffectList.size() == fEffectListSubj.size()");
  if (!fEffectList.empty()) return;
  const std::string suffix = MIXLabelGrammar::EffectSubjectSuffix(GetCombSubjString(subjectVars));
  for (const MCMath_850::MCModelEffect& effect : effects) {
    const std::string label = EffectLabel(effect);
    fEffectList.push_back(label);
    fEffectListSubj.push_back(label + suffix);
  }
}

const std::vector<std::string>& MIXParameterMap::GetParameterMap(bool withSubject) const {
  return withSubject ? fParamListSubj : fParamList;
}

const std::vector<std::vector<std::string>>& MIXParameterMap::GetParamMapsEff(bool withSubject) const {
  return withSubject ? fParamListSubjEff : fParamListEff;
}

const std::vector<std::string>& MIXParameterMap::GetEffectMap(bool withSubject) const {
  return withSubject ? fEffectListSubj : fEffectList;
}

std::string MIXParameterMap::GetCombSubjString(const std::vector<int>& subjectVars) const {
  std::vector<std::string> names;
  names.reserve(subjectVars.size());
  for (int compIndex : subjectVars) names.push_back(VarName(compIndex));
  return MIXLabelGrammar::JoinNames(names);
}

std::string MIXParameterMap::VarName(int compIndex) const {
  return MIXLabelGrammar::VariableName(*fpDataSource, fpVarValidSpecs, compIndex);
}

std::string MIXParameterMap::EffectLabel(const MCMath_850::MCModelEffect& effect) const {
  return MIXLabelGrammar::EffectLabel(*fpDataSource, fpVarValidSpecs, effect);
}

std::string MIXParameterMap::ParamLabel(const MCMath_850::MCRegrParameter& param,
                                        const MCMath_850::MCModelEffect& effect) const {
  const std::vector<int>& factors = param.GetFactors();
  const std::vector<int>& categories = param.GetCategories();
  std::vector<std::string> factorTexts;
  factorTexts.reserve(factors.size());
  for (std::size_t i = 0; i < factors.size(); ++i) {
    const OBS* value = nullptr;
    if (fpInpAdapt != nullptr && i < categories.size()) {
      int type = 0;
      value = fpInpAdapt->DecodeCatValue(factors[i], categories[i], type);
    }
    factorTexts.push_back(MIXLabelGrammar::FactorValueText(
        VarName(factors[i]), MIXLabelGrammar::ValueText(*fpDataSource, fpVarValidSpecs, factors[i], value)));
  }
  return MIXLabelGrammar::Compose(
      factorTexts, param.GetFactorNestLevels(),
      MIXLabelGrammar::CovariateNames(*fpDataSource, fpVarValidSpecs, param.GetCovariates(),
                                      param.GetCovMultiplicities()),
      effect.GetFactorsInParens());
}
