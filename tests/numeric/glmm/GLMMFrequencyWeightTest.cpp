// The frequency weight as the procedure hands it over: the variable list's
// variable of that role, rounded to whole numbers, and no weight in the
// settings. Every number of the fit and of the data summary equals that of
// the records written out as many times as their rounded weight.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMPredictionModel.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;

namespace {

constexpr double kTol = 1e-8;

::testing::AssertionResult Same(double a, double b, double tol = kTol) {
  if (a == b || std::fabs(a - b) <= tol * std::fabs(b)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs " << b;
}

void ExpectSameValues(const std::vector<double>& a, const std::vector<double>& b, const std::string& what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_TRUE(Same(a[i], b[i])) << what << " " << i;
}

void ExpectSameTests(const MCMath_850::MCModelTestStats* a, const MCMath_850::MCModelTestStats* b) {
  ASSERT_TRUE(a != nullptr && b != nullptr);
  ASSERT_EQ(a->GetNTests(), b->GetNTests());
  for (int t = 0; t < a->GetNTests(); ++t) {
    const MCMath_850::MCTestStats &x = a->GetTestStats(t), &y = b->GetTestStats(t);
    EXPECT_TRUE(Same(x.GetWald(), y.GetWald())) << "F of test " << t;
    EXPECT_TRUE(Same(x.GetDF(), y.GetDF())) << "df of test " << t;
    EXPECT_TRUE(Same(x.GetDF2(), y.GetDF2())) << "denominator df of test " << t;
    EXPECT_TRUE(Same(x.GetSig(), y.GetSig())) << "significance of test " << t;
  }
}

// Weights 0.4 to 3, varying within the subjects: 0.4 rounds to 0 and drops
// its record, 2.5 rounds up.
std::vector<double> Weights(int nRecords) {
  const std::vector<double> pattern = {1.2, 2.5, 0.4, 2.6, 1.49, 3.0, 1.0};
  std::vector<double> w;
  for (int r = 0; r < nRecords; ++r) w.push_back(pattern[static_cast<std::size_t>(r) % pattern.size()]);
  return w;
}

std::vector<int> Rounded(const std::vector<double>& weights) {
  std::vector<int> copies;
  for (double w : weights) copies.push_back(static_cast<int>(std::lround(w)));
  return copies;
}

}  // namespace

TEST(GLMMFrequencyWeight, TheVariableListsWeightCountsEachRecordAsCopies) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodont());
  GLMMTestRecords& records = model.GetRecords();
  const std::vector<double> weights = Weights(records.GetNRecords());
  records.AddVariable("w", weights);
  records.SetFrequencyWeight(4);
  ASSERT_LT(model.GetSettings().GetFrequencyWeightVar(), 0);
  GLMMTestRecords written = records.Repeated(Rounded(weights));

  GLMMAlgorithm a(model.GetSettings(), records.GetVarList());
  GLMMAlgorithm b(model.GetSettings(), written.GetVarList());
  ASSERT_FALSE(a.Execute(&records, 0).IsError());
  ASSERT_FALSE(b.Execute(&written, 0).IsError());
  const GLMMOutputStats &x = *a.GetOutputStats(), &y = *b.GetOutputStats();

  double total = 0.0;
  for (int c : Rounded(weights)) total += c;
  EXPECT_EQ(x.GetTotalFreqWeight(), total);
  EXPECT_EQ(y.GetTotalFreqWeight(), total);
  EXPECT_TRUE(Same(x.GetLogLikehood(), y.GetLogLikehood()));
  EXPECT_TRUE(Same(x.GetAICC(), y.GetAICC()));
  EXPECT_TRUE(Same(x.GetBIC(), y.GetBIC()));
  ASSERT_EQ(x.GetBetaParamStats().size(), y.GetBetaParamStats().size());
  for (std::size_t j = 0; j < x.GetBetaParamStats().size(); ++j) {
    const MCMath_850::BetaParamStat &p = x.GetBetaParamStats()[j], &q = y.GetBetaParamStats()[j];
    EXPECT_TRUE(Same(p.GetEstimate(), q.GetEstimate())) << j;
    EXPECT_TRUE(Same(p.GetStdError(), q.GetStdError())) << j;
    EXPECT_TRUE(Same(p.GetDF(), q.GetDF())) << j;
    EXPECT_TRUE(Same(p.GetSig(), q.GetSig())) << j;
  }
  ExpectSameValues(x.GetThetaParamEtimates(), y.GetThetaParamEtimates(), "covariance parameter");
  for (std::size_t k = 0; k < x.GetThetaParamStats().size(); ++k) {
    EXPECT_TRUE(Same(x.GetThetaParamStats()[k].GetStdError(), y.GetThetaParamStats()[k].GetStdError())) << k;
  }
  ExpectSameTests(x.GetTypeIIITestStats(), y.GetTypeIIITestStats());
  ExpectSameTests(x.GetTypeITestStats(), y.GetTypeITestStats());

  // The random effects' predictions.
  ASSERT_EQ(x.GetEBLUPStats().size(), y.GetEBLUPStats().size());
  ASSERT_FALSE(x.GetEBLUPStats().empty());
  for (std::size_t i = 0; i < x.GetEBLUPStats().size(); ++i) {
    EXPECT_TRUE(Same(x.GetEBLUPStats()[i].GetPrediction(), y.GetEBLUPStats()[i].GetPrediction())) << i;
    EXPECT_TRUE(Same(x.GetEBLUPStats()[i].GetStdError(), y.GetEBLUPStats()[i].GetStdError())) << i;
  }

  // Marginal means of Sex, with age at its mean over the copies.
  ASSERT_EQ(x.GetEmmeansStats().size(), 1u);
  ASSERT_EQ(y.GetEmmeansStats().size(), 1u);
  ExpectSameValues(x.GetEmmeansStats()[0].GetCovariateValues(), y.GetEmmeansStats()[0].GetCovariateValues(),
                   "covariate value");
  for (std::size_t m = 0; m < 2; ++m) {
    EXPECT_TRUE(Same(x.GetEmmeansStats()[0].GetMeans()[m].GetMean(), y.GetEmmeansStats()[0].GetMeans()[m].GetMean()));
    EXPECT_TRUE(Same(x.GetEmmeansStats()[0].GetMeans()[m].GetStdError(),
                     y.GetEmmeansStats()[0].GetMeans()[m].GetStdError()));
  }

  // The data the documents show.
  ExpectSameValues(x.GetTargetBinValues(), y.GetTargetBinValues(), "bin");
  ExpectSameValues(x.GetTargetBinFrequencies(), y.GetTargetBinFrequencies(), "bin frequency");
  EXPECT_TRUE(Same(x.GetTargetMean(), y.GetTargetMean()));
  EXPECT_TRUE(Same(x.GetTargetStdDeviation(), y.GetTargetStdDeviation()));
  EXPECT_EQ(x.GetNCommonSubjects(), 27);
  EXPECT_EQ(y.GetNCommonSubjects(), 27);
  EXPECT_EQ(x.GetFirstSubjectNRecords(), y.GetFirstSubjectNRecords());
  ExpectSameValues(x.GetFirstSubjectTargets(), y.GetFirstSubjectTargets(), "first subject's target");
  double pointWeight = 0.0;
  for (double f : x.GetPointFrequencies()) pointWeight += f;
  EXPECT_EQ(pointWeight, total);
}

TEST(GLMMFrequencyWeight, GroupsCopiedUnderAnAutoregressiveResidualCountTheirSubjects) {
  // Weights equal within each child: a child of weight k counts as k children.
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodontAR1());
  GLMMTestRecords& records = model.GetRecords();
  std::vector<double> weights;
  for (int r = 0; r < records.GetNRecords(); ++r) weights.push_back(1.0 + (r / 4) % 3);
  records.AddVariable("w", weights);
  records.SetFrequencyWeight(4);
  GLMMAlgorithm a(model.GetSettings(), records.GetVarList());
  ASSERT_FALSE(a.Execute(&records, 0).IsError());
  double children = 0.0;
  for (int r = 0; r < records.GetNRecords(); r += 4) children += weights[static_cast<std::size_t>(r)];
  EXPECT_EQ(a.GetOutputStats()->GetNCommonSubjects(), static_cast<int>(children));
  // The first child's records are its own, each once.
  EXPECT_EQ(a.GetOutputStats()->GetFirstSubjectNRecords(), 4);
}

TEST(GLMMFrequencyWeight, WeightsDifferingWithinASubjectUnderAnAutoregressiveResidual) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodontAR1());
  GLMMTestRecords& records = model.GetRecords();
  records.AddVariable("w", Weights(records.GetNRecords()));
  records.SetFrequencyWeight(4);
  GLMMAlgorithm algorithm(model.GetSettings(), records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 130077);
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
}
