#pragma once

#include <Eigen/Dense>
#include <memory>
#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"

namespace MCEngine_850 {

class MCEngineHypothesis;
class MCEngineOrdinalLikelihood;

// Fits a cumulative link mixed model to an ordinal target of K categories
// (its distinct values in ascending order):
//   P(Y <= j | u) = F(theta_j - x'beta - offset - u),  j = 1 .. K - 1,
// with a scalar random intercept u ~ N(0, sigma^2) per subject of the one
// random block, or none. The thresholds take the intercept's place: the
// design's intercept column is kept in the overparameterized layout with
// estimate 0 (redundant), and its other columns are aliased as in a model
// with the intercept. The marginal likelihood (Laplace, or adaptive
// Gauss-Hermite quadrature) is maximised over thresholds, beta and
// log sigma by damped Newton steps on differentiated likelihoods, the
// thresholds held in order as the first one and the logs of the gaps.
class MCEngineOrdinal {
 public:
  MCEngineOrdinal(const MCEngineInput& input, const MCEngineSettings& settings);
  ~MCEngineOrdinal();

  // An ordinal multinomial target, which this class fits or refuses.
  static bool Applies(const MCEngineSettings& settings);
  // Whether the design is one this class fits: a probability link, an
  // intercept, at most one random block of one column with subjects, and
  // independent records given the random effects.
  static bool CanFit(const MCEngineInput& input, const MCEngineSettings& settings);

  MCEngineStatus Fit();
  const MCEngineResult& GetResult() const { return fResult; }
  // The tests of the fixed effects after a fit; null before one.
  const MCEngineHypothesis* GetHypothesis() const { return fpHypothesis.get(); }
  // The same tests on the latent scale, where the intercept's column
  // stands for minus the thresholds' mean: a marginal mean x'beta - mean(theta)
  // with the covariance of thresholds and beta. Functions that do not weigh
  // the intercept test as with GetHypothesis.
  const MCEngineHypothesis* GetLatentHypothesis() const { return fpLatentHypothesis.get(); }
  int GetNColumns() const;
  // Whether a function of the fixed columns weighs the intercept's, whose
  // place the thresholds take: such a function has no estimate.
  bool WeighsIntercept(const std::vector<double>& l) const;

 private:
  MCEngineStatus ReadRecords();
  void FindColumns();
  // X'X over the used records, frequency-weighted.
  Eigen::MatrixXd CrossProducts() const;
  // The likelihood's parameters from the optimiser's (ordered thresholds)
  // and back.
  Eigen::VectorXd Natural(const Eigen::VectorXd& free) const;
  Eigen::VectorXd Free(const Eigen::VectorXd& natural) const;
  Eigen::VectorXd Start() const;
  // Damped Newton iterations over the free parameters; false when they do
  // not settle within the iteration limit.
  bool Maximise(Eigen::VectorXd& free);
  // Central differences with step h and Richardson's extrapolation.
  Eigen::VectorXd Gradient(const Eigen::VectorXd& free, bool natural) const;
  Eigen::MatrixXd Hessian(const Eigen::VectorXd& at, bool natural) const;
  double Objective(const Eigen::VectorXd& at, bool natural) const;
  void FillResult(const Eigen::VectorXd& natural, bool converged);
  void FillBeta(const Eigen::VectorXd& natural, const Eigen::MatrixXd& cov, double df);
  void FillVariance(const Eigen::VectorXd& natural, const Eigen::MatrixXd& cov);
  void FillCriteria(double logLik);
  void FillTests();
  void FillLatentHypothesis(const Eigen::VectorXd& natural, const Eigen::MatrixXd& cov, bool covOK, double df);
  void FillPredictors(const Eigen::VectorXd& natural);

  const MCEngineInput& fInput;
  MCEngineSettings fSettings;
  MCEngineResult fResult;
  std::unique_ptr<MCEngineOrdinalLikelihood> fpLikelihood;
  std::unique_ptr<MCEngineHypothesis> fpHypothesis;
  std::unique_ptr<MCEngineHypothesis> fpLatentHypothesis;
  std::vector<int> fvRecords;       // input records used, in order
  std::vector<int> fvCategory;      // per used record
  std::vector<int> fvSubject;       // per used record, 0 .. S - 1; empty without random effects
  std::vector<double> fvCategories; // target values in order
  std::vector<double> fvWeight;     // per used record
  std::vector<int> fvSubjectCodes;  // input code of each subject
  std::vector<double> fvXtX;        // P x P over the used records
  std::vector<bool> fvAliased;      // per column, from X'X
  std::vector<int> fvFree;          // columns estimated: not aliased, not the intercept
  double fTotalWeight = 0.0;
};

}  // namespace MCEngine_850
