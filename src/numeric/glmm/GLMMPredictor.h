#pragma once

#include <map>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineResponse.h"
#include "numeric/engine/MCEngineTarget.h"
#include "numeric/glmm/GLMMConst.h"
#include "numeric/glmm/GLMMDesignBuilder.h"
#include "numeric/glmm/GLMMEBLUPStat.h"
#include "numeric/math/MCModelEffect.h"

namespace MCCommon_850 {
class RecordIterator;
}

namespace MCEngine_850 {
class MCEngineFitter;
}

namespace MCXML_850 {
class MCVarList;
}

namespace MCGLMM_850 {

class GLMMDesignBuilder;
class GLMMSettings;

// What the component predicts from a fitted model: the random effects of
// the blocks that ask for them (EBLUPs), and the scores of single records.
// It refers to the settings and the variable list, which must outlive it,
// and keeps everything else it needs from the fit.
class GLMMPredictor {
 public:
  GLMMPredictor(const GLMMSettings& settings, const MCXML_850::MCVarList& varList);
  GLMMPredictor(const GLMMPredictor&) = delete;
  GLMMPredictor& operator=(const GLMMPredictor&) = delete;

  // The target's distribution and link, before Setup: the scores of a
  // generalized target are on the data's scale. A linear model by default.
  void SetTarget(const MCEngine_850::MCEngineTarget& target) { fTarget = target; }

  // After a fit without error: takes the fit's predictions, and the subjects
  // of the random blocks from the records the builder read (it reads them
  // again from the start). False when the fit has no predictions.
  bool Setup(const GLMMDesignBuilder& builder, const MCEngine_850::MCEngineFitter& fitter,
             MCCommon_850::RecordIterator* pRecords);
  bool IsReady() const { return fbReady; }

  // The predictions of every random block that asks for them, in the order
  // GLMMOutputStats::GetEBLUPStats describes.
  std::vector<GLMMEBLUPStat> ComputeEBLUPs() const;

  // The subjects of a random block that the fit saw, counted in ascending
  // order of their values, and the fit's number of the k-th of them (-1
  // beyond the last).
  int GetNSubjects(int block) const;
  int GetSubjectNumber(int block, int k) const;
  // x'beta + z'u for x over the fit's fixed columns; see MCEnginePredictor.
  MCEngine_850::MCEnginePrediction Predict(const std::vector<double>& x,
                                           const std::vector<MCEngine_850::MCEngineRandomEntry>& z) const {
    return fPredictor.Predict(x, z);
  }

  // The scores of one record in the order of the types. A score whose input
  // is missing, or that cannot be estimated, is the system-missing value. A
  // subject that the fit did not see has random effects 0. The predictions
  // are means on the data's scale (the linear predictor's inverse link,
  // with delta-method standard errors), the linear predictor includes the
  // random effects and the offset, and the residual is the response (a
  // proportion of the trials for a binomial target) minus the prediction
  // with the random effects. An ordinal target has a linear predictor and a
  // predicted category only.
  MCCommon_850::MCStatus ScoreRecord(const double* record, const std::vector<GLMMConst_850::ScoreType>& types,
                                     std::vector<double>& scores) const;

 private:
  // A variable's value in a record; NaN when missing or not finite.
  double Value(const double* record, int var) const;
  // A factor's category code in a record; -1 when missing or out of range.
  int Code(const double* record, int var) const;
  // Whether every variable of the effects has a value in the record.
  bool EffectsValid(const double* record, const std::vector<MCMath_850::MCModelEffect>& effects) const;
  // The subject's values in the block's subject variables; false when one is missing.
  bool SubjectKey(const double* record, int block, std::vector<double>& key) const;
  // x'beta, and x'beta + z'u, of an ordinal fit: its estimates and its
  // subjects' conditional modes, without standard errors.
  MCEngine_850::MCEnginePrediction PredictOrdinal(const std::vector<double>& x,
                                                  const std::vector<MCEngine_850::MCEngineRandomEntry>& z) const;
  // A prediction from the fit, whichever way it was fitted.
  MCEngine_850::MCEnginePrediction PredictFitted(const std::vector<double>& x,
                                                 const std::vector<MCEngine_850::MCEngineRandomEntry>& z) const;
  bool HasSubject(int block, int subject) const;
  // The record's trials (1 but for a binomial target with trials) and its
  // scale weight (1 without one): the prior weight is their product. NaN
  // when missing.
  double Trials(const double* record) const;
  double ScaleWeight(const double* record) const;

  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  int fNFixedColumns;
  // The fit's cells of its effects too large to list every cell.
  GLMMDesignBuilder::Cells fvFittedCells;
  MCEngine_850::MCEnginePredictor fPredictor;
  MCEngine_850::MCEngineTarget fTarget;
  MCEngine_850::MCEngineResponse fResponse;
  // Of an ordinal fit: its fixed estimates and each subject's conditional
  // mode, in the order of the subject codes of its one random block.
  std::vector<double> fvOrdinalBeta;
  std::vector<double> fvOrdinalModes;
  bool fbReady;
  // Per random block: subject values -> the subject's number in the fit.
  std::vector<std::map<std::vector<double>, int>> fvSubjects;
  // Per random block: its columns in the fit's design.
  std::vector<int> fvBlockColumns;
};

}  // namespace MCGLMM_850
