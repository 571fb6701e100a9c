// Predictions of the random effects and scores of records compared with the
// committed reference values of tests/data/numeric/reference/eblup_*.json
// (made by tests/numeric/reference/make_eblup_reference.R).
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMPredictionModel.h"
#include "numeric/xml/IMCVariable.h"

using MCCommon_850::MCMV;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMEBLUPStat;
using MCGLMM_850::GLMMOutputStats;

namespace {

const std::vector<GLMMConst_850::ScoreType> kAllScores = {
    GLMMConst_850::SCORE_FIXED_PREDICTED,    GLMMConst_850::SCORE_PREDICTED,
    GLMMConst_850::SCORE_RESIDUAL,           GLMMConst_850::SCORE_FIXED_PREDICTED_SE,
    GLMMConst_850::SCORE_PREDICTED_SE,       GLMMConst_850::SCORE_FIXED_PREDICTED_DF,
    GLMMConst_850::SCORE_PREDICTED_DF};

::testing::AssertionResult Near(double a, double b, double rel, double absFloor) {
  if (MCMV::IsMissing(a)) return ::testing::AssertionFailure() << "missing vs reference " << b;
  if (std::fabs(a - b) <= rel * std::fabs(b) + absFloor) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

nlohmann::json ReadFixture(const std::string& model) {
  std::ifstream in(GLMMPredictionModel::FixturePath(model));
  if (!in.good()) return nlohmann::json();
  return nlohmann::json::parse(in);
}

// The record values of a reference's subject: the category codes of the
// block's subject variables; for a block without subjects the level is the
// category of the block's one factor effect, and gives the column.
bool FindStat(const GLMMPredictionModel& model, GLMMPredictionModel& mutableModel, const GLMMOutputStats& stats,
              const nlohmann::json& ref, const GLMMEBLUPStat*& found) {
  found = nullptr;
  const auto group = model.GetGroupBlocks().find(ref["group"].get<std::string>());
  if (group == model.GetGroupBlocks().end()) return false;
  const int block = group->second;
  const MCGLMM_850::GLMMRandomSpec& spec = model.GetSettings().GetRandomSpecs()[static_cast<std::size_t>(block)];
  const MCXML_850::MCVarList& varList = mutableModel.GetRecords().GetVarList();
  std::vector<double> values;
  int column = 0;
  if (spec.GetSubjectVars().empty()) {
    const int factor = spec.GetEffects()[0].GetFactors()[0];
    column = varList.GetVarAt(factor)->FindCategory(ref["subject"][0].get<std::string>());
  } else {
    for (std::size_t i = 0; i < spec.GetSubjectVars().size(); ++i) {
      const int code = varList.GetVarAt(spec.GetSubjectVars()[i])->FindCategory(ref["subject"][i].get<std::string>());
      if (code < 0) return false;
      values.push_back(code);
    }
    column = ref["effect"].get<std::string>() == "Intercept" ? 0 : 1;
  }
  for (const GLMMEBLUPStat& stat : stats.GetEBLUPStats()) {
    if (stat.GetBlock() == block && stat.GetSubjectValues() == values && stat.GetColumn() == column) found = &stat;
  }
  return found != nullptr;
}

using Loader = bool (GLMMPredictionModel::*)();

// Fits the model, computing every score type when asked.
void Fit(GLMMPredictionModel& model, bool withScores, std::unique_ptr<GLMMAlgorithm>& algorithm) {
  algorithm = std::make_unique<GLMMAlgorithm>(model.GetSettings(), model.GetRecords().GetVarList());
  if (withScores) algorithm->SetCompScoreTypes(kAllScores);
  ASSERT_FALSE(algorithm->Execute(&model.GetRecords(), 0).IsError());
}

// Loads the model, reads its reference and fits it.
void LoadAndFit(GLMMPredictionModel& model, Loader load, const std::string& fixture, bool withScores,
                nlohmann::json& ref, std::unique_ptr<GLMMAlgorithm>& algorithm) {
  ASSERT_TRUE((model.*load)());
  ref = ReadFixture(fixture);
  ASSERT_FALSE(ref.is_null()) << "missing reference file " << fixture;
  Fit(model, withScores, algorithm);
}

void CompareEBLUPs(Loader load, const std::string& fixture) {
  SCOPED_TRACE(fixture);
  GLMMPredictionModel model;
  nlohmann::json ref;
  std::unique_ptr<GLMMAlgorithm> algorithm;
  ASSERT_NO_FATAL_FAILURE(LoadAndFit(model, load, fixture, false, ref, algorithm));
  const GLMMOutputStats* pStats = algorithm->GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  EXPECT_TRUE(Near(pStats->GetLogLikehood(), ref["minus2ll"].get<double>(), 1e-7, 0.0));
  ASSERT_EQ(pStats->GetEBLUPStats().size(), ref["eblups"].size());
  double scale = 0.0;
  for (const auto& e : ref["eblups"]) scale = std::max(scale, std::fabs(e["estimate"].get<double>()));
  for (const auto& e : ref["eblups"]) {
    SCOPED_TRACE(e.dump());
    const GLMMEBLUPStat* pStat = nullptr;
    ASSERT_TRUE(FindStat(model, model, *pStats, e, pStat));
    EXPECT_TRUE(Near(pStat->GetPrediction(), e["estimate"].get<double>(), 1e-5, 1e-7 * scale)) << "prediction";
    EXPECT_TRUE(Near(pStat->GetStdError(), e["se"].get<double>(), 1e-5, 0.0)) << "standard error";
    EXPECT_TRUE(Near(pStat->GetDF(), e["df"].get<double>(), 1e-3, 0.0)) << "df";
    EXPECT_TRUE(Near(pStat->GetTStat(), e["t"].get<double>(), 1e-5, 1e-6)) << "t";
    EXPECT_TRUE(Near(pStat->GetSig(), e["p"].get<double>(), 1e-3, 1e-9)) << "sig";
    const double width = e["upper"].get<double>() - e["lower"].get<double>();
    EXPECT_TRUE(Near(pStat->GetLowerBound(), e["lower"].get<double>(), 0.0, 1e-4 * width)) << "lower";
    EXPECT_TRUE(Near(pStat->GetUpperBound(), e["upper"].get<double>(), 0.0, 1e-4 * width)) << "upper";
    if (e.contains("condsd")) {
      // The conditional standard deviation leaves out the fixed estimates' uncertainty.
      EXPECT_GT(pStat->GetStdError(), e["condsd"].get<double>());
    }
  }
}

void CompareScores(Loader load, const std::string& fixture) {
  SCOPED_TRACE(fixture);
  GLMMPredictionModel model;
  nlohmann::json ref;
  std::unique_ptr<GLMMAlgorithm> algorithm;
  ASSERT_NO_FATAL_FAILURE(LoadAndFit(model, load, fixture, true, ref, algorithm));
  const auto& rows = ref["scores"];
  ASSERT_EQ(static_cast<int>(rows.size()), model.GetRecords().GetNRecords());
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  GLMMTestRecords& records = model.GetRecords();
  records.Rewind();
  for (std::size_t i = 0; i < rows.size(); ++i, records.Next()) {
    SCOPED_TRACE("record " + std::to_string(i));
    ASSERT_TRUE(records.HasRecord());
    ASSERT_TRUE(algorithm->ScoreRecord(records.Current(), scores, details).IsOK());
    ASSERT_EQ(scores.size(), kAllScores.size());
    const auto& r = rows[i];
    const double y = r["fixed"].get<double>();
    EXPECT_TRUE(Near(scores[0], y, 1e-6, 0.0)) << "fixed prediction";
    EXPECT_TRUE(Near(scores[1], r["predicted"].get<double>(), 1e-6, 0.0)) << "prediction";
    EXPECT_TRUE(Near(scores[2], r["residual"].get<double>(), 1e-5, 1e-6 * std::fabs(y))) << "residual";
    EXPECT_TRUE(Near(scores[3], r["fixed_se"].get<double>(), 1e-5, 0.0)) << "fixed standard error";
    EXPECT_TRUE(Near(scores[4], r["predicted_se"].get<double>(), 1e-5, 0.0)) << "standard error";
    EXPECT_TRUE(Near(scores[5], r["fixed_df"].get<double>(), 1e-3, 0.0)) << "fixed df";
    EXPECT_TRUE(Near(scores[6], r["predicted_df"].get<double>(), 1e-3, 0.0)) << "df";
  }
}

}  // namespace

TEST(GLMMEBLUP, SleepstudyUnstructuredInterceptAndSlope) {
  CompareEBLUPs(&GLMMPredictionModel::LoadSleepstudy, "sleepstudy");
}

TEST(GLMMEBLUP, OrthodontRandomIntercept) {
  CompareEBLUPs(&GLMMPredictionModel::LoadOrthodont, "orthodont");
}

TEST(GLMMEBLUP, OrthodontRandomInterceptWithAR1Residuals) {
  CompareEBLUPs(&GLMMPredictionModel::LoadOrthodontAR1, "orthodont_ar1");
}

TEST(GLMMEBLUP, OatsTwoBlocksWithCrossedSubjects) {
  CompareEBLUPs(&GLMMPredictionModel::LoadOats, "oats");
}

TEST(GLMMEBLUP, PenicillinCrossedBlocksWithoutSubjects) {
  CompareEBLUPs(&GLMMPredictionModel::LoadPenicillin, "penicillin");
}

TEST(GLMMEBLUP, StatsComeInBlockSubjectColumnOrder) {
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOats());
  std::unique_ptr<GLMMAlgorithm> algorithm;
  ASSERT_NO_FATAL_FAILURE(Fit(model, false, algorithm));
  const auto& stats = algorithm->GetOutputStats()->GetEBLUPStats();
  ASSERT_EQ(stats.size(), 6u + 18u);
  for (std::size_t i = 1; i < stats.size(); ++i) {
    const bool ordered = stats[i - 1].GetBlock() < stats[i].GetBlock() ||
                         (stats[i - 1].GetBlock() == stats[i].GetBlock() &&
                          stats[i - 1].GetSubjectValues() < stats[i].GetSubjectValues());
    EXPECT_TRUE(ordered) << i;
  }
  EXPECT_EQ(stats[6].GetSubjectValues(), (std::vector<double>{0, 0}));
  EXPECT_EQ(stats[7].GetSubjectValues(), (std::vector<double>{0, 1}));
}

TEST(GLMMEBLUP, OnlyBlocksThatAskArePredicted) {
  GLMMPredictionModel model;
  model.SetAskEBLUPs({false, true});
  ASSERT_TRUE(model.LoadOats());
  std::unique_ptr<GLMMAlgorithm> algorithm;
  ASSERT_NO_FATAL_FAILURE(Fit(model, false, algorithm));
  const auto& stats = algorithm->GetOutputStats()->GetEBLUPStats();
  ASSERT_EQ(stats.size(), 18u);
  for (const GLMMEBLUPStat& stat : stats) EXPECT_EQ(stat.GetBlock(), 1);
}

TEST(GLMMEBLUP, NoBlockAskingMeansNoPredictions) {
  GLMMPredictionModel model;
  model.SetAskEBLUPs({false});
  ASSERT_TRUE(model.LoadOrthodont());
  std::unique_ptr<GLMMAlgorithm> algorithm;
  ASSERT_NO_FATAL_FAILURE(Fit(model, false, algorithm));
  EXPECT_TRUE(algorithm->GetOutputStats()->GetEBLUPStats().empty());
}

TEST(GLMMScore, SleepstudyAgainstReference) {
  CompareScores(&GLMMPredictionModel::LoadSleepstudy, "sleepstudy");
}

TEST(GLMMScore, OrthodontAgainstReference) {
  CompareScores(&GLMMPredictionModel::LoadOrthodont, "orthodont");
}

TEST(GLMMScore, OrthodontAR1AgainstReference) {
  CompareScores(&GLMMPredictionModel::LoadOrthodontAR1, "orthodont_ar1");
}

TEST(GLMMEBLUP, ResidualDegreesOfFreedom) {
  // Orthodont: 108 records, rank 4 of the fixed design.
  GLMMPredictionModel model;
  ASSERT_TRUE(model.LoadOrthodont());
  model.GetSettings().SetDegreesFreedomType(GLMMConst_850::DF_RESIDUAL);
  std::unique_ptr<GLMMAlgorithm> algorithm;
  ASSERT_NO_FATAL_FAILURE(Fit(model, true, algorithm));
  const auto& stats = algorithm->GetOutputStats()->GetEBLUPStats();
  ASSERT_EQ(stats.size(), 27u);
  for (const GLMMEBLUPStat& stat : stats) EXPECT_EQ(stat.GetDF(), 104.0);
  model.GetRecords().Rewind();
  std::vector<double> scores;
  std::vector<std::vector<double>> details;
  ASSERT_TRUE(algorithm->ScoreRecord(model.GetRecords().Current(), scores, details).IsOK());
  EXPECT_EQ(scores[5], 104.0);
  EXPECT_EQ(scores[6], 104.0);
}
