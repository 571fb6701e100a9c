#include "numeric/engine/detail/MCEngineLaplace.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>

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
// A random block whose variances all start below this takes difference
// steps relative to its largest variance.
constexpr double kSmallVariance = 0.1;
// A covariance parameter this close to its bound, relative to its size
// beyond 1, is on the bound.
constexpr double kOnBound = 1e-8;
// The most random effects integrated jointly (in one group of records tied
// by their subjects).
constexpr int kMaxJointEffects = 1000;
// The interval a distribution's own scale is estimated in.
constexpr double kMinScale = 1e-12;
constexpr double kMaxScale = 1e12;

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
    : fInput(input), fSettings(settings), fFamily(settings.GetTarget().GetDistribution()) {
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
  if (dist != DIST_BINOMIAL && dist != DIST_POISSON && dist != DIST_NEGBIN && dist != DIST_GAMMA &&
      dist != DIST_IGAUSS) {
    return false;
  }
  // A scale of the distribution's own is one residual variance, not a
  // residual structure.
  const MCEngineCovType residual = input.GetResidualBlock().GetCovType();
  if (residual != MCEngineCovType::ID && residual != MCEngineCovType::VC) return false;
  // The sandwich sums over independent groups: with fewer than two (crossed
  // blocks tie every record) there is none, and the model-based covariance
  // is not given in its place.
  if (settings.GetRobustCovariance() && GroupCount(input, std::vector<bool>(U(input.GetNRecords()), true)) < 2) {
    return false;
  }
  // Counted over all records, so that a design too big is refused before
  // its start is fitted.
  if (LargestJointEffects(input, std::vector<bool>(U(input.GetNRecords()), true)) > kMaxJointEffects) return false;
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
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
  fNTheta = 0;
  fvStructures.clear();
  fvThetaStart.clear();
  for (const MCEngineRandomBlock& block : fInput.GetRandomBlocks()) {
    fvStructures.push_back(
        MCCovStructureFactory::Create(block.GetCovType(), block.GetNColumns(), block.GetColumnEffects()));
    if (!fvStructures.back()) return false;
    fvThetaStart.push_back(fNTheta);
    fNTheta += fvStructures.back()->GetNParams();
  }
  fFamily = start.GetFamily();
  fbScaleEstimated = !fFamily.IsScaleFixed();
  // The working model's residual variance is the scale where the
  // distribution has one: its last covariance parameter.
  const int nModel = fNTheta + (fbScaleEstimated ? 1 : 0);
  if (nModel != fitter.GetModel().GetNParams() || nModel != result.GetNCovParams()) return false;
  if (fbScaleEstimated && result.GetCovParams().back().GetBlock() >= 0) return false;
  fNExtra = fFamily.GetType() == GLMMConst_850::DIST_NEGBIN || fbScaleEstimated ? 1 : 0;
  fPhi.resize(I(fNFixed + fNTheta + fNExtra));
  fScale = 1.0;
  if (fbScaleEstimated) {
    fScale = result.GetCovParams().back().GetEstimate();
    if (!(fScale > 0.0) || !std::isfinite(fScale)) return false;
    fPhi[fPhi.size() - 1] = std::log(fScale);
  } else if (HasLogShape()) {
    fPhi[fPhi.size() - 1] = std::log(fFamily.GetShape());
  }
  fLower.resize(I(fNTheta));
  fUpper.resize(I(fNTheta));
  for (int i = 0; i < fNFixed; ++i) fPhi[I(i)] = result.GetBeta()[U(fvKept[U(i)])].GetEstimate();
  for (int b = 0; b < static_cast<int>(fvStructures.size()); ++b) {
    for (int k = 0; k < fvStructures[U(b)]->GetNParams(); ++k) {
      const int t = fvThetaStart[U(b)] + k;
      fPhi[I(fNFixed + t)] = result.GetCovParams()[U(t)].GetEstimate();
      fvStructures[U(b)]->GetBounds(k, fLower[I(t)], fUpper[I(t)]);
    }
  }
  SetupStepSizes(result);
  return SetupGroups(start);
}

void MCEngineLaplace::SetupStepSizes(const MCEngineResult& start) {
  fvStepSize.assign(U(fNFixed + fNTheta + fNExtra), 1.0);
  if (IsLinearPredictorOnDataScale()) {
    for (int j = 0; j < fNFixed; ++j) {
      const double se = start.GetBeta()[U(fvKept[U(j)])].GetStdError();
      if (se > 0.0 && std::isfinite(se)) fvStepSize[U(j)] = se;
    }
  }
  for (int b = 0; b < static_cast<int>(fvStructures.size()); ++b) {
    const MCCovStructure& s = *fvStructures[U(b)];
    double largest = 0.0;
    for (int k = 0; k < s.GetNParams(); ++k) {
      if (s.GetParamKind(k) == MCEngineCovParam::kVariance) {
        largest = std::max(largest, fPhi[I(fNFixed + fvThetaStart[U(b)] + k)]);
      }
    }
    // A step of 1e-3 is at most 1% of variances from 0.1 up.
    if (!(largest > 0.0) || largest >= kSmallVariance) continue;
    for (int k = 0; k < s.GetNParams(); ++k) {
      const MCEngineCovParam::Kind kind = s.GetParamKind(k);
      if (kind == MCEngineCovParam::kVariance || kind == MCEngineCovParam::kCovariance) {
        fvStepSize[U(fNFixed + fvThetaStart[U(b)] + k)] = largest;
      }
    }
  }
}

int MCEngineLaplace::SubjectOf(const MCEngineInput& input, int block, int r) {
  const std::vector<int>& subjects = input.GetRandomBlocks()[U(block)].GetSubjects();
  return subjects.empty() ? 0 : subjects[U(r)];
}

std::vector<int> MCEngineLaplace::GroupRoots(const MCEngineInput& input, const std::vector<bool>& used) {
  const int n = input.GetNRecords();
  // Records sharing a subject of any block are joined (union-find with
  // path halving), so nested blocks give the outer subjects and crossed
  // ones bigger groups.
  std::vector<int> parent(U(n));
  for (int r = 0; r < n; ++r) parent[U(r)] = r;
  auto root = [&](int r) {
    while (parent[U(r)] != r) r = parent[U(r)] = parent[U(parent[U(r)])];
    return r;
  };
  for (int b = 0; b < static_cast<int>(input.GetRandomBlocks().size()); ++b) {
    std::map<int, int> firstOf;
    for (int r = 0; r < n; ++r) {
      if (!used[U(r)]) continue;
      const auto it = firstOf.emplace(SubjectOf(input, b, r), r).first;
      parent[U(root(r))] = root(it->second);
    }
  }
  for (int r = 0; r < n; ++r) parent[U(r)] = root(r);
  return parent;
}

int MCEngineLaplace::GroupCount(const MCEngineInput& input, const std::vector<bool>& used) {
  const std::vector<int> roots = GroupRoots(input, used);
  std::set<int> groups;
  for (int r = 0; r < input.GetNRecords(); ++r) {
    if (used[U(r)]) groups.insert(roots[U(r)]);
  }
  return static_cast<int>(groups.size());
}

int MCEngineLaplace::LargestJointEffects(const MCEngineInput& input, const std::vector<bool>& used) {
  const std::vector<int> roots = GroupRoots(input, used);
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  std::set<std::tuple<int, int, int>> slots;  // group, block, subject
  std::map<int, int> effects;                 // by group
  int largest = 0;
  for (int r = 0; r < input.GetNRecords(); ++r) {
    if (!used[U(r)]) continue;
    for (int b = 0; b < static_cast<int>(blocks.size()); ++b) {
      if (!slots.emplace(roots[U(r)], b, SubjectOf(input, b, r)).second) continue;
      largest = std::max(largest, effects[roots[U(r)]] += blocks[U(b)].GetNColumns());
    }
  }
  return largest;
}

bool MCEngineLaplace::SetupGroups(const MCEnginePseudoLikelihood& start) {
  const std::vector<MCEngineRandomBlock>& blocks = fInput.GetRandomBlocks();
  const std::vector<bool>& used = start.GetUsed();
  const int n = fInput.GetNRecords();
  const std::vector<int> roots = GroupRoots(fInput, used);
  fvGroups.clear();
  std::map<int, int> groupOf;
  for (int r = 0; r < n; ++r) {
    if (!used[U(r)]) continue;
    const auto it = groupOf.emplace(roots[U(r)], static_cast<int>(fvGroups.size())).first;
    if (it->second == static_cast<int>(fvGroups.size())) fvGroups.emplace_back();
    fvGroups[U(it->second)].fvRecords.push_back(r);
  }
  for (Group& g : fvGroups) {
    const int m = static_cast<int>(g.fvRecords.size());
    for (int b = 0; b < static_cast<int>(blocks.size()); ++b) {
      const MCEngineRandomBlock& block = blocks[U(b)];
      const int q = block.GetNColumns();
      std::map<int, int> slotOf;  // the block's subjects in the group, by first element in u
      g.fvZ.push_back(Eigen::MatrixXd::Zero(I(m), I(q)));
      g.fvFirst.emplace_back(U(m));
      for (int i = 0; i < m; ++i) {
        const int r = g.fvRecords[U(i)];
        const auto it = slotOf.emplace(SubjectOf(fInput, b, r), g.fNEffects).first;
        if (it->second == g.fNEffects) g.fNEffects += q;
        g.fvFirst.back()[U(i)] = it->second;
        for (int k = block.GetRowStart()[U(r)]; k < block.GetRowStart()[U(r) + 1]; ++k) {
          g.fvZ.back()(I(i), I(block.GetColIndex()[U(k)])) = block.GetValues()[U(k)];
        }
      }
    }
    // The joint random effects of a group are integrated with dense
    // matrices; beyond this size the fit is refused.
    if (g.fNEffects > kMaxJointEffects) return false;
    g.fMode = Eigen::VectorXd::Zero(I(g.fNEffects));
  }
  return true;
}

bool MCEngineLaplace::Factor(const Eigen::VectorXd& theta, std::vector<Eigen::MatrixXd>& lambda) const {
  for (int k = 0; k < fNTheta; ++k) {
    if (!(theta[I(k)] >= fLower[I(k)] && theta[I(k)] <= fUpper[I(k)])) return false;
  }
  lambda.resize(fvStructures.size());
  for (std::size_t b = 0; b < fvStructures.size(); ++b) {
    Eigen::MatrixXd G;
    fvStructures[b]->Build(theta.segment(I(fvThetaStart[b]), I(fvStructures[b]->GetNParams())), G);
    if (!G.allFinite()) return false;
    // Any factor of G will do: the deviance depends on Lambda only through
    // Lambda Lambda'. The eigen factor also serves a singular G.
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(G);
    const double largest = std::max(es.eigenvalues().cwiseAbs().maxCoeff(), 1.0);
    if (es.eigenvalues().minCoeff() < -1e-10 * largest) return false;
    lambda[b] = es.eigenvectors() * es.eigenvalues().cwiseMax(0.0).cwiseSqrt().asDiagonal();
  }
  return true;
}

MCEngineLaplace::GroupDesign MCEngineLaplace::Design(const Group& g, const std::vector<Eigen::MatrixXd>& lambda) const {
  GroupDesign A(lambda.size());
  for (std::size_t b = 0; b < lambda.size(); ++b) A[b] = g.fvZ[b] * lambda[b];
  return A;
}

Eigen::VectorXd MCEngineLaplace::RandomEta(const Group& g, const GroupDesign& A, const Eigen::VectorXd& u) const {
  Eigen::VectorXd eta = Eigen::VectorXd::Zero(I(static_cast<int>(g.fvRecords.size())));
  for (std::size_t b = 0; b < A.size(); ++b) {
    for (Eigen::Index i = 0; i < eta.size(); ++i) {
      eta[i] += A[b].row(i).dot(u.segment(I(g.fvFirst[b][U(static_cast<int>(i))]), A[b].cols()));
    }
  }
  return eta;
}

double MCEngineLaplace::PenalisedDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const GroupDesign& A,
                                          const Eigen::VectorXd& u, Eigen::MatrixXd* info,
                                          Eigen::VectorXd* score, bool observed) const {
  const MCEngineFamily& family = fFamily;
  const MCEngineLink& link = fpStart->GetLink();
  const std::vector<double>& y = fpStart->GetTarget();
  const std::vector<double>& prior = fpStart->GetPrior();
  const std::vector<double>& freqs = fInput.GetFrequencyWeights();
  const Eigen::VectorXd eta = fixedEta + RandomEta(g, A, u);
  if (info) *info = Eigen::MatrixXd::Identity(u.size(), u.size());
  if (score) *score = -u;
  double deviance = u.squaredNorm();
  for (int i = 0; i < static_cast<int>(g.fvRecords.size()); ++i) {
    const int r = g.fvRecords[U(i)];
    const double freq = freqs.empty() ? 1.0 : freqs[U(r)];
    const double mu = link.Mu(eta[I(i)]);
    // Outside the link's or the distribution's domain (a power link's
    // negative linear predictor) there is no likelihood: the iterations
    // halve their steps back inside.
    if (!link.IsValidMu(mu) || !family.IsValidMean(mu)) return kInfinity;
    deviance -= 2.0 * freq * family.LogLikelihood(y[U(r)], mu, prior[U(r)], fScale);
    if (!info || u.size() == 0) continue;
    const double d = link.DMuDEta(eta[I(i)]);
    const double v = family.Variance(mu);
    const double weight = freq * prior[U(r)] / fScale;
    const double w = weight * (observed ? ObservedWeight(y[U(r)], eta[I(i)]) : d * d / v);
    const double s = weight * (y[U(r)] - mu) * d / v;
    for (std::size_t b = 0; b < A.size(); ++b) {
      const Eigen::Index fb = I(g.fvFirst[b][U(i)]);
      const auto ab = A[b].row(I(i)).transpose();
      if (score) score->segment(fb, ab.size()) += s * ab;
      for (std::size_t c = 0; c <= b; ++c) {
        const Eigen::Index fc = I(g.fvFirst[c][U(i)]);
        const auto ac = A[c].row(I(i));
        // Only the lower triangle is read; two blocks' slots may fall
        // either way round in u.
        if (fb >= fc) {
          info->block(fb, fc, ab.size(), ac.size()).noalias() += w * ab * ac;
        } else {
          info->block(fc, fb, ac.size(), ab.size()).noalias() += w * ac.transpose() * ab.transpose();
        }
      }
    }
  }
  return std::isfinite(deviance) ? deviance : kInfinity;
}

bool MCEngineLaplace::GroupDeviance(const Group& g, const Eigen::VectorXd& fixedEta,
                                    const std::vector<Eigen::MatrixXd>& lambda, Eigen::VectorXd& u,
                                    double& deviance) const {
  const GroupDesign A = Design(g, lambda);
  Eigen::MatrixXd info;
  Eigen::VectorXd score;
  double pd = PenalisedDeviance(g, fixedEta, A, u, &info, &score);
  if (!std::isfinite(pd) && u.size() > 0) {
    // The last mode may put a record's mean outside its domain at these
    // parameters (a power link); no random effects may not.
    u.setZero();
    pd = PenalisedDeviance(g, fixedEta, A, u, &info, &score);
  }
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
  if (!std::isfinite(pd)) {
    deviance = kInfinity;
    return false;
  }
  if (UsesObservedCurvature()) PenalisedDeviance(g, fixedEta, A, u, &info, nullptr, true);
  Eigen::LLT<Eigen::MatrixXd> llt(info);
  if (llt.info() != Eigen::Success) {
    deviance = kInfinity;
    return false;
  }
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

double MCEngineLaplace::ObservedWeight(double y, double eta) const {
  // d^2 log p / d eta^2 = -mu'^2 / V + (y - mu) (mu'' / V - mu'^2 V' / V^2),
  // with V' by a central difference.
  const MCEngineLink& link = fpStart->GetLink();
  const double mu = link.Mu(eta);
  const double d = link.DMuDEta(eta);
  const double v = fFamily.Variance(mu);
  const double d2 = link.D2MuDEta2(eta);
  const double hm = 1e-5 * std::max(1e-3, std::fabs(mu));
  const double dv = (fFamily.Variance(mu + hm) - fFamily.Variance(mu - hm)) / (2.0 * hm);
  return d * d / v - (y - mu) * (d2 / v - d * d * dv / (v * v));
}

double MCEngineLaplace::Evaluate(const Eigen::VectorXd& phi, bool keepModes, std::vector<double>* byGroup) {
  if (byGroup) byGroup->assign(fvGroups.size(), kInfinity);
  std::vector<Eigen::MatrixXd> lambda;
  if (!Factor(phi.segment(I(fNFixed), I(fNTheta)), lambda)) return kInfinity;
  if (fbScaleEstimated) {
    fScale = std::exp(phi[phi.size() - 1]);
    if (!(fScale >= kMinScale && fScale <= kMaxScale)) return kInfinity;
  } else if (HasLogShape()) {
    const double shape = std::exp(phi[phi.size() - 1]);
    if (!(shape >= MCEngineFamily::kMinShape && shape <= MCEngineFamily::kMaxShape)) return kInfinity;
    fFamily.SetShape(shape);
  }
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
    if (byGroup) (*byGroup)[static_cast<std::size_t>(&g - fvGroups.data())] = deviance;
    total += deviance;
    if (keepModes) g.fMode = u;
  }
  if (keepModes) fbModeFailed = !allFound;
  return total;
}

double MCEngineLaplace::Deviance(const Eigen::VectorXd& phi) { return Evaluate(phi, false); }

double MCEngineLaplace::Step(int k, const Eigen::VectorXd& phi) const {
  const double h = kRelativeStep * std::max(std::fabs(phi[I(k)]), fvStepSize[U(k)]);
  // A covariance parameter closer to its bound than that (a small
  // variance) takes a step relative to its distance from the bound, so that
  // the differences stay inside the bounds and resolve it.
  const double distance = DistanceToBound(k, phi);
  return distance < h ? kRelativeStep * distance : h;
}

bool MCEngineLaplace::IsLinearPredictorOnDataScale() const {
  const MCEngineTarget& target = fSettings.GetTarget();
  return target.GetLink() == GLMMConst_850::LINK_IDENTITY ||
         (target.GetLink() == GLMMConst_850::LINK_POWER && target.GetLinkPower() != 0.0);
}

double MCEngineLaplace::DistanceToBound(int k, const Eigen::VectorXd& phi) const {
  if (k < fNFixed || k >= fNFixed + fNTheta) return kInfinity;
  const int t = k - fNFixed;
  return std::min(phi[I(k)] - fLower[I(t)], fUpper[I(t)] - phi[I(k)]);
}

std::vector<int> MCEngineLaplace::FreeParameters(const Eigen::VectorXd& phi) const {
  std::vector<int> free;
  for (int k = 0; k < fNFixed + fNTheta + fNExtra; ++k) {
    if (DistanceToBound(k, phi) <= kOnBound * std::max(std::fabs(phi[I(k)]), fvStepSize[U(k)])) continue;
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
    // A covariance parameter on its bound is held there.
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
    const Eigen::VectorXd delta = NewtonStep(free, g, H);
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

Eigen::VectorXd MCEngineLaplace::NewtonStep(const std::vector<int>& free, const Eigen::VectorXd& g,
                                            const Eigen::MatrixXd& H) const {
  // In the parameters divided by their sizes D, where the Hessian D H D
  // has entries of one order: a power link's fixed effects and variances
  // (1e-5 and 1e-12) beside a log scale's give curvatures 1e20 apart,
  // beyond what one eigen decomposition resolves.
  Eigen::VectorXd D(g.size());
  for (Eigen::Index a = 0; a < D.size(); ++a) D[a] = fvStepSize[U(free[U(static_cast<int>(a))])];
  const Eigen::MatrixXd scaled = D.asDiagonal() * H * D.asDiagonal();
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(scaled);
  const double largest = std::max(es.eigenvalues().cwiseAbs().maxCoeff(), 1e-12);
  const Eigen::VectorXd ev = es.eigenvalues().cwiseMax(1e-8 * largest);
  const Eigen::VectorXd gs = D.cwiseProduct(g);
  return -D.cwiseProduct(es.eigenvectors() * (es.eigenvectors().transpose() * gs).cwiseQuotient(ev));
}

Eigen::MatrixXd MCEngineLaplace::RobustCovariance(const std::vector<int>& free, const Eigen::MatrixXd& cov) {
  // Each group's gradient of its deviance share, by central differences
  // that re-find the modes, so that the log determinant's dependence on
  // the parameters is in it.
  const int m = static_cast<int>(free.size());
  Eigen::MatrixXd scores(I(static_cast<int>(fvGroups.size())), I(m));
  std::vector<double> up, down;
  for (int a = 0; a < m; ++a) {
    const double h = Step(free[U(a)], fPhi);
    Eigen::VectorXd x = fPhi;
    x[I(free[U(a)])] += h;
    const double fUp = Evaluate(x, false, &up);
    x[I(free[U(a)])] -= 2.0 * h;
    const double fDown = Evaluate(x, false, &down);
    if (!std::isfinite(fUp) || !std::isfinite(fDown)) return Eigen::MatrixXd();
    for (std::size_t g = 0; g < fvGroups.size(); ++g) scores(static_cast<Eigen::Index>(g), I(a)) = (up[g] - down[g]) / (2.0 * h);
  }
  // The deviance is -2 log L: the log likelihood's scores are -scores / 2
  // and its information H / 2 = cov^-1.
  const Eigen::MatrixXd robust = 0.25 * cov * scores.transpose() * scores * cov;
  return robust.allFinite() ? robust : Eigen::MatrixXd();
}

std::vector<double> MCEngineLaplace::LinearPredictor() const {
  std::vector<double> eta(U(fInput.GetNRecords()), 0.0);
  std::vector<Eigen::MatrixXd> lambda;
  if (!Factor(fPhi.segment(I(fNFixed), I(fNTheta)), lambda)) return eta;
  const int P = fInput.GetNColumns();
  const std::vector<double>& X = fInput.GetX();
  for (const Group& g : fvGroups) {
    const Eigen::VectorXd random = RandomEta(g, Design(g, lambda), g.fMode);
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
  Eigen::MatrixXd robust;
  if (fSettings.GetRobustCovariance()) {
    if (fvGroups.size() < 2) return MCEngineStatus(MCEngineStatus::kGeneralizedUnavailable, MCEngineStatus::kError);
    if (havePD) {
      robust = RobustCovariance(free, cov);
      if (robust.size() == 0) return MCEngineStatus(MCEngineStatus::kPostEstimationFailed, MCEngineStatus::kError);
    }
  }

  if (HasLogShape()) start.SetShape(Shape());
  status = start.FitWorkingAt(fitter, LinearPredictor());
  if (status.IsError()) return status;
  // The working model's covariance parameters: theta, then the scale
  // where the distribution has one (its residual variance).
  const int nModel = fNTheta + (fbScaleEstimated ? 1 : 0);
  if (fitter.GetModel().GetNParams() != nModel) {
    return MCEngineStatus(MCEngineStatus::kPostEstimationFailed, MCEngineStatus::kError);
  }
  const int P = fInput.GetNColumns();
  Eigen::VectorXd beta = Eigen::VectorXd::Zero(I(P));
  Eigen::MatrixXd C = Eigen::MatrixXd::Zero(I(P), I(P));
  Eigen::VectorXd theta(I(nModel));
  theta.head(I(fNTheta)) = fPhi.segment(I(fNFixed), I(fNTheta));
  // The optimum's scale: the difference points since have moved fScale.
  const double scale = std::exp(fPhi[fPhi.size() - 1]);
  if (fbScaleEstimated) theta[I(fNTheta)] = scale;
  std::vector<bool> onBound(U(nModel), true);
  std::vector<int> freeTheta;  // positions in `free` of the free covariance parameters
  std::vector<double> jacobian;  // d parameter / d what was fitted, by free parameter
  for (int a = 0; a < static_cast<int>(free.size()); ++a) {
    const int k = free[U(a)] - fNFixed;
    if (k < 0 || k >= nModel) continue;
    onBound[U(k)] = false;
    freeTheta.push_back(a);
    // The scale was fitted on the log scale: the delta method.
    jacobian.push_back(k < fNTheta ? 1.0 : scale);
  }
  for (int j = 0; j < fNFixed; ++j) beta[I(fvKept[U(j)])] = fPhi[I(j)];
  Eigen::MatrixXd asy;
  Eigen::MatrixXd robustC;
  if (robust.size() > 0) robustC = Eigen::MatrixXd::Zero(I(P), I(P));
  if (havePD) {
    for (int i = 0; i < fNFixed; ++i) {
      for (int j = 0; j < fNFixed; ++j) {
        C(I(fvKept[U(i)]), I(fvKept[U(j)])) = cov(I(i), I(j));
        if (robust.size() > 0) robustC(I(fvKept[U(i)]), I(fvKept[U(j)])) = robust(I(i), I(j));
      }
    }
    const int nf = static_cast<int>(freeTheta.size());
    asy.resize(I(nf), I(nf));
    for (int a = 0; a < nf; ++a) {
      for (int b = 0; b < nf; ++b) {
        asy(I(a), I(b)) = jacobian[U(a)] * jacobian[U(b)] * cov(I(freeTheta[U(a)]), I(freeTheta[U(b)]));
      }
    }
  }
  fitter.ReplaceEstimates(start.GetWorkingInput(), theta, onBound, asy, beta, C, m2ll, HasLogShape() ? 1 : 0,
                          robustC);
  MCEngineResult& result = fitter.MutableResult();
  result.SetIterations(fIterations);
  result.SetConverged(fbConverged);
  if (HasLogShape() && havePD) {
    // The delta method from the log shape, the scale it was fitted on.
    result.SetShapeStdError(Shape() * std::sqrt(cov(cov.rows() - 1, cov.cols() - 1)));
  }
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
