#include "numeric/glmm/GLMMStatXMLWriter.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <ios>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/engine/MCEngineCovariance.h"
#include "numeric/glmm/GLMMDocumentLabels.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using MCMath_850::MCConst::MCContrastType;
using MCMath_850::MCConst::MCPAdjustMethod;
using Labels = GLMMDocumentLabels;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

const int kFixedMap = 0;
const int kRandomMap = 1;

std::string FixedKey(std::size_t i) { return "B" + std::to_string(i); }

std::string RandomKey(int block, std::size_t j) { return "G" + std::to_string(block) + "." + std::to_string(j); }

void Parameter(GLMMXMLWriter& xml, const std::string& name, const std::string& value) {
  xml.NameValue("Parameter", name, value);
}

void Statistic(GLMMXMLWriter& xml, const std::string& name, const std::string& value) {
  xml.NameValue("Statistic", name, value);
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

void Message(GLMMXMLWriter& xml, const std::string& key, const std::vector<std::string>& arguments) {
  xml.Open("Message");
  xml.Open("PrintableList");
  xml.Attribute("pattern", key);
  xml.Attribute("isKey", true);
  for (const std::string& argument : arguments) {
    xml.Open("PrintableValue");
    xml.Attribute("storage", "string");
    xml.Attribute("value", argument);
    xml.Close();
  }
  xml.Close();
  xml.Close();
}

const char* ContrastToken(MCContrastType type) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCContrastType, const char*> kTokens[] = {
      {CONTRAST_PAIRWISE, "Pairwise"},     {CONTRAST_DEVIATION, "Deviation"}, {CONTRAST_SIMPLE, "Simple"},
      {CONTRAST_NONE, "None"},             {CONTRAST_DIFFERENCE, "Difference"}, {CONTRAST_HELMERT, "Helmert"},
      {CONTRAST_REPEATED, "Repeated"},     {CONTRAST_POLYNOMIAL, "Polynomial"}};
  return GLMMXMLWriter::Token(type, kTokens, "None");
}

const char* ContrastGroupToken(MCContrastType type) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCContrastType, const char*> kTokens[] = {
      {CONTRAST_PAIRWISE, "pairwiseContrast"},     {CONTRAST_DEVIATION, "deviationContrast"},
      {CONTRAST_SIMPLE, "simpleContrast"},         {CONTRAST_DIFFERENCE, "differenceContrast"},
      {CONTRAST_HELMERT, "helmertContrast"},       {CONTRAST_REPEATED, "repeatedContrast"},
      {CONTRAST_POLYNOMIAL, "polynomialContrast"}};
  return GLMMXMLWriter::Token(type, kTokens, "noContrast");
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

void CategoryCoordinates(GLMMXMLWriter& xml, const MCXML_850::MCVarList& varList, int var,
                         const std::vector<int>& codes) {
  std::vector<std::string> values;
  for (int code : codes) values.push_back(Labels::CategoryValue(varList, var, code));
  xml.Open("Coordinates");
  xml.Attribute("feature", "fields");
  xml.Attribute("field", Labels::VarName(varList, var));
  xml.Array(values, "string");
  xml.Close();
}

void FeatureCoordinates(GLMMXMLWriter& xml, const std::string& feature, const std::vector<double>& values) {
  xml.Open("Coordinates");
  xml.Attribute("feature", feature);
  xml.NumberArray(values);
  xml.Close();
}

// Frequencies are weights and may hold fractions; the count is their sum,
// rounded.
long TotalFrequency(const std::vector<double>& frequencies) {
  double total = 0.0;
  for (double f : frequencies) total += f;
  return std::lround(total);
}

// A value of a record as it reads back into its variable: a category of a
// categorical variable, the number otherwise.
std::string RecordValue(const MCXML_850::MCVarList& varList, int var, double value) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  const bool categorical = pVar != nullptr && pVar->GetNCategories() > 0;
  if (categorical && value >= 0.0 && value == std::floor(value) && value < pVar->GetNCategories()) {
    return Labels::CategoryValue(varList, var, static_cast<int>(value));
  }
  return GLMMXMLWriter::NumberText(value);
}

void RecordCoordinates(GLMMXMLWriter& xml, const MCXML_850::MCVarList& varList, int var,
                       const std::vector<double>& values) {
  std::vector<std::string> items;
  for (double v : values) {
    items.push_back(MCCommon_850::MCMV::IsMissing(v) ? "__MISSING__" : RecordValue(varList, var, v));
  }
  xml.Open("Coordinates");
  xml.Attribute("field", Labels::VarName(varList, var));
  xml.Array(items, "string");
  xml.Close();
}

void StatisticCoordinates(GLMMXMLWriter& xml, const std::string& statistic, const std::vector<double>& values) {
  xml.Open("Coordinates");
  xml.Attribute("feature", "statistic");
  xml.Attribute("statistic", statistic);
  xml.NumberArray(values);
  xml.Close();
}

// The categories of the rows (means or contrasts) for each factor, -1 where
// a row has none.
template <typename Row>
void CategoryColumns(GLMMXMLWriter& xml, const MCXML_850::MCVarList& varList, const std::vector<int>& factors,
                     const std::vector<Row>& rows) {
  for (std::size_t k = 0; k < factors.size(); ++k) {
    std::vector<int> codes;
    for (const Row& row : rows) codes.push_back(k < row.GetCategories().size() ? row.GetCategories()[k] : -1);
    CategoryCoordinates(xml, varList, factors[k], codes);
  }
}

// One statistic's values over the rows, for each named getter.
template <typename Row>
void StatisticColumns(GLMMXMLWriter& xml, const std::vector<Row>& rows,
                      std::initializer_list<std::pair<const char*, double (Row::*)() const>> columns) {
  for (const auto& column : columns) {
    std::vector<double> values;
    for (const Row& row : rows) values.push_back((row.*column.second)());
    StatisticCoordinates(xml, column.first, values);
  }
}

// The means of a table: the factors' categories of each cell, then the four
// statistics.
void EstimatesElement(GLMMXMLWriter& xml, const GLMMEmmeansStat& stat, const MCXML_850::MCVarList& varList,
                      const std::string& description) {
  xml.Open("MultivariateData");
  xml.Attribute("description", description);
  const std::vector<int>& factors = stat.GetFactors();
  const std::vector<GLMMEmmeansMean>& means = stat.GetMeans();
  if (!factors.empty()) {
    xml.Open("CoordinatesGroup");
    xml.Attribute("description", "factors");
    CategoryColumns(xml, varList, factors, means);
    xml.Close();
  }
  StatisticColumns<GLMMEmmeansMean>(xml, means,
                                    {{"mean", &GLMMEmmeansMean::GetMean},
                                     {"stdErr", &GLMMEmmeansMean::GetStdError},
                                     {"confIntervalLower", &GLMMEmmeansMean::GetLowerBound},
                                     {"confIntervalUpper", &GLMMEmmeansMean::GetUpperBound}});
  xml.Close();
}

// The factors of a table other than the compare factor, in the table's order.
std::vector<int> OtherFactors(const GLMMEmmeansStat& stat) {
  std::vector<int> others;
  for (int f : stat.GetFactors()) {
    if (f != stat.GetCompareFactor()) others.push_back(f);
  }
  return others;
}

void ContrastsElement(GLMMXMLWriter& xml, const GLMMEmmeansStat& stat, const MCXML_850::MCVarList& varList) {
  const std::vector<GLMMEmmeansContrast>& contrasts = stat.GetContrasts();
  xml.Open("MultivariateData");
  xml.Attribute("description", "contrasts");
  if (!GLMMXMLWriter::NumberText(stat.GetConfidenceLevel()).empty()) {
    Statistic(xml, "adjustedSigLevel", GLMMXMLWriter::NumberText(1.0 - stat.GetConfidenceLevel()));
  }
  xml.Open("CoordinatesGroup");
  xml.Attribute("description", ContrastGroupToken(stat.GetContrastType()));
  CategoryColumns(xml, varList, OtherFactors(stat), contrasts);
  std::vector<int> categories, references;
  for (const GLMMEmmeansContrast& c : contrasts) {
    categories.push_back(c.GetCategory());
    references.push_back(c.GetReference());
  }
  CategoryCoordinates(xml, varList, stat.GetCompareFactor(), categories);
  CategoryCoordinates(xml, varList, stat.GetCompareFactor(), references);
  xml.Close();
  StatisticColumns<GLMMEmmeansContrast>(xml, contrasts,
                                        {{"contrastEstimate", &GLMMEmmeansContrast::GetEstimate},
                                         {"stdErr", &GLMMEmmeansContrast::GetStdError},
                                         {"tTest", &GLMMEmmeansContrast::GetTStat},
                                         {"df", &GLMMEmmeansContrast::GetDF},
                                         {"adjustedSig", &GLMMEmmeansContrast::GetAdjustedSig},
                                         {"confIntervalLower", &GLMMEmmeansContrast::GetLowerBound},
                                         {"confIntervalUpper", &GLMMEmmeansContrast::GetUpperBound}});
  xml.Close();
}

// The number of a marginal means request among the requests of factors,
// which are the ones the build settings list: the overall request (no
// factors) has no number of its own and gives -1. Asked for one past the
// last request, it counts the requests of factors.
int FactorRequestNumber(const std::vector<MCMath_850::MCEmmeansSpec>& requests, int r) {
  if (r < static_cast<int>(requests.size()) && requests[U(r)].GetFactors().empty()) return -1;
  int number = 0;
  for (int k = 0; k < r && k < static_cast<int>(requests.size()); ++k) {
    if (!requests[U(k)].GetFactors().empty()) ++number;
  }
  return number;
}

// The means of the first overall request, which stand for the grand mean
// when there is one; null otherwise.
const GLMMEmmeansMean* OverallRequestMean(const GLMMOutputStats& stats,
                                          const std::vector<MCMath_850::MCEmmeansSpec>& requests) {
  for (const GLMMEmmeansStat& stat : stats.GetEmmeansStats()) {
    const int r = stat.GetRequestIndex();
    if (r < 0 || r >= static_cast<int>(requests.size()) || !requests[U(r)].GetFactors().empty()) continue;
    return stat.GetValid() && stat.GetMeans().size() == 1 ? &stat.GetMeans().front() : nullptr;
  }
  return nullptr;
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

void FTest(GLMMXMLWriter& xml, double f, double df1, double df2, double sig) {
  xml.Open("FTest");
  xml.Attribute("fStatistic", f);
  xml.Attribute("sig", sig);
  xml.Attribute("df1", df1);
  xml.Attribute("df2", df2);
  xml.Close();
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

void GLMMStatXMLWriter::WriteBuildSettings(GLMMXMLWriter& xml) const {
  const GLMMSettings& s = *fpSettings;
  const MCXML_850::MCVarList& varList = *fpVarList;
  xml.Open("BuildSettings");
  Parameter(xml, "TargetField", Labels::VarName(varList, s.GetDependent()));
  Parameter(xml, "UseTrials", "false");
  Parameter(xml, "DistributionOfTarget", "NORMAL");
  Parameter(xml, "LinkFunctionType", "IDENTITY");
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
  if (FactorRequestNumber(requests, static_cast<int>(requests.size())) == 0) return;
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
  xml.Attribute("mapId", kFixedMap);
  for (std::size_t i = 0; i < beta.size(); ++i) MapEntry(xml, FixedKey(i), beta[i], varList);
  // A reader takes a map without entries for a broken one.
  if (beta.empty()) MapEntry(xml, "Intercept", MCMath_850::MCRegrParameter(), varList);
  xml.Close();
  bool anyRandom = false;
  for (const auto& block : gamma) anyRandom = anyRandom || !block.empty();
  if (!anyRandom) return;
  xml.Open("StringMap");
  xml.Attribute("mapId", kRandomMap);
  for (std::size_t b = 0; b < gamma.size(); ++b) {
    for (std::size_t j = 0; j < gamma[b].size(); ++j) {
      MapEntry(xml, RandomKey(static_cast<int>(b), j), gamma[b][j], varList);
    }
  }
  xml.Close();
}

void GLMMStatXMLWriter::WriteModelDiagnostics(GLMMXMLWriter& xml) const {
  const GLMMOutputStats& stats = *fpStats;
  xml.Open("ModelDiagnostics");
  Statistic(xml, "AICC", GLMMXMLWriter::NumberText(stats.GetAICC()));
  Statistic(xml, "BIC", GLMMXMLWriter::NumberText(stats.GetBIC()));
  Statistic(xml, "minus2LogLikelihood", GLMMXMLWriter::NumberText(stats.GetLogLikehood()));
  int nRepeated = 0;
  int nRandom = 0;
  for (const GLMMThetaParamStat& st : stats.GetThetaParamStats()) {
    if (st.GetBlockIndex() == GLMMThetaParamStat::kResidualBlock) {
      ++nRepeated;
    } else {
      ++nRandom;
    }
  }
  int randomColumns = 0;
  for (const auto& block : stats.GetGammaBasicParameters()) randomColumns += static_cast<int>(block.size());
  Statistic(xml, "numOfCovParamOfRepeated", std::to_string(nRepeated));
  Statistic(xml, "numOfCovParamOfRandom", std::to_string(nRandom));
  Statistic(xml, "numOfColsOfFixed", std::to_string(stats.GetBetaParameters().size()));
  Statistic(xml, "numOfColsOfRandom", std::to_string(randomColumns));
  if (stats.GetNCommonSubjects() >= 0) {
    Statistic(xml, "numOfCommonSubjects", std::to_string(stats.GetNCommonSubjects()));
  }
  const GLMMEmmeansMean* pOverall = OverallRequestMean(stats, fpSettings->GetEmmeans());
  if (const GLMMEmmeansMean* pGrand = pOverall != nullptr ? pOverall : stats.GetGrandMean()) {
    Statistic(xml, "grandMean", GLMMXMLWriter::NumberText(pGrand->GetMean()));
    Statistic(xml, "grandMeanStdErr", GLMMXMLWriter::NumberText(pGrand->GetStdError()));
    Statistic(xml, "grandMeanCILower", GLMMXMLWriter::NumberText(pGrand->GetLowerBound()));
    Statistic(xml, "grandMeanCIUpper", GLMMXMLWriter::NumberText(pGrand->GetUpperBound()));
  }
  WriteTargetDistribution(xml);
  WritePredictedByObserved(xml);
  WriteEffectTests(xml);
  WriteFirstSubjectRecords(xml);
  WriteRandomEffectCovariances(xml);
  WriteMarginalMeans(xml);
  xml.Close();
}

void GLMMStatXMLWriter::WriteEffectTests(GLMMXMLWriter& xml) const {
  const GLMMSettings& s = *fpSettings;
  const bool typeI = s.GetEffectAnalysisType() == MCMath_850::MCConst::EFFECT_TYPE_I;
  const MCMath_850::MCModelTestStats* pTests = typeI ? fpStats->GetTypeITestStats() : fpStats->GetTypeIIITestStats();
  const char* testType = typeI ? "I" : "III";
  const int nEffects = static_cast<int>(s.GetModelEffects().size());
  const int first = s.GetInterceptUse() ? 1 : 0;

  // The test of the whole model is that of its one effect when it has one,
  // the joint test of its effects when it has more; without effects there
  // is none.
  xml.Open("ModelTestStats");
  xml.Attribute("description", "correctedModel");
  xml.Attribute("testType", testType);
  if (pTests != nullptr && nEffects == 1 && first < pTests->GetNTests()) {
    const MCMath_850::MCTestStats& t = pTests->GetTestStats(first);
    FTest(xml, t.GetWald(), t.GetDF(), t.GetDF2(), t.GetSig());
  } else if (const MCMath_850::MCTestStats* pJoint = nEffects > 1 ? fpStats->GetCorrectedModelTest() : nullptr) {
    FTest(xml, pJoint->GetWald(), pJoint->GetDF(), pJoint->GetDF2(), pJoint->GetSig());
  }
  xml.Close();
  for (int e = 0; e < nEffects; ++e) {
    xml.Open("ModelTestStats");
    xml.Attribute("description", "fixedEffect");
    xml.Attribute("testID", e);
    xml.Attribute("testType", testType);
    if (pTests != nullptr && first + e < pTests->GetNTests()) {
      const MCMath_850::MCTestStats& t = pTests->GetTestStats(first + e);
      FTest(xml, t.GetWald(), t.GetDF(), t.GetDF2(), t.GetSig());
    } else {
      const double missing = MCCommon_850::MCMV::Missing();
      FTest(xml, missing, missing, missing, missing);
    }
    xml.Close();
  }
}

void GLMMStatXMLWriter::WriteTargetDistribution(GLMMXMLWriter& xml) const {
  const GLMMOutputStats& stats = *fpStats;
  if (stats.GetTargetBinValues().empty()) return;
  xml.Open("UnivariateData");
  xml.Attribute("description", "TargetDistribution");
  xml.Open("Counts");
  xml.Attribute("totalFreq", TotalFrequency(stats.GetTargetBinFrequencies()));
  xml.Close();
  Statistic(xml, "mean", GLMMXMLWriter::NumberText(stats.GetTargetMean()));
  Statistic(xml, "stdDeviation", GLMMXMLWriter::NumberText(stats.GetTargetStdDeviation()));
  FeatureCoordinates(xml, "observed", stats.GetTargetBinValues());
  FeatureCoordinates(xml, "frequency", stats.GetTargetBinFrequencies());
  xml.Close();
}

void GLMMStatXMLWriter::WritePredictedByObserved(GLMMXMLWriter& xml) const {
  const GLMMOutputStats& stats = *fpStats;
  if (stats.GetObservedPoints().empty()) return;
  xml.Open("BivariateData");
  xml.Attribute("description", "observedByPredicted");
  xml.Open("Counts");
  xml.Attribute("totalFreq", TotalFrequency(stats.GetPointFrequencies()));
  xml.Close();
  FeatureCoordinates(xml, "observed", stats.GetObservedPoints());
  FeatureCoordinates(xml, "statistic", stats.GetPredictedPoints());
  FeatureCoordinates(xml, "frequency", stats.GetPointFrequencies());
  xml.Close();
}

void GLMMStatXMLWriter::WriteFirstSubjectRecords(GLMMXMLWriter& xml) const {
  const GLMMOutputStats& stats = *fpStats;
  const MCXML_850::MCVarList& varList = *fpVarList;
  const std::vector<int>& subjectVars = stats.GetSubjectVars();
  if (subjectVars.empty() || stats.GetFirstSubjectValues().size() != subjectVars.size()) return;
  xml.Open("StructuredData");
  xml.Attribute("description", "firstSubjectRecordsForDataStructure");
  xml.Open("Counts");
  xml.Attribute("totalFreq", stats.GetFirstSubjectNRecords());
  xml.Close();
  xml.Open("SegmentData");
  xml.Open("SegmentInfo");
  for (std::size_t k = 0; k < subjectVars.size(); ++k) {
    xml.Open("FieldInfo");
    xml.Attribute("fieldName", Labels::VarName(varList, subjectVars[k]));
    xml.Attribute("fieldValue", RecordValue(varList, subjectVars[k], stats.GetFirstSubjectValues()[k]));
    xml.Close();
  }
  xml.Close();
  xml.Open("MultivariateData");
  const std::vector<int>& repeatedVars = stats.GetRepeatedVars();
  const std::vector<std::vector<double>>& repeated = stats.GetFirstSubjectRepeated();
  if (!repeatedVars.empty() && repeated.size() == repeatedVars.size()) {
    xml.Open("CoordinatesGroup");
    xml.Attribute("description", "repeatedMeasures");
    for (std::size_t v = 0; v < repeatedVars.size(); ++v) RecordCoordinates(xml, varList, repeatedVars[v], repeated[v]);
    xml.Close();
  }
  xml.Open("CoordinatesGroup");
  xml.Attribute("description", "target");
  RecordCoordinates(xml, varList, fpSettings->GetDependent(), stats.GetFirstSubjectTargets());
  xml.Close();
  xml.Close();
  xml.Close();
  xml.Close();
}

void GLMMStatXMLWriter::WriteRandomEffectCovariances(GLMMXMLWriter& xml) const {
  const GLMMSettings& s = *fpSettings;
  const auto& gamma = fpStats->GetGammaBasicParameters();
  const std::vector<GLMMThetaParamStat>& theta = fpStats->GetThetaParamStats();
  for (int b = 0; b < s.GetNRandomSpecs() && U(b) < gamma.size(); ++b) {
    const std::vector<MCMath_850::MCRegrParameter>& columns = gamma[U(b)];
    const int q = static_cast<int>(columns.size());
    if (q == 0) continue;
    std::vector<int> columnEffects;
    for (const MCMath_850::MCRegrParameter& p : columns) columnEffects.push_back(std::max(p.GetEffectIndex(), 0));
    std::vector<double> blockTheta;
    for (const GLMMThetaParamStat& st : theta) {
      if (st.GetBlockIndex() == b) blockTheta.push_back(st.GetEstimate());
    }
    std::vector<double> matrix;
    const MCEngine_850::MCEngineCovariance structure(s.GetRandomSpecs()[U(b)].GetCovarianceType(), q, columnEffects);
    if (structure.IsAvailable() && structure.GetNParams() == static_cast<int>(blockTheta.size())) {
      matrix = structure.Matrix(blockTheta);
    }
    std::vector<double> packed;
    for (int i = 0; i < q; ++i) {
      for (int j = 0; j <= i; ++j) {
        const std::size_t at = U(i) * U(q) + U(j);
        packed.push_back(at < matrix.size() ? matrix[at] : MCCommon_850::MCMV::Missing());
      }
    }

    xml.Open("StructuredData");
    xml.Attribute("description", "randomEffectCovariances");
    Statistic(xml, "randomEffectBlock", std::to_string(b));
    xml.Open("MatrixLabels");
    xml.Open("RowColLabels");
    for (int j = 0; j < q; ++j) {
      xml.Open("Label");
      xml.Open("PrintableList");
      xml.Attribute("pattern", RandomKey(b, U(j)));
      xml.Attribute("isKey", false);
      xml.Attribute("mapId", kRandomMap);
      xml.Close();
      xml.Close();
    }
    xml.Close();
    xml.Close();
    xml.Open("SegmentData");
    xml.Open("SegmentInfo");
    xml.Close();
    xml.Open("Matrix");
    xml.Attribute("description", "randomEffectCovariance");
    xml.Attribute("nbRows", q);
    xml.Attribute("nbCols", q);
    xml.Attribute("kind", "symmetric");
    xml.NumberArray(packed);
    xml.Close();
    xml.Close();
    xml.Close();
  }
}

void GLMMStatXMLWriter::WriteMarginalMeans(GLMMXMLWriter& xml) const {
  const MCXML_850::MCVarList& varList = *fpVarList;
  for (const GLMMEmmeansStat& stat : fpStats->GetEmmeansStats()) {
    if (stat.GetRequestIndex() < 0) {
      // The component's own tables of the fixed effects, for the chart of
      // the most significant effects.
      if (!stat.GetValid()) continue;
      xml.Open("DataGroup");
      xml.Attribute("description", "Emmeans");
      Statistic(xml, "effectIndex", std::to_string(stat.GetEffectIndex()));
      EstimatesElement(xml, stat, varList, "estimates");
      xml.Close();
      continue;
    }
    xml.Open("DataGroup");
    xml.Attribute("description", "customEmmeans");
    if (!stat.GetCovariates().empty()) {
      xml.Open("Label");
      xml.Open("PrintableList");
      for (std::size_t k = 0; k < stat.GetCovariates().size(); ++k) {
        xml.Open("PrintableList");
        xml.Attribute("pattern", Labels::VarName(varList, stat.GetCovariates()[k]));
        xml.Open("PrintableList");
        xml.Attribute("pattern", GLMMXMLWriter::NumberText(stat.GetCovariateValues()[k]));
        xml.Close();
        xml.Close();
      }
      xml.Close();
      xml.Close();
    }
    // The overall request is the grand mean: it carries no request number,
    // and its one mean has no factor categories.
    const int number = FactorRequestNumber(fpSettings->GetEmmeans(), stat.GetRequestIndex());
    if (number >= 0) Statistic(xml, "EMMEANSIndex", std::to_string(number));
    EstimatesElement(xml, stat, varList, "estimates");
    if (!stat.GetContrasts().empty() && stat.GetCompareFactor() >= 0) ContrastsElement(xml, stat, varList);
    const std::vector<int> others = OtherFactors(stat);
    for (std::size_t t = 0; t < stat.GetTests().size(); ++t) {
      const GLMMEmmeansTest& test = stat.GetTests()[t];
      xml.Open("ModelTestStats");
      xml.Attribute("testID", static_cast<long>(t));
      xml.Open("SegmentInfo");
      for (std::size_t k = 0; k < others.size() && k < test.GetCategories().size(); ++k) {
        xml.Open("FieldInfo");
        xml.Attribute("fieldName", Labels::VarName(varList, others[k]));
        xml.Attribute("fieldValue", Labels::CategoryValue(varList, others[k], test.GetCategories()[k]));
        xml.Close();
      }
      xml.Close();
      FTest(xml, test.GetF(), test.GetDF1(), test.GetDF2(), test.GetSig());
      xml.Close();
    }
    if (!stat.GetValid()) Message(xml, "kGLMM_C25", {});
    for (const MCStatus& warning : stat.GetWarnings()) {
      if (warning.GetErrorCode() == MCCommon_850::MC_EMMEANS_ONE_LEVEL) {
        Message(xml, "kGLMM_C19_1", {Labels::VarName(varList, stat.GetCompareFactor())});
      }
    }
    xml.Close();
  }
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
    for (std::size_t i = 0; i < beta.size(); ++i) {
      ParamNumbers n;
      if (i < betaStats.size()) {
        const MCMath_850::BetaParamStat& st = betaStats[i];
        n.fEstimate = st.GetEstimate();
        n.fStdError = st.GetStdError();
        n.fDf = st.GetDF();
        n.fLower = st.GetLowerBound();
        n.fUpper = st.GetUpperBound();
        n.fTTest = st.GetTStat();
        n.fSig = st.GetSig();
        n.fbRedundant = st.GetRedundant();
      }
      xml.Open("ParameterStats");
      ParamAttributes(xml, FixedKey(i), Labels::ParameterLabel(beta[i], varList), n);
      RegressionParameter(xml, beta[i], FixedKey(i), varList);
      // The position of the parameter's effect in the fixed effect list.
      if (!beta[i].IsIntercept()) Statistic(xml, "fixedEffectIndex", std::to_string(beta[i].GetEffectIndex()));
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
  if (hessian) Message(xml, "kGLMM_C18", {});
  if (redundant) Message(xml, "kGLMM_C28", {});
  if (!subjects) Message(xml, "kGLMM_C26", {});
  xml.Close();
}

}  // namespace MCGLMM_850
