// Scores of single records: missing inputs, subjects the fit did not see,
// offsets, and calls that come before or after a failed fit.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMPredictionModel.h"

using MCCommon_850::MCMV;
using MCGLMM_850::GLMMAlgorithm;

namespace {

// Fixed prediction, prediction, residual, their standard errors and df.
const std::vector<GLMMConst_850::ScoreType> kAllScores = {
    GLMMConst_850::SCORE_FIXED_PREDICTED,    GLMMConst_850::SCORE_PREDICTED,
    GLMMConst_850::SCORE_RESIDUAL,           GLMMConst_850::SCORE_FIXED_PREDICTED_SE,
    GLMMConst_850::SCORE_PREDICTED_SE,       GLMMConst_850::SCORE_FIXED_PREDICTED_DF,
    GLMMConst_850::SCORE_PREDICTED_DF};

class SleepstudyScores : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(fModel.LoadSleepstudy());
    fpAlgorithm = std::make_unique<GLMMAlgorithm>(fModel.GetSettings(), fModel.GetRecords().GetVarList());
    fpAlgorithm->SetCompScoreTypes(kAllScores);
    ASSERT_FALSE(fpAlgorithm->Execute(&fModel.GetRecords(), 0).IsError());
    fModel.GetRecords().Rewind();
    const double* first = fModel.GetRecords().Current();
    fRecord.assign(first, first + 3);
    ASSERT_TRUE(Score(fRecord, fBase));
  }

  bool Score(const std::vector<double>& record, std::vector<double>& scores) {
    std::vector<std::vector<double>> details;
    return fpAlgorithm->ScoreRecord(record.data(), scores, details).IsOK() && scores.size() == kAllScores.size();
  }

  GLMMPredictionModel fModel;
  std::unique_ptr<GLMMAlgorithm> fpAlgorithm;
  std::vector<double> fRecord;  // Reaction, Days, Subject of the first record
  std::vector<double> fBase;
};

}  // namespace

TEST_F(SleepstudyScores, EveryScoreOfACompleteRecordIsPresent) {
  for (double score : fBase) EXPECT_FALSE(MCMV::IsMissing(score));
  EXPECT_NEAR(fBase[2], fRecord[0] - fBase[1], 1e-9);
  EXPECT_NE(fBase[0], fBase[1]);
}

TEST_F(SleepstudyScores, MissingResponseLeavesOnlyTheResidualMissing) {
  std::vector<double> record = fRecord;
  record[0] = MCMV::Missing();
  std::vector<double> scores;
  ASSERT_TRUE(Score(record, scores));
  for (std::size_t i = 0; i < scores.size(); ++i) {
    if (i == 2) {
      EXPECT_TRUE(MCMV::IsMissing(scores[i]));
    } else {
      EXPECT_DOUBLE_EQ(scores[i], fBase[i]) << i;
    }
  }
}

TEST_F(SleepstudyScores, MissingPredictorLeavesEveryScoreMissing) {
  std::vector<double> record = fRecord;
  record[1] = MCMV::Missing();
  std::vector<double> scores;
  ASSERT_TRUE(Score(record, scores));
  for (double score : scores) EXPECT_TRUE(MCMV::IsMissing(score));
  record[1] = std::nan("");
  ASSERT_TRUE(Score(record, scores));
  for (double score : scores) EXPECT_TRUE(MCMV::IsMissing(score));
}

TEST_F(SleepstudyScores, MissingSubjectKeepsTheFixedPrediction) {
  std::vector<double> record = fRecord;
  record[2] = MCMV::Missing();
  std::vector<double> scores;
  ASSERT_TRUE(Score(record, scores));
  for (std::size_t i : {0u, 3u, 5u}) EXPECT_DOUBLE_EQ(scores[i], fBase[i]) << i;
  for (std::size_t i : {1u, 2u, 4u, 6u}) EXPECT_TRUE(MCMV::IsMissing(scores[i])) << i;
}

TEST_F(SleepstudyScores, NewSubjectHasRandomEffectsZero) {
  std::vector<double> record = fRecord;
  record[1] = 3.0;
  record[2] = 99.0;  // no subject of the fit
  std::vector<double> scores;
  ASSERT_TRUE(Score(record, scores));
  EXPECT_NEAR(scores[1], scores[0], 1e-9 * std::fabs(scores[0]));
  EXPECT_NEAR(scores[2], record[0] - scores[0], 1e-9 * std::fabs(scores[0]));
  // The prediction error adds z'Gz for z = (1, Days) to the fixed part's.
  const std::vector<double>& theta = fpAlgorithm->GetOutputStats()->GetThetaParamEtimates();
  ASSERT_EQ(theta.size(), 4u);
  const double zGz = theta[0] + 2.0 * 3.0 * theta[1] + 9.0 * theta[2];
  EXPECT_NEAR(scores[4] * scores[4], scores[3] * scores[3] + zGz, 1e-8 * zGz);
  EXPECT_FALSE(MCMV::IsMissing(scores[6]));
}

TEST_F(SleepstudyScores, NullRecordIsAnError) {
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  const MCCommon_850::MCStatus status = fpAlgorithm->ScoreRecord(nullptr, scores, details);
  EXPECT_TRUE(status.IsError());
  ASSERT_EQ(scores.size(), kAllScores.size());
  for (double score : scores) EXPECT_TRUE(MCMV::IsMissing(score));
}

TEST_F(SleepstudyScores, ScoresFollowTheOrderOfTheTypes) {
  GLMMAlgorithm algorithm(fModel.GetSettings(), fModel.GetRecords().GetVarList());
  algorithm.SetCompScoreTypes({GLMMConst_850::SCORE_PREDICTED_DF, GLMMConst_850::SCORE_FIXED_PREDICTED,
                               GLMMConst_850::SCORE_INVALID});
  ASSERT_FALSE(algorithm.Execute(&fModel.GetRecords(), 0).IsError());
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  ASSERT_TRUE(algorithm.ScoreRecord(fRecord.data(), scores, details).IsOK());
  ASSERT_EQ(scores.size(), 3u);
  EXPECT_NEAR(scores[0], fBase[6], 1e-9 * fBase[6]);
  EXPECT_NEAR(scores[1], fBase[0], 1e-9 * std::fabs(fBase[0]));
  EXPECT_TRUE(MCMV::IsMissing(scores[2]));
}

TEST_F(SleepstudyScores, AnOffsetIsAddedBackToThePredictions) {
  MCGLMM_850::GLMMSettings settings = fModel.GetSettings();
  settings.SetOffsetValue(100.0);
  GLMMAlgorithm algorithm(settings, fModel.GetRecords().GetVarList());
  algorithm.SetCompScoreTypes(kAllScores);
  ASSERT_FALSE(algorithm.Execute(&fModel.GetRecords(), 0).IsError());
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  ASSERT_TRUE(algorithm.ScoreRecord(fRecord.data(), scores, details).IsOK());
  // The intercept takes up the constant: the same predictions.
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(scores[i], fBase[i], 1e-5 * (1.0 + std::fabs(fBase[i]))) << i;
}

TEST(GLMMScoreRecord, BeforeAFitIsAnError) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadSleepstudy());
  GLMMAlgorithm algorithm(model.GetSettings(), model.GetRecords().GetVarList());
  algorithm.SetCompScoreTypes(kAllScores);
  model.GetRecords().Rewind();
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  const MCCommon_850::MCStatus status = algorithm.ScoreRecord(model.GetRecords().Current(), scores, details);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_SETTINGS_INVALID);
  EXPECT_EQ(scores.size(), kAllScores.size());
}

TEST(GLMMScoreRecord, AfterAFailedFitGivesTheFitsError) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadSleepstudy());
  GLMMAlgorithm algorithm(model.GetSettings(), model.GetRecords().GetVarList());
  algorithm.SetCompScoreTypes(kAllScores);
  GLMMTestRecords empty;
  const MCCommon_850::MCStatus fit = algorithm.Execute(&empty, 0);
  ASSERT_TRUE(fit.IsError());
  model.GetRecords().Rewind();
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  const MCCommon_850::MCStatus status = algorithm.ScoreRecord(model.GetRecords().Current(), scores, details);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), fit.GetErrorCode());
}

TEST(GLMMScoreRecord, WithoutScoreTypesBeforeTheFitNothingCanBeScored) {
  GLMMPredictionModel model;
  model.SetAskEBLUPs({false});
  ASSERT_TRUE(model.LoadSleepstudy());
  GLMMAlgorithm algorithm(model.GetSettings(), model.GetRecords().GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.GetRecords(), 0).IsError());
  algorithm.SetCompScoreTypes(kAllScores);
  model.GetRecords().Rewind();
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  EXPECT_TRUE(algorithm.ScoreRecord(model.GetRecords().Current(), scores, details).IsError());
}

TEST(GLMMScoreRecord, ModelWithoutRandomEffects) {
  // Sleepstudy with Days alone: the two predictions agree.
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadSleepstudy());
  MCGLMM_850::GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddCovariate(1);
  for (const auto& effect : model.GetSettings().GetModelEffects()) settings.AddModelEffect(effect);
  GLMMAlgorithm algorithm(settings, model.GetRecords().GetVarList());
  algorithm.SetCompScoreTypes(kAllScores);
  ASSERT_FALSE(algorithm.Execute(&model.GetRecords(), 0).IsError());
  model.GetRecords().Rewind();
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  ASSERT_TRUE(algorithm.ScoreRecord(model.GetRecords().Current(), scores, details).IsOK());
  EXPECT_DOUBLE_EQ(scores[0], scores[1]);
  EXPECT_DOUBLE_EQ(scores[3], scores[4]);
  // Ordinary least squares: the standard error of the fit at Days 0 with
  // residual df n - 2 = 178.
  EXPECT_NEAR(scores[5], 178.0, 1e-6);
  EXPECT_NEAR(scores[6], 178.0, 1e-6);
  const auto* pStats = algorithm.GetOutputStats();
  EXPECT_NEAR(scores[0], pStats->GetBetaParamStats()[0].GetEstimate(), 1e-9 * std::fabs(scores[0]));
  EXPECT_NEAR(scores[3], pStats->GetBetaParamStats()[0].GetStdError(), 1e-9 * scores[3]);
}
