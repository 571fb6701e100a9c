#include "numeric/engine/MCEngineTerm.h"

#include <algorithm>

namespace MCEngine_850 {

MCEngineTerm::MCEngineTerm(int firstColumn, int nColumns, std::vector<int> factors,
                           std::vector<int> covariates)
    : fFirstColumn(firstColumn),
      fNColumns(nColumns),
      fvFactors(std::move(factors)),
      fvCovariates(std::move(covariates)) {}

MCEngineTerm MCEngineTerm::Intercept(int column) {
  MCEngineTerm term(column, 1, {}, {});
  term.SetIntercept(true);
  return term;
}

bool MCEngineTerm::Contains(const MCEngineTerm& other) const {
  if (fbIntercept) return false;
  std::vector<int> mine(fvFactors), theirs(other.fvFactors);
  std::sort(mine.begin(), mine.end());
  mine.erase(std::unique(mine.begin(), mine.end()), mine.end());
  std::sort(theirs.begin(), theirs.end());
  theirs.erase(std::unique(theirs.begin(), theirs.end()), theirs.end());
  std::vector<int> myCov(fvCovariates), theirCov(other.fvCovariates);
  std::sort(myCov.begin(), myCov.end());
  std::sort(theirCov.begin(), theirCov.end());
  if (myCov != theirCov) return false;
  if (mine == theirs) return false;  // the same term
  return std::includes(mine.begin(), mine.end(), theirs.begin(), theirs.end());
}

}  // namespace MCEngine_850
