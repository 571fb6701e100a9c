#include "numeric/engine/detail/MCEngineLaplace.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "numeric/engine/detail/MCCovStructureFactory.h"
#include "numeric/engine/detail/MCEngineFitterImpl.h"
#include "numeric/engine/detail/MCEnginePseudoLikelihood.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }
inline Eigen::Index I(int i) { return static_cast<Eigen::Index>(i); }

constexpr double kInfinity = std::numeric_limits<double>::infinity();
// The conditional modes are found when no step moves u by more than this.
constexpr double kModeTolerance = 1e-10;
constexpr int kMaxModeIterations = 200;
constexpr int kMaxHalvings = 40;
// The Newton iterations stop when the predicted decrease of the deviance,
// g' H^-1 g / 2, falls below this.
constexpr double kDecreaseTolerance = 1e-9;
constexpr int kMaxIterations = 100;
// The difference step of a parameter, relative to its size beyond 1.
constexpr double kRelativeStep = 1e-3;

// Nodes and weights of n-point Gauss-Hermite quadrature against the
// standard normal density: the eigenvalues of the Jacobi matrix of the
// probabilists' Hermite polynomials and the squared first components of
// their eigenvectors.
void NormalQuadrature(int n, Eigen::VectorXd& nodes, Eigen::VectorXd& weights) {
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(I(n), I(n));
  for (int k = 1; k < n; ++k) J(I(k - 1), I(k)) = J(I(k), I(k - 1)) = std::sqrt(static_cast<double>(k));
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(J);
  nodes = es.eigenvalues();
  weights = es.eigenvectors().row(0).transpose().array().square();
}

}  // namespace

MCEngineLaplace::MCEngineLaplace(const MCEngineInput& input, const MCEngineSettings& settings)
    : fInput(input), fSettings(settings) {
  const MCEngineTarget& target = settings.GetTarget();
  const int points = target.GetFitMethod() == GLMMConst_850::FIT_QUADRATURE ? target.GetQuadraturePoints() : 1;
  NormalQuadrature(std::max(points, 1), fNodes, fWeights);
}

MCEngineLaplace::~MCEngineLaplace() = default;

bool MCEngineLaplace::IsAsked(const MCEngineSettings& settings) {
  const GLMMConst_850::GeneralizedFitMethod method = settings.GetTarget().GetFitMethod();
  return method == GLMMConst_850::FIT_LAPLACE || method == GLMMConst_850::FIT_QUADRATURE;
}

bool MCEngineLaplace::CanFit(const MCEngineInput& input, const MCEngineSettings& settings) {
  using namespace GLMMConst_850;
  const MCEngineTarget& target = settings.GetTarget();
  if (!IsAsked(settings)) return false;
  // The links and the residual side are those pseudo-likelihood, the
  // start, can fit.
  if (!MCEnginePseudoLikelihood::CanFit(input, StartSettings(settings))) return false;
  const TargetDistType dist = target.GetDistribution();
  if (dist != DIST_BINOMIAL && dist != DIST_POISSON) return false;
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  if (blocks.size() > 1) return false;
  if (target.GetFitMethod() == FIT_QUADRATURE) {
    if (blocks.size() != 1 || blocks.front().GetNColumns() != 1) return false;
    if (target.GetQuadraturePoints() < 1 || target.GetQuadraturePoints() > 25) return false;
  }
  return true;
}

MCEngineSettings MCEngineLaplace::StartSettings(const MCEngineSettings& settings) {
  MCEngineSettings start = settings;
  MCEngineTarget target = settings.GetTarget();
  target.SetFitMethod(GLMMConst_850::FIT_PSEUDO_LIKELIHOOD);
  start.SetTarget(target);
  start.SetREML(false);
  start.SetRobustCovariance(false);
  return start;
}

bool MCEngineLaplace::Setup(const MCEngineFitterImpl& fitter, const MCEnginePseudoLikelihood& start) {
  fpStart = &start;
  const MCEngineResult& result = fitter.GetResult();
  fvKept.clear();
  for (int j = 0; j < static_cast<int>(result.GetBeta().size()); ++j) {
    if (!result.GetBeta()[U(j)].IsRedundant()) fvKept.push_back(j);
  }
  fNFixed = static_cast<int>(fvKept.size());
  const std::vector<MCEngineRandomBlock>& blocks = fInput.GetRandomBlocks();
  const int q = blocks.empty() ? 0 : blocks.front().GetNColumns();
  fNTheta = 0;
  if (!blocks.empty()) {
    fpStructure = MCCovStructureFactory::Create(blocks.front().GetCovType(), q, blocks.front().GetColumnEffects());
    if (!fpStructure) return false;
    fNTheta = fpStructure->GetNParams();
  }
  if (fNTheta != fitter.GetModel().GetNParams() || fNTheta != result.GetNCovParams()) return false;
  fPhi.resize(I(fNFixed + fNTheta));
  fLower.resize(I(fNTheta));
  fUpper.resize(I(fNTheta));
  for (int i = 0; i < fNFixed; ++i) fPhi[I(i)] = result.GetBeta()[U(fvKept[U(i)])].GetEstimate();
  for (int k = 0; k < fNTheta; ++k) {
    fPhi[I(fNFixed + k)] = result.GetCovParams()[U(k)].GetEstimate();
    fpStructure->GetBounds(k, fLower[I(k)], fUpper[I(k)]);
  }

  // Records by subject, with their random columns as dense rows.
  fvGroups.clear();
  std::map<int, int> groupOf;
  const std::vector<bool>& used = start.GetUsed();
  for (int r = 0; r < fInput.GetNRecords(); ++r) {
    if (!used[U(r)]) continue;
    const int subject = blocks.empty() || blocks.front().GetSubjects().empty() ? 0 : blocks.front().GetSubjects()[U(r)];
    auto it = groupOf.find(subject);
    if (it == groupOf.end()) {
      it = groupOf.emplace(subject, static_cast<int>(fvGroups.size())).first;
      fvGroups.emplace_back();
    }
    fvGroups[U(it->second)].fvRecords.push_back(r);
  }
  for (Group& g : fvGroups) {
    g.fZ = Eigen::MatrixXd::Zero(I(static_cast<int>(g.fvRecords.size())), I(q));
    g.fMode = Eigen::VectorXd::Zero(I(q));
    if (blocks.empty()) continue;
    const MCEngineRandomBlock& block = blocks.front();
    for (int i = 0; i < static_cast<int>(g.fvRecords.size()); ++i) {
      const int r = g.fvRecords[U(i)];
      for (int k = block.GetRowStart()[U(r)]; k < block.GetRowStart()[U(r) + 1]; ++k) {
        g.fZ(I(i), I(block.GetColIndex()[U(k)])) = block.GetValues()[U(k)];
      }
    }
  }
  return true;
}

bool MCEngineLaplace::Factor(const Eigen::VectorXd& theta, Eigen::MatrixXd& lambda) const {
  if (!fpStructure) {
    lambda.resize(0, 0);
    return true;
  }
  for (int k = 0; k < fNTheta; ++k) {
    if (!(theta[I(k)] >= fLower[I(k)] && theta[I(k)] <= fUpper[I(k)])) return false;
  }
  Eigen::MatrixXd G;
  fpStructure->Build(theta, G);
  if (!G.allFinite()) return false;
  // Any factor of G will do: the deviance depends on Lambda only through
  // Lambda Lambda'. The eigen factor also serves a singular G.
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(G);
  const double largest = std::max(es.eigenvalues().cwiseAbs().maxCoeff(), 1.0);
  if (es.eigenvalues().minCoeff() < -1e-10 * largest) return false;
  lambda = es.eigenvectors() * es.eigenvalues().cwiseMax(0.0).cwiseSqrt().asDiagonal();
  return true;
}

double MCEngineLaplace::PenalisedDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const Eigen::MatrixXd& A,
                                          const Eigen::VectorXd& u, Eigen::MatrixXd* info,
                                          Eigen::VectorXd* score) const {
  const MCEngineFamily& family = fpStart->GetFamily();
  const MCEngineLink& link = fpStart->GetLink();
  const std::vector<double>& y = fpStart->GetTarget();
  const std::vector<double>& prior = fpStart->GetPrior();
  const std::vector<double>& freqs = fInput.GetFrequencyWeights();
  const Eigen::VectorXd eta = fixedEta + A * u;
  if (info) *info = Eigen::MatrixXd::Identity(u.size(), u.size());
  if (score) *score = -u;
  double deviance = u.squaredNorm();
  for (int i = 0; i < static_cast<int>(g.fvRecords.size()); ++i) {
    const int r = g.fvRecords[U(i)];
    const double freq = freqs.empty() ? 1.0 : freqs[U(r)];
    const double mu = link.Mu(eta[I(i)]);
    deviance -= 2.0 * freq * family.LogLikelihood(y[U(r)], mu, prior[U(r)], 1.0);
    if (!info || u.size() == 0) continue;
    const double d = link.DMuDEta(eta[I(i)]);
    const double v = family.Variance(mu);
    const double w = freq * prior[U(r)] * d * d / v;
    info->selfadjointView<Eigen::Lower>().rankUpdate(A.row(I(i)).transpose(), w);
    *score += (freq * prior[U(r)] * (y[U(r)] - mu) * d / v) * A.row(I(i)).transpose();
  }
  return std::isfinite(deviance) ? deviance : kInfinity;
}

bool MCEngineLaplace::GroupDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const Eigen::MatrixXd& lambda,
                                    Eigen::VectorXd& u, double& deviance) const {
  const Eigen::MatrixXd A = g.fZ * lambda;
  Eigen::MatrixXd info;
  Eigen::VectorXd score;
  double pd = PenalisedDeviance(g, fixedEta, A, u, &info, &score);
  bool found = u.size() == 0;
  for (int it = 0; it < kMaxModeIterations && !found && std::isfinite(pd); ++it) {
    Eigen::LLT<Eigen::MatrixXd> llt(info);
    const Eigen::VectorXd delta = llt.solve(score);
    double t = 1.0;
    Eigen::VectorXd next;
    double pdNext = kInfinity;
    for (int h = 0; h <= kMaxHalvings; ++h, t *= 0.5) {
      next = u + t * delta;
      pdNext = PenalisedDeviance(g, fixedEta, A, next, nullptr, nullptr);
      if (pdNext <= pd + 1e-13 * std::fabs(pd)) break;
    }
    if (!(pdNext <= pd + 1e-13 * std::fabs(pd))) break;
    found = (t * delta).cwiseAbs().maxCoeff() <= kModeTolerance * std::max(1.0, u.cwiseAbs().maxCoeff());
    u = next;
    pd = PenalisedDeviance(g, fixedEta, A, u, &info, &score);
  }
  if (!std::isfinite(pd)) return false;
  Eigen::LLT<Eigen::MatrixXd> llt(info);
  const double logDet = u.size() == 0 ? 0.0 : 2.0 * llt.matrixLLT().diagonal().array().log().sum();
  if (fNodes.size() <= 1 || u.size() != 1) {
    deviance = pd + logDet;
    return found;
  }
  // Adaptive quadrature about the mode, with the curvature's scale.
  const double sigma = 1.0 / std::sqrt(info(0, 0));
  double sum = 0.0;
  Eigen::VectorXd at(1);
  for (int k = 0; k < static_cast<int>(fNodes.size()); ++k) {
    const double z = fNodes[I(k)];
    at[0] = u[0] + sigma * z;
    const double pdAt = PenalisedDeviance(g, fixedEta, A, at, nullptr, nullptr);
    sum += fWeights[I(k)] * std::exp(-0.5 * (pdAt - pd - z * z));
  }
  deviance = pd + logDet - 2.0 * std::log(sum);
  return found && std::isfinite(deviance);
}

double MCEngineLaplace::Evaluate(const Eigen::VectorXd& phi, bool keepModes) {
  Eigen::MatrixXd lambda;
  if (!Factor(phi.tail(I(fNTheta)), lambda)) return kInfinity;
  const int P = fInput.GetNColumns();
  const std::vector<double>& X = fInput.GetX();
  const std::vector<double>& offsets = fpStart->GetOffsets();
  double total = 0.0;
  bool allFound = true;
  for (Group& g : fvGroups) {
    const int n = static_cast<int>(g.fvRecords.size());
    Eigen::VectorXd fixedEta(I(n));
    for (int i = 0; i < n; ++i) {
      const int r = g.fvRecords[U(i)];
      double eta = offsets[U(r)];
      for (int j = 0; j < fNFixed; ++j) eta += X[U(r) * U(P) + U(fvKept[U(j)])] * phi[I(j)];
      fixedEta[I(i)] = eta;
    }
    Eigen::VectorXd u = g.fMode;
    double deviance = 0.0;
    allFound = GroupDeviance(g, fixedEta, lambda, u, deviance) && allFound;
    if (!std::isfinite(deviance)) return kInfinity;
    total += deviance;
    if (keepModes) g.fMode = u;
  }
  if (keepModes) fbModeFailed = !allFound;
  return total;
}

double MCEngineLaplace::Deviance(const Eigen::VectorXd& phi) { return Evaluate(phi, false); }

double MCEngineLaplace::Step(int k, const Eigen::VectorXd& phi) const {
  return kRelativeStep * std::max(std::fabs(phi[I(k)]), 1.0);
}

std::vector<int> MCEngineLaplace::FreeParameters(const Eigen::VectorXd& phi) const {
  std::vector<int> free;
  for (int k = 0; k < fNFixed + fNTheta; ++k) {
    if (k >= fNFixed) {
      const int t = k - fNFixed;
      const double h = Step(k, phi);
      if (phi[I(k)] - h < fLower[I(t)] || phi[I(k)] + h > fUpper[I(t)]) continue;
    }
    free.push_back(k);
  }
  return free;
}

void MCEngineLaplace::Derivatives(const Eigen::VectorXd& phi, const std::vector<int>& free, Eigen::VectorXd& g,
                                  Eigen::MatrixXd& H) {
  const int m = static_cast<int>(free.size());
  g.resize(I(m));
  H.resize(I(m), I(m));
  const double f0 = Evaluate(phi, false);
  auto at = [&](int a, double sa, int b, double sb) {
    Eigen::VectorXd x = phi;
    x[I(free[U(a)])] += sa * Step(free[U(a)], phi);
    if (b >= 0) x[I(free[U(b)])] += sb * Step(free[U(b)], phi);
    return Evaluate(x, false);
  };
  for (int a = 0; a < m; ++a) {
    const double h = Step(free[U(a)], phi);
    const double up = at(a, 1.0, -1, 0.0), down = at(a, -1.0, -1, 0.0);
    g[I(a)] = (up - down) / (2.0 * h);
    H(I(a), I(a)) = (up - 2.0 * f0 + down) / (h * h);
    for (int b = 0; b < a; ++b) {
      const double hb = Step(free[U(b)], phi);
      H(I(a), I(b)) = H(I(b), I(a)) =
          (at(a, 1.0, b, 1.0) - at(a, 1.0, b, -1.0) - at(a, -1.0, b, 1.0) + at(a, -1.0, b, -1.0)) / (4.0 * h * hb);
    }
  }
}

MCEngineStatus MCEngineLaplace::Optimise() {
  double f = Evaluate(fPhi, true);
  if (!std::isfinite(f)) return MCEngineStatus(MCEngineStatus::kInitialValueFailed, MCEngineStatus::kError);
  fbConverged = false;
  for (fIterations = 1; fIterations <= kMaxIterations; ++fIterations) {
    const std::vector<int> free = FreeParameters(fPhi);
    // A covariance parameter within a step of its bound is held at it.
    for (int k = fNFixed; k < fNFixed + fNTheta; ++k) {
      if (std::find(free.begin(), free.end(), k) != free.end()) continue;
      const int t = k - fNFixed;
      fPhi[I(k)] = std::fabs(fPhi[I(k)] - fLower[I(t)]) < std::fabs(fPhi[I(k)] - fUpper[I(t)]) ? fLower[I(t)]
                                                                                              : fUpper[I(t)];
    }
    f = Evaluate(fPhi, true);
    Eigen::VectorXd g;
    Eigen::MatrixXd H;
    Derivatives(fPhi, free, g, H);
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(H);
    const double largest = std::max(es.eigenvalues().cwiseAbs().maxCoeff(), 1e-12);
    const Eigen::VectorXd ev = es.eigenvalues().cwiseMax(1e-8 * largest);
    const Eigen::VectorXd delta = -(es.eigenvectors() * (es.eigenvectors().transpose() * g).cwiseQuotient(ev));
    const double decrease = -0.5 * g.dot(delta);
    if (decrease < kDecreaseTolerance) {
      fbConverged = true;
      break;
    }
    double t = 1.0;
    bool moved = false;
    for (int h = 0; h <= kMaxHalvings && !moved; ++h, t *= 0.5) {
      Eigen::VectorXd next = fPhi;
      for (int a = 0; a < static_cast<int>(free.size()); ++a) next[I(free[U(a)])] += t * delta[I(a)];
      for (int k = 0; k < fNTheta; ++k) {
        next[I(fNFixed + k)] = std::min(std::max(next[I(fNFixed + k)], fLower[I(k)]), fUpper[I(k)]);
      }
      const double fn = Evaluate(next, false);
      if (fn < f) {
        fPhi = next;
        f = Evaluate(fPhi, true);
        moved = true;
      }
    }
    if (!moved) {
      // No step lowers the deviance: the optimum is within the precision
      // of the differences when the predicted decrease is small.
      fbConverged = decrease < 1e3 * kDecreaseTolerance;
      break;
    }
  }
  fIterations = std::min(fIterations, kMaxIterations);
  return MCEngineStatus();
}

std::vector<double> MCEngineLaplace::LinearPredictor() const {
  std::vector<double> eta(U(fInput.GetNRecords()), 0.0);
  Eigen::MatrixXd lambda;
  if (!Factor(fPhi.tail(I(fNTheta)), lambda)) return eta;
  const int P = fInput.GetNColumns();
  const std::vector<double>& X = fInput.GetX();
  for (const Group& g : fvGroups) {
    const Eigen::VectorXd random = g.fZ * (lambda * g.fMode);
    for (int i = 0; i < static_cast<int>(g.fvRecords.size()); ++i) {
      const int r = g.fvRecords[U(i)];
      double value = fpStart->GetOffsets()[U(r)] + random[I(i)];
      for (int j = 0; j < fNFixed; ++j) value += X[U(r) * U(P) + U(fvKept[U(j)])] * fPhi[I(j)];
      eta[U(r)] = value;
    }
  }
  return eta;
}

MCEngineStatus MCEngineLaplace::Fit(MCEngineFitterImpl& fitter, MCEnginePseudoLikelihood& start) {
  if (!Setup(fitter, start)) {
    return MCEngineStatus(MCEngineStatus::kGeneralizedUnavailable, MCEngineStatus::kError);
  }
  MCEngineStatus status = Optimise();
  if (status.IsError()) return status;
  const double m2ll = Evaluate(fPhi, true);
  const std::vector<int> free = FreeParameters(fPhi);
  Eigen::VectorXd g;
  Eigen::MatrixXd H;
  Derivatives(fPhi, free, g, H);
  Eigen::MatrixXd cov;
  Eigen::LLT<Eigen::MatrixXd> llt(H);
  const bool havePD = llt.info() == Eigen::Success && llt.matrixLLT().diagonal().minCoeff() > 0.0;
  if (havePD) cov = 2.0 * llt.solve(Eigen::MatrixXd::Identity(H.rows(), H.cols()));

  status = start.FitWorkingAt(fitter, LinearPredictor());
  if (status.IsError()) return status;
  if (fitter.GetModel().GetNParams() != fNTheta) {
    return MCEngineStatus(MCEngineStatus::kPostEstimationFailed, MCEngineStatus::kError);
  }
  const int P = fInput.GetNColumns();
  Eigen::VectorXd beta = Eigen::VectorXd::Zero(I(P));
  Eigen::MatrixXd C = Eigen::MatrixXd::Zero(I(P), I(P));
  Eigen::VectorXd theta = fPhi.tail(I(fNTheta));
  std::vector<bool> onBound(U(fNTheta), true);
  std::vector<int> freeTheta;  // positions in `free` of the free covariance parameters
  for (int a = 0; a < static_cast<int>(free.size()); ++a) {
    if (free[U(a)] >= fNFixed) {
      onBound[U(free[U(a)] - fNFixed)] = false;
      freeTheta.push_back(a);
    }
  }
  for (int j = 0; j < fNFixed; ++j) beta[I(fvKept[U(j)])] = fPhi[I(j)];
  Eigen::MatrixXd asy;
  if (havePD) {
    for (int i = 0; i < fNFixed; ++i) {
      for (int j = 0; j < fNFixed; ++j) C(I(fvKept[U(i)]), I(fvKept[U(j)])) = cov(I(i), I(j));
    }
    const int nf = static_cast<int>(freeTheta.size());
    asy.resize(I(nf), I(nf));
    for (int a = 0; a < nf; ++a) {
      for (int b = 0; b < nf; ++b) asy(I(a), I(b)) = cov(I(freeTheta[U(a)]), I(freeTheta[U(b)]));
    }
  }
  fitter.ReplaceEstimates(start.GetWorkingInput(), theta, onBound, asy, beta, C, m2ll);
  MCEngineResult& result = fitter.MutableResult();
  result.SetIterations(fIterations);
  result.SetConverged(fbConverged);
  if (!havePD) {
    result.AddWarning(MCEngineStatus(MCEngineStatus::kFinalHessianNotPD, MCEngineStatus::kWarning));
  }
  if (!fbConverged || fbModeFailed) {
    result.AddWarning(MCEngineStatus(MCEngineStatus::kIterationLimit, MCEngineStatus::kWarning));
  }
  if (result.GetStatus().IsOK() && !result.GetWarnings().empty()) result.SetStatus(result.GetWarnings().front());
  return result.GetStatus();
}

}  // namespace MCEngine_850
