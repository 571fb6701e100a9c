#pragma once

#include <vector>

namespace MCEngine_850 {

// What one column of the overparameterized fixed design stands for, as the
// marginal means need it: the level of each of its factors, and its
// covariates (x*x lists x twice). The intercept's column has neither.
// Factors and covariates are the caller's integers, as in MCEngineTerm.
class MCEngineMeansColumn {
 public:
  MCEngineMeansColumn() = default;
  MCEngineMeansColumn(std::vector<int> factors, std::vector<int> levels, std::vector<int> covariates)
      : fvFactors(std::move(factors)), fvLevels(std::move(levels)), fvCovariates(std::move(covariates)) {}

  const std::vector<int>& GetFactors() const { return fvFactors; }
  void SetFactors(const std::vector<int>& factors) { fvFactors = factors; }
  // Parallel to the factors: the level (0-based) of each.
  const std::vector<int>& GetLevels() const { return fvLevels; }
  void SetLevels(const std::vector<int>& levels) { fvLevels = levels; }
  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  void SetCovariates(const std::vector<int>& covariates) { fvCovariates = covariates; }

 private:
  std::vector<int> fvFactors;
  std::vector<int> fvLevels;
  std::vector<int> fvCovariates;
};

}  // namespace MCEngine_850
