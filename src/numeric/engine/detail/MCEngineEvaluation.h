#pragma once

#include <Eigen/Dense>
#include <vector>

namespace MCEngine_850 {

// One evaluation of the likelihood at a natural parameter vector. Derivatives
// are of -2 log L (unprofiled) in the natural parameters; the traces are taken
// with P for REML and with V^-1 for ML.
struct MCEngineEvaluation {
  bool fbOK = false;
  double fLogDetV = 0.0;
  double fLogDetXVX = 0.0;
  double fRVR = 0.0;  // r' V^-1 r at the GLS estimate
  Eigen::VectorXd fBeta;
  // (X'V^-1 X)^-1 over the kept columns, with the gradient (but for the
  // optimiser's steps, which may leave it and fvA empty).
  Eigen::MatrixXd fC;

  Eigen::VectorXd fGrad;
  Eigen::MatrixXd fHessExpected;
  Eigen::MatrixXd fHessObserved;
  Eigen::VectorXd fQuad;             // y'P V_k P y
  Eigen::VectorXd fTrace;            // tr(P V_k) (REML) or tr(V^-1 V_k) (ML)
  std::vector<Eigen::MatrixXd> fvA;  // X'V^-1 V_k V^-1 X
};

}  // namespace MCEngine_850
