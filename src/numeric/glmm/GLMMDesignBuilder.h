#pragma once

#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/engine/MCEngineCovType.h"
#include "numeric/engine/MCEngineInput.h"
#include "numeric/glmm/GLMMConst.h"
#include "numeric/math/MCRegrParameter.h"

namespace MCCommon_850 {
class RecordIterator;
}

namespace MCXML_850 {
class MCVarList;
}

namespace MCMath_850 {
class MCModelEffect;
}

namespace MCGLMM_850 {

class GLMMSettings;

// Turns the settings and the records of one split into the engine's input:
// the response, the overparameterized fixed design (a column per factor
// level, category codes ascending, the factor of the lowest nesting level
// varying slowest), its terms, the weights, the random blocks and the
// residual block. A record with a missing or out-of-range value in any
// variable the model uses gets a non-finite response, so the engine leaves
// it out.
class GLMMDesignBuilder {
 public:
  GLMMDesignBuilder(const GLMMSettings& settings, const MCXML_850::MCVarList& varList);

  // Reads every record once from the start. An error status when a
  // structure is not available.
  MCCommon_850::MCStatus Build(MCCommon_850::RecordIterator* pRecords);

  const MCEngine_850::MCEngineInput& GetInput() const { return fInput; }
  int GetNRecordsRead() const { return fNRecordsRead; }
  // One parameter per fixed column, in column order.
  const std::vector<MCMath_850::MCRegrParameter>& GetBetaParameters() const { return fvBetaParameters; }
  // Per random block, one parameter per column of the block.
  const std::vector<std::vector<MCMath_850::MCRegrParameter>>& GetGammaParameters() const {
    return fvvGammaParameters;
  }

  // The engine's structure for a covariance type (the same code); false for
  // the reserved code. The spatial structures serve the residual block only.
  static bool MapCovType(GLMMConst_850::CovarType type, MCEngine_850::MCEngineCovType& engineType);

 private:
  // Columns of one effect: a record has at most one non-zero among them, at
  // column cols[r] (-1 for none) with value vals[r]. Their parameters are
  // appended to params. Returns the number of columns.
  int EffectColumns(const MCMath_850::MCModelEffect& effect, int effectIndex, std::vector<int>& cols,
                    std::vector<double>& vals, std::vector<MCMath_850::MCRegrParameter>& params) const;
  // The value of a variable (a list position) in record r; NaN when missing.
  double Value(int r, int var) const;
  // The frequency weight is the variable list's variable of that role; a
  // list without one takes the settings' (which only the run's own settings
  // carry). -1 when there is none.
  int FrequencyWeightVar() const;
  // Record r's frequency weight, rounded as its variable asks; a weight that
  // rounds to 0 leaves the record out of the fit.
  double FrequencyWeight(int r, int var) const;
  // The category code of a factor in record r; -1 when missing or out of range.
  int Code(int r, int var) const;
  int NCategories(int var) const;
  // One integer per distinct combination of the variables' values; -1 when
  // any of them is missing.
  std::vector<int> Subjects(const std::vector<int>& vars) const;

  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  int fRecordLength;
  int fNRecordsRead;
  // The records as read, row-major with fRecordLength values each.
  std::vector<double> fvRecords;
  MCEngine_850::MCEngineInput fInput;
  std::vector<MCMath_850::MCRegrParameter> fvBetaParameters;
  std::vector<std::vector<MCMath_850::MCRegrParameter>> fvvGammaParameters;
};

}  // namespace MCGLMM_850
