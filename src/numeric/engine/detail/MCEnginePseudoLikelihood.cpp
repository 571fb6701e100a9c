#include "numeric/engine/detail/MCEnginePseudoLikelihood.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineRandomEntry.h"
#include "numeric/engine/detail/MCEngineFitterImpl.h"
#include "numeric/engine/detail/MCEnginePredictorImpl.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

// A fitted probability this close to 0 or 1 marks a record the fixed
// effects separate.
constexpr double kSeparated = 1e-8;
// The width in log k at which the search for the negative binomial's shape
// stops.
constexpr double kShapeTolerance = 1e-12;

double ValueOr(const std::vector<double>& v, int r, double fallback) {
  return v.empty() ? fallback : v[U(r)];
}

bool IsProbabilityLink(GLMMConst_850::LinkType link) {
  using namespace GLMMConst_850;
  return link == LINK_LOGIT || link == LINK_PROBIT || link == LINK_CLOGLOG || link == LINK_NLOGLOG ||
         link == LINK_LOGC || link == LINK_CAUCHIT;
}

// Links that map the distribution's means onto the whole line or keep the
// iterations inside its support.
bool IsLinkForDistribution(GLMMConst_850::TargetDistType dist, GLMMConst_850::LinkType link) {
  using namespace GLMMConst_850;
  if (dist == DIST_BINOMIAL) return IsProbabilityLink(link);
  return link == LINK_IDENTITY || link == LINK_LOG || link == LINK_POWER;
}

}  // namespace

MCEnginePseudoLikelihood::MCEnginePseudoLikelihood(const MCEngineInput& input, const MCEngineSettings& settings)
    : fInput(input),
      fSettings(settings),
      fWorkingSettings(settings),
      fFamily(settings.GetTarget().GetDistribution()),
      fLink(settings.GetTarget().GetLink(), settings.GetTarget().GetLinkPower()),
      fWorking(input) {
  fWorkingSettings.SetTarget(MCEngineTarget());
  fWorkingSettings.SetFixedResidualVariance(fFamily.IsScaleFixed() ? 1.0 : 0.0);
}

bool MCEnginePseudoLikelihood::CanFit(const MCEngineInput& input, const MCEngineSettings& settings) {
  using namespace GLMMConst_850;
  const MCEngineTarget& target = settings.GetTarget();
  const TargetDistType dist = target.GetDistribution();
  // The multinomial's thresholds are not estimated yet.
  if (dist == DIST_MULTINOMIAL) return false;
  if (target.GetFitMethod() != FIT_PSEUDO_LIKELIHOOD) return false;
  if (!IsLinkForDistribution(dist, target.GetLink())) return false;
  // A fixed scale holds independent residuals at variance 1; a residual
  // structure would need its variance fixed within it.
  const MCEngineCovType residual = input.GetResidualBlock().GetCovType();
  if (MCEngineFamily(dist).IsScaleFixed() && residual != MCEngineCovType::ID && residual != MCEngineCovType::VC) {
    return false;
  }
  return true;
}

MCEngineStatus MCEnginePseudoLikelihood::ReadTarget() {
  const int n = fInput.GetNRecords();
  const std::vector<double>& y = fInput.GetY();
  fvUsed.assign(U(n), false);
  fvY.assign(U(n), 0.0);
  fvPrior.assign(U(n), 1.0);
  fvOffset.assign(U(n), 0.0);
  fvEta.assign(U(n), 0.0);
  fvMu.assign(U(n), 0.0);
  long outside = 0;
  const bool binomial = fFamily.GetType() == GLMMConst_850::DIST_BINOMIAL;
  for (int r = 0; r < n; ++r) {
    const double trials = binomial ? ValueOr(fInput.GetTrials(), r, 1.0) : 1.0;
    const double scaleWeight = ValueOr(fInput.GetScaleWeights(), r, 1.0);
    const double freq = ValueOr(fInput.GetFrequencyWeights(), r, 1.0);
    const double offset = ValueOr(fInput.GetOffset(), r, 0.0);
    if (!std::isfinite(y[U(r)]) || !(trials > 0.0) || !(scaleWeight > 0.0) || !(freq > 0.0) ||
        !std::isfinite(offset) || !std::isfinite(trials)) {
      continue;
    }
    const double value = binomial ? y[U(r)] / trials : y[U(r)];
    if (!fFamily.InSupport(value)) {
      ++outside;
      continue;
    }
    fvUsed[U(r)] = true;
    fvY[U(r)] = value;
    fvPrior[U(r)] = trials * scaleWeight;
    fvOffset[U(r)] = offset;
    fvMu[U(r)] = fFamily.StartMu(value, trials);
    fvEta[U(r)] = fLink.Eta(fvMu[U(r)]);
  }
  if (outside == 0) return MCEngineStatus();
  MCEngineStatus status(MCEngineStatus::kTargetOutOfSupport, MCEngineStatus::kError);
  status.SetVariable(fSettings.GetTarget().GetVariable());
  status.SetCount(outside);
  return status;
}

void MCEnginePseudoLikelihood::EstimateShape() {
  auto logLik = [this](double logShape) {
    MCEngineFamily family(GLMMConst_850::DIST_NEGBIN, std::exp(logShape));
    double ll = 0.0;
    for (int r = 0; r < fInput.GetNRecords(); ++r) {
      if (!IsUsed(r)) continue;
      ll += ValueOr(fInput.GetFrequencyWeights(), r, 1.0) * family.LogLikelihood(fvY[U(r)], fvMu[U(r)], 1.0, 1.0);
    }
    return ll;
  };
  // Golden-section search over log k: the likelihood is unimodal in k, and
  // a shape beyond the interval is a Poisson target or hardly a count.
  const double golden = 0.5 * (std::sqrt(5.0) - 1.0);
  double a = std::log(MCEngineFamily::kMinShape), b = std::log(MCEngineFamily::kMaxShape);
  double c = b - golden * (b - a), d = a + golden * (b - a);
  double fc = logLik(c), fd = logLik(d);
  while (b - a > kShapeTolerance) {
    if (fc > fd) {
      b = d;
      d = c;
      fd = fc;
      c = b - golden * (b - a);
      fc = logLik(c);
    } else {
      a = c;
      c = d;
      fc = fd;
      d = a + golden * (b - a);
      fd = logLik(d);
    }
  }
  fFamily.SetShape(std::exp(0.5 * (a + b)));
}

void MCEnginePseudoLikelihood::Linearise() {
  const int n = fInput.GetNRecords();
  std::vector<double> z(U(n), std::nan(""));
  std::vector<double> w(U(n), 1.0);
  for (int r = 0; r < n; ++r) {
    if (!IsUsed(r)) continue;
    const double d = fLink.DMuDEta(fvEta[U(r)]);
    const double mu = fvMu[U(r)];
    z[U(r)] = fvEta[U(r)] - fvOffset[U(r)] + (fvY[U(r)] - mu) / d;
    w[U(r)] = fvPrior[U(r)] * d * d / fFamily.Variance(mu);
  }
  fWorking.SetY(z);
  fWorking.SetScaleWeights(w);
}

bool MCEnginePseudoLikelihood::UpdateLinearPredictor(const MCEngineFitterImpl& fitter) {
  MCEnginePredictorImpl predictor;
  if (!predictor.Setup(fitter, fWorking)) return false;
  const int n = fInput.GetNRecords();
  const int P = fInput.GetNColumns();
  const std::vector<MCEngineRandomBlock>& blocks = fInput.GetRandomBlocks();
  std::vector<double> x(U(P));
  std::vector<MCEngineRandomEntry> entries;
  for (int r = 0; r < n; ++r) {
    if (!IsUsed(r)) continue;
    std::copy(fInput.GetX().begin() + static_cast<long>(r) * P, fInput.GetX().begin() + static_cast<long>(r + 1) * P,
              x.begin());
    entries.clear();
    for (int b = 0; b < static_cast<int>(blocks.size()); ++b) {
      const MCEngineRandomBlock& block = blocks[U(b)];
      const int subject = block.GetSubjects().empty() ? 0 : block.GetSubjects()[U(r)];
      for (int k = block.GetRowStart()[U(r)]; k < block.GetRowStart()[U(r) + 1]; ++k) {
        entries.emplace_back(b, subject, block.GetColIndex()[U(k)], block.GetValues()[U(k)]);
      }
    }
    const double eta = predictor.Predict(x, entries).GetEstimate();
    // A record the working fit left out (a value of its design that is not
    // finite) has no prediction and stays out.
    if (MCEngineMissing::Is(eta) || !std::isfinite(eta)) {
      fvUsed[U(r)] = false;
      continue;
    }
    fvEta[U(r)] = eta + fvOffset[U(r)];
    fvMu[U(r)] = fLink.Mu(fvEta[U(r)]);
  }
  return true;
}

std::vector<double> MCEnginePseudoLikelihood::Parameters(const MCEngineFitterImpl& fitter) const {
  std::vector<double> out;
  for (const MCEngineBetaStat& b : fitter.GetResult().GetBeta()) {
    if (!b.IsRedundant()) out.push_back(b.GetEstimate());
  }
  for (const MCEngineCovParam& c : fitter.GetResult().GetCovParams()) out.push_back(c.GetEstimate());
  return out;
}

double MCEnginePseudoLikelihood::Change(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size()) return HUGE_VAL;
  double change = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    change = std::max(change, std::fabs(a[i] - b[i]) / std::max(std::fabs(b[i]), 1.0));
  }
  return change;
}

MCEngineStatus MCEnginePseudoLikelihood::Fit(MCEngineFitterImpl& fitter) {
  MCEngineStatus status = ReadTarget();
  if (status.IsError()) return status;
  const MCEngineTarget& target = fSettings.GetTarget();
  std::vector<double> previous;
  fbConverged = false;
  for (fIterations = 1; fIterations <= std::max(target.GetMaxPseudoIterations(), 1); ++fIterations) {
    if (fFamily.GetType() == GLMMConst_850::DIST_NEGBIN) EstimateShape();
    Linearise();
    status = fitter.Fit(fWorking, fWorkingSettings);
    if (status.IsError()) {
      fbSeparated = fFamily.GetType() == GLMMConst_850::DIST_BINOMIAL &&
                    (status.GetCode() == MCEngineStatus::kPerfectFit || HasSeparatedMeans());
      return status;
    }
    std::vector<double> params = Parameters(fitter);
    params.push_back(fFamily.GetShape());
    if (!UpdateLinearPredictor(fitter)) {
      return MCEngineStatus(MCEngineStatus::kPostEstimationFailed, MCEngineStatus::kError);
    }
    if (fIterations > 1 && Change(params, previous) <= target.GetPseudoTolerance()) {
      fbConverged = true;
      break;
    }
    previous = params;
  }
  fIterations = std::min(fIterations, std::max(target.GetMaxPseudoIterations(), 1));
  return status;
}

MCEngineStatus MCEnginePseudoLikelihood::FitWorkingAt(MCEngineFitterImpl& fitter, const std::vector<double>& eta) {
  for (int r = 0; r < fInput.GetNRecords(); ++r) {
    if (!IsUsed(r)) continue;
    fvEta[U(r)] = eta[U(r)];
    fvMu[U(r)] = fLink.Mu(eta[U(r)]);
  }
  Linearise();
  fbConverged = true;
  return fitter.Fit(fWorking, fWorkingSettings);
}

bool MCEnginePseudoLikelihood::HasSeparatedMeans() const {
  for (int r = 0; r < fInput.GetNRecords(); ++r) {
    if (IsUsed(r) && (fvMu[U(r)] < kSeparated || fvMu[U(r)] > 1.0 - kSeparated)) return true;
  }
  return false;
}

void MCEnginePseudoLikelihood::Warnings(std::vector<MCEngineStatus>& warnings) const {
  using namespace GLMMConst_850;
  if (!fbConverged) {
    warnings.emplace_back(MCEngineStatus::kPseudoLikelihoodNotConverged, MCEngineStatus::kWarning);
  }
  const int n = fInput.GetNRecords();
  if (fFamily.GetType() == DIST_BINOMIAL && HasSeparatedMeans()) {
    warnings.emplace_back(MCEngineStatus::kQuasiSeparation, MCEngineStatus::kWarning);
  }
  if (fFamily.GetType() != DIST_POISSON && fFamily.GetType() != DIST_NEGBIN) return;
  const std::vector<MCEngineRandomBlock>& blocks = fInput.GetRandomBlocks();
  for (int b = 0; b < static_cast<int>(blocks.size()); ++b) {
    const std::vector<int>& subjects = blocks[U(b)].GetSubjects();
    if (subjects.empty()) continue;
    std::map<int, bool> anyCount;
    for (int r = 0; r < n; ++r) {
      if (!IsUsed(r)) continue;
      anyCount[subjects[U(r)]] = anyCount[subjects[U(r)]] || fvY[U(r)] > 0.0;
    }
    long zero = 0;
    for (const auto& entry : anyCount) zero += entry.second ? 0 : 1;
    if (zero == 0) continue;
    MCEngineStatus warning(MCEngineStatus::kZeroCountSubjects, MCEngineStatus::kWarning);
    warning.SetBlock(b);
    warning.SetCount(zero);
    warnings.push_back(warning);
  }
}

void MCEnginePseudoLikelihood::FillResult(MCEngineResult& result) const {
  result.SetGeneralized(true);
  result.SetPseudoIterations(fIterations);
  result.SetPseudoConverged(fbConverged);
  result.SetScaleFixed(fFamily.IsScaleFixed());
  double scale = 1.0;
  if (!fFamily.IsScaleFixed()) {
    for (const MCEngineCovParam& c : result.GetCovParams()) {
      if (c.GetBlock() < 0) scale = c.GetEstimate();
    }
  }
  result.SetScale(scale);
  if (fFamily.GetType() == GLMMConst_850::DIST_NEGBIN) result.SetShape(fFamily.GetShape());
  const int n = fInput.GetNRecords();
  std::vector<double> eta(U(n), MCEngineMissing::Value());
  std::vector<double> mu(U(n), MCEngineMissing::Value());
  double deviance = 0.0, pearson = 0.0;
  for (int r = 0; r < n; ++r) {
    if (!IsUsed(r)) continue;
    eta[U(r)] = fvEta[U(r)];
    mu[U(r)] = fvMu[U(r)];
    const double freq = ValueOr(fInput.GetFrequencyWeights(), r, 1.0);
    const double e = fvY[U(r)] - fvMu[U(r)];
    deviance += freq * fFamily.Deviance(fvY[U(r)], fvMu[U(r)], fvPrior[U(r)]);
    pearson += freq * fvPrior[U(r)] * e * e / fFamily.Variance(fvMu[U(r)]);
  }
  result.SetLinearPredictor(eta);
  result.SetFittedMean(mu);
  result.SetDeviance(deviance);
  result.SetPearsonChiSquare(pearson);
  std::vector<MCEngineStatus> warnings;
  Warnings(warnings);
  for (const MCEngineStatus& w : warnings) result.AddWarning(w);
  if (!warnings.empty() && result.GetStatus().IsOK()) result.SetStatus(warnings.front());
}

}  // namespace MCEngine_850
