#pragma once

#include <Eigen/Dense>
#include <cmath>
#include <memory>
#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/detail/MCCovStructure.h"
#include "numeric/engine/detail/MCEngineFamily.h"

namespace MCEngine_850 {

class MCEngineFitterImpl;
class MCEnginePseudoLikelihood;
class MCEngineResult;

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
  // a binomial, Poisson, negative binomial, gamma or inverse Gaussian target
  // with a suitable link (log, identity or power for the last two), independent residuals, the model-based covariance
  // of the estimates or a robust one over at least two independent groups,
  // and for quadrature one random block with one column.
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
  // Records whose random effects are tied: those sharing a subject of any
  // block. Their random effects u (the slots of the blocks' subjects met in
  // the group, one after another) are integrated jointly; groups are
  // independent.
  struct Group {
    std::vector<int> fvRecords;
    std::vector<Eigen::MatrixXd> fvZ;       // by block: the records' random columns
    std::vector<std::vector<int>> fvFirst;  // by block and record: its slot's first element of u
    int fNEffects = 0;
    Eigen::VectorXd fMode;
  };
  // A group's design in u: by block, the rows Z Lambda of its records.
  using GroupDesign = std::vector<Eigen::MatrixXd>;
  // The records, their groups and the start values from the
  // pseudo-likelihood fit; false when the design is not one we fit.
  bool Setup(const MCEngineFitterImpl& fitter, const MCEnginePseudoLikelihood& start);
  // The used records joined into groups through the subjects of every block.
  bool SetupGroups(const MCEnginePseudoLikelihood& start);
  static int SubjectOf(const MCEngineInput& input, int block, int r);
  // Each used record's group, named by one of its records.
  static std::vector<int> GroupRoots(const MCEngineInput& input, const std::vector<bool>& used);
  // The number of groups the used records form.
  static int GroupCount(const MCEngineInput& input, const std::vector<bool>& used);
  // The most random effects of one group.
  static int LargestJointEffects(const MCEngineInput& input, const std::vector<bool>& used);
  // By block, Lambda with Lambda Lambda' = G(theta); false when a G is not
  // positive semidefinite or theta is outside its bounds.
  bool Factor(const Eigen::VectorXd& theta, std::vector<Eigen::MatrixXd>& lambda) const;
  GroupDesign Design(const Group& g, const std::vector<Eigen::MatrixXd>& lambda) const;
  // The group's random part of the linear predictor, A u.
  Eigen::VectorXd RandomEta(const Group& g, const GroupDesign& A, const Eigen::VectorXd& u) const;
  // The group's penalised deviance at u (its conditional -2 log likelihood
  // plus u'u) and, when wanted, the lower triangle of the weighted
  // cross-product A'WA + I and the score A'W(y - mu)/(d mu / d eta) - u.
  // W holds the expected weights, or with `observed` the records' observed
  // curvature -d^2 log p(y | eta) / d eta^2.
  double PenalisedDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const GroupDesign& A,
                           const Eigen::VectorXd& u, Eigen::MatrixXd* info, Eigen::VectorXd* score,
                           bool observed = false) const;
  // A record's observed curvature of its log likelihood in eta, per unit
  // of its prior weight over the scale.
  double ObservedWeight(double y, double eta) const;
  // Whether the log determinant takes the observed curvature: for the
  // families with a shape or scale, whose customary links are not
  // canonical.
  bool UsesObservedCurvature() const { return fNExtra > 0; }
  // The group's contribution to -2 log L at its mode, found from u.
  bool GroupDeviance(const Group& g, const Eigen::VectorXd& fixedEta, const std::vector<Eigen::MatrixXd>& lambda,
                     Eigen::VectorXd& u, double& deviance) const;
  // -2 log L at phi; with `byGroup`, each group's share of it.
  double Evaluate(const Eigen::VectorXd& phi, bool keepModes, std::vector<double>* byGroup = nullptr);
  // The cluster-robust covariance over the free parameters, H^-1 (sum over
  // groups of s_g s_g') H^-1 with s_g the gradient of the group's deviance
  // share and H the deviance's Hessian, from `cov` = 2 H^-1; empty when a
  // gradient cannot be evaluated.
  Eigen::MatrixXd RobustCovariance(const std::vector<int>& free, const Eigen::MatrixXd& cov);
  // Gradient and Hessian by central differences over the free parameters.
  void Derivatives(const Eigen::VectorXd& phi, const std::vector<int>& free, Eigen::VectorXd& g,
                   Eigen::MatrixXd& H);
  std::vector<int> FreeParameters(const Eigen::VectorXd& phi) const;
  MCEngineStatus Optimise();
  // The Newton step over the free parameters from the deviance's gradient
  // and Hessian, with the Hessian's small eigenvalues raised.
  Eigen::VectorXd NewtonStep(const std::vector<int>& free, const Eigen::VectorXd& g, const Eigen::MatrixXd& H) const;
  double Step(int k, const Eigen::VectorXd& phi) const;
  // The size below which a parameter's difference step stops shrinking
  // with it, also its unit in the Newton steps: 1; for the variances and
  // covariances of a random block whose variances start below 0.1 (a log
  // link's small variances), the largest of them; for the fixed effects of
  // a linear predictor on the scale of a power of the mean, their standard
  // errors in the start.
  void SetupStepSizes(const MCEngineResult& start);
  // Whether the linear predictor is a power of the mean (identity
  // included), whose fixed effects have the data's units, not 1.
  bool IsLinearPredictorOnDataScale() const;
  // How far a covariance parameter is from its nearer bound; infinite for
  // the other parameters.
  double DistanceToBound(int k, const Eigen::VectorXd& phi) const;
  // The linear predictor (offset included) of every record at the modes.
  std::vector<double> LinearPredictor() const;

  const MCEngineInput& fInput;
  MCEngineSettings fSettings;
  const MCEnginePseudoLikelihood* fpStart = nullptr;
  std::vector<std::unique_ptr<MCCovStructure>> fvStructures;  // by block
  std::vector<int> fvThetaStart;                              // by block: its first parameter
  // The negative binomial's log shape, or the log of the scale of a
  // distribution that has one, a free parameter after theta.
  bool HasLogShape() const { return fNExtra > 0 && !fbScaleEstimated; }
  double Shape() const { return std::exp(fPhi[fPhi.size() - 1]); }

  std::vector<int> fvKept;  // columns of X with an estimate
  int fNFixed = 0;
  int fNTheta = 0;
  int fNExtra = 0;
  MCEngineFamily fFamily;   // the start's, with the shape at the point evaluated
  bool fbScaleEstimated = false;
  double fScale = 1.0;      // the distribution's scale at the point evaluated
  Eigen::VectorXd fPhi;     // beta over the kept columns, theta, then the log shape
  Eigen::VectorXd fLower;   // theta's bounds
  Eigen::VectorXd fUpper;
  std::vector<double> fvStepSize;  // by parameter: see SetupStepSizes
  std::vector<Group> fvGroups;
  Eigen::VectorXd fNodes;   // quadrature nodes and weights for N(0, 1)
  Eigen::VectorXd fWeights;
  int fIterations = 0;
  bool fbConverged = false;
  bool fbModeFailed = false;
};

}  // namespace MCEngine_850
