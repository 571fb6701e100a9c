// The display strings and labels of GNLMOutputStats: names of
// distributions, links and covariance structures, labels of model terms and
// covariance parameters, and long texts for table cells.
#include <cstdlib>

#include "host/output/BpComposite.h"
#include "host/output/BpString.h"
#include "host/text/NumericText.h"
#include "results/GNLMOutputStats.h"

namespace {

const char kUnknown[] = "Unknown";

std::size_t U(int i) { return static_cast<std::size_t>(i); }

const char* DistText(GNLMOutputStats::EnumDistTypes dist) {
  switch (dist) {
    case GNLMOutputStats::BINOMIAL:
      return "Binomial";
    case GNLMOutputStats::GAMMA:
      return "Gamma";
    case GNLMOutputStats::IGAUSS:
      return "Inverse Gaussian";
    case GNLMOutputStats::NOMINAL:
    case GNLMOutputStats::ORDINAL:
      return "Multinomial";
    case GNLMOutputStats::NEGBIN:
      return "Negative binomial";
    case GNLMOutputStats::NORMAL:
      return "Normal";
    case GNLMOutputStats::POISSON:
      return "Poisson";
    default:
      return kUnknown;
  }
}

// A nominal target knows only the generalized logit; an ordinal one the
// cumulative links.
const char* LinkText(GNLMOutputStats::EnumLinkTypes link, GNLMOutputStats::EnumDistTypes dist) {
  if (dist == GNLMOutputStats::NOMINAL) return link == GNLMOutputStats::LOGIT ? "Generalized logit" : kUnknown;
  if (dist == GNLMOutputStats::ORDINAL) {
    switch (link) {
      case GNLMOutputStats::CLOGLOG:
        return "Cumulative complementary log-log";
      case GNLMOutputStats::LOGIT:
        return "Cumulative logit";
      case GNLMOutputStats::NLOGLOG:
        return "Cumulative negative log-log";
      case GNLMOutputStats::PROBIT:
        return "Cumulative probit";
      case GNLMOutputStats::CAUCHIT:
        return "Cumulative Cauchit";
      default:
        return kUnknown;
    }
  }
  switch (link) {
    case GNLMOutputStats::CLOGLOG:
      return "Complementary log-log";
    case GNLMOutputStats::IDENTITY:
      return "Identity";
    case GNLMOutputStats::LOG:
      return "Log";
    case GNLMOutputStats::LOGC:
      return "Log complement";
    case GNLMOutputStats::LOGIT:
      return "Logit";
    case GNLMOutputStats::NLOGLOG:
      return "Negative log-log";
    case GNLMOutputStats::POWER:
      return "Power";
    case GNLMOutputStats::PROBIT:
      return "Probit";
    default:
      return kUnknown;
  }
}

const char* CovarianceText(GNLMOutputStats::EnumCovarianceType type) {
  switch (type) {
    case GNLMOutputStats::VC:
      return "Variance components";
    case GNLMOutputStats::AR1:
      return "First-order autoregressive";
    case GNLMOutputStats::ARMA11:
      return "Autoregressive moving average (1,1)";
    case GNLMOutputStats::CS:
      return "Compound symmetry";
    case GNLMOutputStats::DIAG:
      return "Diagonal";
    case GNLMOutputStats::ID:
      return "Scaled Identity";
    case GNLMOutputStats::TP:
      return "Toeplitz";
    case GNLMOutputStats::UNSTRUCTURED:
      return "Unstructured";
    case GNLMOutputStats::SPPOW:
      return "Spatial Power";
    case GNLMOutputStats::SPEXP:
      return "Spatial Exponential";
    case GNLMOutputStats::SPGAU:
      return "Spatial Gaussian";
    case GNLMOutputStats::SPLIN:
      return "Spatial Linear";
    case GNLMOutputStats::SPLINLOG:
      return "Spatial Linear-Log";
    case GNLMOutputStats::SPSPH:
      return "Spatial Spherical";
    case GNLMOutputStats::ARH1:
      return "Heterogeneous First-order autoregressive";
    case GNLMOutputStats::AD1:
      return "First-order ante-dependence";
    case GNLMOutputStats::CSH:
      return "Heterogeneous Compound symmetry";
    case GNLMOutputStats::CSR:
      return "Compound symmetry: correlation metric";
    case GNLMOutputStats::FA1:
      return "First-order factor analytic";
    case GNLMOutputStats::FAH1:
      return "Heterogeneous First-order factor analytic";
    case GNLMOutputStats::HF:
      return "Huynh-Feldt";
    case GNLMOutputStats::TPH:
      return "Heterogeneous Toeplitz";
    case GNLMOutputStats::UNR:
      return "Unstructured: correlation metric";
    default:
      return kUnknown;
  }
}

}  // namespace

std::string GNLMOutputStats::DistToDisplayString(EnumDistTypes dist, bool translate) const {
  const char* text = DistText(dist);
  return translate ? GetTranslatedText(text) : text;
}

std::string GNLMOutputStats::LinkToDisplayString(EnumLinkTypes link, EnumDistTypes dist, bool translate) const {
  const char* text = LinkText(link, dist);
  return translate ? GetTranslatedText(text) : text;
}

std::string GNLMOutputStats::LinkWithParamKey(EnumLinkTypes link, EnumDistTypes dist) {
  if (link == POWER && dist != NOMINAL && dist != ORDINAL) return "Power(^1)";
  return std::string();
}

std::string GNLMOutputStats::CovarianceToDisplayString(EnumCovarianceType type, bool translate) const {
  const char* text = CovarianceText(type);
  return translate ? GetTranslatedText(text) : text;
}

std::string GNLMOutputStats::JoinEffectFields(const ModelEffectData& effect, const std::vector<std::string>& texts) {
  if (texts.empty()) return std::string();
  std::string label = texts.front();
  int level = 0;
  int open = 0;
  for (std::size_t i = 1; i < texts.size(); ++i) {
    const int fieldLevel = i < effect.fvNestingLevels.size() ? effect.fvNestingLevels[i] : 0;
    if (fieldLevel > level) {
      label += "(";
      ++open;
      level = fieldLevel;
    } else {
      label += " * ";
    }
    label += texts[i];
  }
  return label + std::string(U(open), ')');
}

bool GNLMOutputStats::formatEffectLabel(const RegrParamData& param, std::string& out) const {
  if (param.fIsIntercept) {
    out = GetTranslatedText("Intercept");
    return true;
  }
  out.clear();
  for (std::size_t c = 0; c < param.fvCovariates.size(); ++c) {
    const CovariateData& covariate = param.fvCovariates[c];
    if (c > 0) out += "*";
    out += covariate.fField;
    for (int k = 1; k < covariate.fPower; ++k) out += "*" + covariate.fField;
  }
  if (out.empty() && param.fvFactors.size() == 1) {
    const FactorData& factor = param.fvFactors.front();
    const std::string& value = factor.fValue.GetStringValue();
    out = value.empty() ? factor.fField : factor.fField + "=" + value;
    return true;
  }
  if (param.fvFactors.empty()) return true;
  std::string factors;
  int open = 0;
  for (std::size_t f = 0; f < param.fvFactors.size(); ++f) {
    const FactorData& factor = param.fvFactors[f];
    if (factor.fNest) {
      factors += "(";
      ++open;
    } else if (f > 0) {
      factors += "*";
    }
    factors += "[" + factor.fField + "=" + factor.fValue.GetStringValue() + "]";
  }
  factors += std::string(U(open), ')');
  if (!out.empty() && !param.fvFactors.front().fNest) out += "*";
  out += factors;
  return true;
}

bool GNLMOutputStats::formatEffectLabel(const PrintableListData& list, std::string& out) const {
  if (list.fMapId == -1) {
    out = list.fPattern;
    return true;
  }
  RegrParamData param;
  if (FindValueFromStringMap(list.fMapId, list.fPattern, param) != 0) return false;
  return formatEffectLabel(param, out);
}

bool GNLMOutputStats::formatRandomEffectLabel(const RandomSpecsData& spec, unsigned long index,
                                              std::string& out) const {
  unsigned long effect = index;
  if (spec.fIntercept) {
    if (index == 0) {
      out = GetTranslatedText("Intercept");
      return true;
    }
    effect = index - 1;
  }
  out = effect < spec.fvEffectList.size()
            ? JoinEffectFields(spec.fvEffectList[effect], spec.fvEffectList[effect].fvFieldNames)
            : std::string();
  return true;
}

bool GNLMOutputStats::formatRandomEffectLabel(const PrintableListData& list, unsigned long block, std::string& key,
                                              std::vector<std::string>& args, std::string& text) const {
  if (list.fMapId != -1) return true;
  key = list.fPattern;
  bool result = true;
  if (key != "VarOfEffect") {
    for (const PrintableListData& sub : list.fvSubLists) {
      std::string arg;
      formatEffectLabel(sub, arg);
      args.push_back(arg);
    }
  } else if (list.fvSubLists.size() == 1) {
    const std::string& pattern = list.fvSubLists.front().fPattern;
    bool isNumber = false;
    const int n = pattern.empty() ? -1 : String2Integer(pattern, &isNumber);
    // The effect is labelled from the build settings' random blocks; a
    // block the settings do not have cannot be labelled.
    const BuildSettingsData* pSettings = fpBuildSettings;
    result = isNumber && n >= 0;
    if (result && pSettings != nullptr && block < pSettings->fvRandomSpecs.size()) {
      std::string label;
      formatRandomEffectLabel(pSettings->fvRandomSpecs[block], static_cast<unsigned long>(n), label);
      args.push_back(label);
    } else {
      result = false;
    }
  }
  if (args.size() < 3) {
    text = GetTranslatedText(key.c_str(), args.size() > 0 ? args[0].c_str() : nullptr,
                             args.size() > 1 ? args[1].c_str() : nullptr);
  }
  return result;
}

int GNLMOutputStats::FindValueFromStringMap(int mapId, const std::string& key, RegrParamData& out) const {
  if (fpStringMapCollect == nullptr || fpStringMapCollect->empty()) return 1;
  for (const StringMapData& map : *fpStringMapCollect) {
    if (map.fMapId != mapId) continue;
    for (const MapEntryData& entry : map.fvEntries) {
      if (entry.fName != key) continue;
      out.fvCovariates = entry.fRegrParam.fvCovariates;
      out.fvFactors = entry.fRegrParam.fvFactors;
      out.fIsIntercept = entry.fRegrParam.fIsIntercept;
      out.fName = entry.fRegrParam.fName;
      return 0;
    }
    return 3;
  }
  return 2;
}

BpCellText* GNLMOutputStats::LongStrToComposite(const std::string& text) {
  const std::size_t piece = 255;
  if (text.size() <= piece) return new BpString(text, false);
  BpComposite* pComposite = new BpComposite("[:^1:]1", true);
  pComposite->Sublist();
  for (std::size_t at = 0; at < text.size(); at += piece) pComposite->Add(BpString(text.substr(at, piece), false));
  pComposite->EndSublist();
  pComposite->Finish();
  return pComposite;
}
