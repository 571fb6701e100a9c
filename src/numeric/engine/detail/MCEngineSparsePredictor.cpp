#include "numeric/engine/detail/MCEngineSparsePredictor.h"

#include <algorithm>

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

// A variance at 0 keeps Lambda at 1e-60 (the evaluator's lift), which
// leaves its effects a PEV near 1e-120: below this it is 0, as it is exactly
// for the set-up by groups.
constexpr double kNegligiblePEV = 1e-100;

}  // namespace

bool MCEngineSparsePredictor::Setup(MCEngineSparseEvaluator& evaluator, const MCEngineModel& model,
                                    const Eigen::VectorXd& theta, const std::vector<int>& free, bool derivatives,
                                    const Eigen::VectorXd* given, const MCCommon_850::MCQueryCancel* pCancel) {
  evaluator.SetCancel(pCancel);
  fpFactor.reset();
  if (!evaluator.IsReady()) return false;
  fFactorFlops = evaluator.GetFactorFlops();
  if (!model.InBounds(theta) || !PointAt(evaluator, theta, fBase)) return false;
  if (given != nullptr) {
    // v = M^-1 Lambda'Z'R^-1 (y - X beta) is linear in beta.
    fBase.fV += fBase.fY * (fBase.fBeta - *given);
    fBase.fBeta = *given;
  }
  fvDifferences.clear();
  fScaleSlot = -1;
  if (derivatives) {
    fScaleSlot = HomogeneousScale(model, theta, free);
    for (int k : free) {
      Differences d;
      if (static_cast<int>(fvDifferences.size()) == fScaleSlot) {
        fvDifferences.push_back(std::move(d));
        continue;
      }
      d.fStep = MCEngineSparseEvaluator::DifferenceStep(model, theta, k);
      auto at = [&](double step, Point& out) {
        Eigen::VectorXd t = theta;
        t[k] += step;
        return model.InBounds(t) && PointAt(evaluator, t, out);
      };
      d.fbUp = at(d.fStep, d.fUp) && at(0.5 * d.fStep, d.fUpHalf);
      d.fbDown = at(-d.fStep, d.fDown) && at(-0.5 * d.fStep, d.fDownHalf);
      if (pCancel != nullptr && pCancel->IsCancelled()) return false;
      fvDifferences.push_back(std::move(d));
    }
  }
  fpDesign = std::make_unique<MCEngineSparseDesign>(evaluator.GetDesign());
  return true;
}

bool MCEngineSparsePredictor::PointAt(MCEngineSparseEvaluator& evaluator, const Eigen::VectorXd& theta, Point& out) {
  if (!evaluator.PredictionPointAt(theta, out)) return false;
  // A factorisation and its selected inverse (about twice its work), and Y.
  const double q = static_cast<double>(out.fY.rows());
  const double p = static_cast<double>(out.fY.cols());
  fSetupWork += 3.0 * fFactorFlops + 2.0 * static_cast<double>(out.fvPairInverse.size()) * p + p * p * p;
  fLargestMatrix = std::max({fLargestMatrix, q * p, p * p});
  return true;
}

int MCEngineSparsePredictor::HomogeneousScale(const MCEngineModel& model, const Eigen::VectorXd& theta,
                                              const std::vector<int>& free) {
  const int r = model.IsProfiled() ? model.GetScaleIndex() : -1;
  if (r < 0 || !(theta[r] > 0.0)) return -1;
  int slot = -1;
  fScaleWeights.resize(static_cast<Eigen::Index>(free.size()));
  for (int k = 0; k < static_cast<int>(theta.size()); ++k) {
    const auto at = std::find(free.begin(), free.end(), k);
    const double weight = model.GetScalePower(k) * theta[k];
    if (at == free.end()) {
      if (weight != 0.0) return -1;
      continue;
    }
    const auto a = at - free.begin();
    fScaleWeights[a] = weight;
    if (k == r) slot = static_cast<int>(a);
  }
  return slot;
}

int MCEngineSparsePredictor::GetColumn(int block, int subject, int column) const {
  return fpDesign->GetNodeStart(fpDesign->GetBlockFirstNode(block) + subject) + column;
}

MCEngineSparsePredictor::NodeVectors MCEngineSparsePredictor::Spherical(const Point& point, const Columns& z) const {
  NodeVectors w;
  for (const auto& entry : z) {
    const int node = fpDesign->GetColumnNode(entry.first);
    Eigen::VectorXd& zn = w[node];
    if (zn.size() == 0) zn = Eigen::VectorXd::Zero(fpDesign->GetNodeSize(node));
    zn[entry.first - fpDesign->GetNodeStart(node)] += entry.second;
  }
  for (auto& entry : w) {
    entry.second = (point.fvLambda[U(fpDesign->GetNodeBlock(entry.first))].transpose() * entry.second).eval();
  }
  return w;
}

bool MCEngineSparsePredictor::PEVAt(const Point& point, const Eigen::VectorXd& x, const Columns& z,
                                    double& pev) const {
  const NodeVectors w = Spherical(point, z);
  double wMw = 0.0;
  if (!OnPattern(point, w, wMw) && !ThroughFactor(point, w, wMw)) return false;
  Eigen::VectorXd k = x;
  for (const auto& entry : w) {
    k.noalias() -= point.fY.middleRows(fpDesign->GetNodeStart(entry.first), entry.second.size()).transpose() *
                   entry.second;
  }
  pev = wMw + k.dot(point.fC * k);
  if (pev < kNegligiblePEV) pev = 0.0;
  return true;
}

bool MCEngineSparsePredictor::OnPattern(const Point& point, const NodeVectors& w, double& wMw) const {
  wMw = 0.0;
  for (auto a = w.begin(); a != w.end(); ++a) {
    for (auto b = w.begin(); b != std::next(a); ++b) {
      // The nodes come in ascending order: a is the later one.
      const MCEngineSparseDesign::Pair* pPair = fpDesign->FindPair(a->first, b->first);
      if (pPair == nullptr) return false;
      const Eigen::Map<const Eigen::MatrixXd> block(&point.fvPairInverse[static_cast<std::size_t>(pPair->fOffset)],
                                                    a->second.size(), b->second.size());
      wMw += (a == b ? 1.0 : 2.0) * a->second.dot(block * b->second);
    }
  }
  return true;
}

bool MCEngineSparsePredictor::ThroughFactor(const Point& point, const NodeVectors& w, double& wMw) const {
  if (!fpFactor) {
    fpFactor = std::make_unique<MCEngineSparseFactor>();
    if (!fpFactor->Analyze(fpDesign->GetNColumns(), fpDesign->GetColStart(), fpDesign->GetRowIndex(),
                            fpDesign->BlocksBySubjects())) {
      fpFactor.reset();
      return false;
    }
  }
  if (!fpFactor->Factorize(point.fvM)) return false;
  Eigen::VectorXd s = Eigen::VectorXd::Zero(fpDesign->GetNColumns());
  for (const auto& entry : w) s.segment(fpDesign->GetNodeStart(entry.first), entry.second.size()) = entry.second;
  fpFactor->SolveL(s.data(), 1);
  wMw = s.squaredNorm();
  return true;
}

MCEngineSparsePredictor::Answer MCEngineSparsePredictor::Predict(const Eigen::VectorXd& x, const Columns& z) const {
  Answer out;
  out.fEstimate = x.dot(fBase.fBeta);
  for (const auto& entry : Spherical(fBase, z)) {
    out.fEstimate += entry.second.dot(fBase.fV.segment(fpDesign->GetNodeStart(entry.first), entry.second.size()));
  }
  out.fbPEV = PEVAt(fBase, x, z, out.fPEV);
  if (!out.fbPEV || fvDifferences.empty()) return out;
  const int nf = static_cast<int>(fvDifferences.size());
  out.fGradient.resize(nf);
  const Eigen::VectorXd here = Eigen::VectorXd::Constant(1, out.fPEV);
  for (int a = 0; a < nf; ++a) {
    if (a == fScaleSlot) continue;
    const Differences& d = fvDifferences[U(a)];
    MCEngineSparseEvaluator::DifferenceSide up, down;
    up.fFull.resize(1);
    up.fHalf.resize(1);
    down.fFull.resize(1);
    down.fHalf.resize(1);
    up.fbOK = d.fbUp && PEVAt(d.fUp, x, z, up.fFull[0]) && PEVAt(d.fUpHalf, x, z, up.fHalf[0]);
    down.fbOK = d.fbDown && PEVAt(d.fDown, x, z, down.fFull[0]) && PEVAt(d.fDownHalf, x, z, down.fHalf[0]);
    Eigen::VectorXd derivative;
    if (!MCEngineSparseEvaluator::DifferenceQuotient(up, down, here, d.fStep, derivative)) return out;
    out.fGradient[a] = derivative[0];
  }
  if (fScaleSlot >= 0) {
    out.fGradient[fScaleSlot] = 0.0;
    out.fGradient[fScaleSlot] = (out.fPEV - fScaleWeights.dot(out.fGradient)) / fScaleWeights[fScaleSlot];
  }
  out.fbGradient = true;
  return out;
}

}  // namespace MCEngine_850
