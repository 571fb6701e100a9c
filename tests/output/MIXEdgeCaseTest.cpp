#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "OutputFixture.h"
#include "host/output/BpProcedure.h"
#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/math/BetaParamStat.h"
#include "numeric/math/MCModelTestStats.h"
#include "numeric/math/MCSymMatrix.h"
#include "output/MIXComOutputData.h"
#include "output/MIXOutput.h"
#include "output/MIXParamEstimateOutput.h"

namespace output_test {
namespace {

const double kMissing = -DBL_MAX;

// A fitted oats model whose statistics a test changes before it writes a
// table from them. Parameters: Intercept, three levels of Variety (the last
// one redundant), nitro.
class OatsEdgeCase : public OutputFixture {
 protected:
  void SetUp() override {
    Load("oats");
    Command("yield", {"Variety"}, {"nitro"}, {{1, 0}, {0, 1}},
            {RandomBlock{{{}}, {"Block"}, false}, RandomBlock{{{}}, {"Block", "Variety"}, false}});
    SetOption(L::SHOW_ESTIMATES, 1);
    ASSERT_TRUE(Run());
    fOutput->DisplayOutput();
    fStats = *fFactory->GetOutputStats();
  }

  const OmTable& Last() const { return *Tables().back(); }
  std::size_t Count() const { return Tables().size(); }

  void SetStat(std::size_t i, double estimate, double stdError) {
    std::vector<MCMath_850::BetaParamStat> stats = fStats.GetBetaParamStats();
    stats[i].SetEstimate(estimate);
    stats[i].SetStdError(stdError);
    fStats.SetBetaParamStats(stats);
  }

  MCGLMM_850::GLMMOutputStats fStats;
};

TEST_F(OatsEdgeCase, AMissingLogLikelihoodLeavesAicAndCaicMissing) {
  fStats.SetLogLikehood(kMissing);
  fStats.SetAICC(512.25);
  fStats.SetBIC(kMissing);
  fOutput->DisplayInfoCriteria(fStats);
  const OmTable& table = Last();
  ASSERT_EQ(table.fSubType, "Information Criteria");
  EXPECT_TRUE(table.CellAt({0})->fbMissing);
  EXPECT_TRUE(table.CellAt({1})->fbMissing);
  EXPECT_FALSE(table.CellAt({2})->fbMissing);
  EXPECT_EQ(table.CellAt({2})->fContent.fText, "512.250");
  EXPECT_TRUE(table.CellAt({3})->fbMissing);
  EXPECT_TRUE(table.CellAt({4})->fbMissing);
}

TEST_F(OatsEdgeCase, ARestrictedRunWithNoMoreCasesThanParametersHasNoCaic) {
  // Four fixed parameters are not redundant.
  fStats.SetTotalFreqWeight(4.0);
  fOutput->DisplayInfoCriteria(fStats);
  const OmTable& table = Last();
  EXPECT_EQ(LeafLabels(table, 0)[0], "-2 Restricted Log Likelihood");
  EXPECT_FALSE(table.CellAt({1})->fbMissing);
  EXPECT_TRUE(table.CellAt({3})->fbMissing);

  fStats.SetTotalFreqWeight(5.0);
  fOutput->DisplayInfoCriteria(fStats);
  EXPECT_DOUBLE_EQ(Last().CellAt({3})->fValue, fStats.GetLogLikehood() + 3.0 * (std::log(1.0) + 1.0));
}

TEST_F(OatsEdgeCase, AnUnrestrictedRunKeepsAllCases) {
  fSpecs->SetThetaEstType(GLMMConst_850::ML);
  fStats.SetTotalFreqWeight(4.0);
  fOutput->DisplayInfoCriteria(fStats);
  const OmTable& table = Last();
  EXPECT_EQ(LeafLabels(table, 0)[0], "-2 Log Likelihood");
  // Four fixed and three covariance parameters.
  EXPECT_DOUBLE_EQ(table.CellAt({1})->fValue, fStats.GetLogLikehood() + 14.0);
  EXPECT_DOUBLE_EQ(table.CellAt({3})->fValue, fStats.GetLogLikehood() + 7.0 * (std::log(4.0) + 1.0));
}

TEST_F(OatsEdgeCase, WholeAndFractionalDenominatorsShareAColumn) {
  MCMath_850::MCModelTestStats tests;
  tests.AddTest(MCMath_850::MCTestStats(10.0, 1.0, 5.5, 0.01), MCCommon_850::MCStatus(), {}, {});
  tests.AddTest(MCMath_850::MCTestStats(2.0, 2.0, 10.0, 0.2), MCCommon_850::MCStatus(), {}, {});
  tests.AddTest(MCMath_850::MCTestStats(3.0, 1.0, 0.5, 0.3), MCCommon_850::MCStatus(), {}, {});
  fStats.SetTypeIIITestStats(tests);
  MIXParamEstimateOutput writer(fOutput->GetComOutputData());
  writer.DisplayFixedEffectsTable(&fStats);
  const OmTable& table = Last();
  ASSERT_EQ(table.fSubType, "Tests of Fixed Effects");
  EXPECT_EQ(LeafLabels(table, 0), (std::vector<std::string>{"Intercept", "Variety", "nitro"}));
  EXPECT_EQ(Cell(table, "Intercept", "Denominator df")->fContent.fText, "5.500");
  EXPECT_EQ(Cell(table, "Intercept", "Denominator df")->fFormat, BpProcedure::GeneralStat().ToText());
  EXPECT_EQ(Cell(table, "Variety", "Denominator df")->fContent.fText, "10");
  EXPECT_EQ(Cell(table, "Variety", "Denominator df")->fFormat, BpProcedure::Count().ToText());
  // Below 1 counts as fractional, whole or not.
  EXPECT_EQ(Cell(table, "nitro", "Denominator df")->fFormat, BpProcedure::GeneralStat().ToText());
  EXPECT_EQ(Cell(table, "Intercept", "F")->fContent.fText, "10.000");
  EXPECT_EQ(Cell(table, "Intercept", "Sig.")->fContent.fText, "0.010");
}

TEST_F(OatsEdgeCase, AMissingDenominatorIsShownEmpty) {
  MCMath_850::MCModelTestStats tests;
  for (int i = 0; i < 3; ++i) {
    tests.AddTest(MCMath_850::MCTestStats(1.0, 1.0, kMissing, 0.5), MCCommon_850::MCStatus(), {}, {});
  }
  fStats.SetTypeIIITestStats(tests);
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayFixedEffectsTable(&fStats);
  EXPECT_TRUE(Cell(Last(), "Variety", "Denominator df")->fbMissing);
  EXPECT_EQ(Cell(Last(), "Variety", "Denominator df")->fFormat, BpProcedure::GeneralStat().ToText());
}

TEST_F(OatsEdgeCase, NoEffectsAndNoInterceptWriteNoTests) {
  fSpecs->SetInterceptInModel(false);
  fSpecs->SetModelEffectList({}, {});
  const std::size_t before = Count();
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayFixedEffectsTable(&fStats);
  EXPECT_EQ(Count(), before);
}

TEST_F(OatsEdgeCase, AZeroStandardErrorKeepsTheEstimateAndTheBounds) {
  SetStat(4, 73.5, 0.0);
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayParamEstimates(&fStats);
  const OmTable& table = Last();
  ASSERT_EQ(table.fSubType, "Parameter Estimates");
  EXPECT_EQ(Cell(table, "nitro", "Estimate")->fContent.fText, "73.5000");
  EXPECT_EQ(Cell(table, "nitro", "Std. Error")->fContent.fText, "0.0000");
  EXPECT_TRUE(Cell(table, "nitro", "df")->fbMissing);
  EXPECT_TRUE(Cell(table, "nitro", "t")->fbMissing);
  EXPECT_TRUE(Cell(table, "nitro", "Sig.")->fbMissing);
  EXPECT_EQ(Cell(table, "nitro", "Sig.")->fFormat, BpProcedure::Significance().ToText());
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "Lower Bound")->fValue, fStats.GetBetaParamStats()[4].GetLowerBound());
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "Upper Bound")->fValue, fStats.GetBetaParamStats()[4].GetUpperBound());
  EXPECT_TRUE(CellNotes(table, "nitro", "Estimate").empty());
}

TEST_F(OatsEdgeCase, AnUnsetStandardErrorIsExplainedOnlyAfterAHessianWarning) {
  SetStat(4, 73.5, kMissing);
  fStats.AddBuildModelWarning(MCCommon_850::MCStatus(MCCommon_850::MC_NO_VALID_CASES, true));
  MIXParamEstimateOutput writer(fOutput->GetComOutputData());
  writer.DisplayParamEstimates(&fStats);
  EXPECT_TRUE(CellNotes(Last(), "nitro", "Estimate").empty());
  EXPECT_TRUE(Cell(Last(), "nitro", "Std. Error")->fbMissing);

  const std::string note =
      "The standard error of this parameter cannot be computed because the Hessian matrix is singular for it.";
  for (long code : {MCCommon_850::MC_PARAM_HESSIAN_SINGULAR, MCCommon_850::MC_HESSIAN_NOT_PD}) {
    MCGLMM_850::GLMMOutputStats warned = fStats;
    warned.AddBuildModelWarning(MCCommon_850::MCStatus(code, code == MCCommon_850::MC_HESSIAN_NOT_PD));
    writer.DisplayParamEstimates(&warned);
    EXPECT_EQ(CellNotes(Last(), "nitro", "Estimate"), (std::vector<std::string>{note})) << code;
    // Parameters whose standard error is known get no note.
    EXPECT_TRUE(CellNotes(Last(), "Intercept", "Estimate").empty()) << code;
  }
}

TEST_F(OatsEdgeCase, ANegativeDegreesOfFreedomIsMissing) {
  std::vector<MCMath_850::BetaParamStat> stats = fStats.GetBetaParamStats();
  stats[4].SetDF(0.0);
  stats[0].SetDF(12.0);
  fStats.SetBetaParamStats(stats);
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayParamEstimates(&fStats);
  EXPECT_TRUE(Cell(Last(), "nitro", "df")->fbMissing);
  EXPECT_EQ(Cell(Last(), "Intercept", "df")->fContent.fText, "12");
  EXPECT_EQ(Cell(Last(), "Intercept", "df")->fFormat, BpProcedure::Count().ToText());
}

TEST_F(OatsEdgeCase, TheIntervalHeadShowsTheLevel) {
  fSpecs->SetCILevelPct(97.5);
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayParamEstimates(&fStats);
  const std::vector<std::vector<const OmDimensionNode*>> columns = Last().fvDimensions[1].LeafPaths();
  EXPECT_EQ(columns.back()[0]->fLabel.fText, "97.5% Confidence Interval");
}

TEST_F(OatsEdgeCase, WithoutStatisticsTheEstimatesTableHasNoRows) {
  MIXParamEstimateOutput writer(fOutput->GetComOutputData());
  writer.DisplayParamEstimates(nullptr);
  const OmTable& table = Last();
  ASSERT_EQ(table.fSubType, "Parameter Estimates");
  EXPECT_TRUE(table.fCells.empty());
  EXPECT_TRUE(LeafLabels(table, 0).empty());
  EXPECT_EQ(table.fvDimensions.size(), 2u);

  const std::size_t before = Count();
  writer.DisplayCorrParamEst(nullptr);
  writer.DisplayCovarParamEst(nullptr);
  EXPECT_EQ(Count(), before);
}

TEST_F(OatsEdgeCase, PrintOptionNoneWritesNoEstimates) {
  fSpecs->SetPrintOptionNONE(true);
  const std::size_t before = Count();
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayParamEstimates(&fStats);
  EXPECT_EQ(Count(), before);
}

TEST_F(OatsEdgeCase, WithoutCovarianceMatrixNoMatrixIsWritten) {
  fStats.ClearCovarianceMatrixBeta();
  const std::size_t before = Count();
  MIXParamEstimateOutput writer(fOutput->GetComOutputData());
  writer.DisplayCorrParamEst(&fStats);
  writer.DisplayCovarParamEst(&fStats);
  EXPECT_EQ(Count(), before);
}

TEST_F(OatsEdgeCase, TheCorrelationDiagonalNeedsAPositiveVariance) {
  MCMath_850::MCSymMatrix matrix = *fStats.GetCovarianceMatrixBeta();
  matrix.SetElem(0, 0, 1, 1, 0.0);
  matrix.SetElem(0, 0, 4, 0, 0.0);
  fStats.SetCovarianceMatrixBeta(matrix);
  MIXParamEstimateOutput(fOutput->GetComOutputData()).DisplayCorrParamEst(&fStats);
  const OmTable& table = Last();
  ASSERT_EQ(table.fSubType, "Correlation Matrix");
  EXPECT_EQ(Cell(table, "Intercept", "Intercept")->fContent.fText, "1");
  EXPECT_EQ(Cell(table, "Intercept", "Intercept")->fFormat, BpProcedure::Count().ToText());
  const OmCell* zeroVariance = Cell(table, "[Variety=Golden Rain]", "[Variety=Golden Rain]");
  EXPECT_TRUE(zeroVariance->fbMissing);
  EXPECT_EQ(zeroVariance->fFormat, BpProcedure::Correlation().ToText());
  EXPECT_TRUE(CellNotes(table, "[Variety=Golden Rain]", "[Variety=Golden Rain]").empty());
  // A covariance of exactly 0 is a missing correlation, not 0.
  EXPECT_TRUE(Cell(table, "nitro", "Intercept")->fbMissing);
  EXPECT_TRUE(Cell(table, "Intercept", "nitro")->fbMissing);
}

TEST_F(OatsEdgeCase, AFailedSplitWritesNoCriteria) {
  // The component's statistics are there only after a fit; an error status
  // of the split leaves the table out.
  fFactory->SetStatus(MCCommon_850::MCStatus(MCCommon_850::MC_NO_VALID_CASES, false));
  const std::size_t before = Count();
  fOutput->DisplayInfoCriteria();
  EXPECT_EQ(Count(), before);
}

TEST(FindCorrelation, FollowsTheSignOfTheCovariance) {
  MCMath_850::MCSymMatrix matrix({3});
  matrix.SetElem(0, 0, 0, 0, 4.0);
  matrix.SetElem(0, 0, 1, 1, 9.0);
  matrix.SetElem(0, 0, 1, 0, -3.0);
  matrix.SetElem(0, 0, 2, 0, 1.5);
  EXPECT_DOUBLE_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 1, 0, &matrix), -0.5);
  EXPECT_DOUBLE_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 0, 1, &matrix), -0.5);
  EXPECT_DOUBLE_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 1, 1, &matrix), 1.0);
  // Element 2 has no variance.
  EXPECT_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 0, 2, &matrix), kMissing);
  EXPECT_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 2, 2, &matrix), kMissing);
  // A zero covariance reads as missing.
  matrix.SetElem(0, 0, 2, 2, 1.0);
  matrix.SetElem(0, 0, 2, 1, 0.0);
  EXPECT_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 1, 2, &matrix), kMissing);
  EXPECT_DOUBLE_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 2, 0, &matrix), 1.5 / 2.0);
  // Outside the matrix the variance is missing.
  EXPECT_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 5, 5, &matrix), kMissing);
  EXPECT_EQ(MIXParamEstimateOutput::FindCorrelation(0, 0, 0, 1, nullptr), kMissing);
}

TEST(FindCorrelation, WorksAcrossBlocks) {
  MCMath_850::MCSymMatrix matrix({1, 2});
  matrix.SetElem(0, 0, 0, 0, 1.0);
  matrix.SetElem(1, 1, 1, 1, 16.0);
  matrix.SetElem(1, 0, 1, 0, 2.0);
  EXPECT_DOUBLE_EQ(MIXParamEstimateOutput::FindCorrelation(0, 1, 0, 1, &matrix), 0.5);
  EXPECT_DOUBLE_EQ(MIXParamEstimateOutput::FindCorrelation(1, 0, 1, 0, &matrix), 0.5);
  // Block (1, 1) element 0 has no variance.
  EXPECT_EQ(MIXParamEstimateOutput::FindCorrelation(0, 1, 0, 0, &matrix), kMissing);
}

}  // namespace
}  // namespace output_test
