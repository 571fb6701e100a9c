#pragma once

#include <Eigen/Dense>
#include <vector>

#include "numeric/engine/detail/MCEngineGaussHermite.h"
#include "numeric/engine/detail/MCEngineLatentDistribution.h"

namespace MCEngine_850 {

// The marginal log likelihood of a cumulative link model with one scalar
// random intercept per subject,
//   P(Y <= j | u) = F(theta_j - x'beta - offset - u),  u ~ N(0, sigma^2),
// integrated over u subject by subject by adaptive Gauss-Hermite quadrature
// about the mode of each subject's integrand (one point is the Laplace
// approximation). Without subjects it is the likelihood of the fixed model.
// Parameters: the K - 1 thresholds, the fixed coefficients, and log sigma
// when there are subjects.
class MCEngineOrdinalLikelihood {
 public:
  // Category (0 .. K - 1), design row, offset and frequency weight of each
  // record; the subject (0 .. S - 1) of each record, or empty for none.
  MCEngineOrdinalLikelihood(GLMMConst_850::LinkType link, int nCategories, const std::vector<int>& category,
                            const Eigen::MatrixXd& x, const std::vector<double>& offset,
                            const std::vector<double>& weight, const std::vector<int>& subject, int nSubjects,
                            int quadraturePoints);

  int GetNThresholds() const { return fNCategories - 1; }
  int GetNBeta() const { return static_cast<int>(fX.cols()); }
  bool HasRandom() const { return !fvGroups.empty(); }
  int GetNParameters() const { return GetNThresholds() + GetNBeta() + (HasRandom() ? 1 : 0); }
  int GetNSubjects() const { return static_cast<int>(fvGroups.size()); }

  // The log likelihood at the parameters; -inf where it is not defined
  // (thresholds out of order, a probability of 0). Each subject's mode of u
  // on the linear predictor's scale goes to *pModes when given.
  double LogLik(const Eigen::VectorXd& params, std::vector<double>* pModes = nullptr) const;
  // The linear predictor x'beta + offset of every record.
  Eigen::VectorXd FixedPredictor(const Eigen::VectorXd& params) const;

 private:
  // Log of P(Y = c) at latent shift s, with its first two derivatives in s.
  void RecordTerm(const Eigen::VectorXd& params, int c, double s, double& value, double& d1, double& d2) const;
  // The subject's log integrand h(b) = sum_r w_r log P(y_r | sigma b) - b^2 / 2
  // in the standardised effect b, with h' and h''.
  void SubjectTerm(const Eigen::VectorXd& params, const Eigen::VectorXd& eta, const std::vector<int>& records,
                   double sigma, double b, double& h, double& h1, double& h2) const;
  // The subject's log integral; its mode b goes to bMode.
  double SubjectLogIntegral(const Eigen::VectorXd& params, const Eigen::VectorXd& eta,
                            const std::vector<int>& records, double sigma, double& bMode) const;

  MCEngineLatentDistribution fLatent;
  int fNCategories;
  std::vector<int> fvCategory;
  Eigen::MatrixXd fX;
  std::vector<double> fvOffset;
  std::vector<double> fvWeight;
  std::vector<std::vector<int>> fvGroups;
  MCEngineGaussHermite fRule;
};

}  // namespace MCEngine_850
