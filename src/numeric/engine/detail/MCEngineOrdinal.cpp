#include "numeric/engine/detail/MCEngineOrdinal.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "numeric/common/MCQueryCancel.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/detail/MCEngineCriteria.h"
#include "numeric/engine/detail/MCEngineDataBuilder.h"
#include "numeric/engine/detail/MCEngineHypothesis.h"
#include "numeric/engine/detail/MCEngineLatentDistribution.h"
#include "numeric/engine/detail/MCEngineLink.h"
#include "numeric/engine/detail/MCEngineOrdinalLikelihood.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

double ValueOr(const std::vector<double>& v, int r, double fallback) { return v.empty() ? fallback : v[U(r)]; }

// The Newton iterations stop when no gradient entry exceeds this, or when a
// step changes the log likelihood by less than kStepChange relative.
constexpr double kGradientTolerance = 1e-7;
constexpr double kStepChange = 1e-13;
// A random intercept's variance below this is on its bound of 0.
constexpr double kZeroVariance = 1e-10;
// Relative step of the differences; halved once for Richardson's extrapolation.
constexpr double kDifferenceStep = 1e-2;

int InterceptColumn(const MCEngineInput& input) {
  for (const MCEngineTerm& term : input.GetTerms()) {
    if (term.IsIntercept()) return term.GetFirstColumn();
  }
  return -1;
}

}  // namespace

MCEngineOrdinal::MCEngineOrdinal(const MCEngineInput& input, const MCEngineSettings& settings)
    : fInput(input), fSettings(settings) {}

MCEngineOrdinal::~MCEngineOrdinal() = default;

bool MCEngineOrdinal::Applies(const MCEngineSettings& settings) {
  const MCEngineTarget& target = settings.GetTarget();
  return target.GetDistribution() == GLMMConst_850::DIST_MULTINOMIAL && target.GetOrdered();
}

int MCEngineOrdinal::GetNColumns() const { return fInput.GetNColumns(); }

bool MCEngineOrdinal::WeighsIntercept(const std::vector<double>& l) const {
  for (const MCEngineTerm& term : fInput.GetTerms()) {
    if (!term.IsIntercept()) continue;
    for (int c = term.GetFirstColumn(); c < term.GetFirstColumn() + term.GetNColumns(); ++c) {
      if (c >= 0 && U(c) < l.size() && l[U(c)] != 0.0) return true;
    }
  }
  return false;
}

bool MCEngineOrdinal::CanFit(const MCEngineInput& input, const MCEngineSettings& settings) {
  if (!Applies(settings) || !MCEngineLatentDistribution::Takes(settings.GetTarget().GetLink())) return false;
  if (InterceptColumn(input) < 0) return false;
  // No sandwich of the ordinal likelihood is formed, and the model-based
  // covariance is not given in its place.
  if (settings.GetRobustCovariance()) return false;
  const MCEngineResidualBlock& residual = input.GetResidualBlock();
  if (!residual.GetSubjects().empty() || !residual.GetPositions().empty() || residual.GetNCoordinates() > 0) {
    return false;
  }
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  if (blocks.empty()) return true;
  return blocks.size() == 1 && blocks.front().GetNColumns() == 1 && !blocks.front().GetSubjects().empty();
}

MCEngineStatus MCEngineOrdinal::ReadRecords() {
  const int n = fInput.GetNRecords();
  const int P = fInput.GetNColumns();
  const std::vector<double>& y = fInput.GetY();
  const std::vector<double>& X = fInput.GetX();
  const bool random = !fInput.GetRandomBlocks().empty();
  std::map<int, int> subjects;
  for (int r = 0; r < n; ++r) {
    const double freq = ValueOr(fInput.GetFrequencyWeights(), r, 1.0);
    const double scale = ValueOr(fInput.GetScaleWeights(), r, 1.0);
    bool ok = std::isfinite(y[U(r)]) && freq > 0.0 && scale > 0.0 && std::isfinite(freq) && std::isfinite(scale) &&
              std::isfinite(ValueOr(fInput.GetOffset(), r, 0.0));
    for (int j = 0; ok && j < P; ++j) ok = std::isfinite(X[U(r) * U(P) + U(j)]);
    const MCEngineRandomBlock* block = random ? &fInput.GetRandomBlocks().front() : nullptr;
    if (ok && block) {
      ok = block->GetSubjects()[U(r)] >= 0 && block->GetRowStart()[U(r) + 1] > block->GetRowStart()[U(r)];
    }
    if (!ok) continue;
    fvRecords.push_back(r);
    fvWeight.push_back(freq * scale);
    fTotalWeight += freq;
    if (block) subjects.emplace(block->GetSubjects()[U(r)], 0);
    fvCategories.push_back(y[U(r)]);
  }
  if (fvRecords.empty()) return MCEngineStatus(MCEngineStatus::kNoValidCases, MCEngineStatus::kError);
  std::sort(fvCategories.begin(), fvCategories.end());
  fvCategories.erase(std::unique(fvCategories.begin(), fvCategories.end()), fvCategories.end());
  // One category leaves nothing to model: every record is fitted exactly.
  if (fvCategories.size() < 2) return MCEngineStatus(MCEngineStatus::kPerfectFit, MCEngineStatus::kError);
  for (int r : fvRecords) {
    const auto it = std::lower_bound(fvCategories.begin(), fvCategories.end(), y[U(r)]);
    fvCategory.push_back(static_cast<int>(it - fvCategories.begin()));
  }
  if (!random) return MCEngineStatus();
  int next = 0;
  for (auto& entry : subjects) {
    entry.second = next++;
    fvSubjectCodes.push_back(entry.first);
  }
  const std::vector<int>& codes = fInput.GetRandomBlocks().front().GetSubjects();
  for (int r : fvRecords) fvSubject.push_back(subjects[codes[U(r)]]);
  return MCEngineStatus();
}

void MCEngineOrdinal::FindColumns() {
  const int P = fInput.GetNColumns();
  const std::vector<double>& X = fInput.GetX();
  fvXtX.assign(U(P) * U(P), 0.0);
  for (std::size_t k = 0; k < fvRecords.size(); ++k) {
    const int r = fvRecords[k];
    const double w = ValueOr(fInput.GetFrequencyWeights(), r, 1.0);
    for (int i = 0; i < P; ++i) {
      const double xi = X[U(r) * U(P) + U(i)];
      if (xi == 0.0) continue;
      for (int j = 0; j < P; ++j) fvXtX[U(i) * U(P) + U(j)] += w * xi * X[U(r) * U(P) + U(j)];
    }
  }
  fvAliased = MCEngineDataBuilder::FindAliased(fvXtX, P, fSettings.GetSingularTolerance());
  const int intercept = InterceptColumn(fInput);
  for (int j = 0; j < P; ++j) {
    if (!fvAliased[U(j)] && j != intercept) fvFree.push_back(j);
  }
}

Eigen::MatrixXd MCEngineOrdinal::CrossProducts() const {
  const int P = fInput.GetNColumns();
  Eigen::MatrixXd xtx(P, P);
  for (int i = 0; i < P; ++i) {
    for (int j = 0; j < P; ++j) xtx(i, j) = fvXtX[U(i) * U(P) + U(j)];
  }
  return xtx;
}

Eigen::VectorXd MCEngineOrdinal::Natural(const Eigen::VectorXd& free) const {
  Eigen::VectorXd natural = free;
  for (int j = 1; j < fpLikelihood->GetNThresholds(); ++j) natural[j] = natural[j - 1] + std::exp(free[j]);
  return natural;
}

Eigen::VectorXd MCEngineOrdinal::Free(const Eigen::VectorXd& natural) const {
  Eigen::VectorXd free = natural;
  for (int j = 1; j < fpLikelihood->GetNThresholds(); ++j) free[j] = std::log(natural[j] - natural[j - 1]);
  return free;
}

Eigen::VectorXd MCEngineOrdinal::Start() const {
  // Thresholds at the link of the cumulative proportions, no effects, and
  // a random intercept of standard deviation 1.
  const int nt = fpLikelihood->GetNThresholds();
  Eigen::VectorXd natural = Eigen::VectorXd::Zero(fpLikelihood->GetNParameters());
  std::vector<double> count(fvCategories.size(), 0.0);
  double total = 0.0;
  for (std::size_t k = 0; k < fvRecords.size(); ++k) {
    count[U(fvCategory[k])] += fvWeight[k];
    total += fvWeight[k];
  }
  const MCEngineLink link(fSettings.GetTarget().GetLink(), 1.0);
  double cumulative = 0.0;
  for (int j = 0; j < nt; ++j) {
    cumulative += count[U(j)];
    // Empty categories still need increasing thresholds.
    const double p = std::min(std::max(cumulative / total, 1e-3 * (j + 1)), 1.0 - 1e-3 * (nt - j));
    natural[j] = link.Eta(p);
    if (j > 0 && natural[j] <= natural[j - 1]) natural[j] = natural[j - 1] + 0.1;
  }
  return Free(natural);
}

double MCEngineOrdinal::Objective(const Eigen::VectorXd& at, bool natural) const {
  return fpLikelihood->LogLik(natural ? at : Natural(at));
}

Eigen::VectorXd MCEngineOrdinal::Gradient(const Eigen::VectorXd& at, bool natural) const {
  const Eigen::Index m = at.size();
  Eigen::VectorXd g(m);
  for (Eigen::Index i = 0; i < m; ++i) {
    auto central = [&](double h) {
      Eigen::VectorXd a = at, b = at;
      a[i] += h;
      b[i] -= h;
      return (Objective(a, natural) - Objective(b, natural)) / (2.0 * h);
    };
    const double h = 0.1 * kDifferenceStep * std::max(1.0, std::fabs(at[i]));
    g[i] = (4.0 * central(0.5 * h) - central(h)) / 3.0;
  }
  return g;
}

Eigen::MatrixXd MCEngineOrdinal::Hessian(const Eigen::VectorXd& at, bool natural) const {
  const Eigen::Index m = at.size();
  const double f0 = Objective(at, natural);
  auto second = [&](Eigen::Index i, Eigen::Index j, double hi, double hj) {
    auto f = [&](double si, double sj) {
      Eigen::VectorXd a = at;
      a[i] += si;
      a[j] += sj;
      return Objective(a, natural);
    };
    if (i == j) return (f(hi, 0.0) - 2.0 * f0 + f(-hi, 0.0)) / (hi * hi);
    return (f(hi, hj) - f(hi, -hj) - f(-hi, hj) + f(-hi, -hj)) / (4.0 * hi * hj);
  };
  Eigen::MatrixXd H(m, m);
  for (Eigen::Index i = 0; i < m; ++i) {
    const double hi = kDifferenceStep * std::max(1.0, std::fabs(at[i]));
    for (Eigen::Index j = 0; j <= i; ++j) {
      const double hj = kDifferenceStep * std::max(1.0, std::fabs(at[j]));
      H(i, j) = (4.0 * second(i, j, 0.5 * hi, 0.5 * hj) - second(i, j, hi, hj)) / 3.0;
      H(j, i) = H(i, j);
    }
  }
  return H;
}

bool MCEngineOrdinal::Maximise(Eigen::VectorXd& free) {
  double f = Objective(free, false);
  if (!std::isfinite(f)) return false;
  const int maxIterations = std::max(fSettings.GetMaxIterations(), 1);
  for (int iteration = 1; iteration <= maxIterations; ++iteration) {
    fResult.SetIterations(iteration);
    const Eigen::VectorXd g = Gradient(free, false);
    if (g.cwiseAbs().maxCoeff() < kGradientTolerance) return true;
    const Eigen::MatrixXd negH = -Hessian(free, false);
    // Levenberg's damping until the system is positive definite.
    Eigen::VectorXd step;
    const Eigen::Index m = free.size();
    for (double lambda = 0.0; lambda < 1e12; lambda = lambda == 0.0 ? 1e-6 : 10.0 * lambda) {
      Eigen::LLT<Eigen::MatrixXd> llt(negH + lambda * Eigen::MatrixXd::Identity(m, m));
      if (llt.info() == Eigen::Success) {
        step = llt.solve(g);
        break;
      }
    }
    if (step.size() == 0) step = g;
    double next = f;
    bool improved = false;
    for (int halving = 0; halving <= fSettings.GetMaxStepHalvings(); ++halving) {
      next = Objective(free + step, false);
      if (std::isfinite(next) && next >= f) {
        improved = true;
        break;
      }
      step *= 0.5;
    }
    if (!improved) return g.cwiseAbs().maxCoeff() < 1e3 * kGradientTolerance;
    free += step;
    const double change = next - f;
    f = next;
    if (change <= kStepChange * std::fabs(f) && step.cwiseAbs().maxCoeff() < 1e-8) return true;
    if (fSettings.GetCancel() != nullptr && fSettings.GetCancel()->IsCancelled()) return false;
  }
  return false;
}

MCEngineStatus MCEngineOrdinal::Fit() {
  fResult = MCEngineResult();
  MCEngineStatus status = ReadRecords();
  if (status.IsError()) return status;
  FindColumns();
  const int P = fInput.GetNColumns();
  const int q = static_cast<int>(fvFree.size());
  Eigen::MatrixXd x(static_cast<Eigen::Index>(fvRecords.size()), q);
  std::vector<double> offset;
  for (std::size_t k = 0; k < fvRecords.size(); ++k) {
    const int r = fvRecords[k];
    for (int j = 0; j < q; ++j) x(static_cast<Eigen::Index>(k), j) = fInput.GetX()[U(r) * U(P) + U(fvFree[U(j)])];
    offset.push_back(ValueOr(fInput.GetOffset(), r, 0.0));
  }
  const MCEngineTarget& target = fSettings.GetTarget();
  const int points = target.GetFitMethod() == GLMMConst_850::FIT_QUADRATURE ? target.GetQuadraturePoints() : 1;
  fpLikelihood = std::make_unique<MCEngineOrdinalLikelihood>(
      target.GetLink(), static_cast<int>(fvCategories.size()), fvCategory, x, offset, fvWeight, fvSubject,
      static_cast<int>(fvSubjectCodes.size()), points);
  Eigen::VectorXd free = Start();
  const bool converged = Maximise(free);
  if (!std::isfinite(Objective(free, false))) {
    return MCEngineStatus(MCEngineStatus::kInitialValueFailed, MCEngineStatus::kError);
  }
  FillResult(Natural(free), converged);
  return fResult.GetStatus();
}

void MCEngineOrdinal::FillResult(const Eigen::VectorXd& natural, bool converged) {
  const int nt = fpLikelihood->GetNThresholds();
  const int q = fpLikelihood->GetNBeta();
  const Eigen::Index m = natural.size();
  fResult.SetConverged(converged);
  fResult.SetREML(false);
  fResult.SetGeneralized(true);
  fResult.SetPseudoConverged(converged);
  fResult.SetScaleFixed(true);
  fResult.SetScale(1.0);
  fResult.SetNRecordsUsed(static_cast<int>(fvRecords.size()));
  fResult.SetTotalFreqWeight(fTotalWeight);
  fResult.SetRankX(q + 1);
  fResult.SetTargetCategories(fvCategories);
  MCEngineStatus status;
  if (!converged) status = MCEngineStatus(MCEngineStatus::kIterationLimit, MCEngineStatus::kWarning);
  // The covariance of the estimates is the inverse observed information,
  // from the Hessian of the log likelihood in the natural parameters.
  Eigen::MatrixXd cov = Eigen::MatrixXd::Constant(m, m, MCEngineMissing::Value());
  const Eigen::MatrixXd info = -Hessian(natural, true);
  Eigen::LLT<Eigen::MatrixXd> llt(info);
  if (llt.info() == Eigen::Success) {
    cov = llt.solve(Eigen::MatrixXd::Identity(m, m));
  } else if (status.IsOK()) {
    status = MCEngineStatus(MCEngineStatus::kFinalHessianNotPD, MCEngineStatus::kWarning);
  }
  const double df = std::max(fTotalWeight - nt - q, 1.0);
  fResult.SetFixedDF(df);
  const double alpha = 1.0 - fSettings.GetConfidenceLevel() / 100.0;
  const double tq = MCEngineProbability::TQuantile(1.0 - alpha / 2.0, df);
  auto stat = [&](int i) {
    MCEngineBetaStat b;
    b.SetEstimate(natural[i]);
    const double var = cov(i, i);
    if (!(var > 0.0)) return b;
    const double se = std::sqrt(var);
    b.SetStdError(se);
    b.SetDF(df);
    b.SetT(natural[i] / se);
    b.SetSig(MCEngineProbability::TTwoSided(natural[i] / se, df));
    b.SetLower(natural[i] - tq * se);
    b.SetUpper(natural[i] + tq * se);
    return b;
  };
  std::vector<MCEngineBetaStat> thresholds;
  for (int j = 0; j < nt; ++j) thresholds.push_back(stat(j));
  fResult.SetThresholds(thresholds);
  const int P = fInput.GetNColumns();
  std::vector<MCEngineBetaStat> beta(U(P));
  Eigen::VectorXd betaP = Eigen::VectorXd::Zero(P);
  Eigen::MatrixXd covP = Eigen::MatrixXd::Zero(P, P);
  for (int j = 0; j < P; ++j) beta[U(j)].SetRedundant(true);
  for (int i = 0; i < q; ++i) {
    const int col = fvFree[U(i)];
    beta[U(col)] = stat(nt + i);
    betaP[col] = natural[nt + i];
    for (int k = 0; k < q; ++k) covP(col, fvFree[U(k)]) = llt.info() == Eigen::Success ? cov(nt + i, nt + k) : 0.0;
  }
  fResult.SetBeta(beta);
  std::vector<double> rowMajor(U(P) * U(P));
  for (int i = 0; i < P; ++i) {
    for (int j = 0; j < P; ++j) rowMajor[U(i) * U(P) + U(j)] = covP(i, j);
  }
  fResult.SetCovBeta(rowMajor);
  fResult.SetModelCovBeta(rowMajor);
  fpHypothesis = std::make_unique<MCEngineHypothesis>(CrossProducts(), fvAliased);
  fpHypothesis->SetEstimates(betaP, covP, {}, {}, Eigen::MatrixXd());
  fpHypothesis->SetFixedDF(df);
  FillLatentHypothesis(natural, cov, llt.info() == Eigen::Success, df);
  FillTests();
  FillVariance(natural, cov);
  FillCriteria(fpLikelihood->LogLik(natural));
  FillPredictors(natural);
  fResult.SetStatus(status);
  if (status.IsWarning()) fResult.AddWarning(status);
}

void MCEngineOrdinal::FillTests() {
  const std::vector<MCEngineTerm>& terms = fInput.GetTerms();
  std::vector<MCEngineTest> typeI, typeIII;
  for (int t = 0; t < static_cast<int>(terms.size()); ++t) {
    MCEngineTest t1, t3;
    // The thresholds stand for the intercept, which has no test of its own.
    if (!terms[U(t)].IsIntercept()) {
      t1 = fpHypothesis->Test(fpHypothesis->TypeI(terms[U(t)]));
      t3 = fpHypothesis->Test(fpHypothesis->TypeIII(terms, t));
    }
    t1.SetTerm(t);
    t3.SetTerm(t);
    typeI.push_back(t1);
    typeIII.push_back(t3);
  }
  fResult.SetTypeITests(typeI);
  fResult.SetTypeIIITests(typeIII);
}

void MCEngineOrdinal::FillLatentHypothesis(const Eigen::VectorXd& natural, const Eigen::MatrixXd& cov, bool covOK,
                                           double df) {
  const int nt = fpLikelihood->GetNThresholds();
  const int q = fpLikelihood->GetNBeta();
  const int P = fInput.GetNColumns();
  const int intercept = InterceptColumn(fInput);
  // Each column as a function of the natural parameters: the intercept's
  // minus the thresholds' mean, a free column its coefficient.
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(P, natural.size());
  for (int j = 0; j < nt; ++j) J(intercept, j) = -1.0 / nt;
  for (int i = 0; i < q; ++i) J(fvFree[U(i)], nt + i) = 1.0;
  const Eigen::VectorXd beta = J * natural;
  const Eigen::MatrixXd covP = covOK ? Eigen::MatrixXd(J * cov * J.transpose()) : Eigen::MatrixXd::Zero(P, P);
  fpLatentHypothesis = std::make_unique<MCEngineHypothesis>(CrossProducts(), fvAliased);
  fpLatentHypothesis->SetEstimates(beta, covP, {}, {}, Eigen::MatrixXd());
  fpLatentHypothesis->SetFixedDF(df);
}

void MCEngineOrdinal::FillVariance(const Eigen::VectorXd& natural, const Eigen::MatrixXd& cov) {
  if (!fpLikelihood->HasRandom()) return;
  const Eigen::Index last = natural.size() - 1;
  const double variance = std::exp(2.0 * natural[last]);
  MCEngineCovParam cp;
  cp.SetBlock(0);
  cp.SetEffect(0);
  cp.SetLabel("Variance");
  cp.SetKind(MCEngineCovParam::kVariance);
  cp.SetEstimate(variance);
  cp.SetOnBoundary(variance < kZeroVariance);
  // The delta method from log sigma: d sigma^2 / d log sigma = 2 sigma^2.
  const double varLog = cov(last, last);
  double asy = MCEngineMissing::Value();
  if (!cp.IsOnBoundary() && varLog > 0.0) {
    asy = 4.0 * variance * variance * varLog;
    const double se = std::sqrt(asy);
    const double z = variance / se;
    const double alpha = 1.0 - fSettings.GetConfidenceLevel() / 100.0;
    const double nu = 2.0 * z * z;
    cp.SetStdError(se);
    cp.SetWaldZ(z);
    cp.SetSig(MCEngineProbability::NormalUpper(z));
    cp.SetLower(nu * variance / MCEngineProbability::ChiSquareQuantile(1.0 - alpha / 2.0, nu));
    cp.SetUpper(nu * variance / MCEngineProbability::ChiSquareQuantile(alpha / 2.0, nu));
  }
  fResult.SetCovParams({cp});
  fResult.SetCovParamsCov({asy});
  fResult.SetNCovParamsFree(cp.IsOnBoundary() ? 0 : 1);
  fResult.SetNGroups(static_cast<double>(fpLikelihood->GetNSubjects()));
}

void MCEngineOrdinal::FillCriteria(double logLik) {
  const double m2ll = -2.0 * logLik;
  const double d = fpLikelihood->GetNParameters();
  // As for a linear model: the number of subjects when there are random
  // effects, else the records.
  const double nIC = fpLikelihood->HasRandom() ? fpLikelihood->GetNSubjects() : fTotalWeight;
  const double nStar = std::max(fTotalWeight, d + 2.0);
  fResult.SetMinus2LogLik(m2ll);
  SetInformationCriteria(fResult, m2ll, d, nStar, nIC);
}

void MCEngineOrdinal::FillPredictors(const Eigen::VectorXd& natural) {
  std::vector<double> modes;
  fpLikelihood->LogLik(natural, &modes);
  fResult.SetConditionalModes(modes);
  const Eigen::VectorXd eta = fpLikelihood->FixedPredictor(natural);
  std::vector<double> linear(U(fInput.GetNRecords()), MCEngineMissing::Value());
  for (std::size_t k = 0; k < fvRecords.size(); ++k) {
    const double u = fvSubject.empty() ? 0.0 : modes[U(fvSubject[k])];
    linear[U(fvRecords[k])] = eta[static_cast<Eigen::Index>(k)] + u;
  }
  fResult.SetLinearPredictor(linear);
  fResult.SetFittedMean(std::vector<double>(U(fInput.GetNRecords()), MCEngineMissing::Value()));
}

}  // namespace MCEngine_850
