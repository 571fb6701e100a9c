// Custom tests computed by the component on the sleepstudy model, in every
// form a row can take, against the committed references of
// tests/data/numeric/reference/custom_tests/sleepstudy.json (made by
// tests/numeric/reference/make_custom_test_reference.R): lmerTest's test of
// the mean at day 5, and lme4's predictions at day 5 for two subjects with
// the standard errors of their prediction errors.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/CustomTest.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMPredictionModel.h"

using MCCommon_850::MCMV;
using MCGLMM_850::CustomTest;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMCustomTestStat;
using MCGLMM_850::LMatrixRow;

namespace {

constexpr double kTol = 1e-5;

::testing::AssertionResult Near(double a, double b, double rel) {
  if (MCMV::IsMissing(a)) return ::testing::AssertionFailure() << "missing vs reference " << b;
  if (std::fabs(a - b) <= rel * std::fabs(b)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

nlohmann::json Reference() {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/custom_tests/sleepstudy.json");
  EXPECT_TRUE(in.good());
  return in.good() ? nlohmann::json::parse(in) : nlohmann::json();
}

// Intercept 1, Days `days`.
LMatrixRow FixedRow(double days) {
  LMatrixRow row;
  row.Setup(GLMMConst_850::LROW_FIXED_WITH_INTERCEPT, 1);
  row.SetFirstValue(1.0);
  row.AddNewPair(0, {days});
  return row;
}

LMatrixRow AllValues(const std::vector<double>& values, int count) {
  LMatrixRow row;
  row.Setup(GLMMConst_850::LROW_ALL_VALUES, count);
  row.SetAllValues(values);
  return row;
}

// The random intercept and Days of the block's subjects, from the first.
LMatrixRow RandomRow(const std::vector<double>& intercepts, const std::vector<double>& days) {
  LMatrixRow row;
  row.Setup(GLMMConst_850::LROW_RANDOM, 2);
  row.AddNewPair(0, intercepts);
  row.AddNewPair(1, days);
  return row;
}

CustomTest MakeTest(const std::vector<LMatrixRow>& fixed, const std::vector<LMatrixRow>& random,
                const std::vector<double>& K = {}) {
  CustomTest test;
  for (std::size_t i = 0; i < fixed.size(); ++i) {
    if (i < random.size()) {
      test.AddMixedRow(fixed[i], random[i]);
    } else {
      test.AddFixedRow(fixed[i]);
    }
  }
  if (!K.empty()) test.SetKMatrix(K);
  return test;
}

std::vector<GLMMCustomTestStat> Fit(const std::vector<CustomTest>& tests, bool askEBLUPs) {
  GLMMPredictionModel model;
  model.SetAskEBLUPs({askEBLUPs});
  EXPECT_TRUE(model.LoadSleepstudy());
  model.GetSettings().SetCustomTests(tests);
  GLMMAlgorithm algorithm(model.GetSettings(), model.GetRecords().GetVarList());
  EXPECT_FALSE(algorithm.Execute(&model.GetRecords(), 0).IsError());
  if (algorithm.GetOutputStats() == nullptr) return {};
  return algorithm.GetOutputStats()->GetCustomTestStats();
}

void ExpectPrediction(const GLMMCustomTestStat::RowData& row, const nlohmann::json& ref) {
  EXPECT_EQ(row.fState, GLMMCustomTestStat::kComputed);
  EXPECT_TRUE(row.fbRandomPart);
  EXPECT_TRUE(Near(row.fEstimate, ref["estimate"].get<double>(), kTol)) << "prediction";
  EXPECT_TRUE(Near(row.fStdError, ref["se"].get<double>(), kTol)) << "standard error";
  EXPECT_GT(row.fDF, 0.0);
  EXPECT_DOUBLE_EQ(row.fT, row.fEstimate / row.fStdError);
}

}  // namespace

TEST(GLMMCustomTestBuilder, FixedRowsInBothFormsAgreeWithLmerTest) {
  const nlohmann::json ref = Reference()["tests"][0];
  const nlohmann::json& r = ref["rows"][0];
  const auto stats = Fit({MakeTest({FixedRow(5.0)}, {}), MakeTest({AllValues({1.0, 5.0}, 2)}, {})}, false);
  ASSERT_EQ(stats.size(), 2u);
  for (const GLMMCustomTestStat& stat : stats) {
    ASSERT_EQ(stat.GetRows().size(), 1u);
    const GLMMCustomTestStat::RowData& row = stat.GetRows()[0];
    EXPECT_EQ(row.fvFixedCoefficients, (std::vector<double>{1.0, 5.0}));
    EXPECT_TRUE(Near(row.fEstimate, r["estimate"].get<double>(), kTol));
    EXPECT_TRUE(Near(row.fStdError, r["se"].get<double>(), kTol));
    EXPECT_TRUE(Near(row.fDF, r["df"].get<double>(), kTol));
    EXPECT_TRUE(Near(row.fT, r["t"].get<double>(), kTol));
    EXPECT_TRUE(Near(row.fSig, r["p"].get<double>(), 1e-4));
    EXPECT_TRUE(Near(row.fLowerBound, r["lower"].get<double>(), kTol));
    EXPECT_TRUE(Near(row.fUpperBound, r["upper"].get<double>(), kTol));
    EXPECT_EQ(stat.GetJointState(), GLMMCustomTestStat::kComputed);
    EXPECT_TRUE(Near(stat.GetJoint().GetWald(), ref["joint"]["F"].get<double>(), kTol));
    EXPECT_EQ(stat.GetJoint().GetDF(), 1.0);
    EXPECT_TRUE(Near(stat.GetJoint().GetDF2(), ref["joint"]["denDF"].get<double>(), kTol));
  }
}

TEST(GLMMCustomTestBuilder, KShiftsTheTestButNotTheEstimate) {
  const nlohmann::json r = Reference()["tests"][0]["rows"][0];
  const auto stats = Fit({MakeTest({FixedRow(5.0)}, {}, {300.0})}, false);
  ASSERT_EQ(stats.size(), 1u);
  const GLMMCustomTestStat::RowData& row = stats[0].GetRows()[0];
  const double se = r["se"].get<double>();
  EXPECT_TRUE(Near(row.fEstimate, r["estimate"].get<double>(), kTol));
  EXPECT_TRUE(Near(row.fT, (r["estimate"].get<double>() - 300.0) / se, kTol));
  EXPECT_TRUE(Near(stats[0].GetJoint().GetWald(), row.fT * row.fT, 1e-9));
}

TEST(GLMMCustomTestBuilder, RandomRowsPredictTheirSubjectWithOrWithoutTheFitsPredictions) {
  const nlohmann::json ref = Reference()["predictions"];
  const std::vector<CustomTest> tests = {
      MakeTest({FixedRow(5.0)}, {RandomRow({1.0}, {5.0})}),
      MakeTest({FixedRow(5.0)}, {AllValues({1.0, 5.0}, 2)}),
      MakeTest({FixedRow(5.0)}, {RandomRow({0.0, 0.0, 1.0}, {0.0, 0.0, 5.0})})};
  for (bool askEBLUPs : {false, true}) {
    SCOPED_TRACE(askEBLUPs ? "with predictions" : "without predictions");
    const auto stats = Fit(tests, askEBLUPs);
    ASSERT_EQ(stats.size(), 3u);
    ExpectPrediction(stats[0].GetRows()[0], ref[0]);
    ExpectPrediction(stats[1].GetRows()[0], ref[0]);
    ExpectPrediction(stats[2].GetRows()[0], ref[1]);
    // One row: the joint test is the row's t test.
    EXPECT_TRUE(Near(stats[2].GetJoint().GetWald(), stats[2].GetRows()[0].fT * stats[2].GetRows()[0].fT, 1e-12));
    EXPECT_EQ(stats[2].GetJoint().GetDF2(), stats[2].GetRows()[0].fDF);
  }
}

TEST(GLMMCustomTestBuilder, RowsThatDoNotFitTheModelAreNotComputed) {
  LMatrixRow twoDays;
  twoDays.Setup(GLMMConst_850::LROW_FIXED, 1);
  twoDays.AddNewPair(0, {1.0, 2.0});
  const std::vector<double> nineteen(19, 1.0);
  const std::vector<CustomTest> tests = {
      MakeTest({twoDays}, {}),
      MakeTest({AllValues({1.0, 5.0, 0.0}, 2)}, {}),
      MakeTest({FixedRow(5.0)}, {RandomRow(nineteen, {})}),
      MakeTest({FixedRow(5.0), FixedRow(6.0)}, {RandomRow({1.0}, {5.0}), RandomRow({1.0}, {6.0})}),
      MakeTest({AllValues({0.0, 0.0}, 2)}, {})};
  const auto stats = Fit(tests, false);
  ASSERT_EQ(stats.size(), 5u);
  EXPECT_EQ(stats[0].GetRows()[0].fState, GLMMCustomTestStat::kWrongLength);
  EXPECT_EQ(stats[0].GetJointState(), GLMMCustomTestStat::kWrongLength);
  EXPECT_TRUE(MCMV::IsMissing(stats[0].GetRows()[0].fEstimate));
  EXPECT_TRUE(MCMV::IsMissing(stats[0].GetJoint().GetWald()));
  EXPECT_EQ(stats[1].GetRows()[0].fState, GLMMCustomTestStat::kWrongLength);
  EXPECT_EQ(stats[2].GetRows()[0].fState, GLMMCustomTestStat::kRandomPartInvalid);
  // Two predictions: each row is computed, the joint test is not.
  EXPECT_EQ(stats[3].GetRows()[0].fState, GLMMCustomTestStat::kComputed);
  EXPECT_EQ(stats[3].GetRows()[1].fState, GLMMCustomTestStat::kComputed);
  EXPECT_EQ(stats[3].GetJointState(), GLMMCustomTestStat::kJointWithRandomPart);
  EXPECT_TRUE(MCMV::IsMissing(stats[3].GetJoint().GetWald()));
  EXPECT_EQ(stats[4].GetRows()[0].fState, GLMMCustomTestStat::kNoVariance);
  EXPECT_EQ(stats[4].GetJointState(), GLMMCustomTestStat::kNoVariance);
}
