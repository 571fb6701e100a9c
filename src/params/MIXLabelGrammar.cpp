#include "params/MIXLabelGrammar.h"

#include <algorithm>
#include <cstddef>

#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ZORV_DataSource.h"
#include "host/files/PathFactory.h"
#include "host/data/ZORV_Variable.h"
#include "host/strings/FacSTDictionary.h"
#include "numeric/math/MCModelEffect.h"

std::string MIXLabelGrammar::InterceptText() {
  FacSTDictionary dictionary(PathFactory::getPathInstance()->GetStringTablePath());
  dictionary.SetProcedure("Mixed");
  unsigned long missing = 0;
  return dictionary.LookUp("(Intercept)", missing);
}

std::string MIXLabelGrammar::ThresholdText() {
  FacSTDictionary dictionary(PathFactory::getPathInstance()->GetStringTablePath());
  dictionary.SetProcedure("Mixed");
  unsigned long missing = 0;
  return dictionary.LookUp("Threshold", missing);
}

const ZORV_Variable* MIXLabelGrammar::Variable(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                               int compIndex) {
  if (pVarSpecs == nullptr) return nullptr;
  const int hostIndex = pVarSpecs->GetZORVVarIndex(compIndex);
  if (hostIndex < 0 || hostIndex >= dataSource.ColumnCount()) return nullptr;
  return dataSource.GetVariable(hostIndex);
}

std::string MIXLabelGrammar::VariableName(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                          int compIndex) {
  const ZORV_Variable* variable = Variable(dataSource, pVarSpecs, compIndex);
  return variable != nullptr ? std::string(variable->GetName()) : std::string();
}

std::string MIXLabelGrammar::ValueText(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                       int compIndex, const OBS* value) {
  const ZORV_Variable* variable = Variable(dataSource, pVarSpecs, compIndex);
  if (value == nullptr || variable == nullptr) return std::string();
  return pVarSpecs->ConvertObsToString(value, variable->GetFormat(), false);
}

std::vector<std::string> MIXLabelGrammar::CovariateNames(const ZORV_DataSource& dataSource,
                                                         const ACAVarValidSpecs* pVarSpecs,
                                                         const std::vector<int>& covariates,
                                                         const std::vector<int>& multiplicities) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < covariates.size(); ++i) {
    const int times = i < multiplicities.size() ? multiplicities[i] : 1;
    const std::string name = VariableName(dataSource, pVarSpecs, covariates[i]);
    for (int k = 0; k < times; ++k) names.push_back(name);
  }
  return names;
}

std::string MIXLabelGrammar::EffectLabel(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                         const MCMath_850::MCModelEffect& effect) {
  if (effect.IsIntercept()) return InterceptText();
  const std::vector<int> factors = effect.GetFactors();
  std::vector<std::string> factorNames;
  factorNames.reserve(factors.size());
  for (int factor : factors) factorNames.push_back(VariableName(dataSource, pVarSpecs, factor));
  return Compose(factorNames, effect.GetFactorLevels(),
                 CovariateNames(dataSource, pVarSpecs, effect.GetCovariates(), effect.GetCovMultiplicities()),
                 effect.GetFactorsInParens());
}

std::string MIXLabelGrammar::JoinNames(const std::vector<std::string>& texts) {
  std::string joined;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) joined += " * ";
    joined += texts[i];
  }
  return joined;
}

std::string MIXLabelGrammar::FactorValueText(const std::string& name, const std::string& value) {
  return "[" + name + "=" + value + "]";
}

std::string MIXLabelGrammar::Compose(const std::vector<std::string>& factorTexts, const std::vector<int>& levels,
                                     const std::vector<std::string>& covariateTexts, bool factorsInParens) {
  std::string factorLabel;
  const std::size_t nFactors = std::min(factorTexts.size(), levels.size());
  if (nFactors > 0) {
    const int highest = *std::max_element(levels.begin(), levels.begin() + static_cast<std::ptrdiff_t>(nFactors));
    int openBrackets = 0;
    bool first = true;
    for (int level = highest; level >= 0; --level) {
      std::vector<std::string> ofLevel;
      for (std::size_t i = 0; i < nFactors; ++i) {
        if (levels[i] == level) ofLevel.push_back(factorTexts[i]);
      }
      if (ofLevel.empty()) continue;
      if (!first) {
        factorLabel += "(";
        ++openBrackets;
      }
      factorLabel += JoinNames(ofLevel);
      first = false;
    }
    factorLabel.append(static_cast<std::size_t>(openBrackets), ')');
  }
  if (covariateTexts.empty()) return factorLabel;
  const std::string covariateLabel = JoinNames(covariateTexts);
  if (factorLabel.empty()) return covariateLabel;
  if (factorsInParens) return covariateLabel + "(" + factorLabel + ")";
  return factorLabel + " * " + covariateLabel;
}

std::string MIXLabelGrammar::ParamSubjectSuffix(const std::string& subjects) {
  return subjects.empty() ? std::string() : " | " + subjects;
}

std::string MIXLabelGrammar::EffectSubjectSuffix(const std::string& subjects) {
  return subjects.empty() ? std::string() : "[subject = " + subjects;
}
