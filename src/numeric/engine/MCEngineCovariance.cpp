#include "numeric/engine/MCEngineCovariance.h"

#include <limits>

#include "numeric/engine/detail/MCCovStructureFactory.h"
#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

namespace {

std::vector<double> Flatten(const Eigen::MatrixXd& m) {
  std::vector<double> out(static_cast<std::size_t>(m.rows() * m.cols()));
  for (int i = 0; i < m.rows(); ++i) {
    for (int j = 0; j < m.cols(); ++j) out[static_cast<std::size_t>(i * m.cols() + j)] = m(i, j);
  }
  return out;
}

Eigen::VectorXd ToVector(const std::vector<double>& v) {
  return Eigen::Map<const Eigen::VectorXd>(v.data(), static_cast<Eigen::Index>(v.size()));
}

std::vector<double> PointsOnALine(MCEngineCovType type, int dimension, const std::vector<double>& points) {
  if (!points.empty() || !GLMMConst_850::IsSpatial(type) || dimension < 1) return points;
  std::vector<double> line(static_cast<std::size_t>(dimension));
  for (int i = 0; i < dimension; ++i) line[static_cast<std::size_t>(i)] = i;
  return line;
}

}  // namespace

MCEngineCovariance::MCEngineCovariance(MCEngineCovType type, int dimension, const std::vector<int>& columnEffects,
                                       const std::vector<double>& points)
    : fpStructure(MCCovStructureFactory::Create(type, dimension, columnEffects, PointsOnALine(type, dimension, points))) {}

MCEngineCovariance::~MCEngineCovariance() = default;

int MCEngineCovariance::GetDimension() const { return fpStructure ? fpStructure->GetDimension() : 0; }

int MCEngineCovariance::GetNParams() const { return fpStructure ? fpStructure->GetNParams() : 0; }

std::string MCEngineCovariance::GetParamLabel(int k, bool residualSide) const {
  return fpStructure && k >= 0 && k < GetNParams() ? fpStructure->GetParamLabel(k, residualSide) : std::string();
}

MCEngineCovParam::Kind MCEngineCovariance::GetParamKind(int k) const {
  return fpStructure && k >= 0 && k < GetNParams() ? fpStructure->GetParamKind(k) : MCEngineCovParam::kVariance;
}

int MCEngineCovariance::GetScaleParam() const { return fpStructure ? fpStructure->GetScaleParam() : -1; }

void MCEngineCovariance::GetParamBounds(int k, double& lower, double& upper) const {
  lower = -std::numeric_limits<double>::infinity();
  upper = std::numeric_limits<double>::infinity();
  if (fpStructure && k >= 0 && k < GetNParams()) fpStructure->GetBounds(k, lower, upper);
}

std::vector<double> MCEngineCovariance::Matrix(const std::vector<double>& theta) const {
  if (!fpStructure || static_cast<int>(theta.size()) != GetNParams()) return {};
  Eigen::MatrixXd m;
  fpStructure->Build(ToVector(theta), m);
  return Flatten(m);
}

std::vector<double> MCEngineCovariance::Derivative(const std::vector<double>& theta, int k) const {
  if (!fpStructure || static_cast<int>(theta.size()) != GetNParams() || k < 0 || k >= GetNParams()) return {};
  Eigen::MatrixXd m;
  fpStructure->Derivative(ToVector(theta), k, m);
  return Flatten(m);
}

std::vector<double> MCEngineCovariance::SecondDerivative(const std::vector<double>& theta, int k, int l) const {
  if (!fpStructure || static_cast<int>(theta.size()) != GetNParams() || k < 0 || k >= GetNParams() || l < 0 ||
      l >= GetNParams()) {
    return {};
  }
  Eigen::MatrixXd m;
  fpStructure->SecondDerivative(ToVector(theta), k, l, m);
  return Flatten(m);
}

}  // namespace MCEngine_850
