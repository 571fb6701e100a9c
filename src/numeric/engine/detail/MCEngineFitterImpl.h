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
  const MCEngineHypothesis* GetHypothesis() const { return fpHypothesis.get(); }
  int GetNColumns() const { return fData.fNColumns; }
  void UnscaleTest(MCEngineTest& test) const;
  bool EvaluateAt(const std::vector<double>& theta, double& minus2LogLik, std::vector<double>& gradient,
                  std::vector<double>& observedHessian, std::vector<double>& expectedHessian) const;

 private:
  MCEngineStatus Finish(const MCEngineStatus& status);
  bool BuildModel();
  MCEngineSettings::SolverPath ChoosePath() const;
  bool StartValues(MCEngineOptimizer& optimizer, const MCEngineEvaluation& nullEval,
                   const Eigen::VectorXd& thetaNull, double s2, Eigen::VectorXd& psi);
  void Statistics(const MCEngineInput& input, const Eigen::VectorXd& theta);
  // Statistics are computed on the scaled response; this returns them to its units.
  void Unscale();

  MCEngineSettings fSettings;
  MCEngineData fData;
  MCEngineModel fModel;
  std::unique_ptr<MCEngineEvaluator> fpEvaluator;
  std::unique_ptr<MCEngineHypothesis> fpHypothesis;
  MCEngineResult fResult;
};

}  // namespace MCEngine_850
