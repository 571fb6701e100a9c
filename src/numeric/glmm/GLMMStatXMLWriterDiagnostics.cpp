// The model diagnostics of the StatXML document: fit statistics and design
// sizes, tests of the fixed effects, the target's distribution, observed
// against predicted values, the first subject's records, the random effect
// covariance matrices and the marginal means.
#include "numeric/glmm/GLMMStatXMLWriter.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatus.h"
#include "numeric/engine/MCEngineCovariance.h"
#include "numeric/glmm/GLMMDocumentLabels.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMStatXMLParts.h"
#include "numeric/glmm/GLMMXMLWriter.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using MCMath_850::MCConst::MCContrastType;
using Labels = GLMMDocumentLabels;
using Parts = GLMMStatXMLParts;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

const char* ContrastGroupToken(MCContrastType type) {
  using namespace MCMath_850::MCConst;
  static const std::pair<MCContrastType, const char*> kTokens[] = {
      {CONTRAST_PAIRWISE, "pairwiseContrast"},     {CONTRAST_DEVIATION, "deviationContrast"},
      {CONTRAST_SIMPLE, "simpleContrast"},         {CONTRAST_DIFFERENCE, "differenceContrast"},
      {CONTRAST_HELMERT, "helmertContrast"},       {CONTRAST_REPEATED, "repeatedContrast"},
      {CONTRAST_POLYNOMIAL, "polynomialContrast"}};
  return GLMMXMLWriter::Token(type, kTokens, "noContrast");
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
  // A generalized model's means are those of the target, on the data's
  // scale; their linear predictor's follow under names of their own.
  using M = GLMMEmmeansMean;
  const bool data = !means.empty() && means.front().HasDataScale();
  StatisticColumns<M>(xml, means,
                      {{"mean", data ? &M::GetDataMean : &M::GetMean},
                       {"stdErr", data ? &M::GetDataStdError : &M::GetStdError},
                       {"confIntervalLower", data ? &M::GetDataLowerBound : &M::GetLowerBound},
                       {"confIntervalUpper", data ? &M::GetDataUpperBound : &M::GetUpperBound}});
  if (data) {
    StatisticColumns<M>(xml, means,
                        {{"linearPredictor", &M::GetMean},
                         {"linearPredictorStdErr", &M::GetStdError},
                         {"linearPredictorLower", &M::GetLowerBound},
                         {"linearPredictorUpper", &M::GetUpperBound}});
  }
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
    Parts::Statistic(xml, "adjustedSigLevel", GLMMXMLWriter::NumberText(1.0 - stat.GetConfidenceLevel()));
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

void FTest(GLMMXMLWriter& xml, double f, double df1, double df2, double sig) {
  xml.Open("FTest");
  xml.Attribute("fStatistic", f);
  xml.Attribute("sig", sig);
  xml.Attribute("df1", df1);
  xml.Attribute("df2", df2);
  xml.Close();
}

}  // namespace

void GLMMStatXMLWriter::WriteModelDiagnostics(GLMMXMLWriter& xml) const {
  const GLMMOutputStats& stats = *fpStats;
  xml.Open("ModelDiagnostics");
  Parts::Statistic(xml, "AICC", GLMMXMLWriter::NumberText(stats.GetAICC()));
  Parts::Statistic(xml, "BIC", GLMMXMLWriter::NumberText(stats.GetBIC()));
  Parts::Statistic(xml, "minus2LogLikelihood", GLMMXMLWriter::NumberText(stats.GetLogLikehood()));
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
  Parts::Statistic(xml, "numOfCovParamOfRepeated", std::to_string(nRepeated));
  Parts::Statistic(xml, "numOfCovParamOfRandom", std::to_string(nRandom));
  Parts::Statistic(xml, "numOfColsOfFixed", std::to_string(stats.GetBetaParameters().size()));
  Parts::Statistic(xml, "numOfColsOfRandom", std::to_string(randomColumns));
  if (stats.GetNCommonSubjects() >= 0) {
    Parts::Statistic(xml, "numOfCommonSubjects", std::to_string(stats.GetNCommonSubjects()));
  }
  const GLMMEmmeansMean* pOverall = OverallRequestMean(stats, fpSettings->GetEmmeans());
  if (const GLMMEmmeansMean* pGrand = pOverall != nullptr ? pOverall : stats.GetGrandMean()) {
    const bool data = pGrand->HasDataScale();
    Parts::Statistic(xml, "grandMean", GLMMXMLWriter::NumberText(data ? pGrand->GetDataMean() : pGrand->GetMean()));
    Parts::Statistic(xml, "grandMeanStdErr",
                     GLMMXMLWriter::NumberText(data ? pGrand->GetDataStdError() : pGrand->GetStdError()));
    Parts::Statistic(xml, "grandMeanCILower",
                     GLMMXMLWriter::NumberText(data ? pGrand->GetDataLowerBound() : pGrand->GetLowerBound()));
    Parts::Statistic(xml, "grandMeanCIUpper",
                     GLMMXMLWriter::NumberText(data ? pGrand->GetDataUpperBound() : pGrand->GetUpperBound()));
  }
  if (!stats.GetClassification().IsEmpty()) {
    Parts::Statistic(xml, "classificationAccuracy",
                     GLMMXMLWriter::NumberText(stats.GetClassification().GetAccuracy()));
  }
  WriteTargetDistribution(xml);
  WritePredictedByObserved(xml);
  WriteEffectTests(xml);
  WriteFirstSubjectRecords(xml);
  WriteRandomEffectCovariances(xml);
  WriteClassificationTable(xml);
  WriteMarginalMeans(xml);
  WriteCustomTests(xml);
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
  Parts::Statistic(xml, "mean", GLMMXMLWriter::NumberText(stats.GetTargetMean()));
  Parts::Statistic(xml, "stdDeviation", GLMMXMLWriter::NumberText(stats.GetTargetStdDeviation()));
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

// Rows observed, columns predicted. The categories of an events/trials
// target are non-event and event, which a reader knows without labels.
void GLMMStatXMLWriter::WriteClassificationTable(GLMMXMLWriter& xml) const {
  const GLMMClassification& table = fpStats->GetClassification();
  if (table.IsEmpty()) return;
  const int k = table.GetNCategories();
  xml.Open("Matrix");
  xml.Attribute("description", "classificationTable");
  xml.Attribute("nbRows", k);
  xml.Attribute("nbCols", k);
  xml.Attribute("kind", "general");
  if (!table.GetUsesTrials()) {
    xml.Open("MatrixLabels");
    xml.Open("RowColLabels");
    for (double category : table.GetCategories()) {
      xml.Open("Label");
      xml.Attribute("label", RecordValue(*fpVarList, fpSettings->GetDependent(), category));
      xml.Close();
    }
    xml.Close();
    xml.Close();
  }
  xml.NumberArray(table.GetCounts());
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
    Parts::Statistic(xml, "randomEffectBlock", std::to_string(b));
    xml.Open("MatrixLabels");
    xml.Open("RowColLabels");
    for (int j = 0; j < q; ++j) {
      xml.Open("Label");
      xml.Open("PrintableList");
      xml.Attribute("pattern", Parts::RandomKey(b, U(j)));
      xml.Attribute("isKey", false);
      xml.Attribute("mapId", Parts::kRandomMap);
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
      Parts::Statistic(xml, "effectIndex", std::to_string(stat.GetEffectIndex()));
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
    const int number = Parts::FactorRequestNumber(fpSettings->GetEmmeans(), stat.GetRequestIndex());
    if (number >= 0) Parts::Statistic(xml, "EMMEANSIndex", std::to_string(number));
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
    if (!stat.GetValid()) Parts::Message(xml, "kGLMM_C25", {});
    for (const MCStatus& warning : stat.GetWarnings()) {
      if (warning.GetErrorCode() == MCCommon_850::MC_EMMEANS_ONE_LEVEL) {
        Parts::Message(xml, "kGLMM_C19_1", {Labels::VarName(varList, stat.GetCompareFactor())});
      }
    }
    xml.Close();
  }
}

// Our extension: a group per custom test with its rows' statistics, their
// coefficients over the fixed parameters, and the joint F test; a state
// other than 0 says why a row or the test has no statistics.
void GLMMStatXMLWriter::WriteCustomTests(GLMMXMLWriter& xml) const {
  const std::vector<GLMMCustomTestStat>& tests = fpStats->GetCustomTestStats();
  for (std::size_t k = 0; k < tests.size(); ++k) {
    const GLMMCustomTestStat& test = tests[k];
    xml.Open("DataGroup");
    xml.Attribute("description", "customTest");
    Parts::Statistic(xml, "customTestIndex", std::to_string(k + 1));
    if (!test.GetLabel().empty()) {
      xml.Open("Label");
      xml.Open("PrintableList");
      xml.Attribute("pattern", test.GetLabel());
      xml.Close();
      xml.Close();
    }
    using Row = GLMMCustomTestStat::RowData;
    const std::vector<Row>& rows = test.GetRows();
    auto column = [&rows](double Row::*field) {
      std::vector<double> values;
      for (const Row& row : rows) values.push_back(row.*field);
      return values;
    };
    std::vector<double> states;
    for (const Row& row : rows) states.push_back(static_cast<double>(row.fState));
    xml.Open("MultivariateData");
    xml.Attribute("description", "rows");
    StatisticCoordinates(xml, "estimate", column(&Row::fEstimate));
    StatisticCoordinates(xml, "testValue", column(&Row::fK));
    StatisticCoordinates(xml, "stdErr", column(&Row::fStdError));
    StatisticCoordinates(xml, "df", column(&Row::fDF));
    StatisticCoordinates(xml, "tTest", column(&Row::fT));
    StatisticCoordinates(xml, "sig", column(&Row::fSig));
    StatisticCoordinates(xml, "confIntervalLower", column(&Row::fLowerBound));
    StatisticCoordinates(xml, "confIntervalUpper", column(&Row::fUpperBound));
    StatisticCoordinates(xml, "state", states);
    xml.Close();
    xml.Open("MultivariateData");
    xml.Attribute("description", "lMatrix");
    for (const Row& row : rows) FeatureCoordinates(xml, "coefficients", row.fvFixedCoefficients);
    xml.Close();
    Parts::Statistic(xml, "jointState", std::to_string(static_cast<int>(test.GetJointState())));
    const MCMath_850::MCTestStats& joint = test.GetJoint();
    FTest(xml, joint.GetWald(), joint.GetDF(), joint.GetDF2(), joint.GetSig());
    xml.Close();
  }
}

}  // namespace MCGLMM_850
