#pragma once

#include <map>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/common/MCStopPoll.h"
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
  // structure is not available, and the cancelled one when the settings'
  // cancel query stops one of its passes over the records.
  MCCommon_850::MCStatus Build(MCCommon_850::RecordIterator* pRecords);

  const MCEngine_850::MCEngineInput& GetInput() const { return fInput; }
  int GetNRecordsRead() const { return fNRecordsRead; }
  // One parameter per fixed column, in column order.
  const std::vector<MCMath_850::MCRegrParameter>& GetBetaParameters() const { return fvBetaParameters; }
  // Per random block, one parameter per column of the block.
  const std::vector<std::vector<MCMath_850::MCRegrParameter>>& GetGammaParameters() const {
    return fvvGammaParameters;
  }

  // The cells of each effect too large to list every cell (see
  // kMaxListedCells), in the order the build met them: a design of other
  // records (one record to score) reuses a fit's cells so that its columns
  // are the fit's; a record in a cell the fit did not hold has none.
  using Cells = std::vector<std::map<std::vector<int>, int>>;
  const Cells& GetPresentCells() const { return fvPresentCells; }
  void UseCells(const Cells& cells) { fvFittedCells = cells; fbUseFittedCells = true; }

  // The engine's structure for a covariance type (the same code); false for
  // the reserved code. The spatial structures serve the residual block only.
  static bool MapCovType(GLMMConst_850::CovarType type, MCEngine_850::MCEngineCovType& engineType);

 private:
  // An effect of up to this many cells (the product of its factors' levels)
  // has a column for each, empty cells included, which the tables list as
  // redundant; a larger one has columns only for the cells the data hold.
  static constexpr double kMaxListedCells = 4096.0;
  // The most fixed parameters (columns of the design) a model may have: the
  // fit holds some 40 matrices over every pair of them, and its tests and
  // the covariance of the estimates cost their cube, so 3000 take minutes
  // and some 3 GB, and 10,000 would take hours and some 32 GB.
  static constexpr int kMaxFixedParameters = 3000;
  static constexpr double kPairMatrices = 40.0;
  // The refusal of a design past kMaxFixedParameters, before it is formed:
  // the effect of the most parameters, their count, all fixed parameters
  // and the megabytes the fit would hold (the matrices over their pairs and
  // three copies of the records' rows).
  MCCommon_850::MCStatus TooManyFixedParameters(int effect, int effectParameters, int parameters, int records) const;
  // Columns of one effect: a record has at most one non-zero among them, at
  // column cols[r] (-1 for none) with value vals[r]. Their parameters are
  // appended to params. Returns the number of columns.
  int EffectColumns(const MCMath_850::MCModelEffect& effect, int effectIndex, std::vector<int>& cols,
                    std::vector<double>& vals, std::vector<MCMath_850::MCRegrParameter>& params) const;
  // The columns of an effect of more cells than kMaxListedCells: the cells
  // that usable records hold, in the order of the full listing, so that the
  // design grows with the data rather than with the product of the levels.
  int PresentCells(const MCMath_850::MCModelEffect& effect, const MCMath_850::MCRegrParameter& proto,
                   std::vector<int>& cols, std::vector<double>& vals,
                   std::vector<MCMath_850::MCRegrParameter>& params) const;
  // The category codes of record r in the factors; false when one is missing.
  bool CellCodes(const std::vector<int>& factors, int r, std::vector<int>& codes) const;
  // The product of the effect's covariates (with their powers) in record r.
  double CovariateProduct(const MCMath_850::MCModelEffect& effect, int r) const;
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
  mutable Cells fvPresentCells;
  Cells fvFittedCells;
  bool fbUseFittedCells = false;
  // Asked in every pass over the records; the passes of const helpers ask too.
  mutable MCCommon_850::MCStopPoll fPoll{nullptr};
};

}  // namespace MCGLMM_850
