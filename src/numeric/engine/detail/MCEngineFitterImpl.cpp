#include "numeric/engine/detail/MCEngineFitterImpl.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/detail/MCCovFixedVariance.h"
#include "numeric/engine/detail/MCCovStructureFactory.h"
#include "numeric/engine/detail/MCEngineCriteria.h"
#include "numeric/engine/detail/MCEngineDataBuilder.h"
#include "numeric/engine/detail/MCEngineMMEEvaluator.h"
#include "numeric/engine/detail/MCEngineOptimizer.h"
#include "numeric/engine/detail/MCEngineSparseEvaluator.h"
#include "numeric/engine/detail/MCEngineSubjectEvaluator.h"

namespace MCEngine_850 {

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

std::vector<double> ToRowMajor(const Eigen::MatrixXd& m) {
  std::vector<double> out(U(static_cast<int>(m.rows() * m.cols())));
  for (int i = 0; i < m.rows(); ++i) {
    for (int j = 0; j < m.cols(); ++j) out[U(i) * U(static_cast<int>(m.cols())) + U(j)] = m(i, j);
  }
  return out;
}

}  // namespace

// A stop ends the fit whatever step it cut short: an evaluation it stops
// fails, and that failure is the stop's.
MCEngineStatus MCEngineFitterImpl::Finish(const MCEngineStatus& status) {
  const MCCommon_850::MCQueryCancel* pCancel = fSettings.GetCancel();
  const MCEngineStatus ended =
      pCancel != nullptr && pCancel->IsCancelled() ? MCEngineStatus(MCEngineStatus::kCancelled, MCEngineStatus::kError)
                                                   : status;
  fResult.SetStatus(ended);
  return ended;
}

MCEngineStatus MCEngineFitterImpl::Refuse(const MCEngineStatus& status) {
  fResult = MCEngineResult();
  fbReplaced = false;
  fpHypothesis.reset();
  fpEvaluator.reset();
  return Finish(status);
}

bool MCEngineFitterImpl::BuildModel() {
  std::vector<std::unique_ptr<MCCovStructure>> blocks;
  for (const MCEngineBlockData& bd : fData.fvBlocks) {
    std::unique_ptr<MCCovStructure> s = MCCovStructureFactory::Create(bd.fType, bd.fNColumns, bd.fvColumnEffects);
    if (!s) return false;
    blocks.push_back(std::move(s));
  }
  // On the residual side VC is one common variance.
  const MCEngineCovType resType = fData.fResidualType == MCEngineCovType::VC ? MCEngineCovType::ID : fData.fResidualType;
  std::unique_ptr<MCCovStructure> residual;
  if (fSettings.GetFixedResidualVariance() > 0.0) {
    if (resType != MCEngineCovType::ID) return false;
    // The variance is held in the scaled response's units.
    residual = std::make_unique<MCCovFixedVariance>(
        fData.fResDimension, fSettings.GetFixedResidualVariance() / (fData.fYScale * fData.fYScale));
  } else {
    residual = MCCovStructureFactory::Create(resType, fData.fResDimension, {}, fData.fvResPoints);
  }
  if (!residual) return false;
  fModel.Setup(std::move(blocks), std::move(residual));
  return true;
}

double MCEngineFitterImpl::GroupCost() const {
  double cost = 0.0;
  for (int c = 0; c < fData.GetNComponents(); ++c) {
    const double m = fData.fvComponentStart[U(c) + 1] - fData.fvComponentStart[U(c)];
    cost += m * m * m;
  }
  return cost;
}

double MCEngineFitterImpl::RandomEffectsWork() const {
  double work = 0.0;
  for (int c = 0; c < fData.GetNComponents(); ++c) {
    const int k0 = fData.fvComponentStart[U(c)], k1 = fData.fvComponentStart[U(c) + 1];
    double entries = 0.0;
    for (const MCEngineBlockData& bd : fData.fvBlocks) entries += bd.fvRowStart[U(k1)] - bd.fvRowStart[U(k0)];
    work += static_cast<double>(k1 - k0) * entries;
  }
  return work;
}

MCEngineStatus MCEngineFitterImpl::MakeEvaluator() {
  const MCEngineStatus cannot(MCEngineStatus::kBuildModel, MCEngineStatus::kError);
  MCEngineSettings::SolverPath path = fSettings.GetSolverPath();
  // The equations give every copy of a group the same random effects, so a
  // weight that copies groups random effects reach (under a residual
  // structure that couples records) is for the group-by-group path.
  bool groupCopies = false;
  if (!MCEngineDataBuilder::IsDiagonalType(fData.fResidualType)) {
    for (double w : fData.fvComponentWeight) groupCopies = groupCopies || w != 1.0;
  }
  if (fData.fvBlocks.empty() || groupCopies) path = MCEngineSettings::kBySubject;
  double nz = 0.0;
  for (const MCEngineBlockData& bd : fData.fvBlocks) nz += static_cast<double>(bd.fNSubjects) * bd.fNColumns;
  const double columns = fData.fRank + nz;
  if (path == MCEngineSettings::kAutomatic) {
    // Small equations go dense when that is cheaper than the groups; larger
    // ones sparse when their factorisation is.
    const double costDense = columns * columns * columns +
                             static_cast<double>(fData.fNRecords) * (fData.fRank + 1.0) * (fData.fRank + 1.0);
    if (columns <= kMaxDenseColumns) {
      path = 4.0 * costDense < GroupCost() ? MCEngineSettings::kMixedModelEquations : MCEngineSettings::kBySubject;
    } else if (LargestGroup() > kSmallGroup) {
      path = MCEngineSettings::kSparseEquations;
    } else {
      path = MCEngineSettings::kBySubject;
    }
  }
  if (path == MCEngineSettings::kSparseEquations) {
    const bool chosen = fSettings.GetSolverPath() == MCEngineSettings::kAutomatic;
    const double blocks = static_cast<double>(fData.fvBlocks.size()) + fData.fRank + 1.0;
    const double costLayout = static_cast<double>(fData.fNRecords) * blocks * blocks;
    // Laying the equations out costs each record the square of its blocks:
    // when that alone loses to the groups, the layout is not built to learn
    // what its factorisation would cost (many blocks on every record).
    if (chosen && !(4.0 * costLayout < GroupCost())) {
      path = MCEngineSettings::kBySubject;
    } else {
      auto sparse = std::make_unique<MCEngineSparseEvaluator>(fData, fModel, fSettings.GetCrossProducts());
      const double costSparse = 3.0 * sparse->GetFactorFlops() + costLayout;
      if (!sparse->IsReady() && !chosen) return cannot;
      if (!sparse->IsReady() || (chosen && !(4.0 * costSparse < GroupCost()))) {
        path = MCEngineSettings::kBySubject;
      } else {
        fpEvaluator = std::move(sparse);
      }
    }
  }
  if (path == MCEngineSettings::kMixedModelEquations) {
    fpEvaluator = std::make_unique<MCEngineMMEEvaluator>(fData, fModel);
  } else if (path == MCEngineSettings::kBySubject) {
    const double work = RandomEffectsWork();
    if (work > kMaxRandomEffectsWork) {
      MCEngineStatus refused(MCEngineStatus::kRandomEffectsTooLarge, MCEngineStatus::kError);
      refused.SetCount(std::lround(work / 1e6));
      return refused;
    }
    auto bySubject = std::make_unique<MCEngineSubjectEvaluator>(fData, fModel, fSettings.GetCrossProducts());
    fResult.SetGroupProductEntries(bySubject->GetProductEntries());
    fpEvaluator = std::move(bySubject);
  }
  if (fpEvaluator) fpEvaluator->SetCancel(fSettings.GetCancel());
  fResult.SetSolverPath(path);
  return MCEngineStatus();
}

int MCEngineFitterImpl::LargestGroup() const {
  int largest = 0;
  for (int c = 0; c < fData.GetNComponents(); ++c) {
    largest = std::max(largest, fData.fvComponentStart[U(c) + 1] - fData.fvComponentStart[U(c)]);
  }
  return largest;
}

MCEngineStatus MCEngineFitterImpl::Fit(const MCEngineInput& input, const MCEngineSettings& settings) {
  fSettings = settings;
  fResult = MCEngineResult();
  fbReplaced = false;
  fpHypothesis.reset();
  fpEvaluator.reset();
  fResult.SetREML(settings.GetREML());
  if (settings.GetMaxIterations() < 0 || settings.GetMaxStepHalvings() < 0 || settings.GetFisherSteps() < 0 ||
      !(settings.GetSingularTolerance() >= 0.0) || !(settings.GetConfidenceLevel() > 0.0) ||
      !(settings.GetConfidenceLevel() < 100.0)) {
    return Finish(MCEngineStatus(MCEngineStatus::kInvalidSettings, MCEngineStatus::kError));
  }
  MCEngineStatus status =
      MCEngineDataBuilder::Build(input, settings.GetSingularTolerance(), fData, settings.GetCancel());
  if (status.IsError()) return Finish(status);
  fResult.SetNRecordsUsed(fData.fNRecords);
  fResult.SetTotalFreqWeight(fData.fTotalWeight);
  fResult.SetWeightsCopyGroups(!MCEngineDataBuilder::IsDiagonalType(fData.fResidualType));
  fResult.SetRankX(fData.fRank);
  if (!BuildModel()) return Finish(MCEngineStatus(MCEngineStatus::kBuildModel, MCEngineStatus::kError));
  fResult.SetScaleProfiled(fModel.IsProfiled());

  status = MakeEvaluator();
  if (status.IsError()) return Finish(status);

  const double N = fData.fTotalWeight;
  const int p = fData.fRank;
  const bool reml = settings.GetREML();
  if (!(N - p > 0.0)) return Finish(MCEngineStatus(MCEngineStatus::kPerfectFit, MCEngineStatus::kError));

  // Independent residuals with the structure's identity: the null model, the
  // least-squares fit and the moment equations for starting values.
  const int K = fModel.GetNParams();
  Eigen::VectorXd thetaNull(K);
  for (int b = 0; b < fModel.GetNBlocks(); ++b) {
    Eigen::VectorXd seg;
    fModel.GetBlock(b).NullParams(false, seg);
    thetaNull.segment(fModel.GetBlockOffset(b), seg.size()) = seg;
  }
  {
    Eigen::VectorXd seg;
    fModel.GetResidual().NullParams(true, seg);
    thetaNull.segment(fModel.GetResidualOffset(), seg.size()) = seg;
  }
  // The start reads the derivatives there, not C.
  MCEngineEvaluation nullEval;
  if (!fpEvaluator->EvaluateForSteps(thetaNull, MCEngineEvaluator::kGradient, true, nullEval)) {
    return Finish(MCEngineStatus(MCEngineStatus::kInitialValueFailed, MCEngineStatus::kError));
  }
  double yy = 0.0;
  for (int c = 0; c < fData.GetNComponents(); ++c) {
    for (int r = fData.fvComponentStart[U(c)]; r < fData.fvComponentStart[U(c) + 1]; ++r) {
      yy += fData.fvComponentWeight[U(c)] * fData.fvScaleWeight[U(r)] * fData.fvY[U(r)] * fData.fvY[U(r)];
    }
  }
  if (!(nullEval.fRVR > 1e-12 * yy)) return Finish(MCEngineStatus(MCEngineStatus::kPerfectFit, MCEngineStatus::kError));
  const double s2 = nullEval.fRVR / (N - p);
  // -2 log L of the response in its own units differs by dof * log(c^2).
  const double logScaleShift = 2.0 * (reml ? N - p : N) * std::log(fData.fYScale);
  if (reml) {
    fResult.SetNullMinus2LogLik(nullEval.fLogDetV + nullEval.fLogDetXVX + (N - p) * (1.0 + kLog2Pi + std::log(s2)) +
                                logScaleShift);
  } else {
    fResult.SetNullMinus2LogLik(nullEval.fLogDetV + N * (1.0 + kLog2Pi + std::log(nullEval.fRVR / N)) + logScaleShift);
  }

  MCEngineOptimizer optimizer(*fpEvaluator, fModel, fData, fSettings);
  Eigen::VectorXd psi;
  if (!StartValues(optimizer, nullEval, thetaNull, s2, psi)) {
    return Finish(MCEngineStatus(MCEngineStatus::kInitialValueFailed, MCEngineStatus::kError));
  }
  MCEngineStatus runStatus = optimizer.Run(psi);
  fResult.SetIterations(optimizer.GetIterations());
  fResult.SetConverged(optimizer.IsConverged());
  if (runStatus.IsError()) return Finish(runStatus);
  if (!runStatus.IsOK()) fResult.AddWarning(runStatus);
  const double scale = optimizer.GetScale();
  if (fModel.IsProfiled() && !(scale > 1e-10 * s2)) {
    return Finish(MCEngineStatus(MCEngineStatus::kScaleZero, MCEngineStatus::kError));
  }
  Eigen::VectorXd theta = fModel.ToNatural(psi, scale);
  fModel.Canonicalize(theta);
  Statistics(input, theta);
  if (fResult.GetStatus().IsError()) return Finish(fResult.GetStatus());
  MCEngineStatus final;
  if (!fResult.GetWarnings().empty()) final = fResult.GetWarnings().front();
  return Finish(final);
}

double MCEngineFitterImpl::GetRecordsPerEvaluation() const {
  const auto* bySubject = dynamic_cast<const MCEngineSubjectEvaluator*>(fpEvaluator.get());
  return bySubject != nullptr ? bySubject->GetRecordsVisited() : -1.0;
}

int MCEngineFitterImpl::GetStepsByFactors() const {
  const auto* bySubject = dynamic_cast<const MCEngineSubjectEvaluator*>(fpEvaluator.get());
  return bySubject != nullptr ? bySubject->GetStepsByFactors() : 0;
}

bool MCEngineFitterImpl::EvaluateAt(const std::vector<double>& theta, double& minus2LogLik,
                                    std::vector<double>& gradient, std::vector<double>& observedHessian,
                                    std::vector<double>& expectedHessian, bool forSteps) const {
  const int K = fModel.GetNParams();
  if (!fpEvaluator || static_cast<int>(theta.size()) != K) return false;
  // To the engine's scaled response and back.
  const double c2 = fData.fYScale * fData.fYScale;
  Eigen::VectorXd factor(K);
  for (int k = 0; k < K; ++k) factor[k] = std::pow(c2, fModel.GetScalePower(k));
  const Eigen::VectorXd t = Eigen::Map<const Eigen::VectorXd>(theta.data(), K).cwiseQuotient(factor);
  if (!fModel.InBounds(t)) return false;
  MCEngineEvaluation ev;
  const bool reached = forSteps ? fpEvaluator->EvaluateForSteps(t, MCEngineEvaluator::kHessian, fSettings.GetREML(), ev)
                                : fpEvaluator->Evaluate(t, MCEngineEvaluator::kHessian, fSettings.GetREML(), ev);
  if (!reached) return false;
  const bool reml = fSettings.GetREML();
  const double dof = reml ? fData.fTotalWeight - fData.fRank : fData.fTotalWeight;
  minus2LogLik = ev.fLogDetV + (reml ? ev.fLogDetXVX : 0.0) + ev.fRVR + dof * kLog2Pi + dof * std::log(c2);
  const Eigen::VectorXd g = ev.fGrad.cwiseQuotient(factor);
  const Eigen::MatrixXd outer = factor * factor.transpose();
  gradient.assign(g.data(), g.data() + K);
  observedHessian = ToRowMajor(ev.fHessObserved.cwiseQuotient(outer));
  expectedHessian = ToRowMajor(ev.fHessExpected.cwiseQuotient(outer));
  return true;
}

bool MCEngineFitterImpl::StartValues(MCEngineOptimizer& optimizer, const MCEngineEvaluation& nullEval,
                                     const Eigen::VectorXd& thetaNull, double s2, Eigen::VectorXd& psi) {
  const int K = fModel.GetNParams();
  Eigen::VectorXd theta = thetaNull;
  // Moment (MIVQUE0) equations over the parameters that enter linearly.
  std::vector<int> lin;
  for (int k = 0; k < K; ++k) {
    const int b = fModel.GetBlockOf(k);
    const MCCovStructure& s = b < 0 ? fModel.GetResidual() : fModel.GetBlock(b);
    if (s.IsLinearParam(fModel.GetLocalIndex(k))) lin.push_back(k);
  }
  const int nl = static_cast<int>(lin.size());
  Eigen::MatrixXd information;
  if (!fpEvaluator->StartInformation(thetaNull, information)) information = nullEval.fHessExpected;
  if (nl > 0 && information.rows() == K) {
    Eigen::MatrixXd S(nl, nl);
    Eigen::VectorXd q(nl);
    for (int a = 0; a < nl; ++a) {
      q[a] = nullEval.fQuad[lin[U(a)]];
      for (int b = 0; b < nl; ++b) S(a, b) = information(lin[U(a)], lin[U(b)]);
    }
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(S);
    if (es.info() == Eigen::Success) {
      const Eigen::VectorXd ev = es.eigenvalues();
      const double maxEv = ev.cwiseAbs().maxCoeff();
      Eigen::VectorXd inv = Eigen::VectorXd::Zero(nl);
      for (int i = 0; i < nl; ++i) {
        if (ev[i] > 1e-10 * maxEv) inv[i] = 1.0 / ev[i];
      }
      const Eigen::VectorXd sol = es.eigenvectors() * inv.asDiagonal() * es.eigenvectors().transpose() * q;
      for (int a = 0; a < nl; ++a) {
        if (std::isfinite(sol[a])) theta[lin[U(a)]] = sol[a];
      }
    }
  }
  const double small = 1e-4 * s2;
  for (int b = 0; b < fModel.GetNBlocks(); ++b) {
    Eigen::VectorXd seg = fModel.Segment(theta, b);
    fModel.GetBlock(b).Repair(seg, small);
    theta.segment(fModel.GetBlockOffset(b), seg.size()) = seg;
  }
  {
    Eigen::VectorXd seg = fModel.Segment(theta, -1);
    fModel.GetResidual().Repair(seg, 0.1 * s2);
    theta.segment(fModel.GetResidualOffset(), seg.size()) = seg;
  }

  auto objectiveAt = [&](const Eigen::VectorXd& t) {
    double sc = 1.0;
    return optimizer.Objective(fModel.ToWorking(t), &sc);
  };
  double best = objectiveAt(theta);
  // Correlations and spatial ranges: a coarse search, one parameter at a time.
  for (int k = 0; k < K; ++k) {
    const int b = fModel.GetBlockOf(k);
    const MCCovStructure& s = b < 0 ? fModel.GetResidual() : fModel.GetBlock(b);
    for (double r : s.GetStartCandidates(fModel.GetLocalIndex(k))) {
      Eigen::VectorXd t = theta;
      t[k] = r;
      const double f = objectiveAt(t);
      if (f < best) {
        best = f;
        theta = t;
      }
    }
  }
  if (!std::isfinite(best)) {
    for (int attempt = 0; attempt < 10 && !std::isfinite(best); ++attempt) {
      for (int k = 0; k < K; ++k) {
        if (fModel.GetKind(k) != MCEngineCovParam::kVariance) theta[k] *= 0.5;
      }
      best = objectiveAt(theta);
    }
  }
  if (!std::isfinite(best)) {
    // Diagonal random effects and the residual structure's identity at the least-squares variance.
    theta = thetaNull;
    for (int k = 0; k < K; ++k) {
      const int b = fModel.GetBlockOf(k);
      if (b >= 0) {
        if (fModel.GetKind(k) == MCEngineCovParam::kVariance) theta[k] = 0.1 * s2;
      } else if (fModel.IsScaleLike(k)) {
        theta[k] *= std::pow(s2, fModel.GetScalePower(k));
      }
    }
    best = objectiveAt(theta);
  }
  if (!std::isfinite(best)) return false;
  psi = fModel.ToWorking(theta);
  return true;
}

void MCEngineFitterImpl::WarnIndefinite(const Eigen::VectorXd& theta) {
  for (int b = -1; b < fModel.GetNBlocks(); ++b) {
    const MCCovStructure& structure = b < 0 ? fModel.GetResidual() : fModel.GetBlock(b);
    // A diagonal matrix keeps its variances at 0 or above; a large one
    // (a spatial structure over many points) is left unchecked.
    if (structure.IsDiagonal() || structure.GetDimension() > kMaxCheckedDimension) continue;
    Eigen::MatrixXd sigma;
    structure.Build(fModel.Segment(theta, b), sigma);
    if (sigma.rows() == 0 || !sigma.allFinite()) continue;
    const Eigen::VectorXd values = Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(sigma, Eigen::EigenvaluesOnly).eigenvalues();
    if (values.minCoeff() >= -1e-8 * values.cwiseAbs().maxCoeff()) continue;
    MCEngineStatus warning(b < 0 ? MCEngineStatus::kRMatrixNotPD : MCEngineStatus::kGMatrixNotPD,
                           MCEngineStatus::kWarning);
    warning.SetBlock(b);
    fResult.AddWarning(warning);
  }
}

void MCEngineFitterImpl::Statistics(const MCEngineInput& input, const Eigen::VectorXd& theta) {
  const int K = fModel.GetNParams();
  const int P = fData.fNColumns;
  const int p = fData.fRank;
  const bool reml = fSettings.GetREML();
  const double N = fData.fTotalWeight;
  MCEngineEvaluation ev;
  if (!fpEvaluator->Evaluate(theta, MCEngineEvaluator::kHessian, reml, ev)) {
    fResult.SetStatus(MCEngineStatus(MCEngineStatus::kPostEstimationFailed, MCEngineStatus::kError));
    return;
  }
  if (const auto* bySubject = dynamic_cast<const MCEngineSubjectEvaluator*>(fpEvaluator.get())) {
    fResult.SetGroupPairProducts(bySubject->GetPairProducts());
  }
  const double dof = reml ? N - p : N;
  const double m2ll =
      ev.fLogDetV + (reml ? ev.fLogDetXVX : 0.0) + ev.fRVR + dof * kLog2Pi + 2.0 * dof * std::log(fData.fYScale);
  fResult.SetMinus2LogLik(m2ll);

  // Free parameters: those not held at a bound (variances at 0, correlations
  // at an end of their interval).
  std::vector<int> freeSet;
  std::vector<bool> onBound(U(K), false);
  for (int k = 0; k < K; ++k) {
    if (fModel.IsAtBound(k, theta[k])) {
      onBound[U(k)] = true;
    } else {
      freeSet.push_back(k);
    }
  }
  const int nf = static_cast<int>(freeSet.size());
  Eigen::MatrixXd asy;  // over the free parameters
  if (nf > 0) {
    Eigen::MatrixXd HF(nf, nf);
    for (int a = 0; a < nf; ++a) {
      for (int b = 0; b < nf; ++b) HF(a, b) = ev.fHessObserved(freeSet[U(a)], freeSet[U(b)]);
    }
    Eigen::LLT<Eigen::MatrixXd> llt(HF);
    if (llt.info() == Eigen::Success && llt.matrixLLT().diagonal().minCoeff() > 0.0) {
      asy = 2.0 * llt.solve(Eigen::MatrixXd::Identity(nf, nf));
    } else if (fResult.IsConverged()) {
      Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(HF);
      const double maxEv = es.eigenvalues().cwiseAbs().maxCoeff();
      if (es.eigenvalues().minCoeff() < -1e-8 * maxEv) {
        fResult.AddWarning(MCEngineStatus(MCEngineStatus::kFinalHessianNotPD, MCEngineStatus::kWarning));
      } else {
        fResult.AddWarning(MCEngineStatus(MCEngineStatus::kConvergedSingularHessian, MCEngineStatus::kWarning));
      }
    }
  }
  WarnIndefinite(theta);
  const bool haveAsy = asy.rows() == nf && nf > 0;
  SetCovParamStatistics(theta, onBound, freeSet, asy);

  // Fixed effects over all columns.
  Eigen::VectorXd beta = Eigen::VectorXd::Zero(P);
  Eigen::MatrixXd C = Eigen::MatrixXd::Zero(P, P);
  for (int i = 0; i < p; ++i) {
    beta[fData.fvKept[U(i)]] = ev.fBeta[i];
    for (int j = 0; j < p; ++j) C(fData.fvKept[U(i)], fData.fvKept[U(j)]) = ev.fC(i, j);
  }
  // Over many columns the tests take dC_k = C A_k C from the A_k; over few,
  // each dC_k is formed.
  std::vector<MCEngineMostlyZero> A;
  std::vector<Eigen::MatrixXd> dC;
  for (int k : haveAsy ? freeSet : std::vector<int>()) {
    if (MCEngineMostlyZero::PaysOver(P)) {
      A.emplace_back(ev.fvA[U(k)], fData.fvKept, P);
      continue;
    }
    const Eigen::MatrixXd d = ev.fC * ev.fvA[U(k)] * ev.fC;
    Eigen::MatrixXd full = Eigen::MatrixXd::Zero(P, P);
    for (int i = 0; i < p; ++i) {
      for (int j = 0; j < p; ++j) full(fData.fvKept[U(i)], fData.fvKept[U(j)]) = d(i, j);
    }
    dC.push_back(std::move(full));
  }
  fResult.SetModelCovBeta(ToRowMajor(C));
  double nGroups = 0.0;
  for (double w : fData.fvComponentWeight) nGroups += w;
  fResult.SetNGroups(nGroups);
  if (fSettings.GetRobustCovariance()) {
    Eigen::MatrixXd robust;
    if (!RobustCovariance(theta, ev, robust)) {
      fResult.SetStatus(MCEngineStatus(MCEngineStatus::kPostEstimationFailed, MCEngineStatus::kError));
      return;
    }
    if (robust.rows() == p) {
      C.setZero();
      for (int i = 0; i < p; ++i) {
        for (int j = 0; j < p; ++j) C(fData.fvKept[U(i)], fData.fvKept[U(j)]) = robust(i, j);
      }
      fResult.SetCovBetaRobust(true);
    }
  }
  double fixedDF = MCEngineMissing::Value();
  if (fSettings.GetDFMethod() == MCEngineSettings::kResidual) {
    fixedDF = N - p;
  } else if (fResult.IsCovBetaRobust()) {
    fixedDF = nGroups - 1.0;
  }
  SetFixedStatistics(beta, C, std::move(dC), std::move(A), haveAsy ? asy : Eigen::MatrixXd(), fixedDF);
  SetInformationCriteria(input, m2ll, nf);
  SetTests(input);
  Unscale();
}

void MCEngineFitterImpl::SetCovParamStatistics(const Eigen::VectorXd& theta, const std::vector<bool>& onBound,
                                               const std::vector<int>& freeSet, const Eigen::MatrixXd& asy) {
  const int K = fModel.GetNParams();
  const int nf = static_cast<int>(freeSet.size());
  const bool haveAsy = asy.rows() == nf && nf > 0;
  const double alpha = 1.0 - fSettings.GetConfidenceLevel() / 100.0;
  const double zq = MCEngineProbability::NormalQuantile(1.0 - alpha / 2.0);
  fResult.SetNCovParamsFree(nf);
  // Covariance parameters.
  std::vector<MCEngineCovParam> params(U(K));
  std::vector<double> asyFull(U(K) * U(K), MCEngineMissing::Value());
  for (int k = 0; k < K; ++k) {
    MCEngineCovParam& cp = params[U(k)];
    const int b = fModel.GetBlockOf(k);
    const MCCovStructure& s = b < 0 ? fModel.GetResidual() : fModel.GetBlock(b);
    const int local = fModel.GetLocalIndex(k);
    if (b >= 0) {
      const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
      cp.SetBlock(bd.fOrigin);
      cp.SetEffect(bd.fEffect >= 0 ? bd.fEffect : s.GetParamEffect(local));
    } else {
      cp.SetBlock(-1);
      cp.SetEffect(-1);
    }
    cp.SetLabel(s.GetParamLabel(local, b < 0));
    cp.SetKind(s.GetParamKind(local));
    cp.SetEstimate(theta[k]);
    cp.SetOnBoundary(onBound[U(k)]);
  }
  if (haveAsy) {
    for (int a = 0; a < nf; ++a) {
      for (int bb = 0; bb < nf; ++bb) asyFull[U(freeSet[U(a)]) * U(K) + U(freeSet[U(bb)])] = asy(a, bb);
      MCEngineCovParam& cp = params[U(freeSet[U(a)])];
      const double var = asy(a, a);
      if (!(var > 0.0)) continue;
      const double se = std::sqrt(var);
      const double est = cp.GetEstimate();
      const double z = est / se;
      cp.SetStdError(se);
      cp.SetWaldZ(z);
      if (cp.GetKind() == MCEngineCovParam::kVariance) {
        cp.SetSig(MCEngineProbability::NormalUpper(z));
        const double nu = 2.0 * z * z;
        if (est > 0.0 && nu > 0.0) {
          cp.SetLower(nu * est / MCEngineProbability::ChiSquareQuantile(1.0 - alpha / 2.0, nu));
          cp.SetUpper(nu * est / MCEngineProbability::ChiSquareQuantile(alpha / 2.0, nu));
        }
      } else {
        cp.SetSig(2.0 * MCEngineProbability::NormalUpper(std::fabs(z)));
        cp.SetLower(est - zq * se);
        cp.SetUpper(est + zq * se);
      }
    }
  }
  fResult.SetCovParams(params);
  fResult.SetCovParamsCov(asyFull);
}

void MCEngineFitterImpl::SetFixedStatistics(const Eigen::VectorXd& beta, const Eigen::MatrixXd& C,
                                            std::vector<Eigen::MatrixXd> dC, std::vector<MCEngineMostlyZero> A,
                                            const Eigen::MatrixXd& asy, double fixedDF) {
  const int P = fData.fNColumns;
  const double alpha = 1.0 - fSettings.GetConfidenceLevel() / 100.0;
  fResult.SetFixedDF(fixedDF);
  Eigen::MatrixXd xtx(P, P);
  for (int i = 0; i < P; ++i) {
    for (int j = 0; j < P; ++j) xtx(i, j) = fData.fvXtX[U(i) * U(P) + U(j)];
  }
  fpHypothesis = std::make_unique<MCEngineHypothesis>(xtx, fData.fvAliased);
  fpHypothesis->SetEstimates(beta, C, std::move(dC), std::move(A), asy);
  fpHypothesis->SetFixedDF(fixedDF);

  std::vector<MCEngineBetaStat> betas(U(P));
  for (int j = 0; j < P; ++j) {
    MCEngineBetaStat& bs = betas[U(j)];
    if (fData.fvAliased[U(j)]) {
      bs.SetRedundant(true);
      bs.SetEstimate(0.0);
      continue;
    }
    bs.SetEstimate(beta[j]);
    const double var = C(j, j);
    if (!(var > 0.0)) continue;
    const double se = std::sqrt(var);
    bs.SetStdError(se);
    bs.SetT(beta[j] / se);
    const double df = fpHypothesis->DFOfColumn(j, var);
    bs.SetDF(df);
    if (!MCEngineMissing::Is(df)) {
      bs.SetSig(MCEngineProbability::TTwoSided(beta[j] / se, df));
      const double tq = MCEngineProbability::TQuantile(1.0 - alpha / 2.0, df);
      bs.SetLower(beta[j] - tq * se);
      bs.SetUpper(beta[j] + tq * se);
    }
  }
  fResult.SetBeta(betas);
  fResult.SetCovBeta(ToRowMajor(C));
}

void MCEngineFitterImpl::SetInformationCriteria(const MCEngineInput& input, double m2ll, int nf) {
  const int p = fData.fRank;
  const bool reml = fSettings.GetREML();
  const double N = fData.fTotalWeight;
  const double nGroups = fResult.GetNGroups();
  // Information criteria.
  const double d = reml ? nf : nf + p;
  double nStar = reml ? N - p : N;
  if (nStar < d + 2.0) nStar = d + 2.0;
  bool hasSubjects = !input.GetResidualBlock().GetSubjects().empty() || !fData.fvBlocks.empty();
  double nIC;
  if (hasSubjects && nGroups > 1.0) {
    nIC = nGroups;
  } else if (!fData.fvBlocks.empty()) {
    const MCEngineBlockData& bd = fData.fvBlocks.front();
    int cols = 0;
    for (int j = 0; j < bd.fNColumns; ++j) {
      if (bd.fvColumnEffects.empty() ? j == 0 : bd.fvColumnEffects[U(j)] == 0) ++cols;
    }
    nIC = static_cast<double>(cols) * bd.fNSubjects;
  } else {
    nIC = reml ? N - p : N;
  }
  MCEngine_850::SetInformationCriteria(fResult, m2ll, d, nStar, nIC);
}

void MCEngineFitterImpl::SetTests(const MCEngineInput& input) {
  // Tests of the fixed-effect terms.
  const std::vector<MCEngineTerm>& terms = input.GetTerms();
  std::vector<MCEngineTest> typeI, typeIII;
  for (int t = 0; t < static_cast<int>(terms.size()); ++t) {
    if (fSettings.GetTypeITests()) {
      MCEngineTest t1 = fpHypothesis->Test(fpHypothesis->TypeI(terms[U(t)]));
      t1.SetTerm(t);
      typeI.push_back(t1);
    }
    MCEngineTest t3 = fpHypothesis->Test(fpHypothesis->TypeIII(terms, t));
    t3.SetTerm(t);
    typeIII.push_back(t3);
  }
  fResult.SetTypeITests(typeI);
  fResult.SetTypeIIITests(typeIII);
}

void MCEngineFitterImpl::ReplaceEstimates(const MCEngineInput& input, const Eigen::VectorXd& theta,
                                          const std::vector<bool>& onBound, const Eigen::MatrixXd& asy,
                                          const Eigen::VectorXd& beta, const Eigen::MatrixXd& C, double m2ll,
                                          int nOther, const Eigen::MatrixXd& robustC) {
  const int K = fModel.GetNParams();
  const double c2 = fData.fYScale * fData.fYScale;
  std::vector<int> freeSet;
  for (int k = 0; k < K; ++k) {
    if (!onBound[U(k)]) freeSet.push_back(k);
  }
  Eigen::VectorXd scaledTheta = theta;
  for (int k = 0; k < K; ++k) scaledTheta[k] /= std::pow(c2, fModel.GetScalePower(k));
  Eigen::MatrixXd scaledAsy = asy;
  // Without a positive definite Hessian there is no asymptotic covariance.
  const int nAsy = asy.rows() == static_cast<Eigen::Index>(freeSet.size()) ? static_cast<int>(freeSet.size()) : 0;
  for (int a = 0; a < nAsy; ++a) {
    for (int b = 0; b < nAsy; ++b) {
      scaledAsy(a, b) /= std::pow(c2, fModel.GetScalePower(freeSet[U(a)]) + fModel.GetScalePower(freeSet[U(b)]));
    }
  }
  SetCovParamStatistics(scaledTheta, onBound, freeSet, scaledAsy);
  const Eigen::MatrixXd scaledC = C / c2;
  const bool robust = robustC.size() > 0 && robustC.rows() == C.rows() && robustC.cols() == C.cols();
  fResult.SetCovBetaRobust(robust);
  fResult.SetModelCovBeta(ToRowMajor(scaledC));
  SetFixedStatistics(beta / fData.fYScale, robust ? Eigen::MatrixXd(robustC / c2) : scaledC, {}, {}, Eigen::MatrixXd(),
                     fData.fTotalWeight - fData.fRank);
  fResult.SetMinus2LogLik(m2ll);
  SetInformationCriteria(input, m2ll, static_cast<int>(freeSet.size()) + nOther);
  SetTests(input);
  Unscale();
  fbReplaced = true;
}

bool MCEngineFitterImpl::RobustCovariance(const Eigen::VectorXd& theta, const MCEngineEvaluation& ev,
                                          Eigen::MatrixXd& robust) const {
  robust.resize(0, 0);
  const int nComp = fData.GetNComponents();
  if (fResult.GetNGroups() < 2.0) return true;
  int largest = 0;
  for (int c = 0; c < nComp; ++c) largest = std::max(largest, fData.fvComponentStart[U(c) + 1] - fData.fvComponentStart[U(c)]);
  const MCEngineSubjectEvaluator* bySubject = dynamic_cast<const MCEngineSubjectEvaluator*>(fpEvaluator.get());
  std::unique_ptr<MCEngineSubjectEvaluator> own;
  if (bySubject == nullptr) {
    if (largest > kMaxRobustGroupSize) return true;
    own = std::make_unique<MCEngineSubjectEvaluator>(fData, fModel);
    bySubject = own.get();
  }
  Eigen::MatrixXd meat;
  if (!bySubject->EmpiricalMeat(theta, ev.fBeta, meat)) return false;
  robust = ev.fC * meat * ev.fC;
  return robust.allFinite();
}

void MCEngineFitterImpl::Unscale() {
  const double c = fData.fYScale;
  if (c == 1.0) return;
  auto scaled = [](double v, double factor) { return MCEngineMissing::Is(v) ? v : v * factor; };
  const int K = fModel.GetNParams();
  std::vector<double> factor(U(K));
  for (int k = 0; k < K; ++k) factor[U(k)] = std::pow(c * c, fModel.GetScalePower(k));
  std::vector<MCEngineCovParam> params = fResult.GetCovParams();
  for (int k = 0; k < K; ++k) {
    MCEngineCovParam& cp = params[U(k)];
    const double f = factor[U(k)];
    cp.SetEstimate(cp.GetEstimate() * f);
    cp.SetStdError(scaled(cp.GetStdError(), f));
    cp.SetLower(scaled(cp.GetLower(), f));
    cp.SetUpper(scaled(cp.GetUpper(), f));
  }
  fResult.SetCovParams(params);
  std::vector<double> asy = fResult.GetCovParamsCov();
  for (int k = 0; k < K; ++k) {
    for (int l = 0; l < K; ++l) asy[U(k) * U(K) + U(l)] = scaled(asy[U(k) * U(K) + U(l)], factor[U(k)] * factor[U(l)]);
  }
  fResult.SetCovParamsCov(asy);
  std::vector<MCEngineBetaStat> betas = fResult.GetBeta();
  for (MCEngineBetaStat& bs : betas) {
    bs.SetEstimate(bs.GetEstimate() * c);
    bs.SetStdError(scaled(bs.GetStdError(), c));
    bs.SetLower(scaled(bs.GetLower(), c));
    bs.SetUpper(scaled(bs.GetUpper(), c));
  }
  fResult.SetBeta(betas);
  std::vector<double> covBeta = fResult.GetCovBeta();
  for (double& v : covBeta) v *= c * c;
  fResult.SetCovBeta(covBeta);
  std::vector<double> modelCovBeta = fResult.GetModelCovBeta();
  for (double& v : modelCovBeta) v *= c * c;
  fResult.SetModelCovBeta(modelCovBeta);
  std::vector<MCEngineTest> typeI = fResult.GetTypeITests(), typeIII = fResult.GetTypeIIITests();
  for (MCEngineTest& t : typeI) UnscaleTest(t);
  for (MCEngineTest& t : typeIII) UnscaleTest(t);
  fResult.SetTypeITests(typeI);
  fResult.SetTypeIIITests(typeIII);
}

void MCEngineFitterImpl::UnscaleTest(MCEngineTest& test) const {
  const double c = fData.fYScale;
  if (!MCEngineMissing::Is(test.GetEstimate())) test.SetEstimate(test.GetEstimate() * c);
  if (!MCEngineMissing::Is(test.GetStdError())) test.SetStdError(test.GetStdError() * c);
}

}  // namespace MCEngine_850
