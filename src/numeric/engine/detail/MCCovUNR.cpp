#include "numeric/engine/detail/MCCovUNR.h"

namespace MCEngine_850 {

namespace {

// Row and column (0-based, row > column) of correlation m.
void Position(int m, int& row, int& col) {
  row = 1;
  while (row * (row + 1) / 2 <= m) ++row;
  col = m - row * (row - 1) / 2;
}

}  // namespace

std::string MCCovUNR::GetCorrelationLabel(int m) const {
  int i, j;
  Position(m, i, j);
  return "Corr(" + std::to_string(i + 1) + "," + std::to_string(j + 1) + ")";
}

void MCCovUNR::Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const {
  rc.setIdentity(fDimension, fDimension);
  for (int m = 0; m < GetNCorrelations(); ++m) {
    int i, j;
    Position(m, i, j);
    rc(i, j) = rc(j, i) = rho[m];
  }
}

void MCCovUNR::CorrelationDerivative(const Eigen::VectorXd&, int m, Eigen::MatrixXd& d) const {
  int i, j;
  Position(m, i, j);
  d.setZero(fDimension, fDimension);
  d(i, j) = d(j, i) = 1.0;
}

}  // namespace MCEngine_850
