// The documents of real fits, read back by the model viewer's reader: every
// example and every covariance structure, through the command language and
// the procedure's passes. The result model must hold exactly the numbers the
// engine computed, taken from the engine's own results.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <filesystem>
#include <functional>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/cf/CFMetaData.h"
#include "host/data/ProcedureDataSource.h"
#include "host/documents/SDOMXMLWrapper.h"
#include "host/strings/FacSTDictionary.h"
#include "host/text/NumericText.h"
#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/math/MCModelTestStats.h"
#include "numeric/math/MCTestStats.h"
#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCVarList.h"
#include "results/GNLMOutputStats.h"
#include "results/GNLMParseOutXML.h"
#include "run/MIXFactory.h"
#include "specs/MIXValidSpecs.h"

namespace fs = std::filesystem;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMSettings;
using Stats = GNLMOutputStats;

namespace {

// A generalized model's means are written on the data scale, a linear
// model's as they are.
using WrittenMeanRow = MCGLMM_850::GLMMEmmeansMean;
double WrittenMean(const WrittenMeanRow& m) { return m.HasDataScale() ? m.GetDataMean() : m.GetMean(); }
double WrittenStdError(const WrittenMeanRow& m) { return m.HasDataScale() ? m.GetDataStdError() : m.GetStdError(); }
double WrittenLower(const WrittenMeanRow& m) { return m.HasDataScale() ? m.GetDataLowerBound() : m.GetLowerBound(); }
double WrittenUpper(const WrittenMeanRow& m) { return m.HasDataScale() ? m.GetDataUpperBound() : m.GetUpperBound(); }

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// The number a document carries for an engine value: the missing value
// for one the engine left missing or that is not finite.
double AsWritten(double value) {
  return MCCommon_850::MCMV::IsMissing(value) || !std::isfinite(value) ? -DBL_MAX : value;
}

double Cell(const std::string& text) {
  if (text == "__MISSING__") return -DBL_MAX;
  bool ok = false;
  const double value = String2Double(text, &ok);
  return ok ? value : std::nan("");
}

#define EXPECT_SAME(read, engine) EXPECT_EQ((read), AsWritten(engine))

struct RoundTrips {
  int fModels = 0;
  std::string fContext;
  // The target's settings as the last model's documents gave them back.
  Stats::BuildSettingsData fLastSettings;
  std::string fLastModelFile;
};
RoundTrips gRoundTrips;

int FactorRequestNumber(const GLMMSettings& settings, int request) {
  if (settings.GetEmmeans()[U(request)].GetFactors().empty()) return -1;
  int number = 0;
  for (int r = 0; r < request; ++r) number += settings.GetEmmeans()[U(r)].GetFactors().empty() ? 0 : 1;
  return number;
}

void CheckDiagnostics(const Stats& model, const GLMMOutputStats& engine, const GLMMSettings& settings) {
  const Stats::ModelDiagnosticsData* diag = model.GetModelDiagnostics();
  ASSERT_NE(diag, nullptr);
  EXPECT_SAME(diag->fAICC, engine.GetAICC());
  EXPECT_SAME(diag->fBIC, engine.GetBIC());
  EXPECT_SAME(diag->fMinus2LogLikelihood, engine.GetLogLikehood());
  EXPECT_EQ(diag->fNumOfColsOfFixed, static_cast<int>(engine.GetBetaParameters().size()));
  int repeated = 0;
  for (const auto& st : engine.GetThetaParamStats()) repeated += st.GetBlockIndex() < 0 ? 1 : 0;
  EXPECT_EQ(diag->fNumOfCovParamOfRepeated, repeated);
  EXPECT_EQ(diag->fNumOfCovParamOfRandom, static_cast<int>(engine.GetThetaParamStats().size()) - repeated);
  if (engine.GetNCommonSubjects() >= 0) {
    EXPECT_EQ(diag->fNumOfCommonSubjects, engine.GetNCommonSubjects());
  }
  // The grand mean is the overall request's when there is one.
  const MCGLMM_850::GLMMEmmeansMean* pGrand = engine.GetGrandMean();
  for (const auto& stat : engine.GetEmmeansStats()) {
    if (stat.GetRequestIndex() >= 0 && FactorRequestNumber(settings, stat.GetRequestIndex()) < 0 && stat.GetValid()) {
      pGrand = &stat.GetMeans().front();
      break;
    }
  }
  if (pGrand != nullptr) {
    EXPECT_SAME(diag->fGrandMean, WrittenMean(*pGrand));
    EXPECT_SAME(diag->fGrandMeanStdErr, WrittenStdError(*pGrand));
    EXPECT_SAME(diag->fGrandMeanCILower, WrittenLower(*pGrand));
    EXPECT_SAME(diag->fGrandMeanCIUpper, WrittenUpper(*pGrand));
  }
  EXPECT_EQ(diag->fTargetDist.fvObserved, engine.GetTargetBinValues());
  EXPECT_EQ(diag->fTargetDist.fvFrequency, engine.GetTargetBinFrequencies());
  EXPECT_EQ(diag->fPredByObserv.fvPredicted.size(), engine.GetPredictedPoints().size());
}

void CheckTests(const Stats& model, const GLMMOutputStats& engine, const GLMMSettings& settings) {
  const Stats::EffectTestData* tests = model.GetEffectTest();
  ASSERT_NE(tests, nullptr);
  const int nEffects = static_cast<int>(settings.GetModelEffects().size());
  ASSERT_EQ(tests->fvFixedEffects.size(), U(nEffects));
  const MCMath_850::MCModelTestStats* pEngine = engine.GetTypeIIITestStats();
  ASSERT_NE(pEngine, nullptr);
  const int first = settings.GetInterceptUse() ? 1 : 0;
  for (int e = 0; e < nEffects; ++e) {
    const Stats::EffectStatData& read = tests->fvFixedEffects[U(e)];
    const MCMath_850::MCTestStats& t = pEngine->GetTestStats(first + e);
    EXPECT_EQ(read.fTestID, e);
    EXPECT_EQ(read.fTestType, 3);
    EXPECT_SAME(read.fFStatistic, t.GetWald());
    EXPECT_SAME(read.fDf1, t.GetDF());
    EXPECT_SAME(read.fDf2, t.GetDF2());
    EXPECT_SAME(read.fSig, t.GetSig());
  }
  if (nEffects == 1) {
    EXPECT_EQ(tests->fCorrectedModel.fFStatistic, tests->fvFixedEffects[0].fFStatistic);
  } else if (const MCMath_850::MCTestStats* pJoint = nEffects > 1 ? engine.GetCorrectedModelTest() : nullptr) {
    EXPECT_SAME(tests->fCorrectedModel.fFStatistic, pJoint->GetWald());
    EXPECT_SAME(tests->fCorrectedModel.fDf2, pJoint->GetDF2());
  }
}

void CheckFixedParameters(const Stats& model, const GLMMOutputStats& engine) {
  const Stats::ParamCollectData* collect = model.GetParamCollect();
  ASSERT_NE(collect, nullptr);
  const auto& beta = engine.GetBetaParameters();
  const auto& betaStats = engine.GetBetaParamStats();
  if (beta.empty()) {
    EXPECT_TRUE(collect->fvFixedParamEstim.empty());
    return;
  }
  ASSERT_EQ(collect->fvFixedParamEstim.size(), 1u);
  const std::vector<Stats::ParamStatsData>& read = collect->fvFixedParamEstim[0].fvParamStats;
  // An ordinal target's thresholds come first, in the intercept's place.
  const std::vector<MCMath_850::BetaParamStat>& thresholds = engine.GetThresholdStats();
  const bool ordinal = !thresholds.empty();
  ASSERT_EQ(read.size(), beta.size() + thresholds.size() - (ordinal ? 1u : 0u));
  std::size_t k = 0;
  for (std::size_t j = 0; j < thresholds.size(); ++j) {
    const Stats::ParamStatsData& p = read[k++];
    EXPECT_EQ(p.fParamName, "T" + std::to_string(j));
    EXPECT_FALSE(p.fRegrParam.fIsIntercept);
    EXPECT_EQ(p.fStatisticValue, -1);
    ASSERT_EQ(p.fRegrParam.fvFactors.size(), 1u);
    EXPECT_EQ(std::stod(p.fRegrParam.fvFactors[0].fValue.GetStringValue()), engine.GetTargetCategories()[j]);
    EXPECT_SAME(p.fEstimate, thresholds[j].GetEstimate());
    EXPECT_SAME(p.fStdError, thresholds[j].GetStdError());
    EXPECT_SAME(p.fSig, thresholds[j].GetSig());
  }
  for (std::size_t i = 0; i < beta.size(); ++i) {
    if (ordinal && beta[i].IsIntercept()) continue;
    const Stats::ParamStatsData& p = read[k++];
    const MCMath_850::BetaParamStat& st = betaStats[i];
    EXPECT_EQ(p.fParamName, "B" + std::to_string(i));
    EXPECT_EQ(p.fRegrParam.fIsIntercept, beta[i].IsIntercept());
    EXPECT_EQ(p.fStatisticValue, beta[i].IsIntercept() ? -1 : beta[i].GetEffectIndex());
    EXPECT_SAME(p.fEstimate, st.GetEstimate());
    EXPECT_SAME(p.fStdError, st.GetStdError());
    EXPECT_SAME(p.fDf, st.GetDF());
    EXPECT_SAME(p.fTTest, st.GetTStat());
    EXPECT_SAME(p.fSig, st.GetSig());
    EXPECT_SAME(p.fConfIntervalLower, st.GetLowerBound());
    EXPECT_SAME(p.fConfIntervalUpper, st.GetUpperBound());
    EXPECT_EQ(p.fIsRedundant, st.GetRedundant());
    std::string label;
    EXPECT_TRUE(model.formatEffectLabel(p.fRegrParam, label));
    EXPECT_FALSE(label.empty());
  }
}

void CheckCovarianceSet(const Stats& model, const std::vector<Stats::ParamStatsData>& read,
                        const GLMMOutputStats& engine, int block) {
  std::vector<const MCGLMM_850::GLMMThetaParamStat*> theta;
  for (const auto& st : engine.GetThetaParamStats()) {
    if (st.GetBlockIndex() == block) theta.push_back(&st);
  }
  ASSERT_EQ(read.size(), theta.size()) << "block " << block;
  for (std::size_t k = 0; k < theta.size(); ++k) {
    const Stats::ParamStatsData& p = read[k];
    EXPECT_EQ(p.fParamName, theta[k]->GetLabel());
    EXPECT_SAME(p.fEstimate, theta[k]->GetEstimate());
    EXPECT_SAME(p.fStdError, theta[k]->GetStdError());
    EXPECT_SAME(p.fZTest, theta[k]->GetWaldZ());
    EXPECT_SAME(p.fSig, theta[k]->GetSig());
    EXPECT_SAME(p.fConfIntervalLower, theta[k]->GetLowerBound());
    EXPECT_SAME(p.fConfIntervalUpper, theta[k]->GetUpperBound());
    EXPECT_EQ(p.fIsRedundant, theta[k]->GetRedundant());
    // Every label is a key of the string tables, made with its arguments.
    std::string key, text;
    std::vector<std::string> args;
    EXPECT_TRUE(model.formatRandomEffectLabel(p.fParamList, static_cast<unsigned long>(block), key, args, text))
        << theta[k]->GetLabel();
    EXPECT_TRUE(p.fParamList.fIsKey) << theta[k]->GetLabel();
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text.find('^'), std::string::npos) << text;
  }
}

void CheckCovarianceParameters(const Stats& model, const GLMMOutputStats& engine) {
  const Stats::ParamCollectData* collect = model.GetParamCollect();
  ASSERT_NE(collect, nullptr);
  // A distribution that fixes the scale has no residual parameter.
  std::size_t residual = 0;
  for (const auto& st : engine.GetThetaParamStats()) residual += st.GetBlockIndex() < 0 ? 1 : 0;
  ASSERT_EQ(collect->fvRepeatedParamEstim.size(), residual > 0 ? 1u : 0u);
  if (residual > 0) CheckCovarianceSet(model, collect->fvRepeatedParamEstim[0].fvParamStats, engine, -1);
  for (std::size_t b = 0; b < collect->fvRandomParamEstim.size(); ++b) {
    const Stats::ParamEstimBlockCollection& block = collect->fvRandomParamEstim[b];
    EXPECT_EQ(block.fBlockIndex, static_cast<std::int64_t>(b));
    ASSERT_EQ(block.fvParamEstim.size(), 1u);
    CheckCovarianceSet(model, block.fvParamEstim[0].fvParamStats, engine, static_cast<int>(b));
  }
}

void CheckColumn(const Stats::CoordinatesData& column, const std::vector<double>& engine) {
  ASSERT_EQ(column.fValues.size(), engine.size()) << column.fStatistic;
  for (std::size_t i = 0; i < engine.size(); ++i) EXPECT_SAME(Cell(column.fValues[i]), engine[i]) << column.fStatistic;
}

template <typename Row, typename Get>
std::vector<double> ColumnOf(const std::vector<Row>& rows, Get get) {
  std::vector<double> values;
  for (const Row& row : rows) values.push_back(std::invoke(get, row));
  return values;
}

void CheckMeans(const Stats::EMMEANSEstimatesData& read, const MCGLMM_850::GLMMEmmeansStat& stat) {
  CheckColumn(read.fMean, ColumnOf(stat.GetMeans(), WrittenMean));
  CheckColumn(read.fStdErr, ColumnOf(stat.GetMeans(), WrittenStdError));
  CheckColumn(read.fConfIntervalLower, ColumnOf(stat.GetMeans(), WrittenLower));
  CheckColumn(read.fConfIntervalUpper, ColumnOf(stat.GetMeans(), WrittenUpper));
  EXPECT_EQ(read.fvGroup.size(), stat.GetFactors().size());
}

void CheckMarginalMeans(const Stats& model, const GLMMOutputStats& engine, const GLMMSettings& settings) {
  const Stats::BuildSettingsData* build = model.GetBuildSettings();
  int requests = 0;
  for (const auto& spec : settings.GetEmmeans()) requests += spec.GetFactors().empty() ? 0 : 1;
  EXPECT_EQ(build->fvEMMEANS.size(), U(requests));
  std::size_t custom = 0;
  std::size_t signif = 0;
  for (const auto& stat : engine.GetEmmeansStats()) {
    if (stat.GetRequestIndex() < 0) {
      if (!stat.GetValid()) continue;
      ASSERT_NE(model.GetEMMEANSSignifCollect(), nullptr);
      ASSERT_LT(signif, model.GetEMMEANSSignifCollect()->size());
      CheckMeans((*model.GetEMMEANSSignifCollect())[signif++], stat);
      continue;
    }
    ASSERT_NE(model.GetEMMEANSCustomCollect(), nullptr);
    ASSERT_LT(custom, model.GetEMMEANSCustomCollect()->size());
    const Stats::EMMEANSCustomData& read = (*model.GetEMMEANSCustomCollect())[custom++];
    const int number = FactorRequestNumber(settings, stat.GetRequestIndex());
    EXPECT_EQ(read.fEMMEANSIndex, number);
    if (number >= 0) {
      const Stats::EMMEANSData& request = build->fvEMMEANS[U(number)];
      EXPECT_EQ(request.fFactors.fvFieldIndices.size(), stat.GetFactors().size());
    }
    CheckMeans(read.fEstimates, stat);
    EXPECT_EQ(read.fvFieldValues.size(), stat.GetCovariates().size());
    for (std::size_t k = 0; k < read.fvFieldValues.size(); ++k) {
      ASSERT_NE(read.fvFieldValues[k].fValue.GetObsValue(), nullptr);
      EXPECT_EQ(read.fvFieldValues[k].fValue.GetObsValue()->fNum, stat.GetCovariateValues()[k]);
    }
    using Contrast = MCGLMM_850::GLMMEmmeansContrast;
    if (!stat.GetContrasts().empty() && stat.GetCompareFactor() >= 0) {
      CheckColumn(read.fContrasts.fContrastEstimate, ColumnOf(stat.GetContrasts(), &Contrast::GetEstimate));
      CheckColumn(read.fContrasts.fStdErr, ColumnOf(stat.GetContrasts(), &Contrast::GetStdError));
      CheckColumn(read.fContrasts.fDf, ColumnOf(stat.GetContrasts(), &Contrast::GetDF));
      CheckColumn(read.fContrasts.fAdjustedSig, ColumnOf(stat.GetContrasts(), &Contrast::GetAdjustedSig));
      EXPECT_EQ(read.fContrasts.fvGroup.size(), stat.GetFactors().size() + 1);
    }
    ASSERT_EQ(read.fvOverallTests.size(), stat.GetTests().size());
    for (std::size_t t = 0; t < stat.GetTests().size(); ++t) {
      EXPECT_SAME(read.fvOverallTests[t].fFStatistic, stat.GetTests()[t].GetF());
      EXPECT_SAME(read.fvOverallTests[t].fDf1, stat.GetTests()[t].GetDF1());
      EXPECT_SAME(read.fvOverallTests[t].fDf2, stat.GetTests()[t].GetDF2());
      EXPECT_SAME(read.fvOverallTests[t].fSig, stat.GetTests()[t].GetSig());
      EXPECT_EQ(read.fvOverallTests[t].fFieldIndices.size() + 1, stat.GetFactors().size());
    }
  }
  EXPECT_EQ(custom, model.GetEMMEANSCustomCollect() != nullptr ? model.GetEMMEANSCustomCollect()->size() : 0u);
}

void CheckFirstSubject(const Stats& model, const GLMMOutputStats& engine, const MCXML_850::MCVarList& varList) {
  if (engine.GetSubjectVars().empty()) {
    EXPECT_TRUE(model.GetStructuredData() == nullptr || model.GetStructuredData()->fSubjectData.fFieldNames.empty());
    return;
  }
  const Stats::StructuredData* data = model.GetStructuredData();
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->fTotalFreq, engine.GetFirstSubjectNRecords());
  ASSERT_EQ(data->fSubjectData.fFieldNames.size(), engine.GetSubjectVars().size());
  for (std::size_t k = 0; k < engine.GetSubjectVars().size(); ++k) {
    const auto* variable = varList.GetVarAt(engine.GetSubjectVars()[k]);
    EXPECT_EQ(data->fSubjectData.fFieldNames[k], variable->GetFieldName());
    const int code = static_cast<int>(engine.GetFirstSubjectValues()[k]);
    EXPECT_EQ(data->fSubjectData.fNumCategories[k], variable->GetNCategories());
    if (variable->GetStringWidth() == 0) {
      ASSERT_NE(data->fSubjectData.fSubjectValues[k].GetObsValue(), nullptr);
      EXPECT_EQ(data->fSubjectData.fSubjectValues[k].GetObsValue()->fNum, variable->GetCategoryValues()[U(code)]);
    }
  }
  const std::vector<double>& targets = engine.GetFirstSubjectTargets();
  ASSERT_EQ(data->fvTargetValues.size(), targets.size());
  for (std::size_t r = 0; r < targets.size(); ++r) {
    ASSERT_NE(data->fvTargetValues[r].GetObsValue(), nullptr);
    EXPECT_EQ(data->fvTargetValues[r].GetObsValue()->fNum, targets[r]);
  }
  ASSERT_EQ(data->fvRepMeasVars.size(), engine.GetRepeatedVars().size());
  for (std::size_t v = 0; v < engine.GetRepeatedVars().size(); ++v) {
    EXPECT_EQ(data->fvRepMeasVars[v].fField, varList.GetVarAt(engine.GetRepeatedVars()[v])->GetFieldName());
    EXPECT_EQ(data->fvRepMeasVars[v].fValues.size(), engine.GetFirstSubjectRepeated()[v].size());
  }
}

void CheckRandomCovariances(const Stats& model, const GLMMOutputStats& engine, const GLMMSettings& settings) {
  std::size_t blocks = 0;
  for (const auto& columns : engine.GetGammaBasicParameters()) blocks += columns.empty() ? 0 : 1;
  if (blocks == 0) return;
  ASSERT_NE(model.GetStructuredData(), nullptr);
  const auto& matrices = model.GetStructuredData()->fvRandEffCovarMats;
  ASSERT_EQ(matrices.size(), blocks);
  for (std::size_t b = 0; b < matrices.size(); ++b) {
    const std::size_t q = engine.GetGammaBasicParameters()[b].size();
    ASSERT_EQ(matrices[b].fEffectLabels.size(), q);
    ASSERT_EQ(matrices[b].fMatrixValues.size(), 1u);
    const Stats::ClassifMatrixData& matrix = matrices[b].fMatrixValues[0];
    ASSERT_EQ(matrix.fNumRows, static_cast<int>(q));
    for (std::size_t i = 0; i < q; ++i) {
      for (std::size_t j = 0; j < q; ++j) EXPECT_EQ(matrix.fRows[i].fValues[j], matrix.fRows[j].fValues[i]);
    }
    // An unstructured G holds its parameters as they stand.
    if (settings.GetRandomSpecs()[b].GetCovarianceType() == GLMMConst_850::UN) {
      std::size_t k = 0;
      for (const auto& st : engine.GetThetaParamStats()) {
        if (st.GetBlockIndex() != static_cast<int>(b)) continue;
        const std::size_t i = static_cast<std::size_t>((std::sqrt(8.0 * k + 1) - 1) / 2);
        const std::size_t j = k - i * (i + 1) / 2;
        EXPECT_SAME(matrix.fRows[i].fValues[j], st.GetEstimate());
        ++k;
      }
    }
  }
}

// Writes the fit's documents as the procedure does and reads them back.
void RoundTrip(GLMMAlgorithm& algorithm, const GLMMSettings& settings, const MCXML_850::MCVarList& varList,
               ProcedureDataSource& data) {
  SCOPED_TRACE(gRoundTrips.fContext);
  const GLMMOutputStats* pEngine = algorithm.GetOutputStats();
  ASSERT_NE(pEngine, nullptr);
  std::ostringstream pmml, statXML;
  ASSERT_FALSE(algorithm.ExportPMML(pmml, nullptr).IsError());
  ASSERT_FALSE(algorithm.ExportStatXML(statXML).IsError());
  const std::string pmmlText = pmml.str();
  const std::string statXMLText = statXML.str();
  CFMetaData metaData(data);
  Stats model;
  model.SetDictMetadata(&metaData);
  GNLMParseOutXML reader(nullptr, &data, &model, pmmlText, statXMLText);
  ASSERT_TRUE(reader.ParseXML()) << statXMLText;
  ++gRoundTrips.fModels;
  ASSERT_NE(model.GetBuildSettings(), nullptr);
  gRoundTrips.fLastSettings = *model.GetBuildSettings();
  gRoundTrips.fLastModelFile = pmmlText;
  EXPECT_EQ(model.GetBuildSettings()->fTargetIndex, data.FindVarIndex(varList.GetVarAt(settings.GetDependent())->GetName().c_str(), 0));
  EXPECT_EQ(model.GetBuildSettings()->fvRandomSpecs.size(), settings.GetRandomSpecs().size());
  EXPECT_NE(model.GetBuildSettings()->fResidualCovarianceType, Stats::COV_UNKNOWN);
  for (const Stats::RandomSpecsData& block : model.GetBuildSettings()->fvRandomSpecs) {
    EXPECT_NE(block.fCovarianceType, Stats::COV_UNKNOWN);
  }
  CheckDiagnostics(model, *pEngine, settings);
  CheckTests(model, *pEngine, settings);
  CheckFixedParameters(model, *pEngine);
  CheckCovarianceParameters(model, *pEngine);
  CheckMarginalMeans(model, *pEngine, settings);
  CheckFirstSubject(model, *pEngine, varList);
  CheckRandomCovariances(model, *pEngine, settings);
}

// The procedure's passes up to the fits, then a round trip per fitted
// split.
void RoundTripProcedure(void* command, BpProcedure& procedure, ProcedureDataSource& data) {
  MIXValidSpecs specs(command, data);
  specs.SetMixedSpecs();
  specs.CompleteSpecs();
  if (specs.GetCompSettingsPtr() == nullptr) return;
  MIXFactory factory(&specs, data, &procedure);
  // A split file goes on whatever one split's data pass said.
  const bool splitFile = factory.GetInputAdapter()->GetSplitFile();
  while (factory.StartNewSplit(true)) {
    if (factory.ProcedureDataPass(true) || splitFile) factory.CompleteMetaData();
  }
  if (!factory.CreateParamAggregators() || !factory.PrepareComponentRun(true)) return;
  while (factory.StartNewSplit(true)) factory.RunGLMMComponent();
  for (std::size_t i = 0; i < factory.GetAlgorithms().size(); ++i) {
    GLMMAlgorithm* pAlgorithm = factory.GetAlgorithms()[i];
    if (pAlgorithm == nullptr || pAlgorithm->GetStatus().IsError()) continue;
    RoundTrip(*pAlgorithm, *factory.GetCompSettingsList()[i], *factory.GetVarLists()[i], data);
  }
}

class AppRoundTrip : public ::testing::Test {
 protected:
  void SetUp() override {
    AppProcedureHook::Set(RoundTripProcedure);
    gRoundTrips = RoundTrips();
    fOutput = fs::temp_directory_path() / ("glmixfit-roundtrip-test-" + std::to_string(::getpid()));
    FacSTDictionary::ClearMissingKeys();
  }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    std::error_code ec;
    fs::remove_all(fOutput, ec);
  }

  int Run(const std::string& text, const std::string& context, int exitStatus = 0) {
    gRoundTrips = RoundTrips();
    gRoundTrips.fContext = context;
    AppOptions options;
    options.fOutputDir = fOutput.string();
    AppSession session(options);
    session.RunText(text, "t.gmx", std::string(GLMIX_SOURCE_DIR) + "/examples");
    EXPECT_EQ(session.ExitStatus(), exitStatus) << context;
    return gRoundTrips.fModels;
  }

  // Every structure of a list, fitted once each and read back: the command
  // is the text before and after the structure's keyword.
  void RunStructures(const std::vector<std::string>& structures, const std::string& before, const std::string& after,
                     const std::string& context) {
    for (const std::string& structure : structures) {
      EXPECT_EQ(Run(before + structure + after, context + structure), 1) << structure;
    }
  }

  fs::path fOutput;
};

const std::vector<std::string> kStructures = {"AD1", "AR1", "ARH1", "ARMA11", "CS", "CSH", "CSR", "DIAG", "FA1",
                                              "FAH1", "HF", "ID", "TP", "TPH", "UN", "UNR", "VC"};

}  // namespace

TEST_F(AppRoundTrip, EveryExampleReadsBackWithTheEnginesNumbers) {
  int files = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(GLMIX_SOURCE_DIR) / "examples")) {
    if (entry.path().extension() != ".gmx") continue;
    const std::string name = entry.path().stem().string();
    std::ifstream in(entry.path());
    std::stringstream text;
    text << in.rdbuf();
    // The example of failures has a command that fails on purpose.
    const int models = Run(text.str(), name, name == "failures" ? 1 : 0);
    ++files;
    EXPECT_GE(models, 1) << name;
  }
  EXPECT_GE(files, 10);
  EXPECT_TRUE(FacSTDictionary::GetMissingKeys().empty()) << *FacSTDictionary::GetMissingKeys().begin();
}

TEST_F(AppRoundTrip, EveryResidualStructureReadsBack) {
  const std::string data = "LOAD 'data/orthodont.csv'.\nGLMIXFIT distance BY Sex WITH age\n  /FIXED Sex age\n";
  RunStructures(kStructures, data + "  /RESIDUAL INDEX=age SUBJECTS=Subject STRUCTURE=", ".\n", "residual ");
  RunStructures({"POWER", "EXPONENTIAL", "GAUSSIAN", "LINEAR", "LINEARLOG", "SPHERICAL"},
                data + "  /RESIDUAL COORDINATES=age SUBJECTS=Subject STRUCTURE=", ".\n", "spatial ");
  EXPECT_TRUE(FacSTDictionary::GetMissingKeys().empty()) << *FacSTDictionary::GetMissingKeys().begin();
}

TEST_F(AppRoundTrip, EveryRandomStructureReadsBack) {
  RunStructures(kStructures,
                "LOAD 'data/sleepstudy.csv'.\nGLMIXFIT Reaction WITH Days\n  /FIXED Days\n"
                "  /RANDOM INTERCEPT Days SUBJECTS=Subject STRUCTURE=",
                "\n  /MEANS OVERALL AT=Days(3).\n", "random ");
  EXPECT_TRUE(FacSTDictionary::GetMissingKeys().empty()) << *FacSTDictionary::GetMissingKeys().begin();
}

// The documents carry the target's distribution and link, and its trials;
// the viewer reads them back by its own tokens.
TEST_F(AppRoundTrip, TheTargetsDistributionAndLinkReadBack) {
  const std::string data = "LOAD 'data/cbpp.csv'.\nGLMIXFIT incidence BY period\n  /FIXED period\n"
                           "  /RANDOM INTERCEPT SUBJECTS=herd\n";
  ASSERT_EQ(Run(data + ".\n", "linear"), 1);
  const Stats::BuildSettingsData& read = gRoundTrips.fLastSettings;
  EXPECT_EQ(read.fDistribution, Stats::NORMAL);
  EXPECT_EQ(read.fLinkFunction, Stats::IDENTITY);
  EXPECT_FALSE(read.fUseTrials);
  EXPECT_NE(gRoundTrips.fLastModelFile.find("distribution=\"normal\" linkFunction=\"identity\""), std::string::npos);

  ASSERT_EQ(Run(data + "  /TARGET DISTRIBUTION=BINOMIAL TRIALS=size.\n", "binomial"), 1);
  EXPECT_EQ(read.fDistribution, Stats::BINOMIAL);
  EXPECT_EQ(read.fLinkFunction, Stats::LOGIT);
  EXPECT_TRUE(read.fUseTrials);
  EXPECT_EQ(read.fTrialsField, "size");
  EXPECT_GE(read.fTrialsIndex, 0);
  EXPECT_NE(gRoundTrips.fLastModelFile.find("distribution=\"binomial\" linkFunction=\"logit\""), std::string::npos);
  EXPECT_NE(gRoundTrips.fLastModelFile.find("trialsVariable=\"size\""), std::string::npos);

  ASSERT_EQ(Run(data + "  /TARGET DISTRIBUTION=BINOMIAL LINK=NLOGLOG TRIALS=60.\n", "fixed trials"), 1);
  EXPECT_EQ(read.fLinkFunction, Stats::NLOGLOG);
  EXPECT_TRUE(read.fUseTrials);
  EXPECT_EQ(read.fTrialsIndex, -1);
  EXPECT_EQ(read.fTrialsValue, 60);
  EXPECT_NE(gRoundTrips.fLastModelFile.find("linkFunction=\"loglog\" trialsValue=\"60\""), std::string::npos);

  ASSERT_EQ(Run(data + "  /TARGET DISTRIBUTION=POISSON LINK=POWER(0.5).\n", "poisson"), 1);
  EXPECT_EQ(read.fDistribution, Stats::POISSON);
  EXPECT_EQ(read.fLinkFunction, Stats::POWER);
  EXPECT_EQ(read.fLinkParam, 0.5);
  EXPECT_FALSE(read.fUseTrials);
  EXPECT_NE(gRoundTrips.fLastModelFile.find("linkFunction=\"power\" linkParameter=\"0.5\""), std::string::npos);
  EXPECT_TRUE(FacSTDictionary::GetMissingKeys().empty()) << *FacSTDictionary::GetMissingKeys().begin();
}

namespace {

// The parameter matrix of a cumulative model file: the thresholds by
// target category and each other parameter's coefficient.
struct CumulativeModel {
  std::map<std::string, double> fmThresholds;
  std::map<std::string, double> fmCoefficients;
  // Each parameter's factor categories, field to value.
  std::map<std::string, std::map<std::string, std::string>> fmCells;

  // theta_j + the coefficients of the parameters whose categories the
  // record has.
  double Predictor(const std::string& category, const std::map<std::string, std::string>& record) const {
    double r = fmThresholds.at(category);
    for (const auto& [parameter, beta] : fmCoefficients) {
      const auto cells = fmCells.find(parameter);
      bool applies = cells != fmCells.end();
      for (const auto& [field, value] : applies ? cells->second : std::map<std::string, std::string>()) {
        applies = applies && record.at(field) == value;
      }
      if (applies) r += beta;
    }
    return r;
  }
};

std::string Attribute(const SDOMXMLWrapper* element, const std::string& name) {
  std::string value;
  element->GetAttribute(name, value);
  return value;
}

CumulativeModel ReadCumulativeModel(SDOMXMLWrapper& document) {
  CumulativeModel model;
  SDOMXMLWrapper* matrix = nullptr;
  if (document.GetFirstElement("GeneralRegressionModel/PPMatrix", &matrix)) {
    for (SDOMXMLWrapper* cell : SDOMXMLWrapper::GetChildren(matrix, "PPCell")) {
      model.fmCells[Attribute(cell, "parameterName")][Attribute(cell, "predictorName")] = Attribute(cell, "value");
    }
  }
  if (document.GetFirstElement("GeneralRegressionModel/ParamMatrix", &matrix)) {
    for (SDOMXMLWrapper* cell : SDOMXMLWrapper::GetChildren(matrix, "PCell")) {
      const double beta = std::stod(Attribute(cell, "beta"));
      if (cell->HasAttribute("targetCategory")) {
        model.fmThresholds[Attribute(cell, "targetCategory")] = beta;
      } else {
        model.fmCoefficients[Attribute(cell, "parameterName")] = beta;
      }
    }
  }
  return model;
}

// The first records of the wine data, field to value, quotes removed.
std::vector<std::map<std::string, std::string>> WineRecords(std::size_t n) {
  std::ifstream in(std::string(GLMIX_SOURCE_DIR) + "/examples/data/wine.csv");
  auto split = [](const std::string& line) {
    std::vector<std::string> fields;
    std::stringstream stream(line);
    std::string field;
    while (std::getline(stream, field, ',')) {
      field.erase(std::remove(field.begin(), field.end(), '"'), field.end());
      fields.push_back(field);
    }
    return fields;
  };
  std::string line;
  std::getline(in, line);
  const std::vector<std::string> names = split(line);
  std::vector<std::map<std::string, std::string>> records;
  while (records.size() < n && std::getline(in, line)) {
    const std::vector<std::string> values = split(line);
    std::map<std::string, std::string> record;
    for (std::size_t i = 0; i < names.size() && i < values.size(); ++i) record[names[i]] = values[i];
    records.push_back(record);
  }
  return records;
}

double Logistic(double x) { return 1.0 / (1.0 + std::exp(-x)); }

// The probabilities of the five wine ratings from their cumulative ones,
// P(Y <= j) for j = 1 .. 4.
std::vector<double> CategoryProbabilities(const std::function<double(int)>& cumulative) {
  std::vector<double> p;
  double below = 0.0;
  for (int j = 1; j <= 5; ++j) {
    const double next = j == 5 ? 1.0 : cumulative(j);
    p.push_back(next - below);
    below = next;
  }
  return p;
}

}  // namespace

// The model file of an ordinal fit holds its thresholds under the
// intercept's parameter and scores in the standard cumulative form, giving
// the records the probabilities of the same fit by clmm (its random effects
// at 0, which the file does not hold).
TEST_F(AppRoundTrip, AnOrdinalModelFileScoresWithTheFitsProbabilities) {
  std::ifstream example(std::string(GLMIX_SOURCE_DIR) + "/examples/wine.gmx");
  std::stringstream text;
  text << example.rdbuf();
  ASSERT_EQ(Run(text.str(), "wine"), 1);
  SDOMXMLWrapper document;
  ASSERT_TRUE(document.LoadFromString(gRoundTrips.fLastModelFile));
  SDOMXMLWrapper* model = nullptr;
  ASSERT_TRUE(document.GetFirstElement("GeneralRegressionModel", &model));
  EXPECT_EQ(Attribute(model, "modelType"), "ordinalMultinomial");
  EXPECT_EQ(Attribute(model, "functionName"), "classification");
  EXPECT_EQ(Attribute(model, "cumulativeLink"), "logit");
  const CumulativeModel read = ReadCumulativeModel(document);
  ASSERT_EQ(read.fmThresholds.size(), 4u);

  std::ifstream in(std::string(GLMIX_SOURCE_DIR) + "/tests/data/numeric/reference/ordinal.json");
  ASSERT_TRUE(in.good());
  const nlohmann::json fits = nlohmann::json::parse(in)["fits"];
  nlohmann::json ref;
  for (const nlohmann::json& fit : fits) {
    if (fit["link"] == "LOGIT" && fit["nAGQ"] == 10) ref = fit;
  }
  ASSERT_FALSE(ref.is_null());
  // Two judges' records: every combination of temperature and contact.
  for (const std::map<std::string, std::string>& record : WineRecords(16)) {
    const double eta = (record.at("temp") == "cold" ? ref["beta"][0].get<double>() : 0.0) +
                       (record.at("contact") == "no" ? ref["beta"][1].get<double>() : 0.0);
    const std::vector<double> byFile = CategoryProbabilities(
        [&](int j) { return Logistic(read.Predictor(std::to_string(j), record)); });
    const std::vector<double> byReference = CategoryProbabilities(
        [&](int j) { return Logistic(ref["thresholds"][U(j - 1)].get<double>() - eta); });
    for (std::size_t j = 0; j < byFile.size(); ++j) {
      EXPECT_NEAR(byFile[j], byReference[j], 1e-4) << record.at("temp") << " " << record.at("contact") << " " << j;
    }
    EXPECT_EQ(std::max_element(byFile.begin(), byFile.end()) - byFile.begin(),
              std::max_element(byReference.begin(), byReference.end()) - byReference.begin());
  }
}
