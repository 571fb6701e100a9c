#include "numeric/engine/detail/MCEngineCrossProducts.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(long i) { return static_cast<std::size_t>(i); }

}  // namespace

void MCEngineCrossProducts::Reset(const MCEngineSparseDesign& design, int p) {
  fvZZ.assign(U(design.GetNPairValues()), 0.0);
  fZX = Eigen::MatrixXd::Zero(design.GetNColumns(), p);
  fXX = Eigen::MatrixXd::Zero(p, p);
  fZY = Eigen::VectorXd::Zero(design.GetNColumns());
  fXY = Eigen::VectorXd::Zero(p);
  fYY = 0.0;
}

void MCEngineCrossProducts::AddRecord(const MCEngineSparseDesign& design, int g, double w, const std::vector<double>& y) {
  const MCEngineSparseDesign::Group& gr = design.GetGroups()[U(g)];
  const double f = gr.fWeight * w;
  const int* zc = &design.GetGroupZColumns()[U(gr.fZ0)];
  const int* xc = gr.fNX > 0 ? &design.GetGroupXColumns()[U(gr.fX0)] : nullptr;
  const double* z = gr.fNZ > 0 ? &design.GetGroupZValues()[U(gr.fZValue0)] : nullptr;
  const double* x = gr.fNX > 0 ? &design.GetGroupXValues()[U(gr.fXValue0)] : nullptr;
  const long* slot = gr.fNZ > 0 ? &design.GetGroupSlots()[U(gr.fSlot0)] : nullptr;
  const double yv = y[U(design.GetGroupRows()[U(gr.fRow0)])];
  for (int j = 0; j < gr.fNZ; ++j) {
    const double fz = f * z[j];
    for (int i = 0; i < gr.fNZ; ++i) {
      const long s = slot[static_cast<long>(j) * gr.fNZ + i];
      if (s >= 0) fvZZ[U(s)] += fz * z[i];
    }
    for (int k = 0; k < gr.fNX; ++k) fZX(zc[j], xc[k]) += fz * x[k];
    fZY[zc[j]] += fz * yv;
  }
  for (int k = 0; k < gr.fNX; ++k) {
    const double fx = f * x[k];
    for (int l = 0; l < gr.fNX; ++l) fXX(xc[l], xc[k]) += fx * x[l];
    fXY[xc[k]] += fx * yv;
  }
  fYY += f * yv * yv;
}

void MCEngineCrossProducts::Add(const MCEngineSparseDesign& design, int g, const Eigen::MatrixXd& W,
                                const std::vector<double>& y) {
  const MCEngineSparseDesign::Group& gr = design.GetGroups()[U(g)];
  if (gr.fNRows == 1) {
    AddRecord(design, g, W(0, 0), y);
    return;
  }
  const int m = gr.fNRows;
  const int nz = gr.fNZ;
  const int nx = gr.fNX;
  Eigen::MatrixXd D(m, nz + nx + 1);
  if (nz > 0) D.leftCols(nz) = Eigen::Map<const Eigen::MatrixXd>(&design.GetGroupZValues()[U(gr.fZValue0)], m, nz);
  if (nx > 0) D.middleCols(nz, nx) = Eigen::Map<const Eigen::MatrixXd>(&design.GetGroupXValues()[U(gr.fXValue0)], m, nx);
  for (int a = 0; a < m; ++a) D(a, nz + nx) = y[U(design.GetGroupRows()[U(gr.fRow0 + a)])];
  const Eigen::MatrixXd P = gr.fWeight * (D.transpose() * (W * D));
  const int* zc = nz > 0 ? &design.GetGroupZColumns()[U(gr.fZ0)] : nullptr;
  const int* xc = nx > 0 ? &design.GetGroupXColumns()[U(gr.fX0)] : nullptr;
  const long* slot = nz > 0 ? &design.GetGroupSlots()[U(gr.fSlot0)] : nullptr;
  for (int j = 0; j < nz; ++j) {
    for (int i = 0; i < nz; ++i) {
      const long s = slot[static_cast<long>(j) * nz + i];
      if (s >= 0) fvZZ[U(s)] += P(i, j);
    }
    for (int k = 0; k < nx; ++k) fZX(zc[j], xc[k]) += P(j, nz + k);
    fZY[zc[j]] += P(j, nz + nx);
  }
  for (int k = 0; k < nx; ++k) {
    for (int l = 0; l < nx; ++l) fXX(xc[l], xc[k]) += P(nz + l, nz + k);
    fXY[xc[k]] += P(nz + k, nz + nx);
  }
  fYY += P(nz + nx, nz + nx);
}

}  // namespace MCEngine_850
