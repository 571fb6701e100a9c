#pragma once

#include <vector>

#include "numeric/engine/MCEngineMeansCell.h"
#include "numeric/engine/MCEngineMeansContrast.h"
#include "numeric/engine/MCEngineMeansSlice.h"

namespace MCEngine_850 {

// What one request of marginal means produced: the means in the order of the
// level combinations (first factor slowest), then, with a compare factor,
// the contrasts and the joint tests, by combination of the other factors in
// the same order.
class MCEngineMeansTable {
 public:
  // kInvalid: a factor of the request is not a factor of the model's
  // columns, or the compare factor is not one of the request's factors.
  // kCompareOneLevel: the compare factor has at most one level, so there
  // are means but neither contrasts nor tests.
  enum State { kOK, kInvalid, kCompareOneLevel };

  MCEngineMeansTable() = default;

  State GetState() const { return fState; }
  void SetState(State state) { fState = state; }

  // The covariates and the values at which the means hold them.
  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  const std::vector<double>& GetCovariateValues() const { return fvCovariateValues; }
  void AddCovariate(int covariate, double value) {
    fvCovariates.push_back(covariate);
    fvCovariateValues.push_back(value);
  }
  // The level of the compare factor that simple contrasts used; -1 otherwise.
  int GetReferenceLevel() const { return fReferenceLevel; }
  void SetReferenceLevel(int level) { fReferenceLevel = level; }

  const std::vector<MCEngineMeansCell>& GetCells() const { return fvCells; }
  void AddCell(const MCEngineMeansCell& cell) { fvCells.push_back(cell); }
  const std::vector<MCEngineMeansContrast>& GetContrasts() const { return fvContrasts; }
  void AddContrast(const MCEngineMeansContrast& contrast) { fvContrasts.push_back(contrast); }
  std::vector<MCEngineMeansContrast>& GetContrasts() { return fvContrasts; }
  const std::vector<MCEngineMeansSlice>& GetSlices() const { return fvSlices; }
  void AddSlice(const MCEngineMeansSlice& slice) { fvSlices.push_back(slice); }

 private:
  State fState = kOK;
  std::vector<int> fvCovariates;
  std::vector<double> fvCovariateValues;
  int fReferenceLevel = -1;
  std::vector<MCEngineMeansCell> fvCells;
  std::vector<MCEngineMeansContrast> fvContrasts;
  std::vector<MCEngineMeansSlice> fvSlices;
};

}  // namespace MCEngine_850
