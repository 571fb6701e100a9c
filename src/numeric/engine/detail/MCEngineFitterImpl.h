#pragma once

#include <Eigen/Dense>
#include <memory>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineHypothesis.h"
#include "numeric/engine/detail/MCEngineModel.h"

namespace MCEngine_850 {

class MCEngineOptimizer;

// The state of one fit behind MCEngineFitter.
class MCEngineFitterImpl {
 public:
  MCEngineStatus Fit(const MCEngineInput& input, const MCEngineSettings& settings);

  const MCEngineResult& GetResult() const { return fResult; }
  MCEngineResult& MutableResult() { return fResult; }
  // Ends without a fit: the result holds only the status.
  MCEngineStatus Refuse(const MCEngineStatus& status);
  const MCEngineHypothesis* GetHypothesis() const { return fpHypothesis.get(); }
  double GetRecordsPerEvaluation() const;
  int GetStepsByFactors() const;
  int GetNColumns() const { return fData.fNColumns; }
  const MCEngineData& GetData() const { return fData; }
  const MCEngineModel& GetModel() const { return fModel; }
  const MCCommon_850::MCQueryCancel* GetCancel() const { return fSettings.GetCancel(); }
  // The evaluator of the fit's path, which keeps its last factor for the
  // predictions' set-up to reuse; null before a fit.
  MCEngineEvaluator* GetEvaluator() const { return fpEvaluator.get(); }
  void UnscaleTest(MCEngineTest& test) const;
  bool EvaluateAt(const std::vector<double>& theta, double& minus2LogLik, std::vector<double>& gradient,
                  std::vector<double>& observedHessian, std::vector<double>& expectedHessian, bool forSteps) const;
  // After a fit, replaces its estimates by those of a model the fitted one
  // stands for (a generalized model fitted by its likelihood), all in the
  // response's units: covariance parameters theta with those on a bound
  // marked and the asymptotic covariance of the others, fixed estimates over
  // all columns with their covariance, and -2 log likelihood. Every
  // statistic that follows from them is recomputed; the tests take the
  // residual degrees of freedom. The criteria count `nOther` parameters of
  // the fit besides these (a distribution's shape). A robust covariance of
  // the fixed estimates, when given, takes the model-based C's place in
  // the statistics, which keeps C as the model-based one.
  void ReplaceEstimates(const MCEngineInput& input, const Eigen::VectorXd& theta, const std::vector<bool>& onBound,
                        const Eigen::MatrixXd& asy, const Eigen::VectorXd& beta, const Eigen::MatrixXd& C,
                        double m2ll, int nOther = 0, const Eigen::MatrixXd& robustC = Eigen::MatrixXd());
  // Whether the estimates are those ReplaceEstimates put in.
  bool HasReplacedEstimates() const { return fbReplaced; }

 private:
  // Groups larger than this (in records) are not given a dense V_i for the
  // robust covariance when the fit went through the mixed-model equations.
  static constexpr int kMaxRobustGroupSize = 5000;
  // Covariance matrices up to this dimension are checked for definiteness.
  static constexpr int kMaxCheckedDimension = 500;
  // Equations over at most this many columns are solved densely; groups of
  // at most this many records are left to the group-by-group path.
  static constexpr double kMaxDenseColumns = 150.0;
  static constexpr int kSmallGroup = 50;
  // The most multiplications one evaluation by groups may spend forming a
  // group's random-effect products (its records times its random entries):
  // past it a fit would take hours, and it is refused before it starts.
  static constexpr double kMaxRandomEffectsWork = 1e9;

  MCEngineStatus Finish(const MCEngineStatus& status);
  // A warning for each estimated G (random block) or R (residual block)
  // with a negative eigenvalue: the fit keeps no bound that prevents it.
  void WarnIndefinite(const Eigen::VectorXd& theta);
  bool BuildModel();
  // The evaluator of the path the settings ask for, or the one the design
  // makes cheapest: by groups, the dense equations for small problems, the
  // sparse ones for large groups. An error when none can be made, or when
  // the groups' random effects are past kMaxRandomEffectsWork.
  MCEngineStatus MakeEvaluator();
  // Multiplications an evaluation by groups spends on the random effects:
  // for each group, its records times the random entries of its records,
  // which forming V^-1 Z and Z'V^-1 Z over the group takes.
  double RandomEffectsWork() const;
  // Work of the group-by-group path (the cube of each group's records), and
  // the largest group.
  double GroupCost() const;
  int LargestGroup() const;
  bool StartValues(MCEngineOptimizer& optimizer, const MCEngineEvaluation& nullEval,
                   const Eigen::VectorXd& thetaNull, double s2, Eigen::VectorXd& psi);
  void Statistics(const MCEngineInput& input, const Eigen::VectorXd& theta);
  // The covariance parameters' rows, from their estimates and the
  // asymptotic covariance over the free ones (empty when not available).
  void SetCovParamStatistics(const Eigen::VectorXd& theta, const std::vector<bool>& onBound,
                             const std::vector<int>& freeSet, const Eigen::MatrixXd& asy);
  // The hypothesis object and the fixed estimates' rows over all columns;
  // the dC_k or the A_k of dC_k = C A_k C, and asy, feed Satterthwaite's df
  // and may be empty when fixedDF is set.
  void SetFixedStatistics(const Eigen::VectorXd& beta, const Eigen::MatrixXd& C, std::vector<Eigen::MatrixXd> dC,
                          std::vector<MCEngineMostlyZero> A, const Eigen::MatrixXd& asy, double fixedDF);
  void SetInformationCriteria(const MCEngineInput& input, double m2ll, int nf);
  void SetTests(const MCEngineInput& input);
  // The empirical covariance of the fixed estimates over the kept columns,
  // C (sum_i f_i X_i' V_i^-1 e_i e_i' V_i^-1 X_i) C over the independent
  // groups i. Left empty when it is not available: fewer than two groups, or
  // a group too large to form its V_i. False when the computation fails.
  bool RobustCovariance(const Eigen::VectorXd& theta, const MCEngineEvaluation& ev, Eigen::MatrixXd& robust) const;
  // Statistics are computed on the scaled response; this returns them to its units.
  void Unscale();

  MCEngineSettings fSettings;
  MCEngineData fData;
  MCEngineModel fModel;
  std::unique_ptr<MCEngineEvaluator> fpEvaluator;
  std::unique_ptr<MCEngineHypothesis> fpHypothesis;
  MCEngineResult fResult;
  bool fbReplaced = false;
};

}  // namespace MCEngine_850
