#include "numeric/engine/detail/MCCovUN.h"

#include <cmath>

namespace MCEngine_850 {

void MCCovUN::Position(int k, int& row, int& col) {
  row = 0;
  while ((row + 1) * (row + 2) / 2 <= k) ++row;
  col = k - row * (row + 1) / 2;
}

int MCCovUN::Index(int row, int col) {
  if (row < col) std::swap(row, col);
  return row * (row + 1) / 2 + col;
}

MCEngineCovParam::Kind MCCovUN::GetParamKind(int k) const {
  int i, j;
  Position(k, i, j);
  return i == j ? MCEngineCovParam::kVariance : MCEngineCovParam::kCovariance;
}

std::string MCCovUN::GetParamLabel(int k, bool) const {
  int i, j;
  Position(k, i, j);
  return "UN(" + std::to_string(i + 1) + "," + std::to_string(j + 1) + ")";
}

void MCCovUN::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.resize(fDimension, fDimension);
  int k = 0;
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j <= i; ++j, ++k) {
      sigma(i, j) = theta[k];
      sigma(j, i) = theta[k];
    }
  }
}

void MCCovUN::Derivative(const Eigen::VectorXd&, int k, Eigen::MatrixXd& d) const {
  int i, j;
  Position(k, i, j);
  d.setZero(fDimension, fDimension);
  d(i, j) = 1.0;
  d(j, i) = 1.0;
}

void MCCovUN::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setZero(GetNParams());
  if (residualSide) {
    for (int i = 0; i < fDimension; ++i) theta[Index(i, i)] = 1.0;
  }
}

void MCCovUN::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  for (int i = 0; i < fDimension; ++i) {
    double& v = theta[Index(i, i)];
    if (!(v >= smallVariance)) v = smallVariance;
  }
  // Shrink the correlations until the matrix is clearly positive definite.
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < i; ++j) {
      double& c = theta[Index(i, j)];
      const double bound = 0.95 * std::sqrt(theta[Index(i, i)] * theta[Index(j, j)]);
      if (!std::isfinite(c)) c = 0.0;
      if (c > bound) c = bound;
      if (c < -bound) c = -bound;
    }
  }
  Eigen::MatrixXd sigma;
  for (int attempt = 0; attempt < 60; ++attempt) {
    Build(theta, sigma);
    Eigen::LLT<Eigen::MatrixXd> llt(sigma);
    if (llt.info() == Eigen::Success && llt.matrixLLT().diagonal().minCoeff() > 1e-6 * std::sqrt(sigma.diagonal().maxCoeff())) {
      return;
    }
    for (int i = 0; i < fDimension; ++i) {
      for (int j = 0; j < i; ++j) theta[Index(i, j)] *= 0.8;
    }
  }
}

}  // namespace MCEngine_850
