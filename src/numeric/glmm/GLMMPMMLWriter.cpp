#include "numeric/glmm/GLMMPMMLWriter.h"

#include <cstdio>
#include <ctime>
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
#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using MCMath_850::MCConst::MCMeasureLevel;
using MCMath_850::MCConst::MCVarRole;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

const char* OpType(MCMeasureLevel level) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCMeasureLevel, const char*> kTokens[] = {{MEASURE_NOMINAL, "categorical"},
                                                                   {MEASURE_ORDINAL, "ordinal"}};
  return GLMMXMLWriter::Token(level, kTokens, "continuous");
}

const char* UsageType(MCVarRole role) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCVarRole, const char*> kTokens[] = {{ROLE_TARGET, "target"},
                                                              {ROLE_REGRESSION_WEIGHT, "analysisWeight"},
                                                              {ROLE_FREQUENCY_WEIGHT, "frequencyWeight"},
                                                              {ROLE_PREDICTOR, "active"}};
  return GLMMXMLWriter::Token(role, kTokens, "supplementary");
}

std::string ParameterName(std::size_t i) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "P%07zu", i);
  return buffer;
}

std::string UTCTimestamp() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  if (gmtime_r(&now, &parts) == nullptr) return std::string();
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return buffer;
}

void OpenExtension(GLMMXMLWriter& xml, const std::string& name) {
  xml.Open("Extension");
  xml.Attribute("extender", "glmixfit");
  xml.Attribute("name", name);
}

void WriteExtension(GLMMXMLWriter& xml, const std::string& name, const std::string& value) {
  OpenExtension(xml, name);
  xml.Attribute("value", value);
  xml.Close();
}

// A list of predictors by name, written only when there are any.
void PredictorList(GLMMXMLWriter& xml, const MCXML_850::MCVarList& varList, const std::string& element,
                   const std::vector<int>& vars) {
  if (vars.empty()) return;
  xml.Open(element);
  for (int var : vars) {
    xml.Open("Predictor");
    xml.Attribute("name", GLMMDocumentLabels::VarName(varList, var));
    xml.Close();
  }
  xml.Close();
}

void PPCell(GLMMXMLWriter& xml, const std::string& value, const std::string& predictor, const std::string& parameter) {
  xml.Open("PPCell");
  xml.Attribute("value", value);
  xml.Attribute("predictorName", predictor);
  xml.Attribute("parameterName", parameter);
  xml.Close();
}

void WriteBlock(GLMMXMLWriter& xml, const MCXML_850::MCVarList& varList, const GLMMRandomSpec& spec,
                GLMMConst_850::CovarType type, int block, const std::vector<GLMMThetaParamStat>& theta) {
  const bool residual = block == GLMMThetaParamStat::kResidualBlock;
  xml.Open(residual ? "ResidualBlock" : "RandomBlock");
  if (!residual) xml.Attribute("index", block);
  xml.Attribute("covarianceType", GLMMDocumentLabels::CovarianceToken(type));
  for (int var : spec.GetSubjectVars()) {
    xml.Open("Subject");
    xml.Attribute("field", GLMMDocumentLabels::VarName(varList, var));
    xml.Close();
  }
  for (const MCMath_850::MCModelEffect& effect : spec.GetEffects()) {
    xml.Open("Effect");
    xml.Attribute("isIntercept", effect.IsIntercept());
    for (const GLMMDocumentLabels::EffectField& field : GLMMDocumentLabels::EffectFields(effect)) {
      xml.Open("EffectField");
      xml.Attribute("field", GLMMDocumentLabels::VarName(varList, field.fVar));
      xml.Attribute("nestingLevel", field.fNestingLevel);
      xml.Close();
    }
    xml.Close();
  }
  for (const GLMMThetaParamStat& st : theta) {
    if (st.GetBlockIndex() != block) continue;
    xml.Open("CovarianceParameter");
    xml.Attribute("name", st.GetLabel());
    xml.Attribute("kind", GLMMThetaParamStat::GetName(st.GetKind()));
    if (st.GetEffectIndex() >= 0) xml.Attribute("effect", st.GetEffectIndex());
    xml.Attribute("estimate", st.GetEstimate());
    xml.Attribute("isRedundant", st.GetRedundant());
    xml.Close();
  }
  xml.Close();
}

// One estimate of the parameter matrix, with its df when there is one;
// `category` names the target category of a threshold.
void PCell(GLMMXMLWriter& xml, const std::string& parameter, double estimate, double df, const std::string& category) {
  if (GLMMXMLWriter::NumberText(estimate).empty()) return;
  xml.Open("PCell");
  if (!category.empty()) xml.Attribute("targetCategory", category);
  xml.Attribute("parameterName", parameter);
  xml.Attribute("beta", estimate);
  if (!GLMMXMLWriter::NumberText(df).empty()) xml.Attribute("df", df);
  xml.Close();
}

// The estimates. An ordinal target's model is PMML's cumulative form
// link(P(Y <= j)) = theta_j + sum of coefficient times predictor: the
// intercept's parameter carries one threshold per category it closes, and
// since the fit's predictor enters as theta_j - x'beta, the coefficients
// are written with the opposite sign, so that scoring by the file gives the
// fit's probabilities.
void ParamMatrix(GLMMXMLWriter& xml, const GLMMOutputStats& stats, const std::vector<std::string>& categories) {
  const std::vector<MCMath_850::MCRegrParameter>& params = stats.GetBetaParameters();
  const std::vector<MCMath_850::BetaParamStat>& beta = stats.GetBetaParamStats();
  const std::vector<MCMath_850::BetaParamStat>& thresholds = stats.GetThresholdStats();
  const bool ordinal = !thresholds.empty();
  xml.Open("ParamMatrix");
  for (std::size_t i = 0; i < params.size() && i < beta.size(); ++i) {
    if (ordinal && params[i].IsIntercept()) {
      for (std::size_t j = 0; j < thresholds.size() && j < categories.size(); ++j) {
        PCell(xml, ParameterName(i), thresholds[j].GetEstimate(), thresholds[j].GetDF(), categories[j]);
      }
      continue;
    }
    // 0 - b keeps a redundant 0 a plain 0; a missing estimate stays missing.
    double estimate = beta[i].GetEstimate();
    if (ordinal && !GLMMXMLWriter::NumberText(estimate).empty()) estimate = 0.0 - estimate;
    PCell(xml, ParameterName(i), estimate, beta[i].GetDF(), std::string());
  }
  xml.Close();
}

}  // namespace

GLMMPMMLWriter::GLMMPMMLWriter(const GLMMSettings& settings, const MCXML_850::MCVarList& varList,
                               const GLMMOutputStats& stats)
    : fpSettings(&settings), fpVarList(&varList), fpStats(&stats) {}

MCStatus GLMMPMMLWriter::Write(std::ostream& os, const MCXML_850::MCApplicInfo4XML* pInfo) const {
  const MCStatus failed(MCCommon_850::MC_OUTPUT_FILE_ERROR, false);
  if (!os) return failed;
  const GLMMSettings& s = *fpSettings;
  const MCXML_850::MCVarList& varList = *fpVarList;
  const GLMMOutputStats& stats = *fpStats;
  try {
    GLMMXMLWriter xml(os);
    xml.Declaration();
    xml.Open("PMML");
    xml.Attribute("xmlns", "http://www.dmg.org/PMML-4_4");
    xml.Attribute("version", "4.4");

    xml.Open("Header");
    xml.Attribute("copyright", pInfo != nullptr ? pInfo->GetCopyright() : std::string());
    xml.Open("Application");
    xml.Attribute("name", pInfo != nullptr ? pInfo->GetApplicationName() : std::string());
    xml.Attribute("version", pInfo != nullptr ? pInfo->GetApplicationVersion() : std::string());
    xml.Close();
    if (pInfo != nullptr && pInfo->GetIncludeTimestamp()) {
      xml.Open("Timestamp");
      xml.Text(UTCTimestamp());
      xml.Close();
    }
    xml.Close();

    int nFields = 0;
    for (int i = 0; i < varList.Size(); ++i) nFields += GLMMDocumentLabels::IsOwnField(varList, i) ? 1 : 0;
    xml.Open("DataDictionary");
    xml.Attribute("numberOfFields", nFields);
    for (int i = 0; i < varList.Size(); ++i) {
      if (!GLMMDocumentLabels::IsOwnField(varList, i)) continue;
      const MCXML_850::IMCVariable& var = *varList.GetVarAt(i);
      xml.Open("DataField");
      xml.Attribute("name", var.GetFieldName());
      if (!var.GetLabel().empty()) xml.Attribute("displayName", var.GetLabel());
      xml.Attribute("optype", OpType(var.GetMeasurementLevel()));
      xml.Attribute("dataType", var.GetStringWidth() > 0 ? "string" : "double");
      WriteExtension(xml, "recordIndex", std::to_string(var.GetRecordIndex()));
      if (var.GetStringWidth() > 0) WriteExtension(xml, "stringWidth", std::to_string(var.GetStringWidth()));
      for (int code = 0; code < var.GetNCategories(); ++code) {
        xml.Open("Value");
        xml.Attribute("value", GLMMDocumentLabels::CategoryValue(varList, i, code));
        xml.Attribute("displayValue", var.GetCategoryTexts()[U(code)]);
        xml.Close();
      }
      xml.Close();
    }
    xml.Close();

    const GLMMTargetSpec& target = s.GetTargetSpec();
    const bool ordinal = !stats.GetThresholdStats().empty();
    xml.Open("GeneralRegressionModel");
    xml.Attribute("targetVariableName", GLMMDocumentLabels::VarName(varList, s.GetDependent()));
    xml.Attribute("modelType", ordinal ? "ordinalMultinomial" : "generalLinear");
    xml.Attribute("functionName", ordinal ? "classification" : "regression");
    xml.Attribute("algorithmName", "GLMM");
    if (ordinal) xml.Attribute("cumulativeLink", GLMMDocumentLabels::ModelLinkToken(target));
    xml.Attribute("distribution", GLMMDocumentLabels::ModelDistributionToken(target));
    xml.Attribute("linkFunction", GLMMDocumentLabels::ModelLinkToken(target));
    if (target.GetLink() == GLMMConst_850::LINK_POWER) {
      xml.Attribute("linkParameter", GLMMXMLWriter::NumberText(target.GetLinkPower()));
    }
    if (target.GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE) {
      xml.Attribute("trialsVariable", GLMMDocumentLabels::VarName(varList, target.GetTrialsVariable()));
    }
    if (target.GetTrialsType() == GLMMConst_850::TRIALS_VALUE) {
      xml.Attribute("trialsValue", GLMMXMLWriter::NumberText(target.GetTrialsValue()));
    }

    // The random and residual blocks, which the standard model has no
    // element for.
    OpenExtension(xml, "covarianceStructures");
    const std::vector<GLMMThetaParamStat>& theta = stats.GetThetaParamStats();
    for (int b = 0; b < s.GetNRandomSpecs(); ++b) {
      const GLMMRandomSpec& spec = s.GetRandomSpecs()[U(b)];
      WriteBlock(xml, varList, spec, spec.GetCovarianceType(), b, theta);
    }
    WriteBlock(xml, varList, s.GetRepeated(), s.GetRepeated().GetCovarianceType(), GLMMThetaParamStat::kResidualBlock,
               theta);
    xml.Close();

    xml.Open("MiningSchema");
    for (int i = 0; i < varList.Size(); ++i) {
      if (!GLMMDocumentLabels::IsOwnField(varList, i)) continue;
      const MCXML_850::IMCVariable& var = *varList.GetVarAt(i);
      xml.Open("MiningField");
      xml.Attribute("name", var.GetFieldName());
      xml.Attribute("usageType", UsageType(var.GetRole()));
      xml.Close();
    }
    xml.Close();

    const std::vector<MCMath_850::MCRegrParameter>& params = stats.GetBetaParameters();
    xml.Open("ParameterList");
    for (std::size_t i = 0; i < params.size(); ++i) {
      xml.Open("Parameter");
      xml.Attribute("name", ParameterName(i));
      xml.Attribute("label", GLMMDocumentLabels::ParameterLabel(params[i], varList));
      xml.Close();
    }
    xml.Close();

    PredictorList(xml, varList, "FactorList", s.GetFactors());
    PredictorList(xml, varList, "CovariateList", s.GetCovariates());

    xml.Open("PPMatrix");
    for (std::size_t i = 0; i < params.size(); ++i) {
      const MCMath_850::MCRegrParameter& p = params[i];
      for (int f = 0; f < p.GetNFactors(); ++f) {
        const int var = p.GetFactors()[U(f)];
        PPCell(xml, GLMMDocumentLabels::CategoryValue(varList, var, p.GetCategories()[U(f)]),
               GLMMDocumentLabels::VarName(varList, var), ParameterName(i));
      }
      for (int c = 0; c < p.GetNCovariates(); ++c) {
        PPCell(xml, std::to_string(p.GetCovMultiplicities()[U(c)]),
               GLMMDocumentLabels::VarName(varList, p.GetCovariates()[U(c)]), ParameterName(i));
      }
    }
    xml.Close();

    const MCMath_850::MCSymMatrix* pCov = stats.GetCovarianceMatrixBeta();
    if (pCov != nullptr) {
      xml.Open("PCovMatrix");
      for (int i = 0; i < static_cast<int>(params.size()); ++i) {
        for (int j = 0; j <= i; ++j) {
          const double value = pCov->GetElem(0, 0, i, j);
          if (MCCommon_850::MCMV::IsMissing(value)) continue;
          xml.Open("PCovCell");
          xml.Attribute("pRow", ParameterName(U(i)));
          xml.Attribute("pCol", ParameterName(U(j)));
          xml.Attribute("value", value);
          xml.Close();
        }
      }
      xml.Close();
    }

    std::vector<std::string> categories;
    for (double value : stats.GetTargetCategories()) categories.push_back(GLMMXMLWriter::NumberText(value));
    ParamMatrix(xml, stats, categories);
    xml.Finish();
    os.flush();
  } catch (const std::ios_base::failure&) {
    return failed;
  }
  if (!os) return failed;
  return MCStatus();
}

}  // namespace MCGLMM_850
