#include "numeric/engine/MCEngineFitter.h"

#include "numeric/engine/detail/MCEngineFitterImpl.h"
#include "numeric/engine/detail/MCEngineHypothesis.h"
#include "numeric/engine/detail/MCEngineLaplace.h"
#include "numeric/engine/detail/MCEngineOrdinal.h"
#include "numeric/engine/detail/MCEnginePseudoLikelihood.h"

namespace MCEngine_850 {

MCEngineFitter::MCEngineFitter() : fpImpl(std::make_unique<MCEngineFitterImpl>()) {}

MCEngineFitter::~MCEngineFitter() = default;

MCEngineStatus MCEngineFitter::Fit(const MCEngineInput& input, const MCEngineSettings& settings) {
  fpGeneralized.reset();
  fpOrdinal.reset();
  if (settings.GetTarget().IsLinear()) return fpImpl->Fit(input, settings);
  if (MCEngineOrdinal::Applies(settings)) return FitOrdinal(input, settings);
  // A target the engine cannot fit is refused, never fitted as normal. A
  // likelihood fit starts from the maximum pseudo-likelihood fit.
  const bool likelihood = MCEngineLaplace::IsAsked(settings);
  const MCEngineSettings start = likelihood ? MCEngineLaplace::StartSettings(settings) : settings;
  if (likelihood ? !MCEngineLaplace::CanFit(input, settings) : !MCEnginePseudoLikelihood::CanFit(input, settings)) {
    return fpImpl->Refuse(MCEngineStatus(MCEngineStatus::kGeneralizedUnavailable, MCEngineStatus::kError));
  }
  fpGeneralized = std::make_unique<MCEnginePseudoLikelihood>(input, start);
  MCEngineStatus status = fpGeneralized->Fit(*fpImpl);
  if (likelihood && !status.IsError()) status = MCEngineLaplace(input, settings).Fit(*fpImpl, *fpGeneralized);
  if (status.IsError()) {
    const bool separated = fpGeneralized->IsSeparated();
    fpGeneralized.reset();
    fpImpl->Refuse(status);
    if (separated) {
      fpImpl->MutableResult().AddWarning(MCEngineStatus(MCEngineStatus::kQuasiSeparation, MCEngineStatus::kWarning));
    }
    return status;
  }
  fpGeneralized->FillResult(fpImpl->MutableResult());
  return fpImpl->GetResult().GetStatus();
}

MCEngineStatus MCEngineFitter::FitOrdinal(const MCEngineInput& input, const MCEngineSettings& settings) {
  if (!MCEngineOrdinal::CanFit(input, settings)) {
    return fpImpl->Refuse(MCEngineStatus(MCEngineStatus::kGeneralizedUnavailable, MCEngineStatus::kError));
  }
  fpOrdinal = std::make_unique<MCEngineOrdinal>(input, settings);
  const MCEngineStatus status = fpOrdinal->Fit();
  // The linear fitter is only the result's holder here.
  fpImpl->Refuse(status);
  if (status.IsError()) {
    fpOrdinal.reset();
    return status;
  }
  fpImpl->MutableResult() = fpOrdinal->GetResult();
  return status;
}

const MCEngineResult& MCEngineFitter::GetResult() const { return fpImpl->GetResult(); }

const MCEngineInput* MCEngineFitter::GetWorkingInput() const {
  return fpGeneralized ? &fpGeneralized->GetWorkingInput() : nullptr;
}

MCEngineTest MCEngineFitter::TestContrast(const std::vector<std::vector<double>>& L) const {
  return TestContrast(L, std::vector<double>(L.size(), 0.0));
}

MCEngineTest MCEngineFitter::TestContrast(const std::vector<std::vector<double>>& L,
                                          const std::vector<double>& K) const {
  const MCEngineHypothesis* hyp = fpOrdinal ? fpOrdinal->GetHypothesis() : fpImpl->GetHypothesis();
  MCEngineTest test;
  test.SetL(L);
  if (!hyp || K.size() != L.size()) return test;
  if (fpOrdinal) {
    for (const std::vector<double>& row : L) {
      if (fpOrdinal->WeighsIntercept(row)) return test;
    }
  }
  const int P = fpOrdinal ? fpOrdinal->GetNColumns() : fpImpl->GetNColumns();
  Eigen::MatrixXd M(static_cast<Eigen::Index>(L.size()), P);
  for (std::size_t i = 0; i < L.size(); ++i) {
    if (static_cast<int>(L[i].size()) != P) return test;
    for (int j = 0; j < P; ++j) M(static_cast<Eigen::Index>(i), j) = L[i][static_cast<std::size_t>(j)];
  }
  if (fpOrdinal) {
    MCEngineTest ordinal = hyp->Test(M, Eigen::Map<const Eigen::VectorXd>(K.data(), static_cast<Eigen::Index>(K.size())));
    ordinal.SetL(L);
    return ordinal;
  }
  // The estimates are held in the scaled response's units.
  Eigen::VectorXd k(static_cast<Eigen::Index>(K.size()));
  for (std::size_t i = 0; i < K.size(); ++i) k[static_cast<Eigen::Index>(i)] = K[i] / fpImpl->GetData().fYScale;
  MCEngineTest result = hyp->Test(M, k);
  fpImpl->UnscaleTest(result);
  return result;
}

std::vector<MCEngineTest> MCEngineFitter::TestContrastRows(const std::vector<std::vector<double>>& rows) const {
  // The rows of marginal means: an ordinal fit's means are on the latent
  // scale, centred on the thresholds' mean, which takes the intercept's place.
  const MCEngineHypothesis* hyp = fpOrdinal ? fpOrdinal->GetLatentHypothesis() : fpImpl->GetHypothesis();
  const int P = fpOrdinal ? fpOrdinal->GetNColumns() : fpImpl->GetNColumns();
  bool usable = hyp != nullptr;
  for (const std::vector<double>& l : rows) usable = usable && static_cast<int>(l.size()) == P;
  if (!usable) {
    std::vector<MCEngineTest> tests(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) tests[i].SetL({rows[i]});
    return tests;
  }
  Eigen::MatrixXd M(static_cast<Eigen::Index>(rows.size()), P);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (int j = 0; j < P; ++j) M(static_cast<Eigen::Index>(i), j) = rows[i][static_cast<std::size_t>(j)];
  }
  std::vector<MCEngineTest> tests = hyp->TestRows(M, Eigen::VectorXd::Zero(M.rows()));
  if (!fpOrdinal) {
    for (MCEngineTest& test : tests) fpImpl->UnscaleTest(test);
  }
  return tests;
}

long MCEngineFitter::GetCovarianceProducts() const {
  const MCEngineHypothesis* hyp = fpOrdinal ? fpOrdinal->GetHypothesis() : fpImpl->GetHypothesis();
  return hyp ? hyp->GetCovarianceProducts() : 0;
}

double MCEngineFitter::GetDerivativeWork() const {
  const MCEngineHypothesis* hyp = fpOrdinal ? fpOrdinal->GetHypothesis() : fpImpl->GetHypothesis();
  return hyp ? hyp->GetDerivativeWork() : 0.0;
}

double MCEngineFitter::GetRecordsPerEvaluation() const { return fpImpl->GetRecordsPerEvaluation(); }

int MCEngineFitter::GetStepsByFactors() const { return fpImpl->GetStepsByFactors(); }

bool MCEngineFitter::EvaluateAt(const std::vector<double>& theta, double& minus2LogLik, std::vector<double>& gradient,
                                std::vector<double>& observedHessian, std::vector<double>& expectedHessian,
                                bool forSteps) const {
  return fpImpl->EvaluateAt(theta, minus2LogLik, gradient, observedHessian, expectedHessian, forSteps);
}

bool MCEngineFitter::IsEstimable(const std::vector<double>& l) const {
  const MCEngineHypothesis* hyp = fpOrdinal ? fpOrdinal->GetHypothesis() : fpImpl->GetHypothesis();
  const int P = fpOrdinal ? fpOrdinal->GetNColumns() : fpImpl->GetNColumns();
  if (!hyp || static_cast<int>(l.size()) != P) return false;
  if (fpOrdinal && fpOrdinal->WeighsIntercept(l)) return false;
  Eigen::RowVectorXd row(P);
  for (int j = 0; j < P; ++j) row[j] = l[static_cast<std::size_t>(j)];
  return hyp->IsEstimable(row);
}

}  // namespace MCEngine_850
