#pragma once

#include <vector>

#include "numeric/engine/MCEngineRandomEntry.h"
#include "numeric/glmm/CustomTest.h"
#include "numeric/glmm/GLMMCustomTestStat.h"
#include "numeric/math/MCRegrParameter.h"

namespace MCEngine_850 {
class MCEngineFitter;
}

namespace MCGLMM_850 {

class GLMMPredictor;
class GLMMSettings;

// Computes the settings' custom tests after a fit without error.
//
// A fixed row gives coefficients to the fit's fixed parameters: term by term
// (the values of a term cover its parameters in order, redundant ones
// included) or all at once. A random row gives coefficients to the predicted
// random effects: the values of a random term cover the term's columns for
// the first subject of its block, then for the second, and so on, subjects
// in ascending order of their values; a row may stop after any subject. In
// the all-values form the random part covers the columns of each block's
// first subject, blocks in order.
//
// Rows without a random part are estimated and tested from the fixed
// estimates and their covariance; a row with one is a prediction, its
// standard error that of the prediction error. The joint test is the F test
// of all rows against K with Satterthwaite's degrees of freedom; for rows
// with a random part it exists only for a single row (F = t squared).
class GLMMCustomTestBuilder {
 public:
  // The fixed parameters in column order, and per random block its columns.
  GLMMCustomTestBuilder(const GLMMSettings& settings, const std::vector<MCMath_850::MCRegrParameter>& betaParameters,
                        const std::vector<std::vector<MCMath_850::MCRegrParameter>>& gammaParameters);

  // Whether any test has a row with a random part: only then is a predictor
  // needed.
  bool NeedsPredictor() const;

  // pPredictor may be null when no row has a random part (rows that have one
  // are then not computed).
  std::vector<GLMMCustomTestStat> Build(const MCEngine_850::MCEngineFitter& fitter,
                                        const GLMMPredictor* pPredictor) const;

 private:
  // The row's coefficients over the fixed parameters; false when a term's
  // values do not match its parameters.
  bool FixedCoefficients(const LMatrixRow& row, std::vector<double>& x) const;
  // The row's random part as entries of the predictor; false when it does
  // not match the blocks' columns and subjects.
  bool RandomEntries(const LMatrixRow& row, const GLMMPredictor& predictor,
                     std::vector<MCEngine_850::MCEngineRandomEntry>& z) const;
  // The statistics of a row from its estimate, standard error and df.
  void CompleteRow(GLMMCustomTestStat::RowData& row) const;
  GLMMCustomTestStat BuildTest(const CustomTest& test, const MCEngine_850::MCEngineFitter& fitter,
                               const GLMMPredictor* pPredictor) const;

  const GLMMSettings* fpSettings;
  std::vector<MCMath_850::MCRegrParameter> fvBetaParameters;
  std::vector<std::vector<MCMath_850::MCRegrParameter>> fvvGammaParameters;
};

}  // namespace MCGLMM_850
