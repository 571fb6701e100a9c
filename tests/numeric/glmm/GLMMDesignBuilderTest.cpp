#include "numeric/glmm/GLMMDesignBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCancelAfter.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRows.h"
#include "numeric/xml/MCVarList.h"

using MCGLMM_850::GLMMDesignBuilder;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCModelEffect;
using MCXML_850::MCVarList;
using namespace MCMath_850::MCConst;

namespace {

using RowsIterator = GLMMTestRows;

// y 0, factor a (2 categories) 1, covariate x 2, frequency weight w 3,
// subject s (3 categories) 4, factor b (3 categories) 5.
MCVarList Variables() { return GLMMTestRows::VarList({"y", "a", "x", "w", "s", "b"}, {0, 2, 0, 0, 3, 3}); }

const std::vector<int> kSet = {1, 5, 2};

MCModelEffect Effect(const std::vector<int>& factors, int xPower, bool nested = false) {
  MCModelEffect effect;
  effect.Setup(2, 1, &kSet);
  for (std::size_t i = 0; i < factors.size(); ++i) effect.AddNewFactor(factors[i], nested && i > 0);
  for (int k = 0; k < xPower; ++k) effect.AddCovariate(2);
  return effect;
}

GLMMSettings Settings() {
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(1, 2);
  settings.AddFactor(5, 3);
  settings.AddCovariate(2);
  return settings;
}

const double kMissing = MCCommon_850::MCMV::Missing();

RowsIterator Rows() {
  return RowsIterator({{1.0, 0, 2.0, 1, 0, 2},
                       {2.0, 1, 3.0, 1, 0, 0},
                       {4.0, 1, -1.0, 2, 1, 1},
                       {kMissing, 0, 1.0, 2, 1, 0},
                       {3.0, 2, 1.0, 1, 2, 0},
                       {5.0, 0, kMissing, 1, 2, 1}});
}

double X(const MCEngine_850::MCEngineInput& input, int r, int c) {
  return input.GetX()[static_cast<std::size_t>(r) * static_cast<std::size_t>(input.GetNColumns()) +
                      static_cast<std::size_t>(c)];
}

}  // namespace

TEST(GLMMDesignBuilder, CovariatePowersAndCovariatesWithinFactors) {
  GLMMSettings settings = Settings();
  settings.AddModelEffect(Effect({}, 2));   // x*x
  settings.AddModelEffect(Effect({1}, 1));  // x(a)
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  RowsIterator rows = Rows();
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  ASSERT_EQ(input.GetNRecords(), 6);
  ASSERT_EQ(input.GetNColumns(), 4);
  EXPECT_EQ(X(input, 0, 0), 1.0);
  EXPECT_EQ(X(input, 0, 1), 4.0);
  EXPECT_EQ(X(input, 2, 1), 1.0);
  EXPECT_EQ(X(input, 0, 2), 2.0);
  EXPECT_EQ(X(input, 0, 3), 0.0);
  EXPECT_EQ(X(input, 1, 2), 0.0);
  EXPECT_EQ(X(input, 1, 3), 3.0);
  ASSERT_EQ(input.GetTerms().size(), 3u);
  EXPECT_TRUE(input.GetTerms()[0].IsIntercept());
  EXPECT_EQ(input.GetTerms()[1].GetCovariates(), (std::vector<int>{2, 2}));
  EXPECT_EQ(input.GetTerms()[2].GetFactors(), (std::vector<int>{1}));
  EXPECT_EQ(input.GetTerms()[2].GetFirstColumn(), 2);
  EXPECT_EQ(input.GetTerms()[2].GetNColumns(), 2);
  const auto& params = builder.GetBetaParameters();
  ASSERT_EQ(params.size(), 4u);
  EXPECT_TRUE(params[0].IsIntercept());
  EXPECT_EQ(params[1].GetCovariateMult(2), 2);
  EXPECT_EQ(params[3].GetCategories(), std::vector<int>{1});
  EXPECT_EQ(params[3].GetEffectIndex(), 1);
  // Unusable records: a missing target, a code outside the factor, a missing covariate.
  EXPECT_TRUE(std::isnan(input.GetY()[3]));
  EXPECT_TRUE(std::isnan(input.GetY()[4]));
  EXPECT_TRUE(std::isnan(input.GetY()[5]));
  EXPECT_EQ(input.GetY()[2], 4.0);
}

TEST(GLMMDesignBuilder, CrossingWithoutInterceptAndWeights) {
  GLMMSettings settings = Settings();
  settings.SetInterceptUse(false);
  settings.SetFrequencyWeightVar(3);
  settings.SetRegrWeightVar(3);
  settings.AddModelEffect(Effect({1, 5}, 0));
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  RowsIterator rows = Rows();
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  ASSERT_EQ(input.GetNColumns(), 6);
  // a varies slowest: record 0 has a=0, b=2 -> column 2; record 1 a=1, b=0 -> column 3.
  EXPECT_EQ(X(input, 0, 2), 1.0);
  EXPECT_EQ(X(input, 1, 3), 1.0);
  double sum = 0.0;
  for (int c = 0; c < 6; ++c) sum += X(input, 0, c);
  EXPECT_EQ(sum, 1.0);
  EXPECT_EQ(input.GetTerms().size(), 1u);
  EXPECT_EQ(input.GetFrequencyWeights(), (std::vector<double>{1, 1, 2, 2, 1, 1}));
  EXPECT_EQ(input.GetScaleWeights(), (std::vector<double>{1, 1, 2, 2, 1, 1}));
  EXPECT_EQ(builder.GetBetaParameters()[5].GetCategories(), (std::vector<int>{1, 2}));
}

TEST(GLMMDesignBuilder, TheFrequencyWeightComesFromTheVariableList) {
  // The settings of a split carry no frequency weight; the list's variable
  // of that role is the weight, rounded to whole numbers when it asks so.
  GLMMSettings settings = Settings();
  settings.AddModelEffect(Effect({1}, 0));
  for (int rounding : {1, 0}) {
    SCOPED_TRACE(rounding);
    MCVarList list = Variables();
    list.GetVarAt(3)->SetRole(ROLE_FREQUENCY_WEIGHT);
    list.GetVarAt(3)->SetWeightRounding(rounding);
    GLMMDesignBuilder builder(settings, list);
    RowsIterator rows({{1.0, 0, 2.0, 0.4, 0, 2},
                       {2.0, 1, 3.0, 2.5, 0, 0},
                       {4.0, 1, -1.0, 1.49, 1, 1},
                       {3.0, 1, 1.0, 2.6, 1, 0}});
    ASSERT_TRUE(builder.Build(&rows).IsOK());
    const std::vector<double> expected =
        rounding == 1 ? std::vector<double>{0, 3, 1, 3} : std::vector<double>{0.4, 2.5, 1.49, 2.6};
    EXPECT_EQ(builder.GetInput().GetFrequencyWeights(), expected);
  }
  // A weight that rounds to 0 leaves its record out of the fit, as a
  // missing value does.
  MCVarList list = Variables();
  list.GetVarAt(3)->SetRole(ROLE_FREQUENCY_WEIGHT);
  list.GetVarAt(3)->SetWeightRounding(1);
  GLMMDesignBuilder builder(settings, list);
  RowsIterator rows({{1.0, 0, 2.0, 0.4, 0, 2}, {2.0, 1, 3.0, kMissing, 0, 0}, {4.0, 1, -1.0, 1.0, 1, 1}});
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  EXPECT_TRUE(std::isnan(builder.GetInput().GetY()[1]));
  MCEngine_850::MCEngineFitter fitter;
  fitter.Fit(builder.GetInput(), MCEngine_850::MCEngineSettings());
  // Only the last record is left, too few for the model.
  EXPECT_EQ(fitter.GetResult().GetStatus().GetCode(), MCEngine_850::MCEngineStatus::kPerfectFit);
  EXPECT_EQ(fitter.GetResult().GetNRecordsUsed(), 1);
  EXPECT_EQ(fitter.GetResult().GetTotalFreqWeight(), 1.0);
}

TEST(GLMMDesignBuilder, RandomAndResidualBlocks) {
  GLMMSettings settings = Settings();
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddEffect(Effect({}, 1));
  block.AddSubjectVar(4);
  block.AddSubjectVar(1);
  block.SetCovarianceType(GLMMConst_850::UN);
  settings.AddRandomSpec(block);
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  const std::vector<int> repeatedSet = {5};
  MCModelEffect position;
  position.Setup(1, 0, &repeatedSet);
  position.AddNewFactor(5, false);
  repeated.AddEffect(position);
  repeated.AddSubjectVar(4);
  repeated.SetCovarianceType(GLMMConst_850::AR1);
  settings.SetRepeated(repeated);
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  RowsIterator rows = Rows();
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  ASSERT_EQ(input.GetRandomBlocks().size(), 1u);
  const MCEngine_850::MCEngineRandomBlock& rb = input.GetRandomBlocks()[0];
  EXPECT_EQ(rb.GetCovType(), MCEngine_850::MCEngineCovType::UN);
  EXPECT_EQ(rb.GetNColumns(), 2);
  EXPECT_EQ(rb.GetColumnEffects(), (std::vector<int>{0, 1}));
  // The crossing s*a is one subject: records 0 (0,0), 1 (0,1), 2 (1,1), 3 (1,0), 4 (2,2), 5 (2,0).
  const std::vector<int>& subjects = rb.GetSubjects();
  ASSERT_EQ(subjects.size(), 6u);
  EXPECT_NE(subjects[0], subjects[1]);
  EXPECT_NE(subjects[2], subjects[3]);
  EXPECT_NE(subjects[0], subjects[5]);
  const MCEngine_850::MCEngineResidualBlock& res = input.GetResidualBlock();
  EXPECT_EQ(res.GetCovType(), MCEngine_850::MCEngineCovType::AR1);
  EXPECT_EQ(res.GetPositions(), (std::vector<int>{2, 0, 1, 0, 0, 1}));
  EXPECT_EQ(res.GetDimension(), 3);
  EXPECT_EQ(res.GetSubjects()[0], res.GetSubjects()[1]);
  EXPECT_NE(res.GetSubjects()[1], res.GetSubjects()[2]);
  ASSERT_EQ(builder.GetGammaParameters().size(), 1u);
  EXPECT_EQ(builder.GetGammaParameters()[0].size(), 2u);
  // The block's intercept is an effect of the block, at position 0.
  EXPECT_TRUE(builder.GetGammaParameters()[0][0].IsIntercept());
  EXPECT_EQ(builder.GetGammaParameters()[0][0].GetEffectIndex(), 0);
  EXPECT_EQ(builder.GetGammaParameters()[0][1].GetEffectIndex(), 1);
}

TEST(GLMMDesignBuilder, CovarianceTypes) {
  MCEngine_850::MCEngineCovType type = MCEngine_850::MCEngineCovType::ID;
  EXPECT_TRUE(GLMMDesignBuilder::MapCovType(GLMMConst_850::CS, type));
  EXPECT_EQ(type, MCEngine_850::MCEngineCovType::CS);
  EXPECT_TRUE(GLMMDesignBuilder::MapCovType(GLMMConst_850::DIAG, type));
  EXPECT_EQ(type, MCEngine_850::MCEngineCovType::DIAG);
  EXPECT_TRUE(GLMMDesignBuilder::MapCovType(GLMMConst_850::ARH1, type));
  EXPECT_EQ(type, MCEngine_850::MCEngineCovType::ARH1);
  EXPECT_TRUE(GLMMDesignBuilder::MapCovType(GLMMConst_850::SP_POW, type));
  EXPECT_EQ(type, MCEngine_850::MCEngineCovType::SP_POW);
  EXPECT_FALSE(GLMMDesignBuilder::MapCovType(GLMMConst_850::COVAR_RESERVED, type));

  // The spatial structures serve the residual block only.
  GLMMSettings settings = Settings();
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddSubjectVar(4);
  block.SetCovarianceType(GLMMConst_850::SP_EXP);
  settings.AddRandomSpec(block);
  const MCVarList list = Variables();
  GLMMDesignBuilder builder(settings, list);
  RowsIterator rows = Rows();
  const MCCommon_850::MCStatus status = builder.Build(&rows);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 130018);
}

namespace {

using StopAt = MCEngineTestCancelAfter;

// 400,000 records of the six variables, a crossing of a and b in the design.
RowsIterator ManyRows() {
  std::vector<std::vector<double>> rows;
  for (int r = 0; r < 400000; ++r) {
    const double three = r % 3;
    rows.push_back({0.5 * (r % 7), static_cast<double>(r % 2), 0.1 * (r % 11), 1.0, three, three});
  }
  return RowsIterator(rows);
}

}  // namespace

TEST(GLMMDesignBuilder, ItsPassesOverTheRecordsAskWhetherToStop) {
  GLMMSettings settings = Settings();
  settings.AddModelEffect(Effect({1, 5}, 0));
  const MCVarList list = Variables();
  RowsIterator rows = ManyRows();
  StopAt never(1 << 30);
  settings.SetCancelPointer(&never);
  GLMMDesignBuilder whole(settings, list);
  ASSERT_TRUE(whole.Build(&rows).IsOK());
  // The response's pass alone reads 400,000 records of four variables, and
  // the design's pass the crossing's cell of each: a question at least
  // every 2^20 of such steps.
  EXPECT_GE(never.GetCount(), 2);
  for (int stopAt : {0, never.GetCount() - 1}) {
    StopAt stop(stopAt);
    settings.SetCancelPointer(&stop);
    GLMMDesignBuilder builder(settings, list);
    const MCCommon_850::MCStatus status = builder.Build(&rows);
    EXPECT_TRUE(status.IsError());
    EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_CANCELLED);
    EXPECT_EQ(stop.GetCount(), stopAt + 1) << "no question after the one that said stop";
  }
}

TEST(GLMMDesignBuilder, ATermOfMoreCellsThanListedHasColumnsForTheCellsTheDataHold) {
  // 13 factors of two levels cross into 8,192 cells; the records hold 16.
  constexpr int kFactors = 13;
  static const std::vector<int> factorVars = [] {
    std::vector<int> v;
    for (int i = 1; i <= kFactors; ++i) v.push_back(i);
    return v;
  }();
  std::vector<std::string> names{"y"};
  std::vector<int> categories{0};
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  MCModelEffect effect;
  effect.Setup(kFactors, 0, &factorVars);
  for (int v : factorVars) {
    names.push_back("f" + std::to_string(v));
    categories.push_back(2);
    settings.AddFactor(v, 2);
    effect.AddNewFactor(v, false);
  }
  settings.AddModelEffect(effect);
  const MCVarList list = GLMMTestRows::VarList(names, categories);
  // Record r is in the cell of the bits of r mod 16 in f1..f4, with f13 = 1
  // and the others 0; the last record, without a response, alone in a cell
  // of f5 = 1, which the fit cannot use and so gets no column.
  auto codeOf = [](int r, int factor) {
    if (r == 400) return factor == 5 ? 1 : 0;
    return factor <= 4 ? ((r % 16) >> (factor - 1)) & 1 : (factor == kFactors ? 1 : 0);
  };
  std::vector<std::vector<double>> records;
  for (int r = 0; r <= 400; ++r) {
    std::vector<double> row{r == 400 ? kMissing : 0.1 * (r % 7)};
    for (int f = 1; f <= kFactors; ++f) row.push_back(codeOf(r, f));
    records.push_back(row);
  }
  RowsIterator rows(records);
  GLMMDesignBuilder builder(settings, list);
  ASSERT_TRUE(builder.Build(&rows).IsOK());
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  ASSERT_EQ(input.GetNColumns(), 17);  // the intercept and the 16 cells held
  const std::vector<MCMath_850::MCRegrParameter>& params = builder.GetBetaParameters();
  ASSERT_EQ(params.size(), 17u);
  for (std::size_t c = 2; c < params.size(); ++c) {
    EXPECT_LT(params[c - 1].GetCategories(), params[c].GetCategories()) << "cells in the order of the full listing";
  }
  for (int r = 0; r < 400; ++r) {
    int nonzero = 0;
    for (int c = 1; c < 17; ++c) {
      if (X(input, r, c) == 0.0) continue;
      ++nonzero;
      const MCMath_850::MCRegrParameter& param = params[static_cast<std::size_t>(c)];
      for (std::size_t i = 0; i < param.GetFactors().size(); ++i) {
        EXPECT_EQ(param.GetCategories()[i], codeOf(r, param.GetFactors()[i])) << "record " << r;
      }
    }
    EXPECT_EQ(nonzero, 1) << "record " << r;
  }
  // A design of one record to score reuses the fit's cells.
  GLMMDesignBuilder scoring(settings, list);
  scoring.UseCells(builder.GetPresentCells());
  RowsIterator one({records[5]});
  ASSERT_TRUE(scoring.Build(&one).IsOK());
  ASSERT_EQ(scoring.GetInput().GetNColumns(), 17);
  // Record 5 has f1..f4 = 1 0 1 0, the eleventh of the cells in order.
  const int column = 1 + 8 * codeOf(5, 1) + 4 * codeOf(5, 2) + 2 * codeOf(5, 3) + codeOf(5, 4);
  EXPECT_EQ(column, 11);
  EXPECT_EQ(scoring.GetBetaParameters()[11].GetCategories(), params[11].GetCategories());
  EXPECT_EQ(X(scoring.GetInput(), 0, column), 1.0);
}

TEST(GLMMDesignBuilder, MoreFixedParametersThanTheLimitAreRefusedBeforeTheDesign) {
  // y 0, a factor f 1 of `levels` levels, a covariate x 2; the model x and
  // f without an intercept: levels + 1 columns.
  auto build = [](int levels, MCCommon_850::MCStatus& status) {
    GLMMSettings settings;
    settings.SetSingleDependent(0);
    settings.AddFactor(1, levels);
    settings.AddCovariate(2);
    static const std::vector<int> vars = {1, 2};
    MCModelEffect x, f;
    x.Setup(0, 1, &vars);
    x.AddCovariate(2);
    f.Setup(1, 0, &vars);
    f.AddNewFactor(1, false);
    settings.AddModelEffect(x);
    settings.AddModelEffect(f);
    const MCVarList list = GLMMTestRows::VarList({"y", "f", "x"}, {0, levels, 0});
    std::vector<std::vector<double>> records;
    for (int r = 0; r < 10; ++r) records.push_back({0.5 * r, static_cast<double>((97 * r) % levels), 0.1 * r});
    RowsIterator rows(records);
    GLMMDesignBuilder builder(settings, list);
    status = builder.Build(&rows);
    return builder.GetInput().GetNColumns();
  };
  MCCommon_850::MCStatus status;
  EXPECT_EQ(build(2999, status), 3000);
  EXPECT_TRUE(status.IsOK());
  EXPECT_EQ(build(3001, status), 0);
  ASSERT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_FIXED_EFFECTS_TOO_LARGE);
  EXPECT_EQ(status.GetDiscreteDatum(0), 1);     // the factor, the model's second effect
  EXPECT_EQ(status.GetDiscreteDatum(1), 3001);  // its parameters
  EXPECT_EQ(status.GetDiscreteDatum(2), 3002);  // with x
  // 8 (40 * 3002^2 + 3 * 10 * 3002) = 2,884,561,760 bytes.
  EXPECT_EQ(status.GetDiscreteDatum(3), 2885);
}
