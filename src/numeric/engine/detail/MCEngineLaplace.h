#pragma once

#include <Eigen/Dense>
#include <memory>
#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

class MCEngineFitterImpl;
class MCEnginePseudoLikelihood;

// Fits a generalized linear mixed model by maximum likelihood: the
// marginal likelihood of the fixed effects beta and the covariance
// parameters theta, with the random effects integrated out by the Laplace
// approximation or, for one random effect per subject, by adaptive
// Gauss-Hermite quadrature about each subject's conditional mode.
//
// The random effects are written b = Lambda u with G(theta) = Lambda
// Lambda' and u spherical; given (beta, theta) each subject's mode of u
// minimises the penalised deviance -2 log p(y | u) + u'u, found by
// penalised iteratively reweighted least squares. The deviance
// -2 log L(beta, theta) is minimised over beta and theta jointly by Newton
// steps on difference derivatives, from the maximum pseudo-likelihood
// estimates; the inverse of the final Hessian gives the estimates'
// covariance.
class MCEngineLaplace {
 public:
  MCEngineLaplace(const MCEngineInput& input, const MCEngineSettings& settings);
  ~MCEngineLaplace();

  // Whether the settings ask for a likelihood fit that the engine can make:
  // a binomial or Poisson target with a suitable link, at most one random
  // block, independent residuals, and for quadrature one random column.
  static bool CanFit(const MCEngineInput& input, const MCEngineSettings& settings);
  // Whether the settings ask for a likelihood fit at all.
  static bool IsAsked(const MCEngineSettings& settings);
  // The settings of the pseudo-likelihood fit the likelihood fit starts
  // from: maximum pseudo-likelihood.
  static MCEngineSettings StartSettings(const MCEngineSettings& settings);

  // From the pseudo-likelihood fit in the fitter: optimises, then refits
  // the working model at the conditional modes and puts the likelihood
  // estimates into the fitter's result.
  MCEngineStatus Fit(MCEngineFitterImpl& fitter, MCEnginePseudoLikelihood& start);

  // -2 log likelihood at the fixed estimates over the kept columns and the
  // covariance parameters; +infinity where it cannot be evaluated.
  double Deviance(const Eigen::VectorXd& phi);
  int GetIterations() const { return fIterations; }
  bool IsConverged() const { return fbConverged; }

 private:
  struct Group {
    std::vector<int> fvRecords;
    Eigen::MatrixXd fZ;  // the records' random columns
    Eigen::VectorXd fMode;
  };
  // The records, their groups and the start values from the
  // pseudo-likelihood fit; false when the design is not one we fit.
  bool Setup(const MCEngineFitterImpl& fitter, const MCEnginePseudoLikelihood& start);
  // Lambda with Lambda Lambda' = G(theta); false when G is not positive
  // semidefinite or theta is outside its bounds.
  bool Factor(const Eigen::VectorXd& theta, Eigen::MatrixXd& lambda) const;
  // The group's penalised deviance at u (its conditional -2 log likelihood
  // plus u'u) and, when wanted, the lower triangle of the weighted
  // cross-product A'WA + I and the score A'W(y - mu)/(d mu / d eta) - u.
  double PenalisedDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const Eigen::MatrixXd& A,
                           const Eigen::VectorXd& u, Eigen::MatrixXd* info, Eigen::VectorXd* score) const;
  // The group's contribution to -2 log L at its mode, found from u.
  bool GroupDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const Eigen::MatrixXd& lambda,
                     Eigen::VectorXd& u, double& deviance) const;
  double Evaluate(const Eigen::VectorXd& phi, bool keepModes);
  // Gradient and Hessian by central differences over the free parameters.
  void Derivatives(const Eigen::VectorXd& phi, const std::vector<int>& free, Eigen::VectorXd& g,
                   Eigen::MatrixXd& H);
  std::vector<int> FreeParameters(const Eigen::VectorXd& phi) const;
  MCEngineStatus Optimise();
  double Step(int k, const Eigen::VectorXd& phi) const;
  // The linear predictor (offset included) of every record at the modes.
  std::vector<double> LinearPredictor() const;

  const MCEngineInput& fInput;
  MCEngineSettings fSettings;
  const MCEnginePseudoLikelihood* fpStart = nullptr;
  std::unique_ptr<MCCovStructure> fpStructure;
  std::vector<int> fvKept;  // columns of X with an estimate
  int fNFixed = 0;
  int fNTheta = 0;
  Eigen::VectorXd fPhi;     // beta over the kept columns, then theta
  Eigen::VectorXd fLower;   // theta's bounds
  Eigen::VectorXd fUpper;
  std::vector<Group> fvGroups;
  Eigen::VectorXd fNodes;   // quadrature nodes and weights for N(0, 1)
  Eigen::VectorXd fWeights;
  int fIterations = 0;
  bool fbConverged = false;
  bool fbModeFailed = false;
};

}  // namespace MCEngine_850
