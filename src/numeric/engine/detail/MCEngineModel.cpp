#include "numeric/engine/detail/MCEngineModel.h"

namespace MCEngine_850 {

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

Eigen::VectorXd MCEngineModel::ToNatural(const Eigen::VectorXd& psi, double scale) const {
  Eigen::VectorXd theta(fNParams);
  for (int w = 0; w < GetNWorking(); ++w) {
    const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
    theta[k] = (IsProfiled() && IsScaleLike(k)) ? psi[w] * scale : psi[w];
  }
  if (IsProfiled()) theta[fScaleIndex] = scale;
  return theta;
}

Eigen::VectorXd MCEngineModel::ToWorking(const Eigen::VectorXd& theta) const {
  Eigen::VectorXd psi(GetNWorking());
  const double scale = IsProfiled() ? theta[fScaleIndex] : 1.0;
  for (int w = 0; w < GetNWorking(); ++w) {
    const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
    psi[w] = (IsProfiled() && IsScaleLike(k)) ? theta[k] / scale : theta[k];
  }
  return psi;
}

Eigen::VectorXd MCEngineModel::Segment(const Eigen::VectorXd& theta, int block) const {
  if (block < 0) return theta.segment(GetResidualOffset(), fpResidual->GetNParams());
  return theta.segment(fvOffsets[static_cast<std::size_t>(block)], fvBlocks[static_cast<std::size_t>(block)]->GetNParams());
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
  // Coordinates (psi, s): column nw is s.
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(fNParams, nw + 1);
  for (int w = 0; w < nw; ++w) {
    const int k = fvWorkingToNatural[static_cast<std::size_t>(w)];
    if (IsScaleLike(k)) {
      J(k, w) = scale;
      J(k, nw) = psi[w];
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
      if (IsScaleLike(k)) {
        Ht(w, nw) += g[k];
        Ht(nw, w) += g[k];
      }
    }
  }
  gw = gt.head(nw);
  const double hss = Ht(nw, nw);
  Hw = Ht.topLeftCorner(nw, nw);
  if (hss > 0.0) Hw -= Ht.col(nw).head(nw) * Ht.row(nw).head(nw) / hss;
}

}  // namespace MCEngine_850
