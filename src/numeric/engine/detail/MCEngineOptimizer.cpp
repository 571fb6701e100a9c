#include "numeric/engine/detail/MCEngineOptimizer.h"

#include <cmath>
#include <limits>

#include "numeric/common/MCProgressObserver.h"
#include "numeric/common/MCQueryCancel.h"

namespace MCEngine_850 {

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;
constexpr double kInf = std::numeric_limits<double>::infinity();
// The Newton steps that end the iterations, and the step (relative to the
// working parameters) below which more would change nothing that is
// reported.
constexpr int kFinalNewtonSteps = 3;
constexpr int kFinalExpectedSteps = 30;
constexpr double kNegligibleStep = 1e-10;
constexpr double kNegligibleExpectedStep = 1e-13;
constexpr double kRoundingSlack = 1e-12;

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

MCEngineOptimizer::MCEngineOptimizer(MCEngineEvaluator& evaluator, const MCEngineModel& model,
                                     const MCEngineData& data, const MCEngineSettings& settings)
    : fEvaluator(evaluator), fModel(model), fData(data), fSettings(settings) {}

double MCEngineOptimizer::ObjectiveOf(const MCEngineEvaluation& ev, double* scale) const {
  const bool reml = fSettings.GetREML();
  const double N = fData.fTotalWeight;
  const double dof = reml ? N - fData.fRank : N;
  const double logDet = ev.fLogDetV + (reml ? ev.fLogDetXVX : 0.0);
  if (!(dof > 0.0)) return kInf;
  if (fModel.IsProfiled()) {
    const double s = ev.fRVR / dof;
    if (!(s > 0.0) || !std::isfinite(s)) return kInf;
    if (scale) *scale = s;
    return logDet + dof * (1.0 + kLog2Pi + std::log(s));
  }
  if (scale) *scale = 1.0;
  return logDet + ev.fRVR + dof * kLog2Pi;
}

double MCEngineOptimizer::Minus2LogLik(double objective) const {
  const double dof = fSettings.GetREML() ? fData.fTotalWeight - fData.fRank : fData.fTotalWeight;
  return objective + 2.0 * dof * std::log(fData.fYScale);
}

double MCEngineOptimizer::Objective(const Eigen::VectorXd& psi, double* scale) {
  const Eigen::VectorXd theta = fModel.ToNatural(psi, 1.0);
  if (!fModel.InBounds(theta)) return kInf;
  MCEngineEvaluation ev;
  if (!fEvaluator.Evaluate(theta, MCEngineEvaluator::kValue, fSettings.GetREML(), ev)) return kInf;
  const double f = ObjectiveOf(ev, scale);
  return std::isfinite(f) ? f : kInf;
}

bool MCEngineOptimizer::Derivatives(const Eigen::VectorXd& psi, double scale, bool observed, Eigen::VectorXd& g,
                                    Eigen::MatrixXd& H) {
  const Eigen::VectorXd theta = fModel.ToNatural(psi, scale);
  MCEngineEvaluation ev;
  if (!fEvaluator.EvaluateForSteps(theta, observed ? MCEngineEvaluator::kHessian : MCEngineEvaluator::kGradient,
                                   fSettings.GetREML(), ev)) {
    return false;
  }
  fModel.ToWorkingDerivatives(psi, scale, ev.fGrad, observed ? ev.fHessObserved : ev.fHessExpected, observed, g, H);
  return g.allFinite() && H.allFinite();
}

bool MCEngineOptimizer::IsVarianceWorking(int w) const {
  return fModel.GetKind(fModel.GetWorkingToNatural(w)) == MCEngineCovParam::kVariance;
}

Eigen::VectorXd MCEngineOptimizer::Project(const Eigen::VectorXd& psi) const {
  Eigen::VectorXd out = psi;
  for (int w = 0; w < out.size(); ++w) {
    if (IsVarianceWorking(w) && out[w] < 0.0) out[w] = 0.0;
  }
  return out;
}

MCEngineStatus MCEngineOptimizer::Run(Eigen::VectorXd& psi) {
  const int nw = static_cast<int>(psi.size());
  double s = 1.0;
  double f = Objective(psi, &s);
  fIterations = 0;
  fbConverged = false;
  fObjective = f;
  fScale = s;
  if (nw == 0) {
    fbConverged = true;
    return MCEngineStatus();
  }
  double hTol = fSettings.GetHessianTolerance();
  const double lTol = fSettings.GetLogLikTolerance();
  const double pTol = fSettings.GetParamTolerance();
  if (!(hTol > 0.0) && !(lTol > 0.0) && !(pTol > 0.0)) hTol = 1e-8;
  const bool hRel = fSettings.GetHessianTolerance() > 0.0 ? fSettings.GetHessianRelative() : true;

  MCEngineStatus status;
  Eigen::VectorXd g, gF, thetaPrev;
  Eigen::MatrixXd H, HF;
  std::vector<int> freeSet;
  double fPrev = f;
  for (;;) {
    if (fSettings.GetProgress() != nullptr) fSettings.GetProgress()->Iteration(fIterations, Minus2LogLik(f));
    if (fSettings.GetCancel() != nullptr && fSettings.GetCancel()->IsCancelled()) {
      return MCEngineStatus(MCEngineStatus::kCancelled, MCEngineStatus::kError);
    }
    const bool observed = fIterations >= fSettings.GetFisherSteps() && !fEvaluator.IteratesWithExpected();
    if (!Derivatives(psi, s, observed, g, H)) {
      status = MCEngineStatus(MCEngineStatus::kHessianSingularity, MCEngineStatus::kWarning);
      break;
    }
    // Parameters held at a bound: variances at 0, correlations at +-1, when
    // the gradient pushes them outwards.
    freeSet.clear();
    for (int w = 0; w < nw; ++w) {
      if (IsVarianceWorking(w) && psi[w] <= 0.0 && g[w] >= 0.0) continue;
      if (fModel.IsHeldAtBound(fModel.GetWorkingToNatural(w), psi[w], g[w])) continue;
      freeSet.push_back(w);
    }
    const int nf = static_cast<int>(freeSet.size());
    if (nf == 0) {
      fbConverged = true;
      break;
    }
    gF.resize(nf);
    HF.resize(nf, nf);
    for (int a = 0; a < nf; ++a) {
      gF[a] = g[freeSet[U(a)]];
      for (int b = 0; b < nf; ++b) HF(a, b) = H(freeSet[U(a)], freeSet[U(b)]);
    }
    Eigen::LLT<Eigen::MatrixXd> llt(HF);
    const bool pd = llt.info() == Eigen::Success && llt.matrixLLT().diagonal().minCoeff() > 0.0;

    // Convergence, judged at the current point.
    const double absF = std::fabs(f) > 1e-10 ? std::fabs(f) : 1.0;
    bool converged = false;
    if (hTol > 0.0) {
      double c = pd ? gF.dot(llt.solve(gF)) : gF.squaredNorm();
      if (hRel) c /= absF;
      if (std::fabs(c) <= hTol) converged = true;
    }
    if (fIterations > 0) {
      if (lTol > 0.0) {
        double c = std::fabs(fPrev - f);
        if (fSettings.GetLogLikRelative()) c /= absF;
        if (c <= lTol) converged = true;
      }
      if (pTol > 0.0) {
        const Eigen::VectorXd theta = fModel.ToNatural(psi, s);
        double c = 0.0;
        for (int k = 0; k < theta.size(); ++k) {
          double d = std::fabs(theta[k] - thetaPrev[k]);
          if (fSettings.GetParamRelative() && std::fabs(thetaPrev[k]) > 1e-12) d /= std::fabs(thetaPrev[k]);
          c = std::max(c, d);
        }
        if (c <= pTol) converged = true;
      }
    }
    if (converged) {
      fbConverged = true;
      break;
    }
    if (fIterations >= fSettings.GetMaxIterations()) {
      status = MCEngineStatus(MCEngineStatus::kIterationLimit, MCEngineStatus::kWarning);
      break;
    }

    // Newton (or scoring) direction over a set of parameters. Where the
    // Hessian is not positive definite, its eigenvalues are replaced by their
    // absolute values (with a floor), which keeps a descent direction that
    // follows negative curvature.
    auto direction = [&](const std::vector<int>& set, Eigen::VectorXd& d) {
      const int n = static_cast<int>(set.size());
      Eigen::VectorXd gs(n);
      Eigen::MatrixXd Hs(n, n);
      for (int a = 0; a < n; ++a) {
        gs[a] = g[set[U(a)]];
        for (int b = 0; b < n; ++b) Hs(a, b) = H(set[U(a)], set[U(b)]);
      }
      Eigen::VectorXd ds;
      Eigen::LLT<Eigen::MatrixXd> l(Hs);
      if (l.info() == Eigen::Success && l.matrixLLT().diagonal().minCoeff() > 0.0) {
        ds = -l.solve(gs);
      } else {
        Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(Hs);
        const double maxEv = es.info() == Eigen::Success ? es.eigenvalues().cwiseAbs().maxCoeff() : 0.0;
        if (!(maxEv > 0.0) || !std::isfinite(maxEv)) return false;
        const Eigen::VectorXd ev = es.eigenvalues().cwiseAbs().cwiseMax(1e-8 * maxEv);
        ds = -(es.eigenvectors() * (es.eigenvectors().transpose() * gs).cwiseQuotient(ev));
      }
      d = Eigen::VectorXd::Zero(nw);
      for (int a = 0; a < n; ++a) d[set[U(a)]] = ds[a];
      return d.allFinite();
    };
    // Correlations stay inside their interval and ranges positive: the step
    // goes at most 95% of the way to the bound.
    auto limitToBounds = [&](const Eigen::VectorXd& from, Eigen::VectorXd& d) {
      double lambdaMax = 1.0;
      for (int w = 0; w < nw; ++w) {
        if (IsVarianceWorking(w) || d[w] == 0.0) continue;
        double lower = 0.0, upper = 0.0;
        fModel.GetBounds(fModel.GetWorkingToNatural(w), lower, upper);
        const double room = (d[w] > 0.0 ? upper - from[w] : from[w] - lower) / std::fabs(d[w]);
        if (std::isfinite(room)) lambdaMax = std::min(lambdaMax, 0.95 * room);
      }
      d *= lambdaMax;
    };
    const double slack = 1e-11 * std::max(1.0, std::fabs(f));
    Eigen::VectorXd cand;
    double fc = kInf, sc = 1.0;
    auto lineSearch = [&](const Eigen::VectorXd& from, const Eigen::VectorXd& d) {
      double lambda = 1.0;
      for (int h = 0; h <= fSettings.GetMaxStepHalvings(); ++h) {
        cand = Project(from + lambda * d);
        fc = Objective(cand, &sc);
        if (std::isfinite(fc) && fc <= f + slack) return true;
        lambda *= 0.5;
      }
      return false;
    };

    Eigen::VectorXd delta;
    if (!direction(freeSet, delta)) {
      status = MCEngineStatus(MCEngineStatus::kHessianSingularity, MCEngineStatus::kWarning);
      break;
    }
    // A variance whose full step crosses its bound, while the gradient pushes
    // it there or it already sits on it, is first tried at 0, with the
    // direction recomputed without it.
    Eigen::VectorXd base = psi;
    Eigen::VectorXd bentDelta = delta;
    std::vector<int> stepSet = freeSet;
    bool bent = false;
    for (int round = 0; round < nw; ++round) {
      std::vector<int> keep;
      bool crossed = false;
      for (int w : stepSet) {
        if (IsVarianceWorking(w) && base[w] + bentDelta[w] < 0.0 && (g[w] > 0.0 || base[w] <= 0.0)) {
          base[w] = 0.0;
          crossed = true;
        } else {
          keep.push_back(w);
        }
      }
      if (!crossed) break;
      bent = true;
      stepSet = keep;
      if (stepSet.empty()) {
        bentDelta.setZero();
        break;
      }
      if (!direction(stepSet, bentDelta)) {
        bent = false;
        break;
      }
    }
    bool accepted = false;
    if (bent) {
      limitToBounds(base, bentDelta);
      accepted = lineSearch(base, bentDelta);
    }
    if (!accepted) {
      limitToBounds(psi, delta);
      accepted = lineSearch(psi, delta);
    }
    if (!accepted) {
      // A shorter step that keeps every positive variance positive.
      double lambdaMax = 1.0;
      for (int w = 0; w < nw; ++w) {
        if (IsVarianceWorking(w) && delta[w] < 0.0 && psi[w] > 0.0) lambdaMax = std::min(lambdaMax, 0.9 * psi[w] / -delta[w]);
      }
      if (lambdaMax < 0.5) accepted = lineSearch(psi, lambdaMax * delta);
    }
    if (!accepted) {
      status = MCEngineStatus(MCEngineStatus::kStepHalvingExhausted, MCEngineStatus::kWarning);
      break;
    }
    thetaPrev = fModel.ToNatural(psi, s);
    fPrev = f;
    psi = cand;
    f = fc;
    s = sc;
    ++fIterations;
  }
  // A stop inside an evaluation ends the iterations as a failed step would.
  if (fSettings.GetCancel() != nullptr && fSettings.GetCancel()->IsCancelled()) {
    return MCEngineStatus(MCEngineStatus::kCancelled, MCEngineStatus::kError);
  }

  // Newton steps from a converged point cost little and remove the error
  // left by the stopping rule, which near the optimum the objective's
  // rounding hides: taken while they do not raise the objective beyond its
  // rounding. With the observed Hessian, up to three; an evaluator that
  // iterates with the expected one (whose observed Hessian is dear) goes on
  // with it until the steps are negligible, since its linear convergence
  // ends at the same optimum.
  const bool expected = fEvaluator.IteratesWithExpected();
  const int maxSteps = expected ? kFinalExpectedSteps : kFinalNewtonSteps;
  for (int step = 0; fbConverged && !freeSet.empty() && step < maxSteps; ++step) {
    if (!DerivativesOnSet(psi, s, !expected, freeSet, gF, HF)) break;
    const double size = FinalNewtonStep(freeSet, gF, HF, kRoundingSlack * std::max(1.0, std::fabs(f)), psi, f, s);
    if (!(size > (expected ? kNegligibleExpectedStep : kNegligibleStep) * std::max(1.0, psi.cwiseAbs().maxCoeff()))) break;
  }
  fObjective = f;
  fScale = s;
  return status;
}

bool MCEngineOptimizer::DerivativesOnSet(const Eigen::VectorXd& psi, double scale, bool observed,
                                         const std::vector<int>& set, Eigen::VectorXd& gS, Eigen::MatrixXd& HS) {
  Eigen::VectorXd g;
  Eigen::MatrixXd H;
  if (!Derivatives(psi, scale, observed, g, H)) return false;
  const int n = static_cast<int>(set.size());
  gS.resize(n);
  HS.resize(n, n);
  for (int a = 0; a < n; ++a) {
    gS[a] = g[set[U(a)]];
    for (int b = 0; b < n; ++b) HS(a, b) = H(set[U(a)], set[U(b)]);
  }
  Eigen::LLT<Eigen::MatrixXd> llt(HS);
  return llt.info() == Eigen::Success && llt.matrixLLT().diagonal().minCoeff() > 0.0;
}

double MCEngineOptimizer::FinalNewtonStep(const std::vector<int>& set, const Eigen::VectorXd& gS,
                                          const Eigen::MatrixXd& HS, double slack, Eigen::VectorXd& psi, double& f,
                                          double& s) {
  Eigen::LLT<Eigen::MatrixXd> llt(HS);
  const Eigen::VectorXd deltaS = -llt.solve(gS);
  Eigen::VectorXd delta = Eigen::VectorXd::Zero(psi.size());
  for (std::size_t a = 0; a < set.size(); ++a) delta[set[a]] = deltaS[static_cast<Eigen::Index>(a)];
  const Eigen::VectorXd cand = Project(psi + delta);
  double sc = 1.0;
  const double fc = Objective(cand, &sc);
  if (!(std::isfinite(fc) && fc <= f + slack)) return 0.0;
  psi = cand;
  f = fc;
  s = sc;
  return delta.cwiseAbs().maxCoeff();
}

}  // namespace MCEngine_850
