// The variables a fit saves hold the scores of every case it used: checked
// against the predictions, standard errors, degrees of freedom and residuals
// that R gives for the same models (tests/numeric/reference).
#include "app/AppScoringPass.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "AppDataFixture.h"
#include "app/AppProcedureHook.h"
#include "run/MixDriver.h"

namespace {

const char* const kSaveAll =
    " /SAVE PREDICTED PREDICTEDSE PREDICTEDDF FIXEDPREDICTED FIXEDPREDICTEDSE FIXEDPREDICTEDDF RESIDUAL.";

class AppScoringPassTest : public AppDataFixture {
 protected:
  void SetUp() override {
    AppDataFixture::SetUp();
    AppProcedureHook::Set(MixDriver);
  }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    AppDataFixture::TearDown();
  }

  static std::string Example(const std::string& name) {
    return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + name;
  }
  static nlohmann::json Reference(const std::string& name) {
    std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/" + name + ".json");
    return nlohmann::json::parse(in);
  }
  static bool Near(double actual, double expected, double relative, double absolute) {
    return std::fabs(actual - expected) <= std::max(relative * std::fabs(expected), absolute);
  }

  // Every case's saved variables against the reference scores, case by case
  // in the order of the file.
  void ExpectScoresOf(const std::string& fixture) {
    const nlohmann::json reference = Reference(fixture);
    const nlohmann::json& rows = reference["scores"];
    ASSERT_EQ(static_cast<long>(rows.size()), Data().GetCaseCount());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const nlohmann::json& r = rows[i];
      const long row = r["row"].get<long>();
      SCOPED_TRACE("case " + std::to_string(row));
      const double fixed = r["fixed"].get<double>();
      EXPECT_TRUE(Near(Num(row, "FixedPredicted"), fixed, 1e-6, 0.0));
      EXPECT_TRUE(Near(Num(row, "Predicted"), r["predicted"].get<double>(), 1e-6, 0.0));
      EXPECT_TRUE(Near(Num(row, "Residual"), r["residual"].get<double>(), 1e-5, 1e-6 * std::fabs(fixed)));
      EXPECT_TRUE(Near(Num(row, "FixedPredictedSE"), r["fixed_se"].get<double>(), 1e-5, 0.0));
      EXPECT_TRUE(Near(Num(row, "PredictedSE"), r["predicted_se"].get<double>(), 1e-5, 0.0));
      EXPECT_TRUE(Near(Num(row, "FixedPredictedDF"), r["fixed_df"].get<double>(), 1e-3, 0.0));
      EXPECT_TRUE(Near(Num(row, "PredictedDF"), r["predicted_df"].get<double>(), 1e-3, 0.0));
    }
  }

  // The names of the variables created, as the notes tables list them.
  std::vector<std::string> Created(std::size_t command) const {
    std::vector<std::string> names;
    for (const OmItem& item : Command(command).fvItems) {
      if (item.fKind != OmItem::TABLE || item.fpTable->fSubType != "Notes") continue;
      const OmDimensionNode& root = item.fpTable->fvDimensions.at(0).fRoot;
      if (root.fvChildren.size() == 1 && root.fvChildren[0].fLabel.fText == "Variables Created")
        names.push_back(root.fvChildren[0].fvChildren.at(0).fLabel.fText);
    }
    return names;
  }
};

}  // namespace

TEST_F(AppScoringPassTest, SleepstudyScoresAreThoseOfTheReference) {
  Run("LOAD '" + Example("sleepstudy.csv") + "'.\nGLMIXFIT Reaction WITH Days /FIXED Days"
      " /RANDOM INTERCEPT Days SUBJECTS=Subject STRUCTURE=UN" + kSaveAll);
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_TRUE(Messages(1).empty());
  EXPECT_EQ(Created(1), (std::vector<std::string>{"Predicted", "PredictedSE", "PredictedDF", "FixedPredicted",
                                                  "FixedPredictedSE", "FixedPredictedDF", "Residual"}));
  ExpectScoresOf("eblup_sleepstudy");
}

TEST_F(AppScoringPassTest, OrthodontScoresAreThoseOfTheReference) {
  Run("LOAD '" + Example("orthodont.csv") + "'.\nGLMIXFIT distance BY Sex WITH age /FIXED Sex age Sex*age"
      " /RANDOM INTERCEPT SUBJECTS=Subject" + kSaveAll);
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  ExpectScoresOf("eblup_orthodont");
}

TEST_F(AppScoringPassTest, TheSavedVariablesServeTheCommandsThatFollow) {
  Run("LOAD '" + Example("orthodont.csv") + "'.\nGLMIXFIT distance BY Sex WITH age /FIXED Sex age Sex*age"
      " /RANDOM INTERCEPT SUBJECTS=Subject /SAVE RESIDUAL(res) PREDICTED.\n"
      "COMPUTE check = distance - Predicted - res.\n"
      "GLMIXFIT distance WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject /SAVE PREDICTED.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  for (long row = 0; row < Data().GetCaseCount(); ++row) EXPECT_NEAR(Num(row, "check"), 0.0, 1e-9) << row;
  // The second fit's default name is taken: it gets the next free one.
  EXPECT_EQ(Created(3), (std::vector<std::string>{"Predicted_1"}));
  EXPECT_GE(Column("Predicted_1"), 0);
}

TEST_F(AppScoringPassTest, ACaseTheFitDidNotUseKeepsMissingScores) {
  Run("LOAD '" + Example("orthodont.csv") + "'.\nCOMPUTE y = IF(ROW() <> 3, distance).\n"
      "GLMIXFIT y WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject /SAVE PREDICTED RESIDUAL.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_TRUE(SysMissing(2, "Predicted"));
  EXPECT_TRUE(SysMissing(2, "Residual"));
  EXPECT_FALSE(SysMissing(1, "Predicted"));
  EXPECT_FALSE(SysMissing(3, "Residual"));
}

// Each split is scored by its own fit: the same scores as a fit of that
// split's cases alone.
TEST_F(AppScoringPassTest, EachSplitGetsTheScoresOfItsOwnFit) {
  const std::string fit = "GLMIXFIT distance WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject"
                          " /SAVE PREDICTED RESIDUAL.";
  Run("LOAD '" + Example("orthodont.csv") + "'.\nSPLIT BY Sex.\n" + fit);
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_EQ(Created(2), (std::vector<std::string>{"Predicted", "Residual"}));
  std::unique_ptr<AppSession> split = std::move(fpSession);
  const ZORV_Dataset& splitData = *split->GetData();
  for (const char* sex : {"Female", "Male"}) {
    Run("LOAD '" + Example("orthodont.csv") + "'.\nCOMPUTE row = ROW().\nSELECT IF Sex = '" + sex + "'.\n" + fit);
    ASSERT_EQ(fpSession->ExitStatus(), 0);
    ASSERT_GT(Data().GetCaseCount(), 0);
    for (long row = 0; row < Data().GetCaseCount(); ++row) {
      const long original = static_cast<long>(Num(row, "row")) - 1;
      const int predicted = splitData.FindVarIndex("Predicted", 0);
      const int residual = splitData.FindVarIndex("Residual", 0);
      EXPECT_NEAR(splitData.GetNum(original, predicted), Num(row, "Predicted"), 1e-9) << sex << " " << row;
      EXPECT_NEAR(splitData.GetNum(original, residual), Num(row, "Residual"), 1e-9) << sex << " " << row;
    }
  }
}

// The bundled example that saves: a prediction and its residual make up
// the observation.
TEST_F(AppScoringPassTest, TheDyestuffExampleSavesPredictionsAndResiduals) {
  fpSession.reset(new AppSession(fOptions));
  ASSERT_TRUE(fpSession->RunFile(std::string(GLMIX_SOURCE_DIR) + "/examples/dyestuff.gmx"));
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  ASSERT_EQ(Data().GetCaseCount(), 30);
  for (long row = 0; row < 30; ++row) {
    EXPECT_NEAR(Num(row, "Predicted") + Num(row, "Residual"), Num(row, "Yield"), 1e-9) << row;
  }
  // Five preparations per batch: one prediction per batch.
  EXPECT_DOUBLE_EQ(Num(0, "Predicted"), Num(4, "Predicted"));
  EXPECT_NE(Num(0, "Predicted"), Num(5, "Predicted"));
}

// A binomial target fitted by Laplace: the linear predictor is glmer's, and
// the data-scale scores follow from it by hand (the inverse logit, the
// proportion less its probability, the Pearson residual of the trials and
// the event where the probability exceeds one half).
TEST_F(AppScoringPassTest, CbppLaplaceScoresFollowGlmersLinearPredictor) {
  Run("LOAD '" + Example("cbpp.csv") + "'.\nGLMIXFIT incidence BY period /FIXED period"
      " /RANDOM INTERCEPT SUBJECTS=herd /TARGET DISTRIBUTION=BINOMIAL TRIALS=size /ESTIMATION FIT=LAPLACE"
      " /SAVE LINEARPREDICTOR PREDICTED RESIDUAL PEARSONRESIDUAL PREDICTEDCATEGORY PREDICTEDSE.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_EQ(Created(1), (std::vector<std::string>{"LinearPredictor", "Predicted", "Residual", "PearsonResidual",
                                                  "PredictedCategory", "PredictedSE"}));
  const nlohmann::json laplace = Reference("laplace");
  const nlohmann::json& eta = laplace["cbpp_laplace"]["linear_predictor"];
  ASSERT_EQ(static_cast<long>(eta.size()), Data().GetCaseCount());
  int events = 0;
  for (long row = 0; row < Data().GetCaseCount(); ++row) {
    SCOPED_TRACE("case " + std::to_string(row));
    const double reference = eta[static_cast<std::size_t>(row)].get<double>();
    EXPECT_TRUE(Near(Num(row, "LinearPredictor"), reference, 1e-4, 1e-4));
    const double p = 1.0 / (1.0 + std::exp(-Num(row, "LinearPredictor")));
    const double y = Num(row, "incidence") / Num(row, "size");
    EXPECT_NEAR(Num(row, "Predicted"), p, 1e-12);
    EXPECT_NEAR(Num(row, "Residual"), y - p, 1e-12);
    EXPECT_NEAR(Num(row, "PearsonResidual"), (y - p) * std::sqrt(Num(row, "size") / (p * (1.0 - p))), 1e-10);
    EXPECT_EQ(Num(row, "PredictedCategory"), p > 0.5 ? 1.0 : 0.0);
    // The delta method keeps the error below that of the linear predictor.
    EXPECT_GT(Num(row, "PredictedSE"), 0.0);
    EXPECT_LT(Num(row, "PredictedSE"), p * (1.0 - p) * 2.0);
    events += Num(row, "PredictedCategory") == 1.0;
  }
  // Incidences are rare: no record predicts the event.
  EXPECT_EQ(events, 0);
}

// The Pearson residuals of a pseudo-likelihood fit, squared and summed,
// are the Pearson statistic of the R reference of the same linearisation.
TEST_F(AppScoringPassTest, CbppPearsonResidualsMakeTheReferencesStatistic) {
  Run("LOAD '" + Example("cbpp.csv") + "'.\nGLMIXFIT incidence BY period /FIXED period"
      " /RANDOM INTERCEPT SUBJECTS=herd /TARGET DISTRIBUTION=BINOMIAL TRIALS=size /SAVE PEARSONRESIDUAL.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  double sum = 0.0;
  for (long row = 0; row < Data().GetCaseCount(); ++row) sum += Num(row, "PearsonResidual") * Num(row, "PearsonResidual");
  EXPECT_TRUE(Near(sum, Reference("pseudo_likelihood")["cbpp_reml"]["pearson"].get<double>(), 1e-4, 0.0)) << sum;
}

// An ordinal target: each record's linear predictor x'beta + u and its most
// probable rating are those of clmm with the same quadrature.
TEST_F(AppScoringPassTest, WineRatingsPredictTheCategoriesOfClmm) {
  Run("LOAD '" + Example("wine.csv") + "'.\nGLMIXFIT rating BY temp contact /FIXED temp contact"
      " /RANDOM INTERCEPT SUBJECTS=judge /TARGET DISTRIBUTION=MULTINOMIAL /ESTIMATION FIT=QUADRATURE(10)"
      " /SAVE PREDICTEDCATEGORY LINEARPREDICTOR(eta).");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  const nlohmann::json ordinal = Reference("ordinal");
  const nlohmann::json& fit = ordinal["fits"][1];
  ASSERT_EQ(fit["nAGQ"].get<int>(), 10);
  ASSERT_EQ(static_cast<long>(fit["predicted_category"].size()), Data().GetCaseCount());
  for (long row = 0; row < Data().GetCaseCount(); ++row) {
    SCOPED_TRACE("case " + std::to_string(row));
    const std::size_t r = static_cast<std::size_t>(row);
    EXPECT_TRUE(Near(Num(row, "eta"), fit["linear_predictor"][r].get<double>(), 1e-3, 1e-3));
    EXPECT_EQ(Num(row, "PredictedCategory"), fit["predicted_category"][r].get<double>());
  }
}
