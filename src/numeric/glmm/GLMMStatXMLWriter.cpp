#include "numeric/glmm/GLMMStatXMLWriter.h"

#include <ios>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMDocumentLabels.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMStatXMLParts.h"
#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using MCMath_850::MCConst::MCContrastType;
using MCMath_850::MCConst::MCPAdjustMethod;
using Labels = GLMMDocumentLabels;
using Parts = GLMMStatXMLParts;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

void Parameter(GLMMXMLWriter& xml, const std::string& name, const std::string& value) {
  xml.NameValue("Parameter", name, value);
}

void ListAttribute(GLMMXMLWriter& xml, const std::string& name, const std::vector<std::string>& values) {
  xml.OpenNamed("Attribute", name);
  xml.Open("ListValue");
  for (const std::string& value : values) {
    xml.Open("Value");
    xml.Attribute("value", value);
    xml.Close();
  }
  xml.Close();
  xml.Close();
}

void ValueAttribute(GLMMXMLWriter& xml, const std::string& name, const std::string& value) {
  xml.NameValue("Attribute", name, value);
}

// A model term or a list of subject fields.
void EffectStruct(GLMMXMLWriter& xml, const MCXML_850::MCVarList& varList,
                  const std::vector<GLMMDocumentLabels::EffectField>& fields) {
  std::vector<std::string> names;
  std::vector<std::string> levels;
  for (const GLMMDocumentLabels::EffectField& field : fields) {
    names.push_back(Labels::VarName(varList, field.fVar));
    levels.push_back(std::to_string(field.fNestingLevel));
  }
  xml.Open("StructuredValue");
  ListAttribute(xml, "Fields", names);
  ListAttribute(xml, "NestingLevels", levels);
  xml.Close();
}

std::vector<GLMMDocumentLabels::EffectField> PlainFields(const std::vector<int>& vars) {
  std::vector<GLMMDocumentLabels::EffectField> fields;
  for (int var : vars) fields.push_back({var, 0});
  return fields;
}

void RegressionParameter(GLMMXMLWriter& xml, const MCMath_850::MCRegrParameter& param, const std::string& name,
                         const MCXML_850::MCVarList& varList) {
  xml.Open("RegressionParameter");
  xml.Attribute("isIntercept", param.IsIntercept());
  xml.Attribute("name", name);
  for (int c = 0; c < param.GetNCovariates(); ++c) {
    xml.Open("Covariate");
    xml.Attribute("field", Labels::VarName(varList, param.GetCovariates()[U(c)]));
    xml.Attribute("power", param.GetCovMultiplicities()[U(c)]);
    xml.Close();
  }
  const std::vector<int>& levels = param.GetFactorNestLevels();
  for (int f = 0; f < param.GetNFactors(); ++f) {
    const bool nested = f > 0 && U(f) < levels.size() && levels[U(f)] > levels[U(f - 1)];
    xml.Open("Factor");
    xml.Attribute("field", Labels::VarName(varList, param.GetFactors()[U(f)]));
    xml.Attribute("value", Labels::CategoryValue(varList, param.GetFactors()[U(f)], param.GetCategories()[U(f)]));
    xml.Attribute("nest", nested);
    xml.Close();
  }
  xml.Close();
}

// An entry of a label map: the key and the parameter it stands for.
void MapEntry(GLMMXMLWriter& xml, const std::string& key, const MCMath_850::MCRegrParameter& param,
              const MCXML_850::MCVarList& varList) {
  xml.OpenNamed("MapEntry", key);
  xml.Open("Label");
  RegressionParameter(xml, param, key, varList);
  xml.Close();
  xml.Close();
}

// The attributes of one parameter, all of them, in the reader's order.
struct ParamNumbers {
  double fEstimate = MCCommon_850::MCMV::Missing();
  double fStdError = MCCommon_850::MCMV::Missing();
  double fDf = MCCommon_850::MCMV::Missing();
  double fLower = MCCommon_850::MCMV::Missing();
  double fUpper = MCCommon_850::MCMV::Missing();
  double fTTest = MCCommon_850::MCMV::Missing();
  double fZTest = MCCommon_850::MCMV::Missing();
  double fSig = MCCommon_850::MCMV::Missing();
  bool fbRedundant = false;
};

void ParamAttributes(GLMMXMLWriter& xml, const std::string& name, const std::string& label, const ParamNumbers& n) {
  const double missing = MCCommon_850::MCMV::Missing();
  xml.Attribute("paramName", name);
  xml.Attribute("paramLabel", label);
  xml.Attribute("estimate", n.fEstimate);
  xml.Attribute("stdError", n.fStdError);
  xml.Attribute("df", n.fDf);
  xml.Attribute("confIntervalLower", n.fLower);
  xml.Attribute("confIntervalUpper", n.fUpper);
  xml.Attribute("tTest", n.fTTest);
  xml.Attribute("zTest", n.fZTest);
  xml.Attribute("sig", n.fSig);
  xml.Attribute("chiSquare", missing);
  xml.Attribute("expEstimate", missing);
  xml.Attribute("expCILower", missing);
  xml.Attribute("expCIUpper", missing);
  xml.Attribute("isRedundant", n.fbRedundant);
}

ParamNumbers FixedNumbers(const MCMath_850::BetaParamStat& st) {
  ParamNumbers n;
  n.fEstimate = st.GetEstimate();
  n.fStdError = st.GetStdError();
  n.fDf = st.GetDF();
  n.fLower = st.GetLowerBound();
  n.fUpper = st.GetUpperBound();
  n.fTTest = st.GetTStat();
  n.fSig = st.GetSig();
  n.fbRedundant = st.GetRedundant();
  return n;
}

// The thresholds of an ordinal target, where a reader looks for them: the
// parameters of no effect, each with the target as its one factor at the
// highest category the threshold closes (P(Y <= that category)).
void Thresholds(GLMMXMLWriter& xml, const GLMMSettings& s, const MCXML_850::MCVarList& varList,
                const GLMMOutputStats& stats) {
  const std::vector<MCMath_850::BetaParamStat>& thresholds = stats.GetThresholdStats();
  const std::vector<double>& categories = stats.GetTargetCategories();
  const std::string target = Labels::VarName(varList, s.GetDependent());
  for (std::size_t j = 0; j < thresholds.size() && j < categories.size(); ++j) {
    const std::string key = "T" + std::to_string(j);
    const std::string value = GLMMXMLWriter::NumberText(categories[j]);
    xml.Open("ParameterStats");
    ParamAttributes(xml, key, "Threshold [" + target + "=" + value + "]", FixedNumbers(thresholds[j]));
    xml.Open("RegressionParameter");
    xml.Attribute("isIntercept", false);
    xml.Attribute("name", key);
    xml.Open("Factor");
    xml.Attribute("field", target);
    xml.Attribute("value", value);
    xml.Attribute("nest", false);
    xml.Close();
    xml.Close();
    xml.Close();
  }
}

const char* ContrastToken(MCContrastType type) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCContrastType, const char*> kTokens[] = {
      {CONTRAST_PAIRWISE, "Pairwise"},     {CONTRAST_DEVIATION, "Deviation"}, {CONTRAST_SIMPLE, "Simple"},
      {CONTRAST_NONE, "None"},             {CONTRAST_DIFFERENCE, "Difference"}, {CONTRAST_HELMERT, "Helmert"},
      {CONTRAST_REPEATED, "Repeated"},     {CONTRAST_POLYNOMIAL, "Polynomial"}};
  return GLMMXMLWriter::Token(type, kTokens, "None");
}

const char* PAdjustToken(MCPAdjustMethod method) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCPAdjustMethod, const char*> kTokens[] = {
      {PADJUST_LSD, "LSD"},           {PADJUST_SEQ_BONFERRONI, "SEQBONFERRONI"}, {PADJUST_BONFERRONI, "BONFERRONI"},
      {PADJUST_SEQ_SIDAK, "SEQSIDAK"}, {PADJUST_SIDAK, "SIDAK"}};
  return GLMMXMLWriter::Token(method, kTokens, "LSD");
}

// The residual structure the fit used: without a repeated effect, subjects
// or spatial coordinates the residual is one variance, and without a
// repeated effect a variance per position is one variance too.
GLMMConst_850::CovarType ResidualType(const GLMMSettings& s) {
  const GLMMRandomSpec& repeated = s.GetRepeated();
  GLMMConst_850::CovarType type = repeated.GetCovarianceType();
  const bool hasEffect = repeated.GetNEffects() > 0;
  const bool spatial = GLMMConst_850::IsSpatial(type) && !s.GetSpatialVars().empty();
  if (!hasEffect && repeated.GetSubjectVars().empty() && !spatial) return GLMMConst_850::ID;
  if (!hasEffect && (type == GLMMConst_850::DIAG || type == GLMMConst_850::VC)) return GLMMConst_850::ID;
  return type;
}

bool HasIntercept(const GLMMRandomSpec& spec) {
  for (const MCMath_850::MCModelEffect& effect : spec.GetEffects()) {
    if (effect.IsIntercept()) return true;
  }
  return false;
}

// The number by which a covariance parameter's label names an effect of its
// block: the intercept is 0 when the block has one, the other effects follow
// in their order.
int EffectNumber(const GLMMRandomSpec& spec, int effectIndex) {
  if (effectIndex < 0 || effectIndex >= spec.GetNEffects()) return -1;
  if (spec.GetEffects()[U(effectIndex)].IsIntercept()) return 0;
  int number = HasIntercept(spec) ? 1 : 0;
  for (int e = 0; e < effectIndex; ++e) {
    if (!spec.GetEffects()[U(e)].IsIntercept()) ++number;
  }
  return number;
}

std::string EffectLabel(const GLMMRandomSpec& spec, int effectIndex, const MCXML_850::MCVarList& varList) {
  if (effectIndex < 0 || effectIndex >= spec.GetNEffects()) return std::string();
  const MCMath_850::MCModelEffect& effect = spec.GetEffects()[U(effectIndex)];
  if (effect.IsIntercept()) return "Intercept";
  std::string text;
  int level = 0;
  int open = 0;
  const std::vector<GLMMDocumentLabels::EffectField> fields = Labels::EffectFields(effect);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0 && fields[i].fNestingLevel > level) {
      text += "(";
      ++open;
      level = fields[i].fNestingLevel;
    } else if (i > 0) {
      text += " * ";
    }
    text += Labels::VarName(varList, fields[i].fVar);
  }
  return text + std::string(U(open), ')');
}

// A covariance parameter's label as a key of the string tables and its
// arguments: the numbers in the label's parentheses become arguments, as
// "UN(1,2)" gives the key "UN(^1,^2)" with 1 and 2; a label without
// numbers is its own key.
std::pair<std::string, std::vector<std::string>> CovarianceLabelKey(const std::string& label) {
  const std::size_t open = label.find('(');
  if (open == std::string::npos || label.empty() || label.back() != ')') return {label, {}};
  std::vector<std::string> args;
  std::string item;
  for (std::size_t i = open + 1; i + 1 < label.size(); ++i) {
    const char c = label[i];
    if (c == ',') {
      args.push_back(item);
      item.clear();
    } else if (c >= '0' && c <= '9') {
      item += c;
    } else {
      return {label, {}};
    }
  }
  args.push_back(item);
  std::string key = label.substr(0, open + 1);
  for (std::size_t k = 0; k < args.size(); ++k) {
    if (args[k].empty()) return {label, {}};
    key += (k > 0 ? ",^" : "^") + std::to_string(k + 1);
  }
  return {key + ")", args};
}

}  // namespace

GLMMStatXMLWriter::GLMMStatXMLWriter(const GLMMSettings& settings, const MCXML_850::MCVarList& varList,
                                     const GLMMOutputStats& stats)
    : fpSettings(&settings), fpVarList(&varList), fpStats(&stats) {}

MCStatus GLMMStatXMLWriter::Write(std::ostream& os) const {
  const MCStatus failed(MCCommon_850::MC_OUTPUT_FILE_ERROR, false);
  if (!os) return failed;
  try {
    GLMMXMLWriter xml(os);
    xml.Declaration();
    xml.Open("StatXML");
    xml.Attribute("version", "1.0");
    WriteBuildSettings(xml);
    xml.Open("PMMLModel");
    xml.Open("PredictiveSummary");
    xml.Attribute("algorithmName", "GLMM");
    xml.Close();
    WriteStringMaps(xml);
    WriteModelDiagnostics(xml);
    WriteTrainingSummary(xml);
    xml.Finish();
    os.flush();
  } catch (const std::ios_base::failure&) {
    return failed;
  }
  if (!os) return failed;
  return MCStatus();
}

// The target's distribution and link, and its trials when it counts events.
void GLMMStatXMLWriter::WriteTargetSettings(GLMMXMLWriter& xml) const {
  const GLMMTargetSpec& target = fpSettings->GetTargetSpec();
  const bool trials = target.GetTrialsType() != GLMMConst_850::TRIALS_NONE;
  Parameter(xml, "UseTrials", trials ? "true" : "false");
  if (target.GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE) {
    Parameter(xml, "TrialsField", Labels::VarName(*fpVarList, target.GetTrialsVariable()));
  }
  if (target.GetTrialsType() == GLMMConst_850::TRIALS_VALUE) {
    Parameter(xml, "TrialsValue", GLMMXMLWriter::NumberText(target.GetTrialsValue()));
  }
  Parameter(xml, "DistributionOfTarget", Labels::DistributionToken(target));
  Parameter(xml, "LinkFunctionType", Labels::LinkToken(target));
  if (target.GetLink() == GLMMConst_850::LINK_POWER) {
    Parameter(xml, "LinkFunctionParam", GLMMXMLWriter::NumberText(target.GetLinkPower()));
  }
}

void GLMMStatXMLWriter::WriteBuildSettings(GLMMXMLWriter& xml) const {
  const GLMMSettings& s = *fpSettings;
  const MCXML_850::MCVarList& varList = *fpVarList;
  xml.Open("BuildSettings");
  Parameter(xml, "TargetField", Labels::VarName(varList, s.GetDependent()));
  WriteTargetSettings(xml);
  Parameter(xml, "Intercept", s.GetInterceptUse() ? "true" : "false");
  Parameter(xml, "CIn", GLMMXMLWriter::NumberText(s.GetConfidenceLevel()));

  const GLMMRandomSpec& repeated = s.GetRepeated();
  Parameter(xml, "ResidualCovarianceType", Labels::CovarianceToken(ResidualType(s)));
  Parameter(xml, "ResidualCovarianceTBand", "0");
  xml.OpenNamed("Parameter", "ResidualSubjectSpec");
  EffectStruct(xml, varList, PlainFields(repeated.GetSubjectVars()));
  xml.Close();

  xml.OpenNamed("Parameter", "FixedEffectList");
  xml.Open("ListValue");
  for (const MCMath_850::MCModelEffect& effect : s.GetModelEffects()) {
    EffectStruct(xml, varList, Labels::EffectFields(effect));
  }
  xml.Close();
  xml.Close();

  // A list parameter is written only when it has members: a reader takes
  // an empty list for a broken one.
  if (!s.GetRandomSpecs().empty()) WriteRandomSpecs(xml);
  WriteMeansRequests(xml);
  const std::vector<MCMath_850::MCEmmeansSpec>& requests = s.GetEmmeans();
  Parameter(xml, "pAdjustment", requests.empty() ? "LSD" : PAdjustToken(requests.front().GetPAdjust()));
  xml.Close();
}

void GLMMStatXMLWriter::WriteRandomSpecs(GLMMXMLWriter& xml) const {
  const GLMMSettings& s = *fpSettings;
  const MCXML_850::MCVarList& varList = *fpVarList;
  xml.OpenNamed("Parameter", "RandomSpecs");
  xml.Open("ListValue");
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) {
    xml.Open("StructuredValue");
    xml.OpenNamed("Attribute", "EffectList");
    xml.Open("ListValue");
    for (const MCMath_850::MCModelEffect& effect : spec.GetEffects()) {
      if (!effect.IsIntercept()) EffectStruct(xml, varList, Labels::EffectFields(effect));
    }
    xml.Close();
    xml.Close();
    ValueAttribute(xml, "Intercept", HasIntercept(spec) ? "true" : "false");
    xml.OpenNamed("Attribute", "SubjectSpec");
    EffectStruct(xml, varList, PlainFields(spec.GetSubjectVars()));
    xml.Close();
    xml.OpenNamed("Attribute", "GroupSpec");
    xml.Open("ListValue");
    xml.Close();
    xml.Close();
    ValueAttribute(xml, "CovarianceType", Labels::CovarianceToken(spec.GetCovarianceType()));
    ValueAttribute(xml, "CovarianceTBand", "0");
    xml.Close();
  }
  xml.Close();
  xml.Close();
}

void GLMMStatXMLWriter::WriteMeansRequests(GLMMXMLWriter& xml) const {
  const MCXML_850::MCVarList& varList = *fpVarList;
  const std::vector<MCMath_850::MCEmmeansSpec>& requests = fpSettings->GetEmmeans();
  if (Parts::FactorRequestNumber(requests, static_cast<int>(requests.size())) == 0) return;
  xml.OpenNamed("Parameter", "EMMEANS");
  xml.Open("ListValue");
  for (const MCMath_850::MCEmmeansSpec& request : requests) {
    if (request.GetFactors().empty()) continue;
    std::vector<GLMMDocumentLabels::EffectField> fields;
    for (std::size_t k = 0; k < request.GetFactors().size(); ++k) {
      const int level = k < request.GetFactorsNestLevel().size() ? request.GetFactorsNestLevel()[k] : 0;
      fields.push_back({request.GetFactors()[k], level});
    }
    xml.Open("StructuredValue");
    xml.OpenNamed("Attribute", "Factors");
    EffectStruct(xml, varList, fields);
    xml.Close();
    ValueAttribute(xml, "EstimateMeans", "true");
    const int compare = request.GetCompareFactors().empty() ? -1 : request.GetCompareFactors().front();
    if (compare >= 0) ValueAttribute(xml, "CompareFactor", Labels::VarName(varList, compare));
    ValueAttribute(xml, "ContrastType", compare >= 0 ? ContrastToken(request.GetContrastType()) : "None");
    const bool byValue = request.GetReferenceType() == MCMath_850::MCConst::REFERENCE_CATEGORY &&
                         request.GetRefCateg() >= 0;
    ValueAttribute(xml, "ReferenceType", byValue ? "Value" : "Last");
    if (byValue && compare >= 0) {
      ValueAttribute(xml, "ReferenceValue", Labels::CategoryValue(varList, compare, request.GetRefCateg()));
    }
    // Each request has an adjustment of its own; the build settings' one is
    // the first request's.
    ValueAttribute(xml, "PAdjustment", PAdjustToken(request.GetPAdjust()));
    xml.Close();
  }
  xml.Close();
  xml.Close();
}

void GLMMStatXMLWriter::WriteStringMaps(GLMMXMLWriter& xml) const {
  const MCXML_850::MCVarList& varList = *fpVarList;
  const std::vector<MCMath_850::MCRegrParameter>& beta = fpStats->GetBetaParameters();
  const auto& gamma = fpStats->GetGammaBasicParameters();
  xml.Open("StringMap");
  xml.Attribute("mapId", Parts::kFixedMap);
  for (std::size_t i = 0; i < beta.size(); ++i) MapEntry(xml, Parts::FixedKey(i), beta[i], varList);
  // A reader takes a map without entries for a broken one.
  if (beta.empty()) MapEntry(xml, "Intercept", MCMath_850::MCRegrParameter(), varList);
  xml.Close();
  bool anyRandom = false;
  for (const auto& block : gamma) anyRandom = anyRandom || !block.empty();
  if (!anyRandom) return;
  xml.Open("StringMap");
  xml.Attribute("mapId", Parts::kRandomMap);
  for (std::size_t b = 0; b < gamma.size(); ++b) {
    for (std::size_t j = 0; j < gamma[b].size(); ++j) {
      MapEntry(xml, Parts::RandomKey(static_cast<int>(b), j), gamma[b][j], varList);
    }
  }
  xml.Close();
}

void GLMMStatXMLWriter::WriteTrainingSummary(GLMMXMLWriter& xml) const {
  const GLMMSettings& s = *fpSettings;
  const MCXML_850::MCVarList& varList = *fpVarList;
  const GLMMOutputStats& stats = *fpStats;
  xml.Open("TrainingSummary");

  const std::vector<MCMath_850::MCRegrParameter>& beta = stats.GetBetaParameters();
  const std::vector<MCMath_850::BetaParamStat>& betaStats = stats.GetBetaParamStats();
  if (!beta.empty()) {
    xml.Open("ParameterEstimates");
    xml.Attribute("parameterType", "fixed");
    // An ordinal target's thresholds take the intercept's place.
    Thresholds(xml, s, varList, stats);
    const bool ordinal = !stats.GetThresholdStats().empty();
    for (std::size_t i = 0; i < beta.size(); ++i) {
      if (ordinal && beta[i].IsIntercept()) continue;
      const ParamNumbers n = i < betaStats.size() ? FixedNumbers(betaStats[i]) : ParamNumbers();
      xml.Open("ParameterStats");
      ParamAttributes(xml, Parts::FixedKey(i), Labels::ParameterLabel(beta[i], varList), n);
      RegressionParameter(xml, beta[i], Parts::FixedKey(i), varList);
      // The position of the parameter's effect in the fixed effect list.
      if (!beta[i].IsIntercept()) Parts::Statistic(xml, "fixedEffectIndex", std::to_string(beta[i].GetEffectIndex()));
      xml.Close();
    }
    xml.Close();
  }

  const std::vector<GLMMThetaParamStat>& theta = stats.GetThetaParamStats();
  auto writeBlock = [&](int block) {
    bool any = false;
    for (const GLMMThetaParamStat& st : theta) any = any || st.GetBlockIndex() == block;
    if (!any) return;
    const bool residual = block == GLMMThetaParamStat::kResidualBlock;
    const GLMMRandomSpec* pSpec = residual ? &s.GetRepeated() : &s.GetRandomSpecs()[U(block)];
    xml.Open("ParameterEstimates");
    xml.Attribute("parameterType", residual ? "repeated" : "random");
    if (!residual) xml.Attribute("block", block);
    for (const GLMMThetaParamStat& st : theta) {
      if (st.GetBlockIndex() != block) continue;
      ParamNumbers n;
      n.fEstimate = st.GetEstimate();
      n.fStdError = st.GetStdError();
      n.fLower = st.GetLowerBound();
      n.fUpper = st.GetUpperBound();
      n.fZTest = st.GetWaldZ();
      n.fSig = st.GetSig();
      n.fbRedundant = st.GetRedundant();
      const bool scale = st.GetLabel() == "Residual" || st.GetLabel() == "Variance";
      const int number = residual ? -1 : EffectNumber(*pSpec, st.GetEffectIndex());
      std::string label = st.GetLabel();
      if (number >= 0) {
        label = "Var(" + EffectLabel(*pSpec, st.GetEffectIndex(), varList) + ")";
      } else if (scale) {
        label = "Variance";
      }
      xml.Open("ParameterStats");
      ParamAttributes(xml, st.GetLabel(), label, n);
      xml.Open("PrintableList");
      if (number >= 0) {
        xml.Attribute("pattern", "VarOfEffect");
        xml.Attribute("isKey", true);
        xml.Open("PrintableList");
        xml.Attribute("pattern", std::to_string(number));
        xml.Close();
      } else if (scale) {
        // The trailing blank makes it the key of the scale parameter.
        xml.Attribute("pattern", "Variance ");
        xml.Attribute("isKey", true);
      } else {
        const std::pair<std::string, std::vector<std::string>> key = CovarianceLabelKey(st.GetLabel());
        xml.Attribute("pattern", key.first);
        xml.Attribute("isKey", true);
        for (const std::string& argument : key.second) {
          xml.Open("PrintableList");
          xml.Attribute("pattern", argument);
          xml.Close();
        }
      }
      xml.Close();
      xml.Close();
    }
    xml.Close();
  };
  writeBlock(GLMMThetaParamStat::kResidualBlock);
  for (int b = 0; b < s.GetNRandomSpecs(); ++b) writeBlock(b);

  bool hessian = false;
  for (const MCStatus& warning : stats.GetBuildModelWarnings()) {
    const long code = warning.GetErrorCode();
    hessian = hessian || code == MCCommon_850::MC_HESSIAN_NOT_PD || code == MCCommon_850::MC_CONVERGED_SINGULAR_HESSIAN;
  }
  bool redundant = false;
  for (const GLMMThetaParamStat& st : theta) redundant = redundant || st.GetRedundant();
  bool subjects = !s.GetRepeated().GetSubjectVars().empty();
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) subjects = subjects || !spec.GetSubjectVars().empty();
  if (hessian) Parts::Message(xml, "kGLMM_C18", {});
  if (redundant) Parts::Message(xml, "kGLMM_C28", {});
  if (!subjects) Parts::Message(xml, "kGLMM_C26", {});
  for (const MCStatus& warning : stats.GetBuildModelWarnings()) {
    if (warning.GetErrorCode() == MCCommon_850::MC_G_NOT_PD) {
      Parts::Message(xml, "kGLMM_GNotPD", {std::to_string(warning.GetDiscreteDatum(0))});
    } else if (warning.GetErrorCode() == MCCommon_850::MC_R_NOT_PD) {
      Parts::Message(xml, "kGLMM_RNotPD", {});
    }
  }
  xml.Close();
}

}  // namespace MCGLMM_850
