#include "numeric/glmm/GLMMCustomTestBuilder.h"

#include <cmath>

#include "numeric/common/MCMV.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/MCEngineTest.h"
#include "numeric/glmm/GLMMPredictor.h"
#include "numeric/glmm/GLMMSettings.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;
using MCEngine_850::MCEngineMissing;
using MCEngine_850::MCEngineProbability;
using MCEngine_850::MCEngineRandomEntry;
using Row = GLMMCustomTestStat::RowData;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

double FromEngine(double value) { return MCEngineMissing::Is(value) ? MCMV::Missing() : value; }

// The columns of a list of parameters that belong to an effect, in order.
std::vector<int> EffectColumns(const std::vector<MCMath_850::MCRegrParameter>& params, int effect) {
  std::vector<int> columns;
  for (std::size_t c = 0; c < params.size(); ++c) {
    if (params[c].GetEffectIndex() == effect) columns.push_back(static_cast<int>(c));
  }
  return columns;
}

}  // namespace

GLMMCustomTestBuilder::GLMMCustomTestBuilder(const GLMMSettings& settings,
                                             const std::vector<MCMath_850::MCRegrParameter>& betaParameters,
                                             const std::vector<std::vector<MCMath_850::MCRegrParameter>>& gammaParameters)
    : fpSettings(&settings), fvBetaParameters(betaParameters), fvvGammaParameters(gammaParameters) {}

bool GLMMCustomTestBuilder::NeedsPredictor() const {
  for (const CustomTest& test : fpSettings->GetCustomTests()) {
    for (int i = 0; i < test.GetNRows(); ++i) {
      if (test.HasRandomPart(i)) return true;
    }
  }
  return false;
}

bool GLMMCustomTestBuilder::FixedCoefficients(const LMatrixRow& row, std::vector<double>& x) const {
  const std::size_t P = fvBetaParameters.size();
  x.assign(P, 0.0);
  if (row.GetType() == GLMMConst_850::LROW_ALL_VALUES) {
    if (row.GetAllValues().size() != P) return false;
    x = row.GetAllValues();
    return true;
  }
  if (row.GetType() == GLMMConst_850::LROW_FIXED_WITH_INTERCEPT) {
    const std::vector<int> intercept = EffectColumns(fvBetaParameters, -1);
    if (intercept.size() != 1) return false;
    x[U(intercept[0])] = row.GetFirstValue();
  }
  for (int p = 0; p < row.GetNPairs(); ++p) {
    const std::vector<double>& values = row.GetPairValues()[U(p)];
    const std::vector<int> columns = EffectColumns(fvBetaParameters, row.GetPairEffects()[U(p)]);
    if (columns.size() != values.size()) return false;
    for (std::size_t c = 0; c < columns.size(); ++c) x[U(columns[c])] = values[c];
  }
  return true;
}

bool GLMMCustomTestBuilder::RandomEntries(const LMatrixRow& row, const GLMMPredictor& predictor,
                                          std::vector<MCEngineRandomEntry>& z) const {
  z.clear();
  const std::vector<GLMMRandomSpec>& specs = fpSettings->GetRandomSpecs();
  if (specs.size() != fvvGammaParameters.size()) return false;
  auto addEntry = [&](int block, int k, int column, double value) {
    const int subject = predictor.GetSubjectNumber(block, k);
    if (subject < 0) return false;
    if (value != 0.0) z.emplace_back(block, subject, column, value);
    return true;
  };

  if (row.GetType() == GLMMConst_850::LROW_ALL_VALUES) {
    const std::vector<double>& values = row.GetAllValues();
    std::size_t v = 0;
    for (int b = 0; b < static_cast<int>(specs.size()); ++b) {
      const int nColumns = static_cast<int>(fvvGammaParameters[U(b)].size());
      for (int c = 0; c < nColumns; ++c, ++v) {
        if (v >= values.size() || !addEntry(b, 0, c, values[v])) return false;
      }
    }
    return v == values.size();
  }

  for (int p = 0; p < row.GetNPairs(); ++p) {
    // The flat place of the effect gives its block and its place there.
    int effect = row.GetPairEffects()[U(p)];
    int block = 0;
    while (block < static_cast<int>(specs.size()) && effect >= specs[U(block)].GetNEffects()) {
      effect -= specs[U(block)].GetNEffects();
      ++block;
    }
    if (block >= static_cast<int>(specs.size())) return false;
    const std::vector<int> columns = EffectColumns(fvvGammaParameters[U(block)], effect);
    const std::vector<double>& values = row.GetPairValues()[U(p)];
    if (columns.empty() || values.size() % columns.size() != 0) return false;
    for (std::size_t v = 0; v < values.size(); ++v) {
      const int k = static_cast<int>(v / columns.size());
      if (!addEntry(block, k, columns[v % columns.size()], values[v])) return false;
    }
  }
  return true;
}

void GLMMCustomTestBuilder::CompleteRow(Row& row) const {
  const double se = row.fStdError;
  if (MCMV::IsMissing(row.fEstimate) || MCMV::IsMissing(se) || !(se > 0.0)) {
    row.fState = GLMMCustomTestStat::kNoVariance;
    return;
  }
  row.fT = (row.fEstimate - row.fK) / se;
  const double df = row.fDF;
  if (MCMV::IsMissing(df) || !(df > 0.0)) return;
  row.fSig = MCEngineProbability::TTwoSided(row.fT, df);
  const double alpha = 1.0 - fpSettings->GetConfidenceLevel();
  const double tq = MCEngineProbability::TQuantile(1.0 - alpha / 2.0, df);
  row.fLowerBound = row.fEstimate - tq * se;
  row.fUpperBound = row.fEstimate + tq * se;
}

GLMMCustomTestStat GLMMCustomTestBuilder::BuildTest(const CustomTest& test,
                                                    const MCEngine_850::MCEngineFitter& fitter,
                                                    const GLMMPredictor* pPredictor) const {
  GLMMCustomTestStat stat;
  stat.SetLabel(test.GetLabel());
  const std::vector<double>& kValues = test.GetKMatrix();
  std::vector<std::vector<double>> L;
  std::vector<double> K;
  GLMMCustomTestStat::State joint = GLMMCustomTestStat::kComputed;
  bool anyRandom = false;
  for (int i = 0; i < test.GetNRows(); ++i) {
    Row row;
    row.fK = U(i) < kValues.size() ? kValues[U(i)] : 0.0;
    row.fbRandomPart = test.HasRandomPart(i);
    anyRandom = anyRandom || row.fbRandomPart;
    std::vector<MCEngineRandomEntry> z;
    if (!FixedCoefficients(test.GetFixedRows()[U(i)], row.fvFixedCoefficients)) {
      row.fState = GLMMCustomTestStat::kWrongLength;
    } else if (!fitter.IsEstimable(row.fvFixedCoefficients)) {
      row.fState = GLMMCustomTestStat::kNotEstimable;
    } else if (row.fbRandomPart &&
               (pPredictor == nullptr || !RandomEntries(test.GetRandomRows()[U(i)], *pPredictor, z))) {
      row.fState = GLMMCustomTestStat::kRandomPartInvalid;
    } else if (row.fbRandomPart) {
      const MCEngine_850::MCEnginePrediction pred = pPredictor->Predict(row.fvFixedCoefficients, z);
      row.fEstimate = FromEngine(pred.GetEstimate());
      row.fStdError = FromEngine(pred.GetStdError());
      row.fDF = FromEngine(pred.GetDF());
      CompleteRow(row);
    } else {
      const MCEngine_850::MCEngineTest single = fitter.TestContrast({row.fvFixedCoefficients}, {row.fK});
      row.fEstimate = FromEngine(single.GetEstimate());
      row.fStdError = FromEngine(single.GetStdError());
      row.fDF = FromEngine(single.GetDenDF());
      CompleteRow(row);
    }
    if (joint == GLMMCustomTestStat::kComputed && row.fState != GLMMCustomTestStat::kComputed) joint = row.fState;
    L.push_back(row.fvFixedCoefficients);
    K.push_back(row.fK);
    stat.AddRow(row);
  }

  if (joint == GLMMCustomTestStat::kComputed && anyRandom) {
    if (stat.GetRows().size() != 1) {
      joint = GLMMCustomTestStat::kJointWithRandomPart;
    } else {
      const Row& row = stat.GetRows()[0];
      stat.SetJoint(MCMath_850::MCTestStats(row.fT * row.fT, 1.0, row.fDF, row.fSig));
    }
  } else if (joint == GLMMCustomTestStat::kComputed) {
    const MCEngine_850::MCEngineTest F = fitter.TestContrast(L, K);
    if (!F.IsValid()) {
      joint = GLMMCustomTestStat::kNoVariance;
    } else {
      stat.SetJoint(MCMath_850::MCTestStats(FromEngine(F.GetF()), FromEngine(F.GetNumDF()),
                                            FromEngine(F.GetDenDF()), FromEngine(F.GetSig())));
    }
  }
  stat.SetJointState(joint);
  return stat;
}

std::vector<GLMMCustomTestStat> GLMMCustomTestBuilder::Build(const MCEngine_850::MCEngineFitter& fitter,
                                                             const GLMMPredictor* pPredictor) const {
  std::vector<GLMMCustomTestStat> stats;
  for (const CustomTest& test : fpSettings->GetCustomTests()) stats.push_back(BuildTest(test, fitter, pPredictor));
  return stats;
}

}  // namespace MCGLMM_850
