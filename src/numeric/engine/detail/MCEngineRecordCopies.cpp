#include "numeric/engine/detail/MCEngineRecordCopies.h"

#include <cmath>

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

MCEngineRecordCopies::MCEngineRecordCopies(const MCEngineData& data) {
  bool any = false;
  for (int k = 0; k < data.fNRecords && !data.fvRecordWeight.empty(); ++k) {
    const double copies = data.fvRecordWeight[U(k)];
    if (copies == 1.0) continue;
    if (!any) fvCopies.assign(U(data.fResDimension), 0.0);
    any = true;
    const double scaleWeight = data.fvScaleWeight[U(k)] / copies;
    fvCopies[U(data.fvResPosition[U(k)])] += copies - 1.0;
    fConstant += std::log(copies) - (copies - 1.0) * std::log(scaleWeight);
  }
}

bool MCEngineRecordCopies::LogDet(const Eigen::MatrixXd& S, double& add) const {
  add = fConstant;
  for (int i = 0; i < static_cast<int>(fvCopies.size()); ++i) {
    if (fvCopies[U(i)] == 0.0) continue;
    if (!(S(i, i) > 0.0)) return false;
    add += fvCopies[U(i)] * std::log(S(i, i));
  }
  return std::isfinite(add);
}

double MCEngineRecordCopies::Trace(const Eigen::MatrixXd& S, const Eigen::MatrixXd& dS) const {
  double t = 0.0;
  for (int i = 0; i < static_cast<int>(fvCopies.size()); ++i) {
    if (fvCopies[U(i)] != 0.0) t += fvCopies[U(i)] * dS(i, i) / S(i, i);
  }
  return t;
}

double MCEngineRecordCopies::TraceOfProducts(const Eigen::MatrixXd& S, const Eigen::MatrixXd& dSk,
                                             const Eigen::MatrixXd& dSl) const {
  double t = 0.0;
  for (int i = 0; i < static_cast<int>(fvCopies.size()); ++i) {
    if (fvCopies[U(i)] != 0.0) t += fvCopies[U(i)] * dSk(i, i) * dSl(i, i) / (S(i, i) * S(i, i));
  }
  return t;
}

}  // namespace MCEngine_850
