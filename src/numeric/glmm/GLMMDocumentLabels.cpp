#include "numeric/glmm/GLMMDocumentLabels.h"

#include <algorithm>
#include <cctype>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/math/MCRegrParameter.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

std::string GLMMDocumentLabels::VarName(const MCXML_850::MCVarList& varList, int var) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  return pVar != nullptr ? pVar->GetFieldName() : "#" + std::to_string(var);
}

bool GLMMDocumentLabels::IsOwnField(const MCXML_850::MCVarList& varList, int var) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  if (pVar == nullptr) return false;
  if (!MCXML_850::IMCVariable::IsRecodedName(pVar->GetName())) return true;
  for (int other = 0; other < varList.Size(); ++other) {
    if (other != var && varList.GetVarAt(other)->GetName() == pVar->GetFieldName()) return false;
  }
  return true;
}

std::string GLMMDocumentLabels::CategoryValue(const MCXML_850::MCVarList& varList, int var, int code) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  if (pVar == nullptr || code < 0 || code >= pVar->GetNCategories()) return std::string();
  const double value = pVar->GetCategoryValues()[U(code)];
  if (pVar->GetStringWidth() == 0 && !MCCommon_850::MCMV::IsMissing(value)) return GLMMXMLWriter::NumberText(value);
  return pVar->GetCategoryTexts()[U(code)];
}

std::string GLMMDocumentLabels::CategoryText(const MCXML_850::MCVarList& varList, int var, int code) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  if (pVar == nullptr || code < 0 || code >= pVar->GetNCategories()) return std::string();
  const std::string& text = pVar->GetCategoryTexts()[U(code)];
  return text.empty() ? CategoryValue(varList, var, code) : text;
}

std::vector<GLMMDocumentLabels::EffectField> GLMMDocumentLabels::EffectFields(
    const MCMath_850::MCModelEffect& effect) {
  std::vector<EffectField> fields;
  if (effect.IsIntercept()) return fields;
  const std::vector<int> factors = effect.GetFactors();
  const std::vector<int>& levels = effect.GetFactorLevels();
  const std::vector<int> covariates = effect.GetCovariates();
  const std::vector<int>& mult = effect.GetCovMultiplicities();
  std::vector<int> written = effect.GetVarsIndicesForTheEffectInSetting();
  if (written.empty()) {
    written = factors;
    for (std::size_t i = 0; i < covariates.size(); ++i) {
      const int m = i < mult.size() ? std::max(mult[i], 1) : 1;
      written.insert(written.end(), U(m), covariates[i]);
    }
  }
  auto levelOf = [&](int var) {
    const auto it = std::find(factors.begin(), factors.end(), var);
    if (it == factors.end()) return -1;
    const std::size_t i = static_cast<std::size_t>(it - factors.begin());
    return i < levels.size() ? levels[i] : 0;
  };
  int maxLevel = 0;
  for (int var : written) maxLevel = std::max(maxLevel, levelOf(var));
  if (maxLevel == 0 && !effect.GetFactorsInParens()) {
    for (int var : written) fields.push_back({var, 0});
    return fields;
  }
  std::vector<int> covariateVars;
  std::vector<std::vector<int>> byLevel(U(maxLevel + 1));
  for (int var : written) {
    const int level = levelOf(var);
    if (level < 0) {
      covariateVars.push_back(var);
    } else {
      byLevel[U(level)].push_back(var);
    }
  }
  int depth = 0;
  const bool covariatesFirst = effect.GetFactorsInParens();
  if (covariatesFirst && !covariateVars.empty()) {
    for (int var : covariateVars) fields.push_back({var, 0});
    depth = 1;
  }
  bool first = true;
  for (int level = maxLevel; level >= 0; --level) {
    if (byLevel[U(level)].empty()) continue;
    if (!first) ++depth;
    first = false;
    for (int var : byLevel[U(level)]) fields.push_back({var, depth});
  }
  if (!covariatesFirst) {
    for (int var : covariateVars) fields.push_back({var, depth});
  }
  return fields;
}

std::string GLMMDocumentLabels::ParameterLabel(const MCMath_850::MCRegrParameter& param,
                                               const MCXML_850::MCVarList& varList) {
  if (param.IsIntercept()) return "Intercept";
  std::string text;
  const std::vector<int>& covariates = param.GetCovariates();
  const std::vector<int>& mult = param.GetCovMultiplicities();
  for (std::size_t i = 0; i < covariates.size(); ++i) {
    const int m = i < mult.size() ? std::max(mult[i], 1) : 1;
    for (int k = 0; k < m; ++k) {
      if (!text.empty()) text += "*";
      text += VarName(varList, covariates[i]);
    }
  }
  const std::vector<int>& factors = param.GetFactors();
  const std::vector<int>& levels = param.GetFactorNestLevels();
  const std::vector<int>& categories = param.GetCategories();
  std::string factorText;
  int open = 0;
  int level = factors.empty() || levels.empty() ? 0 : levels[0];
  for (std::size_t i = 0; i < factors.size(); ++i) {
    const int l = i < levels.size() ? levels[i] : 0;
    if (i > 0 && l > level) {
      factorText += "(";
      ++open;
      level = l;
    } else if (i > 0) {
      factorText += "*";
    }
    const int code = i < categories.size() ? categories[i] : -1;
    factorText += "[" + VarName(varList, factors[i]) + "=" + CategoryText(varList, factors[i], code) + "]";
  }
  factorText += std::string(U(open), ')');
  if (factorText.empty()) return text;
  return text.empty() ? factorText : text + "*" + factorText;
}

std::string GLMMDocumentLabels::CovarianceToken(GLMMConst_850::CovarType type) {
  switch (type) {
    case GLMMConst_850::VC:
      return "VC";
    case GLMMConst_850::AR1:
      return "AR1";
    case GLMMConst_850::ARMA11:
      return "ARMA11";
    case GLMMConst_850::CS:
      return "CS";
    case GLMMConst_850::DIAG:
      return "DIAG";
    case GLMMConst_850::ID:
      return "ID";
    case GLMMConst_850::TP:
      return "TP";
    case GLMMConst_850::UN:
      return "UNSTRUCTURED";
    case GLMMConst_850::SP_POW:
      return "SPPOW";
    case GLMMConst_850::SP_EXP:
      return "SPEXP";
    case GLMMConst_850::SP_GAU:
      return "SPGAU";
    case GLMMConst_850::SP_LIN:
      return "SPLIN";
    case GLMMConst_850::SP_LINL:
      return "SPLINLOG";
    case GLMMConst_850::SP_SPH:
      return "SPSPH";
    default:
      return GLMMConst_850::GetName(type);
  }
}

std::string GLMMDocumentLabels::DistributionToken(const GLMMTargetSpec& spec) {
  if (spec.GetDistribution() == GLMMConst_850::DIST_MULTINOMIAL) return spec.GetOrdered() ? "ORDINAL" : "NOMINAL";
  return GLMMConst_850::GetName(spec.GetDistribution());
}

std::string GLMMDocumentLabels::LinkToken(const GLMMTargetSpec& spec) { return GLMMConst_850::GetName(spec.GetLink()); }

std::string GLMMDocumentLabels::ModelDistributionToken(const GLMMTargetSpec& spec) {
  std::string token = DistributionToken(spec);
  std::transform(token.begin(), token.end(), token.begin(), [](unsigned char c) { return std::tolower(c); });
  return token;
}

std::string GLMMDocumentLabels::ModelLinkToken(const GLMMTargetSpec& spec) {
  if (spec.GetLink() == GLMMConst_850::LINK_NLOGLOG) return "loglog";
  std::string token = LinkToken(spec);
  std::transform(token.begin(), token.end(), token.begin(), [](unsigned char c) { return std::tolower(c); });
  return token;
}

}  // namespace MCGLMM_850
