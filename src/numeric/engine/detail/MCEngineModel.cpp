#include "numeric/engine/detail/MCEngineModel.h"

#include <algorithm>
#include <cmath>

namespace MCEngine_850 {

namespace {

// A correlation this close to an end of its interval counts as being at its
// bound.
constexpr double kCorrelationBound = 1e-6;

}  // namespace

void MCEngineModel::Setup(std::vector<std::unique_ptr<MCCovStructure>> blocks,
                          std::unique_ptr<MCCovStructure> residual) {
  fvBlocks = std::move(blocks);
  fpResidual = std::move(residual);
  fvOffsets.clear();
  fvBlockOf.clear();
  fvLocal.clear();
  int offset = 0;
  for (std::size_t b = 0; b < fvBlocks.size(); ++b) {
    fvOffsets.push_back(offset);
    for (int k = 0; k < fvBlocks[b]->GetNParams(); ++k) {
      fvBlockOf.push_back(static_cast<int>(b));
      fvLocal.push_back(k);
    }
    offset += fvBlocks[b]->GetNParams();
  }
  fvOffsets.push_back(offset);
  for (int k = 0; k < fpResidual->GetNParams(); ++k) {
    fvBlockOf.push_back(-1);
    fvLocal.push_back(k);
  }
  fNParams = offset + fpResidual->GetNParams();
  const int scale = fpResidual->GetScaleParam();
  fScaleIndex = scale >= 0 ? offset + scale : -1;
  fvWorkingToNatural.clear();
  fvNaturalToWorking.assign(static_cast<std::size_t>(fNParams), -1);
  for (int k = 0; k < fNParams; ++k) {
    if (k == fScaleIndex) continue;
    fvNaturalToWorking[static_cast<std::size_t>(k)] = static_cast<int>(fvWorkingToNatural.size());
    fvWorkingToNatural.push_back(k);
  }
}

MCEngineCovParam::Kind MCEngineModel::GetKind(int k) const {
  const int b = GetBlockOf(k);
  const MCCovStructure& s = b < 0 ? *fpResidual : *fvBlocks[static_cast<std::size_t>(b)];
  return s.GetParamKind(GetLocalIndex(k));
}

void MCEngineModel::GetBounds(int k, double& lower, double& upper) const {
  const int b = GetBlockOf(k);
  const MCCovStructure& s = b < 0 ? *fpResidual : *fvBlocks[static_cast<std::size_t>(b)];
  s.GetBounds(GetLocalIndex(k), lower, upper);
}

bool MCEngineModel::IsAtBound(int k, double value) const {
  const MCEngineCovParam::Kind kind = GetKind(k);
  if (kind == MCEngineCovParam::kVariance) return value <= 0.0;
  if (kind != MCEngineCovParam::kCorrelation) return false;
  double lower = -1.0, upper = 1.0;
  GetBounds(k, lower, upper);
  return value >= upper - kCorrelationBound || value <= lower + kCorrelationBound;
}

bool MCEngineModel::IsHeldAtBound(int k, double value, double gradient) const {
  if (GetKind(k) != MCEngineCovParam::kCorrelation) return false;
  double lower = -1.0, upper = 1.0;
  GetBounds(k, lower, upper);
  return (value >= upper - kCorrelationBound && gradient < 0.0) || (value <= lower + kCorrelationBound && gradient > 0.0);
}

void MCEngineModel::Canonicalize(Eigen::VectorXd& theta) const {
  for (int b = -1; b < GetNBlocks(); ++b) {
    Eigen::VectorXd seg = Segment(theta, b);
    (b < 0 ? *fpResidual : *fvBlocks[static_cast<std::size_t>(b)]).Canonicalize(seg);
    theta.segment(b < 0 ? GetResidualOffset() : GetBlockOffset(b), seg.size()) = seg;
  }
}

Eigen::VectorXd MCEngineModel::ToNatural(const Eigen::VectorXd& psi, double scale) const {
  Eigen::VectorXd theta(fNParams);
  for (int w = 0; w < GetNWorking(); ++w) {
    const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
    theta[k] = (IsProfiled() && IsScaleLike(k)) ? psi[w] * std::pow(scale, GetScalePower(k)) : psi[w];
  }
  if (IsProfiled()) theta[fScaleIndex] = scale;
  return theta;
}

Eigen::VectorXd MCEngineModel::ToWorking(const Eigen::VectorXd& theta) const {
  Eigen::VectorXd psi(GetNWorking());
  const double scale = IsProfiled() ? theta[fScaleIndex] : 1.0;
  for (int w = 0; w < GetNWorking(); ++w) {
    const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
    psi[w] = (IsProfiled() && IsScaleLike(k)) ? theta[k] / std::pow(scale, GetScalePower(k)) : theta[k];
  }
  return psi;
}

Eigen::VectorXd MCEngineModel::Segment(const Eigen::VectorXd& theta, int block) const {
  if (block < 0) return theta.segment(GetResidualOffset(), fpResidual->GetNParams());
  return theta.segment(fvOffsets[static_cast<std::size_t>(block)], fvBlocks[static_cast<std::size_t>(block)]->GetNParams());
}

bool MCEngineModel::FactorBlock(const Eigen::VectorXd& theta, int b, double lift, Eigen::MatrixXd& lambda,
                                Eigen::MatrixXd* lambdaInv) const {
  Eigen::MatrixXd G;
  GetBlock(b).Build(Segment(theta, b), G);
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(G);
  if (es.info() != Eigen::Success) return false;
  const Eigen::VectorXd ev = es.eigenvalues();
  const double scale = std::max(ev.cwiseAbs().maxCoeff(), 1e-300);
  if (ev.minCoeff() < -1e-10 * scale) return false;
  const Eigen::VectorXd sv = ev.cwiseMax(0.0).cwiseSqrt().cwiseMax(lift);
  lambda = es.eigenvectors() * sv.asDiagonal();
  if (lambdaInv != nullptr) *lambdaInv = sv.cwiseInverse().asDiagonal() * es.eigenvectors().transpose();
  return true;
}

bool MCEngineModel::InBounds(const Eigen::VectorXd& theta) const {
  for (int b = 0; b < GetNBlocks(); ++b) {
    if (!fvBlocks[static_cast<std::size_t>(b)]->InBounds(Segment(theta, b))) return false;
  }
  return fpResidual->InBounds(Segment(theta, -1));
}

void MCEngineModel::ToWorkingDerivatives(const Eigen::VectorXd& psi, double scale, const Eigen::VectorXd& g,
                                         const Eigen::MatrixXd& H, bool observed, Eigen::VectorXd& gw,
                                         Eigen::MatrixXd& Hw) const {
  const int nw = GetNWorking();
  if (!IsProfiled()) {
    gw = g;
    Hw = H;
    return;
  }
  // Coordinates (psi, s): column nw is s. A parameter of scale power a is
  // theta = psi s^a.
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(fNParams, nw + 1);
  for (int w = 0; w < nw; ++w) {
    const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
    const double a = GetScalePower(k);
    if (a != 0.0) {
      J(k, w) = std::pow(scale, a);
      J(k, nw) = a * psi[w] * std::pow(scale, a - 1.0);
    } else {
      J(k, w) = 1.0;
    }
  }
  J(fScaleIndex, nw) = 1.0;
  const Eigen::VectorXd gt = J.transpose() * g;
  Eigen::MatrixXd Ht = J.transpose() * H * J;
  if (observed) {
    for (int w = 0; w < nw; ++w) {
      const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
      const double a = GetScalePower(k);
      if (a != 0.0) {
        const double cross = g[k] * a * std::pow(scale, a - 1.0);
        Ht(w, nw) += cross;
        Ht(nw, w) += cross;
        Ht(nw, nw) += g[k] * a * (a - 1.0) * psi[w] * std::pow(scale, a - 2.0);
      }
    }
  }
  gw = gt.head(nw);
  const double hss = Ht(nw, nw);
  Hw = Ht.topLeftCorner(nw, nw);
  if (hss > 0.0) Hw -= Ht.col(nw).head(nw) * Ht.row(nw).head(nw) / hss;
}

}  // namespace MCEngine_850
