// The settings that reach the engine's options through GLMMAlgorithm: the
// degrees of freedom type, the covariance type of the fixed estimates and the
// cancel pointer. Reference values from tests/numeric/reference/make_reference.R.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCProgressObserver.h"
#include "numeric/common/MCQueryCancel.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCModelEffect;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

nlohmann::json Fixture(const std::string& name) {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/" + name + ".json");
  EXPECT_TRUE(in.good()) << name;
  return nlohmann::json::parse(in);
}

// Reaction 0, Days 1, Subject 2: fixed intercept and Days, a random
// intercept and slope by Subject, unstructured.
struct Sleepstudy {
  Sleepstudy() {
    EXPECT_TRUE(fRecords.Load(std::string(GLMIX_SOURCE_DIR) + "/examples/data/sleepstudy.csv",
                              {"Reaction", "Days", "Subject"}, {"Subject"}));
    fSettings.SetSingleDependent(0);
    fSettings.AddCovariate(1);
    const std::vector<int> set = {1};
    MCModelEffect days;
    days.Setup(0, 1, &set);
    days.AddCovariate(1);
    days.SetVarsIndicesForTheEffectInSetting({1});
    fSettings.AddModelEffect(days);
    GLMMRandomSpec block;
    block.AddEffect(MCModelEffect());
    block.AddEffect(days);
    block.AddSubjectVar(2);
    block.SetCovarianceType(GLMMConst_850::UN);
    block.SetIndex(0);
    fSettings.AddRandomSpec(block);
  }

  GLMMTestRecords fRecords;
  GLMMSettings fSettings;
};

class CancelNow : public MCCommon_850::MCQueryCancel {
 public:
  bool IsCancelled() const override {
    ++fCount;
    return true;
  }
  mutable int fCount = 0;
};

// The fixed estimates (Intercept, Days) and the Type III test of Days
// against a section of the sleepstudy reference.
void CompareSection(const GLMMOutputStats& stats, const std::string& section) {
  SCOPED_TRACE(section);
  const nlohmann::json ref = Fixture("sleepstudy_un");
  const nlohmann::json& sec = ref[section];
  const bool robust = section == "robust";
  ASSERT_EQ(stats.GetBetaParamStats().size(), 2u);
  const MCMath_850::MCSymMatrix* pCov = stats.GetCovarianceMatrixBeta();
  ASSERT_NE(pCov, nullptr);
  for (int i = 0; i < 2; ++i) {
    const MCMath_850::BetaParamStat& b = stats.GetBetaParamStats()[U(i)];
    const nlohmann::json& r = sec["beta"][U(i)];
    const double se = robust ? r["se"].get<double>() : ref["beta"][U(i)]["se"].get<double>();
    EXPECT_NEAR(b.GetStdError(), se, 1e-5 * se);
    EXPECT_NEAR(std::sqrt(pCov->GetElem(0, 0, i, i)), se, 1e-5 * se);
    EXPECT_EQ(b.GetDF(), r["df"].get<double>());
    EXPECT_NEAR(b.GetSig(), r["p"].get<double>(), 1e-3 * r["p"].get<double>() + 1e-12);
  }
  if (robust) {
    EXPECT_NEAR(pCov->GetElem(0, 0, 1, 0), sec["cov"][1][0].get<double>(), 1e-5 * sec["cov"][0][0].get<double>());
  }
  const MCMath_850::MCModelTestStats* pTests = stats.GetTypeIIITestStats();
  ASSERT_NE(pTests, nullptr);
  ASSERT_EQ(pTests->GetNTests(), 2);
  const nlohmann::json& t = sec["typeIII"][0];
  EXPECT_NEAR(pTests->GetTestStats(1).GetWald(), t["F"].get<double>(), 1e-5 * t["F"].get<double>());
  EXPECT_EQ(pTests->GetTestStats(1).GetDF2(), t["denDF"].get<double>());
}

}  // namespace

TEST(GLMMAlgorithmOptions, ResidualDegreesOfFreedom) {
  Sleepstudy m;
  m.fSettings.SetDegreesFreedomType(GLMMConst_850::DF_RESIDUAL);
  GLMMAlgorithm algorithm(m.fSettings, m.fRecords.GetVarList());
  ASSERT_TRUE(algorithm.Execute(&m.fRecords, 0).IsOK());
  ASSERT_NE(algorithm.GetOutputStats(), nullptr);
  CompareSection(*algorithm.GetOutputStats(), "residual_df");
}

TEST(GLMMAlgorithmOptions, RobustCovarianceOfTheFixedEstimates) {
  Sleepstudy m;
  m.fSettings.SetCovbType(MCMath_850::MCConst::COVB_ROBUST);
  GLMMAlgorithm algorithm(m.fSettings, m.fRecords.GetVarList());
  ASSERT_TRUE(algorithm.Execute(&m.fRecords, 0).IsOK());
  ASSERT_NE(algorithm.GetOutputStats(), nullptr);
  CompareSection(*algorithm.GetOutputStats(), "robust");
  // The covariance parameters are those of the model-based fit.
  const nlohmann::json ref = Fixture("sleepstudy_un");
  const auto& thetaStats = algorithm.GetOutputStats()->GetThetaParamStats();
  ASSERT_EQ(thetaStats.size(), 4u);
  EXPECT_NEAR(thetaStats[3].GetStdError(), ref["covparams"][3]["se"].get<double>(),
              1e-4 * ref["covparams"][3]["se"].get<double>());
}

TEST(GLMMAlgorithmOptions, CancelStopsTheFit) {
  Sleepstudy m;
  CancelNow cancel;
  m.fSettings.SetCancelPointer(&cancel);
  GLMMAlgorithm algorithm(m.fSettings, m.fRecords.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&m.fRecords, 0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_CANCELLED);
  EXPECT_EQ(algorithm.GetStatus().GetErrorCode(), MCCommon_850::MC_CANCELLED);
  // The fit's first evaluation asks and stops; the fit's end asks once more.
  EXPECT_EQ(cancel.fCount, 2);
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
  EXPECT_TRUE(algorithm.GetWarnings().empty());
}

namespace {

// A stop query that also watches the iterations, as the host's does.
class WatchingCancel : public MCCommon_850::MCQueryCancel, public MCCommon_850::MCProgressObserver {
 public:
  bool IsCancelled() const override { return false; }
  void Iteration(int, double criterion) const override { fvCriteria.push_back(criterion); }
  mutable std::vector<double> fvCriteria;
};

}  // namespace

TEST(GLMMAlgorithmOptions, AStopQueryThatWatchesTheProgressIsToldTheIterations) {
  Sleepstudy m;
  WatchingCancel cancel;
  m.fSettings.SetCancelPointer(&cancel);
  GLMMAlgorithm algorithm(m.fSettings, m.fRecords.GetVarList());
  ASSERT_TRUE(algorithm.Execute(&m.fRecords, 0).IsOK());
  ASSERT_FALSE(cancel.fvCriteria.empty());
  // The last iteration stands at the reference fit's -2 restricted log likelihood.
  const double reference = Fixture("sleepstudy_un")["minus2ll"].get<double>();
  EXPECT_NEAR(cancel.fvCriteria.back(), reference, 1e-6 * reference);
}

TEST(GLMMAlgorithmOptions, CovarianceParameterOnItsBound) {
  // y 0, g 1: every group has the same mean, so the group variance is 0.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/options/boundary.csv", {"y", "g"}, {"g"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(1, 6);
  const std::vector<int> set = {1};
  MCModelEffect group;
  group.Setup(1, 0, &set);
  group.AddNewFactor(1, false);
  group.SetVarsIndicesForTheEffectInSetting({1});
  GLMMRandomSpec block;
  block.AddEffect(group);
  block.SetCovarianceType(GLMMConst_850::VC);
  block.SetIndex(0);
  settings.AddRandomSpec(block);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&records, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  const auto& thetaStats = pStats->GetThetaParamStats();
  ASSERT_EQ(thetaStats.size(), 2u);
  const MCGLMM_850::GLMMThetaParamStat& variance = thetaStats[0];
  EXPECT_EQ(variance.GetEstimate(), 0.0);
  EXPECT_TRUE(variance.GetRedundant());
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(variance.GetStdError()));
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(variance.GetWaldZ()));
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(variance.GetSig()));
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(variance.GetLowerBound()));
  // The residual variance is the within-group variance over n - 1 df:
  // 2 (sum of squared deviations) / 23, with standard error sqrt(2 / 23) times it.
  const MCGLMM_850::GLMMThetaParamStat& residual = thetaStats[1];
  EXPECT_FALSE(residual.GetRedundant());
  double ss = 0.0;
  for (double d : {1.5, 0.25, 0.5, 2.0, 2.5, 1.0, 0.75, 1.25, 1.0, 3.0, 2.0, 0.5}) ss += 2.0 * d * d;
  EXPECT_NEAR(residual.GetEstimate(), ss / 23.0, 1e-9);
  EXPECT_NEAR(residual.GetStdError(), std::sqrt(2.0 / 23.0) * ss / 23.0, 1e-7);
  const MCMath_850::MCSymMatrix* pCov = pStats->GetCovarianceMatrixTheta();
  ASSERT_NE(pCov, nullptr);
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(pCov->GetElem(0, 0, 0, 0)));
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(pCov->GetElem(0, 0, 1, 0)));
  EXPECT_NEAR(pCov->GetElem(0, 0, 1, 1), residual.GetStdError() * residual.GetStdError(), 1e-9);
}

TEST(GLMMAlgorithmOptions, PostEstimationFailureIsAnError) {
  // y 0, x 1, w 2. Regression weights 1e300 and 1e-300 in turn: the residual
  // variance, estimated from the heavy records, overflows the light records'
  // variance once the fit is over.
  GLMMTestRecords records;
  ASSERT_TRUE(
      records.Load(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/options/extreme_weights.csv", {"y", "x", "w"}, {}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddCovariate(1);
  settings.SetRegrWeightVar(2);
  const std::vector<int> set = {1};
  MCModelEffect x;
  x.Setup(0, 1, &set);
  x.AddCovariate(1);
  x.SetVarsIndicesForTheEffectInSetting({1});
  settings.AddModelEffect(x);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_POST_ESTIMATION_FAILED);
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
}
